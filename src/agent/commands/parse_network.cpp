// Parsers of the network interface forms: down, up, automatic addressing and
// a manual address.
#include "agent/commands/parse_common.h"
#include "agent/commands/payload_parse.h"

namespace nvagent {

namespace {

// The longest interface name the kernel accepts (IFNAMSIZ less the NUL).
const size_t kMaxIfName = 15;

bool InterfaceName(const std::string& tok, CmdResult& r) {
    if (IsEmptyField(tok)) {
        r = Invalid("No interface name was given.");
        return false;
    }
    bool ok = tok.size() <= kMaxIfName && tok != "." && tok != "..";
    for (unsigned char ch : tok)
        ok = ok && ch > 0x20 && ch < 0x7f && ch != '/' && ch != ':';
    if (!ok)
        r = Invalid("There is no interface named " + tok + ".");
    return ok;
}

// An optional address field ("-" for none); false with the answer in r.
bool OptionalAddress(const std::string& tok, const char* what, std::string& out, CmdResult& r) {
    uint32_t a = 0;
    out = IsEmptyField(tok) ? std::string() : tok;
    if (out.empty() || ParseIPv4(out, a))
        return true;
    r = Invalid(std::string(what) + " must be an IPv4 address, not \"" + tok + "\".");
    return false;
}

}  // namespace

bool ParseInterface(short cmd, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 1, tok, r) || !InterfaceName(tok[0], r))
        return false;
    req = InterfaceRequest{cmd, tok[0]};
    return true;
}

bool ParseInterfaceManual(short, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 6, tok, r) || !InterfaceName(tok[0], r))
        return false;
    InterfaceManualRequest m;
    m.name = tok[0];
    uint32_t ip = 0, mask = 0, gw = 0;
    if (IsEmptyField(tok[1]) || !ParseIPv4(tok[1], ip)) {
        r = Invalid("The IP address must be given as an IPv4 address.");
        return false;
    }
    if (IsEmptyField(tok[2]) || !ParseIPv4(tok[2], mask) || !IsContiguousMask(mask)) {
        r = Invalid("The mask must be a contiguous IPv4 mask such as 255.255.255.0.");
        return false;
    }
    if (!OptionalAddress(tok[3], "The gateway", m.gateway, r) ||
        !OptionalAddress(tok[4], "The first DNS server", m.dns1, r) ||
        !OptionalAddress(tok[5], "The second DNS server", m.dns2, r)) {
        return false;
    }
    if (!m.gateway.empty() && ParseIPv4(m.gateway, gw) && (gw & mask) != (ip & mask)) {
        r = Invalid("The gateway " + m.gateway + " is not in the interface's network.");
        return false;
    }
    m.ip = tok[1];
    m.mask = tok[2];
    req = m;
    return true;
}

}  // namespace nvagent
