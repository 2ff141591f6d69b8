// Result codes: EM_RET of the service link (produced by the command-client
// library and the agent) and the console's own EN_ERROR_CODE, which lie above
// every EM_RET value.
#ifndef NV_LINK_RESULT_CODES_H
#define NV_LINK_RESULT_CODES_H

enum EM_RET {
    em_Start = -99,
    em_AddCharBuffNotEnough = -98,
    em_AddShortBuffNotEnough = -97,
    em_AddIntBuffNotEnough = -96,
    em_AddStrBuffNotEnough = -95,
    em_GetCharReadBuffNotEnough = -94,
    em_GetShortReadBuffNotEnough = -93,
    em_GetIntReadBuffNotEnough = -92,
    em_GetStrReadBuffNotEnough = -91,
    em_GetStrWriteBuffNotEnough = -90,
    em_GetDiskInfoSscanfError = -89,
    em_GetMemUseError = -88,
    em_GetMemFreeError = -87,
    em_GetShmMaxError = -86,
    em_GetShmAllError = -85,
    em_GetStrFromResPkgStrEndOutOfRange = -84,
    em_GetVecStrFromReqPkgReadBuffNotEnough = -83,
    em_GetVecStrFromReqPkgStrlenNotMatch = -82,
    em_ParsePkgPkglenNotMatch = -81,
    em_ParsePkgCmdNoOutOfRange = -80,
    em_ParsePkgActFunRetError = -79,
    em_ComSendReqPkgRecvFinUnexpect = -78,
    em_ComSendReqPkgLenNotMatch = -77,
    em_IptalbesReadError = -76,
    em_FileNotExist = -75,
    em_Error = -1,
    em_OK = 0,
    em_ActPostCmdBuffFmtError = 1,
    em_ActPostValueNotValid = 2,
    em_ActSuccPart = 3,
    em_ActFail = 4,
    em_ActNotPrepare = 5,
    em_ActNeedNoSet = 6,
    em_ActSuccAll = 7,
    em_ItemSet = 8,
    em_ItemNoSet = 9,
    em_ItemUnknown = 10,
    em_CmdTooLong = 11
};

enum EN_ERROR_CODE {
    UI_ERR_CODE_MIN = 0xFF0000,
    ERR_CONNECT_FAILED = 0xFF0001,
    NEED_NOT_SHOW_INFO = 0xFF0002,
    ERR_APPLY_MEM_FAILED = 0xFF0003,
    ERR_OPEN_LOG_FAILED = 0xFF0004,
    ERR_PARAMTER = 0xFF0005,
    ERR_LANG_CODE_INVALID = 0xFF0006,
    ERR_VERSION_GET_FAILED = 0xFF0007,
    ERR_REFRESH_THREAD_FAILED = 0xFF0008,
    UI_ERR_CODE_MAX = 0xFF0009
};

#endif
