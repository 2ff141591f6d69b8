// The detail texts of the watch of changes made over a guarded session.
#ifndef NV_AGENT_DETAILS_DETAILS_GUARD_WATCH_H
#define NV_AGENT_DETAILS_DETAILS_GUARD_WATCH_H

#include "agent/details/detail_row.h"

namespace nvagent {

extern const DetailTable kDetailsGuardWatch;

}  // namespace nvagent

#endif
