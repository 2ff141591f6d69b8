// Listening TCP sockets, IPv4 and IPv6, asked of the kernel through netlink
// sock_diag, each with the process that owns it.
#ifndef NV_AGENT_LIVE_LIVE_LISTEN_H
#define NV_AGENT_LIVE_LIVE_LISTEN_H

#include <vector>

#include "link/state_record.h"

namespace nvagent {

// Every listening TCP socket of the agent's network namespace, sorted by
// port then address; pid 0 and an empty name when no process of ours can
// see its owner.
std::vector<cTcpListen> ReadListeners();

}  // namespace nvagent

#endif
