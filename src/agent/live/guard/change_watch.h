// The watch of changes made over a guarded session: each change is kept
// pending (a file under RUN/pending/, for an agent started again) and its
// session's TCP connection watched on a thread of its own; a stall undoes
// it, a good end saves it. An undone change is journalled, logged, and
// noted for the console that made it, whose next answers carry the notice
// until one the console shows.
#ifndef NV_AGENT_LIVE_GUARD_CHANGE_WATCH_H
#define NV_AGENT_LIVE_GUARD_CHANGE_WATCH_H

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "agent/backend.h"
#include "agent/live/guard/guard_session.h"
#include "agent/live/guard/pending_change.h"

namespace nvagent {

struct WatchTiming {
    int iWindowMs = 15000;  // how long a change is watched
    int iPollMs = 150;      // between readings of the connection
    // Past the window, how long a watch waits for the rule's answer about
    // data still outstanding and unacknowledged at its end.
    int iGraceMs = 5000;
};

// Carries out a pending change's undo (undo true) or commit under the
// backend's change lock; an undo's answer holds the old and new values.
using PendingRunner = std::function<CmdResult(PendingChange& change, bool undo)>;

// Whether cmd is watched when a guarded session sends it: the firewall's
// policy, add, delete and clear commands of both chains, and the interface
// commands (down, up, DHCP, manual address).
bool IsWatchedCommand(short cmd);

// The directory of the pending files under the run directory.
std::string PendingDir(const std::string& runDir);

// The start time of a process (field 22 of /proc/PID/stat); 0 when gone.
unsigned long long ProcessStartTime(pid_t pid, const std::string& procRoot = "/proc");

// The notice a console gets for its changes undone, first at whenWhen.
std::string UndoneNotice(time_t when, size_t changes);

// Undoes every change an earlier run left pending under runDir (the latest
// first), each journalled through record (when set) and logged, and removes
// their files. undo runs one change from its recovery JSON.
using RecoveryUndo = std::function<CmdResult(const std::string& domain, const std::string& json)>;
// The undo of each domain's recovery JSON ("firewall", "interface");
// em_ActNotPrepare
// for a domain this agent cannot undo (its file is kept).
CmdResult UndoRecovery(const std::string& domain, const std::string& json);
void UndoLeftPending(const std::string& runDir, const RecoveryUndo& undo, const EventSink& record);

class ChangeWatcher {
public:
    ChangeWatcher(std::string runDir, WatchTiming timing, PendingRunner run, EventSink record);
    // Undoes what is still watched (it was never confirmed) and ends the
    // threads.
    ~ChangeWatcher();
    ChangeWatcher(const ChangeWatcher&) = delete;
    ChangeWatcher& operator=(const ChangeWatcher&) = delete;

    // False with the refusal when changes of another session (or of none)
    // are being watched: one session's changes at a time, so that each
    // save and undo meets the state its change left.
    bool MayChange(const GuardSession& session, CmdResult& refusal);
    // Keeps the change pending (its file written first) and watches its
    // session, or joins the session's running watch, which then starts its
    // window again; false with err when the file cannot be written.
    bool Watch(PendingChange change, const GuardSession& session, std::string& err);
    // The notice for the console of peer, as NoticeFor answers it.
    std::string NoticeFor(const Peer& peer, short cmd, int result);
    // Changes being watched now (for tests).
    size_t Watching();

private:
    struct Item {
        PendingChange change;
        std::string file;
    };
    struct Group {
        GuardSession session;
        std::vector<Item> items;
        int64_t deadlineMs = 0;
        bool decided = false;
        bool done = false;
    };
    struct Notice {
        std::string text;
        bool afterSuccess = false;  // the last answer was a change that succeeded
    };
    void Run(std::shared_ptr<Group> g);
    void Finish(Group& g, bool undo, const std::string& why);

    std::string m_runDir;
    WatchTiming m_timing;
    PendingRunner m_run;
    EventSink m_record;
    std::mutex m_mu;
    std::condition_variable m_wake;
    bool m_stop = false;
    unsigned m_seq = 0;
    std::shared_ptr<Group> m_open;  // the group new changes of its session join
    std::vector<std::pair<std::shared_ptr<Group>, std::thread>> m_threads;
    std::map<std::pair<pid_t, unsigned long long>, Notice> m_notices;
};

}  // namespace nvagent

#endif
