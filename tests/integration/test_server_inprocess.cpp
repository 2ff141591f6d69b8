// The agent's server run inside the test process over a real socket, with a
// small scripted backend: framing, dispatch, journal, deadlines, peer check,
// socket file handling and stopping.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "agent/journal.h"
#include "agent/server.h"
#include "agent_process.h"
#include "child_process.h"
#include "link/result_codes.h"
#include "raw_client.h"
#include "temp_dir.h"
#include "wire/wire.h"

namespace {

using nvtest::Answer;
using nvtest::RawReply;
using Clock = std::chrono::steady_clock;

long MsSince(Clock::time_point t) {
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

// Reports a fixed version and one flag that command 4 sets to "1" or "0";
// command 6 "noted" is refused with a note for the journal; anything else
// it refuses with a detail.
class ScriptedBackend : public nvagent::Backend {
public:
    void CheckBody(std::string& body) override {
        cConf_Inf conf;
        cSvrState svr;
        conf.sVersion = "scripted-1";
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            conf.chIcmpEchoIgnoreAll = m_flag;
        }
        nvwire::Writer w(body);
        nvwire::EncodeConf(w, conf);
        nvwire::EncodeSvr(w, svr);
    }

    using nvagent::Backend::Apply;
    nvagent::CmdResult Apply(short cmd, const std::string& payload, const nvagent::Peer&) override {
        ++m_applied;
        std::this_thread::sleep_for(std::chrono::milliseconds(m_applyDelayMs.load()));
        if (cmd == 4 && (payload == "1" || payload == "0")) {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_flag = payload[0];
            return {em_ActSuccAll, ""};
        }
        if (cmd == 6 && payload == "noted") {
            nvagent::CmdResult r(em_ActFail, "refused");
            r.sNote = "refused: a note \"quoted\"";
            return r;
        }
        return {em_ActPostValueNotValid, "cmd " + std::to_string(cmd) + " payload " + payload};
    }

    std::atomic<int> m_applied{0};
    std::atomic<int> m_applyDelayMs{0};

private:
    std::mutex m_mutex;
    char m_flag = '0';
};

class InProcessServer : public ::testing::Test {
protected:
    void StartServer(std::chrono::milliseconds readTimeout = std::chrono::milliseconds(2000)) {
        std::string err;
        ASSERT_TRUE(m_journal.Open(JournalPath(), err)) << err;
        nvagent::ServerOptions opts;
        opts.sSocketPath = SocketPath();
        opts.limits.readTimeout = readTimeout;
        m_server = std::make_unique<nvagent::Server>(m_backend, m_journal, opts);
        ASSERT_TRUE(m_server->Listen(err)) << err;
        ASSERT_TRUE(m_server->Start(err)) << err;
    }

    std::string SocketPath() const { return m_dir.File("sock"); }
    std::string JournalPath() const { return m_dir.File("journal.jsonl"); }
    std::vector<nlohmann::json> Journal() const { return nvtest::ReadJsonLines(JournalPath()); }

    void ExpectCheckWorks() {
        cConf_Inf conf;
        cSvrState svr;
        std::string err;
        ASSERT_TRUE(nvtest::CheckState(SocketPath(), conf, svr, err)) << err;
        EXPECT_EQ(conf.sVersion, "scripted-1");
    }

