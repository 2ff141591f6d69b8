// The process monitor: every listed command line must have a running
// process; when none runs, the monitor starts one (process_launch.h). Every
// start and every exit seen is reported. Restarts back off: a start that
// ends within kQuickRunMs counts as a quick exit, and after k quick exits in
// a row the next start waits min(2^(k-1), 300) seconds from the previous
// start, so a command that dies at once is started at 0, 1, 3, 7, 15, 31 s
// and so on; a run longer than kQuickRunMs resets the count.
#ifndef NV_AGENT_MONITORS_PROCESS_MONITOR_H
#define NV_AGENT_MONITORS_PROCESS_MONITOR_H

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "agent/monitors/periodic_monitor.h"
#include "agent/monitors/process_table.h"

namespace nvmonit {

constexpr int kQuickRunMs = 10000;
constexpr int kMaxBackoffMs = 300000;

// The wait after k quick exits in a row, in milliseconds.
int BackoffMs(int quickExits);

class ProcessMonitor : public PeriodicMonitor {
public:
    explicit ProcessMonitor(const MonitorSettings& s);
    ~ProcessMonitor() override;

protected:
    void Tick(const MonitorSettings& s, bool changed) override;

private:
    using Clock = std::chrono::steady_clock;
    struct Entry {
        std::vector<std::string> vWords;
        pid_t pid = 0;
        bool bOwnChild = false;     // started here: reaped with waitpid
        bool bAwaiting = false;     // started through systemd, not seen yet
        bool bStartedHere = false;  // the tracked process was started here
        Clock::time_point tStart;
        Clock::time_point tNextStart;
        int iQuickExits = 0;
    };
    void Check(const std::string& command, Entry& e, const std::vector<ProcInfo>& procs,
               const MonitorSettings& s);
    void Exited(const std::string& command, Entry& e, const std::string& how);
    void StartOne(const std::string& command, Entry& e, const MonitorSettings& s);

    std::map<std::string, Entry> m_entries;  // by command line as listed
};

}  // namespace nvmonit

#endif
