// The request clock: one request at a time is in progress (the console's
// refresh lock guarantees it), so one started deadline suffices.
#include "cmdclient/request_clock.h"

#include "cmdclient/cmd_client.h"

namespace nvclient {

namespace {

int s_fd = -1;
Clock::time_point s_deadline;

}  // namespace

void StartRequestClock(int fd) {
    s_fd = fd;
    s_deadline = Clock::now() + std::chrono::milliseconds(g_iRequestTimeoutMs);
}

Clock::time_point TakeRequestDeadline(int fd) {
    Clock::time_point d = s_fd == fd && fd >= 0
                              ? s_deadline
                              : Clock::now() + std::chrono::milliseconds(g_iRequestTimeoutMs);
    s_fd = -1;
    return d;
}

long RequestMsLeft() {
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(s_deadline - Clock::now()).count());
}

}  // namespace nvclient
