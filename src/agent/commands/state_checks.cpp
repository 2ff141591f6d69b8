// Checks of requests against the current state, shared by the backends.
#include "agent/commands/state_checks.h"

namespace nvagent {

bool CheckDeleteIndex(unsigned long long index, size_t count, CmdResult& r) {
    if (index >= 1 && index <= count)
        return true;
    if (count == 0) {
        r = Invalid("The list is empty.");
    } else {
        r = Invalid("There is no entry " + std::to_string(index) + "; the list has " +
                    std::to_string(count) +
                    (count == 1 ? " entry, numbered 1."
                                : " entries, numbered 1 to " + std::to_string(count) + "."));
    }
    return false;
}

static std::string Percent(int v) {
    return std::to_string(v) + "%";
}

bool CheckCpuCeil(int ceil, int floor, CmdResult& r) {
    if (ceil >= floor)
        return true;
    r = Invalid("The CPU ceiling must not be below the floor (" + Percent(floor) + ").");
    return false;
}

bool CheckCpuFloor(int floor, int ceil, CmdResult& r) {
    if (floor <= ceil)
        return true;
    r = Invalid("The CPU floor must not be above the ceiling (" + Percent(ceil) + ").");
    return false;
}

bool CheckMemCeil(int ceil, int totalMb, CmdResult& r) {
    if (totalMb <= 0 || ceil <= totalMb)
        return true;
    r = Invalid("The memory ceiling cannot exceed the total memory (" + std::to_string(totalMb) +
                " MB).");
    return false;
}

}  // namespace nvagent
