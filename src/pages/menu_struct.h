// The page builders: one per menu leaf, each turning the agent's state into
// a content page and handing it to the content view. 0 when the page is
// shown, otherwise the failed state load's result.
#ifndef NV_PAGES_MENU_STRUCT_H
#define NV_PAGES_MENU_STRUCT_H

#include "content/content_data.h"

int UI_NetWorkConfig(void* arg);
int UI_ResourceConfig(void* arg);
int UI_FileMonit(void* arg);
int UI_ProcessMonit(void* arg);
int UI_CpuMonit(void* arg);
int UI_MemoryMonit(void* arg);
int UI_MemoryState(void* arg);
int UI_TcpPortState(void* arg);
int UI_Vsftpd(void* arg);
int UI_Samba(void* arg);
int UI_SysStateConfig(void* arg);
int UI_NetInterface(void* arg);
int UI_DiskMonit(void* arg);
int UI_BakMonit(void* arg);
int UI_IpTableInput(void* arg);
int UI_IpTableOutput(void* arg);

// The add forms of the monitor and chain pages, built afresh for each page.
CONTENT_DATA* UI_DvMonitAdd();
CONTENT_DATA* UI_BakMonitAdd();
CONTENT_DATA* UI_IpTableAddRule();

#endif
