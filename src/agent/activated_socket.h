// Taking the listening socket from the service manager (socket activation):
// when systemd started the agent through norvane.socket it passes the bound,
// listening socket as descriptor 3 with LISTEN_FDS and LISTEN_PID set.
#ifndef NV_AGENT_ACTIVATED_SOCKET_H
#define NV_AGENT_ACTIVATED_SOCKET_H

#include <atomic>
#include <string>

namespace nvagent {

enum class Activation { kNone, kTaken, kFailed };

// kNone when no socket was passed to this process (the agent then binds its
// own); kTaken with the descriptor in fd (close-on-exec set, so the programs
// the agent runs do not inherit it,) when exactly one listening AF_UNIX stream
// socket bound at path was passed (left non-blocking, as systemd gives it,
// since several workers accept on it); kFailed with a message in err when the
// passed sockets are not that. The LISTEN_* variables are removed either way.
Activation TakeActivatedSocket(const std::string& path, int& fd, std::string& err);

// Waits until a client is queued on the activated socket (true) or stopping
// is set (false). The socket cannot be shut down to wake the server's workers
// as its own socket is, so they poll it with a short period and look at the
// flag in between; clients still queued at the stop stay for the next start.
bool AwaitActivatedClient(int fd, const std::atomic<bool>& stopping);

}  // namespace nvagent

#endif
