// The simulator's command table (number -> handler) and the handlers' shared
// vocabulary. Handlers work on a copy of the state; the engine keeps the copy
// only when the answer is em_ActSuccAll and the state file was saved.
#ifndef NV_AGENT_SIM_COMMANDS_H
#define NV_AGENT_SIM_COMMANDS_H

#include <ctime>
#include <functional>
#include <map>
#include <string>

#include "agent/backend.h"
#include "agent/sim_state.h"

namespace nvagent {

struct CmdContext {
    SimState& st;
    // The real clock; adding st.clockOffset gives the reported time.
    time_t realNow;
};

using CmdHandler = std::function<CmdResult(CmdContext&, const std::string& payload)>;

// Every command the simulator knows: 2, 4..63 (reserved ones answer
// em_ActNotPrepare).
const std::map<short, CmdHandler>& CommandTable();

// The answer to a number missing from the table.
CmdResult UnknownCommand(short cmd);

}  // namespace nvagent

#endif
