// Memory use from /proc/meminfo and its ceiling report.
#include "agent/monitors/memory_monitor.h"

#include <fstream>
#include <sstream>

namespace nvmonit {

bool ReadMemory(const std::string& procDir, MemoryFigures& m) {
    std::ifstream in(procDir + "/meminfo");
    std::string line;
    long long totalKb = -1;
    long long availKb = -1;
    long long freeKb = -1;
    long long buffersKb = 0;
    long long cachedKb = 0;
    while (std::getline(in, line)) {
        std::istringstream ss(line);
        std::string key;
        long long kb = 0;
        if (!(ss >> key >> kb))
            continue;
        if (key == "MemTotal:")
            totalKb = kb;
        else if (key == "MemAvailable:")
            availKb = kb;
        else if (key == "MemFree:")
            freeKb = kb;
        else if (key == "Buffers:")
            buffersKb = kb;
        else if (key == "Cached:")
            cachedKb = kb;
    }
    if (totalKb < 0)
        return false;
    // Kernels older than 3.14 have no MemAvailable; free memory plus the
    // page cache is the usual estimate there.
    if (availKb < 0) {
        if (freeKb < 0)
            return false;
        availKb = freeKb + buffersKb + cachedKb;
    }
    m.llTotalMb = totalKb / 1024;
    m.llFreeMb = availKb / 1024;
    m.llUsedMb = m.llTotalMb - m.llFreeMb;
    return true;
}

MemoryMonitor::MemoryMonitor(const MonitorSettings& s)
    : PeriodicMonitor(s, kMemoryReport, kMemoryIntervalMs) {}

MemoryMonitor::~MemoryMonitor() {
    Stop();
}

void MemoryMonitor::Tick(const MonitorSettings& s, bool changed) {
    if (changed && s.llMemCeilMb != m_ceil) {
        // A new ceiling starts a new excursion; other settings changes do not.
        m_above.Reset();
        m_ceil = s.llMemCeilMb;
    }
    MemoryFigures m;
    if (!ReadMemory(s.sProcDir, m))
        return;
    if (m_above.Crossed(s.llMemCeilMb > 0 && m.llUsedMb > s.llMemCeilMb)) {
        m_report.Write("memory in use " + std::to_string(m.llUsedMb) + " MB is above the ceiling " +
                       std::to_string(s.llMemCeilMb) + " MB (" + std::to_string(m.llFreeMb) +
                       " MB free of " + std::to_string(m.llTotalMb) + " MB)");
    }
}

}  // namespace nvmonit
