// The filter table's INPUT and OUTPUT chains as the machine's iptables sees
// them: policies and rules, other tools' rules included, in the order (and
// so with the indexes) the delete command takes.
#ifndef NV_AGENT_LIVE_LIVE_FIREWALL_H
#define NV_AGENT_LIVE_LIVE_FIREWALL_H

#include <string>
#include <vector>

namespace nvagent {

struct ChainView {
    char policy = '0';               // '1' ACCEPT, '2' DROP, '0' unknown
    std::vector<std::string> specs;  // each rule as iptables -S prints it after "-A CHAIN "
    std::vector<std::string> lines;  // display lines, 1-based index first
};

// Parses the output of "iptables -S" into the two chains.
void ParseIptablesRules(const std::string& text, ChainView& input, ChainView& output);

// Runs iptables once; false with err when it is missing or fails.
bool ReadFirewall(ChainView& input, ChainView& output, std::string& err);

}  // namespace nvagent

#endif
