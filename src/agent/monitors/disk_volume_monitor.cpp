// Disk-volume sampling and its reports.
#include "agent/monitors/disk_volume_monitor.h"

#include <cstdlib>

namespace nvmonit {

DiskVolumeMonitor::DiskVolumeMonitor(const MonitorSettings& s)
    : PeriodicMonitor(s, kVolumeReport, kVolumeIntervalMs) {}

DiskVolumeMonitor::~DiskVolumeMonitor() {
    Stop();
}

void DiskVolumeMonitor::Tick(const MonitorSettings& s, bool changed) {
    if (changed) {
        // Entries whose limits did not change keep their history.
        std::map<std::string, State> next;
        for (const VolumeEntry& e : s.vVolumes) {
            auto it = m_states.find(e.sPartition);
            if (it != m_states.end() && it->second.entry == e)
                next[e.sPartition] = it->second;
            else
                next[e.sPartition].entry = e;
        }
        m_states.swap(next);
    }
    for (auto& kv : m_states)
        Sample(kv.second);
}

void DiskVolumeMonitor::Sample(State& st) {
    const VolumeEntry& e = st.entry;
    std::string part = e.sPartition;
    VolumeUsage u = m_probes
                        .Run(
                            part, [part] { return MeasureVolume(part); }, kProbeAnswerTime)
                        .value_or(NoAnswer());
    if (!u.bOk) {
        if (!st.bFailed)
            m_report.Write(e.sPartition + ": cannot be measured: " + u.sError);
        st.bFailed = true;
        return;
    }
    st.bFailed = false;
    std::string head = e.sPartition +
                       (u.sMountPoint == e.sPartition ? "" : " (on " + u.sMountPoint + ")") +
                       ": used " + std::to_string(u.llUsedMb) + " MB";
    bool reported = false;
    if (st.above.Crossed(e.llCeilMb > 0 && u.llUsedMb > e.llCeilMb)) {
        m_report.Write(head + " is above the ceiling " + std::to_string(e.llCeilMb) + " MB");
        reported = true;
    }
    if (st.below.Crossed(u.llUsedMb < e.llFloorMb)) {
        m_report.Write(head + " is below the floor " + std::to_string(e.llFloorMb) + " MB");
        reported = true;
    }
    long long delta = u.llUsedMb - st.llLastReportedMb;
    if (!reported && st.bMeasured && e.llIntervalMb > 0 && llabs(delta) >= e.llIntervalMb) {
        m_report.Write(head + (delta > 0 ? ", grew by " : ", shrank by ") +
                       std::to_string(llabs(delta)) + " MB (interval " +
                       std::to_string(e.llIntervalMb) + " MB)");
        reported = true;
    }
    if (reported || !st.bMeasured)
        st.llLastReportedMb = u.llUsedMb;
    st.bMeasured = true;
}

}  // namespace nvmonit
