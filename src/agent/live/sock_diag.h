// The sockets a process holds (its /proc/PID/fd directory, fdDir), and one
// netlink sock_diag dump of a family's TCP sockets in chosen states,
// each socket's message handed to a callback (its attributes follow it
// within the netlink message, for callers that asked for extensions).
#ifndef NV_AGENT_LIVE_SOCK_DIAG_H
#define NV_AGENT_LIVE_SOCK_DIAG_H

#include <linux/inet_diag.h>
#include <linux/netlink.h>

#include <cstdint>
#include <functional>
#include <string>

namespace nvagent {

// states: a mask of 1 << TCP_... ; ext: the INET_DIAG_* extensions asked
// for (a mask of 1 << (INET_DIAG_X - 1)). False when the kernel could not
// be asked or answered an error.
bool DumpTcpSockets(int family, unsigned states,
                    const std::function<void(const nlmsghdr& h, const inet_diag_msg& d)>& each,
                    unsigned char ext = 0);

// Calls each with the inode of every socket open in fdDir (a process's
// /proc/PID/fd); nothing when it cannot be read.
void ForEachSocketInode(const std::string& fdDir, const std::function<void(uint64_t inode)>& each);

}  // namespace nvagent

#endif
