// Parsers of the firewall chain forms: the policy and a new rule.
#include "agent/commands/parse_common.h"
#include "agent/commands/payload_parse.h"

namespace nvagent {

namespace {

FwChain ChainOf(short cmd) {
    return cmd <= 35 ? kChainInput : kChainOutput;
}

// An address field: empty means any.
bool RuleAddress(const std::string& tok, const char* what, std::string& out, CmdResult& r) {
    out = IsEmptyField(tok) ? std::string() : tok;
    Ipv4Check c = out.empty() ? Ipv4Check::kOk : CheckIPv4OrNet(out);
    if (c == Ipv4Check::kOk)
        return true;
    if (c == Ipv4Check::kLeadingZero) {
        r = Invalid(std::string(what) + " " + tok + " has a leading zero; write it without.");
    } else {
        r = Invalid(std::string(what) + " must be an address or address/prefix, e.g. 10.0.0.0/8.");
    }
    return false;
}

// A port field: empty means any (0).
bool RulePort(const std::string& tok, const char* what, int& out, CmdResult& r) {
    unsigned long long v = 0;
    if (!IsEmptyField(tok) && ParseDigits(tok, 65535, v) != DigitsResult::kOk) {
        r = Invalid(std::string(what) + " must be a number from 0 to 65535, not \"" + tok + "\".");
        return false;
    }
    out = static_cast<int>(v);
    return true;
}

}  // namespace

bool ParsePolicy(short cmd, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 1, tok, r,
                    "The policy is one choice, 1 (accept) or 2 (drop), without blanks."))
        return false;
    if (IsEmptyField(tok[0])) {
        r = Invalid("No policy was chosen: choose accept (1) or drop (2).");
        return false;
    }
    int v = Choice(tok[0], 2);
    if (v == 0) {
        // A built-in chain's policy can only accept or drop; reject is an
        // action of rules.
        r = Invalid("The policy must be 1 (accept) or 2 (drop), not \"" + tok[0] + "\".");
        return false;
    }
    req = PolicyRequest{ChainOf(cmd), v};
    return true;
}

bool ParseRuleAdd(short cmd, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 7, tok, r, "A rule's addresses and ports cannot contain blanks."))
        return false;
    RuleAddRequest a{ChainOf(cmd), true, FwRule()};
    int prio = Choice(tok[0], 2);
    a.rule.proto = Choice(tok[1], 2);
    a.rule.action = Choice(tok[6], 3);
    if (prio == 0) {
        r = Invalid("The priority must be 1 (highest) or 2 (lowest).");
        return false;
    }
    if (a.rule.proto == 0) {
        r = Invalid("The protocol must be 1 (tcp) or 2 (udp).");
        return false;
    }
    if (!RuleAddress(tok[2], "The source address", a.rule.src, r) ||
        !RulePort(tok[3], "The source port", a.rule.sport, r) ||
        !RuleAddress(tok[4], "The destination address", a.rule.dst, r) ||
        !RulePort(tok[5], "The destination port", a.rule.dport, r)) {
        return false;
    }
    if (a.rule.action == 0) {
        r = Invalid("The action must be 1 (accept), 2 (drop) or 3 (reject).");
        return false;
    }
    a.top = prio == 1;
    req = a;
    return true;
}

}  // namespace nvagent
