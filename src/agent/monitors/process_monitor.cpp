// Keeping the monitored commands running, with back-off.
#include "agent/monitors/process_monitor.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "agent/monitors/process_launch.h"
#include "agent/monitors/process_table.h"
#include "agent/monitors/stray_reaper.h"

namespace nvmonit {

namespace {

// How long a process started through systemd may take to appear.
constexpr int kAppearMs = 3000;

std::string StatusText(int status) {
    if (WIFEXITED(status))
        return "exit status " + std::to_string(WEXITSTATUS(status));
    if (WIFSIGNALED(status))
        return std::string("killed by signal ") + std::to_string(WTERMSIG(status)) + " (" +
               strsignal(WTERMSIG(status)) + ")";
    return "status " + std::to_string(status);
}

bool UseSystemd(const MonitorSettings& s) {
    switch (s.enSystemd) {
        case SystemdUse::kNever:
            return false;
        case SystemdUse::kAlways:
            return true;
        default:
            return SystemdRunning() && !ResolveProgram("systemd-run", SearchPath()).empty();
    }
}

}  // namespace

int BackoffMs(int quickExits) {
    if (quickExits <= 0)
        return 0;
    if (quickExits > 20)
        return kMaxBackoffMs;
    long long ms = 1000LL << (quickExits - 1);
    return ms > kMaxBackoffMs ? kMaxBackoffMs : static_cast<int>(ms);
}

ProcessMonitor::ProcessMonitor(const MonitorSettings& s)
    : PeriodicMonitor(s, kProcessReport, kProcessIntervalMs) {}

ProcessMonitor::~ProcessMonitor() {
    Stop();
    for (auto& kv : m_entries) {
        if (kv.second.bOwnChild)
            ReapWhenDone(kv.second.pid);
    }
}

void ProcessMonitor::Tick(const MonitorSettings& s, bool changed) {
    if (changed) {
        std::map<std::string, Entry> next;
        for (const std::string& c : s.vProcesses) {
            std::vector<std::string> words = SplitCommand(c);
            if (words.empty())
                continue;
            auto it = m_entries.find(c);
            if (it != m_entries.end()) {
                next[c] = it->second;
            } else {
                next[c].vWords = words;
            }
        }
        // Children of removed entries keep running; they are reaped when
        // they end so that no zombie stays behind.
        for (auto& kv : m_entries) {
            if (next.count(kv.first) == 0 && kv.second.bOwnChild)
                ReapWhenDone(kv.second.pid);
        }
        m_entries.swap(next);
    }
    std::vector<ProcInfo> procs = ListProcesses(s.sProcDir);
    for (auto& kv : m_entries)
        Check(kv.first, kv.second, procs, s);
}

void ProcessMonitor::Check(const std::string& command, Entry& e, const std::vector<ProcInfo>& procs,
                           const MonitorSettings& s) {
    Clock::time_point now = Clock::now();
    std::string program = ResolveProgram(e.vWords[0], SearchPath());
    ProgramIdentity id = IdentifyProgram(program, geteuid());
    // The process table was read before the exit was seen: the process that
    // just ended may still be in it.
    pid_t gone = e.pid;
    if (e.pid != 0 && e.bOwnChild) {
        int status = 0;
        pid_t r = waitpid(e.pid, &status, WNOHANG);
        if (r == e.pid)
            Exited(command, e, StatusText(status));
        else if (r < 0 && errno == ECHILD)
            Exited(command, e, "status unknown");
    } else if (e.pid != 0) {
        bool alive = false;
        for (const ProcInfo& p : procs) {
            if (p.pid == e.pid) {
                alive = RunsCommand(p, e.vWords, program, id);
                break;
            }
        }
        if (!alive)
            Exited(command, e, "status unknown");
    }
    if (e.pid != 0)
        return;
    for (const ProcInfo& p : procs) {
        if (p.pid != gone && RunsCommand(p, e.vWords, program, id)) {
            // Running already (started by someone else, by an earlier agent,
            // or through systemd): watch it.
            e.pid = p.pid;
            e.bOwnChild = false;
            if (!e.bAwaiting)
                e.bStartedHere = false;
            e.bAwaiting = false;
            return;
        }
    }
    if (e.bAwaiting) {
        if (now - e.tStart < std::chrono::milliseconds(kAppearMs))
            return;
        e.bAwaiting = false;
        ++e.iQuickExits;
        e.tNextStart = e.tStart + std::chrono::milliseconds(BackoffMs(e.iQuickExits));
        m_report.Write("exited: " + command + " (ended before it was seen)");
    }
    if (now >= e.tNextStart)
        StartOne(command, e, s);
}

void ProcessMonitor::Exited(const std::string& command, Entry& e, const std::string& how) {
    Clock::time_point now = Clock::now();
    std::string text = "exited: " + command + " (pid " + std::to_string(e.pid) + ", " + how;
    if (e.bStartedHere) {
        auto ran = std::chrono::duration_cast<std::chrono::milliseconds>(now - e.tStart).count();
        char buf[64];
        snprintf(buf, sizeof buf, ", ran %.1f s", static_cast<double>(ran) / 1000.0);
        text += buf;
        if (ran < kQuickRunMs)
            ++e.iQuickExits;
        else
            e.iQuickExits = 0;
    } else {
        e.iQuickExits = 0;
    }
    e.tNextStart = e.tStart + std::chrono::milliseconds(BackoffMs(e.iQuickExits));
    if (e.tNextStart > now) {
        auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(e.tNextStart - now);
        char buf[64];
        snprintf(buf, sizeof buf, "; next start in %.1f s",
                 static_cast<double>(wait.count()) / 1000.0);
        text += buf;
    }
    m_report.Write(text + ")");
    e.pid = 0;
    e.bOwnChild = false;
    e.bStartedHere = false;
}

void ProcessMonitor::StartOne(const std::string& command, Entry& e, const MonitorSettings& s) {
    Clock::time_point now = Clock::now();
    e.tStart = now;
    std::string program = ResolveProgram(e.vWords[0], SearchPath());
    std::string err;
    if (program.empty()) {
        err = e.vWords[0].find('/') != std::string::npos
                  ? "not an executable file at an absolute path"
                  : "not found in PATH";
    } else {
        std::vector<std::string> argv = e.vWords;
        argv[0] = program;
        if (UseSystemd(s)) {
            int rc = RunToEnd(SystemdRunArgv(argv), 10000, err);
            if (rc == 0) {
                e.bAwaiting = true;
                e.bStartedHere = true;
                m_report.Write("started: " + command + " (transient systemd unit)");
                return;
            }
            if (rc > 0)
                err = "systemd-run exit status " + std::to_string(rc);
        } else {
            pid_t pid = SpawnDetached(argv, err);
            if (pid > 0) {
                e.pid = pid;
                e.bOwnChild = true;
                e.bStartedHere = true;
                m_report.Write("started: " + command + " (pid " + std::to_string(pid) + ")");
                return;
            }
        }
    }
    ++e.iQuickExits;
    e.tNextStart = now + std::chrono::milliseconds(BackoffMs(e.iQuickExits));
    char buf[64];
    snprintf(buf, sizeof buf, "; next attempt in %.1f s",
             static_cast<double>(BackoffMs(e.iQuickExits)) / 1000.0);
    m_report.Write("cannot start: " + command + " (" + err + buf + ")");
}

}  // namespace nvmonit
