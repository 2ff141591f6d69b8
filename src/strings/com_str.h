// The combined text catalogue: for each text identifier Xxx an array
// pcStrXxx of three text pointers indexed by EN_LANGUAGE (English, Chinese in
// GB2312, Chinese in UTF-8), read as pcStrXxx[iLanIdx]; the language index; the
// prompt and help index tables; InitComStr, which assembles the catalogue.
#ifndef NV_STRINGS_COM_STR_H
#define NV_STRINGS_COM_STR_H

#include "strings/help_id.h"
#include "strings/prompt_id.h"

enum EN_LANGUAGE { LAN_ENGLISH = 0, LAN_CHINESE_GB2312 = 1, LAN_CHINESE_UTF8 = 2, LAN_MAX = 3 };

// The current language; LAN_MAX until the service link sets it from the
// agent's answer at start-up. It does not change while the screen runs.
extern int iLanIdx;

// Fills every pcStrXxx array from the three language catalogues, after letting
// each catalogue point its shared help texts at the texts they share. Until it
// has run, the arrays hold null pointers, except the constant ones below and
// pcStrConnectError. The console's main calls it first thing at start-up, and
// so must nvcmd and every test that reads the catalogue. Calling it again
// changes nothing. Not thread-safe: call it before any other thread starts.
void InitComStr();

// Constant data, not taken from the language catalogues. pcStrMainMenu has no
// UTF-8 text on purpose (null): the root menu's label is never shown.
extern const char* pcStrMainMenu[LAN_MAX];
// Input mask of an address field in the firewall rule form.
extern const char* pcStrDefaultIP[LAN_MAX];
// Input mask of a port field in the firewall rule form.
extern const char* pcStrDefaultPort[LAN_MAX];
// Four blanks: the text of an empty value.
extern const char* pcStrNullInfo[LAN_MAX];

// Initialised when the program is loaded, so that the service link can use it
// before InitComStr has run.
extern const char* pcStrConnectError[LAN_MAX];

