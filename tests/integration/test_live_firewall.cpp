// The live agent's firewall beside other tools' rules, with real traffic
// from the peer namespace: each scenario set up as the tool itself sets
// its rules up, and every rule the agent did not make checked to be still
// there, in its order, with its counters, after every command.
#include <gtest/gtest.h>

#include <fstream>

#include "link/result_codes.h"
#include "live_sandbox.h"
#include "net_traffic.h"

using nvtest::EchoServer;
using nvtest::TcpEchoes;
using nvtest::Tool;

namespace {

const char* const kPeer = "peer";
const char* const kHost = "10.77.0.2";
const char* const kHost6 = "fd77::2";
const char* const kPeerAddr = "10.77.0.1";

// A rule of a table as iptables-save -c prints it, with its counters.
struct Counted {
    std::string rule;  // family, table and "-A ..." line
    unsigned long long packets = 0, bytes = 0;
};

std::vector<Counted> OtherToolsRules() {
    std::vector<Counted> out;
    for (const char* tool : {"iptables-save", "ip6tables-save"}) {
        std::istringstream in(Tool({tool, "-c"}));
        std::string line, table;
        while (std::getline(in, line)) {
            if (line.size() > 1 && line[0] == '*')
                table = line.substr(1);
            if (line.empty() || line[0] != '[' || line.find("NORVANE") != std::string::npos)
                continue;
            Counted c;
            size_t close = line.find(']');
            sscanf(line.c_str(), "[%llu:%llu]", &c.packets, &c.bytes);
            c.rule = std::string(tool) + " " + table + line.substr(close + 1);
            out.push_back(c);
        }
    }
    return out;
}

class LiveFirewall : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!nvtest::InSandbox())
            return;
        Tool({"ip", "addr", "add", "10.77.0.2/24", "dev", "nv0"});
        Tool({"ip", "-6", "addr", "add", "fd77::2/64", "dev", "nv0", "nodad"});
        Tool({"ip", "-n", "peer", "-6", "addr", "add", "fd77::1/64", "dev", "nvpeer0", "nodad"});
    }
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        Tool({"nft", "flush", "ruleset"});
        for (const char* t : {"iptables", "ip6tables"}) {
            for (const char* c : {"INPUT", "OUTPUT", "FORWARD"})
                Tool({t, "-w", "5", "-P", c, "ACCEPT"});
        }
    }
    void StartAgent() {
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    int Send(short cmd, const std::string& payload) { return agent.Send(cmd, payload, &detail); }
    cSvrState Check() {
        cConf_Inf conf;
        cSvrState svr;
        std::string err;
        EXPECT_TRUE(agent.Check(conf, svr, err)) << err;
        return svr;
    }
    // Every rule of another tool still there, in order, its counters kept.
    void ExpectOthersKept(const std::vector<Counted>& before, const char* when) {
        std::vector<Counted> now = OtherToolsRules();
        ASSERT_EQ(now.size(), before.size()) << when;
        for (size_t i = 0; i < now.size(); ++i) {
            EXPECT_EQ(now[i].rule, before[i].rule) << when;
            EXPECT_GE(now[i].packets, before[i].packets) << when << ": " << now[i].rule;
            EXPECT_GE(now[i].bytes, before[i].bytes) << when << ": " << now[i].rule;
        }
    }
    static bool Has(const tVecStr& lines, const std::string& text) {
        for (const std::string& l : lines) {
            if (l.find(text) != std::string::npos)
                return true;
        }
        return false;
    }
    nvtest::LiveAgent agent;
    std::string detail;
};

