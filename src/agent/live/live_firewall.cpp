// Reading the firewall: one "iptables -w N -t filter -S" run, parsed into
// the chains' policies and rules. A rule made of protocol, addresses, ports
// and a verdict is shown in the agent's own column layout; any other rule
// is shown as iptables prints it.
#include "agent/live/live_firewall.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "agent/commands/requests.h"
#include "agent/display_lines.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

std::vector<std::string> Words(const std::string& s) {
    std::vector<std::string> w;
    std::istringstream in(s);
    std::string x;
    while (in >> x)
        w.push_back(x);
    return w;
}

std::string HostOnly(const std::string& a) {
    size_t n = a.size();
    return n > 3 && a.compare(n - 3, 3, "/32") == 0 ? a.substr(0, n - 3) : a;
}

// A rule of our own shape as a FwRule; false for anything else.
bool AsOwnRule(const std::string& spec, FwRule& r) {
    std::vector<std::string> w = Words(spec);
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
        } else if (k == "--reject-with" && v == "icmp-port-unreachable") {
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

void MakeLines(ChainView& c) {
    c.lines.clear();
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
}

}  // namespace

void ParseIptablesRules(const std::string& text, ChainView& input, ChainView& output) {
    input = ChainView();
    output = ChainView();
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> w = Words(line);
        if (w.size() < 3)
            continue;
        ChainView* c = w[1] == "INPUT" ? &input : w[1] == "OUTPUT" ? &output : nullptr;
        if (c == nullptr)
            continue;
        if (w[0] == "-P") {
            c->policy = w[2] == "ACCEPT" ? '1' : w[2] == "DROP" ? '2' : '0';
        } else if (w[0] == "-A") {
            size_t at = line.find(w[1]) + w[1].size() + 1;
            c->specs.push_back(line.substr(at));
        }
    }
    MakeLines(input);
    MakeLines(output);
}

bool ReadFirewall(ChainView& input, ChainView& output, std::string& err) {
    ToolRun run = RunTool({"iptables", "-w", "5", "-t", "filter", "-S"}, "", 10000);
    if (!run.Ok()) {
        input = ChainView();
        output = ChainView();
        err = run.Why("iptables");
        return false;
    }
    ParseIptablesRules(run.sOut, input, output);
    return true;
}

}  // namespace nvagent
