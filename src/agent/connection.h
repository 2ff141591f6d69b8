// One accepted connection as a state machine driven by the server's event
// loop: the request is read as bytes arrive, the answer written as the
// socket takes it, and before closing the agent drains what the client may
// still send, so the client sees a clean end of stream and never a reset.
// Nothing here blocks; every phase ends at its own deadline.
#ifndef NV_AGENT_CONNECTION_H
#define NV_AGENT_CONNECTION_H

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "agent/journal.h"
#include "wire/wire.h"

namespace nvagent {

using Clock = std::chrono::steady_clock;

struct ConnectionLimits {
    // Time allowed for the whole request to arrive, counted from accept.
    std::chrono::milliseconds readTimeout{2000};
    // Time allowed for the whole answer to be taken by the client.
    std::chrono::milliseconds writeTimeout{2000};
    // Time the agent keeps reading (and discarding) after its answer, waiting
    // for the client to close first.
    std::chrono::milliseconds drainTimeout{500};
};

class Connection {
public:
    enum class Phase {
        kReading,      // the request is arriving
        kDispatching,  // a worker is answering it; no socket events wanted
        kWriting,      // the answer is going out
        kDraining,     // answer sent and write side shut; waiting for the close
        kDone          // to be closed
    };

    Connection(int fd, pid_t pid, const ConnectionLimits& limits, Clock::time_point now);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Reads what has arrived. When the whole request is in, the phase becomes
    // kDispatching (see Cmd and Payload) or, for a header announcing an
    // impossible length, kWriting with the refusal already built.
    void OnReadable(Journal& journal, Clock::time_point now);
    // Writes what the socket takes; then drains.
    void OnWritable(Clock::time_point now);
    // The deadline of the current phase passed: the connection ends, and a
    // request that never completed is journaled.
    void OnDeadline(Journal& journal);
    // The worker's answer: starts writing it.
    void SetAnswer(std::string&& answer, Clock::time_point now);

    int Fd() const { return m_fd; }
    pid_t Pid() const { return m_pid; }
    Phase GetPhase() const { return m_phase; }
    Clock::time_point Deadline() const { return m_deadline; }
    short Cmd() const { return m_header.cmd; }
    const std::string& Payload() const { return m_payload; }
    // The socket events the current phase waits for (EPOLLIN / EPOLLOUT).
    uint32_t WantedEvents() const;

private:
    void ReadRequest(Journal& journal, Clock::time_point now);
    void Drain();
    void RecordIncomplete(Journal& journal, const char* why);
    void RefuseLength(Journal& journal, Clock::time_point now);
    void StartDraining(Clock::time_point now);

    int m_fd;
    pid_t m_pid;
    const ConnectionLimits& m_limits;
    Phase m_phase = Phase::kReading;
    Clock::time_point m_deadline;
    char m_headerBytes[nvwire::kReqHeaderLen];
    size_t m_headerGot = 0;
    nvwire::RequestHeader m_header{0, -1};
    std::string m_payload;
    size_t m_payloadGot = 0;
    std::string m_answer;
    size_t m_sent = 0;
};

}  // namespace nvagent

#endif
