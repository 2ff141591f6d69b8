// Interface down, up, automatic (DHCP) and manual addressing (commands 52
// to 55): the change takes effect at once and persists in the configuration
// of the tool that owns the interface (interface_owner.h), carried out by
// that tool's file (interface_managers.h). An interface no tool owns is
// changed live only.
#include "agent/live/interfaces/interface_managers.h"
#include "agent/live/interfaces/interface_owner.h"
#include "agent/live/interfaces/interface_state.h"
#include "agent/live/live_changes.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

// The owner of n, or false with the answer in r when its tool cannot do
// the change here.
bool Owner(const NetInterface& n, Ownership& o, CmdResult& r) {
    o = FindOwner(n);
    switch (o.owner) {
        case IfaceOwner::kNetworkd:
            if (!FindTool("networkctl").empty())
                return true;
            r = Failed(n.name + " is managed by systemd-networkd, but networkctl is missing.");
            return false;
        case IfaceOwner::kNetplan:
            if (o.renderer == "networkd" && !FindTool("netplan").empty() &&
                !FindTool("networkctl").empty())
                return true;
            r = Failed(n.name + " is configured by netplan (" + o.file + ", rendered by " +
                       o.renderer + "), whose tools are missing here; change it there.");
            return false;
        case IfaceOwner::kNetworkManager:
            if (!FindTool("nmcli").empty())
                return true;
            r = Failed(n.name + " is managed by NetworkManager, but nmcli is missing.");
            return false;
        case IfaceOwner::kIfupdown:
        case IfaceOwner::kNone:
            return true;
    }
    return true;
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

namespace {

// The interface of a 52-54 request and its owner; false with the answer
// in r when there is nothing to do or it cannot be done.
bool Prepare(const InterfaceRequest& q, NetInterface& n, Ownership& o, CmdResult& r) {
    if (!FindInterface(q.name, n, r))
        return false;
    if (q.cmd == 54 && n.name == "lo") {
        r = Invalid("The loopback interface cannot use DHCP.");
        return false;
    }
    if (q.cmd == 52 && !n.up) {
        r = Unchanged(n.name + " is already down.");
        return false;
    }
    if (q.cmd == 53 && n.up) {
        r = Unchanged(n.name + " is already up.");
        return false;
    }
    return Owner(n, o, r);
}

// The same for 55.
bool Prepare(const InterfaceManualRequest& q, NetInterface& n, Ownership& o, CmdResult& r) {
    if (!FindInterface(q.name, n, r))
        return false;
    if (n.name == "lo") {
        r = Invalid("The loopback interface keeps its fixed address.");
        return false;
    }
    return Owner(n, o, r);
}

bool Deferred(const NetInterface& n, const Ownership& o, const InterfaceWanted& w,
              PendingChange& out, CmdResult& r) {
    switch (o.owner) {
        case IfaceOwner::kNetworkd:
            return NetworkdDeferred(n, w, out, r);
        case IfaceOwner::kIfupdown:
            return IfupdownDeferred(n, w, out, r);
        case IfaceOwner::kNetworkManager:
            return NetworkManagerDeferred(n, w, out, r);
        case IfaceOwner::kNetplan:
            return NetplanDeferred(n, w, o.file, out, r);
        default:
            return UnmanagedDeferred(n, w, out, r);
    }
}

}  // namespace

CmdResult ChangeInterface(const InterfaceRequest& q) {
    NetInterface n;
    CmdResult r;
    Ownership o;
    if (!Prepare(q, n, o, r))
        return r;
    switch (o.owner) {
        case IfaceOwner::kNetworkd:
            return NetworkdChange(n, q.cmd);
        case IfaceOwner::kIfupdown:
            return IfupdownChange(n, q.cmd);
        case IfaceOwner::kNetworkManager:
            return NetworkManagerChange(n, q.cmd);
        case IfaceOwner::kNetplan:
            return NetplanChange(n, q.cmd, o.file);
        default:
            return UnmanagedChange(n, q.cmd);
    }
}

CmdResult ChangeInterfaceManual(const InterfaceManualRequest& q) {
    NetInterface n;
    CmdResult r;
    Ownership o;
    if (!Prepare(q, n, o, r))
        return r;
    switch (o.owner) {
        case IfaceOwner::kNetworkd:
            return NetworkdManual(n, q);
        case IfaceOwner::kIfupdown:
            return IfupdownManual(n, q);
        case IfaceOwner::kNetworkManager:
            return NetworkManagerManual(n, q);
        case IfaceOwner::kNetplan:
            return NetplanManual(n, q, o.file);
        default:
            return UnmanagedManual(n, q);
    }
}

bool ChangeInterfaceDeferred(const InterfaceRequest& q, PendingChange& out, CmdResult& r) {
    NetInterface n;
    Ownership o;
    if (!Prepare(q, n, o, r))
        return false;
    InterfaceWanted w;
    w.cmd = q.cmd;
    return Deferred(n, o, w, out, r);
}

bool ChangeInterfaceDeferred(const InterfaceManualRequest& q, PendingChange& out, CmdResult& r) {
    NetInterface n;
    Ownership o;
    if (!Prepare(q, n, o, r))
        return false;
    InterfaceWanted w;
    w.cmd = 55;
    w.manual = q;
    return Deferred(n, o, w, out, r);
}

}  // namespace nvagent
