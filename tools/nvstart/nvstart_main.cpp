// nvstart's entry point.
#include <cstdio>

#include "nvstart_run.h"

int main(int argc, char** argv) {
    return NvstartRun(argc, argv, stdout, stderr);
}
