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
    ExpectRefused(32, "    ", em_ActPostCmdBuffFmtError,
                  "The policy is one choice, 1 (accept) or 2 (drop), without blanks.");
    PolicyRequest p = Parsed<PolicyRequest>(36, "2");
    EXPECT_EQ(p.chain, kChainOutput);
    EXPECT_EQ(p.policy, kActDrop);
}

TEST(CommandParser, FormsWithTheWrongNumberOfFieldsNameTheCount) {
    ExpectRefused(23, "/dev/vdb1 1 2", em_ActPostCmdBuffFmtError,
                  "Expected 4 values separated by single blanks, got 3.");
    ExpectRefused(33, "1 1 - 0 - 22", em_ActPostCmdBuffFmtError, "Expected 7 values");
    ExpectRefused(55, "eth0 10.0.0.1", em_ActPostCmdBuffFmtError, "got 2");
}

// A blank inside a field's value is said in the user's terms: which field
// cannot contain blanks, not how many tokens the payload split into.
TEST(CommandParser, ABlankInAValueNamesTheField) {
    struct Case {
        short cmd;
        const char* payload;
        const char* detail;
    };
    const Case kCases[] = {
        {57, "web 02", "A host name cannot contain blanks."},
        {57, "web02 ", "A host name cannot contain blanks."},
        {56, "admin my pass my pass", "A password cannot contain blanks."},
        {56, "admin a b c a b c", "A password cannot contain blanks."},
        {56, "ad min pw pw", "A user name cannot contain blanks."},
        {56, "admin my pass other", "A user name or password cannot contain blanks."},
        {60, "admin $6$a b", "A user name or password hash cannot contain blanks."},
        {52, "eth 0", "An interface name cannot contain blanks."},
        {53, "eth0 eth1", "An interface name cannot contain blanks."},
        {54, "e 1", "An interface name cannot contain blanks."},
        {55, "eth0  10.0.0.1 255.0.0.0 - - -",
         "An interface name or address cannot contain blanks."},
        {24, "1 2", "An index cannot contain blanks."},
        {29, "1 ", "An index cannot contain blanks."},
        {34, " 1", "An index cannot contain blanks."},
        {38, "1 2", "An index cannot contain blanks."},
        {32, "1 2", "The policy is one choice, 1 (accept) or 2 (drop), without blanks."},
        {36, "1 2", "The policy is one choice, 1 (accept) or 2 (drop), without blanks."},
        {58, "20 26 11 24", "The year, month and day cannot contain blanks."},
        {59, "10 3 0 0", "The hour, minute and second cannot contain blanks."},
        {23, "/mnt/my disk 100 10 5",
         "A partition, ceiling, floor or interval cannot contain blanks."},
        {28, "/etc/my file /var/backups 64",
         "A file, backup directory or size cannot contain blanks."},
        {33, "1 1 10.0.0.1 0 - 22 1 1", "A rule's addresses and ports cannot contain blanks."},
        {37, "1 1 - 0 10.0.0. 1 22 1", "A rule's addresses and ports cannot contain blanks."},
    };
    for (const Case& c : kCases) {
        CmdResult r = Refusal(c.cmd, c.payload);
        EXPECT_EQ(r.iCode, em_ActPostCmdBuffFmtError) << c.cmd << " \"" << c.payload << "\"";
        EXPECT_EQ(r.sDetail, c.detail) << c.cmd << " \"" << c.payload << "\"";
    }
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
                  "The source address must be an address or address/prefix");
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

