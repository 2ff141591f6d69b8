// Interface lookups through the rtnetlink reader, routes and repairs through
// the system's ip.
#include "agent/live/interfaces/interface_state.h"

#include <dirent.h>
#include <limits.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "agent/commands/payload_parse.h"
#include "agent/live/interfaces/live_interfaces.h"
#include "agent/live/interfaces/network_daemons.h"
#include "agent/live/live_files.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const int kIpLimitMs = 20000;
const int kPollMs = 100;
const int kStableMs = 500;

bool Read(const std::string& name, NetInterface& out) {
    std::vector<NetInterface> all;
    std::string err;
    if (!ReadInterfaces(all, err))
        return false;
    for (const NetInterface& n : all) {
        if (n.name == name) {
            out = n;
            return true;
        }
    }
    return false;
}

// Route flags ip prints that it does not take back.
bool IsRouteFlag(const std::string& w) {
    static const std::set<std::string> kFlags = {"linkdown",   "dead",    "offload",   "trap",
                                                 "rt_offload", "rt_trap", "pervasive", "notify"};
    return kFlags.count(w) > 0;
}

// The addresses of one family ("-4" or "-6") as "ip addr add" arguments;
// IPv6 link-local addresses are left out (the kernel makes them itself).
std::vector<std::vector<std::string>> Addresses(const std::string& name, const char* family) {
    std::vector<std::vector<std::string>> out;
    ToolRun run = RunTool({"ip", family, "-o", "addr", "show", "dev", name}, "", kIpLimitMs);
    if (!run.Ok())
        return out;
    std::istringstream in(run.sOut);
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> w = SplitWords(line);
        std::vector<std::string> a;
        for (size_t i = 0; i + 1 < w.size(); ++i) {
            if (w[i] == "inet" || w[i] == "inet6" || w[i] == "brd" || w[i] == "scope")
                a.insert(a.end(), {w[i] == "brd" || w[i] == "scope" ? w[i] : "local", w[i + 1]});
            // A lease keeps its remaining lifetime, so that it still
            // expires unless its client renews it.
            if ((w[i] == "valid_lft" || w[i] == "preferred_lft") && w[i + 1] != "forever") {
                std::string secs = w[i + 1];
                if (secs.size() > 3 && secs.compare(secs.size() - 3, 3, "sec") == 0)
                    secs.resize(secs.size() - 3);
                a.insert(a.end(), {w[i], secs});
            }
        }
        bool linkLocal = std::find(w.begin(), w.end(), "inet6") != w.end() &&
                         std::find(w.begin(), w.end(), "link") != w.end();
        if (!a.empty() && !linkLocal)
            out.push_back(a);
    }
    return out;
}

// The routes of one family through name as "ip route replace" arguments.
std::vector<std::vector<std::string>> Routes(const std::string& name, const char* family) {
    std::vector<std::vector<std::string>> out;
    ToolRun run = RunTool({"ip", family, "route", "show", "dev", name}, "", kIpLimitMs);
    if (!run.Ok())
        return out;
    std::istringstream in(run.sOut);
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> r;
        for (const std::string& w : SplitWords(line)) {
            if (!IsRouteFlag(w))
                r.push_back(w);
        }
        // fe80::/64 and the like come back with the link itself.
        if (!r.empty() && r[0].compare(0, 5, "fe80:") != 0)
            out.push_back(r);
    }
    return out;
}

// The local address of an "ip addr add" argument list.
std::string LocalOf(const std::vector<std::string>& a) {
    return a.size() >= 2 ? a[1] : std::string();
}

// Options of dhclient that take a value (the interface names are the rest).
bool TakesValue(const std::string& opt) {
    static const std::set<std::string> kOpts = {"-pf", "-lf", "-cf", "-sf", "-df", "-s", "-g",
                                                "-p",  "-e",  "-H",  "-F",  "-V",  "-C"};
    return kOpts.count(opt) > 0;
}

// The pid and command line of root's dhclient in the agent's network
// namespace serving name, or 0.
pid_t DhcpClient(const std::string& name, std::vector<std::string>& argv) {
    std::vector<std::string> binaries = {ResolvedPath("/usr/sbin/dhclient"),
                                         ResolvedPath("/sbin/dhclient")};
    return FindProcess([&](pid_t pid, const std::string& dir, const std::string& exe) {
        std::string cmdline;
        if (std::find(binaries.begin(), binaries.end(), exe) == binaries.end() ||
            ProcessUid(dir) != 0 || !InOwnNetNamespace(pid) ||
            !ReadTextFile(dir + "/cmdline", cmdline))
            return false;
        std::vector<std::string> args;
        size_t start = 0;
        for (size_t i = 0; i < cmdline.size(); ++i) {
            if (cmdline[i] == '\0') {
                args.push_back(cmdline.substr(start, i - start));
                start = i + 1;
            }
        }
        for (size_t i = 1; i < args.size(); ++i) {
            if (args[i] == name && !TakesValue(args[i - 1])) {
                argv = args;
                return true;
            }
        }
        return false;
    });
}

// The addresses of one family back as they were, when they differ now
// (IPv6: the global ones only, the link-local address stays).
void RestoreAddresses(const std::string& name, const char* family,
                      const std::vector<std::vector<std::string>>& was) {
    std::set<std::string> had, has;
    for (const auto& a : was)
        had.insert(LocalOf(a));
    for (const auto& a : Addresses(name, family))
        has.insert(LocalOf(a));
    if (had == has)
        return;
    std::string ignored;
    std::vector<std::string> flush = {family, "addr", "flush", "dev", name};
    if (std::string(family) == "-6")
        flush.insert(flush.end(), {"scope", "global"});
    RunIp(flush, ignored);
    for (const auto& a : was) {
        std::vector<std::string> args = {family, "addr", "add"};
        args.insert(args.end(), a.begin(), a.end());
        args.insert(args.end(), {"dev", name});
        // In use until just now: no duplicate detection to wait for.
        if (std::string(family) == "-6")
            args.push_back("nodad");
        RunIp(args, ignored);
    }
}

