// RequestCmd: one request and its answer over the connected agent socket,
// with a bounded wait, and the decoding of a check answer into the record.
#include <malloc.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "cmdclient/cmd_client.h"
#include "cmdclient/request_clock.h"
#include "link/result_codes.h"
#include "wire/wire.h"

int g_iRequestTimeoutMs = 10000;
int g_iSetRequestTimeoutMs = 120000;

namespace {

typedef std::chrono::steady_clock Clock;

struct Exchange {
    int fd;
    Clock::time_point deadline;
    int limitMs;         // the limit the deadline stands for, for the message
    std::string detail;  // why a local failure happened, for sReqRetInfo
};

// Waits until fd is ready for events or the deadline passes.
bool WaitReady(Exchange& ex, short events) {
    for (;;) {
        auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(ex.deadline - Clock::now());
        if (left.count() <= 0)
            break;
        pollfd pfd = {ex.fd, events, 0};
        int rc = poll(&pfd, 1, static_cast<int>(left.count()));
        if (rc > 0)
            return true;
        if (rc < 0 && errno != EINTR) {
            ex.detail = std::string("Waiting for the agent failed: ") + strerror(errno) + ".";
            return false;
        }
    }
    char buf[96];
    snprintf(buf, sizeof buf, "No answer from the agent within %d ms.", ex.limitMs);
    ex.detail = buf;
    return false;
}

int SendAll(Exchange& ex, const char* p, size_t n) {
    while (n > 0) {
        if (!WaitReady(ex, POLLOUT))
            return em_Error;
        ssize_t w = send(ex.fd, p, n, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (w < 0) {
            if (errno == EINTR || errno == EAGAIN)
                continue;
            ex.detail = std::string("Sending to the agent failed: ") + strerror(errno) + ".";
            return em_ComSendReqPkgLenNotMatch;
        }
        p += w;
        n -= static_cast<size_t>(w);
    }
    return em_OK;
}

// Reads until `have` reaches `want` bytes into buf.
int RecvUntil(Exchange& ex, char* buf, size_t& have, size_t want, size_t total) {
    while (have < want) {
        if (!WaitReady(ex, POLLIN))
            return em_Error;
        ssize_t r = recv(ex.fd, buf + have, want - have, MSG_DONTWAIT);
        if (r < 0) {
            if (errno == EINTR || errno == EAGAIN)
                continue;
            ex.detail = std::string("Reading from the agent failed: ") + strerror(errno) + ".";
            return em_ComSendReqPkgRecvFinUnexpect;
        }
        if (r == 0) {
            char msg[128];
            snprintf(msg, sizeof msg, "Received %zu of %zu bytes.", have, total);
            ex.detail = msg;
            return em_ComSendReqPkgRecvFinUnexpect;
        }
        have += static_cast<size_t>(r);
    }
    return em_OK;
}

// The payload is the text held in szCmdBuff, no longer than the length the
// request announces (a payload longer than the buffer was cut when copied).
size_t PayloadLen(const cGlobalVal* p) {
    if (p->iLenToSend <= static_cast<int>(nvwire::kReqHeaderLen))
        return 0;
    size_t announced = static_cast<size_t>(p->iLenToSend) - nvwire::kReqHeaderLen;
    size_t held = strnlen(p->szCmdBuff, sizeof(p->szCmdBuff) - 1);
    return announced < held ? announced : held;
}

int SendRequest(cGlobalVal* p, Exchange& ex) {
    size_t plen = PayloadLen(p);
    // A payload that filled the buffer while the request announces more was
    // cut when copied: sending its first part would carry out another
    // command than the one asked for (a list stored short), so nothing goes.
    size_t announced = p->iLenToSend > static_cast<int>(nvwire::kReqHeaderLen)
                           ? static_cast<size_t>(p->iLenToSend) - nvwire::kReqHeaderLen
                           : 0;
    if (plen == sizeof(p->szCmdBuff) - 1 && announced > plen) {
        char msg[96];
        snprintf(msg, sizeof msg, "The payload has %zu bytes; a command carries at most %zu.",
                 announced, plen);
        ex.detail = msg;
        return em_CmdTooLong;
    }
    size_t total = nvwire::kReqHeaderLen + plen;
    nvwire::PutRequestHeader(p->szSendBuff, static_cast<uint32_t>(total), p->shCmdNo);
    if (total <= sizeof(p->szSendBuff)) {
        memcpy(p->szSendBuff + nvwire::kReqHeaderLen, p->szCmdBuff, plen);
        return SendAll(ex, p->szSendBuff, total);
    }
    int rc = SendAll(ex, p->szSendBuff, nvwire::kReqHeaderLen);
    return rc != em_OK ? rc : SendAll(ex, p->szCmdBuff, plen);
}

// Reads one whole answer. Small answers stay in szRecvBuff; larger ones go
// to a buffer kept between calls so that large states do not reallocate. The
// buffer grows with the bytes that actually arrive, never ahead of them to
// whatever length an answer announces, and a very large one is given back.
const size_t kGrowStep = 1u << 20;
const size_t kKeepBigBuffer = 8u << 20;
std::vector<char> s_big;

int RecvLarge(cGlobalVal* p, Exchange& ex, size_t have, size_t pkglen) {
    s_big.assign(p->szRecvBuff, p->szRecvBuff + have);
    while (have < pkglen) {
        size_t want = std::min(pkglen, have + kGrowStep);
        s_big.resize(want);
        int rc = RecvUntil(ex, s_big.data(), have, want, pkglen);
        if (rc != em_OK)
            return rc;
    }
    return em_OK;
}

void ReleaseLargeBuffer() {
    if (s_big.capacity() > kKeepBigBuffer)
        std::vector<char>().swap(s_big);
}

int RecvAnswer(cGlobalVal* p, Exchange& ex, const char*& pkt, size_t& len) {
    size_t have = 0;
    int rc = RecvUntil(ex, p->szRecvBuff, have, 4, 4);
    if (rc != em_OK)
        return rc;
    uint32_t pkglen = 0;
    rc = nvwire::ParseAnswerLength(p->szRecvBuff, have, pkglen);
    if (rc != em_OK) {
        ex.detail = "The answer announces an impossible length.";
        return rc;
    }
    if (pkglen <= sizeof(p->szRecvBuff)) {
        rc = RecvUntil(ex, p->szRecvBuff, have, pkglen, pkglen);
        pkt = p->szRecvBuff;
    } else {
        rc = RecvLarge(p, ex, have, pkglen);
        pkt = s_big.data();
    }
    if (rc != em_OK)
        return rc;
    p->iLenRecved = static_cast<int>(pkglen);
    len = pkglen;
    return em_OK;
}

// A state decoded from a body up to this size is kept, once replaced, as the
// scratch records of the next check (its strings and vectors keep their
// capacity, so a check of the same state allocates almost nothing). A larger
// one, and whatever a failed decode built, is freed at once and the freed
// memory handed back to the system, so what stays besides the live state is
// bounded whatever an answer held.
const size_t kReuseScratchBody = 4u << 20;

cConf_Inf s_scratchConf;
cSvrState s_scratchSvr;
size_t s_liveBodyLen = 0;  // the body the record's current state came from
// The body of the last set command's answer: its detail's full sentence.
std::string s_fullDetail;

void FreeScratch() {
    s_scratchConf = cConf_Inf();
    s_scratchSvr = cSvrState();
    malloc_trim(0);
}

// Decodes into the scratch records first, so that a malformed answer leaves
// the last good state in place.
int LoadState(cGlobalVal* p, const nvwire::AnswerView& a) {
    int rc = nvwire::DecodeStateBody(a.body, a.bodyLen, s_scratchConf, s_scratchSvr);
    if (rc != em_OK) {
        FreeScratch();
        return rc;
    }
    std::swap(p->objCif, s_scratchConf);
    std::swap(p->objSS, s_scratchSvr);
    size_t replacedBodyLen = s_liveBodyLen;
    s_liveBodyLen = a.bodyLen;
    if (replacedBodyLen >= kReuseScratchBody)
        FreeScratch();
    return em_OK;
}

bool IsCheck(const cGlobalVal* p) {
    return p->shCmdNo == nvwire::kCmdCheck;
}

int Converse(cGlobalVal* p, Exchange& ex) {
    int rc = SendRequest(p, ex);
    if (rc != em_OK)
        return rc;
    const char* pkt = nullptr;
    size_t len = 0;
    rc = RecvAnswer(p, ex, pkt, len);
    if (rc != em_OK)
        return rc;
    nvwire::AnswerView a;
    rc = nvwire::ParseAnswer(pkt, len, a);
    if (rc != em_OK)
        return rc;
    if (a.cmd != p->shCmdNo) {
        ex.detail = "The answer belongs to another command.";
        return em_ParsePkgCmdNoOutOfRange;
    }
    p->sReqRetInfo = a.detail;
    if (!IsCheck(p))
        s_fullDetail.assign(a.body, a.bodyLen);
    if (IsCheck(p) && (a.result == em_OK || a.result == em_ActSuccAll)) {
        rc = LoadState(p, a);
        if (rc != em_OK) {
            p->sReqRetInfo = "The state in the answer could not be read.";
            return rc;
        }
    }
    return a.result;
}

}  // namespace

const std::string& FullDetailOfLastAnswer() {
    return s_fullDetail;
}

int RequestCmd(cGlobalVal* pObj) {
    Exchange ex;
    ex.fd = pObj->fdConn;
    ex.deadline = nvclient::TakeRequestDeadline(pObj->fdConn);
    ex.limitMs = g_iRequestTimeoutMs;
    if (!IsCheck(pObj)) {
        Clock::time_point longer = Clock::now() + std::chrono::milliseconds(g_iSetRequestTimeoutMs);
        if (longer > ex.deadline) {
            ex.deadline = longer;
            ex.limitMs = g_iSetRequestTimeoutMs;
        }
    }
    pObj->iLenRecved = 0;
    pObj->sReqRetInfo.clear();
    s_fullDetail.clear();
    int rc = Converse(pObj, ex);
    if (!ex.detail.empty())
        pObj->sReqRetInfo = ex.detail;
    close(pObj->fdConn);
    pObj->fdConn = -1;
    ReleaseLargeBuffer();
    pObj->iRet = rc;
    return rc;
}
