// The deferred interface changes of the session guard inside the namespace
// sandbox, for the network manager the sandbox runs (ifupdown, or none, by
// default; systemd-networkd with --networkd, or netplan rendered by it where
// the program's name says so; NetworkManager with --nm): the change is live
// at once with nothing written under /etc, its undo puts the interface back
// as it was (addresses, routes, DHCP client, the runtime layer removed), its
// commit writes the manager's configuration, and its recovery JSON is undone
// by a fresh process.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>

#include "agent/live/live_changes.h"
#include "child_process.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "net_traffic.h"

using nvtest::Tool;

namespace {

enum class Flavor { kIfupdown, kNetworkd, kNetplan, kNm };

// The sandbox's network manager; netplan (rendered by networkd) where the
// test program's name says so.
Flavor SandboxFlavor() {
    if (access("/run/nv-sandbox/networkd.pid", F_OK) == 0)
        return std::string(program_invocation_short_name).find("netplan") != std::string::npos
                   ? Flavor::kNetplan
                   : Flavor::kNetworkd;
    const char* nm = getenv("NV_SANDBOX_NM");
    return nm != nullptr && std::string(nm) == "1" ? Flavor::kNm : Flavor::kIfupdown;
}

// Every file under dir with its text (empty when dir is absent).
std::map<std::string, std::string> Tree(const std::string& dir) {
    std::map<std::string, std::string> out;
    std::error_code ec;
    for (auto it = std::filesystem::recursive_directory_iterator(dir, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        if (it->is_regular_file())
            out[it->path().string()] = nvtest::ReadFile(it->path().string());
    }
    return out;
}

std::string Addr() {
    return Tool({"ip", "-4", "-o", "addr", "show", "dev", "nv0"});
}

bool HasAddr(const std::string& cidr) {
    return Addr().find("inet " + cidr + " ") != std::string::npos;
}

bool DefaultVia(const std::string& gw) {
    return Tool({"ip", "-4", "route", "show", "default", "dev", "nv0"}).find("via " + gw) !=
           std::string::npos;
}

// Waits up to 10 s for the interface to show cidr.
bool AwaitAddr(const std::string& cidr) {
    for (int i = 0; i < 100 && !HasAddr(cidr); ++i)
        usleep(100000);
    return HasAddr(cidr);
}

class LiveDeferred : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        flavor = SandboxFlavor();
        Configure();
        ASSERT_TRUE(AwaitAddr("10.77.0.9/24")) << Addr();
        echo = std::make_unique<nvtest::EchoServer>("peer", 7017);
        ASSERT_TRUE(echo->Listening());
        ASSERT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7017));
        etc = Persistent();
    }
    void TearDown() override {
        if (!nvtest::InSandbox())
            return;
        switch (flavor) {
            case Flavor::kIfupdown:
                Tool({"ifdown", "--force", "nv0"});
                Tool({"pkill", "-x", "dhclient"});
                nvtest::WriteFile("/etc/network/interfaces", mainFile);
                break;
            case Flavor::kNetworkd:
                Tool({"rm", "-f", "/etc/systemd/network/50-nv0.network",
                      "/etc/systemd/network/00-norvane-nv0.network"});
                Tool({"networkctl", "reload"});
                break;
            case Flavor::kNetplan:
                Tool({"rm", "-rf", "/etc/netplan", "/run/netplan",
                      "/etc/systemd/network/00-norvane-nv0.network"});
                Tool({"netplan", "generate"});
                Tool({"networkctl", "reload"});
                break;
            case Flavor::kNm:
                Tool({"nmcli", "connection", "delete", "nvtest"});
                break;
        }
        Tool({"ip", "-4", "addr", "flush", "dev", "nv0"});
        Tool({"ip", "-6", "addr", "flush", "dev", "nv0", "scope", "global"});
        Tool({"ip", "link", "set", "nv0", "up"});
    }
    // nv0 at 10.77.0.9/24 through 10.77.0.1, as the manager's own
    // configuration says.
    void Configure() {
        switch (flavor) {
            case Flavor::kIfupdown: {
                mainFile = nvtest::ReadFile("/etc/network/interfaces");
                ASSERT_TRUE(nvtest::WriteFile(
                    "/etc/network/interfaces",
                    mainFile + "\nauto nv0\niface nv0 inet static\n    address 10.77.0.9\n"
                               "    netmask 255.255.255.0\n    gateway 10.77.0.1\n"));
                Tool({"ip", "-4", "addr", "flush", "dev", "nv0"});
                int code = -1;
                Tool({"ifup", "nv0"}, &code);
                ASSERT_EQ(code, 0);
                break;
            }
            case Flavor::kNetworkd:
                ASSERT_TRUE(nvtest::WriteFile("/etc/systemd/network/50-nv0.network",
                                              "[Match]\nName=nv0\n\n[Network]\nAddress=10.77.0.9/"
                                              "24\nGateway=10.77.0.1\n"));
                Tool({"networkctl", "reload"});
                break;
            case Flavor::kNetplan:
                Tool({"mkdir", "-p", "/etc/netplan"});
                ASSERT_TRUE(nvtest::WriteFile(
                    "/etc/netplan/50-nv0.yaml",
                    "network:\n  version: 2\n  renderer: networkd\n  ethernets:\n    nv0:\n"
                    "      addresses: [10.77.0.9/24]\n      routes:\n        - to: default\n"
                    "          via: 10.77.0.1\n"));
                chmod("/etc/netplan/50-nv0.yaml", 0600);
                Tool({"netplan", "generate"});
                Tool({"networkctl", "reload"});
                break;
            case Flavor::kNm:
                Tool({"nmcli", "connection", "add", "type", "ethernet", "ifname", "nv0", "con-name",
                      "nvtest", "ipv4.method", "manual", "ipv4.addresses", "10.77.0.9/24",
                      "ipv4.gateway", "10.77.0.1"});
                Tool({"nmcli", "--wait", "20", "connection", "up", "nvtest"});
                break;
        }
    }
    // The manager's persistent configuration.
    std::map<std::string, std::string> Persistent() const {
        switch (flavor) {
            case Flavor::kIfupdown:
                return Tree("/etc/network");
            case Flavor::kNetworkd:
                return Tree("/etc/systemd/network");
            case Flavor::kNetplan:
                return Tree("/etc/netplan");
            case Flavor::kNm:
                return Tree("/etc/NetworkManager/system-connections");
        }
        return {};
    }
    // Where the runtime layer of the change lives (none for NetworkManager,
    // which keeps it in memory).
    std::map<std::string, std::string> Runtime() const {
        switch (flavor) {
            case Flavor::kIfupdown:
                return Tree("/run/norvane");
            case Flavor::kNetworkd: {
                std::map<std::string, std::string> t = Tree("/run/systemd/network");
                std::map<std::string, std::string> own;
                for (const auto& f : t) {
                    if (f.first.find("norvane") != std::string::npos)
                        own.insert(f);
                }
                return own;
            }
            case Flavor::kNetplan:
                return Tree("/run/netplan");
            case Flavor::kNm:
                return {};
        }
        return {};
    }
    static bool Deferred(const std::string& ip, nvagent::PendingChange& out,
                         nvagent::CmdResult& r) {
        nvagent::InterfaceManualRequest q;
        q.name = "nv0";
        q.ip = ip;
        q.mask = "255.255.255.0";
        q.gateway = "10.77.0.1";
        return nvagent::ChangeInterfaceDeferred(q, out, r);
    }
    Flavor flavor = Flavor::kIfupdown;
    std::string mainFile;
    std::map<std::string, std::string> etc;
    std::unique_ptr<nvtest::EchoServer> echo;
};

