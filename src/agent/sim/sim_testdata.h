// Generated simulator states for tests and benchmarks.
#ifndef NV_AGENT_SIM_TESTDATA_H
#define NV_AGENT_SIM_TESTDATA_H

#include "agent/json_fields.h"

namespace nvagent {

// A state-file object with realistic base settings, `rules` firewall rules
// (the input chain gets the larger half, the output chain the rest) and
// `listeners` listening TCP sockets on distinct ports. Only structured data
// is given, so the display lists are generated when the state is loaded.
Json MakeLargeState(int rules, int listeners);

}  // namespace nvagent

#endif
