// The one list of the reported-state records' fields: each record's fields,
// in declaration order, with their names. The wire encoder and decoder, the
// decoder's smallest element sizes, the JSON state codec and nvcmd's printing
// all walk these lists, so a field added here reaches every one of them.
//
// A walk calls one visitor member per field with the field's name and a
// pointer to the member:
//   Flag(name, char R::*)        a one-character flag ("0"/"1" or a policy)
//   Num(name, T R::*)            a number: char code, short, int, unsigned long
//   Text(name, std::string R::*) or Text(name, char (R::*)[N])
//   List(name, std::vector<E> R::*)  a list of texts or of element records
#ifndef NV_WIRE_RECORD_FIELDS_H
#define NV_WIRE_RECORD_FIELDS_H

#include "link/state_record.h"

namespace nvwire {

template <class Rec>
struct RecordFields;

template <>
struct RecordFields<cDiskVolume> {
    template <class V>
    static void Walk(V& v) {
        using R = cDiskVolume;
        v.Text("szPart", &R::szPart);
        v.Num("iCeil", &R::iCeil);
        v.Num("iFloor", &R::iFloor);
        v.Num("iItv", &R::iItv);
    }
};

template <>
struct RecordFields<cBakForSize> {
    template <class V>
    static void Walk(V& v) {
        using R = cBakForSize;
        v.Text("szFileName", &R::szFileName);
        v.Text("szBakDir", &R::szBakDir);
        v.Num("iKilobyte", &R::iKilobyte);
    }
};

template <>
struct RecordFields<cTcpListen> {
    template <class V>
    static void Walk(V& v) {
        using R = cTcpListen;
        v.Text("szListenAddr", &R::szListenAddr);
        v.Num("iPid", &R::iPid);
        v.Text("szProgramName", &R::szProgramName);
    }
};

template <>
struct RecordFields<cDiskInfo> {
    template <class V>
    static void Walk(V& v) {
        using R = cDiskInfo;
        v.Text("szPart", &R::szPart);
        v.Text("szFS", &R::szFS);
        v.Num("iSizeTotal", &R::iSizeTotal);
        v.Num("iUsed", &R::iUsed);
        v.Num("iAvailable", &R::iAvailable);
        v.Text("szMountOn", &R::szMountOn);
    }
};

template <>
struct RecordFields<cConf_Inf> {
    template <class V>
    static void Walk(V& v) {
        using R = cConf_Inf;
        v.Flag("chIcmpEchoIgnoreAll", &R::chIcmpEchoIgnoreAll);
        v.Flag("chTcpSyncookies", &R::chTcpSyncookies);
        v.Flag("chTcpTwReuse", &R::chTcpTwReuse);
        v.Num("ulShmMax", &R::ulShmMax);
        v.Num("ulShmAll", &R::ulShmAll);
        v.Num("ulShmMni", &R::ulShmMni);
        v.Num("ulThreadMax", &R::ulThreadMax);
        v.Num("ulFileMax", &R::ulFileMax);
        v.List("vFileMonitList", &R::vFileMonitList);
        v.Flag("chFileMonitFlag", &R::chFileMonitFlag);
        v.List("vProcessMonitList", &R::vProcessMonitList);
        v.Flag("chProcessMonitFlag", &R::chProcessMonitFlag);
        v.Num("shCpuCeil", &R::shCpuCeil);
        v.Num("shCpuFloor", &R::shCpuFloor);
        v.Flag("chCpuMonitFlag", &R::chCpuMonitFlag);
        v.Num("iMemCeil", &R::iMemCeil);
        v.Flag("chMemMonitFlag", &R::chMemMonitFlag);
        v.List("vDV", &R::vDV);
        v.List("vsDV", &R::vsDV);
        v.Flag("chDVMonitFlag", &R::chDVMonitFlag);
        v.List("vBakForSize", &R::vBakForSize);
        v.List("vsBakForSize", &R::vsBakForSize);
        v.Flag("chBakForSizeFlag", &R::chBakForSizeFlag);
        v.Flag("chVsftpdAnonEnable", &R::chVsftpdAnonEnable);
        v.Flag("chVsftpdAnonUpload", &R::chVsftpdAnonUpload);
        v.Flag("chVsftpdAnonMkdir", &R::chVsftpdAnonMkdir);
        v.Text("sVsftpdAnonRoot", &R::sVsftpdAnonRoot);
        v.Flag("chVsftpdLocalEnable", &R::chVsftpdLocalEnable);
        v.Flag("chVsftpdWrite", &R::chVsftpdWrite);
        v.Flag("chVsftpdRunFlag", &R::chVsftpdRunFlag);
        v.Text("sSambaSharePath", &R::sSambaSharePath);
        v.Flag("chSambaShareWrite", &R::chSambaShareWrite);
        v.Flag("chSambaRunFlag", &R::chSambaRunFlag);
        v.Num("chOSReleaseVersion", &R::chOSReleaseVersion);
        v.Num("chLangCode", &R::chLangCode);
        v.Num("iSeqLinkRcInit", &R::iSeqLinkRcInit);
        v.Text("sHostname", &R::sHostname);
        v.Text("sNowDate", &R::sNowDate);
        v.Text("sNowTime", &R::sNowTime);
        v.Text("sVersion", &R::sVersion);
    }
};

template <>
struct RecordFields<cSvrState> {
    template <class V>
    static void Walk(V& v) {
        using R = cSvrState;
        v.List("vTcpListen", &R::vTcpListen);
        v.List("vsTcpListenList", &R::vsTcpListenList);
        v.Num("iMemTotal", &R::iMemTotal);
        v.Num("iMemUse", &R::iMemUse);
        v.Num("iMemFree", &R::iMemFree);
        v.List("vDiskInfo", &R::vDiskInfo);
        v.List("vsDiskInfoList", &R::vsDiskInfoList);
        v.List("vsIptablesInputList", &R::vsIptablesInputList);
        v.Flag("chIptablesInputPolicy", &R::chIptablesInputPolicy);
        v.List("vsIptablesOutputList", &R::vsIptablesOutputList);
        v.Flag("chIptablesOutputPolicy", &R::chIptablesOutputPolicy);
        v.List("vsIfconfigList", &R::vsIfconfigList);
    }
};

}  // namespace nvwire

#endif
