// The running processes as the process monitor sees them: pid and argument
// vector of every live process, and the rule that says whether a process
// runs a monitored command line.
#ifndef NV_AGENT_MONITORS_PROCESS_TABLE_H
#define NV_AGENT_MONITORS_PROCESS_TABLE_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace nvmonit {

struct ProcInfo {
    pid_t pid = 0;
    std::vector<std::string> vArgv;
};

// Every process of <procDir> that has a command line and is not a zombie.
std::vector<ProcInfo> ListProcesses(const std::string& procDir);

// Whether a process with this command line runs the monitored command
// `words` (as typed) whose program resolved to `program`. The program may
// appear as typed, by its resolved path or by the same base name, with the
// same arguments; a script started through its "#!" line shows the
// interpreter first, then the script's path and the arguments.
bool CommandMatches(const std::vector<std::string>& cmdline, const std::vector<std::string>& words,
                    const std::string& program);

// True when pid exists in <procDir> and is not a zombie.
bool ProcessAlive(const std::string& procDir, pid_t pid);

}  // namespace nvmonit

#endif
