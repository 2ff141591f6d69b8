// Display lists: served verbatim from the state file until a command changes
// their data, generated at load when the file gives only the records, and
// regenerated (1-based index first) after a change.
#include <gtest/gtest.h>

#include "agent/display_lines.h"
#include "support/sim_test_util.h"
#include "temp_dir.h"

using nvtest::TestEngine;

namespace {

const char* const kVerbatimState = R"({
  "vDV": [{"szPart": "/dev/sda1", "iCeil": 500, "iFloor": 50, "iItv": 10}],
  "vsDV": ["custom volume line"],
  "vBakForSize": [],
  "vsBakForSize": ["custom backup line"],
  "vTcpListen": [{"szListenAddr": "0.0.0.0:22", "iPid": 1, "szProgramName": "sshd"}],
  "vsTcpListenList": ["custom listener line"],
  "vsDiskInfoList": ["custom disk line"],
  "vsIptablesInputList": ["custom input rule A", "custom input rule B"],
  "vsIptablesOutputList": ["custom output rule"],
  "vsIfconfigList": ["custom interface line"],
  "simInterfaces": [{"name": "eth0", "mac": "52:54:00:00:00:01", "mode": "static",
                     "up": true, "ip": "10.0.0.5", "mask": "255.255.255.0"}]
})";

class SimDisplay : public ::testing::Test {
protected:
    void SetUp() override {
        nvtest::UseUtc();
        path = dir.File("state.json");
    }
    nvtest::TempDir dir;
    std::string path;
};

TEST_F(SimDisplay, ListsInTheFileAreServedVerbatimUntilAChange) {
    ASSERT_TRUE(nvtest::WriteFile(path, kVerbatimState));
    TestEngine e(path);
    nvtest::DecodedState d = nvtest::Decode(e.Body());
    EXPECT_EQ(d.conf.vsDV, (tVecStr{"custom volume line"}));
    EXPECT_EQ(d.conf.vsBakForSize, (tVecStr{"custom backup line"}));
    EXPECT_EQ(d.svr.vsTcpListenList, (tVecStr{"custom listener line"}));
    EXPECT_EQ(d.svr.vsDiskInfoList, (tVecStr{"custom disk line"}));
    EXPECT_EQ(d.svr.vsIptablesInputList, (tVecStr{"custom input rule A", "custom input rule B"}));
    EXPECT_EQ(d.svr.vsIptablesOutputList, (tVecStr{"custom output rule"}));
    EXPECT_EQ(d.svr.vsIfconfigList, (tVecStr{"custom interface line"}));

    // An unrelated change keeps every list as it was, in memory and on disk.
    ASSERT_EQ(e.Apply(57, "other").iCode, em_ActSuccAll);
    d = nvtest::Decode(e.Body());
    EXPECT_EQ(d.svr.vsIptablesInputList, (tVecStr{"custom input rule A", "custom input rule B"}));
    EXPECT_EQ(nvtest::Decode(TestEngine(path).Body()).conf.vsDV, (tVecStr{"custom volume line"}));

    // A change to the volumes regenerates their lines only.
    ASSERT_EQ(e.Apply(23, "/dev/sdb1 900 90 9").iCode, em_ActSuccAll);
    d = nvtest::Decode(e.Body());
    ASSERT_EQ(d.conf.vsDV.size(), 2u);
    EXPECT_EQ(d.conf.vsDV[0],
              "  1  /dev/sda1   ceil     500 MB  floor      50 MB  interval      10 MB");
    EXPECT_EQ(d.conf.vsDV[1],
              "  2  /dev/sdb1   ceil     900 MB  floor      90 MB  interval       9 MB");
    EXPECT_EQ(d.svr.vsIfconfigList, (tVecStr{"custom interface line"}));

    // Clearing a chain whose only data was verbatim lines leaves its policy.
    ASSERT_EQ(e.Apply(35, "").iCode, em_ActSuccAll);
    tVecStr cleared = nvtest::Decode(e.Body()).svr.vsIptablesInputList;
    ASSERT_EQ(cleared.size(), 1u);
    EXPECT_EQ(cleared[0].substr(0, 8), "Policy: ");
    ASSERT_EQ(e.Apply(52, "eth0").iCode, em_ActSuccAll);
    EXPECT_EQ(
        nvtest::Decode(e.Body()).svr.vsIfconfigList,
        (tVecStr{"  1  eth0  52:54:00:00:00:01  static   down  10.0.0.5         255.255.255.0"}));
}

