// Child processes for tests: fork and exec with redirected output, deadline
// waits on a pidfd (falling back to short polls where pidfds are missing).
#include "child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "temp_dir.h"

extern char** environ;

namespace nvtest {

namespace {

using Clock = std::chrono::steady_clock;

std::vector<std::string> MergedEnvironment(const std::vector<std::string>& extra) {
    std::vector<std::string> env;
    for (char** e = environ; *e != nullptr; ++e) {
        std::string entry(*e);
        std::string name = entry.substr(0, entry.find('=') + 1);
        bool replaced = std::any_of(extra.begin(), extra.end(), [&](const std::string& x) {
            return x.compare(0, name.size(), name) == 0;
        });
        if (!replaced)
            env.push_back(entry);
    }
    env.insert(env.end(), extra.begin(), extra.end());
    return env;
}

std::vector<char*> CStrings(std::vector<std::string>& v) {
    std::vector<char*> out;
    for (std::string& s : v)
        out.push_back(&s[0]);
    out.push_back(nullptr);
    return out;
}

// Runs in the child between fork and exec: only async-signal-safe calls.
void RedirectTo(const char* path, int target) {
    if (path == nullptr)
        return;
    int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (fd < 0)
        _exit(126);
    dup2(fd, target);
    close(fd);
}

[[noreturn]] void ExecChild(char* const* argv, char* const* envp, const char* out, const char* err,
                            const char* in = nullptr) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    int input = open(in ? in : "/dev/null", O_RDONLY);
    if (input >= 0)
        dup2(input, STDIN_FILENO);
    RedirectTo(out, STDOUT_FILENO);
    RedirectTo(err, STDERR_FILENO);
    execve(argv[0], argv, envp);
    _exit(127);
}

const char* OrNull(const std::string& s) {
    return s.empty() ? nullptr : s.c_str();
}

// A descriptor that becomes readable when pid ends, or -1 where the kernel
// has none.
int OpenPidFd(pid_t pid) {
#ifdef SYS_pidfd_open
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
#else
    (void)pid;
    return -1;
#endif
}

}  // namespace

pid_t SpawnProcess(const std::vector<std::string>& argv, const std::string& stdoutPath,
                   const std::string& stderrPath, const std::vector<std::string>& extraEnv) {
    std::vector<std::string> args = argv;
    std::vector<std::string> env = MergedEnvironment(extraEnv);
    std::vector<char*> cargs = CStrings(args);
    std::vector<char*> cenv = CStrings(env);
    pid_t pid = fork();
    if (pid == 0)
        ExecChild(cargs.data(), cenv.data(), OrNull(stdoutPath), OrNull(stderrPath));
    return pid;
}

bool WaitUntilExited(pid_t pid, int timeoutMs) {
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    int pfd = OpenPidFd(pid);
    bool exited = false;
    for (;;) {
        siginfo_t si{};
        int rc = waitid(P_PID, static_cast<id_t>(pid), &si, WEXITED | WNOHANG | WNOWAIT);
        if ((rc == 0 && si.si_pid == pid) || (rc < 0 && errno == ECHILD)) {
            exited = true;
            break;
        }
        auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            break;
        if (pfd >= 0) {
            pollfd p{pfd, POLLIN, 0};
            poll(&p, 1, static_cast<int>(left));
        } else {
            poll(nullptr, 0, static_cast<int>(std::min<long>(left, 5)));
        }
    }
    if (pfd >= 0)
        close(pfd);
    return exited;
}

bool WaitExit(pid_t pid, int timeoutMs, int& status) {
    if (!WaitUntilExited(pid, timeoutMs))
        return false;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            status = -1;
            break;
        }
    }
    return true;
}

bool WaitForeignExit(pid_t pid, int timeoutMs) {
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    int pfd = OpenPidFd(pid);
    if (pfd >= 0) {
        pollfd p{pfd, POLLIN, 0};
        int rc = poll(&p, 1, timeoutMs);
        close(pfd);
        return rc > 0;
    }
    while (kill(pid, 0) == 0) {
        if (Clock::now() >= deadline)
            return false;
        poll(nullptr, 0, 5);
    }
    return true;
}

int KillAndReap(pid_t pid) {
    kill(pid, SIGKILL);
    int status = -1;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

int ExitCodeOf(int status) {
    if (status == -1)
        return -1;
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        return 128 + WTERMSIG(status);
    return -1;
}

RunResult RunProgram(const std::vector<std::string>& argv, int timeoutMs) {
    return RunProgramWithInput(argv, std::string(), timeoutMs);
}

RunResult RunProgramWithInput(const std::vector<std::string>& argv, const std::string& input,
                              int timeoutMs) {
    TempDir dir;
    RunResult res;
    std::string in = dir.File("stdin");
    if (!WriteFile(in, input))
        return res;
    std::vector<std::string> args = argv;
    std::vector<std::string> env = MergedEnvironment({});
    std::vector<char*> cargs = CStrings(args);
    std::vector<char*> cenv = CStrings(env);
    std::string out = dir.File("stdout"), err = dir.File("stderr");
    pid_t pid = fork();
    if (pid == 0)
        ExecChild(cargs.data(), cenv.data(), out.c_str(), err.c_str(), in.c_str());
    if (pid < 0)
        return res;
    int status = -1;
    res.bFinished = WaitExit(pid, timeoutMs, status);
    if (!res.bFinished)
        status = KillAndReap(pid);
    res.iExitCode = ExitCodeOf(status);
    res.sStdout = ReadFile(out);
    res.sStderr = ReadFile(err);
    return res;
}

}  // namespace nvtest