// The system's tools read a part with a leading zero as octal ("010" is 8),
// so such an address would be checked as one address and applied as another.
TEST(CommandParser, LeadingZerosAreRefusedInEveryAddressField) {
    ExpectRefused(33, "1 1 010.0.0.1 0 - 0 1", em_ActPostValueNotValid,
                  "The source address 010.0.0.1 has a leading zero");
    ExpectRefused(37, "1 1 - 0 10.0.0.0/08 0 1", em_ActPostValueNotValid,
                  "The destination address 10.0.0.0/08 has a leading zero");
    ExpectRefused(33, "1 1 10.00.0.1/8 0 - 0 1", em_ActPostValueNotValid, "leading zero");
    ExpectRefused(55, "eth0 010.0.0.5 255.0.0.0 - - -", em_ActPostValueNotValid,
                  "The IP address 010.0.0.5 has a leading zero");
    ExpectRefused(55, "eth0 10.0.0.5 255.000.0.0 - - -", em_ActPostValueNotValid,
                  "The mask 255.000.0.0 has a leading zero");
    ExpectRefused(55, "eth0 10.0.0.5 255.0.0.0 010.0.0.1 - -", em_ActPostValueNotValid,
                  "The gateway 010.0.0.1 has a leading zero");
    ExpectRefused(55, "eth0 10.0.0.5 255.0.0.0 - 08.8.8.8 -", em_ActPostValueNotValid,
                  "The first DNS server 08.8.8.8 has a leading zero");
    ExpectRefused(55, "eth0 10.0.0.5 255.0.0.0 - - 1.1.1.01", em_ActPostValueNotValid,
                  "The second DNS server 1.1.1.01 has a leading zero");
    // A lone zero is a part, not a leading zero.
    EXPECT_EQ(Parsed<RuleAddRequest>(33, "1 1 0.0.0.0/0 0 10.0.0.0/8 0 1").rule.src, "0.0.0.0/0");
    EXPECT_EQ(Parsed<InterfaceManualRequest>(55, "eth0 10.0.0.5 255.0.0.0 10.0.0.1 - -").gateway,
              "10.0.0.1");
}

TEST(CommandParser, InterfaceNamesAreKernelNamesNoToolReadsAsAnythingElse) {
    for (short cmd : {52, 53, 54}) {
        ExpectRefused(cmd, "-a", em_ActPostValueNotValid, "cannot start with \"-\"");
        ExpectRefused(cmd, "--all", em_ActPostValueNotValid, "cannot start with \"-\"");
        ExpectRefused(cmd, "-", em_ActPostValueNotValid, "No interface name was given.");
        ExpectRefused(cmd, "eth0123456789012", em_ActPostValueNotValid, "at most 15 bytes");
        ExpectRefused(cmd, ".", em_ActPostValueNotValid, "are not interface names");
        ExpectRefused(cmd, "..", em_ActPostValueNotValid, "are not interface names");
        for (const char* bad : {"eth*", "e?h0", "eth[01]", "a/b", "eth0:1", "!eth0", "e\\0",
                                "eth%i", "eth\t0", "\xc3\xa9th0"}) {
            ExpectRefused(cmd, bad, em_ActPostValueNotValid, "cannot hold blanks or any of");
        }
        EXPECT_EQ(Parsed<InterfaceRequest>(cmd, "eth0123456789_1").name, "eth0123456789_1");
        EXPECT_EQ(Parsed<InterfaceRequest>(cmd, "br-lan.10").name, "br-lan.10");
    }
    ExpectRefused(55, "-a 10.0.0.5 255.0.0.0 - - -", em_ActPostValueNotValid, "\"-\"");
    ExpectRefused(55, "en* 10.0.0.5 255.0.0.0 - - -", em_ActPostValueNotValid, "any of");
}

