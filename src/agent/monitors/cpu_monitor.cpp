// CPU usage sampling and its threshold reports.
#include "agent/monitors/cpu_monitor.h"

#include <cstdio>
#include <fstream>
#include <sstream>

namespace nvmonit {

bool ReadCpuTimes(const std::string& procDir, CpuTimes& t) {
    std::ifstream in(procDir + "/stat");
    std::string line;
    if (!std::getline(in, line))
        return false;
    std::istringstream ss(line);
    std::string label;
    ss >> label;
    if (label != "cpu")
        return false;
    // user nice system idle iowait irq softirq steal; guest time is already
    // counted in user and nice.
    unsigned long long v[8] = {};
    int n = 0;
    while (n < 8 && ss >> v[n])
        ++n;
    if (n < 4)
        return false;
    unsigned long long idle = v[3] + v[4];
    t.ullTotal = 0;
    for (int i = 0; i < n; ++i)
        t.ullTotal += v[i];
    t.ullBusy = t.ullTotal - idle;
    return true;
}

double CpuUsagePercent(const CpuTimes& before, const CpuTimes& after) {
    if (after.ullTotal <= before.ullTotal || after.ullBusy < before.ullBusy)
        return -1;
    return 100.0 * static_cast<double>(after.ullBusy - before.ullBusy) /
           static_cast<double>(after.ullTotal - before.ullTotal);
}

CpuMonitor::CpuMonitor(const MonitorSettings& s) : PeriodicMonitor(s, kCpuReport, kCpuIntervalMs) {}

CpuMonitor::~CpuMonitor() {
    Stop();
}

void CpuMonitor::Tick(const MonitorSettings& s, bool changed) {
    if (changed && (s.iCpuCeilPercent != m_ceil || s.iCpuFloorPercent != m_floor)) {
        // New limits start new excursions; other settings changes do not.
        m_above.Reset();
        m_below.Reset();
        m_ceil = s.iCpuCeilPercent;
        m_floor = s.iCpuFloorPercent;
    }
    CpuTimes now;
    if (!ReadCpuTimes(s.sProcDir, now))
        return;
    if (!m_havePrev) {
        m_prev = now;
        m_havePrev = true;
        return;
    }
    double usage = CpuUsagePercent(m_prev, now);
    m_prev = now;
    if (usage < 0)
        return;
    char buf[128];
    if (m_above.Crossed(usage > s.iCpuCeilPercent)) {
        snprintf(buf, sizeof buf, "CPU usage %.0f%% is above the ceiling %d%%", usage,
                 s.iCpuCeilPercent);
        m_report.Write(buf);
    }
    if (m_below.Crossed(usage < s.iCpuFloorPercent)) {
        snprintf(buf, sizeof buf, "CPU usage %.0f%% is below the floor %d%%", usage,
                 s.iCpuFloorPercent);
        m_report.Write(buf);
    }
}

}  // namespace nvmonit
