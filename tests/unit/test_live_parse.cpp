// The live backend's readers that turn system text into the state record
// (iptables rules, the FTP and Samba configurations, /proc/meminfo,
// os-release), its settings file, and its tool runner.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "agent/live/firewall/firewall_read.h"
#include "agent/live/firewall/other_managers.h"
#include "agent/live/ftp_config.h"
#include "agent/live/live_services.h"
#include "agent/live/live_settings.h"
#include "agent/live/live_sysinfo.h"
#include "agent/live/run_process.h"
#include "agent/state_json.h"
#include "inherited_junk.h"
#include "temp_dir.h"

using namespace nvagent;

namespace {

TEST(LiveFirewall, OwnRulesIndexedInOurColumnsOtherToolsRulesAfterThemWithTheirOwner) {
    const char* text =
        "-P INPUT DROP\n"
        "-P FORWARD ACCEPT\n"
        "-P OUTPUT ACCEPT\n"
        "-N NORVANE-INPUT\n"
        "-N NORVANE-OUTPUT\n"
        "-N f2b-sshd\n"
        "-A INPUT -p tcp -m multiport --dports 22 -j f2b-sshd\n"
        "-A INPUT -j ufw-before-input\n"
        "-A INPUT -i lo -j ACCEPT\n"
        "-A INPUT -j NORVANE-INPUT\n"
        "-A NORVANE-INPUT -i lo -m comment --comment norvane-keep -j ACCEPT\n"
        "-A NORVANE-INPUT -p tcp -m tcp --dport 22 -j ACCEPT\n"
        "-A NORVANE-INPUT -s 10.0.0.0/8 -d 192.168.1.20/32 -p udp -m udp --sport 53 -j DROP\n"
        "-A NORVANE-INPUT -p tcp -m tcp --dport 27 -j LOG\n"
        "-A f2b-sshd -j RETURN\n"
        "-A OUTPUT -j NORVANE-OUTPUT\n"
        "-A NORVANE-OUTPUT -p tcp -m tcp --dport 25 -j REJECT --reject-with "
        "icmp-port-unreachable\n";
    std::string text6 =
        "-P INPUT ACCEPT\n"
        "-P OUTPUT ACCEPT\n"
        "-N NORVANE-INPUT\n"
        "-A INPUT -j NORVANE-INPUT\n"
        "-A NORVANE-INPUT -p tcp -m tcp --dport 22 -j ACCEPT\n"
        "-A NORVANE-OUTPUT -p tcp -m tcp --dport 25 -j REJECT --reject-with "
        "icmp6-port-unreachable\n";
    ChainView in, out;
    ParseIptablesRules(text, in, out, &text6);
    EXPECT_EQ(in.policy, '0');
    EXPECT_EQ(out.policy, '1');
    EXPECT_TRUE(in.v4.jump);
    EXPECT_TRUE(in.v4.own);
    EXPECT_FALSE(out.v6.jump);
    ASSERT_EQ(in.specs.size(), 3u);
    EXPECT_EQ(in.lines, std::vector<std::string>({
                            "Policy: IPv4 drop, IPv6 accept",
                            "     agent: loopback ACCEPT (kept for the drop policy)",
                            "  1  tcp  any:any  -> any:22   ACCEPT",
                            "  2  udp  10.0.0.0/8:53  -> 192.168.1.20:any  DROP",
                            "  3  -p tcp -m tcp --dport 27 -j LOG",
                            "     fail2ban: -p tcp -m multiport --dports 22 -j f2b-sshd",
                            "     ufw: -j ufw-before-input",
                            "     other: -i lo -j ACCEPT",
                        }));
    EXPECT_EQ(out.lines, std::vector<std::string>(
                             {"Policy: accept", "  1  tcp  any:any  -> any:25   REJECT"}));
    FwRule r;
    EXPECT_TRUE(AsOwnRule(out.v6.specs[0], r));
    EXPECT_EQ(r.action, kActReject);
}

TEST(LiveFirewall, OwnersToldFromTheJumpsTarget) {
    EXPECT_EQ(RuleOwner("-j ufw6-before-input"), "ufw");
    EXPECT_EQ(RuleOwner("-s 10.1.1.1/32 -j f2b-sshd"), "fail2ban");
    EXPECT_EQ(RuleOwner("-j DOCKER-USER"), "docker");
    EXPECT_EQ(RuleOwner("-j INPUT_direct"), "firewalld");
    EXPECT_EQ(RuleOwner("-p tcp -j ACCEPT"), "other");
    EXPECT_EQ(RuleOwner("-i lo"), "other");
}

TEST(LiveFirewall, OtherBaseChainsOnTheInputAndOutputHooksButIptablesOwn) {
    const char* text =
        "table inet filter {\n"
        "\tchain input {\n"
        "\t\ttype filter hook input priority filter; policy drop;\n"
        "\t}\n"
        "\tchain forward {\n"
        "\t\ttype filter hook forward priority filter; policy drop;\n"
        "\t}\n"
        "\tchain output {\n"
        "\t\ttype filter hook output priority filter; policy accept;\n"
        "\t}\n"
        "}\n"
        "table ip filter {\n"
        "\tchain INPUT {\n"
        "\t\ttype filter hook input priority filter; policy accept;\n"
        "\t}\n"
        "\tchain NORVANE-INPUT {\n"
        "\t}\n"
        "}\n"
        "table inet firewalld {\n"
        "\tchain filter_INPUT {\n"
        "\t\ttype filter hook input priority filter + 10; policy accept;\n"
        "\t}\n"
        "}\n";
    std::vector<BaseChain> c = ParseNftChains(text);
    ASSERT_EQ(c.size(), 3u);
    EXPECT_EQ(c[0].owner, "nftables");
    EXPECT_EQ(c[0].table, "inet filter");
    EXPECT_EQ(c[0].chain, "input");
    EXPECT_TRUE(c[0].drop);
    EXPECT_EQ(c[1].hook, 1);
    EXPECT_FALSE(c[1].drop);
    EXPECT_EQ(c[2].owner, "firewalld");
    OtherFilters f;
    f.chains = c;
    EXPECT_EQ(OtherFilterLines(f, 0),
              std::vector<std::string>(
                  {"     nftables: table inet filter, chain input on the input hook, policy drop",
                   "     firewalld: table inet firewalld, chain filter_INPUT on the input hook, "
                   "policy accept"}));
    EXPECT_NE(OtherFiltersNote(f, 0, true).find("nftables's table inet filter, chain input"),
              std::string::npos);
    EXPECT_EQ(OtherFiltersNote(f, 0, false), "");
    EXPECT_EQ(OtherFiltersNote(f, 1, true), "");
}

TEST(LiveFirewall, FirewalldRunningGetsFirewallCmdsOwnCommand) {
    ChainView views[2];
    EXPECT_EQ(ActiveManager(views), "");
    views[0].filters.chains.push_back(
        {"firewalld", "inet firewalld", "filter_INPUT", 0, false, "accept"});
    ASSERT_EQ(ActiveManager(views), "firewalld");
    RuleAddRequest q{kChainInput, false, FwRule()};
    q.chain = kChainInput;
    q.rule.src = "10.0.0.0/8";
    q.rule.dport = 22;
    CmdResult r = ManagerAddRule("firewalld", q);
    EXPECT_EQ(r.iCode, em_ActFail);
    EXPECT_EQ(r.sDetail,
              "firewalld manages this server's firewall, so the agent leaves the change to it: "
              "firewall-cmd --permanent --add-rich-rule='rule family=\"ipv4\" source "
              "address=\"10.0.0.0/8\" port port=\"22\" protocol=\"tcp\" accept', then "
              "firewall-cmd --reload.");
    q.chain = kChainOutput;
    q.top = true;
    q.rule.action = kActDrop;
    EXPECT_NE(ManagerAddRule("firewalld", q)
                  .sDetail.find("--direct --add-rule ipv4 filter OUTPUT 0 -p tcp -s 10.0.0.0/8 "
                                "--dport 22 -j DROP, then"),
              std::string::npos);
    PolicyRequest p{kChainInput, kActDrop};
    p.chain = kChainInput;
    p.policy = kActDrop;
    EXPECT_NE(ManagerPolicy("firewalld", p).sDetail.find("--set-target=DROP"), std::string::npos);
}

TEST(LiveFirewall, NoOutputGivesEmptyChainsWithUnknownPolicy) {
    ChainView in, out;
    ParseIptablesRules("", in, out);
    EXPECT_EQ(in.policy, '0');
    EXPECT_EQ(in.lines, std::vector<std::string>({"Policy: unknown"}));
    EXPECT_TRUE(in.specs.empty());
}

TEST(LiveServices, FtpOptionsFromTheConfigurationFile) {
    cConf_Inf c;
    ParseFtpConfig(
        "# comment anonymous_enable=YES\n"
        "anonymous_enable=YES\n"
        "local_enable=NO\n"
        "write_enable=YES\n"
        "anon_upload_enable=yes\n"
        "anon_root=/srv/ftp pub\n"
        "unknown_key=1\n",
        c);
    EXPECT_EQ(c.chVsftpdAnonEnable, '1');
    EXPECT_EQ(c.chVsftpdLocalEnable, '0');
    EXPECT_EQ(c.chVsftpdWrite, '1');
    EXPECT_EQ(c.chVsftpdAnonUpload, '1');
    EXPECT_EQ(c.chVsftpdAnonMkdir, '0');
    EXPECT_EQ(c.sVsftpdAnonRoot, "/srv/ftp pub");
}

TEST(LiveServices, FtpOptionsAsTheServerReadsThem) {
    // The last directive counts; blanks before an option are ignored, a "#"
    // only in the first column starts a comment, names are exact and a
    // value is taken as it stands (a blank after YES is no YES).
    cConf_Inf c;
    ParseFtpConfig(
        "anonymous_enable=NO\n"
        "anonymous_enable=YES\n"
        "  local_enable=TRUE\n"
        "WRITE_ENABLE=YES\n"
        "anon_upload_enable=YES \n"
        "anon_mkdir_write_enable=1\n"
        "anon_mkdir_write_enable=yes\r\n",
        c);
    EXPECT_EQ(c.chVsftpdAnonEnable, '1');
    EXPECT_EQ(c.chVsftpdLocalEnable, '1');
    EXPECT_EQ(c.chVsftpdWrite, '0');
    EXPECT_EQ(c.chVsftpdAnonUpload, '0');
    EXPECT_EQ(c.chVsftpdAnonMkdir, '0');
}

TEST(LiveServices, AnFtpOptionIsSetWhereTheServerReadsItAndSaidOnce) {
    std::string text =
        "# anonymous_enable=YES\nanonymous_enable=NO\nlisten=YES\n anonymous_enable=YES\n"
        "local_enable=YES\n";
    std::string next = WithFtpOption(text, "anonymous_enable", "NO");
    EXPECT_EQ(next, "# anonymous_enable=YES\nlisten=YES\nanonymous_enable=NO\nlocal_enable=YES\n");
    cConf_Inf c;
    c.chVsftpdAnonEnable = '1';
    ParseFtpConfig(next, c);
    EXPECT_EQ(c.chVsftpdAnonEnable, '0');
    EXPECT_EQ(WithFtpOption("listen=YES", "write_enable", "NO"), "listen=YES\nwrite_enable=NO\n");
    EXPECT_EQ(
        WithoutFtpOption("anon_root=/a\n#anon_root=/b\nlisten=YES\n anon_root=/c\n", "anon_root"),
        "#anon_root=/b\nlisten=YES\n");
}

TEST(LiveServices, ASambaLineEndingInABackslashGoesOnOnTheNext) {
    cConf_Inf c;
    ParseSambaConfig("[norvane]\n  path = /srv/a\\\n  read only = no\n", c);
    EXPECT_EQ(c.sSambaSharePath, "/srv/a  read only = no");
    EXPECT_EQ(c.chSambaShareWrite, '0');
}

TEST(LiveServices, OnlyTheAgentsOwnShareSectionCounts) {
    cConf_Inf c;
    ParseSambaConfig(
        "[global]\n  workgroup = WORKGROUP\n"
        "[other]\n  path = /srv/other\n  read only = no\n"
        "[ Norvane ]\n  ; comment\n  path = /srv/share\n  read only = no\n"
        "[last]\n  path = /x\n",
        c);
    EXPECT_EQ(c.sSambaSharePath, "/srv/share");
    EXPECT_EQ(c.chSambaShareWrite, '1');
    cConf_Inf d;
    ParseSambaConfig("[norvane]\npath=/a\nwritable = no\n", d);
    EXPECT_EQ(d.sSambaSharePath, "/a");
    EXPECT_EQ(d.chSambaShareWrite, '0');
}

TEST(LiveSysinfo, DistributionFamilies) {
    EXPECT_EQ(OsReleaseFamily("NAME=\"Ubuntu\"\nID=ubuntu\nID_LIKE=debian\n"), emOSUbuntu);
    EXPECT_EQ(OsReleaseFamily("ID=\"centos\"\n"), emOSCentos);
    EXPECT_EQ(OsReleaseFamily("ID=fedora\n"), emOSFedora);
    EXPECT_EQ(OsReleaseFamily("ID=\"opensuse-leap\"\n"), emOSSuse);
    EXPECT_EQ(OsReleaseFamily("ID=\"rhel\"\n"), emOSRedhat);
    EXPECT_EQ(OsReleaseFamily("ID=debian\n"), emOSUnknown);
    EXPECT_EQ(OsReleaseFamily(""), emOSUnknown);
}

TEST(LiveSettings, SavedAtomicallyAndLoadedBack) {
    nvtest::TempDir dir;
    std::string path = SettingsPath(dir.File("data/sub"));
    cConf_Inf c = DefaultConf();
    c.vProcessMonitList = {"/usr/sbin/nginx -g x", "cron"};
    c.shCpuCeil = 80;
    c.chLangCode = 2;
    c.chTcpSyncookies = '1';  // not an agent setting: not saved
    std::string err;
    ASSERT_TRUE(SaveSettings(path, c, err)) << err;
    cConf_Inf back = DefaultConf();
    ASSERT_TRUE(LoadSettings(path, back, err)) << err;
    EXPECT_EQ(back.vProcessMonitList, c.vProcessMonitList);
    EXPECT_EQ(back.shCpuCeil, 80);
    EXPECT_EQ(back.chLangCode, 2);
    EXPECT_EQ(back.chTcpSyncookies, '\0');
    EXPECT_EQ(nvtest::ReadFile(path).find("chTcpSyncookies"), std::string::npos);
    cConf_Inf none = DefaultConf();
    EXPECT_TRUE(LoadSettings(dir.File("missing.json"), none, err));
    ASSERT_TRUE(nvtest::WriteFile(path, "{ not json"));
    EXPECT_FALSE(LoadSettings(path, none, err));
    EXPECT_NE(err.find(path), std::string::npos);
}

TEST(RunTool, ExitStatusOutputAndStandardInput) {
    ToolRun ok = RunTool({"cat"}, "secret\n");
    EXPECT_TRUE(ok.Ok());
    EXPECT_EQ(ok.sOut, "secret\n");
    ToolRun bad = RunTool({"false"});
    EXPECT_TRUE(bad.bStarted);
    EXPECT_EQ(bad.iExitCode, 1);
    EXPECT_FALSE(bad.Ok());
    EXPECT_NE(bad.Why("false").find("exit 1"), std::string::npos);
    ToolRun missing = RunTool({"no-such-tool-anywhere"});
    EXPECT_FALSE(missing.bStarted);
}

TEST(RunTool, CleanEnvironmentAndTimeLimit) {
    setenv("NV_LEAK_CHECK", "leaked", 1);
    ToolRun env = RunTool({"env"});
    ASSERT_TRUE(env.Ok());
    EXPECT_EQ(env.sOut.find("NV_LEAK_CHECK"), std::string::npos);
    EXPECT_NE(env.sOut.find("LC_ALL=C"), std::string::npos);
    ToolRun slow = RunTool({"sleep", "5"}, "", 200);
    EXPECT_TRUE(slow.bTimedOut);
    EXPECT_FALSE(slow.Ok());
}

TEST(RunTool, OnlyTheThreePipesDefaultSignalsAndTheRootDirectory) {
    // What the agent may hold when it runs a tool: a descriptor without
    // close-on-exec, an ignored SIGQUIT, a blocked SIGUSR1, a secret.
    int leaked = open("/dev/null", O_RDONLY);
    ASSERT_GE(leaked, 3);
    ToolRun fds, status;
    {
        nvtest::InheritedJunk junk;
        fds = RunTool({"sh", "-c", "ls /proc/$$/fd; echo; pwd"});
        status = RunTool({"cat", "/proc/self/status"});
    }
    close(leaked);
    ASSERT_TRUE(fds.Ok()) << fds.sErr;
    // ls's own directory descriptor is 3 in the child of the shell, not in
    // the shell: the shell holds 0, 1 and 2, and what it opened itself
    // (dash: none; bash: 255).
    std::string listing = fds.sOut.substr(0, fds.sOut.find("\n\n"));
    for (std::string::size_type at = 0; at < listing.size();) {
        std::string::size_type nl = listing.find('\n', at);
        std::string fd = listing.substr(at, nl - at);
        EXPECT_TRUE(fd == "0" || fd == "1" || fd == "2" || fd == "255") << fd;
        at = nl == std::string::npos ? listing.size() : nl + 1;
    }
    EXPECT_EQ(listing.find(std::to_string(leaked) + "\n"), std::string::npos) << listing;
    EXPECT_NE(fds.sOut.find("\n\n/\n"), std::string::npos) << fds.sOut;
    ASSERT_TRUE(status.Ok());
    EXPECT_NE(status.sOut.find("\nSigIgn:\t0000000000000000\n"), std::string::npos) << status.sOut;
    EXPECT_NE(status.sOut.find("\nSigBlk:\t0000000000000000\n"), std::string::npos) << status.sOut;
}

}  // namespace