TEST_F(LiveDeferred, AManualAddressIsLiveUntilUndone) {
    nvagent::PendingChange p;
    nvagent::CmdResult r;
    ASSERT_TRUE(Deferred("10.77.0.33", p, r)) << r.sDetail;
    EXPECT_EQ(r.iCode, em_ActSuccAll) << r.sDetail;
    EXPECT_TRUE(HasAddr("10.77.0.33/24")) << Addr();
    EXPECT_FALSE(HasAddr("10.77.0.9/24")) << Addr();
    EXPECT_TRUE(DefaultVia("10.77.0.1"));
    EXPECT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7017));
    // Nothing persistent yet; the recovery says what to undo.
    EXPECT_EQ(Persistent(), etc);
    EXPECT_NE(p.sRecovery.find("\"domain\":\"interface\""), std::string::npos) << p.sRecovery;
    EXPECT_EQ(p.iCmd, 55);
    nvagent::CmdResult u = p.undo();
    EXPECT_EQ(u.iCode, em_ActSuccAll) << u.sDetail;
    EXPECT_TRUE(AwaitAddr("10.77.0.9/24")) << Addr();
    EXPECT_FALSE(HasAddr("10.77.0.33/24")) << Addr();
    EXPECT_TRUE(DefaultVia("10.77.0.1")) << Tool({"ip", "route"});
    EXPECT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7017));
    EXPECT_EQ(Persistent(), etc);
    EXPECT_TRUE(Runtime().empty()) << Runtime().begin()->first;
}

