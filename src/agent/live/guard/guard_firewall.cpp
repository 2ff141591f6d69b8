// The session guard's firewall judge: the agent's chain modelled before and
// after the change, as firewall_change.cpp makes it, and a TCP segment of
// the session run through it.
#include "agent/live/guard/guard_firewall.h"

#include <sys/socket.h>

#include "agent/live/firewall/other_managers.h"
#include "agent/live/guard/guard_address.h"

namespace nvagent {

namespace {

// The rules a drop policy keeps, as firewall_change.cpp adds them: loopback,
// replies, TCP segments of connections older than connection tracking
// (never a SYN), and ICMPv6 for IPv6.
const char* const kKeepMatches[2][3] = {{"-i lo", "-m conntrack --ctstate RELATED,ESTABLISHED",
                                         "-p tcp ! --syn -m conntrack --ctstate NEW"},
                                        {"-o lo", "-m conntrack --ctstate RELATED,ESTABLISHED",
                                         "-p tcp ! --syn -m conntrack --ctstate NEW"}};
const char* const kKeepIcmp6 = "-p ipv6-icmp";

bool Has(const std::string& s, const char* part) {
    return s.find(part) != std::string::npos;
}

bool Loopback(const std::string& addr) {
    IpAddr a, net;
    int prefix = 0;
    return ParseIp(addr, a) &&
           ((ParseCidr("127.0.0.0/8", net, prefix) && InPrefix(a, net, prefix)) ||
            SameIp(addr, "::1"));
}

// A kept rule's verdict: accepted, no match (kNotAccepted), or unknown.
Verdict KeepMatches(const std::string& spec, const Segment& seg) {
    if (Has(spec, "-i lo") || Has(spec, "-o lo"))
        return Loopback(seg.src) && Loopback(seg.dst) ? Verdict::kAccepted : Verdict::kNotAccepted;
    if (Has(spec, "RELATED,ESTABLISHED"))
        return seg.established ? Verdict::kAccepted : Verdict::kNotAccepted;
    // iptables -S prints "! --syn" as the flags it stands for.
    if (Has(spec, "! --syn") || Has(spec, "! --tcp-flags FIN,SYN,RST,ACK SYN"))
        return !seg.syn && !seg.established ? Verdict::kAccepted : Verdict::kNotAccepted;
    if (Has(spec, "ipv6-icmp"))
        return Verdict::kNotAccepted;
    return Verdict::kUnknown;
}

bool AddressMatches(const std::string& rule, const std::string& addr) {
    if (rule.empty())
        return true;
    IpAddr net, a;
    int prefix = 0;
    return ParseCidr(rule, net, prefix) && ParseIp(addr, a) && InPrefix(a, net, prefix);
}

bool RuleMatches(const FwRule& r, const Segment& seg) {
    return r.proto == kProtoTcp && AddressMatches(r.src, seg.src) &&
           AddressMatches(r.dst, seg.dst) && (r.sport == 0 || r.sport == seg.sport) &&
           (r.dport == 0 || r.dport == seg.dport);
}

// The chain a request changes, or -1 for any other request.
int ChainOf(const Request& req) {
    if (const auto* p = std::get_if<PolicyRequest>(&req))
        return p->chain;
    if (const auto* a = std::get_if<RuleAddRequest>(&req))
        return a->chain;
    if (const auto* d = std::get_if<DeleteRequest>(&req))
        return d->cmd == 34 ? kChainInput : d->cmd == 38 ? kChainOutput : -1;
    if (const auto* c = std::get_if<PlainRequest>(&req))
        return c->cmd == 35 ? kChainInput : c->cmd == 39 ? kChainOutput : -1;
    return -1;
}

}  // namespace

Verdict ChainVerdict(const FamilyChain& fc, const Segment& seg) {
    // Without the jump the agent's chain is never entered.
    if (fc.jump) {
        for (const std::string& k : fc.keeps) {
            Verdict v = KeepMatches(k, seg);
            if (v != Verdict::kNotAccepted)
                return v;
        }
        for (const std::string& spec : fc.specs) {
            FwRule r;
            if (!AsOwnRule(spec, r))
                return Verdict::kUnknown;
            if (RuleMatches(r, seg))
                return r.action == kActAccept ? Verdict::kAccepted : Verdict::kNotAccepted;
        }
    }
    if (fc.policy == '1')
        return Verdict::kAccepted;
    if (fc.policy == '2')
        return Verdict::kNotAccepted;
    return Verdict::kUnknown;
}

bool ChainAfter(const ChainView& view, FwChain chain, const Request& req, bool v6,
                FamilyChain& out) {
    if (ChainOf(req) != chain)
        return false;
    const FamilyChain& fc = v6 ? view.v6 : view.v4;
    out = fc;
    if (const auto* p = std::get_if<PolicyRequest>(&req)) {
        out.policy = static_cast<char>('0' + p->policy);
        if (p->policy == kActDrop && fc.keeps.empty()) {
            for (const char* k : kKeepMatches[chain])
                out.keeps.push_back(k);
            if (v6)
                out.keeps.push_back(kKeepIcmp6);
            out.jump = out.own = true;
        } else if (p->policy != kActDrop) {
            out.keeps.clear();
        }
    } else if (const auto* a = std::get_if<RuleAddRequest>(&req)) {
        std::string spec = RuleSpec(a->rule);
        // A rule with an IPv4 address is IPv4's only.
        if (v6 && (!a->rule.src.empty() || !a->rule.dst.empty()))
            return true;
        out.specs.insert(a->top ? out.specs.begin() : out.specs.end(), spec);
        out.jump = out.own = true;
    } else if (const auto* d = std::get_if<DeleteRequest>(&req)) {
        // The index is IPv4's; IPv6 loses the first rule equal to it.
        if (d->index == 0 || d->index > view.v4.specs.size())
            return true;
        const std::string& gone = view.v4.specs[d->index - 1];
        for (size_t i = 0; i < out.specs.size(); ++i) {
            if (v6 ? SameOwnRule(out.specs[i], gone) : i == d->index - 1) {
                out.specs.erase(out.specs.begin() + static_cast<long>(i));
                break;
            }
        }
    } else {
        out.specs.clear();
    }
    return true;
}

Segment SessionSegment(const GuardSession& s, FwChain chain) {
    Segment seg;
    if (chain == kChainInput) {
        seg.src = s.sRemoteAddr;
        seg.sport = s.iRemotePort;
        seg.dst = s.sLocalAddr;
        seg.dport = s.iLocalPort;
        seg.syn = true;
    } else {
        seg.src = s.sLocalAddr;
        seg.sport = s.iLocalPort;
        seg.dst = s.sRemoteAddr;
        seg.dport = s.iRemotePort;
        seg.established = true;
    }
    return seg;
}

std::string FirewallCut(const ChainView views[2], const Request& req, const GuardSession& s) {
    int chain = ChainOf(req);
    if (!s.bFound || chain < 0)
        return "";
    bool v6 = s.iFamily == AF_INET6;
    const ChainView& view = views[chain];
    if (v6 && !view.has6)
        return "";
    // While ufw or firewalld manages the firewall, a policy or a new rule
    // is refused with the manager's command: nothing would change.
    if (!ActiveManager(views).empty() &&
        (std::holds_alternative<PolicyRequest>(req) || std::holds_alternative<RuleAddRequest>(req)))
        return "";
    FwChain c = static_cast<FwChain>(chain);
    Segment seg = SessionSegment(s, c);
    FamilyChain after;
    if (ChainVerdict(v6 ? view.v6 : view.v4, seg) != Verdict::kAccepted ||
        !ChainAfter(view, c, req, v6, after) || ChainVerdict(after, seg) != Verdict::kNotAccepted)
        return "";
    std::string port = std::to_string(s.iLocalPort);
    if (c == kChainInput)
        return "the input chain would no longer accept a new connection from " + s.sRemoteAddr +
               " to port " + port;
    return "the output chain would no longer pass the replies from port " + port + " to " +
           s.sRemoteAddr;
}

}  // namespace nvagent
