// Interface down, up, automatic (DHCP) and manual addressing (commands 52
// to 55): the change takes effect at once and persists in the configuration
// of the network manager that owns the interface. ifupdown and
// systemd-networkd are carried out (interface_managers.h); an interface of
// NetworkManager or netplan is refused with the reason, since their files
// are theirs (netplan generates the others' files).
#include <dirent.h>
#include <sys/stat.h>

#include "agent/live/interface_managers.h"
#include "agent/live/interface_state.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_services.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const char* const kInterfacesFile = "/etc/network/interfaces";

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

// The manager of the machine's interfaces: netplan's files first (it
// generates the others' configuration), then a running daemon, then
// ifupdown's file and tools.
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
        case Manager::kNetworkd:
            if (!FindTool("networkctl").empty())
                return false;
            r = Failed(
                "The interfaces are managed by systemd-networkd, but networkctl is missing.");
            return true;
        case Manager::kNetplan:
            r = Failed(
                "The interfaces are configured by netplan (/etc/netplan); change them there.");
            return true;
        case Manager::kNetworkManager:
            r = Failed("The interfaces are managed by NetworkManager; change them with nmcli.");
            return true;
        case Manager::kNone:
            r = Failed(std::string("No network configuration was found (") + kInterfacesFile +
                       " and ifupdown are missing); the change would not survive a restart.");
            return true;
    }
    return false;
}

}  // namespace

std::vector<std::string> RequestedDns(const InterfaceManualRequest& q) {
    std::vector<std::string> dns;
    for (const std::string* d : {&q.dns1, &q.dns2}) {
        if (!d->empty())
            dns.push_back(*d);
    }
    return dns;
}

CmdResult ChangeInterface(const InterfaceRequest& q) {
    NetInterface n;
    CmdResult r;
    if (!FindInterface(q.name, n, r))
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
    return m == Manager::kNetworkd ? NetworkdChange(n, q.cmd) : IfupdownChange(n, q.cmd);
}

CmdResult ChangeInterfaceManual(const InterfaceManualRequest& q) {
    NetInterface n;
    CmdResult r;
    if (!FindInterface(q.name, n, r))
        return r;
    if (n.name == "lo")
        return Invalid("The loopback interface keeps its fixed address.");
    Manager m = Owner();
    if (Refused(m, r))
        return r;
    return m == Manager::kNetworkd ? NetworkdManual(n, q) : IfupdownManual(n, q);
}

}  // namespace nvagent
