// The console's service link: start-up, the check request, one set request,
// and the information-line text of a result code.
#ifndef NV_LINK_UI_INTERFACE_H
#define NV_LINK_UI_INTERFACE_H

#include <string>

#include "link/global_val.h"
#include "link/result_codes.h"

// Environment variables that replace the agent socket and the log path.
#define NVUI_ENV_SOCKET "NVUI_SOCKET"
#define NVUI_ENV_LOG "NVUI_LOG"
#define NVUI_DEFAULT_LOG "/var/log/nvui.log"

int UI_InitInterface(int* piLanguageCode, std::string& version);
int GetObjInfo();
int SetObjInfo(int iCmdIdx, int iDataLen, char* pcData);
// How many set requests SetObjInfo has tried to send since start.
unsigned long SetRequestCount();
const char* GetOperatingInfoStr(int iInfoIndex);

// Applies NVUI_SOCKET and NVUI_LOG to the record (the log level and the
// default log path are set by UI_InitInterface itself). Tools that talk to the
// agent without the console's start-up call this and the two map fillers.
void ApplyLinkEnvironment();

// Creates the stream socket into fdConn and connects it to the agent; errors
// are logged as the calling request's. 0, -1 (no socket) or
// ERR_CONNECT_FAILED. Tools that send commands outside the console's range
// connect with it and then call RequestCmd themselves.
int ConnectAgent(const char* pcCaller);

#endif
