// Reading the machine into the reported records: all of it for a check, or
// only the part one command changes, for the journal's old and new values.
#ifndef NV_AGENT_LIVE_LIVE_STATE_H
#define NV_AGENT_LIVE_LIVE_STATE_H

#include "link/state_record.h"

namespace nvagent {

// Every field the machine holds (all but the agent's own settings, which
// the caller has put in conf).
void ReadMachine(cConf_Inf& conf, cSvrState& svr);

// Only the fields command cmd changes on the machine: the kernel settings,
// the firewall, the FTP and Samba settings, the interfaces, the host name or
// the date and time. Other commands read nothing.
void ReadChangedPart(short cmd, cConf_Inf& conf, cSvrState& svr);

}  // namespace nvagent

#endif
