// Helpers of the tests that run inside the namespace sandbox
// (tests/support/nv-sandbox.sh): the guard that keeps them from running on
// the machine itself, the system's own tools run and read back, and a live
// agent on a private socket and data directory.
#ifndef NV_TESTS_SUPPORT_LIVE_SANDBOX_H
#define NV_TESTS_SUPPORT_LIVE_SANDBOX_H

#include <string>
#include <vector>

#include "agent_process.h"
#include "link/state_record.h"

namespace nvtest {

// True inside the sandbox script (NV_SANDBOX=1 and a network namespace of
// our own, told by the veth nv0 that only the sandbox makes).
bool InSandbox();

// Runs a tool of the system (argv[0] looked up in PATH) and returns its
// standard output; the exit code in *code when given.
std::string Tool(const std::vector<std::string>& argv, int* code = nullptr);

// A live agent (--backend system) with its data directory in its own
// temporary directory.
class LiveAgent {
public:
    LiveAgent();
    bool Start(std::string* err = nullptr);
    int Stop() { return m_agent.Stop(); }
    bool Restart(std::string* err = nullptr) { return m_agent.Restart(err); }
    std::string DataDir() const { return m_agent.Dir() + "/data"; }
    const std::string SocketPath() const { return m_agent.SocketPath(); }
    // A check; false with err when it fails.
    bool Check(cConf_Inf& conf, cSvrState& svr, std::string& err) const;
    // One set command: the result code, the detail's full English sentence
    // in *detail when given (the answer's body where the detail sent to the
    // console is a shorter form); -1 when no answer came within timeoutMs.
    int Send(short cmd, const std::string& payload, std::string* detail = nullptr,
             int timeoutMs = 30000) const;
    AgentProcess& Process() { return m_agent; }

private:
    AgentProcess m_agent;
};

// The sandbox's DHCP server (nv-sandbox.sh --dhcp) stopped for as long as
// this lives, then started again with the same command line.
class DhcpServerPause {
public:
    DhcpServerPause();
    ~DhcpServerPause();
    DhcpServerPause(const DhcpServerPause&) = delete;
    DhcpServerPause& operator=(const DhcpServerPause&) = delete;
    bool Stopped() const { return !m_argv.empty(); }

private:
    std::vector<std::string> m_argv;
};

}  // namespace nvtest

#endif
