// Reading and writing a non-blocking socket against an absolute deadline, so
// that a client that stalls ties up its worker only until the deadline.
#ifndef NV_AGENT_DEADLINE_IO_H
#define NV_AGENT_DEADLINE_IO_H

#include <chrono>
#include <cstddef>

namespace nvagent {

using Clock = std::chrono::steady_clock;

enum class IoStatus {
    kOk,       // every byte was transferred
    kEof,      // the peer closed before every byte arrived
    kTimeout,  // the deadline passed first
    kError     // the socket failed (reset, bad descriptor, ...)
};

// Reads exactly n bytes into p. got tells how many arrived, whatever the
// status.
IoStatus ReadFull(int fd, char* p, size_t n, Clock::time_point deadline, size_t& got);

// Writes all n bytes from p without raising SIGPIPE.
IoStatus WriteFull(int fd, const char* p, size_t n, Clock::time_point deadline);

}  // namespace nvagent

#endif
