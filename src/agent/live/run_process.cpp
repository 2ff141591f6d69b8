// RunTool: fork and exec with pipes on the three standard streams, polled
// until the child closes them and exits or the time limit passes.
#include "agent/live/run_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "agent/monitors/child_exec.h"

namespace nvagent {

namespace {

const char* const kPathDirs[] = {"/usr/local/sbin", "/usr/local/bin", "/usr/sbin",
                                 "/usr/bin",        "/sbin",          "/bin"};
const char* const kCleanEnv[] = {
    "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C", "LANG=C",
    nullptr};

long long NowMs() {
    struct timespec ts {};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<long long>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

struct Pipe {
    int fd[2] = {-1, -1};
    bool Open() { return pipe2(fd, O_CLOEXEC) == 0; }
    void Close() {
        for (int& f : fd) {
            if (f >= 0)
                close(f);
            f = -1;
        }
    }
};

int StatusCode(int status) {
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        return 128 + WTERMSIG(status);
    return -1;
}

// In the child: the pipes on 0, 1 and 2, then the clean exec (no other
// descriptor, so what a tool leaves running, as the DHCP client ifup
// starts, keeps nothing of the agent's); 127 when exec fails.
[[noreturn]] void Child(const char* path, char* const* args, Pipe& in, Pipe& out, Pipe& err) {
    dup2(in.fd[0], STDIN_FILENO);
    dup2(out.fd[1], STDOUT_FILENO);
    dup2(err.fd[1], STDERR_FILENO);
    nvmonit::ExecClean(path, args, const_cast<char* const*>(kCleanEnv), -1);
}

}  // namespace

std::string ToolRun::Why(const std::string& program) const {
    if (!bStarted)
        return program + " could not be run";
    if (bTimedOut)
        return program + " did not finish in time";
    std::string msg = sErr.empty() ? sOut : sErr;
    while (!msg.empty() && (msg.back() == '\n' || msg.back() == ' '))
        msg.pop_back();
    size_t nl = msg.rfind('\n');
    if (nl != std::string::npos)
        msg = msg.substr(nl + 1);
    return program + " failed (exit " + std::to_string(iExitCode) + ")" +
           (msg.empty() ? "" : ": " + msg);
}

std::string FindTool(const std::string& name) {
    if (!name.empty() && name[0] == '/')
        return access(name.c_str(), X_OK) == 0 ? name : std::string();
    for (const char* d : kPathDirs) {
        std::string p = std::string(d) + "/" + name;
        if (access(p.c_str(), X_OK) == 0)
            return p;
    }
    return std::string();
}

ToolRun RunTool(const std::vector<std::string>& argv, const std::string& stdinText, int timeoutMs) {
    ToolRun run;
    if (argv.empty())
        return run;
    std::string path = FindTool(argv[0]);
    if (path.empty())
        return run;
    Pipe in, out, err;
    if (!in.Open() || !out.Open() || !err.Open()) {
        in.Close();
        out.Close();
        err.Close();
        return run;
    }
    std::vector<char*> args;
    for (const std::string& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    pid_t pid = fork();
    if (pid < 0) {
        in.Close();
        out.Close();
        err.Close();
        return run;
    }
    if (pid == 0)
        Child(path.c_str(), args.data(), in, out, err);
    run.bStarted = true;
    close(in.fd[0]);
    close(out.fd[1]);
    close(err.fd[1]);
    in.fd[0] = out.fd[1] = err.fd[1] = -1;
    fcntl(in.fd[1], F_SETFL, O_NONBLOCK);
    size_t written = 0;
    if (stdinText.empty()) {
        close(in.fd[1]);
        in.fd[1] = -1;
    }
    long long deadline = NowMs() + timeoutMs;
    while (out.fd[0] >= 0 || err.fd[0] >= 0 || in.fd[1] >= 0) {
        long long left = deadline - NowMs();
        if (left <= 0) {
            run.bTimedOut = true;
            break;
        }
        struct pollfd p[3];
        int n = 0;
        int* fds[3] = {&in.fd[1], &out.fd[0], &err.fd[0]};
        std::string* sinks[3] = {nullptr, &run.sOut, &run.sErr};
        int map[3];
        for (int i = 0; i < 3; ++i) {
            if (*fds[i] >= 0) {
                p[n] = {*fds[i], static_cast<short>(i == 0 ? POLLOUT : POLLIN), 0};
                map[n++] = i;
            }
        }
        if (poll(p, n, static_cast<int>(left)) < 0 && errno != EINTR)
            break;
        for (int k = 0; k < n; ++k) {
            int i = map[k];
            if (p[k].revents == 0)
                continue;
            if (i == 0) {
                ssize_t w = write(in.fd[1], stdinText.data() + written, stdinText.size() - written);
                if (w > 0)
                    written += static_cast<size_t>(w);
                if (w < 0 && errno != EAGAIN && errno != EINTR)
                    written = stdinText.size();
                if (written == stdinText.size()) {
                    close(in.fd[1]);
                    in.fd[1] = -1;
                }
                continue;
            }
            char buf[65536];
            ssize_t r = read(*fds[i], buf, sizeof buf);
            if (r > 0) {
                sinks[i]->append(buf, static_cast<size_t>(r));
            } else if (r == 0 || (errno != EAGAIN && errno != EINTR)) {
                close(*fds[i]);
                *fds[i] = -1;
            }
        }
    }
    in.Close();
    out.Close();
    err.Close();
    int status = 0;
    if (run.bTimedOut) {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        return run;
    }
    // The streams are closed; the exit follows, bounded by the same limit.
    while (true) {
        pid_t w = waitpid(pid, &status, WNOHANG);
        if (w == pid)
            break;
        if (w < 0 && errno != EINTR)
            return run;
        if (NowMs() >= deadline) {
            run.bTimedOut = true;
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return run;
        }
        usleep(1000);
    }
    run.iExitCode = StatusCode(status);
    if (run.iExitCode == 127 && run.sErr.empty())
        run.bStarted = false;
    return run;
}

}  // namespace nvagent
