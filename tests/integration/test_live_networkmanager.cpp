// The live agent's interface commands where NetworkManager manages the
// interface: inside the namespace sandbox started with --nm (a private
// system bus and the real NetworkManager) and --dhcp (dnsmasq behind the
// veth pair). Each change goes to the connection profile active on nv0 and
// is read back with nmcli, ip and the profile's keyfile; a change that
// fails (no lease) is rolled back through NetworkManager's checkpoint; an
// interface NetworkManager leaves unmanaged stays ifupdown's; and a
// NetworkManager of another network namespace is not the agent's.
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

const std::string kKeyfile = "/etc/NetworkManager/system-connections/site.nmconnection";

class LiveNetworkManager : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox() || getenv("NV_SANDBOX_NM") == nullptr)
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh --nm";
        // Every case starts from the site's own static profile, active.
        for (const std::string& uuid : Lines(Tool({"nmcli", "-g", "UUID,TYPE", "connection"}))) {
            if (uuid.find("loopback") == std::string::npos)
                Tool({"nmcli", "connection", "delete", uuid.substr(0, uuid.find(':'))});
        }
        Tool({"nmcli", "device", "set", "nv0", "managed", "yes"});
        int code = -1;
        Tool({"nmcli", "connection", "add", "type", "ethernet", "ifname", "nv0", "con-name", "site",
              "ipv4.method", "manual", "ipv4.addresses", "10.77.0.5/24", "ipv4.gateway",
              "10.77.0.1", "ipv6.method", "disabled"},
             &code);
        ASSERT_EQ(code, 0);
        Tool({"nmcli", "connection", "up", "site"}, &code);
        ASSERT_EQ(code, 0);
        mainFile = nvtest::ReadFile("/etc/network/interfaces");
        ran = true;
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    void TearDown() override {
        if (!ran)
            return;
        EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        nvtest::WriteFile("/etc/network/interfaces", mainFile);
        // No checkpoint is ever left behind.
        EXPECT_EQ(Checkpoints(), "ao 0\n");
    }
    static std::vector<std::string> Lines(const std::string& text) {
        std::vector<std::string> out;
        size_t start = 0;
        while (start < text.size()) {
            size_t end = text.find('\n', start);
            out.push_back(text.substr(start, end - start));
            start = end == std::string::npos ? text.size() : end + 1;
        }
        return out;
    }
    static std::string Checkpoints() {
        return Tool({"busctl", "get-property", "org.freedesktop.NetworkManager",
                     "/org/freedesktop/NetworkManager", "org.freedesktop.NetworkManager",
                     "Checkpoints"});
    }
    static std::string Profile(const std::string& fields) {
        return Tool({"nmcli", "-g", fields, "connection", "show", "site"});
    }
    static std::string Addr() { return Tool({"ip", "-4", "-o", "addr", "show", "dev", "nv0"}); }
    static std::string DefaultRoute() { return Tool({"ip", "-4", "route", "show", "default"}); }
    static std::string DeviceState() {
        return Tool({"nmcli", "-g", "GENERAL.STATE", "device", "show", "nv0"});
    }
    int Send(short cmd, const std::string& payload) {
        return agent.Send(cmd, payload, &detail, 120000);
    }
    nvtest::LiveAgent agent;
    std::string detail;
    std::string mainFile;
    bool ran = false;
};

TEST_F(LiveNetworkManager, ManualAddressInTheActiveProfile) {
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 10.77.0.1 10.77.0.2"), em_ActSuccAll)
        << detail;
    EXPECT_NE(Addr().find("inet 10.77.0.9/24"), std::string::npos) << Addr();
    EXPECT_EQ(Addr().find("10.77.0.5/"), std::string::npos) << Addr();
    EXPECT_NE(DefaultRoute().find("default via 10.77.0.1 dev nv0"), std::string::npos);
    EXPECT_EQ(Profile("ipv4.method,ipv4.addresses,ipv4.gateway,ipv4.dns"),
              "manual\n10.77.0.9/24\n10.77.0.1\n10.77.0.1,10.77.0.2\n");
    // The profile is the one that was active; no second one was made.
    EXPECT_EQ(Tool({"nmcli", "-g", "NAME", "connection", "show", "--active"}).find("site"), 0u);
    EXPECT_EQ(Tool({"nmcli", "-g", "NAME", "connection"}).find("norvane"), std::string::npos);
    std::string keyfile = nvtest::ReadFile(kKeyfile);
    EXPECT_NE(keyfile.find("address1=10.77.0.9/24"), std::string::npos) << keyfile;
    EXPECT_NE(keyfile.find("dns=10.77.0.1;10.77.0.2;"), std::string::npos) << keyfile;
    EXPECT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 10.77.0.1 10.77.0.2"),
              em_ActNeedNoSet)
        << detail;
}

