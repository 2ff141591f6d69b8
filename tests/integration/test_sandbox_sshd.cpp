// The sandbox's test bed for SSH sessions (nv-sandbox.sh --sshd, --delay):
// a real sshd reached from the remote namespace through the peer, the
// long-lived session and its signs of life, and the delayed link.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "live_sandbox.h"
#include "remote_session.h"

using namespace nvtest;

namespace {

class SandboxSshd : public ::testing::Test {
protected:
    void SetUp() override {
        if (!InSandbox() || !HaveSandboxSshd())
            GTEST_SKIP() << "needs nv-sandbox.sh --sshd";
    }
};

}  // namespace

TEST_F(SandboxSshd, SessionComesFromTheRemoteAddressThroughThePeer) {
    RemoteSession s;
    std::string err;
    ASSERT_TRUE(s.Start(&err)) << err;
    std::string out;
    int code = -1;
    ASSERT_TRUE(s.Run("echo $SSH_CONNECTION; id -u; tty", out, code));
    EXPECT_EQ(code, 0);
    EXPECT_NE(out.find("198.51.100.7 "), std::string::npos) << out;
    EXPECT_NE(out.find(" 10.77.0.2 22"), std::string::npos) << out;
    EXPECT_NE(out.find("\n0\n"), std::string::npos) << out;
    EXPECT_NE(out.find("/dev/pts/"), std::string::npos) << out;
    // The remote client has no route of its own to the sandbox's network.
    EXPECT_NE(Tool({"ip", "-n", "remote", "route", "get", "10.77.0.2"}).find("via 198.51.100.1"),
              std::string::npos);
}

TEST_F(SandboxSshd, RunReportsOutputAndExitCode) {
    RemoteSession s;
    ASSERT_TRUE(s.Start());
    std::string out;
    int code = -1;
    ASSERT_TRUE(s.Run("echo one; echo two >&2; false", out, code));
    EXPECT_EQ(out, "one\ntwo\n");
    EXPECT_EQ(code, 1);
    ASSERT_TRUE(s.Run("exit_code() { return 7; }; exit_code", out, code));
    EXPECT_EQ(code, 7);
    EXPECT_TRUE(s.Probe());
}

TEST_F(SandboxSshd, ACutSessionStopsFlowingAndComesBackWhenTheCutEnds) {
    RemoteSession s;
    ASSERT_TRUE(s.Start());
    EXPECT_TRUE(s.Flowing(1000));
    // The sandbox's own firewall drops what the client sends: the server's
    // ticks go on until its congestion window is full of unacknowledged
    // data, a probe never gets through.
    ASSERT_EQ(system("iptables -I INPUT -p tcp --dport 22 -j DROP"), 0);
    // How long the window takes to fill depends on how far it grew before
    // the cut (further on the delayed link): wait for the flow to stop.
    bool stopped = false;
    for (int i = 0; i < 12 && !stopped; ++i)
        stopped = !s.Flowing(1500);
    EXPECT_TRUE(stopped);
    EXPECT_FALSE(s.Probe(1500));
    ASSERT_EQ(system("iptables -D INPUT -p tcp --dport 22 -j DROP"), 0);
    EXPECT_TRUE(s.Probe(15000));
    EXPECT_TRUE(s.Flowing(1000));
}

TEST_F(SandboxSshd, DelayedLinkDelaysAndDropsAsAsked) {
    const char* ms = getenv("NV_SANDBOX_DELAY_MS");
    if (ms == nullptr)
        GTEST_SKIP() << "needs nv-sandbox.sh --delay";
    RemoteSession s;
    ASSERT_TRUE(s.Start());
    // Each probe crosses the link twice (there and back).
    auto t0 = std::chrono::steady_clock::now();
    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(s.Probe(10000));
    auto each =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - t0)
            .count() /
        5;
    EXPECT_GE(each, 2 * atoi(ms) * 9 / 10);
    std::string stats = ReadFile("/run/nv-sandbox/delayer.stats");
    EXPECT_NE(stats.find("seen "), std::string::npos) << stats;
}
