// The real norvaned's life: command-line errors, a state file it cannot
// parse, a second agent on the same socket, detaching, clean stop, restart
// with the state kept, and SIGKILL in the middle of a stream of changes.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "agent_process.h"
#include "child_process.h"
#include "link/result_codes.h"
#include "raw_client.h"
#include "temp_dir.h"
#include "wire/wire.h"

namespace {

using nvtest::Answer;
using nvtest::RunResult;

bool Exists(const std::string& path) {
    struct stat st;
    return lstat(path.c_str(), &st) == 0;
}

RunResult RunAgent(const std::vector<std::string>& args) {
    std::vector<std::string> argv = {nvtest::AgentProcess::BinaryPath()};
    argv.insert(argv.end(), args.begin(), args.end());
    return nvtest::RunProgram(argv);
}

TEST(AgentCommandLine, HelpPrintsUsageAndExits0) {
    RunResult r = RunAgent({"--help"});
    ASSERT_TRUE(r.bFinished);
    EXPECT_EQ(r.iExitCode, 0);
    EXPECT_NE(r.sStdout.find("--socket PATH"), std::string::npos) << r.sStdout;
    EXPECT_NE(r.sStdout.find("--journal FILE"), std::string::npos) << r.sStdout;
}

TEST(AgentCommandLine, UnknownBackendExits2) {
    nvtest::TempDir dir;
    RunResult r = RunAgent({"--foreground", "--socket", dir.File("s"), "--backend", "other"});
    ASSERT_TRUE(r.bFinished);
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_NE(r.sStderr.find("unknown backend 'other'"), std::string::npos) << r.sStderr;
    EXPECT_FALSE(Exists(dir.File("s")));
}

TEST(AgentCommandLine, UsageErrorsExit2WithAMessage) {
    nvtest::TempDir dir;
    const std::vector<std::vector<std::string>> cases = {
        {"--frobnicate"}, {"-x"}, {"--socket"}, {"--foreground", "stray"}, {"--socket="}};
    for (const std::vector<std::string>& args : cases) {
        RunResult r = RunAgent(args);
        ASSERT_TRUE(r.bFinished);
        EXPECT_EQ(r.iExitCode, 2) << args[0];
        EXPECT_EQ(r.sStderr.rfind("norvaned: ", 0), 0u) << r.sStderr;
        EXPECT_NE(r.sStderr.find("--help"), std::string::npos) << r.sStderr;
    }
}

TEST(AgentStartup, UnparsableStateFileStopsTheAgentAndIsLeftUntouched) {
    nvtest::TempDir dir;
    const std::string broken = "{\"sHostname\": \"alpha\",,}\n";
    ASSERT_TRUE(nvtest::WriteFile(dir.File("state.json"), broken));
    RunResult r =
        RunAgent({"--foreground", "--socket", dir.File("s"), "--state", dir.File("state.json")});
    ASSERT_TRUE(r.bFinished);
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_EQ(r.sStderr.rfind("norvaned: ", 0), 0u) << r.sStderr;
    EXPECT_NE(r.sStderr.find("state.json"), std::string::npos) << r.sStderr;
    EXPECT_EQ(nvtest::ReadFile(dir.File("state.json")), broken);
    EXPECT_FALSE(Exists(dir.File("s")));
}

TEST(AgentStartup, SecondAgentOnALiveSocketIsRefused) {
    nvtest::AgentProcess first;
    std::string err;
    ASSERT_TRUE(first.Start(&err)) << err;
    RunResult r = RunAgent({"--foreground", "--socket", first.SocketPath()});
    ASSERT_TRUE(r.bFinished);
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_NE(r.sStderr.find("another agent is listening on " + first.SocketPath()),
              std::string::npos)
        << r.sStderr;
    EXPECT_TRUE(nvtest::Request(first.SocketPath(), nvwire::kCmdCheck, "").bOk);
}

TEST(AgentStartup, StaleSocketLeftByAKilledAgentIsReplaced) {
    nvtest::AgentProcess agent;
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    agent.Kill();
    ASSERT_TRUE(Exists(agent.SocketPath()));
    ASSERT_TRUE(agent.Start(&err)) << err;
    EXPECT_TRUE(nvtest::Request(agent.SocketPath(), nvwire::kCmdCheck, "").bOk);
}

TEST(AgentStartup, ForegroundAgentAnnouncesItsSocket) {
    nvtest::AgentProcess agent;
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    // Clients queue from the moment the socket listens; the line follows once
    // the workers run.
    std::string expected = "norvaned: listening on " + agent.SocketPath() + "\n";
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (agent.ReadStderr() != expected && std::chrono::steady_clock::now() < deadline) {
        poll(nullptr, 0, 5);
    }
    EXPECT_EQ(agent.ReadStderr(), expected);
}

// The pid of the norvaned whose command line names socketPath (a path in a
// private temporary directory, so it names exactly one process).
pid_t AgentPidBySocket(const std::string& socketPath) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos)
            continue;
        std::string cmdline = nvtest::ReadFile(entry.path().string() + "/cmdline");
        std::string argv0 = cmdline.substr(0, cmdline.find('\0'));
        if (argv0 == nvtest::AgentProcess::BinaryPath() &&
            cmdline.find(std::string(1, '\0') + socketPath + '\0') != std::string::npos) {
            return static_cast<pid_t>(std::stol(name));
        }
    }
    return -1;
}

