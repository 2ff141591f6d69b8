// One NFT_MSG_GETGEN request on a netlink socket of its own.
#include "agent/live/firewall/nft_generation.h"

#include <arpa/inet.h>
#include <linux/netfilter/nf_tables.h>
#include <linux/netfilter/nfnetlink.h>
#include <linux/netlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

namespace nvagent {

bool NftGeneration(uint32_t& gen) {
    int fd = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_NETFILTER);
    if (fd < 0)
        return false;
    struct {
        nlmsghdr nlh;
        nfgenmsg nfg;
    } req{};
    req.nlh.nlmsg_len = sizeof req;
    req.nlh.nlmsg_type = (NFNL_SUBSYS_NFTABLES << 8) | NFT_MSG_GETGEN;
    req.nlh.nlmsg_flags = NLM_F_REQUEST;
    req.nfg.nfgen_family = AF_UNSPEC;
    req.nfg.version = NFNETLINK_V0;
    sockaddr_nl nl{};
    nl.nl_family = AF_NETLINK;
    timeval tv{1, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);
    bool ok = false;
    char buf[4096];
    if (sendto(fd, &req, sizeof req, 0, reinterpret_cast<sockaddr*>(&nl), sizeof nl) >= 0) {
        ssize_t n = recv(fd, buf, sizeof buf, 0);
        size_t left = n > 0 ? static_cast<size_t>(n) : 0;
        for (nlmsghdr* h = reinterpret_cast<nlmsghdr*>(buf); NLMSG_OK(h, left);
             h = NLMSG_NEXT(h, left)) {
            if (h->nlmsg_type != ((NFNL_SUBSYS_NFTABLES << 8) | NFT_MSG_NEWGEN))
                continue;
            size_t at = NLMSG_HDRLEN + NLMSG_ALIGN(sizeof(nfgenmsg));
            while (at + sizeof(nlattr) <= h->nlmsg_len) {
                nlattr* a = reinterpret_cast<nlattr*>(reinterpret_cast<char*>(h) + at);
                if (a->nla_len < sizeof(nlattr) || at + a->nla_len > h->nlmsg_len)
                    break;
                if ((a->nla_type & NLA_TYPE_MASK) == NFTA_GEN_ID && a->nla_len >= NLA_HDRLEN + 4) {
                    uint32_t be = 0;
                    memcpy(&be, reinterpret_cast<char*>(a) + NLA_HDRLEN, 4);
                    gen = ntohl(be);
                    ok = true;
                }
                at += NLA_ALIGN(a->nla_len);
            }
        }
    }
    close(fd);
    return ok;
}

}  // namespace nvagent
