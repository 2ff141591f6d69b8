// "nft list chains" is one run; the legacy tables are told from
// /proc/net/ip{,6}_tables_names (empty while none is loaded), so that the
// legacy tools run only where they matter.
#include "agent/live/firewall/base_chains.h"

#include <sstream>

#include "agent/live/live_files.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const char* const kHooks[] = {"input", "output"};
const char* const kIptablesChains[] = {"INPUT", "OUTPUT"};

std::string OwnerOf(const std::string& table) {
    if (table.find("firewalld") != std::string::npos)
        return "firewalld";
    std::vector<std::string> w = SplitWords(table);
    if (w.size() == 2 && (w[0] == "ip" || w[0] == "ip6") &&
        (w[1] == "filter" || w[1] == "mangle" || w[1] == "raw" || w[1] == "security" ||
         w[1] == "nat"))
        return "iptables";
    return "nftables";
}

// The legacy filter table's policies of one family, as base chains.
void ReadLegacy(const char* names, const char* tool, const char* family, OtherFilters& f) {
    std::string loaded;
    if (!ReadTextFile(names, loaded) || loaded.find("filter") == std::string::npos)
        return;
    f.legacy = true;
    ToolRun run = RunTool({tool, "-w", "5", "-t", "filter", "-S"}, "", 10000);
    if (!run.Ok())
        return;
    std::istringstream in(run.sOut);
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> w = SplitWords(line);
        for (int h = 0; h < 2; ++h) {
            if (w.size() >= 3 && w[0] == "-P" && w[1] == kIptablesChains[h]) {
                BaseChain c{"legacy iptables", std::string(family) + " filter",   w[1], h,
                            w[2] == "DROP",    w[2] == "DROP" ? "drop" : "accept"};
                f.chains.push_back(c);
            } else if (w.size() >= 2 && w[0] == "-A" && w[1] == kIptablesChains[h] &&
                       (line.find("-j DROP") != std::string::npos ||
                        line.find("-j REJECT") != std::string::npos)) {
                // A legacy rule that drops: it applies before or after ours
                // alike, so it is shown with its chain.
                BaseChain c{"legacy iptables",
                            std::string(family) + " filter",
                            w[1],
                            h,
                            true,
                            "rule " + line.substr(line.find(w[1]) + w[1].size() + 1)};
                f.chains.push_back(c);
            }
        }
    }
}

}  // namespace

std::vector<BaseChain> ParseNftChains(const std::string& text) {
    std::vector<BaseChain> out;
    std::istringstream in(text);
    std::string line, table, chain;
    while (std::getline(in, line)) {
        std::vector<std::string> w = SplitWords(line);
        if (w.size() >= 3 && w[0] == "table") {
            table = w[1] + " " + w[2];
        } else if (w.size() >= 2 && w[0] == "chain") {
            chain = w[1];
        } else if (w.size() >= 4 && w[0] == "type" && w[2] == "hook") {
            std::string hook = w[3];
            int h = hook == "input" ? 0 : hook == "output" ? 1 : -1;
            if (h < 0)
                continue;
            std::vector<std::string> t = SplitWords(table);
            if (t.size() == 2 && (t[0] == "ip" || t[0] == "ip6") && t[1] == "filter" &&
                chain == kIptablesChains[h])
                continue;
            size_t at = line.find("policy ");
            std::string policy = at == std::string::npos ? "accept" : line.substr(at + 7);
            if (!policy.empty() && policy.back() == ';')
                policy.pop_back();
            out.push_back({OwnerOf(table), table, chain, h, policy == "drop", policy});
        }
    }
    return out;
}

OtherFilters ReadOtherFilters() {
    OtherFilters f;
    ToolRun run = RunTool({"nft", "list", "chains"}, "", 10000);
    if (run.Ok()) {
        f.chains = ParseNftChains(run.sOut);
        // docker publishes a port with a DNAT in nat's DOCKER chain.
        if (run.sOut.find("table ip nat") != std::string::npos &&
            run.sOut.find("chain DOCKER {") != std::string::npos) {
            ToolRun nat = RunTool({"iptables", "-w", "5", "-t", "nat", "-S", "DOCKER"}, "", 10000);
            std::istringstream in(nat.sOut);
            std::string line;
            while (std::getline(in, line)) {
                if (line.find("-j DNAT") != std::string::npos)
                    f.published.push_back(line.substr(line.find("DOCKER") + 7));
            }
        }
    }
    ReadLegacy("/proc/net/ip_tables_names", "iptables-legacy", "ip", f);
    ReadLegacy("/proc/net/ip6_tables_names", "ip6tables-legacy", "ip6", f);
    return f;
}

std::vector<std::string> OtherFilterLines(const OtherFilters& f, int hook) {
    std::vector<std::string> lines;
    for (const BaseChain& c : f.chains) {
        if (c.hook == hook)
            lines.push_back(
                "     " + c.owner + ": table " + c.table + ", chain " + c.chain + " on the " +
                kHooks[hook] + " hook, " +
                (c.policy.compare(0, 5, "rule ") == 0 ? c.policy : "policy " + c.policy));
    }
    if (hook == 0) {
        for (const std::string& p : f.published)
            lines.push_back("     docker: published through nat, not filtered by INPUT: " + p);
    }
    return lines;
}

std::string OtherFiltersNote(const OtherFilters& f, int hook, bool accepting) {
    std::string note;
    if (accepting) {
        for (const BaseChain& c : f.chains) {
            if (c.hook != hook || !c.drop)
                continue;
            note += (note.empty() ? "" : "; ") + c.owner + "'s table " + c.table + ", chain " +
                    c.chain + " (" +
                    (c.policy.compare(0, 5, "rule ") == 0 ? c.policy : "policy " + c.policy) + ")";
        }
        if (!note.empty())
            note = " It may not take effect: every base chain on the " + std::string(kHooks[hook]) +
                   " hook must accept the traffic, and " + note +
                   " drops what it does not accept; accept it there too.";
    }
    if (f.legacy)
        note +=
            " Legacy iptables tables are loaded beside nf_tables; their rules apply as well "
            "(see iptables-legacy -S).";
    return note;
}

}  // namespace nvagent