TEST_F(LiveDeferred, ACommitWritesTheConfiguration) {
    nvagent::PendingChange p;
    nvagent::CmdResult r;
    ASSERT_TRUE(Deferred("10.77.0.33", p, r)) << r.sDetail;
    EXPECT_EQ(Persistent(), etc);
    nvagent::CmdResult c = p.commit();
    EXPECT_EQ(c.iCode, em_ActSuccAll) << c.sDetail;
    std::map<std::string, std::string> now = Persistent();
    EXPECT_NE(now, etc);
    std::string all;
    for (const auto& f : now)
        all += f.second;
    EXPECT_NE(all.find("10.77.0.33"), std::string::npos) << all;
    EXPECT_TRUE(Runtime().empty());
    EXPECT_TRUE(HasAddr("10.77.0.33/24")) << Addr();
    EXPECT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7017));
    // The next change starts from the committed configuration.
    nvagent::PendingChange q;
    ASSERT_TRUE(Deferred("10.77.0.44", q, r)) << r.sDetail;
    EXPECT_TRUE(HasAddr("10.77.0.44/24")) << Addr();
    q.undo();
    EXPECT_TRUE(AwaitAddr("10.77.0.33/24")) << Addr();
    EXPECT_EQ(Persistent(), now);
}

TEST_F(LiveDeferred, AFreshProcessUndoesThePendingChange) {
    nvagent::PendingChange p;
    nvagent::CmdResult r;
    nvagent::InterfaceRequest down{52, "nv0"};
    ASSERT_TRUE(nvagent::ChangeInterfaceDeferred(down, p, r)) << r.sDetail;
    EXPECT_EQ(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_FALSE(nvtest::TcpEchoes("", "10.77.0.1", 7017, 500));
    EXPECT_EQ(Persistent(), etc);
    // The agent is gone: only the JSON kept under /run remains.
    nvtest::RunResult run = nvtest::RunProgramWithInput(
        {std::string(NV_BIN_DIR) + "/iface_recovery_tool"}, p.sRecovery, 30000);
    EXPECT_EQ(run.iExitCode, 0) << run.sStderr;
    EXPECT_NE(Tool({"ip", "-o", "link", "show", "nv0"}).find(",UP"), std::string::npos);
    EXPECT_TRUE(AwaitAddr("10.77.0.9/24")) << Addr();
    EXPECT_TRUE(DefaultVia("10.77.0.1")) << Tool({"ip", "route"});
    EXPECT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7017));
    EXPECT_EQ(Persistent(), etc);
    EXPECT_TRUE(Runtime().empty());
    // Anything else is refused.
    run = nvtest::RunProgramWithInput({std::string(NV_BIN_DIR) + "/iface_recovery_tool"},
                                      "{\"domain\":\"firewall\"}");
    EXPECT_EQ(run.iExitCode, 1);
    run = nvtest::RunProgramWithInput(
        {std::string(NV_BIN_DIR) + "/iface_recovery_tool"},
        "{\"domain\":\"interface\",\"owner\":\"none\",\"before\":{\"iface\":"
        "{\"name\":\"-a\"}}}");
    EXPECT_EQ(run.iExitCode, 1);
}

