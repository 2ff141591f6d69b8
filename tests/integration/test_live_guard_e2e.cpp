// The session guard end to end: a real sshd in the sandbox, a client at
// 198.51.100.7 behind the peer keeping an interactive session, nvcmd run
// inside that session against the real `norvaned --backend system`. A
// change that would cut the session is refused with a way to confirm it;
// confirmed, it is applied, cuts the session, and is rolled back within
// 15 s, after which the same session works again and nothing of it is in
// the persistent files. Harmless changes and changes from a local terminal
// are left alone; an agent killed during the watch undoes the change when
// it starts again.
#include <gtest/gtest.h>

#include <cctype>
#include <future>

#include "child_process.h"
#include "guard_bed.h"
#include "live_sandbox.h"
#include "remote_session.h"
#include "temp_dir.h"

using nvtest::ChangeWatcher;
using nvtest::LiveConfiguration;
using nvtest::MsBetween;
using nvtest::NvcmdLine;
using nvtest::Tool;

namespace {

// The refusal names the session by its client and says how to confirm.
const char* const kRefusal =
    "Cuts SSH session from 198.51.100.7; send again in 60 s (F9) to confirm.";

// A change that the guard must refuse, then roll back once confirmed.
struct CuttingChange {
    const char* what;
    const char* cmd;
    const char* payload;
    bool needsSshRule;  // the session's port accepted by a rule, policy drop
};

const CuttingChange kCutting[] = {
    {"input policy drop", "32", "2", false},
    {"delete the accept rule for port 22", "34", "1", true},
    {"clear the input chain", "35", "", true},
    {"take the session's interface down", "52", "nv0", false},
    {"a wrong address on the session's interface", "55",
     "nv0 10.77.0.99 255.255.255.0 10.77.0.1 - -", false},
    {"DHCP on an interface with no DHCP server", "54", "nv0", false},
};

// An undo's journal note: "undone: the change at HH:MM:SS ..." naming the
// session's client.
bool UndoneNote(const std::string& note) {
    const std::string head = "undone: the change at ";
    if (note.compare(0, head.size(), head) != 0 || note.size() < head.size() + 9)
        return false;
    for (size_t i = 0; i < 8; ++i) {
        char c = note[head.size() + i];
        if (i == 2 || i == 5 ? c != ':' : !isdigit(static_cast<unsigned char>(c)))
            return false;
    }
    return note[head.size() + 8] == ' ' && note.find("198.51.100.7") != std::string::npos;
}

// The end of a session's output, for a failure's message.
std::string Tail(const std::string& s) {
    return s.size() > 600 ? s.substr(s.size() - 600) : s;
}

class LiveGuardE2E : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox() || !nvtest::HaveSandboxSshd())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh --sshd";
        // Every case starts from the same machine: no rules of the agent's,
        // policies accept, nv0 as its stanza says.
        for (const char* t : {"iptables", "ip6tables"}) {
            Tool({t, "-w", "5", "-P", "INPUT", "ACCEPT"});
            Tool({t, "-w", "5", "-P", "OUTPUT", "ACCEPT"});
            Tool({t, "-w", "5", "-D", "INPUT", "-j", "NORVANE-INPUT"});
            Tool({t, "-w", "5", "-D", "OUTPUT", "-j", "NORVANE-OUTPUT"});
            for (const char* c : {"NORVANE-INPUT", "NORVANE-OUTPUT"}) {
                Tool({t, "-w", "5", "-F", c});
                Tool({t, "-w", "5", "-X", c});
            }
        }
        std::string err;
        ASSERT_TRUE(nvtest::PrepareGuardBed(err)) << err;
        Tool({"sysctl", "-qw", "net.ipv4.icmp_echo_ignore_all=0"});
        ASSERT_TRUE(agent.Start(&err)) << err;
        ASSERT_TRUE(session.Start(&err)) << err;
    }
    void TearDown() override {
        session.Stop();
        if (agent.Process().Running()) {
            EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        }
    }
    // nvcmd in the SSH session; its exit status, -1 when its end was not
    // seen within timeoutMs.
    int SessionNvcmd(const std::string& cmd, const std::string& payload, std::string& out,
                     int timeoutMs = 60000) {
        int code = -1;
        if (!session.Run(NvcmdLine(agent.SocketPath(), cmd, payload), out, code, timeoutMs))
            return -1;
        return code;
    }
    // nvcmd on a local terminal of the sandbox (no session).
    int LocalNvcmd(const std::string& cmd, const std::string& payload, std::string* out = nullptr) {
        setenv("NVUI_SOCKET", agent.SocketPath().c_str(), 1);
        setenv("NVUI_LOG", (agent.SocketPath() + ".nvcmd.log").c_str(), 1);
        nvtest::RunResult r =
            nvtest::RunProgram({std::string(NV_BIN_DIR) + "/nvcmd", "send", cmd, payload}, 60000);
        unsetenv("NVUI_SOCKET");
        unsetenv("NVUI_LOG");
        if (out != nullptr)
            *out = r.sStdout + r.sStderr;
        return r.iExitCode;
    }
    // The session's port accepted by a rule of the agent, under policy
    // drop, set from a local terminal.
    void AcceptSshUnderDrop() {
        ASSERT_EQ(LocalNvcmd("33", "1 1 - - - 22 1"), 0);
        ASSERT_EQ(LocalNvcmd("32", "2"), 0);
        ASSERT_TRUE(session.Probe(15000)) << "the session must work through the port 22 rule";
    }
    std::string Persistent() { return nvtest::PersistentFiles(agent.DataDir()); }

    // The refusal, then the confirming repeat: applied, rolled back within
    // 15 s, the session working again, nothing saved.
    void RefusedThenRolledBack(const CuttingChange& c) {
        SCOPED_TRACE(c.what);
        const std::string before = LiveConfiguration();
        const std::string saved = Persistent();
        std::string out;
        EXPECT_EQ(SessionNvcmd(c.cmd, c.payload, out), 1) << out;
        EXPECT_NE(out.find(kRefusal), std::string::npos) << "refusal: " << out;
        EXPECT_EQ(LiveConfiguration(), before) << "a refused change must change nothing";
        EXPECT_EQ(Persistent(), saved);
        ASSERT_TRUE(session.Probe(5000)) << session.Output();

        ChangeWatcher watch(before);
        watch.Start();
        auto confirmed = std::async(std::launch::async, [&] {
            std::string o;
            int code = SessionNvcmd(c.cmd, c.payload, o, 90000);
            return std::make_pair(code, o);
        });
        ASSERT_TRUE(watch.WaitChanged(30000)) << "the confirmed change was never applied";
        bool restored = watch.WaitRestored(20000);
        EXPECT_TRUE(restored) << "not rolled back; now:\n" << LiveConfiguration();
        if (restored) {
            EXPECT_LE(MsBetween(watch.Changed(), watch.Restored()), 15000);
        }
        auto answer = confirmed.get();
        // Answered (done, or failed with the old settings put back): what
        // counts is the machine and the session.
        EXPECT_NE(answer.first, -1) << "the confirmed change was never answered";
        // The same session, not a new one.
        EXPECT_TRUE(session.Running());
        EXPECT_TRUE(session.Probe(30000)) << Tail(session.Output());
        EXPECT_TRUE(session.Flowing(1000));
        EXPECT_EQ(LiveConfiguration(), before);
        EXPECT_EQ(Persistent(), saved) << "nothing of a rolled-back change is kept";
    }

    nvtest::LiveAgent agent;
    nvtest::RemoteSession session;
};

}  // namespace

