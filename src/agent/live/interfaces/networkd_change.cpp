// Interface changes where systemd-networkd owns the interfaces. The agent
// writes only its own file (networkd_config.h), atomically, then has
// networkd reload its files (and reconfigure the interface), and waits until
// the kernel shows the result (a lease, the address, the link state). Any
// failure (networkctl cannot reach networkd, no lease in time, ...) puts
// the old file back (or removes the new one), reloads again and restores
// the old addresses and link state.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "agent/atomic_file.h"
#include "agent/live/interfaces/interface_managers.h"
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
                      std::string& why) {
    if (!Networkctl({"reload"}, why) ||
        (!changed && !Networkctl({"reconfigure", "--", n.name}, why)))
        return false;
    if ((cmd == 52 || cmd == 53) && !Networkctl({cmd == 53 ? "up" : "down", "--", n.name}, why))
        return false;
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

CmdResult NetworkdChange(const NetInterface& n, short cmd) {
    bool fromFile = false;
    NetworkdSettings next = Current(n, fromFile);
    if (cmd == 54) {
        if (fromFile && next.dhcp && n.mode == kModeDynamic)
            return Unchanged(n.name + " already uses DHCP.");
        next = NetworkdSettings();
        next.dhcp = true;
        return Apply(
            n, next, cmd,
            [](const NetInterface& i) { return i.mode == kModeDynamic && !i.ip.empty(); },
            ResolvPlan());
    }
    bool up = cmd == 53;
    next.up = up;
    return Apply(
        n, next, cmd, [up](const NetInterface& i) { return i.up == up; }, ResolvPlan());
}

CmdResult NetworkdManual(const NetInterface& n, const InterfaceManualRequest& q) {
    NetworkdSettings next;
    next.address = q.ip + "/" + std::to_string(MaskPrefix(q.mask));
    next.gateway = q.gateway;
    next.dns = RequestedDns(q);
    std::string path = NetworkdFilePath(n.name);
    ResolvPlan plan = PlanResolvConf(next.dns, path, true);
    bool fromFile = false;
    NetworkdSettings now = Current(n, fromFile);
    if (fromFile && now == next && n.ip == q.ip && n.mask == q.mask && n.up && !plan.write)
        return Unchanged(n.name + " already has these settings.");
    std::string ip = q.ip, mask = q.mask, gateway = q.gateway;
    return Apply(
        n, next, 55,
        [ip, mask, gateway](const NetInterface& i) {
            return i.up && i.ip == ip && i.mask == mask &&
                   (gateway.empty() || DefaultGateway(i.name) == gateway);
        },
        plan);
}

}  // namespace nvagent
