// The remote namespace's interactive SSH session of the sandbox tests.
#include "remote_session.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "child_process.h"

namespace nvtest {

namespace {

// Echo off, so that what is sent never reads as output; a tick while idle;
// each line read is run by the shell, its output and status between markers.
const char* const kLoop =
    "stty -echo; n=0; while :; do if IFS= read -r -t 0.15 line; then eval \"$line\"; "
    "else n=$((n+1)); echo \"tick $n\"; fi; done";

bool WriteAll(int fd, const std::string& s) {
    size_t done = 0;
    while (done < s.size()) {
        ssize_t n = write(fd, s.data() + done, s.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

bool HaveSandboxSshd() {
    const char* ssh = getenv("NV_SANDBOX_SSH");
    return ssh != nullptr && *ssh != '\0' && access(ssh, X_OK) == 0;
}

RemoteSession::~RemoteSession() {
    Stop();
}

bool RemoteSession::Start(std::string* err, const std::vector<std::string>& extraSsh) {
    if (!HaveSandboxSshd()) {
        if (err != nullptr)
            *err = "no sandbox sshd (nv-sandbox.sh --sshd)";
        return false;
    }
    int in[2], out[2];
    if (pipe2(in, O_CLOEXEC) != 0)
        return false;
    if (pipe2(out, O_CLOEXEC) != 0) {
        close(in[0]);
        close(in[1]);
        return false;
    }
    std::vector<std::string> argv = {getenv("NV_SANDBOX_SSH"), "-tt"};
    argv.insert(argv.end(), extraSsh.begin(), extraSsh.end());
    argv.push_back("10.77.0.2");
    argv.push_back(kLoop);
    pid_t pid = fork();
    if (pid == 0) {
        dup2(in[0], 0);
        dup2(out[1], 1);
        dup2(out[1], 2);
        std::vector<char*> args;
        for (auto& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    if (pid < 0) {
        close(in[1]);
        close(out[0]);
        return false;
    }
    m_pid = pid;
    m_in = in[1];
    m_out = out[0];
    m_reader = std::thread([this] { ReadLoop(); });
    if (WaitTickAfter(Clock::time_point(), 20000) == Clock::time_point()) {
        if (err != nullptr)
            *err = "no tick from the session: " + Output();
        Stop();
        return false;
    }
    return true;
}

void RemoteSession::ReadLoop() {
    char buf[4096];
    for (;;) {
        ssize_t n = read(m_out, buf, sizeof buf);
        if (n < 0 && errno == EINTR)
            continue;
        std::lock_guard<std::mutex> lock(m_mu);
        if (n <= 0) {
            m_eof = true;
            m_cv.notify_all();
            return;
        }
        for (ssize_t i = 0; i < n; ++i) {
            char c = buf[i];
            if (c == '\r')
                continue;
            m_text += c;
            if (c != '\n') {
                m_line += c;
                continue;
            }
            if (m_line.compare(0, 5, "tick ") == 0) {
                ++m_ticks;
                m_lastTick = Clock::now();
            }
            m_line.clear();
        }
        m_cv.notify_all();
    }
}

bool RemoteSession::Send(const std::string& line) {
    return m_in >= 0 && WriteAll(m_in, line + "\n");
}

bool RemoteSession::WaitFor(const std::string& marker, size_t from, int timeoutMs, size_t* at) {
    std::unique_lock<std::mutex> lock(m_mu);
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        size_t pos = m_text.find(marker, from);
        if (pos != std::string::npos) {
            *at = pos;
            return true;
        }
        if (m_eof || m_cv.wait_until(lock, deadline) == std::cv_status::timeout) {
            pos = m_text.find(marker, from);
            if (pos == std::string::npos)
                return false;
            *at = pos;
            return true;
        }
    }
}

bool RemoteSession::Run(const std::string& cmdline, std::string& out, int& code, int timeoutMs) {
    int token = ++m_token;
    std::string begin = "@@begin" + std::to_string(token) + "\n";
    std::string end = "@@end" + std::to_string(token) + " ";
    size_t from;
    {
        std::lock_guard<std::mutex> lock(m_mu);
        from = m_text.size();
    }
    // The markers are printed by the shell, never sent as such: nothing
    // echoed could be mistaken for them.
    std::string t = std::to_string(token);
    if (!Send("echo @@begin$((" + t + ")); { " + cmdline + " ; } 2>&1; echo @@end$((" + t +
              ")) $?"))
        return false;
    size_t b, e;
    if (!WaitFor(begin, from, timeoutMs, &b) || !WaitFor(end, b, timeoutMs, &e))
        return false;
    size_t eol;
    if (!WaitFor("\n", e, timeoutMs, &eol))
        return false;
    std::lock_guard<std::mutex> lock(m_mu);
    out = m_text.substr(b + begin.size(), e - b - begin.size());
    code = atoi(m_text.substr(e + end.size(), eol - e - end.size()).c_str());
    return true;
}

bool RemoteSession::Flowing(int windowMs) {
    long before;
    {
        std::lock_guard<std::mutex> lock(m_mu);
        before = m_ticks;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(windowMs));
    std::lock_guard<std::mutex> lock(m_mu);
    return m_ticks - before >= std::max(1, windowMs / 150 / 3);
}

bool RemoteSession::Probe(int timeoutMs) {
    std::string out;
    int code = -1;
    return Run("echo probe", out, code, timeoutMs) && code == 0 && out == "probe\n";
}

RemoteSession::Clock::time_point RemoteSession::LastTick() {
    std::lock_guard<std::mutex> lock(m_mu);
    return m_lastTick;
}

RemoteSession::Clock::time_point RemoteSession::WaitTickAfter(Clock::time_point after,
                                                              int timeoutMs) {
    std::unique_lock<std::mutex> lock(m_mu);
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!(m_ticks > 0 && m_lastTick > after)) {
        if (m_eof || m_cv.wait_until(lock, deadline) == std::cv_status::timeout)
            return m_ticks > 0 && m_lastTick > after ? m_lastTick : Clock::time_point();
    }
    return m_lastTick;
}

std::string RemoteSession::Output() {
    std::lock_guard<std::mutex> lock(m_mu);
    return m_text;
}

bool RemoteSession::Running() {
    return m_pid > 0 && !WaitUntilExited(m_pid, 0);
}

void RemoteSession::Stop() {
    if (m_in >= 0) {
        close(m_in);
        m_in = -1;
    }
    if (m_pid > 0) {
        kill(m_pid, SIGTERM);
        int status = 0;
        if (!WaitExit(m_pid, 3000, status))
            KillAndReap(m_pid);
        m_pid = -1;
    }
    if (m_reader.joinable())
        m_reader.join();
    if (m_out >= 0) {
        close(m_out);
        m_out = -1;
    }
}

}  // namespace nvtest
