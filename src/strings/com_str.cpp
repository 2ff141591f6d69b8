// The combined text catalogue, its constant entries, the index tables and
// InitComStr.
#include "strings/com_str.h"

#include "strings/english_str.h"
#include "strings/gb2312_str.h"
#include "strings/utf8_str.h"

int iLanIdx = LAN_MAX;

// "主菜单 " in GB2312, with its trailing blank.
const char* pcStrMainMenu[LAN_MAX] = {"main menu", "\xd6\xf7\xb2\xcb\xb5\xa5 ", nullptr};
const char* pcStrDefaultIP[LAN_MAX] = {"###.###.###.###", "###.###.###.###", "###.###.###.###"};
const char* pcStrDefaultPort[LAN_MAX] = {"####", "####", "####"};
const char* pcStrNullInfo[LAN_MAX] = {"    ", "    ", "    "};

const char* pcStrSysConfig[LAN_MAX];
const char* pcStrSysOptimize[LAN_MAX];
const char* pcStrNetOptimize[LAN_MAX];
const char* pcStrPingConfig[LAN_MAX];
const char* pcStrTcpSynConfig[LAN_MAX];
const char* pcStrTcpWaitTimeReuse[LAN_MAX];
const char* pcStrIp[LAN_MAX];
const char* pcStrMask[LAN_MAX];
const char* pcStrDns[LAN_MAX];
const char* pcStrGateWay[LAN_MAX];
const char* pcStrDNS1[LAN_MAX];
const char* pcStrDNS2[LAN_MAX];
const char* pcStrResOptimize[LAN_MAX];
const char* pcStrSysStateConfig[LAN_MAX];
const char* pcStrHostName[LAN_MAX];
const char* pcStrSysDate[LAN_MAX];
const char* pcStrSysTime[LAN_MAX];
const char* pcStrUserName[LAN_MAX];
const char* pcStrNewPassword[LAN_MAX];
const char* pcStrPwConfirm[LAN_MAX];
const char* pcStrYear[LAN_MAX];
const char* pcStrMonth[LAN_MAX];
const char* pcStrDay[LAN_MAX];
const char* pcStrHour[LAN_MAX];
const char* pcStrMinite[LAN_MAX];
const char* pcStrSecond[LAN_MAX];
const char* pcStrShmmax[LAN_MAX];
const char* pcStrShmall[LAN_MAX];
const char* pcStrShmmni[LAN_MAX];
const char* pcStrThreadMax[LAN_MAX];
const char* pcStrFileMax[LAN_MAX];
const char* pcStrSysMonit[LAN_MAX];
const char* pcStrFileMonit[LAN_MAX];
const char* pcStrFileList[LAN_MAX];
const char* pcStrScanList[LAN_MAX];
const char* pcStrMonitToggle[LAN_MAX];
const char* pcStrProcMonit[LAN_MAX];
const char* pcStrProcList[LAN_MAX];
const char* pcStrCpuMonit[LAN_MAX];
const char* pcStrCpuCeil[LAN_MAX];
const char* pcStrCpuFloor[LAN_MAX];
const char* pcStrMemoryMonit[LAN_MAX];
const char* pcStrMemUseCeil[LAN_MAX];
const char* pcStrDiskMonit[LAN_MAX];
const char* pcStrDiskMonitList[LAN_MAX];
const char* pcStrPartition[LAN_MAX];
const char* pcStrCeil[LAN_MAX];
const char* pcStrFloor[LAN_MAX];
const char* pcStrInterval[LAN_MAX];
const char* pcStrBakMonit[LAN_MAX];
const char* pcStrBakMonitList[LAN_MAX];
const char* pcStrFile[LAN_MAX];
const char* pcStrBakDir[LAN_MAX];
const char* pcStrBakSize[LAN_MAX];
const char* pcStrSysState[LAN_MAX];
const char* pcStrTcpPortState[LAN_MAX];
const char* pcStrLocalIp[LAN_MAX];
const char* pcStrLocalPort[LAN_MAX];
const char* pcStrPid[LAN_MAX];
const char* pcStrProgName[LAN_MAX];
const char* pcStrMemoryState[LAN_MAX];
const char* pcStrMemoryUse[LAN_MAX];
const char* pcStrMemoryFree[LAN_MAX];
const char* pcStrAppConfig[LAN_MAX];
const char* pcStrIpTable[LAN_MAX];
const char* pcStrInput[LAN_MAX];
const char* pcStrOutput[LAN_MAX];
const char* pcStrVsftpd[LAN_MAX];
const char* pcStrSamba[LAN_MAX];
const char* pcStrNetInterface[LAN_MAX];
const char* pcStrPromptMenu[LAN_MAX];
const char* pcStrPromptContent[LAN_MAX];
const char* pcStrPromptContentNoModify[LAN_MAX];
const char* pcStrPromptContentList[LAN_MAX];
const char* pcStrPromptContentNewLevel[LAN_MAX];
const char* pcStrPromptInput[LAN_MAX];
const char* pcStrPromptChoose[LAN_MAX];
const char* pcStrPromptList[LAN_MAX];
const char* pcStrPromptShortcutKeyToggle[LAN_MAX];
const char* pcStrPromptShortcutKeyPolicy[LAN_MAX];
const char* pcStrPromptHelp[LAN_MAX];
const char* pcStrPromptNetInferface[LAN_MAX];
const char* pcStrPromptSysStateConfig[LAN_MAX];
const char* pcStrOpen[LAN_MAX];
const char* pcStrClose[LAN_MAX];
const char* pcStrYes[LAN_MAX];
const char* pcStrNo[LAN_MAX];
const char* pcStrAnonymEnable[LAN_MAX];
const char* pcStrAnonymUpload[LAN_MAX];
const char* pcStrAnonymMkdir[LAN_MAX];
const char* pcStrAnonymRootPath[LAN_MAX];
const char* pcStrLocalUsrEnable[LAN_MAX];
const char* pcStrWriteEnable[LAN_MAX];
const char* pcStrFtpStart[LAN_MAX];
const char* pcStrFtpDefault[LAN_MAX];
const char* pcStrShDirPath[LAN_MAX];
const char* pcStrShWrEn[LAN_MAX];
const char* pcStrSambaStart[LAN_MAX];
const char* pcStrSambaDefault[LAN_MAX];
const char* pcStrPriority[LAN_MAX];
const char* pcStrProtocol[LAN_MAX];
const char* pcStrSrcIp[LAN_MAX];
const char* pcStrSrcPort[LAN_MAX];
const char* pcStrDesIp[LAN_MAX];
const char* pcStrDesPort[LAN_MAX];
const char* pcStrAction[LAN_MAX];
const char* pcStrHighest[LAN_MAX];
const char* pcStrLowest[LAN_MAX];
const char* pcStrTcp[LAN_MAX];
const char* pcStrUdp[LAN_MAX];
const char* pcStrAccept[LAN_MAX];
const char* pcStrDrop[LAN_MAX];
const char* pcStrReject[LAN_MAX];
const char* pcStrIfName[LAN_MAX];
const char* pcStrIfNameReminder[LAN_MAX];
const char* pcStrIpReminder[LAN_MAX];
const char* pcStrMaskReminder[LAN_MAX];
const char* pcStrGatewayReminder[LAN_MAX];
const char* pcStrDelInfo[LAN_MAX];
const char* pcStrDvClearInfo[LAN_MAX];
const char* pcStrBackupClearInfo[LAN_MAX];
const char* pcStrInputClearInfo[LAN_MAX];
const char* pcStrOutputClearInfo[LAN_MAX];
const char* pcStrModifyPolicy[LAN_MAX];
const char* pcStrHelpIcmpIgnore[LAN_MAX];
const char* pcStrHelpTcpSynCookies[LAN_MAX];
const char* pcStrHelpTcpWaitTimeReuse[LAN_MAX];
const char* pcStrHelpShmax[LAN_MAX];
const char* pcStrHelpShAll[LAN_MAX];
const char* pcStrHelpShmmni[LAN_MAX];
const char* pcStrHelpThreadMax[LAN_MAX];
const char* pcStrHelpFileMax[LAN_MAX];
const char* pcStrHelpFileMonitFlag[LAN_MAX];
const char* pcStrHelpFileMonitList[LAN_MAX];
const char* pcStrHelpProcessMonitFlag[LAN_MAX];
const char* pcStrHelpProcessMonitList[LAN_MAX];
const char* pcStrHelpCpuMonitFlag[LAN_MAX];
const char* pcStrHelpCpuCeil[LAN_MAX];
const char* pcStrHelpCpuFloor[LAN_MAX];
const char* pcStrHelpMemMonitFlag[LAN_MAX];
const char* pcStrHelpMemCeil[LAN_MAX];
const char* pcStrHelpDvMonit[LAN_MAX];
const char* pcStrHelpBakFile[LAN_MAX];
const char* pcStrHelpTcpListenPort[LAN_MAX];
const char* pcStrHelpMemUse[LAN_MAX];
const char* pcStrHelpMemFree[LAN_MAX];
const char* pcStrHelpInput[LAN_MAX];
const char* pcStrHelpOutput[LAN_MAX];
const char* pcStrHelpAnonEnable[LAN_MAX];
const char* pcStrHelpAnonUpload[LAN_MAX];
const char* pcStrHelpAnonMkdir[LAN_MAX];
const char* pcStrHelpAnonRootPath[LAN_MAX];
const char* pcStrHelpLocalEnable[LAN_MAX];
const char* pcStrHelpWrEnable[LAN_MAX];
const char* pcStrHelpFtpStart[LAN_MAX];
const char* pcStrHelpFtpDefault[LAN_MAX];
const char* pcStrHelpSambaShareDir[LAN_MAX];
const char* pcStrHelpSambaWRE[LAN_MAX];
const char* pcStrHelpSambaStart[LAN_MAX];
const char* pcStrHelpSambaDefault[LAN_MAX];
const char* pcStrHelpNetInterface[LAN_MAX];
const char* pcStrHelpSysStateConfig[LAN_MAX];
// Initialised at load time, unlike its neighbours: see com_str.h.
const char* pcStrConnectError[LAN_MAX] = {pcEn_ConnectError, pcGB2312_ConnectError,
                                          pcUTF8_ConnectError};
