// Interface changes where netplan configures the interface. The change goes
// into netplan's configuration with netplan's own tool: the interface's
// addressing keys cleared first (netplan merges lists, so a new address
// would otherwise join the old ones), then the new ones set; netplan moves
// the interface's definition into its own file for that. It is applied the
// way netplan applies it: `netplan apply` where systemd runs the machine,
// else `netplan generate` and networkd reloading its files. `netplan get`
// then shows exactly the requested addressing. A file cloud-init generated
// is taken over as cloud-init documents (cloud_init.h). Any failure puts
// netplan's files back, generates and reloads again, and restores the
// interface as it was.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "agent/atomic_file.h"
#include "agent/live/interfaces/cloud_init.h"
#include "agent/live/interfaces/interface_managers.h"
#include "agent/live/interfaces/interface_state.h"
#include "agent/live/interfaces/network_daemons.h"
#include "agent/live/live_files.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const char* const kNetplanEtc = "/etc/netplan";
const int kNetplanLimitMs = 120000;
const int kRestoreWaitMs = 5000;
const int kStableMs = 500;

bool Netplan(const std::vector<std::string>& args, std::string& out, std::string& why) {
    std::vector<std::string> argv = {"netplan"};
    argv.insert(argv.end(), args.begin(), args.end());
    ToolRun run = RunTool(argv, "", kNetplanLimitMs);
    out = run.sOut;
    if (run.Ok())
        return true;
    std::string said = run.sErr.substr(0, run.sErr.find('\n'));
    why = "netplan " + args[0] + (said.empty() ? " failed" : ": " + said);
    return false;
}

// The .yaml files of /etc/netplan and their texts.
std::map<std::string, std::string> EtcFiles() {
    std::map<std::string, std::string> files;
    DIR* d = opendir(kNetplanEtc);
    if (d == nullptr)
        return files;
    while (dirent* e = readdir(d)) {
        std::string n = e->d_name;
        std::string text;
        if (n.size() > 5 && n.compare(n.size() - 5, 5, ".yaml") == 0 &&
            ReadTextFile(std::string(kNetplanEtc) + "/" + n, text))
            files[std::string(kNetplanEtc) + "/" + n] = text;
    }
    closedir(d);
    return files;
}

// /etc/netplan as it was: changed files written back, new ones removed.
void PutBack(const std::map<std::string, std::string>& before) {
    std::string ignored;
    for (const auto& f : EtcFiles()) {
        if (before.count(f.first) == 0)
            unlink(f.first.c_str());
    }
    for (const auto& f : before) {
        std::string now;
        if (!ReadTextFile(f.first, now) || now != f.second) {
            WriteFileAtomically(f.first, f.second, ignored);
            chmod(f.first.c_str(), 0600);
        }
    }
}

std::string Generated(const std::string& name) {
    std::string text;
    ReadTextFile("/run/systemd/network/10-netplan-" + name + ".network", text);
    return text;
}

// The configuration in force: netplan apply under systemd; else the
// renderer's files generated and networkd told, and the kernel awaited.
bool Activate(const NetInterface& n, short cmd, const Wanted& wanted, std::string& why) {
    std::string out;
    struct stat st {};
    // systemd runs the machine when it is PID 1 (not only when its run
    // directory is there: a container may have one).
    if (stat("/run/systemd/system", &st) == 0 &&
        ResolvedPath("/proc/1/exe") == ResolvedPath("/usr/lib/systemd/systemd")) {
        if (!Netplan({"apply"}, out, why))
            return false;
        if ((cmd == 52 || cmd == 53) && !Networkctl({cmd == 53 ? "up" : "down", "--", n.name}, why))
            return false;
        if (WaitForInterface(n.name, wanted, 30000, kStableMs))
            return true;
        why = "netplan did not apply the settings in time";
        return false;
    }
    std::string before = Generated(n.name);
    if (!Netplan({"generate"}, out, why))
        return false;
    return NetworkdActivate(n, Generated(n.name) != before, cmd, wanted, why);
}

