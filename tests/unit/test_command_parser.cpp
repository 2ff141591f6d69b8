// The shared command parser: every payload the console's forms can produce
// becomes a typed request or a refusal whose detail says why; and the
// simulator's list lines follow every change made through it.
#include <gtest/gtest.h>

#include <variant>

#include "agent/commands/command_parser.h"
#include "agent/commands/state_checks.h"
#include "support/sim_test_util.h"

using namespace nvagent;

namespace {

CmdResult Refusal(short cmd, const std::string& payload) {
    Request req;
    CmdResult r{em_ActSuccAll, ""};
    EXPECT_FALSE(ParseCommand(cmd, payload, req, r)) << cmd << " \"" << payload << "\"";
    return r;
}

template <class T>
T Parsed(short cmd, const std::string& payload) {
    Request req;
    CmdResult r;
    EXPECT_TRUE(ParseCommand(cmd, payload, req, r)) << r.sDetail;
    EXPECT_TRUE(std::holds_alternative<T>(req));
    return std::holds_alternative<T>(req) ? std::get<T>(req) : T{};
}

void ExpectRefused(short cmd, const std::string& payload, int code, const std::string& detail) {
    CmdResult r = Refusal(cmd, payload);
    EXPECT_EQ(r.iCode, code) << cmd << " \"" << payload << "\": " << r.sDetail;
    EXPECT_NE(r.sDetail.find(detail), std::string::npos)
        << cmd << " \"" << payload << "\": " << r.sDetail;
}

TEST(CommandParser, SwitchFormLeftBlankIsRefusedWithAReason) {
    ExpectRefused(26, "   ", em_ActPostCmdBuffFmtError,
                  "No choice was made: The disk-volume monitor must be set to 1 (on) or 0 (off).");
    ExpectRefused(31, "   ", em_ActPostCmdBuffFmtError, "No choice was made: The backup monitor");
    ExpectRefused(4, "", em_ActPostCmdBuffFmtError, "No choice was made");
    ExpectRefused(14, "yes", em_ActPostCmdBuffFmtError, "not \"yes\"");
    EXPECT_TRUE(Parsed<FlagRequest>(26, "1").on);
    EXPECT_FALSE(Parsed<FlagRequest>(31, "0").on);
}

TEST(CommandParser, PolicyLeftBlankIsRefusedWithAReason) {
    ExpectRefused(32, "-", em_ActPostValueNotValid, "No policy was chosen");
    ExpectRefused(36, "-", em_ActPostValueNotValid, "No policy was chosen");
    ExpectRefused(36, "9", em_ActPostValueNotValid, "not \"9\"");
    ExpectRefused(32, "    ", em_ActPostCmdBuffFmtError, "Expected 1 value");
    PolicyRequest p = Parsed<PolicyRequest>(36, "2");
    EXPECT_EQ(p.chain, kChainOutput);
    EXPECT_EQ(p.policy, kActDrop);
}

TEST(CommandParser, FormsWithTheWrongNumberOfFieldsNameTheCount) {
    ExpectRefused(23, "/dev/vdb1 1 2", em_ActPostCmdBuffFmtError,
                  "Expected 4 values separated by single blanks, got 3.");
    ExpectRefused(33, "1 1 - 0 - 22", em_ActPostCmdBuffFmtError, "Expected 7 values");
    ExpectRefused(55, "eth0  10.0.0.1 255.0.0.0 - - -", em_ActPostCmdBuffFmtError, "got 7");
}

TEST(CommandParser, UntouchedFormsSayWhichFieldIsMissing) {
    ExpectRefused(23, "- - - -", em_ActPostValueNotValid, "The partition was left empty.");
    ExpectRefused(28, "- - -", em_ActPostValueNotValid, "The file was left empty.");
    ExpectRefused(24, "-", em_ActPostValueNotValid, "No index was given.");
    ExpectRefused(55, "eth0 - - - - -", em_ActPostValueNotValid, "The IP address");
    ExpectRefused(57, "-", em_ActPostValueNotValid, "The host name was left empty.");
    ExpectRefused(58, "- - -", em_ActPostValueNotValid, "The year was left empty.");
    ExpectRefused(59, "- - -", em_ActPostValueNotValid, "The hour was left empty.");
    ExpectRefused(56, "- - -", em_ActPostValueNotValid, "The user name was left empty.");
    ExpectRefused(52, "-", em_ActPostValueNotValid, "No interface name was given.");
}

TEST(CommandParser, DefaultRuleFormsBecomeTypedRules) {
    RuleAddRequest a = Parsed<RuleAddRequest>(33, "1 1 - 0 - 0 1");
    EXPECT_EQ(a.chain, kChainInput);
    EXPECT_TRUE(a.top);
    EXPECT_EQ(a.rule.proto, kProtoTcp);
    EXPECT_EQ(a.rule.src, "");
    EXPECT_EQ(a.rule.dport, 0);
    EXPECT_EQ(a.rule.action, kActAccept);
    RuleAddRequest b = Parsed<RuleAddRequest>(37, "2 2 10.0.0.0/8 53 - 22 2");
    EXPECT_EQ(b.chain, kChainOutput);
    EXPECT_FALSE(b.top);
    EXPECT_EQ(b.rule.proto, kProtoUdp);
    EXPECT_EQ(b.rule.src, "10.0.0.0/8");
    EXPECT_EQ(b.rule.sport, 53);
    EXPECT_EQ(b.rule.dport, 22);
    EXPECT_EQ(b.rule.action, kActDrop);
    ExpectRefused(33, "1 1 - 0 - 70000 1", em_ActPostValueNotValid,
                  "The destination port must be a number from 0 to 65535, not \"70000\".");
    ExpectRefused(33, "1 1 1.2.3 0 - 0 1", em_ActPostValueNotValid,
                  "The source address must be an IPv4 address");
}

TEST(CommandParser, ProcessEntriesMayBeAbsolutePathsWithArguments) {
    ListRequest l =
        Parsed<ListRequest>(15, "/usr/sbin/nginx -g daemon\\ off;\nsshd\ncron -f\nsshd\n");
    ASSERT_EQ(l.entries.size(), 3u);
    EXPECT_EQ(l.entries[0], "/usr/sbin/nginx -g daemon\\ off;");
    EXPECT_EQ(l.entries[2], "cron -f");
    ExpectRefused(15, "usr/sbin/nginx -g x\n", em_ActPostValueNotValid,
                  "\"usr/sbin/nginx -g x\" is not a command line");
    Parsed<ListRequest>(15, "python3 /srv/app/main.py\n");
}

TEST(CommandParser, DeleteIndexesAreCheckedAgainstTheListLength) {
    ExpectRefused(24, "0", em_ActPostValueNotValid, "numbered from 1");
    ExpectRefused(24, "x", em_ActPostValueNotValid, "not \"x\"");
    EXPECT_EQ(Parsed<DeleteRequest>(24, "12").index, 12u);
    CmdResult r;
    EXPECT_TRUE(CheckDeleteIndex(3, 3, r));
    EXPECT_FALSE(CheckDeleteIndex(4, 3, r));
    EXPECT_EQ(r.iCode, em_ActPostValueNotValid);
    EXPECT_EQ(r.sDetail, "There is no entry 4; the list has 3 entries, numbered 1 to 3.");
    EXPECT_FALSE(CheckDeleteIndex(2, 1, r));
    EXPECT_EQ(r.sDetail, "There is no entry 2; the list has 1 entry, numbered 1.");
    EXPECT_FALSE(CheckDeleteIndex(1, 0, r));
    EXPECT_EQ(r.sDetail, "The list is empty.");
}

TEST(CommandParser, EveryCatalogueNumberHasAParser) {
    for (short cmd = 4; cmd <= 63; ++cmd) {
        bool reserved = cmd == 12 || cmd == 22 || cmd == 27 || cmd >= 61;
        EXPECT_EQ(IsSetCommand(cmd), !reserved) << cmd;
        if (reserved)
            ExpectRefused(cmd, "", em_ActNotPrepare, "is not supported.");
    }
    ExpectRefused(64, "", em_ActNotPrepare, "is not known.");
}

// The simulator regenerates a list's display lines after every change, so
// the indexes shown are the ones the next delete takes.
TEST(SimListLines, FollowEveryChange) {
    nvtest::UseUtc();
    nvtest::TestEngine e("", nvtest::DemoStatePath());
    size_t vols = e.engine->Snapshot().conf.vsDV.size();
    ASSERT_EQ(e.Apply(23, "/dev/vdz1 100 10 5").iCode, em_ActSuccAll);
    SimState s = e.engine->Snapshot();
    ASSERT_EQ(s.conf.vsDV.size(), vols + 1);
    EXPECT_NE(s.conf.vsDV.back().find("/dev/vdz1"), std::string::npos);
    ASSERT_EQ(e.Apply(24, "1").iCode, em_ActSuccAll);
    s = e.engine->Snapshot();
    ASSERT_EQ(s.conf.vsDV.size(), vols);
    EXPECT_EQ(s.conf.vsDV[0].substr(0, 3), "  1");
    EXPECT_NE(s.conf.vsDV.back().find("/dev/vdz1"), std::string::npos);
    CmdResult past = e.Apply(24, std::to_string(vols + 1));
    EXPECT_EQ(past.iCode, em_ActPostValueNotValid);
    EXPECT_NE(past.sDetail.find("the list has " + std::to_string(vols)), std::string::npos)
        << past.sDetail;

    size_t rules = s.svr.vsIptablesInputList.size();
    ASSERT_EQ(e.Apply(33, "1 1 - 0 - 2222 2").iCode, em_ActSuccAll);
    s = e.engine->Snapshot();
    ASSERT_EQ(s.svr.vsIptablesInputList.size(), rules + 1);
    EXPECT_NE(s.svr.vsIptablesInputList[0].find("2222"), std::string::npos);
    ASSERT_EQ(e.Apply(34, "1").iCode, em_ActSuccAll);
    EXPECT_EQ(e.engine->Snapshot().svr.vsIptablesInputList.size(), rules);

    ASSERT_EQ(e.Apply(52, "eth0").iCode, em_ActSuccAll);
    std::string lines;
    for (const std::string& l : e.engine->Snapshot().svr.vsIfconfigList)
        lines += l + "\n";
    ASSERT_EQ(e.Apply(53, "eth0").iCode, em_ActSuccAll);
    std::string after;
    for (const std::string& l : e.engine->Snapshot().svr.vsIfconfigList)
        after += l + "\n";
    EXPECT_NE(lines, after);
}

}  // namespace
