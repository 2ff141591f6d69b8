// A netlink sock_diag dump of TCP sockets.
#include "agent/live/sock_diag.h"

#include <dirent.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace nvagent {

bool DumpTcpSockets(int family, unsigned states,
                    const std::function<void(const nlmsghdr& h, const inet_diag_msg& d)>& each,
                    unsigned char ext) {
    int fd = socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
    if (fd < 0)
        return false;
    struct {
        nlmsghdr nlh;
        inet_diag_req_v2 req;
    } msg{};
    msg.nlh.nlmsg_len = sizeof msg;
    msg.nlh.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    msg.nlh.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    msg.req.sdiag_family = static_cast<__u8>(family);
    msg.req.sdiag_protocol = IPPROTO_TCP;
    msg.req.idiag_states = states;
    msg.req.idiag_ext = ext;
    sockaddr_nl nl{};
    nl.nl_family = AF_NETLINK;
    if (sendto(fd, &msg, sizeof msg, 0, reinterpret_cast<sockaddr*>(&nl), sizeof nl) < 0) {
        close(fd);
        return false;
    }
    std::vector<char> buf(1 << 16);
    bool ok = true;
    for (bool done = false; !done;) {
        ssize_t n = recv(fd, buf.data(), buf.size(), 0);
        if (n <= 0) {
            ok = false;
            break;
        }
        size_t left = static_cast<size_t>(n);
        for (nlmsghdr* h = reinterpret_cast<nlmsghdr*>(buf.data()); NLMSG_OK(h, left);
             h = NLMSG_NEXT(h, left)) {
            if (h->nlmsg_type == NLMSG_DONE || h->nlmsg_type == NLMSG_ERROR) {
                ok = h->nlmsg_type == NLMSG_DONE;
                done = true;
                break;
            }
            each(*h, *static_cast<const inet_diag_msg*>(NLMSG_DATA(h)));
        }
    }
    close(fd);
    return ok;
}

void ForEachSocketInode(const std::string& fdDir, const std::function<void(uint64_t inode)>& each) {
    DIR* d = opendir(fdDir.c_str());
    if (d == nullptr)
        return;
    while (dirent* e = readdir(d)) {
        if (e->d_name[0] == '.')
            continue;
        char link[64];
        ssize_t n = readlinkat(dirfd(d), e->d_name, link, sizeof link - 1);
        if (n <= 9 || strncmp(link, "socket:[", 8) != 0)
            continue;
        link[n] = '\0';
        each(strtoull(link + 8, nullptr, 10));
    }
    closedir(d);
}

}  // namespace nvagent
