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
// recorded for a request that got no answer. Optional keys follow, in this
// order, only when they apply:
//   "old" and "new": for a change that was made, the values of the fields it
//     changed before and after it, as objects keyed by field name (see
//     change_values.h; a list holds only its changed entries); never for
//     the password command;
//   "detail": the answer's detail as the full English sentence the agent
//     built (the console got its short form in its own language); left
//     out for the password command when it would hold a word of the
//     payload other than the user;
//   "user": for the password command (56) the user named in the request; its
//     payload_hex is then always empty, so no password ever reaches the file,
//     and "note" says whether the password was changed;
//   "hex_cut": true when payload_hex holds only the first kJournalHexBytes
//     bytes of a longer payload;
//   "note": a short reason for a request that did not complete normally,
//     or how a set command was decided (the session guard's refusal, or a
//     change carried out when its refusal was confirmed).
// A line the agent writes by itself, outside any request, has the command
// and payload of the change it concerns, the result of what it did and a
// note saying what: a watched change kept or undone when its watch ended
// ("kept: ...", "undone: ..."), or undone when the agent started again
// ("undone at start: ..."); "old" and "new" then hold the undo's values.
//
// The journal is bounded: when a line would take the file past its size
// limit, the file is renamed to PATH.1 (replacing an older PATH.1) and a new
// one is started, so the two together never exceed twice the limit.
#ifndef NV_AGENT_JOURNAL_H
#define NV_AGENT_JOURNAL_H

#include <cstddef>
#include <mutex>
#include <string>

namespace nvagent {

// Payload bytes shown in one line at most, so that a line stays short.
constexpr size_t kJournalHexBytes = 1024;
// Default size limit of the journal file.
constexpr size_t kJournalDefaultMaxBytes = 8u << 20;
// The command that carries a password.
constexpr int kPasswordCmd = 56;
constexpr int kPasswordHashCmd = 60;

class Journal {
public:
    Journal() = default;
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // Opens path for appending, creating it with mode 0600. On failure returns
    // false and a message in err.
    bool Open(const std::string& path, std::string& err, size_t maxBytes = kJournalDefaultMaxBytes);
    bool IsOpen() const { return m_fd >= 0; }

    // Appends one line with a single write(); lines from concurrent callers
    // never interleave. The line is in the file when this returns.
    // oldValues and newValues are the JSON objects of a change's old and new
    // values, or empty; detail is the answer's full detail, or empty.
    void Record(int cmd, const char* payload, size_t payloadLen, int result,
                const char* note = nullptr, const std::string& oldValues = std::string(),
                const std::string& newValues = std::string(),
                const std::string& detail = std::string());

private:
    void FormatLine(int cmd, const char* payload, size_t payloadLen, int result, const char* note,
                    const std::string& oldValues, const std::string& newValues,
                    const std::string& detail);
    void RotateIfFull();

    std::string m_path;
    size_t m_maxBytes = kJournalDefaultMaxBytes;
    size_t m_size = 0;
    bool m_rotates = false;  // a regular file, which may be renamed when full
    int m_fd = -1;
    std::mutex m_mutex;
    std::string m_line;  // reused under m_mutex so that a line costs no allocation
};

}  // namespace nvagent

#endif
