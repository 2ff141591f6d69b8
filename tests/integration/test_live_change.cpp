// The live agent's changes inside the namespace sandbox: kernel settings,
// host name, firewall and password, each accepted and refused, and read
// back with the system's own tools (sysctl, hostname, getent, iptables);
// checks answered while a change waits.
#include <crypt.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "child_process.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

class LiveChange : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    // A clean stop (and, in a sanitizer build, no report from the agent).
    void TearDown() override {
        if (agent.Process().Running()) {
            EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        }
    }
    int Send(short cmd, const std::string& payload) { return agent.Send(cmd, payload, &detail); }
    // The configuration record of one check; empty when the check fails.
    cConf_Inf CheckedConf() {
        cConf_Inf conf;
        cSvrState svr;
        std::string err;
        EXPECT_TRUE(agent.Check(conf, svr, err)) << err;
        return conf;
    }
    static std::string Sysctl(const std::string& key) {
        std::string v = Tool({"sysctl", "-n", key});
        if (!v.empty())
            v.pop_back();
        return v;
    }
    nvtest::LiveAgent agent;
    std::string detail;
};

TEST_F(LiveChange, KernelFlagsAreWrittenReadBackAndPersisted) {
    Tool({"sysctl", "-w", "net.ipv4.icmp_echo_ignore_all=0"});
    Tool({"sysctl", "-w", "net.ipv4.tcp_tw_reuse=2"});
    EXPECT_EQ(Send(4, "1"), em_ActSuccAll) << detail;
    EXPECT_EQ(Sysctl("net.ipv4.icmp_echo_ignore_all"), "1");
    EXPECT_EQ(Send(4, "1"), em_ActNeedNoSet);
    EXPECT_EQ(detail, "Ignoring ICMP echo requests is already on.");
    // The kernel's loopback-only 2 is neither on nor off: both can be set.
    EXPECT_EQ(Send(6, "0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Sysctl("net.ipv4.tcp_tw_reuse"), "0");
    EXPECT_EQ(Send(5, "   "), em_ActPostCmdBuffFmtError);
    std::string file = nvtest::ReadFile("/etc/sysctl.d/90-norvane.conf");
    EXPECT_NE(file.find("net.ipv4.icmp_echo_ignore_all = 1\n"), std::string::npos) << file;
    EXPECT_NE(file.find("net.ipv4.tcp_tw_reuse = 0\n"), std::string::npos) << file;
    // The boot's loader takes the file as it is.
    Tool({"sysctl", "-w", "net.ipv4.icmp_echo_ignore_all=0"});
    int code = -1;
    Tool({"sysctl", "-p", "/etc/sysctl.d/90-norvane.conf"}, &code);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(Sysctl("net.ipv4.icmp_echo_ignore_all"), "1");
}

TEST_F(LiveChange, KernelLimitsWithTheAgentsAndTheKernelsChecks) {
    EXPECT_EQ(Send(10, "600"), em_ActSuccAll) << detail;
    EXPECT_EQ(Sysctl("kernel.threads-max"), "600");
    EXPECT_EQ(Send(10, "512"), em_ActPostValueNotValid);
    EXPECT_EQ(Sysctl("kernel.threads-max"), "600");
    EXPECT_EQ(Send(11, "100000"), em_ActSuccAll) << detail;
    EXPECT_EQ(Sysctl("fs.file-max"), "100000");
    EXPECT_EQ(Send(11, "100000"), em_ActNeedNoSet);
    EXPECT_EQ(Send(7, "67108864"), em_ActSuccAll) << detail;
    EXPECT_EQ(Sysctl("kernel.shmmax"), "67108864");
    std::string before = Sysctl("kernel.shmmni");
    // The kernel's own limit on segments (IPCMNI) refuses this.
    EXPECT_EQ(Send(9, "400000"), em_ActPostValueNotValid);
    EXPECT_NE(detail.find("the kernel refused 400000"), std::string::npos) << detail;
    EXPECT_EQ(Sysctl("kernel.shmmni"), before);
    std::string file = nvtest::ReadFile("/etc/sysctl.d/90-norvane.conf");
    EXPECT_NE(file.find("kernel.threads-max = 600\n"), std::string::npos);
    EXPECT_NE(file.find("kernel.shmmax = 67108864\n"), std::string::npos);
    EXPECT_EQ(file.find("kernel.shmmni"), std::string::npos);
    cConf_Inf conf = CheckedConf();
    EXPECT_EQ(conf.ulThreadMax, 600u);
    EXPECT_EQ(conf.ulFileMax, 100000u);
}

// A new IPC namespace starts with kernel.shmmax and kernel.shmall at the
// kernel's "no limit" default, beyond the record's 32-bit fields: they are
// reported as the field's largest value, nvcmd check prints them unsigned
// and says what they mean, setting the shown value changes nothing, and a
// smaller one is written with an answer that names what it replaced.
TEST_F(LiveChange, KernelLimitsBeyondTheFieldAreReportedSaturated) {
    const std::string noLimit = "18446744073692774399";
    Tool({"sysctl", "-w", "kernel.shmmax=" + noLimit});
    Tool({"sysctl", "-w", "kernel.shmall=" + noLimit});
    ASSERT_EQ(Sysctl("kernel.shmmax"), noLimit);
    cConf_Inf conf = CheckedConf();
    EXPECT_EQ(conf.ulShmMax, 4294967295u);
    EXPECT_EQ(conf.ulShmAll, 4294967295u);

    nvtest::TempDir files;
    setenv("NVUI_SOCKET", agent.SocketPath().c_str(), 1);
    setenv("NVUI_LOG", files.File("nvcmd.log").c_str(), 1);
    nvtest::RunResult r = nvtest::RunProgram({std::string(NV_BIN_DIR) + "/nvcmd", "check"});
    unsetenv("NVUI_SOCKET");
    unsetenv("NVUI_LOG");
    ASSERT_EQ(r.iExitCode, 0) << r.sStderr;
    nlohmann::json j = nlohmann::json::parse(r.sStdout);
    EXPECT_EQ(j["ulShmMax"].dump(), "4294967295");
    EXPECT_EQ(j["ulShmAll"].dump(), "4294967295");
    EXPECT_NE(r.sStderr.find("ulShmMax is 4294967295"), std::string::npos) << r.sStderr;
    EXPECT_NE(r.sStderr.find("no limit"), std::string::npos) << r.sStderr;

    EXPECT_EQ(Send(7, "4294967295"), em_ActNeedNoSet) << detail;
    EXPECT_NE(detail.find("no-limit default"), std::string::npos) << detail;
    EXPECT_EQ(Sysctl("kernel.shmmax"), noLimit);
    EXPECT_EQ(Send(8, "2097152"), em_ActSuccAll) << detail;
    EXPECT_NE(detail.find(noLimit + " (no limit) and is now 2097152"), std::string::npos) << detail;
    EXPECT_EQ(Sysctl("kernel.shmall"), "2097152");
}

TEST_F(LiveChange, HostNameEverywhereOrNowhere) {
    EXPECT_EQ(Send(57, "web-07"), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"hostname"}), "web-07\n");
    EXPECT_EQ(nvtest::ReadFile("/etc/hostname"), "web-07\n");
    EXPECT_EQ(Tool({"getent", "hosts", "web-07"}).substr(0, 10), "127.0.1.1 ");
    EXPECT_EQ(Send(57, "web-07"), em_ActNeedNoSet);
    EXPECT_EQ(Send(57, "bad_name"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(57, "a23456789012345678901234567890123"), em_ActPostValueNotValid);
    EXPECT_EQ(Tool({"hostname"}), "web-07\n");
    // /etc/hosts cannot be replaced (a mount point): nothing changes.
    std::string hosts = nvtest::ReadFile("/etc/hosts");
    ASSERT_EQ(mount("/etc/hosts", "/etc/hosts", nullptr, MS_BIND, nullptr), 0);
    EXPECT_EQ(Send(57, "web-08"), em_ActFail);
    EXPECT_NE(detail.find("nothing was changed"), std::string::npos) << detail;
    umount("/etc/hosts");
    EXPECT_EQ(Tool({"hostname"}), "web-07\n");
    EXPECT_EQ(nvtest::ReadFile("/etc/hostname"), "web-07\n");
    EXPECT_EQ(nvtest::ReadFile("/etc/hosts"), hosts);
}

TEST_F(LiveChange, FirewallRulesPoliciesAndTheirPersistence) {
    Tool({"nft", "flush", "ruleset"});
    EXPECT_EQ(Send(33, "1 1 - 0 - 22 1"), em_ActSuccAll) << detail;
    EXPECT_EQ(Send(33, "2 2 10.0.0.0/8 53 - 0 2"), em_ActSuccAll) << detail;
    EXPECT_EQ(Send(33, "1 1 - 0 192.168.1.20 80 3"), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"iptables", "-S", "INPUT"}), "-P INPUT ACCEPT\n-A INPUT -j NORVANE-INPUT\n");
    EXPECT_EQ(Tool({"iptables", "-S", "NORVANE-INPUT"}),
              "-N NORVANE-INPUT\n"
              "-A NORVANE-INPUT -d 192.168.1.20/32 -p tcp -m tcp --dport 80 -j REJECT "
              "--reject-with icmp-port-unreachable\n"
              "-A NORVANE-INPUT -p tcp -m tcp --dport 22 -j ACCEPT\n"
              "-A NORVANE-INPUT -s 10.0.0.0/8 -p udp -m udp --sport 53 -j DROP\n");
    // The address-less rule applies to IPv6 too.
    EXPECT_EQ(Tool({"ip6tables", "-S", "NORVANE-INPUT"}),
              "-N NORVANE-INPUT\n-A NORVANE-INPUT -p tcp -m tcp --dport 22 -j ACCEPT\n");
    EXPECT_EQ(Send(34, "9"), em_ActPostValueNotValid);
    EXPECT_EQ(detail, "There is no entry 9; the list has 3 entries, numbered 1 to 3.");
    EXPECT_EQ(Send(34, "2"), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"iptables", "-S", "NORVANE-INPUT"}).find("--dport 22"), std::string::npos);
    EXPECT_EQ(Tool({"ip6tables", "-S", "NORVANE-INPUT"}), "-N NORVANE-INPUT\n");
    EXPECT_EQ(Send(33, "1 1 300.1.1.1 0 - 22 1"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(32, "2"), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"iptables", "-S", "INPUT"}).substr(0, 14), "-P INPUT DROP\n");
    EXPECT_EQ(Tool({"ip6tables", "-S", "INPUT"}).substr(0, 14), "-P INPUT DROP\n");
    EXPECT_EQ(Send(32, "2"), em_ActNeedNoSet);
    EXPECT_EQ(Send(32, "-"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(37, "1 2 - 0 192.168.1.1 123 1"), em_ActSuccAll) << detail;
    EXPECT_NE(Tool({"iptables", "-S", "NORVANE-OUTPUT"})
                  .find("-A NORVANE-OUTPUT -d 192.168.1.1/32 -p udp -m udp --dport 123 -j ACCEPT"),
              std::string::npos);
    cConf_Inf conf;
    cSvrState svr;
    std::string err;
    ASSERT_TRUE(agent.Check(conf, svr, err)) << err;
    // The policy, the rules the drop policy keeps, the agent's two rules.
    EXPECT_EQ(svr.vsIptablesInputList,
              tVecStr({"Policy: drop", "     agent: loopback ACCEPT (kept for the drop policy)",
                       "     agent: replies to established connections ACCEPT (kept for the drop "
                       "policy)",
                       "     agent: TCP of connections open before tracking started ACCEPT (kept "
                       "for the drop policy)",
                       "     agent: ICMPv6 (neighbour discovery) ACCEPT (kept for the drop "
                       "policy) (IPv6)",
                       "  1  tcp  any:any  -> 192.168.1.20:80  REJECT",
                       "  2  udp  10.0.0.0/8:53  -> any:any  DROP"}));
    EXPECT_EQ(svr.chIptablesInputPolicy, '2');
    ASSERT_EQ(svr.vsIptablesOutputList.size(), 2u);

    // Only the agent's chains are kept in the data directory, and put back
    // when the agent starts.
    std::string saved = nvtest::ReadFile(agent.DataDir() + "/firewall-own.rules");
    EXPECT_NE(saved.find("4 -A NORVANE-OUTPUT -d 192.168.1.1/32"), std::string::npos) << saved;
    EXPECT_NE(saved.find("4 -P INPUT DROP"), std::string::npos) << saved;
    ASSERT_EQ(agent.Stop(), 0);
    Tool({"nft", "flush", "ruleset"});
    ASSERT_TRUE(agent.Start(&err)) << err;
    EXPECT_NE(Tool({"iptables", "-S", "NORVANE-OUTPUT"}).find("--dport 123"), std::string::npos);
    EXPECT_EQ(Tool({"iptables", "-S", "INPUT"}), "-P INPUT DROP\n-A INPUT -j NORVANE-INPUT\n");
    EXPECT_EQ(Tool({"ip6tables", "-S", "INPUT"}), "-P INPUT DROP\n-A INPUT -j NORVANE-INPUT\n");

    EXPECT_EQ(Send(39, ""), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"iptables", "-S", "NORVANE-OUTPUT"}), "-N NORVANE-OUTPUT\n");
    EXPECT_EQ(Send(39, ""), em_ActNeedNoSet);
    EXPECT_EQ(Send(38, "1"), em_ActPostValueNotValid);
    EXPECT_EQ(detail, "The list is empty.");
    EXPECT_EQ(Send(32, "1"), em_ActSuccAll) << detail;
    EXPECT_EQ(Tool({"iptables", "-S", "NORVANE-INPUT"}),
              "-N NORVANE-INPUT\n"
              "-A NORVANE-INPUT -d 192.168.1.20/32 -p tcp -m tcp --dport 80 -j REJECT "
              "--reject-with icmp-port-unreachable\n"
              "-A NORVANE-INPUT -s 10.0.0.0/8 -p udp -m udp --sport 53 -j DROP\n");
    EXPECT_EQ(Tool({"ip6tables", "-S", "INPUT"}).substr(0, 16), "-P INPUT ACCEPT\n");
}

