// The time limit of one request, shared by the connect and the exchange that
// follows it on the same socket.
#ifndef NV_CMDCLIENT_REQUEST_CLOCK_H
#define NV_CMDCLIENT_REQUEST_CLOCK_H

#include <chrono>

namespace nvclient {

typedef std::chrono::steady_clock Clock;

// Starts the limit of a request made over socket fd.
void StartRequestClock(int fd);
// The deadline of the request over fd: the one started by its connect, or,
// for a socket connected by other means, g_iRequestTimeoutMs from now.
// Forgets the started clock.
Clock::time_point TakeRequestDeadline(int fd);
// Milliseconds left of the request most recently started.
long RequestMsLeft();

}  // namespace nvclient

#endif
