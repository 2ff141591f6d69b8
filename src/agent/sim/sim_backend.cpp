// MakeSimBackend: loads the state file and hands back the simulator engine.
#include "agent/sim/sim_backend.h"

#include "agent/sim/sim_engine.h"
#include "agent/sim/sim_state_json.h"

namespace nvagent {

std::unique_ptr<Backend> MakeSimBackend(const std::string& statePath, std::string& err) {
    SimState st;
    if (!statePath.empty() && !LoadSimStateFile(statePath, st, err))
        return nullptr;
    return std::make_unique<SimEngine>(std::move(st), statePath);
}

}  // namespace nvagent
