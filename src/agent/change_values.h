// The old and new value of what one change touched, for the journal: each
// command names the record fields it changes, and the fields whose value
// differs before and after the change are written as two JSON objects keyed
// by field name. A list keeps only the entries that changed (the common head
// and tail are left out), so that adding one rule to ten thousand records
// one line. The password command names no field: no password, nor anything
// derived from one, is ever recorded.
#ifndef NV_AGENT_CHANGE_VALUES_H
#define NV_AGENT_CHANGE_VALUES_H

#include <cstddef>
#include <string>
#include <vector>

#include "agent/backend.h"
#include "link/state_record.h"

namespace nvagent {

// Entries of one list recorded at most; further ones are counted in a last
// entry "(N more)".
constexpr size_t kChangedEntriesMax = 64;

// The record fields cmd changes, by their field names; empty for commands
// that change no reported field and for the password command.
const std::vector<const char*>& ChangedFields(short cmd);

// Fills r.sOldValues and r.sNewValues with the fields of cmd that differ
// between (c0, s0) and (c1, s1), as compact JSON objects; leaves both empty
// when none differs.
void RecordChange(short cmd, const cConf_Inf& c0, const cSvrState& s0, const cConf_Inf& c1,
                  const cSvrState& s1, CmdResult& r);

}  // namespace nvagent

#endif
