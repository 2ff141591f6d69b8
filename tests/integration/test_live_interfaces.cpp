// The live agent's interface commands inside the namespace sandbox, with a
// real DHCP server (dnsmasq) behind the veth pair: down, up, DHCP and a
// manual address take effect at once (read back with ip) and persist in
// ifupdown's interfaces file.
#include <gtest/gtest.h>

#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

class LiveInterfaces : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    int Send(short cmd, const std::string& payload) { return agent.Send(cmd, payload, &detail); }
    static std::string Addr(const std::string& dev) {
        return Tool({"ip", "-4", "-o", "addr", "show", "dev", dev});
    }
    static std::string Interfaces() { return nvtest::ReadFile("/etc/network/interfaces"); }
    nvtest::LiveAgent agent;
    std::string detail;
};

TEST_F(LiveInterfaces, ManualAddressAtOnceAndInTheInterfacesFile) {
    EXPECT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 10.77.0.1 -"), em_ActSuccAll)
        << detail;
    EXPECT_NE(Addr("nv0").find("inet 10.77.0.9/24"), std::string::npos) << Addr("nv0");
    EXPECT_NE(Tool({"ip", "route", "show", "default"}).find("default via 10.77.0.1 dev nv0"),
              std::string::npos);
    std::string file = Interfaces();
    EXPECT_NE(file.find("auto nv0\niface nv0 inet static\n    address 10.77.0.9\n    netmask "
                        "255.255.255.0\n    gateway 10.77.0.1\n    dns-nameservers 10.77.0.1\n"),
              std::string::npos)
        << file;
    EXPECT_NE(file.find("source /etc/network/interfaces.d/*"), std::string::npos);
    EXPECT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 10.77.0.1 -"), em_ActNeedNoSet);
    EXPECT_NE(Tool({"ip", "route", "get", "10.77.0.1"}).find("dev nv0 src 10.77.0.9"),
              std::string::npos);
    EXPECT_EQ(Send(55, "nv9 10.77.0.9 255.255.255.0 - - -"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(55, "lo 127.0.0.2 255.0.0.0 - - -"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.9.9.9 - -"), em_ActPostValueNotValid);
}

TEST_F(LiveInterfaces, DhcpFromTheServerBehindThePeer) {
    EXPECT_EQ(Send(54, "nv0"), em_ActSuccAll) << detail;
    std::string a = Addr("nv0");
    EXPECT_NE(a.find("inet 10.77.0.1"), std::string::npos) << a;
    EXPECT_NE(a.find("dynamic"), std::string::npos) << a;
    EXPECT_NE(Interfaces().find("auto nv0\niface nv0 inet dhcp\n"), std::string::npos);
    cConf_Inf conf;
    cSvrState svr;
    std::string err;
    ASSERT_TRUE(agent.Check(conf, svr, err)) << err;
    bool shown = false;
    for (const std::string& l : svr.vsIfconfigList)
        shown =
            shown || (l.find("nv0") != std::string::npos && l.find("dynamic") != std::string::npos);
    EXPECT_TRUE(shown) << ::testing::PrintToString(svr.vsIfconfigList);
    EXPECT_EQ(Send(54, "nv0"), em_ActNeedNoSet);
    EXPECT_EQ(Send(54, "lo"), em_ActPostValueNotValid);
}

TEST_F(LiveInterfaces, DownAndUpPersistInTheAutoLine) {
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 - - -"), em_ActSuccAll) << detail;
    EXPECT_EQ(Send(52, "nv0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_EQ(Interfaces().find("auto nv0"), std::string::npos);
    EXPECT_NE(Interfaces().find("iface nv0 inet static"), std::string::npos);
    EXPECT_EQ(Send(52, "nv0"), em_ActNeedNoSet);
    EXPECT_EQ(Send(53, "nv0"), em_ActSuccAll) << detail;
    EXPECT_NE(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_NE(Interfaces().find("auto nv0\niface nv0 inet static"), std::string::npos);
    EXPECT_EQ(Send(52, "nv9"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(52, "-"), em_ActPostValueNotValid);
}

TEST_F(LiveInterfaces, AManagerThatOwnsItsFilesIsNotOverruled) {
    Tool({"mkdir", "-p", "/etc/netplan"});
    ASSERT_TRUE(nvtest::WriteFile("/etc/netplan/01-net.yaml", "network: {version: 2}\n"));
    std::string before = Interfaces();
    EXPECT_EQ(Send(54, "nv0"), em_ActFail);
    EXPECT_NE(detail.find("netplan"), std::string::npos) << detail;
    EXPECT_EQ(Interfaces(), before);
    Tool({"rm", "-rf", "/etc/netplan"});
}

}  // namespace
