// Running the system's own tools: a fixed argument vector, never a shell, a
// clean environment, optional text on standard input (secrets travel there),
// a time limit after which the tool is killed, and the exit status and
// output handed back for the caller to check.
#ifndef NV_AGENT_LIVE_RUN_PROCESS_H
#define NV_AGENT_LIVE_RUN_PROCESS_H

#include <string>
#include <vector>

namespace nvagent {

struct ToolRun {
    bool bStarted = false;   // the program could be executed
    bool bTimedOut = false;  // killed at the time limit
    int iExitCode = -1;      // the exit status, or 128 + the signal
    std::string sOut;        // standard output
    std::string sErr;        // standard error
    bool Ok() const { return bStarted && !bTimedOut && iExitCode == 0; }
    // A short reason for a failed run, for detail texts.
    std::string Why(const std::string& program) const;
};

// Runs argv (argv[0] an absolute path or a name looked up in the fixed
// system PATH) with stdinText on standard input and the limit in ms. The
// tool gets the three pipes as its only descriptors, every signal's default
// handling with none blocked, the working directory / and the clean environment PATH (the fixed
// system directories), LC_ALL=C, LANG=C.
ToolRun RunTool(const std::vector<std::string>& argv, const std::string& stdinText = "",
                int timeoutMs = 10000);

// The first of the fixed system directories holding an executable name, or
// empty when none does.
std::string FindTool(const std::string& name);

}  // namespace nvagent

#endif
