// The request journal: formats one JSON line per request and appends it.
#include "agent/journal.h"

#include <fcntl.h>
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

// Notes are the agent's own short ASCII texts; quotes, backslashes and
// control characters are escaped all the same so a line always parses.
void AppendJsonString(std::string& out, const char* s) {
    out.push_back('"');
    for (; *s != '\0'; ++s) {
        unsigned char c = static_cast<unsigned char>(*s);
        if (c == '"' || c == '\\') {
            out.push_back('\\');
            out.push_back(static_cast<char>(c));
        } else if (c < 0x20) {
            char buf[8];
            snprintf(buf, sizeof buf, "\\u%04x", c);
            out.append(buf);
        } else {
            out.push_back(static_cast<char>(c));
        }
    }
    out.push_back('"');
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

bool Journal::Open(const std::string& path, std::string& err) {
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0) {
        err = "cannot open journal " + path + ": " + strerror(errno);
        return false;
    }
    if (m_fd >= 0)
        close(m_fd);
    m_fd = fd;
    return true;
}

void Journal::Record(int cmd, const char* payload, size_t payloadLen, int result,
                     const char* note) {
    if (m_fd < 0)
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_line.clear();
    m_line.append("{\"cmd\": ");
    AppendInt(m_line, cmd);
    m_line.append(", \"len\": ");
    AppendInt(m_line, static_cast<long>(payloadLen));
    m_line.append(", \"payload_hex\": \"");
    AppendHex(m_line, payload, payloadLen);
    m_line.append("\", \"result\": ");
    AppendInt(m_line, result);
    if (note != nullptr) {
        m_line.append(", \"note\": ");
        AppendJsonString(m_line, note);
    }
    m_line.append("}\n");
    WriteWhole(m_fd, m_line.data(), m_line.size());
}

}  // namespace nvagent
