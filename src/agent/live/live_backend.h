// The live backend: the check answer read from the machine the agent runs
// on, and every set command carried out on it. MakeLiveBackend builds one
// for a data directory.
#ifndef NV_AGENT_LIVE_LIVE_BACKEND_H
#define NV_AGENT_LIVE_LIVE_BACKEND_H

#include <ctime>
#include <functional>
#include <memory>
#include <string>

#include "agent/backend.h"
#include "agent/live/guard/change_watch.h"
#include "agent/live/guard/guard_session.h"

namespace nvagent {

struct LiveOptions {
    // Where the agent keeps its own settings (settings.json).
    std::string sDataDir = "/etc/norvane";
    // The one function that sets the system clock (null: the system's);
    // tests replace it, since the clock cannot be isolated.
    std::function<bool(time_t when, std::string& err)> setClock;
    // Restore the data directory's firewall rules at start (when the agent,
    // not a persistence package, keeps them).
    bool bRestoreFirewall = true;
    // Above 0: every monitor samples at this interval (ms) instead of its
    // own (norvaned --monitor-interval-ms, for tests).
    int iMonitorIntervalMs = 0;
    // Where changes being watched are kept pending (RUN/pending/), undone
    // at start when an earlier run left any.
    std::string sRunDir = "/run/norvane";
    // The guarded session of the process that sent a change (bFound false:
    // none, the change is made and saved at once). Null: no session is
    // guarded.
    std::function<GuardSession(const Peer&)> findSession;
    WatchTiming watchTiming;
    // Receives what the agent does outside any request (the journal).
    EventSink record;
};

// Creates the data directory when missing, loads the agent's settings from
// it, restores the firewall rules kept there and starts the monitors that
// are on; null with err when the settings file exists but cannot be read,
// or the rules are refused.
std::unique_ptr<Backend> MakeLiveBackend(const LiveOptions& opts, std::string& err);

}  // namespace nvagent

#endif
