// What else filters the server's traffic besides the filter table's INPUT
// and OUTPUT that iptables shows: every other base chain on the input or
// output hook (native nftables tables, firewalld's, iptables' mangle and
// the like), the legacy iptables tables beside nf_tables, and the ports
// docker publishes through nat, which INPUT never sees.
#ifndef NV_AGENT_LIVE_FIREWALL_BASE_CHAINS_H
#define NV_AGENT_LIVE_FIREWALL_BASE_CHAINS_H

#include <string>
#include <vector>

namespace nvagent {

struct BaseChain {
    std::string owner;   // nftables, firewalld, iptables, legacy iptables
    std::string table;   // "inet filter"
    std::string chain;   // "input"
    int hook = 0;        // 0 input, 1 output
    bool drop = false;   // its policy is drop
    std::string policy;  // as the tool prints it
};

struct OtherFilters {
    std::vector<BaseChain> chains;
    bool legacy = false;                 // legacy tables are loaded beside nf_tables
    std::vector<std::string> published;  // docker's DNAT rules, as iptables prints them
};

// Parses "nft list chains": the base chains on the input and output hooks
// but the filter table's INPUT and OUTPUT of iptables (family ip and ip6).
std::vector<BaseChain> ParseNftChains(const std::string& text);

// Reads them all (nft, the legacy tools when their tables are loaded, the
// nat table's DOCKER chain when there is one).
OtherFilters ReadOtherFilters();

// The page's lines for one hook.
std::vector<std::string> OtherFilterLines(const OtherFilters& f, int hook);

// The detail that a change of the given hook gets: other base chains that
// drop by policy (an accept there may not take effect), and legacy tables;
// empty when there is nothing to say.
std::string OtherFiltersNote(const OtherFilters& f, int hook, bool accepting);

}  // namespace nvagent

#endif
