// Service manager calls and the package copies of configuration files.
#include "agent/live/service_control.h"

#include <sys/stat.h>
#include <unistd.h>

#include "agent/atomic_file.h"
#include "agent/commands/state_checks.h"
#include "agent/live/live_services.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

bool SystemdRuns() {
    struct stat st {};
    return stat("/run/systemd/system", &st) == 0;
}

}  // namespace

bool ControlService(const std::string& unit, const std::string& action, std::string& err) {
    ToolRun run = SystemdRuns() ? RunTool({"systemctl", action, unit}, "", 60000)
                                : RunTool({"service", unit, action}, "", 60000);
    if (run.Ok())
        return true;
    err = run.Why(SystemdRuns() ? "systemctl" : "service");
    return false;
}

CmdResult SwitchService(short cmd, bool on, const ServiceDaemon& daemon, const std::string& what) {
    if (DaemonRuns(daemon) == on)
        return FlagUnchanged(cmd, on);
    std::string err;
    if (!ControlService(daemon.service, on ? "start" : "stop", err))
        return Failed(what + " could not be " + (on ? "started: " : "stopped: ") + err + ".");
    return Done();
}

bool KeepPackageCopy(const std::string& copyPath, const std::string& text, std::string& err) {
    struct stat st {};
    return stat(copyPath.c_str(), &st) == 0 || WriteFileAtomically(copyPath, text, err);
}

}  // namespace nvagent
