// The console's command line and start-up, run as a real process: the usage
// text and the ignored options (with standard output and standard error
// kept apart, and in a terminal to see that nothing touches it), the four
// start-up outcomes that end the program before the key loop, and the log
// records of a start.
#include <unistd.h>

#include <string>
#include <vector>

#include "agent_process.h"
#include "child_process.h"
#include "temp_dir.h"
#include "test_screen_util.h"

namespace nvscreentest {
namespace {

using nvtest::AgentProcess;
using nvtest::ReadFile;
using nvtest::TempDir;

const char kUsage[] =
    "[start or stop norvane service]:\n"
    "service norvane start|stop\n"
    "\n"
    "[change the language nvui show]:\n"
    "nvcmd lang en\n"
    "nvcmd lang chutf8\n"
    "nvcmd lang chgb2312\n";

const char kConnectFailed[] =
    "Error! connect failed!please run 'service norvane start' or 'nvstart' first!";
const char kOpenLogFailed[] = "Error! open log file failed!";
const char kLangInvalid[] = "Error! Language code gotten from norvane server is invalid!";

// Text as a terminal in its usual modes receives it: every line feed
// preceded by a carriage return.
std::string WithCarriageReturns(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\n')
            out += '\r';
        out += c;
    }
    return out;
}

bool Exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

// ---- Command line, standard output and standard error apart ----

struct CommandLineCase {
    const char* pcName;
    std::vector<std::string> vsArgs;
    bool bUsage;              // standard output is the usage text (else empty)
    const char* pcComplaint;  // getopt_long's message after "nvui: ", or null for none
};

void PrintTo(const CommandLineCase& c, std::ostream* os) {
    *os << c.pcName;
}

class ScreenCommandLine : public ::testing::TestWithParam<CommandLineCase> {};

// With any argument the program only parses its options: the usage text or
// nothing on standard output, getopt_long's complaint alone on standard
// error, status 0, no log file, and the agent receives nothing.
TEST_P(ScreenCommandLine, OptionsOnlyParsed) {
    const CommandLineCase& c = GetParam();
    AgentProcess agent;
    ASSERT_TRUE(agent.CopyStateFrom(ConsoleRun::DemoStatePath()));
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    TempDir out;
    std::string logPath = agent.Dir() + "/nvui.log";
    std::vector<std::string> argv = {ConsoleRun::BinaryPath()};
    argv.insert(argv.end(), c.vsArgs.begin(), c.vsArgs.end());
    pid_t pid = nvtest::SpawnProcess(argv, out.File("stdout"), out.File("stderr"),
                                     {"NVUI_SOCKET=" + agent.SocketPath(), "NVUI_LOG=" + logPath});
    ASSERT_GT(pid, 0);
    int status = 0;
    ASSERT_TRUE(nvtest::WaitExit(pid, nvtest::kDefaultWaitMs, status));
    EXPECT_EQ(nvtest::ExitCodeOf(status), 0);
    EXPECT_EQ(ReadFile(out.File("stdout")), c.bUsage ? std::string(kUsage) : std::string());
    std::string complaint;
    if (c.pcComplaint != nullptr)
        complaint = argv[0] + ": " + c.pcComplaint + "\n";
    EXPECT_EQ(ReadFile(out.File("stderr")), complaint);
    EXPECT_FALSE(Exists(logPath)) << ReadFile(logPath);
    EXPECT_TRUE(agent.ReadJournal().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Options, ScreenCommandLine,
    ::testing::Values(CommandLineCase{"help_long", {"--help"}, true, nullptr},
                      CommandLineCase{"help_short", {"-h"}, true, nullptr},
                      CommandLineCase{"c", {"-c"}, false, nullptr},
                      CommandLineCase{"k_with_argument", {"-k", "x"}, false, nullptr},
                      CommandLineCase{"f_and_s", {"-f", "a", "-s", "b"}, false, nullptr},
                      CommandLineCase{"plain_argument", {"anything"}, false, nullptr},
                      CommandLineCase{"unknown_option", {"-x"}, false, "invalid option -- 'x'"},
                      CommandLineCase{
                          "missing_argument", {"-k"}, false, "option requires an argument -- 'k'"},
                      CommandLineCase{"c_then_h", {"-c", "-h"}, true, nullptr},
                      CommandLineCase{"h_then_unknown", {"-h", "-x"}, true, nullptr},
                      CommandLineCase{"argument_of_k_is_h", {"-k", "-h"}, false, nullptr}),
    [](const ::testing::TestParamInfo<CommandLineCase>& info) { return info.param.pcName; });

// ---- Command line in a terminal ----

// Run in a terminal, -h and --help write the usage text and not one escape
// sequence: the terminal's modes and screen are left alone.
TEST(ScreenCommandLineTerminal, HelpWritesOnlyTheUsage) {
    for (const char* opt : {"-h", "--help"}) {
        SCOPED_TRACE(opt);
        ConsoleRun run;
        ConsoleOptions o;
        o.vsArgs = {opt};
        std::string err;
        ASSERT_TRUE(run.Start(o, &err)) << err;
        ScreenSession& s = run.Screen();
        EXPECT_EQ(s.WaitExit(), 0);
        EXPECT_EQ(s.RawOutput(), WithCarriageReturns(kUsage));
        EXPECT_FALSE(s.AltScreen());
        EXPECT_TRUE(s.Cursor().bVisible);
        EXPECT_EQ(s.Row(0), "[start or stop norvane service]:") << s.Dump();
        EXPECT_EQ(s.Row(6), "nvcmd lang chgb2312") << s.Dump();
        EXPECT_FALSE(Exists(run.LogPath()));
        EXPECT_TRUE(run.Agent().ReadJournal().empty());
    }
}

// An ignored option writes nothing at all to the terminal.
TEST(ScreenCommandLineTerminal, IgnoredOptionWritesNothing) {
    ConsoleRun run;
    ConsoleOptions o;
    o.vsArgs = {"-c"};
    std::string err;
    ASSERT_TRUE(run.Start(o, &err)) << err;
    EXPECT_EQ(run.Screen().WaitExit(), 0);
    EXPECT_EQ(run.Screen().RawOutput(), "");
    EXPECT_FALSE(Exists(run.LogPath()));
    EXPECT_TRUE(run.Agent().ReadJournal().empty());
}

// ---- Start-up failures ----

// Runs the console, which is to end by itself before its key loop; returns
// its exit code and leaves the screen for inspection.
int RunToEnd(ConsoleRun& run, const ConsoleOptions& o) {
    std::string err;
    if (!run.Start(o, &err)) {
        ADD_FAILURE() << err;
        return -1;
    }
    return run.Screen().WaitExit();
}

// The message stands alone on the restored terminal, and it is the last
// thing the program wrote.
void ExpectMessageAfterScreen(ScreenSession& s, const std::string& message) {
    EXPECT_FALSE(s.AltScreen());
    nvtest::ScreenPos at = s.FindText(message);
    ASSERT_TRUE(at.Found()) << s.Dump();
    EXPECT_EQ(at.iCol, 0);
    EXPECT_EQ(s.Row(at.iRow), message);
    std::string raw = s.RawOutput();
    std::string tail = message + "\r\n";
    ASSERT_GE(raw.size(), tail.size());
    EXPECT_EQ(raw.substr(raw.size() - tail.size()), tail);
    EXPECT_EQ(s.FindRaw(message), raw.size() - tail.size()) << "printed more than once";
}

// A record of the log: time stamp "YYYY-MM-DD HH:MM:SS", then tag and
// location with the line number right-aligned in four columns, then the
// message; true when log holds one that starts with head (" [DBG]  [file:")
// and continues after the line number with rest (":function]message...").
bool HasRecord(const std::string& log, const std::string& head, const std::string& rest) {
    for (size_t at = log.find(head); at != std::string::npos; at = log.find(head, at + 1)) {
        if (at < 19 || (at != 19 && log[at - 20] != '\n'))
            continue;
        const std::string stamp = log.substr(at - 19, 19);
        bool stampOk = true;
        for (size_t i = 0; i < stamp.size(); ++i) {
            char want = "0000-00-00 00:00:00"[i];
            stampOk = stampOk && (want == '0' ? isdigit(static_cast<unsigned char>(stamp[i]))
                                              : stamp[i] == want);
        }
        if (!stampOk)
            continue;
        std::string line = log.substr(at + head.size(), 4);
        bool lineOk = line.size() == 4 && isdigit(static_cast<unsigned char>(line[3]));
        for (char c : line)
            lineOk = lineOk && (c == ' ' || isdigit(static_cast<unsigned char>(c)));
        if (lineOk && log.compare(at + head.size() + 4, rest.size(), rest) == 0)
            return true;
    }
    return false;
}

TEST(ScreenStartUp, AgentDownPrintsTheConnectMessage) {
    ConsoleRun run;
    ConsoleOptions o;
    o.vsEnv = {"NVUI_SOCKET=" + run.Agent().Dir() + "/no-agent-here"};
    EXPECT_EQ(RunToEnd(run, o), 0);
    ExpectMessageAfterScreen(run.Screen(), kConnectFailed);
    std::string log = run.ReadConsoleLog();
    EXPECT_TRUE(HasRecord(log, " [XERR]  [ui_interface:", ":GetObjInfo]connect error\n")) << log;
    EXPECT_TRUE(HasRecord(log, " [DBG]  [norvane_ui:", ":main]ui_interface initialize failed!\n"))
        << log;
    EXPECT_EQ(log.find("norvane ui start ok!"), std::string::npos) << log;
}

// The agent stopped after it started: the same message.
TEST(ScreenStartUp, StoppedAgentPrintsTheConnectMessage) {
    ConsoleRun run;
    ConsoleOptions o;
    o.sProgram = "/bin/true";
    std::string err;
    ASSERT_TRUE(run.Start(o, &err)) << err;
    ASSERT_EQ(run.Screen().WaitExit(), 0);
    ASSERT_EQ(run.Agent().Stop(), 0);
    ScreenSession s;
    nvtest::ScreenOptions so;
    so.vsEnv = {"NVUI_SOCKET=" + run.Agent().SocketPath(), "NVUI_LOG=" + run.LogPath()};
    ASSERT_TRUE(s.Start({ConsoleRun::BinaryPath()}, so, &err)) << err;
    EXPECT_EQ(s.WaitExit(), 0);
    ExpectMessageAfterScreen(s, kConnectFailed);
}

TEST(ScreenStartUp, UnwritableLogPrintsTheLogMessage) {
    ConsoleRun run;
    ConsoleOptions o;
    std::string missingDir = run.Agent().Dir() + "/missing";
    o.vsEnv = {"NVUI_LOG=" + missingDir + "/nvui.log"};
    EXPECT_EQ(RunToEnd(run, o), 0);
    ExpectMessageAfterScreen(run.Screen(), kOpenLogFailed);
    EXPECT_FALSE(Exists(missingDir));
    // The log is proved before the service is asked anything.
    EXPECT_TRUE(run.Agent().ReadJournal().empty());
}

TEST(ScreenStartUp, InvalidLanguageCodePrintsTheLanguageMessage) {
    ConsoleRun run;
    ConsoleOptions o;
    o.iLangCode = 3;
    o.bAutoCharset = false;
    EXPECT_EQ(RunToEnd(run, o), 0);
    ExpectMessageAfterScreen(run.Screen(), kLangInvalid);
    std::string log = run.ReadConsoleLog();
    EXPECT_TRUE(HasRecord(log, " [DBG]  [norvane_ui:", ":main]ui_interface initialize failed!\n"))
        << log;
    // The check request was answered.
    std::vector<nlohmann::json> journal = run.Agent().ReadJournal();
    ASSERT_EQ(journal.size(), 1u);
    EXPECT_EQ(journal[0]["cmd"], 1);
}

// An empty version ends the program before the screen starts, silently.
TEST(ScreenStartUp, EmptyVersionEndsSilently) {
    std::string state = ReadFile(ConsoleRun::DemoStatePath());
    nlohmann::json j = nlohmann::json::parse(state);
    j["sVersion"] = "";
    ConsoleRun run;
    ConsoleOptions o;
    o.sStateJson = j.dump(2);
    EXPECT_EQ(RunToEnd(run, o), 0);
    EXPECT_EQ(run.Screen().RawOutput(), "");
    EXPECT_FALSE(run.Screen().AltScreen());
    std::string log = run.ReadConsoleLog();
    EXPECT_TRUE(HasRecord(log, " [DBG]  [norvane_ui:", ":main]ui_interface initialize failed!\n"))
        << log;
    EXPECT_EQ(run.Agent().ReadJournal().size(), 1u);
}

// A normal start logs its start record, with an empty line after it, once
// the screen is drawn; the only request is the check.
TEST(ScreenStartUp, StartIsLogged) {
    ConsoleRun run;
    ConsoleOptions o;
    ASSERT_TRUE(StartConsole(run, o));
    ScreenSession& s = run.Screen();
    ASSERT_TRUE(s.WaitUntil([&] {
        return HasRecord(run.ReadConsoleLog(),
                         " [DBG]  [norvane_ui:", ":main]norvane ui start ok!\n\n");
    })) << run.ReadConsoleLog();
    std::string log = run.ReadConsoleLog();
    EXPECT_EQ(log.find("[XERR]"), std::string::npos) << log;
    EXPECT_EQ(log.find("initialize failed"), std::string::npos) << log;
    std::vector<nlohmann::json> journal = run.Agent().ReadJournal();
    ASSERT_EQ(journal.size(), 1u);
    EXPECT_EQ(journal[0]["cmd"], 1);
    EXPECT_TRUE(s.AltScreen());
    EXPECT_FALSE(s.Cursor().bVisible);
}

}  // namespace
}  // namespace nvscreentest
