// The catalogue of set commands: number, payload kind and the page rebuilt
// on full success, one row per command, and the update functions over it.
#include "link/cmd_catalogue.h"

#include "content/content_data.h"
#include "link/payload_kinds.h"
#include "link/ui_interface.h"
#include "pages/menu_struct.h"
#include "shell/nv_log.h"

namespace {

// The command whose payload holds a password.
const int CMD_MODIFY_PASSWORD = 56;

struct ST_CMD_ENTRY {
    int iCmd;
    EN_PAYLOAD_KIND enKind;
    pfItemFuncType pfnPage;  // rebuilt after a command that answered 7
};

const ST_CMD_ENTRY g_astCatalogue[] = {
    {4, KIND_OPEN_CLOSE, UI_NetWorkConfig},
    {5, KIND_OPEN_CLOSE, UI_NetWorkConfig},
    {6, KIND_OPEN_CLOSE, UI_NetWorkConfig},
    {7, KIND_KERNEL_NUMBER, UI_ResourceConfig},
    {8, KIND_KERNEL_NUMBER, UI_ResourceConfig},
    {9, KIND_KERNEL_NUMBER, UI_ResourceConfig},
    {10, KIND_KERNEL_NUMBER, UI_ResourceConfig},
    {11, KIND_KERNEL_NUMBER, UI_ResourceConfig},
    {13, KIND_FREE_TEXT, UI_FileMonit},
    {14, KIND_OPEN_CLOSE, UI_FileMonit},
    {15, KIND_FREE_TEXT, UI_ProcessMonit},
    {16, KIND_OPEN_CLOSE, UI_ProcessMonit},
    {17, KIND_THRESHOLD, UI_CpuMonit},
    {18, KIND_THRESHOLD, UI_CpuMonit},
    {19, KIND_OPEN_CLOSE, UI_CpuMonit},
    {20, KIND_THRESHOLD, UI_MemoryMonit},
    {21, KIND_OPEN_CLOSE, UI_MemoryMonit},
    {23, KIND_FORM, UI_DiskMonit},
    {24, KIND_FORM, UI_DiskMonit},
    {25, KIND_CONFIRM_SEARCH, UI_DiskMonit},
    {26, KIND_FORM, UI_DiskMonit},
    {28, KIND_FORM, UI_BakMonit},
    {29, KIND_FORM, UI_BakMonit},
    {30, KIND_CONFIRM_SEARCH, UI_BakMonit},
    {31, KIND_FORM, UI_BakMonit},
    {32, KIND_FORM, UI_IpTableInput},
    {33, KIND_FORM, UI_IpTableInput},
    {34, KIND_FORM, UI_IpTableInput},
    {35, KIND_CONFIRM_SEARCH, UI_IpTableInput},
    {36, KIND_FORM, UI_IpTableOutput},
    {37, KIND_FORM, UI_IpTableOutput},
    {38, KIND_FORM, UI_IpTableOutput},
    {39, KIND_CONFIRM_SEARCH, UI_IpTableOutput},
    {40, KIND_YES_NO, UI_Vsftpd},
    {41, KIND_YES_NO, UI_Vsftpd},
    {42, KIND_YES_NO, UI_Vsftpd},
    {43, KIND_FREE_TEXT, UI_Vsftpd},
    {44, KIND_YES_NO, UI_Vsftpd},
    {45, KIND_YES_NO, UI_Vsftpd},
    {46, KIND_YES_NO, UI_Vsftpd},
    {47, KIND_CONFIRM_EXACT, UI_Vsftpd},
    {48, KIND_FREE_TEXT, UI_Samba},
    {49, KIND_YES_NO, UI_Samba},
    {50, KIND_YES_NO, UI_Samba},
    {51, KIND_CONFIRM_EXACT, UI_Samba},
    {52, KIND_FORM, UI_NetInterface},
    {53, KIND_FORM, UI_NetInterface},
    {54, KIND_FORM, UI_NetInterface},
    {55, KIND_FORM, UI_NetInterface},
    {56, KIND_FORM, UI_SysStateConfig},
    {57, KIND_FORM, UI_SysStateConfig},
    {58, KIND_FORM, UI_SysStateConfig},
    {59, KIND_FORM, UI_SysStateConfig},
};

const ST_CMD_ENTRY* FindEntry(int iCmd) {
    for (const ST_CMD_ENTRY& e : g_astCatalogue) {
        if (e.iCmd == iCmd)
            return &e;
    }
    return nullptr;
}

// Full success rebuilds the command's page from a fresh state; any other
// result leaves the page as it is.
int AfterSend(int iRet, pfItemFuncType pfnPage) {
    if (iRet != em_ActSuccAll)
        return iRet;
    if (pfnPage)
        pfnPage(nullptr);
    return em_ActSuccAll;
}

int RunCommand(int iCmd, char* pcSetting) {
    const ST_CMD_ENTRY* pstEntry = FindEntry(iCmd);
    if (pstEntry == nullptr)
        return -1;
    if (pstEntry->enKind == KIND_FORM) {
        int iCmdNo = iCmd;
        return AfterSend(NewLevelUpdateFunc(pcSetting, &iCmdNo), pstEntry->pfnPage);
    }
    ST_PAYLOAD stPayload = MakePayload(pstEntry->enKind, pcSetting);
    if (!stPayload.bSend)
        return stPayload.iRet;
    int iLen = static_cast<int>(stPayload.sData.size());
    return AfterSend(SetObjInfo(iCmd, iLen, &stPayload.sData[0]), pstEntry->pfnPage);
}

}  // namespace

