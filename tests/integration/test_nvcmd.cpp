// nvcmd against a real norvaned: check, send and lang, their exit statuses,
// messages, and the requests the agent received.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "agent_process.h"
#include "child_process.h"

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

std::string Slurp(const std::string& path) {
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

const std::string kNvcmd = std::string(NV_BIN_DIR) + "/nvcmd";

class NvcmdTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_agent.CopyStateFrom(NV_SOURCE_DIR "/data/demo-state.json"));
        std::string err;
        ASSERT_TRUE(m_agent.Start(&err)) << err;
        setenv("NVUI_SOCKET", m_agent.SocketPath().c_str(), 1);
        setenv("NVUI_LOG", (m_agent.Dir() + "/nvui.log").c_str(), 1);
    }
    void TearDown() override {
        unsetenv("NVUI_SOCKET");
        unsetenv("NVUI_LOG");
    }
    nvtest::RunResult Nvcmd(std::vector<std::string> args) {
        args.insert(args.begin(), kNvcmd);
        return nvtest::RunProgram(args);
    }
    nlohmann::json Check() {
        nvtest::RunResult r = Nvcmd({"check"});
        EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
        return nlohmann::json::parse(r.sStdout);
    }
    // Journal lines other than check requests.
    std::vector<nlohmann::json> SetRequests() {
        std::vector<nlohmann::json> out;
        for (const auto& j : m_agent.ReadJournal()) {
            if (j["cmd"] != 1)
                out.push_back(j);
        }
        return out;
    }
    nvtest::AgentProcess m_agent;
};

TEST_F(NvcmdTest, CheckPrintsTheLoadedStateAsJson) {
    nlohmann::json state = nlohmann::json::parse(Slurp(m_agent.StatePath()));
    nlohmann::json shown = Check();
    EXPECT_EQ(shown["sHostname"], state["sHostname"]);
    EXPECT_EQ(shown["ulShmMax"], state["ulShmMax"]);
    EXPECT_EQ(shown["vFileMonitList"], state["vFileMonitList"]);
    EXPECT_FALSE(shown["vsIfconfigList"].empty());
    EXPECT_EQ(shown["chLangCode"], state["chLangCode"]);
    EXPECT_TRUE(shown.contains("sNowDate") && shown.contains("vsIptablesInputList"));
    EXPECT_EQ(m_agent.ReadJournal().back()["cmd"], 1);
}

TEST_F(NvcmdTest, SendByNumberAndByName) {
    nvtest::RunResult r = Nvcmd({"send", "57", "web02"});
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_THAT(r.sStdout, StartsWith("Done. "));
    EXPECT_EQ(Check()["sHostname"], "web02");
    r = Nvcmd({"send", "hostname", "web03"});
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_EQ(Check()["sHostname"], "web03");
    auto sets = SetRequests();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0]["cmd"], 57);
    EXPECT_EQ(sets[0]["len"], 5);
    EXPECT_EQ(sets[0]["payload_hex"], "7765623032");
    EXPECT_EQ(sets[0]["result"], 7);
}

TEST_F(NvcmdTest, RefusedCommandPrintsTheReasonAndFails) {
    nvtest::RunResult r = Nvcmd({"send", "10", "100"});
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_THAT(r.sStderr, HasSubstr("The value is not valid. "));
    EXPECT_THAT(r.sStderr, HasSubstr("512"));
    EXPECT_EQ(SetRequests().at(0)["result"], 2);
}

TEST_F(NvcmdTest, SendWithoutPayloadSendsLengthZero) {
    nvtest::RunResult r = Nvcmd({"send", "25"});
    auto sets = SetRequests();
    ASSERT_EQ(sets.size(), 1u);
    EXPECT_EQ(sets[0]["cmd"], 25);
    EXPECT_EQ(sets[0]["len"], 0);
    EXPECT_EQ(sets[0]["payload_hex"], "");
}

TEST_F(NvcmdTest, CommandsOutsideTheSettableRangeAreUsageErrors) {
    for (const char* bad : {"3", "64", "99", "-1", "check", "lang", "bogus", ""}) {
        nvtest::RunResult r = Nvcmd({"send", bad, "x"});
        EXPECT_EQ(r.iExitCode, 2) << bad;
        EXPECT_THAT(r.sStderr, HasSubstr("unknown command")) << bad;
    }
    EXPECT_TRUE(SetRequests().empty());
}

TEST_F(NvcmdTest, LangSetsTheLanguageCode) {
    const std::pair<const char*, int> words[] = {{"chutf8", 2}, {"chgb2312", 1}, {"en", 0}};
    for (const auto& w : words) {
        nvtest::RunResult r = Nvcmd({"lang", w.first});
        EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
        EXPECT_EQ(Check()["chLangCode"], w.second) << w.first;
    }
    auto sets = SetRequests();
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0]["cmd"], 2);
    EXPECT_EQ(sets[0]["payload_hex"], "32");
}

TEST_F(NvcmdTest, UnknownLanguageIsAUsageError) {
    nvtest::RunResult r = Nvcmd({"lang", "fr"});
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_THAT(r.sStderr, HasSubstr("unknown language 'fr'"));
    EXPECT_TRUE(SetRequests().empty());
}

TEST_F(NvcmdTest, UsageAndHelp) {
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{}, {"check", "extra"}, {"send"}, {"lang"}, {"frobnicate"}}) {
        nvtest::RunResult r = Nvcmd(args);
        EXPECT_EQ(r.iExitCode, 2);
        EXPECT_THAT(r.sStderr, HasSubstr("usage: nvcmd check"));
    }
    nvtest::RunResult r = Nvcmd({"--help"});
    EXPECT_EQ(r.iExitCode, 0);
    EXPECT_THAT(r.sStdout, HasSubstr("nvcmd lang en|chutf8|chgb2312"));
    EXPECT_TRUE(m_agent.ReadJournal().empty());
}

TEST_F(NvcmdTest, AgentDownIsReportedClearly) {
    ASSERT_EQ(m_agent.Stop(), 0);
    nvtest::RunResult r = Nvcmd({"check"});
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_THAT(r.sStderr, HasSubstr("Error:connect failed!"));
    EXPECT_THAT(r.sStderr, HasSubstr(m_agent.SocketPath()));
    r = Nvcmd({"send", "4", "1"});
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_THAT(r.sStderr, HasSubstr("Error:connect failed!"));
}

}  // namespace
