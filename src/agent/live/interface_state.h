// What the interface changes of every network manager share: finding an
// interface by name, its default gateway, `ip` runs, waiting until the
// kernel shows a wanted state, and putting the addressing and link state of
// before a failed change back.
#ifndef NV_AGENT_LIVE_INTERFACE_STATE_H
#define NV_AGENT_LIVE_INTERFACE_STATE_H

#include <functional>
#include <string>
#include <vector>

#include "agent/commands/requests.h"

namespace nvagent {

// The interface called name; false with the answer in r (4 when the
// interfaces cannot be read, 3 when there is no such interface).
bool FindInterface(const std::string& name, NetInterface& out, CmdResult& r);

// The prefix length of a dotted mask ("255.255.255.0" is 24).
unsigned MaskPrefix(const std::string& mask);

// Runs ip with args; false with the reason in err.
bool RunIp(const std::vector<std::string>& args, std::string& err);

// The gateway of name's IPv4 default route, or empty.
std::string DefaultGateway(const std::string& name);

// An interface as it was before a change.
struct InterfaceSnapshot {
    NetInterface iface;
    std::string gateway;
};
InterfaceSnapshot TakeSnapshot(const NetInterface& n);

// Puts the snapshot's link state, IPv4 address and default route back,
// touching only what differs now.
void RestoreSnapshot(const InterfaceSnapshot& s);

// Polls the interface called name until wanted has held for stableMs in a
// row (a daemon that works asynchronously may still be changing it) or
// timeoutMs passes.
bool WaitForInterface(const std::string& name,
                      const std::function<bool(const NetInterface&)>& wanted, int timeoutMs,
                      int stableMs = 0);

}  // namespace nvagent

#endif
