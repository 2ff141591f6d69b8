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
// interface as it was. The deferred form runs netplan set on a scratch
// copy and puts the files it changes in /run/netplan until the commit.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <map>

#include "agent/atomic_file.h"
#include "agent/live/interfaces/cloud_init.h"
#include "agent/live/interfaces/interface_managers.h"
#include "agent/live/interfaces/interface_recovery.h"
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

// The .yaml files of a directory and their texts.
std::map<std::string, std::string> YamlFiles(const std::string& dir) {
    std::map<std::string, std::string> files;
    DIR* d = opendir(dir.c_str());
    if (d == nullptr)
        return files;
    while (dirent* e = readdir(d)) {
        std::string n = e->d_name;
        std::string text;
        if (n.size() > 5 && n.compare(n.size() - 5, 5, ".yaml") == 0 &&
            ReadTextFile(dir + "/" + n, text))
            files[dir + "/" + n] = text;
    }
    closedir(d);
    return files;
}

std::map<std::string, std::string> EtcFiles() {
    return YamlFiles(kNetplanEtc);
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
// renderer's files generated and networkd told, and the kernel awaited
// (deferred: not a 54's lease, which the caller awaits a few seconds only).
bool Activate(const NetInterface& n, short cmd, const Wanted& wanted, std::string& why,
              bool deferred = false) {
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
        if ((cmd == 54 && deferred) || WaitForInterface(n.name, wanted, 30000, kStableMs))
            return true;
        why = "netplan did not apply the settings in time";
        return false;
    }
    std::string before = Generated(n.name);
    if (!Netplan({"generate"}, out, why))
        return false;
    return NetworkdActivate(n, Generated(n.name) != before, cmd, wanted, why, deferred);
}

