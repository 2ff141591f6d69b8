// Starting, stopping and restarting a system service through the service
// manager: systemctl when systemd runs, the service command otherwise
// (containers and the test sandbox have no systemd).
#ifndef NV_AGENT_LIVE_SERVICE_CONTROL_H
#define NV_AGENT_LIVE_SERVICE_CONTROL_H

#include <string>

#include "agent/backend.h"
#include "agent/live/live_services.h"

namespace nvagent {

// action is "start", "stop" or "restart"; false with err.
bool ControlService(const std::string& unit, const std::string& action, std::string& err);

// A service's on/off switch (the FTP server's and Samba's): unchanged when
// its daemon already runs, or does not, as asked (DaemonRuns); else started
// or stopped. what names the service in the detail text ("The FTP server",
// "Samba").
CmdResult SwitchService(short cmd, bool on, const ServiceDaemon& daemon, const std::string& what);

// Keeps text, the configuration as the package left it, at copyPath before
// the first change, so that restoring the defaults can put it back; a copy
// already there is kept. False with err when it cannot be written.
bool KeepPackageCopy(const std::string& copyPath, const std::string& text, std::string& err);

}  // namespace nvagent

#endif