// The pids of the DHCP clients in the sandbox (ifdown's, releasing a lease,
// and ifup's, asking for one).
std::vector<pid_t> DhcpClients() {
    std::istringstream out(Tool({"pgrep", "-x", "dhclient"}));
    std::vector<pid_t> pids;
    pid_t pid = 0;
    while (out >> pid)
        pids.push_back(pid);
    return pids;
}

TEST_F(LiveChange, AChecksIsAnsweredWhileAChangeWaitsForItsLease) {
    // No DHCP server behind the peer: switching nv0 to DHCP waits for a
    // lease that never comes.
    std::string interfaces = nvtest::ReadFile("/etc/network/interfaces");
    std::atomic<int> result{-2};
    std::thread change([&] { result = agent.Send(54, "nv0", nullptr, 120000); });
    bool started = false;
    for (int i = 0; i < 500 && !started; ++i) {
        started = !DhcpClients().empty();
        usleep(20000);
    }
    EXPECT_TRUE(started) << "the change did not start a DHCP client";

    cConf_Inf conf;
    cSvrState svr;
    std::string err;
    auto asked = std::chrono::steady_clock::now();
    EXPECT_TRUE(agent.Check(conf, svr, err)) << err;
    RecordProperty("check_ms",
                   static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                        std::chrono::steady_clock::now() - asked)
                                        .count()));
    EXPECT_EQ(result.load(), -2) << "the change ended before the check: nothing was shown";
    bool shown = false;
    for (const std::string& l : svr.vsIfconfigList) {
        if (l.find("nv0") == std::string::npos)
            continue;
        shown = true;
        EXPECT_EQ(l.find("dynamic"), std::string::npos) << l;
    }
    EXPECT_TRUE(shown) << ::testing::PrintToString(svr.vsIfconfigList);

    // The clients give up: the change fails and is undone.
    for (int i = 0; i < 2000 && result.load() == -2; ++i) {
        for (pid_t pid : DhcpClients())
            kill(pid, SIGTERM);
        usleep(50000);
    }
    change.join();
    EXPECT_EQ(result.load(), em_ActFail);
    EXPECT_EQ(nvtest::ReadFile("/etc/network/interfaces"), interfaces);
}

