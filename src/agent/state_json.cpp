// Field tables of the reported-state records and the JSON conversion of the
// whole state built on them.
#include "agent/state_json.h"

#include <algorithm>

namespace nvagent {

namespace {

const FieldTable<cDiskVolume>& DiskVolumeFields() {
    static const FieldTable<cDiskVolume> t = {
        CharArray("szPart", &cDiskVolume::szPart),
        Whole("iCeil", &cDiskVolume::iCeil),
        Whole("iFloor", &cDiskVolume::iFloor),
        Whole("iItv", &cDiskVolume::iItv),
    };
    return t;
}

const FieldTable<cBakForSize>& BakForSizeFields() {
    static const FieldTable<cBakForSize> t = {
        CharArray("szFileName", &cBakForSize::szFileName),
        CharArray("szBakDir", &cBakForSize::szBakDir),
        Whole("iKilobyte", &cBakForSize::iKilobyte),
    };
    return t;
}

const FieldTable<cTcpListen>& TcpListenFields() {
    static const FieldTable<cTcpListen> t = {
        CharArray("szListenAddr", &cTcpListen::szListenAddr),
        Whole("iPid", &cTcpListen::iPid),
        CharArray("szProgramName", &cTcpListen::szProgramName),
    };
    return t;
}

const FieldTable<cDiskInfo>& DiskInfoFields() {
    static const FieldTable<cDiskInfo> t = {
        CharArray("szPart", &cDiskInfo::szPart),     CharArray("szFS", &cDiskInfo::szFS),
        Whole("iSizeTotal", &cDiskInfo::iSizeTotal), Whole("iUsed", &cDiskInfo::iUsed),
        Whole("iAvailable", &cDiskInfo::iAvailable), CharArray("szMountOn", &cDiskInfo::szMountOn),
    };
    return t;
}

using C = cConf_Inf;
using S = cSvrState;

const FieldTable<C>& ConfFields() {
    static const FieldTable<C> t = {
        Flag("chIcmpEchoIgnoreAll", &C::chIcmpEchoIgnoreAll),
        Flag("chTcpSyncookies", &C::chTcpSyncookies),
        Flag("chTcpTwReuse", &C::chTcpTwReuse),
        Whole("ulShmMax", &C::ulShmMax),
        Whole("ulShmAll", &C::ulShmAll),
        Whole("ulShmMni", &C::ulShmMni),
        Whole("ulThreadMax", &C::ulThreadMax),
        Whole("ulFileMax", &C::ulFileMax),
        TextList("vFileMonitList", &C::vFileMonitList),
        Flag("chFileMonitFlag", &C::chFileMonitFlag),
        TextList("vProcessMonitList", &C::vProcessMonitList),
        Flag("chProcessMonitFlag", &C::chProcessMonitFlag),
        Whole("shCpuCeil", &C::shCpuCeil),
        Whole("shCpuFloor", &C::shCpuFloor),
        Flag("chCpuMonitFlag", &C::chCpuMonitFlag),
        Whole("iMemCeil", &C::iMemCeil),
        Flag("chMemMonitFlag", &C::chMemMonitFlag),
        RecordList("vDV", &C::vDV, DiskVolumeFields),
        TextList("vsDV", &C::vsDV),
        Flag("chDVMonitFlag", &C::chDVMonitFlag),
        RecordList("vBakForSize", &C::vBakForSize, BakForSizeFields),
        TextList("vsBakForSize", &C::vsBakForSize),
        Flag("chBakForSizeFlag", &C::chBakForSizeFlag),
        Flag("chVsftpdAnonEnable", &C::chVsftpdAnonEnable),
        Flag("chVsftpdAnonUpload", &C::chVsftpdAnonUpload),
        Flag("chVsftpdAnonMkdir", &C::chVsftpdAnonMkdir),
        Text("sVsftpdAnonRoot", &C::sVsftpdAnonRoot),
        Flag("chVsftpdLocalEnable", &C::chVsftpdLocalEnable),
        Flag("chVsftpdWrite", &C::chVsftpdWrite),
        Flag("chVsftpdRunFlag", &C::chVsftpdRunFlag),
        Text("sSambaSharePath", &C::sSambaSharePath),
        Flag("chSambaShareWrite", &C::chSambaShareWrite),
        Flag("chSambaRunFlag", &C::chSambaRunFlag),
        Whole("chOSReleaseVersion", &C::chOSReleaseVersion),
        Whole("chLangCode", &C::chLangCode),
        Whole("iSeqLinkRcInit", &C::iSeqLinkRcInit),
        Text("sHostname", &C::sHostname),
        Text("sNowDate", &C::sNowDate),
        Text("sNowTime", &C::sNowTime),
        Text("sVersion", &C::sVersion),
    };
    return t;
}

const FieldTable<S>& SvrFields() {
    static const FieldTable<S> t = {
        RecordList("vTcpListen", &S::vTcpListen, TcpListenFields),
        TextList("vsTcpListenList", &S::vsTcpListenList),
        Whole("iMemTotal", &S::iMemTotal),
        Whole("iMemUse", &S::iMemUse),
        Whole("iMemFree", &S::iMemFree),
        RecordList("vDiskInfo", &S::vDiskInfo, DiskInfoFields),
        TextList("vsDiskInfoList", &S::vsDiskInfoList),
        TextList("vsIptablesInputList", &S::vsIptablesInputList),
        Flag("chIptablesInputPolicy", &S::chIptablesInputPolicy),
        TextList("vsIptablesOutputList", &S::vsIptablesOutputList),
        Flag("chIptablesOutputPolicy", &S::chIptablesOutputPolicy),
        TextList("vsIfconfigList", &S::vsIfconfigList),
    };
    return t;
}

}  // namespace

cConf_Inf DefaultConf() {
    cConf_Inf c;
    c.chIcmpEchoIgnoreAll = '\0';
    c.chTcpSyncookies = '\0';
    c.chTcpTwReuse = '\0';
    c.ulShmMax = 0;
    c.ulShmAll = 0;
    c.ulShmMni = 0;
    c.ulThreadMax = 0;
    c.ulFileMax = 0;
    return c;
}

Json StateToJson(const cConf_Inf& c, const cSvrState& s) {
    Json j = ObjectToJson(c, ConfFields());
    for (const FieldCodec<S>& f : SvrFields())
        f.put(s, j[f.key]);
    return j;
}

bool StateFromJson(const Json& j, cConf_Inf& c, cSvrState& s, std::string& err,
                   const std::vector<std::string>& extraKeys) {
    if (!j.is_object()) {
        err = "the state must be a JSON object";
        return false;
    }
    cConf_Inf nc = DefaultConf();
    cSvrState ns;
    for (auto it = j.begin(); it != j.end(); ++it) {
        const std::string& key = it.key();
        if (std::find(extraKeys.begin(), extraKeys.end(), key) != extraKeys.end())
            continue;
        bool ok;
        if (const FieldCodec<C>* f = FindField(ConfFields(), key)) {
            ok = f->get(it.value(), nc, key, err);
        } else if (const FieldCodec<S>* g = FindField(SvrFields(), key)) {
            ok = g->get(it.value(), ns, key, err);
        } else {
            err = "unknown key \"" + key + "\"";
            ok = false;
        }
        if (!ok)
            return false;
    }
    c = std::move(nc);
    s = std::move(ns);
    return true;
}

}  // namespace nvagent
