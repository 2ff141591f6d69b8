// nvsim-mkstate RULES LISTENERS FILE: writes a generated large state file for
// running norvaned against by hand or in tests.
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "agent/sim_testdata.h"

int main(int argc, char** argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: nvsim-mkstate RULES LISTENERS FILE\n");
        return 2;
    }
    int rules = atoi(argv[1]);
    int listeners = atoi(argv[2]);
    std::ofstream out(argv[3], std::ios::binary | std::ios::trunc);
    out << nvagent::MakeLargeState(rules, listeners).dump(2) << "\n";
    out.close();
    if (!out) {
        fprintf(stderr, "nvsim-mkstate: cannot write %s\n", argv[3]);
        return 1;
    }
    return 0;
}
