// The console against the live agent inside the namespace sandbox: a
// network switch changed on the screen reaches the kernel, read back with
// sysctl, and the rebuilt page shows what the kernel now holds.
#include <gtest/gtest.h>

#include "live_sandbox.h"
#include "temp_dir.h"
#include "test_screen_edit_util.h"

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

}  // namespace
