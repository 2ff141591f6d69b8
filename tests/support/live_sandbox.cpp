// Sandbox guard, tool runs and the live agent of the sandbox tests.
#include "live_sandbox.h"

#include <signal.h>
#include <sys/stat.h>

#include <cstdlib>

#include "child_process.h"
#include "raw_client.h"
#include "temp_dir.h"

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
        *detail = a.sBody.empty() ? a.sDetail : a.sBody;
    return a.result;
}

namespace {
const char* const kDnsmasqPid = "/run/nv-sandbox/dnsmasq.pid";
}

DhcpServerPause::DhcpServerPause() {
    pid_t pid = static_cast<pid_t>(atoi(ReadFile(kDnsmasqPid).c_str()));
    std::string cmdline;
    if (pid <= 1 || (cmdline = ReadFile("/proc/" + std::to_string(pid) + "/cmdline")).empty())
        return;
    std::vector<std::string> argv = {"/usr/bin/env", "ip", "netns", "exec", "peer"};
    for (size_t start = 0; start < cmdline.size();) {
        size_t end = cmdline.find('\0', start);
        argv.push_back(cmdline.substr(start, end - start));
        start = end == std::string::npos ? cmdline.size() : end + 1;
    }
    if (kill(pid, SIGTERM) == 0 && WaitForeignExit(pid, 5000))
        m_argv = argv;
}

DhcpServerPause::~DhcpServerPause() {
    if (m_argv.empty())
        return;
    pid_t again = SpawnProcess(m_argv, "/dev/null", "/dev/null");
    if (again > 0)
        WriteFile(kDnsmasqPid, std::to_string(again) + "\n");
}

}  // namespace nvtest
