// Interface changes where ifupdown owns the interface: its stanza edited in
// place in whichever file holds it (/etc/network/interfaces or a file it
// includes; never a second stanza), its auto line kept, added or removed,
// and the interface taken down by ifdown with the configuration it was
// brought up with, then brought up by ifup with the new one (addresses,
// routes, DHCP client as the stanza says). The DNS servers of a manual
// address go into its dns-nameservers line (which resolvconf applies where
// it is installed) and, where no tool owns it, into /etc/resolv.conf. A
// failure puts the files back, brings the old configuration up again and
// then repairs by hand what is still missing (addresses, routes, the DHCP
// client). The deferred form brings the interface up from a runtime copy
// of the new stanza under /run (ifup -i) and writes the files at commit;
// for DHCP it starts the client itself and waits a few seconds at most.
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>

#include "agent/atomic_file.h"
#include "agent/live/interfaces/cloud_init.h"
#include "agent/live/interfaces/ifupdown_config.h"
#include "agent/live/interfaces/interface_managers.h"
#include "agent/live/interfaces/interface_recovery.h"
#include "agent/live/interfaces/interface_state.h"
#include "agent/live/interfaces/live_resolv_conf.h"
#include "agent/live/live_files.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const int kIfupLimitMs = 60000;

// Writes the files of next that differ from before; on failure the ones
// already written are put back.
bool WriteChanged(const std::vector<IfupdownFile>& before, const std::vector<IfupdownFile>& next,
                  std::string& err) {
    for (size_t i = 0; i < next.size(); ++i) {
        if (next[i].text == before[i].text)
            continue;
        if (!WriteFileAtomically(next[i].path, next[i].text, err)) {
            err = "could not write " + next[i].path + ": " + err;
            std::string ignored;
            for (size_t k = 0; k < i; ++k) {
                if (next[k].text != before[k].text)
                    WriteFileAtomically(before[k].path, before[k].text, ignored);
            }
            return false;
        }
    }
    return true;
}

bool Ifdown(const std::string& name) {
    return RunTool({"ifdown", "--force", "--", name}, "", kIfupLimitMs).Ok();
}

// The files with name's new stanza and auto state, the interface taken
// down and (unless down) brought up again by ifupdown, resolv.conf written
// as planned; on failure everything of before comes back.
CmdResult Reconfigure(const NetInterface& n, const std::string& stanza, bool up,
                      const ResolvPlan& dns) {
    InterfaceSnapshot before = TakeSnapshot(n);
    std::vector<IfupdownFile> files = ReadIfupdownFiles(kIfupdownMainFile);
    if (files.empty())
        return Failed(std::string("Could not read ") + kIfupdownMainFile + ".");
    std::vector<IfupdownFile> next = WithIfaceIn(files, n.name, stanza, up);
    int at = StanzaFileIndex(next, n.name);
    const IfupdownFile& holder = next[static_cast<size_t>(at < 0 ? 0 : at)];
    bool cloudInit = CloudInitGenerated(holder.path, holder.text);
    std::string note = cloudInit ? CloudInitNote(holder.path) : std::string();
    bool wroteSwitch = false;
    std::string err;
    if (cloudInit && !DisableCloudInitNetwork(&wroteSwitch, err))
        return Failed(std::string("Could not write ") + kCloudInitDisableFile + ": " + err + ".");
    // Down with the old configuration, so that ifdown ends what ifup
    // started (a DHCP client releases its lease).
    Ifdown(n.name);
    StopDhcpClient(n.name);
    std::string ignored;
    RunIp({"-4", "addr", "flush", "dev", n.name}, ignored);
    std::string why;
    if (WriteChanged(files, next, why)) {
        bool done = false;
        if (up) {
            ToolRun run = RunTool({"ifup", "--", n.name}, "", kIfupLimitMs);
            if (!run.Ok())
                why = run.Why("ifup");
            // A manual stanza's ifup may leave the link as it was.
            else
                done = RunIp({"link", "set", "dev", n.name, "up"}, why);
        } else {
            done = RunIp({"link", "set", "dev", n.name, "down"}, why);
        }
        if (done && ApplyResolvPlan(dns, why)) {
            std::string detail = dns.note;
            if (!note.empty())
                detail += (detail.empty() ? "" : " ") + note;
            return {em_ActSuccAll, detail};
        }
        Ifdown(n.name);
        StopDhcpClient(n.name);
        WriteChanged(next, files, ignored);
    }
    UndoCloudInitNetwork(wroteSwitch);
    UndoResolvPlan(dns);
    // The old configuration up again as ifupdown would, then what is
    // still missing by hand.
    if (before.iface.up && StanzaFileIndex(files, n.name) >= 0)
        RunTool({"ifup", "--", n.name}, "", kIfupLimitMs);
    RestoreSnapshot(before);
    return Failed(n.name + " could not be configured: " + why +
                  "; the old settings were put back.");
}

// Whether a word ip printed is safe on a line ifupdown runs through the
// shell (addresses, numbers and keywords only).
bool PlainWord(const std::string& w) {
    if (w.empty())
        return false;
    for (char c : w) {
        if (!isalnum(static_cast<unsigned char>(c)) &&
            std::string(".:/_-").find(c) == std::string::npos)
            return false;
    }
    return true;
}

