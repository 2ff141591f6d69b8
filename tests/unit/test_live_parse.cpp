// The live backend's readers that turn system text into the state record
// (iptables rules, the FTP and Samba configurations, /proc/meminfo,
// os-release), its settings file, and its tool runner.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "agent/live/ftp_config.h"
#include "agent/live/live_firewall.h"
#include "agent/live/live_services.h"
#include "agent/live/live_settings.h"
#include "agent/live/live_sysinfo.h"
#include "agent/live/run_process.h"
#include "agent/state_json.h"
#include "inherited_junk.h"
#include "temp_dir.h"

using namespace nvagent;

namespace {

TEST(LiveFirewall, RulesOfOurShapeUseOurColumnsOthersAreShownAsIptablesPrintsThem) {
    const char* text =
        "-P INPUT DROP\n"
        "-P FORWARD ACCEPT\n"
        "-P OUTPUT ACCEPT\n"
        "-N custom\n"
        "-A INPUT -p tcp -m tcp --dport 22 -j ACCEPT\n"
        "-A INPUT -s 10.0.0.0/8 -d 192.168.1.20/32 -p udp -m udp --sport 53 -j DROP\n"
        "-A INPUT -i lo -j ACCEPT\n"
        "-A custom -j RETURN\n"
        "-A OUTPUT -p tcp -m tcp --dport 25 -j REJECT --reject-with icmp-port-unreachable\n"
        "-A OUTPUT -p tcp -m tcp --dport 26 -j REJECT --reject-with tcp-reset\n";
    ChainView in, out;
    ParseIptablesRules(text, in, out);
    EXPECT_EQ(in.policy, '2');
    EXPECT_EQ(out.policy, '1');
    ASSERT_EQ(in.lines.size(), 3u);
    EXPECT_EQ(in.lines[0], "  1  tcp  any:any  -> any:22   ACCEPT");
    EXPECT_EQ(in.lines[1], "  2  udp  10.0.0.0/8:53  -> 192.168.1.20:any  DROP");
    EXPECT_EQ(in.lines[2], "  3  -i lo -j ACCEPT");
    ASSERT_EQ(out.lines.size(), 2u);
    EXPECT_EQ(out.lines[0], "  1  tcp  any:any  -> any:25   REJECT");
    EXPECT_EQ(out.lines[1], "  2  -p tcp -m tcp --dport 26 -j REJECT --reject-with tcp-reset");
    EXPECT_EQ(in.specs[2], "-i lo -j ACCEPT");
}

TEST(LiveFirewall, NoOutputGivesEmptyChainsWithUnknownPolicy) {
    ChainView in, out;
    ParseIptablesRules("", in, out);
    EXPECT_EQ(in.policy, '0');
    EXPECT_TRUE(in.lines.empty());
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
