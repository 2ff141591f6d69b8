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

namespace {

// The length of the valid UTF-8 sequence at s[i], or 0.
size_t Utf8Length(const std::string& s, size_t i) {
    const unsigned char c = static_cast<unsigned char>(s[i]);
    size_t n = 0;
    unsigned int cp = 0;
    if (c >= 0xc2 && c <= 0xdf) {
        n = 2;
        cp = c & 0x1f;
    } else if (c >= 0xe0 && c <= 0xef) {
        n = 3;
        cp = c & 0x0f;
    } else if (c >= 0xf0 && c <= 0xf4) {
        n = 4;
        cp = c & 0x07;
    } else {
        return 0;
    }
    if (i + n > s.size())
        return 0;
    for (size_t k = 1; k < n; ++k) {
        const unsigned char d = static_cast<unsigned char>(s[i + k]);
        if ((d & 0xc0) != 0x80)
            return 0;
        cp = (cp << 6) | (d & 0x3f);
    }
    // Overlong forms, surrogates and values past U+10FFFF are not UTF-8.
    static const unsigned int kMin[] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < kMin[n] || (cp >= 0xd800 && cp <= 0xdfff) || cp > 0x10ffff)
        return 0;
    return n;
}

void AppendHex(std::string& out, unsigned char c) {
    static const char kHex[] = "0123456789abcdef";
    out += "\\x";
    out += kHex[c >> 4];
    out += kHex[c & 0xf];
}

}  // namespace

std::string EscapeReportText(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == '\\') {
            out += "\\\\";
            ++i;
        } else if (c < 0x20 || c == 0x7f) {
            AppendHex(out, c);
            ++i;
        } else if (c < 0x80) {
            out += static_cast<char>(c);
            ++i;
        } else if (size_t n = Utf8Length(text, i); n == 0) {
            AppendHex(out, c);
            ++i;
        } else if (n == 2 && c == 0xc2 && static_cast<unsigned char>(text[i + 1]) < 0xa0) {
            // U+0080 to U+009F: the eight-bit control characters.
            AppendHex(out, c);
            AppendHex(out, static_cast<unsigned char>(text[i + 1]));
            i += 2;
        } else {
            out.append(text, i, n);
            i += n;
        }
    }
    return out;
}

ReportFile::ReportFile(std::string path, long long maxBytes)
    : m_path(std::move(path)), m_maxBytes(maxBytes) {}

uint64_t ReportFile::Dropped() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_dropped;
}

void ReportFile::Write(const std::string& text) {
    std::string line = TimeStamp() + " " + EscapeReportText(text) + "\n";

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
        for (int k = kReportCopies - 1; k >= 1; --k) {
            renameat(dirFd.Get(), (name + "." + std::to_string(k)).c_str(), dirFd.Get(),
                     (name + "." + std::to_string(k + 1)).c_str());
        }
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
