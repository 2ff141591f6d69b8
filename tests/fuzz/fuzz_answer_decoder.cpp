// Fuzz target: arbitrary bytes as an agent's answer to a check request.
// Every input goes three ways: through the framing and state decoders on
// their own, through the state decoder as a bare body, and through
// RequestCmd reading it from a socket pair. The decoded state must encode
// back stably, and RequestCmd must load exactly the state the decoders
// accept and keep the previous state otherwise.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "cmdclient/cmd_client.h"
#include "link/global_val.h"
#include "link/result_codes.h"
#include "peer_pump.h"
#include "wire/wire.h"

namespace {

void Fail(const char* what) {
    fprintf(stderr, "fuzz_answer_decoder: %s\n", what);
    abort();
}

std::string EncodeState(const cConf_Inf& c, const cSvrState& s) {
    std::string out;
    nvwire::Writer w(out);
    nvwire::EncodeConf(w, c);
    nvwire::EncodeSvr(w, s);
    return out;
}

// Decodes a check body. On success the encoding of the result is returned in
// encoded; it may be shorter than the body (char arrays stop at a NUL) but
// must itself decode and encode to the same bytes.
bool DecodeBody(const char* body, size_t n, std::string& encoded) {
    cConf_Inf c;
    cSvrState s;
    if (nvwire::DecodeStateBody(body, n, c, s) != em_OK)
        return false;
    encoded = EncodeState(c, s);
    if (encoded.size() > n)
        Fail("re-encoded state is longer than the body it came from");
    cConf_Inf c2;
    cSvrState s2;
    if (nvwire::DecodeStateBody(encoded.data(), encoded.size(), c2, s2) != em_OK) {
        Fail("re-encoded state does not decode");
    }
    if (EncodeState(c2, s2) != encoded)
        Fail("state encoding is not stable");
    return true;
}

// What RequestCmd must make of the input: the answer's framing, and whether
// it carries a check state to load.
struct Expected {
    bool framed = false;  // a whole answer packet is at the start of the input
    nvwire::AnswerView answer;
    bool loads = false;  // the state in it is to replace the record's
    std::string state;   // its encoding when loads
};

Expected DecodeStandalone(const char* p, size_t n) {
    Expected e;
    uint32_t pkglen = 0;
    nvwire::AnswerView whole;
    nvwire::ParseAnswer(p, n, whole);
    if (nvwire::ParseAnswerLength(p, n, pkglen) != em_OK || pkglen > n)
        return e;
    if (nvwire::ParseAnswer(p, pkglen, e.answer) != em_OK)
        return e;
    e.framed = true;
    const nvwire::AnswerView& a = e.answer;
    if (a.body < p || a.body + a.bodyLen != p + pkglen)
        Fail("answer body outside the packet");
    if (a.detail.size() > nvwire::kMaxDetailLen)
        Fail("detail longer than allowed");
    std::string state;
    bool decoded = DecodeBody(a.body, a.bodyLen, state);
    if (a.cmd == nvwire::kCmdCheck && (a.result == em_OK || a.result == em_ActSuccAll) && decoded) {
        e.loads = true;
        e.state = state;
    }
    return e;
}

void ThroughRequestCmd(const char* p, size_t n, const Expected& e) {
    cGlobalVal* g = pg_Obj;
    std::string before = EncodeState(g->objCif, g->objSS);
    int clientFd = -1;
    int peerFd = -1;
    nvfuzz::MakeSocketPair(clientFd, peerFd);
    nvfuzz::PeerPump peer(peerFd, p, n);
    g->fdConn = clientFd;
    g->sCmdName = "check";
    g->shCmdNo = nvwire::kCmdCheck;
    g->szCmdBuff[0] = '\0';
    g->iLenToSend = static_cast<int>(nvwire::kReqHeaderLen);
    int rc = RequestCmd(g);
    peer.Join();

    static const char kCheckRequest[] = {6, 0, 0, 0, nvwire::kCmdCheck, 0};
    if (peer.Received() != std::string(kCheckRequest, sizeof kCheckRequest)) {
        Fail("RequestCmd did not send exactly the check request");
    }
    if (g->fdConn != -1)
        Fail("RequestCmd left fdConn set");
    std::string after = EncodeState(g->objCif, g->objSS);
    if (e.loads) {
        if (rc != e.answer.result)
            Fail("RequestCmd returned another code than the answer's");
        if (after != e.state)
            Fail("RequestCmd loaded another state than the decoder");
        if (g->sReqRetInfo != e.answer.detail)
            Fail("detail text not taken from the answer");
    } else {
        if (after != before)
            Fail("RequestCmd changed the state without a loadable answer");
        if (rc == em_OK || rc == em_ActSuccAll) {
            if (!e.framed || e.answer.cmd != nvwire::kCmdCheck || rc != e.answer.result) {
                Fail("RequestCmd reported success for an answer it could not use");
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The peer shuts its side down after the input, so no read ever waits on
    // a live but silent agent; the limit only bounds a hang.
    g_iRequestTimeoutMs = 5000;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* p = reinterpret_cast<const char*>(data);
    std::string ignored;
    DecodeBody(p, size, ignored);
    Expected e = DecodeStandalone(p, size);
    ThroughRequestCmd(p, size, e);
    return 0;
}
