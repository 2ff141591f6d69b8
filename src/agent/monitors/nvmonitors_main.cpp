// nvmonitors: runs the agent's monitors alone from a JSON settings file
// (settings_json.h), for end-to-end tests and trials by hand.
//
//   nvmonitors --settings FILE [--monitor-interval-ms N]
//
// --monitor-interval-ms overrides the file's intervalMs, as the agent's
// option of the same name does.
// SIGHUP reads the file again and applies it; SIGTERM or SIGINT stops the
// monitors and exits 0. Monitored processes it started keep running.
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "agent/monitors/monitor_supervisor.h"
#include "agent/monitors/settings_json.h"

namespace {

bool Load(const std::string& path, nvmonit::MonitorSettings& s, int intervalMs) {
    std::ifstream in(path);
    if (!in) {
        fprintf(stderr, "nvmonitors: cannot read %s\n", path.c_str());
        return false;
    }
    std::ostringstream ss;
    ss << in.rdbuf();
    std::string err;
    if (!nvmonit::SettingsFromJson(ss.str(), s, err)) {
        fprintf(stderr, "nvmonitors: %s: %s\n", path.c_str(), err.c_str());
        return false;
    }
    if (intervalMs > 0)
        s.iIntervalMs = intervalMs;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const char* usage = "usage: nvmonitors --settings FILE [--monitor-interval-ms N]\n";
    std::string path;
    int intervalMs = -1;
    for (int i = 1; i < argc; ++i) {
        bool ok = i + 1 < argc;
        if (ok && strcmp(argv[i], "--settings") == 0) {
            path = argv[++i];
        } else if (ok && strcmp(argv[i], "--monitor-interval-ms") == 0) {
            char* end = nullptr;
            long v = strtol(argv[++i], &end, 10);
            ok = *end == '\0' && v > 0 && v <= 3600 * 1000;
            intervalMs = static_cast<int>(v);
        } else {
            ok = false;
        }
        if (!ok) {
            fputs(usage, stderr);
            return 2;
        }
    }
    if (path.empty()) {
        fputs(usage, stderr);
        return 2;
    }
    // The signals are taken with sigwait, so they are blocked in every thread
    // the monitors start.
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGHUP);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);

    nvmonit::MonitorSettings s;
    if (!Load(path, s, intervalMs))
        return 1;
    nvmonit::MonitorSupervisor monitors;
    monitors.Apply(s);
    for (;;) {
        int sig = 0;
        if (sigwait(&set, &sig) != 0)
            continue;
        if (sig == SIGHUP) {
            if (Load(path, s, intervalMs))
                monitors.Apply(s);
            continue;
        }
        break;
    }
    monitors.StopAll();
    return 0;
}
