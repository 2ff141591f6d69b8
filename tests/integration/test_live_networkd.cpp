// The live agent's interface commands where systemd-networkd owns the
// interfaces: inside the namespace sandbox started with --networkd (a
// private system bus and the real networkd) and --dhcp (dnsmasq behind the
// veth pair), the real norvaned is driven with the real nvcmd. Each change
// takes effect at once (read back with ip), lands in the agent's own
// .network file only, writes the DNS servers to an unmanaged
// /etc/resolv.conf, and is undone whole when networkctl fails.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "child_process.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

const std::string kNvcmd = std::string(NV_BIN_DIR) + "/nvcmd";
const std::string kFile = "/etc/systemd/network/00-norvane-nv0.network";
const std::string kAdminFile = "/etc/systemd/network/10-admin.network";
const std::string kAdminText = "[Match]\nName=nv*\n\n[Network]\nDHCP=no\n";
const std::string kResolv =
    "# the site's resolvers\nsearch example.org\nnameserver 192.0.2.53\n"
    "options timeout:2\n";

class LiveNetworkd : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox() || getenv("NV_SANDBOX_DBUS_CONF") == nullptr)
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh --networkd";
        // Every case starts from an interface networkd does not manage.
        unlink(kFile.c_str());
        Tool({"networkctl", "reload"});
        Tool({"ip", "-4", "addr", "flush", "dev", "nv0"});
        Tool({"ip", "link", "set", "nv0", "up"});
        unlink("/etc/resolv.conf");
        ASSERT_TRUE(nvtest::WriteFile("/etc/resolv.conf", kResolv));
        ASSERT_TRUE(nvtest::WriteFile(kAdminFile, kAdminText));
        ran = true;
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
        setenv("NVUI_SOCKET", agent.SocketPath().c_str(), 1);
        setenv("NVUI_LOG", files.File("nvcmd.log").c_str(), 1);
    }
    void TearDown() override {
        // The administrator's file is never touched, and the agent stops
        // cleanly (in a sanitizer build: without a report).
        if (ran) {
            EXPECT_EQ(nvtest::ReadFile(kAdminFile), kAdminText);
            EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        }
        unsetenv("NVUI_SOCKET");
        unsetenv("NVUI_LOG");
    }
    // One set command through nvcmd; its exit status (0: done).
    static int Nvcmd(const std::string& cmd, const std::string& payload,
                     std::string* out = nullptr) {
        nvtest::RunResult r = nvtest::RunProgram({kNvcmd, "send", cmd, payload}, 60000);
        if (out != nullptr)
            *out = r.sStdout + r.sStderr;
        return r.iExitCode;
    }
    // Stops the sandbox's daemon of this name and starts argv in its place.
    static void Restart(const std::string& name, const std::vector<std::string>& argv) {
        std::string pidFile = "/run/nv-sandbox/" + name + ".pid";
        pid_t old = static_cast<pid_t>(atoi(nvtest::ReadFile(pidFile).c_str()));
        if (old > 1 && kill(old, SIGTERM) == 0)
            nvtest::WaitForeignExit(old, 5000);
        pid_t now = nvtest::SpawnProcess(argv, "/dev/null", "/run/nv-sandbox/" + name + ".log");
        ASSERT_GT(now, 0);
        nvtest::WriteFile(pidFile, std::to_string(now) + "\n");
    }
    int Send(short cmd, const std::string& payload) { return agent.Send(cmd, payload, &detail); }
    static std::string Addr() { return Tool({"ip", "-4", "-o", "addr", "show", "dev", "nv0"}); }
    static std::string Link() { return Tool({"ip", "-o", "link", "show", "nv0"}); }
    static std::string File() { return nvtest::ReadFile(kFile); }
    static bool Exists(const std::string& path) {
        struct stat st {};
        return lstat(path.c_str(), &st) == 0;
    }
    nvtest::LiveAgent agent;
    nvtest::TempDir files;
    std::string detail;
    bool ran = false;
};

