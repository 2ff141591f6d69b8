// Parsing "iptables -S" and "ip6tables -S" into the agent's view of INPUT
// and OUTPUT, and the page's lines: the policy first, the rules a drop
// policy keeps, the agent's own rules with their indexes (a rule of the
// form's shape in the agent's column layout, any other as iptables prints
// it), then other tools' rules with their owner, without an index.
#include "agent/live/firewall/firewall_view.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <utility>

#include "agent/display_lines.h"
#include "agent/live/live_files.h"

namespace nvagent {

const char* const kOwnChains[2] = {"NORVANE-INPUT", "NORVANE-OUTPUT"};
const char* const kBaseChains[2] = {"INPUT", "OUTPUT"};
const char* const kKeepMark = "norvane-keep";
const char* const kRuleTargets[4] = {"", "ACCEPT", "DROP", "REJECT"};

namespace {

std::string HostOnly(const std::string& a) {
    size_t n = a.size();
    if (n > 3 && a.compare(n - 3, 3, "/32") == 0)
        return a.substr(0, n - 3);
    return a;
}

// The "-A CHAIN" rule's text after the chain's name.
std::string RuleText(const std::string& line, const std::string& chain) {
    size_t at = line.find(chain) + chain.size() + 1;
    return at < line.size() ? line.substr(at) : "";
}

const char* PolicyWord(char p) {
    return p == '1' ? "accept" : p == '2' ? "drop" : "unknown";
}

std::string ViewPolicyLine(const ChainView& c) {
    if (!c.has6 || c.v4.policy == c.v6.policy)
        return PolicyLine(c.v4.policy);
    return std::string("Policy: IPv4 ") + PolicyWord(c.v4.policy) + ", IPv6 " +
           PolicyWord(c.v6.policy);
}

// What each kept rule is for, told from its match.
const std::pair<const char*, const char*> kKeepNames[] = {
    {"-i lo ", "loopback"},
    {"-o lo ", "loopback"},
    {"--tcp-flags", "TCP of connections open before tracking started"},
    {"icmp", "ICMPv6 (neighbour discovery)"},
    {"ESTABLISHED", "replies to established connections"},
};

std::string KeepLine(const std::string& spec) {
    std::string what = spec;
    for (const auto& k : kKeepNames) {
        if (spec.find(k.first) != std::string::npos) {
            what = k.second;
            break;
        }
    }
    return "     agent: " + what + " ACCEPT (kept for the drop policy)";
}

void AddOtherLines(const std::vector<OtherRule>& others, const char* family,
                   std::vector<std::string>& lines) {
    for (const OtherRule& o : others)
        lines.push_back("     " + o.owner + family + ": " + o.spec);
}

}  // namespace

std::string RuleSpec(const FwRule& rule) {
    std::string s = rule.proto == kProtoUdp ? "-p udp" : "-p tcp";
    if (!rule.src.empty())
        s += " -s " + rule.src;
    if (rule.sport != 0)
        s += " --sport " + std::to_string(rule.sport);
    if (!rule.dst.empty())
        s += " -d " + rule.dst;
    if (rule.dport != 0)
        s += " --dport " + std::to_string(rule.dport);
    return s + " -j " + kRuleTargets[rule.action];
}

bool AsOwnRule(const std::string& spec, FwRule& r) {
    std::vector<std::string> w = SplitWords(spec);
    bool verdict = false;
    for (size_t i = 0; i + 1 < w.size(); i += 2) {
        const std::string& k = w[i];
        const std::string& v = w[i + 1];
        if (k == "-p" && (v == "tcp" || v == "udp")) {
            r.proto = v == "udp" ? kProtoUdp : kProtoTcp;
        } else if (k == "-m" && (v == "tcp" || v == "udp")) {
        } else if (k == "-s") {
            r.src = HostOnly(v);
        } else if (k == "-d") {
            r.dst = HostOnly(v);
        } else if (k == "--sport") {
            r.sport = atoi(v.c_str());
        } else if (k == "--dport") {
            r.dport = atoi(v.c_str());
        } else if (k == "--reject-with" &&
                   (v == "icmp-port-unreachable" || v == "icmp6-port-unreachable")) {
            // REJECT's default answer, which iptables prints out.
        } else if (k == "-j" && (v == "ACCEPT" || v == "DROP" || v == "REJECT")) {
            r.action = v == "DROP" ? kActDrop : v == "REJECT" ? kActReject : kActAccept;
            verdict = true;
        } else {
            return false;
        }
    }
    return verdict && w.size() % 2 == 0 && spec.find("-p ") != std::string::npos;
}

bool SameOwnRule(const std::string& a, const std::string& b) {
    FwRule x, y;
    if (!AsOwnRule(a, x) || !AsOwnRule(b, y))
        return a == b;
    return x.proto == y.proto && x.src == y.src && x.dst == y.dst && x.sport == y.sport &&
           x.dport == y.dport && x.action == y.action;
}

void ParseFamily(const std::string& text, FamilyChain& input, FamilyChain& output) {
    input = FamilyChain();
    output = FamilyChain();
    FamilyChain* chains[2] = {&input, &output};
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> w = SplitWords(line);
        if (w.size() < 2)
            continue;
        for (int i = 0; i < 2; ++i) {
            FamilyChain& c = *chains[i];
            if (w[0] == "-P" && w[1] == kBaseChains[i] && w.size() >= 3) {
                c.policy = w[2] == "ACCEPT" ? '1' : w[2] == "DROP" ? '2' : '0';
            } else if (w[0] == "-N" && w[1] == kOwnChains[i]) {
                c.own = true;
            } else if (w[0] == "-A" && w[1] == kBaseChains[i]) {
                std::string spec = RuleText(line, w[1]);
                if (spec == std::string("-j ") + kOwnChains[i])
                    c.jump = true;
                else
                    c.others.push_back({spec, RuleOwner(spec), !c.jump});
            } else if (w[0] == "-A" && w[1] == kOwnChains[i]) {
                std::string spec = RuleText(line, w[1]);
                if (spec.find(std::string("--comment ") + kKeepMark) != std::string::npos)
                    c.keeps.push_back(spec);
                else
                    c.specs.push_back(spec);
            }
        }
    }
}

