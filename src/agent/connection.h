// Serving one accepted connection: peer check, reading the one request within
// a deadline, answering it, journaling it.
#ifndef NV_AGENT_CONNECTION_H
#define NV_AGENT_CONNECTION_H

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "agent/backend.h"
#include "agent/deadline_io.h"
#include "agent/journal.h"
#include "agent/request_dispatch.h"

namespace nvagent {

struct ConnectionLimits {
    // Time allowed for the whole request to arrive, counted from accept.
    std::chrono::milliseconds readTimeout{2000};
    // Time allowed for the whole answer to be taken by the client.
    std::chrono::milliseconds writeTimeout{2000};
};

// One per worker thread: holds the buffers that worker reuses.
class ConnectionHandler {
public:
    ConnectionHandler(Backend& backend, Journal& journal, const ConnectionLimits& limits);

    // Serves the single request of an accepted non-blocking connection, then
    // closes it. Peers other than root and the agent's own user are closed
    // unanswered.
    void Serve(int fd);

private:
    void Handle(int fd);
    bool PeerAllowed(int fd, uid_t& uid) const;
    void RecordIncomplete(int cmd, bool headerCut, size_t got, size_t expected, IoStatus status);
    void AnswerBadLength(int fd, uint32_t pkglen, short cmd);
    void Send(int fd);
    void TrimBuffers();

    Backend& m_backend;
    Journal& m_journal;
    ConnectionLimits m_limits;
    uid_t m_selfUid;
    std::string m_payload;
    AnswerBuffers m_bufs;
};

}  // namespace nvagent

#endif
