// Ownership through each tool's own interface: netplan's files,
// NetworkManager's bus API, networkd's state files, ifupdown's files.
#include "agent/live/interfaces/interface_owner.h"

#include <dirent.h>
#include <sys/stat.h>

#include <map>
#include <sstream>

#include "agent/live/interfaces/ifupdown_config.h"
#include "agent/live/interfaces/network_daemons.h"
#include "agent/live/interfaces/nm_bus.h"
#include "agent/live/live_files.h"
#include "agent/live/run_process.h"

namespace nvagent {

const char* const kNetplanDirs[3] = {"/lib/netplan", "/etc/netplan", "/run/netplan"};

namespace {

std::string Trimmed(const std::string& s) {
    size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos)
        return std::string();
    size_t e = s.find_last_not_of(" \t\r");
    return s.substr(b, e - b + 1);
}

std::string Unquoted(std::string s) {
    if (s.size() >= 2 && (s[0] == '"' || s[0] == '\'') && s.back() == s[0])
        s = s.substr(1, s.size() - 2);
    return s;
}

// The netplan files in force: name -> path, later directories winning.
std::map<std::string, std::string> NetplanFiles() {
    std::map<std::string, std::string> files;
    for (const char* dir : kNetplanDirs) {
        DIR* d = opendir(dir);
        if (d == nullptr)
            continue;
        while (dirent* e = readdir(d)) {
            std::string n = e->d_name;
            if (n.size() > 5 && n.compare(n.size() - 5, 5, ".yaml") == 0)
                files[n] = std::string(dir) + "/" + n;
        }
        closedir(d);
    }
    return files;
}

}  // namespace

bool NetplanNames(const std::string& yaml, const std::string& iface) {
    std::istringstream in(yaml);
    std::string line;
    while (std::getline(in, line)) {
        std::string t = Trimmed(line.substr(0, line.find('#')));
        size_t colon = t.find(':');
        if (colon == std::string::npos)
            continue;
        std::string key = Unquoted(Trimmed(t.substr(0, colon)));
        std::string value = Unquoted(Trimmed(t.substr(colon + 1)));
        // A device's own key, or a match that renames or names it.
        if ((key == iface && (value.empty() || value[0] == '{')) ||
            ((key == "set-name" || key == "name") && value == iface))
            return true;
    }
    return false;
}

std::string NetplanRenderer(const std::string& yaml) {
    std::istringstream in(yaml);
    std::string line;
    while (std::getline(in, line)) {
        std::string t = Trimmed(line.substr(0, line.find('#')));
        if (t.compare(0, 9, "renderer:") == 0 && Unquoted(Trimmed(t.substr(9))) == "NetworkManager")
            return "NetworkManager";
    }
    return "networkd";
}

bool NetworkdManagesLink(int ifindex) {
    std::string text;
    if (ifindex <= 0 || !ReadTextFile("/run/systemd/netif/links/" + std::to_string(ifindex), text))
        return false;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (line.compare(0, 12, "ADMIN_STATE=") == 0)
            return line.substr(12) != "unmanaged";
    }
    return false;
}

bool NetworkdRunsHere() {
    if (BusNameOwnerHere("org.freedesktop.network1") != 0)
        return true;
    return DaemonBinaryRunsHere(
        {"/usr/lib/systemd/systemd-networkd", "/lib/systemd/systemd-networkd"},
        {0, SystemUid("systemd-network")});
}

Ownership FindOwner(const NetInterface& n) {
    Ownership o;
    std::string netplanRenderer;
    for (const auto& f : NetplanFiles()) {
        std::string text;
        if (!ReadTextFile(f.second, text))
            continue;
        if (NetplanRenderer(text) == "NetworkManager")
            netplanRenderer = "NetworkManager";
        if (o.file.empty() && NetplanNames(text, n.name))
            o.file = f.second;
    }
    if (!o.file.empty()) {
        o.owner = IfaceOwner::kNetplan;
        o.renderer = netplanRenderer.empty() ? "networkd" : netplanRenderer;
        return o;
    }
    if (NetworkManagerManages(n.name)) {
        o.owner = IfaceOwner::kNetworkManager;
        return o;
    }
    bool networkd = NetworkdRunsHere();
    if (networkd && NetworkdManagesLink(n.index)) {
        o.owner = IfaceOwner::kNetworkd;
        return o;
    }
    std::vector<IfupdownFile> files = ReadIfupdownFiles(kIfupdownMainFile);
    bool ifupdown = !files.empty() && !FindTool("ifup").empty();
    int at = StanzaFileIndex(files, n.name);
    if (ifupdown && at >= 0) {
        o.owner = IfaceOwner::kIfupdown;
        o.file = files[static_cast<size_t>(at)].path;
        return o;
    }
    if (networkd) {
        o.owner = IfaceOwner::kNetworkd;
    } else if (ifupdown) {
        o.owner = IfaceOwner::kIfupdown;
        o.file = kIfupdownMainFile;
    }
    return o;
}

const char* OwnerName(IfaceOwner o) {
    switch (o) {
        case IfaceOwner::kIfupdown:
            return "ifupdown";
        case IfaceOwner::kNetworkd:
            return "systemd-networkd";
        case IfaceOwner::kNetworkManager:
            return "NetworkManager";
        case IfaceOwner::kNetplan:
            return "netplan";
        case IfaceOwner::kNone:
            break;
    }
    return "no network manager";
}

}  // namespace nvagent
