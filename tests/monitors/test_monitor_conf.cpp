// The glue to the state record: settings taken from a cConf_Inf, and the
// switches an empty list turned off written back as flags.
#include <gtest/gtest.h>

#include <cstring>

#include "agent/monitors/conf_settings.h"

namespace {

TEST(ConfSettings, FromTheStateRecordAndBack) {
    cConf_Inf c;
    c.chFileMonitFlag = '1';
    c.chProcessMonitFlag = '1';
    c.chCpuMonitFlag = '1';
    c.chMemMonitFlag = '0';
    c.chDVMonitFlag = '1';
    c.chBakForSizeFlag = '1';
    c.vProcessMonitList = {"/usr/bin/httpdserver -f /www/httpdconf"};
    c.shCpuCeil = 95;
    c.shCpuFloor = 3;
    c.iMemCeil = 2048;
    cDiskVolume d{};
    strcpy(d.szPart, "/dev/vdb1");
    d.iCeil = 1000;
    d.iFloor = 100;
    d.iItv = 50;
    c.vDV.push_back(d);
    nvmonit::MonitorSettings s = nvmonit::SettingsFromConf(c, "/etc/norvane", 250);
    EXPECT_EQ(nvmonit::MonitDir(s), "/etc/norvane/monit");
    EXPECT_EQ(s.iIntervalMs, 250);
    EXPECT_TRUE(s.bFileOn && s.bProcessOn && s.bCpuOn && s.bVolumeOn && s.bBackupOn);
    EXPECT_FALSE(s.bMemoryOn);
    EXPECT_EQ(s.vProcesses, c.vProcessMonitList);
    EXPECT_EQ(s.iCpuCeilPercent, 95);
    EXPECT_EQ(s.iCpuFloorPercent, 3);
    EXPECT_EQ(s.llMemCeilMb, 2048);
    ASSERT_EQ(s.vVolumes.size(), 1u);
    EXPECT_EQ(s.vVolumes[0], (nvmonit::VolumeEntry{"/dev/vdb1", 1000, 100, 50}));

    // The file and backup lists are empty: their switches go off.
    ASSERT_TRUE(nvmonit::SwitchOffEmptyLists(s));
    nvmonit::StoreSwitches(s, c);
    EXPECT_EQ(c.chFileMonitFlag, '0');
    EXPECT_EQ(c.chBakForSizeFlag, '0');
    EXPECT_EQ(c.chProcessMonitFlag, '1');
    EXPECT_EQ(c.chDVMonitFlag, '1');
    EXPECT_EQ(c.chCpuMonitFlag, '1');
    EXPECT_EQ(c.chMemMonitFlag, '0');
}

TEST(ConfSettings, FlagOtherThanOneIsOff) {
    cConf_Inf c;
    c.chCpuMonitFlag = ' ';
    EXPECT_FALSE(nvmonit::SettingsFromConf(c, "/d", 0).bCpuOn);
}

}  // namespace