TEST_F(LiveFirewall, EmptyFirewallRulesAndDropPolicyWithRealTraffic) {
    StartAgent();
    EchoServer web("", 8080), other("", 8081), peerTcp(kPeer, 9000), peerDns(kPeer, 53, true);
    ASSERT_TRUE(web.Listening() && other.Listening() && peerTcp.Listening() && peerDns.Listening());
    ASSERT_TRUE(TcpEchoes(kPeer, kHost, 8080));
    ASSERT_TRUE(TcpEchoes(kPeer, kHost6, 8080));

    // A drop rule without addresses closes the port for both families.
    ASSERT_EQ(Send(33, "1 1 - 0 - 8080 2"), em_ActSuccAll) << detail;
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    EXPECT_FALSE(TcpEchoes(kPeer, kHost6, 8080, 700));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8081));
    ASSERT_EQ(Send(34, "1"), em_ActSuccAll) << detail;
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8080));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost6, 8080));

    // A rule with an IPv4 address is IPv4's only.
    ASSERT_EQ(Send(33, "1 1 10.77.0.1 0 - 8080 2"), em_ActSuccAll) << detail;
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost6, 8080));
    ASSERT_EQ(Send(35, ""), em_ActSuccAll) << detail;

    // A drop policy: the accepted port stays open in both families, every
    // other new connection is dropped, while a session opened before, the
    // server's own connections out (TCP and DNS) and loopback go on.
    nvtest::TcpSession session(kPeer, kHost, 8081);
    ASSERT_TRUE(session.Open());
    ASSERT_EQ(Send(33, "2 1 - 0 - 8080 1"), em_ActSuccAll) << detail;
    ASSERT_EQ(Send(32, "2"), em_ActSuccAll) << detail;
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8080));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost6, 8080));
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8081, 700));
    EXPECT_FALSE(TcpEchoes(kPeer, kHost6, 8081, 700));
    EXPECT_TRUE(session.Ping());
    EXPECT_TRUE(TcpEchoes("", kPeerAddr, 9000));
    EXPECT_TRUE(nvtest::UdpEchoes("", kPeerAddr, 53));
    EXPECT_TRUE(TcpEchoes("", "fd77::1", 9000));
    EXPECT_TRUE(TcpEchoes("", "127.0.0.1", 8081));
    EXPECT_TRUE(TcpEchoes("", "::1", 8081));
    cSvrState svr = Check();
    EXPECT_EQ(svr.chIptablesInputPolicy, '2');
    ASSERT_GE(svr.vsIptablesInputList.size(), 4u);
    EXPECT_EQ(svr.vsIptablesInputList[0], "Policy: drop");
    EXPECT_TRUE(Has(svr.vsIptablesInputList, "agent: loopback ACCEPT (kept for the drop policy)"));
    EXPECT_EQ(svr.vsIptablesInputList.back(), "  1  tcp  any:any  -> any:8080  ACCEPT");
    // The kept rules carry no index: entry 1 is the accept.
    ASSERT_EQ(Send(34, "2"), em_ActPostValueNotValid);
    EXPECT_EQ(detail, "There is no entry 2; the list has 1 entry, numbered 1.");

    // Back to accept: the kept rules go, everything gets in again.
    ASSERT_EQ(Send(32, "1"), em_ActSuccAll) << detail;
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8081));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost6, 8081));
    svr = Check();
    EXPECT_FALSE(Has(svr.vsIptablesInputList, "kept for the drop policy"));

    // An output drop policy keeps loopback and the replies of sessions that
    // came in.
    ASSERT_EQ(Send(36, "2"), em_ActSuccAll) << detail;
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8081));
    EXPECT_TRUE(TcpEchoes("", "127.0.0.1", 8081));
    EXPECT_FALSE(TcpEchoes("", kPeerAddr, 9000, 700));
    ASSERT_EQ(Send(36, "1"), em_ActSuccAll) << detail;
    EXPECT_TRUE(TcpEchoes("", kPeerAddr, 9000));
}

