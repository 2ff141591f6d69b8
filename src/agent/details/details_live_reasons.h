// The detail rows of the live backend's reasons, taken as parts by its texts.
#ifndef NV_AGENT_DETAILS_DETAILS_LIVE_REASONS_H
#define NV_AGENT_DETAILS_DETAILS_LIVE_REASONS_H

#include "agent/details/detail_row.h"

namespace nvagent {

extern const DetailTable kDetailsLiveReasons;

}  // namespace nvagent

#endif