TEST_F(SimDisplay, IndexesOfVerbatimListsFollowTheRecords) {
    ASSERT_TRUE(nvtest::WriteFile(path, kVerbatimState));
    TestEngine e(path);
    // The input chain has display lines but no rule records: nothing to delete.
    nvagent::CmdResult r = e.Apply(34, "1");
    EXPECT_EQ(r.iCode, em_ActPostValueNotValid);
    EXPECT_EQ(r.sDetail, "The list is empty.");
}

TEST_F(SimDisplay, MissingListsAreGeneratedAtLoad) {
    TestEngine e("", nvtest::DemoStatePath());
    nvtest::DecodedState d = nvtest::Decode(e.Body());
    EXPECT_EQ(
        d.svr.vsTcpListenList,
        (tVecStr{"0.0.0.0          22         812  sshd", "0.0.0.0          21         777  vsftpd",
                 "0.0.0.0          80        1034  nginx", "0.0.0.0          443       1034  nginx",
                 "127.0.0.1        5432       921  postgres",
                 "127.0.0.1        6379       955  redis-server"}));
    EXPECT_EQ(d.svr.vsIptablesInputList,
              (tVecStr{"Policy: drop", "  1  tcp  192.168.1.0/24:any  -> any:22   ACCEPT",
                       "  2  tcp  any:any             -> any:80   ACCEPT",
                       "  3  tcp  any:any             -> any:443  ACCEPT",
                       "  4  tcp  192.168.1.0/24:any  -> any:21   ACCEPT",
                       "  5  udp  any:any             -> any:161  DROP"}));
    EXPECT_EQ(d.svr.vsIptablesOutputList,
              (tVecStr{"Policy: accept", "  1  udp  any:any  -> 192.168.1.1:53  ACCEPT",
                       "  2  tcp  any:any  -> any:25          REJECT"}));
    EXPECT_EQ(
        d.svr.vsIfconfigList,
        (tVecStr{"  1  eth0  52:54:00:3a:1f:07  static   up    192.168.1.20     255.255.255.0",
                 "  2  eth1  52:54:00:8c:42:b5  dynamic  up    10.0.2.15        255.255.255.0",
                 "  3  lo    00:00:00:00:00:00  static   up    127.0.0.1        255.0.0.0"}));
    EXPECT_EQ(d.conf.vsBakForSize.size(), 2u);
    EXPECT_EQ(
        d.conf.vsBakForSize[0],
        "  1  /etc/nginx/nginx.conf                    -> /var/backups/nginx       limit      "
        "512 KB");
    EXPECT_EQ(d.svr.vsDiskInfoList[0],
              "/dev/vda1   ext4   size     40960  used     12288  free     26624  on /");
}

TEST(DisplayLines, ListenerWithoutPortAndIndexWidthForLongLists) {
    cTcpListen t{};
    snprintf(t.szListenAddr, sizeof t.szListenAddr, "%s", "[::]:8080");
    t.iPid = 42;
    snprintf(t.szProgramName, sizeof t.szProgramName, "%s", "java");
    cTcpListen u{};
    snprintf(u.szListenAddr, sizeof u.szListenAddr, "%s", "unix-socket");
    EXPECT_EQ(nvagent::ListenLines({t, u}), (tVecStr{"[::]             8080        42  java",
                                                     "unix-socket      -            0  "}));
    std::vector<nvagent::FwRule> rules(1000);
    tVecStr lines = nvagent::RuleLines(rules);
    EXPECT_EQ(lines[0].substr(0, 6), "   1  ");
    EXPECT_EQ(lines[999].substr(0, 6), "1000  ");
}

}  // namespace
