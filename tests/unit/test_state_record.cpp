// The shared state record: defaults, field order, sizes and types.
#include <gtest/gtest.h>

#include <type_traits>

#include "link/global_val.h"

namespace {

template <typename A, typename B>
bool Before(const A& a, const B& b) {
    return reinterpret_cast<const char*>(&a) < reinterpret_cast<const char*>(&b);
}

TEST(StateRecord, GlobalDefaults) {
    EXPECT_EQ(pg_Obj, &g_Obj);
    EXPECT_EQ(g_Obj.sSockName, "/dev/nvsock");
    EXPECT_EQ(g_Obj.sDataDir, "/etc/norvane");
    EXPECT_EQ(g_Obj.sReqRetInfo, "");
    EXPECT_EQ(g_Obj.sVsftpdConfFile, "");
    EXPECT_FALSE(g_Obj.bStdout);
    EXPECT_FALSE(g_Obj.bThreadSwitchFileMonit);
    EXPECT_FALSE(g_Obj.bThreadSwitchProcessMonit);
    EXPECT_FALSE(g_Obj.bThreadSwitchCpuMonit);
    EXPECT_FALSE(g_Obj.bThreadSwitchMemMonit);
    EXPECT_FALSE(g_Obj.bThreadSwitchDVMonit);
    EXPECT_FALSE(g_Obj.bThreadSwitchBakForSize);
    // Left untouched by the constructor: zero in static storage until start-up.
    EXPECT_EQ(g_Obj.c_LOG_Level, 0);
    EXPECT_EQ(g_Obj.szLogFileName[0], '\0');
}

TEST(StateRecord, BeforeFirstCheckVersionCeilAndFlags) {
    const cConf_Inf& c = g_Obj.objCif;
    EXPECT_EQ(c.sVersion, "1.0");
    EXPECT_EQ(c.shCpuCeil, 100);
    EXPECT_EQ(c.shCpuFloor, 0);
    EXPECT_EQ(c.iMemCeil, 0);
    for (char f : {c.chFileMonitFlag, c.chProcessMonitFlag, c.chCpuMonitFlag, c.chMemMonitFlag,
                   c.chDVMonitFlag, c.chBakForSizeFlag, c.chVsftpdAnonEnable, c.chVsftpdAnonUpload,
                   c.chVsftpdAnonMkdir, c.chVsftpdLocalEnable, c.chVsftpdWrite, c.chVsftpdRunFlag,
                   c.chSambaShareWrite, c.chSambaRunFlag}) {
        EXPECT_EQ(f, '0');
    }
    EXPECT_EQ(c.chOSReleaseVersion, emOSNoSet);
    EXPECT_EQ(c.chLangCode, 0);
    EXPECT_EQ(c.iSeqLinkRcInit, 0);
    EXPECT_TRUE(c.sHostname.empty() && c.sNowDate.empty() && c.sNowTime.empty());
    EXPECT_TRUE(c.sVsftpdAnonRoot.empty() && c.sSambaSharePath.empty());
    EXPECT_TRUE(c.vFileMonitList.empty() && c.vProcessMonitList.empty() && c.vDV.empty() &&
                c.vsDV.empty() && c.vBakForSize.empty() && c.vsBakForSize.empty());
    // The network flags and kernel limits are not set by the constructor:
    // in static storage they read zero.
    EXPECT_EQ(c.chIcmpEchoIgnoreAll, 0);
    EXPECT_EQ(c.ulShmMax, 0UL);
    EXPECT_EQ(c.ulFileMax, 0UL);
}

TEST(StateRecord, ServerStateStartsEmpty) {
    cSvrState s;
    EXPECT_TRUE(s.vTcpListen.empty() && s.vsTcpListenList.empty() && s.vDiskInfo.empty() &&
                s.vsDiskInfoList.empty() && s.vsIptablesInputList.empty() &&
                s.vsIptablesOutputList.empty() && s.vsIfconfigList.empty());
    EXPECT_EQ(s.iMemTotal, 0);
    EXPECT_EQ(s.iMemUse, 0);
    EXPECT_EQ(s.iMemFree, 0);
    EXPECT_EQ(s.chIptablesInputPolicy, 0);
    EXPECT_EQ(s.chIptablesOutputPolicy, 0);
}

TEST(StateRecord, BufferSizes) {
    EXPECT_EQ(sizeof(g_Obj.szLogFileName), 256u);
    EXPECT_EQ(sizeof(g_Obj.szConfFileName), 256u);
    EXPECT_EQ(sizeof(g_Obj.szLogBuff), 11024u);
    EXPECT_EQ(sizeof(g_Obj.aActFun), 7u * 1024u * sizeof(void*));
    EXPECT_EQ(sizeof(g_Obj.aGenFun), 7u * 1024u * sizeof(void*));
    EXPECT_EQ(sizeof(g_Obj.szSendBuff), 101024u);
    EXPECT_EQ(sizeof(g_Obj.szRecvBuff), 101024u);
    EXPECT_EQ(sizeof(g_Obj.szCmdBuff), 101024u);
    EXPECT_EQ(sizeof(g_Obj.szHexBuf), 600000u);
    EXPECT_EQ(sizeof(g_Obj.szCurTimeStr), 32u);
    EXPECT_EQ(sizeof(g_Obj.szExeCallResBuff), 101024u);
    EXPECT_EQ(sizeof(cDiskVolume::szPart), 256u);
    EXPECT_EQ(sizeof(cDiskInfo::szFS), 256u);
    EXPECT_EQ(sizeof(cDiskInfo::szMountOn), 256u);
    EXPECT_EQ(sizeof(cTcpListen::szListenAddr), 60u);
    EXPECT_EQ(sizeof(cTcpListen::szProgramName), 256u);
    EXPECT_EQ(sizeof(cBakForSize::szFileName), 256u);
    EXPECT_EQ(sizeof(cBakForSize::szBakDir), 256u);
}

TEST(StateRecord, FieldTypes) {
    static_assert(std::is_same<decltype(cGlobalVal::shCmdNo), short>::value, "");
    static_assert(std::is_same<decltype(cGlobalVal::c_LOG_Level), char>::value, "");
    static_assert(std::is_same<decltype(cGlobalVal::CurTimeSec), time_t>::value, "");
    static_assert(
        std::is_same<decltype(cGlobalVal::mErrorNo2Des), std::map<int, std::string>>::value, "");
    static_assert(std::is_same<decltype(cGlobalVal::mName2Idx), std::map<std::string, int>>::value,
                  "");
    static_assert(std::is_same<decltype(cConf_Inf::ulShmMax), unsigned long>::value, "");
    static_assert(std::is_same<decltype(cConf_Inf::shCpuCeil), short>::value, "");
    static_assert(std::is_same<decltype(cConf_Inf::vDV), std::vector<cDiskVolume>>::value, "");
    static_assert(std::is_same<decltype(cSvrState::vTcpListen), std::vector<cTcpListen>>::value,
                  "");
    SUCCEED();
}

TEST(StateRecord, GlobalFieldOrder) {
    const cGlobalVal& g = g_Obj;
    EXPECT_TRUE(Before(g.c_LOG_Level, g.bStdout));
    EXPECT_TRUE(Before(g.bStdout, g.szLogFileName));
    EXPECT_TRUE(Before(g.szLogFileName, g.fdLogFile));
    EXPECT_TRUE(Before(g.fdLogFile, g.szConfFileName));
    EXPECT_TRUE(Before(g.szConfFileName, g.szLogBuff));
    EXPECT_TRUE(Before(g.szLogBuff, g.aActFun));
    EXPECT_TRUE(Before(g.aActFun, g.aGenFun));
    EXPECT_TRUE(Before(g.aGenFun, g.szSendBuff));
    EXPECT_TRUE(Before(g.szSendBuff, g.szRecvBuff));
    EXPECT_TRUE(Before(g.szRecvBuff, g.iLenToSend));
    EXPECT_TRUE(Before(g.iLenToSend, g.iLenRecved));
    EXPECT_TRUE(Before(g.iLenRecved, g.fdConn));
    EXPECT_TRUE(Before(g.fdConn, g.sSockName));
    EXPECT_TRUE(Before(g.sSockName, g.mErrorNo2Des));
    EXPECT_TRUE(Before(g.mErrorNo2Des, g.mName2Idx));
    EXPECT_TRUE(Before(g.mName2Idx, g.sCmdName));
    EXPECT_TRUE(Before(g.sCmdName, g.szCmdBuff));
    EXPECT_TRUE(Before(g.szCmdBuff, g.sDataDir));
    EXPECT_TRUE(Before(g.sDataDir, g.szHexBuf));
    EXPECT_TRUE(Before(g.szHexBuf, g.CurTimeSec));
    EXPECT_TRUE(Before(g.CurTimeSec, g.szCurTimeStr));
    EXPECT_TRUE(Before(g.szCurTimeStr, g.szExeCallResBuff));
    EXPECT_TRUE(Before(g.szExeCallResBuff, g.sReqRetInfo));
    EXPECT_TRUE(Before(g.sReqRetInfo, g.objCif));
    EXPECT_TRUE(Before(g.objCif, g.objSS));
    EXPECT_TRUE(Before(g.objSS, g.iRet));
    EXPECT_TRUE(Before(g.iRet, g.shCmdNo));
    EXPECT_TRUE(Before(g.shCmdNo, g.bThreadSwitchFileMonit));
    EXPECT_TRUE(Before(g.bThreadSwitchFileMonit, g.bThreadSwitchProcessMonit));
    EXPECT_TRUE(Before(g.bThreadSwitchProcessMonit, g.bThreadSwitchCpuMonit));
    EXPECT_TRUE(Before(g.bThreadSwitchCpuMonit, g.bThreadSwitchMemMonit));
    EXPECT_TRUE(Before(g.bThreadSwitchMemMonit, g.bThreadSwitchDVMonit));
    EXPECT_TRUE(Before(g.bThreadSwitchDVMonit, g.bThreadSwitchBakForSize));
    EXPECT_TRUE(Before(g.bThreadSwitchBakForSize, g.sVsftpdConfFile));
}

TEST(StateRecord, ConfFieldOrder) {
    const cConf_Inf& c = g_Obj.objCif;
    EXPECT_TRUE(Before(c.chIcmpEchoIgnoreAll, c.chTcpSyncookies));
    EXPECT_TRUE(Before(c.chTcpSyncookies, c.chTcpTwReuse));
    EXPECT_TRUE(Before(c.chTcpTwReuse, c.ulShmMax));
    EXPECT_TRUE(Before(c.ulShmMax, c.ulShmAll));
    EXPECT_TRUE(Before(c.ulShmAll, c.ulShmMni));
    EXPECT_TRUE(Before(c.ulShmMni, c.ulThreadMax));
    EXPECT_TRUE(Before(c.ulThreadMax, c.ulFileMax));
    EXPECT_TRUE(Before(c.ulFileMax, c.vFileMonitList));
    EXPECT_TRUE(Before(c.vFileMonitList, c.chFileMonitFlag));
    EXPECT_TRUE(Before(c.chFileMonitFlag, c.vProcessMonitList));
    EXPECT_TRUE(Before(c.vProcessMonitList, c.chProcessMonitFlag));
    EXPECT_TRUE(Before(c.chProcessMonitFlag, c.shCpuCeil));
    EXPECT_TRUE(Before(c.shCpuCeil, c.shCpuFloor));
    EXPECT_TRUE(Before(c.shCpuFloor, c.chCpuMonitFlag));
    EXPECT_TRUE(Before(c.chCpuMonitFlag, c.iMemCeil));
    EXPECT_TRUE(Before(c.iMemCeil, c.chMemMonitFlag));
    EXPECT_TRUE(Before(c.chMemMonitFlag, c.vDV));
    EXPECT_TRUE(Before(c.vDV, c.vsDV));
    EXPECT_TRUE(Before(c.vsDV, c.chDVMonitFlag));
    EXPECT_TRUE(Before(c.chDVMonitFlag, c.vBakForSize));
    EXPECT_TRUE(Before(c.vBakForSize, c.vsBakForSize));
    EXPECT_TRUE(Before(c.vsBakForSize, c.chBakForSizeFlag));
    EXPECT_TRUE(Before(c.chBakForSizeFlag, c.chVsftpdAnonEnable));
    EXPECT_TRUE(Before(c.chVsftpdAnonEnable, c.chVsftpdAnonUpload));
    EXPECT_TRUE(Before(c.chVsftpdAnonUpload, c.chVsftpdAnonMkdir));
    EXPECT_TRUE(Before(c.chVsftpdAnonMkdir, c.sVsftpdAnonRoot));
    EXPECT_TRUE(Before(c.sVsftpdAnonRoot, c.chVsftpdLocalEnable));
    EXPECT_TRUE(Before(c.chVsftpdLocalEnable, c.chVsftpdWrite));
    EXPECT_TRUE(Before(c.chVsftpdWrite, c.chVsftpdRunFlag));
    EXPECT_TRUE(Before(c.chVsftpdRunFlag, c.sSambaSharePath));
    EXPECT_TRUE(Before(c.sSambaSharePath, c.chSambaShareWrite));
    EXPECT_TRUE(Before(c.chSambaShareWrite, c.chSambaRunFlag));
    EXPECT_TRUE(Before(c.chSambaRunFlag, c.chOSReleaseVersion));
    EXPECT_TRUE(Before(c.chOSReleaseVersion, c.chLangCode));
    EXPECT_TRUE(Before(c.chLangCode, c.iSeqLinkRcInit));
    EXPECT_TRUE(Before(c.iSeqLinkRcInit, c.sHostname));
    EXPECT_TRUE(Before(c.sHostname, c.sNowDate));
    EXPECT_TRUE(Before(c.sNowDate, c.sNowTime));
    EXPECT_TRUE(Before(c.sNowTime, c.sVersion));
}

TEST(StateRecord, ServerFieldOrder) {
    const cSvrState& s = g_Obj.objSS;
    EXPECT_TRUE(Before(s.vTcpListen, s.vsTcpListenList));
    EXPECT_TRUE(Before(s.vsTcpListenList, s.iMemTotal));
    EXPECT_TRUE(Before(s.iMemTotal, s.iMemUse));
    EXPECT_TRUE(Before(s.iMemUse, s.iMemFree));
    EXPECT_TRUE(Before(s.iMemFree, s.vDiskInfo));
    EXPECT_TRUE(Before(s.vDiskInfo, s.vsDiskInfoList));
    EXPECT_TRUE(Before(s.vsDiskInfoList, s.vsIptablesInputList));
    EXPECT_TRUE(Before(s.vsIptablesInputList, s.chIptablesInputPolicy));
    EXPECT_TRUE(Before(s.chIptablesInputPolicy, s.vsIptablesOutputList));
    EXPECT_TRUE(Before(s.vsIptablesOutputList, s.chIptablesOutputPolicy));
    EXPECT_TRUE(Before(s.chIptablesOutputPolicy, s.vsIfconfigList));
}

TEST(StateRecord, OsReleaseValues) {
    EXPECT_EQ(emOSNoSet, 0);
    EXPECT_EQ(emOSUnknown, 1);
    EXPECT_EQ(emOSUbuntu, 2);
    EXPECT_EQ(emOSCentos, 3);
    EXPECT_EQ(emOSFedora, 4);
    EXPECT_EQ(emOSSuse, 5);
    EXPECT_EQ(emOSRedhat, 6);
    EXPECT_EQ(emOSMax, 7);
}

}  // namespace
