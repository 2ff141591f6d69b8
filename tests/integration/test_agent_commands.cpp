// Every set command's accepted and refused cases, replayed over the socket
// against a real norvaned serving the demo state: the answer's code, a
// detail for every refusal, the journal line, and what the state file and
// the next check show.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "agent_process.h"
#include "command_cases.h"
#include "raw_client.h"

namespace {

std::string Slurp(const std::string& path) {
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// Date and time cases that expect "nothing to do" were written for a fixed
// clock; against the real clock they would change the offset instead.
bool DependsOnTheClock(const nvtest::CommandCase& c) {
    return (c.cmd == 58 || c.cmd == 59) && c.expect == 6;
}

class AgentCommands : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_agent.CopyStateFrom(NV_SOURCE_DIR "/data/demo-state.json"));
        std::string err;
        ASSERT_TRUE(m_agent.Start(&err)) << err;
    }
    // Back to the demo state, with a fresh agent.
    void Reset() {
        ASSERT_EQ(m_agent.Stop(), 0);
        ASSERT_TRUE(m_agent.CopyStateFrom(NV_SOURCE_DIR "/data/demo-state.json"));
        std::string err;
        ASSERT_TRUE(m_agent.Start(&err)) << err;
    }
    nvtest::AgentProcess m_agent;
};

TEST_F(AgentCommands, EveryCaseAnswersAsExpectedOverTheSocket) {
    int iReplayed = 0;
    for (const nvtest::CommandCase& c : nvtest::kCommandCases) {
        if (DependsOnTheClock(c))
            continue;
        SCOPED_TRACE("command " + std::to_string(c.cmd) + " \"" + c.payload + "\": " + c.what);
        bool bChanges = c.expect == 7 || c.setupCmd != 0;
        if (c.setupCmd != 0) {
            nvtest::Answer setup =
                nvtest::Request(m_agent.SocketPath(), c.setupCmd, c.setupPayload);
            ASSERT_TRUE(setup.bOk) << setup.sError;
            ASSERT_EQ(setup.result, 7) << setup.sDetail;
        }
        std::string before = Slurp(m_agent.StatePath());
        nvtest::Answer a = nvtest::Request(m_agent.SocketPath(), c.cmd, c.payload);
        ASSERT_TRUE(a.bOk) << a.sError;
        EXPECT_EQ(a.cmd, c.cmd);
        EXPECT_EQ(a.result, c.expect) << a.sDetail;
        if (c.expect != 7) {
            EXPECT_FALSE(a.sDetail.empty());
            EXPECT_EQ(Slurp(m_agent.StatePath()), before);
        } else {
            EXPECT_NE(Slurp(m_agent.StatePath()), before);
        }
        nlohmann::json last = m_agent.ReadJournal().back();
        EXPECT_EQ(last["cmd"], c.cmd);
        EXPECT_EQ(last["len"], strlen(c.payload));
        EXPECT_EQ(last["result"], a.result);
        ++iReplayed;
        if (bChanges)
            Reset();
    }
    EXPECT_GT(iReplayed, 200);
}

TEST_F(AgentCommands, AcceptedChangesAreServedByTheNextCheckAndAfterARestart) {
    struct Change {
        short cmd;
        const char* payload;
        const char* key;
    };
    const Change changes[] = {{57, "web02", "sHostname"},
                              {10, "70000", "ulThreadMax"},
                              {17, "85", "shCpuCeil"},
                              {43, "/srv/anon", "sVsftpdAnonRoot"}};
    for (const Change& ch : changes) {
        nvtest::Answer a = nvtest::Request(m_agent.SocketPath(), ch.cmd, ch.payload);
        ASSERT_EQ(a.result, 7) << a.sDetail;
    }
    for (int round = 0; round < 2; ++round) {
        cConf_Inf c;
        cSvrState s;
        std::string err;
        ASSERT_TRUE(nvtest::CheckState(m_agent.SocketPath(), c, s, err)) << err;
        EXPECT_EQ(c.sHostname, "web02");
        EXPECT_EQ(c.ulThreadMax, 70000UL);
        EXPECT_EQ(c.shCpuCeil, 85);
        EXPECT_EQ(c.sVsftpdAnonRoot, "/srv/anon");
        std::string err2;
        ASSERT_TRUE(m_agent.Restart(&err2)) << err2;
    }
}

}  // namespace
