// The journal's old and new values of a change: only the fields a command
// changes and that really changed, lists reduced to their changed entries
// (renumbered and re-padded lines are not changes), long lists cut, text
// that is not UTF-8 still giving valid JSON, and never anything for the
// password command.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "agent/change_values.h"
#include "agent/commands/command_parser.h"
#include "agent/state_json.h"

namespace {

using nlohmann::json;
using nvagent::CmdResult;
using nvagent::RecordChange;

struct Change {
    json oldValues;
    json newValues;
    bool recorded = false;
};

Change Record(short cmd, const cConf_Inf& c0, const cSvrState& s0, const cConf_Inf& c1,
              const cSvrState& s1) {
    CmdResult r;
    RecordChange(cmd, c0, s0, c1, s1, r);
    Change c;
    c.recorded = !r.sOldValues.empty();
    EXPECT_EQ(r.sOldValues.empty(), r.sNewValues.empty());
    if (c.recorded) {
        c.oldValues = json::parse(r.sOldValues);
        c.newValues = json::parse(r.sNewValues);
    }
    return c;
}

Change RecordConf(short cmd, const cConf_Inf& c0, const cConf_Inf& c1) {
    return Record(cmd, c0, cSvrState(), c1, cSvrState());
}

Change RecordSvr(short cmd, const cSvrState& s0, const cSvrState& s1) {
    cConf_Inf c = nvagent::DefaultConf();
    return Record(cmd, c, s0, c, s1);
}

TEST(ChangeValues, AFlagAndALimitWithTheirOldAndNewValues) {
    cConf_Inf a = nvagent::DefaultConf();
    a.chIcmpEchoIgnoreAll = '0';
    a.ulThreadMax = 8000;
    cConf_Inf b = a;
    b.chIcmpEchoIgnoreAll = '1';
    Change c = RecordConf(4, a, b);
    ASSERT_TRUE(c.recorded);
    EXPECT_EQ(c.oldValues, json::parse(R"({"chIcmpEchoIgnoreAll": "0"})"));
    EXPECT_EQ(c.newValues, json::parse(R"({"chIcmpEchoIgnoreAll": "1"})"));
    // Only the command's own field is looked at.
    b.ulThreadMax = 9000;
    c = RecordConf(10, a, b);
    EXPECT_EQ(c.oldValues, json::parse(R"({"ulThreadMax": 8000})"));
    EXPECT_EQ(c.newValues, json::parse(R"({"ulThreadMax": 9000})"));
}

TEST(ChangeValues, NothingWhenNothingChanged) {
    cConf_Inf a = nvagent::DefaultConf();
    a.sHostname = "web01";
    EXPECT_FALSE(RecordConf(57, a, a).recorded);
    cConf_Inf b = a;
    b.ulFileMax = 70000;  // not the host name command's field
    EXPECT_FALSE(RecordConf(57, a, b).recorded);
}

TEST(ChangeValues, ThePasswordCommandRecordsNothing) {
    EXPECT_TRUE(nvagent::ChangedFields(56).empty());
    cConf_Inf a = nvagent::DefaultConf();
    cConf_Inf b = a;
    b.sHostname = "changed";
    b.chLangCode = 2;
    EXPECT_FALSE(RecordConf(56, a, b).recorded);
}

TEST(ChangeValues, ARuleAddedAtTheTopIsTheOnlyNewEntry) {
    cSvrState a;
    a.vsIptablesInputList = {"  1  tcp  0.0.0.0/0:any  -> 0.0.0.0/0:22  ACCEPT",
                             "  2  udp  10.0.0.0/8:any -> 0.0.0.0/0:53  DROP"};
    cSvrState b;
    // Renumbered and padded to a wider first line.
    b.vsIptablesInputList = {"  1  tcp  192.168.100.0/24:any  -> 0.0.0.0/0:80  ACCEPT",
                             "  2  tcp  0.0.0.0/0:any         -> 0.0.0.0/0:22  ACCEPT",
                             "  3  udp  10.0.0.0/8:any        -> 0.0.0.0/0:53  DROP"};
    Change c = RecordSvr(33, a, b);
    ASSERT_TRUE(c.recorded);
    EXPECT_EQ(c.oldValues, json::parse(R"({"vsIptablesInputList": []})"));
    EXPECT_EQ(c.newValues["vsIptablesInputList"],
              json::array({"  1  tcp  192.168.100.0/24:any  -> 0.0.0.0/0:80  ACCEPT"}));
}

TEST(ChangeValues, ADeletedRuleIsTheOnlyOldEntry) {
    cSvrState a;
    a.vsIptablesOutputList = {"  1  tcp  a:any -> b:1  ACCEPT", "  2  tcp  a:any -> b:2  DROP",
                              "  3  tcp  a:any -> b:3  ACCEPT"};
    cSvrState b;
    b.vsIptablesOutputList = {"  1  tcp  a:any -> b:1  ACCEPT", "  2  tcp  a:any -> b:3  ACCEPT"};
    Change c = RecordSvr(38, a, b);
    ASSERT_TRUE(c.recorded);
    EXPECT_EQ(c.oldValues["vsIptablesOutputList"], json::array({"  2  tcp  a:any -> b:2  DROP"}));
    EXPECT_EQ(c.newValues["vsIptablesOutputList"], json::array());
}

// A list without an index column compares whole entries: a file list whose
// entries are single words is not mistaken for unchanged.
TEST(ChangeValues, AListWithoutIndexComparesWholeEntries) {
    cConf_Inf a = nvagent::DefaultConf();
    a.vFileMonitList = {"/etc/passwd"};
    a.chFileMonitFlag = '1';
    cConf_Inf b = a;
    b.vFileMonitList = {"/etc/group"};
    Change c = RecordConf(13, a, b);
    ASSERT_TRUE(c.recorded);
    EXPECT_EQ(c.oldValues, json::parse(R"({"vFileMonitList": ["/etc/passwd"]})"));
    EXPECT_EQ(c.newValues, json::parse(R"({"vFileMonitList": ["/etc/group"]})"));
    // Emptying the list turns its monitor off in the same change.
    b.vFileMonitList.clear();
    b.chFileMonitFlag = '0';
    c = RecordConf(13, a, b);
    EXPECT_EQ(c.oldValues,
              json::parse(R"({"vFileMonitList": ["/etc/passwd"], "chFileMonitFlag": "1"})"));
    EXPECT_EQ(c.newValues, json::parse(R"({"vFileMonitList": [], "chFileMonitFlag": "0"})"));
}

TEST(ChangeValues, AClearedLongListIsCut) {
    cSvrState a;
    for (int i = 1; i <= 100; ++i)
        a.vsIptablesInputList.push_back(std::to_string(i) + " tcp rule " + std::to_string(i));
    Change c = RecordSvr(35, a, cSvrState());
    ASSERT_TRUE(c.recorded);
    const json& old = c.oldValues["vsIptablesInputList"];
    ASSERT_EQ(old.size(), nvagent::kChangedEntriesMax);
    EXPECT_EQ(old[0], "1 tcp rule 1");
    EXPECT_EQ(old[62], "63 tcp rule 63");
    EXPECT_EQ(old[63], "(37 more)");
    EXPECT_EQ(c.newValues["vsIptablesInputList"], json::array());
}

TEST(ChangeValues, RestoringDefaultsRecordsOnlyTheFieldsThatMoved) {
    cConf_Inf a = nvagent::DefaultConf();
    a.chVsftpdAnonEnable = '1';
    a.sVsftpdAnonRoot = "/srv/ftp/pub";
    a.chVsftpdRunFlag = '1';
    cConf_Inf b = a;
    b.chVsftpdAnonEnable = '0';
    b.sVsftpdAnonRoot = "/srv/ftp";
    Change c = RecordConf(47, a, b);
    ASSERT_TRUE(c.recorded);
    EXPECT_EQ(c.oldValues,
              json::parse(R"({"chVsftpdAnonEnable": "1", "sVsftpdAnonRoot": "/srv/ftp/pub"})"));
    EXPECT_EQ(c.newValues,
              json::parse(R"({"chVsftpdAnonEnable": "0", "sVsftpdAnonRoot": "/srv/ftp"})"));
}

TEST(ChangeValues, TextThatIsNotUtf8StillGivesValidJson) {
    cConf_Inf a = nvagent::DefaultConf();
    a.sSambaSharePath = "/srv/\xb9\xb2\xcf\xed";  // GB2312 bytes
    cConf_Inf b = a;
    b.sSambaSharePath = "/srv/share\"\n";
    CmdResult r;
    RecordChange(48, a, cSvrState(), b, cSvrState(), r);
    json o = json::parse(r.sOldValues);
    json n = json::parse(r.sNewValues);
    EXPECT_EQ(o["sSambaSharePath"], "/srv/\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
    EXPECT_EQ(n["sSambaSharePath"], "/srv/share\"\n");
}

// Every set command but the two password commands names fields, and each named field is
// a field of the records, so the table cannot drift from them.
TEST(ChangeValues, EveryChangeNamesRealFields) {
    cConf_Inf c = nvagent::DefaultConf();
    cSvrState s;
    for (short cmd = 2; cmd <= 63; ++cmd) {
        if (!nvagent::IsSetCommand(cmd))
            continue;
        const std::vector<const char*>& fields = nvagent::ChangedFields(cmd);
        if (cmd == 56 || cmd == 60) {
            EXPECT_TRUE(fields.empty());
            continue;
        }
        EXPECT_FALSE(fields.empty()) << cmd;
        nvagent::Json j = nvagent::FieldsToJson(c, s, fields);
        EXPECT_EQ(j.size(), fields.size()) << cmd;
    }
}

}  // namespace
