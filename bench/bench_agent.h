// A norvaned for the benchmarks: started in the foreground on a private
// socket in a temporary directory with a given state, by default without the
// request journal (as the agent runs when installed), and stopped at the end.
#ifndef NV_BENCH_BENCH_AGENT_H
#define NV_BENCH_BENCH_AGENT_H

#include <sys/types.h>

#include <string>

#include "temp_dir.h"

namespace nvbench {

class BenchAgent {
public:
    BenchAgent() = default;
    ~BenchAgent() { Stop(); }
    BenchAgent(const BenchAgent&) = delete;
    BenchAgent& operator=(const BenchAgent&) = delete;

    // Writes stateJson as the agent's state file and starts the agent, with
    // the request journal when journal is true. Waits until the socket
    // accepts connections; false with the reason in err otherwise.
    bool Start(const std::string& stateJson, bool journal, std::string& err);
    // SIGTERM and wait; SIGKILL when it does not end in time.
    void Stop();

    std::string SocketPath() const { return m_dir.File("nvsock"); }

private:
    nvtest::TempDir m_dir;
    pid_t m_pid = -1;
};

}  // namespace nvbench

#endif
