// Fuzz target: arbitrary bytes as what a client sends to the agent. The
// input is read as a stream of request packets (u32 length, i16 command,
// payload) and goes two ways, each against a fresh in-memory simulator over
// the same small base state: the first request through the agent's
// connection state machine over a socket pair (header and payload reading,
// answer writing, draining, journal), and every complete request in turn through the command
// dispatch, so that a later request sees the state the earlier ones made. Every answer must be a
// well-formed packet for the command asked, and every check answer must
// decode on the client's side.
#include <fcntl.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>

#include "agent/backend.h"
#include "agent/connection.h"
#include "agent/journal.h"
#include "agent/request_dispatch.h"
#include "agent/sim/sim_engine.h"
#include "agent/sim/sim_state.h"
#include "agent/sim/sim_state_json.h"
#include "link/result_codes.h"
#include "link/state_record.h"
#include "peer_pump.h"
#include "wire/wire.h"

namespace {

// Enough for add-then-delete sequences without letting one input grow the
// state without end.
constexpr int kMaxRequestsPerInput = 64;

nvagent::Journal* g_journal = nullptr;

void Fail(const char* what) {
    fprintf(stderr, "fuzz_request_decoder: %s\n", what);
    abort();
}

// The state every input starts from: one entry in each list that a delete
// command works on, two interfaces and a user, so that the handlers get past
// their "no such entry" checks.
const char kBaseState[] = R"({
  "sHostname": "web01",
  "vDV": [{"szPart": "/dev/vdb1", "iCeil": 1000, "iFloor": 100, "iItv": 50}],
  "vBakForSize": [{"szFileName": "/var/log/syslog", "szBakDir": "/backup", "iKilobyte": 2048}],
  "simInputRules": [
    {"proto": "tcp", "src": "", "sport": 0, "dst": "", "dport": 22, "action": "accept"}],
  "simOutputRules": [
    {"proto": "udp", "src": "10.0.0.0/8", "sport": 0, "dst": "", "dport": 53, "action": "drop"}],
  "simInterfaces": [
    {"name": "eth0", "mac": "52:54:00:3a:1f:07", "mode": "static", "up": true,
     "ip": "192.168.1.20", "mask": "255.255.255.0", "gateway": "192.168.1.1",
     "dns1": "192.168.1.1", "dns2": ""},
    {"name": "lo", "mac": "00:00:00:00:00:00", "mode": "static", "up": true,
     "ip": "127.0.0.1", "mask": "255.0.0.0", "gateway": "", "dns1": "", "dns2": ""}],
  "simUsers": [{"name": "root", "pwChanged": 0}]
})";

// 2024-02-09 10:11:12 UTC.
constexpr time_t kBaseTime = 1707473472;

nvagent::SimState* g_baseState = nullptr;

// A simulator over a copy of the base state that keeps its changes in memory.
// Its clock starts at the same moment for every input and moves one second
// per reading, so that runs repeat exactly and the cached check body's
// in-place time update is taken.
std::unique_ptr<nvagent::Backend> FreshBackend() {
    time_t now = kBaseTime;
    return std::make_unique<nvagent::SimEngine>(*g_baseState, std::string(),
                                                [now]() mutable { return now++; });
}

bool IsEmRet(int rc) {
    return (rc >= em_Start && rc <= em_FileNotExist) || (rc >= -1 && rc <= em_CmdTooLong);
}

// Checks one answer packet of the agent for the command cmd and returns its
// result code.
int CheckAnswer(const char* p, size_t n, short cmd) {
    nvwire::AnswerView a;
    if (nvwire::ParseAnswer(p, n, a) != em_OK)
        Fail("the agent's answer does not parse");
    if (a.cmd != cmd)
        Fail("the answer does not echo the command");
    if (!IsEmRet(a.result))
        Fail("the answer carries a result outside EM_RET");
    if (cmd == nvwire::kCmdCheck && a.result == em_OK) {
        cConf_Inf c;
        cSvrState s;
        if (nvwire::DecodeStateBody(a.body, a.bodyLen, c, s) != em_OK) {
            Fail("the agent's check answer does not decode");
        }
    } else if (a.bodyLen != 0 && a.detail.empty()) {
        // Any other answer's body is the detail's full English sentence,
        // sent only beside a shorter or translated detail.
        Fail("an answer without a detail carries a body");
    }
    return a.result;
}

