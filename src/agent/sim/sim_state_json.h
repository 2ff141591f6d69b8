// The simulator's state file: the reported state (state_json.h) plus our own
// keys, all prefixed "sim": simInputRules, simOutputRules, simInterfaces,
// simUsers and simClockOffset. docs/state-file.md describes every key.
#ifndef NV_AGENT_SIM_STATE_JSON_H
#define NV_AGENT_SIM_STATE_JSON_H

#include <string>

#include "agent/json_fields.h"
#include "agent/sim/sim_state.h"

namespace nvagent {

Json SimStateToJson(const SimState& st);

// Reads a whole state over the defaults. Display lists missing from j are
// generated from their structured data; present ones are kept as they are.
// On failure st is unchanged and err names the key.
bool SimStateFromJson(const Json& j, SimState& st, std::string& err);

// Parses state-file text; err describes the JSON syntax or key problem.
bool SimStateFromText(const std::string& text, SimState& st, std::string& err);

// Loads a state file. A path that does not exist gives the defaults and true;
// an unreadable or unparsable file gives false with err naming the file.
bool LoadSimStateFile(const std::string& path, SimState& st, std::string& err);

}  // namespace nvagent

#endif
