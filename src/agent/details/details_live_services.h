// The detail rows of the live backend's services texts.
#ifndef NV_AGENT_DETAILS_DETAILS_LIVE_SERVICES_H
#define NV_AGENT_DETAILS_DETAILS_LIVE_SERVICES_H

#include "agent/details/detail_row.h"

namespace nvagent {

extern const DetailTable kDetailsLiveServices;

}  // namespace nvagent

#endif
