// What each accepted command does to the state, field by field, and the
// detail texts of a few refusals.
#include <gtest/gtest.h>

#include <cstring>

#include "support/sim_test_util.h"
#include "temp_dir.h"

using nvtest::TestEngine;

namespace {

class SimValues : public ::testing::Test {
protected:
    void SetUp() override { nvtest::UseUtc(); }
    nvagent::SimState Apply7(short cmd, const std::string& payload) {
        nvagent::CmdResult r = e.Apply(cmd, payload);
        EXPECT_EQ(r.iCode, em_ActSuccAll) << cmd << " " << payload << ": " << r.sDetail;
        return e.engine->Snapshot();
    }
    TestEngine e{"", nvtest::DemoStatePath()};
};

TEST_F(SimValues, TogglesSetTheirFlag) {
    EXPECT_EQ(Apply7(4, "1").conf.chIcmpEchoIgnoreAll, '1');
    EXPECT_EQ(Apply7(5, "0").conf.chTcpSyncookies, '0');
    EXPECT_EQ(Apply7(26, "0").conf.chDVMonitFlag, '0');
    EXPECT_EQ(Apply7(50, "1").conf.chSambaRunFlag, '1');
}

TEST_F(SimValues, KernelNumbersAndThresholds) {
    EXPECT_EQ(Apply7(7, "67108864").conf.ulShmMax, 67108864UL);
    EXPECT_EQ(Apply7(11, "00005000").conf.ulFileMax, 5000UL);
    EXPECT_EQ(Apply7(17, "75").conf.shCpuCeil, 75);
    EXPECT_EQ(Apply7(18, "0").conf.shCpuFloor, 0);
    EXPECT_EQ(Apply7(20, "7976").conf.iMemCeil, 7976);
}

TEST_F(SimValues, ThreadMaximumRefusalSaysTheLimit) {
    nvagent::CmdResult r = e.Apply(10, "100");
    EXPECT_EQ(r.iCode, em_ActPostValueNotValid);
    EXPECT_EQ(r.sDetail, "The thread maximum must be above 512.");
}

TEST_F(SimValues, LanguageCodeIsANumber) {
    EXPECT_EQ(Apply7(2, "1").conf.chLangCode, 1);
    nvtest::DecodedState d = nvtest::Decode(e.Body());
    EXPECT_EQ(d.conf.chLangCode, 1);
}

TEST_F(SimValues, MonitoredListsAreReplacedWhole) {
    nvagent::SimState s = Apply7(13, "  /etc/b  \r\n\n/etc/a\n/etc/b\n");
    EXPECT_EQ(s.conf.vFileMonitList, (tVecStr{"/etc/b", "/etc/a"}));
    s = Apply7(15, "sshd\nmy daemon\n");
    EXPECT_EQ(s.conf.vProcessMonitList, (tVecStr{"sshd", "my daemon"}));
}

TEST_F(SimValues, VolumesAreAddedAndDeletedByOneBasedIndex) {
    nvagent::SimState s = Apply7(23, "/dev/vdd1 1000 100 50");
    ASSERT_EQ(s.conf.vDV.size(), 4u);
    EXPECT_STREQ(s.conf.vDV[3].szPart, "/dev/vdd1");
    EXPECT_EQ(s.conf.vDV[3].iCeil, 1000);
    EXPECT_EQ(s.conf.vDV[3].iFloor, 100);
    EXPECT_EQ(s.conf.vDV[3].iItv, 50);
    ASSERT_EQ(s.conf.vsDV.size(), 4u);
    EXPECT_EQ(s.conf.vsDV[3].substr(0, 5), "  4  ");
    s = Apply7(24, "1");
    ASSERT_EQ(s.conf.vDV.size(), 3u);
    EXPECT_STREQ(s.conf.vDV[0].szPart, "/dev/vdb1");
    EXPECT_NE(s.conf.vsDV[0].find("/dev/vdb1"), std::string::npos);
    EXPECT_EQ(s.conf.vsDV[0].substr(0, 5), "  1  ");
}

TEST_F(SimValues, BackupsAreAddedAndDeleted) {
    nvagent::SimState s = Apply7(28, "/etc/hosts /var/backups/etc 64");
    ASSERT_EQ(s.conf.vBakForSize.size(), 3u);
    EXPECT_STREQ(s.conf.vBakForSize[2].szBakDir, "/var/backups/etc");
    EXPECT_EQ(s.conf.vBakForSize[2].iKilobyte, 64);
    s = Apply7(29, "3");
    EXPECT_EQ(s.conf.vBakForSize.size(), 2u);
    EXPECT_EQ(s.conf.vsBakForSize.size(), 2u);
    s = Apply7(30, "");
    EXPECT_TRUE(s.conf.vBakForSize.empty());
    EXPECT_TRUE(s.conf.vsBakForSize.empty());
}

TEST_F(SimValues, RulePriorityPlacesTheRule) {
    nvagent::SimState s = Apply7(33, "1 2 10.1.2.3 0 - 53 2");
    ASSERT_EQ(s.inputRules.size(), 6u);
    EXPECT_EQ(s.inputRules[0].proto, nvagent::kProtoUdp);
    EXPECT_EQ(s.inputRules[0].src, "10.1.2.3");
    EXPECT_EQ(s.inputRules[0].dport, 53);
    EXPECT_EQ(s.inputRules[0].action, nvagent::kActDrop);
    EXPECT_EQ(s.svr.vsIptablesInputList[1], "  1  udp  10.1.2.3:any        -> any:53   DROP");
    s = Apply7(33, "2 1 - 1024 - 0 3");
    EXPECT_EQ(s.inputRules.back().sport, 1024);
    EXPECT_EQ(s.inputRules.back().action, nvagent::kActReject);
    EXPECT_EQ(s.svr.vsIptablesInputList.size(), 8u);
}

TEST_F(SimValues, RuleDeleteRemovesTheIndexedRule) {
    nvagent::SimState s = Apply7(38, "1");
    ASSERT_EQ(s.outputRules.size(), 1u);
    EXPECT_EQ(s.outputRules[0].dport, 25);
    ASSERT_EQ(s.svr.vsIptablesOutputList.size(), 2u);
    EXPECT_EQ(s.svr.vsIptablesOutputList[1].substr(0, 5), "  1  ");
}

TEST_F(SimValues, PoliciesAreDigitCharacters) {
    EXPECT_EQ(Apply7(32, "1").svr.chIptablesInputPolicy, '1');
    EXPECT_EQ(Apply7(36, "2").svr.chIptablesOutputPolicy, '2');
}

TEST_F(SimValues, FtpAndSambaRestoreDefaultsKeepTheRunFlags) {
    nvagent::SimState s = Apply7(47, "");
    EXPECT_EQ(s.conf.sVsftpdAnonRoot, "");
    EXPECT_EQ(s.conf.chVsftpdLocalEnable, '0');
    EXPECT_EQ(s.conf.chVsftpdWrite, '0');
    EXPECT_EQ(s.conf.chVsftpdRunFlag, '1');
    Apply7(50, "1");
    s = Apply7(51, "");
    EXPECT_EQ(s.conf.sSambaSharePath, "");
    EXPECT_EQ(s.conf.chSambaRunFlag, '1');
    EXPECT_EQ(Apply7(43, "/var/ftp").conf.sVsftpdAnonRoot, "/var/ftp");
    EXPECT_EQ(Apply7(48, "/srv/my share").conf.sSambaSharePath, "/srv/my share");
}

TEST_F(SimValues, InterfacesChangeAndTheirLinesFollow) {
    nvagent::SimState s = Apply7(52, "eth1");
    EXPECT_FALSE(s.interfaces[1].up);
    EXPECT_NE(s.svr.vsIfconfigList[1].find(" down "), std::string::npos);
    s = Apply7(54, "eth0");
    EXPECT_EQ(s.interfaces[0].mode, nvagent::kModeDynamic);
    EXPECT_NE(s.svr.vsIfconfigList[0].find("dynamic"), std::string::npos);
    s = Apply7(55, "eth0 10.20.30.40 255.255.0.0 10.20.0.1 - 10.20.0.3");
    const nvagent::NetInterface& n = s.interfaces[0];
    EXPECT_EQ(n.mode, nvagent::kModeStatic);
    EXPECT_EQ(n.ip, "10.20.30.40");
    EXPECT_EQ(n.mask, "255.255.0.0");
    EXPECT_EQ(n.gateway, "10.20.0.1");
    EXPECT_EQ(n.dns1, "");
    EXPECT_EQ(n.dns2, "10.20.0.3");
    EXPECT_EQ(s.svr.vsIfconfigList[0],
              "  1  eth0  52:54:00:3a:1f:07  static   up    10.20.30.40      255.255.0.0");
}

TEST_F(SimValues, PasswordIsNeverStoredOnlyTheTimeOfChange) {
    nvtest::TempDir dir;
    std::string path = dir.File("state.json");
    ASSERT_TRUE(nvtest::WriteFile(path, nvtest::ReadFile(nvtest::DemoStatePath())));
    TestEngine f(path);
    f.now = nvtest::kFixedNow + 100;
    ASSERT_EQ(f.Apply(56, "backup Zx9-secret Zx9-secret").iCode, em_ActSuccAll);
    std::string file = nvtest::ReadFile(path);
    EXPECT_EQ(file.find("Zx9-secret"), std::string::npos);
    nvagent::SimState s = nvtest::LoadState(path);
    EXPECT_EQ(s.users[2].name, "backup");
    EXPECT_EQ(s.users[2].pwChanged, nvtest::kFixedNow + 100);
    EXPECT_EQ(s.users[0].pwChanged, 0);
}

TEST_F(SimValues, HostNameIsSet) {
    EXPECT_EQ(Apply7(57, "db-02.example.org").conf.sHostname, "db-02.example.org");
    nvagent::CmdResult r = e.Apply(57, "db_02");
    EXPECT_EQ(r.iCode, em_ActPostValueNotValid);
}

TEST_F(SimValues, ListEntriesMustBeUtf8Text) {
    EXPECT_EQ(e.Apply(13, "/etc/\xb2\xe2\xca\xd4\n").iCode, em_ActPostValueNotValid);
    EXPECT_EQ(e.Apply(15, "bad\x01name\n").iCode, em_ActPostValueNotValid);
    EXPECT_EQ(Apply7(13, "/srv/\xe6\x96\x87\xe4\xbb\xb6\n").conf.vFileMonitList.size(), 1u);
}

}  // namespace
