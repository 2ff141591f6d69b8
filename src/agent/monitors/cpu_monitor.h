// The CPU monitor: the share of time all CPUs were busy over each sampling
// interval, from the first line of /proc/stat, reported once when it rises
// above the ceiling and once when it falls below the floor.
#ifndef NV_AGENT_MONITORS_CPU_MONITOR_H
#define NV_AGENT_MONITORS_CPU_MONITOR_H

#include <string>

#include "agent/monitors/excursion.h"
#include "agent/monitors/periodic_monitor.h"

namespace nvmonit {

// Cumulative CPU time counters (clock ticks) of all CPUs.
struct CpuTimes {
    unsigned long long ullBusy = 0;
    unsigned long long ullTotal = 0;
};

// Reads the "cpu" line of <procDir>/stat; false when it cannot.
bool ReadCpuTimes(const std::string& procDir, CpuTimes& t);

// Busy percentage between two readings; -1 when no time passed.
double CpuUsagePercent(const CpuTimes& before, const CpuTimes& after);

class CpuMonitor : public PeriodicMonitor {
public:
    explicit CpuMonitor(const MonitorSettings& s);
    ~CpuMonitor() override;

protected:
    void Tick(const MonitorSettings& s, bool changed) override;

private:
    bool m_havePrev = false;
    CpuTimes m_prev;
    Excursion m_above;
    Excursion m_below;
    int m_ceil = -1;
    int m_floor = -1;
};

}  // namespace nvmonit

#endif
