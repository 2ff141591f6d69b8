// The detail rows of the live backend's firewall texts.
#ifndef NV_AGENT_DETAILS_DETAILS_LIVE_FIREWALL_H
#define NV_AGENT_DETAILS_DETAILS_LIVE_FIREWALL_H

#include "agent/details/detail_row.h"

namespace nvagent {

extern const DetailTable kDetailsLiveFirewall;

}  // namespace nvagent

#endif
