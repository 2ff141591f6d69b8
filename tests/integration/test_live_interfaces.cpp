// The live agent's interface commands inside the namespace sandbox, with a
// real DHCP server (dnsmasq) behind the veth pair: down, up, DHCP and a
// manual address take effect at once (read back with ip) and persist in
// ifupdown's configuration, in whichever included file holds the stanza;
// the DNS servers reach an unmanaged /etc/resolv.conf, a failed ifup puts
// everything back (a DHCP client included), an interface no tool owns is
// changed live only, and programs merely named like a network daemon
// change nothing. Addresses with leading zeros and names a tool would read
// as options are refused.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "child_process.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "net_traffic.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

const char* const kResolv =
    "# the site's resolvers\nsearch example.org\nnameserver 192.0.2.53\noptions timeout:2\n";

class LiveInterfaces : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        mainFile = Interfaces();
        ran = true;
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    void TearDown() override {
        if (!ran)
            return;
        // The next case starts from the sandbox's own configuration.
        Tool({"ifdown", "--force", "nv0"});
        Tool({"pkill", "-x", "dhclient"});
        nvtest::WriteFile("/etc/network/interfaces", mainFile);
        Tool({"rm", "-rf", "/etc/network/interfaces.d/50-cloud-init", "/etc/network/nv0.cfg",
              "/etc/cloud/cloud.cfg.d/99-disable-network-config.cfg",
              "/etc/network/if-pre-up.d/zz-nvfail"});
        Tool({"ip", "-4", "addr", "flush", "dev", "nv0"});
        Tool({"ip", "link", "set", "nv0", "up"});
    }
    int Send(short cmd, const std::string& payload) { return agent.Send(cmd, payload, &detail); }
    static std::string Addr(const std::string& dev) {
        return Tool({"ip", "-4", "-o", "addr", "show", "dev", dev});
    }
    static std::string Interfaces() { return nvtest::ReadFile("/etc/network/interfaces"); }
    // The command lines of the dhclient processes serving nv0.
    static std::string DhcpClients() {
        std::string all = Tool({"pgrep", "-a", "-x", "dhclient"});
        std::string out;
        size_t start = 0;
        while (start < all.size()) {
            size_t end = all.find('\n', start);
            std::string line = all.substr(start, end - start);
            if (line.size() > 4 && line.compare(line.size() - 4, 4, " nv0") == 0)
                out += line + "\n";
            start = end == std::string::npos ? all.size() : end + 1;
        }
        return out;
    }
    static void FailNextIfup() {
        const std::string hook = "/etc/network/if-pre-up.d/zz-nvfail";
        ASSERT_TRUE(nvtest::WriteFile(hook, "#!/bin/sh\n[ \"$IFACE\" != nv0 ]\n"));
        chmod(hook.c_str(), 0755);
    }
    nvtest::LiveAgent agent;
    std::string detail;
    std::string mainFile;
    bool ran = false;
};

