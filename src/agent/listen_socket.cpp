// Opening the agent's listening socket: stale-file handling, bind with mode
// 0600, listen.
#include "agent/listen_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "agent/activated_socket.h"

namespace nvagent {

namespace {

bool FillAddress(const std::string& path, sockaddr_un& addr, std::string& err) {
    memset(&addr, 0, sizeof addr);
    addr.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof addr.sun_path) {
        err = "socket path '" + path + "' is empty or longer than " +
              std::to_string(sizeof addr.sun_path - 1) + " bytes";
        return false;
    }
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    return true;
}

std::string Errno(const std::string& what, const std::string& path) {
    return what + " " + path + ": " + strerror(errno);
}

enum class Probe { kAbsent, kLive, kStale, kFailed };

// Tells whether an agent is serving at path. A non-blocking connect succeeds
// or reports a full backlog (EAGAIN) when something listens, and is refused
// when the file is left over from an agent that is gone.
Probe ProbeExisting(const std::string& path, const sockaddr_un& addr, std::string& err) {
    struct stat st;
    if (lstat(path.c_str(), &st) != 0) {
        if (errno == ENOENT)
            return Probe::kAbsent;
        err = Errno("cannot examine", path);
        return Probe::kFailed;
    }
    if (!S_ISSOCK(st.st_mode)) {
        err = path + " exists and is not a socket; not replacing it";
        return Probe::kFailed;
    }
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        err = Errno("cannot create a socket to probe", path);
        return Probe::kFailed;
    }
    int rc = connect(fd, reinterpret_cast<const sockaddr*>(&addr), sizeof addr);
    int e = errno;
    close(fd);
    if (rc == 0 || e == EAGAIN || e == EINPROGRESS) {
        err = "another agent is listening on " + path;
        return Probe::kLive;
    }
    if (e == ECONNREFUSED)
        return Probe::kStale;
    errno = e;
    err = Errno("cannot probe existing socket", path);
    return Probe::kFailed;
}

bool ClearPath(const std::string& path, const sockaddr_un& addr, std::string& err) {
    switch (ProbeExisting(path, addr, err)) {
        case Probe::kAbsent:
            return true;
        case Probe::kStale:
            if (unlink(path.c_str()) == 0 || errno == ENOENT)
                return true;
            err = Errno("cannot remove stale socket", path);
            return false;
        default:
            return false;
    }
}

// The socket inode's mode, narrowed by the umask, becomes the file's mode at
// bind; both are set so the file is 0600 from its first moment.
bool BindPrivate(int fd, const std::string& path, const sockaddr_un& addr, std::string& err) {
    fchmod(fd, 0600);
    mode_t old = umask(0177);
    int rc = bind(fd, reinterpret_cast<const sockaddr*>(&addr), sizeof addr);
    int e = errno;
    umask(old);
    if (rc != 0) {
        errno = e;
        err = e == EADDRINUSE ? "another agent is listening on " + path
                              : Errno("cannot bind socket", path);
        return false;
    }
    if (chmod(path.c_str(), 0600) != 0) {
        err = Errno("cannot set the mode of", path);
        return false;
    }
    return true;
}

bool RecordIdentity(const std::string& path, ListenSocket& out, std::string& err) {
    struct stat st;
    if (lstat(path.c_str(), &st) != 0) {
        err = Errno("cannot examine", path);
        return false;
    }
    out.dev = st.st_dev;
    out.ino = st.st_ino;
    return true;
}

bool StartListening(int fd, int backlog, const std::string& path, std::string& err) {
    if (listen(fd, backlog) == 0)
        return true;
    err = Errno("cannot listen on", path);
    return false;
}

}  // namespace

bool OpenListenSocket(const std::string& path, int backlog, ListenSocket& out, std::string& err) {
    // A socket passed by systemd is used as it is; its file belongs to the
    // socket unit, so dev and ino stay 0 and the agent never removes it.
    Activation act = TakeActivatedSocket(path, out.fd, err);
    out.bActivated = act == Activation::kTaken;
    if (act != Activation::kNone)
        return out.bActivated;
    sockaddr_un addr;
    if (!FillAddress(path, addr, err) || !ClearPath(path, addr, err))
        return false;
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        err = Errno("cannot create socket for", path);
        return false;
    }
    if (!BindPrivate(fd, path, addr, err)) {
        close(fd);
        return false;
    }
    if (!RecordIdentity(path, out, err) || !StartListening(fd, backlog, path, err)) {
        close(fd);
        unlink(path.c_str());
        return false;
    }
    out.fd = fd;
    return true;
}

void RemoveListenSocketFile(const std::string& path, const ListenSocket& sock) {
    struct stat st;
    if (lstat(path.c_str(), &st) != 0)
        return;
    if (st.st_dev == sock.dev && st.st_ino == sock.ino)
        unlink(path.c_str());
}

}  // namespace nvagent
