// The console under screen test: a real norvaned with a given state on a
// private socket, and nvui in a pseudo-terminal talking to it, with its log
// file in the agent's temporary directory.
//
// Typical use:
//   nvtest::ConsoleRun run;
//   nvtest::ConsoleOptions o;
//   o.iRows = 30; o.iCols = 100;  // the demo state by default
//   ASSERT_TRUE(run.Start(o, &err)) << err;
//   nvtest::ScreenSession& s = run.Screen();
//   ASSERT_TRUE(s.WaitForText(27, "Select menu")) << s.Dump();
//   s.SendKey(nvtest::Key::Enter);
//   ...
//   std::vector<nlohmann::json> requests = run.Agent().ReadJournal();
//   std::string log = run.ReadConsoleLog();
#ifndef NV_TESTS_SUPPORT_SCREEN_CONSOLE_H
#define NV_TESTS_SUPPORT_SCREEN_CONSOLE_H

#include <string>
#include <vector>

#include "agent_process.h"
#include "screen_session.h"

namespace nvtest {

struct ConsoleOptions {
    int iRows = 24;
    int iCols = 80;
    // State file text for the agent; empty means data/demo-state.json.
    std::string sStateJson;
    // When 0, 1 or 2, chLangCode of that state is set to it first.
    int iLangCode = -1;
    // Decode the screen as GB2312 when the state's language is GB2312
    // Chinese (chLangCode 1), else as UTF-8. When false, eCharset decides.
    bool bAutoCharset = true;
    ScreenCharset eCharset = ScreenCharset::Utf8;
    // Command-line arguments for the console.
    std::vector<std::string> vsArgs;
    // More "NAME=value" entries for the console's environment.
    std::vector<std::string> vsEnv;
    // Another program in place of nvui (the harness's own tests use it).
    std::string sProgram;
    std::string sTerm = "xterm-256color";
    // Extra arguments for norvaned.
    std::vector<std::string> vsAgentArgs;
};

class ConsoleRun {
public:
    ConsoleRun() = default;
    // The console goes first (killed and reaped), then the agent.
    ~ConsoleRun() = default;
    ConsoleRun(const ConsoleRun&) = delete;
    ConsoleRun& operator=(const ConsoleRun&) = delete;

    // Starts the agent and, once it accepts connections, the console with
    // NVUI_SOCKET and NVUI_LOG set. False with a reason in err.
    bool Start(const ConsoleOptions& options = ConsoleOptions(), std::string* err = nullptr);

    ScreenSession& Screen() { return m_screen; }
    AgentProcess& Agent() { return m_agent; }
    // The console's diagnostic log file and its content so far.
    std::string LogPath() const { return m_agent.Dir() + "/nvui.log"; }
    std::string ReadConsoleLog() const;
    // Which charset the screen is decoded with.
    ScreenCharset Charset() const { return m_charset; }

    // NV_BIN_DIR/nvui.
    static std::string BinaryPath();
    // The demo state file of the source tree.
    static std::string DemoStatePath();

private:
    AgentProcess m_agent;
    ScreenSession m_screen;
    ScreenCharset m_charset = ScreenCharset::Utf8;
};

}  // namespace nvtest

#endif
