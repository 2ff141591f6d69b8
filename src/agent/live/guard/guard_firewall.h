// The session guard's firewall judge: the agent's own chain, before and
// after a policy, rule or clear command, evaluated for a new TCP connection
// from the session's client to the session's port (input) and for its
// replies (output). Only the agent's chain and the base chain's policy
// count: other tools' rules are theirs to keep or change.
#ifndef NV_AGENT_LIVE_GUARD_GUARD_FIREWALL_H
#define NV_AGENT_LIVE_GUARD_GUARD_FIREWALL_H

#include <string>

#include "agent/commands/requests.h"
#include "agent/live/firewall/firewall_view.h"
#include "agent/live/guard/guard_session.h"

namespace nvagent {

enum class Verdict { kAccepted, kNotAccepted, kUnknown };

// One TCP segment as the agent's chain sees it.
struct Segment {
    std::string src, dst;
    int sport = 0, dport = 0;
    bool syn = false;          // a SYN (a new connection's first segment)
    bool established = false;  // conntrack's ESTABLISHED (a reply)
};

// What the chain does with seg: the first of its rules (the kept rules of
// a drop policy first) that matches, else the policy. Unknown when a rule
// the agent cannot read comes first or the policy is unknown.
Verdict ChainVerdict(const FamilyChain& fc, const Segment& seg);

// The family's chain of view as it will be after the request (a policy, rule,
// delete or clear of chain), made as the firewall change makes it; false
// when the request does not change this chain.
bool ChainAfter(const ChainView& view, FwChain chain, const Request& req, bool v6,
                FamilyChain& out);

// The segment of the session that chain decides: a SYN from the client to
// the session's port (input), or the reply to it (output).
Segment SessionSegment(const GuardSession& s, FwChain chain);

// Why the request cuts the session ("the input chain would drop ..."), or
// empty: a cut is a chain that accepts the session's segment now and would
// not afterwards. A policy or rule that another firewall manager's presence
// keeps from being made is none.
std::string FirewallCut(const ChainView views[2], const Request& req, const GuardSession& s);

}  // namespace nvagent

#endif
