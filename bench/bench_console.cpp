// bench_console: the console's start-up, key response and memory, measured
// from outside as a user's terminal sees them, next to a small stock curses
// program doing the same kind of work (dialog --menu with four items).
//
// Each program runs in a fresh 80x24 pseudo-terminal (TERM=xterm-256color,
// LANG=en_US.UTF-8); nvui talks to a norvaned on a private socket with the
// demo state, its log in a temporary directory. A lean reader (one poll loop,
// no terminal emulation) stamps every chunk of output the moment it arrives.
//
// Figures, per run:
//   first byte    fork to the first output byte.
//   first screen  fork to the last byte of the first output burst: the burst
//                 ends when the program has written nothing for kQuietMs, and
//                 its content is checked to be the whole first screen (nvui:
//                 the menu prompt and the welcome text's last line; dialog:
//                 the menu's title, its last item and its buttons).
//   key           a Down key written to the terminal, to the last byte of
//                 the redraw it causes (again ended by kQuietMs of silence).
//                 The first Down of a run (nvui: it makes the drop-down
//                 appear) is reported apart; the steady figure is the median
//                 of kKeys later keys, Up and Down in turn, each moving the
//                 highlight by one item (dialog's menu does not wrap around,
//                 so Downs alone would stop at its last item).
//   start CPU     CPU time the program used up to its first screen (exec,
//                 loading, set-up and drawing; for nvui not the agent's
//                 part), from the scheduler's per-thread run time
//                 (/proc/PID/task/*/schedstat). Less sensitive than the
//                 wall-clock figures to other load on the machine.
//   peak RSS      ru_maxrss from wait4 once the program has been ended.
// The runs of the two programs alternate, after one unmeasured run of each.
// Medians over RUNS runs (default 25) are printed in a table, with the ratios
// nvui/dialog of the first screen and of the start CPU.
//
// Usage: bench_console [RUNS]
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench_agent.h"
#include "temp_dir.h"

#ifndef NV_BIN_DIR
#error "NV_BIN_DIR must name the directory that holds nvui"
#endif
#ifndef NV_SOURCE_DIR
#error "NV_SOURCE_DIR must name the source tree"
#endif

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kDefaultRuns = 25;
constexpr int kKeys = 10;
constexpr int kQuietMs = 60;
constexpr int kRows = 24;
constexpr int kCols = 80;
// Down and Up in keypad-transmit mode, which both programs switch on.
const char kDown[] = "\x1bOB";
const char kUp[] = "\x1bOA";

double MsBetween(Clock::time_point a, Clock::time_point b) {
    return std::chrono::duration<double, std::milli>(b - a).count();
}

// One program in a pseudo-terminal, its output collected with time stamps.
class PtyRun {
public:
    ~PtyRun() { Kill(); }

    bool Start(const std::vector<std::string>& argv, const std::vector<std::string>& env) {
        std::vector<std::string> args = argv, envs = env;
        std::vector<char*> cargs, cenv;
        for (std::string& a : args)
            cargs.push_back(&a[0]);
        cargs.push_back(nullptr);
        for (std::string& e : envs)
            cenv.push_back(&e[0]);
        cenv.push_back(nullptr);
        struct winsize ws;
        memset(&ws, 0, sizeof(ws));
        ws.ws_row = kRows;
        ws.ws_col = kCols;
        m_start = Clock::now();
        m_pid = forkpty(&m_master, nullptr, nullptr, &ws);
        if (m_pid < 0)
            return false;
        if (m_pid == 0) {
            execvpe(cargs[0], cargs.data(), cenv.data());
            _exit(127);
        }
        fcntl(m_master, F_SETFL, fcntl(m_master, F_GETFL) | O_NONBLOCK);
        return true;
    }

    // Reads until the program has been quiet for quietMs after its latest
    // output. False when no byte came before timeoutMs; last is the time the
    // latest byte arrived.
    bool ReadBurst(int quietMs, int timeoutMs, Clock::time_point& last) {
        const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
        bool any = false;
        for (;;) {
            Clock::time_point now = Clock::now();
            Clock::time_point until =
                any ? std::min(deadline, last + std::chrono::milliseconds(quietMs)) : deadline;
            if (now >= until)
                return any;
            auto waitUs = std::chrono::duration_cast<std::chrono::microseconds>(until - now);
            pollfd p{m_master, POLLIN, 0};
            if (poll(&p, 1, static_cast<int>(waitUs.count() / 1000) + 1) <= 0)
                continue;  // nothing yet, or a signal
            char buf[65536];
            ssize_t got = read(m_master, buf, sizeof(buf));
            if (got < 0 && (errno == EAGAIN || errno == EINTR))
                continue;
            if (got <= 0)
                return any;  // the terminal closed
            Clock::time_point t = Clock::now();
            if (m_out.empty())
                m_first = t;
            m_out.append(buf, static_cast<size_t>(got));
            last = t;
            any = true;
        }
    }

