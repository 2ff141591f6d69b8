// Reading the firewall: one "iptables -w N -t filter -S" run, parsed into
// the chains' policies and rules, and reused while the kernel's nf_tables
// generation stays the same. A rule made of protocol, addresses, ports
// and a verdict is shown in the agent's own column layout; any other rule
// is shown as iptables prints it.
#include "agent/live/live_firewall.h"

#include <arpa/inet.h>
#include <linux/netfilter/nf_tables.h>
#include <linux/netfilter/nfnetlink.h>
#include <linux/netlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <sstream>

#include "agent/commands/requests.h"
#include "agent/display_lines.h"
#include "agent/live/live_files.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

std::string HostOnly(const std::string& a) {
    size_t n = a.size();
    return n > 3 && a.compare(n - 3, 3, "/32") == 0 ? a.substr(0, n - 3) : a;
}

// A rule of our own shape as a FwRule; false for anything else.
bool AsOwnRule(const std::string& ruleText, FwRule& r) {
    std::vector<std::string> w = SplitWords(ruleText);
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
    return verdict && w.size() % 2 == 0 && ruleText.find("-p ") != std::string::npos;
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
        std::vector<std::string> w = SplitWords(line);
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

namespace {

// The nf_tables ruleset generation: every change of any rule or policy
// through nf_tables (which Debian's iptables uses) makes a new one. False
// when the kernel does not answer (no nf_tables).
bool NftGeneration(uint32_t& gen) {
    int fd = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_NETFILTER);
    if (fd < 0)
        return false;
    struct {
        nlmsghdr nlh;
        nfgenmsg nfg;
    } req{};
    req.nlh.nlmsg_len = sizeof req;
    req.nlh.nlmsg_type = (NFNL_SUBSYS_NFTABLES << 8) | NFT_MSG_GETGEN;
    req.nlh.nlmsg_flags = NLM_F_REQUEST;
    req.nfg.nfgen_family = AF_UNSPEC;
    req.nfg.version = NFNETLINK_V0;
    sockaddr_nl nl{};
    nl.nl_family = AF_NETLINK;
    timeval tv{1, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);
    bool ok = false;
    char buf[4096];
    if (sendto(fd, &req, sizeof req, 0, reinterpret_cast<sockaddr*>(&nl), sizeof nl) >= 0) {
        ssize_t n = recv(fd, buf, sizeof buf, 0);
        size_t left = n > 0 ? static_cast<size_t>(n) : 0;
        for (nlmsghdr* h = reinterpret_cast<nlmsghdr*>(buf); NLMSG_OK(h, left);
             h = NLMSG_NEXT(h, left)) {
            if (h->nlmsg_type != ((NFNL_SUBSYS_NFTABLES << 8) | NFT_MSG_NEWGEN))
                continue;
            size_t at = NLMSG_HDRLEN + NLMSG_ALIGN(sizeof(nfgenmsg));
            while (at + sizeof(nlattr) <= h->nlmsg_len) {
                nlattr* a = reinterpret_cast<nlattr*>(reinterpret_cast<char*>(h) + at);
                if (a->nla_len < sizeof(nlattr) || at + a->nla_len > h->nlmsg_len)
                    break;
                if ((a->nla_type & NLA_TYPE_MASK) == NFTA_GEN_ID && a->nla_len >= NLA_HDRLEN + 4) {
                    uint32_t be = 0;
                    memcpy(&be, reinterpret_cast<char*>(a) + NLA_HDRLEN, 4);
                    gen = ntohl(be);
                    ok = true;
                }
                at += NLA_ALIGN(a->nla_len);
            }
        }
    }
    close(fd);
    return ok;
}

// The last reading and the generation it belongs to: while the generation
// stays the same, the rules are the same, and a check need not run iptables.
struct FirewallCache {
    std::mutex mu;
    bool valid = false;
    uint32_t gen = 0;
    ChainView input, output;
};

FirewallCache& Cache() {
    static FirewallCache c;
    return c;
}

// Whether the machine's iptables is the nf_tables flavour, whose changes
// the generation follows (the legacy flavour's do not).
bool NftFlavour() {
    static const bool nft = [] {
        ToolRun run = RunTool({"iptables", "-V"}, "", 10000);
        return run.Ok() && run.sOut.find("nf_tables") != std::string::npos;
    }();
    return nft;
}

}  // namespace

bool ReadFirewall(ChainView& input, ChainView& output, std::string& err) {
    uint32_t gen = 0;
    bool known = NftFlavour() && NftGeneration(gen);
    FirewallCache& c = Cache();
    if (known) {
        std::lock_guard<std::mutex> lock(c.mu);
        if (c.valid && c.gen == gen) {
            input = c.input;
            output = c.output;
            return true;
        }
    }
    ToolRun run = RunTool({"iptables", "-w", "5", "-t", "filter", "-S"}, "", 10000);
    if (!run.Ok()) {
        input = ChainView();
        output = ChainView();
        err = run.Why("iptables");
        return false;
    }
    ParseIptablesRules(run.sOut, input, output);
    uint32_t after = 0;
    std::lock_guard<std::mutex> lock(c.mu);
    // Kept only when nothing changed while iptables was reading.
    c.valid = known && NftGeneration(after) && after == gen;
    c.gen = gen;
    c.input = input;
    c.output = output;
    return true;
}

}  // namespace nvagent
