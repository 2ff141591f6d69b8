// The session guard's figures, printed, not judged: the time from a cut to
// its rollback (confirmed changes that cut an SSH session from the remote
// client, several runs: min/median/max), and the false rollbacks among many
// harmless changes sent from such a session, with the link's measured
// round-trip time, the delayer's loss and the session's retransmissions.
// Run inside the sandbox with its sshd (and --delay for a slow, lossy link):
//   bash tests/support/nv-sandbox.sh --sshd [--delay --bin-dir build/bin] --
//       build/bin/guard_figures [--cuts N] [--harmless N] [--interfaces no]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "agent_process.h"
#include "guard_bed.h"
#include "live_sandbox.h"
#include "remote_session.h"
#include "temp_dir.h"

using namespace nvtest;

namespace {

struct Cut {
    const char* what;
    const char* cmd;
    const char* payload;
};

const Cut kCuts[] = {
    {"input policy drop", "32", "2"},
    {"interface down (52)", "52", "nv0"},
};

void Summary(const char* what, std::vector<long> ms, int failed) {
    if (ms.empty()) {
        printf("%-28s no rollback seen in %d runs\n", what, failed);
        return;
    }
    std::sort(ms.begin(), ms.end());
    printf("%-28s runs %zu  min %ld ms  median %ld ms  max %ld ms", what, ms.size(), ms.front(),
           ms[ms.size() / 2], ms.back());
    if (failed > 0)
        printf("  (%d more not rolled back within 20 s)", failed);
    printf("\n");
}

// Changes undone by the agent, from its journal, each printed with why.
int UndoneInJournal(LiveAgent& agent) {
    int n = 0;
    for (const nlohmann::json& j : agent.Process().ReadJournal()) {
        std::string note = j.value("note", std::string());
        if (note.rfind("undone", 0) == 0) {
            ++n;
            printf("  undone: command %d: %s\n", j.value("cmd", -1), note.c_str());
        }
    }
    return n;
}

// The session's TCP figures as the client's kernel sees them.
std::string SessionTcp() {
    std::string all = Tool({"ip", "netns", "exec", "remote", "ss", "-tin", "dport", "=", ":22"});
    std::string out;
    for (const char* key : {" rtt:", " retrans:", " lost:", " segs_out:"}) {
        size_t at = all.find(key);
        if (at != std::string::npos)
            out += all.substr(at + 1, all.find(' ', at + 1) - at - 1) + " ";
    }
    return out;
}

std::string Nvcmd(const LiveAgent& agent, const std::string& cmd, const std::string& payload) {
    return NvcmdLine(agent.SocketPath(), cmd, payload);
}

}  // namespace

