// The agent's reported state: configuration (cConf_Inf), live server state
// (cSvrState) and their element records. The field order, types and array
// lengths are a layout shared with the command-client library and the agent;
// do not reorder or resize them.
#ifndef NV_LINK_STATE_RECORD_H
#define NV_LINK_STATE_RECORD_H

#include <map>
#include <string>
#include <vector>

typedef std::map<int, std::string> tmInt2Str;
typedef std::map<std::string, int> tmStr2Int;
typedef std::vector<std::string> tVecStr;
typedef std::string STD_STR;

enum EM_OS_RELEASE_VER {
    emOSNoSet = 0,
    emOSUnknown = 1,
    emOSUbuntu = 2,
    emOSCentos = 3,
    emOSFedora = 4,
    emOSSuse = 5,
    emOSRedhat = 6,
    emOSMax = 7
};

enum EM_LANG_CODE { emEn = 0, emChGb2312 = 1, emChUtf8 = 2 };

class cDiskVolume {
public:
    char szPart[256];
    int iCeil;
    int iFloor;
    int iItv;
};

class cDiskInfo {
public:
    char szPart[256];
    char szFS[256];
    int iSizeTotal;
    int iUsed;
    int iAvailable;
    char szMountOn[256];
};

class cTcpListen {
public:
    char szListenAddr[60];
    int iPid;
    char szProgramName[256];
};

class cBakForSize {
public:
    char szFileName[256];
    char szBakDir[256];
    int iKilobyte;
};

class cConf_Inf {
public:
    // The three network flags and five kernel limits are deliberately left
    // unset: they mean something only after the first check request.
    char chIcmpEchoIgnoreAll;
    char chTcpSyncookies;
    char chTcpTwReuse;
    unsigned long ulShmMax;
    unsigned long ulShmAll;
    unsigned long ulShmMni;
    unsigned long ulThreadMax;
    unsigned long ulFileMax;
    tVecStr vFileMonitList;
    char chFileMonitFlag;
    tVecStr vProcessMonitList;
    char chProcessMonitFlag;
    short shCpuCeil;
    short shCpuFloor;
    char chCpuMonitFlag;
    int iMemCeil;
    char chMemMonitFlag;
    std::vector<cDiskVolume> vDV;
    tVecStr vsDV;
    char chDVMonitFlag;
    std::vector<cBakForSize> vBakForSize;
    tVecStr vsBakForSize;
    char chBakForSizeFlag;
    char chVsftpdAnonEnable;
    char chVsftpdAnonUpload;
    char chVsftpdAnonMkdir;
    STD_STR sVsftpdAnonRoot;
    char chVsftpdLocalEnable;
    char chVsftpdWrite;
    char chVsftpdRunFlag;
    STD_STR sSambaSharePath;
    char chSambaShareWrite;
    char chSambaRunFlag;
    char chOSReleaseVersion;
    char chLangCode;
    int iSeqLinkRcInit;
    STD_STR sHostname;
    STD_STR sNowDate;
    STD_STR sNowTime;
    STD_STR sVersion;

    cConf_Inf();
};

class cSvrState {
public:
    std::vector<cTcpListen> vTcpListen;
    tVecStr vsTcpListenList;
    int iMemTotal;
    int iMemUse;
    int iMemFree;
    std::vector<cDiskInfo> vDiskInfo;
    tVecStr vsDiskInfoList;
    tVecStr vsIptablesInputList;
    char chIptablesInputPolicy;
    tVecStr vsIptablesOutputList;
    char chIptablesOutputPolicy;
    tVecStr vsIfconfigList;

    cSvrState();
};

#endif
