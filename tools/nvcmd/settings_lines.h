// What the agent's display lines say, read back: the firewall chains' rule
// lines and the interface lines of a check answer. A chain list may hold
// lines that are not the agent's own rules (other tools' rules, a policy
// line); only lines in the agent's own rule layout count, and each keeps the
// index it shows, which is what the delete commands take.
#ifndef NV_TOOLS_NVCMD_SETTINGS_LINES_H
#define NV_TOOLS_NVCMD_SETTINGS_LINES_H

#include <string>
#include <vector>

#include "agent/commands/requests.h"

namespace nvsettings {

struct ShownRule {
    unsigned long index;  // as shown, 1-based
    nvagent::FwRule rule;
};

// One line of a chain list as an agent rule; false for any other line.
bool RuleFromLine(const std::string& line, ShownRule& out);
// The agent's rules of one chain list, in order.
std::vector<ShownRule> RulesFromLines(const std::vector<std::string>& lines);

// Whether the chain list's policy line (its first) shows a drop policy, in
// either family: the live agent shows "Policy: IPv4 accept, IPv6 drop" when
// the families differ, and its record's policy field then says neither.
bool ChainShowsDrop(const std::vector<std::string>& lines);

// A rule's addresses in one spelling: "" for any, "a.b.c.d" for a single
// host (also for "/32"), the network's own address before "/n".
nvagent::FwRule CanonicalRule(nvagent::FwRule r);

// One interface line; false when the line is not in the interface layout.
bool InterfaceFromLine(const std::string& line, nvagent::NetInterface& out);

}  // namespace nvsettings

#endif
