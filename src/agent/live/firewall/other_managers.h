// Firewall managers that own the server's firewall as a whole: when ufw is
// active or firewalld runs, the agent changes nothing itself (their state,
// status output and boot-time rules would no longer be true) and answers
// with the manager's own command for the change.
#ifndef NV_AGENT_LIVE_FIREWALL_OTHER_MANAGERS_H
#define NV_AGENT_LIVE_FIREWALL_OTHER_MANAGERS_H

#include <string>

#include "agent/commands/requests.h"
#include "agent/live/firewall/firewall_view.h"

namespace nvagent {

// "ufw", "firewalld" or "" as the views show.
std::string ActiveManager(const ChainView views[2]);

// The refusals (code 4) naming the manager and its command.
CmdResult ManagerAddRule(const std::string& manager, const RuleAddRequest& q);
CmdResult ManagerPolicy(const std::string& manager, const PolicyRequest& q);
// For a delete or clear when the agent has no rules of its own left.
CmdResult ManagerDelete(const std::string& manager);

}  // namespace nvagent

#endif