const char* pcStrWelcomeInfo[LAN_MAX];
const char* pcStrSwName[LAN_MAX];
const char* pcStrWait[LAN_MAX];
const char* pcStrExitEnquiry[LAN_MAX];

const char** const pcStrPrompt[PROMPT_MAX] = {pcStrPromptMenu,
                                              pcStrPromptContent,
                                              pcStrPromptContentNoModify,
                                              pcStrPromptContentList,
                                              pcStrPromptContentNewLevel,
                                              pcStrPromptInput,
                                              pcStrPromptChoose,
                                              pcStrPromptList,
                                              pcStrPromptShortcutKeyToggle,
                                              pcStrPromptShortcutKeyPolicy,
                                              pcStrPromptHelp,
                                              pcStrPromptNetInferface,
                                              pcStrPromptSysStateConfig};

const char** const pcStrHelp[EN_HELP_MAX] = {pcStrHelpIcmpIgnore,
                                             pcStrHelpTcpSynCookies,
                                             pcStrHelpTcpWaitTimeReuse,
                                             pcStrHelpShmax,
                                             pcStrHelpShAll,
                                             pcStrHelpShmmni,
                                             pcStrHelpThreadMax,
                                             pcStrHelpFileMax,
                                             pcStrHelpFileMonitFlag,
                                             pcStrHelpFileMonitList,
                                             pcStrHelpProcessMonitFlag,
                                             pcStrHelpProcessMonitList,
                                             pcStrHelpCpuMonitFlag,
                                             pcStrHelpCpuCeil,
                                             pcStrHelpCpuFloor,
                                             pcStrHelpMemMonitFlag,
                                             pcStrHelpMemCeil,
                                             pcStrHelpDvMonit,
                                             pcStrHelpBakFile,
                                             pcStrHelpTcpListenPort,
                                             pcStrHelpMemUse,
                                             pcStrHelpMemFree,
                                             pcStrHelpInput,
                                             pcStrHelpOutput,
                                             pcStrHelpAnonEnable,
                                             pcStrHelpAnonUpload,
                                             pcStrHelpAnonMkdir,
                                             pcStrHelpAnonRootPath,
                                             pcStrHelpLocalEnable,
                                             pcStrHelpWrEnable,
                                             pcStrHelpFtpStart,
                                             pcStrHelpFtpDefault,
                                             pcStrHelpSambaShareDir,
                                             pcStrHelpSambaWRE,
                                             pcStrHelpSambaStart,
                                             pcStrHelpSambaDefault,
                                             pcStrHelpNetInterface,
                                             pcStrHelpSysStateConfig};

