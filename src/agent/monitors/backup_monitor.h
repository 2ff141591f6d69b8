// The backup monitor: a listed file that has grown past its limit is copied
// into its backup directory under a name carrying the time, then emptied in
// place, so that a program writing to it keeps its descriptor and goes on
// appending.
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

#include <map>
#include <string>

#include "agent/monitors/periodic_monitor.h"

namespace nvmonit {

// The size of a file in bytes, or -1 when it cannot be read.
long long FileSizeBytes(const std::string& path);

struct BackupResult {
    bool bDone = false;
    std::string sBackupPath;  // where the copy went
    long long llCopiedBytes = 0;
    std::string sError;
};

// Copies file into dir (created when missing) as <name>.<YYYYmmdd-HHMMSS>
// (with a "-N" suffix when that exists) and empties the original.
BackupResult BackUpAndEmpty(const std::string& file, const std::string& dir);

class BackupMonitor : public PeriodicMonitor {
public:
    explicit BackupMonitor(const MonitorSettings& s);
    ~BackupMonitor() override;

protected:
    void Tick(const MonitorSettings& s, bool changed) override;

private:
    std::map<std::string, bool> m_failing;  // by file: the last attempt failed
};

}  // namespace nvmonit

#endif
