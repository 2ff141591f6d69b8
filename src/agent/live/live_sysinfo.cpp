// Host name, clock, distribution, memory and file systems of the machine.
#include "agent/live/live_sysinfo.h"

#include <mntent.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <sstream>

#include "agent/monitors/timed_probe.h"

namespace nvagent {

std::string CurrentHostName() {
    char buf[256] = {};
    if (gethostname(buf, sizeof buf - 1) != 0)
        return std::string();
    return buf;
}

char OsReleaseFamily(const std::string& osRelease) {
    std::string id;
    std::string like;
    std::istringstream in(osRelease);
    std::string line;
    while (std::getline(in, line)) {
        std::string* dst = line.rfind("ID=", 0) == 0        ? &id
                           : line.rfind("ID_LIKE=", 0) == 0 ? &like
                                                            : nullptr;
        if (dst == nullptr)
            continue;
        std::string v = line.substr(line.find('=') + 1);
        if (v.size() >= 2 && (v[0] == '"' || v[0] == '\''))
            v = v.substr(1, v.size() - 2);
        *dst = v;
    }
    if (id.empty())
        return emOSUnknown;
    struct Family {
        const char* word;
        char code;
    };
    static const Family kFamilies[] = {{"ubuntu", emOSUbuntu},
                                       {"centos", emOSCentos},
                                       {"fedora", emOSFedora},
                                       {"suse", emOSSuse},
                                       {"rhel", emOSRedhat}};
    for (const Family& f : kFamilies) {
        if (id.find(f.word) != std::string::npos)
            return f.code;
    }
    return emOSUnknown;
}

namespace {

void CopyText(char (&dst)[256], const char* s) {
    snprintf(dst, sizeof dst, "%s", s);
}

// Kernel and memory file systems: they hold no disk space of their own.
bool IsVirtualFs(const char* type) {
    static const char* const kVirtual[] = {
        "proc",       "sysfs",     "devpts",  "cgroup",      "cgroup2", "mqueue",
        "securityfs", "debugfs",   "tracefs", "pstore",      "bpf",     "configfs",
        "fusectl",    "hugetlbfs", "autofs",  "binfmt_misc", "nsfs",    "rpc_pipefs",
        "efivarfs",   "selinuxfs", "tmpfs",   "devtmpfs",    "ramfs",   "squashfs"};
    for (const char* v : kVirtual) {
        if (strcmp(type, v) == 0)
            return true;
    }
    return false;
}

int Mb(unsigned long long blocks, unsigned long long size) {
    return static_cast<int>(blocks * size / (1024ULL * 1024ULL));
}

}  // namespace

namespace {

// statvfs's answer, or none.
struct VfsAnswer {
    bool bOk = false;
    struct statvfs vfs {};
};

}  // namespace

std::vector<cDiskInfo> ReadDiskInfo() {
    std::vector<cDiskInfo> out;
    std::vector<std::string> dirs;
    std::vector<std::pair<std::string, std::string>> sources;  // device, type
    FILE* f = setmntent("/proc/self/mounts", "re");
    if (f == nullptr)
        return out;
    struct mntent ent {};
    char buf[4096];
    while (getmntent_r(f, &ent, buf, sizeof buf) != nullptr) {
        if (IsVirtualFs(ent.mnt_type))
            continue;
        dirs.push_back(ent.mnt_dir);
        sources.push_back({ent.mnt_fsname, ent.mnt_type});
    }
    endmntent(f);
    // A hung network or FUSE mount does not answer: it is left out rather
    // than holding the check.
    static nvmonit::TimedProbes<VfsAnswer> probes;
    for (const std::string& dir : dirs) {
        probes.Start(dir, [dir] {
            VfsAnswer a;
            a.bOk = statvfs(dir.c_str(), &a.vfs) == 0;
            return a;
        });
    }
    auto deadline = std::chrono::steady_clock::now() + nvmonit::kProbeAnswerTime;
    for (size_t i = 0; i < dirs.size(); ++i) {
        std::optional<VfsAnswer> answer = probes.Wait(dirs[i], deadline);
        if (!answer || !answer->bOk || answer->vfs.f_blocks == 0)
            continue;
        const struct statvfs& vfs = answer->vfs;
        cDiskInfo d{};
        CopyText(d.szPart, sources[i].first.c_str());
        CopyText(d.szFS, sources[i].second.c_str());
        CopyText(d.szMountOn, dirs[i].c_str());
        d.iSizeTotal = Mb(vfs.f_blocks, vfs.f_frsize);
        d.iUsed = Mb(vfs.f_blocks - vfs.f_bfree, vfs.f_frsize);
        d.iAvailable = Mb(vfs.f_bavail, vfs.f_frsize);
        // A later mount on the same directory hides the earlier one.
        for (auto it = out.begin(); it != out.end(); ++it) {
            if (strcmp(it->szMountOn, d.szMountOn) == 0) {
                out.erase(it);
                break;
            }
        }
        out.push_back(d);
    }
    return out;
}

}  // namespace nvagent
