// Which tool manages one interface of the agent's network namespace, asked
// of each tool in turn: netplan (a .yaml naming the interface; it generates
// the configuration of its renderer), NetworkManager (the device's Managed
// property on the system bus), systemd-networkd (its state for the link),
// ifupdown (a stanza in /etc/network/interfaces or a file it includes).
// An interface none of them claims is adopted by the one that runs or is
// installed (networkd, then ifupdown), else it belongs to no tool.
#ifndef NV_AGENT_LIVE_INTERFACES_INTERFACE_OWNER_H
#define NV_AGENT_LIVE_INTERFACES_INTERFACE_OWNER_H

#include <string>

#include "agent/commands/requests.h"

namespace nvagent {

enum class IfaceOwner { kNone, kIfupdown, kNetworkd, kNetworkManager, kNetplan };

struct Ownership {
    IfaceOwner owner = IfaceOwner::kNone;
    std::string file;      // netplan, ifupdown: the file that names the interface
    std::string renderer;  // netplan: "networkd" or "NetworkManager"
};

Ownership FindOwner(const NetInterface& n);

// The owner's name as the details write it.
const char* OwnerName(IfaceOwner o);

// The directories netplan reads, in the order it lets later ones override.
extern const char* const kNetplanDirs[3];

// The netplan files (by name, a later directory's file hiding an earlier
// one of the same name) that name iface, and the renderer they set
// ("networkd" unless one says NetworkManager). Pure text scan of the keys.
bool NetplanNames(const std::string& yaml, const std::string& iface);
std::string NetplanRenderer(const std::string& yaml);

// Whether systemd-networkd's state file for the link says it manages it.
bool NetworkdManagesLink(int ifindex);

// Whether a systemd-networkd of the agent's network namespace runs.
bool NetworkdRunsHere();

}  // namespace nvagent

#endif