TEST_F(LiveGuardE2E, InputPolicyDropRefusedThenRolledBack) {
    RefusedThenRolledBack(kCutting[0]);
}

TEST_F(LiveGuardE2E, DeletingTheSshAcceptRuleRefusedThenRolledBack) {
    AcceptSshUnderDrop();
    RefusedThenRolledBack(kCutting[1]);
}

TEST_F(LiveGuardE2E, ClearingTheInputChainRefusedThenRolledBack) {
    AcceptSshUnderDrop();
    RefusedThenRolledBack(kCutting[2]);
}

TEST_F(LiveGuardE2E, SessionInterfaceDownRefusedThenRolledBack) {
    RefusedThenRolledBack(kCutting[3]);
}

TEST_F(LiveGuardE2E, WrongAddressOnTheSessionInterfaceRefusedThenRolledBack) {
    RefusedThenRolledBack(kCutting[4]);
}

TEST_F(LiveGuardE2E, DhcpWithoutServerOnTheSessionInterfaceRefusedThenRolledBack) {
    RefusedThenRolledBack(kCutting[5]);
}

TEST_F(LiveGuardE2E, RefusalOverrideAndRollbackAreJournalled) {
    const std::string before = LiveConfiguration();
    std::string out;
    ASSERT_EQ(SessionNvcmd("32", "2", out), 1) << out;
    ChangeWatcher watch(before);
    watch.Start();
    ASSERT_EQ(SessionNvcmd("32", "2", out, 90000), 0) << out;
    ASSERT_TRUE(watch.WaitRestored(20000));
    ASSERT_TRUE(session.Probe(30000));
    // The refusal, the confirmed change, and its undo with the values it
    // put back and why.
    // (The undo is journalled just after it is made.)
    std::vector<nlohmann::json> sets;
    for (int i = 0; i < 100 && sets.size() < 3; ++i) {
        if (i > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        sets.clear();
        for (const nlohmann::json& j : agent.Process().ReadJournal()) {
            if (j.value("cmd", -1) == 32)
                sets.push_back(j);
        }
    }
    ASSERT_EQ(sets.size(), 3u) << nlohmann::json(sets).dump(1);
    EXPECT_EQ(sets[0].value("result", 0), 4);
    EXPECT_EQ(sets[0].value("note", "").rfind("refused", 0), 0u) << sets[0].dump();
    EXPECT_EQ(sets[1].value("result", 0), 7);
    EXPECT_NE(sets[1].value("note", ""), "") << sets[1].dump();
    EXPECT_TRUE(UndoneNote(sets[2].value("note", ""))) << sets[2].dump();
    EXPECT_TRUE(sets[2].contains("old") && sets[2].contains("new")) << sets[2].dump();
}

TEST_F(LiveGuardE2E, HarmlessChangesFromTheSessionAreKept) {
    const std::string before = LiveConfiguration();
    std::string out;
    ChangeWatcher watch(before);
    watch.Start();
    // A rule for another port and a kernel setting.
    ASSERT_EQ(SessionNvcmd("33", "2 1 - - - 8080 1", out), 0) << out;
    ASSERT_EQ(SessionNvcmd("4", "1", out), 0) << out;
    ASSERT_TRUE(watch.WaitChanged(5000));
    // Past the watch: nothing rolled back, both saved.
    std::this_thread::sleep_for(std::chrono::seconds(18));
    EXPECT_EQ(watch.Restored(), ChangeWatcher::Clock::time_point());
    EXPECT_NE(Tool({"iptables", "-S", "NORVANE-INPUT"}).find("--dport 8080 -j ACCEPT"),
              std::string::npos);
    EXPECT_EQ(nvtest::ReadFile("/proc/sys/net/ipv4/icmp_echo_ignore_all"), "1\n");
    std::string saved = Persistent();
    EXPECT_NE(saved.find("--dport 8080 -j ACCEPT"), std::string::npos) << saved;
    EXPECT_NE(saved.find("icmp_echo_ignore_all"), std::string::npos) << saved;
    EXPECT_TRUE(session.Probe(5000));
}

TEST_F(LiveGuardE2E, ChangeFromALocalTerminalIsNotGuarded) {
    const std::string before = LiveConfiguration();
    std::string out;
    // The same cut as from the session: carried out at once, not undone.
    ChangeWatcher watch(before);
    watch.Start();
    ASSERT_EQ(LocalNvcmd("32", "2", &out), 0) << out;
    ASSERT_TRUE(watch.WaitChanged(5000));
    EXPECT_FALSE(session.Probe(3000)) << "the change cuts the session";
    std::this_thread::sleep_for(std::chrono::seconds(17));
    EXPECT_EQ(watch.Restored(), ChangeWatcher::Clock::time_point());
    EXPECT_NE(Tool({"iptables", "-S"}).find("-P INPUT DROP"), std::string::npos);
    EXPECT_NE(Persistent().find("-P INPUT DROP"), std::string::npos);
    ASSERT_EQ(LocalNvcmd("32", "1", &out), 0) << out;
}

TEST_F(LiveGuardE2E, AgentKilledDuringTheWatchRestoresOnStart) {
    const std::string before = LiveConfiguration();
    const std::string saved = Persistent();
    std::string out;
    ASSERT_EQ(SessionNvcmd("32", "2", out), 1) << out;
    ChangeWatcher watch(before);
    watch.Start();
    ASSERT_TRUE(session.Send(NvcmdLine(agent.SocketPath(), "32", "2")));
    ASSERT_TRUE(watch.WaitChanged(30000));
    // Killed once the change is kept pending under the run directory, that
    // is while it is watched.
    bool pending = false;
    for (int i = 0; i < 500 && !pending; ++i) {
        pending = !Tool({"ls", "-A", "/run/norvane/pending"}).empty();
        if (!pending)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ASSERT_TRUE(pending) << "no pending change under /run/norvane/pending";
    agent.Process().Kill();
    ASSERT_EQ(watch.Restored(), ChangeWatcher::Clock::time_point())
        << "rolled back before the agent was killed: nothing tested";
    // The agent is gone; the change stays until it starts again.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    EXPECT_NE(LiveConfiguration(), before);
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    EXPECT_TRUE(watch.WaitRestored(15000)) << LiveConfiguration();
    EXPECT_EQ(Persistent(), saved);
    EXPECT_TRUE(session.Probe(30000));
}
