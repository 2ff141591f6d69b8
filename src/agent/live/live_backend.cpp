// LiveBackend: each check reads the machine afresh; each set command is
// parsed by the shared parser and carried out by the domain it belongs to,
// one change at a time. A change may take a minute (an interface waiting
// for its DHCP lease), so a check never waits for one: changes are
// serialised by their own lock, and the check takes only the short lock
// over the agent's settings and monitors, which a change holds just to
// swap in its result.
#include "agent/live/live_backend.h"

#include <cstdio>
#include <ctime>
#include <mutex>

#include "agent/change_values.h"
#include "agent/commands/command_parser.h"
#include "agent/commands/own_settings.h"
#include "agent/display_lines.h"
#include "agent/live/guard/session_guard.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_files.h"
#include "agent/live/live_monitors.h"
#include "agent/live/live_settings.h"
#include "agent/live/live_state.h"
#include "agent/live/live_sysinfo.h"
#include "agent/monitors/memory_monitor.h"
#include "agent/state_json.h"
#include "wire/wire.h"

namespace nvagent {

namespace {

class LiveBackend : public Backend {
public:
    LiveBackend(LiveOptions opts, cConf_Inf settings)
        : m_opts(std::move(opts)),
          m_settings(std::move(settings)),
          m_monitors(m_opts.sDataDir, m_opts.iMonitorIntervalMs),
          m_watch(
              m_opts.sRunDir, m_opts.watchTiming,
              [this](PendingChange& c, bool undo) { return RunPending(c, undo); }, m_opts.record) {}

    // Runs the monitors that are on in the stored settings; a switch whose
    // list is empty is turned off and saved first.
    void StartMonitors() {
        std::lock_guard<std::mutex> lock(m_mu);
        if (m_monitors.SwitchOffEmptyLists(m_settings)) {
            std::string err;
            if (!SaveSettings(SettingsPath(m_opts.sDataDir), m_settings, err))
                fprintf(stderr, "norvaned: could not save the monitor switches: %s\n", err.c_str());
        }
        m_monitors.Apply(m_settings);
    }

    void CheckBody(std::string& body) override {
        cConf_Inf conf = DefaultConf();
        {
            std::lock_guard<std::mutex> lock(m_mu);
            CopySettings(m_settings, conf);
            m_monitors.ShowCurrentUse(conf);
        }
        cSvrState svr;
        ReadMachine(conf, svr);
        nvwire::Writer w(body);
        nvwire::EncodeConf(w, conf);
        nvwire::EncodeSvr(w, svr);
    }

    int LangCode() override {
        std::lock_guard<std::mutex> lock(m_mu);
        return m_settings.chLangCode;
    }

    using Backend::Apply;
    CmdResult Apply(short cmd, const std::string& payload, const Peer& peer) override {
        Request req;
        CmdResult r;
        if (!ParseCommand(cmd, payload, req, r))
            return r;
        std::lock_guard<std::mutex> change(m_changeMu);
        // A change that would cut the console's SSH session waits for its
        // confirming repeat; nothing is applied before.
        GuardSession session = IsGuardedCommand(cmd) ? SessionOf(peer) : GuardSession();
        std::string guardNote;
        if (m_guard.Refuses(cmd, payload, req, session, r, guardNote))
            return r;
        if (IsOwnSetting(req))
            return ApplyOwn(cmd, req);
        // The watch step: a change from a guarded session is made live only,
        // answered, and watched; one session's changes are watched at a time.
        // (The refusal step's session, or the tests' own.)
        if (IsWatchedCommand(cmd)) {
            if (m_opts.findSession)
                session = m_opts.findSession(peer);
            // A session with no TCP connection (a UDP shell's) gives the
            // watch nothing to read: only the refusal step guards it.
            if (session.llInode == 0)
                session = GuardSession();
            if (!m_watch.MayChange(session, r))
                return r;
        }
        PendingChange pending;
        bool recorded = !ChangedFields(cmd).empty();
        cConf_Inf c0 = DefaultConf();
        cSvrState s0;
        if (recorded)
            ReadChangedPart(cmd, c0, s0);
        time_t clockSetTo = -1;
        r = std::visit(Change{*this, cmd, clockSetTo, session.bFound ? &pending : nullptr}, req);
        r.sNote = guardNote;
        if (recorded && r.iCode == em_ActSuccAll) {
            cConf_Inf c1 = DefaultConf();
            cSvrState s1;
            ReadChangedPart(cmd, c1, s1);
            // The clock as set, which a replaced setter leaves unmoved.
            if (clockSetTo != -1)
                FormatDateTime(clockSetTo, c1.sNowDate, c1.sNowTime);
            RecordChange(cmd, c0, s0, c1, s1, r);
        }
        if (pending.undo)
            return Watch(cmd, payload, std::move(pending), session, r);
        return r;
    }

