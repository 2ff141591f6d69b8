// Argument vectors, PATH look-up and the two ways of starting a command.
#include "agent/monitors/process_launch.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

extern char** environ;

namespace nvmonit {

namespace {

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

// posix_spawn with a new session (when asked), default signal handling, an
// empty signal mask, the standard streams on /dev/null and every other
// descriptor closed.
pid_t Spawn(const std::vector<std::string>& argv, bool newSession, std::string& err) {
    posix_spawn_file_actions_t fa;
    posix_spawnattr_t attr;
    posix_spawn_file_actions_init(&fa);
    posix_spawnattr_init(&attr);
    posix_spawn_file_actions_addopen(&fa, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&fa, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&fa, 2, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&fa, 3);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attr, &none);
    posix_spawnattr_setsigdefault(&attr, &all);
    short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    if (newSession)
        flags |= POSIX_SPAWN_SETSID;
    posix_spawnattr_setflags(&attr, flags);
    std::vector<char*> cargv = CArgv(argv);
    pid_t pid = -1;
    int rc = posix_spawn(&pid, argv[0].c_str(), &fa, &attr, cargv.data(), environ);
    posix_spawn_file_actions_destroy(&fa);
    posix_spawnattr_destroy(&attr);
    if (rc != 0) {
        err = strerror(rc);
        return -1;
    }
    return pid;
}

}  // namespace

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
    return p != nullptr && *p != '\0'
               ? p
               : "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
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
                                  "--property=StandardOutput=null",
                                  "--property=StandardError=null",
                                  "--"};
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
