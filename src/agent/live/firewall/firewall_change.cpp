// The firewall commands on the agent's own chains. A change is one batch
// per family (IPv6 for rules without addresses and for policies), the
// IPv4 one undone when the IPv6 one fails; then the agent's chains are
// saved in the data directory, and the change is undone when saving fails.
// The deferred form makes the change live at once and leaves the saving to
// its commit; its undo runs the inverse batches (only this change's rules
// and policy, found by their specs where an index could have moved).
// Nothing outside the agent's chains is touched but the base chains'
// policies and the one jump into each of the agent's chains.
#include <nlohmann/json.hpp>

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

// Runs each family's apply batch, the IPv4 one undone when the IPv6 one
// fails.
CmdResult ApplyLive(const Change& ch) {
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
    return Done();
}

// Runs one family's undo batch; when the batch as a whole is refused (a
// rule already gone), line by line, so that what can be put back is.
bool UndoFamily(int family, const std::string& batch, std::string& err) {
    if (batch.empty() || RunRestore(family, batch, err))
        return true;
    std::string first = err;
    bool all = true;
    size_t at = 0;
    while (at < batch.size()) {
        size_t end = batch.find('\n', at);
        std::string line =
            batch.substr(at, end == std::string::npos ? std::string::npos : end - at);
        at = end == std::string::npos ? batch.size() : end + 1;
        std::string why;
        if (!line.empty() && !RunRestore(family, line + "\n", why))
            all = false;
    }
    err = first;
    return all;
}

CmdResult UndoLive(const FamilyBatch fam[2]) {
    std::string err, why;
    bool ok6 = UndoFamily(6, fam[1].undo, why);
    bool ok4 = UndoFamily(4, fam[0].undo, err);
    if (ok4 && ok6)
        return Done();
    return Failed("The firewall refused part of the undo: " + (ok4 ? why : err) + ".");
}

// policyChain, when 0 or 1, is the chain whose policy the change sets
// (drop or not), which the saved file records. The change is undone when
// the chains cannot be saved.
CmdResult Save(const Change& ch, const std::string& dataDir, int policyChain, bool drop) {
    std::string err;
    ChainView views[2];
    OwnChains saved;
    LoadOwnChains(dataDir, saved);
    if (policyChain >= 0)
        saved.drop[0][policyChain] = saved.drop[1][policyChain] = drop;
    bool read = ReadFirewall(views[0], views[1], err, true);
    if (!read || !SaveOwnChains(dataDir, OwnChainsOf(views, saved), err)) {
        UndoLive(ch.fam);
        return Failed("Could not save the agent's rules to " + OwnChainsFile(dataDir) + ": " + err +
                      "; the change was undone.");
    }
    return Done();
}

// A change as planned against the firewall as read: either an answer
// given without changing anything, or the batches to run.
struct Plan {
    bool bChange = false;
    CmdResult answer;  // when bChange is false
    Change ch;
    int policyChain = -1;
    bool drop = false;
    // What the answer's detail notes about other filters.
    ChainView view;
    int hook = 0;
    bool accepting = false;
};

Plan Answer(CmdResult r) {
    Plan p;
    p.answer = std::move(r);
    return p;
}

