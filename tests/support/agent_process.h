// A real norvaned for tests: started in the foreground on a private socket,
// state file and journal inside its own temporary directory, waited for
// until it accepts connections, and always reaped.
//
// Typical use:
//   nvtest::AgentProcess agent;
//   agent.CopyStateFrom(NV_SOURCE_DIR "/data/demo-state.json");
//   ASSERT_TRUE(agent.Start(&err)) << err;
//   ... talk to agent.SocketPath(), or start nvui with NVUI_SOCKET set to it ...
//   EXPECT_EQ(agent.Stop(), 0);
#ifndef NV_TESTS_SUPPORT_AGENT_PROCESS_H
#define NV_TESTS_SUPPORT_AGENT_PROCESS_H

#include <signal.h>
#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "temp_dir.h"

namespace nvtest {

// Every non-empty line of a JSON-lines file, parsed (a line that is not JSON
// throws nlohmann::json::parse_error).
std::vector<nlohmann::json> ReadJsonLines(const std::string& path);

class AgentProcess {
public:
    // Makes the temporary directory; starts nothing.
    AgentProcess();
    // Kills a running agent and reaps it; removes the directory.
    ~AgentProcess();
    AgentProcess(const AgentProcess&) = delete;
    AgentProcess& operator=(const AgentProcess&) = delete;

    // Writes the state file the agent will load (JSON text as it stands).
    bool SetStateJson(const std::string& json);
    // Copies a state file (such as data/demo-state.json) into place.
    bool CopyStateFrom(const std::string& path);
    // More arguments for norvaned, after the standard ones.
    void SetExtraArgs(const std::vector<std::string>& args) { m_extraArgs = args; }
    // A command that runs the agent (such as "ip netns exec NAME").
    void SetLauncher(const std::vector<std::string>& launcher) { m_launcher = launcher; }

    // Starts NV_BIN_DIR/norvaned --foreground with the private socket, state
    // and journal, and waits up to timeoutMs until its socket accepts a
    // connection. Returns false with a reason (and the agent's standard
    // error) in err when it exits or is not ready in time.
    bool Start(std::string* err = nullptr, int timeoutMs = 10000);
    // SIGTERM, then waits for the exit. Returns the exit code (128 + signal
    // when killed by one); -1 when nothing was running or it had to be
    // killed after timeoutMs.
    int Stop(int timeoutMs = 10000) { return StopWithSignal(SIGTERM, timeoutMs); }
    // The same with another signal (SIGINT, say).
    int StopWithSignal(int sig, int timeoutMs = 10000);
    // SIGKILL and reap.
    void Kill();
    // Stop (when running) and Start again with the same files.
    bool Restart(std::string* err = nullptr);

    bool Running() const { return m_pid > 0; }
    pid_t Pid() const { return m_pid; }

    const std::string& Dir() const { return m_dir.Path(); }
    std::string SocketPath() const { return m_dir.File("nvsock"); }
    std::string StatePath() const { return m_dir.File("state.json"); }
    std::string JournalPath() const { return m_dir.File("journal.jsonl"); }
    std::string StderrPath() const { return m_dir.File("norvaned.stderr"); }

    // Every journal line so far, parsed (a line that is not JSON throws).
    std::vector<nlohmann::json> ReadJournal() const;
    // What the agent wrote to standard error in its latest run.
    std::string ReadStderr() const;

    // Path of the norvaned binary under test.
    static std::string BinaryPath();

private:
    bool WaitReady(int timeoutMs, std::string& why);

    TempDir m_dir;
    std::vector<std::string> m_extraArgs;
    std::vector<std::string> m_launcher;
    pid_t m_pid = -1;
};

}  // namespace nvtest

#endif
