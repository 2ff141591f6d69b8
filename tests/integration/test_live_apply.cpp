// nvcmd apply against the live agent inside the namespace sandbox: a
// firewall, kernel, host-name and password document, read back with the
// system's own tools (iptables -S, sysctl, hostname, getent), then applied
// again (nothing sent) and exported and applied back (nothing to do).
// Another tool's rule in the chain is neither exported nor touched.
#include <crypt.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "child_process.h"
#include "live_sandbox.h"

using nvtest::Tool;

namespace {

const std::string kNvcmd = std::string(NV_BIN_DIR) + "/nvcmd";

const char kDoc[] = R"(# one web server
hostname: web-apply
kernel:
  icmp_echo_ignore_all: true
  tcp_syncookies: true
  tcp_tw_reuse: false
firewall:
  input:
    policy: drop
    rules:
      - {proto: tcp, src: 10.77.0.0/24, dport: 22, action: accept}
      - {proto: tcp, dport: 443, action: accept}
      - {proto: udp, dport: 161, action: drop}
  output:
    policy: accept
    rules:
      - {proto: tcp, dport: 25, action: reject}
)";

class LiveApply : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        for (const char* chain : {"INPUT", "OUTPUT"}) {
            Tool({"iptables", "-w", "5", "-F", chain});
            Tool({"iptables", "-w", "5", "-P", chain, "ACCEPT"});
        }
        Tool({"sysctl", "-w", "net.ipv4.icmp_echo_ignore_all=0"});
        Tool({"sysctl", "-w", "net.ipv4.tcp_syncookies=0"});
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
        setenv("NVUI_SOCKET", agent.SocketPath().c_str(), 1);
        setenv("NVUI_LOG", (agent.Process().Dir() + "/nvcmd.log").c_str(), 1);
    }
    void TearDown() override {
        unsetenv("NVUI_SOCKET");
        unsetenv("NVUI_LOG");
    }
    nvtest::RunResult Apply(const std::string& doc, const std::string& flag = "") {
        std::string path = agent.Process().Dir() + "/doc.yaml";
        std::ofstream(path) << doc;
        std::vector<std::string> args = {kNvcmd, "apply", path};
        if (!flag.empty())
            args.push_back(flag);
        return nvtest::RunProgram(args, 120000);
    }
    size_t Sets() {
        size_t n = 0;
        for (const auto& j : agent.Process().ReadJournal())
            n += j["cmd"] != 1;
        return n;
    }
    static std::string Sysctl(const std::string& key) {
        std::string v = Tool({"sysctl", "-n", key});
        return v.empty() ? v : v.substr(0, v.size() - 1);
    }
    // Where a rule with all these words stands in iptables -S; npos if none.
    static size_t RuleAt(const std::string& rules, const std::vector<std::string>& words) {
        size_t at = 0;
        while (at < rules.size()) {
            size_t end = rules.find('\n', at);
            std::string line = rules.substr(at, end - at);
            bool all = line.rfind("-A ", 0) == 0;
            for (const std::string& w : words)
                all = all && line.find(w) != std::string::npos;
            if (all)
                return at;
            at = end == std::string::npos ? rules.size() : end + 1;
        }
        return std::string::npos;
    }
    nvtest::LiveAgent agent;
};

