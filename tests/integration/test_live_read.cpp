// The live agent's check answer inside the namespace sandbox: every part of
// the state is set up with the system's own tools first, then read back
// through norvaned --backend system and compared.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

class LiveRead : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    void Check() {
        std::string err;
        ASSERT_TRUE(agent.Check(conf, svr, err)) << err;
    }
    static bool HasLine(const tVecStr& lines, const std::vector<std::string>& parts) {
        for (const std::string& l : lines) {
            bool all = true;
            for (const std::string& p : parts)
                all = all && l.find(p) != std::string::npos;
            if (all)
                return true;
        }
        return false;
    }
    nvtest::LiveAgent agent;
    cConf_Inf conf;
    cSvrState svr;
};

TEST_F(LiveRead, HostNameDateAndDistribution) {
    Tool({"hostname", "nv-read-test"});
    Check();
    EXPECT_EQ(conf.sHostname, "nv-read-test");
    std::string shown = Tool({"hostname"});
    EXPECT_EQ(conf.sHostname + "\n", shown);
    std::string today = Tool({"date", "+%Y-%m-%d"});
    EXPECT_EQ(conf.sNowDate + "\n", today);
    EXPECT_EQ(conf.sNowTime.size(), 8u);
    std::string osr = nvtest::ReadFile("/etc/os-release");
    if (osr.find("\nID=debian") != std::string::npos || osr.rfind("ID=debian", 0) == 0) {
        EXPECT_EQ(conf.chOSReleaseVersion, emOSUnknown);
    }
    EXPECT_NE(conf.chOSReleaseVersion, emOSNoSet);
}

TEST_F(LiveRead, KernelSettingsAsSysctlSetsThem) {
    Tool({"sysctl", "-w", "net.ipv4.icmp_echo_ignore_all=1"});
    Tool({"sysctl", "-w", "net.ipv4.tcp_syncookies=0"});
    Tool({"sysctl", "-w", "net.ipv4.tcp_tw_reuse=2"});
    Tool({"sysctl", "-w", "kernel.shmmni=1234"});
    Tool({"sysctl", "-w", "kernel.shmmax=567890123"});
    Tool({"sysctl", "-w", "kernel.threads-max=7777"});
    Tool({"sysctl", "-w", "fs.file-max=88888"});
    Check();
    EXPECT_EQ(conf.chIcmpEchoIgnoreAll, '1');
    EXPECT_EQ(conf.chTcpSyncookies, '0');
    EXPECT_EQ(conf.chTcpTwReuse, '2');  // loopback-only reuse, shown as the kernel holds it
    EXPECT_EQ(conf.ulShmMni, 1234u);
    EXPECT_EQ(conf.ulShmMax, 567890123u);
    EXPECT_EQ(conf.ulThreadMax, 7777u);
    EXPECT_EQ(conf.ulFileMax, 88888u);
    // A kernel value past the record's 32-bit field (the default "no limit")
    // is shown as the field's largest value.
    unsigned long long shmall = std::stoull(Tool({"sysctl", "-n", "kernel.shmall"}));
    EXPECT_EQ(conf.ulShmAll, std::min<unsigned long long>(shmall, 4294967295ull));
}

TEST_F(LiveRead, InterfacesAsIpShowsThem) {
    Tool({"ip", "addr", "add", "10.77.0.2/24", "dev", "nv0"});
    Tool({"ip", "link", "add", "nvdown", "type", "veth", "peer", "name", "nvdown2"});
    Check();
    std::string mac = Tool({"cat", "/sys/class/net/nv0/address"});
    mac.pop_back();
    std::string index = Tool({"cat", "/sys/class/net/nv0/ifindex"});
    index.pop_back();
    EXPECT_TRUE(HasLine(svr.vsIfconfigList, {" " + index + "  nv0 ", mac, "static", "up",
                                             "10.77.0.2", "255.255.255.0"}))
        << ::testing::PrintToString(svr.vsIfconfigList);
    EXPECT_TRUE(HasLine(svr.vsIfconfigList, {"lo", "up", "127.0.0.1", "255.0.0.0"}));
    EXPECT_TRUE(HasLine(svr.vsIfconfigList, {"nvdown", "down", "-"}));
    std::string links = Tool({"ip", "-o", "link", "show"});
    size_t count = 0;
    for (char ch : links)
        count += ch == '\n';
    EXPECT_EQ(svr.vsIfconfigList.size(), count);
}

TEST_F(LiveRead, OtherToolsRulesAndBothFamiliesPoliciesAsIptablesShowsThem) {
    Tool({"iptables", "-w", "5", "-A", "INPUT", "-p", "tcp", "--dport", "22", "-j", "ACCEPT"});
    Tool({"iptables", "-w", "5", "-A", "INPUT", "-i", "lo", "-j", "ACCEPT"});
    Tool({"iptables", "-w", "5", "-A", "OUTPUT", "-d", "10.1.2.3", "-p", "udp", "--sport", "53",
          "-j", "DROP"});
    Tool({"iptables", "-w", "5", "-P", "OUTPUT", "DROP"});
    Check();
    EXPECT_EQ(svr.vsIptablesInputList,
              std::vector<std::string>({"Policy: accept",
                                        "     other: -p tcp -m tcp --dport 22 -j ACCEPT",
                                        "     other: -i lo -j ACCEPT"}));
    EXPECT_EQ(
        svr.vsIptablesOutputList,
        std::vector<std::string>({"Policy: IPv4 drop, IPv6 accept",
                                  "     other: -d 10.1.2.3/32 -p udp -m udp --sport 53 -j DROP"}));
    EXPECT_EQ(svr.chIptablesInputPolicy, '1');
    // The families differ: neither accept nor drop.
    EXPECT_EQ(svr.chIptablesOutputPolicy, '0');
    // A change made by another tool between two checks is seen at the next.
    Tool({"iptables", "-w", "5", "-D", "INPUT", "1"});
    Tool({"iptables", "-w", "5", "-P", "INPUT", "DROP"});
    Tool({"ip6tables", "-w", "5", "-P", "INPUT", "DROP"});
    Check();
    EXPECT_EQ(svr.vsIptablesInputList,
              std::vector<std::string>({"Policy: drop", "     other: -i lo -j ACCEPT"}));
    EXPECT_EQ(svr.chIptablesInputPolicy, '2');
    Check();
    EXPECT_EQ(svr.vsIptablesInputList.size(), 2u);
}

