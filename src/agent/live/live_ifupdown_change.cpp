// Interface changes where ifupdown owns the interfaces: the interface's
// stanza and auto line in /etc/network/interfaces edited in place, then the
// interface brought down and up by ifdown/ifup. The DNS servers of a manual
// address go into its dns-nameservers line (which resolvconf applies where
// it is installed) and, where no tool owns it, into /etc/resolv.conf. A
// failure after a file was written puts the files and the old addresses
// back. Names follow "--" wherever a tool takes them as operands (ip takes
// them after "dev", which reads the next word as a name whatever it is).
#include "agent/atomic_file.h"
#include "agent/live/ifupdown_config.h"
#include "agent/live/interface_managers.h"
#include "agent/live/interface_state.h"
#include "agent/live/live_files.h"
#include "agent/live/live_resolv_conf.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const char* const kInterfacesFile = "/etc/network/interfaces";
const int kIfupLimitMs = 60000;

// The interfaces file with name's new stanza written, then the interface
// brought down and up again by ifupdown and resolv.conf written as planned;
// on failure the old files and address come back.
CmdResult Reconfigure(const NetInterface& n, const std::string& stanza, const ResolvPlan& dns) {
    InterfaceSnapshot before = TakeSnapshot(n);
    std::string old;
    ReadTextFile(kInterfacesFile, old);
    std::string next = WithIface(old, n.name, stanza, true);
    std::string err;
    if (!WriteFileAtomically(kInterfacesFile, next, err))
        return Failed(std::string("Could not write ") + kInterfacesFile + ": " + err + ".");
    RunTool({"ifdown", "--force", "--", n.name}, "", kIfupLimitMs);
    std::string ignored;
    RunIp({"-4", "addr", "flush", "dev", n.name}, ignored);
    ToolRun up = RunTool({"ifup", "--", n.name}, "", kIfupLimitMs);
    std::string why = up.Ok() ? std::string() : up.Why("ifup");
    if (up.Ok() && ApplyResolvPlan(dns, why))
        return {em_ActSuccAll, dns.note};
    RunTool({"ifdown", "--force", "--", n.name}, "", kIfupLimitMs);
    WriteFileAtomically(kInterfacesFile, old, ignored);
    UndoResolvPlan(dns);
    RestoreSnapshot(before);
    return Failed(n.name + " could not be configured: " + why +
                  "; the old settings were put back.");
}

}  // namespace

CmdResult IfupdownChange(const NetInterface& n, short cmd) {
    std::string text;
    ReadTextFile(kInterfacesFile, text);
    std::string stanza = IfaceStanza(text, n.name);
    if (cmd == 54) {
        if (stanza.find(" inet dhcp") != std::string::npos && n.mode == kModeDynamic)
            return Unchanged(n.name + " already uses DHCP.");
        return Reconfigure(n, "iface " + n.name + " inet dhcp\n", ResolvPlan());
    }
    // Down and up: the link at once; the auto line for the next boot.
    bool up = cmd == 53;
    std::string err;
    if (!RunIp({"link", "set", "dev", n.name, up ? "up" : "down"}, err))
        return Failed("Could not set " + n.name + (up ? " up: " : " down: ") + err + ".");
    if (stanza.empty() && up)
        stanza = "iface " + n.name + " inet manual\n";
    std::string next = WithIface(text, n.name, stanza, up);
    if (next != text && !WriteFileAtomically(kInterfacesFile, next, err)) {
        std::string ignored;
        RunIp({"link", "set", "dev", n.name, up ? "down" : "up"}, ignored);
        return Failed(std::string("Could not write ") + kInterfacesFile + ": " + err +
                      "; the interface was left as it was.");
    }
    return Done();
}

CmdResult IfupdownManual(const NetInterface& n, const InterfaceManualRequest& q) {
    std::string stanza =
        "iface " + n.name + " inet static\n    address " + q.ip + "\n    netmask " + q.mask + "\n";
    if (!q.gateway.empty())
        stanza += "    gateway " + q.gateway + "\n";
    std::vector<std::string> servers = RequestedDns(q);
    std::string dns;
    for (const std::string& s : servers)
        dns += (dns.empty() ? "" : " ") + s;
    if (!dns.empty())
        stanza += "    dns-nameservers " + dns + "\n";
    ResolvPlan plan = PlanResolvConf(servers, kInterfacesFile, false);
    std::string text;
    ReadTextFile(kInterfacesFile, text);
    if (IfaceStanza(text, n.name) == stanza && n.ip == q.ip && n.mask == q.mask &&
        n.mode == kModeStatic && !plan.write) {
        return Unchanged(n.name + " already has these settings.");
    }
    return Reconfigure(n, stanza, plan);
}

}  // namespace nvagent