TEST_F(LiveFirewall, Fail2banStyleBanWinsAndItsJumpIsNotTheAgentsToDelete) {
    // As fail2ban's multiport action sets a jail up: its chain, entered by
    // a jump it inserts at the top of INPUT, and a ban in it.
    Tool({"iptables", "-w", "5", "-N", "f2b-web"});
    Tool({"iptables", "-w", "5", "-A", "f2b-web", "-j", "RETURN"});
    Tool({"iptables", "-w", "5", "-I", "INPUT", "1", "-p", "tcp", "-m", "multiport", "--dports",
          "8080", "-j", "f2b-web"});
    StartAgent();
    EchoServer web("", 8080);
    ASSERT_TRUE(TcpEchoes(kPeer, kHost, 8080));
    ASSERT_EQ(Send(33, "1 1 - 0 - 8080 1"), em_ActSuccAll) << detail;
    ASSERT_EQ(Send(32, "2"), em_ActSuccAll) << detail;
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8080));
    std::vector<Counted> before = OtherToolsRules();
    ASSERT_GE(before.size(), 2u);
    ASSERT_GT(before[0].packets, 0u) << before[0].rule;

    // A ban fail2ban adds after the agent's accept still wins over it.
    Tool({"iptables", "-w", "5", "-I", "f2b-web", "1", "-s", kPeerAddr, "-j", "REJECT",
          "--reject-with", "icmp-port-unreachable"});
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    before = OtherToolsRules();

    cSvrState svr = Check();
    EXPECT_TRUE(
        Has(svr.vsIptablesInputList, "     fail2ban: -p tcp -m multiport --dports 8080 -j f2b-web"))
        << ::testing::PrintToString(svr.vsIptablesInputList);
    // fail2ban's jump is shown after the agent's rule; its place is not an
    // index the agent deletes.
    ASSERT_EQ(Send(34, "2"), em_ActPostValueNotValid);
    EXPECT_EQ(detail,
              "Entry 2 is fail2ban's rule \"-p tcp -m multiport --dports 8080 -j f2b-web\" in "
              "INPUT, not the agent's; the agent's rules are numbered 1 to 1.");
    ExpectOthersKept(before, "after the refused delete");
    ASSERT_EQ(Send(33, "2 1 - 0 - 9090 1"), em_ActSuccAll) << detail;
    EXPECT_EQ(detail, "");
    ASSERT_EQ(Send(34, "1"), em_ActSuccAll) << detail;
    ASSERT_EQ(Send(35, ""), em_ActSuccAll) << detail;
    ExpectOthersKept(before, "after add, delete, clear");
    ASSERT_EQ(agent.Stop(), 0);
    StartAgent();
    ExpectOthersKept(before, "after a restart");
    EXPECT_EQ(Tool({"iptables", "-S", "INPUT"}),
              "-P INPUT DROP\n"
              "-A INPUT -p tcp -m multiport --dports 8080 -j f2b-web\n"
              "-A INPUT -j NORVANE-INPUT\n");
    // Unbanned, the peer still gets nothing through the drop policy, as the
    // agent's accept was cleared; an accept opens it again.
    Tool({"iptables", "-w", "5", "-D", "f2b-web", "1"});
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    ASSERT_EQ(Send(33, "1 1 - 0 - 8080 1"), em_ActSuccAll) << detail;
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8080));
}

