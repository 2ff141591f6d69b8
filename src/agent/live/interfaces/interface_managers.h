// The interface changes of each network manager, one file each, called by
// interfaces_change.cpp once the request is checked against the interface
// (which exists, and is not the loopback where that matters) and its owner
// is known (interface_owner.h).
#ifndef NV_AGENT_LIVE_INTERFACES_INTERFACE_MANAGERS_H
#define NV_AGENT_LIVE_INTERFACES_INTERFACE_MANAGERS_H

#include <functional>

#include "agent/commands/requests.h"
#include "agent/live/guard/pending_change.h"

namespace nvagent {

struct InterfaceRecovery;

// One of 52 to 55 for the deferred forms: the command, and for 55 the
// addressing asked for.
struct InterfaceWanted {
    short cmd = 0;
    InterfaceManualRequest manual;
};

// The deferred forms (one in each manager's file): the change made live
// through the manager's runtime layer, nothing persistent written until
// out.commit; true with the answer in r and out filled, else false with
// the answer in r (nothing to do, or a failure already undone).
bool IfupdownDeferred(const NetInterface& n, const InterfaceWanted& w, PendingChange& out,
                      CmdResult& r);
bool NetworkdDeferred(const NetInterface& n, const InterfaceWanted& w, PendingChange& out,
                      CmdResult& r);
bool NetplanDeferred(const NetInterface& n, const InterfaceWanted& w, const std::string& file,
                     PendingChange& out, CmdResult& r);
bool NetworkManagerDeferred(const NetInterface& n, const InterfaceWanted& w, PendingChange& out,
                            CmdResult& r);
bool UnmanagedDeferred(const NetInterface& n, const InterfaceWanted& w, PendingChange& out,
                       CmdResult& r);
// Their undos (interface_recovery.h), from the recovery alone.
void IfupdownUndo(const InterfaceRecovery& rec);
void NetworkdUndo(const InterfaceRecovery& rec);
void NetplanUndo(const InterfaceRecovery& rec);
void NetworkManagerUndo(const InterfaceRecovery& rec);
void UnmanagedUndo(const InterfaceRecovery& rec);

// ifupdown_change.cpp: the stanza where it is, ifdown/ifup.
CmdResult IfupdownChange(const NetInterface& n, short cmd);
CmdResult IfupdownManual(const NetInterface& n, const InterfaceManualRequest& q);

// networkd_change.cpp: the agent's own .network file, networkctl.
CmdResult NetworkdChange(const NetInterface& n, short cmd);
CmdResult NetworkdManual(const NetInterface& n, const InterfaceManualRequest& q);
// networkctl with args; false with the reason in why.
bool Networkctl(const std::vector<std::string>& args, std::string& why);
// networkd's files in force for n (reloaded; reconfigured as well when
// its file did not change), 52 and 53 carried out on the link, then the
// kernel state of wanted awaited; deferred: not a 54's lease (the caller
// waits for it a few seconds only).
using Wanted = std::function<bool(const NetInterface&)>;
bool NetworkdActivate(const NetInterface& n, bool changed, short cmd, const Wanted& wanted,
                      std::string& why, bool deferred = false);

// netplan_change.cpp: netplan set with the old keys cleared, applied the
// way netplan applies.
CmdResult NetplanChange(const NetInterface& n, short cmd, const std::string& file);
CmdResult NetplanManual(const NetInterface& n, const InterfaceManualRequest& q,
                        const std::string& file);

// networkmanager_change.cpp: the device's profile through nmcli, inside a
// checkpoint.
CmdResult NetworkManagerChange(const NetInterface& n, short cmd);
CmdResult NetworkManagerManual(const NetInterface& n, const InterfaceManualRequest& q);

// unmanaged_change.cpp: ip and a DHCP client of the agent's, live only.
CmdResult UnmanagedChange(const NetInterface& n, short cmd);
CmdResult UnmanagedManual(const NetInterface& n, const InterfaceManualRequest& q);

// The DNS servers of a manual request, in order.
std::vector<std::string> RequestedDns(const InterfaceManualRequest& q);

}  // namespace nvagent

#endif
