// nvstart's command line and its one decision: nothing to do when an agent
// answers; otherwise start it (systemd's unit for the default socket when
// systemd runs, norvaned itself in every other case) and wait for a check
// answer.
#include "nvstart_run.h"

#include <getopt.h>
#include <time.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "agent_launch.h"
#include "agent_probe.h"
#include "link/ui_interface.h"

namespace {

const char kDefaultSocket[] = "/dev/nvsock";

const char kUsage[] =
    "Usage: nvstart [--socket PATH] [--timeout SECONDS] [-- NORVANED-OPTION...]\n"
    "Starts the norvane agent unless one already answers, and waits until it\n"
    "answers a check.\n"
    "\n"
    "  --socket PATH      the agent's socket (default: NVUI_SOCKET, else /dev/nvsock)\n"
    "  --timeout SECONDS  how long to wait for the agent's answer (default 10)\n"
    "  --help             show this text and exit\n"
    "\n"
    "Where systemd runs and the socket is /dev/nvsock, the agent is started with\n"
    "'systemctl start norvane.service' (the live backend); otherwise nvstart runs\n"
    "norvaned --socket PATH followed by the NORVANED-OPTIONs. Without them it\n"
    "passes --backend system (the live backend) on /dev/nvsock, as the service\n"
    "runs it, and no backend on a socket of its own, where norvaned takes its\n"
    "own default, the simulator. --foreground is refused: nvstart waits for\n"
    "norvaned to detach. nvstart says which backend it started.\n"
    "Exit status: 0 when an agent answers, 1 when none could be started,\n"
    "2 for a usage error.\n";

struct Options {
    std::string sSocket;
    int iTimeoutS = 10;
    std::vector<std::string> vsAgentArgs;
    bool bHelp = false;
};

bool Parse(int argc, char** argv, Options& o, std::string& err) {
    static const option kLong[] = {{"socket", required_argument, nullptr, 's'},
                                   {"timeout", required_argument, nullptr, 't'},
                                   {"help", no_argument, nullptr, 'h'},
                                   {nullptr, 0, nullptr, 0}};
    const char* pcEnv = getenv(NVUI_ENV_SOCKET);
    o.sSocket = pcEnv && *pcEnv ? pcEnv : kDefaultSocket;
    optind = 0;
    opterr = 0;
    int c;
    while ((c = getopt_long(argc, argv, "+:h", kLong, nullptr)) != -1) {
        if (c == 's') {
            o.sSocket = optarg;
        } else if (c == 't') {
            char* end = nullptr;
            long v = strtol(optarg, &end, 10);
            if (*optarg == '\0' || *end != '\0' || v < 1 || v > 3600) {
                err = std::string("--timeout needs a number of seconds from 1 to 3600, not '") +
                      optarg + "'";
                return false;
            }
            o.iTimeoutS = static_cast<int>(v);
        } else if (c == 'h') {
            o.bHelp = true;
        } else {
            err = c == ':' ? std::string("option ") + argv[optind - 1] + " needs a value"
                           : std::string("unknown option ") + argv[optind - 1];
            return false;
        }
    }
    if (optind < argc && strcmp(argv[optind - 1], "--") != 0) {
        err = std::string("unexpected argument ") + argv[optind] +
              " (norvaned's options go after --)";
        return false;
    }
    o.vsAgentArgs.assign(argv + optind, argv + argc);
    for (const std::string& a : o.vsAgentArgs) {
        if (a == "--foreground") {
            err =
                "norvaned's --foreground is not accepted: nvstart waits for norvaned to "
                "detach, and a foreground agent would write to this terminal";
            return false;
        }
    }
    if (o.sSocket.empty()) {
        err = "--socket needs a non-empty path";
        return false;
    }
    return true;
}

long long NowMs() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec * 1000LL + ts.tv_nsec / 1000000;
}

void Pause() {
    timespec ts{0, 50 * 1000000L};
    nanosleep(&ts, nullptr);
}

class Starter {
public:
    Starter(const Options& o, FILE* out, FILE* err) : m_o(o), m_out(out), m_err(err) {}

    int Run() {
        std::string why;
        switch (ProbeAgent(m_o.sSocket, ProbeTimeoutMs(), why)) {
            case ProbeResult::kAnswers:
                fprintf(m_out, "nvstart: norvaned already answers on %s; nothing started.\n",
                        m_o.sSocket.c_str());
                return NVSTART_OK;
            case ProbeResult::kNotAgent:
                return NotAgent(why);
            case ProbeResult::kNoAgent:
                break;
        }
        if (m_o.sSocket == kDefaultSocket && SystemdRuns())
            return ThroughSystemd();
        return Directly();
    }

private:
    int ProbeTimeoutMs() const { return m_o.iTimeoutS * 1000; }

    int NotAgent(const std::string& why) {
        fprintf(m_err,
                "nvstart: something listens on %s but gives no valid check answer (%s); "
                "not starting a second agent.\n",
                m_o.sSocket.c_str(), why.c_str());
        return NVSTART_FAILED;
    }