TEST_F(LiveFirewall, DockerStylePublishedPortKeepsWorkingWithItsCountersAfterARestart) {
    // A "container" namespace behind a bridge-less veth, its port published
    // as docker publishes one: a DNAT in nat's DOCKER chain, accepted in
    // FORWARD's DOCKER chain.
    Tool({"ip", "netns", "add", "ctr"});
    Tool({"ip", "link", "add", "dk0", "type", "veth", "peer", "name", "dkc"});
    Tool({"ip", "link", "set", "dkc", "netns", "ctr"});
    Tool({"ip", "addr", "add", "10.78.0.1/24", "dev", "dk0"});
    Tool({"ip", "link", "set", "dk0", "up"});
    Tool({"ip", "-n", "ctr", "addr", "add", "10.78.0.2/24", "dev", "dkc"});
    Tool({"ip", "-n", "ctr", "link", "set", "dkc", "up"});
    Tool({"ip", "-n", "ctr", "link", "set", "lo", "up"});
    Tool({"ip", "-n", "ctr", "route", "add", "default", "via", "10.78.0.1"});
    Tool({"sysctl", "-w", "net.ipv4.ip_forward=1"});
    std::vector<std::vector<std::string>> rules = {
        {"-t", "nat", "-N", "DOCKER"},
        {"-t", "nat", "-A", "PREROUTING", "-m", "addrtype", "--dst-type", "LOCAL", "-j", "DOCKER"},
        {"-t", "nat", "-A", "DOCKER", "!", "-i", "dk0", "-p", "tcp", "-m", "tcp", "--dport", "8088",
         "-j", "DNAT", "--to-destination", "10.78.0.2:80"},
        {"-N", "DOCKER"},
        {"-N", "DOCKER-USER"},
        {"-A", "DOCKER-USER", "-j", "RETURN"},
        {"-A", "FORWARD", "-j", "DOCKER-USER"},
        {"-A", "FORWARD", "-o", "dk0", "-m", "conntrack", "--ctstate", "RELATED,ESTABLISHED", "-j",
         "ACCEPT"},
        {"-A", "FORWARD", "-o", "dk0", "-j", "DOCKER"},
        {"-A", "FORWARD", "-i", "dk0", "-j", "ACCEPT"},
        {"-A", "DOCKER", "-d", "10.78.0.2/32", "!", "-i", "dk0", "-o", "dk0", "-p", "tcp", "-m",
         "tcp", "--dport", "80", "-j", "ACCEPT"},
        {"-P", "FORWARD", "DROP"},
    };
    for (const auto& r : rules) {
        std::vector<std::string> argv = {"iptables", "-w", "5"};
        argv.insert(argv.end(), r.begin(), r.end());
        int code = -1;
        Tool(argv, &code);
        ASSERT_EQ(code, 0) << ::testing::PrintToString(r);
    }
    EchoServer app("ctr", 80);
    ASSERT_TRUE(app.Listening());
    ASSERT_TRUE(TcpEchoes(kPeer, kHost, 8088));
    StartAgent();
    ASSERT_EQ(Send(33, "1 1 - 0 - 22 1"), em_ActSuccAll) << detail;
    ASSERT_EQ(Send(32, "2"), em_ActSuccAll) << detail;
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8088));
    std::vector<Counted> before = OtherToolsRules();
    ASSERT_EQ(agent.Stop(), 0);
    StartAgent();
    ExpectOthersKept(before, "after a restart");
    for (const Counted& c : OtherToolsRules()) {
        if (c.rule.find("DNAT") != std::string::npos) {
            EXPECT_GT(c.packets, 0u) << c.rule;
        }
    }
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8088));
    cSvrState svr = Check();
    // The page says that the published port passes INPUT by.
    EXPECT_TRUE(Has(svr.vsIptablesInputList,
                    "     docker: published through nat, not filtered by INPUT: ! -i dk0 -p tcp "
                    "-m tcp --dport 8088 -j DNAT --to-destination 10.78.0.2:80"))
        << ::testing::PrintToString(svr.vsIptablesInputList);
    Tool({"ip", "netns", "del", "ctr"});
}

