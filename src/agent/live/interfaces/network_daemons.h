// Whether a network daemon really serves the agent's own network namespace.
// A process name proves nothing (any user can start a program called so):
// a daemon counts when the system bus says it owns its well-known name (the
// bus's policy lets only the daemon's user take it), or, without a bus,
// when a process runs the package's binary (/proc/PID/exe) as the daemon's
// user; in both cases only a process in the agent's network namespace.
#ifndef NV_AGENT_LIVE_INTERFACES_NETWORK_DAEMONS_H
#define NV_AGENT_LIVE_INTERFACES_NETWORK_DAEMONS_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace nvagent {

// Whether pid lives in the agent's network namespace.
bool InOwnNetNamespace(pid_t pid);

// The pid of the owner of a well-known name on the system bus when that
// owner is in the agent's network namespace; 0 otherwise (no bus, no
// owner, another namespace).
pid_t BusNameOwnerHere(const std::string& busName);

// Whether a process of one of the uids runs one of the binaries (absolute
// paths, compared after resolving links) in the agent's network namespace.
bool DaemonBinaryRunsHere(const std::vector<std::string>& binaries, const std::vector<uid_t>& uids);

// The first process (pid, "/proc/PID", the path of its executable) that
// wanted accepts; 0 when none does.
pid_t FindProcess(
    const std::function<bool(pid_t pid, const std::string& dir, const std::string& exe)>& wanted);

// The real uid of the process whose /proc directory is dir, or -1.
long ProcessUid(const std::string& dir);

// A path with its symbolic links resolved (itself when it cannot be).
std::string ResolvedPath(const std::string& path);

// The uid of a system user, or root's when there is no such user.
uid_t SystemUid(const char* user);

}  // namespace nvagent

#endif
