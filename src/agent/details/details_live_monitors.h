// The detail rows of the live backend's monitors texts.
#ifndef NV_AGENT_DETAILS_DETAILS_LIVE_MONITORS_H
#define NV_AGENT_DETAILS_DETAILS_LIVE_MONITORS_H

#include "agent/details/detail_row.h"

namespace nvagent {

extern const DetailTable kDetailsLiveMonitors;

}  // namespace nvagent

#endif