TEST_F(LiveFirewall, NetfilterPersistentsFilesAreNeverWrittenAndAReloadIsRepaired) {
    // As netfilter-persistent keeps and loads them: whole tables, nat and
    // mangle included.
    const std::string rules4 =
        "*mangle\n"
        ":PREROUTING ACCEPT [0:0]\n"
        "-A PREROUTING -p tcp -m tcp --dport 8443 -j MARK --set-xmark 0x7/0xffffffff\n"
        "COMMIT\n"
        "*nat\n"
        ":PREROUTING ACCEPT [0:0]\n"
        ":POSTROUTING ACCEPT [0:0]\n"
        "-A PREROUTING -p tcp -m tcp --dport 8443 -j DNAT --to-destination 10.77.0.2:8080\n"
        "-A POSTROUTING -s 10.99.0.0/16 -j MASQUERADE\n"
        "COMMIT\n"
        "*filter\n"
        ":INPUT ACCEPT [0:0]\n"
        "-A INPUT -s 10.66.0.0/16 -j DROP\n"
        "COMMIT\n";
    const std::string rules6 =
        "*filter\n:INPUT ACCEPT [0:0]\n-A INPUT -s fd66::/16 -j DROP\nCOMMIT\n";
    Tool({"mkdir", "-p", "/etc/iptables"});
    std::ofstream("/etc/iptables/rules.v4") << rules4;
    std::ofstream("/etc/iptables/rules.v6") << rules6;
    int code = -1;
    Tool({"iptables-restore", "/etc/iptables/rules.v4"}, &code);
    ASSERT_EQ(code, 0);
    Tool({"ip6tables-restore", "/etc/iptables/rules.v6"}, &code);
    ASSERT_EQ(code, 0);
    StartAgent();
    EchoServer web("", 8080);
    ASSERT_TRUE(TcpEchoes(kPeer, kHost, 8443));
    std::vector<Counted> before = OtherToolsRules();
    ASSERT_EQ(before.size(), 5u);
    ASSERT_EQ(Send(33, "1 1 - 0 - 8080 2"), em_ActSuccAll) << detail;
    ASSERT_EQ(Send(37, "1 1 - 0 - 9999 2"), em_ActSuccAll) << detail;
    ASSERT_EQ(Send(32, "2"), em_ActSuccAll) << detail;
    ASSERT_EQ(Send(34, "1"), em_ActSuccAll) << detail;
    ASSERT_EQ(Send(33, "1 1 - 0 - 8080 2"), em_ActSuccAll) << detail;
    ASSERT_EQ(Send(39, ""), em_ActSuccAll) << detail;
    ExpectOthersKept(before, "after the commands");
    ASSERT_EQ(agent.Stop(), 0);
    StartAgent();
    ExpectOthersKept(before, "after a restart");
    EXPECT_EQ(nvtest::ReadFile("/etc/iptables/rules.v4"), rules4);
    EXPECT_EQ(nvtest::ReadFile("/etc/iptables/rules.v6"), rules6);
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8443, 700));

    // netfilter-persistent's reload restores whole tables: the agent's
    // chains go, and the next check puts them back.
    Tool({"iptables-restore", "/etc/iptables/rules.v4"}, &code);
    ASSERT_EQ(code, 0);
    Tool({"ip6tables-restore", "/etc/iptables/rules.v6"}, &code);
    ASSERT_EQ(Tool({"iptables", "-S", "INPUT"}),
              "-P INPUT ACCEPT\n-A INPUT -s 10.66.0.0/16 -j DROP\n");
    cSvrState svr = Check();
    EXPECT_TRUE(Has(svr.vsIptablesInputList, "  1  tcp  any:any  -> any:8080  DROP"))
        << ::testing::PrintToString(svr.vsIptablesInputList);
    EXPECT_EQ(svr.chIptablesInputPolicy, '2');
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8443, 700));
    EXPECT_NE(agent.Process().ReadStderr().find("firewall chains were gone"), std::string::npos);
    EXPECT_EQ(nvtest::ReadFile("/etc/iptables/rules.v4"), rules4);
}

TEST_F(LiveFirewall, NativeNftablesDropIsShownAnAcceptItBlocksIsSaidAndItsReloadIsRepaired) {
    // As Debian's nftables service loads its file: the whole ruleset
    // flushed, then the administrator's table.
    const std::string conf =
        "flush ruleset\n"
        "table inet filter {\n"
        "  chain input {\n"
        "    type filter hook input priority 0; policy drop;\n"
        "    iif lo accept\n"
        "    ct state established,related accept\n"
        "    tcp dport 8081 accept\n"
        "  }\n"
        "}\n";
    std::ofstream("/etc/nftables.conf") << conf;
    int code = -1;
    Tool({"nft", "-f", "/etc/nftables.conf"}, &code);
    ASSERT_EQ(code, 0);
    StartAgent();
    EchoServer web("", 8080), other("", 8081);
    ASSERT_TRUE(TcpEchoes(kPeer, kHost, 8081));
    ASSERT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    cSvrState svr = Check();
    EXPECT_TRUE(Has(svr.vsIptablesInputList,
                    "     nftables: table inet filter, chain input on the input hook, policy drop"))
        << ::testing::PrintToString(svr.vsIptablesInputList);
    // The accept is added, and the answer says why it does not open the
    // port; the port stays closed, as said.
    ASSERT_EQ(Send(33, "1 1 - 0 - 8080 1"), em_ActSuccAll) << detail;
    EXPECT_NE(detail.find("It may not take effect"), std::string::npos) << detail;
    EXPECT_NE(detail.find("nftables's table inet filter, chain input (policy drop)"),
              std::string::npos)
        << detail;
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    // A drop needs no such word.
    ASSERT_EQ(Send(33, "2 1 - 0 - 8081 2"), em_ActSuccAll) << detail;
    EXPECT_EQ(detail, "");
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8081, 700));

    // The service's reload flushes the ruleset, the agent's chains with it;
    // the next check puts them back beside the administrator's table.
    Tool({"nft", "-f", "/etc/nftables.conf"}, &code);
    ASSERT_EQ(code, 0);
    ASSERT_TRUE(TcpEchoes(kPeer, kHost, 8081));
    svr = Check();
    EXPECT_TRUE(Has(svr.vsIptablesInputList, "  2  tcp  any:any  -> any:8081  DROP"))
        << ::testing::PrintToString(svr.vsIptablesInputList);
    EXPECT_TRUE(Has(svr.vsIptablesInputList, "table inet filter, chain input"));
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8081, 700));
    EXPECT_NE(Tool({"nft", "list", "table", "inet", "filter"}).find("tcp dport 8081 accept"),
              std::string::npos);
}

