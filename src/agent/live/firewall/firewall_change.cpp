// The firewall commands on the agent's own chains. A change is one batch
// per family (IPv6 for rules without addresses and for policies), the
// IPv4 one undone when the IPv6 one fails; then the agent's chains are
// saved in the data directory, and the change is undone when saving fails.
// Nothing outside the agent's chains is touched but the base chains'
// policies and the one jump into each of the agent's chains.
#include "agent/commands/state_checks.h"
#include "agent/live/firewall/firewall_read.h"
#include "agent/live/firewall/firewall_restore.h"
#include "agent/live/firewall/other_managers.h"
#include "agent/live/firewall/own_chains_store.h"
#include "agent/live/live_changes.h"

namespace nvagent {

namespace {

const char* const kChainWords[] = {"input", "output"};

// The rules a drop policy keeps, per chain: loopback, the replies to
// established connections, and TCP segments (never a SYN, so never a new
// connection) of a connection that was open before connection tracking
// started: on a server whose firewall had no stateful rule, tracking starts
// with these rules, and a session open then (the administrator's own) would
// otherwise freeze. IPv6 also needs ICMPv6 (neighbour discovery).
const char* const kKeeps[2][3] = {{"-i lo", "-m conntrack --ctstate RELATED,ESTABLISHED",
                                   "-p tcp ! --syn -m conntrack --ctstate NEW"},
                                  {"-o lo", "-m conntrack --ctstate RELATED,ESTABLISHED",
                                   "-p tcp ! --syn -m conntrack --ctstate NEW"}};
const char* const kKeep6 = "-p ipv6-icmp";

std::string KeepRule(const char* match) {
    return std::string(match) + " -m comment --comment " + kKeepMark + " -j ACCEPT";
}

// One family's change and the batch that puts things back.
struct FamilyBatch {
    std::string apply, undo;
};

struct Change {
    FamilyBatch fam[2];  // IPv4, IPv6
};

bool Current(ChainView views[2], CmdResult& r) {
    std::string err;
    if (ReadFirewall(views[0], views[1], err, true))
        return true;
    r = Failed("Cannot read the firewall: " + err + ".");
    return false;
}

// The agent's chain and its jump, when missing, made first.
std::string Ensure(const FamilyChain& fc, int chain) {
    std::string b;
    if (!fc.own)
        b += std::string(":") + kOwnChains[chain] + " - [0:0]\n";
    if (!fc.jump)
        b += JumpLine(chain);
    return b;
}

std::string Own(int chain) {
    return kOwnChains[chain];
}

// policyChain, when 0 or 1, is the chain whose policy the change sets
// (drop or not), which the saved file records.
CmdResult Commit(const Change& ch, const std::string& dataDir, int policyChain = -1,
                 bool drop = false) {
    std::string err;
    const char* familyNames[2] = {"IPv4", "IPv6"};
    for (int f = 0; f < 2; ++f) {
        if (ch.fam[f].apply.empty())
            continue;
        if (!RunRestore(f == 0 ? 4 : 6, ch.fam[f].apply, err)) {
            std::string ignored;
            if (f == 1 && !ch.fam[0].apply.empty())
                RunRestore(4, ch.fam[0].undo, ignored);
            return Failed(std::string("The firewall refused the change (") + familyNames[f] +
                          "): " + err + ".");
        }
    }
    ChainView views[2];
    OwnChains saved;
    LoadOwnChains(dataDir, saved);
    if (policyChain >= 0)
        saved.drop[0][policyChain] = saved.drop[1][policyChain] = drop;
    bool read = ReadFirewall(views[0], views[1], err, true);
    if (!read || !SaveOwnChains(dataDir, OwnChainsOf(views, saved), err)) {
        std::string ignored;
        for (int f = 1; f >= 0; --f) {
            if (!ch.fam[f].apply.empty())
                RunRestore(f == 0 ? 4 : 6, ch.fam[f].undo, ignored);
        }
        return Failed("Could not save the agent's rules to " + OwnChainsFile(dataDir) + ": " + err +
                      "; the change was undone.");
    }
    return Done();
}

// The answer with what else filters the hook's traffic said in its detail:
// an accept another base chain may drop, legacy tables beside nf_tables.
CmdResult Noted(CmdResult r, const ChainView& v, int hook, bool accepting) {
    std::string note;
    // A rule of the base chain that drops everything before the jump.
    for (const OtherRule& o : v.v4.others) {
        if (accepting && o.first && (o.spec == "-j DROP" || o.spec.rfind("-j REJECT", 0) == 0)) {
            note += std::string(" It does not take effect: ") + o.owner + "'s rule \"" + o.spec +
                    "\" in " + kBaseChains[hook] + " comes before the agent's chain.";
        }
    }
    note += OtherFiltersNote(v.filters, hook, accepting);
    if (!note.empty())
        r.sDetail = r.sDetail.empty() ? note.substr(1) : r.sDetail + note;
    return r;
}

bool AddressLess(const std::string& spec) {
    return spec.find("-s ") == std::string::npos && spec.find("-d ") == std::string::npos;
}

}  // namespace

bool RestoreFirewall(const std::string& dataDir, std::string& err) {
    std::lock_guard<std::recursive_mutex> lock(FirewallChangeLock());
    SetFirewallRepair("");
    ChainView views[2];
    if (!ReadFirewall(views[0], views[1], err, true)) {
        // No iptables: nothing to put back, and nothing to repair later.
        err.clear();
        return true;
    }
    if (!RestoreOwnChains(dataDir, views, err)) {
        err += " (restoring " + OwnChainsFile(dataDir) + ")";
        return false;
    }
    SetFirewallRepair(dataDir);
    return true;
}

CmdResult ChangePolicy(const PolicyRequest& q, const std::string& dataDir) {
    std::lock_guard<std::recursive_mutex> lock(FirewallChangeLock());
    ChainView views[2];
    CmdResult r;
    if (!Current(views, r))
        return r;
    const ChainView& v = views[q.chain];
    std::string manager = ActiveManager(views);
    if (!manager.empty())
        return Noted(ManagerPolicy(manager, q), v, q.chain, false);
    char want = static_cast<char>('0' + q.policy);
    if (v.v4.policy == want && (!v.has6 || v.v6.policy == want)) {
        return Noted(
            Unchanged(std::string("The ") + kChainWords[q.chain] + " chain policy is already " +
                      (q.policy == kActAccept ? "accept." : "drop.")),
            v, q.chain, q.policy == kActAccept);
    }
    Change ch;
    const FamilyChain* fams[2] = {&v.v4, &v.v6};
    for (int f = 0; f < (v.has6 ? 2 : 1); ++f) {
        const FamilyChain& fc = *fams[f];
        FamilyBatch& b = ch.fam[f];
        std::string old = fc.policy == '2' ? "DROP" : "ACCEPT";
        std::string base = kBaseChains[q.chain];
        if (want == '2' && fc.keeps.empty()) {
            std::vector<std::string> keeps;
            for (const char* k : kKeeps[q.chain])
                keeps.push_back(KeepRule(k));
            if (f == 1)
                keeps.push_back(KeepRule(kKeep6));
            b.apply += Ensure(fc, q.chain);
            for (size_t i = 0; i < keeps.size(); ++i) {
                b.apply +=
                    "-I " + Own(q.chain) + " " + std::to_string(i + 1) + " " + keeps[i] + "\n";
                b.undo += "-D " + Own(q.chain) + " 1\n";
            }
        } else if (want == '1') {
            for (size_t i = 0; i < fc.keeps.size(); ++i) {
                b.apply += "-D " + Own(q.chain) + " 1\n";
                b.undo +=
                    "-I " + Own(q.chain) + " " + std::to_string(i + 1) + " " + fc.keeps[i] + "\n";
            }
        }
        b.apply += ":" + base + " " + kRuleTargets[q.policy] + " [0:0]\n";
        b.undo += ":" + base + " " + old + " [0:0]\n";
    }
    // The policy the agent set is kept for the next start only when it is a
    // drop: an accept put back at boot would open what another tool closed.
    return Noted(Commit(ch, dataDir, q.chain, want == '2'), v, q.chain, want == '1');
}

CmdResult AddRule(const RuleAddRequest& q, const std::string& dataDir) {
    std::lock_guard<std::recursive_mutex> lock(FirewallChangeLock());
    ChainView views[2];
    CmdResult r;
    if (!Current(views, r))
        return r;
    const ChainView& v = views[q.chain];
    std::string manager = ActiveManager(views);
    if (!manager.empty())
        return Noted(ManagerAddRule(manager, q), v, q.chain, false);
    std::string spec = RuleSpec(q.rule);
    Change ch;
    const FamilyChain* fams[2] = {&v.v4, &v.v6};
    // A rule with an IPv4 address is IPv4's only.
    int families = v.has6 && AddressLess(spec) ? 2 : 1;
    for (int f = 0; f < families; ++f) {
        const FamilyChain& fc = *fams[f];
        FamilyBatch& b = ch.fam[f];
        size_t at = fc.keeps.size() + (q.top ? 1 : fc.specs.size() + 1);
        b.apply = Ensure(fc, q.chain);
        b.apply += q.top ? "-I " + Own(q.chain) + " " + std::to_string(at) + " " + spec + "\n"
                         : "-A " + Own(q.chain) + " " + spec + "\n";
        b.undo = "-D " + Own(q.chain) + " " + std::to_string(at) + "\n";
    }
    return Noted(Commit(ch, dataDir), v, q.chain, q.rule.action == kActAccept);
}

CmdResult DeleteRule(FwChain chain, unsigned long long index, const std::string& dataDir) {
    std::lock_guard<std::recursive_mutex> lock(FirewallChangeLock());
    ChainView views[2];
    CmdResult r;
    if (!Current(views, r))
        return r;
    const ChainView& v = views[chain];
    size_t own = v.v4.specs.size();
    // The agent's own rules from before stay the agent's to delete.
    std::string manager = ActiveManager(views);
    if (!manager.empty() && own == 0)
        return Noted(ManagerDelete(manager), v, chain, false);
    // The entries after the agent's are other tools' rules, shown but never
    // the agent's to delete.
    std::vector<const OtherRule*> others;
    for (const OtherRule& o : v.v4.others)
        others.push_back(&o);
    if (index > own && index <= own + others.size()) {
        const OtherRule& o = *others[index - own - 1];
        std::string ours = own == 0 ? "the agent has no rules in this chain"
                                    : "the agent's rules are numbered 1 to " + std::to_string(own);
        return {em_ActPostValueNotValid, "Entry " + std::to_string(index) + " is " + o.owner +
                                             "'s rule \"" + o.spec + "\" in " + kBaseChains[chain] +
                                             ", not the agent's; " + ours + "."};
    }
    if (!CheckDeleteIndex(index, own, r))
        return Noted(r, v, chain, false);
    const std::string& spec = v.v4.specs[index - 1];
    std::string at = std::to_string(v.v4.keeps.size() + index);
    Change ch;
    ch.fam[0].apply = "-D " + Own(chain) + " " + at + "\n";
    ch.fam[0].undo = "-I " + Own(chain) + " " + at + " " + spec + "\n";
    if (v.has6) {
        for (size_t j = 0; j < v.v6.specs.size(); ++j) {
            if (!SameOwnRule(v.v6.specs[j], spec))
                continue;
            std::string at6 = std::to_string(v.v6.keeps.size() + j + 1);
            ch.fam[1].apply = "-D " + Own(chain) + " " + at6 + "\n";
            ch.fam[1].undo = "-I " + Own(chain) + " " + at6 + " " + v.v6.specs[j] + "\n";
            break;
        }
    }
    return Noted(Commit(ch, dataDir), v, chain, false);
}

CmdResult ClearRules(FwChain chain, const std::string& dataDir) {
    std::lock_guard<std::recursive_mutex> lock(FirewallChangeLock());
    ChainView views[2];
    CmdResult r;
    if (!Current(views, r))
        return r;
    const ChainView& v = views[chain];
    std::string manager = ActiveManager(views);
    if (!manager.empty() && v.v4.specs.empty() && v.v6.specs.empty())
        return Noted(ManagerDelete(manager), v, chain, false);
    if (v.v4.specs.empty() && v.v6.specs.empty())
        return Noted(
            Unchanged(std::string("The ") + kChainWords[chain] + " chain is already empty."), v,
            chain, false);
    Change ch;
    const FamilyChain* fams[2] = {&v.v4, &v.v6};
    for (int f = 0; f < 2; ++f) {
        const FamilyChain& fc = *fams[f];
        std::string first = std::to_string(fc.keeps.size() + 1);
        for (const std::string& s : fc.specs) {
            ch.fam[f].apply += "-D " + Own(chain) + " " + first + "\n";
            ch.fam[f].undo += "-A " + Own(chain) + " " + s + "\n";
        }
    }
    return Noted(Commit(ch, dataDir), v, chain, false);
}

}  // namespace nvagent
