// The backup monitor: a listed file that has grown past its limit is copied
// into its backup directory under a name carrying the time, then emptied in
// place, so that a program writing to it keeps its descriptor and goes on
// appending.
//
// Trust: the file and the backup directory are reached through directories
// no other user can change (trusted_path.h), never through a symbolic link;
// the copy is written as a hidden file in the backup directory the agent
// opened and checked, and given its name there without replacing anything.
// An entry whose path fails the rule is skipped with a report line.
//
// Bounds: only regular files are copied, never anything under /proc, /sys
// or /dev or on a kernel file system; holes of a sparse file stay holes in
// the copy; a copy needing more room than the backup directory's file
// system has free is not started; at most kBackupCopiesKept copies of a
// file are kept (of the agent's files named like its copies, the oldest by
// modification time go first);
// after a failed attempt the file is tried again after 2, 4, 8... sampling
// intervals, at most kBackupMaxBackoffIntervals, and the first success says
// how many attempts failed.
//
// Loss window: the copy catches up with bytes appended while it ran until
// the file stops growing, and the file is emptied right after that last
// check. Bytes a writer appends between that check and the truncation (a
// few microseconds, the time of one system call) are in neither the backup
// nor the emptied file. Writers that do not open the file with O_APPEND
// keep writing at their old offset after the truncation, which leaves a
// sparse file that starts with a hole; log writers append, so they do not.
#ifndef NV_AGENT_MONITORS_BACKUP_MONITOR_H
#define NV_AGENT_MONITORS_BACKUP_MONITOR_H

#include <chrono>
#include <map>
#include <string>

#include "agent/monitors/periodic_monitor.h"
#include "agent/monitors/timed_probe.h"

namespace nvmonit {

// Copies kept per backed-up file.
constexpr size_t kBackupCopiesKept = 64;
// The longest wait after failed attempts, in sampling intervals.
constexpr int kBackupMaxBackoffIntervals = 64;

// FileSizeBytes's answers besides a size.
constexpr long long kSizeMissing = -1;   // missing or unreadable
constexpr long long kSizeNoAnswer = -2;  // its file system did not answer in time

// The size of a file in bytes (a symbolic link is not followed), or
// kSizeMissing.
long long FileSizeBytes(const std::string& path);

struct BackupResult {
    bool bDone = false;
    std::string sBackupPath;  // where the copy went
    long long llCopiedBytes = 0;
    std::string sError;
};

// Copies file into dir (created when missing) as <name>.<YYYYmmdd-HHMMSS>
// (with a "-N" suffix when that exists), empties the original and removes
// the oldest copies beyond kBackupCopiesKept.
BackupResult BackUpAndEmpty(const std::string& file, const std::string& dir);

// The wait after `failures` failed attempts in a row.
int BackoffDelayMs(int intervalMs, int failures);

class BackupMonitor : public PeriodicMonitor {
public:
    explicit BackupMonitor(const MonitorSettings& s);
    ~BackupMonitor() override;

protected:
    void Tick(const MonitorSettings& s, bool changed) override;

private:
    struct Attempts {
        int iFailures = 0;  // in a row
        std::chrono::steady_clock::time_point next;
    };
    void Failed(const BackupEntry& e, const std::string& why, Attempts& a, int intervalMs);

    std::map<std::string, Attempts> m_attempts;  // by file
    TimedProbes<long long> m_sizes;
};

}  // namespace nvmonit

#endif
