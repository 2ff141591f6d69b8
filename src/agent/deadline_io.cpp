// Deadline-bounded socket I/O: try the transfer first, and wait in poll only
// when the socket is not ready, for no longer than the time left.
#include "agent/deadline_io.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

namespace nvagent {

namespace {

// Waits until fd is ready for events or the deadline passes.
IoStatus WaitReady(int fd, short events, Clock::time_point deadline) {
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0)
            return IoStatus::kTimeout;
        pollfd p{fd, events, 0};
        int rc = poll(&p, 1, static_cast<int>(left.count()) + 1);
        if (rc > 0)
            return IoStatus::kOk;
        if (rc < 0 && errno != EINTR)
            return IoStatus::kError;
    }
}

}  // namespace

IoStatus ReadFull(int fd, char* p, size_t n, Clock::time_point deadline, size_t& got) {
    got = 0;
    while (got < n) {
        ssize_t r = recv(fd, p + got, n - got, 0);
        if (r > 0) {
            got += static_cast<size_t>(r);
            continue;
        }
        if (r == 0)
            return IoStatus::kEof;
        if (errno == EINTR)
            continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK)
            return IoStatus::kError;
        IoStatus st = WaitReady(fd, POLLIN, deadline);
        if (st != IoStatus::kOk)
            return st;
    }
    return IoStatus::kOk;
}

IoStatus WriteFull(int fd, const char* p, size_t n, Clock::time_point deadline) {
    size_t done = 0;
    while (done < n) {
        ssize_t w = send(fd, p + done, n - done, MSG_NOSIGNAL);
        if (w >= 0) {
            done += static_cast<size_t>(w);
            continue;
        }
        if (errno == EINTR)
            continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK)
            return IoStatus::kError;
        IoStatus st = WaitReady(fd, POLLOUT, deadline);
        if (st != IoStatus::kOk)
            return st;
    }
    return IoStatus::kOk;
}

}  // namespace nvagent
