// Device-to-mount resolution and statvfs measurement.
#include "agent/monitors/volume_usage.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace nvmonit {

namespace {

// Mount table fields escape blanks, tabs, newlines and backslashes as octal.
std::string Unescape(const std::string& s) {
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '\\' && i + 3 < s.size()) {
            const char* p = s.c_str() + i + 1;
            if (p[0] >= '0' && p[0] <= '7' && p[1] >= '0' && p[1] <= '7' && p[2] >= '0' &&
                p[2] <= '7') {
                out += static_cast<char>((p[0] - '0') * 64 + (p[1] - '0') * 8 + (p[2] - '0'));
                i += 3;
                continue;
            }
        }
        out += s[i];
    }
    return out;
}

constexpr long long kMb = 1024 * 1024;

}  // namespace

std::string MountPointOfDevice(const std::string& procDir, unsigned long long rdev) {
    std::ifstream in(procDir + "/self/mountinfo");
    std::string line;
    std::string want = std::to_string(major(rdev)) + ":" + std::to_string(minor(rdev));
    std::string found;
    while (std::getline(in, line)) {
        std::istringstream ss(line);
        std::string id, parent, devno, root, mountPoint;
        if (!(ss >> id >> parent >> devno >> root >> mountPoint) || devno != want)
            continue;
        // Prefer the mount of the file system's root over bind mounts of a
        // part of it.
        if (root == "/")
            return Unescape(mountPoint);
        if (found.empty())
            found = Unescape(mountPoint);
    }
    return found;
}

VolumeUsage MeasureVolume(const std::string& partition, const std::string& procDir) {
    VolumeUsage u;
    struct stat st {};
    if (stat(partition.c_str(), &st) != 0) {
        u.sError = strerror(errno);
        return u;
    }
    u.sMountPoint = partition;
    if (S_ISBLK(st.st_mode)) {
        u.sMountPoint = MountPointOfDevice(procDir, st.st_rdev);
        if (u.sMountPoint.empty()) {
            u.sError = "not mounted";
            return u;
        }
    }
    struct statvfs vs {};
    if (statvfs(u.sMountPoint.c_str(), &vs) != 0) {
        u.sError = strerror(errno);
        return u;
    }
    long long frsize =
        vs.f_frsize != 0 ? static_cast<long long>(vs.f_frsize) : static_cast<long long>(vs.f_bsize);
    u.llTotalMb = static_cast<long long>(vs.f_blocks) * frsize / kMb;
    u.llUsedMb = static_cast<long long>(vs.f_blocks - vs.f_bfree) * frsize / kMb;
    u.bOk = true;
    return u;
}

VolumeUsage NoAnswer() {
    VolumeUsage u;
    u.sError = "no answer";
    return u;
}

}  // namespace nvmonit
