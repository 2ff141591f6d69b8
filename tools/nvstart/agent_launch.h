// Starting the agent: through systemd when it runs, or by running norvaned,
// each with a fixed argument vector.
#ifndef NV_TOOLS_AGENT_LAUNCH_H
#define NV_TOOLS_AGENT_LAUNCH_H

#include <sys/types.h>

#include <string>
#include <vector>

// The service unit that serves the default socket.
extern const char kAgentUnit[];

// True when systemd is the running service manager.
bool SystemdRuns();

// The norvaned to run: next to this program (the build folder), or in the
// sbin folder beside its bin folder (an installation). Empty when neither
// exists.
std::string FindNorvaned();

// Starts argv[0] (searched in PATH when it holds no slash) with standard
// input on /dev/null and the other streams shared. Returns the pid, or -1
// with a message in err.
pid_t Spawn(const std::vector<std::string>& argv, std::string& err);

// Reaps pid if it has ended: true with its exit status (128 + the signal
// when killed by one), false while it still runs.
bool Reaped(pid_t pid, int& status);

#endif
