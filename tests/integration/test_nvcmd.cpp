// nvcmd against a real norvaned: check, send and lang, their exit statuses,
// messages, and the requests the agent received.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "agent_process.h"
#include "child_process.h"
#include "cmdclient/cmd_names.h"

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
    nvtest::RunResult NvcmdInput(std::vector<std::string> args, const std::string& input) {
        args.insert(args.begin(), kNvcmd);
        return nvtest::RunProgramWithInput(args, input);
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

// Reads from the terminal's master side until text has arrived (or 10 s
// passed); everything read is appended to seen.
bool ReadUntil(int fd, const std::string& text, std::string& seen) {
    for (int waited = 0; seen.find(text) == std::string::npos;) {
        pollfd p{fd, POLLIN, 0};
        if (poll(&p, 1, 100) <= 0) {
            if ((waited += 100) > 10000)
                return false;
            continue;
        }
        char buf[512];
        ssize_t n = read(fd, buf, sizeof buf);
        if (n <= 0)
            return false;
        seen.append(buf, static_cast<size_t>(n));
    }
    return true;
}

TEST_F(NvcmdTest, APasswordOnTheCommandLineIsRefusedAndNothingIsSent) {
    for (const char* cmd : {"56", "password"}) {
        nvtest::RunResult r = Nvcmd({"send", cmd, "root s3cret s3cret"});
        EXPECT_EQ(r.iExitCode, 2) << cmd;
        EXPECT_THAT(r.sStderr, HasSubstr("a password is never taken on the command line"));
        EXPECT_THAT(r.sStderr, HasSubstr("nothing was sent"));
        EXPECT_THAT(r.sStdout + r.sStderr, ::testing::Not(HasSubstr("s3cret")));
    }
    EXPECT_TRUE(SetRequests().empty());
}

TEST_F(NvcmdTest, APasswordComesFromStandardInput) {
    nvtest::RunResult r = NvcmdInput({"send", "password"}, "root s3cret s3cret\n");
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    r = NvcmdInput({"send", "--payload-stdin", "56"}, "root other1 other1\r\n");
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    r = NvcmdInput({"send", "56", "--payload-stdin"}, "root a b\n");
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_THAT(r.sStderr, HasSubstr("The two passwords differ."));
    auto sets = SetRequests();
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0]["cmd"], 56);
    EXPECT_EQ(sets[0]["len"], 18);  // the final newline is not part of it
    EXPECT_EQ(sets[1]["len"], 18);
    EXPECT_EQ(sets[2]["result"], 2);
    // --payload-stdin serves every command, and leaves no room for a second
    // payload.
    r = NvcmdInput({"send", "--payload-stdin", "hostname"}, "web07\n");
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_EQ(Check()["sHostname"], "web07");
    r = NvcmdInput({"send", "--payload-stdin", "hostname", "web08"}, "web07\n");
    EXPECT_EQ(r.iExitCode, 2);
}

TEST_F(NvcmdTest, APasswordIsAskedForOnTheTerminalWithoutEcho) {
    int master = -1;
    pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
    ASSERT_GE(pid, 0) << strerror(errno);
    if (pid == 0) {
        execl(kNvcmd.c_str(), kNvcmd.c_str(), "send", "password", static_cast<char*>(nullptr));
        _exit(127);
    }
    std::string seen;
    EXPECT_TRUE(ReadUntil(master, "User name: ", seen)) << seen;
    ASSERT_EQ(write(master, "root\n", 5), 5);
    EXPECT_TRUE(ReadUntil(master, "New password: ", seen)) << seen;
    ASSERT_EQ(write(master, "Hidden42\n", 9), 9);
    EXPECT_TRUE(ReadUntil(master, "New password again: ", seen)) << seen;
    ASSERT_EQ(write(master, "Hidden42\n", 9), 9);
    EXPECT_TRUE(ReadUntil(master, "Done.", seen)) << seen;
    int status = -1;
    EXPECT_TRUE(nvtest::WaitExit(pid, 10000, status));
    close(master);
    EXPECT_EQ(nvtest::ExitCodeOf(status), 0) << seen;
    EXPECT_THAT(seen, HasSubstr("root"));  // the user name is echoed
    EXPECT_THAT(seen, ::testing::Not(HasSubstr("Hidden42")));
    auto sets = SetRequests();
    ASSERT_EQ(sets.size(), 1u);
    EXPECT_EQ(sets[0]["cmd"], 56);
    EXPECT_EQ(sets[0]["len"], 22);
    EXPECT_EQ(sets[0]["result"], 7);
}

