// nvcmd's export and apply sub-commands, over a link already set up.
#ifndef NV_TOOLS_NVCMD_SETTINGS_CLI_H
#define NV_TOOLS_NVCMD_SETTINGS_CLI_H

#include <cstdio>

// nvcmd export [--format yaml|json]: args are what follows "export".
int SettingsExport(int argc, char** argv, FILE* out, FILE* err);
// nvcmd apply FILE [--check] [--diff] [--json]; FILE "-" is standard input.
// Returns 0 nothing changed, 2 changed, 1 failed or refused.
int SettingsApply(int argc, char** argv, FILE* out, FILE* err);

#endif