TEST_F(LiveInterfaces, ManualAddressAtOnceAndInTheInterfacesFile) {
    ASSERT_TRUE(nvtest::WriteFile("/etc/resolv.conf", kResolv));
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
    // No resolvconf and a file of the administrator's: the server is in
    // resolv.conf at once, every other line kept.
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"),
              "# the site's resolvers\nsearch example.org\nnameserver 10.77.0.1\n"
              "options timeout:2\n");
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
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 - -"), em_ActSuccAll) << detail;
    EXPECT_EQ(Send(52, "nv0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_EQ(Interfaces().find("auto nv0"), std::string::npos);
    EXPECT_NE(Interfaces().find("iface nv0 inet static"), std::string::npos);
    EXPECT_EQ(Send(52, "nv0"), em_ActNeedNoSet);
    EXPECT_EQ(Send(53, "nv0"), em_ActSuccAll) << detail;
    EXPECT_NE(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_NE(Interfaces().find("auto nv0\niface nv0 inet static"), std::string::npos);
    // Up brings back what the stanza says: the address and the default
    // route.
    EXPECT_NE(Addr("nv0").find("inet 10.77.0.9/24"), std::string::npos) << Addr("nv0");
    EXPECT_NE(Tool({"ip", "route", "show", "default"}).find("default via 10.77.0.1 dev nv0"),
              std::string::npos)
        << Tool({"ip", "route"});
    EXPECT_NE(Tool({"ip", "route", "get", "192.0.2.9"}).find("via 10.77.0.1 dev nv0 src 10.77.0.9"),
              std::string::npos);
    EXPECT_EQ(Send(52, "nv9"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(52, "-"), em_ActPostValueNotValid);
}

TEST_F(LiveInterfaces, UpAfterDownBringsBackAStanzaWrittenByHand) {
    // The administrator's stanza: a CIDR address, a gateway, a second
    // address and a route of its own, brought up by ifupdown at boot.
    ASSERT_TRUE(nvtest::WriteFile(
        "/etc/network/interfaces",
        mainFile + "\nauto nv0\niface nv0 inet static\n    address 10.77.0.9/24\n"
                   "    gateway 10.77.0.1\n    up ip addr add 10.77.0.19/24 dev nv0\n"
                   "    up ip route add 192.0.2.0/24 via 10.77.0.1 dev nv0\n"));
    Tool({"ip", "-4", "addr", "flush", "dev", "nv0"});
    int code = -1;
    Tool({"ifup", "nv0"}, &code);
    ASSERT_EQ(code, 0);
    nvtest::EchoServer echo("peer", 7007);
    ASSERT_TRUE(echo.Listening());
    ASSERT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7007));
    std::string file = Interfaces();
    ASSERT_EQ(Send(52, "nv0"), em_ActSuccAll) << detail;
    EXPECT_FALSE(nvtest::TcpEchoes("", "10.77.0.1", 7007, 500));
    EXPECT_EQ(Send(53, "nv0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Interfaces(), file);
    std::string a = Addr("nv0");
    EXPECT_NE(a.find("inet 10.77.0.9/24"), std::string::npos) << a;
    EXPECT_NE(a.find("inet 10.77.0.19/24"), std::string::npos) << a;
    std::string routes = Tool({"ip", "-4", "route", "show", "dev", "nv0"});
    EXPECT_NE(routes.find("default via 10.77.0.1"), std::string::npos) << routes;
    EXPECT_NE(routes.find("192.0.2.0/24 via 10.77.0.1"), std::string::npos) << routes;
    // Traffic to the peer, and from the peer to the stanza's address.
    EXPECT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7007));
    nvtest::EchoServer own("", 7008);
    EXPECT_TRUE(nvtest::TcpEchoes("peer", "10.77.0.9", 7008));
}

TEST_F(LiveInterfaces, UpAfterDownBringsBackAnAdoptedInterfaceAsItWas) {
    // No stanza yet: ifupdown adopts nv0, whose addressing was made by hand.
    ASSERT_EQ(Interfaces().find("nv0"), std::string::npos);
    Tool({"ip", "addr", "add", "10.77.0.9/24", "dev", "nv0"});
    Tool({"ip", "addr", "add", "10.77.0.19/24", "dev", "nv0"});
    Tool({"ip", "route", "add", "default", "via", "10.77.0.1", "dev", "nv0"});
    Tool({"ip", "route", "add", "192.0.2.0/24", "via", "10.77.0.1", "dev", "nv0"});
    nvtest::EchoServer echo("peer", 7007);
    ASSERT_TRUE(echo.Listening());
    ASSERT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7007));
    ASSERT_EQ(Send(52, "nv0"), em_ActSuccAll) << detail;
    EXPECT_NE(Interfaces().find("iface nv0 inet static\n    address 10.77.0.9\n"),
              std::string::npos)
        << Interfaces();
    EXPECT_EQ(Send(53, "nv0"), em_ActSuccAll) << detail;
    std::string a = Addr("nv0");
    EXPECT_NE(a.find("inet 10.77.0.9/24"), std::string::npos) << a;
    EXPECT_NE(a.find("inet 10.77.0.19/24"), std::string::npos) << a;
    std::string routes = Tool({"ip", "-4", "route", "show", "dev", "nv0"});
    EXPECT_NE(routes.find("default via 10.77.0.1"), std::string::npos) << routes;
    EXPECT_NE(routes.find("192.0.2.0/24 via 10.77.0.1"), std::string::npos) << routes;
    EXPECT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7007));
}

