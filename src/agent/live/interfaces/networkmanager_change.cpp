// Interface changes where NetworkManager manages the interface: the
// connection profile active on the device (else the device's own profile,
// else a new one) is modified with nmcli, so that the change persists in
// NetworkManager's own storage (its keyfiles), and activated or
// deactivated. Each change is wrapped in a NetworkManager checkpoint of the
// device: the agent destroys it only once the kernel shows the result, and
// rolls back to it on any failure; should the agent die midway,
// NetworkManager rolls back by itself when the checkpoint's time runs out.
// The DNS servers go into the profile; NetworkManager writes resolv.conf
// as its own configuration says.

#include "agent/live/interfaces/interface_managers.h"
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
// Longer than a whole change; NetworkManager's own rollback should the
// agent not finish it.
const unsigned kCheckpointS = 120;

using Wanted = std::function<bool(const NetInterface&)>;

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
// device by name, else a new one (not started on its own). Empty with why.
std::string Profile(const NetInterface& n, std::string& why) {
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
    if (!Nmcli({"connection", "add", "type", type, "ifname", n.name, "con-name",
                "norvane-" + n.name, "connection.autoconnect", "no"},
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

CmdResult NetworkManagerChange(const NetInterface& n, short cmd) {
    std::string why;
    std::string uuid = Profile(n, why);
    if (uuid.empty())
        return Failed("NetworkManager has no connection profile for " + n.name + ": " + why + ".");
    if (cmd == 54) {
        if (Ipv4Settings(uuid)[0] == "auto" && n.mode == kModeDynamic)
            return Unchanged(n.name + " already uses DHCP.");
        return Apply(n, uuid,
                     {"connection.autoconnect", "yes", "ipv4.method", "auto", "ipv4.addresses", "",
                      "ipv4.gateway", "", "ipv4.dns", ""},
                     true, [](const NetInterface& i) {
                         return i.up && i.mode == kModeDynamic && !i.ip.empty();
                     });
    }
    bool up = cmd == 53;
    return Apply(n, uuid, {"connection.autoconnect", up ? "yes" : "no"}, up,
                 [up](const NetInterface& i) { return i.up == up; });
}

CmdResult NetworkManagerManual(const NetInterface& n, const InterfaceManualRequest& q) {
    std::string why;
    std::string uuid = Profile(n, why);
    if (uuid.empty())
        return Failed("NetworkManager has no connection profile for " + n.name + ": " + why + ".");
    std::string address = q.ip + "/" + std::to_string(MaskPrefix(q.mask));
    std::string dns;
    for (const std::string& s : RequestedDns(q))
        dns += (dns.empty() ? "" : ",") + s;
    if (Ipv4Settings(uuid) == std::vector<std::string>{"manual", address, q.gateway, dns} && n.up &&
        n.ip == q.ip && n.mask == q.mask)
        return Unchanged(n.name + " already has these settings.");
    std::string ip = q.ip, mask = q.mask, gateway = q.gateway;
    return Apply(n, uuid,
                 {"connection.autoconnect", "yes", "ipv4.method", "manual", "ipv4.addresses",
                  address, "ipv4.gateway", q.gateway, "ipv4.dns", dns},
                 true, [ip, mask, gateway](const NetInterface& i) {
                     return i.up && i.ip == ip && i.mask == mask &&
                            (gateway.empty() || DefaultGateway(i.name) == gateway);
                 });
}

}  // namespace nvagent