    void Send(const char* bytes) {
        m_sent = Clock::now();
        ssize_t n = write(m_master, bytes, strlen(bytes));
        (void)n;
    }

    // Ends the program and returns its peak resident set in KiB.
    long Kill() {
        if (m_pid <= 0)
            return -1;
        kill(m_pid, SIGKILL);
        int status = 0;
        struct rusage ru;
        memset(&ru, 0, sizeof(ru));
        wait4(m_pid, &status, 0, &ru);
        m_pid = -1;
        close(m_master);
        m_master = -1;
        return ru.ru_maxrss;
    }

    // CPU time used so far by all the program's threads, in milliseconds.
    double CpuMs() const {
        double ns = 0;
        std::string dir = "/proc/" + std::to_string(m_pid) + "/task";
        DIR* d = opendir(dir.c_str());
        if (d == nullptr)
            return 0;
        while (dirent* e = readdir(d)) {
            if (e->d_name[0] == '.')
                continue;
            FILE* f = fopen((dir + "/" + e->d_name + "/schedstat").c_str(), "r");
            if (f == nullptr)
                continue;
            unsigned long long run = 0;
            if (fscanf(f, "%llu", &run) == 1)
                ns += static_cast<double>(run);
            fclose(f);
        }
        closedir(d);
        return ns / 1e6;
    }

    const std::string& Output() const { return m_out; }
    Clock::time_point Started() const { return m_start; }
    Clock::time_point FirstByte() const { return m_first; }
    Clock::time_point Sent() const { return m_sent; }

private:
    pid_t m_pid = -1;
    int m_master = -1;
    Clock::time_point m_start, m_first, m_sent;
    std::string m_out;
};

struct Program {
    std::string sName;
    std::vector<std::string> vsArgv;
    std::vector<std::string> vsEnv;
    // Texts whose presence in the first burst proves the screen complete.
    std::vector<std::string> vsFirstScreen;
    std::vector<double> firstByteMs, firstScreenMs, startCpuMs, firstKeyMs, keyMs;
    std::vector<long> rssKb;
    int iFailures = 0;
};

