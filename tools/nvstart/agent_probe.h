// Asking the agent on a socket for a check, through the console's own link,
// to tell whether an agent already serves there.
#ifndef NV_TOOLS_AGENT_PROBE_H
#define NV_TOOLS_AGENT_PROBE_H

#include <string>

enum class ProbeResult {
    kAnswers,   // a whole, valid check answer came back
    kNoAgent,   // nothing accepts connections at the path
    kNotAgent,  // something accepted but gave no valid check answer
};

// One check request to path, waiting at most timeoutMs. For kNotAgent, why
// holds the link's result text.
ProbeResult ProbeAgent(const std::string& path, int timeoutMs, std::string& why);

#endif
