// One connection, one request: check the peer, read the header and exactly
// the payload before the read deadline, answer, journal, close.
#include "agent/connection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>

#include "link/result_codes.h"
#include "wire/wire.h"

namespace nvagent {

namespace {

// Buffers that grew for an unusually large request are given back rather
// than kept by the worker for good.
constexpr size_t kKeptBufferCap = 64 * 1024;

void ShrinkIfLarge(std::string& s) {
    if (s.capacity() > kKeptBufferCap)
        std::string().swap(s);
}

const char* StatusWord(IoStatus st) {
    switch (st) {
        case IoStatus::kEof:
            return "closed";
        case IoStatus::kTimeout:
            return "timed out";
        default:
            return "failed";
    }
}

}  // namespace

ConnectionHandler::ConnectionHandler(Backend& backend, Journal& journal,
                                     const ConnectionLimits& limits)
    : m_backend(backend), m_journal(journal), m_limits(limits), m_selfUid(geteuid()) {}

void ConnectionHandler::Serve(int fd) {
    Handle(fd);
    close(fd);
    TrimBuffers();
}

void ConnectionHandler::Handle(int fd) {
    uid_t uid = 0;
    if (!PeerAllowed(fd, uid)) {
        char note[64];
        snprintf(note, sizeof note, "peer uid %u refused", static_cast<unsigned>(uid));
        m_journal.Record(-1, "", 0, em_Error, note);
        return;
    }
    Clock::time_point deadline = Clock::now() + m_limits.readTimeout;
    char header[nvwire::kReqHeaderLen];
    size_t got = 0;
    IoStatus st = ReadFull(fd, header, sizeof header, deadline, got);
    if (st != IoStatus::kOk) {
        // A connection closed without a single byte carried no request.
        if (!(st == IoStatus::kEof && got == 0))
            RecordIncomplete(-1, true, got, sizeof header, st);
        return;
    }
    nvwire::RequestHeader h;
    if (nvwire::ParseRequestHeader(header, sizeof header, h) != em_OK) {
        AnswerBadLength(fd, h.pkglen, h.cmd);
        return;
    }
    m_payload.resize(h.pkglen - nvwire::kReqHeaderLen);
    st = ReadFull(fd, &m_payload[0], m_payload.size(), deadline, got);
    if (st != IoStatus::kOk) {
        RecordIncomplete(h.cmd, false, got, m_payload.size(), st);
        return;
    }
    int result = AnswerRequest(m_backend, h.cmd, m_payload, m_bufs);
    m_journal.Record(h.cmd, m_payload.data(), m_payload.size(), result);
    Send(fd);
}

bool ConnectionHandler::PeerAllowed(int fd, uid_t& uid) const {
    ucred cred{};
    socklen_t len = sizeof cred;
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &cred, &len) != 0) {
        uid = static_cast<uid_t>(-1);
        return false;
    }
    uid = cred.uid;
    return uid == 0 || uid == m_selfUid;
}

// The request stopped short: nothing can be answered, only recorded. For a
// cut header got counts header bytes; for a cut payload, payload bytes.
void ConnectionHandler::RecordIncomplete(int cmd, bool headerCut, size_t got, size_t expected,
                                         IoStatus st) {
    char note[96];
    snprintf(note, sizeof note, "%s after %zu of %zu %s bytes", StatusWord(st), got, expected,
             headerCut ? "header" : "payload");
    const char* payload = headerCut ? "" : m_payload.data();
    size_t len = headerCut ? 0 : got;
    m_journal.Record(cmd, payload, len, em_ComSendReqPkgRecvFinUnexpect, note);
}

void ConnectionHandler::AnswerBadLength(int fd, uint32_t pkglen, short cmd) {
    char detail[96];
    snprintf(detail, sizeof detail, "packet length %u outside %u..%u", pkglen,
             nvwire::kReqHeaderLen, nvwire::kMaxRequestLen);
    nvwire::BuildAnswer(m_bufs.answer, cmd, em_ParsePkgPkglenNotMatch, detail, "", 0);
    m_journal.Record(cmd, "", 0, em_ParsePkgPkglenNotMatch, detail);
    Send(fd);
}

void ConnectionHandler::Send(int fd) {
    WriteFull(fd, m_bufs.answer.data(), m_bufs.answer.size(), Clock::now() + m_limits.writeTimeout);
}

void ConnectionHandler::TrimBuffers() {
    ShrinkIfLarge(m_payload);
    ShrinkIfLarge(m_bufs.body);
    ShrinkIfLarge(m_bufs.answer);
}

}  // namespace nvagent
