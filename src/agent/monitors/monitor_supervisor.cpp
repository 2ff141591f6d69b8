// Starting, stopping and reconfiguring the six monitors as one.
#include "agent/monitors/monitor_supervisor.h"

#include <chrono>

#include "agent/monitors/backup_monitor.h"
#include "agent/monitors/cpu_monitor.h"
#include "agent/monitors/disk_volume_monitor.h"
#include "agent/monitors/file_monitor.h"
#include "agent/monitors/memory_monitor.h"
#include "agent/monitors/process_monitor.h"

namespace nvmonit {

namespace {

// How long switching monitors off waits for their threads, in all, before
// it leaves them to end on their own (a backup copy or a service start
// under way finishes first).
constexpr int kStopWaitMs = 2000;

// Runs m with s when it is running; made and started when on and missing.
// A monitor that cannot start (no thread to be had) is dropped; the next
// Apply tries again.
template <class M>
void KeepOn(std::unique_ptr<M>& m, const MonitorSettings& s) {
    if (m) {
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
    // Now without a bound: the agent is ending.
    m_retired.clear();
}

template <class M>
void MonitorSupervisor::AskStop(std::unique_ptr<M>& m, bool off) {
    if (off && m) {
        m->RequestStop();
        m_stopping.push_back(std::move(m));
    }
}

// Asks the monitors of off to stop, then waits for them kStopWaitMs in all;
// those still running are kept aside and dropped once they have ended.
void MonitorSupervisor::StopLocked(const RunningMonitors& off) {
    AskStop(m_file, off.bFile);
    AskStop(m_process, off.bProcess);
    AskStop(m_cpu, off.bCpu);
    AskStop(m_memory, off.bMemory);
    AskStop(m_volume, off.bVolume);
    AskStop(m_backup, off.bBackup);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kStopWaitMs);
    for (auto& m : m_stopping) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                        deadline - std::chrono::steady_clock::now())
                        .count();
        if (m->WaitStopped(left > 0 ? static_cast<int>(left) : 0))
            m.reset();
        else
            m_retired.push_back(std::move(m));
    }
    m_stopping.clear();
    for (auto it = m_retired.begin(); it != m_retired.end();) {
        if ((*it)->WaitStopped(0))
            it = m_retired.erase(it);
        else
            ++it;
    }
}

void MonitorSupervisor::Apply(const MonitorSettings& given) {
    MonitorSettings s = given;
    SwitchOffEmptyLists(s);
    std::lock_guard<std::mutex> lock(m_mutex);
    // A new data directory or report bound means new report files: restart.
    bool reset =
        s.sDataDir != m_settings.sDataDir || s.llReportMaxBytes != m_settings.llReportMaxBytes;
    RunningMonitors off;
    off.bFile = reset || !s.bFileOn;
    off.bProcess = reset || !s.bProcessOn;
    off.bCpu = reset || !s.bCpuOn;
    off.bMemory = reset || !s.bMemoryOn;
    off.bVolume = reset || !s.bVolumeOn;
    off.bBackup = reset || !s.bBackupOn;
    StopLocked(off);
    m_settings = s;
    if (s.bFileOn)
        KeepOn(m_file, s);
    if (s.bProcessOn)
        KeepOn(m_process, s);
    if (s.bCpuOn)
        KeepOn(m_cpu, s);
    if (s.bMemoryOn)
        KeepOn(m_memory, s);
    if (s.bVolumeOn)
        KeepOn(m_volume, s);
    if (s.bBackupOn)
        KeepOn(m_backup, s);
}

void MonitorSupervisor::StopAll() {
    std::lock_guard<std::mutex> lock(m_mutex);
    RunningMonitors all;
    all.bFile = all.bProcess = all.bCpu = all.bMemory = all.bVolume = all.bBackup = true;
    StopLocked(all);
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
