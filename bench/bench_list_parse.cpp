// bench_list_parse: a monitored-file list of 1 MiB (174,761 entries of six
// bytes, the most the agent's request length allows):
//   parse/distinct     the shared parser alone, every entry different
//   parse/duplicates   the same with every entry given twice (half the size
//                      each), so that the duplicate merge does real work
//   agent/set          the whole command against a real norvaned on a private
//                      socket: request, parse, apply, save and answer; the
//                      list alternates between two, so every request changes
//                      the state
// The target is an answer within 3 s; the figures are in README.
#include <benchmark/benchmark.h>

#include <string>

#include "agent/commands/command_parser.h"
#include "bench_agent.h"
#include "link/result_codes.h"
#include "raw_client.h"
#include "temp_dir.h"
#include "wire/wire.h"

namespace {

const short kFileList = 13;

// Entries "/xxxx" (base 36) until the payload fills the request, starting
// at a different number for each variant.
std::string MakeList(size_t maxBytes, unsigned first, unsigned repeat) {
    static const char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::string out;
    for (unsigned i = first;; ++i) {
        std::string e = "/";
        for (unsigned v = i, k = 0; k < 4; ++k, v /= 36)
            e.push_back(kDigits[v % 36]);
        e.push_back('\n');
        if (out.size() + e.size() * repeat > maxBytes)
            return out;
        for (unsigned r = 0; r < repeat; ++r)
            out += e;
    }
}

void Parse(benchmark::State& state, const std::string& payload) {
    size_t entries = 0;
    for (auto _ : state) {
        nvagent::Request req;
        nvagent::CmdResult r;
        if (!nvagent::ParseCommand(kFileList, payload, req, r)) {
            state.SkipWithError(r.sDetail.c_str());
            break;
        }
        entries = std::get<nvagent::ListRequest>(req).entries.size();
    }
    state.counters["entries"] = static_cast<double>(entries);
    state.counters["bytes"] = static_cast<double>(payload.size());
}

void AgentSet(benchmark::State& state, const nvbench::BenchAgent* agent, const std::string& a,
              const std::string& b) {
    bool flip = false;
    for (auto _ : state) {
        const std::string& p = flip ? b : a;
        flip = !flip;
        nvtest::Answer ans = nvtest::Request(agent->SocketPath(), kFileList, p, 30000);
        if (!ans.bOk || ans.result != em_ActSuccAll) {
            state.SkipWithError(
                ("answer " + std::to_string(ans.result) + ": " + ans.sError + ans.sDetail).c_str());
            break;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    const size_t maxPayload = nvwire::kMaxRequestLen - nvwire::kReqHeaderLen;
    std::string distinct = MakeList(maxPayload, 0, 1);
    std::string other = MakeList(maxPayload, 1, 1);
    std::string duplicates = MakeList(maxPayload, 0, 2);

    std::string demo = nvtest::ReadFile(NV_SOURCE_DIR "/data/demo-state.json");
    nvbench::BenchAgent agent;
    std::string err;
    if (demo.empty() || !agent.Start(demo, false, err)) {
        fprintf(stderr, "bench_list_parse: %s\n", demo.empty() ? "no demo state" : err.c_str());
        return 1;
    }
    benchmark::RegisterBenchmark("parse/distinct", Parse, distinct)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("parse/duplicates", Parse, duplicates)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("agent/set", AgentSet, &agent, distinct, other)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
