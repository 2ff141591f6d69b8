// A long-lived interactive SSH session from the sandbox's remote namespace
// (nv-sandbox.sh --sshd): `ssh -tt` to the sandbox's sshd running a shell
// loop that prints a tick every 150 ms while idle and runs each line sent
// to it, and the means to tell whether the session still works: ticks keep
// coming, a probe sent through it is answered.
#ifndef NV_TESTS_SUPPORT_REMOTE_SESSION_H
#define NV_TESTS_SUPPORT_REMOTE_SESSION_H

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace nvtest {

// True when the sandbox was started with --sshd (NV_SANDBOX_SSH is set).
bool HaveSandboxSshd();

class RemoteSession {
public:
    using Clock = std::chrono::steady_clock;

    RemoteSession() = default;
    ~RemoteSession();
    RemoteSession(const RemoteSession&) = delete;
    RemoteSession& operator=(const RemoteSession&) = delete;

    // Starts the session (extraSsh: more ssh options before the host, such
    // as "-o" "SendEnv=LANG"); true once its first tick arrived.
    bool Start(std::string* err = nullptr,
               const std::vector<std::string>& extraSsh = std::vector<std::string>());
    // Runs a shell command line in the session; true when it ended within
    // timeoutMs, with its output (standard error included, "\r" removed) and
    // exit code.
    bool Run(const std::string& cmdline, std::string& out, int& code, int timeoutMs = 30000);
    // Sends a line to the session without waiting for anything.
    bool Send(const std::string& line);
    // True when ticks arrive during the next windowMs (at least a third of
    // those due).
    bool Flowing(int windowMs = 1000);
    // True when a command sent through the session is answered in timeoutMs.
    bool Probe(int timeoutMs = 5000);
    // The time the last tick arrived.
    Clock::time_point LastTick();
    // Waits until a tick arrives after `after`; its arrival time, or
    // Clock::time_point() at the deadline.
    Clock::time_point WaitTickAfter(Clock::time_point after, int timeoutMs);
    // Everything the session printed so far.
    std::string Output();
    // The local ssh process; -1 when not running.
    pid_t Pid() const { return m_pid; }
    bool Running();
    void Stop();

private:
    void ReadLoop();
    bool WaitFor(const std::string& marker, size_t from, int timeoutMs, size_t* at);

    pid_t m_pid = -1;
    int m_in = -1;
    int m_out = -1;
    int m_token = 0;
    std::thread m_reader;
    std::mutex m_mu;
    std::condition_variable m_cv;
    std::string m_text;
    std::string m_line;
    long m_ticks = 0;
    Clock::time_point m_lastTick;
    bool m_eof = false;
};

}  // namespace nvtest

#endif
