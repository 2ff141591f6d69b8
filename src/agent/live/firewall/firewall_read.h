// Reading the firewall: "iptables -S" and "ip6tables -S" of the filter
// table, reused while the kernel's nf_tables generation stays the same;
// when the agent's own chains are found gone (a firewall service reloaded
// its rules), they are put back from the data directory.
#ifndef NV_AGENT_LIVE_FIREWALL_FIREWALL_READ_H
#define NV_AGENT_LIVE_FIREWALL_FIREWALL_READ_H

#include <mutex>
#include <string>

#include "agent/live/firewall/firewall_view.h"

namespace nvagent {

// Reads both chains of both families; false with err when iptables is
// missing or fails. fresh skips the cache.
bool ReadFirewall(ChainView& input, ChainView& output, std::string& err, bool fresh = false);

// Held by every change of the agent's chains and by their repair, so that
// a check's repair and a command never both add a jump.
std::recursive_mutex& FirewallChangeLock();

// The data directory whose saved chains are put back when found missing;
// empty: none (the default).
void SetFirewallRepair(const std::string& dataDir);

}  // namespace nvagent

#endif
