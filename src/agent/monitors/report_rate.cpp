// Per-key and overall line budgets with summaries of what was held back.
#include "agent/monitors/report_rate.h"

namespace nvmonit {

ReportRate::ReportRate(std::chrono::milliseconds window, int linesPerKey, size_t bytesPerWindow)
    : m_window(window), m_linesPerKey(linesPerKey), m_bytesPerWindow(bytesPerWindow) {}

bool ReportRate::Allow(const std::string& key, size_t bytes, Clock::time_point now) {
    if (m_allBytes == 0 || now - m_allStart >= m_window) {
        m_allStart = now;
        m_allBytes = 0;
    }
    auto it = m_keys.find(key);
    if (it == m_keys.end() || (now - it->second.tStart >= m_window && it->second.ullHeld == 0)) {
        Key fresh;
        fresh.tStart = now;
        it = m_keys.insert_or_assign(key, fresh).first;
    }
    Key& k = it->second;
    if (k.iLines >= m_linesPerKey || m_allBytes + bytes > m_bytesPerWindow) {
        ++k.ullHeld;
        return false;
    }
    ++k.iLines;
    m_allBytes += bytes;
    return true;
}

std::vector<std::string> ReportRate::Due(Clock::time_point now) {
    std::vector<std::string> out;
    for (auto it = m_keys.begin(); it != m_keys.end();) {
        if (now - it->second.tStart < m_window) {
            ++it;
            continue;
        }
        if (it->second.ullHeld > 0)
            out.push_back(std::to_string(it->second.ullHeld) + " more events in " + it->first);
        it = m_keys.erase(it);
    }
    return out;
}

int ReportRate::MsUntilDue(Clock::time_point now) const {
    long long best = -1;
    for (const auto& kv : m_keys) {
        if (kv.second.ullHeld == 0)
            continue;
        auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(kv.second.tStart + m_window - now)
                .count();
        if (left < 0)
            left = 0;
        if (best < 0 || left < best)
            best = left;
    }
    return static_cast<int>(best);
}

}  // namespace nvmonit
