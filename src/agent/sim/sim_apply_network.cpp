// The simulator's network interfaces: down, up, automatic addressing and a
// manual address. Every change regenerates the interface display lines.
#include "agent/display_lines.h"
#include "agent/sim/sim_apply.h"

namespace nvagent {

namespace {

const char* const kLoopback = "lo";

NetInterface* FindInterface(SimState& st, const std::string& name, CmdResult& r) {
    for (NetInterface& n : st.interfaces) {
        if (n.name == name)
            return &n;
    }
    r = Invalid("There is no interface named " + name + ".");
    return nullptr;
}

bool SameSettings(const NetInterface& a, const NetInterface& b) {
    return a.mode == b.mode && a.ip == b.ip && a.mask == b.mask && a.gateway == b.gateway &&
           a.dns1 == b.dns1 && a.dns2 == b.dns2;
}

CmdResult Change(NetInterface& n, short cmd) {
    switch (cmd) {
        case 52:
            if (!n.up)
                return Unchanged(n.name + " is already down.");
            n.up = false;
            return Done();
        case 53:
            if (n.up)
                return Unchanged(n.name + " is already up.");
            n.up = true;
            return Done();
        default:
            if (n.name == kLoopback)
                return Invalid("The loopback interface cannot use DHCP.");
            if (n.mode == kModeDynamic)
                return Unchanged(n.name + " already uses DHCP.");
            n.mode = kModeDynamic;
            return Done();
    }
}

}  // namespace

CmdResult SimInterface(SimContext& c, const InterfaceRequest& q) {
    CmdResult r;
    NetInterface* n = FindInterface(c.st, q.name, r);
    if (n == nullptr)
        return r;
    r = Change(*n, q.cmd);
    if (r.iCode == em_ActSuccAll)
        c.st.svr.vsIfconfigList = InterfaceLines(c.st.interfaces);
    return r;
}

CmdResult SimInterfaceManual(SimContext& c, const InterfaceManualRequest& q) {
    CmdResult r;
    NetInterface* n = FindInterface(c.st, q.name, r);
    if (n == nullptr)
        return r;
    if (n->name == kLoopback)
        return Invalid("The loopback interface keeps its fixed address.");
    NetInterface next = *n;
    next.mode = kModeStatic;
    next.ip = q.ip;
    next.mask = q.mask;
    next.gateway = q.gateway;
    next.dns1 = q.dns1;
    next.dns2 = q.dns2;
    if (SameSettings(*n, next))
        return Unchanged(n->name + " already has these settings.");
    *n = next;
    c.st.svr.vsIfconfigList = InterfaceLines(c.st.interfaces);
    return Done();
}

}  // namespace nvagent
