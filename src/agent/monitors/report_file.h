// A monitor's report file: one line per event, the local time first
// ("YYYY-MM-DD HH:MM:SS text"), mode 0600, reached through trusted
// directories only (trusted_path.h), rotated to a single ".1" copy
// once it passes its size bound. Writing never fails loudly: on a full disk
// or any other error the line is dropped and counted, and the next line
// tries again, so a monitor never stops because of its report.
#ifndef NV_AGENT_MONITORS_REPORT_FILE_H
#define NV_AGENT_MONITORS_REPORT_FILE_H

#include <cstdint>
#include <mutex>
#include <string>

namespace nvmonit {

class ReportFile {
public:
    ReportFile(std::string path, long long maxBytes);

    // Appends "<time> <text>\n" (text on one line: newlines become blanks).
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

// The local time as "YYYY-MM-DD HH:MM:SS".
std::string TimeStamp();

}  // namespace nvmonit

#endif
