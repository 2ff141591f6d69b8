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
{"cmd": 33, "len": 14, "payload_hex": "34362d202020ff1e2d2032322000", "result": 1}
{"cmd": 33, "len": 14, "payload_hex": "34362d203d20302032202032032d", "result": 1}
{"cmd": 33, "len": 14, "payload_hex": "34362d203d20302032202032032d", "result": 1}
{"cmd": 7680, "len": 14, "payload_hex": "0003002d00000d0000332a410021", "result": -80}
{"cmd": 7680, "len": 14, "payload_hex": "0003002d00000d0000332a410021", "result": -80}
{"cmd": 7680, "len": 14, "payload_hex": "0003002d00000d0000332a410021", "result": -80}
{"cmd": 7, "len": 8, "payload_hex": "330e353534343332", "result": 1}
{"cmd": 7, "len": 8, "payload_hex": "330e243535343433", "result": 1}
{"cmd": 7, "len": 8, "payload_hex": "330e1f3535343433", "result": 1}
{"cmd": 58, "len": 8, "payload_hex": "330e1f3535343433", "result": 1}
{"cmd": 58, "len": 8, "payload_hex": "330e30202d200000", "result": 2}
{"cmd": 33, "len": 14, "payload_hex": "312031202d203000202020203120", "result": 1}
{"cmd": 33, "len": 14, "payload_hex": "ccdfcedf2d203000202020203120", "result": 2}
{"cmd": 0, "len": 31, "payload_hex": "00002100ccdfcedf2d2030002020202031202d203000202020443032443032", "result": -78, "note": "closed after 31 of 4878 payload bytes"}
{"cmd": 0, "len": 0, "payload_hex": "", "result": -81, "note": "packet length 14488340 outside 6..1048576"}
{"cmd": 0, "len": 66, "payload_hex": "00002100ccdfcedf2d2030002020202031202d2030002020204430324430dd0000000000002100ccdfcedf2d2030002020202031202d203000202020443032443032", "result": -78, "note": "closed after 66 of 4878 payload bytes"}
{"cmd": 43, "len": 8, "payload_hex": "2f737276d196f470", "result": 2}
{"cmd": 43, "len": 8, "payload_hex": "2f737276d196f470", "result": 2}
{"cmd": 43, "len": 8, "payload_hex": "2f737276d196f470", "result": 2}
{"cmd": 43, "len": 0, "payload_hex": "", "result": -81, "note": "packet length 16646158 outside 6..1048576"}
{"cmd": 43, "len": 0, "payload_hex": "", "result": -81, "note": "packet length 16646158 outside 6..1048576"}
{"cmd": 33, "len": 14, "payload_hex": "312031202d2030202d203232e0ce", "result": 1}
{"cmd": 33, "len": 14, "payload_hex": "312031202d2030202d203232e0ce", "result": 1}
{"cmd": 33, "len": 14, "payload_hex": "312031202d2030202d203232e0ce", "result": 1}
{"cmd": 33, "len": 14, "payload_hex": "312031202d2030202d203232e0ce", "result": 1}
{"cmd": 33, "len": 14, "payload_hex": "312031202d2030202d203232e0ce", "result": 1}
{"cmd": 25, "len": 14, "payload_hex": "31e801000001000400313d00ffe4", "result": 1}
