// Reading /proc/<pid>/cmdline and /proc/<pid>/stat, and command matching.
#include "agent/monitors/process_table.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace nvmonit {

namespace {

std::string BaseName(const std::string& path) {
    size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The whole of a small /proc file, with read(2): a process that ends while
// its file is read makes the read fail with ESRCH, which must read as an
// empty file, not as an error thrown by a stream buffer.
std::string ReadWhole(const std::string& path) {
    std::string out;
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return out;
    char buf[4096];
    for (;;) {
        ssize_t n = read(fd, buf, sizeof buf);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            if (n < 0)
                out.clear();
            break;
        }
        out.append(buf, static_cast<size_t>(n));
    }
    close(fd);
    return out;
}

// The state letter of /proc/<pid>/stat (after the parenthesised name, which
// may itself hold blanks and parentheses).
char StateOf(const std::string& procDir, pid_t pid) {
    std::string stat = ReadWhole(procDir + "/" + std::to_string(pid) + "/stat");
    size_t close = stat.rfind(')');
    if (close == std::string::npos || close + 2 >= stat.size())
        return '\0';
    return stat[close + 2];
}

bool SameArgs(const std::vector<std::string>& c, size_t from, const std::vector<std::string>& w) {
    if (c.size() - from != w.size())
        return false;
    for (size_t i = 1; i < w.size(); ++i) {
        if (c[from + i] != w[i])
            return false;
    }
    return true;
}

}  // namespace

std::vector<ProcInfo> ListProcesses(const std::string& procDir) {
    std::vector<ProcInfo> out;
    DIR* d = opendir(procDir.c_str());
    if (d == nullptr)
        return out;
    while (struct dirent* e = readdir(d)) {
        char* end = nullptr;
        long pid = strtol(e->d_name, &end, 10);
        if (pid <= 0 || *end != '\0')
            continue;
        std::string raw = ReadWhole(procDir + "/" + e->d_name + "/cmdline");
        if (raw.empty())
            continue;  // kernel threads and zombies
        ProcInfo p;
        p.pid = static_cast<pid_t>(pid);
        size_t start = 0;
        while (start < raw.size()) {
            size_t nul = raw.find('\0', start);
            if (nul == std::string::npos)
                nul = raw.size();
            p.vArgv.push_back(raw.substr(start, nul - start));
            start = nul + 1;
        }
        if (StateOf(procDir, p.pid) == 'Z')
            continue;
        out.push_back(std::move(p));
    }
    closedir(d);
    return out;
}

bool CommandMatches(const std::vector<std::string>& cmdline, const std::vector<std::string>& words,
                    const std::string& program) {
    if (words.empty() || cmdline.empty())
        return false;
    const std::string& c0 = cmdline[0];
    if (SameArgs(cmdline, 0, words) &&
        (c0 == words[0] || c0 == program || BaseName(c0) == BaseName(words[0]))) {
        return true;
    }
    // "#!" scripts: interpreter, perhaps one interpreter option, the script.
    for (size_t skip = 1; skip <= 2 && skip < cmdline.size(); ++skip) {
        const std::string& s = cmdline[skip];
        if ((s == words[0] || s == program) && SameArgs(cmdline, skip, words))
            return true;
    }
    return false;
}

bool ProcessAlive(const std::string& procDir, pid_t pid) {
    char st = StateOf(procDir, pid);
    return st != '\0' && st != 'Z';
}

}  // namespace nvmonit
