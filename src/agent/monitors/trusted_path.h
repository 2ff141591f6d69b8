// Paths the agent opens for a monitor (a backed-up file, its backup
// directory, the report files): resolved one component at a time from "/",
// each opened with O_NOFOLLOW relative to the one before, so that no
// symbolic link is ever followed, and each directory on the way checked to
// be one that no other user can change.
//
// The rule for a directory on the way: it belongs to root (or to the user
// the agent runs as) and neither its group nor others may write to it. A
// directory others may write to is passed through only when it belongs to
// root and has the sticky bit (as /tmp), since nobody else can then rename
// or remove what root made in it; the directory that holds the file or the
// copies must never be writable by others. Paths under /proc, /sys and /dev
// and files on the kernel's own file systems are never backed up.
//
// The walk is made with openat and O_NOFOLLOW rather than openat2's
// RESOLVE_NO_SYMLINKS: the rule needs each directory's owner and mode
// anyway, and it works on every kernel.
#ifndef NV_AGENT_MONITORS_TRUSTED_PATH_H
#define NV_AGENT_MONITORS_TRUSTED_PATH_H

#include <map>
#include <string>

namespace nvmonit {

// An open descriptor, closed when it goes.
class Fd {
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    ~Fd();
    Fd(Fd&& o) noexcept : m_fd(o.Release()) {}
    Fd& operator=(Fd&& o) noexcept;
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int Get() const { return m_fd; }
    bool Ok() const { return m_fd >= 0; }
    int Release();

private:
    int m_fd;
};

// Opens the directory dir through trusted directories only, dir included
// (created with its missing parents, mode 0700, when create). Not Ok, with
// why, when a component is missing, a symbolic link, not a directory or
// fails the rule.
Fd OpenTrustedDir(const std::string& dir, bool create, std::string& why);

// Splits an absolute path into its directory and last component; false
// when the path is not absolute, ends with "/" or has "." or ".." parts.
bool SplitPath(const std::string& path, std::string& dir, std::string& name);

// Why the agent may not copy from (isDir false) or into (isDir true) path,
// as far as the path exists now; empty when it may. Parts still missing
// are fine: the agent makes a missing backup directory itself, and a file
// that does not exist yet is backed up once it does.
std::string UntrustedPathReason(const std::string& path, bool isDir);

// Whether path (as written) lies under /proc, /sys or /dev.
bool IsKernelPath(const std::string& path);
// Whether fd is on one of the kernel's own file systems (proc, sysfs,
// debugfs, cgroup...), whose files are not data.
bool OnKernelFs(int fd);

// path with "//", "." and ".." resolved by their text alone.
std::string NormalPath(const std::string& path);
// The path the kernel reaches: symbolic links of the part that exists
// resolved, the rest appended as written.
std::string ResolvedPath(const std::string& path);
// ResolvedPath for many paths: each directory resolved once, so that a
// long list sharing directories costs one lstat per entry.
class PathResolver {
public:
    // path already normalized (NormalPath).
    std::string Resolve(const std::string& path);

private:
    std::map<std::string, std::string> m_dirs;
};

// Whether path is dir or lies below it (both normalized).
bool IsAtOrUnder(const std::string& path, const std::string& dir);
// The same for paths already normalized.
bool IsAtOrUnderNormal(const std::string& path, const std::string& dir);

}  // namespace nvmonit

#endif
