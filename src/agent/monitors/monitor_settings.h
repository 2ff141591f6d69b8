// The monitors' settings: one plain structure holding every switch, list and
// threshold the monitor pages edit, plus where the reports go and how often
// the periodic monitors sample. The agent fills it from its state and hands
// it to MonitorSupervisor::Apply (monitor_supervisor.h).
#ifndef NV_AGENT_MONITORS_MONITOR_SETTINGS_H
#define NV_AGENT_MONITORS_MONITOR_SETTINGS_H

#include <string>
#include <vector>

namespace nvmonit {

// One monitored disk volume: a block device (resolved to where it is
// mounted) or a directory on the file system to measure, and its limits in
// MB. A ceiling of 0 means no ceiling; an interval of 0 means no reports of
// growth or shrinkage.
struct VolumeEntry {
    std::string sPartition;
    long long llCeilMb = 0;
    long long llFloorMb = 0;
    long long llIntervalMb = 0;

    bool operator==(const VolumeEntry& o) const {
        return sPartition == o.sPartition && llCeilMb == o.llCeilMb && llFloorMb == o.llFloorMb &&
               llIntervalMb == o.llIntervalMb;
    }
};

// One file under size-triggered backup: past llLimitKb kilobytes it is
// copied into sBackupDir and emptied in place.
struct BackupEntry {
    std::string sFile;
    std::string sBackupDir;
    long long llLimitKb = 0;

    bool operator==(const BackupEntry& o) const {
        return sFile == o.sFile && sBackupDir == o.sBackupDir && llLimitKb == o.llLimitKb;
    }
};

// Whether started processes go through systemd-run: kAuto uses it when
// systemd is the running init system and systemd-run is installed.
enum class SystemdUse { kAuto, kNever, kAlways };

struct MonitorSettings {
    // The switches as the pages set them ("1" on the page is true here).
    bool bFileOn = false;
    bool bProcessOn = false;
    bool bCpuOn = false;
    bool bMemoryOn = false;
    bool bVolumeOn = false;
    bool bBackupOn = false;

    std::vector<std::string> vFiles;      // absolute paths of files or directories
    std::vector<std::string> vProcesses;  // command lines: program and arguments
    int iCpuCeilPercent = 100;            // report above; 100 never fires
    int iCpuFloorPercent = 0;             // report below; 0 never fires
    long long llMemCeilMb = 0;            // report above; 0 means no ceiling
    std::vector<VolumeEntry> vVolumes;
    std::vector<BackupEntry> vBackups;

    // The agent's data directory; the reports go to its monit/ folder.
    std::string sDataDir = "/etc/norvane";
    // When above 0, every periodic monitor samples at this interval instead
    // of its own (the agent's --monitor-interval-ms, for tests).
    int iIntervalMs = 0;
    // Size past which a report file is rotated to one ".1" copy.
    long long llReportMaxBytes = 1024 * 1024;
    SystemdUse enSystemd = SystemdUse::kAuto;
    // Where the kernel's process file system is mounted (stat, meminfo,
    // processes, mounts); tests point it at prepared copies.
    std::string sProcDir = "/proc";
};

// The sampling intervals used when iIntervalMs is 0, in milliseconds.
constexpr int kProcessIntervalMs = 2000;
constexpr int kCpuIntervalMs = 5000;
constexpr int kMemoryIntervalMs = 5000;
constexpr int kVolumeIntervalMs = 30000;
constexpr int kBackupIntervalMs = 10000;

// The interval a monitor samples at: its own default, or the override.
inline int IntervalMs(const MonitorSettings& s, int defaultMs) {
    return s.iIntervalMs > 0 ? s.iIntervalMs : defaultMs;
}

// The names of the report files under <data dir>/monit/.
constexpr const char* kFileReport = "filemonit.txt";
constexpr const char* kProcessReport = "processmonit.txt";
constexpr const char* kCpuReport = "cpumonit.txt";
constexpr const char* kMemoryReport = "memorymonit.txt";
constexpr const char* kVolumeReport = "diskvolumemonit.txt";
constexpr const char* kBackupReport = "backupmonit.txt";

// <data dir>/monit
std::string MonitDir(const MonitorSettings& s);

// Whether name is one of the report files' names, or a rotated copy's.
bool IsReportName(const std::string& name);

// The switches a monitor's empty list turns off: file, process, volume and
// backup monitors with nothing to watch are switched off in s. Returns true
// when a switch changed, so that the agent can store the new flags.
bool SwitchOffEmptyLists(MonitorSettings& s);

}  // namespace nvmonit

#endif
