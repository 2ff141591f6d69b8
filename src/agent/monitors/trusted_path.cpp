// Component-by-component resolution with O_NOFOLLOW, and the owner and
// mode rule for the directories on the way.
#include "agent/monitors/trusted_path.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace nvmonit {

namespace {

// The parts of an absolute path; false for ".", ".." or a relative path.
bool Parts(const std::string& path, std::vector<std::string>& out) {
    out.clear();
    if (path.empty() || path[0] != '/')
        return false;
    size_t at = 0;
    while (at < path.size()) {
        size_t slash = path.find('/', at);
        std::string part = path.substr(at, slash == std::string::npos ? slash : slash - at);
        at = slash == std::string::npos ? path.size() : slash + 1;
        if (part.empty())
            continue;
        if (part == "." || part == "..")
            return false;
        out.push_back(part);
    }
    return true;
}

std::string Join(const std::vector<std::string>& parts, size_t n) {
    std::string out;
    for (size_t i = 0; i < n; ++i)
        out += "/" + parts[i];
    return out.empty() ? "/" : out;
}

// Why the open directory fd (shown as `shown`) fails the rule; empty when
// it passes. holdsEntries: the file or the copies are in it.
std::string DirProblem(int fd, const std::string& shown, bool holdsEntries) {
    struct stat st {};
    if (fstat(fd, &st) != 0)
        return shown + ": " + strerror(errno);
    if (st.st_uid != 0 && st.st_uid != geteuid())
        return shown + " belongs to another user (uid " + std::to_string(st.st_uid) + ")";
    if ((st.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        bool rootSticky = (st.st_mode & S_ISVTX) != 0 && st.st_uid == 0;
        if (holdsEntries || !rootSticky)
            return shown + " can be written by other users";
    }
    return "";
}

// Why opening name in dirFd (shown as `shown`) as a directory failed.
std::string OpenProblem(int dirFd, const char* name, const std::string& shown) {
    int err = errno;
    struct stat st {};
    if (err == ELOOP || (err == ENOTDIR && fstatat(dirFd, name, &st, AT_SYMLINK_NOFOLLOW) == 0 &&
                         S_ISLNK(st.st_mode)))
        return shown + " is a symbolic link";
    if (err == ENOTDIR)
        return shown + " is not a directory";
    return shown + ": " + strerror(err);
}

// Walks parts[0..n) from "/". Stops at the first missing part when !create
// (missing set, fd the last directory reached); else makes it.
Fd Walk(const std::vector<std::string>& parts, size_t n, bool create, bool lastHoldsEntries,
        std::string& why, bool& missing) {
    missing = false;
    Fd fd(open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd.Ok()) {
        why = "/: " + std::string(strerror(errno));
        return Fd();
    }
    for (size_t i = 0;; ++i) {
        why = DirProblem(fd.Get(), Join(parts, i), lastHoldsEntries && i == n);
        if (!why.empty())
            return Fd();
        if (i == n)
            return fd;
        const char* name = parts[i].c_str();
        if (create && mkdirat(fd.Get(), name, 0700) != 0 && errno != EEXIST) {
            why = "cannot create " + Join(parts, i + 1) + ": " + strerror(errno);
            return Fd();
        }
        Fd next(openat(fd.Get(), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!next.Ok()) {
            if (errno == ENOENT && !create) {
                missing = true;
                return fd;
            }
            why = OpenProblem(fd.Get(), name, Join(parts, i + 1));
            return Fd();
        }
        fd = std::move(next);
    }
}

}  // namespace

Fd::~Fd() {
    if (m_fd >= 0)
        close(m_fd);
}

Fd& Fd::operator=(Fd&& o) noexcept {
    if (this != &o) {
        if (m_fd >= 0)
            close(m_fd);
        m_fd = o.Release();
    }
    return *this;
}

int Fd::Release() {
    int fd = m_fd;
    m_fd = -1;
    return fd;
}

Fd OpenTrustedDir(const std::string& dir, bool create, std::string& why) {
    std::vector<std::string> parts;
    if (!Parts(dir, parts)) {
        why = dir + " is not an absolute path without \".\" and \"..\"";
        return Fd();
    }
    bool missing = false;
    Fd fd = Walk(parts, parts.size(), create, true, why, missing);
    if (missing) {
        why = dir + ": " + strerror(ENOENT);
        return Fd();
    }
    return fd;
}

bool SplitPath(const std::string& path, std::string& dir, std::string& name) {
    std::vector<std::string> parts;
    if (!Parts(path, parts) || parts.empty() || path.back() == '/')
        return false;
    name = parts.back();
    dir = Join(parts, parts.size() - 1);
    return true;
}

std::string UntrustedPathReason(const std::string& path, bool isDir) {
    if (IsKernelPath(path))
        return path + " is under /proc, /sys or /dev";
    std::vector<std::string> parts;
    if (!Parts(path, parts) || parts.empty())
        return path + " is not an absolute path without \".\" and \"..\"";
    // A file's own directory holds it; a backup directory holds the copies.
    size_t dirs = isDir ? parts.size() : parts.size() - 1;
    std::string why;
    bool missing = false;
    Fd fd = Walk(parts, dirs, false, true, why, missing);
    if (!fd.Ok())
        return why;
    if (missing)
        return "";
    if (OnKernelFs(fd.Get()))
        return Join(parts, dirs) + " is on a kernel file system";
    if (isDir)
        return "";
    struct stat st {};
    if (fstatat(fd.Get(), parts.back().c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? "" : path + ": " + strerror(errno);
    if (S_ISLNK(st.st_mode))
        return path + " is a symbolic link";
    if (!S_ISREG(st.st_mode))
        return path + " is not a regular file";
    return "";
}

bool IsKernelPath(const std::string& path) {
    std::string p = NormalPath(path);
    return IsAtOrUnder(p, "/proc") || IsAtOrUnder(p, "/sys") || IsAtOrUnder(p, "/dev");
}

bool OnKernelFs(int fd) {
    struct statfs fs {};
    if (fstatfs(fd, &fs) != 0)
        return false;
    // configfs has no name in linux/magic.h.
    constexpr unsigned long kConfigFsMagic = 0x62656570;
    static const unsigned long kKernelFs[] = {
        PROC_SUPER_MAGIC,   SYSFS_MAGIC,         DEBUGFS_MAGIC,  TRACEFS_MAGIC,  SECURITYFS_MAGIC,
        CGROUP_SUPER_MAGIC, CGROUP2_SUPER_MAGIC, kConfigFsMagic, BPF_FS_MAGIC,   EFIVARFS_MAGIC,
        DEVPTS_SUPER_MAGIC, PSTOREFS_MAGIC,      SELINUX_MAGIC,  BINFMTFS_MAGIC, NSFS_MAGIC};
    for (unsigned long m : kKernelFs) {
        if (static_cast<unsigned long>(fs.f_type) == m)
            return true;
    }
    return false;
}

std::string NormalPath(const std::string& path) {
    std::vector<std::string> out;
    size_t at = 0;
    while (at <= path.size()) {
        size_t slash = path.find('/', at);
        if (slash == std::string::npos)
            slash = path.size();
        std::string part = path.substr(at, slash - at);
        at = slash + 1;
        if (part.empty() || part == ".")
            continue;
        if (part == "..") {
            if (!out.empty())
                out.pop_back();
            continue;
        }
        out.push_back(part);
    }
    return Join(out, out.size());
}

std::string ResolvedPath(const std::string& path) {
    std::string p = NormalPath(path);
    std::string rest;
    for (;;) {
        char buf[PATH_MAX];
        if (realpath(p.c_str(), buf) != nullptr) {
            std::string head = buf;
            return NormalPath(head + "/" + rest);
        }
        if (p == "/")
            return NormalPath("/" + rest);
        size_t slash = p.find_last_of('/');
        rest = p.substr(slash + 1) + (rest.empty() ? "" : "/" + rest);
        p = slash == 0 ? "/" : p.substr(0, slash);
    }
}

std::string PathResolver::Resolve(const std::string& p) {
    size_t slash = p.find_last_of('/');
    struct stat st {};
    if (p == "/" || (lstat(p.c_str(), &st) == 0 && S_ISLNK(st.st_mode)))
        return ResolvedPath(p);
    std::string dir = slash == 0 ? "/" : p.substr(0, slash);
    auto it = m_dirs.find(dir);
    if (it == m_dirs.end())
        it = m_dirs.emplace(dir, ResolvedPath(dir)).first;
    return it->second == "/" ? p.substr(slash) : it->second + p.substr(slash);
}

bool IsAtOrUnder(const std::string& path, const std::string& dir) {
    return IsAtOrUnderNormal(NormalPath(path), NormalPath(dir));
}

bool IsAtOrUnderNormal(const std::string& p, const std::string& d) {
    if (d == "/")
        return true;
    return p.size() >= d.size() && p.compare(0, d.size(), d) == 0 &&
           (p.size() == d.size() || p[d.size()] == '/');
}

}  // namespace nvmonit
