// Socket activation through libsystemd's sd_listen_fds: the agent serves the
// socket systemd bound for it, and binds its own when started any other way.
#include "agent/activated_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <systemd/sd-daemon.h>

#include <cstring>

namespace nvagent {

Activation TakeActivatedSocket(const std::string& path, int& fd, std::string& err) {
    int n = sd_listen_fds(1);
    if (n == 0)
        return Activation::kNone;
    if (n < 0) {
        err = std::string("cannot read the sockets passed by the service manager: ") + strerror(-n);
        return Activation::kFailed;
    }
    if (n != 1 || sd_is_socket_unix(SD_LISTEN_FDS_START, SOCK_STREAM, 1, path.c_str(), 0) <= 0) {
        err = "the service manager passed " + std::to_string(n) +
              " socket(s), not one listening stream socket at " + path;
        return Activation::kFailed;
    }
    fd = SD_LISTEN_FDS_START;
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    return Activation::kTaken;
}

}  // namespace nvagent
