// The command-name table: every command the agent knows, by name and number.
#ifndef NV_CMDCLIENT_CMD_NAMES_H
#define NV_CMDCLIENT_CMD_NAMES_H

struct ST_CMD_NAME {
    short shCmdNo;
    const char* pcName;     // lower case with hyphens
    const char* pcOldName;  // an earlier name still accepted, or null
    const char* pcPayload;  // what the payload holds; null: reserved
};

extern const ST_CMD_NAME g_astCmdName[];
extern const int g_iCmdNameNum;

// The number of a command name (or its earlier name), or -1 when unknown.
int FindCmdNo(const char* pcName);
// The name of a command number, or null when the number is unknown.
const char* FindCmdName(int iCmdNo);

#endif
