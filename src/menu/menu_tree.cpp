// The menu tree: every leaf bound to its page builder.
#include "menu/menu_tree.h"

#include "pages/menu_struct.h"
#include "strings/com_str.h"
#include "strings/prompt_id.h"

#define NV_LEAF(name, label, func) \
    static const NV_MENU_ITEM name = {label, PROMPT_CONTENT, 0, func, nullptr}
#define NV_NODE(name, label, list) \
    static const NV_MENU_ITEM name = {label, 0, sizeof(list) / sizeof(list[0]), nullptr, list}

NV_LEAF(stNetInterface, pcStrNetInterface, UI_NetInterface);
NV_LEAF(stSysStateConf, pcStrSysStateConfig, UI_SysStateConfig);
static const NV_MENU_ITEM* const pstSysConfList[] = {&stNetInterface, &stSysStateConf};
NV_NODE(stSysConf, pcStrSysConfig, pstSysConfList);

NV_LEAF(stNetOptm, pcStrNetOptimize, UI_NetWorkConfig);
NV_LEAF(stResOptm, pcStrResOptimize, UI_ResourceConfig);
static const NV_MENU_ITEM* const pstSysOptimizeList[] = {&stNetOptm, &stResOptm};
NV_NODE(stSysOptimize, pcStrSysOptimize, pstSysOptimizeList);

NV_LEAF(stFileMonit, pcStrFileMonit, UI_FileMonit);
NV_LEAF(stProcMonit, pcStrProcMonit, UI_ProcessMonit);
NV_LEAF(stCpuMonit, pcStrCpuMonit, UI_CpuMonit);
NV_LEAF(stMemMonit, pcStrMemoryMonit, UI_MemoryMonit);
NV_LEAF(stDiskMonit, pcStrDiskMonit, UI_DiskMonit);
NV_LEAF(stBakMonit, pcStrBakMonit, UI_BakMonit);
NV_LEAF(stTcpPortState, pcStrTcpPortState, UI_TcpPortState);
static const NV_MENU_ITEM* const pstSysMonitList[] = {&stFileMonit,   &stProcMonit, &stCpuMonit,
                                                      &stMemMonit,    &stDiskMonit, &stBakMonit,
                                                      &stTcpPortState};
NV_NODE(stSysMonit, pcStrSysMonit, pstSysMonitList);

NV_LEAF(stIpTableInput, pcStrInput, UI_IpTableInput);
NV_LEAF(stIpTableOutput, pcStrOutput, UI_IpTableOutput);
static const NV_MENU_ITEM* const pstIpTableList[] = {&stIpTableInput, &stIpTableOutput};
NV_NODE(stIpTable, pcStrIpTable, pstIpTableList);
NV_LEAF(stVsftpd, pcStrVsftpd, UI_Vsftpd);
NV_LEAF(stSamba, pcStrSamba, UI_Samba);
static const NV_MENU_ITEM* const pstAppConfigList[] = {&stIpTable, &stVsftpd, &stSamba};
NV_NODE(stAppConf, pcStrAppConfig, pstAppConfigList);

static const NV_MENU_ITEM* const pstMainMenuList[] = {&stSysConf, &stSysOptimize, &stSysMonit,
                                                      &stAppConf};
const NV_MENU_ITEM stMainMenu = {pcStrMainMenu, 0, 4, nullptr, pstMainMenuList};
