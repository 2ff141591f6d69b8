// Sandbox guard, tool runs and the live agent of the sandbox tests.
#include "live_sandbox.h"

#include <sys/stat.h>

#include <cstdlib>

#include "child_process.h"
#include "raw_client.h"

namespace nvtest {

bool InSandbox() {
    const char* v = getenv("NV_SANDBOX");
    struct stat st {};
    return v != nullptr && std::string(v) == "1" && stat("/sys/class/net/nv0", &st) == 0;
}

std::string Tool(const std::vector<std::string>& argv, int* code) {
    static const char* const kDirs[] = {"/usr/sbin/", "/usr/bin/", "/sbin/", "/bin/"};
    std::vector<std::string> full = argv;
    for (const char* d : kDirs) {
        struct stat st {};
        if (stat((d + argv[0]).c_str(), &st) == 0) {
            full[0] = d + argv[0];
            break;
        }
    }
    RunResult r = RunProgram(full, 20000);
    if (code != nullptr)
        *code = r.iExitCode;
    return r.sStdout;
}

LiveAgent::LiveAgent() {
    m_agent.SetExtraArgs({"--backend", "system", "--data-dir", m_agent.Dir() + "/data"});
}

bool LiveAgent::Start(std::string* err) {
    return m_agent.Start(err);
}

bool LiveAgent::Check(cConf_Inf& conf, cSvrState& svr, std::string& err) const {
    return CheckState(m_agent.SocketPath(), conf, svr, err);
}

int LiveAgent::Send(short cmd, const std::string& payload, std::string* detail,
                    int timeoutMs) const {
    Answer a = Request(m_agent.SocketPath(), cmd, payload, timeoutMs);
    if (!a.bOk) {
        if (detail != nullptr)
            *detail = a.sError;
        return -1;
    }
    if (detail != nullptr)
        *detail = a.sDetail;
    return a.result;
}

}  // namespace nvtest