// Drives one connection to its end the way the server's event loop does,
// with poll on its single socket and the dispatch done in place.
void ServeConnection(nvagent::Backend& backend, int fd) {
    nvagent::ConnectionLimits limits;
    nvagent::Connection conn(fd, 0, limits, nvagent::Clock::now());
    nvagent::AnswerBuffers bufs;
    using Phase = nvagent::Connection::Phase;
    while (conn.GetPhase() != Phase::kDone) {
        nvagent::Clock::time_point now = nvagent::Clock::now();
        if (conn.GetPhase() == Phase::kDispatching) {
            int rc = nvagent::AnswerRequest(backend, conn.Cmd(), conn.Payload(), bufs);
            g_journal->Record(conn.Cmd(), conn.Payload().data(), conn.Payload().size(), rc);
            conn.SetAnswer(std::string(bufs.answer), now);
            conn.OnWritable(now);
            continue;
        }
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(conn.Deadline() - now);
        pollfd pfd = {fd, static_cast<short>(conn.WantedEvents()), 0};
        int ready = poll(&pfd, 1, static_cast<int>(std::max<long long>(0, left.count())));
        if (ready == 0) {
            conn.OnDeadline(*g_journal);
        } else if (conn.GetPhase() == Phase::kWriting) {
            conn.OnWritable(nvagent::Clock::now());
        } else {
            conn.OnReadable(*g_journal, nvagent::Clock::now());
        }
    }
}

// The first request, served by a connection from a socket, which closes once
// the peer has sent everything and the answer is out.
void ThroughConnection(const char* p, size_t n) {
    std::unique_ptr<nvagent::Backend> backend = FreshBackend();
    int agentFd = -1;
    int clientFd = -1;
    nvfuzz::MakeSocketPair(agentFd, clientFd);
    fcntl(agentFd, F_SETFL, fcntl(agentFd, F_GETFL) | O_NONBLOCK);
    nvfuzz::PeerPump client(clientFd, p, n);
    ServeConnection(*backend, agentFd);
    client.Join();

    const std::string& got = client.Received();
    nvwire::RequestHeader h;
    if (n < nvwire::kReqHeaderLen) {
        if (!got.empty())
            Fail("an answer to a request cut inside its header");
        return;
    }
    if (nvwire::ParseRequestHeader(p, n, h) != em_OK) {
        short cmd = static_cast<short>(
            static_cast<uint16_t>(static_cast<uint8_t>(p[4]) | (static_cast<uint8_t>(p[5]) << 8)));
        if (CheckAnswer(got.data(), got.size(), cmd) != em_ParsePkgPkglenNotMatch) {
            Fail("a bad request length was not answered em_ParsePkgPkglenNotMatch");
        }
        return;
    }
    if (h.pkglen > n) {
        if (!got.empty())
            Fail("an answer to a request cut inside its payload");
        return;
    }
    CheckAnswer(got.data(), got.size(), h.cmd);
}

// Every complete request of the input, in order, through the dispatch.
void ThroughDispatch(const char* p, size_t n) {
    std::unique_ptr<nvagent::Backend> backend = FreshBackend();
    nvagent::AnswerBuffers bufs;
    std::string payload;
    size_t off = 0;
    for (int i = 0; i < kMaxRequestsPerInput && n - off >= nvwire::kReqHeaderLen; ++i) {
        nvwire::RequestHeader h;
        if (nvwire::ParseRequestHeader(p + off, n - off, h) != em_OK)
            break;
        if (h.pkglen > n - off)
            break;
        payload.assign(p + off + nvwire::kReqHeaderLen, h.pkglen - nvwire::kReqHeaderLen);
        int rc = nvagent::AnswerRequest(*backend, h.cmd, payload, bufs);
        if (CheckAnswer(bufs.answer.data(), bufs.answer.size(), h.cmd) != rc) {
            Fail("the answer carries another code than the dispatch returned");
        }
        if (h.cmd == nvwire::kCmdCheck && rc != em_OK)
            Fail("a check was not answered em_OK");
        off += h.pkglen;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // A journal that writes every line to /dev/null, so that the line
    // formatting of every request is exercised too.
    static nvagent::Journal journal;
    std::string err;
    if (!journal.Open("/dev/null", err)) {
        fprintf(stderr, "fuzz_request_decoder: %s\n", err.c_str());
        abort();
    }
    g_journal = &journal;
    static nvagent::SimState base;
    if (!nvagent::SimStateFromText(kBaseState, base, err)) {
        fprintf(stderr, "fuzz_request_decoder: base state: %s\n", err.c_str());
        abort();
    }
    g_baseState = &base;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* p = reinterpret_cast<const char*>(data);
    ThroughConnection(p, size);
    ThroughDispatch(p, size);
    return 0;
}