TEST_F(LiveInterfaces, AGeneratedResolvConfIsLeftAlone) {
    std::string generated =
        "# Dynamic resolv.conf(5) file for glibc resolver(3) generated by resolvconf(8)\n"
        "nameserver 192.0.2.1\n";
    ASSERT_TRUE(nvtest::WriteFile("/etc/resolv.conf", generated));
    ASSERT_EQ(Send(55, "nv0 10.77.0.11 255.255.255.0 - 10.77.0.1 -"), em_ActSuccAll) << detail;
    EXPECT_EQ(detail,
              "The DNS servers were stored in /etc/network/interfaces; /etc/resolv.conf is "
              "managed by resolvconf and was left as it is.");
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"), generated);
    EXPECT_NE(Interfaces().find("    dns-nameservers 10.77.0.1\n"), std::string::npos);
    // A symbolic link is another tool's too.
    unlink("/etc/resolv.conf");
    ASSERT_EQ(symlink("/run/resolvconf/resolv.conf", "/etc/resolv.conf"), 0);
    ASSERT_EQ(Send(55, "nv0 10.77.0.11 255.255.255.0 - 10.77.0.2 -"), em_ActSuccAll) << detail;
    EXPECT_NE(detail.find("managed by the tool that owns /run/resolvconf/resolv.conf"),
              std::string::npos)
        << detail;
    unlink("/etc/resolv.conf");
}

TEST_F(LiveInterfaces, AFailedIfupPutsEverythingBack) {
    ASSERT_TRUE(nvtest::WriteFile("/etc/resolv.conf", kResolv));
    ASSERT_EQ(Send(55, "nv0 10.77.0.12 255.255.255.0 10.77.0.1 - -"), em_ActSuccAll) << detail;
    std::string file = Interfaces();
    // A hook of the private /etc that makes the next ifup of nv0 fail.
    const std::string hook = "/etc/network/if-pre-up.d/zz-nvfail";
    ASSERT_TRUE(nvtest::WriteFile(hook, "#!/bin/sh\n[ \"$IFACE\" != nv0 ]\n"));
    chmod(hook.c_str(), 0755);
    EXPECT_EQ(Send(55, "nv0 10.77.0.13 255.255.255.0 10.77.0.1 10.77.0.1 -"), em_ActFail);
    unlink(hook.c_str());
    EXPECT_NE(detail.find("ifup failed"), std::string::npos) << detail;
    EXPECT_NE(detail.find("the old settings were put back"), std::string::npos) << detail;
    EXPECT_EQ(Interfaces(), file);
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"), kResolv);
    EXPECT_NE(Addr("nv0").find("inet 10.77.0.12/24"), std::string::npos) << Addr("nv0");
    EXPECT_NE(Tool({"ip", "route", "show", "default"}).find("default via 10.77.0.1 dev nv0"),
              std::string::npos)
        << Tool({"ip", "route"});
}

TEST_F(LiveInterfaces, AFailedChangeOnADhcpInterfaceKeepsItsClient) {
    ASSERT_EQ(Send(54, "nv0"), em_ActSuccAll) << detail;
    std::string lease = Addr("nv0");
    ASSERT_NE(lease.find("dynamic"), std::string::npos) << lease;
    ASSERT_NE(DhcpClients(), "");
    std::string file = Interfaces();
    FailNextIfup();
    EXPECT_EQ(Send(55, "nv0 10.77.0.13 255.255.255.0 10.77.0.1 - -"), em_ActFail);
    EXPECT_NE(detail.find("the old settings were put back"), std::string::npos) << detail;
    EXPECT_EQ(Interfaces(), file);
    // The interface as it was: a lease (not a static copy of it), the
    // default route, and a DHCP client running that renews the lease.
    std::string now = Addr("nv0");
    EXPECT_NE(now.find("inet 10.77.0.1"), std::string::npos) << now;
    EXPECT_NE(now.find("dynamic"), std::string::npos) << now;
    EXPECT_EQ(now.find("10.77.0.13/"), std::string::npos) << now;
    EXPECT_NE(Tool({"ip", "route", "show", "default"}).find("default via 10.77.0.1 dev nv0"),
              std::string::npos)
        << Tool({"ip", "route"});
    EXPECT_NE(DhcpClients(), "") << Tool({"pgrep", "-a", "dhclient"});
}

