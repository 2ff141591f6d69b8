// Interface lookups through the rtnetlink reader, routes and repairs through
// the system's ip.
#include "agent/live/interface_state.h"

#include <unistd.h>

#include "agent/commands/payload_parse.h"
#include "agent/live/live_files.h"
#include "agent/live/live_interfaces.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

const int kIpLimitMs = 20000;
const int kPollMs = 100;

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

}  // namespace

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
    return {n, DefaultGateway(n.name)};
}

void RestoreSnapshot(const InterfaceSnapshot& s) {
    const NetInterface& old = s.iface;
    NetInterface now;
    if (!Read(old.name, now))
        return;
    std::string ignored;
    if (now.up != old.up)
        RunIp({"link", "set", "dev", old.name, old.up ? "up" : "down"}, ignored);
    if (now.ip != old.ip || now.mask != old.mask) {
        RunIp({"-4", "addr", "flush", "dev", old.name}, ignored);
        if (!old.ip.empty()) {
            RunIp({"addr", "add", old.ip + "/" + std::to_string(MaskPrefix(old.mask)), "dev",
                   old.name},
                  ignored);
        }
    }
    if (!s.gateway.empty() && DefaultGateway(old.name) != s.gateway)
        RunIp({"route", "replace", "default", "via", s.gateway, "dev", old.name}, ignored);
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

}  // namespace nvagent