TEST_F(LiveNetworkd, ManualAddressAtOnceInItsOwnFileAndResolvConf) {
    // ifupdown's file is there too, but networkd runs: it is not touched.
    std::string interfaces = nvtest::ReadFile("/etc/network/interfaces");
    ASSERT_NE(interfaces, "");
    std::string out;
    ASSERT_EQ(Nvcmd("55", "nv0 10.77.0.9 255.255.255.0 10.77.0.1 10.77.0.1 10.77.0.2", &out), 0)
        << out;
    EXPECT_NE(Addr().find("inet 10.77.0.9/24"), std::string::npos) << Addr();
    EXPECT_NE(Tool({"ip", "route", "show", "default"}).find("default via 10.77.0.1 dev nv0"),
              std::string::npos)
        << Tool({"ip", "route"});
    EXPECT_EQ(File(),
              "# The norvane agent's settings of nv0; replaced whole by its next change.\n"
              "[Match]\nName=nv0\n\n[Network]\nAddress=10.77.0.9/24\nGateway=10.77.0.1\n"
              "DNS=10.77.0.1\nDNS=10.77.0.2\n\n[Link]\nActivationPolicy=up\n");
    EXPECT_NE(Tool({"networkctl", "status", "nv0", "--no-pager"}).find(kFile), std::string::npos);
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"),
              "# the site's resolvers\nsearch example.org\nnameserver 10.77.0.1\n"
              "nameserver 10.77.0.2\noptions timeout:2\n");
    EXPECT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 10.77.0.1 10.77.0.2"),
              em_ActNeedNoSet)
        << detail;
    EXPECT_EQ(nvtest::ReadFile("/etc/network/interfaces"), interfaces);
    // Another address replaces the first; without a gateway the route goes.
    ASSERT_EQ(Send(55, "nv0 10.77.0.10 255.255.0.0 - - -"), em_ActSuccAll) << detail;
    EXPECT_NE(Addr().find("inet 10.77.0.10/16"), std::string::npos) << Addr();
    EXPECT_EQ(Addr().find("10.77.0.9/"), std::string::npos) << Addr();
    EXPECT_EQ(Tool({"ip", "route", "show", "default"}), "");
    EXPECT_EQ(File().find("Gateway="), std::string::npos) << File();
}

TEST_F(LiveNetworkd, DhcpFromTheServerBehindThePeer) {
    std::string out;
    ASSERT_EQ(Nvcmd("54", "nv0", &out), 0) << out;
    std::string a = Addr();
    EXPECT_NE(a.find("inet 10.77.0.1"), std::string::npos) << a;
    EXPECT_NE(a.find("dynamic"), std::string::npos) << a;
    EXPECT_NE(File().find("[Network]\nDHCP=ipv4\n\n[Link]\nActivationPolicy=up\n"),
              std::string::npos)
        << File();
    cConf_Inf conf;
    cSvrState svr;
    std::string err;
    ASSERT_TRUE(agent.Check(conf, svr, err)) << err;
    bool shown = false;
    for (const std::string& l : svr.vsIfconfigList)
        shown =
            shown || (l.find("nv0") != std::string::npos && l.find("dynamic") != std::string::npos);
    EXPECT_TRUE(shown) << ::testing::PrintToString(svr.vsIfconfigList);
    EXPECT_EQ(Send(54, "nv0"), em_ActNeedNoSet) << detail;
    // DHCP leaves resolv.conf to whatever the lease brings.
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"), kResolv);
}

TEST_F(LiveNetworkd, DownAndUpKeepTheAddressAndSetTheActivationPolicy) {
    // No agent file yet: the current address is what the file keeps.
    Tool({"ip", "addr", "add", "10.77.0.20/24", "dev", "nv0"});
    std::string out;
    ASSERT_EQ(Nvcmd("52", "nv0", &out), 0) << out;
    EXPECT_EQ(Link().find(",UP"), std::string::npos) << Link();
    EXPECT_NE(File().find("Address=10.77.0.20/24\n"), std::string::npos) << File();
    EXPECT_NE(File().find("[Link]\nActivationPolicy=down\n"), std::string::npos) << File();
    EXPECT_EQ(Send(52, "nv0"), em_ActNeedNoSet);
    ASSERT_EQ(Nvcmd("53", "nv0", &out), 0) << out;
    EXPECT_NE(Link().find(",UP"), std::string::npos) << Link();
    EXPECT_NE(File().find("[Link]\nActivationPolicy=up\n"), std::string::npos) << File();
    EXPECT_NE(Addr().find("inet 10.77.0.20/24"), std::string::npos) << Addr();
    EXPECT_EQ(Send(53, "nv0"), em_ActNeedNoSet);
}

