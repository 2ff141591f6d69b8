// The file holds one line per saved item: the family (4 or 6), then
// "-P CHAIN DROP" or "-A NORVANE-CHAIN rule" as iptables -S prints them.
#include "agent/live/firewall/own_chains_store.h"

#include <sstream>

#include "agent/atomic_file.h"
#include "agent/live/firewall/firewall_restore.h"
#include "agent/live/live_files.h"

namespace nvagent {

bool OwnChains::Has(int family, int chain) const {
    int f = family == 6 ? 1 : 0;
    return !rules[f][chain].empty() || drop[f][chain];
}

std::string OwnChainsFile(const std::string& dataDir) {
    return dataDir + "/firewall-own.rules";
}

bool LoadOwnChains(const std::string& dataDir, OwnChains& saved) {
    saved = OwnChains();
    std::string text;
    if (!ReadTextFile(OwnChainsFile(dataDir), text))
        return false;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> w = SplitWords(line);
        if (w.size() < 4 || (w[0] != "4" && w[0] != "6"))
            continue;
        int f = w[0] == "6" ? 1 : 0;
        for (int c = 0; c < 2; ++c) {
            if (w[1] == "-P" && w[2] == kBaseChains[c] && w[3] == "DROP")
                saved.drop[f][c] = true;
            else if (w[1] == "-A" && w[2] == kOwnChains[c])
                saved.rules[f][c].push_back(line.substr(line.find(w[2]) + w[2].size() + 1));
        }
    }
    return true;
}

OwnChains OwnChainsOf(const ChainView views[2], const OwnChains& saved) {
    OwnChains own;
    for (int c = 0; c < 2; ++c) {
        const FamilyChain* fams[2] = {&views[c].v4, &views[c].v6};
        for (int f = 0; f < 2; ++f) {
            if (f == 1 && !views[c].has6) {
                own.rules[f][c] = saved.rules[f][c];
                own.drop[f][c] = saved.drop[f][c];
                continue;
            }
            own.rules[f][c] = fams[f]->keeps;
            own.rules[f][c].insert(own.rules[f][c].end(), fams[f]->specs.begin(),
                                   fams[f]->specs.end());
            own.drop[f][c] = fams[f]->policy == '2' && saved.drop[f][c];
        }
    }
    return own;
}

bool SaveOwnChains(const std::string& dataDir, const OwnChains& own, std::string& err) {
    std::string text = "# norvaned's own firewall chains, put back at start\n";
    for (int f = 0; f < 2; ++f) {
        const char* fam = f == 0 ? "4 " : "6 ";
        for (int c = 0; c < 2; ++c) {
            if (own.drop[f][c])
                text += std::string(fam) + "-P " + kBaseChains[c] + " DROP\n";
            for (const std::string& r : own.rules[f][c])
                text += std::string(fam) + "-A " + kOwnChains[c] + " " + r + "\n";
        }
    }
    return WriteFileAtomically(OwnChainsFile(dataDir), text, err);
}

std::string OwnChainsBatch(const OwnChains& own, int family, const ChainView views[2]) {
    int f = family == 6 ? 1 : 0;
    std::string b;
    for (int c = 0; c < 2; ++c)
        b += std::string(":") + kOwnChains[c] + " - [0:0]\n";
    for (int c = 0; c < 2; ++c) {
        const FamilyChain& fc = f == 0 ? views[c].v4 : views[c].v6;
        if (own.drop[f][c])
            b += std::string(":") + kBaseChains[c] + " DROP [0:0]\n";
        for (const std::string& r : own.rules[f][c])
            b += std::string("-A ") + kOwnChains[c] + " " + r + "\n";
        if (!fc.jump)
            b += JumpLine(c);
    }
    return b;
}

bool RestoreOwnChains(const std::string& dataDir, const ChainView views[2], std::string& err) {
    OwnChains saved;
    if (!LoadOwnChains(dataDir, saved))
        return true;
    if (!RunRestore(4, OwnChainsBatch(saved, 4, views), err))
        return false;
    if (views[0].has6 && !RunRestore(6, OwnChainsBatch(saved, 6, views), err))
        return false;
    return true;
}

}  // namespace nvagent
