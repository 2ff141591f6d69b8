// The detail rows of the live backend's system texts.
#ifndef NV_AGENT_DETAILS_DETAILS_LIVE_SYSTEM_H
#define NV_AGENT_DETAILS_DETAILS_LIVE_SYSTEM_H

#include "agent/details/detail_row.h"

namespace nvagent {

extern const DetailTable kDetailsLiveSystem;

}  // namespace nvagent

#endif