// How many leases the sandbox's DHCP server has granted or renewed.
int Acks() {
    std::string log = nvtest::ReadFile("/run/dnsmasq.log");
    int n = 0;
    for (size_t at = log.find("DHCPACK("); at != std::string::npos;
         at = log.find("DHCPACK(", at + 1))
        ++n;
    return n;
}

TEST_F(LiveInterfaces, ARollbackPutsBackEveryAddressRouteAndTheDhcpClient) {
    ASSERT_EQ(Send(54, "nv0"), em_ActSuccAll) << detail;
    std::string lease = Addr("nv0");
    ASSERT_NE(lease.find("dynamic"), std::string::npos) << lease;
    // More than the lease: a second IPv4 address, IPv6 addresses, a route
    // of each family.
    Tool({"ip", "addr", "add", "10.77.0.29/24", "dev", "nv0"});
    Tool({"ip", "-6", "addr", "add", "2001:db8:77::9/64", "dev", "nv0", "nodad"});
    Tool({"ip", "-6", "addr", "add", "2001:db8:78::9/64", "dev", "nv0", "nodad"});
    Tool({"ip", "route", "add", "192.0.2.0/24", "via", "10.77.0.1", "dev", "nv0"});
    Tool({"ip", "-6", "route", "add", "2001:db8:99::/64", "via", "2001:db8:77::1", "dev", "nv0"});
    std::string v4 = Addr("nv0");
    ASSERT_NE(v4.find("10.77.0.29/24"), std::string::npos) << v4;
    FailNextIfup();
    int acks = Acks();
    // Both ifups fail (the hook stays): the client must come back by hand.
    EXPECT_EQ(Send(55, "nv0 10.77.0.13 255.255.255.0 10.77.0.1 - -"), em_ActFail);
    unlink("/etc/network/if-pre-up.d/zz-nvfail");
    EXPECT_NE(detail.find("the old settings were put back"), std::string::npos) << detail;
    std::string now = Addr("nv0");
    EXPECT_NE(now.find("dynamic"), std::string::npos) << now;
    EXPECT_NE(now.find("10.77.0.29/24"), std::string::npos) << now;
    EXPECT_EQ(now.find("10.77.0.13/"), std::string::npos) << now;
    std::string v6 = Tool({"ip", "-6", "-o", "addr", "show", "dev", "nv0"});
    EXPECT_NE(v6.find("2001:db8:77::9/64"), std::string::npos) << v6;
    EXPECT_NE(v6.find("2001:db8:78::9/64"), std::string::npos) << v6;
    EXPECT_NE(Tool({"ip", "route", "show", "dev", "nv0"}).find("192.0.2.0/24 via 10.77.0.1"),
              std::string::npos);
    EXPECT_NE(Tool({"ip", "-6", "route", "show", "dev", "nv0"}).find("2001:db8:99::/64 via"),
              std::string::npos)
        << Tool({"ip", "-6", "route"});
    EXPECT_NE(Tool({"ip", "route", "show", "default"}).find("default via 10.77.0.1 dev nv0"),
              std::string::npos);
    // A client runs with its pid file and renews: the server granted the
    // lease again after the old client ended, and the interface keeps an
    // address of the pool.
    ASSERT_NE(DhcpClients(), "") << Tool({"pgrep", "-a", "dhclient"});
    std::string pid = nvtest::ReadFile("/run/dhclient.nv0.pid");
    EXPECT_FALSE(pid.empty());
    EXPECT_EQ(kill(atoi(pid.c_str()), 0), 0);
    for (int i = 0; i < 150 && Acks() <= acks; ++i)
        usleep(100000);
    EXPECT_GT(Acks(), acks) << nvtest::ReadFile("/run/dnsmasq.log");
    now = Addr("nv0");
    EXPECT_NE(now.find("inet 10.77.0.1"), std::string::npos) << now;
    EXPECT_NE(now.find("dynamic"), std::string::npos) << now;
}

