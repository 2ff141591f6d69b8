// A firewall or interface change made live from a guarded session but not
// yet saved: it is saved when the watch of the session ends well, and undone
// (only this change) when the session stalls, or when the agent starts again
// and finds it still pending.
#ifndef NV_AGENT_LIVE_GUARD_PENDING_CHANGE_H
#define NV_AGENT_LIVE_GUARD_PENDING_CHANGE_H

#include <ctime>
#include <functional>
#include <string>

#include "agent/backend.h"

namespace nvagent {

struct PendingChange {
    short iCmd = 0;
    std::string sPayload;
    time_t tWhen = 0;
    // Writes the change to the persistent configuration.
    std::function<CmdResult()> commit;
    // Puts back what this change replaced, live, and nothing else.
    std::function<CmdResult()> undo;
    // What an agent started again needs to undo the change: a JSON object
    // kept under /run until the change is saved or undone. Its "domain"
    // member ("firewall" or "interface") names who reads the rest.
    std::string sRecovery;
};

}  // namespace nvagent

#endif
