// The running processes as the process monitor sees them: pid, owner,
// executable and argument vector of every live process, and the rule that
// says whether a process runs a monitored command line.
//
// A process's name and arguments are whatever its owner chose, so they
// prove nothing: any user can run a program that shows the same command
// line. A process counts as running a monitored command only when, beside
// its command line, its real and effective user are the agent's own (the
// user the agent starts the command as) and its executable (/proc/PID/exe)
// is the command's program, or for a "#!" script the script's interpreter.
#ifndef NV_AGENT_MONITORS_PROCESS_TABLE_H
#define NV_AGENT_MONITORS_PROCESS_TABLE_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace nvmonit {

struct ProcInfo {
    pid_t pid = 0;
    uid_t uidReal = static_cast<uid_t>(-1);
    uid_t uidEffective = static_cast<uid_t>(-1);
    std::string sExe;  // the executable's path; empty when unreadable
    std::vector<std::string> vArgv;
};

// What a process running a monitored command must be, worked out once per
// look at the table: the program's real path, and for a "#!" script its
// interpreter's real path.
struct ProgramIdentity {
    std::string sExe;
    std::string sInterpreter;
    uid_t uidOwner = 0;
};

// The identity of program (an absolute path; empty gives an identity that
// matches nothing) for processes owned by owner.
ProgramIdentity IdentifyProgram(const std::string& program, uid_t owner);

// Every process of <procDir> that has a command line and is not a zombie.
std::vector<ProcInfo> ListProcesses(const std::string& procDir);

// Whether a process with this command line runs the monitored command
// `words` (as typed) whose program resolved to `program`. The program may
// appear as typed, by its resolved path or by the same base name, with the
// same arguments; a script started through its "#!" line shows the
// interpreter first, then the script's path and the arguments.
bool CommandMatches(const std::vector<std::string>& cmdline, const std::vector<std::string>& words,
                    const std::string& program);

// Whether process p runs the monitored command: CommandMatches on its
// command line, and its owner and executable those of id.
bool RunsCommand(const ProcInfo& p, const std::vector<std::string>& words,
                 const std::string& program, const ProgramIdentity& id);

// True when pid exists in <procDir> and is not a zombie.
bool ProcessAlive(const std::string& procDir, pid_t pid);

}  // namespace nvmonit

#endif
