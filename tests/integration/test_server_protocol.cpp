// The real norvaned over its socket: the socket's mode, the check answer
// against the state file, the journal's lines, and malformed requests that
// are answered (or not) without disturbing the agent.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "agent_process.h"
#include "link/result_codes.h"
#include "raw_client.h"
#include "temp_dir.h"
#include "wire/wire.h"

namespace {

using nvtest::Answer;
using nvtest::RawReply;

const char kState[] = R"({
  "sVersion": "9.8.7-test",
  "sHostname": "alpha",
  "chIcmpEchoIgnoreAll": "1",
  "chTcpSyncookies": "0",
  "chLangCode": 2,
  "shCpuCeil": 85
})";

class AgentProtocol : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_agent.SetStateJson(kState));
        std::string err;
        ASSERT_TRUE(m_agent.Start(&err)) << err;
    }

    void ExpectCheckWorks() {
        cConf_Inf conf;
        cSvrState svr;
        std::string err;
        ASSERT_TRUE(nvtest::CheckState(m_agent.SocketPath(), conf, svr, err)) << err;
        EXPECT_EQ(conf.sVersion, "9.8.7-test");
    }

    Answer RequestWithLength(uint32_t len) {
        char header[nvwire::kReqHeaderLen];
        nvwire::PutRequestHeader(header, len, nvwire::kCmdCheck);
        RawReply raw =
            nvtest::RawExchange(m_agent.SocketPath(), std::string(header, sizeof header));
        Answer a;
        nvwire::AnswerView v;
        if (!raw.bClosed || nvwire::ParseAnswer(raw.sBytes.data(), raw.sBytes.size(), v) != em_OK) {
            a.sError = "no well-formed answer (" + std::to_string(raw.sBytes.size()) + " bytes)";
            return a;
        }
        a.bOk = true;
        a.result = v.result;
        a.sDetail = v.detail;
        return a;
    }

    nvtest::AgentProcess m_agent;
};

TEST_F(AgentProtocol, SocketHasMode0600) {
    struct stat st;
    ASSERT_EQ(lstat(m_agent.SocketPath().c_str(), &st), 0);
    EXPECT_TRUE(S_ISSOCK(st.st_mode));
    EXPECT_EQ(st.st_mode & 07777, 0600u);
}

TEST_F(AgentProtocol, CheckAnswerDecodesAndReflectsTheStateFile) {
    Answer a = nvtest::Request(m_agent.SocketPath(), nvwire::kCmdCheck, "");
    ASSERT_TRUE(a.bOk) << a.sError;
    EXPECT_EQ(a.cmd, nvwire::kCmdCheck);
    EXPECT_EQ(a.result, em_OK);
    EXPECT_EQ(a.sDetail, "");
    cConf_Inf conf;
    cSvrState svr;
    ASSERT_EQ(nvwire::DecodeStateBody(a.sBody.data(), a.sBody.size(), conf, svr), em_OK);
    EXPECT_EQ(conf.sVersion, "9.8.7-test");
    EXPECT_EQ(conf.sHostname, "alpha");
    EXPECT_EQ(conf.chIcmpEchoIgnoreAll, '1');
    EXPECT_EQ(conf.chTcpSyncookies, '0');
    EXPECT_EQ(conf.chLangCode, 2);
    EXPECT_EQ(conf.shCpuCeil, 85);
}

TEST_F(AgentProtocol, JournalHasOneLinePerRequestReadableOnceAnswered) {
    ASSERT_TRUE(nvtest::Request(m_agent.SocketPath(), nvwire::kCmdCheck, "").bOk);
    std::vector<nlohmann::json> lines = m_agent.ReadJournal();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0],
              nlohmann::json::parse(R"({"cmd": 1, "len": 0, "payload_hex": "", "result": 0})"));

    Answer set = nvtest::Request(m_agent.SocketPath(), 57, "beta");
    ASSERT_TRUE(set.bOk) << set.sError;
    ASSERT_EQ(set.result, em_ActSuccAll) << set.sDetail;
    lines = m_agent.ReadJournal();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1],
              nlohmann::json::parse(R"({"cmd": 57, "len": 4, "payload_hex": "62657461", "result": 7,
                                        "old": {"sHostname": "alpha"},
                                        "new": {"sHostname": "beta"}})"));

    std::string text = nvtest::ReadFile(m_agent.JournalPath());
    EXPECT_EQ(text,
              "{\"cmd\": 1, \"len\": 0, \"payload_hex\": \"\", \"result\": 0}\n"
              "{\"cmd\": 57, \"len\": 4, \"payload_hex\": \"62657461\", \"result\": 7, "
              "\"old\": {\"sHostname\":\"alpha\"}, \"new\": {\"sHostname\":\"beta\"}}\n");
}