// Kills a detached agent that a failed test left behind (it is not our
// child, so nothing else would).
struct DetachedAgentGuard {
    std::string socketPath;
    ~DetachedAgentGuard() {
        pid_t pid = AgentPidBySocket(socketPath);
        if (pid > 0) {
            kill(pid, SIGKILL);
            nvtest::WaitForeignExit(pid, 10000);
        }
    }
};

TEST(AgentStartup, DetachedAgentIsReadyWhenItsParentExits) {
    nvtest::TempDir dir;
    DetachedAgentGuard guard{dir.File("s")};
    RunResult r = RunAgent({"--socket", dir.File("s"), "--state", dir.File("state.json")});
    ASSERT_TRUE(r.bFinished);
    ASSERT_EQ(r.iExitCode, 0) << r.sStderr;
    Answer a = nvtest::Request(dir.File("s"), 4, "1");
    EXPECT_TRUE(a.bOk && a.result == em_ActSuccAll) << a.sError << a.sDetail;
    pid_t pid = AgentPidBySocket(dir.File("s"));
    ASSERT_GT(pid, 0);
    ASSERT_EQ(kill(pid, SIGTERM), 0);
    EXPECT_TRUE(nvtest::WaitForeignExit(pid, 10000));
    EXPECT_FALSE(Exists(dir.File("s")));
    EXPECT_EQ(
        nlohmann::json::parse(nvtest::ReadFile(dir.File("state.json")))["chIcmpEchoIgnoreAll"],
        "1");
}

TEST(AgentLifecycle, SigtermRemovesTheSocketAndExits0) {
    nvtest::AgentProcess agent;
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    ASSERT_TRUE(Exists(agent.SocketPath()));
    EXPECT_EQ(agent.Stop(), 0);
    EXPECT_FALSE(Exists(agent.SocketPath()));
}

TEST(AgentLifecycle, SigintStopsAsCleanly) {
    nvtest::AgentProcess agent;
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    EXPECT_EQ(agent.StopWithSignal(SIGINT), 0);
    EXPECT_FALSE(Exists(agent.SocketPath()));
}

TEST(AgentLifecycle, AcknowledgedChangeIsSavedAndServedAfterRestart) {
    nvtest::AgentProcess agent;
    ASSERT_TRUE(agent.SetStateJson(R"({"sHostname": "alpha"})"));
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    Answer a = nvtest::Request(agent.SocketPath(), 57, "beta");
    ASSERT_TRUE(a.bOk) << a.sError;
    ASSERT_EQ(a.result, em_ActSuccAll) << a.sDetail;
    EXPECT_EQ(nlohmann::json::parse(nvtest::ReadFile(agent.StatePath()))["sHostname"], "beta");

    ASSERT_TRUE(agent.Restart(&err)) << err;
    cConf_Inf conf;
    cSvrState svr;
    ASSERT_TRUE(nvtest::CheckState(agent.SocketPath(), conf, svr, err)) << err;
    EXPECT_EQ(conf.sHostname, "beta");
}

// Numbers of the volumes the agent answered 7 for, shared between the
// writing thread and the test.
struct Acks {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<int> numbers;
    bool done = false;

    void Add(int n) {
        std::lock_guard<std::mutex> lock(mutex);
        numbers.push_back(n);
        changed.notify_all();
    }
    void Finish() {
        std::lock_guard<std::mutex> lock(mutex);
        done = true;
        changed.notify_all();
    }
    // Waits until count changes were acknowledged or the writer stopped.
    bool WaitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(30), [&] {
            return numbers.size() >= count || done;
        }) && numbers.size() >= count;
    }
};

// Adds disk volumes /vol/1, /vol/2, ... until the agent stops answering.
void AddVolumesUntilGone(const std::string& socket, Acks& acks) {
    for (int n = 1; n < 100000; ++n) {
        Answer a = nvtest::Request(socket, 23, "/vol/" + std::to_string(n) + " 90 10 60");
        if (!a.bOk)
            break;
        if (a.result == em_ActSuccAll)
            acks.Add(n);
    }
    acks.Finish();
}

TEST(AgentLifecycle, SigkillLosesNoAcknowledgedChange) {
    nvtest::AgentProcess agent;
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    Acks acks;
    std::atomic<bool> writing{true};
    std::atomic<int> unparsable{0};
    std::thread writer([&] {
        AddVolumesUntilGone(agent.SocketPath(), acks);
        writing = false;
    });
    // While changes stream in, the state file must parse whenever it exists.
    std::thread reader([&] {
        while (writing) {
            std::string text = nvtest::ReadFile(agent.StatePath());
            if (!text.empty() && !nlohmann::json::accept(text))
                ++unparsable;
        }
    });
    bool enough = acks.WaitFor(40);
    agent.Kill();
    writer.join();
    reader.join();
    ASSERT_TRUE(enough);
    const std::vector<int>& acked = acks.numbers;
    EXPECT_EQ(unparsable.load(), 0);

    nlohmann::json file = nlohmann::json::parse(nvtest::ReadFile(agent.StatePath()));
    ASSERT_TRUE(agent.Start(&err)) << err;
    cConf_Inf conf;
    cSvrState svr;
    ASSERT_TRUE(nvtest::CheckState(agent.SocketPath(), conf, svr, err)) << err;
    std::set<std::string> present;
    for (const cDiskVolume& d : conf.vDV)
        present.insert(d.szPart);
    for (int n : acked)
        EXPECT_EQ(present.count("/vol/" + std::to_string(n)), 1u) << n;
    EXPECT_GE(file["vDV"].size(), acked.size());
}

}  // namespace