int main(int argc, char** argv) {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    int cuts = 5, harmless = 200;
    bool interfaces = true;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (strcmp(argv[i], "--cuts") == 0)
            cuts = atoi(argv[i + 1]);
        else if (strcmp(argv[i], "--harmless") == 0)
            harmless = atoi(argv[i + 1]);
        else if (strcmp(argv[i], "--interfaces") == 0)
            interfaces = strcmp(argv[i + 1], "no") != 0;
    }
    if (!InSandbox() || !HaveSandboxSshd()) {
        fprintf(stderr, "guard_figures: run inside tests/support/nv-sandbox.sh --sshd\n");
        return 77;
    }
    std::string err;
    if (!PrepareGuardBed(err)) {
        fprintf(stderr, "guard_figures: %s\n", err.c_str());
        return 1;
    }
    const char* delay = getenv("NV_SANDBOX_DELAY_MS");
    printf("link: %s\n", delay != nullptr ? (std::string(delay) + " ms each way, " +
                                             getenv("NV_SANDBOX_LOSS_PERCENT") + " % loss each way")
                                                .c_str()
                                          : "direct (no delayer)");

    // Cut to rollback.
    for (const Cut& c : kCuts) {
        if (!interfaces && c.cmd[0] == '5')
            continue;
        std::vector<long> ms;
        int failed = 0;
        for (int run = 0; run < cuts; ++run) {
            if (!PrepareGuardBed(err)) {
                fprintf(stderr, "guard_figures: %s\n", err.c_str());
                return 1;
            }
            LiveAgent agent;
            RemoteSession session;
            if (!agent.Start(&err) || !session.Start(&err)) {
                fprintf(stderr, "guard_figures: %s\n", err.c_str());
                return 1;
            }
            std::string out;
            int code = -1;
            session.Run(Nvcmd(agent, c.cmd, c.payload), out, code, 30000);  // refused
            ChangeWatcher watch(LiveConfiguration());
            watch.Start();
            session.Send(Nvcmd(agent, c.cmd, c.payload));  // confirmed
            if (watch.WaitChanged(30000) && watch.WaitRestored(20000))
                ms.push_back(MsBetween(watch.Changed(), watch.Restored()));
            else
                ++failed;
            session.Stop();
            agent.Process().Kill();
        }
        Summary(c.what, ms, failed);
    }

    // False rollbacks among harmless changes: rules for other ports added,
    // then deleted, one after the other from one session.
    if (!PrepareGuardBed(err)) {
        fprintf(stderr, "guard_figures: %s\n", err.c_str());
        return 1;
    }
    LiveAgent agent;
    RemoteSession session;
    if (!agent.Start(&err) || !session.Start(&err)) {
        fprintf(stderr, "guard_figures: %s\n", err.c_str());
        return 1;
    }
    std::vector<long> probes;
    for (int i = 0; i < 20; ++i) {
        auto t0 = std::chrono::steady_clock::now();
        if (session.Probe(10000))
            probes.push_back(MsBetween(t0, std::chrono::steady_clock::now()));
    }
    std::sort(probes.begin(), probes.end());
    std::string stats0 = ReadFile("/run/nv-sandbox/delayer.stats");
    int sent = 0, answeredDone = 0;
    auto t0 = std::chrono::steady_clock::now();
    for (int i = 0; i < harmless; ++i) {
        bool add = i < (harmless + 1) / 2;
        std::string payload = add ? "2 1 - - - " + std::to_string(10000 + i) + " 1" : "1";
        std::string out;
        int code = -1;
        if (session.Run(Nvcmd(agent, add ? "33" : "34", payload), out, code, 60000)) {
            ++sent;
            answeredDone += code == 0 ? 1 : 0;
        }
    }
    long sendMs = MsBetween(t0, std::chrono::steady_clock::now());
    // Past the last watch.
    std::this_thread::sleep_for(std::chrono::seconds(22));
    int falseRollbacks = UndoneInJournal(agent);
    std::string stats1 = ReadFile("/run/nv-sandbox/delayer.stats");
    printf("harmless changes: %d sent, %d answered done, in %ld ms; false rollbacks: %d\n", sent,
           answeredDone, sendMs, falseRollbacks);
    if (!probes.empty())
        printf("session round trip (a command through it): min %ld ms  median %ld ms  max %ld ms\n",
               probes.front(), probes[probes.size() / 2], probes.back());
    printf("session TCP (client side): %s\n", SessionTcp().c_str());
    if (!stats1.empty()) {
        unsigned long s0 = 0, d0 = 0, s1 = 0, d1 = 0;
        sscanf(stats0.c_str(), "seen %lu dropped %lu", &s0, &d0);
        sscanf(stats1.c_str(), "seen %lu dropped %lu", &s1, &d1);
        printf("delayer during the harmless changes: %lu packets, %lu dropped (%.2f %%)\n", s1 - s0,
               d1 - d0, s1 > s0 ? 100.0 * static_cast<double>(d1 - d0) / (s1 - s0) : 0.0);
    }
    session.Stop();
    agent.Stop();
    return 0;
}
