// Changing the filter table's INPUT and OUTPUT chains: every change is one
// iptables-restore --noflush batch on standard input (with -w and a number:
// a file name after -w would be taken as the wait time), so that a failure
// changes nothing. After each change the filter table is saved to the
// persistence file; when saving fails the change is undone.
#include <sys/stat.h>

#include "agent/atomic_file.h"
#include "agent/commands/state_checks.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_files.h"
#include "agent/live/live_firewall.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const char* const kChainNames[] = {"INPUT", "OUTPUT"};
const char* const kChainWords[] = {"input", "output"};
const char* const kTargets[] = {"", "ACCEPT", "DROP", "REJECT"};
// The persistence package's file, restored at boot by that package.
const char* const kDistributionRules = "/etc/iptables/rules.v4";
const char* const kDistributionPackageMark = "/usr/share/netfilter-persistent";

bool Exists(const char* path) {
    struct stat st {};
    return stat(path, &st) == 0;
}

// The batch as one transaction; false with err.
bool Restore(const std::string& lines, std::string& err) {
    ToolRun run = RunTool({"iptables-restore", "-w", "5", "--noflush"},
                          "*filter\n" + lines + "COMMIT\n", 20000);
    if (run.Ok())
        return true;
    err = run.Why("iptables-restore");
    return false;
}

bool Save(const std::string& rulesFile, std::string& err) {
    ToolRun run = RunTool({"iptables-save", "-t", "filter"}, "", 20000);
    if (!run.Ok()) {
        err = run.Why("iptables-save");
        return false;
    }
    return WriteFileAtomically(rulesFile, run.sOut, err);
}

// Applies batch, then saves; undo (a batch putting things back) runs when
// saving fails.
CmdResult Commit(const std::string& batch, const std::string& undo, const std::string& rulesFile) {
    std::string err;
    if (!Restore(batch, err))
        return Failed("The firewall refused the change: " + err + ".");
    if (!Save(rulesFile, err)) {
        std::string ignored;
        Restore(undo, ignored);
        return Failed("Could not save the rules to " + rulesFile + ": " + err +
                      "; the change was undone.");
    }
    return Done();
}

bool Current(ChainView& in, ChainView& out, CmdResult& r) {
    std::string err;
    if (ReadFirewall(in, out, err))
        return true;
    r = Failed("Cannot read the firewall: " + err + ".");
    return false;
}

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
    return s + " -j " + kTargets[rule.action];
}

}  // namespace

std::string FirewallRulesFile(const std::string& dataDir, bool* distribution) {
    bool dist = Exists(kDistributionPackageMark);
    if (distribution != nullptr)
        *distribution = dist;
    return dist ? std::string(kDistributionRules) : dataDir + "/firewall.rules";
}

bool RestoreFirewall(const std::string& dataDir, std::string& err) {
    bool dist = false;
    std::string file = FirewallRulesFile(dataDir, &dist);
    std::string text;
    if (dist || !ReadTextFile(file, text))
        return true;
    ToolRun run = RunTool({"iptables-restore", "-w", "5", "-T", "filter"}, text, 20000);
    if (run.Ok())
        return true;
    err = run.Why("iptables-restore") + " (restoring " + file + ")";
    return false;
}

CmdResult ChangePolicy(const PolicyRequest& q, const std::string& rulesFile) {
    ChainView views[2];
    CmdResult r;
    if (!Current(views[0], views[1], r))
        return r;
    const char* chain = kChainNames[q.chain];
    char want = static_cast<char>('0' + q.policy);
    if (views[q.chain].policy == want) {
        return Unchanged(std::string("The ") + kChainWords[q.chain] + " chain policy is already " +
                         (q.policy == kActAccept ? "accept." : "drop."));
    }
    std::string old = views[q.chain].policy == '2' ? "DROP" : "ACCEPT";
    return Commit(std::string(":") + chain + " " + kTargets[q.policy] + " [0:0]\n",
                  std::string(":") + chain + " " + old + " [0:0]\n", rulesFile);
}

CmdResult AddRule(const RuleAddRequest& q, const std::string& rulesFile) {
    ChainView views[2];
    CmdResult r;
    if (!Current(views[0], views[1], r))
        return r;
    const char* chain = kChainNames[q.chain];
    std::string ruleText = RuleSpec(q.rule);
    size_t count = views[q.chain].specs.size();
    std::string batch = q.top ? std::string("-I ") + chain + " 1 " + ruleText + "\n"
                              : std::string("-A ") + chain + " " + ruleText + "\n";
    std::string undo =
        std::string("-D ") + chain + " " + std::to_string(q.top ? 1 : count + 1) + "\n";
    return Commit(batch, undo, rulesFile);
}

CmdResult DeleteRule(FwChain chain, unsigned long long index, const std::string& rulesFile) {
    ChainView views[2];
    CmdResult r;
    if (!Current(views[0], views[1], r))
        return r;
    const ChainView& v = views[chain];
    if (!CheckDeleteIndex(index, v.specs.size(), r))
        return r;
    const char* name = kChainNames[chain];
    return Commit(
        std::string("-D ") + name + " " + std::to_string(index) + "\n",
        std::string("-I ") + name + " " + std::to_string(index) + " " + v.specs[index - 1] + "\n",
        rulesFile);
}

CmdResult ClearRules(FwChain chain, const std::string& rulesFile) {
    ChainView views[2];
    CmdResult r;
    if (!Current(views[0], views[1], r))
        return r;
    const ChainView& v = views[chain];
    const char* name = kChainNames[chain];
    if (v.specs.empty())
        return Unchanged(std::string("The ") + kChainWords[chain] + " chain is already empty.");
    std::string undo;
    for (const std::string& s : v.specs)
        undo += std::string("-A ") + name + " " + s + "\n";
    return Commit(std::string("-F ") + name + "\n", undo, rulesFile);
}

}  // namespace nvagent
