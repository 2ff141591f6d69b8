// The network session a console runs in: the TCP connection through which
// an administrator reaches this machine (SSH), found from the console's
// process. Firewall and interface changes are judged and watched against it.
#ifndef NV_AGENT_LIVE_GUARD_GUARD_SESSION_H
#define NV_AGENT_LIVE_GUARD_GUARD_SESSION_H

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace nvagent {

struct GuardSession {
    bool bFound = false;  // false: a local terminal, or nothing to guard
    int iFamily = 0;      // AF_INET or AF_INET6
    // The connection as this machine sees it, addresses in numeric form.
    std::string sLocalAddr;
    uint16_t iLocalPort = 0;
    std::string sRemoteAddr;
    uint16_t iRemotePort = 0;
    uint64_t llInode = 0;  // the connection's socket inode
    // The server process holding it, with its start time (pid reuse).
    pid_t iServerPid = 0;
    unsigned long long llServerStart = 0;
    // The console process, with its start time, that the session is for.
    pid_t iConsolePid = 0;
    unsigned long long llConsoleStart = 0;
};

// The session of the console process pid: its ancestors up to the SSH
// server and that process's established TCP connection, or, where the chain
// ends in a terminal multiplexer, the session of the client of that
// multiplexer most recently attached from an SSH login, else the
// established connections to the ports the SSH server listens on (the
// first one). procRoot is /proc but for tests.
GuardSession FindGuardSession(pid_t pid, const std::string& procRoot = "/proc");

// One TCP socket as sock_diag reports it; an IPv4-mapped IPv6 address is
// given as the IPv4 address it maps (AF_INET), as the firewall sees it.
struct TcpSocket {
    int iFamily = 0;
    std::string sLocalAddr;
    uint16_t iLocalPort = 0;
    std::string sRemoteAddr;
    uint16_t iRemotePort = 0;
    uint64_t llInode = 0;
};

// The established and listening TCP sockets of the agent's network
// namespace, IPv4 and IPv6; false when the kernel cannot be asked.
struct TcpSockets {
    std::vector<TcpSocket> established;
    std::vector<TcpSocket> listening;
};
bool ReadTcpSockets(TcpSockets& out);

// FindGuardSession over a given socket table (tests give their own).
GuardSession FindGuardSessionIn(pid_t pid, const std::string& procRoot, const TcpSockets& socks);

}  // namespace nvagent

#endif
