// JSON form of the reported state: cConf_Inf and cSvrState as one flat object
// whose keys are the record field names. Used by the simulator's state file
// and by the nvcmd tool to print a loaded state. Conventions:
//   char flags and the two firewall policies: a string of one character, or ""
//     for an unset (NUL) character;
//   chLangCode and chOSReleaseVersion: numbers 0..127;
//   unsigned longs: numbers 0..4294967295 (32-bit on the console side);
//   shorts and ints: numbers in their range;
//   char arrays of element records: strings shorter than the array;
//   string lists: arrays of strings; element lists: arrays of objects keyed by
//     the element's field names.
#ifndef NV_AGENT_STATE_JSON_H
#define NV_AGENT_STATE_JSON_H

#include <string>
#include <vector>

#include "agent/json_fields.h"
#include "link/state_record.h"

namespace nvagent {

// The record defaults, with the fields the constructor leaves unset (the
// three network flags and five kernel limits) set to zero.
cConf_Inf DefaultConf();

// Every field of both records, in declaration order.
Json StateToJson(const cConf_Inf& c, const cSvrState& s);

// The named fields of either record, in the order given; a name that is no
// field of either is left out.
Json FieldsToJson(const cConf_Inf& c, const cSvrState& s, const std::vector<const char*>& keys);

// Reads the keys present in j over DefaultConf() and cSvrState(); missing keys
// keep those defaults. Keys listed in extraKeys are skipped (the caller reads
// them). Any other unknown key, a wrong type or an out-of-range value fails
// with err naming the key; c and s are then left unchanged.
bool StateFromJson(const Json& j, cConf_Inf& c, cSvrState& s, std::string& err,
                   const std::vector<std::string>& extraKeys = {});

}  // namespace nvagent

#endif