    std::string NoticeFor(const Peer& peer, short cmd, int result) override {
        return m_watch.NoticeFor(peer, cmd, result);
    }

private:
    // The system changes, by kind of request.
    struct Change {
        LiveBackend& b;
        short cmd;
        time_t& clockSetTo;
        PendingChange* pending;  // non-null: made live only, handed over here

        // The clock setter, noting the time it was given.
        ClockSetter Setter() {
            return [this](time_t when, std::string& err) {
                clockSetTo = when;
                return b.m_opts.setClock(when, err);
            };
        }

        CmdResult operator()(const FlagRequest& q) {
            if (q.cmd >= 4 && q.cmd <= 6)
                return ChangeKernelFlag(q);
            if (q.cmd >= 40 && q.cmd <= 46)
                return ChangeFtpFlag(q, b.m_opts.sDataDir);
            if (q.cmd == 49 || q.cmd == 50)
                return ChangeSambaFlag(q, b.m_opts.sDataDir);
            return NotHere();
        }
        CmdResult operator()(const KernelRequest& q) { return ChangeKernelLimit(q); }
        CmdResult operator()(const HostNameRequest& q) { return ChangeHostName(q); }
        CmdResult operator()(const PasswordRequest& q) { return ChangePassword(q); }
        CmdResult operator()(const PathRequest& q) {
            if (q.cmd == 43)
                return ChangeFtpRoot(q, b.m_opts.sDataDir);
            return ChangeSambaPath(q, b.m_opts.sDataDir);
        }
        CmdResult operator()(const InterfaceRequest& q) {
            return pending ? Deferred(q) : ChangeInterface(q);
        }
        CmdResult operator()(const InterfaceManualRequest& q) {
            return pending ? Deferred(q) : ChangeInterfaceManual(q);
        }
        // An interface change made live only; pending left empty when
        // nothing waits for a commit.
        template <class Q>
        CmdResult Deferred(const Q& q) {
            CmdResult r;
            if (!ChangeInterfaceDeferred(q, *pending, r))
                *pending = PendingChange();
            return r;
        }
        CmdResult operator()(const DateRequest& q) {
            return ChangeDate(q, Setter(), time(nullptr));
        }
        CmdResult operator()(const TimeRequest& q) {
            return ChangeTime(q, Setter(), time(nullptr));
        }
        CmdResult operator()(const PolicyRequest& q) {
            return ChangePolicy(q, b.m_opts.sDataDir, pending);
        }
        CmdResult operator()(const RuleAddRequest& q) {
            return AddRule(q, b.m_opts.sDataDir, pending);
        }
        CmdResult operator()(const DeleteRequest& q) {
            return DeleteRule(q.cmd == 34 ? kChainInput : kChainOutput, q.index, b.m_opts.sDataDir,
                              pending);
        }
        CmdResult operator()(const PlainRequest& q) {
            if (q.cmd == 35 || q.cmd == 39)
                return ClearRules(q.cmd == 35 ? kChainInput : kChainOutput, b.m_opts.sDataDir,
                                  pending);
            if (q.cmd == 47)
                return RestoreFtpDefaults(b.m_opts.sDataDir);
            if (q.cmd == 51)
                return RestoreSambaDefaults(b.m_opts.sDataDir);
            return NotHere();
        }
        template <class Other>
        CmdResult operator()(const Other&) {
            return NotHere();
        }
        CmdResult NotHere() const {
            return {em_ActNotPrepare,
                    "Command " + std::to_string(cmd) +
                        " is not carried out by this agent on a live system yet."};
        }
    };