TEST_F(LiveChange, PasswordThroughTheSystemsTool) {
    int code = -1;
    Tool({"useradd", "-M", "-s", "/usr/sbin/nologin", "nvpwuser"}, &code);
    ASSERT_EQ(code, 0);
    auto hash = [] {
        std::string line = Tool({"getent", "shadow", "nvpwuser"});
        size_t a = line.find(':');
        return line.substr(a + 1, line.find(':', a + 1) - a - 1);
    };
    std::string before = hash();
    EXPECT_EQ(Send(56, "nvpwuser S3cret:x S3cret:x"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(56, "nvpwuser S3cret-1 S3cret-1"), em_ActSuccAll) << detail;
    std::string after = hash();
    ASSERT_NE(after, before);
    ASSERT_EQ(after[0], '$');
    struct crypt_data cd {};
    const char* check = crypt_r("S3cret-1", after.c_str(), &cd);
    ASSERT_NE(check, nullptr);
    EXPECT_EQ(std::string(check), after);
    EXPECT_EQ(Send(56, "nvpwuser a b"), em_ActPostValueNotValid);
    EXPECT_EQ(Send(56, "nosuchuser a a"), em_ActPostValueNotValid);
    EXPECT_EQ(detail, "There is no user named nosuchuser.");
    EXPECT_EQ(hash(), after);
}

}  // namespace

