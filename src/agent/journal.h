// The agent's request journal: one JSON line per request received, appended
// to a file so that tests and administrators can see exactly what arrived.
//
// Line format (keys always in this order):
//   {"cmd": N, "len": L, "payload_hex": "...", "result": R}
// cmd is the command number from the request header (-1 when not even the
// header arrived or the peer was refused before it was read); len is the
// number of payload bytes received, the 6 header bytes not counted (for a
// complete request this is the packet length minus 6); payload_hex is those
// bytes as lowercase hex; result is the EM_RET code answered, or the code
// recorded for a request that got no answer. Requests that did not complete
// normally carry one more key, "note", with a short reason.
#ifndef NV_AGENT_JOURNAL_H
#define NV_AGENT_JOURNAL_H

#include <cstddef>
#include <mutex>
#include <string>

namespace nvagent {

class Journal {
public:
    Journal() = default;
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // Opens path for appending, creating it with mode 0600. On failure returns
    // false and a message in err.
    bool Open(const std::string& path, std::string& err);
    bool IsOpen() const { return m_fd >= 0; }

    // Appends one line with a single write(); lines from concurrent callers
    // never interleave. The line is in the file when this returns.
    void Record(int cmd, const char* payload, size_t payloadLen, int result,
                const char* note = nullptr);

private:
    int m_fd = -1;
    std::mutex m_mutex;
    std::string m_line;  // reused under m_mutex so that a line costs no allocation
};

}  // namespace nvagent

#endif