#define NV_UPDATE_FUNC(name, cmd)          \
    int name(char* pcSetting, void* arg) { \
        (void)arg;                         \
        return RunCommand(cmd, pcSetting); \
    }

NV_UPDATE_FUNC(IcmpUpdateFunc, 4)
NV_UPDATE_FUNC(TcpSynUpdateFunc, 5)
NV_UPDATE_FUNC(TcpWaitReuseUpdateFunc, 6)
NV_UPDATE_FUNC(ShmMaxUpdateFunc, 7)
NV_UPDATE_FUNC(ShmAllUpdateFunc, 8)
NV_UPDATE_FUNC(ShmmniUpdateFunc, 9)
NV_UPDATE_FUNC(ThreadMaxUpdateFunc, 10)
NV_UPDATE_FUNC(FileMaxUpdateFunc, 11)
NV_UPDATE_FUNC(FileMonitListUpdateFunc, 13)
NV_UPDATE_FUNC(ProcMonitListUpdateFunc, 15)
NV_UPDATE_FUNC(ProcMonitToggleUpdateFunc, 16)
NV_UPDATE_FUNC(CpuMonitCeilUpdateFunc, 17)
NV_UPDATE_FUNC(CpuMonitFloorUpdateFunc, 18)
NV_UPDATE_FUNC(CpuMonitToggleUpdateFunc, 19)
NV_UPDATE_FUNC(MemMonitCeilUpdateFunc, 20)
NV_UPDATE_FUNC(MemMonitToggleUpdateFunc, 21)
NV_UPDATE_FUNC(AddDVMonitUpdateFunc, 23)
NV_UPDATE_FUNC(DeleteDVMonitUpdateFunc, 24)
NV_UPDATE_FUNC(ClearDVMonitUpdateFunc, 25)
NV_UPDATE_FUNC(DVMonitToggleUpdateFunc, 26)
NV_UPDATE_FUNC(AddBakMonitUpdateFunc, 28)
NV_UPDATE_FUNC(DeleteBakMonitUpdateFunc, 29)
NV_UPDATE_FUNC(ClearBakMonitUpdateFunc, 30)
NV_UPDATE_FUNC(BakMonitToggleUpdateFunc, 31)
NV_UPDATE_FUNC(InputPolicyUpdateFunc, 32)
NV_UPDATE_FUNC(InputAddUpdateFunc, 33)
NV_UPDATE_FUNC(InputDeleteUpdateFunc, 34)
NV_UPDATE_FUNC(InputClearUpdateFunc, 35)
NV_UPDATE_FUNC(OutputPolicyUpdateFunc, 36)
NV_UPDATE_FUNC(OutputAddUpdateFunc, 37)
NV_UPDATE_FUNC(OutputDeleteUpdateFunc, 38)
NV_UPDATE_FUNC(OutputClearUpdateFunc, 39)
NV_UPDATE_FUNC(AnonEnUpdateFunc, 40)
NV_UPDATE_FUNC(AnonUploadUpdateFunc, 41)
NV_UPDATE_FUNC(AnonMkDIrUpdateFunc, 42)
NV_UPDATE_FUNC(AnonRootPathUpdateFunc, 43)
NV_UPDATE_FUNC(LocalEnUpdateFunc, 44)
NV_UPDATE_FUNC(WrEnUpdateFunc, 45)
NV_UPDATE_FUNC(FtpFlagUpdateFunc, 46)
NV_UPDATE_FUNC(FtpDefaultUpdateFunc, 47)
NV_UPDATE_FUNC(SambaShPathUpdateFunc, 48)
NV_UPDATE_FUNC(SambaShWrUpdateFunc, 49)
NV_UPDATE_FUNC(SambaRunFlagUpdateFunc, 50)
NV_UPDATE_FUNC(SambaDefaultUpdateFunc, 51)
NV_UPDATE_FUNC(InputSetIfUpUpdateFunc, 53)
NV_UPDATE_FUNC(InputSetIpAutoUpdateFunc, 54)
NV_UPDATE_FUNC(InputSetIpManuallyUpdateFunc, 55)
NV_UPDATE_FUNC(ModifyPasswordUpdateFunc, 56)
NV_UPDATE_FUNC(ModifyHostNameUpdateFunc, 57)
NV_UPDATE_FUNC(ModifyDateUpdateFunc, 58)
NV_UPDATE_FUNC(ModifyTimeUpdateFunc, 59)

