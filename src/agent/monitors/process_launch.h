// Starting a monitored command: its line split into an argument vector (no
// shell is involved), the program found by absolute path or in PATH, and
// the process started in a session of its own with its standard streams on
// /dev/null, no other descriptor, default signal handling and an empty
// signal mask, the working directory / and a clean environment of its own
// (CommandEnvironment), nothing of the agent's. Where systemd runs, the
// command is started as a transient unit of its own with systemd-run
// instead, so that it is not stopped with the agent's unit; the unit gets
// the same environment and working directory and the service's own
// hardening (its sandbox and capability bounding set), given as properties.
#ifndef NV_AGENT_MONITORS_PROCESS_LAUNCH_H
#define NV_AGENT_MONITORS_PROCESS_LAUNCH_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace nvmonit {

// The system directories, the PATH of a started command.
constexpr const char* kCommandPath = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

// The whole environment of a started command: PATH (kCommandPath),
// LANG=C.UTF-8 and HOME=/.
std::vector<std::string> CommandEnvironment();

// The words of a command line, split at blanks and tabs.
std::vector<std::string> SplitCommand(const std::string& line);

// The program's absolute path: name itself when it contains a "/" (it must
// then be absolute), else the first executable regular file of that name in
// the directories of pathEnv; empty when there is none.
std::string ResolveProgram(const std::string& name, const std::string& pathEnv);

// The agent's PATH, or the usual system directories when it has none.
std::string SearchPath();

// True when systemd is the running init system.
bool SystemdRunning();

// The systemd-run argument vector that starts argv (argv[0] absolute) as a
// transient service with its output discarded, the commands' environment,
// working directory / and the service's hardening.
std::vector<std::string> SystemdRunArgv(const std::vector<std::string>& argv);

// Starts argv (argv[0] absolute) in a new session, standard streams on
// /dev/null, no descriptor of the agent inherited, default signal handling.
// Returns the pid, or -1 with the reason in err.
pid_t SpawnDetached(const std::vector<std::string>& argv, std::string& err);

// Runs argv to its end (killed after timeoutMs) and returns its exit code
// (0 when it was reaped by someone else), or -1 with the reason in err.
int RunToEnd(const std::vector<std::string>& argv, int timeoutMs, std::string& err);

}  // namespace nvmonit

#endif
