// The agent's own chains kept in its data directory (firewall-own.rules)
// and put back at start or after a firewall service wiped them: only the
// agent's chains, its jumps and a drop policy it set, never a flush or a
// restore of the whole table; no other tool's file is ever written.
#ifndef NV_AGENT_LIVE_FIREWALL_OWN_CHAINS_STORE_H
#define NV_AGENT_LIVE_FIREWALL_OWN_CHAINS_STORE_H

#include <string>
#include <vector>

#include "agent/live/firewall/firewall_view.h"

namespace nvagent {

// Per family (0: IPv4, 1: IPv6) and chain (0: input, 1: output).
struct OwnChains {
    std::vector<std::string> rules[2][2];  // keeps first, then the rules
    bool drop[2][2] = {};                  // the agent set a drop policy
    // Whether there is anything to put back (family 4 or 6).
    bool Has(int family, int chain) const;
};

std::string OwnChainsFile(const std::string& dataDir);

// False when there is no file (or it cannot be read).
bool LoadOwnChains(const std::string& dataDir, OwnChains& saved);
// What the views hold now, with the drop policies of saved.
OwnChains OwnChainsOf(const ChainView views[2], const OwnChains& saved);
bool SaveOwnChains(const std::string& dataDir, const OwnChains& own, std::string& err);

// The batch that makes one family's chains as saved: the agent's chains
// declared (which empties them), their rules, the jumps the views lack and
// the drop policies.
std::string OwnChainsBatch(const OwnChains& own, int family, const ChainView views[2]);

// Puts the saved chains back on the machine as the views show it; true
// when there is nothing saved.
bool RestoreOwnChains(const std::string& dataDir, const ChainView views[2], std::string& err);

}  // namespace nvagent

#endif