// Sets the interface's keys (a flow mapping) with netplan set, the
// addressing keys cleared first when clear is set.
// root: netplan's files under another root directory (a scratch copy).
bool Set(const std::string& name, const std::string& mapping, bool clear, std::string& why,
         const std::string& root = std::string()) {
    std::string out;
    std::string key = "ethernets." + name;
    std::vector<std::string> at;
    if (!root.empty())
        at = {"--root-dir", root};
    std::vector<std::string> first = {"set"};
    first.insert(first.end(), at.begin(), at.end());
    first.push_back(key +
                    "={addresses: null, routes: null, dhcp4: null, gateway4: null, nameservers: "
                    "null}");
    if (clear && !Netplan(first, out, why))
        return false;
    std::vector<std::string> second = {"set"};
    second.insert(second.end(), at.begin(), at.end());
    second.push_back(key + "=" + mapping);
    return Netplan(second, out, why);
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

namespace {

// What a command sets (a flow mapping, the old addressing cleared first or
// not) and the kernel state that shows it done; false with the answer in r
// when nothing changes.
bool Plan(const NetInterface& n, const InterfaceWanted& w, std::string& mapping, bool& clear,
          Wanted& wanted, CmdResult& r) {
    clear = w.cmd == 54 || w.cmd == 55;
    if (w.cmd == 54) {
        std::string out, why;
        Netplan({"get", "ethernets." + n.name + ".dhcp4"}, out, why);
        if (SplitLines(out) == std::vector<std::string>{"true"} && n.mode == kModeDynamic) {
            r = Unchanged(n.name + " already uses DHCP.");
            return false;
        }
        mapping = "{dhcp4: true, activation-mode: null}";
        wanted = [](const NetInterface& i) { return i.mode == kModeDynamic && !i.ip.empty(); };
        return true;
    }
    if (w.cmd != 55) {
        bool up = w.cmd == 53;
        mapping = up ? "{activation-mode: null}" : "{activation-mode: \"off\"}";
        wanted = [up](const NetInterface& i) { return i.up == up; };
        return true;
    }
    const InterfaceManualRequest& q = w.manual;
    std::string address = q.ip + "/" + std::to_string(MaskPrefix(q.mask));
    mapping = "{dhcp4: false, activation-mode: null, addresses: [\"" + address + "\"]";
    if (!q.gateway.empty())
        mapping += ", routes: [{to: default, via: \"" + q.gateway + "\"}]";
    std::string dns;
    for (const std::string& s : RequestedDns(q))
        dns += (dns.empty() ? "\"" : ", \"") + s + "\"";
    if (!dns.empty())
        mapping += ", nameservers: {addresses: [" + dns + "]}";
    mapping += "}";
    std::string ip = q.ip, mask = q.mask, gateway = q.gateway;
    wanted = [ip, mask, gateway](const NetInterface& i) {
        return i.up && i.ip == ip && i.mask == mask &&
               (gateway.empty() || DefaultGateway(i.name) == gateway);
    };
    return true;
}

const char* const kNetplanRun = "/run/netplan";
const char* const kNetplanLib = "/lib/netplan";

// Copies the .yaml files of dir to root + dir.
bool CopyInto(const std::string& root, const std::string& dir, std::string& err) {
    mkdir((root + dir.substr(0, dir.find('/', 1))).c_str(), 0700);
    mkdir((root + dir).c_str(), 0700);
    for (const auto& f : YamlFiles(dir)) {
        if (!WriteFileAtomically(root + f.first, f.second, err))
            return false;
    }
    return true;
}

// The files of the three directories under root, named as on the machine.
std::map<std::string, std::string> ScratchFiles(const std::string& root, const char* dir) {
    std::map<std::string, std::string> out;
    for (const auto& f : YamlFiles(root + dir))
        out[f.first.substr(root.size())] = f.second;
    return out;
}

void RemoveScratch(const std::string& root) {
    for (const char* dir : {kNetplanLib, kNetplanEtc, kNetplanRun}) {
        for (const auto& f : YamlFiles(root + dir))
            unlink(f.first.c_str());
        rmdir((root + dir).c_str());
        std::string top = root + std::string(dir).substr(0, std::string(dir).find('/', 1));
        rmdir(top.c_str());
    }
    rmdir(root.c_str());
}

}  // namespace

CmdResult NetplanChange(const NetInterface& n, short cmd, const std::string& file) {
    InterfaceWanted w;
    w.cmd = cmd;
    std::string mapping;
    bool clear = false;
    Wanted wanted;
    CmdResult r;
    if (!Plan(n, w, mapping, clear, wanted, r))
        return r;
    return Apply(n, cmd, file, mapping, clear, wanted);
}

CmdResult NetplanManual(const NetInterface& n, const InterfaceManualRequest& q,
                        const std::string& file) {
    InterfaceWanted w;
    w.cmd = 55;
    w.manual = q;
    std::string mapping;
    bool clear = false;
    Wanted wanted;
    CmdResult r;
    if (!Plan(n, w, mapping, clear, wanted, r))
        return r;
    return Apply(n, 55, file, mapping, clear, wanted);
}

bool NetplanDeferred(const NetInterface& n, const InterfaceWanted& w, const std::string& file,
                     PendingChange& out, CmdResult& r) {
    std::string mapping, why, text;
    bool clear = false;
    Wanted wanted;
    if (!Plan(n, w, mapping, clear, wanted, r))
        return false;
    if (!Netplan({"get", "ethernets." + n.name}, text, why)) {
        r = Failed(n.name + " could not be read from netplan: " + why + ".");
        return false;
    }
    if (SplitLines(text) == std::vector<std::string>{"null"}) {
        r = Failed(n.name + " is defined in " + file +
                   " other than as an ethernet of that name; change it there.");
        return false;
    }
    // netplan set on a scratch copy of its files shows what the change
    // makes of /etc/netplan; each file it changes is put in /run/netplan
    // under the same name (which hides /etc's) until the commit.
    char tmpl[] = "/run/norvane-netplan.XXXXXX";
    if (mkdtemp(tmpl) == nullptr) {
        r = Failed("Could not make a scratch directory for netplan.");
        return false;
    }
    std::string root = tmpl;
    bool copied = true;
    for (const char* dir : {kNetplanLib, kNetplanEtc, kNetplanRun})
        copied = copied && CopyInto(root, dir, why);
    bool set = copied && Set(n.name, mapping, clear, why, root);
    std::map<std::string, std::string> etcNext = ScratchFiles(root, kNetplanEtc);
    bool elsewhere = ScratchFiles(root, kNetplanLib) != YamlFiles(kNetplanLib) ||
                     ScratchFiles(root, kNetplanRun) != YamlFiles(kNetplanRun);
    RemoveScratch(root);
    if (!set) {
        r = Failed(n.name + " could not be configured: " + why + "; nothing was changed.");
        return false;
    }
    if (elsewhere) {
        r = Failed(n.name + " is configured outside " + std::string(kNetplanEtc) +
                   "; change it there.");
        return false;
    }
    std::map<std::string, std::string> etcNow = EtcFiles();
    std::map<std::string, std::string> runtime;  // /run/netplan path -> text
    for (const auto& f : etcNext) {
        auto was = etcNow.find(f.first);
        if (was == etcNow.end() || was->second != f.second)
            runtime[std::string(kNetplanRun) + f.first.substr(strlen(kNetplanEtc))] = f.second;
    }
    for (const auto& f : etcNow) {
        if (etcNext.count(f.first) == 0)
            runtime[std::string(kNetplanRun) + f.first.substr(strlen(kNetplanEtc))] =
                "network:\n  version: 2\n";
    }
    InterfaceRecovery rec;
    rec.owner = "netplan";
    rec.cmd = w.cmd;
    rec.before = TakeSnapshot(n);
    for (const auto& f : runtime)
        rec.files.push_back(FileAsItIs(f.first));
    mkdir(kNetplanRun, 0755);
    bool done = true;
    for (const auto& f : runtime) {
        done = done && WriteFileAtomically(f.first, f.second, why);
        chmod(f.first.c_str(), 0600);
    }
    if (!done || !Activate(n, w.cmd, wanted, why, true)) {
        UndoInterfaceChange(rec);
        r = Failed(n.name + " could not be configured: " + why +
                   "; the old settings were put back.");
        return false;
    }
    r = {em_ActSuccAll, w.cmd == 54 ? AwaitLease(n.name, kDeferredLeaseWaitMs) : std::string()};
    MakePending(
        rec,
        [etcNext, etcNow, runtime, file]() {
            std::string fileText, e;
            ReadTextFile(file, fileText);
            bool cloudInit = CloudInitGenerated(file, fileText);
            bool wroteSwitch = false;
            if (cloudInit && !DisableCloudInitNetwork(&wroteSwitch, e))
                return Failed(std::string("Could not write ") + kCloudInitDisableFile + ": " + e +
                              ".");
            for (const auto& f : etcNext) {
                auto was = etcNow.find(f.first);
                if (was != etcNow.end() && was->second == f.second)
                    continue;
                if (!WriteFileAtomically(f.first, f.second, e)) {
                    PutBack(etcNow);
                    UndoCloudInitNetwork(wroteSwitch);
                    return Failed("Could not write " + f.first + ": " + e + ".");
                }
                chmod(f.first.c_str(), 0600);
            }
            for (const auto& f : etcNow) {
                if (etcNext.count(f.first) == 0)
                    unlink(f.first.c_str());
            }
            for (const auto& f : runtime)
                unlink(f.first.c_str());
            return CmdResult(em_ActSuccAll, cloudInit ? CloudInitNote(file) : "");
        },
        out);
    return true;
}

void NetplanUndo(const InterfaceRecovery& rec) {
    PutFilesBack(rec.files);
    std::string out, ignored;
    if (Netplan({"generate"}, out, ignored) && Networkctl({"reload"}, ignored))
        WaitForOldState(rec.before.iface, kRestoreWaitMs);
    RestoreSnapshot(rec.before);
}

}  // namespace nvagent
