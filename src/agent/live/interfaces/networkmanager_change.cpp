// Interface changes where NetworkManager manages the interface: the
// connection profile active on the device (else the device's own profile,
// else a new one) is modified with nmcli, so that the change persists in
// NetworkManager's own storage (its keyfiles), and activated or
// deactivated. Each change is wrapped in a NetworkManager checkpoint of the
// device: the agent destroys it only once the kernel shows the result, and
// rolls back to it on any failure; should the agent die midway,
// NetworkManager rolls back by itself when the checkpoint's time runs out.
// The DNS servers go into the profile; NetworkManager writes resolv.conf
// as its own configuration says. The deferred form modifies the profile in
// NetworkManager's memory only (--temporary) and saves it at commit; its
// DHCP activation is awaited a few seconds only.

#include "agent/live/interfaces/interface_managers.h"
#include "agent/live/interfaces/interface_recovery.h"
#include "agent/live/interfaces/interface_state.h"
#include "agent/live/interfaces/nm_bus.h"
#include "agent/live/live_files.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const int kNmcliLimitMs = 60000;
// nmcli's wait for an activation (a DHCP lease included).
const char* const kActivateWaitS = "40";
const int kApplyWaitMs = 10000;
const int kStableMs = 500;
const int kLeaseShowsMs = 1000;
// Longer than a whole change; NetworkManager's own rollback should the
// agent not finish it.
const unsigned kCheckpointS = 120;

bool Nmcli(const std::vector<std::string>& args, std::string& out, std::string& why) {
    std::vector<std::string> argv = {"nmcli"};
    argv.insert(argv.end(), args.begin(), args.end());
    ToolRun run = RunTool(argv, "", kNmcliLimitMs);
    out = run.sOut;
    if (run.Ok())
        return true;
    std::string said = run.sErr.substr(0, run.sErr.find('\n'));
    why = said.empty() ? run.Why("nmcli " + args[0]) : said;
    return false;
}

// The profile for the device: the active one, else one bound to the
// device by name, else a new one (not started on its own; kept in memory
// only unless save). Empty with why.
std::string Profile(const NetInterface& n, std::string& why, bool save = true) {
    std::string out;
    if (Nmcli({"-t", "-f", "UUID,DEVICE", "connection", "show", "--active"}, out, why)) {
        for (const std::string& l : SplitLines(out)) {
            size_t colon = l.find(':');
            if (colon != std::string::npos && l.substr(colon + 1) == n.name)
                return l.substr(0, colon);
        }
    }
    if (!Nmcli({"-t", "-f", "UUID", "connection", "show"}, out, why))
        return std::string();
    for (const std::string& uuid : SplitLines(out)) {
        std::string bound;
        if (Nmcli({"-g", "connection.interface-name", "connection", "show", uuid}, bound, why) &&
            SplitLines(bound) == std::vector<std::string>{n.name})
            return uuid;
    }
    std::string type;
    if (!Nmcli({"-g", "GENERAL.TYPE", "device", "show", n.name}, type, why))
        return std::string();
    type = SplitLines(type).empty() ? "ethernet" : SplitLines(type)[0];
    if (!Nmcli({"connection", "add", "save", save ? "yes" : "no", "type", type, "ifname", n.name,
                "con-name", "norvane-" + n.name, "connection.autoconnect", "no"},
               out, why))
        return std::string();
    if (!Nmcli({"-g", "connection.uuid", "connection", "show", "norvane-" + n.name}, out, why))
        return std::string();
    return SplitLines(out).empty() ? std::string() : SplitLines(out)[0];
}

// The profile's IPv4 settings: method, addresses, gateway, dns.
std::vector<std::string> Ipv4Settings(const std::string& uuid) {
    std::string out, why;
    Nmcli({"-g", "ipv4.method,ipv4.addresses,ipv4.gateway,ipv4.dns", "connection", "show", uuid},
          out, why);
    std::vector<std::string> v = SplitLines(out);
    v.resize(4);
    return v;
}

// Activates the profile, waiting as long as a deferred DHCP change does:
// an activation still under way then is no failure.
bool ActivateForAWhile(const std::string& uuid, std::string& why) {
    const int kTimeoutExit = 3;  // nmcli's "Timeout expired"
    ToolRun run = RunTool(
        {"nmcli", "--wait", std::to_string(kDeferredLeaseWaitMs / 1000), "connection", "up", uuid},
        "", kNmcliLimitMs);
    if (run.Ok() || (run.bStarted && !run.bTimedOut && run.iExitCode == kTimeoutExit))
        return true;
    std::string said = run.sErr.substr(0, run.sErr.find('\n'));
    why = said.empty() ? run.Why("nmcli connection") : said;
    return false;
}

