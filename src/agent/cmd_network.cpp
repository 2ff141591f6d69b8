// Handlers of the network interfaces: down, up, automatic addressing and a
// manual address. Every change regenerates the interface display lines.
#include "agent/display_lines.h"
#include "agent/payload_parse.h"
#include "agent/sim_handlers.h"

namespace nvagent {

namespace {

const char* const kLoopback = "lo";

// The interface named by the first token; null with the answer in r.
NetInterface* FindInterface(SimState& st, const std::string& tok, CmdResult& r) {
    if (IsEmptyField(tok)) {
        r = Invalid("No interface name was given.");
        return nullptr;
    }
    for (NetInterface& n : st.interfaces) {
        if (n.name == tok)
            return &n;
    }
    r = Invalid("There is no interface named " + tok + ".");
    return nullptr;
}

// The one-token commands: find the interface, then let change() act on it.
template <class Change>
CmdResult OnInterface(CmdContext& c, const std::string& p, Change change) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 1, tok))
        return WrongTokenCount(1);
    CmdResult r;
    NetInterface* n = FindInterface(c.st, tok[0], r);
    if (n == nullptr)
        return r;
    r = change(*n);
    if (r.iCode == em_ActSuccAll)
        c.st.svr.vsIfconfigList = InterfaceLines(c.st.interfaces);
    return r;
}

// An optional address field ("-" for none); false with the answer in r.
bool OptionalAddress(const std::string& tok, const char* what, std::string& out, CmdResult& r) {
    uint32_t a = 0;
    out = IsEmptyField(tok) ? std::string() : tok;
    if (out.empty() || ParseIPv4(out, a))
        return true;
    r = Invalid(std::string(what) + " must be an IPv4 address.");
    return false;
}

// Checks the address, mask, gateway and DNS tokens into n; false with r.
bool ManualFields(const std::vector<std::string>& tok, NetInterface& n, CmdResult& r) {
    uint32_t ip = 0, mask = 0, gw = 0;
    if (IsEmptyField(tok[1]) || !ParseIPv4(tok[1], ip)) {
        r = Invalid("The IP address must be given as an IPv4 address.");
    } else if (IsEmptyField(tok[2]) || !ParseIPv4(tok[2], mask) || !IsContiguousMask(mask)) {
        r = Invalid("The mask must be a contiguous IPv4 mask such as 255.255.255.0.");
    } else if (OptionalAddress(tok[3], "The gateway", n.gateway, r) &&
               OptionalAddress(tok[4], "The first DNS server", n.dns1, r) &&
               OptionalAddress(tok[5], "The second DNS server", n.dns2, r)) {
        if (!n.gateway.empty() && ParseIPv4(n.gateway, gw) && (gw & mask) != (ip & mask)) {
            r = Invalid("The gateway " + n.gateway + " is not in the interface's network.");
            return false;
        }
        n.ip = tok[1];
        n.mask = tok[2];
        return true;
    }
    return false;
}

bool SameSettings(const NetInterface& a, const NetInterface& b) {
    return a.mode == b.mode && a.ip == b.ip && a.mask == b.mask && a.gateway == b.gateway &&
           a.dns1 == b.dns1 && a.dns2 == b.dns2;
}

}  // namespace

CmdResult InterfaceDown(CmdContext& c, const std::string& p) {
    return OnInterface(c, p, [](NetInterface& n) {
        if (!n.up)
            return Unchanged(n.name + " is already down.");
        n.up = false;
        return Done();
    });
}

CmdResult InterfaceUp(CmdContext& c, const std::string& p) {
    return OnInterface(c, p, [](NetInterface& n) {
        if (n.up)
            return Unchanged(n.name + " is already up.");
        n.up = true;
        return Done();
    });
}

CmdResult InterfaceDhcp(CmdContext& c, const std::string& p) {
    return OnInterface(c, p, [](NetInterface& n) {
        if (n.name == kLoopback)
            return Invalid("The loopback interface cannot use DHCP.");
        if (n.mode == kModeDynamic)
            return Unchanged(n.name + " already uses DHCP.");
        n.mode = kModeDynamic;
        return Done();
    });
}

CmdResult InterfaceManual(CmdContext& c, const std::string& p) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 6, tok))
        return WrongTokenCount(6);
    CmdResult r;
    NetInterface* n = FindInterface(c.st, tok[0], r);
    if (n == nullptr)
        return r;
    if (n->name == kLoopback)
        return Invalid("The loopback interface keeps its fixed address.");
    NetInterface next = *n;
    next.mode = kModeStatic;
    if (!ManualFields(tok, next, r))
        return r;
    if (SameSettings(*n, next))
        return Unchanged(n->name + " already has these settings.");
    *n = next;
    c.st.svr.vsIfconfigList = InterfaceLines(c.st.interfaces);
    return Done();
}

}  // namespace nvagent
