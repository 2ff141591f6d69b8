// The memory monitor: memory in use in MB (total less available, as the
// memory page shows it), reported once when it rises above the ceiling.
#ifndef NV_AGENT_MONITORS_MEMORY_MONITOR_H
#define NV_AGENT_MONITORS_MEMORY_MONITOR_H

#include <string>

#include "agent/monitors/excursion.h"
#include "agent/monitors/periodic_monitor.h"

namespace nvmonit {

struct MemoryFigures {
    long long llTotalMb = 0;
    long long llUsedMb = 0;  // MemTotal - MemAvailable
    long long llFreeMb = 0;  // MemAvailable
};

// Reads <procDir>/meminfo; false when it cannot.
bool ReadMemory(const std::string& procDir, MemoryFigures& m);

class MemoryMonitor : public PeriodicMonitor {
public:
    explicit MemoryMonitor(const MonitorSettings& s);
    ~MemoryMonitor() override;

protected:
    void Tick(const MonitorSettings& s, bool changed) override;

private:
    Excursion m_above;
    long long m_ceil = -1;
};

}  // namespace nvmonit

#endif
