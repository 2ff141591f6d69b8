// The detail texts of the interface changes made live for the session
// guard and saved or undone later.
#ifndef NV_AGENT_DETAILS_DETAILS_GUARD_IFACES_H
#define NV_AGENT_DETAILS_DETAILS_GUARD_IFACES_H

#include "agent/details/detail_row.h"

namespace nvagent {

extern const DetailTable kDetailsGuardIfaces;

}  // namespace nvagent

#endif