TEST_F(LiveInterfaces, TheStanzaOfACloudInitFileIsEditedWhereItIs) {
    const std::string cloud = "/etc/network/interfaces.d/50-cloud-init";
    ASSERT_NE(Interfaces().find("source /etc/network/interfaces.d/*"), std::string::npos);
    ASSERT_EQ(Interfaces().find("nv0"), std::string::npos);
    ASSERT_TRUE(nvtest::WriteFile(
        cloud,
        "# This file is generated from information provided by the datasource.  Changes\n"
        "# to it will not persist across an instance reboot.  To disable cloud-init's\n"
        "# network configuration capabilities, write a file\n"
        "# /etc/cloud/cloud.cfg.d/99-disable-network-config.cfg with the following:\n"
        "# network: {config: disabled}\n"
        "auto lo\niface lo inet loopback\n\nauto nv0\niface nv0 inet dhcp\n"));
    ASSERT_EQ(Send(55, "nv0 10.77.0.21 255.255.255.0 10.77.0.1 - -"), em_ActSuccAll) << detail;
    EXPECT_NE(detail.find("cloud-init"), std::string::npos) << detail;
    // One stanza, in the file that held it; the main file untouched.
    EXPECT_EQ(Interfaces(), mainFile);
    std::string text = nvtest::ReadFile(cloud);
    EXPECT_NE(text.find("auto nv0\niface nv0 inet static\n    address 10.77.0.21\n"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("inet dhcp"), std::string::npos) << text;
    EXPECT_NE(text.find("auto lo\niface lo inet loopback\n"), std::string::npos) << text;
    EXPECT_NE(Addr("nv0").find("inet 10.77.0.21/24"), std::string::npos) << Addr("nv0");
    EXPECT_NE(nvtest::ReadFile("/etc/cloud/cloud.cfg.d/99-disable-network-config.cfg")
                  .find("network: {config: disabled}"),
              std::string::npos);
}

TEST_F(LiveInterfaces, TheStanzaOfASourcedFileIsEditedWhereItIs) {
    const std::string part = "/etc/network/nv0.cfg";
    ASSERT_TRUE(nvtest::WriteFile("/etc/network/interfaces", mainFile + "source nv0.cfg\n"));
    // Unindented option lines, as ifupdown also reads them.
    ASSERT_TRUE(nvtest::WriteFile(
        part, "auto nv0\niface nv0 inet static\naddress 10.77.0.30\nnetmask 255.255.255.0\n"));
    int code = -1;
    Tool({"ifup", "nv0"}, &code);
    ASSERT_EQ(code, 0);
    ASSERT_EQ(Send(55, "nv0 10.77.0.31 255.255.255.0 - - -"), em_ActSuccAll) << detail;
    EXPECT_EQ(Interfaces(), mainFile + "source nv0.cfg\n");
    EXPECT_EQ(nvtest::ReadFile(part),
              "auto nv0\niface nv0 inet static\n    address 10.77.0.31\n    netmask "
              "255.255.255.0\n");
    std::string a = Addr("nv0");
    EXPECT_NE(a.find("inet 10.77.0.31/24"), std::string::npos) << a;
    EXPECT_EQ(a.find("10.77.0.30"), std::string::npos) << a;
    EXPECT_EQ(Send(52, "nv0"), em_ActSuccAll) << detail;
    EXPECT_EQ(nvtest::ReadFile(part).find("auto nv0"), std::string::npos);
    EXPECT_EQ(Interfaces(), mainFile + "source nv0.cfg\n");
}

TEST_F(LiveInterfaces, AnInterfaceNoToolOwnsIsChangedLiveOnly) {
    // No ifupdown configuration at all, and no daemon.
    ASSERT_EQ(unlink("/etc/network/interfaces"), 0);
    ASSERT_EQ(Send(55, "nv0 10.77.0.40 255.255.255.0 10.77.0.1 - -"), em_ActSuccAll) << detail;
    EXPECT_NE(detail.find("will not survive a reboot"), std::string::npos) << detail;
    EXPECT_NE(Addr("nv0").find("inet 10.77.0.40/24"), std::string::npos) << Addr("nv0");
    EXPECT_NE(Tool({"ip", "route", "show", "default"}).find("default via 10.77.0.1 dev nv0"),
              std::string::npos);
    struct stat st {};
    EXPECT_NE(stat("/etc/network/interfaces", &st), 0);
    EXPECT_EQ(Send(54, "nv0"), em_ActSuccAll) << detail;
    EXPECT_NE(Addr("nv0").find("dynamic"), std::string::npos) << Addr("nv0");
    EXPECT_NE(DhcpClients(), "");
    EXPECT_EQ(Send(52, "nv0"), em_ActSuccAll) << detail;
    EXPECT_NE(detail.find("will not survive a reboot"), std::string::npos) << detail;
    EXPECT_EQ(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_EQ(Send(53, "nv0"), em_ActSuccAll) << detail;
    EXPECT_NE(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_NE(stat("/etc/network/interfaces", &st), 0);
}

TEST_F(LiveInterfaces, ProgramsNamedLikeNetworkDaemonsAreNotTrusted) {
    // Any user can run a program called NetworkManager or systemd-networkd:
    // they are not the daemons, and the interface stays ifupdown's.
    nvtest::TempDir dir;
    std::vector<pid_t> fakes;
    for (const char* name : {"NetworkManager", "systemd-networkd"}) {
        std::string copy = dir.File(name);
        Tool({"cp", "/bin/sleep", copy});
        chmod(dir.Path().c_str(), 0755);
        fakes.push_back(nvtest::SpawnProcess(
            {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", copy, "60"},
            "/dev/null", "/dev/null"));
        fakes.push_back(nvtest::SpawnProcess({copy, "60"}, "/dev/null", "/dev/null"));
    }
    usleep(200000);
    ASSERT_NE(Tool({"pgrep", "-x", "NetworkManager"}), "");
    EXPECT_EQ(Send(55, "nv0 10.77.0.50 255.255.255.0 - - -"), em_ActSuccAll) << detail;
    EXPECT_NE(Interfaces().find("iface nv0 inet static\n    address 10.77.0.50\n"),
              std::string::npos);
    for (pid_t p : fakes)
        nvtest::KillAndReap(p);
}

TEST_F(LiveInterfaces, ANetplanFileNamingTheInterfaceOwnsIt) {
    Tool({"mkdir", "-p", "/etc/netplan"});
    // A netplan file about another interface leaves nv0 to ifupdown.
    ASSERT_TRUE(
        nvtest::WriteFile("/etc/netplan/01-net.yaml",
                          "network:\n  version: 2\n  ethernets:\n    eth7:\n      dhcp4: true\n"));
    EXPECT_EQ(Send(55, "nv0 10.77.0.60 255.255.255.0 - - -"), em_ActSuccAll) << detail;
    const std::string own = "network:\n  version: 2\n  ethernets:\n    nv0:\n      dhcp4: true\n";
    ASSERT_TRUE(nvtest::WriteFile("/etc/netplan/01-net.yaml", own));
    chmod("/etc/netplan/01-net.yaml", 0600);
    // netplan's renderer (networkd) does not run here: the change fails
    // through netplan, and neither ifupdown's nor netplan's files change.
    std::string before = Interfaces();
    EXPECT_EQ(Send(54, "nv0"), em_ActFail) << detail;
    EXPECT_NE(detail.find("the old settings were put back"), std::string::npos) << detail;
    EXPECT_EQ(Interfaces(), before);
    EXPECT_EQ(nvtest::ReadFile("/etc/netplan/01-net.yaml"), own);
    Tool({"rm", "-rf", "/etc/netplan"});
}

// An address with a leading zero is read as octal by the system's tools
// (010.0.0.1 is 8.0.0.1), and an interface named "-a" is an option to
// ifdown and ifup (every interface): neither reaches the system.
TEST_F(LiveInterfaces, LeadingZerosNeverReachTheFirewall) {
    // The whole filter table: the agent keeps its rules in chains of its own.
    std::string before = Tool({"iptables", "-S"});
    EXPECT_EQ(Send(33, "1 1 010.0.0.1 0 - 22 2"), em_ActPostValueNotValid) << detail;
    EXPECT_NE(detail.find("leading zero"), std::string::npos) << detail;
    EXPECT_EQ(Send(37, "1 1 - 0 192.168.010.0/24 0 2"), em_ActPostValueNotValid) << detail;
    std::string after = Tool({"iptables", "-S"});
    EXPECT_EQ(after, before);
    EXPECT_EQ(after.find("192.168.8.0"), std::string::npos) << after;
    EXPECT_EQ(after.find("8.0.0.1"), std::string::npos) << after;
    // Written without the zero, the same rule is taken as meant.
    ASSERT_EQ(Send(33, "1 1 10.0.0.1 0 - 22 2"), em_ActSuccAll) << detail;
    EXPECT_NE(Tool({"iptables", "-S"}).find("-s 10.0.0.1/32"), std::string::npos);
}

TEST_F(LiveInterfaces, LeadingZerosNeverReachTheInterfaceOrResolvConf) {
    ASSERT_TRUE(nvtest::WriteFile("/etc/resolv.conf", kResolv));
    std::string file = Interfaces(), addr = Addr("nv0");
    std::string route = Tool({"ip", "route", "show", "default"});
    EXPECT_EQ(Send(55, "nv0 010.77.0.9 255.255.255.0 - - -"), em_ActPostValueNotValid) << detail;
    EXPECT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 010.77.0.1 - -"), em_ActPostValueNotValid)
        << detail;
    EXPECT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 - 010.77.0.1 -"), em_ActPostValueNotValid)
        << detail;
    EXPECT_NE(detail.find("The first DNS server 010.77.0.1 has a leading zero"), std::string::npos)
        << detail;
    EXPECT_EQ(Addr("nv0"), addr);
    EXPECT_EQ(Tool({"ip", "route", "show", "default"}), route);
    EXPECT_EQ(Interfaces(), file);
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"), kResolv);
}

TEST_F(LiveInterfaces, AnInterfaceNamedLikeAnOptionTakesNothingDown) {
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 - - -"), em_ActSuccAll) << detail;
    // The kernel accepts the name; ifdown would read it as "every interface".
    Tool({"ip", "link", "add", "name", "-a", "type", "veth", "peer", "name", "nvq0"});
    ASSERT_NE(Tool({"ip", "-o", "link", "show", "dev", "-a"}), "");
    std::string file = Interfaces();
    for (short cmd : {52, 53, 54}) {
        EXPECT_EQ(Send(cmd, "-a"), em_ActPostValueNotValid) << cmd << ": " << detail;
        EXPECT_EQ(detail, "An interface name cannot start with \"-\".");
    }
    EXPECT_EQ(Send(55, "-a 10.77.1.9 255.255.255.0 - - -"), em_ActPostValueNotValid) << detail;
    EXPECT_NE(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_NE(Addr("nv0").find("inet 10.77.0.9/24"), std::string::npos) << Addr("nv0");
    EXPECT_NE(Tool({"ip", "-o", "link", "show", "lo"}).find(",UP"), std::string::npos);
    EXPECT_EQ(Interfaces(), file);
    Tool({"ip", "link", "del", "dev", "-a"});
}

}  // namespace
