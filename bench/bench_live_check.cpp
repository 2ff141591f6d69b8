// The live agent's check round trip, measured inside the namespace sandbox
// (run it through tests/support/nv-sandbox.sh): first with 50 listeners,
// 100 firewall rules and 4 interfaces, then with 10,000 listeners and
// 10,000 rules next to the time "ss -ltnp" plus "iptables -S" take on the
// same state in the same run. Prints medians in milliseconds.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "child_process.h"
#include "live_sandbox.h"

namespace {

double MedianMs(int runs, const std::function<void()>& f) {
    std::vector<double> t;
    for (int i = 0; i < runs; ++i) {
        auto a = std::chrono::steady_clock::now();
        f();
        auto b = std::chrono::steady_clock::now();
        t.push_back(std::chrono::duration<double, std::milli>(b - a).count());
    }
    std::sort(t.begin(), t.end());
    return t[t.size() / 2];
}

bool Listeners(int from, int count, std::vector<int>& fds) {
    for (int i = 0; i < count; ++i) {
        int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_port = htons(static_cast<uint16_t>(from + i));
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 ||
            listen(fd, 1) != 0) {
            perror("listener");
            return false;
        }
        fds.push_back(fd);
    }
    return true;
}

bool Rules(int count) {
    std::string batch = "*filter\n";
    for (int i = 0; i < count; ++i)
        batch += "-A INPUT -p tcp -s 10." + std::to_string(i / 250 % 250) + "." +
                 std::to_string(i % 250) + ".0/24 --dport " + std::to_string(1000 + i % 60000) +
                 " -j ACCEPT\n";
    batch += "COMMIT\n";
    std::string path = "/tmp/nv-bench-rules";
    FILE* f = fopen(path.c_str(), "w");
    if (f == nullptr)
        return false;
    fputs(batch.c_str(), f);
    fclose(f);
    nvtest::RunResult r =
        nvtest::RunProgram({"/usr/sbin/iptables-restore", "-w", "5", "--noflush", path}, 120000);
    unlink(path.c_str());
    if (r.iExitCode != 0)
        fprintf(stderr, "iptables-restore: %s\n", r.sStderr.c_str());
    return r.iExitCode == 0;
}

}  // namespace

int main() {
    if (!nvtest::InSandbox()) {
        fprintf(stderr, "run through tests/support/nv-sandbox.sh\n");
        return 2;
    }
    rlimit lim{30000, 30000};
    setrlimit(RLIMIT_NOFILE, &lim);
    nvtest::LiveAgent agent;
    std::string err;
    if (!agent.Start(&err)) {
        fprintf(stderr, "%s\n", err.c_str());
        return 1;
    }
    nvtest::Tool({"ip", "link", "add", "nvb0", "type", "veth", "peer", "name", "nvb1"});
    std::vector<int> fds;
    if (!Listeners(20000, 50, fds) || !Rules(100))
        return 1;
    cConf_Inf conf;
    cSvrState svr;
    auto check = [&] {
        if (!agent.Check(conf, svr, err))
            fprintf(stderr, "check: %s\n", err.c_str());
    };
    check();
    printf("small: %zu listeners, %zu input rules, %zu interfaces\n", svr.vTcpListen.size(),
           svr.vsIptablesInputList.size(), svr.vsIfconfigList.size());
    printf("  check round trip median %.2f ms (200 runs)\n", MedianMs(200, check));

    if (!Listeners(30000, 10000 - 50, fds) || !Rules(10000 - 100)) {
        fprintf(stderr, "cannot make the large state\n");
        return 1;
    }
    check();
    printf("large: %zu listeners, %zu input rules\n", svr.vTcpListen.size(),
           svr.vsIptablesInputList.size());
    double ours = MedianMs(11, check);
    double tools = MedianMs(11, [] {
        nvtest::RunProgram({"/usr/bin/ss", "-ltnp"}, 60000);
        nvtest::RunProgram({"/usr/sbin/iptables", "-w", "5", "-S"}, 60000);
    });
    printf("  check round trip median %.1f ms; ss -ltnp + iptables -S median %.1f ms\n", ours,
           tools);
    for (int fd : fds)
        close(fd);
    agent.Stop();
    return 0;
}
