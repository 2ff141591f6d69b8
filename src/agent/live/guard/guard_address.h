// Address arithmetic of the session guard: IPv4 and IPv6 addresses, the
// prefixes of firewall rules and interface masks, and an address shortened
// to fit a one-row detail.
#ifndef NV_AGENT_LIVE_GUARD_GUARD_ADDRESS_H
#define NV_AGENT_LIVE_GUARD_GUARD_ADDRESS_H

#include <cstddef>
#include <string>

namespace nvagent {

struct IpAddr {
    int iFamily = 0;  // AF_INET or AF_INET6
    unsigned char bytes[16] = {};
};

// A numeric address; an IPv4-mapped IPv6 address is taken as its IPv4
// address. False for anything else.
bool ParseIp(const std::string& text, IpAddr& out);

// "ADDR", "ADDR/LEN" or "ADDR/DOTTED-MASK" (a contiguous IPv4 mask): the
// network and its prefix length (the whole address without one).
bool ParseCidr(const std::string& text, IpAddr& net, int& prefix);

// A dotted IPv4 mask's prefix length; -1 when not a contiguous mask.
int DottedMaskPrefix(const std::string& mask);

// True when a lies in net/prefix (same family, first prefix bits equal).
bool InPrefix(const IpAddr& a, const IpAddr& net, int prefix);

// The same address in both texts (any spelling of it).
bool SameIp(const std::string& a, const std::string& b);

// addr itself when it has at most max bytes, else its head and tail around
// "..", max bytes in all.
std::string ShortAddress(const std::string& addr, size_t max);

}  // namespace nvagent

#endif