    // The agent's own settings: changed on a copy, saved, then kept; a
    // monitor's change reaches the running monitors at once. Called with
    // m_changeMu held, which is what keeps m_settings from changing
    // meanwhile; m_mu is taken only to swap it.
    CmdResult ApplyOwn(short cmd, const Request& req) {
        CmdResult refused;
        if (m_monitors.PathsRefused(req, refused))
            return refused;
        cConf_Inf next = m_settings;
        nvmonit::MemoryFigures mem;
        nvmonit::ReadMemory("/proc", mem);
        CmdResult r = ApplyOwnSetting(next, static_cast<int>(mem.llTotalMb), req);
        if (r.iCode != em_ActSuccAll)
            return r;
        bool monitors = IsMonitorCommand(cmd);
        if (monitors)
            m_monitors.SwitchOffEmptyLists(next);
        std::string err;
        if (!SaveSettings(SettingsPath(m_opts.sDataDir), next, err))
            return Failed("Could not save the agent's settings: " + err + ".");
        RecordChange(cmd, m_settings, cSvrState(), next, cSvrState(), r);
        std::lock_guard<std::mutex> lock(m_mu);
        m_settings = std::move(next);
        if (monitors)
            m_monitors.Apply(m_settings);
        return r;
    }

    // Hands a change made live over to the watch; undone at once when it
    // cannot be kept pending.
    CmdResult Watch(short cmd, const std::string& payload, PendingChange pending,
                    const GuardSession& session, const CmdResult& answer) {
        pending.iCmd = cmd;
        pending.sPayload = payload;
        pending.tWhen = time(nullptr);
        std::function<CmdResult()> undo = pending.undo;
        std::string err;
        if (m_watch.Watch(std::move(pending), session, err))
            return answer;
        undo();
        return Failed("Could not keep the change pending in " + PendingDir(m_opts.sRunDir) + ": " +
                      err + "; the change was undone.");
    }

    // A watched change's undo or save, when its watch ends (on the watch's
    // thread): under the change lock, as every change, and an undo with
    // the old and new values the journal records.
    CmdResult RunPending(PendingChange& c, bool undo) {
        std::lock_guard<std::mutex> change(m_changeMu);
        if (!undo)
            return c.commit();
        cConf_Inf c0 = DefaultConf(), c1 = DefaultConf();
        cSvrState s0, s1;
        ReadChangedPart(c.iCmd, c0, s0);
        CmdResult r = c.undo();
        ReadChangedPart(c.iCmd, c1, s1);
        RecordChange(c.iCmd, c0, s0, c1, s1, r);
        return r;
    }

    LiveOptions m_opts;
    // One change at a time.
    std::mutex m_changeMu;
    // m_settings and m_monitors, briefly.
    std::mutex m_mu;
    cConf_Inf m_settings;
    LiveMonitors m_monitors;
    SessionGuard m_guard;
    // Last: its threads end (undoing what is still watched) while the
    // locks above still exist.
    ChangeWatcher m_watch;
};

}  // namespace

std::unique_ptr<Backend> MakeLiveBackend(const LiveOptions& opts, std::string& err) {
    LiveOptions o = opts;
    if (!o.setClock)
        o.setClock = SetSystemClock;
    if (!EnsureDir(o.sDataDir, err))
        return nullptr;
    cConf_Inf settings = DefaultConf();
    if (!LoadSettings(SettingsPath(o.sDataDir), settings, err))
        return nullptr;
    // Changes an earlier run left watched are undone before the saved
    // chains are put back: that run never confirmed them.
    UndoLeftPending(o.sRunDir, UndoRecovery, o.record);
    if (o.bRestoreFirewall && !RestoreFirewall(o.sDataDir, err))
        return nullptr;
    auto backend = std::make_unique<LiveBackend>(o, std::move(settings));
    backend->StartMonitors();
    return backend;
}

}  // namespace nvagent
