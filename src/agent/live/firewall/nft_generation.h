// The kernel's nf_tables ruleset generation, asked over netlink: every
// change of any rule, chain or policy through nf_tables makes a new one.
#ifndef NV_AGENT_LIVE_FIREWALL_NFT_GENERATION_H
#define NV_AGENT_LIVE_FIREWALL_NFT_GENERATION_H

#include <cstdint>

namespace nvagent {

// False when the kernel does not answer (no nf_tables).
bool NftGeneration(uint32_t& gen);

}  // namespace nvagent

#endif
