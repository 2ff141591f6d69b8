// Reading /proc/<pid>/cmdline and /proc/<pid>/stat, and command matching.
#include "agent/monitors/process_table.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "agent/monitors/process_launch.h"

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

// The real and effective user of /proc/<pid>/status's "Uid:" line.
bool UidsOf(const std::string& procDir, pid_t pid, uid_t& real, uid_t& effective) {
    std::string status = ReadWhole(procDir + "/" + std::to_string(pid) + "/status");
    size_t at = status.find("\nUid:");
    if (at == std::string::npos)
        return false;
    char* end = nullptr;
    const char* p = status.c_str() + at + 5;
    unsigned long r = strtoul(p, &end, 10);
    if (end == p)
        return false;
    p = end;
    unsigned long e = strtoul(p, &end, 10);
    if (end == p)
        return false;
    real = static_cast<uid_t>(r);
    effective = static_cast<uid_t>(e);
    return true;
}

std::string ExeOf(const std::string& procDir, pid_t pid) {
    char buf[PATH_MAX];
    std::string link = procDir + "/" + std::to_string(pid) + "/exe";
    ssize_t n = readlink(link.c_str(), buf, sizeof buf - 1);
    if (n <= 0)
        return "";
    std::string exe(buf, static_cast<size_t>(n));
    // A program replaced on disk (an upgrade) while it runs.
    const std::string deleted = " (deleted)";
    if (exe.size() > deleted.size() &&
        exe.compare(exe.size() - deleted.size(), deleted.size(), deleted) == 0) {
        exe.resize(exe.size() - deleted.size());
    }
    return exe;
}

std::string RealPath(const std::string& path) {
    if (path.empty())
        return "";
    char* r = realpath(path.c_str(), nullptr);
    if (r == nullptr)
        return "";
    std::string out(r);
    free(r);
    return out;
}

// The program a "#!" script runs: its first line's interpreter, or with
// "/usr/bin/env" the program env looks up in PATH.
std::string InterpreterOf(const std::string& script) {
    int fd = open(script.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return "";
    char buf[256];
    ssize_t n = read(fd, buf, sizeof buf);
    close(fd);
    if (n < 3 || buf[0] != '#' || buf[1] != '!')
        return "";
    std::string line(buf + 2, static_cast<size_t>(n - 2));
    line = line.substr(0, line.find('\n'));
    std::vector<std::string> w = SplitCommand(line);
    if (w.empty())
        return "";
    if (w[0].size() >= 4 && w[0].compare(w[0].size() - 4, 4, "/env") == 0) {
        for (size_t i = 1; i < w.size(); ++i) {
            if (w[i][0] != '-')
                return RealPath(ResolveProgram(w[i], SearchPath()));
        }
        return "";
    }
    return RealPath(w[0]);
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
        UidsOf(procDir, p.pid, p.uidReal, p.uidEffective);
        p.sExe = ExeOf(procDir, p.pid);
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

ProgramIdentity IdentifyProgram(const std::string& program, uid_t owner) {
    ProgramIdentity id;
    id.uidOwner = owner;
    id.sExe = RealPath(program);
    if (!id.sExe.empty())
        id.sInterpreter = InterpreterOf(id.sExe);
    return id;
}

bool RunsCommand(const ProcInfo& p, const std::vector<std::string>& words,
                 const std::string& program, const ProgramIdentity& id) {
    if (p.uidReal != id.uidOwner || p.uidEffective != id.uidOwner || p.sExe.empty())
        return false;
    if (p.sExe != id.sExe && (id.sInterpreter.empty() || p.sExe != id.sInterpreter))
        return false;
    return CommandMatches(p.vArgv, words, program);
}

bool ProcessAlive(const std::string& procDir, pid_t pid) {
    char st = StateOf(procDir, pid);
    return st != '\0' && st != 'Z';
}

}  // namespace nvmonit
