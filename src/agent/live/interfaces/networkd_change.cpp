// Interface changes where systemd-networkd owns the interfaces. The agent
// writes only its own file (networkd_config.h), atomically, then has
// networkd reload its files (and reconfigure the interface), and waits until
// the kernel shows the result (a lease, the address, the link state). Any
// failure (networkctl cannot reach networkd, no lease in time, ...) puts
// the old file back (or removes the new one), reloads again and restores
// the old addresses and link state. The deferred form writes the same text
// under /run/systemd/network first and moves it to /etc at commit; its
// DHCP lease is awaited a few seconds only.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "agent/atomic_file.h"
#include "agent/live/interfaces/interface_managers.h"
#include "agent/live/interfaces/interface_recovery.h"
#include "agent/live/interfaces/interface_state.h"
#include "agent/live/interfaces/live_resolv_conf.h"
#include "agent/live/interfaces/networkd_config.h"
#include "agent/live/live_files.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const int kNetworkctlLimitMs = 30000;
const int kLeaseWaitMs = 30000;
const int kApplyWaitMs = 10000;
const int kStableMs = 500;
const int kRestoreWaitMs = 5000;

}  // namespace

bool Networkctl(const std::vector<std::string>& args, std::string& why) {
    std::vector<std::string> argv = {"networkctl"};
    argv.insert(argv.end(), args.begin(), args.end());
    ToolRun run = RunTool(argv, "", kNetworkctlLimitMs);
    if (run.Ok())
        return true;
    why = run.Why("networkctl " + args[0]);
    return false;
}

// The new file in force: networkd reloads its files, which reconfigures
// the links whose file changed; an unchanged file needs an explicit
// reconfigure (a second one right after the reload's would race with it).
// 52 and 53 also set the link down or up through networkd. Then the kernel
// state is awaited, until it has held for a moment.
bool NetworkdActivate(const NetInterface& n, bool changed, short cmd, const Wanted& wanted,
                      std::string& why, bool deferred) {
    if (!Networkctl({"reload"}, why) ||
        (!changed && !Networkctl({"reconfigure", "--", n.name}, why)))
        return false;
    if ((cmd == 52 || cmd == 53) && !Networkctl({cmd == 53 ? "up" : "down", "--", n.name}, why))
        return false;
    if (cmd == 54 && deferred)
        return true;
    if (WaitForInterface(n.name, wanted, cmd == 54 ? kLeaseWaitMs : kApplyWaitMs, kStableMs))
        return true;
    why = cmd == 54 ? "no DHCP lease came within " + std::to_string(kLeaseWaitMs / 1000) + " s"
                    : "systemd-networkd did not apply the settings within " +
                          std::to_string(kApplyWaitMs / 1000) + " s";
    return false;
}

namespace {

CmdResult Apply(const NetInterface& n, const NetworkdSettings& next, short cmd,
                const Wanted& wanted, const ResolvPlan& dns) {
    std::string path = NetworkdFilePath(n.name);
    std::string old;
    bool had = ReadTextFile(path, old);
    InterfaceSnapshot before = TakeSnapshot(n);
    std::string err;
    if (mkdir(kNetworkdDir, 0755) != 0 && errno != EEXIST)
        return Failed(std::string("Could not create ") + kNetworkdDir + ".");
    std::string text = NetworkdUnitText(n.name, next);
    if (!WriteFileAtomically(path, text, err))
        return Failed("Could not write " + path + ": " + err + ".");
    std::string why;
    if (NetworkdActivate(n, !had || text != old, cmd, wanted, why) && ApplyResolvPlan(dns, why))
        return {em_ActSuccAll, dns.note};
    std::string ignored;
    if (had)
        WriteFileAtomically(path, old, ignored);
    else
        unlink(path.c_str());
    UndoResolvPlan(dns);
    // A networkd that reloads the old file puts the old state back itself;
    // what it does not (an address it never managed) is restored by hand
    // once it is done.
    if (Networkctl({"reload"}, ignored)) {
        WaitForOldState(n, kRestoreWaitMs);
    }
    RestoreSnapshot(before);
    return Failed(n.name + " could not be configured: " + why +
                  "; the old settings were put back.");
}

// The agent's settings of n so far: its file, or else what the interface
// has now (DHCP when its address is a lease, its static address and
// gateway otherwise).
NetworkdSettings Current(const NetInterface& n, bool& fromFile) {
    NetworkdSettings s;
    std::string text;
    fromFile = ReadTextFile(NetworkdFilePath(n.name), text) && ParseNetworkdUnit(text, n.name, s);
    if (fromFile)
        return s;
    s = NetworkdSettings();
    s.up = n.up;
    if (n.mode == kModeDynamic) {
        s.dhcp = true;
    } else if (!n.ip.empty()) {
        s.address = n.ip + "/" + std::to_string(MaskPrefix(n.mask));
        s.gateway = DefaultGateway(n.name);
    }
    return s;
}

}  // namespace

