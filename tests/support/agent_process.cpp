// Running a real norvaned for tests. Readiness is a connection that the
// socket accepts; between attempts the test waits on the agent's process
// descriptor, so an agent that dies is noticed at once.
#include "agent_process.h"

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <sstream>

#include "child_process.h"
#include "raw_client.h"

#ifndef NV_BIN_DIR
#error "NV_BIN_DIR must name the directory that holds norvaned"
#endif

namespace nvtest {

namespace {

using Clock = std::chrono::steady_clock;

// Pause between two connection attempts while the agent starts up.
constexpr int kReadyPollMs = 5;

void SetWhy(std::string* err, const std::string& why) {
    if (err != nullptr)
        *err = why;
}

}  // namespace

AgentProcess::AgentProcess() = default;

AgentProcess::~AgentProcess() {
    Kill();
}

std::string AgentProcess::BinaryPath() {
    return std::string(NV_BIN_DIR) + "/norvaned";
}

bool AgentProcess::SetStateJson(const std::string& json) {
    return WriteFile(StatePath(), json);
}

bool AgentProcess::CopyStateFrom(const std::string& path) {
    if (access(path.c_str(), R_OK) != 0)
        return false;
    return WriteFile(StatePath(), ReadFile(path));
}

bool AgentProcess::Start(std::string* err, int timeoutMs) {
    if (Running()) {
        SetWhy(err, "the agent is already running");
        return false;
    }
    std::vector<std::string> argv = {BinaryPath(), "--foreground", "--socket",  SocketPath(),
                                     "--state",    StatePath(),    "--journal", JournalPath()};
    argv.insert(argv.end(), m_extraArgs.begin(), m_extraArgs.end());
    argv.insert(argv.begin(), m_launcher.begin(), m_launcher.end());
    m_pid = SpawnProcess(argv, "", StderrPath());
    if (m_pid < 0) {
        SetWhy(err, "cannot fork");
        return false;
    }
    std::string why;
    if (WaitReady(timeoutMs, why))
        return true;
    SetWhy(err, why + "; its standard error: " + ReadStderr());
    return false;
}

bool AgentProcess::WaitReady(int timeoutMs, std::string& why) {
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        int fd = ConnectUnix(SocketPath());
        if (fd >= 0) {
            close(fd);
            return true;
        }
        if (WaitUntilExited(m_pid, kReadyPollMs)) {
            int status = -1;
            WaitExit(m_pid, 0, status);
            m_pid = -1;
            why = "norvaned exited with code " + std::to_string(ExitCodeOf(status));
            return false;
        }
        if (Clock::now() >= deadline) {
            Kill();
            why = "norvaned did not accept connections within " + std::to_string(timeoutMs) + " ms";
            return false;
        }
    }
}

int AgentProcess::StopWithSignal(int sig, int timeoutMs) {
    if (!Running())
        return -1;
    kill(m_pid, sig);
    int status = -1;
    bool exited = WaitExit(m_pid, timeoutMs, status);
    if (!exited) {
        KillAndReap(m_pid);
        m_pid = -1;
        return -1;
    }
    m_pid = -1;
    return ExitCodeOf(status);
}

void AgentProcess::Kill() {
    if (!Running())
        return;
    KillAndReap(m_pid);
    m_pid = -1;
}

bool AgentProcess::Restart(std::string* err) {
    if (Running() && Stop() != 0) {
        SetWhy(err, "norvaned did not stop cleanly");
        return false;
    }
    return Start(err);
}

std::vector<nlohmann::json> ReadJsonLines(const std::string& path) {
    std::vector<nlohmann::json> lines;
    std::istringstream in(ReadFile(path));
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty())
            lines.push_back(nlohmann::json::parse(line));
    }
    return lines;
}

std::vector<nlohmann::json> AgentProcess::ReadJournal() const {
    return ReadJsonLines(JournalPath());
}

std::string AgentProcess::ReadStderr() const {
    return ReadFile(StderrPath());
}

}  // namespace nvtest
