// inotify watches, kept in step with the listed paths, and their events.
#include "agent/monitors/file_monitor.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "agent/monitors/trusted_path.h"

namespace nvmonit {

namespace {

constexpr uint32_t kEntryMask =
    IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF;
constexpr uint32_t kChildMask = kEntryMask | IN_MODIFY | IN_ATTRIB | IN_CLOSE_WRITE;
constexpr auto kModifyRepeat = std::chrono::seconds(60);
constexpr int kReconcileRounds = 8;

std::string Normalize(std::string p) {
    while (p.size() > 1 && p.back() == '/')
        p.pop_back();
    return p;
}

std::string Parent(const std::string& p) {
    size_t slash = p.find_last_of('/');
    if (slash == std::string::npos || slash == 0)
        return "/";
    return p.substr(0, slash);
}

bool IsDir(const std::string& p) {
    struct stat st {};
    return stat(p.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool Exists(const std::string& p) {
    struct stat st {};
    return stat(p.c_str(), &st) == 0;
}

}  // namespace

FileMonitor::FileMonitor(const MonitorSettings& s)
    : m_report(MonitDir(s) + "/" + kFileReport, s.llReportMaxBytes), m_monitDir(MonitDir(s)) {
    for (const std::string& p : s.vFiles)
        m_pendingPaths.push_back(Normalize(p));
}

FileMonitor::~FileMonitor() {
    Stop();
}

bool FileMonitor::Start() {
    if (m_thread.Started())
        return true;
    // The reports' folder, known by device and inode however a listed path
    // spells it.
    std::string why;
    Fd monitDir = OpenTrustedDir(m_monitDir, true, why);
    struct stat st {};
    if (monitDir.Ok() && fstat(monitDir.Get(), &st) == 0) {
        m_monitDev = st.st_dev;
        m_monitIno = st.st_ino;
    }
    m_fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    m_wakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (m_fd < 0 || m_wakeFd < 0) {
        m_report.Write(std::string("file monitor cannot start: ") + strerror(errno));
        if (m_fd >= 0)
            close(m_fd);
        if (m_wakeFd >= 0)
            close(m_wakeFd);
        m_fd = m_wakeFd = -1;
        return false;
    }
    m_paths = m_pendingPaths;
    Reconcile(false);
    std::string err;
    if (!m_thread.Start([this] { Run(); }, err)) {
        m_report.Write("file monitor cannot start: " + err);
        close(m_fd);
        close(m_wakeFd);
        m_fd = m_wakeFd = -1;
        return false;
    }
    return true;
}

void FileMonitor::RequestStop() {
    m_stop = true;
    if (m_wakeFd >= 0) {
        uint64_t one = 1;
        ssize_t w = write(m_wakeFd, &one, sizeof one);
        (void)w;  // a full counter already wakes the thread
    }
}

bool FileMonitor::WaitStopped(int ms) {
    return m_thread.WaitDone(ms);
}

void FileMonitor::Stop() {
    RequestStop();
    m_thread.Join();
    if (m_fd >= 0)
        close(m_fd);
    if (m_wakeFd >= 0)
        close(m_wakeFd);
    m_fd = m_wakeFd = -1;
}

void FileMonitor::Configure(const MonitorSettings& s) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_pendingPaths.clear();
        for (const std::string& p : s.vFiles)
            m_pendingPaths.push_back(Normalize(p));
    }
    if (m_wakeFd >= 0) {
        uint64_t one = 1;
        ssize_t w = write(m_wakeFd, &one, sizeof one);
        (void)w;  // a full counter already wakes the thread
    }
}

void FileMonitor::Run() {
    while (!m_stop) {
        struct pollfd p[2] = {{m_fd, POLLIN, 0}, {m_wakeFd, POLLIN, 0}};
        if (poll(p, 2, m_rate.MsUntilDue(std::chrono::steady_clock::now())) < 0 && errno != EINTR)
            break;
        if (m_stop)
            break;
        if (p[1].revents & POLLIN) {
            uint64_t n = 0;
            ssize_t r = read(m_wakeFd, &n, sizeof n);
            (void)r;  // only the wake-up counts
            TakeSettings();
        }
        if (p[0].revents & POLLIN)
            ReadEvents();
        WriteSummaries();
    }
}

void FileMonitor::TakeSettings() {
    std::vector<std::string> paths;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        paths = m_pendingPaths;
    }
    if (paths == m_paths)
        return;
    // Paths new to the list start from what exists now, unreported.
    for (const std::string& p : paths) {
        if (m_exists.count(p) == 0)
            m_exists[p] = Exists(p);
    }
    m_paths = paths;
    Reconcile(false);
}

