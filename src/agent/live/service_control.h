// Starting, stopping and restarting a system service through the service
// manager: systemctl when systemd runs, the service command otherwise
// (containers and the test sandbox have no systemd).
#ifndef NV_AGENT_LIVE_SERVICE_CONTROL_H
#define NV_AGENT_LIVE_SERVICE_CONTROL_H

#include <string>

#include "agent/backend.h"

namespace nvagent {

// action is "start", "stop" or "restart"; false with err.
bool ControlService(const std::string& unit, const std::string& action, std::string& err);

// A service's on/off switch (the FTP server's and Samba's): unchanged when
// the service already runs, or does not, as asked; else started or stopped.
// what names the service in the detail text ("The FTP server", "Samba").
CmdResult SwitchService(short cmd, bool on, const std::string& service, const std::string& what);

// Keeps text, the configuration as the package left it, at copyPath before
// the first change, so that restoring the defaults can put it back; a copy
// already there is kept. False with err when it cannot be written.
bool KeepPackageCopy(const std::string& copyPath, const std::string& text, std::string& err);

// Sets one "key=value" line of a configuration text in place: the first
// active line of key is replaced, else the line is added at the end; every
// other line (comments, order, unknown keys) stays as it was.
std::string WithConfKey(const std::string& text, const std::string& key, const std::string& value);

}  // namespace nvagent

#endif
