// The session guard against a real SSH session (nv-sandbox.sh --sshd): the
// real norvaned driven by the real nvcmd run inside an ssh session from the
// remote namespace (198.51.100.7, routed through the peer). A change that
// would cut that session is refused with the confirm detail and nothing of
// it applied; the same command again from the same session is carried out;
// harmless changes and changes from a local terminal pass; the journal
// tells the refusal and the override.
#include <gtest/gtest.h>
#include <unistd.h>

#include "agent/live/guard/guard_session.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "remote_session.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

const std::string kNvcmd = std::string(NV_BIN_DIR) + "/nvcmd";
const char* const kRefusal =
    "Cuts SSH session from 198.51.100.7; send again in 60 s (F9) to confirm.";

class LiveSessionGuard : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox() || !nvtest::HaveSandboxSshd())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh --sshd";
        ResetFirewall();
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
        started = true;
        ASSERT_TRUE(session.Start(&err)) << err;
    }
    void TearDown() override {
        session.Stop();
        if (started) {
            EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        }
        if (nvtest::InSandbox()) {
            ResetFirewall();
            // The session's interface as the sandbox made it, whatever a
            // failed case did to it.
            Tool({"ip", "link", "set", "nv0", "up"});
            Tool({"ip", "addr", "replace", "10.77.0.2/24", "dev", "nv0"});
            Tool({"ip", "route", "replace", "default", "via", "10.77.0.1"});
        }
    }
    static void ResetFirewall() {
        Tool({"nft", "flush", "ruleset"});
        for (const char* t : {"iptables", "ip6tables"}) {
            for (const char* c : {"INPUT", "OUTPUT", "FORWARD"})
                Tool({t, "-w", "5", "-P", c, "ACCEPT"});
        }
    }
    // nvcmd send from inside the SSH session: its exit status (0: done or
    // unchanged) and output.
    int Remote(const std::string& cmd, const std::string& payload, std::string* out = nullptr) {
        std::string line = "NVUI_SOCKET=" + agent.SocketPath() +
                           " NVUI_LOG=" + files.File("nvcmd.log") + " " + kNvcmd + " send " + cmd +
                           " '" + payload + "'";
        std::string text;
        int code = -1;
        EXPECT_TRUE(session.Run(line, text, code)) << line;
        if (out != nullptr)
            *out = text;
        return code;
    }
    // Waits until no change of the remote session is watched any more: while
    // one is, other consoles' firewall and interface changes are turned away
    // and the saved rules are those from before it.
    void WaitForWatchEnd() {
        for (int i = 0; i < 250; ++i) {
            if (Tool({"ls", "-A", "/run/norvane/pending"}).empty())
                return;
            usleep(100000);
        }
        ADD_FAILURE() << "a change is still watched after 25 s";
    }
    // The same command from this process: a local terminal's.
    int Local(short cmd, const std::string& payload) {
        WaitForWatchEnd();
        return agent.Send(cmd, payload, &detail);
    }
    // The journal's notes for cmd, in order.
    std::vector<std::string> Notes(int cmd) {
        std::vector<std::string> out;
        for (const auto& j : agent.Process().ReadJournal()) {
            if (j["cmd"] == cmd)
                out.push_back(j.contains("note")
                                  ? j["note"].get<std::string>() + " [" +
                                        std::to_string(j["result"].get<int>()) + "]"
                                  : "[" + std::to_string(j["result"].get<int>()) + "]");
        }
        return out;
    }
    static std::string Rules() { return Tool({"iptables", "-S"}); }
    // A new TCP connection from the remote client to the SSH port.
    static bool NewConnectionOpens() {
        int code = -1;
        Tool({"ip", "netns", "exec", "remote", "timeout", "3", "bash", "-c",
              "exec 3<>/dev/tcp/10.77.0.2/22"},
             &code);
        return code == 0;
    }

    nvtest::TempDir files;
    nvtest::LiveAgent agent;
    nvtest::RemoteSession session;
    std::string detail;
    bool started = false;
};

}  // namespace

TEST_F(LiveSessionGuard, ProcessInTheSessionFindsItsConnection) {
    std::string out;
    int code = -1;
    ASSERT_TRUE(session.Run("echo $$", out, code));
    pid_t shell = static_cast<pid_t>(atol(out.c_str()));
    ASSERT_GT(shell, 1) << out;
    nvagent::GuardSession s = nvagent::FindGuardSession(shell);
    ASSERT_TRUE(s.bFound);
    EXPECT_EQ(s.sRemoteAddr, "198.51.100.7");
    EXPECT_EQ(s.sLocalAddr, "10.77.0.2");
    EXPECT_EQ(s.iLocalPort, 22);
    EXPECT_GT(s.iRemotePort, 0);
    EXPECT_NE(s.llInode, 0u);
    char exe[256] = {};
    ASSERT_GT(
        readlink(("/proc/" + std::to_string(s.iServerPid) + "/exe").c_str(), exe, sizeof exe - 1),
        0);
    EXPECT_NE(std::string(exe).find("sshd"), std::string::npos) << exe;
    EXPECT_EQ(s.iConsolePid, shell);
    // This test's own process runs on no SSH session.
    EXPECT_FALSE(nvagent::FindGuardSession(getpid()).bFound);
}

