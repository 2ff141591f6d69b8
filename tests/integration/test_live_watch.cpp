// The watch of firewall changes made over a guarded session, with a real
// TCP connection between the peer namespace and the sandbox carrying data
// both ways, and the real norvaned told (--guard-session-port) that this
// connection is every console's session: a change that cuts it is undone
// within 3 s and the same connection goes on, the saved chains untouched;
// a harmless change is kept and saved after the watch; an agent killed
// during the watch undoes the change when it starts again; the console
// that made an undone change is told in its next answers.
#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <ctime>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "link/result_codes.h"
#include "live_sandbox.h"
#include "net_traffic.h"
#include "raw_client.h"
#include "wire/wire.h"

using nvtest::TickSession;
using nvtest::Tool;

namespace {

const char* const kPeer = "peer";
const char* const kHost = "10.77.0.2";
const int kPort = 2222;

std::string ReadAll(const std::string& path) {
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// Milliseconds until cond holds, polled every 50 ms; -1 after limitMs.
long WaitFor(const std::function<bool()>& cond, long limitMs) {
    auto start = std::chrono::steady_clock::now();
    for (;;) {
        long ms = static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                        std::chrono::steady_clock::now() - start)
                                        .count());
        if (cond())
            return ms;
        if (ms > limitMs)
            return -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

std::string Rules(const char* chain) {
    return Tool({"iptables", "-w", "5", "-S", chain});
}

bool InputPolicy(const char* policy) {
    return Rules("INPUT").find(std::string("-P INPUT ") + policy) != std::string::npos;
}

std::string Clock(time_t t) {
    struct tm tmv {};
    localtime_r(&t, &tmv);
    char b[16];
    strftime(b, sizeof b, "%H:%M:%S", &tmv);
    return b;
}

class LiveWatch : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        if (Tool({"ip", "addr", "show", "dev", "nv0"}).find(kHost) == std::string::npos)
            Tool({"ip", "addr", "add", "10.77.0.2/24", "dev", "nv0"});
        Tool({"nft", "flush", "ruleset"});
        for (const char* t : {"iptables", "ip6tables"}) {
            for (const char* c : {"INPUT", "OUTPUT", "FORWARD"})
                Tool({t, "-w", "5", "-P", c, "ACCEPT"});
        }
        // The session is not tracked, as on a server that exempts its SSH
        // port from connection tracking: the rules a drop policy keeps for
        // established connections do not let it through, so a drop cuts it.
        Tool({"iptables", "-w", "5", "-t", "raw", "-A", "PREROUTING", "-p", "tcp", "--dport",
              std::to_string(kPort), "-j", "CT", "--notrack"});
        Tool({"iptables", "-w", "5", "-t", "raw", "-A", "OUTPUT", "-p", "tcp", "--sport",
              std::to_string(kPort), "-j", "CT", "--notrack"});
        agent.Process().SetExtraArgs({"--backend", "system", "--data-dir", agent.DataDir(),
                                      "--run-dir", RunDir(), "--guard-session-port",
                                      std::to_string(kPort)});
    }
    std::string RunDir() { return agent.Process().Dir() + "/run"; }
    void StartAgent() {
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    int Send(short cmd, const std::string& payload) { return agent.Send(cmd, payload, &detail); }
    std::string CheckDetail() {
        nvtest::Answer a = nvtest::Request(agent.SocketPath(), nvwire::kCmdCheck, "");
        EXPECT_TRUE(a.bOk) << a.sError;
        return a.sDetail;
    }
    int PendingFiles() {
        int n = 0;
        DIR* d = opendir((RunDir() + "/pending").c_str());
        if (d == nullptr)
            return 0;
        while (dirent* e = readdir(d))
            n += std::string(e->d_name).find(".json") != std::string::npos ? 1 : 0;
        closedir(d);
        return n;
    }
    std::string OwnFile() { return ReadAll(agent.DataDir() + "/firewall-own.rules"); }
    // The journal lines the agent wrote by itself for cmd, with their note.
    std::vector<std::string> Notes(int cmd) {
        std::vector<std::string> out;
        for (const nlohmann::json& j : agent.Process().ReadJournal()) {
            if (j.value("cmd", 0) == cmd && j.contains("note"))
                out.push_back(j["note"].get<std::string>());
        }
        return out;
    }
    // Sends a change that cuts the session and expects it undone within
    // 3 s (the time returned), the session going on, nothing saved.
    long CutAndUndone(short cmd, const std::string& payload, const char* chain) {
        std::string rulesBefore = Rules(chain), fileBefore = OwnFile();
        EXPECT_EQ(Send(cmd, payload), em_ActSuccAll) << detail;
        EXPECT_NE(Rules(chain), rulesBefore) << "the change is live";
        EXPECT_EQ(PendingFiles(), 1);
        long ms = WaitFor([&] { return Rules(chain) == rulesBefore; }, 10000);
        EXPECT_GE(ms, 0) << "not undone: " << Rules(chain);
        EXPECT_LT(ms, 3000);
        EXPECT_TRUE(session->Resumes(10000)) << "the same connection goes on";
        EXPECT_EQ(OwnFile(), fileBefore);
        EXPECT_EQ(PendingFiles(), 0);
        return ms;
    }
    nvtest::LiveAgent agent;
    std::unique_ptr<TickSession> session;
    std::string detail;
};

TEST_F(LiveWatch, PolicyDropThatCutsTheSessionIsUndoneAndTheConsoleIsTold) {
    session = std::make_unique<TickSession>(kPeer, kHost, kPort);
    ASSERT_TRUE(session->Flowing());
    StartAgent();
    time_t when = time(nullptr);
    std::string before = OwnFile();
    ASSERT_EQ(Send(32, "2"), em_ActSuccAll) << detail;
    EXPECT_TRUE(InputPolicy("DROP"));
    long ms = WaitFor([] { return InputPolicy("ACCEPT"); }, 10000);
    ASSERT_GE(ms, 0);
    EXPECT_LT(ms, 3000);
    printf("policy drop undone %ld ms after the answer\n", ms);
    // Only the change is undone: the rules the drop policy added are gone.
    EXPECT_EQ(Rules("NORVANE-INPUT").find("ACCEPT"), std::string::npos) << Rules("NORVANE-INPUT");
    EXPECT_TRUE(session->Resumes(10000));
    EXPECT_EQ(OwnFile(), before);
    EXPECT_EQ(PendingFiles(), 0);
    std::vector<std::string> notes = Notes(32);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].rfind("undone: the change at ", 0), 0u) << notes[0];
    EXPECT_NE(notes[0].find("10.77.0.1:"), std::string::npos) << notes[0];
    EXPECT_NE(agent.Process().ReadStderr().find("undone: the change at"), std::string::npos);

    // The console that made it is told in its next answers until one it
    // shows: checks carry it; a change that fails shows it and ends it.
    std::string notice = CheckDetail();
    EXPECT_TRUE(notice == "Undone: the change at " + Clock(when) + " cut your SSH session." ||
                notice == "Undone: the change at " + Clock(when + 1) + " cut your SSH session.")
        << notice;
    EXPECT_LE(notice.size(), 78u);
    EXPECT_EQ(CheckDetail(), notice);
    ASSERT_EQ(Send(34, "9"), em_ActPostValueNotValid);
    EXPECT_EQ(detail.rfind(notice + " ", 0), 0u) << detail;
    EXPECT_EQ(CheckDetail(), "");
    EXPECT_EQ(Send(34, "9"), em_ActPostValueNotValid);
    EXPECT_EQ(detail.find("Undone"), std::string::npos) << detail;
}

