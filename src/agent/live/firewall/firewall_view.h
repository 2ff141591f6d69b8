// The filter table's INPUT and OUTPUT chains as the agent sees them, for
// IPv4 (iptables) and IPv6 (ip6tables): the agent's own rules in chains of
// its own (NORVANE-INPUT, NORVANE-OUTPUT, entered by one jump each from
// INPUT and OUTPUT), the rules it keeps for a drop policy, and every other
// tool's rule in INPUT/OUTPUT with its owner. Only the agent's own rules
// carry the indexes the delete command takes.
#ifndef NV_AGENT_LIVE_FIREWALL_FIREWALL_VIEW_H
#define NV_AGENT_LIVE_FIREWALL_FIREWALL_VIEW_H

#include <string>
#include <vector>

#include "agent/commands/requests.h"
#include "agent/live/firewall/base_chains.h"

namespace nvagent {

// The agent's chain for INPUT (0) and OUTPUT (1), and the base chains.
extern const char* const kOwnChains[2];
extern const char* const kBaseChains[2];
// The comment that marks the rules a drop policy keeps (loopback and the
// replies to established connections).
extern const char* const kKeepMark;

// Another tool's rule in INPUT or OUTPUT.
struct OtherRule {
    std::string spec;    // as iptables -S prints it after "-A CHAIN "
    std::string owner;   // ufw, fail2ban, docker, firewalld, other
    bool first = false;  // met before the jump into the agent's chain
};

// One chain of one family.
struct FamilyChain {
    char policy = '0';               // '1' ACCEPT, '2' DROP, '0' unknown
    bool jump = false;               // the base chain enters the agent's chain
    bool own = false;                // the agent's chain exists
    std::vector<std::string> specs;  // the agent's rules, in order
    std::vector<std::string> keeps;  // the drop policy's kept rules
    std::vector<OtherRule> others;   // other tools' rules, in order
};

struct ChainView {
    FamilyChain v4, v6;
    bool has6 = false;               // ip6tables answered
    char policy = '0';               // both families' policy; '0' when they differ
    std::vector<std::string> specs;  // the agent's indexed rules (IPv4's)
    std::vector<std::string> lines;  // display lines
    OtherFilters filters;            // what else filters the traffic
};

// Which tool a rule of INPUT/OUTPUT belongs to, told from its target.
std::string RuleOwner(const std::string& spec);

// The verdicts of FwAction, as iptables names them.
extern const char* const kRuleTargets[4];

// The rule as iptables takes it ("-p tcp -s ... --dport 22 -j ACCEPT").
std::string RuleSpec(const FwRule& rule);

// A rule of the form's shape (protocol, addresses, ports, verdict); false
// for anything else.
bool AsOwnRule(const std::string& spec, FwRule& r);

// The same rule in two specs (as the form gives them, or as iptables -S
// prints them); specs of another shape only when equal as text.
bool SameOwnRule(const std::string& a, const std::string& b);

// Parses one family's "iptables -S" output into the two chains.
void ParseFamily(const std::string& text, FamilyChain& input, FamilyChain& output);

// Joins the families into the view and its display lines.
void MakeView(ChainView& c);

// Parses IPv4's (and, when text6 is given, IPv6's) output into both views.
void ParseIptablesRules(const std::string& text, ChainView& input, ChainView& output,
                        const std::string* text6 = nullptr);

}  // namespace nvagent

#endif
