// The request journal: formats one JSON line per request and appends it.
#include "agent/journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace nvagent {

namespace {

void AppendInt(std::string& out, long v) {
    char buf[24];
    int n = snprintf(buf, sizeof buf, "%ld", v);
    out.append(buf, static_cast<size_t>(n));
}

void AppendHex(std::string& out, const char* p, size_t n) {
    static const char kDigits[] = "0123456789abcdef";
    size_t at = out.size();
    out.resize(at + 2 * n);
    for (size_t i = 0; i < n; ++i) {
        unsigned char c = static_cast<unsigned char>(p[i]);
        out[at + 2 * i] = kDigits[c >> 4];
        out[at + 2 * i + 1] = kDigits[c & 0x0f];
    }
}

// The length of the UTF-8 character at s[i], or 0 when the bytes there are
// not one.
size_t Utf8CharLen(const std::string& s, size_t i) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    size_t len = c < 0x80           ? 1
                 : (c >> 5) == 0x6  ? 2
                 : (c >> 4) == 0xE  ? 3
                 : (c >> 3) == 0x1E ? 4
                                    : 0;
    if (len == 0 || i + len > s.size())
        return 0;
    for (size_t k = 1; k < len; ++k) {
        if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80)
            return 0;
    }
    return len;
}

// A JSON string of s. A detail carries values as they came (a payload's
// bytes, a tool's message): all of it is kept, control characters escaped,
// and a byte that is not UTF-8 becomes '?', so that the line stays JSON.
void AppendJsonText(std::string& out, const std::string& s) {
    out.push_back('"');
    for (size_t i = 0; i < s.size();) {
        size_t len = Utf8CharLen(s, i);
        unsigned char c = static_cast<unsigned char>(s[i]);
        if (len == 0) {
            out.push_back('?');
            len = 1;
        } else if (len > 1) {
            out.append(s, i, len);
        } else if (c == '"' || c == '\\') {
            out.push_back('\\');
            out.push_back(static_cast<char>(c));
        } else if (c < 0x20) {
            char buf[8];
            snprintf(buf, sizeof buf, "\\u%04x", c);
            out.append(buf);
        } else {
            out.push_back(static_cast<char>(c));
        }
        i += len;
    }
    out.push_back('"');
}

// The user of a password request "USER PW PW2" (or "USER HASH"): its first
// token, and only when the payload has all its tokens, so that a malformed
// request (a password typed alone, say) never has a secret taken for a user
// name.
std::string PasswordUser(const char* payload, size_t n, size_t want) {
    std::string text(payload, n);
    std::string tokens[3];
    size_t count = 0;
    size_t at = 0;
    while (at < text.size()) {
        size_t start = text.find_first_not_of(" \t", at);
        if (start == std::string::npos)
            break;
        size_t end = text.find_first_of(" \t", start);
        if (end == std::string::npos)
            end = text.size();
        if (count == want)
            return "";
        tokens[count++] = text.substr(start, end - start);
        at = end;
    }
    return count == want && tokens[0].size() <= 64 ? tokens[0] : "";
}

// Whether text holds any word of the password request's payload but its
// first (the user): such a detail is not written.
bool HoldsSecret(const std::string& text, const char* payload, size_t n) {
    std::string words(payload, n);
    size_t at = words.find_first_of(" \t");
    while (at != std::string::npos) {
        size_t start = words.find_first_not_of(" \t", at);
        if (start == std::string::npos)
            break;
        size_t end = words.find_first_of(" \t", start);
        if (text.find(words.substr(start, end == std::string::npos ? end : end - start)) !=
            std::string::npos)
            return true;
        at = end;
    }
    return false;
}

void WriteWhole(int fd, const char* p, size_t n) {
    while (n > 0) {
        ssize_t w = write(fd, p, n);
        if (w < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        p += w;
        n -= static_cast<size_t>(w);
    }
}

}  // namespace

Journal::~Journal() {
    if (m_fd >= 0)
        close(m_fd);
}

bool Journal::Open(const std::string& path, std::string& err, size_t maxBytes) {
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0) {
        err = "cannot open journal " + path + ": " + strerror(errno);
        return false;
    }
    if (m_fd >= 0)
        close(m_fd);
    struct stat sb;
    bool regular = fstat(fd, &sb) == 0 && S_ISREG(sb.st_mode);
    m_size = regular ? static_cast<size_t>(sb.st_size) : 0;
    m_rotates = regular;
    m_fd = fd;
    m_path = path;
    m_maxBytes = maxBytes;
    return true;
}

void Journal::FormatLine(int cmd, const char* payload, size_t payloadLen, int result,
                         const char* note, const std::string& oldValues,
                         const std::string& newValues, const std::string& detail) {
    bool password = cmd == kPasswordCmd || cmd == kPasswordHashCmd;
    size_t shown = password ? 0 : (payloadLen < kJournalHexBytes ? payloadLen : kJournalHexBytes);
    m_line.clear();
    m_line.append("{\"cmd\": ");
    AppendInt(m_line, cmd);
    m_line.append(", \"len\": ");
    AppendInt(m_line, static_cast<long>(payloadLen));
    m_line.append(", \"payload_hex\": \"");
    AppendHex(m_line, payload, shown);
    m_line.append("\", \"result\": ");
    AppendInt(m_line, result);
    if (!password && !oldValues.empty() && !newValues.empty()) {
        m_line.append(", \"old\": ");
        m_line.append(oldValues);
        m_line.append(", \"new\": ");
        m_line.append(newValues);
    }
    if (!detail.empty() && !(password && HoldsSecret(detail, payload, payloadLen))) {
        m_line.append(", \"detail\": ");
        AppendJsonText(m_line, detail);
    }
    if (password) {
        std::string user = PasswordUser(payload, payloadLen, cmd == kPasswordCmd ? 3 : 2);
        m_line.append(", \"user\": ");
        AppendJsonText(m_line, user.c_str());
        if (note == nullptr)
            note = result == 7 ? "password changed" : "password not changed";
    } else if (shown < payloadLen) {
        m_line.append(", \"hex_cut\": true");
    }
    if (note != nullptr) {
        m_line.append(", \"note\": ");
        AppendJsonText(m_line, note);
    }
    m_line.append("}\n");
}

// A line that would take the file past its limit goes to a fresh file; the
// full one is kept as PATH.1. If the new file cannot be made, the old one is
// reopened so that recording goes on. Only a regular file is rotated: a
// journal on a device or a pipe is never renamed (renaming the null device
// would leave a regular file in its place).
void Journal::RotateIfFull() {
    if (!m_rotates || m_size == 0 || m_size + m_line.size() <= m_maxBytes)
        return;
    std::string old = m_path + ".1";
    if (rename(m_path.c_str(), old.c_str()) != 0)
        return;
    int fd = open(m_path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
        return;
    close(m_fd);
    m_fd = fd;
    m_size = 0;
}

void Journal::Record(int cmd, const char* payload, size_t payloadLen, int result, const char* note,
                     const std::string& oldValues, const std::string& newValues,
                     const std::string& detail) {
    if (m_fd < 0)
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    FormatLine(cmd, payload, payloadLen, result, note, oldValues, newValues, detail);
    RotateIfFull();
    WriteWhole(m_fd, m_line.data(), m_line.size());
    m_size += m_line.size();
}

}  // namespace nvagent
