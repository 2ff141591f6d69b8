// The fuzzers' socket-pair peer: one poll loop that writes the input and
// reads the answer at the same time, so neither side can fill its buffer and
// stall the other.
#include "peer_pump.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace nvfuzz {

PeerPump::PeerPump(int fd, const char* data, size_t n) : m_fd(fd), m_data(data), m_left(n) {
    fcntl(m_fd, F_SETFL, fcntl(m_fd, F_GETFL) | O_NONBLOCK);
    WriteSome();
    if (m_writing)
        m_thread = std::thread(&PeerPump::Run, this);
}

PeerPump::~PeerPump() {
    Join();
}

void PeerPump::Join() {
    if (m_thread.joinable()) {
        m_thread.join();
    } else if (!m_done) {
        Run();
    }
}

// Sends what the socket takes now; shuts the writing side once all is sent
// and stops writing when the other end is gone.
void PeerPump::WriteSome() {
    while (m_writing && m_left > 0) {
        ssize_t w = send(m_fd, m_data, m_left, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (w > 0) {
            m_data += w;
            m_left -= static_cast<size_t>(w);
        } else if (w < 0 && errno == EINTR) {
            continue;
        } else {
            if (w < 0 && errno != EAGAIN)
                m_writing = false;
            return;
        }
    }
    if (m_writing && m_left == 0) {
        shutdown(m_fd, SHUT_WR);
        m_writing = false;
    }
}

void PeerPump::Run() {
    char buf[65536];
    for (;;) {
        pollfd pfd = {m_fd, static_cast<short>(POLLIN | (m_writing ? POLLOUT : 0)), 0};
        if (poll(&pfd, 1, -1) < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        if (m_writing && (pfd.revents & (POLLOUT | POLLERR | POLLHUP)))
            WriteSome();
        if (pfd.revents & (POLLIN | POLLERR | POLLHUP)) {
            ssize_t r = recv(m_fd, buf, sizeof buf, MSG_DONTWAIT);
            if (r > 0) {
                m_received.append(buf, static_cast<size_t>(r));
            } else if (r == 0 || (errno != EAGAIN && errno != EINTR)) {
                break;
            }
        }
    }
    close(m_fd);
    m_done = true;
}

void MakeSocketPair(int& a, int& b) {
    int sv[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sv) != 0) {
        perror("socketpair");
        abort();
    }
    a = sv[0];
    b = sv[1];
}

}  // namespace nvfuzz
