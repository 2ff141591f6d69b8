// The interface changes of each network manager, one file each, called by
// interfaces_change.cpp once the request is checked against the interface
// (which exists, and is not the loopback where that matters) and its owner
// is known (interface_owner.h).
#ifndef NV_AGENT_LIVE_INTERFACES_INTERFACE_MANAGERS_H
#define NV_AGENT_LIVE_INTERFACES_INTERFACE_MANAGERS_H

#include "agent/commands/requests.h"

namespace nvagent {

// ifupdown_change.cpp: the stanza where it is, ifdown/ifup.
CmdResult IfupdownChange(const NetInterface& n, short cmd);
CmdResult IfupdownManual(const NetInterface& n, const InterfaceManualRequest& q);

// networkd_change.cpp: the agent's own .network file, networkctl.
CmdResult NetworkdChange(const NetInterface& n, short cmd);
CmdResult NetworkdManual(const NetInterface& n, const InterfaceManualRequest& q);

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