TEST_F(LiveWatch, HarmlessRuleIsKeptAndSavedAfterTheWatch) {
    session = std::make_unique<TickSession>(kPeer, kHost, kPort);
    ASSERT_TRUE(session->Flowing());
    StartAgent();
    ASSERT_EQ(Send(33, "2 1 - 0 - 9999 1"), em_ActSuccAll) << detail;
    EXPECT_NE(Rules("NORVANE-INPUT").find("--dport 9999"), std::string::npos);
    // Nothing saved while it is watched.
    EXPECT_EQ(OwnFile().find("9999"), std::string::npos);
    EXPECT_EQ(PendingFiles(), 1);
    long ms = WaitFor([&] { return OwnFile().find("9999") != std::string::npos; }, 30000);
    ASSERT_GE(ms, 0);
    EXPECT_GE(ms, 13000) << "saved only when the watch of about 15 s ended";
    EXPECT_EQ(PendingFiles(), 0);
    EXPECT_NE(Rules("NORVANE-INPUT").find("--dport 9999"), std::string::npos);
    EXPECT_TRUE(session->Resumes(3000));
    std::vector<std::string> notes = Notes(33);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].rfind("kept: ", 0), 0u) << notes[0];
    EXPECT_EQ(CheckDetail(), "");
    // Kept across a restart, as every saved rule.
    ASSERT_TRUE(agent.Restart());
    EXPECT_NE(Rules("NORVANE-INPUT").find("--dport 9999"), std::string::npos);
}

