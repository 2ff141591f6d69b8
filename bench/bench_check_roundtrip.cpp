// bench_check_roundtrip: the console's service link against a real norvaned
// on a private socket, measured in-process through the console's own calls:
//   check/demo          GetObjInfo() with the demo state
//   check/large         GetObjInfo() with 10,000 firewall rules and 10,000
//                       listening sockets
//   check/demo+journal  as check/demo, with the agent's request journal on
//   connect_close/demo  a bare connect and close on the agent's socket
//   set_toggle/demo     SetObjInfo(4, 1, "1"/"0"): a flag flipped each time,
//                       so every request changes and saves the state
// Each round trip is timed on its own; after the Google Benchmark report a
// summary gives the median and tail of those times in microseconds.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "agent/sim/sim_testdata.h"
#include "bench_agent.h"
#include "cmdclient/cmd_client.h"
#include "link/global_val.h"
#include "link/result_codes.h"
#include "link/ui_interface.h"
#include "temp_dir.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kLargeRules = 10000;
constexpr int kLargeListeners = 10000;

struct CaseStats {
    double targetUs = 0;  // 0: no target, shown for context only
    std::vector<double> us;
    int answerBytes = 0;
};

// In the order the cases run.
std::vector<std::string> g_order;
std::map<std::string, CaseStats> g_stats;

CaseStats& Stats(const std::string& name, double targetUs) {
    if (g_stats.find(name) == g_stats.end())
        g_order.push_back(name);
    CaseStats& s = g_stats[name];
    s.targetUs = targetUs;
    return s;
}

double Micros(Clock::duration d) {
    return std::chrono::duration<double, std::micro>(d).count();
}

void Check(benchmark::State& state, const nvbench::BenchAgent* agent, const std::string& name,
           double targetUs) {
    CaseStats& stats = Stats(name, targetUs);
    pg_Obj->sSockName = agent->SocketPath();
    for (auto _ : state) {
        Clock::time_point t0 = Clock::now();
        int rc = GetObjInfo();
        Clock::time_point t1 = Clock::now();
        if (rc != em_OK && rc != em_ActSuccAll) {
            state.SkipWithError(
                ("GetObjInfo returned " + std::to_string(rc) + ": " + pg_Obj->sReqRetInfo).c_str());
            break;
        }
        stats.us.push_back(Micros(t1 - t0));
    }
    stats.answerBytes = pg_Obj->iLenRecved;
    state.counters["answer_bytes"] = pg_Obj->iLenRecved;
}

void ConnectClose(benchmark::State& state, const nvbench::BenchAgent* agent,
                  const std::string& name) {
    CaseStats& stats = Stats(name, 0);
    pg_Obj->sSockName = agent->SocketPath();
    for (auto _ : state) {
        Clock::time_point t0 = Clock::now();
        int rc = ConnectAgent("bench");
        if (rc == 0)
            close(pg_Obj->fdConn);
        Clock::time_point t1 = Clock::now();
        if (rc != 0) {
            state.SkipWithError("cannot connect to the agent");
            break;
        }
        pg_Obj->fdConn = -1;
        stats.us.push_back(Micros(t1 - t0));
    }
}

void SetToggle(benchmark::State& state, const nvbench::BenchAgent* agent, const std::string& name) {
    CaseStats& stats = Stats(name, 0);
    pg_Obj->sSockName = agent->SocketPath();
    if (GetObjInfo() != em_OK) {
        state.SkipWithError("the first check failed");
        return;
    }
    char flag[2] = {pg_Obj->objCif.chIcmpEchoIgnoreAll == '1' ? '0' : '1', '\0'};
    for (auto _ : state) {
        Clock::time_point t0 = Clock::now();
        int rc = SetObjInfo(4, 1, flag);
        Clock::time_point t1 = Clock::now();
        if (rc != em_ActSuccAll) {
            state.SkipWithError(
                ("SetObjInfo returned " + std::to_string(rc) + ": " + pg_Obj->sReqRetInfo).c_str());
            break;
        }
        flag[0] = flag[0] == '1' ? '0' : '1';
        stats.us.push_back(Micros(t1 - t0));
    }
}

double Percentile(std::vector<double> v, double p) {
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    double pos = p * static_cast<double>(v.size() - 1);
    size_t lo = static_cast<size_t>(pos);
    size_t hi = std::min(lo + 1, v.size() - 1);
    double frac = pos - static_cast<double>(lo);
    return v[lo] + (v[hi] - v[lo]) * frac;
}

void PrintSummary() {
    printf("\nRound trips, each timed on its own (microseconds):\n");
    printf("%-20s %8s %10s %10s %10s %10s %12s %10s  %s\n", "case", "samples", "min", "median",
           "p90", "p99", "answer_B", "target", "verdict");
    for (const std::string& name : g_order) {
        const CaseStats& s = g_stats[name];
        char target[32] = "-";
        const char* verdict = "";
        double median = Percentile(s.us, 0.5);
        if (s.targetUs > 0) {
            snprintf(target, sizeof target, "< %.0f", s.targetUs);
            verdict = s.us.empty() ? "NO DATA" : (median < s.targetUs ? "met" : "MISSED");
        }
        char answer[32] = "-";
        if (s.answerBytes > 0)
            snprintf(answer, sizeof answer, "%d", s.answerBytes);
        printf("%-20s %8zu %10.1f %10.1f %10.1f %10.1f %12s %10s  %s\n", name.c_str(), s.us.size(),
               Percentile(s.us, 0), median, Percentile(s.us, 0.9), Percentile(s.us, 0.99), answer,
               target, verdict);
    }
}

template <class Fn>
void Register(const std::string& name, Fn fn) {
    benchmark::RegisterBenchmark(name.c_str(), fn)
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond)
        ->MinTime(1.0)
        ->Repetitions(3)
        ->ReportAggregatesOnly(true);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;

    SetName2Idx(pg_Obj);
    SetErrMap(pg_Obj);

    std::string demo = nvtest::ReadFile(NV_SOURCE_DIR "/data/demo-state.json");
    if (demo.empty()) {
        fprintf(stderr, "bench_check_roundtrip: cannot read %s\n",
                NV_SOURCE_DIR "/data/demo-state.json");
        return 1;
    }
    std::string large = nvagent::MakeLargeState(kLargeRules, kLargeListeners).dump();

    std::string err;
    nvbench::BenchAgent demoAgent;
    nvbench::BenchAgent largeAgent;
    nvbench::BenchAgent journalAgent;
    if (!demoAgent.Start(demo, false, err) || !largeAgent.Start(large, false, err) ||
        !journalAgent.Start(demo, true, err)) {
        fprintf(stderr, "bench_check_roundtrip: %s\n", err.c_str());
        return 1;
    }

    Register("check/demo", [&](benchmark::State& s) { Check(s, &demoAgent, "check/demo", 100); });
    Register("check/large",
             [&](benchmark::State& s) { Check(s, &largeAgent, "check/large", 2000); });
    Register("check/demo+journal",
             [&](benchmark::State& s) { Check(s, &journalAgent, "check/demo+journal", 0); });
    Register("connect_close/demo",
             [&](benchmark::State& s) { ConnectClose(s, &demoAgent, "connect_close/demo"); });
    Register("set_toggle/demo",
             [&](benchmark::State& s) { SetToggle(s, &demoAgent, "set_toggle/demo"); });

    benchmark::RunSpecifiedBenchmarks();
    PrintSummary();
    benchmark::Shutdown();
    return 0;
}
