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
#ifndef NV_AGENT_MONITORS_FILE_MONITOR_H
#define NV_AGENT_MONITORS_FILE_MONITOR_H

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "agent/monitors/monitor_settings.h"
#include "agent/monitors/report_file.h"

namespace nvmonit {

class FileMonitor {
public:
    explicit FileMonitor(const MonitorSettings& s);
    ~FileMonitor();
    FileMonitor(const FileMonitor&) = delete;
    FileMonitor& operator=(const FileMonitor&) = delete;

    // Starts watching; false when inotify is not available (reported).
    bool Start();
    void Stop();
    // A new list, applied at once.
    void Configure(const MonitorSettings& s);

private:
    void Run();
    void TakeSettings();
    void Plan(std::map<std::string, uint32_t>& want, std::map<std::string, bool>& exists) const;
    void Watch(const std::map<std::string, uint32_t>& want);
    void Reconcile(bool report);
    void ReadEvents();
    void Report(const std::string& kind, const std::string& path);

    ReportFile m_report;
    int m_fd = -1;
    int m_wakeFd = -1;
    std::thread m_thread;

    std::mutex m_mutex;  // guards the two fields below
    std::vector<std::string> m_pendingPaths;
    bool m_stop = false;

    // Owned by the thread.
    std::vector<std::string> m_paths;
    std::map<int, std::string> m_wdPath;
    std::map<std::string, bool> m_exists;
    std::map<std::string, std::chrono::steady_clock::time_point> m_burst;
    std::set<std::string> m_failed;  // directories that could not be watched
    std::set<std::string> m_batch;   // "<kind> <path>" reported in this batch
};

}  // namespace nvmonit

#endif
