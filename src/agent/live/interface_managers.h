// The interface changes of each supported network manager, called by
// live_interfaces_change.cpp once the request is checked against the
// interface (which exists, and is not the loopback where that matters).
#ifndef NV_AGENT_LIVE_INTERFACE_MANAGERS_H
#define NV_AGENT_LIVE_INTERFACE_MANAGERS_H

#include "agent/commands/requests.h"

namespace nvagent {

// live_ifupdown_change.cpp: /etc/network/interfaces, ifdown/ifup.
CmdResult IfupdownChange(const NetInterface& n, short cmd);
CmdResult IfupdownManual(const NetInterface& n, const InterfaceManualRequest& q);

// live_networkd_change.cpp: the agent's own .network file, networkctl.
CmdResult NetworkdChange(const NetInterface& n, short cmd);
CmdResult NetworkdManual(const NetInterface& n, const InterfaceManualRequest& q);

// The DNS servers of a manual request, in order.
std::vector<std::string> RequestedDns(const InterfaceManualRequest& q);

}  // namespace nvagent

#endif
