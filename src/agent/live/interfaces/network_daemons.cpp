// Bus names through sd-bus, processes through /proc.
#include "agent/live/interfaces/network_daemons.h"

#include <dirent.h>
#include <limits.h>
#include <pwd.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

#include "agent/live/live_files.h"

namespace nvagent {

namespace {

struct BusUnref {
    void operator()(sd_bus* b) const { sd_bus_flush_close_unref(b); }
};

}  // namespace

bool InOwnNetNamespace(pid_t pid) {
    return pid > 0 && SameFile("/proc/" + std::to_string(pid) + "/ns/net", "/proc/self/ns/net");
}

pid_t BusNameOwnerHere(const std::string& busName) {
    sd_bus* raw = nullptr;
    if (sd_bus_open_system(&raw) < 0)
        return 0;
    std::unique_ptr<sd_bus, BusUnref> bus(raw);
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* reply = nullptr;
    int r = sd_bus_call_method(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "GetConnectionUnixProcessID", &error, &reply,
                               "s", busName.c_str());
    sd_bus_error_free(&error);
    if (r < 0)
        return 0;
    uint32_t pid = 0;
    r = sd_bus_message_read(reply, "u", &pid);
    sd_bus_message_unref(reply);
    if (r < 0 || !InOwnNetNamespace(static_cast<pid_t>(pid)))
        return 0;
    return static_cast<pid_t>(pid);
}

std::string ResolvedPath(const std::string& path) {
    char buf[PATH_MAX];
    return realpath(path.c_str(), buf) != nullptr ? std::string(buf) : path;
}

long ProcessUid(const std::string& dir) {
    FILE* f = fopen((dir + "/status").c_str(), "re");
    if (f == nullptr)
        return -1;
    char line[256];
    long uid = -1;
    while (fgets(line, sizeof line, f) != nullptr) {
        if (sscanf(line, "Uid: %ld", &uid) == 1)
            break;
    }
    fclose(f);
    return uid;
}

pid_t FindProcess(
    const std::function<bool(pid_t pid, const std::string& dir, const std::string& exe)>& wanted) {
    DIR* proc = opendir("/proc");
    if (proc == nullptr)
        return 0;
    pid_t found = 0;
    while (dirent* e = readdir(proc)) {
        if (e->d_name[0] < '1' || e->d_name[0] > '9')
            continue;
        std::string dir = std::string("/proc/") + e->d_name;
        char exe[PATH_MAX];
        ssize_t n = readlink((dir + "/exe").c_str(), exe, sizeof exe - 1);
        if (n <= 0)
            continue;
        pid_t pid = static_cast<pid_t>(atoi(e->d_name));
        if (wanted(pid, dir, std::string(exe, static_cast<size_t>(n)))) {
            found = pid;
            break;
        }
    }
    closedir(proc);
    return found;
}

bool DaemonBinaryRunsHere(const std::vector<std::string>& binaries,
                          const std::vector<uid_t>& uids) {
    std::vector<std::string> wanted;
    for (const std::string& b : binaries)
        wanted.push_back(ResolvedPath(b));
    return FindProcess([&](pid_t pid, const std::string& dir, const std::string& exe) {
               long uid = ProcessUid(dir);
               return std::find(wanted.begin(), wanted.end(), exe) != wanted.end() && uid >= 0 &&
                      std::find(uids.begin(), uids.end(), static_cast<uid_t>(uid)) != uids.end() &&
                      InOwnNetNamespace(pid);
           }) != 0;
}

uid_t SystemUid(const char* user) {
    passwd* p = getpwnam(user);
    return p != nullptr ? p->pw_uid : 0;
}

}  // namespace nvagent
