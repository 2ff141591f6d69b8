// norvaned, the agent service: loads the backend, listens on the agent socket,
// detaches unless told to stay in the foreground, and serves until SIGTERM or
// SIGINT, after which it stops cleanly and removes its socket.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "agent/atomic_file.h"
#include "agent/journal.h"
#include "agent/live/guard/tcp_watch.h"
#include "agent/live/live_backend.h"
#include "agent/norvaned_options.h"
#include "agent/server.h"
#include "agent/sim/sim_backend.h"

namespace {

int Fail(const std::string& msg, int code) {
    fprintf(stderr, "norvaned: %s\n", msg.c_str());
    return code;
}

// The agent detaches and changes to /, so every path it keeps is made
// absolute first.
std::string Absolute(const std::string& path) {
    if (path.empty() || path[0] == '/')
        return path;
    char cwd[4096];
    if (getcwd(cwd, sizeof cwd) == nullptr)
        return path;
    return std::string(cwd) + "/" + path;
}

// SIGTERM and SIGINT are blocked in every thread and taken by sigwait in the
// main thread; SIGPIPE is ignored so a vanished client cannot end the agent.
sigset_t BlockStopSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signal(SIGPIPE, SIG_IGN);
    return set;
}

void WaitForStopSignal(const sigset_t& set) {
    int sig = 0;
    while (sigwait(&set, &sig) != 0) {
    }
}

// Called once the socket listens and before any thread exists: the parent
// exits 0 at once (clients already queue on the socket), the child goes on
// in its own session with its standard streams on /dev/null.
bool Daemonize(std::string& err) {
    pid_t pid = fork();
    if (pid < 0) {
        err = std::string("cannot fork: ") + strerror(errno);
        return false;
    }
    if (pid > 0)
        _exit(0);
    setsid();
    if (chdir("/") != 0) {
        err = std::string("cannot change to /: ") + strerror(errno);
        return false;
    }
    int null = open("/dev/null", O_RDWR);
    if (null < 0)
        return true;
    dup2(null, STDIN_FILENO);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);
    if (null > STDERR_FILENO)
        close(null);
    return true;
}

int Run(const nvagent::NorvanedOptions& opts) {
    sigset_t stopSignals = BlockStopSignals();
    std::string err;
    // Temporary files of an atomic write that a crash left behind.
    std::string saved = opts.sBackend == "system" ? Absolute(opts.sDataDir) + "/settings.json"
                                                  : Absolute(opts.sStatePath);
    if (!saved.empty()) {
        int removed = nvagent::RemoveStrayTemps(saved);
        if (removed > 0)
            fprintf(stderr, "norvaned: removed %d temporary state file(s) left by an earlier run\n",
                    removed);
    }
    // The journal first: the backend records in it what it does by itself
    // (changes undone at start, or when a watch ends), and outlives it.
    nvagent::Journal journal;
    if (!opts.sJournalPath.empty() && !journal.Open(opts.sJournalPath, err, opts.journalMaxBytes))
        return Fail(err, 1);
    std::unique_ptr<nvagent::Backend> backend;
    if (opts.sBackend == "system") {
        nvagent::LiveOptions live;
        live.sDataDir = Absolute(opts.sDataDir);
        live.sRunDir = Absolute(opts.sRunDir);
        live.iMonitorIntervalMs = opts.iMonitorIntervalMs;
        live.record = [&journal](const nvagent::BackendEvent& e) {
            journal.Record(e.iCmd, e.sPayload.data(), e.sPayload.size(), e.iResult, e.sNote.c_str(),
                           e.sOldValues, e.sNewValues);
        };
        if (opts.iGuardSessionPort > 0) {
            uint16_t port = static_cast<uint16_t>(opts.iGuardSessionPort);
            live.findSession = [port](const nvagent::Peer& peer) {
                return nvagent::SessionOnLocalPort(port, peer.iPid);
            };
        }
        backend = nvagent::MakeLiveBackend(live, err);
    } else {
        backend = nvagent::MakeSimBackend(Absolute(opts.sStatePath), err);
    }
    if (!backend)
        return Fail(err, 1);
    nvagent::ServerOptions serverOpts;
    serverOpts.sSocketPath = Absolute(opts.sSocketPath);
    nvagent::Server server(*backend, journal, serverOpts);
    if (!server.Listen(err))
        return Fail(err, 1);
    if (!opts.bForeground && !Daemonize(err))
        return Fail(err, 1);
    if (!server.Start(err))
        return Fail(err, 1);
    if (opts.bForeground)
        fprintf(stderr, "norvaned: listening on %s\n", server.SocketPath().c_str());
    WaitForStopSignal(stopSignals);
    server.Stop();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    nvagent::NorvanedOptions opts;
    std::string err;
    if (!nvagent::ParseNorvanedOptions(argc, argv, opts, err)) {
        fprintf(stderr, "norvaned: %s\nTry 'norvaned --help' for more information.\n", err.c_str());
        return 2;
    }
    if (opts.bHelp) {
        fputs(nvagent::NorvanedUsage(), stdout);
        return 0;
    }
    return Run(opts);
}