// A stanza for an interface ifupdown adopts, keeping what it has now, so
// that 52 and a later 53 (an ifup) bring it back as it was: DHCP when its
// address is a lease or a DHCP client serves it; else its first address,
// default gateway, further addresses and routes of its own ("up" lines);
// no addressing when it has no address.
std::string StanzaOfNow(const NetInterface& n) {
    InterfaceSnapshot s = TakeSnapshot(n);
    std::string head = "iface " + n.name + " inet ";
    if (n.mode == kModeDynamic || !s.dhcpClient.empty())
        return head + "dhcp\n";
    if (n.ip.empty())
        return head + "manual\n";
    std::string own = n.ip + "/" + std::to_string(MaskPrefix(n.mask));
    std::string stanza = head + "static\n    address " + n.ip + "\n    netmask " + n.mask + "\n";
    if (!s.gateway.empty() && PlainWord(s.gateway))
        stanza += "    gateway " + s.gateway + "\n";
    for (const auto& a : s.addrs) {
        if (a.size() >= 2 && a[1] != own && PlainWord(a[1]))
            stanza += "    up ip -4 addr add " + a[1] + " dev " + n.name + "\n";
    }
    for (const auto& r : s.routes) {
        bool kernel = false, plain = true;
        for (size_t i = 0; i < r.size(); ++i) {
            kernel = kernel || (r[i] == "proto" && i + 1 < r.size() && r[i + 1] == "kernel");
            plain = plain && PlainWord(r[i]);
        }
        if (r.empty() || r[0] == "default" || kernel || !plain)
            continue;
        std::string line;
        for (const std::string& w : r)
            line += " " + w;
        stanza += "    up ip -4 route replace" + line + " dev " + n.name + "\n";
    }
    return stanza;
}

// The interface's stanza now, empty when none.
std::string CurrentStanza(const std::string& name) {
    std::vector<IfupdownFile> files = ReadIfupdownFiles(kIfupdownMainFile);
    int at = StanzaFileIndex(files, name);
    return at < 0 ? std::string() : IfaceStanza(files[static_cast<size_t>(at)].text, name);
}

}  // namespace

namespace {

// What a command makes of name's stanza: the new stanza, whether the
// interface comes up, the resolv.conf plan; false with the answer in r
// when nothing changes.
bool Plan(const NetInterface& n, const InterfaceWanted& w, std::string& stanza, bool& up,
          ResolvPlan& dns, CmdResult& r) {
    stanza = CurrentStanza(n.name);
    up = w.cmd != 52;
    if (w.cmd == 54) {
        if (stanza.find(" inet dhcp") != std::string::npos && n.mode == kModeDynamic) {
            r = Unchanged(n.name + " already uses DHCP.");
            return false;
        }
        stanza = "iface " + n.name + " inet dhcp\n";
        return true;
    }
    if (w.cmd != 55) {
        // Down and up through ifdown and ifup, so that up brings back the
        // addresses and routes of the stanza; the auto line for the next
        // boot.
        if (stanza.empty())
            stanza = StanzaOfNow(n);
        return true;
    }
    const InterfaceManualRequest& q = w.manual;
    std::string next =
        "iface " + n.name + " inet static\n    address " + q.ip + "\n    netmask " + q.mask + "\n";
    if (!q.gateway.empty())
        next += "    gateway " + q.gateway + "\n";
    std::vector<std::string> servers = RequestedDns(q);
    std::string list;
    for (const std::string& s : servers)
        list += (list.empty() ? "" : " ") + s;
    if (!list.empty())
        next += "    dns-nameservers " + list + "\n";
    std::vector<IfupdownFile> files = ReadIfupdownFiles(kIfupdownMainFile);
    int at = StanzaFileIndex(files, n.name);
    std::string holder =
        at < 0 ? std::string(kIfupdownMainFile) : files[static_cast<size_t>(at)].path;
    dns = PlanResolvConf(servers, holder, false);
    if (stanza == next && n.ip == q.ip && n.mask == q.mask && n.mode == kModeStatic && n.up &&
        !dns.write) {
        r = Unchanged(n.name + " already has these settings.");
        return false;
    }
    stanza = next;
    return true;
}

const char* const kRuntimeDir = "/run/norvane";

// The runtime copy of name's stanza that a deferred change brings the
// interface up with (ifup -i), until its commit writes the stanza.
std::string RuntimeCopy(const std::string& name) {
    return std::string(kRuntimeDir) + "/ifupdown-" + name + ".interfaces";
}

}  // namespace

namespace {

// A change made and saved at once: planned, then the stanza reconfigured.
CmdResult ChangeNow(const NetInterface& n, const InterfaceWanted& w) {
    std::string stanza;
    bool up = false;
    ResolvPlan dns;
    CmdResult r;
    if (!Plan(n, w, stanza, up, dns, r))
        return r;
    return Reconfigure(n, stanza, up, dns);
}

}  // namespace