TEST(CommandParser, AddressesThatBreakTheInterfaceAreRefused) {
    auto refused = [](const std::string& p, const std::string& detail) {
        ExpectRefused(55, "eth0 " + p, em_ActPostValueNotValid, detail);
        EXPECT_LT(Refusal(55, "eth0 " + p).sDetail.size(), 78u) << Refusal(55, "eth0 " + p).sDetail;
    };
    refused("10.0.0.5 0.0.0.0 - - -", "The mask 0.0.0.0 leaves no network");
    refused("10.0.0.5 255.0.255.0 - - -", "contiguous");
    refused("10.0.0.5 - - - -", "contiguous");
    refused("0.0.0.0 255.0.0.0 - - -", "The IP address 0.0.0.0 is unspecified.");
    refused("0.1.2.3 255.0.0.0 - - -", "in 0.0.0.0/8");
    refused("127.0.0.2 255.0.0.0 - - -", "a loopback address");
    refused("224.0.0.5 255.255.255.0 - - -", "a multicast address");
    refused("240.0.0.5 255.255.255.0 - - -", "reserved");
    refused("255.255.255.255 255.255.255.255 - - -", "the broadcast address");
    refused("192.168.1.0 255.255.255.0 - - -", "192.168.1.0 is the network's own address");
    refused("192.168.1.255 255.255.255.0 - - -", "the network's broadcast address");
    refused("192.168.1.5 255.255.255.0 192.168.2.1 - -", "not in the interface's network");
    refused("192.168.1.5 255.255.255.0 192.168.1.5 - -", "cannot be the interface's own");
    refused("192.168.1.5 255.255.255.0 192.168.1.255 - -", "broadcast address");
    refused("192.168.1.5 255.255.255.0 192.168.1.0 - -", "network's own address");
    refused("192.168.1.5 255.255.255.0 - 0.0.0.0 -", "The first DNS server 0.0.0.0");
    refused("192.168.1.5 255.255.255.0 - - 224.0.0.251", "multicast");
    // /31 and /32 networks have no network or broadcast address to avoid;
    // a local resolver on the loopback is a DNS server.
    Parsed<InterfaceManualRequest>(55, "eth0 10.0.0.0 255.255.255.254 10.0.0.1 - -");
    Parsed<InterfaceManualRequest>(55, "eth0 10.0.0.7 255.255.255.255 - 127.0.0.53 -");
    Parsed<InterfaceManualRequest>(55, "eth0 169.254.3.4 255.255.0.0 - - -");
    Parsed<InterfaceManualRequest>(55, "eth0 192.168.1.254 255.255.255.0 192.168.1.1 1.1.1.1 -");
}

TEST(CommandParser, HostNamesThatReadAsAddressesOrTheLoopbackAreRefused) {
    for (const char* name : {"123", "1.2.3.4", "10.0.0.1", "0", "007.42"}) {
        ExpectRefused(57, name, em_ActPostValueNotValid, "A host name cannot be all digits.");
    }
    for (const char* name :
         {"localhost", "LocalHost", "localhost.localdomain", "LOCALHOST.LOCALDOMAIN"}) {
        ExpectRefused(57, name, em_ActPostValueNotValid, "names the loopback");
    }
    EXPECT_EQ(Parsed<HostNameRequest>(57, "web02").name, "web02");
    EXPECT_EQ(Parsed<HostNameRequest>(57, "1.2.3.a").name, "1.2.3.a");
    EXPECT_EQ(Parsed<HostNameRequest>(57, "42web").name, "42web");
    EXPECT_EQ(Parsed<HostNameRequest>(57, "localhost2").name, "localhost2");
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
    EXPECT_NE(s.svr.vsIptablesInputList[1].find("2222"), std::string::npos);
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

TEST(CommandParser, BackupPathsUnderKernelDirectoriesOrWithDotPartsAreRefused) {
    const int kInvalid = em_ActPostValueNotValid;
    ExpectRefused(28, "/sys/kernel/uevent_seqnum /var/bak 1", kInvalid, "/proc, /sys or /dev");
    ExpectRefused(28, "//proc/self/status /var/bak 1", kInvalid, "/proc, /sys or /dev");
    ExpectRefused(28, "/var/log/app.log /dev/shm 1", kInvalid, "/proc, /sys or /dev");
    ExpectRefused(28, "/var/../sys/x /var/bak 1", kInvalid, "\"..\"");
    ExpectRefused(28, "/var/log/app.log /var/./bak 1", kInvalid, "\".\"");
    Request req;
    CmdResult r;
    EXPECT_TRUE(ParseCommand(28, "/var/log/system/app.log /var/devices 1", req, r)) << r.sDetail;
}

}  // namespace
