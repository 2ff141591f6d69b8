// Report lines: time-stamped, appended with one write each so that lines of
// concurrent writers never interleave, and rotated by rename.
#include "agent/monitors/report_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace nvmonit {

std::string TimeStamp() {
    time_t now = time(nullptr);
    struct tm tmv {};
    localtime_r(&now, &tmv);
    char buf[32];
    strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tmv);
    return buf;
}

bool MakeDirs(const std::string& dir) {
    struct stat st {};
    if (stat(dir.c_str(), &st) == 0)
        return S_ISDIR(st.st_mode);
    size_t slash = dir.find_last_of('/');
    if (slash != std::string::npos && slash > 0 && !MakeDirs(dir.substr(0, slash)))
        return false;
    return mkdir(dir.c_str(), 0700) == 0 || errno == EEXIST;
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
    size_t slash = m_path.find_last_of('/');
    if (slash != std::string::npos && slash > 0)
        MakeDirs(m_path.substr(0, slash));
    struct stat st {};
    if (stat(m_path.c_str(), &st) == 0 &&
        st.st_size + static_cast<long long>(line.size()) > m_maxBytes) {
        rename(m_path.c_str(), (m_path + ".1").c_str());
    }
    int fd = open(m_path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
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
