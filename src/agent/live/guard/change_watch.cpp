// One thread per watch: it reads the session's connection every poll and
// feeds the stall rule; the decision is taken under the watcher's lock (so
// that a change joining the watch is either in it or starts the next one),
// the undo or save after it, under the backend's change lock only.
#include "agent/live/guard/change_watch.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "agent/atomic_file.h"
#include "agent/commands/requests.h"
#include "agent/live/guard/tcp_watch.h"
#include "agent/live/interfaces/interface_recovery.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_files.h"
#include "agent/live/live_settings.h"
#include "wire/wire.h"

namespace nvagent {

namespace {

std::string Clock(time_t when) {
    struct tm tmv {};
    localtime_r(&when, &tmv);
    char b[16];
    strftime(b, sizeof b, "%H:%M:%S", &tmv);
    return b;
}

// An IPv4 client of a dual-stack server is shown as IPv4.
std::string Endpoint(std::string addr, uint16_t port) {
    const std::string mapped = "::ffff:";
    if (addr.rfind(mapped, 0) == 0 && addr.find('.') != std::string::npos)
        addr = addr.substr(mapped.size());
    return (addr.find(':') == std::string::npos ? addr : "[" + addr + "]") + ":" +
           std::to_string(port);
}

std::string Describe(const GuardSession& s) {
    return "SSH session " + Endpoint(s.sRemoteAddr, s.iRemotePort) + " -> " +
           Endpoint(s.sLocalAddr, s.iLocalPort);
}

bool SameConnection(const GuardSession& a, const GuardSession& b) {
    return a.sLocalAddr == b.sLocalAddr && a.iLocalPort == b.iLocalPort &&
           a.sRemoteAddr == b.sRemoteAddr && a.iRemotePort == b.iRemotePort;
}

void Log(const std::string& line) {
    fprintf(stderr, "norvaned: %s\n", line.c_str());
}

void Record(const EventSink& record, const PendingChange& c, const CmdResult& r,
            const std::string& note) {
    if (!record)
        return;
    BackendEvent e;
    e.iCmd = c.iCmd;
    e.sPayload = c.sPayload;
    e.iResult = r.iCode;
    e.sNote = note;
    e.sOldValues = r.sOldValues;
    e.sNewValues = r.sNewValues;
    record(e);
}

}  // namespace

bool IsWatchedCommand(short cmd) {
    return (cmd >= 32 && cmd <= 39) || (cmd >= 52 && cmd <= 55);
}

CmdResult UndoRecovery(const std::string& domain, const std::string& json) {
    std::string err;
    if (domain == "firewall")
        return UndoFirewallRecovery(json, err) ? Done() : Failed(err);
    if (domain == "interface")
        return UndoInterfaceRecovery(json, err) ? Done() : Failed(err);
    return {em_ActNotPrepare, "this agent cannot undo a change of \"" + domain + "\""};
}

std::string PendingDir(const std::string& runDir) {
    return runDir + "/pending";
}

unsigned long long ProcessStartTime(pid_t pid, const std::string& procRoot) {
    if (pid <= 0)
        return 0;
    std::string stat;
    if (!ReadTextFile(procRoot + "/" + std::to_string(pid) + "/stat", stat))
        return 0;
    // The command name may hold spaces and parentheses: fields count from
    // the last ')'.
    size_t close = stat.rfind(')');
    if (close == std::string::npos)
        return 0;
    std::vector<std::string> f = SplitWords(stat.substr(close + 1));
    // f[0] is field 3 (the state); the start time is field 22.
    return f.size() > 19 ? strtoull(f[19].c_str(), nullptr, 10) : 0;
}

std::string UndoneNotice(time_t when, size_t changes) {
    if (changes > 1)
        return "Undone: " + std::to_string(changes) + " changes from " + Clock(when) +
               " on cut your SSH session.";
    return "Undone: the change at " + Clock(when) + " cut your SSH session.";
}

void UndoLeftPending(const std::string& runDir, const RecoveryUndo& undo, const EventSink& record) {
    std::string dir = PendingDir(runDir);
    DIR* d = opendir(dir.c_str());
    if (d == nullptr)
        return;
    std::vector<std::string> names;
    while (dirent* e = readdir(d)) {
        std::string n = e->d_name;
        if (n.size() > 5 && n.compare(n.size() - 5, 5, ".json") == 0)
            names.push_back(n);
    }
    closedir(d);
    // The latest first: each undo meets the state its change left.
    std::sort(names.rbegin(), names.rend());
    for (const std::string& n : names) {
        std::string path = dir + "/" + n;
        std::string text;
        ReadTextFile(path, text);
        nlohmann::json j = nlohmann::json::parse(text, nullptr, false);
        if (!j.is_object() || !j["recovery"].is_object()) {
            Log("a pending change in " + path + " could not be read; removed");
            unlink(path.c_str());
            continue;
        }
        PendingChange c;
        c.iCmd = static_cast<short>(j.value("cmd", 0));
        c.sPayload = j.value("payload", "");
        c.tWhen = static_cast<time_t>(j.value("when", 0LL));
        std::string domain = j["recovery"].value("domain", "");
        CmdResult r = undo(domain, j["recovery"].dump());
        if (r.iCode == em_ActNotPrepare) {
            Log("the change at " + Clock(c.tWhen) + " (command " + std::to_string(c.iCmd) +
                ") is still pending in " + path + ": " + r.sDetail);
            continue;
        }
        std::string note = "undone at start: the change at " + Clock(c.tWhen) +
                           " was still watched when the agent stopped";
        if (r.iCode != em_ActSuccAll)
            note += "; " + r.sDetail;
        Record(record, c, r, note);
        Log(note + " (command " + std::to_string(c.iCmd) + ")");
        unlink(path.c_str());
    }
}

ChangeWatcher::ChangeWatcher(std::string runDir, WatchTiming timing, PendingRunner run,
                             EventSink record)
    : m_runDir(std::move(runDir)),
      m_timing(timing),
      m_run(std::move(run)),
      m_record(std::move(record)) {}

ChangeWatcher::~ChangeWatcher() {
    {
        std::lock_guard<std::mutex> lock(m_mu);
        m_stop = true;
    }
    m_wake.notify_all();
    for (auto& t : m_threads)
        t.second.join();
}

bool ChangeWatcher::MayChange(const GuardSession& session, CmdResult& refusal) {
    std::lock_guard<std::mutex> lock(m_mu);
    int64_t left = 0;
    for (auto& t : m_threads) {
        const Group& g = *t.first;
        if (g.done)
            continue;
        if (!g.decided && session.bFound && SameConnection(g.session, session))
            continue;
        left = std::max<int64_t>(left, g.decided ? 1000 : g.deadlineMs - SteadyMs());
    }
    if (left <= 0)
        return true;
    refusal = {em_ActFail, "A change made over an SSH session is being watched; try again in " +
                               std::to_string((left + 999) / 1000) + " s."};
    return false;
}

bool ChangeWatcher::Watch(PendingChange change, const GuardSession& session, std::string& err) {
    std::lock_guard<std::mutex> lock(m_mu);
    std::string dir = PendingDir(m_runDir);
    if (!EnsureDir(dir, err))
        return false;
    char name[64];
    snprintf(name, sizeof name, "%012lld-%06u.json", static_cast<long long>(change.tWhen),
             ++m_seq % 1000000);
    Item item{std::move(change), dir + "/" + name};
    nlohmann::json j = {{"cmd", item.change.iCmd},
                        {"payload", item.change.sPayload},
                        {"when", static_cast<long long>(item.change.tWhen)},
                        {"recovery", nlohmann::json::parse(item.change.sRecovery, nullptr, false)}};
    if (!WriteFileAtomically(
            item.file, j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n",
            err))
        return false;
    // Threads whose watch is over are past every lock: joined here.
    for (auto t = m_threads.begin(); t != m_threads.end();) {
        if (t->first->done) {
            t->second.join();
            t = m_threads.erase(t);
        } else {
            ++t;
        }
    }
    int64_t deadline = SteadyMs() + m_timing.iWindowMs;
    if (m_open && !m_open->decided && SameConnection(m_open->session, session)) {
        m_open->items.push_back(std::move(item));
        m_open->deadlineMs = deadline;
        return true;
    }
    Log("watching the change at " + Clock(item.change.tWhen) + " (command " +
        std::to_string(item.change.iCmd) + ") over the " + Describe(session));
    auto g = std::make_shared<Group>();
    g->session = session;
    g->items.push_back(std::move(item));
    g->deadlineMs = deadline;
    m_open = g;
    m_threads.emplace_back(g, std::thread(&ChangeWatcher::Run, this, g));
    return true;
}

void ChangeWatcher::Run(std::shared_ptr<Group> g) {
    StallRule rule;
    bool warned = false;
    bool undo = false;
    std::string why;
    std::unique_lock<std::mutex> lock(m_mu);
    for (;;) {
        GuardSession s = g->session;
        lock.unlock();
        TcpSample sample;
        std::string err;
        TcpVerdict v = TcpVerdict::kWatching;
        if (ReadTcpSample(s, sample, err)) {
            v = rule.Feed(sample);
        } else if (!warned) {
            // Without sock_diag the session cannot be judged: the change is
            // kept when the window ends.
            Log("cannot watch the " + Describe(s) + ": " + err);
            warned = true;
        }
        lock.lock();
        int64_t now = SteadyMs();
        if (m_stop) {
            undo = true;
            why = "the agent stopped before the watch ended";
        } else if (v == TcpVerdict::kStalled) {
            undo = true;
            why = rule.Why();
        } else if (v == TcpVerdict::kEnded) {
            why = rule.Why();
        } else if (now >= g->deadlineMs &&
                   (!rule.Waiting() || now >= g->deadlineMs + m_timing.iGraceMs)) {
            why = "the session kept working";
        } else {
            m_wake.wait_for(lock, std::chrono::milliseconds(m_timing.iPollMs),
                            [this] { return m_stop; });
            continue;
        }
        g->decided = true;
        if (m_open == g)
            m_open.reset();
        break;
    }
    lock.unlock();
    Finish(*g, undo, why);
    lock.lock();
    g->done = true;
}

void ChangeWatcher::Finish(Group& g, bool undo, const std::string& why) {
    std::string session = Describe(g.session);
    if (undo) {
        for (auto it = g.items.rbegin(); it != g.items.rend(); ++it) {
            CmdResult r = m_run(it->change, true);
            std::string note = "undone: the change at " + Clock(it->change.tWhen) +
                               " stalled the " + session + ": " + why;
            if (r.iCode != em_ActSuccAll)
                note += "; the undo failed: " + r.sDetail;
            Record(m_record, it->change, r, note);
            Log(note + " (command " + std::to_string(it->change.iCmd) + ")");
            unlink(it->file.c_str());
        }
        std::lock_guard<std::mutex> lock(m_mu);
        if (m_stop)
            return;
        // Notices of consoles that are gone are dropped.
        for (auto n = m_notices.begin(); n != m_notices.end();) {
            if (ProcessStartTime(n->first.first) != n->first.second)
                n = m_notices.erase(n);
            else
                ++n;
        }
        m_notices[{g.session.iConsolePid, g.session.llConsoleStart}] =
            Notice{UndoneNotice(g.items.front().change.tWhen, g.items.size()), false};
        return;
    }
    for (Item& it : g.items) {
        CmdResult r = m_run(it.change, false);
        std::string note = "kept: the change at " + Clock(it.change.tWhen) + ", watched over the " +
                           session + ": " + why;
        if (r.iCode != em_ActSuccAll)
            note += "; it could not be saved: " + r.sDetail;
        r.sOldValues.clear();
        r.sNewValues.clear();
        Record(m_record, it.change, r, note);
        Log(note + " (command " + std::to_string(it.change.iCmd) + ")");
        unlink(it.file.c_str());
    }
}

std::string ChangeWatcher::NoticeFor(const Peer& peer, short cmd, int result) {
    std::lock_guard<std::mutex> lock(m_mu);
    if (m_notices.empty() || peer.iPid <= 0)
        return {};
    auto it = m_notices.find({peer.iPid, ProcessStartTime(peer.iPid)});
    if (it == m_notices.end())
        return {};
    std::string text = it->second.text;
    // The console shows a failed change's own answer, and after a change
    // that succeeded the check that rebuilds its page: the notice stays
    // until one of those has carried it.
    bool check = cmd == nvwire::kCmdCheck;
    if (check ? it->second.afterSuccess : result != em_ActSuccAll)
        m_notices.erase(it);
    else if (!check)
        it->second.afterSuccess = true;
    return text;
}

size_t ChangeWatcher::Watching() {
    std::lock_guard<std::mutex> lock(m_mu);
    size_t n = 0;
    for (auto& t : m_threads) {
        if (!t.first->decided)
            n += t.first->items.size();
    }
    return n;
}

}  // namespace nvagent