TEST_F(LiveApply, FirewallKernelAndHostNameAreSetAndReadBackThenNothingIsSent) {
    // Another tool's rule, which no document of ours names.
    Tool({"iptables", "-w", "5", "-A", "INPUT", "-p", "icmp", "-j", "ACCEPT"});

    nvtest::RunResult check = Apply(kDoc, "--check");
    EXPECT_EQ(check.iExitCode, 2) << check.sStdout << check.sStderr;
    EXPECT_EQ(Sets(), 0u);
    EXPECT_EQ(Tool({"iptables", "-S", "INPUT"}).find("DROP"), std::string::npos);

    nvtest::RunResult r = Apply(kDoc);
    ASSERT_EQ(r.iExitCode, 2) << r.sStdout << r.sStderr;
    std::string all = Tool({"iptables", "-w", "5", "-S"});
    EXPECT_NE(all.find("-P INPUT DROP\n"), std::string::npos) << all;
    EXPECT_NE(all.find("-P OUTPUT ACCEPT\n"), std::string::npos) << all;
    size_t ssh = RuleAt(all, {"-s 10.77.0.0/24", "-p tcp", "--dport 22", "-j ACCEPT"});
    size_t web = RuleAt(all, {"-p tcp", "--dport 443", "-j ACCEPT"});
    size_t snmp = RuleAt(all, {"-p udp", "--dport 161", "-j DROP"});
    size_t smtp = RuleAt(all, {"-p tcp", "--dport 25", "-j REJECT"});
    ASSERT_NE(ssh, std::string::npos) << all;
    ASSERT_NE(web, std::string::npos) << all;
    ASSERT_NE(snmp, std::string::npos) << all;
    ASSERT_NE(smtp, std::string::npos) << all;
    EXPECT_LT(ssh, web);
    EXPECT_LT(web, snmp);
    EXPECT_NE(RuleAt(all, {"-p icmp", "-j ACCEPT"}), std::string::npos) << all;
    EXPECT_EQ(Sysctl("net.ipv4.icmp_echo_ignore_all"), "1");
    EXPECT_EQ(Sysctl("net.ipv4.tcp_syncookies"), "1");
    EXPECT_EQ(Sysctl("net.ipv4.tcp_tw_reuse"), "0");
    EXPECT_EQ(Tool({"hostname"}), "web-apply\n");

    // Again: nothing to do, nothing sent, the firewall as it was.
    size_t sent = Sets();
    r = Apply(kDoc);
    EXPECT_EQ(r.iExitCode, 0) << r.sStdout << r.sStderr;
    EXPECT_EQ(Sets(), sent);
    EXPECT_EQ(Tool({"iptables", "-w", "5", "-S"}), all);

    // The live export applies back onto the same server with nothing to do,
    // and holds our rules but not the other tool's.
    nvtest::RunResult ex = nvtest::RunProgram({kNvcmd, "export"}, 60000);
    ASSERT_EQ(ex.iExitCode, 0) << ex.sStderr;
    EXPECT_NE(ex.sStdout.find("{proto: tcp, src: 10.77.0.0/24, dport: 22, action: accept}"),
              std::string::npos)
        << ex.sStdout;
    nvtest::RunResult json = nvtest::RunProgram({kNvcmd, "export", "--format", "json"}, 60000);
    nlohmann::json exported = nlohmann::json::parse(json.sStdout);
    EXPECT_EQ(exported["firewall"]["input"]["rules"].size(), 3u) << json.sStdout;
    r = Apply(ex.sStdout);
    EXPECT_EQ(r.iExitCode, 0) << r.sStdout << r.sStderr;
    EXPECT_EQ(Sets(), sent);

    // One rule less and one more: the rest stay where they are.
    std::string doc = kDoc;
    size_t https = doc.find("      - {proto: tcp, dport: 443");
    doc.erase(https, doc.find("      - {proto: udp") - https);
    doc.insert(doc.find("  output:"), "      - {proto: tcp, dport: 8443}\n");
    r = Apply(doc);
    EXPECT_EQ(r.iExitCode, 2) << r.sStdout << r.sStderr;
    all = Tool({"iptables", "-w", "5", "-S"});
    EXPECT_EQ(RuleAt(all, {"--dport 443 "}), std::string::npos) << all;
    EXPECT_LT(RuleAt(all, {"--dport 161"}), RuleAt(all, {"--dport 8443"})) << all;
    EXPECT_EQ(Sets(), sent + 2);
    EXPECT_EQ(Apply(doc).iExitCode, 0);
}

TEST_F(LiveApply, APasswordHashIsStoredAsItIs) {
    int code = -1;
    Tool({"useradd", "-M", "-s", "/usr/sbin/nologin", "nvapplyuser"}, &code);
    ASSERT_EQ(code, 0);
    struct crypt_data cd {};
    const char* made = crypt_r("Fleet-Pass-1", "$6$nvapplysalt$", &cd);
    ASSERT_NE(made, nullptr);
    std::string hash = made;
    std::string doc = "users:\n  nvapplyuser: {password_hash: \"" + hash + "\"}\n";
    nvtest::RunResult r = Apply(doc);
    EXPECT_EQ(r.iExitCode, 2) << r.sStdout << r.sStderr;
    std::string line = Tool({"getent", "shadow", "nvapplyuser"});
    EXPECT_NE(line.find(":" + hash + ":"), std::string::npos) << line;
    // The same hash again: sent, and the agent finds it already there.
    r = Apply(doc);
    EXPECT_EQ(r.iExitCode, 0) << r.sStdout << r.sStderr;
    std::string journal;
    std::ifstream in(agent.Process().JournalPath());
    journal.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    EXPECT_EQ(journal.find("nvapplysalt"), std::string::npos);
    EXPECT_NE(journal.find("\"user\": \"nvapplyuser\""), std::string::npos);
}

}  // namespace
