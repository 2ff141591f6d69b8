// Report reading, waiting and child clean-up for the monitor tests.
#include "monitor_test_util.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <future>
#include <memory>
#include <sstream>
#include <thread>

namespace nvtest {

namespace {

// "YYYY-MM-DD HH:MM:SS " at the start of line.
bool HasStamp(const std::string& line) {
    const char* form = "dddd-dd-dd dd:dd:dd ";
    if (line.size() < strlen(form))
        return false;
    for (size_t i = 0; form[i] != '\0'; ++i) {
        bool ok =
            form[i] == 'd' ? isdigit(static_cast<unsigned char>(line[i])) != 0 : line[i] == form[i];
        if (!ok)
            return false;
    }
    return true;
}

// A /proc file read with read(2); empty when the process is gone (a stream
// buffer would throw on the ESRCH of a process that ends while read).
std::string ReadProc(const std::string& path) {
    std::string out;
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return out;
    char buf[4096];
    ssize_t n;
    while ((n = read(fd, buf, sizeof buf)) > 0)
        out.append(buf, static_cast<size_t>(n));
    close(fd);
    return n < 0 ? std::string() : out;
}

}  // namespace

std::vector<std::string> ReportLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> out;
    std::string line;
    while (std::getline(in, line))
        out.push_back(HasStamp(line) ? line.substr(20) : "BAD: " + line);
    return out;
}

int CountLines(const std::string& path, const std::string& text) {
    int n = 0;
    for (const std::string& l : ReportLines(path)) {
        if (l.find(text) != std::string::npos)
            ++n;
    }
    return n;
}

bool WaitUntil(const std::function<bool()>& pred, int timeoutMs) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        if (pred())
            return true;
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

bool WaitForLines(const std::string& path, const std::string& text, int n, int timeoutMs) {
    return WaitUntil([&] { return CountLines(path, text) >= n; }, timeoutMs);
}

pid_t PidInLine(const std::string& path, const std::string& text) {
    pid_t pid = 0;
    for (const std::string& l : ReportLines(path)) {
        size_t at = l.find("(pid ");
        if (l.find(text) != std::string::npos && at != std::string::npos)
            pid = static_cast<pid_t>(std::stol(l.substr(at + 5)));
    }
    return pid;
}

std::string CommandLineOf(pid_t pid) {
    std::string raw = ReadProc("/proc/" + std::to_string(pid) + "/cmdline");
    for (char& c : raw) {
        if (c == '\0')
            c = ' ';
    }
    while (!raw.empty() && raw.back() == ' ')
        raw.pop_back();
    return raw;
}

namespace {

void KillChildrenMatchingOnce(const std::string& text) {
    DIR* d = opendir("/proc");
    if (d == nullptr)
        return;
    std::vector<pid_t> victims;
    while (struct dirent* e = readdir(d)) {
        pid_t pid = static_cast<pid_t>(atoi(e->d_name));
        if (pid <= 0)
            continue;
        std::string all = ReadProc("/proc/" + std::to_string(pid) + "/stat");
        size_t close = all.rfind(')');
        if (close == std::string::npos || close + 2 > all.size())
            continue;
        std::istringstream rest(all.substr(close + 2));
        std::string state;
        pid_t ppid = 0;
        rest >> state >> ppid;
        if (ppid == getpid() && CommandLineOf(pid).find(text) != std::string::npos)
            victims.push_back(pid);
    }
    closedir(d);
    for (pid_t pid : victims) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
}

}  // namespace

void KillChildrenMatching(const std::string& text) {
    // A process caught in the middle of its exec shows no command line yet:
    // look a second time.
    KillChildrenMatchingOnce(text);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    KillChildrenMatchingOnce(text);
}

pid_t StartBurner() {
    pid_t pid = fork();
    if (pid == 0) {
        volatile unsigned long n = 0;
        for (;;)
            n = n + 1;
    }
    return pid;
}

void ApplyWithin(nvmonit::MonitorSupervisor& sup, const nvmonit::MonitorSettings& s,
                 int timeoutMs) {
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> answered = done->get_future();
    std::thread([&sup, s, done] {
        sup.Apply(s);
        done->set_value();
    }).detach();
    if (answered.wait_for(std::chrono::milliseconds(timeoutMs)) != std::future_status::ready) {
        fprintf(stderr, "FAILED: the monitors' switch did not answer within %d ms\n", timeoutMs);
        fflush(stdout);
        _exit(1);
    }
}

}  // namespace nvtest
