// Report lines: time-stamped, appended with one write each so that lines of
// concurrent writers never interleave, and rotated by rename.
#include "agent/monitors/report_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "agent/monitors/trusted_path.h"

namespace nvmonit {

std::string TimeStamp() {
    time_t now = time(nullptr);
    struct tm tmv {};
    localtime_r(&now, &tmv);
    char buf[32];
    strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tmv);
    return buf;
}

ReportFile::ReportFile(std::string path, long long maxBytes)
    : m_path(std::move(path)), m_maxBytes(maxBytes) {}

uint64_t ReportFile::Dropped() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_dropped;
}

void ReportFile::Write(const std::string& text) {
    std::string line = TimeStamp() + " " + text;
    for (char& c : line) {
        if (c == '\n' || c == '\r')
            c = ' ';
    }
    line += '\n';

    std::lock_guard<std::mutex> lock(m_mutex);
    // Reached through trusted directories only, never through a link.
    std::string dir, name, why;
    Fd dirFd;
    if (SplitPath(m_path, dir, name))
        dirFd = OpenTrustedDir(dir, true, why);
    if (!dirFd.Ok()) {
        ++m_dropped;
        return;
    }
    struct stat st {};
    if (fstatat(dirFd.Get(), name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 &&
        st.st_size + static_cast<long long>(line.size()) > m_maxBytes) {
        renameat(dirFd.Get(), name.c_str(), dirFd.Get(), (name + ".1").c_str());
    }
    int fd = openat(dirFd.Get(), name.c_str(),
                    O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (fd < 0) {
        ++m_dropped;
        return;
    }
    // A file made by someone else keeps no wider access than the reports'.
    fchmod(fd, 0600);
    ssize_t n = write(fd, line.data(), line.size());
    if (n != static_cast<ssize_t>(line.size())) {
        ++m_dropped;
        // Half a line would glue onto the next one: cut it off again.
        if (n > 0 && fstat(fd, &st) == 0 && ftruncate(fd, st.st_size - n) != 0) {
            // Nothing more can be done on a failing disk: the half line stays.
        }
    }
    close(fd);
}

}  // namespace nvmonit