double Median(std::vector<double> v) {
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    size_t n = v.size();
    return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

double Percentile(std::vector<double> v, double p) {
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    size_t i = static_cast<size_t>(p * static_cast<double>(v.size() - 1) + 0.5);
    return v[std::min(i, v.size() - 1)];
}

// One run of a program: start, first screen, the Downs, end.
bool RunOnce(Program& prog) {
    PtyRun run;
    if (!run.Start(prog.vsArgv, prog.vsEnv))
        return false;
    Clock::time_point last;
    if (!run.ReadBurst(kQuietMs, 5000, last)) {
        fprintf(stderr, "%s: no first screen\n", prog.sName.c_str());
        return false;
    }
    for (const std::string& text : prog.vsFirstScreen) {
        if (run.Output().find(text) == std::string::npos) {
            fprintf(stderr, "%s: first screen lacks \"%s\"\n", prog.sName.c_str(), text.c_str());
            return false;
        }
    }
    double firstByte = MsBetween(run.Started(), run.FirstByte());
    double firstScreen = MsBetween(run.Started(), last);
    double startCpu = run.CpuMs();
    std::vector<double> keys;
    double firstKey = 0;
    for (int k = 0; k <= kKeys; ++k) {
        size_t before = run.Output().size();
        run.Send(k % 2 == 0 ? kDown : kUp);
        if (!run.ReadBurst(kQuietMs, 2000, last) || run.Output().size() == before) {
            fprintf(stderr, "%s: no redraw after key %d\n", prog.sName.c_str(), k + 1);
            return false;
        }
        double ms = MsBetween(run.Sent(), last);
        if (k == 0)
            firstKey = ms;
        else
            keys.push_back(ms);
    }
    long rss = run.Kill();
    prog.firstByteMs.push_back(firstByte);
    prog.firstScreenMs.push_back(firstScreen);
    prog.startCpuMs.push_back(startCpu);
    prog.firstKeyMs.push_back(firstKey);
    prog.keyMs.push_back(Median(keys));
    prog.rssKb.push_back(rss);
    return true;
}

std::string FindInPath(const char* name) {
    const char* path = getenv("PATH");
    std::string dirs = path ? path : "/usr/bin:/bin";
    size_t start = 0;
    while (start <= dirs.size()) {
        size_t colon = dirs.find(':', start);
        std::string dir =
            dirs.substr(start, colon == std::string::npos ? std::string::npos : colon - start);
        std::string full = (dir.empty() ? "." : dir) + "/" + name;
        if (access(full.c_str(), X_OK) == 0)
            return full;
        if (colon == std::string::npos)
            break;
        start = colon + 1;
    }
    return "";
}

std::string ReadWhole(const std::string& path) {
    std::string out;
    FILE* f = fopen(path.c_str(), "rb");
    if (!f)
        return out;
    char buf[8192];
    size_t n;
    while ((n = fread(buf, 1, sizeof(buf), f)) > 0)
        out.append(buf, n);
    fclose(f);
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    int runs = argc > 1 ? atoi(argv[1]) : kDefaultRuns;
    if (runs <= 0)
        runs = kDefaultRuns;

    std::string state = ReadWhole(std::string(NV_SOURCE_DIR) + "/data/demo-state.json");
    nvbench::BenchAgent agent;
    std::string err;
    if (state.empty() || !agent.Start(state, false, err)) {
        fprintf(stderr, "cannot start norvaned: %s\n", err.c_str());
        return 1;
    }
    nvtest::TempDir logDir;
    const std::vector<std::string> baseEnv = {"TERM=xterm-256color", "LANG=en_US.UTF-8",
                                              "PATH=/usr/bin:/bin", "HOME=" + logDir.Path()};

    Program nvui;
    nvui.sName = "nvui";
    nvui.vsArgv = {std::string(NV_BIN_DIR) + "/nvui"};
    nvui.vsEnv = baseEnv;
    nvui.vsEnv.push_back("NVUI_SOCKET=" + agent.SocketPath());
    nvui.vsEnv.push_back("NVUI_LOG=" + logDir.File("nvui.log"));
    nvui.vsFirstScreen = {"[Esc]exi", "mail : support@norvane.example", "norvane for linux 2.4.1"};

    std::string dialogPath = FindInPath("dialog");
    Program dialog;
    dialog.sName = "dialog";
    dialog.vsArgv = {dialogPath, "--menu", "Pick", "10", "40", "4", "1",
                     "a",        "2",      "b",    "3",  "c",  "4", "d"};
    dialog.vsEnv = baseEnv;
    dialog.vsFirstScreen = {"Pick", "Cancel", "4"};
    std::vector<Program*> programs = {&nvui};
    if (dialogPath.empty())
        fprintf(stderr, "dialog is not installed: measuring nvui alone\n");
    else
        programs.push_back(&dialog);

    // One unmeasured run each, so that both start from a warm page cache.
    for (Program* p : programs)
        RunOnce(*p);
    for (Program* p : programs) {
        p->firstByteMs.clear();
        p->firstScreenMs.clear();
        p->startCpuMs.clear();
        p->firstKeyMs.clear();
        p->keyMs.clear();
        p->rssKb.clear();
    }
    for (int r = 0; r < runs; ++r) {
        for (Program* p : programs) {
            if (!RunOnce(*p))
                ++p->iFailures;
        }
    }

    long cpus = sysconf(_SC_NPROCESSORS_ONLN);
    double load[3] = {0, 0, 0};
    getloadavg(load, 3);
    printf(
        "== bench_console: %dx%d pseudo-terminal, %d runs, %d keys per run, quiet %d ms, "
        "%ld CPUs, load %.2f ==\n",
        kCols, kRows, runs, kKeys, kQuietMs, cpus, load[0]);
    printf("%-8s %10s %12s %10s %10s %10s %10s %10s %7s\n", "program", "first byte", "first screen",
           "screen p90", "start CPU", "first Down", "Up/Down", "peak RSS", "failed");
    printf("%-8s %10s %12s %10s %10s %10s %10s %10s %7s\n", "", "median ms", "median ms", "ms",
           "median ms", "median ms", "median ms", "KiB", "runs");
    for (Program* p : programs) {
        std::vector<double> rss(p->rssKb.begin(), p->rssKb.end());
        printf("%-8s %10.2f %12.2f %10.2f %10.2f %10.3f %10.3f %10.0f %7d\n", p->sName.c_str(),
               Median(p->firstByteMs), Median(p->firstScreenMs), Percentile(p->firstScreenMs, 0.9),
               Median(p->startCpuMs), Median(p->firstKeyMs), Median(p->keyMs), Median(rss),
               p->iFailures);
    }
    if (programs.size() > 1 && Median(dialog.firstScreenMs) > 0 && Median(dialog.startCpuMs) > 0) {
        printf("first screen ratio nvui/dialog: %.2f (goal <= 1.00); start CPU ratio: %.2f\n",
               Median(nvui.firstScreenMs) / Median(dialog.firstScreenMs),
               Median(nvui.startCpuMs) / Median(dialog.startCpuMs));
    }
    std::vector<double> nvRss(nvui.rssKb.begin(), nvui.rssKb.end());
    printf("nvui Up/Down redraw: %.3f ms (goal < 0.5 ms); peak RSS %.0f KiB (goal < 4096 KiB)\n",
           Median(nvui.keyMs), Median(nvRss));
    return 0;
}
