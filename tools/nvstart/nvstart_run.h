// nvstart: makes sure an agent answers on the console's socket, starting it
// through the service manager or by running norvaned, and says what it did.
#ifndef NV_TOOLS_NVSTART_RUN_H
#define NV_TOOLS_NVSTART_RUN_H

#include <cstdio>

// Exit statuses.
enum { NVSTART_OK = 0, NVSTART_FAILED = 1, NVSTART_USAGE = 2 };

// Runs nvstart with its command line; messages go to out (success) and err.
int NvstartRun(int argc, char** argv, FILE* out, FILE* err);

#endif