    int ThroughSystemd() {
        std::string err;
        pid_t pid = Spawn({"systemctl", "start", kAgentUnit}, err);
        if (pid < 0) {
            fprintf(m_err, "nvstart: %s\n", err.c_str());
            return NVSTART_FAILED;
        }
        int status = 0;
        long long deadline = NowMs() + ProbeTimeoutMs();
        while (!Reaped(pid, status)) {
            if (NowMs() >= deadline) {
                fprintf(m_err,
                        "nvstart: 'systemctl start %s' has not finished after %d s; see "
                        "'systemctl status %s'.\n",
                        kAgentUnit, m_o.iTimeoutS, kAgentUnit);
                return NVSTART_FAILED;
            }
            Pause();
        }
        if (status != 0) {
            fprintf(m_err,
                    "nvstart: 'systemctl start %s' failed with exit status %d; see "
                    "'systemctl status %s' and 'journalctl -u %s'.\n",
                    kAgentUnit, status, kAgentUnit, kAgentUnit);
            return NVSTART_FAILED;
        }
        return WaitForAnswer(
            -1, std::string("started ") + kAgentUnit + " through systemd (live backend)");
    }

    int Directly() {
        std::string norvaned = FindNorvaned();
        if (norvaned.empty()) {
            fprintf(m_err, "nvstart: norvaned is neither beside nvstart nor in ../sbin.\n");
            return NVSTART_FAILED;
        }
        std::vector<std::string> argv = {norvaned, "--socket", m_o.sSocket};
        // The default socket is the service's: the live backend, as the
        // service runs it; a socket of its own gets norvaned's own default.
        if (m_o.vsAgentArgs.empty() && m_o.sSocket == kDefaultSocket) {
            argv.push_back("--backend");
            argv.push_back("system");
        }
        argv.insert(argv.end(), m_o.vsAgentArgs.begin(), m_o.vsAgentArgs.end());
        std::string err;
        pid_t pid = Spawn(argv, err);
        if (pid < 0) {
            fprintf(m_err, "nvstart: %s\n", err.c_str());
            return NVSTART_FAILED;
        }
        return WaitForAnswer(pid, "started " + norvaned + " (" + BackendName(argv) + ")");
    }

    // The backend a norvaned argument vector selects: the last --backend
    // wins, as in norvaned; without one, norvaned's default, the simulator.
    static std::string BackendName(const std::vector<std::string>& argv) {
        std::string sName = "sim";
        for (size_t i = 1; i < argv.size(); ++i) {
            if (argv[i] == "--backend" && i + 1 < argv.size())
                sName = argv[++i];
            else if (argv[i].compare(0, 10, "--backend=") == 0)
                sName = argv[i].substr(10);
        }
        if (sName == "system")
            return "live backend";
        if (sName == "sim")
            return "simulator backend";
        return "backend " + sName;
    }

    // Polls the socket until a check is answered or the time is up. pid is
    // norvaned's when nvstart ran it: it detaches once it listens (its first
    // process ends with 0) and ends at once with a non-zero status when it
    // cannot start, having said why on the shared standard error.
    int WaitForAnswer(pid_t pid, const std::string& what) {
        long long deadline = NowMs() + ProbeTimeoutMs();
        for (;;) {
            if (AgentFailed(pid))
                return NVSTART_FAILED;
            std::string why;
            long long left = deadline - NowMs();
            ProbeResult r = ProbeAgent(m_o.sSocket, left > 100 ? static_cast<int>(left) : 100, why);
            if (r == ProbeResult::kAnswers) {
                fprintf(m_out, "nvstart: %s; norvaned answers on %s.\n", what.c_str(),
                        m_o.sSocket.c_str());
                return NVSTART_OK;
            }
            if (r == ProbeResult::kNotAgent)
                return NotAgent(why);
            if (NowMs() >= deadline) {
                if (AgentFailed(pid))
                    return NVSTART_FAILED;
                fprintf(m_err, "nvstart: %s, but nothing answers on %s after %d s.\n", what.c_str(),
                        m_o.sSocket.c_str(), m_o.iTimeoutS);
                return NVSTART_FAILED;
            }
            Pause();
        }
    }

    // True, having said so, when the norvaned nvstart ran (pid > 0) has ended
    // with a failure; its first process ending with 0 is its detaching.
    bool AgentFailed(pid_t& pid) {
        int status = 0;
        if (pid <= 0 || !Reaped(pid, status))
            return false;
        pid = -1;
        if (status == 0)
            return false;
        fprintf(m_err,
                "nvstart: norvaned ended with exit status %d before answering on %s; no "
                "agent started.\n",
                status, m_o.sSocket.c_str());
        return true;
    }

    const Options& m_o;
    FILE* m_out;
    FILE* m_err;
};

}  // namespace

int NvstartRun(int argc, char** argv, FILE* out, FILE* err) {
    Options o;
    std::string sErr;
    if (!Parse(argc, argv, o, sErr)) {
        fprintf(err, "nvstart: %s\nTry 'nvstart --help' for more information.\n", sErr.c_str());
        return NVSTART_USAGE;
    }
    if (o.bHelp) {
        fputs(kUsage, out);
        return NVSTART_OK;
    }
    return Starter(o, out, err).Run();
}