TEST_F(LiveDeferred, AnUndoBringsBackTheDhcpClient) {
    // DHCP through the manager, saved as usual.
    nvagent::InterfaceRequest dhcp{54, "nv0"};
    nvagent::CmdResult r = nvagent::ChangeInterface(dhcp);
    ASSERT_EQ(r.iCode, em_ActSuccAll) << r.sDetail;
    std::string lease = Addr();
    ASSERT_NE(lease.find("dynamic"), std::string::npos) << lease;
    etc = Persistent();
    std::string client = Tool({"pgrep", "-a", "-x", "dhclient"});
    nvagent::PendingChange p;
    ASSERT_TRUE(Deferred("10.77.0.33", p, r)) << r.sDetail;
    EXPECT_TRUE(HasAddr("10.77.0.33/24")) << Addr();
    EXPECT_EQ(Addr().find("dynamic"), std::string::npos) << Addr();
    EXPECT_EQ(Tool({"pgrep", "-x", "dhclient"}), "");
    p.undo();
    // A lease of the pool again, renewed by a client of the manager's.
    for (int i = 0; i < 100 && Addr().find("dynamic") == std::string::npos; ++i)
        usleep(100000);
    std::string now = Addr();
    EXPECT_NE(now.find("inet 10.77.0.1"), std::string::npos) << now;
    EXPECT_NE(now.find("dynamic"), std::string::npos) << now;
    EXPECT_FALSE(HasAddr("10.77.0.33/24")) << now;
    EXPECT_TRUE(DefaultVia("10.77.0.1")) << Tool({"ip", "route"});
    if (!client.empty()) {
        EXPECT_NE(Tool({"pgrep", "-x", "dhclient"}), "");
    }
    EXPECT_EQ(Persistent(), etc);
    EXPECT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7017));
}

// The sandbox's DHCP server stopped (SIGSTOP) while it lives, so that no
// offer comes; it goes on where it was afterwards.
class DhcpServerPaused {
public:
    DhcpServerPaused() {
        std::string text = nvtest::ReadFile("/run/nv-sandbox/dnsmasq.pid");
        pid_ = atoi(text.c_str());
        if (pid_ > 0)
            kill(pid_, SIGSTOP);
    }
    ~DhcpServerPaused() {
        if (pid_ > 0)
            kill(pid_, SIGCONT);
    }
    bool Paused() const { return pid_ > 0; }

private:
    pid_t pid_ = 0;
};

TEST_F(LiveDeferred, DhcpWithoutAServerIsAnsweredAtOnceAndUndoneWithItsClient) {
    DhcpServerPaused paused;
    ASSERT_TRUE(paused.Paused());
    nvagent::PendingChange p;
    nvagent::CmdResult r;
    nvagent::InterfaceRequest dhcp{54, "nv0"};
    auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(nvagent::ChangeInterfaceDeferred(dhcp, p, r)) << r.sDetail;
    long ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                  std::chrono::steady_clock::now() - start)
                  .count();
    // The lease is awaited a few seconds, not the client's minute: the
    // guard's watch judges the change.
    EXPECT_LT(ms, 30000);
    EXPECT_EQ(r.iCode, em_ActSuccAll) << r.sDetail;
    EXPECT_NE(r.sDetail.find("No DHCP lease on nv0 yet"), std::string::npos) << r.sDetail;
    EXPECT_FALSE(HasAddr("10.77.0.9/24")) << Addr();
    if (flavor == Flavor::kIfupdown) {
        EXPECT_NE(Tool({"pgrep", "-x", "dhclient"}), "");
    }
    EXPECT_EQ(Persistent(), etc);
    // Undone: the static address and route again, no DHCP client left.
    p.undo();
    EXPECT_TRUE(AwaitAddr("10.77.0.9/24")) << Addr();
    EXPECT_TRUE(DefaultVia("10.77.0.1")) << Tool({"ip", "route"});
    EXPECT_EQ(Tool({"pgrep", "-a", "-x", "dhclient"}), "");
    EXPECT_EQ(Addr().find("dynamic"), std::string::npos) << Addr();
    EXPECT_EQ(Persistent(), etc);
    EXPECT_TRUE(Runtime().empty());
    EXPECT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7017));
}

