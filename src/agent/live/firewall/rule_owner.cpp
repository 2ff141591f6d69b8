// Which tool made a rule of INPUT or OUTPUT, told from the chain it jumps
// to (each tool names its chains its own way) or its comment.
#include <cstring>

#include "agent/live/firewall/firewall_view.h"

namespace nvagent {

namespace {

struct OwnerMark {
    const char* prefix;  // of the jump's target
    const char* owner;
};

const OwnerMark kMarks[] = {
    {"ufw6-", "ufw"},          {"ufw-", "ufw"},        {"f2b-", "fail2ban"},
    {"fail2ban-", "fail2ban"}, {"DOCKER", "docker"},   {"INPUT_", "firewalld"},
    {"OUTPUT_", "firewalld"},  {"IN_", "firewalld"},   {"OUT_", "firewalld"},
    {"FWDI_", "firewalld"},    {"FWDO_", "firewalld"}, {"KUBE-", "kubernetes"},
};

std::string Target(const std::string& spec) {
    size_t at = spec.find("-j ");
    if (at == std::string::npos)
        at = spec.find("-g ");
    if (at == std::string::npos)
        return "";
    size_t end = spec.find(' ', at + 3);
    return spec.substr(at + 3, end == std::string::npos ? std::string::npos : end - at - 3);
}

}  // namespace

std::string RuleOwner(const std::string& spec) {
    std::string target = Target(spec);
    for (const OwnerMark& m : kMarks) {
        if (target.compare(0, strlen(m.prefix), m.prefix) == 0)
            return m.owner;
    }
    // fail2ban's comment, and ufw's own comments on its user rules.
    if (spec.find("--comment f2b") != std::string::npos)
        return "fail2ban";
    if (spec.find("--comment \"'dapp_") != std::string::npos)
        return "ufw";
    return "other";
}

}  // namespace nvagent
