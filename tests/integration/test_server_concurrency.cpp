// The real norvaned with several clients at once: stalled clients, parallel
// set commands and checks, and a peer of another user.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <iterator>
#include <thread>
#include <vector>

#include "agent_process.h"
#include "child_process.h"
#include "link/result_codes.h"
#include "raw_client.h"
#include "temp_dir.h"
#include "wire/wire.h"

namespace {

using Clock = std::chrono::steady_clock;
using nvtest::Answer;
using nvtest::RawReply;

long MsSince(Clock::time_point t) {
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

// Flag commands and the state-file key and record field each one sets.
struct FlagCmd {
    short cmd;
    const char* key;
    char cConf_Inf::*field;
};

const FlagCmd kFlags[] = {
    {4, "chIcmpEchoIgnoreAll", &cConf_Inf::chIcmpEchoIgnoreAll},
    {5, "chTcpSyncookies", &cConf_Inf::chTcpSyncookies},
    {6, "chTcpTwReuse", &cConf_Inf::chTcpTwReuse},
    {14, "chFileMonitFlag", &cConf_Inf::chFileMonitFlag},
    {16, "chProcessMonitFlag", &cConf_Inf::chProcessMonitFlag},
    {19, "chCpuMonitFlag", &cConf_Inf::chCpuMonitFlag},
    {21, "chMemMonitFlag", &cConf_Inf::chMemMonitFlag},
    {40, "chVsftpdAnonEnable", &cConf_Inf::chVsftpdAnonEnable},
};

class AgentConcurrency : public ::testing::Test {
protected:
    void SetUp() override {
        nlohmann::json state = {{"sVersion", "conc-1"}};
        for (const FlagCmd& f : kFlags)
            state[f.key] = "0";
        ASSERT_TRUE(m_agent.SetStateJson(state.dump()));
        std::string err;
        ASSERT_TRUE(m_agent.Start(&err)) << err;
    }

    bool Check(cConf_Inf& conf, std::string& err) {
        cSvrState svr;
        return nvtest::CheckState(m_agent.SocketPath(), conf, svr, err);
    }

    nvtest::AgentProcess m_agent;
};

TEST_F(AgentConcurrency, StalledClientsDoNotDelayAnotherClientsCheck) {
    std::vector<int> stalled;
    const std::string partial[] = {"", std::string("\x20\x00\x00", 3),
                                   nvtest::MakeRequest(57, "delta").substr(0, 6)};
    for (const std::string& bytes : partial) {
        int fd = nvtest::ConnectUnix(m_agent.SocketPath());
        ASSERT_GE(fd, 0);
        ASSERT_TRUE(nvtest::SendAll(fd, bytes));
        stalled.push_back(fd);
    }
    Clock::time_point start = Clock::now();
    for (int i = 0; i < 20; ++i) {
        cConf_Inf conf;
        std::string err;
        ASSERT_TRUE(Check(conf, err)) << err;
    }
    EXPECT_LT(MsSince(start), 500);

    for (int fd : stalled) {
        RawReply r = nvtest::ReadUntilClose(fd, 10000);
        EXPECT_TRUE(r.bClosed);
        EXPECT_EQ(r.sBytes, "");
        close(fd);
    }
    long waited = MsSince(start);
    EXPECT_GE(waited, 1500);
    EXPECT_LT(waited, 6000);
}

TEST_F(AgentConcurrency, ParallelSetsAndChecksStayConsistent) {
    constexpr int kRounds = 40;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (const FlagCmd& f : kFlags) {
        threads.emplace_back([&, f] {
            for (int i = 0; i < kRounds; ++i) {
                const char* value = i % 2 == 0 ? "1" : "0";
                Answer a = nvtest::Request(m_agent.SocketPath(), f.cmd, value);
                if (!a.bOk || a.result != em_ActSuccAll)
                    ++failures;
                cConf_Inf conf;
                std::string err;
                // Only this thread changes this flag, so every check must
                // show the value it was last answered 7 for.
                if (!Check(conf, err) || conf.*f.field != value[0])
                    ++failures;
            }
        });
    }
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(failures.load(), 0);

    char last = (kRounds - 1) % 2 == 0 ? '1' : '0';
    cConf_Inf conf;
    std::string err;
    ASSERT_TRUE(Check(conf, err)) << err;
    nlohmann::json file = nlohmann::json::parse(nvtest::ReadFile(m_agent.StatePath()));
    for (const FlagCmd& f : kFlags) {
        EXPECT_EQ(conf.*f.field, last) << f.key;
        EXPECT_EQ(file[f.key], std::string(1, last)) << f.key;
    }
    EXPECT_EQ(m_agent.ReadJournal().size(), std::size(kFlags) * kRounds * 2 + 1);
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

TEST_F(AgentConcurrency, PeerOfAnotherUserIsRefused) {
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to act as another user";
    ASSERT_EQ(chmod(m_agent.Dir().c_str(), 0711), 0);
    ASSERT_EQ(chmod(m_agent.SocketPath().c_str(), 0666), 0);
    std::string request = nvtest::MakeRequest(57, "intruder");
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0)
        ExchangeAsNobody(m_agent.SocketPath(), request);
    int status = -1;
    bool ended = nvtest::WaitExit(pid, 10000, status);
    if (!ended)
        nvtest::KillAndReap(pid);
    ASSERT_TRUE(ended);
    EXPECT_EQ(nvtest::ExitCodeOf(status), 0);

    std::vector<nlohmann::json> lines = m_agent.ReadJournal();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0]["note"], "peer uid 65534 refused");
    cConf_Inf conf;
    std::string err;
    ASSERT_TRUE(Check(conf, err)) << err;
    EXPECT_NE(conf.sHostname, "intruder");
}

}  // namespace