TEST_F(LiveWatch, AgentKilledDuringTheWatchUndoesTheChangeWhenStartedAgain) {
    session = std::make_unique<TickSession>(kPeer, kHost, kPort);
    ASSERT_TRUE(session->Flowing());
    StartAgent();
    std::string before = OwnFile();
    ASSERT_EQ(Send(32, "2"), em_ActSuccAll) << detail;
    agent.Process().Kill();
    EXPECT_TRUE(InputPolicy("DROP"));
    ASSERT_EQ(PendingFiles(), 1);
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    EXPECT_TRUE(InputPolicy("ACCEPT"));
    EXPECT_EQ(Rules("NORVANE-INPUT").find("ACCEPT"), std::string::npos) << Rules("NORVANE-INPUT");
    EXPECT_EQ(PendingFiles(), 0);
    EXPECT_EQ(OwnFile(), before);
    EXPECT_TRUE(session->Resumes(10000));
    std::vector<std::string> notes = Notes(32);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].rfind("undone at start: ", 0), 0u) << notes[0];
}

TEST_F(LiveWatch, DeleteClearAndAddThatCutAreEachUndoneInPlace) {
    // The agent's chain as an earlier run left it, under a drop policy.
    Tool({"iptables", "-w", "5", "-N", "NORVANE-INPUT"});
    Tool({"iptables", "-w", "5", "-A", "INPUT", "-j", "NORVANE-INPUT"});
    for (const char* port : {"8080", "2222", "8081"})
        Tool({"iptables", "-w", "5", "-A", "NORVANE-INPUT", "-p", "tcp", "-m", "tcp", "--dport",
              port, "-j", "ACCEPT"});
    Tool({"iptables", "-w", "5", "-P", "INPUT", "DROP"});
    session = std::make_unique<TickSession>(kPeer, kHost, kPort);
    ASSERT_TRUE(session->Flowing());
    StartAgent();
    long del = CutAndUndone(34, "2", "NORVANE-INPUT");
    long clear = CutAndUndone(35, "", "NORVANE-INPUT");
    long add = CutAndUndone(33, "1 1 - 0 - 2222 2", "NORVANE-INPUT");
    printf("undone after delete %ld ms, clear %ld ms, add %ld ms\n", del, clear, add);
    for (int cmd : {34, 35, 33}) {
        for (const std::string& n : Notes(cmd))
            printf("%d: %s\n", cmd, n.c_str());
    }
    EXPECT_EQ(Notes(34).size(), 1u);
    EXPECT_EQ(Notes(35).size(), 1u);
    EXPECT_EQ(Notes(33).size(), 1u);

    // A change that succeeds carries the notice, and so does the check
    // that follows it (which the console shows, rebuilding its page); then
    // it has been shown.
    ASSERT_EQ(Send(33, "2 1 - 0 - 9999 1"), em_ActSuccAll) << detail;
    EXPECT_EQ(detail.rfind("Undone: the change at ", 0), 0u) << detail;
    std::string notice = CheckDetail();
    EXPECT_EQ(notice.rfind("Undone: the change at ", 0), 0u) << notice;
    EXPECT_EQ(CheckDetail(), "");
}

TEST_F(LiveWatch, InterfaceAddressThatCutsTheSessionIsUndone) {
    session = std::make_unique<TickSession>(kPeer, kHost, kPort);
    ASSERT_TRUE(session->Flowing());
    StartAgent();
    std::string interfaces = ReadAll("/etc/network/interfaces");
    auto hasHost = [] {
        return Tool({"ip", "addr", "show", "dev", "nv0"}).find("inet 10.77.0.2/") !=
               std::string::npos;
    };
    ASSERT_EQ(Send(55, "nv0 10.77.0.9 255.255.255.0 10.77.0.1 - -"), em_ActSuccAll) << detail;
    EXPECT_FALSE(hasHost()) << "the change is live";
    EXPECT_EQ(PendingFiles(), 1);
    long ms = WaitFor(hasHost, 15000);
    ASSERT_GE(ms, 0) << Tool({"ip", "addr", "show", "dev", "nv0"}) << agent.Process().ReadStderr();
    printf("manual address undone %ld ms after the answer\n", ms);
    for (const std::string& n : Notes(55))
        printf("55: %s\n", n.c_str());
    EXPECT_LT(ms, 5000);
    EXPECT_TRUE(session->Resumes(10000));
    EXPECT_EQ(ReadAll("/etc/network/interfaces"), interfaces) << "nothing persistent";
    EXPECT_TRUE(WaitFor([&] { return PendingFiles() == 0; }, 5000) >= 0);
    std::vector<std::string> notes = Notes(55);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].rfind("undone: ", 0), 0u) << notes[0];
}

}  // namespace
