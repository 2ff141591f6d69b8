// Editing ifupdown's interfaces file: one interface's stanza and auto line
// change, everything else stays byte for byte.
#include <gtest/gtest.h>

#include "agent/live/ifupdown_config.h"

using namespace nvagent;

namespace {

const char* const kFile =
    "# interfaces(5) file\n"
    "source /etc/network/interfaces.d/*\n"
    "\n"
    "auto lo eth0\n"
    "iface lo inet loopback\n"
    "\n"
    "iface eth0 inet static\n"
    "    address 10.0.0.5\n"
    "    # keep this comment? no: it belongs to the stanza\n"
    "    netmask 255.0.0.0\n"
    "\n"
    "allow-hotplug eth1\n"
    "iface eth1 inet dhcp\n";

TEST(IfupdownConfig, StanzaOfOneInterface) {
    EXPECT_EQ(IfaceStanza(kFile, "eth1"), "iface eth1 inet dhcp\n");
    EXPECT_EQ(IfaceStanza(kFile, "eth9"), "");
    EXPECT_TRUE(IsAutoStarted(kFile, "eth0"));
    EXPECT_TRUE(IsAutoStarted(kFile, "eth1"));
    EXPECT_FALSE(IsAutoStarted(kFile, "eth9"));
}

TEST(IfupdownConfig, ReplacingAStanzaKeepsEverythingElse) {
    std::string out = WithIface(kFile, "eth0", "iface eth0 inet dhcp\n", true);
    EXPECT_EQ(out,
              "# interfaces(5) file\n"
              "source /etc/network/interfaces.d/*\n"
              "\n"
              "auto lo\n"
              "iface lo inet loopback\n"
              "\n"
              "auto eth0\n"
              "iface eth0 inet dhcp\n"
              "allow-hotplug eth1\n"
              "iface eth1 inet dhcp\n");
}

TEST(IfupdownConfig, DownRemovesOnlyTheAutoLine) {
    std::string out = WithIface(kFile, "eth1", "iface eth1 inet dhcp\n", false);
    EXPECT_EQ(out.find("allow-hotplug eth1"), std::string::npos);
    EXPECT_NE(out.find("iface eth1 inet dhcp\n"), std::string::npos);
    EXPECT_NE(out.find("auto lo eth0\n"), std::string::npos);
}

TEST(IfupdownConfig, NewInterfaceIsAppended) {
    std::string out = WithIface("source x\n", "nv0", "iface nv0 inet dhcp\n", true);
    EXPECT_EQ(out, "source x\n\nauto nv0\niface nv0 inet dhcp\n");
}

}  // namespace