namespace {

// What a command makes of the agent's settings of n, the kernel state
// that shows it done and the resolv.conf plan; false with the answer in r
// when nothing changes.
bool Plan(const NetInterface& n, const InterfaceWanted& w, NetworkdSettings& next, Wanted& wanted,
          ResolvPlan& dns, CmdResult& r) {
    bool fromFile = false;
    NetworkdSettings now = Current(n, fromFile);
    if (w.cmd == 54) {
        if (fromFile && now.dhcp && n.mode == kModeDynamic) {
            r = Unchanged(n.name + " already uses DHCP.");
            return false;
        }
        next = NetworkdSettings();
        next.dhcp = true;
        wanted = [](const NetInterface& i) { return i.mode == kModeDynamic && !i.ip.empty(); };
        return true;
    }
    if (w.cmd != 55) {
        bool up = w.cmd == 53;
        next = now;
        next.up = up;
        wanted = [up](const NetInterface& i) { return i.up == up; };
        return true;
    }
    const InterfaceManualRequest& q = w.manual;
    next = NetworkdSettings();
    next.address = q.ip + "/" + std::to_string(MaskPrefix(q.mask));
    next.gateway = q.gateway;
    next.dns = RequestedDns(q);
    dns = PlanResolvConf(next.dns, NetworkdFilePath(n.name), true);
    if (fromFile && now == next && n.ip == q.ip && n.mask == q.mask && n.up && !dns.write) {
        r = Unchanged(n.name + " already has these settings.");
        return false;
    }
    std::string ip = q.ip, mask = q.mask, gateway = q.gateway;
    wanted = [ip, mask, gateway](const NetInterface& i) {
        return i.up && i.ip == ip && i.mask == mask &&
               (gateway.empty() || DefaultGateway(i.name) == gateway);
    };
    return true;
}

// The runtime file of a deferred change: under /run, where networkd reads
// it with the files of /etc, and named to sort just before the agent's own
// file ('+' before '-'), so that networkd takes it first.
std::string RuntimePath(const std::string& name) {
    return "/run/systemd/network/00-norvane+" + name + ".network";
}

}  // namespace

CmdResult NetworkdChange(const NetInterface& n, short cmd) {
    InterfaceWanted w;
    w.cmd = cmd;
    NetworkdSettings next;
    Wanted wanted;
    ResolvPlan dns;
    CmdResult r;
    if (!Plan(n, w, next, wanted, dns, r))
        return r;
    return Apply(n, next, cmd, wanted, dns);
}

CmdResult NetworkdManual(const NetInterface& n, const InterfaceManualRequest& q) {
    InterfaceWanted w;
    w.cmd = 55;
    w.manual = q;
    NetworkdSettings next;
    Wanted wanted;
    ResolvPlan dns;
    CmdResult r;
    if (!Plan(n, w, next, wanted, dns, r))
        return r;
    return Apply(n, next, 55, wanted, dns);
}

bool NetworkdDeferred(const NetInterface& n, const InterfaceWanted& w, PendingChange& out,
                      CmdResult& r) {
    NetworkdSettings next;
    Wanted wanted;
    ResolvPlan dns;
    if (!Plan(n, w, next, wanted, dns, r))
        return false;
    InterfaceRecovery rec;
    rec.owner = "networkd";
    rec.cmd = w.cmd;
    rec.before = TakeSnapshot(n);
    std::string runtime = RuntimePath(n.name);
    rec.files.push_back(FileAsItIs(runtime));
    if (w.cmd == 55)
        rec.files.push_back(FileAsItIs(kResolvConfPath));
    std::string text = NetworkdUnitText(n.name, next);
    std::string err, why;
    mkdir("/run/systemd", 0755);
    if (mkdir("/run/systemd/network", 0755) != 0 && errno != EEXIST) {
        r = Failed("Could not create /run/systemd/network.");
        return false;
    }
    if (!WriteFileAtomically(runtime, text, err)) {
        r = Failed("Could not write " + runtime + ": " + err + ".");
        return false;
    }
    if (!NetworkdActivate(n, !rec.files[0].existed || rec.files[0].text != text, w.cmd, wanted, why,
                          true) ||
        !ApplyResolvPlan(dns, why)) {
        UndoInterfaceChange(rec);
        r = Failed(n.name + " could not be configured: " + why +
                   "; the old settings were put back.");
        return false;
    }
    r = {em_ActSuccAll, w.cmd == 54 ? AwaitLease(n.name, kDeferredLeaseWaitMs) : dns.note};
    std::string path = NetworkdFilePath(n.name);
    // The same text moves to /etc; networkd keeps what it applied and
    // reads the file there at its next reload.
    MakePending(
        rec,
        [path, runtime, text]() {
            std::string e;
            if ((mkdir(kNetworkdDir, 0755) != 0 && errno != EEXIST) ||
                !WriteFileAtomically(path, text, e))
                return Failed("Could not write " + path + (e.empty() ? "" : ": " + e) + ".");
            unlink(runtime.c_str());
            return Done();
        },
        out);
    return true;
}

void NetworkdUndo(const InterfaceRecovery& rec) {
    const NetInterface& old = rec.before.iface;
    PutFilesBack(rec.files);
    std::string ignored;
    // networkd back on the file of before; a link the change set down or up
    // goes back as well.
    if (Networkctl({"reload"}, ignored)) {
        NetInterface now;
        CmdResult r;
        if ((rec.cmd == 52 || rec.cmd == 53) && FindInterface(old.name, now, r) && now.up != old.up)
            Networkctl({old.up ? "up" : "down", "--", old.name}, ignored);
        WaitForOldState(old, kRestoreWaitMs);
    }
    RestoreSnapshot(rec.before);
}

}  // namespace nvagent