    nvtest::TempDir m_dir;
    ScriptedBackend m_backend;
    nvagent::Journal m_journal;
    std::unique_ptr<nvagent::Server> m_server;
};

TEST_F(InProcessServer, SocketIsCreatedWithMode0600) {
    StartServer();
    struct stat st;
    ASSERT_EQ(lstat(SocketPath().c_str(), &st), 0);
    EXPECT_TRUE(S_ISSOCK(st.st_mode));
    EXPECT_EQ(st.st_mode & 07777, 0600u);
}

TEST_F(InProcessServer, CheckIsAnsweredWithTheBackendState) {
    StartServer();
    Answer a = nvtest::Request(SocketPath(), nvwire::kCmdCheck, "");
    ASSERT_TRUE(a.bOk) << a.sError;
    EXPECT_EQ(a.cmd, nvwire::kCmdCheck);
    EXPECT_EQ(a.result, em_OK);
    EXPECT_EQ(a.sDetail, "");
    cConf_Inf conf;
    cSvrState svr;
    ASSERT_EQ(nvwire::DecodeStateBody(a.sBody.data(), a.sBody.size(), conf, svr), em_OK);
    EXPECT_EQ(conf.sVersion, "scripted-1");
    EXPECT_EQ(conf.chIcmpEchoIgnoreAll, '0');
}

TEST_F(InProcessServer, SetCommandsGoToTheBackendWithTheirCodeAndDetail) {
    StartServer();
    Answer set = nvtest::Request(SocketPath(), 4, "1");
    ASSERT_TRUE(set.bOk) << set.sError;
    EXPECT_EQ(set.cmd, 4);
    EXPECT_EQ(set.result, em_ActSuccAll);
    EXPECT_EQ(set.sBody, "");
    cConf_Inf conf;
    cSvrState svr;
    std::string err;
    ASSERT_TRUE(nvtest::CheckState(SocketPath(), conf, svr, err)) << err;
    EXPECT_EQ(conf.chIcmpEchoIgnoreAll, '1');

    for (short cmd : {short(2), short(5), short(63)}) {
        Answer a = nvtest::Request(SocketPath(), cmd, "xy");
        ASSERT_TRUE(a.bOk) << a.sError;
        EXPECT_EQ(a.result, em_ActPostValueNotValid);
        EXPECT_EQ(a.sDetail, "cmd " + std::to_string(cmd) + " payload xy");
    }
    EXPECT_EQ(m_backend.m_applied.load(), 4);
}

TEST_F(InProcessServer, UnknownCommandNumbersAreRefused) {
    StartServer();
    for (short cmd : {short(0), short(3), short(64), short(500), short(-1), short(-32768)}) {
        Answer a = nvtest::Request(SocketPath(), cmd, "abc");
        ASSERT_TRUE(a.bOk) << a.sError;
        EXPECT_EQ(a.cmd, cmd);
        EXPECT_EQ(a.result, em_ParsePkgCmdNoOutOfRange);
        EXPECT_EQ(a.sDetail, "unknown command " + std::to_string(cmd));
    }
    EXPECT_EQ(m_backend.m_applied.load(), 0);
}

TEST_F(InProcessServer, BadPacketLengthGetsAnErrorAnswerAndServingGoesOn) {
    StartServer();
    for (uint32_t len : {0u, 5u, nvwire::kMaxRequestLen + 1, 0xffffffffu}) {
        char header[nvwire::kReqHeaderLen];
        nvwire::PutRequestHeader(header, len, nvwire::kCmdCheck);
        RawReply raw = nvtest::RawExchange(SocketPath(), std::string(header, sizeof header));
        ASSERT_TRUE(raw.bClosed) << "length " << len;
        nvwire::AnswerView v;
        ASSERT_EQ(nvwire::ParseAnswer(raw.sBytes.data(), raw.sBytes.size(), v), em_OK);
        EXPECT_EQ(v.result, em_ParsePkgPkglenNotMatch);
        EXPECT_NE(v.detail.find(std::to_string(len)), std::string::npos) << v.detail;
        ExpectCheckWorks();
    }
}

TEST_F(InProcessServer, TruncatedRequestGetsNoAnswerAndIsJournaled) {
    StartServer();
    std::string whole = nvtest::MakeRequest(4, std::string(100, 'x'));
    RawReply cutPayload = nvtest::RawExchange(SocketPath(), whole.substr(0, 16), true);
    EXPECT_TRUE(cutPayload.bClosed);
    EXPECT_EQ(cutPayload.sBytes, "");
    RawReply cutHeader = nvtest::RawExchange(SocketPath(), whole.substr(0, 3), true);
    EXPECT_TRUE(cutHeader.bClosed);
    EXPECT_EQ(cutHeader.sBytes, "");
    ExpectCheckWorks();
    EXPECT_EQ(m_backend.m_applied.load(), 0);

    RawReply negative =
        nvtest::RawExchange(SocketPath(), nvtest::MakeRequest(-5, "abcd").substr(0, 8), true);
    EXPECT_EQ(negative.sBytes, "");

    std::vector<nlohmann::json> lines = Journal();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0]["cmd"], 4);
    EXPECT_EQ(lines[0]["len"], 10);
    EXPECT_EQ(lines[0]["payload_hex"], "78787878787878787878");
    EXPECT_EQ(lines[0]["result"], em_ComSendReqPkgRecvFinUnexpect);
    EXPECT_EQ(lines[0]["note"], "closed after 10 of 100 payload bytes");
    EXPECT_EQ(lines[1]["cmd"], -1);
    EXPECT_EQ(lines[1]["result"], em_ComSendReqPkgRecvFinUnexpect);
    EXPECT_EQ(lines[1]["note"], "closed after 3 of 6 header bytes");
    EXPECT_EQ(lines[3]["cmd"], -5);
    EXPECT_EQ(lines[3]["payload_hex"], "6162");
    EXPECT_EQ(lines[3]["note"], "closed after 2 of 4 payload bytes");
}

