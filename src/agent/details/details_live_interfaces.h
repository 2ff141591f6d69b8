// The detail rows of the live backend's interfaces texts.
#ifndef NV_AGENT_DETAILS_DETAILS_LIVE_INTERFACES_H
#define NV_AGENT_DETAILS_DETAILS_LIVE_INTERFACES_H

#include "agent/details/detail_row.h"

namespace nvagent {

extern const DetailTable kDetailsLiveInterfaces;

}  // namespace nvagent

#endif
