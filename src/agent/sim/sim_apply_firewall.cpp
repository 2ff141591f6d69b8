// The simulator's two firewall chains: policy, add, delete and clear. Both
// chains share the code through a table row naming the chain's fields. The
// page's lines start with the policy, as the live agent's do.
#include "agent/commands/state_checks.h"
#include "agent/display_lines.h"
#include "agent/sim/sim_apply.h"

namespace nvagent {

namespace {

struct Chain {
    std::vector<FwRule> SimState::*rules;
    tVecStr cSvrState::*lines;
    char cSvrState::*policy;
    const char* name;
};

const Chain kChains[] = {
    {&SimState::inputRules, &cSvrState::vsIptablesInputList, &cSvrState::chIptablesInputPolicy,
     "input"},
    {&SimState::outputRules, &cSvrState::vsIptablesOutputList, &cSvrState::chIptablesOutputPolicy,
     "output"},
};

const char* const kActionNames[] = {"accept", "drop", "reject"};

}  // namespace

CmdResult SimPolicy(SimContext& c, const PolicyRequest& q) {
    const Chain& ch = kChains[q.chain];
    char& policy = c.st.svr.*ch.policy;
    char want = static_cast<char>('0' + q.policy);
    if (policy == want) {
        return Unchanged(std::string("The ") + ch.name + " chain policy is already " +
                         kActionNames[q.policy - 1] + ".");
    }
    policy = want;
    c.st.svr.*ch.lines = ChainLines(policy, c.st.*ch.rules);
    return Done();
}

CmdResult SimRuleAdd(SimContext& c, const RuleAddRequest& q) {
    const Chain& ch = kChains[q.chain];
    std::vector<FwRule>& rules = c.st.*ch.rules;
    rules.insert(q.top ? rules.begin() : rules.end(), q.rule);
    c.st.svr.*ch.lines = ChainLines(c.st.svr.*ch.policy, rules);
    return Done();
}

CmdResult SimRuleDelete(SimContext& c, FwChain chain, unsigned long long index) {
    const Chain& ch = kChains[chain];
    std::vector<FwRule>& rules = c.st.*ch.rules;
    CmdResult r;
    if (!CheckDeleteIndex(index, rules.size(), r))
        return r;
    rules.erase(rules.begin() + static_cast<long>(index - 1));
    c.st.svr.*ch.lines = ChainLines(c.st.svr.*ch.policy, rules);
    return Done();
}

CmdResult SimRuleClear(SimContext& c, FwChain chain) {
    const Chain& ch = kChains[chain];
    std::vector<FwRule>& rules = c.st.*ch.rules;
    tVecStr& lines = c.st.svr.*ch.lines;
    // A state file may give the lines without the rules they come from.
    if (rules.empty() && (lines.empty() || lines == ChainLines(c.st.svr.*ch.policy, rules)))
        return Unchanged(std::string("The ") + ch.name + " chain is already empty.");
    rules.clear();
    lines = ChainLines(c.st.svr.*ch.policy, rules);
    return Done();
}

}  // namespace nvagent