TEST_F(InProcessServer, ConnectionClosedWithoutAByteLeavesNoJournalLine) {
    StartServer();
    RawReply r = nvtest::RawExchange(SocketPath(), "", true);
    EXPECT_TRUE(r.bClosed);
    EXPECT_EQ(r.sBytes, "");
    ExpectCheckWorks();
    EXPECT_EQ(Journal().size(), 1u);
}

TEST_F(InProcessServer, JournalLinesDescribeEachRequest) {
    StartServer();
    ASSERT_TRUE(nvtest::Request(SocketPath(), nvwire::kCmdCheck, "").bOk);
    ASSERT_TRUE(nvtest::Request(SocketPath(), 4, "1").bOk);
    ASSERT_TRUE(nvtest::Request(SocketPath(), 5, std::string("\x00\xff", 2)).bOk);
    std::string text = nvtest::ReadFile(JournalPath());
    EXPECT_EQ(text,
              "{\"cmd\": 1, \"len\": 0, \"payload_hex\": \"\", \"result\": 0}\n"
              "{\"cmd\": 4, \"len\": 1, \"payload_hex\": \"31\", \"result\": 7}\n"
              "{\"cmd\": 5, \"len\": 2, \"payload_hex\": \"00ff\", \"result\": 2}\n");
}

TEST_F(InProcessServer, BackendsNoteIsJournalledWithItsAnswer) {
    StartServer();
    ASSERT_TRUE(nvtest::Request(SocketPath(), 6, "noted").bOk);
    ASSERT_TRUE(nvtest::Request(SocketPath(), 4, "1").bOk);
    std::vector<nlohmann::json> lines = Journal();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]["result"], em_ActFail);
    EXPECT_EQ(lines[0]["note"], "refused: a note \"quoted\"");
    // The next request's line carries no note of the one before.
    EXPECT_FALSE(lines[1].contains("note"));
}

TEST_F(InProcessServer, StalledClientsDoNotDelayOthersAndAreCutAtTheDeadline) {
    StartServer(std::chrono::milliseconds(800));
    std::vector<int> stalled;
    for (int i = 0; i < 3; ++i) {
        int fd = nvtest::ConnectUnix(SocketPath());
        ASSERT_GE(fd, 0);
        if (i == 1)
            nvtest::SendAll(fd, std::string("\x10\x00\x00", 3));
        if (i == 2)
            nvtest::SendAll(fd, nvtest::MakeRequest(4, "1").substr(0, 6));
        stalled.push_back(fd);
    }
    Clock::time_point start = Clock::now();
    ExpectCheckWorks();
    EXPECT_LT(MsSince(start), 400);

    for (int fd : stalled) {
        RawReply r = nvtest::ReadUntilClose(fd, 5000);
        EXPECT_TRUE(r.bClosed);
        EXPECT_EQ(r.sBytes, "");
        close(fd);
    }
    EXPECT_GE(MsSince(start), 700);
    int timeouts = 0;
    for (const nlohmann::json& line : Journal()) {
        if (line.contains("note") && line["note"].get<std::string>().rfind("timed out", 0) == 0) {
            ++timeouts;
        }
    }
    EXPECT_EQ(timeouts, 3);
}

TEST_F(InProcessServer, ClientThatHangsUpWhileAnsweredIsAnsweredOnce) {
    StartServer();
    m_backend.m_applyDelayMs = 200;
    int fd = nvtest::ConnectUnix(SocketPath());
    ASSERT_GE(fd, 0);
    ASSERT_TRUE(nvtest::SendAll(fd, nvtest::MakeRequest(4, "1")));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    close(fd);
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    m_backend.m_applyDelayMs = 0;
    ExpectCheckWorks();
    EXPECT_EQ(m_backend.m_applied.load(), 1);
    EXPECT_EQ(Journal().size(), 2u);
}

TEST_F(InProcessServer, ClientsBeyondTheTotalCapWaitInTheQueue) {
    std::string err;
    ASSERT_TRUE(m_journal.Open(JournalPath(), err)) << err;
    nvagent::ServerOptions opts;
    opts.sSocketPath = SocketPath();
    opts.iMaxConnections = 3;
    opts.limits.readTimeout = std::chrono::milliseconds(300);
    m_server = std::make_unique<nvagent::Server>(m_backend, m_journal, opts);
    ASSERT_TRUE(m_server->Listen(err)) << err;
    ASSERT_TRUE(m_server->Start(err)) << err;
    std::vector<int> idle;
    for (int i = 0; i < 3; ++i)
        idle.push_back(nvtest::ConnectUnix(SocketPath()));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    // The fourth client is not refused: it waits until an idle one is cut.
    Clock::time_point start = Clock::now();
    ExpectCheckWorks();
    EXPECT_GE(MsSince(start), 200);
    for (int fd : idle) {
        EXPECT_TRUE(nvtest::ReadUntilClose(fd, 2000).bClosed);
        close(fd);
    }
}

