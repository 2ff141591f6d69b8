// The live backend: the check answer read from the machine the agent runs
// on, and every set command carried out on it. MakeLiveBackend builds one
// for a data directory.
#ifndef NV_AGENT_LIVE_LIVE_BACKEND_H
#define NV_AGENT_LIVE_LIVE_BACKEND_H

#include <memory>
#include <string>

#include "agent/backend.h"

namespace nvagent {

struct LiveOptions {
    // Where the agent keeps its own settings (settings.json).
    std::string sDataDir = "/etc/norvane";
};

// Loads the agent's settings from the data directory; null with err when
// the settings file exists but cannot be read.
std::unique_ptr<Backend> MakeLiveBackend(const LiveOptions& opts, std::string& err);

}  // namespace nvagent

#endif
