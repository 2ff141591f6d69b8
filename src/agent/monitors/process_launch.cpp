// Argument vectors, PATH look-up and the two ways of starting a command.
#include "agent/monitors/process_launch.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "agent/monitors/child_exec.h"

namespace nvmonit {

namespace {

// The service's hardening (dist/norvane.service, [Service]), given to the
// transient unit of a watched command so that it runs no less confined than
// the agent would have started it. A test keeps the two in step.
const char* const kUnitHardening[] = {
    "UMask=0077",
    "NoNewPrivileges=yes",
    "PrivateTmp=yes",
    "ProtectSystem=strict",
    "ReadWritePaths=/etc /run /var/lib /var/log",
    "ProtectControlGroups=yes",
    "ProtectKernelModules=yes",
    "ProtectKernelLogs=yes",
    "RestrictAddressFamilies=AF_UNIX AF_NETLINK AF_INET AF_INET6 AF_PACKET",
    "RestrictNamespaces=yes",
    "RestrictRealtime=yes",
    "RestrictSUIDSGID=yes",
    "LockPersonality=yes",
    "MemoryDenyWriteExecute=yes",
    "SystemCallArchitectures=native",
    "SystemCallFilter=~@cpu-emulation @debug @module @mount @obsolete @reboot @swap",
    "CapabilityBoundingSet=CAP_NET_ADMIN CAP_NET_RAW CAP_NET_BIND_SERVICE CAP_SYS_ADMIN "
    "CAP_SYS_TIME CAP_CHOWN CAP_FOWNER CAP_DAC_OVERRIDE CAP_DAC_READ_SEARCH CAP_SYS_PTRACE "
    "CAP_KILL CAP_SETUID CAP_SETGID CAP_AUDIT_WRITE",
};

std::vector<char*> CEnv() {
    static const std::vector<std::string> env = CommandEnvironment();
    std::vector<char*> v;
    for (const std::string& e : env)
        v.push_back(const_cast<char*>(e.c_str()));
    v.push_back(nullptr);
    return v;
}

std::vector<char*> CArgv(const std::vector<std::string>& argv) {
    std::vector<char*> v;
    for (const std::string& a : argv)
        v.push_back(const_cast<char*>(a.c_str()));
    v.push_back(nullptr);
    return v;
}

bool IsExecutableFile(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && access(path.c_str(), X_OK) == 0;
}

// fork and ExecClean with a new session (when asked), the standard streams
// on /dev/null and the commands' environment; a failed exec is told back
// through a close-on-exec pipe, so that it reads as a failed start.
pid_t Spawn(const std::vector<std::string>& argv, bool newSession, std::string& err) {
    std::vector<char*> cargv = CArgv(argv);
    std::vector<char*> cenv = CEnv();
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0) {
        err = strerror(errno);
        return -1;
    }
    pid_t pid = fork();
    if (pid < 0) {
        err = strerror(errno);
        close(report[0]);
        close(report[1]);
        return -1;
    }
    if (pid == 0) {
        if (newSession)
            setsid();
        int null = open("/dev/null", O_RDWR);
        for (int fd = 0; fd < 3; ++fd) {
            if (null >= 0 && null != fd)
                dup2(null, fd);
        }
        nvmonit::ExecClean(argv[0].c_str(), cargv.data(), cenv.data(), report[1]);
    }
    close(report[1]);
    int childErr = 0;
    ssize_t n;
    do {
        n = read(report[0], &childErr, sizeof childErr);
    } while (n < 0 && errno == EINTR);
    close(report[0]);
    if (n == static_cast<ssize_t>(sizeof childErr)) {
        waitpid(pid, nullptr, 0);
        err = strerror(childErr);
        return -1;
    }
    return pid;
}

}  // namespace

std::vector<std::string> CommandEnvironment() {
    return {std::string("PATH=") + kCommandPath, "LANG=C.UTF-8", "HOME=/"};
}

std::vector<std::string> SplitCommand(const std::string& line) {
    std::vector<std::string> words;
    std::string cur;
    for (char c : line) {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
            if (!cur.empty())
                words.push_back(cur);
            cur.clear();
        } else {
            cur += c;
        }
    }
    if (!cur.empty())
        words.push_back(cur);
    return words;
}

std::string ResolveProgram(const std::string& name, const std::string& pathEnv) {
    if (name.empty())
        return "";
    if (name.find('/') != std::string::npos)
        return name[0] == '/' && IsExecutableFile(name) ? name : "";
    size_t start = 0;
    while (start <= pathEnv.size()) {
        size_t colon = pathEnv.find(':', start);
        if (colon == std::string::npos)
            colon = pathEnv.size();
        std::string dir = pathEnv.substr(start, colon - start);
        // Only absolute directories: a relative PATH entry would depend on
        // the agent's working directory.
        if (!dir.empty() && dir[0] == '/') {
            std::string candidate = dir + "/" + name;
            if (IsExecutableFile(candidate))
                return candidate;
        }
        start = colon + 1;
    }
    return "";
}

std::string SearchPath() {
    const char* p = getenv("PATH");
    return p != nullptr && *p != '\0' ? p : kCommandPath;
}

bool SystemdRunning() {
    struct stat st {};
    return lstat("/run/systemd/system", &st) == 0 && S_ISDIR(st.st_mode);
}

std::vector<std::string> SystemdRunArgv(const std::vector<std::string>& argv) {
    std::string run = ResolveProgram("systemd-run", SearchPath());
    std::vector<std::string> v = {run.empty() ? "/usr/bin/systemd-run" : run,
                                  "--quiet",
                                  "--collect",
                                  "--no-ask-password",
                                  "--working-directory=/",
                                  "--property=StandardOutput=null",
                                  "--property=StandardError=null"};
    for (const std::string& e : CommandEnvironment())
        v.push_back("--setenv=" + e);
    for (const char* h : kUnitHardening)
        v.push_back(std::string("--property=") + h);
    v.push_back("--");
    v.insert(v.end(), argv.begin(), argv.end());
    return v;
}

pid_t SpawnDetached(const std::vector<std::string>& argv, std::string& err) {
    if (argv.empty() || argv[0].empty() || argv[0][0] != '/') {
        err = "no absolute program path";
        return -1;
    }
    return Spawn(argv, true, err);
}

int RunToEnd(const std::vector<std::string>& argv, int timeoutMs, std::string& err) {
    pid_t pid = Spawn(argv, false, err);
    if (pid < 0)
        return -1;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    int status = 0;
    for (;;) {
        pid_t r = waitpid(pid, &status, WNOHANG);
        if (r == pid)
            break;
        // With SIGCHLD ignored the kernel reaps by itself and the status is
        // gone: take it as a success; a start that did not happen shows as
        // a process that never appears.
        if (r < 0 && errno == ECHILD)
            return 0;
        if (r < 0 && errno != EINTR) {
            err = strerror(errno);
            return -1;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            err = "timed out";
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (!WIFEXITED(status)) {
        err = "killed by signal " + std::to_string(WTERMSIG(status));
        return -1;
    }
    return WEXITSTATUS(status);
}

}  // namespace nvmonit
