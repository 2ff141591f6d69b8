// A monitor's report file: one line per event, the local time first
// ("YYYY-MM-DD HH:MM:SS text"), mode 0600, reached through trusted
// directories only (trusted_path.h), rotated once it passes its size
// bound to ".1", the older copies shifted to ".2" up to kReportCopies, the
// oldest dropped. Writing never fails loudly: on a full disk or any other
// error the line is dropped and counted, and the next line tries again, so a
// monitor never stops because of its report.
//
// A line's text often comes from other users (file names, command lines):
// control characters, bytes that are not UTF-8 and UTF-8 control characters
// are written as \xHH and a backslash as \\, so that a report shown on a
// terminal can neither move its cursor nor forge a line.
#ifndef NV_AGENT_MONITORS_REPORT_FILE_H
#define NV_AGENT_MONITORS_REPORT_FILE_H

#include <cstdint>
#include <mutex>
#include <string>

namespace nvmonit {

// Rotated copies kept beside each report (".1" the newest).
constexpr int kReportCopies = 10;

class ReportFile {
public:
    ReportFile(std::string path, long long maxBytes);

    // Appends "<time> <text>\n", text escaped (EscapeReportText).
    void Write(const std::string& text);

    const std::string& Path() const { return m_path; }
    // Lines that could not be written.
    uint64_t Dropped() const;

private:
    std::string m_path;
    long long m_maxBytes;
    mutable std::mutex m_mutex;
    uint64_t m_dropped = 0;
};

// text with bytes below 0x20, 0x7f, the UTF-8 forms of U+0080 to U+009F and
// every byte that is not part of valid UTF-8 written as \xHH, and "\" as
// "\\"; everything else, printable UTF-8 included, is kept.
std::string EscapeReportText(const std::string& text);

// The local time as "YYYY-MM-DD HH:MM:SS".
std::string TimeStamp();

}  // namespace nvmonit

#endif