static void SetStr(const char** pcStr, const char* pcEn, const char* pcGB2312, const char* pcUTF8) {
    pcStr[LAN_ENGLISH] = pcEn;
    pcStr[LAN_CHINESE_GB2312] = pcGB2312;
    pcStr[LAN_CHINESE_UTF8] = pcUTF8;
}

void InitComStr() {
    InitEnglishStr();
    InitGB2312Str();
    InitUTF8Str();

    SetStr(pcStrSysConfig, pcEn_SysConfig, pcGB2312_SysConfig, pcUTF8_SysConfig);
    SetStr(pcStrSysOptimize, pcEn_SysOptimize, pcGB2312_SysOptimize, pcUTF8_SysOptimize);
    SetStr(pcStrNetOptimize, pcEn_NetOptimize, pcGB2312_NetOptimize, pcUTF8_NetOptimize);
    SetStr(pcStrPingConfig, pcEn_PingConfig, pcGB2312_PingConfig, pcUTF8_PingConfig);
    SetStr(pcStrTcpSynConfig, pcEn_TcpSynConfig, pcGB2312_TcpSynConfig, pcUTF8_TcpSynConfig);
    SetStr(pcStrTcpWaitTimeReuse, pcEn_TcpWaitTimeReuse, pcGB2312_TcpWaitTimeReuse,
           pcUTF8_TcpWaitTimeReuse);
    SetStr(pcStrIp, pcEn_Ip, pcGB2312_Ip, pcUTF8_Ip);
    SetStr(pcStrMask, pcEn_Mask, pcGB2312_Mask, pcUTF8_Mask);
    SetStr(pcStrDns, pcEn_Dns, pcGB2312_Dns, pcUTF8_Dns);
    SetStr(pcStrGateWay, pcEn_GateWay, pcGB2312_GateWay, pcUTF8_GateWay);
    SetStr(pcStrDNS1, pcEn_DNS1, pcGB2312_DNS1, pcUTF8_DNS1);
    SetStr(pcStrDNS2, pcEn_DNS2, pcGB2312_DNS2, pcUTF8_DNS2);
    SetStr(pcStrResOptimize, pcEn_ResOptimize, pcGB2312_ResOptimize, pcUTF8_ResOptimize);
    SetStr(pcStrSysStateConfig, pcEn_SysStateConfig, pcGB2312_SysStateConfig,
           pcUTF8_SysStateConfig);
    SetStr(pcStrHostName, pcEn_HostName, pcGB2312_HostName, pcUTF8_HostName);
    SetStr(pcStrSysDate, pcEn_SysDate, pcGB2312_SysDate, pcUTF8_SysDate);
    SetStr(pcStrSysTime, pcEn_SysTime, pcGB2312_SysTime, pcUTF8_SysTime);
    SetStr(pcStrUserName, pcEn_UserName, pcGB2312_UserName, pcUTF8_UserName);
    SetStr(pcStrNewPassword, pcEn_NewPassword, pcGB2312_NewPassword, pcUTF8_NewPassword);
    SetStr(pcStrPwConfirm, pcEn_PwConfirm, pcGB2312_PwConfirm, pcUTF8_PwConfirm);
    SetStr(pcStrYear, pcEn_Year, pcGB2312_Year, pcUTF8_Year);
    SetStr(pcStrMonth, pcEn_Month, pcGB2312_Month, pcUTF8_Month);
    SetStr(pcStrDay, pcEn_Day, pcGB2312_Day, pcUTF8_Day);
    SetStr(pcStrHour, pcEn_Hour, pcGB2312_Hour, pcUTF8_Hour);
    SetStr(pcStrMinite, pcEn_Minite, pcGB2312_Minite, pcUTF8_Minite);
    SetStr(pcStrSecond, pcEn_Second, pcGB2312_Second, pcUTF8_Second);
    SetStr(pcStrShmmax, pcEn_Shmmax, pcGB2312_Shmmax, pcUTF8_Shmmax);
    SetStr(pcStrShmall, pcEn_Shmall, pcGB2312_Shmall, pcUTF8_Shmall);
    SetStr(pcStrShmmni, pcEn_Shmmni, pcGB2312_Shmmni, pcUTF8_Shmmni);
    SetStr(pcStrThreadMax, pcEn_ThreadMax, pcGB2312_ThreadMax, pcUTF8_ThreadMax);
    SetStr(pcStrFileMax, pcEn_FileMax, pcGB2312_FileMax, pcUTF8_FileMax);
    SetStr(pcStrSysMonit, pcEn_SysMonit, pcGB2312_SysMonit, pcUTF8_SysMonit);
    SetStr(pcStrFileMonit, pcEn_FileMonit, pcGB2312_FileMonit, pcUTF8_FileMonit);
    SetStr(pcStrFileList, pcEn_FileList, pcGB2312_FileList, pcUTF8_FileList);
    SetStr(pcStrScanList, pcEn_ScanList, pcGB2312_ScanList, pcUTF8_ScanList);
    SetStr(pcStrMonitToggle, pcEn_MonitToggle, pcGB2312_MonitToggle, pcUTF8_MonitToggle);
    SetStr(pcStrProcMonit, pcEn_ProcMonit, pcGB2312_ProcMonit, pcUTF8_ProcMonit);
    SetStr(pcStrProcList, pcEn_ProcList, pcGB2312_ProcList, pcUTF8_ProcList);
    SetStr(pcStrCpuMonit, pcEn_CpuMonit, pcGB2312_CpuMonit, pcUTF8_CpuMonit);
    SetStr(pcStrCpuCeil, pcEn_CpuCeil, pcGB2312_CpuCeil, pcUTF8_CpuCeil);
    SetStr(pcStrCpuFloor, pcEn_CpuFloor, pcGB2312_CpuFloor, pcUTF8_CpuFloor);
    SetStr(pcStrMemoryMonit, pcEn_MemoryMonit, pcGB2312_MemoryMonit, pcUTF8_MemoryMonit);
    SetStr(pcStrMemUseCeil, pcEn_MemUseCeil, pcGB2312_MemUseCeil, pcUTF8_MemUseCeil);
    SetStr(pcStrDiskMonit, pcEn_DiskMonit, pcGB2312_DiskMonit, pcUTF8_DiskMonit);
    SetStr(pcStrDiskMonitList, pcEn_DiskMonitList, pcGB2312_DiskMonitList, pcUTF8_DiskMonitList);
    SetStr(pcStrPartition, pcEn_Partition, pcGB2312_Partition, pcUTF8_Partition);
    SetStr(pcStrCeil, pcEn_Ceil, pcGB2312_Ceil, pcUTF8_Ceil);
    SetStr(pcStrFloor, pcEn_Floor, pcGB2312_Floor, pcUTF8_Floor);
    SetStr(pcStrInterval, pcEn_Interval, pcGB2312_Interval, pcUTF8_Interval);
    SetStr(pcStrBakMonit, pcEn_BakMonit, pcGB2312_BakMonit, pcUTF8_BakMonit);
    SetStr(pcStrBakMonitList, pcEn_BakMonitList, pcGB2312_BakMonitList, pcUTF8_BakMonitList);
    SetStr(pcStrFile, pcEn_File, pcGB2312_File, pcUTF8_File);
    SetStr(pcStrBakDir, pcEn_BakDir, pcGB2312_BakDir, pcUTF8_BakDir);
    SetStr(pcStrBakSize, pcEn_BakSize, pcGB2312_BakSize, pcUTF8_BakSize);
    SetStr(pcStrSysState, pcEn_SysState, pcGB2312_SysState, pcUTF8_SysState);
    SetStr(pcStrTcpPortState, pcEn_TcpPortState, pcGB2312_TcpPortState, pcUTF8_TcpPortState);
    SetStr(pcStrLocalIp, pcEn_LocalIp, pcGB2312_LocalIp, pcUTF8_LocalIp);
    SetStr(pcStrLocalPort, pcEn_LocalPort, pcGB2312_LocalPort, pcUTF8_LocalPort);
    SetStr(pcStrPid, pcEn_Pid, pcGB2312_Pid, pcUTF8_Pid);
    SetStr(pcStrProgName, pcEn_ProgName, pcGB2312_ProgName, pcUTF8_ProgName);
    SetStr(pcStrMemoryState, pcEn_MemoryState, pcGB2312_MemoryState, pcUTF8_MemoryState);
    SetStr(pcStrMemoryUse, pcEn_MemoryUse, pcGB2312_MemoryUse, pcUTF8_MemoryUse);
    SetStr(pcStrMemoryFree, pcEn_MemoryFree, pcGB2312_MemoryFree, pcUTF8_MemoryFree);
    SetStr(pcStrAppConfig, pcEn_AppConfig, pcGB2312_AppConfig, pcUTF8_AppConfig);
    SetStr(pcStrIpTable, pcEn_IpTable, pcGB2312_IpTable, pcUTF8_IpTable);
    SetStr(pcStrInput, pcEn_Input, pcGB2312_Input, pcUTF8_Input);
    SetStr(pcStrOutput, pcEn_Output, pcGB2312_Output, pcUTF8_Output);
    SetStr(pcStrVsftpd, pcEn_Vsftpd, pcGB2312_Vsftpd, pcUTF8_Vsftpd);
    SetStr(pcStrSamba, pcEn_Samba, pcGB2312_Samba, pcUTF8_Samba);
    SetStr(pcStrNetInterface, pcEn_NetInterface, pcGB2312_NetInterface, pcUTF8_NetInterface);
    SetStr(pcStrPromptMenu, pcEn_PromptMenu, pcGB2312_PromptMenu, pcUTF8_PromptMenu);
    SetStr(pcStrPromptContent, pcEn_PromptContent, pcGB2312_PromptContent, pcUTF8_PromptContent);
    SetStr(pcStrPromptContentNoModify, pcEn_PromptContentNoModify, pcGB2312_PromptContentNoModify,
           pcUTF8_PromptContentNoModify);
    SetStr(pcStrPromptContentList, pcEn_PromptContentList, pcGB2312_PromptContentList,
           pcUTF8_PromptContentList);
    SetStr(pcStrPromptContentNewLevel, pcEn_PromptContentNewLevel, pcGB2312_PromptContentNewLevel,
           pcUTF8_PromptContentNewLevel);
    SetStr(pcStrPromptInput, pcEn_PromptInput, pcGB2312_PromptInput, pcUTF8_PromptInput);
    SetStr(pcStrPromptChoose, pcEn_PromptChoose, pcGB2312_PromptChoose, pcUTF8_PromptChoose);
    SetStr(pcStrPromptList, pcEn_PromptList, pcGB2312_PromptList, pcUTF8_PromptList);
    SetStr(pcStrPromptShortcutKeyToggle, pcEn_PromptShortcutKeyToggle,
           pcGB2312_PromptShortcutKeyToggle, pcUTF8_PromptShortcutKeyToggle);
    SetStr(pcStrPromptShortcutKeyPolicy, pcEn_PromptShortcutKeyPolicy,
           pcGB2312_PromptShortcutKeyPolicy, pcUTF8_PromptShortcutKeyPolicy);
    SetStr(pcStrPromptHelp, pcEn_PromptHelp, pcGB2312_PromptHelp, pcUTF8_PromptHelp);
    SetStr(pcStrPromptNetInferface, pcEn_PromptNetInferface, pcGB2312_PromptNetInferface,
           pcUTF8_PromptNetInferface);
    SetStr(pcStrPromptSysStateConfig, pcEn_PromptSysStateConfig, pcGB2312_PromptSysStateConfig,
           pcUTF8_PromptSysStateConfig);
    SetStr(pcStrOpen, pcEn_Open, pcGB2312_Open, pcUTF8_Open);
    SetStr(pcStrClose, pcEn_Close, pcGB2312_Close, pcUTF8_Close);
    SetStr(pcStrYes, pcEn_Yes, pcGB2312_Yes, pcUTF8_Yes);
    SetStr(pcStrNo, pcEn_No, pcGB2312_No, pcUTF8_No);
    SetStr(pcStrAnonymEnable, pcEn_AnonymEnable, pcGB2312_AnonymEnable, pcUTF8_AnonymEnable);
    SetStr(pcStrAnonymUpload, pcEn_AnonymUpload, pcGB2312_AnonymUpload, pcUTF8_AnonymUpload);
    SetStr(pcStrAnonymMkdir, pcEn_AnonymMkdir, pcGB2312_AnonymMkdir, pcUTF8_AnonymMkdir);
    SetStr(pcStrAnonymRootPath, pcEn_AnonymRootPath, pcGB2312_AnonymRootPath,
           pcUTF8_AnonymRootPath);
    SetStr(pcStrLocalUsrEnable, pcEn_LocalUsrEnable, pcGB2312_LocalUsrEnable,
           pcUTF8_LocalUsrEnable);
    SetStr(pcStrWriteEnable, pcEn_WriteEnable, pcGB2312_WriteEnable, pcUTF8_WriteEnable);
    SetStr(pcStrFtpStart, pcEn_FtpStart, pcGB2312_FtpStart, pcUTF8_FtpStart);
    SetStr(pcStrFtpDefault, pcEn_FtpDefault, pcGB2312_FtpDefault, pcUTF8_FtpDefault);
    SetStr(pcStrShDirPath, pcEn_ShDirPath, pcGB2312_ShDirPath, pcUTF8_ShDirPath);
    SetStr(pcStrShWrEn, pcEn_ShWrEn, pcGB2312_ShWrEn, pcUTF8_ShWrEn);
    SetStr(pcStrSambaStart, pcEn_SambaStart, pcGB2312_SambaStart, pcUTF8_SambaStart);
    SetStr(pcStrSambaDefault, pcEn_SambaDefault, pcGB2312_SambaDefault, pcUTF8_SambaDefault);
    SetStr(pcStrPriority, pcEn_Priority, pcGB2312_Priority, pcUTF8_Priority);
    SetStr(pcStrProtocol, pcEn_Protocol, pcGB2312_Protocol, pcUTF8_Protocol);
    SetStr(pcStrSrcIp, pcEn_SrcIp, pcGB2312_SrcIp, pcUTF8_SrcIp);
    SetStr(pcStrSrcPort, pcEn_SrcPort, pcGB2312_SrcPort, pcUTF8_SrcPort);
    SetStr(pcStrDesIp, pcEn_DesIp, pcGB2312_DesIp, pcUTF8_DesIp);
    SetStr(pcStrDesPort, pcEn_DesPort, pcGB2312_DesPort, pcUTF8_DesPort);
    SetStr(pcStrAction, pcEn_Action, pcGB2312_Action, pcUTF8_Action);
    SetStr(pcStrHighest, pcEn_Highest, pcGB2312_Highest, pcUTF8_Highest);
    SetStr(pcStrLowest, pcEn_Lowest, pcGB2312_Lowest, pcUTF8_Lowest);
    SetStr(pcStrTcp, pcEn_Tcp, pcGB2312_Tcp, pcUTF8_Tcp);
    SetStr(pcStrUdp, pcEn_Udp, pcGB2312_Udp, pcUTF8_Udp);
    SetStr(pcStrAccept, pcEn_Accept, pcGB2312_Accept, pcUTF8_Accept);
    SetStr(pcStrDrop, pcEn_Drop, pcGB2312_Drop, pcUTF8_Drop);
    SetStr(pcStrReject, pcEn_Reject, pcGB2312_Reject, pcUTF8_Reject);
    SetStr(pcStrIfName, pcEn_IfName, pcGB2312_IfName, pcUTF8_IfName);
    SetStr(pcStrIfNameReminder, pcEn_IfNameReminder, pcGB2312_IfNameReminder,
           pcUTF8_IfNameReminder);
    SetStr(pcStrIpReminder, pcEn_IpReminder, pcGB2312_IpReminder, pcUTF8_IpReminder);
    SetStr(pcStrMaskReminder, pcEn_MaskReminder, pcGB2312_MaskReminder, pcUTF8_MaskReminder);
    SetStr(pcStrGatewayReminder, pcEn_GatewayReminder, pcGB2312_GatewayReminder,
           pcUTF8_GatewayReminder);
    SetStr(pcStrDelInfo, pcEn_DelInfo, pcGB2312_DelInfo, pcUTF8_DelInfo);
    SetStr(pcStrDvClearInfo, pcEn_DvClearInfo, pcGB2312_DvClearInfo, pcUTF8_DvClearInfo);
    SetStr(pcStrBackupClearInfo, pcEn_BackupClearInfo, pcGB2312_BackupClearInfo,
           pcUTF8_BackupClearInfo);
    SetStr(pcStrInputClearInfo, pcEn_InputClearInfo, pcGB2312_InputClearInfo,
           pcUTF8_InputClearInfo);
    SetStr(pcStrOutputClearInfo, pcEn_OutputClearInfo, pcGB2312_OutputClearInfo,
           pcUTF8_OutputClearInfo);
    SetStr(pcStrModifyPolicy, pcEn_ModifyPolicy, pcGB2312_ModifyPolicy, pcUTF8_ModifyPolicy);
    SetStr(pcStrHelpIcmpIgnore, pcEn_HelpIcmpIgnore, pcGB2312_HelpIcmpIgnore,
           pcUTF8_HelpIcmpIgnore);
    SetStr(pcStrHelpTcpSynCookies, pcEn_HelpTcpSynCookies, pcGB2312_HelpTcpSynCookies,
           pcUTF8_HelpTcpSynCookies);
    SetStr(pcStrHelpTcpWaitTimeReuse, pcEn_HelpTcpWaitTimeReuse, pcGB2312_HelpTcpWaitTimeReuse,
           pcUTF8_HelpTcpWaitTimeReuse);
    SetStr(pcStrHelpShmax, pcEn_HelpShmax, pcGB2312_HelpShmax, pcUTF8_HelpShmax);
    SetStr(pcStrHelpShAll, pcEn_HelpShAll, pcGB2312_HelpShAll, pcUTF8_HelpShAll);
    SetStr(pcStrHelpShmmni, pcEn_HelpShmmni, pcGB2312_HelpShmmni, pcUTF8_HelpShmmni);
    SetStr(pcStrHelpThreadMax, pcEn_HelpThreadMax, pcGB2312_HelpThreadMax, pcUTF8_HelpThreadMax);
    SetStr(pcStrHelpFileMax, pcEn_HelpFileMax, pcGB2312_HelpFileMax, pcUTF8_HelpFileMax);
    SetStr(pcStrHelpFileMonitFlag, pcEn_HelpFileMonitFlag, pcGB2312_HelpFileMonitFlag,
           pcUTF8_HelpFileMonitFlag);
    SetStr(pcStrHelpFileMonitList, pcEn_HelpFileMonitList, pcGB2312_HelpFileMonitList,
           pcUTF8_HelpFileMonitList);
    SetStr(pcStrHelpProcessMonitFlag, pcEn_HelpProcessMonitFlag, pcGB2312_HelpProcessMonitFlag,
           pcUTF8_HelpProcessMonitFlag);
    SetStr(pcStrHelpProcessMonitList, pcEn_HelpProcessMonitList, pcGB2312_HelpProcessMonitList,
           pcUTF8_HelpProcessMonitList);
    SetStr(pcStrHelpCpuMonitFlag, pcEn_HelpCpuMonitFlag, pcGB2312_HelpCpuMonitFlag,
           pcUTF8_HelpCpuMonitFlag);
    SetStr(pcStrHelpCpuCeil, pcEn_HelpCpuCeil, pcGB2312_HelpCpuCeil, pcUTF8_HelpCpuCeil);
    SetStr(pcStrHelpCpuFloor, pcEn_HelpCpuFloor, pcGB2312_HelpCpuFloor, pcUTF8_HelpCpuFloor);
    SetStr(pcStrHelpMemMonitFlag, pcEn_HelpMemMonitFlag, pcGB2312_HelpMemMonitFlag,
           pcUTF8_HelpMemMonitFlag);
    SetStr(pcStrHelpMemCeil, pcEn_HelpMemCeil, pcGB2312_HelpMemCeil, pcUTF8_HelpMemCeil);
    SetStr(pcStrHelpDvMonit, pcEn_HelpDvMonit, pcGB2312_HelpDvMonit, pcUTF8_HelpDvMonit);
    SetStr(pcStrHelpBakFile, pcEn_HelpBakFile, pcGB2312_HelpBakFile, pcUTF8_HelpBakFile);
    SetStr(pcStrHelpTcpListenPort, pcEn_HelpTcpListenPort, pcGB2312_HelpTcpListenPort,
           pcUTF8_HelpTcpListenPort);
    SetStr(pcStrHelpMemUse, pcEn_HelpMemUse, pcGB2312_HelpMemUse, pcUTF8_HelpMemUse);
    SetStr(pcStrHelpMemFree, pcEn_HelpMemFree, pcGB2312_HelpMemFree, pcUTF8_HelpMemFree);
    SetStr(pcStrHelpInput, pcEn_HelpInput, pcGB2312_HelpInput, pcUTF8_HelpInput);
    SetStr(pcStrHelpOutput, pcEn_HelpOutput, pcGB2312_HelpOutput, pcUTF8_HelpOutput);
    SetStr(pcStrHelpAnonEnable, pcEn_HelpAnonEnable, pcGB2312_HelpAnonEnable,
           pcUTF8_HelpAnonEnable);
    SetStr(pcStrHelpAnonUpload, pcEn_HelpAnonUpload, pcGB2312_HelpAnonUpload,
           pcUTF8_HelpAnonUpload);
    SetStr(pcStrHelpAnonMkdir, pcEn_HelpAnonMkdir, pcGB2312_HelpAnonMkdir, pcUTF8_HelpAnonMkdir);
    SetStr(pcStrHelpAnonRootPath, pcEn_HelpAnonRootPath, pcGB2312_HelpAnonRootPath,
           pcUTF8_HelpAnonRootPath);
    SetStr(pcStrHelpLocalEnable, pcEn_HelpLocalEnable, pcGB2312_HelpLocalEnable,
           pcUTF8_HelpLocalEnable);
    SetStr(pcStrHelpWrEnable, pcEn_HelpWrEnable, pcGB2312_HelpWrEnable, pcUTF8_HelpWrEnable);
    SetStr(pcStrHelpFtpStart, pcEn_HelpFtpStart, pcGB2312_HelpFtpStart, pcUTF8_HelpFtpStart);
    SetStr(pcStrHelpFtpDefault, pcEn_HelpFtpDefault, pcGB2312_HelpFtpDefault,
           pcUTF8_HelpFtpDefault);
    SetStr(pcStrHelpSambaShareDir, pcEn_HelpSambaShareDir, pcGB2312_HelpSambaShareDir,
           pcUTF8_HelpSambaShareDir);
    SetStr(pcStrHelpSambaWRE, pcEn_HelpSambaWRE, pcGB2312_HelpSambaWRE, pcUTF8_HelpSambaWRE);
    SetStr(pcStrHelpSambaStart, pcEn_HelpSambaStart, pcGB2312_HelpSambaStart,
           pcUTF8_HelpSambaStart);
    SetStr(pcStrHelpSambaDefault, pcEn_HelpSambaDefault, pcGB2312_HelpSambaDefault,
           pcUTF8_HelpSambaDefault);
    SetStr(pcStrHelpNetInterface, pcEn_HelpNetInterface, pcGB2312_HelpNetInterface,
           pcUTF8_HelpNetInterface);
    SetStr(pcStrHelpSysStateConfig, pcEn_HelpSysStateConfig, pcGB2312_HelpSysStateConfig,
           pcUTF8_HelpSysStateConfig);
    SetStr(pcStrConnectError, pcEn_ConnectError, pcGB2312_ConnectError, pcUTF8_ConnectError);
    SetStr(pcStrWelcomeInfo, pcEn_WelcomeInfo, pcGB2312_WelcomeInfo, pcUTF8_WelcomeInfo);
    SetStr(pcStrSwName, pcEn_SwName, pcGB2312_SwName, pcUTF8_SwName);
    SetStr(pcStrWait, pcEn_Wait, pcGB2312_Wait, pcUTF8_Wait);
    SetStr(pcStrExitEnquiry, pcEn_ExitEnquiry, pcGB2312_ExitEnquiry, pcUTF8_ExitEnquiry);
}