// Plans under the firewall lock and carries the change out: saved at once
// (pending null), or live only with the save and the undo handed over in
// pending.
template <class Planner>
CmdResult Run(Planner plan, const std::string& dataDir, PendingChange* pending) {
    std::lock_guard<std::recursive_mutex> lock(FirewallChangeLock());
    ChainView views[2];
    CmdResult r;
    if (!Current(views, r))
        return r;
    Plan p = plan(views);
    if (!p.bChange)
        return p.answer;
    if (pending == nullptr) {
        r = ApplyLive(p.ch);
        if (r.iCode == em_ActSuccAll)
            r = Save(p.ch, dataDir, p.policyChain, p.drop);
        return Noted(r, p.view, p.hook, p.accepting);
    }
    r = ApplyLive(p.ch);
    if (r.iCode != em_ActSuccAll)
        return Noted(r, p.view, p.hook, p.accepting);
    Change ch = p.ch;
    int policyChain = p.policyChain;
    bool drop = p.drop;
    pending->commit = [ch, dataDir, policyChain, drop] {
        std::lock_guard<std::recursive_mutex> again(FirewallChangeLock());
        return Save(ch, dataDir, policyChain, drop);
    };
    pending->undo = [ch] {
        std::lock_guard<std::recursive_mutex> again(FirewallChangeLock());
        return UndoLive(ch.fam);
    };
    nlohmann::json j = {{"domain", "firewall"},
                        {"undo4", ch.fam[0].undo},
                        {"undo6", ch.fam[1].undo},
                        {"dataDir", dataDir}};
    pending->sRecovery = j.dump();
    return Noted(Done(), p.view, p.hook, p.accepting);
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

namespace {

Plan PlanPolicy(const PolicyRequest& q, const ChainView views[2]) {
    const ChainView& v = views[q.chain];
    std::string manager = ActiveManager(views);
    if (!manager.empty())
        return Answer(Noted(ManagerPolicy(manager, q), v, q.chain, false));
    char want = static_cast<char>('0' + q.policy);
    if (v.v4.policy == want && (!v.has6 || v.v6.policy == want)) {
        return Answer(Noted(
            Unchanged(std::string("The ") + kChainWords[q.chain] + " chain policy is already " +
                      (q.policy == kActAccept ? "accept." : "drop.")),
            v, q.chain, q.policy == kActAccept));
    }
    Plan p;
    p.bChange = true;
    const FamilyChain* fams[2] = {&v.v4, &v.v6};
    for (int f = 0; f < (v.has6 ? 2 : 1); ++f) {
        const FamilyChain& fc = *fams[f];
        FamilyBatch& b = p.ch.fam[f];
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
                b.undo += "-D " + Own(q.chain) + " " + keeps[i] + "\n";
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
    p.policyChain = q.chain;
    p.drop = want == '2';
    p.view = v;
    p.hook = q.chain;
    p.accepting = want == '1';
    return p;
}

Plan PlanAdd(const RuleAddRequest& q, const ChainView views[2]) {
    const ChainView& v = views[q.chain];
    std::string manager = ActiveManager(views);
    if (!manager.empty())
        return Answer(Noted(ManagerAddRule(manager, q), v, q.chain, false));
    std::string spec = RuleSpec(q.rule);
    Plan p;
    p.bChange = true;
    const FamilyChain* fams[2] = {&v.v4, &v.v6};
    // A rule with an IPv4 address is IPv4's only.
    int families = v.has6 && AddressLess(spec) ? 2 : 1;
    for (int f = 0; f < families; ++f) {
        const FamilyChain& fc = *fams[f];
        FamilyBatch& b = p.ch.fam[f];
        size_t at = fc.keeps.size() + (q.top ? 1 : fc.specs.size() + 1);
        b.apply = Ensure(fc, q.chain);
        b.apply += q.top ? "-I " + Own(q.chain) + " " + std::to_string(at) + " " + spec + "\n"
                         : "-A " + Own(q.chain) + " " + spec + "\n";
        // By its spec: another change may have moved it since.
        b.undo = "-D " + Own(q.chain) + " " + spec + "\n";
    }
    p.view = v;
    p.hook = q.chain;
    p.accepting = q.rule.action == kActAccept;
    return p;
}

Plan PlanDelete(FwChain chain, unsigned long long index, const ChainView views[2]) {
    const ChainView& v = views[chain];
    size_t own = v.v4.specs.size();
    // The agent's own rules from before stay the agent's to delete.
    std::string manager = ActiveManager(views);
    if (!manager.empty() && own == 0)
        return Answer(Noted(ManagerDelete(manager), v, chain, false));
    // The entries after the agent's are other tools' rules, shown but never
    // the agent's to delete.
    std::vector<const OtherRule*> others;
    for (const OtherRule& o : v.v4.others)
        others.push_back(&o);
    if (index > own && index <= own + others.size()) {
        const OtherRule& o = *others[index - own - 1];
        std::string ours = own == 0 ? "the agent has no rules in this chain"
                                    : "the agent's rules are numbered 1 to " + std::to_string(own);
        return Answer({em_ActPostValueNotValid,
                       "Entry " + std::to_string(index) + " is " + o.owner + "'s rule \"" + o.spec +
                           "\" in " + kBaseChains[chain] + ", not the agent's; " + ours + "."});
    }
    CmdResult r;
    if (!CheckDeleteIndex(index, own, r))
        return Answer(Noted(r, v, chain, false));
    const std::string& spec = v.v4.specs[index - 1];
    std::string at = std::to_string(v.v4.keeps.size() + index);
    Plan p;
    p.bChange = true;
    p.ch.fam[0].apply = "-D " + Own(chain) + " " + at + "\n";
    p.ch.fam[0].undo = "-I " + Own(chain) + " " + at + " " + spec + "\n";
    if (v.has6) {
        for (size_t j = 0; j < v.v6.specs.size(); ++j) {
            if (!SameOwnRule(v.v6.specs[j], spec))
                continue;
            std::string at6 = std::to_string(v.v6.keeps.size() + j + 1);
            p.ch.fam[1].apply = "-D " + Own(chain) + " " + at6 + "\n";
            p.ch.fam[1].undo = "-I " + Own(chain) + " " + at6 + " " + v.v6.specs[j] + "\n";
            break;
        }
    }
    p.view = v;
    p.hook = chain;
    return p;
}

Plan PlanClear(FwChain chain, const ChainView views[2]) {
    const ChainView& v = views[chain];
    std::string manager = ActiveManager(views);
    if (!manager.empty() && v.v4.specs.empty() && v.v6.specs.empty())
        return Answer(Noted(ManagerDelete(manager), v, chain, false));
    if (v.v4.specs.empty() && v.v6.specs.empty())
        return Answer(
            Noted(Unchanged(std::string("The ") + kChainWords[chain] + " chain is already empty."),
                  v, chain, false));
    Plan p;
    p.bChange = true;
    const FamilyChain* fams[2] = {&v.v4, &v.v6};
    for (int f = 0; f < 2; ++f) {
        const FamilyChain& fc = *fams[f];
        std::string first = std::to_string(fc.keeps.size() + 1);
        for (const std::string& s : fc.specs) {
            p.ch.fam[f].apply += "-D " + Own(chain) + " " + first + "\n";
            p.ch.fam[f].undo += "-A " + Own(chain) + " " + s + "\n";
        }
    }
    p.view = v;
    p.hook = chain;
    return p;
}

}  // namespace

CmdResult ChangePolicy(const PolicyRequest& q, const std::string& dataDir, PendingChange* pending) {
    return Run([&](const ChainView* v) { return PlanPolicy(q, v); }, dataDir, pending);
}

CmdResult AddRule(const RuleAddRequest& q, const std::string& dataDir, PendingChange* pending) {
    return Run([&](const ChainView* v) { return PlanAdd(q, v); }, dataDir, pending);
}

CmdResult DeleteRule(FwChain chain, unsigned long long index, const std::string& dataDir,
                     PendingChange* pending) {
    return Run([&](const ChainView* v) { return PlanDelete(chain, index, v); }, dataDir, pending);
}

CmdResult ClearRules(FwChain chain, const std::string& dataDir, PendingChange* pending) {
    return Run([&](const ChainView* v) { return PlanClear(chain, v); }, dataDir, pending);
}

bool UndoFirewallRecovery(const std::string& json, std::string& err) {
    nlohmann::json j = nlohmann::json::parse(json, nullptr, false);
    if (!j.is_object() || j.value("domain", "") != "firewall" || !j["undo4"].is_string() ||
        !j["undo6"].is_string()) {
        err = "not a firewall change";
        return false;
    }
    std::lock_guard<std::recursive_mutex> lock(FirewallChangeLock());
    FamilyBatch fam[2];
    fam[0].undo = j["undo4"].get<std::string>();
    fam[1].undo = j["undo6"].get<std::string>();
    CmdResult r = UndoLive(fam);
    if (r.iCode == em_ActSuccAll)
        return true;
    err = r.sDetail;
    return false;
}

}  // namespace nvagent
