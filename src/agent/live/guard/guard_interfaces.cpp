// The session guard's interface judge: the session's route read from the
// kernel, and the interface commands judged against it.
#include "agent/live/guard/guard_interfaces.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "agent/live/guard/guard_address.h"

namespace nvagent {

namespace {

void AddAttr(nlmsghdr* n, unsigned short type, const void* data, size_t len) {
    rtattr* a = reinterpret_cast<rtattr*>(reinterpret_cast<char*>(n) + NLMSG_ALIGN(n->nlmsg_len));
    a->rta_type = type;
    a->rta_len = static_cast<unsigned short>(RTA_LENGTH(len));
    memcpy(RTA_DATA(a), data, len);
    n->nlmsg_len = NLMSG_ALIGN(n->nlmsg_len) + RTA_ALIGN(a->rta_len);
}

// The kernel's route to addr: outgoing interface and gateway.
void RouteTo(const IpAddr& addr, SessionPath& path) {
    int fd = socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_ROUTE);
    if (fd < 0)
        return;
    struct {
        nlmsghdr n;
        rtmsg r;
        char attrs[64];
    } req{};
    req.n.nlmsg_len = NLMSG_LENGTH(sizeof(rtmsg));
    req.n.nlmsg_type = RTM_GETROUTE;
    req.n.nlmsg_flags = NLM_F_REQUEST;
    req.r.rtm_family = static_cast<unsigned char>(addr.iFamily);
    size_t len = addr.iFamily == AF_INET ? 4 : 16;
    req.r.rtm_dst_len = static_cast<unsigned char>(len * 8);
    AddAttr(&req.n, RTA_DST, addr.bytes, len);
    sockaddr_nl nl{};
    nl.nl_family = AF_NETLINK;
    char buf[8192];
    ssize_t n = -1;
    if (sendto(fd, &req, req.n.nlmsg_len, 0, reinterpret_cast<sockaddr*>(&nl), sizeof nl) >= 0)
        n = recv(fd, buf, sizeof buf, 0);
    close(fd);
    if (n <= 0)
        return;
    size_t left = static_cast<size_t>(n);
    for (nlmsghdr* h = reinterpret_cast<nlmsghdr*>(buf); NLMSG_OK(h, left);
         h = NLMSG_NEXT(h, left)) {
        if (h->nlmsg_type != RTM_NEWROUTE)
            continue;
        rtmsg* r = static_cast<rtmsg*>(NLMSG_DATA(h));
        int alen = static_cast<int>(RTM_PAYLOAD(h));
        for (rtattr* a = RTM_RTA(r); RTA_OK(a, alen); a = RTA_NEXT(a, alen)) {
            if (a->rta_type == RTA_OIF) {
                char name[IF_NAMESIZE] = {};
                if (if_indextoname(*static_cast<unsigned*>(RTA_DATA(a)), name) != nullptr)
                    path.sOutIface = name;
            } else if (a->rta_type == RTA_GATEWAY) {
                char text[INET6_ADDRSTRLEN] = {};
                inet_ntop(r->rtm_family, RTA_DATA(a), text, sizeof text);
                path.sGateway = text;
            }
        }
    }
}

bool InSubnet(const std::string& addr, const std::string& ip, const std::string& mask) {
    IpAddr a, net;
    int prefix = 0;
    return ParseIp(addr, a) && ParseCidr(ip + "/" + mask, net, prefix) && InPrefix(a, net, prefix);
}

}  // namespace

SessionPath ReadSessionPath(const GuardSession& s) {
    SessionPath path;
    IpAddr remote;
    if (!s.bFound || !ParseIp(s.sRemoteAddr, remote))
        return path;
    RouteTo(remote, path);
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0)
        return path;
    for (ifaddrs* i = list; i != nullptr; i = i->ifa_next) {
        if (i->ifa_addr == nullptr ||
            (i->ifa_addr->sa_family != AF_INET && i->ifa_addr->sa_family != AF_INET6))
            continue;
        char text[INET6_ADDRSTRLEN] = {};
        const void* raw =
            i->ifa_addr->sa_family == AF_INET
                ? static_cast<const void*>(&reinterpret_cast<sockaddr_in*>(i->ifa_addr)->sin_addr)
                : static_cast<const void*>(
                      &reinterpret_cast<sockaddr_in6*>(i->ifa_addr)->sin6_addr);
        inet_ntop(i->ifa_addr->sa_family, raw, text, sizeof text);
        if (SameIp(text, s.sLocalAddr)) {
            path.sLocalIface = i->ifa_name;
            break;
        }
    }
    freeifaddrs(list);
    return path;
}

std::string InterfaceOf(const Request& req) {
    if (const auto* q = std::get_if<InterfaceRequest>(&req))
        return q->cmd == 52 || q->cmd == 54 ? q->name : "";
    if (const auto* m = std::get_if<InterfaceManualRequest>(&req))
        return m->name;
    return "";
}

std::string InterfaceCut(const Request& req, const GuardSession& s, const SessionPath& path,
                         bool dynamic) {
    std::string name = InterfaceOf(req);
    if (!s.bFound || name.empty())
        return "";
    bool out = name == path.sOutIface;
    bool local = name == path.sLocalIface;
    if (!out && !local)
        return "";
    const auto* q = std::get_if<InterfaceRequest>(&req);
    if (q != nullptr && q->cmd == 52)
        return "taking down " + name + " ends the session" +
               (out ? " (its route to " + s.sRemoteAddr + ")"
                    : " (its address " + s.sLocalAddr + ")");
    // The IPv4 commands leave an IPv6 session's addresses and routes be.
    if (s.iFamily != AF_INET)
        return "";
    if (q != nullptr)
        return dynamic ? "" : "DHCP may give " + name + " another address than " + s.sLocalAddr;
    const auto& m = std::get<InterfaceManualRequest>(req);
    if (local && !SameIp(m.ip, s.sLocalAddr))
        return "the new address " + m.ip + " replaces the session's address " + s.sLocalAddr;
    if (!out || InSubnet(s.sRemoteAddr, m.ip, m.mask))
        return "";
    // The client beyond the new subnet: reached only through a gateway in it.
    if ((!m.gateway.empty() && InSubnet(m.gateway, m.ip, m.mask)) ||
        (!path.sGateway.empty() && InSubnet(path.sGateway, m.ip, m.mask)))
        return "";
    return "no route to " + s.sRemoteAddr + " is left on " + name + " with " + m.ip + "/" + m.mask;
}

}  // namespace nvagent
