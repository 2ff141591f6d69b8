// Taking the listening socket from the service manager (socket activation):
// when systemd started the agent through norvane.socket it passes the bound,
// listening socket as descriptor 3 with LISTEN_FDS and LISTEN_PID set.
#ifndef NV_AGENT_ACTIVATED_SOCKET_H
#define NV_AGENT_ACTIVATED_SOCKET_H

#include <string>

namespace nvagent {

enum class Activation { kNone, kTaken, kFailed };

// kNone when no socket was passed to this process (the agent then binds its
// own); kTaken with the descriptor in fd (close-on-exec set, so the programs
// the agent runs do not inherit it,) when exactly one listening AF_UNIX stream
// socket bound at path was passed (made non-blocking for the server's event
// loop); kFailed with a message in err when the
// passed sockets are not that. The LISTEN_* variables are removed either way.
Activation TakeActivatedSocket(const std::string& path, int& fd, std::string& err);

}  // namespace nvagent

#endif
