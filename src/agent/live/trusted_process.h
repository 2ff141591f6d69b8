// Whether a daemon of the system runs, decided on evidence no other user can
// forge: the process's executable is the package's binary (a root-owned
// file only root can write), it runs with every user id 0, and it lives in
// the agent's own PID and network namespaces. Process names (comm, argv)
// are never looked at: any user can start any program under any name.
#ifndef NV_AGENT_LIVE_TRUSTED_PROCESS_H
#define NV_AGENT_LIVE_TRUSTED_PROCESS_H

#include <functional>
#include <string>

namespace nvagent {

// True when match holds for some process's /proc directory ("/proc/PID").
bool AnyProcess(const std::function<bool(const std::string& procDir)>& match);

// True when a process of binary (an absolute path) runs as root in the
// agent's namespaces. False when the binary is missing, not owned by root
// or writable by group or others (then nothing run from it is trusted).
bool RootProcessRuns(const std::string& binary);

// The same test for one process, by its /proc directory ("/proc/PID").
bool IsRootProcessOf(const std::string& procDir, const std::string& binary);

}  // namespace nvagent

#endif
