// Interface down, up, automatic (DHCP) and manual addressing (commands 52
// to 55): the change takes effect at once and persists in the configuration
// of the network manager that owns the interface. ifupdown is carried out
// (its interfaces file edited in place, then ifdown/ifup); an interface of
// NetworkManager, netplan or systemd-networkd is refused with the reason,
// since their files are theirs (netplan generates the others' files).
// A failure after the file was written puts the file and the old addresses
// back.
#include <dirent.h>
#include <sys/stat.h>

#include <vector>

#include "agent/atomic_file.h"
#include "agent/commands/payload_parse.h"
#include "agent/live/ifupdown_config.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_files.h"
#include "agent/live/live_interfaces.h"
#include "agent/live/live_services.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const char* const kInterfacesFile = "/etc/network/interfaces";
const int kIfupLimitMs = 60000;

enum class Manager { kIfupdown, kNetworkd, kNetworkManager, kNetplan, kNone };

bool HasYaml(const char* dir) {
    DIR* d = opendir(dir);
    if (d == nullptr)
        return false;
    bool found = false;
    while (dirent* e = readdir(d)) {
        std::string n = e->d_name;
        if (n.size() > 5 && n.compare(n.size() - 5, 5, ".yaml") == 0)
            found = true;
    }
    closedir(d);
    return found;
}

Manager Owner() {
    if (HasYaml("/etc/netplan"))
        return Manager::kNetplan;
    if (ProcessRuns("NetworkManager"))
        return Manager::kNetworkManager;
    if (ProcessRuns("systemd-network"))
        return Manager::kNetworkd;
    struct stat st {};
    if (stat(kInterfacesFile, &st) == 0 && !FindTool("ifup").empty())
        return Manager::kIfupdown;
    return Manager::kNone;
}

bool Refused(Manager m, CmdResult& r) {
    switch (m) {
        case Manager::kIfupdown:
            return false;
        case Manager::kNetplan:
            r = Failed(
                "The interfaces are configured by netplan (/etc/netplan); change them there.");
            return true;
        case Manager::kNetworkManager:
            r = Failed("The interfaces are managed by NetworkManager; change them with nmcli.");
            return true;
        case Manager::kNetworkd:
            r = Failed(
                "The interfaces are managed by systemd-networkd; change them in "
                "/etc/systemd/network.");
            return true;
        case Manager::kNone:
            r = Failed(std::string("No network configuration was found (") + kInterfacesFile +
                       " and ifupdown are missing); the change would not survive a restart.");
            return true;
    }
    return false;
}

bool Find(const std::string& name, NetInterface& out, CmdResult& r) {
    std::vector<NetInterface> all;
    std::string err;
    if (!ReadInterfaces(all, err)) {
        r = Failed("Cannot read the interfaces: " + err + ".");
        return false;
    }
    for (const NetInterface& n : all) {
        if (n.name == name) {
            out = n;
            return true;
        }
    }
    r = Invalid("There is no interface named " + name + ".");
    return false;
}

unsigned Prefix(const std::string& mask) {
    uint32_t m = 0;
    ParseIPv4(mask, m);
    unsigned n = 0;
    while (m & 0x80000000u) {
        ++n;
        m <<= 1;
    }
    return n;
}

bool Ip(const std::vector<std::string>& args, std::string& err) {
    std::vector<std::string> argv = {"ip"};
    argv.insert(argv.end(), args.begin(), args.end());
    ToolRun run = RunTool(argv, "", 20000);
    if (run.Ok())
        return true;
    err = run.Why("ip");
    return false;
}