extern const char* pcStrSysConfig[LAN_MAX];
extern const char* pcStrSysOptimize[LAN_MAX];
extern const char* pcStrNetOptimize[LAN_MAX];
extern const char* pcStrPingConfig[LAN_MAX];
extern const char* pcStrTcpSynConfig[LAN_MAX];
extern const char* pcStrTcpWaitTimeReuse[LAN_MAX];
extern const char* pcStrIp[LAN_MAX];
extern const char* pcStrMask[LAN_MAX];
extern const char* pcStrDns[LAN_MAX];
extern const char* pcStrGateWay[LAN_MAX];
extern const char* pcStrDNS1[LAN_MAX];
extern const char* pcStrDNS2[LAN_MAX];
extern const char* pcStrResOptimize[LAN_MAX];
extern const char* pcStrSysStateConfig[LAN_MAX];
extern const char* pcStrHostName[LAN_MAX];
extern const char* pcStrSysDate[LAN_MAX];
extern const char* pcStrSysTime[LAN_MAX];
extern const char* pcStrUserName[LAN_MAX];
extern const char* pcStrNewPassword[LAN_MAX];
extern const char* pcStrPwConfirm[LAN_MAX];
extern const char* pcStrYear[LAN_MAX];
extern const char* pcStrMonth[LAN_MAX];
extern const char* pcStrDay[LAN_MAX];
extern const char* pcStrHour[LAN_MAX];
extern const char* pcStrMinite[LAN_MAX];
extern const char* pcStrSecond[LAN_MAX];
extern const char* pcStrShmmax[LAN_MAX];
extern const char* pcStrShmall[LAN_MAX];
extern const char* pcStrShmmni[LAN_MAX];
extern const char* pcStrThreadMax[LAN_MAX];
extern const char* pcStrFileMax[LAN_MAX];
extern const char* pcStrSysMonit[LAN_MAX];
extern const char* pcStrFileMonit[LAN_MAX];
extern const char* pcStrFileList[LAN_MAX];
extern const char* pcStrScanList[LAN_MAX];
extern const char* pcStrMonitToggle[LAN_MAX];
extern const char* pcStrProcMonit[LAN_MAX];
extern const char* pcStrProcList[LAN_MAX];
extern const char* pcStrCpuMonit[LAN_MAX];
extern const char* pcStrCpuCeil[LAN_MAX];
extern const char* pcStrCpuFloor[LAN_MAX];
extern const char* pcStrMemoryMonit[LAN_MAX];
extern const char* pcStrMemUseCeil[LAN_MAX];
extern const char* pcStrDiskMonit[LAN_MAX];
extern const char* pcStrDiskMonitList[LAN_MAX];
extern const char* pcStrPartition[LAN_MAX];
extern const char* pcStrCeil[LAN_MAX];
extern const char* pcStrFloor[LAN_MAX];
extern const char* pcStrInterval[LAN_MAX];
extern const char* pcStrBakMonit[LAN_MAX];
extern const char* pcStrBakMonitList[LAN_MAX];
extern const char* pcStrFile[LAN_MAX];
extern const char* pcStrBakDir[LAN_MAX];
extern const char* pcStrBakSize[LAN_MAX];
extern const char* pcStrSysState[LAN_MAX];
extern const char* pcStrTcpPortState[LAN_MAX];
extern const char* pcStrLocalIp[LAN_MAX];
extern const char* pcStrLocalPort[LAN_MAX];
extern const char* pcStrPid[LAN_MAX];
extern const char* pcStrProgName[LAN_MAX];
extern const char* pcStrMemoryState[LAN_MAX];
extern const char* pcStrMemoryUse[LAN_MAX];
extern const char* pcStrMemoryFree[LAN_MAX];
extern const char* pcStrAppConfig[LAN_MAX];
extern const char* pcStrIpTable[LAN_MAX];
extern const char* pcStrInput[LAN_MAX];
extern const char* pcStrOutput[LAN_MAX];
extern const char* pcStrVsftpd[LAN_MAX];
extern const char* pcStrSamba[LAN_MAX];
extern const char* pcStrNetInterface[LAN_MAX];
extern const char* pcStrPromptMenu[LAN_MAX];
extern const char* pcStrPromptContent[LAN_MAX];
extern const char* pcStrPromptContentNoModify[LAN_MAX];
extern const char* pcStrPromptContentList[LAN_MAX];
extern const char* pcStrPromptContentNewLevel[LAN_MAX];
extern const char* pcStrPromptInput[LAN_MAX];
extern const char* pcStrPromptChoose[LAN_MAX];
extern const char* pcStrPromptList[LAN_MAX];
extern const char* pcStrPromptShortcutKeyToggle[LAN_MAX];
extern const char* pcStrPromptShortcutKeyPolicy[LAN_MAX];
extern const char* pcStrPromptHelp[LAN_MAX];
extern const char* pcStrPromptNetInferface[LAN_MAX];
extern const char* pcStrPromptSysStateConfig[LAN_MAX];
extern const char* pcStrOpen[LAN_MAX];
extern const char* pcStrClose[LAN_MAX];
extern const char* pcStrYes[LAN_MAX];
extern const char* pcStrNo[LAN_MAX];
extern const char* pcStrAnonymEnable[LAN_MAX];
extern const char* pcStrAnonymUpload[LAN_MAX];
extern const char* pcStrAnonymMkdir[LAN_MAX];
extern const char* pcStrAnonymRootPath[LAN_MAX];
extern const char* pcStrLocalUsrEnable[LAN_MAX];
extern const char* pcStrWriteEnable[LAN_MAX];
extern const char* pcStrFtpStart[LAN_MAX];
extern const char* pcStrFtpDefault[LAN_MAX];
extern const char* pcStrShDirPath[LAN_MAX];
extern const char* pcStrShWrEn[LAN_MAX];
extern const char* pcStrSambaStart[LAN_MAX];
extern const char* pcStrSambaDefault[LAN_MAX];
extern const char* pcStrPriority[LAN_MAX];
extern const char* pcStrProtocol[LAN_MAX];
extern const char* pcStrSrcIp[LAN_MAX];
extern const char* pcStrSrcPort[LAN_MAX];
extern const char* pcStrDesIp[LAN_MAX];
extern const char* pcStrDesPort[LAN_MAX];
extern const char* pcStrAction[LAN_MAX];
extern const char* pcStrHighest[LAN_MAX];
extern const char* pcStrLowest[LAN_MAX];
extern const char* pcStrTcp[LAN_MAX];
extern const char* pcStrUdp[LAN_MAX];
extern const char* pcStrAccept[LAN_MAX];
extern const char* pcStrDrop[LAN_MAX];
extern const char* pcStrReject[LAN_MAX];
extern const char* pcStrIfName[LAN_MAX];
extern const char* pcStrIfNameReminder[LAN_MAX];
extern const char* pcStrIpReminder[LAN_MAX];
extern const char* pcStrMaskReminder[LAN_MAX];
extern const char* pcStrGatewayReminder[LAN_MAX];
extern const char* pcStrDelInfo[LAN_MAX];
extern const char* pcStrDvClearInfo[LAN_MAX];
extern const char* pcStrBackupClearInfo[LAN_MAX];
extern const char* pcStrInputClearInfo[LAN_MAX];
extern const char* pcStrOutputClearInfo[LAN_MAX];
extern const char* pcStrModifyPolicy[LAN_MAX];
extern const char* pcStrHelpIcmpIgnore[LAN_MAX];
extern const char* pcStrHelpTcpSynCookies[LAN_MAX];
extern const char* pcStrHelpTcpWaitTimeReuse[LAN_MAX];
extern const char* pcStrHelpShmax[LAN_MAX];
extern const char* pcStrHelpShAll[LAN_MAX];
extern const char* pcStrHelpShmmni[LAN_MAX];
extern const char* pcStrHelpThreadMax[LAN_MAX];
extern const char* pcStrHelpFileMax[LAN_MAX];
extern const char* pcStrHelpFileMonitFlag[LAN_MAX];
extern const char* pcStrHelpFileMonitList[LAN_MAX];
extern const char* pcStrHelpProcessMonitFlag[LAN_MAX];
extern const char* pcStrHelpProcessMonitList[LAN_MAX];
extern const char* pcStrHelpCpuMonitFlag[LAN_MAX];
extern const char* pcStrHelpCpuCeil[LAN_MAX];
extern const char* pcStrHelpCpuFloor[LAN_MAX];
extern const char* pcStrHelpMemMonitFlag[LAN_MAX];
extern const char* pcStrHelpMemCeil[LAN_MAX];
extern const char* pcStrHelpDvMonit[LAN_MAX];
extern const char* pcStrHelpBakFile[LAN_MAX];
extern const char* pcStrHelpTcpListenPort[LAN_MAX];
extern const char* pcStrHelpMemUse[LAN_MAX];
extern const char* pcStrHelpMemFree[LAN_MAX];
extern const char* pcStrHelpInput[LAN_MAX];
extern const char* pcStrHelpOutput[LAN_MAX];
extern const char* pcStrHelpAnonEnable[LAN_MAX];
extern const char* pcStrHelpAnonUpload[LAN_MAX];
extern const char* pcStrHelpAnonMkdir[LAN_MAX];
extern const char* pcStrHelpAnonRootPath[LAN_MAX];
extern const char* pcStrHelpLocalEnable[LAN_MAX];
extern const char* pcStrHelpWrEnable[LAN_MAX];
extern const char* pcStrHelpFtpStart[LAN_MAX];
extern const char* pcStrHelpFtpDefault[LAN_MAX];
extern const char* pcStrHelpSambaShareDir[LAN_MAX];
extern const char* pcStrHelpSambaWRE[LAN_MAX];
extern const char* pcStrHelpSambaStart[LAN_MAX];
extern const char* pcStrHelpSambaDefault[LAN_MAX];
extern const char* pcStrHelpNetInterface[LAN_MAX];
extern const char* pcStrHelpSysStateConfig[LAN_MAX];
extern const char* pcStrWelcomeInfo[LAN_MAX];
extern const char* pcStrSwName[LAN_MAX];
extern const char* pcStrWait[LAN_MAX];
extern const char* pcStrExitEnquiry[LAN_MAX];

// The prompt texts by EN_PROMPT: pcStrPrompt[id][iLanIdx].
extern const char** const pcStrPrompt[PROMPT_MAX];
// The help texts by EN_HELP_INFO: pcStrHelp[id][iLanIdx].
extern const char** const pcStrHelp[EN_HELP_MAX];

#endif