TEST_F(LiveSessionGuard, InputDropRefusedThenCarriedOutOnTheSameCommandAgain) {
    std::string out;
    EXPECT_EQ(Remote("32", "2", &out), 1) << out;
    EXPECT_NE(out.find(kRefusal), std::string::npos) << out;
    // Nothing applied, nothing saved.
    EXPECT_NE(Rules().find("-P INPUT ACCEPT"), std::string::npos) << Rules();
    EXPECT_TRUE(NewConnectionOpens());
    // Another command meanwhile is judged on its own.
    EXPECT_EQ(Remote("33", "2 1 - 0 - 8080 2", &out), 0) << out;
    EXPECT_EQ(Remote("32", "2", &out), 0) << out;
    EXPECT_NE(Rules().find("-P INPUT DROP"), std::string::npos) << Rules();
    // The session itself lives on (its segments are kept); new logins do not.
    EXPECT_TRUE(session.Probe());
    EXPECT_FALSE(NewConnectionOpens());
    std::vector<std::string> notes = Notes(32);
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_EQ(notes[0].find("refused: it would cut the SSH session 198.51.100.7:"), 0u) << notes[0];
    EXPECT_NE(notes[0].find("-> 10.77.0.2:22: the input chain"), std::string::npos) << notes[0];
    EXPECT_NE(notes[0].find("[4]"), std::string::npos) << notes[0];
    EXPECT_EQ(notes[1].find("carried out on confirmation; it would cut"), 0u) << notes[1];
    EXPECT_NE(notes[1].find("[7]"), std::string::npos) << notes[1];
    // Back from a local terminal: an accept is never a cut.
    EXPECT_EQ(Local(32, "1"), em_ActSuccAll) << detail;
}

TEST_F(LiveSessionGuard, RulesThatStopTheSessionsPortRefusedOthersPass) {
    std::string out;
    // An accept for the session's port, then the drop policy: no cut.
    EXPECT_EQ(Remote("33", "1 1 - 0 - 22 1", &out), 0) << out;
    EXPECT_EQ(Remote("32", "2", &out), 0) << out;
    // Harmless: another port's rule, a kernel setting.
    EXPECT_EQ(Remote("33", "2 1 - 0 - 8080 1", &out), 0) << out;
    EXPECT_EQ(Remote("4", "1", &out), 0) << out;
    WaitForWatchEnd();
    std::string before = Rules();
    std::string saved = nvtest::ReadFile(agent.DataDir() + "/firewall-own.rules");
    // Deleting or clearing the accept, a drop of the client's network put
    // before it, a drop of the replies.
    for (auto c :
         std::vector<std::pair<std::string, std::string>>{{"34", "1"},
                                                          {"35", ""},
                                                          {"33", "1 1 198.51.100.0/24 0 - 0 2"},
                                                          {"37", "1 1 - 22 - 0 2"}}) {
        EXPECT_EQ(Remote(c.first, c.second, &out), 1) << c.first << " " << out;
        EXPECT_NE(out.find(kRefusal), std::string::npos) << c.first << " " << out;
    }
    EXPECT_EQ(Rules(), before);
    EXPECT_EQ(nvtest::ReadFile(agent.DataDir() + "/firewall-own.rules"), saved);
    EXPECT_TRUE(NewConnectionOpens());
    EXPECT_TRUE(session.Probe());
    // Deleting the other port's rule is no cut.
    EXPECT_EQ(Remote("34", "2", &out), 0) << out;
    EXPECT_EQ(Local(35, ""), em_ActSuccAll) << detail;
    EXPECT_EQ(Local(32, "1"), em_ActSuccAll) << detail;
}

TEST_F(LiveSessionGuard, InterfaceChangesOnTheSessionsInterfaceRefused) {
    std::string addr = Tool({"ip", "-4", "-o", "addr", "show", "dev", "nv0"});
    std::string route = Tool({"ip", "route", "show", "default"});
    std::string out;
    EXPECT_EQ(Remote("52", "nv0", &out), 1) << out;
    EXPECT_NE(out.find(kRefusal), std::string::npos) << out;
    EXPECT_EQ(Remote("55", "nv0 10.77.0.3 255.255.255.0 10.77.0.1 - -", &out), 1) << out;
    EXPECT_NE(out.find(kRefusal), std::string::npos) << out;
    EXPECT_EQ(Remote("54", "nv0", &out), 1) << out;
    EXPECT_NE(out.find(kRefusal), std::string::npos) << out;
    // The same address on a subnet without the gateway, and no new one.
    EXPECT_EQ(Remote("55", "nv0 10.77.0.2 255.255.255.255 - - -", &out), 1) << out;
    EXPECT_NE(out.find(kRefusal), std::string::npos) << out;
    EXPECT_EQ(Tool({"ip", "-4", "-o", "addr", "show", "dev", "nv0"}), addr);
    EXPECT_EQ(Tool({"ip", "route", "show", "default"}), route);
    EXPECT_TRUE(session.Probe());
    // The addressing the session already has is no cut.
    EXPECT_EQ(Remote("55", "nv0 10.77.0.2 255.255.255.0 10.77.0.1 - -", &out), 0) << out;
    EXPECT_TRUE(session.Probe());
    // Another interface is not the session's.
    Tool({"ip", "link", "add", "nvx0", "type", "veth", "peer", "name", "nvx1"});
    Tool({"ip", "link", "set", "nvx0", "up"});
    EXPECT_EQ(Remote("52", "nvx0", &out), 0) << out;
    Tool({"ip", "link", "del", "nvx0"});
    EXPECT_EQ(Notes(52).size(), 2u);
    std::vector<std::string> notes55 = Notes(55);
    ASSERT_EQ(notes55.size(), 3u);
    EXPECT_NE(notes55[0].find("replaces the session's address 10.77.0.2"), std::string::npos)
        << notes55[0];
    EXPECT_NE(notes55[1].find("no route to 198.51.100.7"), std::string::npos) << notes55[1];
    EXPECT_EQ(notes55[2].find("refused"), std::string::npos) << notes55[2];
}