// What to watch for the listed paths as they are now: each existing path's
// parent (and the path itself when it is a directory), else the nearest
// existing ancestor, to see the path appear; and which paths exist.
void FileMonitor::Plan(std::map<std::string, uint32_t>& want,
                       std::map<std::string, bool>& exists) const {
    want.clear();
    exists.clear();
    for (const std::string& p : m_paths) {
        if (p.empty() || p[0] != '/')
            continue;  // the agent accepts absolute paths only
        bool here = Exists(p);
        exists[p] = here;
        if (here) {
            if (IsDir(p))
                want[p] |= kChildMask;
            want[Parent(p)] |= kChildMask;
        } else {
            std::string a = Parent(p);
            while (a != "/" && !IsDir(a))
                a = Parent(a);
            want[a] |= kEntryMask;
        }
    }
}

// Sets exactly the watches of want, dropping the others.
void FileMonitor::Watch(const std::map<std::string, uint32_t>& want) {
    std::map<int, std::string> next;
    std::set<int> own;
    std::set<std::string> failed;
    for (const auto& kv : want) {
        int wd = inotify_add_watch(m_fd, kv.first.c_str(), kv.second);
        if (wd >= 0) {
            next[wd] = kv.first;
            struct stat st {};
            if (stat(kv.first.c_str(), &st) == 0 && st.st_dev == m_monitDev &&
                st.st_ino == m_monitIno) {
                own.insert(wd);
            }
            continue;
        }
        // Out of watches (fs.inotify.max_user_watches) or no access: said
        // once, tried again at the next change.
        failed.insert(kv.first);
        if (m_failed.count(kv.first) == 0)
            WriteLimited("cannot watch " + kv.first + ": " + strerror(errno), kv.first);
    }
    m_failed.swap(failed);
    for (const auto& kv : m_wdPath) {
        if (next.count(kv.first) == 0)
            inotify_rm_watch(m_fd, kv.first);
    }
    m_wdPath.swap(next);
    m_wdOwn.swap(own);
}

void FileMonitor::Reconcile(bool report) {
    std::map<std::string, uint32_t> want;
    std::map<std::string, bool> exists;
    Plan(want, exists);
    // What appears between the look and the watch sends no event to the
    // watch: look again once the watches are set, until nothing moved (a
    // directory made inside a directory just made, say), a few rounds at most.
    for (int round = 1;; ++round) {
        Watch(want);
        std::map<std::string, uint32_t> nowWant;
        std::map<std::string, bool> nowExists;
        Plan(nowWant, nowExists);
        if ((nowWant == want && nowExists == exists) || round == kReconcileRounds)
            break;
        want.swap(nowWant);
        exists.swap(nowExists);
    }
    for (const auto& kv : exists) {
        auto it = m_exists.find(kv.first);
        bool before = it != m_exists.end() && it->second;
        // Changes the events did not tell (a path made with its parents in
        // one go, or events lost) are reported from what is there now.
        if (report && it != m_exists.end() && before != kv.second &&
            !IsOwnReport(Parent(kv.first), kv.first.substr(kv.first.find_last_of('/') + 1))) {
            std::string line = std::string(kv.second ? "created" : "deleted") + " " + kv.first;
            if (m_batch.count(line) == 0 &&
                m_batch.count(std::string(kv.second ? "moved here" : "moved away") + " " +
                              kv.first) == 0) {
                Report(kv.second ? "created" : "deleted", kv.first, Parent(kv.first));
            }
        }
    }
    m_exists.swap(exists);
}

bool FileMonitor::IsOwnReport(const std::string& dir, const std::string& name) const {
    if (!IsReportName(name))
        return false;
    struct stat st {};
    return stat(dir.c_str(), &st) == 0 && st.st_dev == m_monitDev && st.st_ino == m_monitIno;
}

