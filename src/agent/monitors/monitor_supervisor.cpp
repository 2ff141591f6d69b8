// Starting, stopping and reconfiguring the six monitors as one.
#include "agent/monitors/monitor_supervisor.h"

#include "agent/monitors/backup_monitor.h"
#include "agent/monitors/cpu_monitor.h"
#include "agent/monitors/disk_volume_monitor.h"
#include "agent/monitors/file_monitor.h"
#include "agent/monitors/memory_monitor.h"
#include "agent/monitors/process_monitor.h"

namespace nvmonit {

namespace {

// Runs m when on: made and started when missing, given the settings when
// running, stopped and dropped when off. A monitor that cannot start (no
// thread to be had) is dropped; the next Apply tries again.
template <class M>
void Keep(std::unique_ptr<M>& m, bool on, const MonitorSettings& s) {
    if (!on) {
        m.reset();
    } else if (m) {
        m->Configure(s);
    } else {
        m = std::make_unique<M>(s);
        if (!m->Start())
            m.reset();
    }
}

}  // namespace

MonitorSupervisor::MonitorSupervisor() = default;

MonitorSupervisor::~MonitorSupervisor() {
    StopAll();
}

void MonitorSupervisor::Apply(const MonitorSettings& given) {
    MonitorSettings s = given;
    SwitchOffEmptyLists(s);
    std::lock_guard<std::mutex> lock(m_mutex);
    // A new data directory or report bound means new report files: restart.
    if (s.sDataDir != m_settings.sDataDir || s.llReportMaxBytes != m_settings.llReportMaxBytes)
        ResetAllLocked();
    m_settings = s;
    Keep(m_file, s.bFileOn, s);
    Keep(m_process, s.bProcessOn, s);
    Keep(m_cpu, s.bCpuOn, s);
    Keep(m_memory, s.bMemoryOn, s);
    Keep(m_volume, s.bVolumeOn, s);
    Keep(m_backup, s.bBackupOn, s);
}

void MonitorSupervisor::StopAll() {
    std::lock_guard<std::mutex> lock(m_mutex);
    ResetAllLocked();
}

void MonitorSupervisor::ResetAllLocked() {
    m_file.reset();
    m_process.reset();
    m_cpu.reset();
    m_memory.reset();
    m_volume.reset();
    m_backup.reset();
}

RunningMonitors MonitorSupervisor::Running() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    RunningMonitors r;
    r.bFile = m_file != nullptr;
    r.bProcess = m_process != nullptr;
    r.bCpu = m_cpu != nullptr;
    r.bMemory = m_memory != nullptr;
    r.bVolume = m_volume != nullptr;
    r.bBackup = m_backup != nullptr;
    return r;
}

void MonitorSupervisor::CurrentUse(std::vector<VolumeUsage>& uses,
                                   std::vector<long long>& sizes) const {
    std::vector<std::string> parts;
    std::vector<std::string> files;
    std::string procDir;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (const VolumeEntry& e : m_settings.vVolumes)
            parts.push_back(e.sPartition);
        for (const BackupEntry& e : m_settings.vBackups)
            files.push_back(e.sFile);
        procDir = m_settings.sProcDir;
    }
    // Every call started first, then all waited for until one deadline.
    for (const std::string& p : parts)
        m_volumeProbes.Start(p, [p, procDir] { return MeasureVolume(p, procDir); });
    for (const std::string& f : files)
        m_sizeProbes.Start(f, [f] { return FileSizeBytes(f); });
    auto deadline = std::chrono::steady_clock::now() + kProbeAnswerTime;
    uses.clear();
    for (const std::string& p : parts)
        uses.push_back(m_volumeProbes.Wait(p, deadline).value_or(NoAnswer()));
    sizes.clear();
    for (const std::string& f : files)
        sizes.push_back(m_sizeProbes.Wait(f, deadline).value_or(kSizeNoAnswer));
}

std::vector<VolumeUsage> MonitorSupervisor::VolumeUses() const {
    std::vector<VolumeUsage> uses;
    std::vector<long long> sizes;
    CurrentUse(uses, sizes);
    return uses;
}

std::vector<long long> MonitorSupervisor::BackupSizes() const {
    std::vector<VolumeUsage> uses;
    std::vector<long long> sizes;
    CurrentUse(uses, sizes);
    return sizes;
}

std::string VolumeUseText(const VolumeUsage& u) {
    if (!u.bOk)
        return " not measurable: " + u.sError;
    return " used " + std::to_string(u.llUsedMb) + " MB of " + std::to_string(u.llTotalMb) + " MB";
}

std::string BackupSizeText(long long bytes) {
    if (bytes == kSizeNoAnswer)
        return " not measurable: " + NoAnswer().sError;
    if (bytes < 0)
        return " missing";
    return " size " + std::to_string(bytes / 1024) + " KB";
}

}  // namespace nvmonit
