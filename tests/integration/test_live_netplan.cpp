// The live agent's interface commands where netplan configures the
// interface over systemd-networkd: inside the namespace sandbox started
// with --networkd and --dhcp, nv0 is defined by a cloud-init style
// 50-cloud-init.yaml. Each change is read back with netplan get (exactly
// the requested addressing), networkctl and ip; cloud-init's network
// configuration is switched off as cloud-init documents; a change that
// fails (no lease) puts netplan's files and the interface back.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>

#include "child_process.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

const std::string kCloud = "/etc/netplan/50-cloud-init.yaml";
const std::string kCloudText =
    "# This file is generated from information provided by the datasource.  Changes\n"
    "# to it will not persist across an instance reboot.  To disable cloud-init's\n"
    "# network configuration capabilities, write a file\n"
    "# /etc/cloud/cloud.cfg.d/99-disable-network-config.cfg with the following:\n"
    "# network: {config: disabled}\n"
    "network:\n"
    "    version: 2\n"
    "    ethernets:\n"
    "        nv0:\n"
    "            addresses: [10.77.0.5/24]\n"
    "            routes:\n"
    "            -   to: default\n"
    "                via: 10.77.0.1\n";
const std::string kOther = "/etc/netplan/01-other.yaml";
const std::string kOtherText =
    "network:\n  version: 2\n  renderer: networkd\n  ethernets:\n    eth9:\n      dhcp4: true\n";
const std::string kSwitch = "/etc/cloud/cloud.cfg.d/99-disable-network-config.cfg";

class LiveNetplan : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox() || getenv("NV_SANDBOX_DBUS_CONF") == nullptr)
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh --networkd";
        // Every case starts from the cloud image's netplan file, in force.
        Tool({"rm", "-rf", "/etc/netplan", kSwitch, "/etc/systemd/network/00-norvane-nv0.network"});
        Tool({"mkdir", "-p", "/etc/netplan"});
        ASSERT_TRUE(nvtest::WriteFile(kCloud, kCloudText));
        ASSERT_TRUE(nvtest::WriteFile(kOther, kOtherText));
        chmod(kCloud.c_str(), 0600);
        chmod(kOther.c_str(), 0600);
        int code = -1;
        Tool({"netplan", "generate"}, &code);
        ASSERT_EQ(code, 0);
        Tool({"ip", "-4", "addr", "flush", "dev", "nv0"});
        Tool({"networkctl", "reload"});
        Tool({"networkctl", "reconfigure", "nv0"});
        // Until networkd has settled on it (a lease of the case before gone).
        for (int i = 0, held = 0; i < 150 && held < 5; ++i) {
            std::string a = Addr();
            bool settled = a.find("inet 10.77.0.5/24") != std::string::npos &&
                           a.find("dynamic") == std::string::npos;
            held = settled ? held + 1 : 0;
            usleep(100000);
        }
        ASSERT_NE(Addr().find("inet 10.77.0.5/24"), std::string::npos) << Addr();
        ran = true;
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    void TearDown() override {
        if (ran) {
            EXPECT_EQ(nvtest::ReadFile(kOther), kOtherText);
            EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        }
    }
    static std::string Get() { return Tool({"netplan", "get", "ethernets.nv0"}); }
    static std::string Addr() { return Tool({"ip", "-4", "-o", "addr", "show", "dev", "nv0"}); }
    static std::string DefaultRoute() { return Tool({"ip", "-4", "route", "show", "default"}); }
    int Send(short cmd, const std::string& payload) {
        return agent.Send(cmd, payload, &detail, 120000);
    }
    nvtest::LiveAgent agent;
    std::string detail;
    bool ran = false;
};

TEST_F(LiveNetplan, ManualAddressReplacesTheCloudInitOne) {
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 10.77.0.1 -"), em_ActSuccAll)
        << detail;
    EXPECT_NE(detail.find("cloud-init"), std::string::npos) << detail;
    EXPECT_NE(nvtest::ReadFile(kSwitch).find("network: {config: disabled}"), std::string::npos);
    // Exactly the requested addressing: the old address is gone, not
    // merged into a list with the new one.
    EXPECT_EQ(Get(),
              "addresses:\n- \"10.77.0.9/24\"\nnameservers:\n  addresses:\n  - 10.77.0.1\n"
              "dhcp4: false\nroutes:\n- to: \"default\"\n  via: \"10.77.0.1\"\n");
    std::string a = Addr();
    EXPECT_NE(a.find("inet 10.77.0.9/24"), std::string::npos) << a;
    EXPECT_EQ(a.find("10.77.0.5/"), std::string::npos) << a;
    EXPECT_NE(DefaultRoute().find("default via 10.77.0.1 dev nv0"), std::string::npos);
    EXPECT_NE(Tool({"networkctl", "list", "nv0"}).find("routable"), std::string::npos)
        << Tool({"networkctl", "list", "nv0"});
}

TEST_F(LiveNetplan, DhcpFromTheServerBehindThePeer) {
    ASSERT_EQ(Send(54, "nv0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Get(), "dhcp4: true\n");
    std::string a = Addr();
    EXPECT_NE(a.find("inet 10.77.0.1"), std::string::npos) << a;
    EXPECT_NE(a.find("dynamic"), std::string::npos) << a;
    EXPECT_EQ(a.find("10.77.0.5/"), std::string::npos) << a;
    EXPECT_EQ(Send(54, "nv0"), em_ActNeedNoSet) << detail;
}

TEST_F(LiveNetplan, DownAndUpThroughTheActivationMode) {
    ASSERT_EQ(Send(52, "nv0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_NE(Get().find("activation-mode: \"off\""), std::string::npos) << Get();
    ASSERT_EQ(Send(53, "nv0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Get().find("activation-mode"), std::string::npos) << Get();
    EXPECT_NE(Addr().find("inet 10.77.0.5/24"), std::string::npos) << Addr();
    EXPECT_NE(DefaultRoute().find("default via 10.77.0.1 dev nv0"), std::string::npos);
}

TEST_F(LiveNetplan, NoLeasePutsNetplansFilesAndTheInterfaceBack) {
    nvtest::DhcpServerPause noServer;
    ASSERT_TRUE(noServer.Stopped());
    EXPECT_EQ(Send(54, "nv0"), em_ActFail) << detail;
    EXPECT_NE(detail.find("the old settings were put back"), std::string::npos) << detail;
    EXPECT_EQ(nvtest::ReadFile(kCloud), kCloudText);
    EXPECT_EQ(Tool({"ls", "/etc/netplan"}), "01-other.yaml\n50-cloud-init.yaml\n");
    EXPECT_NE(Get().find("10.77.0.5/24"), std::string::npos) << Get();
    EXPECT_NE(Addr().find("inet 10.77.0.5/24"), std::string::npos) << Addr();
    EXPECT_NE(DefaultRoute().find("default via 10.77.0.1 dev nv0"), std::string::npos);
}

}  // namespace
