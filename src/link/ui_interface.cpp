// The console's service link: start-up of the link, the check request, one
// set request, and the text of a result code for the information line.
#include "link/ui_interface.h"

#include <fcntl.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cmdclient/cmd_client.h"
#include "shell/nv_log.h"
#include "strings/com_str.h"

static char gs_szOperateInfo[1024];

// A socket whose connect failed stays in fdConn; it is closed when the next
// request replaces it, so repeated failures do not leak descriptors.
static bool gs_bFailedConnOpen = false;

void ApplyLinkEnvironment() {
    const char* pcSock = getenv(NVUI_ENV_SOCKET);
    if (pcSock && *pcSock)
        pg_Obj->sSockName = pcSock;
    const char* pcLog = getenv(NVUI_ENV_LOG);
    snprintf(pg_Obj->szLogFileName, sizeof(pg_Obj->szLogFileName), "%s",
             pcLog && *pcLog ? pcLog : NVUI_DEFAULT_LOG);
}

int ConnectAgent(const char* pcCaller) {
    if (gs_bFailedConnOpen) {
        close(pg_Obj->fdConn);
        gs_bFailedConnOpen = false;
    }
    switch (ConnectAgentSocket(pg_Obj)) {
        case NV_CONNECT_OK:
            return 0;
        case NV_CONNECT_NO_SOCKET:
            NV_XERR_IN(pcCaller, "socket error");
            return -1;
        case NV_CONNECT_PATH_TOO_LONG:
            NV_XERR_IN(pcCaller,
                       "socket path of %zu bytes does not fit sun_path (at most %zu): refused",
                       pg_Obj->sSockName.size(), sizeof(sockaddr_un{}.sun_path) - 1);
            return ERR_CONNECT_FAILED;
        default:
            NV_XERR_IN(pcCaller, "connect error");
            gs_bFailedConnOpen = true;
            return ERR_CONNECT_FAILED;
    }
}

int UI_InitInterface(int* piLanguageCode, std::string& version) {
    if (piLanguageCode == NULL)
        return ERR_PARAMTER;
    pg_Obj->c_LOG_Level = 7;
    ApplyLinkEnvironment();
    int fd = open(pg_Obj->szLogFileName, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
        return ERR_OPEN_LOG_FAILED;
    close(fd);
    SetName2Idx(pg_Obj);
    SetErrMap(pg_Obj);
    int iRet = GetObjInfo();
    if (iRet != em_ActSuccAll && iRet != em_OK)
        return ERR_CONNECT_FAILED;
    switch (pg_Obj->objCif.chLangCode) {
        case emEn:
            *piLanguageCode = LAN_ENGLISH;
            break;
        case emChGb2312:
            *piLanguageCode = LAN_CHINESE_GB2312;
            break;
        case emChUtf8:
            *piLanguageCode = LAN_CHINESE_UTF8;
            break;
        default:
            return ERR_LANG_CODE_INVALID;
    }
    if (pg_Obj->objCif.sVersion.empty())
        return ERR_VERSION_GET_FAILED;
    version = pg_Obj->objCif.sVersion;
    return 0;
}

int GetObjInfo() {
    int iRet = ConnectAgent(__func__);
    if (iRet != 0)
        return iRet;
    pg_Obj->sCmdName = "check";
    pg_Obj->shCmdNo = static_cast<short>(pg_Obj->mName2Idx["check"]);
    pg_Obj->szCmdBuff[0] = '\0';
    pg_Obj->iLenToSend = 6;
    return RequestCmd(pg_Obj);
}

// Set requests sent so far; the control bars compare it around an update
// function to learn whether the user waited for the agent.
static unsigned long s_ulSetRequests = 0;

unsigned long SetRequestCount() {
    return s_ulSetRequests;
}

int SetObjInfo(int iCmdIdx, int iDataLen, char* pcData) {
    if (!(iCmdIdx > 3 && iCmdIdx < 64))
        return -1;
    ++s_ulSetRequests;
    int iRet = ConnectAgent(__func__);
    if (iRet != 0)
        return iRet;
    pg_Obj->shCmdNo = static_cast<short>(iCmdIdx);
    pg_Obj->iLenToSend = iDataLen + 6;
    if (iDataLen > 0) {
        int iCopy = iDataLen + 1 > NV_CMD_BUFF_LEN ? NV_CMD_BUFF_LEN - 1 : iDataLen;
        strncpy(pg_Obj->szCmdBuff, pcData, static_cast<size_t>(iCopy));
        pg_Obj->szCmdBuff[iCopy] = '\0';
    }
    return RequestCmd(pg_Obj);
}

const char* GetOperatingInfoStr(int iInfoIndex) {
    if (iInfoIndex < UI_ERR_CODE_MIN) {
        memset(gs_szOperateInfo, 0, sizeof(gs_szOperateInfo));
        snprintf(gs_szOperateInfo, sizeof(gs_szOperateInfo), "%s%s",
                 pg_Obj->mErrorNo2Des[iInfoIndex].c_str(), pg_Obj->sReqRetInfo.c_str());
        return gs_szOperateInfo;
    }
    if (iInfoIndex == ERR_CONNECT_FAILED)
        return pcStrConnectError[LAN_ENGLISH];
    return NULL;
}
