// The command given is the manager's own equivalent of the request, word
// for word what the administrator can run.
#include "agent/live/firewall/other_managers.h"

namespace nvagent {

namespace {

const char* const kUfwActions[] = {"", "allow", "deny", "reject"};
const char* const kFirewalldActions[] = {"", "accept", "drop", "reject"};

bool Has(const ChainView& v, const std::string& owner) {
    for (const OtherRule& o : v.v4.others) {
        if (o.owner == owner)
            return true;
    }
    for (const BaseChain& c : v.filters.chains) {
        if (c.owner == owner)
            return true;
    }
    return false;
}

std::string Lead(const std::string& manager) {
    return manager + " manages this server's firewall, so the agent leaves the change to it: ";
}

std::string Proto(const FwRule& r) {
    return r.proto == kProtoUdp ? "udp" : "tcp";
}

std::string UfwRule(const RuleAddRequest& q) {
    const FwRule& r = q.rule;
    std::string c = std::string("ufw ") + (q.top ? "insert 1 " : "") + kUfwActions[r.action] +
                    (q.chain == kChainOutput ? " out" : "") + " proto " + Proto(r) + " from " +
                    (r.src.empty() ? "any" : r.src);
    if (r.sport != 0)
        c += " port " + std::to_string(r.sport);
    c += " to " + (r.dst.empty() ? "any" : r.dst);
    if (r.dport != 0)
        c += " port " + std::to_string(r.dport);
    return c;
}

std::string FirewalldRule(const RuleAddRequest& q) {
    const FwRule& r = q.rule;
    if (q.chain == kChainInput && r.sport == 0 && r.dst.empty() && r.dport != 0) {
        std::string c = "firewall-cmd --permanent --add-rich-rule='rule family=\"ipv4\"";
        if (!r.src.empty())
            c += " source address=\"" + r.src + "\"";
        return c + " port port=\"" + std::to_string(r.dport) + "\" protocol=\"" + Proto(r) + "\" " +
               kFirewalldActions[r.action] + "'";
    }
    // Anything else as a direct rule.
    return std::string("firewall-cmd --permanent --direct --add-rule ipv4 filter ") +
           (q.chain == kChainOutput ? "OUTPUT" : "INPUT") + " " + (q.top ? "0 " : "1 ") +
           RuleSpec(r);
}

}  // namespace

std::string ActiveManager(const ChainView views[2]) {
    for (int c = 0; c < 2; ++c) {
        if (Has(views[c], "ufw"))
            return "ufw";
    }
    for (int c = 0; c < 2; ++c) {
        if (Has(views[c], "firewalld"))
            return "firewalld";
    }
    return "";
}

CmdResult ManagerAddRule(const std::string& manager, const RuleAddRequest& q) {
    if (manager == "ufw")
        return Failed(Lead(manager) + UfwRule(q) + ".");
    return Failed(Lead(manager) + FirewalldRule(q) + ", then firewall-cmd --reload.");
}

CmdResult ManagerPolicy(const std::string& manager, const PolicyRequest& q) {
    bool drop = q.policy == kActDrop;
    if (manager == "ufw") {
        return Failed(Lead(manager) + "ufw default " + (drop ? "deny" : "allow") + " " +
                      (q.chain == kChainOutput ? "outgoing" : "incoming") + ".");
    }
    if (q.chain == kChainOutput) {
        return Failed(Lead(manager) +
                      "firewalld filters outgoing traffic with policies or direct rules, such "
                      "as firewall-cmd --permanent --direct --add-rule ipv4 filter OUTPUT 99 -j " +
                      (drop ? "DROP" : "ACCEPT") + ", then firewall-cmd --reload.");
    }
    return Failed(Lead(manager) + "firewall-cmd --permanent --zone=public --set-target=" +
                  (drop ? "DROP" : "default") + ", then firewall-cmd --reload.");
}

CmdResult ManagerDelete(const std::string& manager) {
    if (manager == "ufw")
        return Failed(Lead(manager) + "ufw status numbered, then ufw delete NUMBER.");
    return Failed(Lead(manager) +
                  "firewall-cmd --list-all (or --direct --get-all-rules), then the matching "
                  "--remove option with --permanent, then firewall-cmd --reload.");
}

}  // namespace nvagent
