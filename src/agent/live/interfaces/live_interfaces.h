// The network interfaces through rtnetlink (libnl-route-3): index, name,
// MAC, dynamic or static addressing, up or down, IPv4 address and mask.
#ifndef NV_AGENT_LIVE_INTERFACES_LIVE_INTERFACES_H
#define NV_AGENT_LIVE_INTERFACES_LIVE_INTERFACES_H

#include <string>
#include <vector>

#include "agent/commands/requests.h"

namespace nvagent {

// Every link of the agent's network namespace in index order, with its
// first IPv4 address; an address the kernel will let expire (a lease) counts
// as dynamic. False with err when rtnetlink cannot be asked.
bool ReadInterfaces(std::vector<NetInterface>& out, std::string& err);

}  // namespace nvagent

#endif
