// Running the service manager's client and norvaned with posix_spawn, and
// finding the norvaned that belongs to this nvstart.
#include "agent_launch.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

extern char** environ;

const char kAgentUnit[] = "norvane.service";

bool SystemdRuns() {
    return sd_booted() > 0;
}

std::string FindNorvaned() {
    char buf[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0)
        return "";
    std::string dir(buf, static_cast<size_t>(n));
    dir.erase(dir.rfind('/'));
    for (const std::string& candidate : {dir + "/norvaned", dir + "/../sbin/norvaned"}) {
        char real[PATH_MAX];
        if (access(candidate.c_str(), X_OK) == 0 && realpath(candidate.c_str(), real) != nullptr)
            return real;
    }
    return "";
}

pid_t Spawn(const std::vector<std::string>& argv, std::string& err) {
    std::vector<char*> args;
    for (const std::string& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    pid_t pid = -1;
    int rc = argv[0].find('/') == std::string::npos
                 ? posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ)
                 : posix_spawn(&pid, args[0], &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) {
        err = "cannot run " + argv[0] + ": " + strerror(rc);
        return -1;
    }
    return pid;
}

bool Reaped(pid_t pid, int& status) {
    int ws = 0;
    pid_t r;
    while ((r = waitpid(pid, &ws, WNOHANG)) < 0 && errno == EINTR) {
    }
    if (r != pid)
        return false;
    status = WIFEXITED(ws) ? WEXITSTATUS(ws) : 128 + WTERMSIG(ws);
    return true;
}
