// The console's service link against a real norvaned: start-up, the check
// request, the range of set commands, payload cutting as the agent sees it,
// and result texts built from the agent's answers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "agent_process.h"
#include "cmdclient/cmd_client.h"
#include "link/ui_interface.h"
#include "strings/com_str.h"

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

class LinkAgentTest : public ::testing::Test {
protected:
    void StartAgent(const std::string& stateJson = "") {
        if (stateJson.empty()) {
            ASSERT_TRUE(m_agent.CopyStateFrom(NV_SOURCE_DIR "/data/demo-state.json"));
        } else {
            ASSERT_TRUE(m_agent.SetStateJson(stateJson));
        }
        std::string err;
        ASSERT_TRUE(m_agent.Start(&err)) << err;
        setenv(NVUI_ENV_SOCKET, m_agent.SocketPath().c_str(), 1);
        setenv(NVUI_ENV_LOG, (m_agent.Dir() + "/nvui.log").c_str(), 1);
    }
    void TearDown() override {
        unsetenv(NVUI_ENV_SOCKET);
        unsetenv(NVUI_ENV_LOG);
    }
    int Init() {
        m_lang = LAN_MAX;
        m_version.clear();
        return UI_InitInterface(&m_lang, m_version);
    }
    std::vector<nlohmann::json> Journal() { return m_agent.ReadJournal(); }

    nvtest::AgentProcess m_agent;
    int m_lang = LAN_MAX;
    std::string m_version;
};

TEST_F(LinkAgentTest, StartUpLoadsLanguageVersionAndState) {
    StartAgent();
    ASSERT_EQ(Init(), 0);
    EXPECT_EQ(m_lang, LAN_ENGLISH);
    EXPECT_FALSE(m_version.empty());
    EXPECT_EQ(m_version, pg_Obj->objCif.sVersion);
    EXPECT_FALSE(pg_Obj->objSS.vsIfconfigList.empty());
    EXPECT_FALSE(pg_Obj->objCif.sNowDate.empty());
    auto j = Journal();
    ASSERT_EQ(j.size(), 1u);
    EXPECT_EQ(j[0]["cmd"], 1);
    EXPECT_EQ(j[0]["len"], 0);
}

TEST_F(LinkAgentTest, LanguageCodesFromTheAgent) {
    StartAgent(R"({"chLangCode": 1, "sVersion": "3.0"})");
    ASSERT_EQ(Init(), 0);
    EXPECT_EQ(m_lang, LAN_CHINESE_GB2312);
    EXPECT_EQ(m_version, "3.0");
}

TEST_F(LinkAgentTest, LanguageCodeThreeStopsStartUp) {
    StartAgent(R"({"chLangCode": 3})");
    EXPECT_EQ(Init(), ERR_LANG_CODE_INVALID);
}

TEST_F(LinkAgentTest, EmptyVersionStopsStartUp) {
    StartAgent(R"({"sVersion": ""})");
    EXPECT_EQ(Init(), ERR_VERSION_GET_FAILED);
}

TEST_F(LinkAgentTest, AgentStoppedReadsAsConnectFailed) {
    StartAgent();
    ASSERT_EQ(m_agent.Stop(), 0);
    EXPECT_EQ(Init(), ERR_CONNECT_FAILED);
    EXPECT_STREQ(GetOperatingInfoStr(ERR_CONNECT_FAILED), "Error:connect failed!");
}

TEST_F(LinkAgentTest, OnlyFourToSixtyThreeReachTheAgent) {
    StartAgent();
    ASSERT_EQ(Init(), 0);
    char one[] = "1";
    EXPECT_EQ(SetObjInfo(3, 1, one), -1);
    EXPECT_EQ(SetObjInfo(64, 1, one), -1);
    SetObjInfo(4, 1, one);
    EXPECT_EQ(SetObjInfo(63, 1, one), em_ActNotPrepare);
    auto j = Journal();
    ASSERT_EQ(j.size(), 3u);  // the start-up check, 4 and 63
    EXPECT_EQ(j[1]["cmd"], 4);
    EXPECT_EQ(j[2]["cmd"], 63);
    EXPECT_EQ(j[2]["result"], em_ActNotPrepare);
}

TEST_F(LinkAgentTest, LengthZeroWithNullData) {
    StartAgent();
    ASSERT_EQ(Init(), 0);
    SetObjInfo(25, 0, nullptr);
    EXPECT_EQ(pg_Obj->iLenToSend, 6);
    auto j = Journal();
    EXPECT_EQ(j.back()["cmd"], 25);
    EXPECT_EQ(j.back()["len"], 0);
}

TEST_F(LinkAgentTest, OverlongPayloadIsRefusedAndNothingArrives) {
    StartAgent();
    ASSERT_EQ(Init(), 0);
    std::string list;
    while (list.size() < 101100)
        list += "/var/lib/app/file" + std::to_string(list.size()) + "\n";
    EXPECT_EQ(SetObjInfo(13, static_cast<int>(list.size()), &list[0]), em_CmdTooLong);
    EXPECT_EQ(pg_Obj->iLenToSend, static_cast<int>(list.size()) + 6);
    for (const auto& e : Journal())
        EXPECT_NE(e["cmd"], 13) << e.dump();
}

TEST_F(LinkAgentTest, ResultTextsCarryTheAgentsDetail) {
    StartAgent();
    ASSERT_EQ(Init(), 0);
    char bad[] = "100";
    int rc = SetObjInfo(10, 3, bad);
    EXPECT_EQ(rc, em_ActPostValueNotValid);
    std::string text = GetOperatingInfoStr(rc);
    EXPECT_THAT(text, StartsWith("The value is not valid. "));
    EXPECT_GT(text.size(), strlen("The value is not valid. "));
    char good[] = "70000";
    rc = SetObjInfo(10, 5, good);
    EXPECT_EQ(rc, em_ActSuccAll);
    EXPECT_THAT(GetOperatingInfoStr(rc), StartsWith("Done. "));
    ASSERT_EQ(GetObjInfo(), em_OK);
    EXPECT_EQ(pg_Obj->objCif.ulThreadMax, 70000UL);
}

}  // namespace
