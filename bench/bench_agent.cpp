// Starting and stopping the benchmarks' norvaned, on the test support's
// process helpers.
#include "bench_agent.h"

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <vector>

#include "agent_process.h"
#include "child_process.h"
#include "raw_client.h"

namespace nvbench {

bool BenchAgent::Start(const std::string& stateJson, bool journal, std::string& err) {
    std::string statePath = m_dir.File("state.json");
    if (!nvtest::WriteFile(statePath, stateJson)) {
        err = "cannot write " + statePath;
        return false;
    }
    std::vector<std::string> argv = {nvtest::AgentProcess::BinaryPath(),
                                     "--foreground",
                                     "--socket",
                                     SocketPath(),
                                     "--state",
                                     statePath};
    if (journal) {
        argv.push_back("--journal");
        argv.push_back(m_dir.File("journal.jsonl"));
    }
    std::string stderrPath = m_dir.File("norvaned.stderr");
    m_pid = nvtest::SpawnProcess(argv, "", stderrPath);
    if (m_pid < 0) {
        err = "cannot start " + argv[0];
        return false;
    }
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (;;) {
        int fd = nvtest::ConnectUnix(SocketPath());
        if (fd >= 0) {
            close(fd);
            return true;
        }
        if (nvtest::WaitUntilExited(m_pid, 10)) {
            int status = 0;
            nvtest::WaitExit(m_pid, 0, status);
            m_pid = -1;
            err = "norvaned exited: " + nvtest::ReadFile(stderrPath);
            return false;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            Stop();
            err = "norvaned did not accept connections within 30 s";
            return false;
        }
    }
}

void BenchAgent::Stop() {
    if (m_pid < 0)
        return;
    kill(m_pid, SIGTERM);
    int status = 0;
    if (!nvtest::WaitExit(m_pid, 10000, status))
        nvtest::KillAndReap(m_pid);
    m_pid = -1;
}

}  // namespace nvbench
