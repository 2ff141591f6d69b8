// The simulator backend: the whole reported state held in memory, loaded from
// and saved atomically to a JSON state file, with every set command carried
// out on it as a real agent would, checks included.
#ifndef NV_AGENT_SIM_BACKEND_H
#define NV_AGENT_SIM_BACKEND_H

#include <memory>
#include <string>

#include "agent/backend.h"

namespace nvagent {

// Loads statePath (empty: defaults, kept in memory only; a path that does not
// exist yet: defaults, created at the first change). Returns null and a clear
// message in err when the file cannot be read or parsed; the file is left as
// it is.
std::unique_ptr<Backend> MakeSimBackend(const std::string& statePath, std::string& err);

}  // namespace nvagent

#endif