// ufw's own command from the refusal's detail ("...: ufw allow ... .").
std::vector<std::string> CommandIn(const std::string& detail) {
    size_t at = detail.find(": ufw ");
    std::string cmd = detail.substr(at + 2, detail.rfind('.') - at - 2);
    std::vector<std::string> argv;
    std::istringstream in(cmd);
    std::string w;
    while (in >> w)
        argv.push_back(w);
    return argv;
}

TEST_F(LiveFirewall, UfwEnabledRefusesWithUfwsOwnCommandAndKeepsItsRulesAcrossRestartAndBoot) {
    int code = -1;
    Tool({"ufw", "--version"}, &code);
    if (code != 0)
        GTEST_SKIP() << "ufw is not installed (scripts/deps.sh installs it)";
    StartAgent();
    EchoServer a("", 8080), b("", 8081), c("", 8082), d("", 8443);
    // A rule the agent made before ufw was enabled.
    ASSERT_EQ(Send(33, "1 1 - 0 - 8082 1"), em_ActSuccAll) << detail;
    Tool({"ufw", "--force", "enable"}, &code);
    ASSERT_EQ(code, 0);
    Tool({"ufw", "allow", "8081/tcp"}, &code);
    ASSERT_EQ(code, 0);
    nvtest::TcpSession session(kPeer, kHost, 8081);
    ASSERT_TRUE(session.Open());
    cSvrState svr = Check();
    EXPECT_TRUE(Has(svr.vsIptablesInputList, "     ufw: -j ufw-before-input"))
        << ::testing::PrintToString(svr.vsIptablesInputList);
    EXPECT_TRUE(Has(svr.vsIptablesInputList, "  1  tcp  any:any  -> any:8082  ACCEPT"));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8082));
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    std::vector<Counted> before = OtherToolsRules();

    ASSERT_EQ(Send(33, "1 1 - 0 - 8080 1"), em_ActFail);
    EXPECT_EQ(detail,
              "ufw manages this server's firewall, so the agent leaves the change to it: ufw "
              "insert 1 allow proto tcp from any to any port 8080.");
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    ASSERT_EQ(Send(32, "1"), em_ActFail);
    EXPECT_NE(detail.find("ufw default allow incoming."), std::string::npos) << detail;
    ASSERT_EQ(Send(36, "2"), em_ActFail);
    EXPECT_NE(detail.find("ufw default deny outgoing."), std::string::npos) << detail;
    ExpectOthersKept(before, "after the refusals");
    // ufw's own command, as given, does it.
    ASSERT_EQ(Send(33, "2 1 10.77.0.0/24 0 - 8080 1"), em_ActFail);
    std::vector<std::string> argv = CommandIn(detail);
    EXPECT_EQ(argv, std::vector<std::string>({"ufw", "allow", "proto", "tcp", "from",
                                              "10.77.0.0/24", "to", "any", "port", "8080"}));
    Tool(argv, &code);
    ASSERT_EQ(code, 0) << detail;
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8080));
    before = OtherToolsRules();

    // The agent's own rule stays the agent's to clear; then nothing is.
    ASSERT_EQ(Send(35, ""), em_ActSuccAll) << detail;
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8082, 700));
    ASSERT_EQ(Send(35, ""), em_ActFail);
    EXPECT_NE(detail.find("ufw status numbered, then ufw delete NUMBER."), std::string::npos);
    ASSERT_EQ(Send(34, "1"), em_ActFail);
    ExpectOthersKept(before, "after clear");
    EXPECT_TRUE(session.Ping());

    // A restart keeps ufw's rules, the one added after the agent's last save
    // among them.
    Tool({"ufw", "allow", "8443/tcp"}, &code);
    before = OtherToolsRules();
    ASSERT_EQ(agent.Stop(), 0);
    StartAgent();
    ExpectOthersKept(before, "after a restart");
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8443));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8081));
    EXPECT_TRUE(session.Ping());

    // A boot in the real order: an empty firewall, ufw, then the agent.
    ASSERT_EQ(Send(33, "1 1 - 0 - 8082 1"), em_ActFail);
    ASSERT_EQ(agent.Stop(), 0);
    Tool({"nft", "flush", "ruleset"});
    Tool({"ufw", "--force", "enable"}, &code);
    ASSERT_EQ(code, 0);
    StartAgent();
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8081));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8443));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8080));
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8082, 700));
    EXPECT_EQ(Tool({"iptables", "-S", "INPUT"}).substr(0, 14), "-P INPUT DROP\n");
    Tool({"ufw", "--force", "disable"});
    Tool({"ufw", "--force", "reset"});
}

