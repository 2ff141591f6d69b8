// nvcmd's entry point.
#include <cstdio>

#include "nvcmd_run.h"

int main(int argc, char** argv) {
    return NvcmdRun(argc, argv, stdout, stderr);
}
