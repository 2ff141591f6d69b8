// The registry of the detail catalogue: every domain's table, in the order
// the lookup tries them.
#ifndef NV_AGENT_DETAILS_DETAIL_REGISTRY_H
#define NV_AGENT_DETAILS_DETAIL_REGISTRY_H

#include <vector>

#include "agent/details/detail_row.h"

namespace nvagent {

// The tables of every domain (one file each, details_<domain>.cpp).
const std::vector<const DetailTable*>& DetailTables();

}  // namespace nvagent

#endif