TEST_F(LiveRead, ListenersWithTheirProcess) {
    int v4 = socket(AF_INET, SOCK_STREAM, 0);
    int v6 = socket(AF_INET6, SOCK_STREAM, 0);
    sockaddr_in a4{};
    a4.sin_family = AF_INET;
    a4.sin_port = htons(4711);
    a4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    sockaddr_in6 a6{};
    a6.sin6_family = AF_INET6;
    a6.sin6_port = htons(4712);
    a6.sin6_addr = in6addr_any;
    ASSERT_EQ(bind(v4, reinterpret_cast<sockaddr*>(&a4), sizeof a4), 0);
    ASSERT_EQ(bind(v6, reinterpret_cast<sockaddr*>(&a6), sizeof a6), 0);
    ASSERT_EQ(listen(v4, 1), 0);
    ASSERT_EQ(listen(v6, 1), 0);
    Check();
    std::string comm = nvtest::ReadFile("/proc/self/comm");
    comm.pop_back();
    bool found4 = false, found6 = false;
    for (const cTcpListen& t : svr.vTcpListen) {
        std::string addr = t.szListenAddr;
        if (addr == "127.0.0.1:4711" || addr == "[::]:4712") {
            EXPECT_EQ(t.iPid, getpid()) << addr;
            EXPECT_EQ(std::string(t.szProgramName), comm) << addr;
            (addr[0] == '[' ? found6 : found4) = true;
        }
    }
    EXPECT_TRUE(found4);
    EXPECT_TRUE(found6);
    EXPECT_TRUE(
        HasLine(svr.vsTcpListenList, {"127.0.0.1", "4711", std::to_string(getpid()), comm}));
    close(v4);
    close(v6);
    Check();
    for (const cTcpListen& t : svr.vTcpListen)
        EXPECT_NE(std::string(t.szListenAddr), "127.0.0.1:4711");
}

TEST_F(LiveRead, MemoryAndFileSystems) {
    Check();
    std::ifstream mi("/proc/meminfo");
    std::string key;
    long long kb = 0, total = 0;
    std::string unit;
    while (mi >> key >> kb) {
        std::getline(mi, unit);
        if (key == "MemTotal:")
            total = kb;
    }
    EXPECT_EQ(svr.iMemTotal, static_cast<int>(total / 1024));
    EXPECT_GT(svr.iMemUse, 0);
    EXPECT_LE(svr.iMemUse, svr.iMemTotal);
    ASSERT_FALSE(svr.vDiskInfo.empty());
    // df's 1M blocks of the root file system, as statvfs gives them.
    std::istringstream df(Tool({"df", "-P", "-B1M", "/"}));
    std::string header, fs;
    long long blocks = 0;
    std::getline(df, header);
    df >> fs >> blocks;
    bool rootSeen = false;
    for (const cDiskInfo& d : svr.vDiskInfo) {
        if (std::string(d.szMountOn) == "/") {
            rootSeen = true;
            EXPECT_NEAR(d.iSizeTotal, blocks, 1);
        }
    }
    EXPECT_TRUE(rootSeen);
    EXPECT_EQ(svr.vsDiskInfoList.size(), svr.vDiskInfo.size());
}

TEST_F(LiveRead, AgentSettingsPersistInTheDataDirectory) {
    EXPECT_EQ(agent.Send(17, "80"), em_ActSuccAll);
    EXPECT_EQ(agent.Send(15, "/usr/sbin/sshd -D\ncron\n"), em_ActSuccAll);
    EXPECT_EQ(agent.Send(23, "/dev/vdb1 1000 100 50"), em_ActSuccAll);
    std::string detail;
    EXPECT_EQ(agent.Send(24, "3", &detail), em_ActPostValueNotValid);
    EXPECT_EQ(detail, "There is no entry 3; the list has 1 entry, numbered 1.");
    EXPECT_EQ(agent.Send(17, "80"), em_ActNeedNoSet);
    EXPECT_EQ(agent.Send(2, "2"), em_ActSuccAll);
    std::string saved = nvtest::ReadFile(agent.DataDir() + "/settings.json");
    EXPECT_NE(saved.find("\"shCpuCeil\": 80"), std::string::npos) << saved;
    std::string err;
    ASSERT_TRUE(agent.Restart(&err)) << err;
    Check();
    EXPECT_EQ(conf.shCpuCeil, 80);
    EXPECT_EQ(conf.vProcessMonitList, (tVecStr{"/usr/sbin/sshd -D", "cron"}));
    ASSERT_EQ(conf.vsDV.size(), 1u);
    EXPECT_NE(conf.vsDV[0].find("/dev/vdb1"), std::string::npos);
    EXPECT_EQ(conf.chLangCode, 2);
}

}  // namespace
