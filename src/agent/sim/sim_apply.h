// The simulator's execution of typed requests on a copy of its state, one
// function per kind of request, grouped by the file that defines them. The
// engine keeps the copy only when the answer is em_ActSuccAll and the state
// file was saved.
#ifndef NV_AGENT_SIM_SIM_APPLY_H
#define NV_AGENT_SIM_SIM_APPLY_H

#include <ctime>

#include "agent/commands/requests.h"
#include "agent/sim/sim_state.h"

namespace nvagent {

struct SimContext {
    SimState& st;
    // The real clock; adding st.clockOffset gives the reported time.
    time_t realNow;
};

// Carries out one parsed request; the agent's own settings go to the
// code both backends share (own_settings.h).
CmdResult SimApply(SimContext& c, const Request& req);

// sim_apply_settings.cpp
CmdResult SimFlag(SimContext& c, const FlagRequest& q);
CmdResult SimKernel(SimContext& c, const KernelRequest& q);
CmdResult SimPath(SimContext& c, const PathRequest& q);
CmdResult SimRestore(SimContext& c, short cmd);

// sim_apply_firewall.cpp
CmdResult SimPolicy(SimContext& c, const PolicyRequest& q);
CmdResult SimRuleAdd(SimContext& c, const RuleAddRequest& q);
CmdResult SimRuleDelete(SimContext& c, FwChain chain, unsigned long long index);
CmdResult SimRuleClear(SimContext& c, FwChain chain);

// sim_apply_network.cpp
CmdResult SimInterface(SimContext& c, const InterfaceRequest& q);
CmdResult SimInterfaceManual(SimContext& c, const InterfaceManualRequest& q);

// sim_apply_system.cpp
CmdResult SimPassword(SimContext& c, const PasswordRequest& q);
CmdResult SimHostName(SimContext& c, const HostNameRequest& q);
CmdResult SimDate(SimContext& c, const DateRequest& q);
CmdResult SimTime(SimContext& c, const TimeRequest& q);

}  // namespace nvagent

#endif
