// Editing ifupdown's interfaces file: one interface's stanza and auto line
// change, everything else stays byte for byte.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "agent/live/interfaces/ifupdown_config.h"
#include "temp_dir.h"

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
              "auto lo eth0\n"
              "iface lo inet loopback\n"
              "\n"
              "iface eth0 inet dhcp\n"
              "\n"
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

TEST(IfupdownConfig, UnindentedOptionLinesBelongToTheStanza) {
    // ifupdown reads option lines whether indented or not: replacing the
    // stanza must not leave the old address behind under the new one.
    const std::string text =
        "auto eth0\niface eth0 inet static\naddress 10.0.0.5\nnetmask 255.0.0.0\n"
        "gateway 10.0.0.1\n\niface eth1 inet dhcp\n";
    EXPECT_EQ(IfaceStanza(text, "eth0"),
              "iface eth0 inet static\naddress 10.0.0.5\nnetmask 255.0.0.0\ngateway 10.0.0.1\n");
    EXPECT_EQ(WithIface(text, "eth0", "iface eth0 inet dhcp\n", true),
              "auto eth0\niface eth0 inet dhcp\n\niface eth1 inet dhcp\n");
}

TEST(IfupdownConfig, AnAllowHotplugLineIsKeptWhenUp) {
    std::string out =
        WithIface(kFile, "eth1", "iface eth1 inet static\n    address 1.2.3.4\n", true);
    EXPECT_NE(out.find("allow-hotplug eth1\niface eth1 inet static\n"), std::string::npos) << out;
    EXPECT_EQ(out.find("auto eth1"), std::string::npos) << out;
}

TEST(IfupdownConfig, IncludedFilesAreReadAndTheStanzaEditedWhereItIs) {
    nvtest::TempDir dir;
    std::string d = dir.Path();
    ASSERT_EQ(mkdir((d + "/interfaces.d").c_str(), 0755), 0);
    ASSERT_EQ(mkdir((d + "/more").c_str(), 0755), 0);
    ASSERT_TRUE(
        nvtest::WriteFile(d + "/interfaces", "auto lo\niface lo inet loopback\nsource " + d +
                                                 "/interfaces.d/*\nsource-directory more\n"));
    ASSERT_TRUE(
        nvtest::WriteFile(d + "/interfaces.d/50-cloud-init", "auto eth0\niface eth0 inet dhcp\n"));
    // Not a run-parts name: source-directory skips it.
    ASSERT_TRUE(nvtest::WriteFile(d + "/more/skip.bak", "iface eth2 inet dhcp\n"));
    ASSERT_TRUE(nvtest::WriteFile(d + "/more/eth1", "iface eth1 inet manual\n"));
    std::vector<IfupdownFile> files = ReadIfupdownFiles(d + "/interfaces");
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[1].path, d + "/interfaces.d/50-cloud-init");
    EXPECT_EQ(files[2].path, d + "/more/eth1");
    EXPECT_EQ(StanzaFileIndex(files, "eth0"), 1);
    EXPECT_EQ(StanzaFileIndex(files, "eth1"), 2);
    EXPECT_EQ(StanzaFileIndex(files, "eth2"), -1);
    std::vector<IfupdownFile> next =
        WithIfaceIn(files, "eth0", "iface eth0 inet static\n    address 10.0.0.5/24\n", true);
    EXPECT_EQ(next[0].text, files[0].text);
    EXPECT_EQ(next[1].text, "auto eth0\niface eth0 inet static\n    address 10.0.0.5/24\n");
    EXPECT_EQ(next[2].text, files[2].text);
    // Down: the auto line goes wherever it is; up again: it comes back
    // before the stanza in the stanza's file.
    next = WithIfaceIn(files, "eth0", "iface eth0 inet dhcp\n", false);
    EXPECT_EQ(next[1].text, "iface eth0 inet dhcp\n");
    next = WithIfaceIn(next, "eth1", "iface eth1 inet manual\n", true);
    EXPECT_EQ(next[2].text, "auto eth1\niface eth1 inet manual\n");
    // An interface with no stanza gets one in the main file.
    next = WithIfaceIn(files, "eth3", "iface eth3 inet dhcp\n", true);
    EXPECT_NE(next[0].text.find("auto eth3\niface eth3 inet dhcp\n"), std::string::npos);
    EXPECT_EQ(next[1].text, files[1].text);
}

TEST(IfupdownConfig, IncludeLoopsEnd) {
    nvtest::TempDir dir;
    std::string d = dir.Path();
    ASSERT_TRUE(nvtest::WriteFile(d + "/interfaces", "source " + d + "/interfaces\n"));
    EXPECT_EQ(ReadIfupdownFiles(d + "/interfaces").size(), 1u);
    EXPECT_TRUE(ReadIfupdownFiles(d + "/missing").empty());
}

}  // namespace