TEST_F(LiveNetworkManager, DhcpFromTheServerBehindThePeer) {
    ASSERT_EQ(Send(54, "nv0"), em_ActSuccAll) << detail;
    std::string a = Addr();
    EXPECT_NE(a.find("inet 10.77.0.1"), std::string::npos) << a;
    EXPECT_NE(a.find("dynamic"), std::string::npos) << a;
    EXPECT_EQ(Profile("ipv4.method,ipv4.addresses"), "auto\n\n");
    std::string keyfile = nvtest::ReadFile(kKeyfile);
    EXPECT_NE(keyfile.find("method=auto"), std::string::npos) << keyfile;
    EXPECT_EQ(keyfile.find("10.77.0.5"), std::string::npos) << keyfile;
    EXPECT_EQ(Send(54, "nv0"), em_ActNeedNoSet) << detail;
}

TEST_F(LiveNetworkManager, DownAndUpThroughTheProfile) {
    ASSERT_EQ(Send(52, "nv0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_EQ(Addr(), "");
    EXPECT_EQ(DeviceState().find("100"), std::string::npos) << DeviceState();
    EXPECT_EQ(Profile("connection.autoconnect"), "no\n");
    EXPECT_NE(nvtest::ReadFile(kKeyfile).find("autoconnect=false"), std::string::npos);
    ASSERT_EQ(Send(53, "nv0"), em_ActSuccAll) << detail;
    EXPECT_NE(Addr().find("inet 10.77.0.5/24"), std::string::npos) << Addr();
    EXPECT_NE(DefaultRoute().find("default via 10.77.0.1 dev nv0"), std::string::npos);
    EXPECT_NE(DeviceState().find("100"), std::string::npos) << DeviceState();
    EXPECT_EQ(Profile("connection.autoconnect"), "yes\n");
}

TEST_F(LiveNetworkManager, AnUnmanagedInterfaceIsLeftToIfupdown) {
    ASSERT_EQ(Tool({"nmcli", "device", "set", "nv0", "managed", "no"}), "");
    std::string profile = nvtest::ReadFile(kKeyfile);
    ASSERT_EQ(Send(55, "nv0 10.77.0.11 255.255.255.0 - - -"), em_ActSuccAll) << detail;
    EXPECT_NE(nvtest::ReadFile("/etc/network/interfaces")
                  .find("iface nv0 inet static\n    address 10.77.0.11\n"),
              std::string::npos);
    EXPECT_NE(Addr().find("inet 10.77.0.11/24"), std::string::npos) << Addr();
    EXPECT_EQ(nvtest::ReadFile(kKeyfile), profile);
    Tool({"ifdown", "--force", "nv0"});
}

TEST_F(LiveNetworkManager, NoLeaseRollsBackThroughTheCheckpoint) {
    // The DHCP server goes away (and comes back for the cases after).
    nvtest::DhcpServerPause noServer;
    ASSERT_TRUE(noServer.Stopped());
    std::string keyfile = nvtest::ReadFile(kKeyfile);
    EXPECT_EQ(Send(54, "nv0"), em_ActFail) << detail;
    EXPECT_NE(detail.find("NetworkManager put the old settings back"), std::string::npos) << detail;
    EXPECT_NE(Addr().find("inet 10.77.0.5/24"), std::string::npos) << Addr();
    EXPECT_NE(DefaultRoute().find("default via 10.77.0.1 dev nv0"), std::string::npos);
    EXPECT_EQ(Profile("ipv4.method,ipv4.addresses"), "manual\n10.77.0.5/24\n");
    EXPECT_NE(nvtest::ReadFile(kKeyfile).find("address1=10.77.0.5/24"), std::string::npos);
}

TEST_F(LiveNetworkManager, ANetworkManagerOfAnotherNamespaceIsNotTheAgents) {
    // An agent in the peer namespace: the NetworkManager on the bus runs in
    // the sandbox's namespace, not its own, so nvpeer0 is not its.
    nvtest::LiveAgent peer;
    peer.Process().SetLauncher({"/usr/bin/env", "ip", "netns", "exec", "peer"});
    std::string err;
    ASSERT_TRUE(peer.Start(&err)) << err << peer.Process().ReadStderr();
    std::string profiles = Tool({"nmcli", "-g", "UUID", "connection"});
    EXPECT_EQ(peer.Send(55, "nvpeer0 10.77.0.1 255.255.255.0 - - -", &detail, 60000), em_ActSuccAll)
        << detail;
    EXPECT_NE(nvtest::ReadFile("/etc/network/interfaces").find("iface nvpeer0 inet static"),
              std::string::npos);
    EXPECT_EQ(Tool({"nmcli", "-g", "UUID", "connection"}), profiles);
    EXPECT_NE(Tool({"ip", "-n", "peer", "-4", "-o", "addr", "show", "dev", "nvpeer0"})
                  .find("inet 10.77.0.1/24"),
              std::string::npos);
    EXPECT_EQ(peer.Stop(), 0);
}

}  // namespace