// The routes of one family that are missing now, put back.
void RestoreRoutes(const std::string& name, const char* family,
                   const std::vector<std::vector<std::string>>& was) {
    std::vector<std::vector<std::string>> routes = Routes(name, family);
    std::string ignored;
    for (const auto& r : was) {
        if (std::find(routes.begin(), routes.end(), r) != routes.end())
            continue;
        std::vector<std::string> args = {family, "route", "replace"};
        args.insert(args.end(), r.begin(), r.end());
        args.insert(args.end(), {"dev", name});
        RunIp(args, ignored);
    }
}

}  // namespace

std::vector<std::string> DhcpClientOf(const std::string& name) {
    std::vector<std::string> argv;
    DhcpClient(name, argv);
    return argv;
}

void StopDhcpClient(const std::string& name) {
    std::vector<std::string> argv;
    pid_t pid = DhcpClient(name, argv);
    if (pid == 0)
        return;
    kill(pid, SIGTERM);
    for (int i = 0; i < 50 && kill(pid, 0) == 0; ++i)
        usleep(kPollMs * 1000);
}

bool FindInterface(const std::string& name, NetInterface& out, CmdResult& r) {
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

unsigned MaskPrefix(const std::string& mask) {
    uint32_t m = 0;
    ParseIPv4(mask, m);
    unsigned n = 0;
    while (m & 0x80000000u) {
        ++n;
        m <<= 1;
    }
    return n;
}

bool RunIp(const std::vector<std::string>& args, std::string& err) {
    std::vector<std::string> argv = {"ip"};
    argv.insert(argv.end(), args.begin(), args.end());
    ToolRun run = RunTool(argv, "", kIpLimitMs);
    if (run.Ok())
        return true;
    err = run.Why("ip");
    return false;
}

std::string DefaultGateway(const std::string& name) {
    ToolRun run = RunTool({"ip", "-4", "route", "show", "default", "dev", name}, "", kIpLimitMs);
    if (!run.Ok())
        return std::string();
    std::vector<std::string> w = SplitWords(run.sOut.substr(0, run.sOut.find('\n')));
    for (size_t i = 0; i + 1 < w.size(); ++i) {
        if (w[i] == "via")
            return w[i + 1];
    }
    return std::string();
}

InterfaceSnapshot TakeSnapshot(const NetInterface& n) {
    InterfaceSnapshot s;
    s.iface = n;
    s.gateway = DefaultGateway(n.name);
    s.addrs = Addresses(n.name, "-4");
    s.routes = Routes(n.name, "-4");
    s.addrs6 = Addresses(n.name, "-6");
    s.routes6 = Routes(n.name, "-6");
    s.dhcpClient = DhcpClientOf(n.name);
    return s;
}

void RestoreSnapshot(const InterfaceSnapshot& s) {
    const NetInterface& old = s.iface;
    NetInterface now;
    if (!Read(old.name, now))
        return;
    std::string ignored;
    if (now.up != old.up)
        RunIp({"link", "set", "dev", old.name, old.up ? "up" : "down"}, ignored);
    RestoreAddresses(old.name, "-4", s.addrs);
    RestoreAddresses(old.name, "-6", s.addrs6);
    RestoreRoutes(old.name, "-4", s.routes);
    RestoreRoutes(old.name, "-6", s.routes6);
    // The client goes on renewing the lease; "-nw": it does not wait for
    // one before going to the background.
    if (!s.dhcpClient.empty() && DhcpClientOf(old.name).empty()) {
        std::vector<std::string> argv = s.dhcpClient;
        if (std::find(argv.begin(), argv.end(), "-nw") == argv.end())
            argv.insert(argv.begin() + 1, "-nw");
        RunTool(argv, "", kIpLimitMs);
    }
}

bool StartDhcpClient(const std::string& name, std::string& why) {
    ToolRun run = RunTool({"dhclient", "-4", "-nw", "-pf", "/run/dhclient." + name + ".pid", "-lf",
                           "/var/lib/dhcp/dhclient." + name + ".leases", name},
                          "", kIpLimitMs);
    if (run.Ok())
        return true;
    why = run.Why("dhclient");
    return false;
}

std::string AwaitLease(const std::string& name, int waitMs) {
    if (WaitForInterface(
            name, [](const NetInterface& i) { return i.mode == kModeDynamic && !i.ip.empty(); },
            waitMs))
        return std::string();
    return "No DHCP lease on " + name + " yet; its DHCP client keeps asking.";
}

bool WaitForInterface(const std::string& name,
                      const std::function<bool(const NetInterface&)>& wanted, int timeoutMs,
                      int stableMs) {
    int heldSince = -1;
    for (int waited = 0;; waited += kPollMs) {
        NetInterface n;
        if (Read(name, n) && wanted(n)) {
            if (heldSince < 0)
                heldSince = waited;
            if (waited - heldSince >= stableMs)
                return true;
        } else {
            heldSince = -1;
        }
        if (waited >= timeoutMs + stableMs)
            return false;
        usleep(kPollMs * 1000);
    }
}

void WaitForOldState(const NetInterface& old, int timeoutMs) {
    WaitForInterface(
        old.name,
        [&old](const NetInterface& i) {
            return i.up == old.up && i.ip == old.ip && i.mask == old.mask;
        },
        timeoutMs, kStableMs);
}

}  // namespace nvagent
