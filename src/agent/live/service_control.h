// Starting, stopping and restarting a system service through the service
// manager: systemctl when systemd runs, the service command otherwise
// (containers and the test sandbox have no systemd).
#ifndef NV_AGENT_LIVE_SERVICE_CONTROL_H
#define NV_AGENT_LIVE_SERVICE_CONTROL_H

#include <string>

namespace nvagent {

// action is "start", "stop" or "restart"; false with err.
bool ControlService(const std::string& unit, const std::string& action, std::string& err);

// Sets one "key=value" line of a configuration text in place: the first
// active line of key is replaced, else the line is added at the end; every
// other line (comments, order, unknown keys) stays as it was.
std::string WithConfKey(const std::string& text, const std::string& key, const std::string& value);

}  // namespace nvagent

#endif
