// The shared state record cGlobalVal: the one context the console shares with
// the command-client library (log settings, request area, maps, the library's
// work buffers and the last reported state). Its single instance is g_Obj,
// always reached through pg_Obj. Field order and types are a shared layout.
#ifndef NV_LINK_GLOBAL_VAL_H
#define NV_LINK_GLOBAL_VAL_H

#include <ctime>

#include "state_record.h"

class cGlobalVal;
typedef int (*pfActFun)(cGlobalVal*);
typedef int (*pfGenFun)(cGlobalVal*);

// Sizes the rest of the system relies on.
enum {
    NV_LOG_BUFF_LEN = 11024,
    NV_CMD_BUFF_LEN = 101024,
    NV_HEX_BUFF_LEN = 600000,
    NV_PATH_LEN = 256,
    NV_TIME_STR_LEN = 32,
    NV_FUN_GROUPS = 7,
    NV_FUN_PER_GROUP = 1024
};

class cGlobalVal {
public:
    char c_LOG_Level;
    bool bStdout;
    char szLogFileName[NV_PATH_LEN];
    int fdLogFile;
    char szConfFileName[NV_PATH_LEN];
    char szLogBuff[NV_LOG_BUFF_LEN];
    pfActFun aActFun[NV_FUN_GROUPS][NV_FUN_PER_GROUP];
    pfGenFun aGenFun[NV_FUN_GROUPS][NV_FUN_PER_GROUP];
    char szSendBuff[NV_CMD_BUFF_LEN];
    char szRecvBuff[NV_CMD_BUFF_LEN];
    int iLenToSend;
    int iLenRecved;
    int fdConn;
    STD_STR sSockName;
    tmInt2Str mErrorNo2Des;
    tmStr2Int mName2Idx;
    STD_STR sCmdName;
    char szCmdBuff[NV_CMD_BUFF_LEN];
    STD_STR sDataDir;
    char szHexBuf[NV_HEX_BUFF_LEN];
    time_t CurTimeSec;
    char szCurTimeStr[NV_TIME_STR_LEN];
    char szExeCallResBuff[NV_CMD_BUFF_LEN];
    STD_STR sReqRetInfo;
    cConf_Inf objCif;
    cSvrState objSS;
    int iRet;
    short shCmdNo;
    bool bThreadSwitchFileMonit;
    bool bThreadSwitchProcessMonit;
    bool bThreadSwitchCpuMonit;
    bool bThreadSwitchMemMonit;
    bool bThreadSwitchDVMonit;
    bool bThreadSwitchBakForSize;
    STD_STR sVsftpdConfFile;

    // Leaves the log fields and every buffer as static storage left them.
    cGlobalVal();
    ~cGlobalVal() {}

private:
    cGlobalVal(const cGlobalVal&);
    cGlobalVal& operator=(const cGlobalVal&);
};

extern cGlobalVal g_Obj;
extern cGlobalVal* pg_Obj;

#endif
