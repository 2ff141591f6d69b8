// nvcmd: talks to the agent from the command line. check prints the agent's
// state as JSON, send carries out one set command, lang sets the console's
// language.
#ifndef NV_TOOLS_NVCMD_RUN_H
#define NV_TOOLS_NVCMD_RUN_H

#include <cstdio>

// Exit statuses of nvcmd: send answers OK when the agent did what was asked
// or found it already so (7 or 6).
enum { NVCMD_OK = 0, NVCMD_REFUSED = 1, NVCMD_USAGE = 2 };

// Runs nvcmd with its arguments, writing results to out and messages to err.
int NvcmdRun(int argc, char** argv, FILE* out, FILE* err);

#endif
