// Handlers of the two firewall chains: policy, add, delete and clear. Both
// chains share the code through a table row naming the chain's fields.
#include "agent/display_lines.h"
#include "agent/payload_parse.h"
#include "agent/sim_handlers.h"

namespace nvagent {

namespace {

struct Chain {
    std::vector<FwRule> SimState::*rules;
    tVecStr cSvrState::*lines;
    char cSvrState::*policy;
    const char* name;
};

const Chain kInput = {&SimState::inputRules, &cSvrState::vsIptablesInputList,
                      &cSvrState::chIptablesInputPolicy, "input"};
const Chain kOutput = {&SimState::outputRules, &cSvrState::vsIptablesOutputList,
                       &cSvrState::chIptablesOutputPolicy, "output"};

const char* const kActionNames[] = {"accept", "drop", "reject"};

// "1" .. "n" as 1 .. n, else 0.
int Choice(const std::string& tok, int n) {
    return (tok.size() == 1 && tok[0] >= '1' && tok[0] < '1' + n) ? tok[0] - '0' : 0;
}

CmdResult SetPolicy(CmdContext& c, const Chain& ch, const std::string& p) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 1, tok))
        return WrongTokenCount(1);
    if (IsEmptyField(tok[0]))
        return Invalid("No policy was chosen.");
    int v = Choice(tok[0], 3);
    if (v == 0)
        return Invalid("The policy must be 1 (accept), 2 (drop) or 3 (reject).");
    char& policy = c.st.svr.*ch.policy;
    if (policy == tok[0][0]) {
        return Unchanged(std::string("The ") + ch.name + " chain policy is already " +
                         kActionNames[v - 1] + ".");
    }
    policy = tok[0][0];
    return Done();
}

// An address field: empty means any.
bool RuleAddress(const std::string& tok, const char* what, std::string& out, CmdResult& r) {
    out = IsEmptyField(tok) ? std::string() : tok;
    if (out.empty() || IsIPv4OrNet(out))
        return true;
    r = Invalid(std::string(what) + " must be an IPv4 address or address/prefix.");
    return false;
}

// A port field: empty means any (0).
bool RulePort(const std::string& tok, const char* what, int& out, CmdResult& r) {
    unsigned long long v = 0;
    if (!IsEmptyField(tok) && ParseDigits(tok, 65535, v) != DigitsResult::kOk) {
        r = Invalid(std::string(what) + " must be a number from 0 to 65535.");
        return false;
    }
    out = static_cast<int>(v);
    return true;
}

CmdResult AddRule(CmdContext& c, const Chain& ch, const std::string& p) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 7, tok))
        return WrongTokenCount(7);
    FwRule rule;
    CmdResult r;
    int prio = Choice(tok[0], 2);
    rule.proto = Choice(tok[1], 2);
    rule.action = Choice(tok[6], 3);
    if (prio == 0)
        return Invalid("The priority must be 1 (highest) or 2 (lowest).");
    if (rule.proto == 0)
        return Invalid("The protocol must be 1 (tcp) or 2 (udp).");
    if (!RuleAddress(tok[2], "The source address", rule.src, r) ||
        !RulePort(tok[3], "The source port", rule.sport, r) ||
        !RuleAddress(tok[4], "The destination address", rule.dst, r) ||
        !RulePort(tok[5], "The destination port", rule.dport, r)) {
        return r;
    }
    if (rule.action == 0)
        return Invalid("The action must be 1 (accept), 2 (drop) or 3 (reject).");
    std::vector<FwRule>& rules = c.st.*ch.rules;
    rules.insert(prio == 1 ? rules.begin() : rules.end(), rule);
    c.st.svr.*ch.lines = RuleLines(rules);
    return Done();
}

CmdResult DeleteRule(CmdContext& c, const Chain& ch, const std::string& p) {
    std::vector<FwRule>& rules = c.st.*ch.rules;
    size_t i = 0;
    CmdResult r;
    if (!ParseDeleteIndex(p, rules.size(), i, r))
        return r;
    rules.erase(rules.begin() + static_cast<long>(i));
    c.st.svr.*ch.lines = RuleLines(rules);
    return Done();
}

CmdResult ClearRules(CmdContext& c, const Chain& ch, const std::string& p) {
    if (!p.empty())
        return Malformed("This command takes no payload.");
    std::vector<FwRule>& rules = c.st.*ch.rules;
    tVecStr& lines = c.st.svr.*ch.lines;
    if (rules.empty() && lines.empty()) {
        return Unchanged(std::string("The ") + ch.name + " chain is already empty.");
    }
    rules.clear();
    lines.clear();
    return Done();
}

}  // namespace

CmdResult SetInputPolicy(CmdContext& c, const std::string& p) {
    return SetPolicy(c, kInput, p);
}
CmdResult AddInputRule(CmdContext& c, const std::string& p) {
    return AddRule(c, kInput, p);
}
CmdResult DeleteInputRule(CmdContext& c, const std::string& p) {
    return DeleteRule(c, kInput, p);
}
CmdResult ClearInputRules(CmdContext& c, const std::string& p) {
    return ClearRules(c, kInput, p);
}
CmdResult SetOutputPolicy(CmdContext& c, const std::string& p) {
    return SetPolicy(c, kOutput, p);
}
CmdResult AddOutputRule(CmdContext& c, const std::string& p) {
    return AddRule(c, kOutput, p);
}
CmdResult DeleteOutputRule(CmdContext& c, const std::string& p) {
    return DeleteRule(c, kOutput, p);
}
CmdResult ClearOutputRules(CmdContext& c, const std::string& p) {
    return ClearRules(c, kOutput, p);
}

}  // namespace nvagent
