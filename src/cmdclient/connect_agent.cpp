// Connecting to the agent's socket within the request's time limit. The
// limit starts here, so that connecting, sending and reading the answer
// together never take longer than g_iRequestTimeoutMs.
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cmdclient/cmd_client.h"
#include "cmdclient/request_clock.h"

namespace {

// SO_SNDTIMEO bounds a blocking connect on a local stream socket: the kernel
// waits for room in a full listen queue at most that long, then fails with
// EAGAIN. A connect interrupted by a signal is simply made again.
bool ConnectWithin(int fd, const sockaddr_un& addr, socklen_t len) {
    for (;;) {
        long leftMs = nvclient::RequestMsLeft();
        if (leftMs <= 0) {
            errno = ETIMEDOUT;
            return false;
        }
        timeval tv;
        tv.tv_sec = leftMs / 1000;
        tv.tv_usec = (leftMs % 1000) * 1000;
        if (setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &tv, sizeof tv) != 0)
            return false;
        if (connect(fd, reinterpret_cast<const sockaddr*>(&addr), len) == 0)
            return true;
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            errno = ETIMEDOUT;
            return false;
        }
        if (errno != EINTR)
            return false;
    }
}

}  // namespace

bool SocketPathFits(const std::string& path) {
    return !path.empty() && path.size() < sizeof(sockaddr_un{}.sun_path);
}

int ConnectAgentSocket(cGlobalVal* pObj) {
    if (!SocketPathFits(pObj->sSockName))
        return NV_CONNECT_PATH_TOO_LONG;
    pObj->fdConn = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (pObj->fdConn < 0)
        return NV_CONNECT_NO_SOCKET;
    nvclient::StartRequestClock(pObj->fdConn);
    sockaddr_un addr;
    memset(&addr, 0, sizeof addr);
    addr.sun_family = AF_UNIX;
    memcpy(addr.sun_path, pObj->sSockName.data(), pObj->sSockName.size());
    socklen_t len = static_cast<socklen_t>(pObj->sSockName.size() + 2);
    return ConnectWithin(pObj->fdConn, addr, len) ? NV_CONNECT_OK : NV_CONNECT_FAILED;
}
