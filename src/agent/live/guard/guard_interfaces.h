// The session guard's interface judge: where the session leaves the machine
// (a route lookup of the client's address) and which interface holds its
// local address, and the interface commands that take either away.
#ifndef NV_AGENT_LIVE_GUARD_GUARD_INTERFACES_H
#define NV_AGENT_LIVE_GUARD_GUARD_INTERFACES_H

#include <string>

#include "agent/commands/requests.h"
#include "agent/live/guard/guard_session.h"

namespace nvagent {

struct SessionPath {
    std::string sOutIface;    // the route's outgoing interface; empty: no route
    std::string sGateway;     // the route's gateway; empty: the client is on-link
    std::string sLocalIface;  // the interface holding the local address
};

// The kernel's route to the session's client (RTM_GETROUTE) and the
// interface of its local address (the agent's network namespace).
SessionPath ReadSessionPath(const GuardSession& s);

// Why the interface request cuts the session, or empty. dynamic: the
// interface named by the request takes its address from DHCP now.
// 52 on the outgoing or local interface; 55 that drops the local address
// or leaves no route to the client on the outgoing interface; 54 on either
// interface when its address is not a lease already (the new lease need not
// be the same address). 54 and 55 set IPv4 only and are not judged for an
// IPv6 session.
std::string InterfaceCut(const Request& req, const GuardSession& s, const SessionPath& path,
                         bool dynamic);

// The interface an interface request names, or empty for any other request.
std::string InterfaceOf(const Request& req);

}  // namespace nvagent

#endif
