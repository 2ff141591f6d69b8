// Size-triggered backups: copy, catch up, truncate in place.
#include "agent/monitors/backup_monitor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "agent/monitors/report_file.h"

namespace nvmonit {

namespace {

std::string BaseName(const std::string& path) {
    size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string FileTimeTag() {
    time_t now = time(nullptr);
    struct tm tmv {};
    localtime_r(&now, &tmv);
    char buf[32];
    strftime(buf, sizeof buf, "%Y%m%d-%H%M%S", &tmv);
    return buf;
}

// Copies from in's offset `from` to its current end into out; false with
// errno on an error.
bool CopyTail(int in, int out, long long& from) {
    char buf[1 << 16];
    for (;;) {
        ssize_t n = pread(in, buf, sizeof buf, from);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (n == 0)
            return true;
        ssize_t off = 0;
        while (off < n) {
            ssize_t w = write(out, buf + off, static_cast<size_t>(n - off));
            if (w < 0) {
                if (errno == EINTR)
                    continue;
                return false;
            }
            off += w;
        }
        from += n;
    }
}

std::string Errno(const char* what) {
    return std::string(what) + ": " + strerror(errno);
}

}  // namespace

long long FileSizeBytes(const std::string& path) {
    struct stat st {};
    if (stat(path.c_str(), &st) != 0)
        return -1;
    return static_cast<long long>(st.st_size);
}

BackupResult BackUpAndEmpty(const std::string& file, const std::string& dir) {
    BackupResult r;
    if (!MakeDirs(dir)) {
        r.sError = Errno(("cannot create " + dir).c_str());
        return r;
    }
    // Opened for writing from the start so that the truncation follows the
    // last copy without an open in between.
    int in = open(file.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (in < 0) {
        r.sError = Errno("cannot open the file");
        return r;
    }
    struct stat st {};
    fstat(in, &st);
    std::string base = dir + "/" + BaseName(file) + "." + FileTimeTag();
    std::string target = base;
    for (int i = 1; access(target.c_str(), F_OK) == 0; ++i)
        target = base + "-" + std::to_string(i);
    std::string partial = target + ".partial";
    int out = open(partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, st.st_mode & 0777);
    if (out < 0) {
        r.sError = Errno(("cannot create " + partial).c_str());
        close(in);
        return r;
    }
    long long copied = 0;
    bool ok = CopyTail(in, out, copied);
    // Catch up with what the writer appended during the copy, until a check
    // finds nothing new (bounded, for a writer faster than the copy).
    for (int round = 0; ok && round < 100; ++round) {
        if (fstat(in, &st) != 0 || st.st_size <= copied)
            break;
        ok = CopyTail(in, out, copied);
    }
    if (ok && ftruncate(in, 0) != 0)
        ok = false;
    if (!ok) {
        r.sError = Errno("copy failed");
        close(out);
        unlink(partial.c_str());
        close(in);
        return r;
    }
    close(in);
    fsync(out);
    close(out);
    if (rename(partial.c_str(), target.c_str()) != 0) {
        r.sError = Errno("the copy could not be renamed");
        r.sBackupPath = partial;
        r.llCopiedBytes = copied;
        r.bDone = true;  // the data is safe under the partial name
        return r;
    }
    r.bDone = true;
    r.sBackupPath = target;
    r.llCopiedBytes = copied;
    return r;
}

BackupMonitor::BackupMonitor(const MonitorSettings& s)
    : PeriodicMonitor(s, kBackupReport, kBackupIntervalMs) {}

BackupMonitor::~BackupMonitor() {
    Stop();
}

void BackupMonitor::Tick(const MonitorSettings& s, bool /*changed*/) {
    for (const BackupEntry& e : s.vBackups) {
        long long size = FileSizeBytes(e.sFile);
        if (size < 0 || e.llLimitKb <= 0 || size <= e.llLimitKb * 1024)
            continue;
        BackupResult r = BackUpAndEmpty(e.sFile, e.sBackupDir);
        bool& failing = m_failing[e.sFile];
        if (r.bDone) {
            m_report.Write(e.sFile + " (" + std::to_string(r.llCopiedBytes / 1024) + " KB, limit " +
                           std::to_string(e.llLimitKb) + " KB) backed up to " + r.sBackupPath +
                           " and emptied" + (r.sError.empty() ? "" : " (" + r.sError + ")"));
            failing = false;
        } else if (!failing) {
            // One line per run of failures, not one per sample (a full disk).
            m_report.Write(e.sFile + ": backup to " + e.sBackupDir + " failed: " + r.sError);
            failing = true;
        }
    }
}

}  // namespace nvmonit
