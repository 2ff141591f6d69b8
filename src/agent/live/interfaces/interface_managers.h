// The interface changes of each network manager, one file each, called by
// interfaces_change.cpp once the request is checked against the interface
// (which exists, and is not the loopback where that matters) and its owner
// is known (interface_owner.h).
#ifndef NV_AGENT_LIVE_INTERFACES_INTERFACE_MANAGERS_H
#define NV_AGENT_LIVE_INTERFACES_INTERFACE_MANAGERS_H

#include <functional>

#include "agent/commands/requests.h"

namespace nvagent {

// ifupdown_change.cpp: the stanza where it is, ifdown/ifup.
CmdResult IfupdownChange(const NetInterface& n, short cmd);
CmdResult IfupdownManual(const NetInterface& n, const InterfaceManualRequest& q);

// networkd_change.cpp: the agent's own .network file, networkctl.
CmdResult NetworkdChange(const NetInterface& n, short cmd);
CmdResult NetworkdManual(const NetInterface& n, const InterfaceManualRequest& q);
// networkctl with args; false with the reason in why.
bool Networkctl(const std::vector<std::string>& args, std::string& why);
// networkd's files in force for n (reloaded; reconfigured as well when
// its file did not change), 52 and 53 carried out on the link, then the
// kernel state of wanted awaited.
using Wanted = std::function<bool(const NetInterface&)>;
bool NetworkdActivate(const NetInterface& n, bool changed, short cmd, const Wanted& wanted,
                      std::string& why);

// netplan_change.cpp: netplan set with the old keys cleared, applied the
// way netplan applies.
CmdResult NetplanChange(const NetInterface& n, short cmd, const std::string& file);
CmdResult NetplanManual(const NetInterface& n, const InterfaceManualRequest& q,
                        const std::string& file);

// networkmanager_change.cpp: the device's profile through nmcli, inside a
// checkpoint.
CmdResult NetworkManagerChange(const NetInterface& n, short cmd);
CmdResult NetworkManagerManual(const NetInterface& n, const InterfaceManualRequest& q);

// unmanaged_change.cpp: ip and a DHCP client of the agent's, live only.
CmdResult UnmanagedChange(const NetInterface& n, short cmd);
CmdResult UnmanagedManual(const NetInterface& n, const InterfaceManualRequest& q);

// The DNS servers of a manual request, in order.
std::vector<std::string> RequestedDns(const InterfaceManualRequest& q);

}  // namespace nvagent

#endif
