// File reading and atomic replacement with POSIX calls, so that every failure
// reports the system's own reason.
#include "agent/atomic_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace nvagent {

namespace {

// Closes a descriptor at scope exit.
class Fd {
public:
    explicit Fd(int fd) : m_fd(fd) {}
    ~Fd() {
        if (m_fd >= 0)
            close(m_fd);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int Get() const { return m_fd; }
    // Closes now; returns the errno of a failed close, else 0.
    int Close() {
        int rc = close(m_fd);
        m_fd = -1;
        return rc == 0 ? 0 : errno;
    }

private:
    int m_fd;
};

int WriteAll(int fd, const std::string& data) {
    size_t done = 0;
    while (done < data.size()) {
        ssize_t n = write(fd, data.data() + done, data.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return errno;
        done += static_cast<size_t>(n);
    }
    return 0;
}

std::string DirOf(const std::string& path) {
    size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

int SyncDir(const std::string& dir) {
    Fd fd(open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.Get() < 0)
        return errno;
    return fsync(fd.Get()) == 0 ? 0 : errno;
}

std::string BaseOf(const std::string& path) {
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The prefix of every temporary file made for path, inside its directory.
std::string TempPrefix(const std::string& path) {
    return "." + BaseOf(path) + ".tmp.";
}

// Copies every extended attribute of from to to (ACLs are the
// system.posix_acl_* ones). A security label the system refuses to copy is
// left for it to assign; any other failure is the write's.
int CopyXattrs(int from, int to) {
    ssize_t size = flistxattr(from, nullptr, 0);
    if (size < 0)
        return errno == ENOTSUP ? 0 : errno;
    std::vector<char> names(static_cast<size_t>(size) + 1);
    size = flistxattr(from, names.data(), names.size());
    if (size < 0)
        return errno;
    std::vector<char> value;
    for (ssize_t at = 0; at < size; at += static_cast<ssize_t>(strlen(names.data() + at)) + 1) {
        const char* name = names.data() + at;
        ssize_t n = fgetxattr(from, name, nullptr, 0);
        if (n < 0)
            return errno;
        value.resize(static_cast<size_t>(n) + 1);
        n = fgetxattr(from, name, value.data(), value.size());
        if (n < 0)
            return errno;
        if (fsetxattr(to, name, value.data(), static_cast<size_t>(n), 0) != 0 &&
            strncmp(name, "security.", 9) != 0)
            return errno;
    }
    return 0;
}

// Gives the temporary file the owner, group, mode, ACLs and other extended
// attributes of the file it replaces (0644 and the writer's own for a new
// one), so that a service that reads it as its own user still can, and
// nobody gains access the old file did not give. Returns errno or 0.
int KeepAttributes(const std::string& path, int to) {
    Fd old(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat sb;
    if (old.Get() < 0 || fstat(old.Get(), &sb) != 0 || !S_ISREG(sb.st_mode))
        return fchmod(to, 0644) == 0 ? 0 : errno;
    struct stat tb;
    if (fstat(to, &tb) != 0)
        return errno;
    if ((tb.st_uid != sb.st_uid || tb.st_gid != sb.st_gid) && fchown(to, sb.st_uid, sb.st_gid) != 0)
        return errno;
    int e = CopyXattrs(old.Get(), to);
    // After the ACL, whose mask the mode's group bits then set as before.
    if (e == 0 && fchmod(to, sb.st_mode & 07777) != 0)
        e = errno;
    return e;
}

// Writes and syncs the temporary file; returns errno or 0.
int WriteTemp(std::vector<char>& name, const std::string& path, const std::string& data) {
    Fd fd(mkstemp(name.data()));
    if (fd.Get() < 0)
        return errno;
    int e = WriteAll(fd.Get(), data);
    if (e == 0)
        e = KeepAttributes(path, fd.Get());
    if (e == 0 && fsync(fd.Get()) != 0)
        e = errno;
    if (e == 0)
        e = fd.Close();
    if (e != 0)
        unlink(name.data());
    return e;
}

}  // namespace

int ReadWholeFile(const std::string& path, std::string& text) {
    Fd fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.Get() < 0)
        return errno;
    struct stat sb;
    if (fstat(fd.Get(), &sb) != 0)
        return errno;
    if (S_ISDIR(sb.st_mode))
        return EISDIR;
    std::string out;
    char buf[65536];
    while (true) {
        ssize_t n = read(fd.Get(), buf, sizeof buf);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return errno;
        if (n == 0)
            break;
        out.append(buf, static_cast<size_t>(n));
    }
    text.swap(out);
    return 0;
}

bool WriteFileAtomically(const std::string& path, const std::string& data, std::string& err) {
    std::string dir = DirOf(path);
    std::string tmpl = (dir == "/" ? "" : dir) + "/" + TempPrefix(path) + "XXXXXX";
    std::vector<char> name(tmpl.begin(), tmpl.end());
    name.push_back('\0');
    int e = WriteTemp(name, path, data);
    if (e == 0 && rename(name.data(), path.c_str()) != 0) {
        e = errno;
        unlink(name.data());
    }
    if (e == 0)
        e = SyncDir(dir);
    if (e != 0)
        err = strerror(e);
    return e == 0;
}

int RemoveStrayTemps(const std::string& path) {
    std::string dir = DirOf(path);
    std::string prefix = TempPrefix(path);
    DIR* d = opendir(dir.c_str());
    if (d == nullptr)
        return 0;
    int removed = 0;
    while (dirent* e = readdir(d)) {
        std::string name = e->d_name;
        // mkstemp's six characters follow the prefix exactly.
        if (name.size() != prefix.size() + 6 || name.compare(0, prefix.size(), prefix) != 0)
            continue;
        if (unlinkat(dirfd(d), name.c_str(), 0) == 0)
            ++removed;
    }
    closedir(d);
    return removed;
}

}  // namespace nvagent
