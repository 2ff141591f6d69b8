// The simulator's whole state: the reported records plus the structured data
// that only the agent sees (firewall rules, interfaces, users, clock offset).
#ifndef NV_AGENT_SIM_STATE_H
#define NV_AGENT_SIM_STATE_H

#include <string>
#include <vector>

#include "agent/commands/requests.h"
#include "agent/state_json.h"
#include "link/state_record.h"

namespace nvagent {

// A login known to the password command. The password itself is never kept:
// pwChanged is the (simulated) time of the last change in seconds since the
// epoch, 0 for never.
struct SimUser {
    std::string name;
    long long pwChanged = 0;
};

struct SimState {
    cConf_Inf conf = DefaultConf();
    cSvrState svr;
    std::vector<FwRule> inputRules;
    std::vector<FwRule> outputRules;
    std::vector<NetInterface> interfaces;
    std::vector<SimUser> users;
    // Added to the real clock to give the reported date and time.
    long long clockOffset = 0;
};

}  // namespace nvagent

#endif