// The change inside a checkpoint: the profile modified, then activated
// (or deactivated and the link set down), then the kernel state awaited.
CmdResult Apply(const NetInterface& n, const std::string& uuid,
                const std::vector<std::string>& settings, bool up, const Wanted& wanted) {
    std::string why;
    InterfaceSnapshot before = TakeSnapshot(n);
    std::string checkpoint = CreateCheckpoint(n.name, kCheckpointS, why);
    if (checkpoint.empty())
        return Failed("NetworkManager could not take a checkpoint of " + n.name + ": " + why +
                      "; nothing was changed.");
    std::vector<std::string> modify = {"connection", "modify", uuid};
    modify.insert(modify.end(), settings.begin(), settings.end());
    std::string out;
    bool done = Nmcli(modify, out, why);
    if (done && up)
        done = Nmcli({"--wait", kActivateWaitS, "connection", "up", uuid}, out, why);
    else if (done)
        done = Nmcli({"connection", "down", uuid}, out, why) &&
               RunIp({"link", "set", "dev", n.name, "down"}, why);
    if (done && !WaitForInterface(n.name, wanted, kApplyWaitMs, kStableMs)) {
        why = "NetworkManager did not apply the settings within " +
              std::to_string(kApplyWaitMs / 1000) + " s";
        done = false;
    }
    if (done && DestroyCheckpoint(checkpoint, why))
        return Done();
    std::string ignored;
    RollbackCheckpoint(checkpoint, ignored);
    WaitForOldState(n, kApplyWaitMs);
    // What NetworkManager did not configure itself (addresses and routes
    // added by hand) comes back as it was.
    RestoreSnapshot(before);
    return Failed(n.name + " could not be configured: " + why +
                  "; NetworkManager put the old settings back.");
}

}  // namespace

namespace {

// What a command sets in the profile uuid, whether the device comes up,
// and the kernel state that shows it done; false with the answer in r
// when nothing changes.
bool Plan(const NetInterface& n, const InterfaceWanted& w, const std::string& uuid,
          std::vector<std::string>& settings, bool& up, Wanted& wanted, CmdResult& r) {
    up = w.cmd != 52;
    if (w.cmd == 54) {
        if (Ipv4Settings(uuid)[0] == "auto" && n.mode == kModeDynamic) {
            r = Unchanged(n.name + " already uses DHCP.");
            return false;
        }
        settings = {"connection.autoconnect", "yes", "ipv4.method", "auto", "ipv4.addresses", "",
                    "ipv4.gateway",           "",    "ipv4.dns",    ""};
        wanted = [](const NetInterface& i) {
            return i.up && i.mode == kModeDynamic && !i.ip.empty();
        };
        return true;
    }
    if (w.cmd != 55) {
        bool u = up;
        settings = {"connection.autoconnect", up ? "yes" : "no"};
        wanted = [u](const NetInterface& i) { return i.up == u; };
        return true;
    }
    const InterfaceManualRequest& q = w.manual;
    std::string address = q.ip + "/" + std::to_string(MaskPrefix(q.mask));
    std::string dns;
    for (const std::string& s : RequestedDns(q))
        dns += (dns.empty() ? "" : ",") + s;
    if (Ipv4Settings(uuid) == std::vector<std::string>{"manual", address, q.gateway, dns} && n.up &&
        n.ip == q.ip && n.mask == q.mask) {
        r = Unchanged(n.name + " already has these settings.");
        return false;
    }
    settings = {
        "connection.autoconnect", "yes",     "ipv4.method", "manual", "ipv4.addresses", address,
        "ipv4.gateway",           q.gateway, "ipv4.dns",    dns};
    std::string ip = q.ip, mask = q.mask, gateway = q.gateway;
    wanted = [ip, mask, gateway](const NetInterface& i) {
        return i.up && i.ip == ip && i.mask == mask &&
               (gateway.empty() || DefaultGateway(i.name) == gateway);
    };
    return true;
}

// The profile's settings that a change may touch, as they are now
// ("nmcli connection modify" arguments).
std::vector<std::string> OldSettings(const std::string& uuid) {
    std::string out, why;
    Nmcli({"-g", "connection.autoconnect", "connection", "show", uuid}, out, why);
    std::vector<std::string> auto_ = SplitLines(out);
    std::vector<std::string> v = Ipv4Settings(uuid);
    return {"connection.autoconnect",
            auto_.empty() ? "yes" : auto_[0],
            "ipv4.method",
            v[0],
            "ipv4.addresses",
            v[1],
            "ipv4.gateway",
            v[2],
            "ipv4.dns",
            v[3]};
}

}  // namespace

CmdResult NetworkManagerChange(const NetInterface& n, short cmd) {
    std::string why;
    std::string uuid = Profile(n, why);
    if (uuid.empty())
        return Failed("NetworkManager has no connection profile for " + n.name + ": " + why + ".");
    InterfaceWanted w;
    w.cmd = cmd;
    std::vector<std::string> settings;
    bool up = false;
    Wanted wanted;
    CmdResult r;
    if (!Plan(n, w, uuid, settings, up, wanted, r))
        return r;
    return Apply(n, uuid, settings, up, wanted);
}