namespace {

// The journal's old and new values are read from the machine before and
// after each change; a change not made, and a password, record none.
TEST_F(LiveChange, TheJournalHoldsEachChangesOldAndNewValue) {
    using nlohmann::json;
    auto last = [this] { return agent.Process().ReadJournal().back(); };
    Tool({"sysctl", "-w", "net.ipv4.icmp_echo_ignore_all=0"});
    ASSERT_EQ(Send(4, "1"), em_ActSuccAll) << detail;
    json line = last();
    EXPECT_EQ(line["old"], json::parse(R"({"chIcmpEchoIgnoreAll": "0"})")) << line;
    EXPECT_EQ(line["new"], json::parse(R"({"chIcmpEchoIgnoreAll": "1"})")) << line;
    ASSERT_EQ(Send(4, "1"), em_ActNeedNoSet);
    line = last();
    EXPECT_FALSE(line.contains("old")) << line;
    EXPECT_FALSE(line.contains("new")) << line;

    unsigned long threads = std::stoul(Sysctl("kernel.threads-max"));
    unsigned long wanted = threads == 6000 ? 7000 : 6000;
    ASSERT_EQ(Send(10, std::to_string(wanted)), em_ActSuccAll) << detail;
    line = last();
    EXPECT_EQ(line["old"], json({{"ulThreadMax", threads}})) << line;
    EXPECT_EQ(line["new"], json({{"ulThreadMax", wanted}})) << line;

    std::string host = Tool({"hostname"});
    host.pop_back();
    ASSERT_EQ(Send(57, "journal-host"), em_ActSuccAll) << detail;
    line = last();
    EXPECT_EQ(line["old"], json({{"sHostname", host}})) << line;
    EXPECT_EQ(line["new"], json({{"sHostname", "journal-host"}})) << line;

    Tool({"nft", "flush", "ruleset"});
    Tool({"iptables", "-w", "5", "-A", "INPUT", "-p", "udp", "--dport", "53", "-j", "ACCEPT"});
    ASSERT_EQ(Send(33, "1 1 - 0 - 22 1"), em_ActSuccAll) << detail;
    line = last();
    EXPECT_EQ(line["old"], json::parse(R"({"vsIptablesInputList": []})")) << line;
    ASSERT_EQ(line["new"]["vsIptablesInputList"].size(), 1u) << line;
    std::string added = line["new"]["vsIptablesInputList"][0];
    EXPECT_NE(added.find(":22"), std::string::npos) << added;
    ASSERT_EQ(Send(35, ""), em_ActSuccAll) << detail;
    line = last();
    // Another tool's rule is not the agent's to clear.
    EXPECT_EQ(line["old"]["vsIptablesInputList"].size(), 1u) << line;
    EXPECT_EQ(line["new"], json::parse(R"({"vsIptablesInputList": []})")) << line;

    int code = -1;
    Tool({"useradd", "-M", "-s", "/usr/sbin/nologin", "nvjournaluser"}, &code);
    ASSERT_EQ(code, 0);
    ASSERT_EQ(Send(56, "nvjournaluser Pw-journal-9 Pw-journal-9"), em_ActSuccAll) << detail;
    line = last();
    EXPECT_EQ(line["user"], "nvjournaluser");
    EXPECT_FALSE(line.contains("old")) << line;
    EXPECT_EQ(nvtest::ReadFile(agent.Process().JournalPath()).find("Pw-journal"),
              std::string::npos);
}

}  // namespace