TEST_F(AgentProtocol, RefusedSetIsAnsweredWithTheBackendCodeAndDetail) {
    Answer a = nvtest::Request(m_agent.SocketPath(), 4, "maybe");
    ASSERT_TRUE(a.bOk) << a.sError;
    EXPECT_EQ(a.cmd, 4);
    EXPECT_NE(a.result, em_ActSuccAll);
    EXPECT_FALSE(a.sDetail.empty());
    EXPECT_EQ(m_agent.ReadJournal().back()["result"], a.result);
    ExpectCheckWorks();
}

TEST_F(AgentProtocol, HeaderLengthOutOfRangeIsAnsweredAndServingGoesOn) {
    for (uint32_t len : {0u, 5u, nvwire::kMaxRequestLen + 1}) {
        Answer a = RequestWithLength(len);
        ASSERT_TRUE(a.bOk) << "length " << len << ": " << a.sError;
        EXPECT_EQ(a.result, em_ParsePkgPkglenNotMatch);
        EXPECT_NE(a.sDetail.find(std::to_string(len)), std::string::npos) << a.sDetail;
        ExpectCheckWorks();
    }
}

TEST_F(AgentProtocol, RequestOfTheLargestLengthIsReadWhole) {
    std::string payload(nvwire::kMaxRequestLen - nvwire::kReqHeaderLen, 'z');
    Answer a = nvtest::Request(m_agent.SocketPath(), 500, payload);
    ASSERT_TRUE(a.bOk) << a.sError;
    EXPECT_EQ(a.result, em_ParsePkgCmdNoOutOfRange);
    EXPECT_EQ(m_agent.ReadJournal().back()["len"], payload.size());
    ExpectCheckWorks();
}

TEST_F(AgentProtocol, TruncatedRequestGetsNoAnswerAndServingGoesOn) {
    std::string whole = nvtest::MakeRequest(57, "gamma-host");
    for (size_t cut : {size_t(2), size_t(6), whole.size() - 1}) {
        RawReply r = nvtest::RawExchange(m_agent.SocketPath(), whole.substr(0, cut), true);
        EXPECT_TRUE(r.bClosed) << "cut at " << cut;
        EXPECT_EQ(r.sBytes, "") << "cut at " << cut;
        ExpectCheckWorks();
    }
    cConf_Inf conf;
    cSvrState svr;
    std::string err;
    ASSERT_TRUE(nvtest::CheckState(m_agent.SocketPath(), conf, svr, err)) << err;
    EXPECT_EQ(conf.sHostname, "alpha");
    int cutLines = 0;
    for (const nlohmann::json& line : m_agent.ReadJournal()) {
        if (line["result"] == em_ComSendReqPkgRecvFinUnexpect)
            ++cutLines;
    }
    EXPECT_EQ(cutLines, 3);
}

TEST_F(AgentProtocol, UnknownCommandNumbersAreRefused) {
    for (short cmd : {short(0), short(3), short(64), short(500)}) {
        Answer a = nvtest::Request(m_agent.SocketPath(), cmd, "1");
        ASSERT_TRUE(a.bOk) << a.sError;
        EXPECT_EQ(a.cmd, cmd);
        EXPECT_EQ(a.result, em_ParsePkgCmdNoOutOfRange);
        // The state's language is Chinese (UTF-8); the journal keeps English.
        EXPECT_EQ(a.sDetail, "未知命令 " + std::to_string(cmd) + "。");
        EXPECT_EQ(m_agent.ReadJournal().back()["cmd"], cmd);
        EXPECT_EQ(m_agent.ReadJournal().back()["detail"],
                  "Unknown command " + std::to_string(cmd) + ".");
    }
    ExpectCheckWorks();
}

TEST(AgentDemoState, DemoStateFileIsServed) {
    const std::string demo = std::string(NV_SOURCE_DIR) + "/data/demo-state.json";
    if (access(demo.c_str(), R_OK) != 0)
        GTEST_SKIP() << demo << " is not there";
    nvtest::AgentProcess agent;
    ASSERT_TRUE(agent.CopyStateFrom(demo));
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    cConf_Inf conf;
    cSvrState svr;
    ASSERT_TRUE(nvtest::CheckState(agent.SocketPath(), conf, svr, err)) << err;
    EXPECT_FALSE(conf.sVersion.empty());
    EXPECT_EQ(agent.Stop(), 0);
}

}  // namespace
