// The one parser and validator of every set command, shared by the backends:
// it turns a payload into a typed request or a refusal with its EM_RET code
// and detail text. What depends on the system's state (whether a user or an
// interface exists, whether an index is within the list, whether a value is
// already set) is the backend's to judge, with the helpers of state_checks.h.
#ifndef NV_AGENT_COMMANDS_COMMAND_PARSER_H
#define NV_AGENT_COMMANDS_COMMAND_PARSER_H

#include <string>

#include "agent/commands/requests.h"

namespace nvagent {

// Parses one command. True with the request in req; false with the refusal
// in r (an unknown or reserved number answers em_ActNotPrepare).
bool ParseCommand(short cmd, const std::string& payload, Request& req, CmdResult& r);

// Whether the number is a command the agent carries out (2 and 4..63 but the
// reserved ones).
bool IsSetCommand(short cmd);

// What one on/off command switches, for detail texts ("The file monitor").
const char* FlagSubject(short cmd);

}  // namespace nvagent

#endif