int FileMonitToggleUpdateFunc(char* pcSetting, void* arg) {
    (void)arg;
    NV_DBG("File Monit Flag:%s", pcSetting ? pcSetting : "");
    int iRet = RunCommand(14, pcSetting);
    if (iRet != em_ActSuccAll) {
        NV_DBG("File Monit Flag update error:%s", pg_Obj->mErrorNo2Des[iRet].c_str());
    }
    return iRet;
}

int InputSetIfDownUpdateFunc(char* pcSetting, void* arg) {
    (void)arg;
    NV_DBG("SetIfDown:%s:%d", pcSetting ? pcSetting : "", 52);
    return RunCommand(52, pcSetting);
}

int NewLevelUpdateFunc(char* pcSetting, void* arg) {
    if (pcSetting == nullptr || arg == nullptr)
        return -1;
    int iCmd = *static_cast<int*>(arg);
    if (iCmd < 4 || iCmd > 63)
        return -1;
    std::string sPayload = EncodeForm(pcSetting);
    int iLen = static_cast<int>(sPayload.size());
    // The password command's payload is logged as asterisks of its length.
    std::string sLogged =
        iCmd == CMD_MODIFY_PASSWORD ? std::string(sPayload.size(), '*') : sPayload;
    NV_DBG("new level send cmd:%d: Data:(%d):%s", iCmd, iLen, sLogged.c_str());
    return SetObjInfo(iCmd, iLen, &sPayload[0]);
}

int IPTNewLevelItemUpdateFunc(char* pcSetting, void* arg) {
    if (pcSetting == nullptr || arg == nullptr)
        return -1;
    static_cast<CONTENT_SECTION*>(arg)->strSecName = pcSetting;
    return NEED_NOT_SHOW_INFO;
}