CmdResult IfupdownChange(const NetInterface& n, short cmd) {
    InterfaceWanted w;
    w.cmd = cmd;
    return ChangeNow(n, w);
}

CmdResult IfupdownManual(const NetInterface& n, const InterfaceManualRequest& q) {
    InterfaceWanted w;
    w.cmd = 55;
    w.manual = q;
    return ChangeNow(n, w);
}

bool IfupdownDeferred(const NetInterface& n, const InterfaceWanted& w, PendingChange& out,
                      CmdResult& r) {
    std::string stanza;
    bool up = false;
    ResolvPlan dns;
    if (!Plan(n, w, stanza, up, dns, r))
        return false;
    InterfaceRecovery rec;
    rec.owner = "ifupdown";
    rec.cmd = w.cmd;
    rec.before = TakeSnapshot(n);
    rec.ifupdownCopy = RuntimeCopy(n.name);
    rec.files.push_back(FileAsItIs(rec.ifupdownCopy));
    if (w.cmd == 54 || w.cmd == 55)
        rec.files.push_back(FileAsItIs(kResolvConfPath));
    // ifup of a DHCP stanza waits for the lease (a minute without a
    // server): for 54 the copy leaves the link to ifup and the agent
    // starts dhclient, with the pid file ifupdown's stanza names, so that
    // an ifdown after the commit ends it. Without dhclient, ifup picks
    // the DHCP client and its wait.
    bool ownClient = w.cmd == 54 && !FindTool("dhclient").empty();
    std::string copy = ownClient ? "iface " + n.name + " inet manual\n" : stanza;
    std::string why;
    mkdir(kRuntimeDir, 0700);
    if (!WriteFileAtomically(rec.ifupdownCopy, copy, why)) {
        r = Failed("Could not write " + rec.ifupdownCopy + ": " + why + ".");
        return false;
    }
    // Down with the configuration it was brought up with, then up with
    // the runtime copy; /etc/network stays as it is.
    Ifdown(n.name);
    StopDhcpClient(n.name);
    RunIp({"-4", "addr", "flush", "dev", n.name}, why);
    bool done = false;
    if (up) {
        ToolRun run = RunTool({"ifup", "-i", rec.ifupdownCopy, "--", n.name}, "", kIfupLimitMs);
        done = run.Ok() ? RunIp({"link", "set", "dev", n.name, "up"}, why)
                        : (why = run.Why("ifup"), false);
        done = done && (!ownClient || StartDhcpClient(n.name, why));
    } else {
        done = RunIp({"link", "set", "dev", n.name, "down"}, why);
    }
    if (!done || !ApplyResolvPlan(dns, why)) {
        UndoInterfaceChange(rec);
        r = Failed(n.name + " could not be configured: " + why +
                   "; the old settings were put back.");
        return false;
    }
    r = {em_ActSuccAll, w.cmd == 54 ? AwaitLease(n.name, kDeferredLeaseWaitMs) : dns.note};
    std::string name = n.name, runtime = rec.ifupdownCopy;
    MakePending(
        rec,
        [name, stanza, up, runtime]() {
            std::vector<IfupdownFile> files = ReadIfupdownFiles(kIfupdownMainFile);
            if (files.empty())
                return Failed(std::string("Could not read ") + kIfupdownMainFile + ".");
            std::vector<IfupdownFile> next = WithIfaceIn(files, name, stanza, up);
            int at = StanzaFileIndex(next, name);
            const IfupdownFile& holder = next[static_cast<size_t>(at < 0 ? 0 : at)];
            bool cloudInit = CloudInitGenerated(holder.path, holder.text);
            bool wroteSwitch = false;
            std::string err;
            if (cloudInit && !DisableCloudInitNetwork(&wroteSwitch, err))
                return Failed(std::string("Could not write ") + kCloudInitDisableFile + ": " + err +
                              ".");
            if (!WriteChanged(files, next, err)) {
                UndoCloudInitNetwork(wroteSwitch);
                return Failed(name + "'s stanza was not saved: " + err + ".");
            }
            unlink(runtime.c_str());
            return CmdResult(em_ActSuccAll, cloudInit ? CloudInitNote(holder.path) : "");
        },
        out);
    return true;
}

void IfupdownUndo(const InterfaceRecovery& rec) {
    const std::string& name = rec.before.iface.name;
    // What ifup started from the runtime copy ends with it (a DHCP client
    // releases its lease); the old stanza comes up again as ifupdown
    // would, then what is still missing by hand.
    struct stat st {};
    if (!rec.ifupdownCopy.empty() && stat(rec.ifupdownCopy.c_str(), &st) == 0)
        RunTool({"ifdown", "--force", "-i", rec.ifupdownCopy, "--", name}, "", kIfupLimitMs);
    if (DhcpClientOf(name) != rec.before.dhcpClient)
        StopDhcpClient(name);
    PutFilesBack(rec.files);
    std::vector<IfupdownFile> files = ReadIfupdownFiles(kIfupdownMainFile);
    if (rec.before.iface.up && StanzaFileIndex(files, name) >= 0)
        RunTool({"ifup", "--", name}, "", kIfupLimitMs);
    RestoreSnapshot(rec.before);
}

}  // namespace nvagent
