// What undoing an interface change made live but not yet saved needs (the
// guard's deferred form, live_changes.h): the interface as it was, the
// files the change wrote with what they held before, and the owner's own
// handles (a NetworkManager checkpoint and profile). It travels as JSON, so
// that an agent started again while such a change was pending undoes it
// from the copy kept under /run.
#ifndef NV_AGENT_LIVE_INTERFACES_INTERFACE_RECOVERY_H
#define NV_AGENT_LIVE_INTERFACES_INTERFACE_RECOVERY_H

#include <functional>
#include <string>
#include <vector>

#include "agent/live/guard/pending_change.h"
#include "agent/live/interfaces/interface_state.h"

namespace nvagent {

// A file as it was before the change: its text, or absent.
struct FileBefore {
    std::string path;
    bool existed = false;
    std::string text;
};

struct InterfaceRecovery {
    // "ifupdown", "networkd", "netplan", "networkmanager" or "none".
    std::string owner;
    short cmd = 0;
    InterfaceSnapshot before;
    // Written back (or removed) by the undo, in order.
    std::vector<FileBefore> files;
    // ifupdown: the runtime copy of the stanza the interface was brought
    // up with, taken down with before the old one comes back.
    std::string ifupdownCopy;
    // NetworkManager: the checkpoint, the profile and its old settings
    // ("nmcli connection modify" arguments).
    std::string nmCheckpoint;
    std::string nmProfile;
    std::vector<std::string> nmOld;
};

std::string RecoveryJson(const InterfaceRecovery& rec);
bool ParseRecovery(const std::string& json, InterfaceRecovery& rec, std::string& err);

// The file as it is now, to be put back by an undo.
FileBefore FileAsItIs(const std::string& path);
// Writes each file back as it was (removes those that were absent).
void PutFilesBack(const std::vector<FileBefore>& files);

// Undoes the change live: the owner's runtime layer removed, the old
// configuration in force again, then whatever is still missing put back
// by hand (addresses, routes, link state, the DHCP client).
void UndoInterfaceChange(const InterfaceRecovery& rec);

// The same from the JSON kept under /run; false with err when it is not
// an interface change's recovery.
bool UndoInterfaceRecovery(const std::string& json, std::string& err);

// The pending change of rec: commit as given, undo from rec, the recovery
// JSON; the command and the time filled in (the payload is the caller's).
void MakePending(const InterfaceRecovery& rec, std::function<CmdResult()> commit,
                 PendingChange& out);

}  // namespace nvagent

#endif
