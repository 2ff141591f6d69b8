// bench_agent_load: the agent under load from several clients at once, and
// its answer time while many other clients hold idle connections. Prints one
// line per case: requests, wall time, requests per second, and the median,
// p99 and largest round trip in milliseconds.
//   checks  2 clients x 5,000 check requests, demo state
//   sets    2 clients x 2,000 set requests (each saves the state with fsync)
//   idle    200 checks, one at a time, while 20 processes hold 300 idle
//           connections (the agent must answer within 50 ms)
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "bench_agent.h"
#include "raw_client.h"

namespace {

using Clock = std::chrono::steady_clock;

std::string DemoState() {
    std::ifstream in(NV_SOURCE_DIR "/data/demo-state.json");
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

double Ms(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

void Report(const char* name, std::vector<double> ms, double wallMs, int failed) {
    std::sort(ms.begin(), ms.end());
    size_t n = ms.size();
    printf(
        "%-7s %6zu requests %8.0f ms %9.0f req/s  median %.3f  p99 %.3f  max %.3f ms  "
        "failed %d\n",
        name, n, wallMs, n / (wallMs / 1000.0), n ? ms[n / 2] : 0.0,
        n ? ms[std::min(n - 1, n * 99 / 100)] : 0.0, n ? ms.back() : 0.0, failed);
}

// `clients` threads, each sending `per` requests made by `make`.
template <class Make>
void Load(const char* name, const std::string& path, int clients, int per, Make make) {
    std::vector<std::vector<double>> times(clients);
    std::vector<int> failed(clients, 0);
    Clock::time_point start = Clock::now();
    std::vector<std::thread> threads;
    for (int c = 0; c < clients; ++c) {
        threads.emplace_back([&, c] {
            for (int i = 0; i < per; ++i) {
                std::pair<short, std::string> req = make(c, i);
                Clock::time_point t = Clock::now();
                nvtest::Answer a = nvtest::Request(path, req.first, req.second, 5000);
                times[c].push_back(Ms(Clock::now() - t));
                if (!a.bOk)
                    ++failed[c];
            }
        });
    }
    for (std::thread& t : threads)
        t.join();
    std::vector<double> all;
    int fails = 0;
    for (int c = 0; c < clients; ++c) {
        all.insert(all.end(), times[c].begin(), times[c].end());
        fails += failed[c];
    }
    Report(name, all, Ms(Clock::now() - start), fails);
}

void Idle(const std::string& path) {
    std::vector<pid_t> holders;
    for (int p = 0; p < 20; ++p) {
        pid_t pid = fork();
        if (pid == 0) {
            std::vector<int> fds;
            for (int i = 0; i < 15; ++i)
                fds.push_back(nvtest::ConnectUnix(path));
            for (;;)
                pause();
        }
        holders.push_back(pid);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    Load("idle", path, 1, 200, [](int, int) { return std::make_pair(short(1), std::string()); });
    for (pid_t pid : holders) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
}

}  // namespace

int main() {
    nvbench::BenchAgent agent;
    std::string err;
    if (!agent.Start(DemoState(), false, err)) {
        fprintf(stderr, "bench_agent_load: %s\n", err.c_str());
        return 1;
    }
    std::string path = agent.SocketPath();
    Load("checks", path, 2, 5000, [](int, int) { return std::make_pair(short(1), std::string()); });
    Load("sets", path, 2, 2000, [](int c, int i) {
        return std::make_pair(short(4 + c), std::string((i % 2) ? "1" : "0"));
    });
    Idle(path);
    return 0;
}