// The interfaces file with name's new stanza written, then the interface
// brought down and up again by ifupdown; on failure the old file and
// address come back.
CmdResult Reconfigure(const NetInterface& n, const std::string& stanza) {
    std::string old;
    ReadTextFile(kInterfacesFile, old);
    std::string next = WithIface(old, n.name, stanza, true);
    std::string err;
    if (!WriteFileAtomically(kInterfacesFile, next, err))
        return Failed(std::string("Could not write ") + kInterfacesFile + ": " + err + ".");
    RunTool({"ifdown", "--force", n.name}, "", kIfupLimitMs);
    std::string ignored;
    Ip({"-4", "addr", "flush", "dev", n.name}, ignored);
    ToolRun up = RunTool({"ifup", n.name}, "", kIfupLimitMs);
    if (up.Ok())
        return Done();
    RunTool({"ifdown", "--force", n.name}, "", kIfupLimitMs);
    WriteFileAtomically(kInterfacesFile, old, ignored);
    Ip({"-4", "addr", "flush", "dev", n.name}, ignored);
    if (!n.ip.empty())
        Ip({"addr", "add", n.ip + "/" + std::to_string(Prefix(n.mask)), "dev", n.name}, ignored);
    Ip({"link", "set", "dev", n.name, n.up ? "up" : "down"}, ignored);
    return Failed(n.name + " could not be configured: " + up.Why("ifup") +
                  "; the old settings were put back.");
}

}  // namespace

CmdResult ChangeInterface(const InterfaceRequest& q) {
    NetInterface n;
    CmdResult r;
    if (!Find(q.name, n, r))
        return r;
    if (q.cmd == 54 && n.name == "lo")
        return Invalid("The loopback interface cannot use DHCP.");
    if (q.cmd == 52 && !n.up)
        return Unchanged(n.name + " is already down.");
    if (q.cmd == 53 && n.up)
        return Unchanged(n.name + " is already up.");
    Manager m = Owner();
    if (Refused(m, r))
        return r;
    std::string text;
    ReadTextFile(kInterfacesFile, text);
    std::string stanza = IfaceStanza(text, n.name);
    if (q.cmd == 54) {
        if (stanza.find(" inet dhcp") != std::string::npos && n.mode == kModeDynamic)
            return Unchanged(n.name + " already uses DHCP.");
        return Reconfigure(n, "iface " + n.name + " inet dhcp\n");
    }
    // Down and up: the link at once; the auto line for the next boot.
    bool up = q.cmd == 53;
    std::string err;
    if (!Ip({"link", "set", "dev", n.name, up ? "up" : "down"}, err))
        return Failed("Could not set " + n.name + (up ? " up: " : " down: ") + err + ".");
    if (stanza.empty() && up)
        stanza = "iface " + n.name + " inet manual\n";
    std::string next = WithIface(text, n.name, stanza, up);
    if (next != text && !WriteFileAtomically(kInterfacesFile, next, err)) {
        std::string ignored;
        Ip({"link", "set", "dev", n.name, up ? "down" : "up"}, ignored);
        return Failed(std::string("Could not write ") + kInterfacesFile + ": " + err +
                      "; the interface was left as it was.");
    }
    return Done();
}

CmdResult ChangeInterfaceManual(const InterfaceManualRequest& q) {
    NetInterface n;
    CmdResult r;
    if (!Find(q.name, n, r))
        return r;
    if (n.name == "lo")
        return Invalid("The loopback interface keeps its fixed address.");
    if (Refused(Owner(), r))
        return r;
    std::string stanza =
        "iface " + n.name + " inet static\n    address " + q.ip + "\n    netmask " + q.mask + "\n";
    if (!q.gateway.empty())
        stanza += "    gateway " + q.gateway + "\n";
    std::string dns = q.dns1 + (q.dns1.empty() || q.dns2.empty() ? "" : " ") + q.dns2;
    if (!dns.empty())
        stanza += "    dns-nameservers " + dns + "\n";
    std::string text;
    ReadTextFile(kInterfacesFile, text);
    if (IfaceStanza(text, n.name) == stanza && n.ip == q.ip && n.mask == q.mask &&
        n.mode == kModeStatic) {
        return Unchanged(n.name + " already has these settings.");
    }
    return Reconfigure(n, stanza);
}

}  // namespace nvagent