TEST_F(LiveDeferred, AnInterfaceNoToolOwnsIsUndoneByHand) {
    if (flavor != Flavor::kIfupdown)
        GTEST_SKIP() << "ifupdown's sandbox only";
    // No ifupdown configuration: nothing owns nv0, its addressing by hand.
    Tool({"ifdown", "--force", "nv0"});
    ASSERT_EQ(unlink("/etc/network/interfaces"), 0);
    Tool({"ip", "link", "set", "nv0", "up"});
    Tool({"ip", "addr", "add", "10.77.0.9/24", "dev", "nv0"});
    Tool({"ip", "addr", "add", "10.77.0.19/24", "dev", "nv0"});
    Tool({"ip", "route", "add", "default", "via", "10.77.0.1", "dev", "nv0"});
    nvagent::PendingChange p;
    nvagent::CmdResult r;
    nvagent::InterfaceRequest dhcp{54, "nv0"};
    ASSERT_TRUE(nvagent::ChangeInterfaceDeferred(dhcp, p, r)) << r.sDetail;
    EXPECT_NE(Addr().find("dynamic"), std::string::npos) << Addr();
    EXPECT_NE(Tool({"pgrep", "-x", "dhclient"}), "");
    EXPECT_EQ(p.commit().iCode, em_ActSuccAll);
    EXPECT_TRUE(Tree("/etc/network").count("/etc/network/interfaces") == 0);
    // Undone (here after the commit, which saved nothing): the client the
    // change started ends, and both addresses come back.
    p.undo();
    EXPECT_EQ(Tool({"pgrep", "-x", "dhclient"}), "");
    EXPECT_TRUE(HasAddr("10.77.0.9/24")) << Addr();
    EXPECT_TRUE(HasAddr("10.77.0.19/24")) << Addr();
    EXPECT_EQ(Addr().find("dynamic"), std::string::npos) << Addr();
    EXPECT_TRUE(DefaultVia("10.77.0.1")) << Tool({"ip", "route"});
    EXPECT_TRUE(nvtest::TcpEchoes("", "10.77.0.1", 7017));
}

TEST_F(LiveDeferred, AnUndoBringsBackWhatWasAddedByHand) {
    Tool({"ip", "addr", "add", "10.77.0.29/24", "dev", "nv0"});
    Tool({"ip", "-6", "addr", "add", "2001:db8:77::9/64", "dev", "nv0", "nodad"});
    Tool({"ip", "route", "add", "192.0.2.0/24", "via", "10.77.0.1", "dev", "nv0"});
    Tool({"ip", "-6", "route", "add", "2001:db8:99::/64", "via", "2001:db8:77::1", "dev", "nv0"});
    ASSERT_TRUE(HasAddr("10.77.0.29/24")) << Addr();
    nvagent::PendingChange p;
    nvagent::CmdResult r;
    ASSERT_TRUE(Deferred("10.77.0.33", p, r)) << r.sDetail;
    EXPECT_FALSE(HasAddr("10.77.0.29/24")) << Addr();
    p.undo();
    std::string v6 = Tool({"ip", "-6", "-o", "addr", "show", "dev", "nv0"});
    EXPECT_TRUE(HasAddr("10.77.0.9/24")) << Addr();
    EXPECT_TRUE(HasAddr("10.77.0.29/24")) << Addr();
    EXPECT_NE(v6.find("2001:db8:77::9/64"), std::string::npos) << v6;
    EXPECT_NE(Tool({"ip", "route", "show", "dev", "nv0"}).find("192.0.2.0/24 via 10.77.0.1"),
              std::string::npos)
        << Tool({"ip", "route"});
    EXPECT_NE(Tool({"ip", "-6", "route", "show", "dev", "nv0"}).find("2001:db8:99::/64 via"),
              std::string::npos)
        << Tool({"ip", "-6", "route"});
    EXPECT_TRUE(DefaultVia("10.77.0.1")) << Tool({"ip", "route"});
}

}  // namespace
