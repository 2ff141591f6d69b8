// NetworkManager over its D-Bus API (sd-bus): whether it manages a device,
// and checkpoints around a change. A checkpoint records the devices'
// configuration; NetworkManager rolls back to it by itself when its timeout
// passes, unless the agent destroys it first (once the change took effect).
#ifndef NV_AGENT_LIVE_INTERFACES_NM_BUS_H
#define NV_AGENT_LIVE_INTERFACES_NM_BUS_H

#include <string>

namespace nvagent {

// Whether a NetworkManager of the agent's network namespace runs (it owns
// its name on the system bus).
bool NetworkManagerRunsHere();

// Whether that NetworkManager manages the device called iface (its
// Managed property); false when it does not know the device.
bool NetworkManagerManages(const std::string& iface);

// A checkpoint of one device, rolled back by NetworkManager after
// timeoutSeconds unless destroyed. Empty path with err on failure.
std::string CreateCheckpoint(const std::string& iface, unsigned timeoutSeconds, std::string& err);

// Ends a checkpoint: kept (destroyed) or rolled back now. False with err.
bool DestroyCheckpoint(const std::string& path, std::string& err);
bool RollbackCheckpoint(const std::string& path, std::string& err);

}  // namespace nvagent

#endif
