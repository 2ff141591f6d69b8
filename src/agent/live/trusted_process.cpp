// /proc read process by process: the namespace links compared by device and
// inode with the agent's own, the user ids from the status file, the
// executable from the exe link (which the kernel resolves, so a user's copy
// or link elsewhere never reads as the package's path).
#include "agent/live/trusted_process.h"

#include <dirent.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>

#include "agent/live/live_files.h"

namespace nvagent {

namespace {

bool InOurNamespaces(const std::string& procDir) {
    return SameFile(procDir + "/ns/pid", "/proc/self/ns/pid") &&
           SameFile(procDir + "/ns/net", "/proc/self/ns/net");
}

// Real, effective, saved and file-system user ids all 0.
bool RunsAsRoot(const std::string& procDir) {
    std::string status;
    if (!ReadTextFile(procDir + "/status", status))
        return false;
    size_t at = status.find("\nUid:");
    if (at == std::string::npos)
        return false;
    size_t end = status.find('\n', at + 1);
    std::istringstream ids(status.substr(at + 5, end - at - 5));
    int n = 0;
    std::string id;
    while (ids >> id) {
        if (id != "0")
            return false;
        ++n;
    }
    return n == 4;
}

std::string ExeOf(const std::string& procDir) {
    char buf[PATH_MAX + 16];
    ssize_t n = readlink((procDir + "/exe").c_str(), buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, static_cast<size_t>(n)) : std::string();
}

// The binary's resolved path when only root can have put it there.
std::string TrustedBinary(const std::string& binary) {
    char real[PATH_MAX];
    struct stat st {};
    if (realpath(binary.c_str(), real) == nullptr || stat(real, &st) != 0)
        return std::string();
    if (!S_ISREG(st.st_mode) || st.st_uid != 0 || (st.st_mode & 022) != 0)
        return std::string();
    return real;
}

bool IsRootProcessOfResolved(const std::string& procDir, const std::string& real) {
    std::string exe = ExeOf(procDir);
    // A binary replaced by an upgrade while its daemon runs reads as
    // deleted; only root could have removed it.
    if (exe != real && exe != real + " (deleted)")
        return false;
    return RunsAsRoot(procDir) && InOurNamespaces(procDir);
}

}  // namespace

bool IsRootProcessOf(const std::string& procDir, const std::string& binary) {
    std::string real = TrustedBinary(binary);
    return !real.empty() && IsRootProcessOfResolved(procDir, real);
}

bool AnyProcess(const std::function<bool(const std::string& procDir)>& match) {
    DIR* proc = opendir("/proc");
    if (proc == nullptr)
        return false;
    bool found = false;
    while (dirent* e = readdir(proc)) {
        if (e->d_name[0] < '1' || e->d_name[0] > '9')
            continue;
        if (match(std::string("/proc/") + e->d_name)) {
            found = true;
            break;
        }
    }
    closedir(proc);
    return found;
}

bool RootProcessRuns(const std::string& binary) {
    std::string real = TrustedBinary(binary);
    return !real.empty() && AnyProcess([&real](const std::string& procDir) {
        return IsRootProcessOfResolved(procDir, real);
    });
}

}  // namespace nvagent
