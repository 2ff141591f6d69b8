// The console against the live agent inside the namespace sandbox: a
// network switch changed on the screen reaches the kernel, read back with
// sysctl, and a firewall rule added with the Input chain page's form is in
// the kernel's INPUT chain, read back with iptables; each rebuilt page shows
// what the kernel now holds.
#include <gtest/gtest.h>

#include "live_sandbox.h"
#include "temp_dir.h"
#include "test_screen_edit_util.h"
#include "test_screen_form_util.h"

namespace {

using namespace nvedit;

std::string Sysctl(const std::string& key) {
    std::string v = nvtest::Tool({"sysctl", "-n", key});
    if (!v.empty())
        v.pop_back();
    return v;
}

TEST(LiveScreen, NetworkSwitchOnScreenReachesTheKernel) {
    if (!nvtest::InSandbox())
        GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
    nvtest::Tool({"sysctl", "-w", "net.ipv4.icmp_echo_ignore_all=0"});
    nvtest::Tool({"sysctl", "-w", "net.ipv4.tcp_syncookies=1"});
    nvtest::Tool({"sysctl", "-w", "net.ipv4.tcp_tw_reuse=0"});
    nvtest::TempDir data;
    EditConsole c;
    c.SetAgentArgs({"--backend", "system", "--data-dir", data.File("data")});
    ASSERT_TRUE(c.Start());
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kNetworkLeaf, "Icmp Echo Ignore All:"));
    const std::string kOpen = "[Open]", kClose = "[Close]";
    auto rows = [&](const std::string& icmp) {
        return std::vector<PageRow>{{Raw(pcStrPingConfig, LAN_ENGLISH), icmp},
                                    {Raw(pcStrTcpSynConfig, LAN_ENGLISH), kOpen},
                                    {Raw(pcStrTcpWaitTimeReuse, LAN_ENGLISH), kClose}};
    };
    PageLayout p = LayOut(rows(kClose));
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows(kClose), p, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows(kOpen), p, 0, LAN_ENGLISH));
    }));
    EXPECT_EQ(Sysctl("net.ipv4.icmp_echo_ignore_all"), "1");
    EXPECT_NE(
        nvtest::ReadFile("/etc/sysctl.d/90-norvane.conf").find("net.ipv4.icmp_echo_ignore_all = 1"),
        std::string::npos);
}

TEST(LiveScreen, RuleAddedOnTheInputChainPageReachesTheKernel) {
    if (!nvtest::InSandbox())
        GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
    nvtest::Tool({"nft", "flush", "ruleset"});
    nvtest::TempDir data;
    nvform::FormConsole c;
    c.SetAgentArgs({"--backend", "system", "--data-dir", data.File("data")});
    ASSERT_TRUE(c.Start("", LAN_ENGLISH, 24, 100));
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(nvform::kInputLeaf, PROMPT_SCKEY_POLICY));
    ASSERT_TRUE(Eventually(
        s, [&] { return nvform::ListPageShows(s, {"Policy: accept"}, 0, PROMPT_SCKEY_POLICY); }));
    size_t from = c.JournalSize();
    s.SendKey(Key::F2);
    const std::string ip = "###.###.###.###";
    auto form = [&](const std::string& dport) {
        return std::vector<nvform::FormRow>{
            {Raw(pcStrPriority, LAN_ENGLISH), Raw(pcStrHighest, LAN_ENGLISH), 0, ""},
            {Raw(pcStrProtocol, LAN_ENGLISH), Raw(pcStrTcp, LAN_ENGLISH), 0, ""},
            {Raw(pcStrSrcIp, LAN_ENGLISH), ip, 20, ""},
            {Raw(pcStrSrcPort, LAN_ENGLISH), "####", 5, ""},
            {Raw(pcStrDesIp, LAN_ENGLISH), ip, 18, ""},
            {Raw(pcStrDesPort, LAN_ENGLISH), dport, 5, ""},
            {Raw(pcStrAction, LAN_ENGLISH), Raw(pcStrAccept, LAN_ENGLISH), 0, ""}};
    };
    ASSERT_TRUE(Eventually(s, [&] { return nvform::FormShows(s, form("####"), 0); }));
    s.SendKey(Key::Down, 5);
    s.SendKey(Key::Enter);
    s.SendText("22");
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return nvform::FormShows(s, form("22"), 5); }));
    s.SendKey(Key::F9);
    int result = 0;
    ASSERT_TRUE(
        Eventually(s, [&] { return nvform::OneSet(c, from, 33, "1 1 - 0 - 22 1", &result); }));
    ASSERT_EQ(result, em_ActSuccAll);
    EXPECT_EQ(nvtest::Tool({"iptables", "-S", "INPUT"}),
              "-P INPUT ACCEPT\n"
              "-A INPUT -j NORVANE-INPUT\n");
    EXPECT_EQ(nvtest::Tool({"iptables", "-S", "NORVANE-INPUT"}),
              "-N NORVANE-INPUT\n"
              "-A NORVANE-INPUT -p tcp -m tcp --dport 22 -j ACCEPT\n");
    tVecStr lines = c.LoadState()->objSS.vsIptablesInputList;
    ASSERT_EQ(lines, tVecStr({"Policy: accept", "  1  tcp  any:any  -> any:22   ACCEPT"}));
    ASSERT_TRUE(Eventually(s, [&] {
        return And(nvform::ListPageShows(s, lines, 0, PROMPT_SCKEY_POLICY),
                   nvform::InfoStartsWith(s, c.ResultText(em_ActSuccAll)));
    }));
}

}  // namespace
