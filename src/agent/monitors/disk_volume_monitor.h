// The disk-volume monitor: each entry's used space (MB) is measured at every
// sample and reported when it passes the ceiling or the floor (once per
// excursion) and when it has grown or shrunk by the entry's interval since
// the last report about that volume. A volume whose file system does not
// answer in time is reported as "cannot be measured: no answer".
#ifndef NV_AGENT_MONITORS_DISK_VOLUME_MONITOR_H
#define NV_AGENT_MONITORS_DISK_VOLUME_MONITOR_H

#include <map>
#include <string>

#include "agent/monitors/excursion.h"
#include "agent/monitors/periodic_monitor.h"
#include "agent/monitors/timed_probe.h"
#include "agent/monitors/volume_usage.h"

namespace nvmonit {

class DiskVolumeMonitor : public PeriodicMonitor {
public:
    explicit DiskVolumeMonitor(const MonitorSettings& s);
    ~DiskVolumeMonitor() override;

protected:
    void Tick(const MonitorSettings& s, bool changed) override;

private:
    struct State {
        VolumeEntry entry;
        bool bMeasured = false;  // a baseline exists
        bool bFailed = false;    // the last attempt could not measure
        long long llLastReportedMb = 0;
        Excursion above;
        Excursion below;
    };
    void Sample(State& st);

    std::map<std::string, State> m_states;  // by partition
    // A volume on a hung mount holds one of these threads, not the monitor.
    TimedProbes<VolumeUsage> m_probes;
};

}  // namespace nvmonit

#endif