TEST_F(NvcmdTest, APayloadLongerThanACommandCarriesIsRefusedAndNothingIsSent) {
    std::string list;
    while (list.size() <= 101023)
        list += "/var/lib/app/file" + std::to_string(list.size()) + "\n";
    nvtest::RunResult r = Nvcmd({"send", "13", list});
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_THAT(r.sStderr, HasSubstr("longer than the 101023 bytes a command carries"));
    r = NvcmdInput({"send", "--payload-stdin", "file-monitor-list"}, list + list);
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_THAT(r.sStderr, HasSubstr("nothing was sent"));
    EXPECT_TRUE(SetRequests().empty());
}

TEST_F(NvcmdTest, EveryCommandHasANameListedInTheHelpTheManPageAndTheDocs) {
    std::string help = Nvcmd({"--help"}).sStdout;
    std::string man = Slurp(NV_SOURCE_TREE "/man/nvcmd.1");
    std::string docs = Slurp(NV_SOURCE_TREE "/docs/commands.md");
    std::set<std::string> names;
    for (int i = 0; i < g_iCmdNameNum; ++i) {
        const ST_CMD_NAME& st = g_astCmdName[i];
        std::string name = st.pcName;
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-"),
                  std::string::npos)
            << name;
        EXPECT_EQ(FindCmdNo(st.pcName), st.shCmdNo);
        if (st.pcOldName) {
            EXPECT_EQ(FindCmdNo(st.pcOldName), st.shCmdNo);
        }
        if (st.shCmdNo < 4 || st.pcPayload == nullptr)
            continue;
        char row[64];
        snprintf(row, sizeof row, "%2d  %s ", st.shCmdNo, st.pcName);
        EXPECT_THAT(help, HasSubstr(row));
        std::string escaped;  // as troff wants a hyphen written
        for (char ch : name)
            escaped += ch == '-' ? std::string("\\-") : std::string(1, ch);
        EXPECT_NE(man.find(escaped), std::string::npos) << name << " is not in nvcmd(1)";
        EXPECT_NE(docs.find("`" + name + "`"), std::string::npos)
            << name << " is not in docs/commands.md";
    }
}

TEST_F(NvcmdTest, NamesAndEarlierNamesAreTakenWhereverANumberIs) {
    const std::pair<const char*, int> sent[] = {{"kernel-syncookies", 5},
                                                {"tcp_syncookies", 5},
                                                {"firewall-input-add", 33},
                                                {"interface-down", 52},
                                                {"hostname", 57}};
    const char* payload[] = {"0", "1", "1 1 - 0 - 22 1", "-", "web09"};
    for (size_t i = 0; i < 5; ++i)
        Nvcmd({"send", sent[i].first, payload[i]});
    auto sets = SetRequests();
    ASSERT_EQ(sets.size(), 5u);
    for (size_t i = 0; i < 5; ++i)
        EXPECT_EQ(sets[i]["cmd"], sent[i].second) << sent[i].first;
}

TEST_F(NvcmdTest, NothingToChangeIsASuccess) {
    ASSERT_EQ(Nvcmd({"send", "hostname", "web05"}).iExitCode, 0);
    nvtest::RunResult r = Nvcmd({"send", "hostname", "web05"});
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_EQ(SetRequests().back()["result"], 6);
    EXPECT_NE(r.sStdout, "");
    EXPECT_EQ(r.sStderr, "");
    EXPECT_EQ(Nvcmd({"send", "hostname", "1.2.3.4"}).iExitCode, 1);
}

}  // namespace

namespace {

// The console gets a detail's short form in its language; nvcmd prints the
// agent's full English sentence, whatever the console's language.
TEST_F(NvcmdTest, RefusalsPrintTheFullEnglishSentence) {
    const std::string full =
        "\"sbin/sshd\" is not a command line (a program name or an absolute path, then its "
        "arguments; UTF-8 text of at most 255 bytes).";
    for (const char* lang : {"chgb2312", "chutf8", "en"}) {
        ASSERT_EQ(Nvcmd({"lang", lang}).iExitCode, 0) << lang;
        nvtest::RunResult r = Nvcmd({"send", "15", "sbin/sshd\n"});
        EXPECT_EQ(r.iExitCode, 1) << lang;
        EXPECT_THAT(r.sStderr, HasSubstr(full)) << lang;
        nvtest::RunResult h = Nvcmd({"send", "57", "web 02"});
        EXPECT_THAT(h.sStderr, HasSubstr("A host name cannot contain blanks.")) << lang;
    }
}

}  // namespace
