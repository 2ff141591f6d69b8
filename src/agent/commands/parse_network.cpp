// Parsers of the network interface forms: down, up, automatic addressing and
// a manual address. A manual address is refused when it would leave the
// interface unusable: no network (mask 0.0.0.0), an address no host can
// have, or a gateway the interface cannot reach.
#include "agent/commands/parse_common.h"
#include "agent/commands/payload_parse.h"

namespace nvagent {

namespace {

bool InterfaceName(const std::string& tok, CmdResult& r) {
    switch (CheckInterfaceName(IsEmptyField(tok) ? std::string() : tok)) {
        case IfNameCheck::kOk:
            return true;
        case IfNameCheck::kEmpty:
            r = Invalid("No interface name was given.");
            break;
        case IfNameCheck::kTooLong:
            r = Invalid("An interface name has at most 15 bytes.");
            break;
        case IfNameCheck::kDots:
            r = Invalid("\".\" and \"..\" are not interface names.");
            break;
        case IfNameCheck::kLeadingDash:
            r = Invalid("An interface name cannot start with \"-\".");
            break;
        case IfNameCheck::kBadChar:
            r = Invalid("An interface name cannot hold blanks or any of / : * ? [ ] \\ ! % ' \".");
            break;
    }
    return false;
}

// Why a (non-empty) address cannot serve as the field's address, or null.
// A DNS server may be on the loopback (a local resolver); nothing else may.
const char* Unusable(uint32_t a, bool loopbackOk) {
    if (a >> 24 == 0)
        return a == 0 ? "unspecified" : "in 0.0.0.0/8, which no host can use";
    if (a >> 24 == 127 && !loopbackOk)
        return "a loopback address";
    if (a >> 28 == 0xe)
        return "a multicast address";
    if (a == 0xffffffffu)
        return "the broadcast address";
    if (a >> 28 == 0xf)
        return "reserved (240.0.0.0/4)";
    return nullptr;
}

// One address field: required or "-" for none. True with the text in out
// (empty for none) and the value in a; false with the answer in r.
bool AddressField(const std::string& tok, const char* what, bool required, bool loopbackOk,
                  std::string& out, uint32_t& a, CmdResult& r) {
    out = IsEmptyField(tok) ? std::string() : tok;
    if (out.empty() && !required)
        return true;
    Ipv4Check c = CheckIPv4(out, a);
    const char* why = c == Ipv4Check::kOk ? Unusable(a, loopbackOk) : nullptr;
    if (c == Ipv4Check::kMalformed) {
        r = Invalid(std::string(what) + " must be an IPv4 address such as 192.168.1.10.");
    } else if (c == Ipv4Check::kLeadingZero) {
        r = Invalid(std::string(what) + " " + tok + " has a leading zero; write it without.");
    } else if (why != nullptr) {
        r = Invalid(std::string(what) + " " + tok + " is " + why + ".");
    } else {
        return true;
    }
    return false;
}

bool Mask(const std::string& tok, uint32_t& mask, CmdResult& r) {
    Ipv4Check c = IsEmptyField(tok) ? Ipv4Check::kMalformed : CheckIPv4(tok, mask);
    if (c == Ipv4Check::kLeadingZero) {
        r = Invalid("The mask " + tok + " has a leading zero; write it without.");
    } else if (c != Ipv4Check::kOk || !IsContiguousMask(mask)) {
        r = Invalid("The mask must be a contiguous IPv4 mask such as 255.255.255.0.");
    } else if (mask == 0) {
        r = Invalid("The mask 0.0.0.0 leaves no network; use one such as 255.255.255.0.");
    } else {
        return true;
    }
    return false;
}

// The network's own and broadcast addresses belong to no host, except in
// the two-address (/31) and one-address (/32) networks.
const char* NotAHost(uint32_t a, uint32_t mask) {
    uint32_t host = a & ~mask;
    if (~mask < 3)
        return nullptr;
    if (host == 0)
        return "the network's own address";
    if (host == ~mask)
        return "the network's broadcast address";
    return nullptr;
}

// A gateway the interface reaches: in its network, a host of it, not itself.
bool GatewayReachable(uint32_t gw, uint32_t ip, uint32_t mask, const std::string& text,
                      CmdResult& r) {
    const char* why = NotAHost(gw, mask);
    if ((gw & mask) != (ip & mask)) {
        r = Invalid("The gateway " + text + " is not in the interface's network.");
    } else if (gw == ip) {
        r = Invalid("The gateway cannot be the interface's own address.");
    } else if (why != nullptr) {
        r = Invalid("The gateway " + text + " is " + why + ".");
    } else {
        return true;
    }
    return false;
}

}  // namespace

bool ParseInterface(short cmd, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 1, tok, r, "An interface name cannot contain blanks.") ||
        !InterfaceName(tok[0], r))
        return false;
    req = InterfaceRequest{cmd, tok[0]};
    return true;
}

bool ParseInterfaceManual(short, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 6, tok, r, "An interface name or address cannot contain blanks.") ||
        !InterfaceName(tok[0], r))
        return false;
    InterfaceManualRequest m;
    m.name = tok[0];
    uint32_t ip = 0, mask = 0, gw = 0, dns = 0;
    if (!AddressField(tok[1], "The IP address", true, false, m.ip, ip, r) || !Mask(tok[2], mask, r))
        return false;
    if (const char* why = NotAHost(ip, mask)) {
        r = Invalid("The IP address " + m.ip + " is " + why + ".");
        return false;
    }
    if (!AddressField(tok[3], "The gateway", false, false, m.gateway, gw, r) ||
        !AddressField(tok[4], "The first DNS server", false, true, m.dns1, dns, r) ||
        !AddressField(tok[5], "The second DNS server", false, true, m.dns2, dns, r)) {
        return false;
    }
    if (!m.gateway.empty() && !GatewayReachable(gw, ip, mask, m.gateway, r))
        return false;
    m.mask = tok[2];
    req = m;
    return true;
}

}  // namespace nvagent
