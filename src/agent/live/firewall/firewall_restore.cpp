// The restore tools run with -w and a number: a file name after -w would be
// taken as the wait time.
#include "agent/live/firewall/firewall_restore.h"

#include "agent/live/firewall/firewall_view.h"
#include "agent/live/run_process.h"

namespace nvagent {

bool RunRestore(int family, const std::string& lines, std::string& err) {
    const char* tool = family == 6 ? "ip6tables-restore" : "iptables-restore";
    ToolRun run = RunTool({tool, "-w", "5", "--noflush"}, "*filter\n" + lines + "COMMIT\n", 20000);
    if (run.Ok())
        return true;
    err = run.Why(tool);
    return false;
}

std::string JumpLine(int chain) {
    return std::string("-A ") + kBaseChains[chain] + " -j " + kOwnChains[chain] + "\n";
}

}  // namespace nvagent
