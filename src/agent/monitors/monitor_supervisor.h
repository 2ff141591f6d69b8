// The one entry point of the agent's monitors. The agent builds a
// MonitorSettings from its state (switches, lists, thresholds, volumes,
// backups, data directory, --monitor-interval-ms) and calls Apply after
// start-up and after every change of a monitor setting: each monitor whose
// switch is on (and whose list is not empty) runs, with the new settings
// applied at once; each other monitor stops at once. Applying the same
// settings after the agent restarts resumes the monitors that were on.
//
//     nvmonit::MonitorSupervisor monitors;         // one per agent
//     nvmonit::MonitorSettings s = ...;            // from the state
//     if (nvmonit::SwitchOffEmptyLists(s)) ...;    // store the flags "0"
//     monitors.Apply(s);
//     monitors.VolumeUses();  // current use of each volume, for its line
//     monitors.BackupSizes(); // current size of each backed-up file
//
// The reports go to <data dir>/monit/ (monitor_settings.h names them).
//
// Apply and StopAll are called with the agent's own lock held, so switching
// a monitor off waits at most about two seconds for its thread (the loops
// look at their stop at every wake-up, a flood of events included); a
// monitor still busy then (a long backup copy, a service start) is set aside
// and dropped once it has ended, and writes no more lines after that piece
// of work.
#ifndef NV_AGENT_MONITORS_MONITOR_SUPERVISOR_H
#define NV_AGENT_MONITORS_MONITOR_SUPERVISOR_H

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "agent/monitors/monitor_settings.h"
#include "agent/monitors/monitor_thread.h"
#include "agent/monitors/timed_probe.h"
#include "agent/monitors/volume_usage.h"

namespace nvmonit {

class FileMonitor;
class ProcessMonitor;
class CpuMonitor;
class MemoryMonitor;
class DiskVolumeMonitor;
class BackupMonitor;

// Which monitors run.
struct RunningMonitors {
    bool bFile = false;
    bool bProcess = false;
    bool bCpu = false;
    bool bMemory = false;
    bool bVolume = false;
    bool bBackup = false;
};

class MonitorSupervisor {
public:
    MonitorSupervisor();
    ~MonitorSupervisor();  // stops every monitor
    MonitorSupervisor(const MonitorSupervisor&) = delete;
    MonitorSupervisor& operator=(const MonitorSupervisor&) = delete;

    // Starts, stops and reconfigures the monitors to match s. Thread-safe.
    void Apply(const MonitorSettings& s);
    // Stops every monitor (the settings are kept).
    void StopAll();
    RunningMonitors Running() const;

    // The current use of each listed volume, in list order, measured now
    // (also while the monitor is off); a volume whose file system does not
    // answer within kProbeAnswerTime says so (NoAnswer()).
    std::vector<VolumeUsage> VolumeUses() const;
    // The current size in bytes of each listed backup file, in list order;
    // kSizeMissing for a file that cannot be read, kSizeNoAnswer for one
    // whose file system did not answer within kProbeAnswerTime.
    std::vector<long long> BackupSizes() const;
    // Both at once, within one kProbeAnswerTime.
    void CurrentUse(std::vector<VolumeUsage>& uses, std::vector<long long>& sizes) const;

private:
    // Asks m to stop when off, moving it to m_stopping; m_mutex is held.
    template <class M>
    void AskStop(std::unique_ptr<M>& m, bool off);
    // Stops the monitors marked in off; m_mutex is held.
    void StopLocked(const RunningMonitors& off);

    mutable std::mutex m_mutex;
    std::vector<std::unique_ptr<StoppableMonitor>> m_stopping;
    std::vector<std::unique_ptr<StoppableMonitor>> m_retired;
    MonitorSettings m_settings;
    std::unique_ptr<FileMonitor> m_file;
    std::unique_ptr<ProcessMonitor> m_process;
    std::unique_ptr<CpuMonitor> m_cpu;
    std::unique_ptr<MemoryMonitor> m_memory;
    std::unique_ptr<DiskVolumeMonitor> m_volume;
    std::unique_ptr<BackupMonitor> m_backup;
    mutable TimedProbes<VolumeUsage> m_volumeProbes;
    mutable TimedProbes<long long> m_sizeProbes;
};

// The text the volume and backup display lines append to show the current
// state: " used 812 MB of 9870 MB" (or " not measurable: <why>"), and
// " size 123 KB" (or " missing", or " not measurable: no answer").
std::string VolumeUseText(const VolumeUsage& u);
std::string BackupSizeText(long long bytes);

}  // namespace nvmonit

#endif
