// Size-triggered backups: copy (sparse), catch up, truncate in place, keep a
// bounded number of copies, back off after failures.
#include "agent/monitors/backup_monitor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <random>
#include <vector>

#include "agent/monitors/trusted_path.h"

namespace nvmonit {

namespace {

std::string FileTimeTag() {
    time_t now = time(nullptr);
    struct tm tmv {};
    localtime_r(&now, &tmv);
    char buf[32];
    strftime(buf, sizeof buf, "%Y%m%d-%H%M%S", &tmv);
    return buf;
}

bool WriteAllAt(int fd, const char* p, size_t n, off_t at) {
    while (n > 0) {
        ssize_t w = pwrite(fd, p, n, at);
        if (w < 0 && errno == EINTR)
            continue;
        if (w <= 0)
            return false;
        p += w;
        n -= static_cast<size_t>(w);
        at += w;
    }
    return true;
}

// Copies in's bytes [from, end) to the same offsets of out; false with
// errno on an error.
bool CopyBytes(int in, int out, long long from, long long end) {
    char buf[1 << 16];
    while (from < end) {
        size_t want = static_cast<size_t>(std::min<long long>(sizeof buf, end - from));
        ssize_t n = pread(in, buf, want, from);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return false;
        if (n == 0)
            return true;  // cut short by someone else
        if (!WriteAllAt(out, buf, static_cast<size_t>(n), from))
            return false;
        from += n;
    }
    return true;
}

// Copies the data of in between `from` and `end` (the size seen before)
// to the same offsets of out, skipping holes; from becomes end.
bool CopySparse(int in, int out, long long& from, long long end) {
    while (from < end) {
        off_t data = lseek(in, from, SEEK_DATA);
        if (data < 0 && errno == ENXIO)
            break;  // only a hole is left
        if (data < 0) {
            // A file system without hole reports: copy everything.
            if (!CopyBytes(in, out, from, end))
                return false;
            break;
        }
        if (data >= end)
            break;
        off_t hole = lseek(in, data, SEEK_HOLE);
        long long stop = hole < 0 ? end : std::min<long long>(hole, end);
        if (!CopyBytes(in, out, data, stop))
            return false;
        from = stop;
    }
    from = end;
    return true;
}

// Copies what in holds past `copied` to out, again until a look finds
// nothing new (bounded, for a writer faster than the copy); st is in's
// last status.
bool CatchUp(int in, int out, long long& copied, struct stat& st) {
    for (int round = 0; round < 100; ++round) {
        if (fstat(in, &st) != 0)
            return false;
        if (st.st_size <= copied)
            return true;
        if (!CopySparse(in, out, copied, st.st_size))
            return false;
    }
    return true;
}

// Gives the hidden copy its name, base or base-N, never over an existing
// entry: renameat2 with RENAME_NOREPLACE, or a hard link where the file
// system lacks it. target is the name taken.
bool NameCopy(int dirFd, const std::string& partial, const std::string& base, std::string& target) {
    for (int i = 0; i < 1000; ++i) {
        target = i == 0 ? base : base + "-" + std::to_string(i);
        int rc = renameat2(dirFd, partial.c_str(), dirFd, target.c_str(), RENAME_NOREPLACE);
        if (rc != 0 && errno == EINVAL) {
            rc = linkat(dirFd, partial.c_str(), dirFd, target.c_str(), 0);
            if (rc == 0)
                unlinkat(dirFd, partial.c_str(), 0);
        }
        if (rc == 0)
            return true;
        if (errno != EEXIST)
            break;
    }
    target.clear();
    return false;
}

// A hidden name for the copy being written.
std::string PartialName(const std::string& name) {
    static std::mt19937_64 gen{std::random_device{}()};
    char tag[20];
    snprintf(tag, sizeof tag, "%08llx", static_cast<unsigned long long>(gen() & 0xffffffffULL));
    return "." + name + ".partial-" + tag;
}

// Whether entry is named like a copy of name: <name>.<8 digits>-<6
// digits>[-N].
bool IsCopyName(const std::string& entry, const std::string& name) {
    std::string prefix = name + ".";
    if (entry.compare(0, prefix.size(), prefix) != 0)
        return false;
    std::string rest = entry.substr(prefix.size());
    if (rest.size() < 15 || rest[8] != '-')
        return false;
    for (size_t i = 0; i < 15; ++i) {
        if (i != 8 && (rest[i] < '0' || rest[i] > '9'))
            return false;
    }
    if (rest.size() > 15) {
        if (rest[15] != '-' || rest.size() == 16 || rest.size() > 25)
            return false;
        for (size_t i = 16; i < rest.size(); ++i) {
            if (rest[i] < '0' || rest[i] > '9')
                return false;
        }
    }
    return true;
}

// Removes the oldest of the agent's copies of name beyond `keep`, and
// partial copies a crash left behind.
void PruneCopies(int dirFd, const std::string& name, size_t keep) {
    int fd = dup(dirFd);
    if (fd < 0)
        return;
    DIR* d = fdopendir(fd);
    if (d == nullptr) {
        close(fd);
        return;
    }
    // The duplicate shares the directory's read position: start over.
    rewinddir(d);
    // By age: modification time, then name.
    std::vector<std::pair<std::pair<long long, long long>, std::string>> copies;
    std::vector<std::string> partials;
    std::string partialPrefix = "." + name + ".partial-";
    while (struct dirent* e = readdir(d)) {
        std::string entry = e->d_name;
        bool partial = entry.compare(0, partialPrefix.size(), partialPrefix) == 0;
        if (!partial && !IsCopyName(entry, name))
            continue;
        struct stat st {};
        if (fstatat(dirFd, entry.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(st.st_mode) ||
            st.st_uid != geteuid()) {
            continue;
        }
        if (partial)
            partials.push_back(entry);
        else
            copies.push_back({{static_cast<long long>(st.st_mtim.tv_sec),
                               static_cast<long long>(st.st_mtim.tv_nsec)},
                              entry});
    }
    closedir(d);
    for (const std::string& p : partials)
        unlinkat(dirFd, p.c_str(), 0);
    if (copies.size() <= keep)
        return;
    std::sort(copies.begin(), copies.end());
    for (size_t i = 0; i + keep < copies.size(); ++i)
        unlinkat(dirFd, copies[i].second.c_str(), 0);
}

std::string Errno(const std::string& what) {
    return what + ": " + strerror(errno);
}

}  // namespace

long long FileSizeBytes(const std::string& path) {
    struct stat st {};
    if (lstat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        return kSizeMissing;
    return static_cast<long long>(st.st_size);
}

BackupResult BackUpAndEmpty(const std::string& file, const std::string& dirGiven) {
    BackupResult r;
    std::string fileDir, name;
    if (!SplitPath(file, fileDir, name)) {
        r.sError = file + " is not an absolute path of a file without \".\" and \"..\"";
        return r;
    }
    if (IsKernelPath(file) || IsKernelPath(dirGiven)) {
        r.sError = "paths under /proc, /sys and /dev are not backed up";
        return r;
    }
    std::string dir = NormalPath(dirGiven);
    Fd srcDir = OpenTrustedDir(fileDir, false, r.sError);
    if (!srcDir.Ok())
        return r;
    // Opened for writing from the start so that the truncation follows the
    // last copy without an open in between; never blocking (a FIFO).
    Fd in(openat(srcDir.Get(), name.c_str(),
                 O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!in.Ok()) {
        r.sError = errno == ELOOP ? file + " is a symbolic link" : Errno("cannot open the file");
        return r;
    }
    struct stat st {};
    if (fstat(in.Get(), &st) != 0) {
        r.sError = Errno("cannot read the file");
        return r;
    }
    if (!S_ISREG(st.st_mode) || OnKernelFs(in.Get())) {
        r.sError = file + " is not a regular file";
        return r;
    }
    std::string why;
    Fd outDir = OpenTrustedDir(dir, true, why);
    if (!outDir.Ok()) {
        r.sError = why.rfind("cannot create", 0) == 0 ? why : "cannot use " + dir + ": " + why;
        return r;
    }
    if (OnKernelFs(outDir.Get())) {
        r.sError = dir + " is on a kernel file system";
        return r;
    }
    PruneCopies(outDir.Get(), name, kBackupCopiesKept);
    struct statvfs vs {};
    long long need = static_cast<long long>(st.st_blocks) * 512;
    if (fstatvfs(outDir.Get(), &vs) == 0) {
        long long room = static_cast<long long>(vs.f_bavail) *
                         static_cast<long long>(vs.f_frsize ? vs.f_frsize : vs.f_bsize);
        if (room < need) {
            r.sError = "not enough room in " + dir + ": " + std::to_string(need / 1024) +
                       " KB needed, " + std::to_string(room / 1024) + " KB free";
            return r;
        }
    }
    std::string partial;
    Fd out;
    for (int i = 0; i < 100 && !out.Ok(); ++i) {
        partial = PartialName(name);
        out = Fd(openat(outDir.Get(), partial.c_str(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!out.Ok() && errno != EEXIST)
            break;
    }
    if (!out.Ok()) {
        r.sError = Errno("cannot create a copy in " + dir);
        return r;
    }
    long long copied = 0;
    bool ok = CatchUp(in.Get(), out.Get(), copied, st) && fchmod(out.Get(), st.st_mode & 0777) == 0;
    std::string target;
    if (ok && !NameCopy(outDir.Get(), partial, name + "." + FileTimeTag(), target)) {
        r.sError = Errno("the copy could not be named");
        unlinkat(outDir.Get(), partial.c_str(), 0);
        return r;
    }
    // What was appended while the copy was named goes into it too; the
    // copy gets the file's length (a trailing hole) and is on the disk
    // before the file is emptied.
    ok = ok && CatchUp(in.Get(), out.Get(), copied, st) && ftruncate(out.Get(), copied) == 0 &&
         fsync(out.Get()) == 0 && ftruncate(in.Get(), 0) == 0;
    if (!ok) {
        r.sError = Errno("copy failed");
        unlinkat(outDir.Get(), (target.empty() ? partial : target).c_str(), 0);
        return r;
    }
    r.bDone = true;
    r.llCopiedBytes = copied;
    r.sBackupPath = (dir == "/" ? "" : dir) + "/" + target;
    PruneCopies(outDir.Get(), name, kBackupCopiesKept);
    return r;
}

int BackoffDelayMs(int intervalMs, int failures) {
    long long intervals = 1;
    for (int i = 0; i < failures && intervals < kBackupMaxBackoffIntervals; ++i)
        intervals *= 2;
    intervals = std::min<long long>(intervals, kBackupMaxBackoffIntervals);
    return static_cast<int>(std::min<long long>(intervals * intervalMs, 24LL * 3600 * 1000));
}

BackupMonitor::BackupMonitor(const MonitorSettings& s)
    : PeriodicMonitor(s, kBackupReport, kBackupIntervalMs) {}

BackupMonitor::~BackupMonitor() {
    Stop();
}

void BackupMonitor::Failed(const BackupEntry& e, const std::string& why, Attempts& a,
                           int intervalMs) {
    // One line per run of failures, not one per attempt (a full disk).
    if (a.iFailures == 0)
        m_report.Write(e.sFile + ": backup to " + e.sBackupDir + " failed: " + why);
    ++a.iFailures;
    a.next = std::chrono::steady_clock::now() +
             std::chrono::milliseconds(BackoffDelayMs(intervalMs, a.iFailures));
}

void BackupMonitor::Tick(const MonitorSettings& s, bool changed) {
    // Changed settings are tried at once.
    if (changed)
        m_attempts.clear();
    int intervalMs = IntervalMs(s, kBackupIntervalMs);
    auto now = std::chrono::steady_clock::now();
    for (const BackupEntry& e : s.vBackups) {
        Attempts& a = m_attempts[e.sFile];
        if (a.iFailures > 0 && now < a.next)
            continue;
        std::string f = e.sFile;
        std::optional<long long> size = m_sizes.Run(
            f, [f] { return FileSizeBytes(f); }, kProbeAnswerTime);
        if (!size) {
            Failed(e, "no answer from its file system", a, intervalMs);
            continue;
        }
        if (*size < 0 || e.llLimitKb <= 0 || *size <= e.llLimitKb * 1024)
            continue;
        BackupResult r = BackUpAndEmpty(e.sFile, e.sBackupDir);
        if (!r.bDone) {
            Failed(e, r.sError, a, intervalMs);
            continue;
        }
        std::string after;
        if (a.iFailures > 0)
            after = " after " + std::to_string(a.iFailures) + " failed attempts";
        m_report.Write(e.sFile + " (" + std::to_string(r.llCopiedBytes / 1024) + " KB, limit " +
                       std::to_string(e.llLimitKb) + " KB) backed up to " + r.sBackupPath +
                       " and emptied" + after + (r.sError.empty() ? "" : " (" + r.sError + ")"));
        a = Attempts();
    }
}

}  // namespace nvmonit
