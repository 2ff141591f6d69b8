// The file monitor: each listed path is watched with inotify through its
// parent directory (so that a file replaced by a rename, as editors save,
// is still seen), and a listed directory also for its direct children, not
// deeper. A path that does not exist yet is watched from its nearest
// existing ancestor and picked up when it appears. Creation, modification,
// deletion, moves and attribute changes are reported, one line each:
// "<time> <event> <path>". Modifications are reported once per burst of
// writes: again after the writer closes the file, or a minute later.
//
// Writes made to a listed file through a hard link in another directory are
// not seen, since the events come from the parent directory's watch.
//
// Other users can make events as fast as the machine allows in a listed
// world-writable directory, so the monitor is bounded: the agent's own
// report files (the monitors' reports in the monit folder, wherever the list
// reaches them) are never reported on, since each line written would be an
// event again; one wake-up reads at most kReadsPerWake buffers of events
// before the thread looks at its stop and settings again; lines are
// rate-limited per directory (report_rate.h: kDirLinesPerWindow lines per
// directory and kBytesPerWindow bytes in all per kRateWindow, then "N more
// events in DIR"); and what is kept per file (the bursts of writes) is
// pruned and capped at kMaxBursts, so memory does not grow with the number
// of other users' files.
#ifndef NV_AGENT_MONITORS_FILE_MONITOR_H
#define NV_AGENT_MONITORS_FILE_MONITOR_H

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "agent/monitors/monitor_settings.h"
#include "agent/monitors/monitor_thread.h"
#include "agent/monitors/report_file.h"
#include "agent/monitors/report_rate.h"

namespace nvmonit {

constexpr int kReadsPerWake = 4;
constexpr auto kRateWindow = std::chrono::seconds(10);
constexpr int kDirLinesPerWindow = 20;
constexpr size_t kBytesPerWindow = 20 * 1024;
constexpr size_t kMaxBursts = 4096;

class FileMonitor : public StoppableMonitor {
public:
    explicit FileMonitor(const MonitorSettings& s);
    ~FileMonitor() override;
    FileMonitor(const FileMonitor&) = delete;
    FileMonitor& operator=(const FileMonitor&) = delete;

    // Starts watching; false when inotify is not available (reported).
    bool Start();
    void Stop();
    void RequestStop() override;
    bool WaitStopped(int ms) override;
    // A new list, applied at once.
    void Configure(const MonitorSettings& s);

private:
    void Run();
    void TakeSettings();
    void Plan(std::map<std::string, uint32_t>& want, std::map<std::string, bool>& exists) const;
    void Watch(const std::map<std::string, uint32_t>& want);
    void Reconcile(bool report);
    void ReadEvents();
    void Report(const std::string& kind, const std::string& path, const std::string& dir);
    void WriteLimited(const std::string& line, const std::string& dir);
    void WriteSummaries();
    bool IsOwnReport(const std::string& dir, const std::string& name) const;
    void PruneBursts(std::chrono::steady_clock::time_point now);

    ReportFile m_report;
    std::string m_monitDir;
    int m_fd = -1;
    int m_wakeFd = -1;
    MonitorThread m_thread;
    std::atomic<bool> m_stop{false};

    std::mutex m_mutex;  // guards the field below
    std::vector<std::string> m_pendingPaths;

    // Owned by the thread.
    std::vector<std::string> m_paths;
    std::map<int, std::string> m_wdPath;
    std::set<int> m_wdOwn;  // watches of the reports' own directory
    dev_t m_monitDev = 0;
    ino_t m_monitIno = 0;
    ReportRate m_rate{kRateWindow, kDirLinesPerWindow, kBytesPerWindow};
    std::chrono::steady_clock::time_point m_lastOverflow;
    std::map<std::string, bool> m_exists;
    std::map<std::string, std::chrono::steady_clock::time_point> m_burst;
    std::set<std::string> m_failed;  // directories that could not be watched
    std::set<std::string> m_batch;   // "<kind> <path>" reported in this batch
};

}  // namespace nvmonit

#endif