void MakeView(ChainView& c) {
    c.policy = !c.has6 || c.v4.policy == c.v6.policy ? c.v4.policy : '0';
    c.specs = c.v4.specs;
    c.lines.clear();
    c.lines.push_back(ViewPolicyLine(c));
    for (const std::string& k : c.v4.keeps)
        c.lines.push_back(KeepLine(k));
    for (const std::string& k : c.v6.keeps) {
        if (c.v4.keeps.empty() || k.find("icmp") != std::string::npos)
            c.lines.push_back(KeepLine(k) + (c.v4.keeps.empty() ? "" : " (IPv6)"));
    }
    size_t width = std::max<size_t>(3, std::to_string(c.specs.size()).size());
    for (size_t i = 0; i < c.specs.size(); ++i) {
        FwRule r;
        std::string body;
        if (AsOwnRule(c.specs[i], r)) {
            // The one-rule list's index column is three wide, then two blanks.
            body = RuleLines({r})[0].substr(5);
        } else {
            body = c.specs[i];
        }
        std::string idx = std::to_string(i + 1);
        c.lines.push_back(std::string(width > idx.size() ? width - idx.size() : 0, ' ') + idx +
                          "  " + body);
    }
    AddOtherLines(c.v4.others, "", c.lines);
    if (c.has6)
        AddOtherLines(c.v6.others, " (IPv6)", c.lines);
}

void ParseIptablesRules(const std::string& text, ChainView& input, ChainView& output,
                        const std::string* text6) {
    input = ChainView();
    output = ChainView();
    ParseFamily(text, input.v4, output.v4);
    if (text6 != nullptr) {
        input.has6 = output.has6 = true;
        ParseFamily(*text6, input.v6, output.v6);
    }
    MakeView(input);
    MakeView(output);
}

}  // namespace nvagent
