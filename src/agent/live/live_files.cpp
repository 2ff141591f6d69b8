// Whole-file and first-line reads through a file descriptor, so that /proc
// files (whose size reads as 0) are read to their end.
#include "agent/live/live_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>

namespace nvagent {

bool ReadTextFile(const std::string& path, std::string& text) {
    text.clear();
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    char buf[65536];
    while (true) {
        ssize_t n = read(fd, buf, sizeof buf);
        if (n > 0) {
            text.append(buf, static_cast<size_t>(n));
        } else if (n == 0) {
            break;
        } else if (errno != EINTR) {
            close(fd);
            return false;
        }
    }
    close(fd);
    return true;
}

std::string ReadFirstLine(const std::string& path) {
    std::string text;
    if (!ReadTextFile(path, text))
        return std::string();
    size_t nl = text.find('\n');
    return nl == std::string::npos ? text : text.substr(0, nl);
}

std::vector<std::string> SplitWords(const std::string& line) {
    std::vector<std::string> words;
    std::istringstream in(line);
    std::string word;
    while (in >> word)
        words.push_back(word);
    return words;
}

std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        out.push_back(line);
    return out;
}

bool SameFile(const std::string& a, const std::string& b) {
    struct stat sa {
    }, sb{};
    return stat(a.c_str(), &sa) == 0 && stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
           sa.st_ino == sb.st_ino;
}

}  // namespace nvagent
