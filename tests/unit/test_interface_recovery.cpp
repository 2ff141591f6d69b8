// The recovery JSON of a deferred interface change: everything an undo
// needs survives the round trip, and whatever else is offered (another
// domain, a name a tool would read as an option, a file outside the
// runtime layers and resolv.conf, wrong types, broken text) is refused
// with a reason and never crashes.
#include <gtest/gtest.h>

#include "agent/live/interfaces/interface_recovery.h"

namespace {

using nvagent::InterfaceRecovery;

InterfaceRecovery Sample() {
    InterfaceRecovery rec;
    rec.owner = "ifupdown";
    rec.cmd = 55;
    rec.before.iface.name = "eth0";
    rec.before.iface.up = true;
    rec.before.iface.ip = "10.0.0.5";
    rec.before.iface.mask = "255.255.255.0";
    rec.before.iface.mode = nvagent::kModeDynamic;
    rec.before.gateway = "10.0.0.1";
    rec.before.addrs = {{"local", "10.0.0.5/24", "valid_lft", "100"}, {"local", "10.0.0.6/24"}};
    rec.before.routes = {{"default", "via", "10.0.0.1"}};
    rec.before.addrs6 = {{"local", "2001:db8::5/64", "scope", "global"}};
    rec.before.routes6 = {{"2001:db8:1::/64", "via", "2001:db8::1"}};
    rec.before.dhcpClient = {"/sbin/dhclient", "-4", "eth0"};
    rec.files = {{"/run/norvane/ifupdown-eth0.interfaces", false, ""},
                 {"/etc/resolv.conf", true, "nameserver 10.0.0.1\n"}};
    rec.ifupdownCopy = "/run/norvane/ifupdown-eth0.interfaces";
    rec.nmCheckpoint = "/org/freedesktop/NetworkManager/Checkpoint/1";
    rec.nmProfile = "uuid";
    rec.nmOld = {"ipv4.method", "auto"};
    return rec;
}

TEST(InterfaceRecovery, EverythingSurvivesTheRoundTrip) {
    InterfaceRecovery in = Sample(), out;
    std::string err;
    ASSERT_TRUE(nvagent::ParseRecovery(nvagent::RecoveryJson(in), out, err)) << err;
    EXPECT_EQ(out.owner, in.owner);
    EXPECT_EQ(out.cmd, 55);
    EXPECT_EQ(out.before.iface.name, "eth0");
    EXPECT_TRUE(out.before.iface.up);
    EXPECT_EQ(out.before.iface.ip, "10.0.0.5");
    EXPECT_EQ(out.before.iface.mask, "255.255.255.0");
    EXPECT_EQ(out.before.iface.mode, nvagent::kModeDynamic);
    EXPECT_EQ(out.before.gateway, "10.0.0.1");
    EXPECT_EQ(out.before.addrs, in.before.addrs);
    EXPECT_EQ(out.before.routes, in.before.routes);
    EXPECT_EQ(out.before.addrs6, in.before.addrs6);
    EXPECT_EQ(out.before.routes6, in.before.routes6);
    EXPECT_EQ(out.before.dhcpClient, in.before.dhcpClient);
    ASSERT_EQ(out.files.size(), 2u);
    EXPECT_EQ(out.files[1].path, "/etc/resolv.conf");
    EXPECT_TRUE(out.files[1].existed);
    EXPECT_EQ(out.files[1].text, "nameserver 10.0.0.1\n");
    EXPECT_FALSE(out.files[0].existed);
    EXPECT_EQ(out.ifupdownCopy, in.ifupdownCopy);
    EXPECT_EQ(out.nmCheckpoint, in.nmCheckpoint);
    EXPECT_EQ(out.nmProfile, "uuid");
    EXPECT_EQ(out.nmOld, in.nmOld);
}

TEST(InterfaceRecovery, AnythingElseIsRefused) {
    const char* const kBad[] = {
        "",
        "not json",
        "[]",
        "{\"domain\":\"firewall\"}",
        "{\"domain\":\"interface\"}",
        "{\"domain\":\"interface\",\"owner\":\"other\",\"before\":{\"iface\":{\"name\":\"eth0\"}}}",
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":{\"iface\":{\"name\":\"-a\"}}}",
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":{\"iface\":{\"name\":7}}}",
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":{\"iface\":{\"name\":\"eth0\"},"
        "\"addrs\":[[\"local\",5]]}}",
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":{\"iface\":{\"name\":\"eth0\"},"
        "\"routes\":\"default\"}}",
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":{\"iface\":{\"name\":\"eth0\"}},"
        "\"files\":[{\"path\":\"etc/passwd\",\"existed\":false}]}",
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":{\"iface\":{\"name\":\"eth0\"}},"
        "\"files\":[7]}",
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":{\"iface\":{\"name\":\"eth0\"}},"
        "\"files\":[{\"path\":\"/etc/shadow\",\"existed\":true,\"text\":\"\"}]}",
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":{\"iface\":{\"name\":\"eth0\"}},"
        "\"files\":[{\"path\":\"/run/netplan/../../etc/shadow\",\"existed\":false}]}",
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":[1],\"cmd\":\"x\"}",
    };
    for (const char* bad : kBad) {
        InterfaceRecovery rec;
        std::string err;
        EXPECT_FALSE(nvagent::ParseRecovery(bad, rec, err)) << bad;
        EXPECT_FALSE(err.empty()) << bad;
        EXPECT_FALSE(nvagent::UndoInterfaceRecovery(bad, err)) << bad;
    }
}

}  // namespace
