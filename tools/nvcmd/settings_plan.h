// The plan of an apply: for each item a document names, the server's value
// before, the value asked for, and the fewest set commands that make the
// one the other, in a safe order (a chain's accept policy before its rules,
// a drop policy after them; a monitor switched on after its list; the FTP
// and Samba servers started after their options). An item lists the items
// it needs: when one of those fails it is not attempted.
#ifndef NV_TOOLS_NVCMD_SETTINGS_PLAN_H
#define NV_TOOLS_NVCMD_SETTINGS_PLAN_H

#include <string>
#include <vector>

#include "settings_doc.h"

namespace nvsettings {

struct Step {
    short cmd;
    std::string payload;
};

enum class ItemStatus { kUnchanged, kChanged, kFailed, kSkipped };

struct Item {
    Path path;
    Json before;                // the server's value, in document form (null: none)
    Json after;                 // the value once applied
    std::vector<Step> steps;    // empty: nothing to do
    std::vector<size_t> needs;  // indexes of earlier items
    // Set by apply.
    ItemStatus status = ItemStatus::kUnchanged;
    int result = 0;
    std::string detail;
};

// The plan of a document that CheckDocument accepted, against a check
// answer; items in the order they are to be carried out. lists: what
// CheckDocument gave for the document (worked out again when null).
std::vector<Item> MakePlan(const Json& doc, const Json& state, const CanonLists* lists = nullptr);

// The longest run of want[a..b) found in order within have: a and b, and
// for each element of have whether the run keeps it. With fromStart the
// run must start at want[0] (lists that can only be appended to).
struct KeptRun {
    size_t a = 0, b = 0;
    std::vector<bool> kept;
};
KeptRun LongestKeptRun(const std::vector<Json>& have, const std::vector<Json>& want,
                       bool fromStart);

}  // namespace nvsettings

#endif
