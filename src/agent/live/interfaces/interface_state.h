// What the interface changes of every network manager share: finding an
// interface by name, its default gateway, `ip` runs, waiting until the
// kernel shows a wanted state, and putting the addressing and link state of
// before a failed change back.
#ifndef NV_AGENT_LIVE_INTERFACES_INTERFACE_STATE_H
#define NV_AGENT_LIVE_INTERFACES_INTERFACE_STATE_H

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

// An interface as it was before a change: link state, every IPv4 and
// global IPv6 address (a lease with its remaining lifetime), every route
// through it, and the command line of the DHCP client serving it (empty
// when none runs).
struct InterfaceSnapshot {
    NetInterface iface;
    std::string gateway;
    std::vector<std::vector<std::string>> addrs;   // "ip addr add" arguments, dev excluded
    std::vector<std::vector<std::string>> routes;  // "ip route replace" arguments, dev excluded
    std::vector<std::vector<std::string>> addrs6;  // the same for IPv6
    std::vector<std::vector<std::string>> routes6;
    std::vector<std::string> dhcpClient;
};
InterfaceSnapshot TakeSnapshot(const NetInterface& n);

// Puts the snapshot back, touching only what differs now: link state,
// addresses, routes, and the DHCP client started again with its own
// command line when it no longer runs.
void RestoreSnapshot(const InterfaceSnapshot& s);

// The command line of a DHCP client (dhclient of root, in the agent's
// network namespace) serving name; empty when none runs.
std::vector<std::string> DhcpClientOf(const std::string& name);

// Ends the DHCP client serving name, if one runs.
void StopDhcpClient(const std::string& name);

// How long the deferred form of 54 waits for its lease before it answers:
// a lease may be long in coming or never come, and the session guard's
// watch, not this wait, judges whether the change cut the session; the
// DHCP client goes on asking after the answer.
const int kDeferredLeaseWaitMs = 5000;

// Starts dhclient for name, in the background at once (its pid and lease
// files where ifupdown keeps them, so that ifdown ends it); false with why.
bool StartDhcpClient(const std::string& name, std::string& why);

// Waits up to waitMs for a lease on name: empty when one came, else the
// note that none has yet and the client goes on asking.
std::string AwaitLease(const std::string& name, int waitMs);

// Polls the interface called name until wanted has held for stableMs in a
// row (a daemon that works asynchronously may still be changing it) or
// timeoutMs passes.
bool WaitForInterface(const std::string& name,
                      const std::function<bool(const NetInterface&)>& wanted, int timeoutMs,
                      int stableMs = 0);

// Waits (up to timeoutMs) until the interface shows old's link state,
// address and mask again, as a daemon puts its old configuration back.
void WaitForOldState(const NetInterface& old, int timeoutMs);

}  // namespace nvagent

#endif