TEST_F(LiveSessionGuard, ConsoleInATerminalMultiplexerStartedFromTheSessionIsGuarded) {
    if (access("/usr/bin/tmux", X_OK) != 0)
        GTEST_SKIP() << "tmux is not installed";
    // A detached tmux server (a child of the sandbox's init, not of sshd)
    // runs nvcmd in its window.
    std::string sock = files.File("tmux.sock");
    std::string result = files.File("tmux.out");
    std::string window = "NVUI_SOCKET=" + agent.SocketPath() +
                         " NVUI_LOG=" + files.File("nvcmd.log") + " " + kNvcmd + " send 32 2 > " +
                         result + ".tmp 2>&1; echo exit \\$? >> " + result + ".tmp; mv " + result +
                         ".tmp " + result;
    std::string out;
    int code = -1;
    ASSERT_TRUE(session.Run(
        "TERM=xterm tmux -S " + sock + " new-session -d -x 80 -y 24 \"" + window + "; sleep 30\"",
        out, code));
    ASSERT_EQ(code, 0) << out;
    for (int i = 0; i < 100 && access(result.c_str(), F_OK) != 0; ++i)
        usleep(100 * 1000);
    std::string text = nvtest::ReadFile(result);
    Tool({"tmux", "-S", sock, "kill-server"});
    EXPECT_NE(text.find(kRefusal), std::string::npos) << text;
    EXPECT_NE(text.find("exit 1"), std::string::npos) << text;
    EXPECT_NE(Rules().find("-P INPUT ACCEPT"), std::string::npos);
}

// A console under a shell server reached over UDP (a stand-in with the
// mobile shell server's program name, started with the login's
// SSH_CONNECTION as that server is): no TCP connection to watch, but the
// refusal step still judges its changes against the client's address.
TEST_F(LiveSessionGuard, ConsoleUnderAUdpShellServerIsRefusedItsCuts) {
    std::string server = files.File("mosh-server");
    Tool({"cp", "/bin/bash", server});
    auto viaUdpShell = [&](const std::string& cmd, const std::string& payload) {
        return Tool({"env", "SSH_CONNECTION=198.51.100.7 50022 10.77.0.2 22", server, "-c",
                     "NVUI_SOCKET=" + agent.SocketPath() + " NVUI_LOG=" + files.File("u.log") +
                         " " + kNvcmd + " send " + cmd + " '" + payload + "' 2>&1; echo rc=$?"});
    };
    std::string addr = Tool({"ip", "-4", "-o", "addr", "show", "dev", "nv0"});
    std::string out = viaUdpShell("52", "nv0");
    EXPECT_NE(out.find(kRefusal), std::string::npos) << out;
    EXPECT_NE(out.find("rc=1"), std::string::npos) << out;
    out = viaUdpShell("32", "2");
    EXPECT_NE(out.find(kRefusal), std::string::npos) << out;
    EXPECT_EQ(Tool({"ip", "-4", "-o", "addr", "show", "dev", "nv0"}), addr);
    EXPECT_NE(Rules().find("-P INPUT ACCEPT"), std::string::npos) << Rules();
    // A harmless change passes and is saved at once: nothing is watched.
    out = viaUdpShell("33", "2 1 - 0 - 8080 1");
    EXPECT_NE(out.find("rc=0"), std::string::npos) << out;
    EXPECT_NE(nvtest::ReadFile(agent.DataDir() + "/firewall-own.rules").find("8080"),
              std::string::npos);
    EXPECT_EQ(Tool({"ls", "-A", "/run/norvane/pending"}), "");
}

TEST_F(LiveSessionGuard, LocalTerminalIsNotGuarded) {
    EXPECT_EQ(Local(32, "2"), em_ActSuccAll) << detail;
    EXPECT_NE(Rules().find("-P INPUT DROP"), std::string::npos);
    EXPECT_EQ(Local(32, "1"), em_ActSuccAll) << detail;
    for (const std::string& n : Notes(32))
        EXPECT_EQ(n, "[7]");
}
