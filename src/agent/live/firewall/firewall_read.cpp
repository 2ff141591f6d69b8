// One "iptables -w N -t filter -S" and one "ip6tables" run per reading,
// with "nft list chains" for the other base chains, reused while the
// nf_tables generation stays the same (the legacy flavour's changes do not
// move it, so there every check reads again).
#include "agent/live/firewall/firewall_read.h"

#include <cstdio>
#include <mutex>

#include "agent/live/firewall/nft_generation.h"
#include "agent/live/firewall/own_chains_store.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

struct FirewallCache {
    std::mutex mu;
    bool valid = false;
    uint32_t gen = 0;
    ChainView input, output;
    std::string repairDir;
};

FirewallCache& Cache() {
    static FirewallCache c;
    return c;
}

// Whether the machine's iptables is the nf_tables flavour, whose changes
// the generation follows.
bool NftFlavour() {
    static const bool nft = [] {
        ToolRun run = RunTool({"iptables", "-V"}, "", 10000);
        return run.Ok() && run.sOut.find("nf_tables") != std::string::npos;
    }();
    return nft;
}

bool ReadTables(ChainView& input, ChainView& output, std::string& err) {
    ToolRun run = RunTool({"iptables", "-w", "5", "-t", "filter", "-S"}, "", 10000);
    if (!run.Ok()) {
        input = ChainView();
        output = ChainView();
        err = run.Why("iptables");
        return false;
    }
    ToolRun run6 = RunTool({"ip6tables", "-w", "5", "-t", "filter", "-S"}, "", 10000);
    ParseIptablesRules(run.sOut, input, output, run6.Ok() ? &run6.sOut : nullptr);
    input.filters = ReadOtherFilters();
    output.filters = input.filters;
    ChainView* views[2] = {&input, &output};
    for (int h = 0; h < 2; ++h) {
        std::vector<std::string> more = OtherFilterLines(input.filters, h);
        views[h]->lines.insert(views[h]->lines.end(), more.begin(), more.end());
    }
    return true;
}

// Whether a saved chain or its jump is missing from the machine.
bool NeedsRepair(const ChainView& input, const ChainView& output, const OwnChains& saved) {
    const ChainView* views[2] = {&input, &output};
    for (int c = 0; c < 2; ++c) {
        if (saved.Has(4, c) && (!views[c]->v4.own || !views[c]->v4.jump))
            return true;
        if (views[c]->has6 && saved.Has(6, c) && (!views[c]->v6.own || !views[c]->v6.jump))
            return true;
    }
    return false;
}

}  // namespace

std::recursive_mutex& FirewallChangeLock() {
    static std::recursive_mutex mu;
    return mu;
}

void SetFirewallRepair(const std::string& dataDir) {
    FirewallCache& c = Cache();
    std::lock_guard<std::mutex> lock(c.mu);
    c.repairDir = dataDir;
}

bool ReadFirewall(ChainView& input, ChainView& output, std::string& err, bool fresh) {
    uint32_t gen = 0;
    bool known = NftFlavour() && NftGeneration(gen);
    FirewallCache& c = Cache();
    std::string repairDir;
    {
        std::lock_guard<std::mutex> lock(c.mu);
        if (!fresh && known && c.valid && c.gen == gen) {
            input = c.input;
            output = c.output;
            return true;
        }
        repairDir = c.repairDir;
    }
    std::unique_lock<std::recursive_mutex> changing(FirewallChangeLock(), std::defer_lock);
    if (!repairDir.empty())
        changing.lock();
    if (!ReadTables(input, output, err))
        return false;
    OwnChains saved;
    if (!repairDir.empty() && LoadOwnChains(repairDir, saved) &&
        NeedsRepair(input, output, saved)) {
        std::string why;
        ChainView views[2] = {input, output};
        if (RestoreOwnChains(repairDir, views, why)) {
            fprintf(stderr, "norvaned: the agent's firewall chains were gone; put back\n");
        } else {
            fprintf(stderr, "norvaned: the agent's firewall chains were gone; %s\n", why.c_str());
        }
        known = NftFlavour() && NftGeneration(gen);
        if (!ReadTables(input, output, err))
            return false;
    }
    uint32_t after = 0;
    std::lock_guard<std::mutex> lock(c.mu);
    // Kept only when nothing changed while iptables was reading; never
    // beside legacy tables, whose changes the generation does not follow.
    c.valid = known && !input.filters.legacy && NftGeneration(after) && after == gen;
    c.gen = gen;
    c.input = input;
    c.output = output;
    return true;
}

}  // namespace nvagent
