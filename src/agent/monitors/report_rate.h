// The rate limit of a monitor's report lines, so that another user who makes
// events as fast as the machine allows (files created and deleted in a
// world-writable directory) can neither fill the disk nor rotate the
// earlier lines out of the report. Lines are counted per key (the file
// monitor's key is the directory the event happened in): at most
// linesPerKey lines a window per key, and at most bytesPerWindow bytes a
// window over all keys. What is held back is counted per key and said in
// one line when the key's window ends: "N more events in KEY".
#ifndef NV_AGENT_MONITORS_REPORT_RATE_H
#define NV_AGENT_MONITORS_REPORT_RATE_H

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace nvmonit {

class ReportRate {
public:
    using Clock = std::chrono::steady_clock;

    ReportRate(std::chrono::milliseconds window, int linesPerKey, size_t bytesPerWindow);

    // Whether a line of `bytes` bytes about key may be written now; when
    // not, it is counted for the key's summary.
    bool Allow(const std::string& key, size_t bytes, Clock::time_point now);
    // The summary lines of the keys whose window has ended with lines held
    // back, and forgets the keys whose window has ended.
    std::vector<std::string> Due(Clock::time_point now);
    // Milliseconds until the next summary is due; -1 when none is pending.
    int MsUntilDue(Clock::time_point now) const;
    // Keys tracked now (bounded by the keys seen within one window).
    size_t Keys() const { return m_keys.size(); }

private:
    struct Key {
        Clock::time_point tStart;
        int iLines = 0;
        unsigned long long ullHeld = 0;
    };
    std::chrono::milliseconds m_window;
    int m_linesPerKey;
    size_t m_bytesPerWindow;
    Clock::time_point m_allStart;
    size_t m_allBytes = 0;
    std::map<std::string, Key> m_keys;
};

}  // namespace nvmonit

#endif
