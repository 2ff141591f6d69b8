// The session guard's refusal texts in the detail catalogue.
#ifndef NV_AGENT_DETAILS_DETAILS_GUARD_SESSION_H
#define NV_AGENT_DETAILS_DETAILS_GUARD_SESSION_H

#include "agent/details/detail_row.h"

namespace nvagent {

extern const DetailTable kDetailsGuardSession;

}  // namespace nvagent

#endif
