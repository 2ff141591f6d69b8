// The agent's own .network file: its name sorts before the administrator's
// files, its text for each kind of setting, and the text read back.
#include <gtest/gtest.h>

#include "agent/live/interfaces/networkd_config.h"

using namespace nvagent;

namespace {

TEST(NetworkdConfig, TheFileSortsBeforeTheAdministratorsFiles) {
    EXPECT_EQ(NetworkdFilePath("eth0"), "/etc/systemd/network/00-norvane-eth0.network");
    EXPECT_LT(NetworkdFilePath("eth0"), std::string("/etc/systemd/network/10-eth0.network"));
    EXPECT_LT(NetworkdFilePath("eth0"), std::string("/etc/systemd/network/01-all.network"));
}

TEST(NetworkdConfig, ManualAddressWithGatewayAndTwoServers) {
    NetworkdSettings s;
    s.address = "10.0.0.5/24";
    s.gateway = "10.0.0.1";
    s.dns = {"10.0.0.2", "10.0.0.3"};
    EXPECT_EQ(NetworkdUnitText("eth0", s),
              "# The norvane agent's settings of eth0; replaced whole by its next change.\n"
              "[Match]\nName=eth0\n\n"
              "[Network]\nAddress=10.0.0.5/24\nGateway=10.0.0.1\nDNS=10.0.0.2\nDNS=10.0.0.3\n\n"
              "[Link]\nActivationPolicy=up\n");
}

TEST(NetworkdConfig, DhcpAndDownLeaveNoStaticLines) {
    NetworkdSettings s;
    s.dhcp = true;
    s.address = "10.0.0.5/24";
    s.gateway = "10.0.0.1";
    s.up = false;
    std::string t = NetworkdUnitText("nv0", s);
    EXPECT_NE(t.find("[Network]\nDHCP=ipv4\n\n[Link]\nActivationPolicy=down\n"), std::string::npos)
        << t;
    EXPECT_EQ(t.find("Address="), std::string::npos);
    EXPECT_EQ(t.find("Gateway="), std::string::npos);
}

TEST(NetworkdConfig, NoAddressAtAllIsAnEmptyNetworkSection) {
    NetworkdSettings s;
    EXPECT_NE(NetworkdUnitText("nv0", s).find("[Network]\n\n[Link]\nActivationPolicy=up\n"),
              std::string::npos);
}

TEST(NetworkdConfig, OwnTextReadsBackAsItsSettings) {
    NetworkdSettings s;
    s.address = "192.168.1.9/16";
    s.gateway = "192.168.0.1";
    s.dns = {"9.9.9.9"};
    s.up = false;
    NetworkdSettings back;
    ASSERT_TRUE(ParseNetworkdUnit(NetworkdUnitText("eth1", s), "eth1", back));
    EXPECT_TRUE(back == s);
    s = NetworkdSettings();
    s.dhcp = true;
    ASSERT_TRUE(ParseNetworkdUnit(NetworkdUnitText("eth1", s), "eth1", back));
    EXPECT_TRUE(back == s);
}

TEST(NetworkdConfig, ReadingToleratesOtherSpellingsAndKeys) {
    NetworkdSettings s;
    ASSERT_TRUE(
        ParseNetworkdUnit("; comment\n[Match]\nName=eth0 eth1\n[Network]\n"
                          "DHCP = yes\nDNS=1.1.1.1 8.8.8.8\nLLMNR=no\n"
                          "[Link]\nActivationPolicy=always-down\n",
                          "eth1", s));
    EXPECT_TRUE(s.dhcp);
    EXPECT_EQ(s.dns, (std::vector<std::string>{"1.1.1.1", "8.8.8.8"}));
    EXPECT_FALSE(s.up);
    // A Name= under another section does not count.
    EXPECT_FALSE(ParseNetworkdUnit("[Network]\nName=eth0\nDHCP=ipv4\n", "eth0", s));
    EXPECT_FALSE(ParseNetworkdUnit("[Match]\nName=eth00\n", "eth0", s));
    EXPECT_FALSE(ParseNetworkdUnit("", "eth0", s));
    EXPECT_FALSE(ParseNetworkdUnit("\x01\xff[[[\n=\n[Match\nName\n", "eth0", s));
}

}  // namespace
