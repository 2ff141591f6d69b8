// Interface changes where no network manager owns the interface: the kernel
// changed with ip (a DHCP client of the agent's own for 54), nothing
// written for the next boot, and the detail says so. A failure puts the
// addresses, routes and link state of before back. The deferred form is
// the same change: there is nothing persistent to write at its commit.
#include "agent/live/interfaces/interface_managers.h"
#include "agent/live/interfaces/interface_recovery.h"
#include "agent/live/interfaces/interface_state.h"
#include "agent/live/interfaces/live_resolv_conf.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

// dhclient's own wait for an offer is 60 s.
const int kDhcpLimitMs = 75000;

std::string LiveOnly(const std::string& name) {
    return "No network manager owns " + name +
           ": it was changed live only, and the change will not survive a reboot.";
}

CmdResult Undone(const InterfaceSnapshot& before, const std::string& why) {
    StopDhcpClient(before.iface.name);
    RestoreSnapshot(before);
    return Failed(before.iface.name + " could not be configured: " + why +
                  "; the old settings were put back.");
}

// deferred: the client started in the background and its lease awaited a
// few seconds only, no lease yet being no failure (the guard's watch
// judges the change).
CmdResult Change(const NetInterface& n, short cmd, bool deferred) {
    InterfaceSnapshot before = TakeSnapshot(n);
    std::string why;
    if (cmd == 52 || cmd == 53) {
        if (!RunIp({"link", "set", "dev", n.name, cmd == 53 ? "up" : "down"}, why))
            return Undone(before, why);
        return {em_ActSuccAll, LiveOnly(n.name)};
    }
    if (!before.dhcpClient.empty() && n.mode == kModeDynamic)
        return Unchanged(n.name + " already uses DHCP.");
    if (FindTool("dhclient").empty())
        return Failed("No DHCP client (dhclient) is installed for " + n.name + ".");
    StopDhcpClient(n.name);
    RunIp({"-4", "addr", "flush", "dev", n.name}, why);
    RunIp({"link", "set", "dev", n.name, "up"}, why);
    if (deferred) {
        if (!StartDhcpClient(n.name, why))
            return Undone(before, why);
        std::string lease = AwaitLease(n.name, kDeferredLeaseWaitMs);
        return {em_ActSuccAll, LiveOnly(n.name) + (lease.empty() ? "" : " " + lease)};
    }
    // "-1": one try, exit status 2 without a lease; with one, dhclient goes
    // on in the background and renews it.
    ToolRun run = RunTool({"dhclient", "-4", "-1", "-pf", "/run/dhclient." + n.name + ".pid", "-lf",
                           "/var/lib/dhcp/dhclient." + n.name + ".leases", n.name},
                          "", kDhcpLimitMs);
    if (!run.Ok())
        return Undone(before,
                      run.iExitCode == 2 ? std::string("no DHCP lease came") : run.Why("dhclient"));
    return {em_ActSuccAll, LiveOnly(n.name)};
}

}  // namespace

CmdResult UnmanagedChange(const NetInterface& n, short cmd) {
    return Change(n, cmd, false);
}

CmdResult UnmanagedManual(const NetInterface& n, const InterfaceManualRequest& q) {
    std::vector<std::string> servers = RequestedDns(q);
    ResolvPlan plan =
        PlanResolvConf(servers, "no file (no network manager owns " + n.name + ")", false);
    InterfaceSnapshot before = TakeSnapshot(n);
    if (n.ip == q.ip && n.mask == q.mask && n.mode == kModeStatic && n.up &&
        before.dhcpClient.empty() && before.addrs.size() == 1 && before.gateway == q.gateway &&
        !plan.write)
        return Unchanged(n.name + " already has these settings.");
    std::string why;
    StopDhcpClient(n.name);
    bool done =
        RunIp({"-4", "addr", "flush", "dev", n.name}, why) &&
        RunIp({"link", "set", "dev", n.name, "up"}, why) &&
        RunIp({"-4", "addr", "add", q.ip + "/" + std::to_string(MaskPrefix(q.mask)), "dev", n.name},
              why) &&
        (q.gateway.empty() ||
         RunIp({"-4", "route", "replace", "default", "via", q.gateway, "dev", n.name}, why)) &&
        ApplyResolvPlan(plan, why);
    if (!done) {
        UndoResolvPlan(plan);
        return Undone(before, why);
    }
    std::string detail = LiveOnly(n.name);
    if (!plan.note.empty())
        detail += " " + plan.note;
    return {em_ActSuccAll, detail};
}

bool UnmanagedDeferred(const NetInterface& n, const InterfaceWanted& w, PendingChange& out,
                       CmdResult& r) {
    InterfaceRecovery rec;
    rec.owner = "none";
    rec.cmd = w.cmd;
    rec.before = TakeSnapshot(n);
    // 55 may write the DNS servers, a DHCP client's script its own.
    if (w.cmd == 54 || w.cmd == 55)
        rec.files.push_back(FileAsItIs(kResolvConfPath));
    r = w.cmd == 55 ? UnmanagedManual(n, w.manual) : Change(n, w.cmd, true);
    if (r.iCode != em_ActSuccAll)
        return false;
    CmdResult answer = r;
    MakePending(
        rec, [answer]() { return answer; }, out);
    return true;
}

void UnmanagedUndo(const InterfaceRecovery& rec) {
    // A client the change started ends; the old one comes back by hand.
    if (DhcpClientOf(rec.before.iface.name) != rec.before.dhcpClient)
        StopDhcpClient(rec.before.iface.name);
    PutFilesBack(rec.files);
    RestoreSnapshot(rec.before);
}

}  // namespace nvagent
