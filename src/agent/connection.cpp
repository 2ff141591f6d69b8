// The phases of one connection: read the request, hand it over, write the
// answer, shut the write side, drain, close.
#include "agent/connection.h"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "link/result_codes.h"

namespace nvagent {

Connection::Connection(int fd, pid_t pid, const ConnectionLimits& limits, Clock::time_point now)
    : m_fd(fd), m_pid(pid), m_limits(limits), m_deadline(now + limits.readTimeout) {}

Connection::~Connection() {
    close(m_fd);
}

uint32_t Connection::WantedEvents() const {
    switch (m_phase) {
        case Phase::kReading:
        case Phase::kDraining:
            return EPOLLIN | EPOLLRDHUP;
        case Phase::kWriting:
            return EPOLLOUT;
        default:
            return 0;
    }
}

void Connection::OnReadable(Journal& journal, Clock::time_point now) {
    if (m_phase == Phase::kReading)
        ReadRequest(journal, now);
    else if (m_phase == Phase::kDraining)
        Drain();
}

// Reads the header, then exactly the payload it announces; a read that would
// block leaves the connection waiting for more.
void Connection::ReadRequest(Journal& journal, Clock::time_point now) {
    for (;;) {
        bool inHeader = m_headerGot < sizeof m_headerBytes;
        char* dst = inHeader ? m_headerBytes + m_headerGot : &m_payload[0] + m_payloadGot;
        size_t want =
            inHeader ? sizeof m_headerBytes - m_headerGot : m_payload.size() - m_payloadGot;
        ssize_t n = want == 0 ? 0 : recv(m_fd, dst, want, MSG_DONTWAIT);
        if (want == 0) {
            m_phase = Phase::kDispatching;
            return;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        if (n <= 0) {
            // A connection closed without a single byte carried no request.
            if (!(n == 0 && m_headerGot == 0))
                RecordIncomplete(journal, n == 0 ? "closed" : "failed");
            m_phase = Phase::kDone;
            return;
        }
        if (inHeader) {
            m_headerGot += static_cast<size_t>(n);
            if (m_headerGot < sizeof m_headerBytes)
                continue;
            if (nvwire::ParseRequestHeader(m_headerBytes, sizeof m_headerBytes, m_header) !=
                em_OK) {
                RefuseLength(journal, now);
                return;
            }
            m_payload.resize(m_header.pkglen - nvwire::kReqHeaderLen);
        } else {
            m_payloadGot += static_cast<size_t>(n);
        }
    }
}

void Connection::RefuseLength(Journal& journal, Clock::time_point now) {
    char detail[96];
    snprintf(detail, sizeof detail, "packet length %u outside %u..%u", m_header.pkglen,
             nvwire::kReqHeaderLen, nvwire::kMaxRequestLen);
    std::string answer;
    nvwire::BuildAnswer(answer, m_header.cmd, em_ParsePkgPkglenNotMatch, detail, "", 0);
    journal.Record(m_header.cmd, "", 0, em_ParsePkgPkglenNotMatch, detail);
    SetAnswer(std::move(answer), now);
}

void Connection::SetAnswer(std::string&& answer, Clock::time_point now) {
    m_answer = std::move(answer);
    std::string().swap(m_payload);
    m_sent = 0;
    m_phase = Phase::kWriting;
    m_deadline = now + m_limits.writeTimeout;
}

void Connection::OnWritable(Clock::time_point now) {
    while (m_phase == Phase::kWriting && m_sent < m_answer.size()) {
        ssize_t n = send(m_fd, m_answer.data() + m_sent, m_answer.size() - m_sent,
                         MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        if (n < 0) {
            m_phase = Phase::kDone;
            return;
        }
        m_sent += static_cast<size_t>(n);
    }
    if (m_phase == Phase::kWriting)
        StartDraining(now);
}

// Closing with unread bytes in the receive queue would reset the client's
// side; shutting the write side first tells the client the answer is whole,
// and reading until it closes empties the queue.
void Connection::StartDraining(Clock::time_point now) {
    std::string().swap(m_answer);
    shutdown(m_fd, SHUT_WR);
    m_phase = Phase::kDraining;
    m_deadline = now + m_limits.drainTimeout;
    Drain();
}

void Connection::Drain() {
    char sink[4096];
    for (;;) {
        ssize_t n = recv(m_fd, sink, sizeof sink, MSG_DONTWAIT);
        if (n > 0)
            continue;
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        m_phase = Phase::kDone;
        return;
    }
}

void Connection::OnDeadline(Journal& journal) {
    if (m_phase == Phase::kReading)
        RecordIncomplete(journal, "timed out");
    m_phase = Phase::kDone;
}

// The request stopped short: nothing can be answered, only recorded. For a
// cut header the count is of header bytes; for a cut payload, payload bytes.
void Connection::RecordIncomplete(Journal& journal, const char* why) {
    bool headerCut = m_headerGot < sizeof m_headerBytes;
    char note[96];
    snprintf(note, sizeof note, "%s after %zu of %zu %s bytes", why,
             headerCut ? m_headerGot : m_payloadGot,
             headerCut ? sizeof m_headerBytes : m_payload.size(), headerCut ? "header" : "payload");
    journal.Record(headerCut ? -1 : m_header.cmd, headerCut ? "" : m_payload.data(),
                   headerCut ? 0 : m_payloadGot, em_ComSendReqPkgRecvFinUnexpect, note);
}

}  // namespace nvagent
