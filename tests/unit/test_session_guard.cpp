// The session guard without a machine to change: the console's session
// found in a made-up /proc, the address arithmetic, the firewall and
// interface judges, and the refusal with its confirmation memory.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "agent/details/details_guard_session.h"
#include "agent/live/firewall/firewall_view.h"
#include "agent/live/guard/guard_address.h"
#include "agent/live/guard/guard_firewall.h"
#include "agent/live/guard/guard_interfaces.h"
#include "agent/live/guard/guard_session.h"
#include "agent/live/guard/session_guard.h"
#include "temp_dir.h"

using namespace nvagent;

namespace {

// ---- a made-up /proc ----

struct FakeProc {
    nvtest::TempDir dir;

    // A process: its parent, start time, program, real uid and the socket
    // inodes it holds.
    void Add(pid_t pid, pid_t ppid, unsigned long long start, const std::string& exe, int uid,
             std::vector<uint64_t> sockets = {}, const std::string& comm = "") {
        std::string d = dir.File(std::to_string(pid));
        mkdir(d.c_str(), 0755);
        std::string stat = std::to_string(pid) + " (" + (comm.empty() ? "x" : comm) + ") S " +
                           std::to_string(ppid);
        for (int i = 0; i < 17; ++i)
            stat += " 0";
        stat += " " + std::to_string(start) + " 0 0\n";
        nvtest::WriteFile(d + "/stat", stat);
        nvtest::WriteFile(d + "/status", "Name:\tx\nUid:\t" + std::to_string(uid) + "\t" +
                                             std::to_string(uid) + "\t0\t0\n");
        EXPECT_EQ(0, symlink(exe.c_str(), (d + "/exe").c_str()));
        mkdir((d + "/fd").c_str(), 0755);
        int fd = 3;
        for (uint64_t s : sockets) {
            std::string link = "socket:[" + std::to_string(s) + "]";
            EXPECT_EQ(0, symlink(link.c_str(), (d + "/fd/" + std::to_string(fd++)).c_str()));
        }
    }
    const std::string& Root() const { return dir.Path(); }
};

TcpSocket Conn(const std::string& local, uint16_t lport, const std::string& remote, uint16_t rport,
               uint64_t inode, int family = AF_INET) {
    TcpSocket c;
    c.iFamily = family;
    c.sLocalAddr = local;
    c.iLocalPort = lport;
    c.sRemoteAddr = remote;
    c.iRemotePort = rport;
    c.llInode = inode;
    return c;
}

// A machine with an SSH server listening on 22 (pid 60, socket 4000), one
// session (root 70 and its unprivileged child 80 sharing socket 5001, plus
// a forwarded connection 4999 that sshd opened) and the console 100 under
// a shell 90.
struct SshMachine : FakeProc {
    TcpSockets socks;
    SshMachine() {
        Add(1, 0, 1, "/usr/lib/systemd/systemd", 0);
        Add(60, 1, 100, "/usr/sbin/sshd", 0, {4000});
        Add(70, 60, 5000, "/usr/sbin/sshd", 0, {5001, 4999});
        Add(80, 70, 5001, "/usr/sbin/sshd", 1000, {5001});
        Add(90, 80, 5002, "/usr/bin/bash", 0, {}, "ba) sh");
        Add(100, 90, 5003, "/usr/local/bin/nvui", 0);
        socks.listening.push_back(Conn("0.0.0.0", 22, "0.0.0.0", 0, 4000));
        socks.established.push_back(Conn("127.0.0.1", 41000, "127.0.0.1", 8080, 4999));
        socks.established.push_back(Conn("10.77.0.2", 22, "198.51.100.7", 50123, 5001));
        socks.established.push_back(Conn("10.77.0.2", 22, "198.51.100.9", 50999, 6001));
    }
};

TEST(GuardSessionFind, ConsoleUnderSshdHasTheConnectionOfItsSshServer) {
    SshMachine m;
    GuardSession s = FindGuardSessionIn(100, m.Root(), m.socks);
    ASSERT_TRUE(s.bFound);
    EXPECT_EQ(AF_INET, s.iFamily);
    EXPECT_EQ("10.77.0.2", s.sLocalAddr);
    EXPECT_EQ(22, s.iLocalPort);
    EXPECT_EQ("198.51.100.7", s.sRemoteAddr);
    EXPECT_EQ(50123, s.iRemotePort);
    EXPECT_EQ(5001u, s.llInode);
    EXPECT_EQ(70, s.iServerPid);  // the root process, not its unprivileged child
    EXPECT_EQ(5000u, s.llServerStart);
    EXPECT_EQ(100, s.iConsolePid);
    EXPECT_EQ(5003u, s.llConsoleStart);
}

TEST(GuardSessionFind, ServerReplacedOnDiskStillCounts) {
    FakeProc m;
    m.Add(1, 0, 1, "/sbin/init", 0);
    m.Add(70, 1, 50, "/usr/sbin/sshd (deleted)", 0, {7});
    m.Add(100, 70, 60, "/usr/bin/nvcmd", 0);
    TcpSockets socks;
    socks.established.push_back(Conn("2001:db8::2", 22, "2001:db8::7", 40000, 7, AF_INET6));
    GuardSession s = FindGuardSessionIn(100, m.Root(), socks);
    ASSERT_TRUE(s.bFound);
    EXPECT_EQ(AF_INET6, s.iFamily);
    EXPECT_EQ("2001:db8::7", s.sRemoteAddr);
}

TEST(GuardSessionFind, LocalTerminalHasNoSession) {
    FakeProc m;
    m.Add(1, 0, 1, "/sbin/init", 0);
    m.Add(50, 1, 10, "/usr/bin/login", 0);
    m.Add(90, 50, 20, "/usr/bin/bash", 0);
    m.Add(100, 90, 30, "/usr/local/bin/nvui", 0);
    TcpSockets socks;
    socks.established.push_back(Conn("10.77.0.2", 22, "198.51.100.7", 50123, 5001));
    GuardSession s = FindGuardSessionIn(100, m.Root(), socks);
    EXPECT_FALSE(s.bFound);
    EXPECT_EQ(100, s.iConsolePid);
    EXPECT_FALSE(FindGuardSessionIn(4242, m.Root(), socks).bFound);
}

TEST(GuardSessionFind, ReusedParentPidEndsTheChain) {
    SshMachine m;
    // The shell's parent pid now names a process started after the shell.
    m.Add(101, 1, 9000, "/usr/sbin/sshd", 0, {5001});
    m.Add(102, 101, 4000, "/usr/local/bin/nvui", 0);
    EXPECT_FALSE(FindGuardSessionIn(102, m.Root(), m.socks).bFound);
}

TEST(GuardSessionFind, ServerNotOwnedByRootIsNoSshServer) {
    FakeProc m;
    m.Add(1, 0, 1, "/sbin/init", 0);
    m.Add(70, 1, 50, "/home/u/sshd", 1000, {7});
    m.Add(100, 70, 60, "/usr/bin/nvcmd", 0);
    TcpSockets socks;
    socks.established.push_back(Conn("10.77.0.2", 2222, "198.51.100.7", 40000, 7));
    EXPECT_FALSE(FindGuardSessionIn(100, m.Root(), socks).bFound);
}

TEST(GuardSessionFind, MultiplexerTakesAConnectionToThePortSshdListensOn) {
    SshMachine m;
    // A console in a multiplexer's window: its server is a child of init.
    m.Add(200, 1, 3000, "/usr/bin/tmux", 0);
    m.Add(210, 200, 3001, "/usr/bin/bash", 0);
    m.Add(220, 210, 3002, "/usr/local/bin/nvui", 0);
    GuardSession s = FindGuardSessionIn(220, m.Root(), m.socks);
    ASSERT_TRUE(s.bFound);
    EXPECT_EQ("198.51.100.7", s.sRemoteAddr);
    EXPECT_EQ(22, s.iLocalPort);
    EXPECT_EQ(70, s.iServerPid);
    EXPECT_EQ(220, s.iConsolePid);
    // A client attached from another login (.9, socket 6001) decides.
    m.Add(300, 1, 6000, "/usr/sbin/sshd", 0, {6001});
    m.Add(310, 300, 6001, "/usr/bin/bash", 0);
    m.Add(320, 310, 6002, "/usr/bin/tmux", 0);
    s = FindGuardSessionIn(220, m.Root(), m.socks);
    ASSERT_TRUE(s.bFound);
    EXPECT_EQ("198.51.100.9", s.sRemoteAddr);
    EXPECT_EQ(300, s.iServerPid);
    EXPECT_EQ(220, s.iConsolePid);
    EXPECT_EQ(3002u, s.llConsoleStart);
    // Without an SSH server nothing is guarded.
    FakeProc bare;
    bare.Add(1, 0, 1, "/sbin/init", 0);
    bare.Add(200, 1, 3000, "/usr/bin/screen", 0);
    bare.Add(220, 200, 3002, "/usr/local/bin/nvui", 0);
    EXPECT_FALSE(FindGuardSessionIn(220, bare.Root(), m.socks).bFound);
}

// ---- addresses ----

TEST(GuardAddress, ParsesBothFamiliesAndMappedAddresses) {
    IpAddr a;
    ASSERT_TRUE(ParseIp("198.51.100.7", a));
    EXPECT_EQ(AF_INET, a.iFamily);
    ASSERT_TRUE(ParseIp("::ffff:198.51.100.7", a));
    EXPECT_EQ(AF_INET, a.iFamily);
    EXPECT_EQ(7, a.bytes[3]);
    ASSERT_TRUE(ParseIp("2001:db8::1", a));
    EXPECT_EQ(AF_INET6, a.iFamily);
    EXPECT_FALSE(ParseIp("198.51.100", a));
    EXPECT_FALSE(ParseIp("", a));
    EXPECT_TRUE(SameIp("2001:db8:0::1", "2001:DB8::1"));
    EXPECT_TRUE(SameIp("::ffff:10.0.0.1", "10.0.0.1"));
    EXPECT_FALSE(SameIp("10.0.0.1", "10.0.0.2"));
}

TEST(GuardAddress, PrefixesAndMasks) {
    EXPECT_EQ(24, DottedMaskPrefix("255.255.255.0"));
    EXPECT_EQ(0, DottedMaskPrefix("0.0.0.0"));
    EXPECT_EQ(32, DottedMaskPrefix("255.255.255.255"));
    EXPECT_EQ(-1, DottedMaskPrefix("255.0.255.0"));
    EXPECT_EQ(-1, DottedMaskPrefix("255.255.255"));
    IpAddr net, a;
    int p = 0;
    ASSERT_TRUE(ParseCidr("198.51.100.0/255.255.255.128", net, p));
    EXPECT_EQ(25, p);
    ASSERT_TRUE(ParseIp("198.51.100.127", a));
    EXPECT_TRUE(InPrefix(a, net, p));
    ASSERT_TRUE(ParseIp("198.51.100.128", a));
    EXPECT_FALSE(InPrefix(a, net, p));
    ASSERT_TRUE(ParseCidr("198.51.100.7", net, p));
    EXPECT_EQ(32, p);
    ASSERT_TRUE(ParseCidr("0.0.0.0/0", net, p));
    EXPECT_TRUE(InPrefix(a, net, p));
    EXPECT_FALSE(ParseCidr("10.0.0.0/33", net, p));
    EXPECT_FALSE(ParseCidr("10.0.0.0/", net, p));
    EXPECT_FALSE(ParseCidr("10.0.0.0/2x", net, p));
    // IPv6 prefixes, on and off a byte boundary; families never mix.
    ASSERT_TRUE(ParseCidr("2001:db8:1200::/39", net, p));
    ASSERT_TRUE(ParseIp("2001:db8:13ff::1", a));
    EXPECT_TRUE(InPrefix(a, net, p));
    ASSERT_TRUE(ParseIp("2001:db8:1400::1", a));
    EXPECT_FALSE(InPrefix(a, net, p));
    ASSERT_TRUE(ParseIp("10.0.0.1", a));
    EXPECT_FALSE(InPrefix(a, net, p));
    EXPECT_FALSE(ParseCidr("2001:db8::/129", net, p));
    // A mapped prefix counts the mapping's 96 bits.
    ASSERT_TRUE(ParseCidr("::ffff:10.0.0.0/104", net, p));
    EXPECT_EQ(8, p);
    EXPECT_TRUE(InPrefix(a, net, p));
}

TEST(GuardAddress, ShortensToFit) {
    EXPECT_EQ("198.51.100.7", ShortAddress("198.51.100.7", 19));
    std::string longest = "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff";
    std::string s = ShortAddress(longest, 19);
    EXPECT_EQ(19u, s.size());
    EXPECT_EQ("ffff:ffff..ffff:ffff", ShortAddress(longest, 20));
}

// ---- the firewall judge ----

GuardSession Session(const std::string& remote = "198.51.100.7",
                     const std::string& local = "10.77.0.2", int family = AF_INET) {
    GuardSession s;
    s.bFound = true;
    s.iFamily = family;
    s.sLocalAddr = local;
    s.iLocalPort = 22;
    s.sRemoteAddr = remote;
    s.iRemotePort = 50123;
    s.iServerPid = 70;
    s.llServerStart = 5000;
    s.llInode = 5001;
    return s;
}

struct Fw {
    ChainView views[2];
    explicit Fw(const std::string& v4, const std::string& v6 = "") {
        ParseIptablesRules(v4, views[0], views[1], v6.empty() ? nullptr : &v6);
    }
    std::string Cut(const Request& req, const GuardSession& s = Session()) const {
        return FirewallCut(views, req, s);
    }
};

const char* const kAcceptAll =
    "-P INPUT ACCEPT\n-P FORWARD ACCEPT\n-P OUTPUT ACCEPT\n"
    "-N NORVANE-INPUT\n-N NORVANE-OUTPUT\n"
    "-A INPUT -j NORVANE-INPUT\n-A OUTPUT -j NORVANE-OUTPUT\n";

const char* const kDropWithSsh =
    "-P INPUT DROP\n-P FORWARD ACCEPT\n-P OUTPUT ACCEPT\n"
    "-N NORVANE-INPUT\n-N NORVANE-OUTPUT\n"
    "-A INPUT -s 203.0.113.9/32 -j DROP\n"  // another tool's: not ours to judge
    "-A INPUT -j NORVANE-INPUT\n-A OUTPUT -j NORVANE-OUTPUT\n"
    "-A NORVANE-INPUT -i lo -m comment --comment norvane-keep -j ACCEPT\n"
    "-A NORVANE-INPUT -m conntrack --ctstate RELATED,ESTABLISHED -m comment --comment "
    "norvane-keep -j ACCEPT\n"
    "-A NORVANE-INPUT -p tcp -m tcp ! --tcp-flags FIN,SYN,RST,ACK SYN -m conntrack --ctstate NEW "
    "-m comment --comment norvane-keep -j ACCEPT\n"
    "-A NORVANE-INPUT -p tcp -m tcp --dport 80 -j ACCEPT\n"
    "-A NORVANE-INPUT -s 198.51.100.0/24 -p tcp -m tcp --dport 22 -j ACCEPT\n";

FwRule Rule(int dport, int action, const std::string& src = "", int sport = 0) {
    FwRule r;
    r.dport = dport;
    r.sport = sport;
    r.src = src;
    r.action = action;
    return r;
}

TEST(GuardFirewall, InputPolicyDropWithoutAnAcceptForThePortCuts) {
    Fw fw(kAcceptAll);
    EXPECT_NE("", fw.Cut(PolicyRequest{kChainInput, kActDrop}));
    EXPECT_EQ("", fw.Cut(PolicyRequest{kChainInput, kActAccept}));
    // The output policy keeps the replies (a drop adds their accept first).
    EXPECT_EQ("", fw.Cut(PolicyRequest{kChainOutput, kActDrop}));
    // With an accept of the session's port, the drop is harmless.
    Fw withRule(std::string(kAcceptAll) + "-A NORVANE-INPUT -p tcp -m tcp --dport 22 -j ACCEPT\n");
    EXPECT_EQ("", withRule.Cut(PolicyRequest{kChainInput, kActDrop}));
}

TEST(GuardFirewall, DeletingOrClearingTheAcceptThatCarriesTheSessionCuts) {
    Fw fw(kDropWithSsh);
    EXPECT_NE("", fw.Cut(DeleteRequest{34, 2}));
    EXPECT_EQ("", fw.Cut(DeleteRequest{34, 1}));  // port 80's
    EXPECT_EQ("", fw.Cut(DeleteRequest{34, 9}));  // no such rule
    EXPECT_EQ("", fw.Cut(DeleteRequest{38, 2}));  // the other chain
    EXPECT_NE("", fw.Cut(PlainRequest{35}));
    EXPECT_EQ("", fw.Cut(PlainRequest{39}));
    // A client outside the accepted network was never let in by it.
    EXPECT_EQ("", fw.Cut(PlainRequest{35}, Session("203.0.113.50")));
}

TEST(GuardFirewall, RuleAddedBeforeTheAcceptDecides) {
    Fw fw(kDropWithSsh);
    EXPECT_NE("", fw.Cut(RuleAddRequest{kChainInput, true, Rule(22, kActDrop)}));
    EXPECT_NE("",
              fw.Cut(RuleAddRequest{kChainInput, true, Rule(0, kActReject, "198.51.100.0/25")}));
    EXPECT_EQ("",
              fw.Cut(RuleAddRequest{kChainInput, true, Rule(0, kActDrop, "198.51.100.128/25")}));
    EXPECT_EQ("", fw.Cut(RuleAddRequest{kChainInput, true, Rule(23, kActDrop)}));
    EXPECT_EQ("", fw.Cut(RuleAddRequest{kChainInput, false, Rule(22, kActDrop)}));
    FwRule udp = Rule(22, kActDrop);
    udp.proto = kProtoUdp;
    EXPECT_EQ("", fw.Cut(RuleAddRequest{kChainInput, true, udp}));
    // Output: the replies leave from port 22.
    Fw open(kAcceptAll);
    EXPECT_NE("", open.Cut(RuleAddRequest{kChainOutput, false, Rule(0, kActDrop, "", 22)}));
    EXPECT_EQ("", open.Cut(RuleAddRequest{kChainOutput, false, Rule(22, kActDrop)}));
}

TEST(GuardFirewall, ChangeToAChainThatAlreadyRefusesIsNoCut) {
    // Drop policy and nothing for port 22: new logins are refused already.
    Fw fw("-P INPUT DROP\n-P OUTPUT ACCEPT\n-N NORVANE-INPUT\n-A INPUT -j NORVANE-INPUT\n");
    EXPECT_EQ("", fw.Cut(RuleAddRequest{kChainInput, true, Rule(22, kActDrop)}));
    EXPECT_EQ("", fw.Cut(PolicyRequest{kChainInput, kActDrop}));
}

TEST(GuardFirewall, NoCutWhereAManagerKeepsTheChangeFromBeingMade) {
    // ufw's jumps: a policy or a new rule is refused with ufw's command;
    // the agent's own rules from before are still its to delete.
    Fw fw(std::string(kDropWithSsh) + "-N ufw-before-input\n-A INPUT -j ufw-before-input\n");
    EXPECT_EQ("", fw.Cut(RuleAddRequest{kChainInput, true, Rule(22, kActDrop)}));
    EXPECT_NE("", fw.Cut(DeleteRequest{34, 2}));
}

TEST(GuardFirewall, RuleTheAgentCannotReadMakesNothingCertain) {
    Fw fw(std::string(kAcceptAll) +
          "-A NORVANE-INPUT -p tcp -m multiport --dports 22,23 -j ACCEPT\n");
    EXPECT_EQ("", fw.Cut(PolicyRequest{kChainInput, kActDrop}));
}

TEST(GuardFirewall, WithoutTheJumpOnlyThePolicyCountsUntilTheChangeAddsIt) {
    Fw fw(
        "-P INPUT ACCEPT\n-P OUTPUT ACCEPT\n-N NORVANE-INPUT\n"
        "-A NORVANE-INPUT -p tcp -m tcp --dport 22 -j DROP\n");
    // Adding a rule puts the jump in: the old drop rule then counts.
    EXPECT_NE("", fw.Cut(RuleAddRequest{kChainInput, false, Rule(80, kActAccept)}));
}

TEST(GuardFirewall, Ipv6SessionJudgedOnIpv6Rules) {
    std::string v6 =
        "-P INPUT ACCEPT\n-P OUTPUT ACCEPT\n-N NORVANE-INPUT\n-A INPUT -j NORVANE-INPUT\n"
        "-A NORVANE-INPUT -s 2001:db8:7::/48 -p tcp -m tcp --dport 22 -j ACCEPT\n";
    Fw fw(kAcceptAll, v6);
    GuardSession s6 = Session("2001:db8:7::9", "2001:db8:1::2", AF_INET6);
    EXPECT_EQ("", fw.Cut(PolicyRequest{kChainInput, kActDrop}, s6));
    EXPECT_NE("", fw.Cut(PolicyRequest{kChainInput, kActDrop},
                         Session("2001:db8:8::9", "2001:db8:1::2", AF_INET6)));
    // A rule with an IPv4 address never reaches IPv6.
    EXPECT_EQ("",
              fw.Cut(RuleAddRequest{kChainInput, true, Rule(22, kActDrop, "198.51.100.0/24")}, s6));
    EXPECT_NE("", fw.Cut(RuleAddRequest{kChainInput, true, Rule(22, kActDrop)}, s6));
    // Without ip6tables, nothing is known of IPv6.
    Fw only4(kAcceptAll);
    EXPECT_EQ("", only4.Cut(PolicyRequest{kChainInput, kActDrop}, s6));
}

TEST(GuardFirewall, ChainVerdictOfKeptRules) {
    Fw fw(kDropWithSsh);
    Segment reply;
    reply.src = "10.77.0.2";
    reply.dst = "203.0.113.50";
    reply.established = true;
    EXPECT_EQ(Verdict::kAccepted, ChainVerdict(fw.views[0].v4, reply));
    Segment old = reply;  // a segment of a connection older than tracking
    old.established = false;
    EXPECT_EQ(Verdict::kAccepted, ChainVerdict(fw.views[0].v4, old));
    Segment syn = old;
    syn.syn = true;
    syn.dport = 22;
    EXPECT_EQ(Verdict::kNotAccepted, ChainVerdict(fw.views[0].v4, syn));
}

// ---- the interface judge ----

TEST(GuardInterfaces, DownOnTheSessionsInterfaceCuts) {
    SessionPath path{"nv0", "", "nv0"};
    GuardSession s = Session();
    EXPECT_NE("", InterfaceCut(InterfaceRequest{52, "nv0"}, s, path, false));
    EXPECT_EQ("", InterfaceCut(InterfaceRequest{52, "eth1"}, s, path, false));
    EXPECT_EQ("", InterfaceCut(InterfaceRequest{53, "nv0"}, s, path, false));
    // The local address on another interface than the route's.
    SessionPath split{"eth0", "10.0.0.1", "dummy0"};
    EXPECT_NE("", InterfaceCut(InterfaceRequest{52, "dummy0"}, s, split, false));
    EXPECT_NE("", InterfaceCut(InterfaceRequest{52, "eth0"}, s, split, false));
    GuardSession s6 = Session("2001:db8::7", "2001:db8::2", AF_INET6);
    EXPECT_NE("", InterfaceCut(InterfaceRequest{52, "nv0"}, s6, path, false));
    GuardSession none;
    EXPECT_EQ("", InterfaceCut(InterfaceRequest{52, "nv0"}, none, path, false));
}

TEST(GuardInterfaces, DhcpOnAStaticSessionInterfaceCuts) {
    SessionPath path{"nv0", "", "nv0"};
    EXPECT_NE("", InterfaceCut(InterfaceRequest{54, "nv0"}, Session(), path, false));
    EXPECT_EQ("", InterfaceCut(InterfaceRequest{54, "nv0"}, Session(), path, true));
    EXPECT_EQ("", InterfaceCut(InterfaceRequest{54, "eth1"}, Session(), path, false));
    GuardSession s6 = Session("2001:db8::7", "2001:db8::2", AF_INET6);
    EXPECT_EQ("", InterfaceCut(InterfaceRequest{54, "nv0"}, s6, path, false));
}

InterfaceManualRequest Manual(const std::string& ip, const std::string& mask,
                              const std::string& gw = "") {
    return InterfaceManualRequest{"nv0", ip, mask, gw, "", ""};
}

TEST(GuardInterfaces, ManualAddressKeepingOrLosingTheSession) {
    // The client on the interface's own subnet.
    GuardSession lan = Session("10.77.0.1");
    SessionPath direct{"nv0", "", "nv0"};
    EXPECT_EQ("", InterfaceCut(Manual("10.77.0.2", "255.255.255.0"), lan, direct, false));
    EXPECT_EQ("", InterfaceCut(Manual("10.77.0.2", "255.255.0.0"), lan, direct, false));
    EXPECT_NE("", InterfaceCut(Manual("10.77.0.3", "255.255.255.0"), lan, direct, false));
    // Same address, a mask that leaves the client outside and no gateway.
    EXPECT_NE("", InterfaceCut(Manual("10.77.0.2", "255.255.255.254"), lan, direct, false));
    EXPECT_EQ(
        "", InterfaceCut(Manual("10.77.0.2", "255.255.255.254", "10.77.0.3"), lan, direct, false));
    // A remote client behind the gateway.
    GuardSession far = Session("198.51.100.7");
    SessionPath routed{"nv0", "10.77.0.1", "nv0"};
    EXPECT_EQ("",
              InterfaceCut(Manual("10.77.0.2", "255.255.255.0", "10.77.0.1"), far, routed, false));
    EXPECT_EQ("", InterfaceCut(Manual("10.77.0.2", "255.255.255.0"), far, routed, false));
    EXPECT_NE("", InterfaceCut(Manual("10.77.0.2", "255.255.255.128", "10.77.0.200"), far,
                               SessionPath{"nv0", "10.77.0.130", "nv0"}, false));
    // Another interface's address: not the session's.
    InterfaceManualRequest other = Manual("192.0.2.5", "255.255.255.0");
    other.name = "eth1";
    EXPECT_EQ("", InterfaceCut(other, far, routed, false));
    // IPv6 sessions: 55 sets IPv4 only.
    GuardSession s6 = Session("2001:db8::7", "2001:db8::2", AF_INET6);
    EXPECT_EQ("", InterfaceCut(Manual("192.0.2.5", "255.255.255.0"), s6, direct, false));
}

// ---- refusal and confirmation ----

struct Clock {
    double now = 1000;
};

TEST(SessionGuardRefusal, RefusedThenCarriedOutOnTheSameRepeatWithinAMinute) {
    Clock c;
    SessionGuard g([&c] { return c.now; });
    GuardSession s = Session();
    CmdResult r;
    std::string note;
    ASSERT_TRUE(g.Decide(32, "2", s, "the input chain would drop it", r, note));
    EXPECT_EQ(em_ActFail, r.iCode);
    EXPECT_EQ("Cuts SSH session from 198.51.100.7; send again in 60 s (F9) to confirm.", r.sDetail);
    EXPECT_NE(std::string::npos, r.sNote.find("refused"));
    EXPECT_NE(std::string::npos, r.sNote.find("198.51.100.7:50123 -> 10.77.0.2:22"));
    EXPECT_EQ("", note);
    // Another payload, another session: refused on their own.
    CmdResult r2;
    EXPECT_TRUE(g.Decide(32, "1", s, "x", r2, note));
    GuardSession other = s;
    other.llInode = 9999;
    EXPECT_TRUE(g.Decide(32, "2", other, "x", r2, note));
    c.now += 59;
    CmdResult r3;
    EXPECT_FALSE(g.Decide(32, "2", s, "the input chain would drop it", r3, note));
    EXPECT_NE(std::string::npos, note.find("carried out on confirmation"));
    EXPECT_NE(std::string::npos, note.find("the input chain would drop it"));
    // The confirmation is used up.
    EXPECT_TRUE(g.Decide(32, "2", s, "x", r3, note));
    // Too late.
    c.now += 61;
    EXPECT_TRUE(g.Decide(32, "2", s, "x", r3, note));
    // No cut: never refused.
    EXPECT_FALSE(g.Decide(33, "x", s, "", r3, note));
    EXPECT_EQ("", note);
}

TEST(SessionGuardRefusal, MemoryStaysBoundedOldestForgottenFirst) {
    Clock c;
    SessionGuard g([&c] { return c.now; });
    GuardSession s = Session();
    CmdResult r;
    std::string note;
    for (int i = 0; i < 200; ++i) {
        c.now += 0.01;
        ASSERT_TRUE(g.Decide(33, std::to_string(i), s, "x", r, note));
    }
    // The newest are remembered, the oldest not.
    EXPECT_FALSE(g.Decide(33, "199", s, "x", r, note));
    EXPECT_FALSE(g.Decide(33, "150", s, "x", r, note));
    EXPECT_TRUE(g.Decide(33, "0", s, "x", r, note));
}

TEST(SessionGuardRefusal, DetailFitsTheInformationLineInEveryLanguage) {
    std::string longest6 = "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff";
    for (const std::string& a : {std::string("255.255.255.255"), longest6}) {
        GuardSession s = Session(a);
        std::string d = RefusalDetail(s);
        EXPECT_LE(d.size(), 78u) << d;
        EXPECT_EQ(0u, d.find("Cuts SSH session from "));
    }
    EXPECT_NE(std::string::npos, RefusalDetail(Session("255.255.255.255")).find("255.255.255.255"));
    // The catalogue's row: its full form is the detail.
    ASSERT_EQ(1u, kDetailsGuardSession.nRows);
    const DetailRow& row = kDetailsGuardSession.pRows[0];
    std::string full = row.szFull;
    std::string d = RefusalDetail(Session("198.51.100.7"));
    size_t at = full.find("{}");
    ASSERT_NE(std::string::npos, at);
    EXPECT_EQ(full.substr(0, at) + "198.51.100.7" + full.substr(at + 2), d);
    // The Chinese form with the longest address the detail sends.
    std::string zh = row.szZh;
    size_t z = zh.find("{1}");
    ASSERT_NE(std::string::npos, z);
    for (const std::string& a : {std::string("255.255.255.255"), longest6}) {
        std::string sent = RefusalDetail(Session(a));
        std::string part = sent.substr(at, sent.size() - (full.size() - 2));
        EXPECT_LE(zh.size() - 3 + part.size(), 78u) << part;
    }
}

TEST(SessionGuardRefusal, OnlyFirewallAndInterfaceCommandsAreGuarded) {
    for (short c = 4; c <= 63; ++c)
        EXPECT_EQ((c >= 32 && c <= 39) || (c >= 52 && c <= 55), IsGuardedCommand(c)) << c;
    EXPECT_FALSE(SessionOf(Peer{}).bFound);
}

}  // namespace