// Sets the interface's keys (a flow mapping) with netplan set, the
// addressing keys cleared first when clear is set.
bool Set(const std::string& name, const std::string& mapping, bool clear, std::string& why) {
    std::string out;
    std::string key = "ethernets." + name;
    if (clear && !Netplan({"set", key + "={addresses: null, routes: null, dhcp4: null, gateway4: "
                                        "null, nameservers: null}"},
                          out, why))
        return false;
    return Netplan({"set", key + "=" + mapping}, out, why);
}

CmdResult Apply(const NetInterface& n, short cmd, const std::string& file,
                const std::string& mapping, bool clear, const Wanted& wanted) {
    std::string out, why;
    if (!Netplan({"get", "ethernets." + n.name}, out, why))
        return Failed(n.name + " could not be read from netplan: " + why + ".");
    if (SplitLines(out) == std::vector<std::string>{"null"})
        return Failed(n.name + " is defined in " + file +
                      " other than as an ethernet of that name; change it there.");
    InterfaceSnapshot before = TakeSnapshot(n);
    std::map<std::string, std::string> files = EtcFiles();
    std::string fileText;
    ReadTextFile(file, fileText);
    bool cloudInit = CloudInitGenerated(file, fileText);
    bool wroteSwitch = false;
    std::string err;
    if (cloudInit && !DisableCloudInitNetwork(&wroteSwitch, err))
        return Failed(std::string("Could not write ") + kCloudInitDisableFile + ": " + err + ".");
    if (Set(n.name, mapping, clear, why) && Activate(n, cmd, wanted, why))
        return {em_ActSuccAll, cloudInit ? CloudInitNote(file) : std::string()};
    UndoCloudInitNetwork(wroteSwitch);
    PutBack(files);
    std::string ignored;
    if (Netplan({"generate"}, out, ignored) && Networkctl({"reload"}, ignored)) {
        WaitForOldState(n, kRestoreWaitMs);
    }
    RestoreSnapshot(before);
    return Failed(n.name + " could not be configured: " + why +
                  "; the old settings were put back.");
}

}  // namespace

CmdResult NetplanChange(const NetInterface& n, short cmd, const std::string& file) {
    if (cmd == 54) {
        std::string out, why;
        Netplan({"get", "ethernets." + n.name + ".dhcp4"}, out, why);
        if (SplitLines(out) == std::vector<std::string>{"true"} && n.mode == kModeDynamic)
            return Unchanged(n.name + " already uses DHCP.");
        return Apply(n, cmd, file, "{dhcp4: true, activation-mode: null}", true,
                     [](const NetInterface& i) { return i.mode == kModeDynamic && !i.ip.empty(); });
    }
    bool up = cmd == 53;
    return Apply(n, cmd, file, up ? "{activation-mode: null}" : "{activation-mode: \"off\"}", false,
                 [up](const NetInterface& i) { return i.up == up; });
}

CmdResult NetplanManual(const NetInterface& n, const InterfaceManualRequest& q,
                        const std::string& file) {
    std::string address = q.ip + "/" + std::to_string(MaskPrefix(q.mask));
    std::string mapping = "{dhcp4: false, activation-mode: null, addresses: [\"" + address + "\"]";
    if (!q.gateway.empty())
        mapping += ", routes: [{to: default, via: \"" + q.gateway + "\"}]";
    std::string dns;
    for (const std::string& s : RequestedDns(q))
        dns += (dns.empty() ? "\"" : ", \"") + s + "\"";
    if (!dns.empty())
        mapping += ", nameservers: {addresses: [" + dns + "]}";
    mapping += "}";
    std::string ip = q.ip, mask = q.mask, gateway = q.gateway;
    return Apply(n, 55, file, mapping, true, [ip, mask, gateway](const NetInterface& i) {
        return i.up && i.ip == ip && i.mask == mask &&
               (gateway.empty() || DefaultGateway(i.name) == gateway);
    });
}

}  // namespace nvagent
