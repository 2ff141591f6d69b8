// nvsim-mkstate RULES LISTENERS FILE: writes a generated large state file for
// running norvaned against by hand or in tests.
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "agent/sim/sim_testdata.h"

// A count argument: decimal digits, at most one million; -1 otherwise.
static int Count(const char* s) {
    char* end = nullptr;
    long v = strtol(s, &end, 10);
    return (*s >= '0' && *s <= '9' && *end == '\0' && v <= 1000000) ? static_cast<int>(v) : -1;
}

int main(int argc, char** argv) {
    int rules = argc == 4 ? Count(argv[1]) : -1;
    int listeners = argc == 4 ? Count(argv[2]) : -1;
    if (rules < 0 || listeners < 0) {
        fprintf(stderr, "usage: nvsim-mkstate RULES LISTENERS FILE (counts up to 1000000)\n");
        return 2;
    }
    std::ofstream out(argv[3], std::ios::binary | std::ios::trunc);
    out << nvagent::MakeLargeState(rules, listeners).dump(2) << "\n";
    out.close();
    if (!out) {
        fprintf(stderr, "nvsim-mkstate: cannot write %s\n", argv[3]);
        return 1;
    }
    return 0;
}
