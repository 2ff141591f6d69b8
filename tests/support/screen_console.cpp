// Starting the agent and the console together for screen tests.
#include "screen_console.h"

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "temp_dir.h"

#ifndef NV_BIN_DIR
#error "NV_BIN_DIR must name the directory that holds nvui"
#endif
#ifndef NV_SOURCE_DIR
#error "NV_SOURCE_DIR must name the source tree"
#endif

namespace nvtest {

namespace {

constexpr int kLangGb2312 = 1;

void SetWhy(std::string* err, const std::string& why) {
    if (err != nullptr)
        *err = why;
}

}  // namespace

std::string ConsoleRun::BinaryPath() {
    return std::string(NV_BIN_DIR) + "/nvui";
}

std::string ConsoleRun::DemoStatePath() {
    return std::string(NV_SOURCE_DIR) + "/data/demo-state.json";
}

std::string ConsoleRun::ReadConsoleLog() const {
    return ReadFile(LogPath());
}

bool ConsoleRun::Start(const ConsoleOptions& o, std::string* err) {
    std::string program = o.sProgram.empty() ? BinaryPath() : o.sProgram;
    if (access(program.c_str(), X_OK) != 0) {
        SetWhy(err, program + " is not built");
        return false;
    }
    std::string stateText = o.sStateJson.empty() ? ReadFile(DemoStatePath()) : o.sStateJson;
    nlohmann::json state = nlohmann::json::parse(stateText, nullptr, false);
    if (o.iLangCode >= 0) {
        if (!state.is_object()) {
            SetWhy(err, "the state is not a JSON object, cannot set its language");
            return false;
        }
        state["chLangCode"] = o.iLangCode;
        stateText = state.dump(2);
    }
    if (!m_agent.SetStateJson(stateText)) {
        SetWhy(err, "cannot write the agent's state file");
        return false;
    }
    m_agent.SetExtraArgs(o.vsAgentArgs);
    if (!m_agent.Start(err))
        return false;

    m_charset = o.eCharset;
    if (o.bAutoCharset) {
        bool gb = state.is_object() && state.contains("chLangCode") &&
                  state["chLangCode"].is_number_integer() &&
                  state["chLangCode"].get<int>() == kLangGb2312;
        m_charset = gb ? ScreenCharset::Gb2312 : ScreenCharset::Utf8;
    }
    ScreenOptions so;
    so.iRows = o.iRows;
    so.iCols = o.iCols;
    so.sTerm = o.sTerm;
    so.eCharset = m_charset;
    so.vsEnv = {"NVUI_SOCKET=" + m_agent.SocketPath(), "NVUI_LOG=" + LogPath()};
    so.vsEnv.insert(so.vsEnv.end(), o.vsEnv.begin(), o.vsEnv.end());
    std::vector<std::string> argv = {program};
    argv.insert(argv.end(), o.vsArgs.begin(), o.vsArgs.end());
    return m_screen.Start(argv, so, err);
}

}  // namespace nvtest