TEST_F(LiveNetworkd, UnknownInterfacesAndTheLoopbackAreRefused) {
    EXPECT_EQ(Send(52, "nv9"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(54, "nv9"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(55, "nv9 10.77.0.9 255.255.255.0 - - -"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(54, "lo"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(55, "lo 127.0.0.2 255.0.0.0 - - -"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.9.9.9 - -"), em_ActPostValueNotValid);
    std::string out;
    EXPECT_NE(Nvcmd("55", "nv9 10.77.0.9 255.255.255.0 - - -", &out), 0) << out;
    EXPECT_FALSE(Exists(kFile));
    EXPECT_FALSE(Exists("/etc/systemd/network/00-norvane-nv9.network"));
    EXPECT_FALSE(Exists("/etc/systemd/network/00-norvane-lo.network"));
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"), kResolv);
}

// networkd matches Name= as a glob: an interface named "nv*" (the kernel
// accepts it) would have made the agent's file match nv0 and every other
// nv interface.
TEST_F(LiveNetworkd, InterfaceNamesWithGlobCharactersNeverBecomeAMatch) {
    Tool({"ip", "link", "add", "name", "nv*", "type", "veth", "peer", "name", "nvq1"});
    ASSERT_NE(Tool({"ip", "-o", "link", "show", "dev", "nv*"}), "");
    for (short cmd : {52, 53, 54})
        EXPECT_EQ(Send(cmd, "nv*"), em_ActPostValueNotValid) << cmd << ": " << detail;
    EXPECT_EQ(Send(55, "nv* 10.77.0.9 255.255.255.0 - - -"), em_ActPostValueNotValid) << detail;
    EXPECT_NE(detail.find("cannot hold blanks or any of"), std::string::npos) << detail;
    std::string files = Tool({"ls", "/etc/systemd/network"});
    EXPECT_EQ(files.find("norvane-nv"), std::string::npos) << files;
    EXPECT_EQ(Addr(), "");
    Tool({"ip", "link", "del", "dev", "nv*"});
}

TEST_F(LiveNetworkd, ResolvedsStubIsLeftToSystemdResolved) {
    unlink("/etc/resolv.conf");
    ASSERT_EQ(symlink("../run/systemd/resolve/stub-resolv.conf", "/etc/resolv.conf"), 0);
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 - 10.77.0.1 -"), em_ActSuccAll) << detail;
    EXPECT_NE(detail.find("systemd-resolved applies them"), std::string::npos) << detail;
    EXPECT_NE(File().find("DNS=10.77.0.1\n"), std::string::npos) << File();
    char target[256] = {};
    ASSERT_GT(readlink("/etc/resolv.conf", target, sizeof target - 1), 0);
    EXPECT_STREQ(target, "../run/systemd/resolve/stub-resolv.conf");
}

TEST_F(LiveNetworkd, AGeneratedResolvConfIsLeftAlone) {
    std::string generated = "# Generated by NetworkManager\nnameserver 192.0.2.1\n";
    ASSERT_TRUE(nvtest::WriteFile("/etc/resolv.conf", generated));
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 - 10.77.0.1 -"), em_ActSuccAll) << detail;
    EXPECT_NE(detail.find("/etc/resolv.conf is managed by NetworkManager"), std::string::npos)
        << detail;
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"), generated);
}

TEST_F(LiveNetworkd, AMissingResolvConfIsCreated) {
    unlink("/etc/resolv.conf");
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 - 10.77.0.1 10.77.0.2"), em_ActSuccAll)
        << detail;
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"), "nameserver 10.77.0.1\nnameserver 10.77.0.2\n");
    struct stat st {};
    ASSERT_EQ(stat("/etc/resolv.conf", &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0644u);
}

TEST_F(LiveNetworkd, NoLeaseUndoesTheChange) {
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 - -"), em_ActSuccAll) << detail;
    std::string file = File();
    // The DHCP server stops answering for the time of the request.
    pid_t server =
        static_cast<pid_t>(atoi(nvtest::ReadFile("/run/nv-sandbox/dnsmasq.pid").c_str()));
    ASSERT_GT(server, 1);
    ASSERT_EQ(kill(server, SIGSTOP), 0);
    int code = agent.Send(54, "nv0", &detail, 60000);
    kill(server, SIGCONT);
    EXPECT_EQ(code, em_ActFail);
    EXPECT_NE(detail.find("no DHCP lease came within 30 s"), std::string::npos) << detail;
    EXPECT_EQ(File(), file);
    EXPECT_NE(Addr().find("inet 10.77.0.9/24"), std::string::npos) << Addr();
    EXPECT_EQ(Addr().find("dynamic"), std::string::npos) << Addr();
    EXPECT_NE(Tool({"ip", "route", "show", "default"}).find("default via 10.77.0.1 dev nv0"),
              std::string::npos)
        << Tool({"ip", "route"});
}

// Last: networkctl fails once the bus is gone, and everything is put back;
// the bus is then started again for networkd to find.
TEST_F(LiveNetworkd, ANetworkctlFailureUndoesTheWholeChange) {
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 10.77.0.1 -"), em_ActSuccAll)
        << detail;
    std::string file = File();
    std::string addr = Addr();
    std::string resolv = nvtest::ReadFile("/etc/resolv.conf");
    pid_t bus = static_cast<pid_t>(atoi(nvtest::ReadFile("/run/nv-sandbox/dbus.pid").c_str()));
    ASSERT_GT(bus, 1);
    ASSERT_EQ(kill(bus, SIGTERM), 0);
    ASSERT_TRUE(nvtest::WaitForeignExit(bus, 5000));

    EXPECT_EQ(Send(55, "nv0 10.77.0.30 255.255.255.0 10.77.0.1 10.77.0.2 -"), em_ActFail);
    EXPECT_NE(detail.find("networkctl reload failed"), std::string::npos) << detail;
    EXPECT_NE(detail.find("the old settings were put back"), std::string::npos) << detail;
    EXPECT_EQ(File(), file);
    EXPECT_EQ(Addr(), addr);
    EXPECT_EQ(nvtest::ReadFile("/etc/resolv.conf"), resolv);
    EXPECT_EQ(Send(54, "nv0"), em_ActFail) << detail;
    EXPECT_EQ(File(), file);
    std::string out;
    EXPECT_NE(Nvcmd("52", "nv0", &out), 0) << out;
    EXPECT_EQ(File(), file);
    EXPECT_NE(Link().find(",UP"), std::string::npos) << Link();

    // A new bus and a new networkd (which does not look for a new bus by
    // itself); changes work again.
    unlink("/run/dbus/system_bus_socket");
    Restart("dbus",
            {"/usr/bin/dbus-daemon", std::string("--config-file=") + getenv("NV_SANDBOX_DBUS_CONF"),
             "--nofork", "--nopidfile"});
    Restart("networkd", {"/usr/lib/systemd/systemd-networkd"});
    bool back = false;
    for (int i = 0; i < 100 && !back; ++i) {
        usleep(100000);
        int code = -1;
        Tool({"networkctl", "reload"}, &code);
        back = code == 0;
    }
    ASSERT_TRUE(back);
    EXPECT_EQ(Send(55, "nv0 10.77.0.30 255.255.255.0 10.77.0.1 10.77.0.2 -"), em_ActSuccAll)
        << detail;
    EXPECT_NE(Addr().find("inet 10.77.0.30/24"), std::string::npos) << Addr();
}

}  // namespace