TEST_F(LiveFirewall, AnAcceptBehindAnAdministratorsDropAllIsNotABareDone) {
    StartAgent();
    EchoServer web("", 8080);
    ASSERT_EQ(Send(33, "1 1 - 0 - 22 1"), em_ActSuccAll) << detail;
    Tool({"iptables", "-w", "5", "-I", "INPUT", "1", "-j", "DROP"});
    ASSERT_EQ(Send(33, "1 1 - 0 - 8080 1"), em_ActSuccAll);
    EXPECT_EQ(detail,
              "It does not take effect: other's rule \"-j DROP\" in INPUT comes before the "
              "agent's chain.");
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    Tool({"iptables", "-w", "5", "-D", "INPUT", "1"});
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8080));
}

// Last in this file: the legacy tables, once loaded, stay for the rest of
// the sandbox's life.
TEST_F(LiveFirewall, LegacyTablesBesideNftablesAreShownAndSaidInEveryAnswer) {
    int code = -1;
    Tool(
        {"iptables-legacy", "-w", "5", "-A", "INPUT", "-p", "tcp", "--dport", "8080", "-j", "DROP"},
        &code);
    if (code != 0)
        GTEST_SKIP() << "no iptables-legacy here";
    StartAgent();
    EchoServer web("", 8080);
    cSvrState svr = Check();
    EXPECT_TRUE(Has(svr.vsIptablesInputList,
                    "     legacy iptables: table ip filter, chain INPUT on the input hook, rule "
                    "-p tcp -m tcp --dport 8080 -j DROP"))
        << ::testing::PrintToString(svr.vsIptablesInputList);
    ASSERT_EQ(Send(33, "1 1 - 0 - 8080 1"), em_ActSuccAll) << detail;
    EXPECT_NE(detail.find("It may not take effect"), std::string::npos) << detail;
    EXPECT_NE(detail.find("Legacy iptables tables are loaded beside nf_tables"), std::string::npos)
        << detail;
    EXPECT_FALSE(TcpEchoes(kPeer, kHost, 8080, 700));
    for (auto [cmd, payload] : {std::pair<short, const char*>{34, "5"}, {35, ""}, {32, "1"}}) {
        Send(cmd, payload);
        EXPECT_NE(detail.find("Legacy iptables tables are loaded"), std::string::npos)
            << cmd << ": " << detail;
    }
    // Legacy changes do not move the nf_tables generation: seen at once.
    Tool({"iptables-legacy", "-w", "5", "-F", "INPUT"});
    svr = Check();
    EXPECT_FALSE(Has(svr.vsIptablesInputList, "--dport 8080 -j DROP"));
    EXPECT_TRUE(TcpEchoes(kPeer, kHost, 8080));
}

}  // namespace
