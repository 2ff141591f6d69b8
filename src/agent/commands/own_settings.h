// The agent's own settings: the language and the monitors' switches, lists,
// thresholds, disk volumes and backups. They live in the configuration
// record alone, so both backends change them with the same code; only where
// they are saved differs.
#ifndef NV_AGENT_COMMANDS_OWN_SETTINGS_H
#define NV_AGENT_COMMANDS_OWN_SETTINGS_H

#include "agent/commands/requests.h"
#include "link/state_record.h"

namespace nvagent {

// Whether the request changes one of the agent's own settings.
bool IsOwnSetting(const Request& req);

// Carries out such a request on conf; memTotalMb bounds the memory ceiling
// (0: unknown). Display lines of the changed list are regenerated.
CmdResult ApplyOwnSetting(cConf_Inf& conf, int memTotalMb, const Request& req);

}  // namespace nvagent

#endif