void FileMonitor::Report(const std::string& kind, const std::string& path, const std::string& dir) {
    std::string line = kind + " " + path;
    if (kind == "modified") {
        auto now = std::chrono::steady_clock::now();
        auto it = m_burst.find(path);
        if (it != m_burst.end() && now - it->second < kModifyRepeat)
            return;
        if (m_burst.size() >= kMaxBursts)
            PruneBursts(now);
        m_burst[path] = now;
    } else if (m_batch.count(line) != 0) {
        return;
    }
    m_batch.insert(line);
    WriteLimited(line, dir);
}

// Bursts older than the repeat time no longer hold a line back; when every
// one is younger (a flood of writers), all are forgotten: a repeated
// "modified" line is the price, and the rate limit bounds it.
void FileMonitor::PruneBursts(std::chrono::steady_clock::time_point now) {
    for (auto it = m_burst.begin(); it != m_burst.end();) {
        if (now - it->second >= kModifyRepeat)
            it = m_burst.erase(it);
        else
            ++it;
    }
    if (m_burst.size() >= kMaxBursts)
        std::map<std::string, std::chrono::steady_clock::time_point>().swap(m_burst);
}

void FileMonitor::WriteLimited(const std::string& line, const std::string& dir) {
    if (m_rate.Allow(dir, line.size() + 21, std::chrono::steady_clock::now()))
        m_report.Write(line);
}

void FileMonitor::WriteSummaries() {
    for (const std::string& line : m_rate.Due(std::chrono::steady_clock::now()))
        m_report.Write(line);
}

void FileMonitor::ReadEvents() {
    alignas(struct inotify_event) char buf[64 * 1024];
    bool reconcile = false;
    // A bounded share per wake-up: the thread then looks at its stop and
    // settings again, and the batch's memory stays small.
    std::set<std::string>().swap(m_batch);
    for (int reads = 0; reads < kReadsPerWake; ++reads) {
        ssize_t n = read(m_fd, buf, sizeof buf);
        if (n <= 0)
            break;
        for (char* ptr = buf; ptr < buf + n;) {
            const struct inotify_event* ev = reinterpret_cast<const struct inotify_event*>(ptr);
            ptr += sizeof(struct inotify_event) + ev->len;
            if (ev->mask & IN_Q_OVERFLOW) {
                // Said at most once a rate window: a flood overflows often.
                auto now = std::chrono::steady_clock::now();
                if (now - m_lastOverflow >= kRateWindow) {
                    m_lastOverflow = now;
                    m_report.Write("events were lost (queue overflow); watching again");
                }
                reconcile = true;
                continue;
            }
            auto wit = m_wdPath.find(ev->wd);
            if (ev->mask & IN_IGNORED) {
                if (wit != m_wdPath.end())
                    m_wdPath.erase(wit);
                reconcile = true;
                continue;
            }
            if (wit == m_wdPath.end())
                continue;
            if (ev->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_CREATE | IN_DELETE | IN_MOVED_FROM |
                            IN_MOVED_TO)) {
                reconcile = true;
            }
            if (ev->len == 0 || ev->name[0] == '\0')
                continue;  // the directory's own events come from its parent
            const std::string& dir = wit->second;
            if (m_wdOwn.count(ev->wd) != 0 && IsReportName(ev->name))
                continue;  // each line written would be an event again
            std::string full = (dir == "/" ? "" : dir) + "/" + ev->name;
            bool wanted = false;
            for (const std::string& p : m_paths) {
                if (p == full || (p == dir && IsDir(p))) {
                    wanted = true;
                    break;
                }
            }
            if (!wanted)
                continue;
            if (ev->mask & IN_CLOSE_WRITE)
                m_burst.erase(full);
            const char* kind = nullptr;
            if (ev->mask & IN_CREATE)
                kind = "created";
            else if (ev->mask & IN_DELETE)
                kind = "deleted";
            else if (ev->mask & IN_MOVED_FROM)
                kind = "moved away";
            else if (ev->mask & IN_MOVED_TO)
                kind = "moved here";
            else if (ev->mask & IN_MODIFY)
                kind = "modified";
            else if (ev->mask & IN_ATTRIB)
                kind = "attributes changed";
            if (kind == nullptr)
                continue;
            if (ev->mask & (IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO))
                m_burst.erase(full);
            Report(kind, full, dir);
        }
    }
    if (reconcile)
        Reconcile(true);
}

}  // namespace nvmonit
