// Payloads read from standard input or the terminal.
#include "payload_input.h"

#include <termios.h>
#include <unistd.h>

#include <cerrno>

bool ReadPayload(int fd, size_t maxLen, std::string& payload) {
    payload.clear();
    char buf[65536];
    while (true) {
        ssize_t n = read(fd, buf, sizeof buf);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return false;
        if (n == 0)
            break;
        // Two bytes beyond the limit: one for a final newline that is
        // dropped, one to tell that the rest was longer.
        size_t room = maxLen + 2 > payload.size() ? maxLen + 2 - payload.size() : 0;
        payload.append(buf, static_cast<size_t>(n) < room ? static_cast<size_t>(n) : room);
    }
    if (!payload.empty() && payload.back() == '\n') {
        payload.pop_back();
        if (!payload.empty() && payload.back() == '\r')
            payload.pop_back();
    }
    return true;
}

namespace {

// One line from the terminal, without its newline; false at end of input.
bool ReadLine(int fd, std::string& line) {
    line.clear();
    char ch = 0;
    while (true) {
        ssize_t n = read(fd, &ch, 1);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        if (ch == '\n' || ch == '\r')
            return true;
        line.push_back(ch);
    }
}

// A line read with echo off; the terminal's settings are put back whatever
// happens. Echo goes off before the prompt shows, so that nothing typed
// after the prompt is echoed, and type-ahead is kept rather than flushed.
bool ReadHidden(int fd, FILE* prompts, const char* prompt, std::string& line) {
    termios old{};
    if (tcgetattr(fd, &old) != 0)
        return false;
    termios quiet = old;
    quiet.c_lflag &= static_cast<tcflag_t>(~ECHO);
    quiet.c_lflag |= ECHONL;
    if (tcsetattr(fd, TCSANOW, &quiet) != 0)
        return false;
    fputs(prompt, prompts);
    fflush(prompts);
    bool ok = ReadLine(fd, line);
    tcsetattr(fd, TCSANOW, &old);
    return ok;
}

}  // namespace

bool PromptPassword(int fd, FILE* prompts, std::string& payload) {
    std::string user, first, second;
    fputs("User name: ", prompts);
    fflush(prompts);
    if (!ReadLine(fd, user) || !ReadHidden(fd, prompts, "New password: ", first) ||
        !ReadHidden(fd, prompts, "New password again: ", second)) {
        return false;
    }
    payload = user + " " + first + " " + second;
    return true;
}