CmdResult NetworkManagerManual(const NetInterface& n, const InterfaceManualRequest& q) {
    std::string why;
    std::string uuid = Profile(n, why);
    if (uuid.empty())
        return Failed("NetworkManager has no connection profile for " + n.name + ": " + why + ".");
    InterfaceWanted w;
    w.cmd = 55;
    w.manual = q;
    std::vector<std::string> settings;
    bool up = false;
    Wanted wanted;
    CmdResult r;
    if (!Plan(n, w, uuid, settings, up, wanted, r))
        return r;
    return Apply(n, uuid, settings, up, wanted);
}

bool NetworkManagerDeferred(const NetInterface& n, const InterfaceWanted& w, PendingChange& out,
                            CmdResult& r) {
    std::string why;
    std::string uuid = Profile(n, why, false);
    if (uuid.empty()) {
        r = Failed("NetworkManager has no connection profile for " + n.name + ": " + why + ".");
        return false;
    }
    std::vector<std::string> settings;
    bool up = false;
    Wanted wanted;
    if (!Plan(n, w, uuid, settings, up, wanted, r))
        return false;
    InterfaceRecovery rec;
    rec.owner = "networkmanager";
    rec.cmd = w.cmd;
    rec.before = TakeSnapshot(n);
    rec.nmProfile = uuid;
    rec.nmOld = OldSettings(uuid);
    // The checkpoint outlives the watch; NetworkManager rolls back by
    // itself should neither commit nor undo come.
    rec.nmCheckpoint = CreateCheckpoint(n.name, kCheckpointS, why);
    if (rec.nmCheckpoint.empty()) {
        r = Failed("NetworkManager could not take a checkpoint of " + n.name + ": " + why +
                   "; nothing was changed.");
        return false;
    }
    // In NetworkManager's memory only, until the commit saves the profile.
    std::vector<std::string> modify = {"connection", "modify", "--temporary", uuid};
    modify.insert(modify.end(), settings.begin(), settings.end());
    std::string out_;
    bool done = Nmcli(modify, out_, why);
    // DHCP: nmcli's wait bounded to a few seconds, after which the
    // activation goes on in NetworkManager and the watch judges the change.
    bool dhcp = w.cmd == 54;
    if (done && up && dhcp)
        done = ActivateForAWhile(uuid, why);
    else if (done && up)
        done = Nmcli({"--wait", kActivateWaitS, "connection", "up", uuid}, out_, why);
    else if (done)
        done = Nmcli({"connection", "down", uuid}, out_, why) &&
               RunIp({"link", "set", "dev", n.name, "down"}, why);
    if (done && !dhcp && !WaitForInterface(n.name, wanted, kApplyWaitMs, kStableMs)) {
        why = "NetworkManager did not apply the settings within " +
              std::to_string(kApplyWaitMs / 1000) + " s";
        done = false;
    }
    if (!done) {
        UndoInterfaceChange(rec);
        r = Failed(n.name + " could not be configured: " + why +
                   "; NetworkManager put the old settings back.");
        return false;
    }
    // A lease NetworkManager has shows in the kernel within a moment.
    r = {em_ActSuccAll, dhcp ? AwaitLease(n.name, kLeaseShowsMs) : std::string()};
    std::string checkpoint = rec.nmCheckpoint;
    MakePending(
        rec,
        [uuid, settings, checkpoint]() {
            std::vector<std::string> save = {"connection", "modify", uuid};
            save.insert(save.end(), settings.begin(), settings.end());
            std::string o, e;
            if (!Nmcli(save, o, e))
                return Failed("NetworkManager did not save the profile: " + e + ".");
            DestroyCheckpoint(checkpoint, e);
            return Done();
        },
        out);
    return true;
}

void NetworkManagerUndo(const InterfaceRecovery& rec) {
    const NetInterface& old = rec.before.iface;
    std::string why, out;
    // The checkpoint puts the device and profile back; once it is gone
    // (its time ran out, or an agent started again), the old settings are
    // set in memory and the device activated or not as before.
    if (rec.nmCheckpoint.empty() || !RollbackCheckpoint(rec.nmCheckpoint, why)) {
        if (!rec.nmProfile.empty() && !rec.nmOld.empty()) {
            std::vector<std::string> modify = {"connection", "modify", "--temporary",
                                               rec.nmProfile};
            modify.insert(modify.end(), rec.nmOld.begin(), rec.nmOld.end());
            Nmcli(modify, out, why);
            if (old.up)
                Nmcli({"--wait", kActivateWaitS, "connection", "up", rec.nmProfile}, out, why);
            else
                Nmcli({"connection", "down", rec.nmProfile}, out, why);
        }
    }
    WaitForOldState(old, kApplyWaitMs);
    RestoreSnapshot(rec.before);
}

}  // namespace nvagent