TEST_F(InProcessServer, ConcurrentClientsGetConsistentAnswers) {
    StartServer();
    constexpr int kThreads = 8;
    constexpr int kRounds = 100;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; ++i) {
                if ((i + t) % 2 == 0) {
                    Answer a = nvtest::Request(SocketPath(), 4, i % 4 < 2 ? "1" : "0");
                    if (!a.bOk || a.result != em_ActSuccAll)
                        ++failures;
                    continue;
                }
                cConf_Inf conf;
                cSvrState svr;
                std::string err;
                if (!nvtest::CheckState(SocketPath(), conf, svr, err) ||
                    (conf.chIcmpEchoIgnoreAll != '0' && conf.chIcmpEchoIgnoreAll != '1')) {
                    ++failures;
                }
            }
        });
    }
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(Journal().size(), static_cast<size_t>(kThreads * kRounds));
}

TEST_F(InProcessServer, StopRemovesTheSocketAndRefusesNewClients) {
    StartServer();
    ExpectCheckWorks();
    m_server->Stop();
    struct stat st;
    EXPECT_NE(lstat(SocketPath().c_str(), &st), 0);
    EXPECT_LT(nvtest::ConnectUnix(SocketPath()), 0);
    m_server->Stop();
}

TEST_F(InProcessServer, StopWaitsOnlyForTheReadDeadlineOfAStalledClient) {
    StartServer(std::chrono::milliseconds(500));
    int fd = nvtest::ConnectUnix(SocketPath());
    ASSERT_GE(fd, 0);
    ExpectCheckWorks();
    Clock::time_point start = Clock::now();
    m_server->Stop();
    EXPECT_LT(MsSince(start), 2000);
    close(fd);
}

TEST_F(InProcessServer, StaleSocketFileIsReplaced) {
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    snprintf(addr.sun_path, sizeof addr.sun_path, "%s", SocketPath().c_str());
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    close(fd);
    StartServer();
    ExpectCheckWorks();
}

TEST_F(InProcessServer, LiveAgentOnThePathIsNotDisturbed) {
    StartServer();
    nvagent::ServerOptions opts;
    opts.sSocketPath = SocketPath();
    nvagent::Server second(m_backend, m_journal, opts);
    std::string err;
    EXPECT_FALSE(second.Listen(err));
    EXPECT_EQ(err, "another agent is listening on " + SocketPath());
    second.Stop();
    ExpectCheckWorks();
}

TEST_F(InProcessServer, FileThatIsNotASocketIsLeftAlone) {
    ASSERT_TRUE(nvtest::WriteFile(SocketPath(), "keep me"));
    nvagent::ServerOptions opts;
    opts.sSocketPath = SocketPath();
    nvagent::Server server(m_backend, m_journal, opts);
    std::string err;
    EXPECT_FALSE(server.Listen(err));
    EXPECT_NE(err.find("not a socket"), std::string::npos) << err;
    EXPECT_EQ(nvtest::ReadFile(SocketPath()), "keep me");
}

// Runs in a forked child that became uid 65534: exit 0 when the agent closed
// the connection without answering, 1 when it answered, 2 when the exchange
// could not be made at all.
[[noreturn]] void ExchangeAsNobody(const std::string& path, const std::string& request) {
    if (setgid(65534) != 0 || setuid(65534) != 0)
        _exit(2);
    RawReply r = nvtest::RawExchange(path, request);
    if (!r.bConnected || !r.bClosed)
        _exit(2);
    _exit(r.sBytes.empty() ? 0 : 1);
}

TEST_F(InProcessServer, PeerOfAnotherUserIsClosedUnanswered) {
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to act as another user";
    StartServer();
    ASSERT_EQ(chmod(m_dir.Path().c_str(), 0711), 0);
    ASSERT_EQ(chmod(SocketPath().c_str(), 0666), 0);
    std::string request = nvtest::MakeRequest(nvwire::kCmdCheck, "");
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0)
        ExchangeAsNobody(SocketPath(), request);
    int status = -1;
    bool ended = nvtest::WaitExit(pid, 10000, status);
    if (!ended)
        nvtest::KillAndReap(pid);
    ASSERT_TRUE(ended);
    EXPECT_EQ(nvtest::ExitCodeOf(status), 0);
    std::vector<nlohmann::json> lines = Journal();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0]["note"], "peer uid 65534 refused");
    ExpectCheckWorks();
}

}  // namespace
