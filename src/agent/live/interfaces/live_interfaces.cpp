// Links and IPv4 addresses from libnl's route caches.
#include "agent/live/interfaces/live_interfaces.h"

#include <arpa/inet.h>
#include <linux/if.h>
#include <netlink/netlink.h>
#include <netlink/route/addr.h>
#include <netlink/route/link.h>

#include <algorithm>
#include <memory>

namespace nvagent {

namespace {

struct SockFree {
    void operator()(nl_sock* s) const { nl_socket_free(s); }
};
struct CacheFree {
    void operator()(nl_cache* c) const { nl_cache_free(c); }
};

std::string MaskText(unsigned prefix) {
    uint32_t m = prefix == 0 ? 0 : htonl(0xffffffffu << (32 - prefix));
    char buf[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &m, buf, sizeof buf);
    return buf;
}

struct Walk {
    std::vector<NetInterface>* out;
};

void OnLink(nl_object* obj, void* arg) {
    Walk* w = static_cast<Walk*>(arg);
    rtnl_link* l = reinterpret_cast<rtnl_link*>(obj);
    NetInterface n;
    n.name = rtnl_link_get_name(l) ? rtnl_link_get_name(l) : "";
    n.index = rtnl_link_get_ifindex(l);
    n.up = (rtnl_link_get_flags(l) & IFF_UP) != 0;
    if (nl_addr* a = rtnl_link_get_addr(l)) {
        if (nl_addr_get_len(a) == 6) {
            char buf[64];
            nl_addr2str(a, buf, sizeof buf);
            n.mac = buf;
        }
    }
    w->out->push_back(n);
}

void OnAddr(nl_object* obj, void* arg) {
    Walk* w = static_cast<Walk*>(arg);
    rtnl_addr* a = reinterpret_cast<rtnl_addr*>(obj);
    if (rtnl_addr_get_family(a) != AF_INET)
        return;
    int index = rtnl_addr_get_ifindex(a);
    for (NetInterface& n : *w->out) {
        if (n.index != index || !n.ip.empty())
            continue;
        nl_addr* local = rtnl_addr_get_local(a);
        if (local == nullptr || nl_addr_get_len(local) != 4)
            return;
        char buf[INET_ADDRSTRLEN];
        inet_ntop(AF_INET, nl_addr_get_binary_addr(local), buf, sizeof buf);
        n.ip = buf;
        n.mask = MaskText(static_cast<unsigned>(rtnl_addr_get_prefixlen(a)));
        // A lease has a finite lifetime; a configured address lives forever.
        n.mode = rtnl_addr_get_valid_lifetime(a) != 0xffffffffu ? kModeDynamic : kModeStatic;
        return;
    }
}

}  // namespace

bool ReadInterfaces(std::vector<NetInterface>& out, std::string& err) {
    out.clear();
    std::unique_ptr<nl_sock, SockFree> sock(nl_socket_alloc());
    if (!sock || nl_connect(sock.get(), NETLINK_ROUTE) < 0) {
        err = "cannot open an rtnetlink socket";
        return false;
    }
    nl_cache* links = nullptr;
    nl_cache* addrs = nullptr;
    if (rtnl_link_alloc_cache(sock.get(), AF_UNSPEC, &links) < 0) {
        err = "cannot list the network links";
        return false;
    }
    std::unique_ptr<nl_cache, CacheFree> linkCache(links);
    if (rtnl_addr_alloc_cache(sock.get(), &addrs) < 0) {
        err = "cannot list the addresses";
        return false;
    }
    std::unique_ptr<nl_cache, CacheFree> addrCache(addrs);
    Walk w{&out};
    nl_cache_foreach(links, OnLink, &w);
    std::sort(out.begin(), out.end(),
              [](const NetInterface& a, const NetInterface& b) { return a.index < b.index; });
    nl_cache_foreach(addrs, OnAddr, &w);
    return true;
}

}  // namespace nvagent
