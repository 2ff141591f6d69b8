// The agent's listening socket: an AF_UNIX stream socket bound at a path with
// mode 0600, after making sure no other agent is serving that path.
#ifndef NV_AGENT_LISTEN_SOCKET_H
#define NV_AGENT_LISTEN_SOCKET_H

#include <sys/types.h>

#include <string>

namespace nvagent {

struct ListenSocket {
    int fd = -1;
    // Device and inode of the socket file as bound, so that the agent removes
    // the file at exit only if it is still its own.
    dev_t dev = 0;
    ino_t ino = 0;
    // Passed by systemd: never shut down nor removed, since the socket unit
    // keeps it for the next start.
    bool bActivated = false;
};

// Binds and listens at path. A socket file already there is probed: if
// something answers, the agent refuses to start; if it is stale it is
// removed. Anything at path that is not a socket is left alone and refused.
// Returns false and a message in err on failure. Must be called while the
// process has a single thread (it changes the umask around bind).
bool OpenListenSocket(const std::string& path, int backlog, ListenSocket& out, std::string& err);

// Removes the socket file if it still is the one that was bound.
void RemoveListenSocketFile(const std::string& path, const ListenSocket& sock);

}  // namespace nvagent

#endif
