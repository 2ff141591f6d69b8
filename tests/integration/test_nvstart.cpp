// nvstart against the real norvaned, where no service manager runs: it
// starts norvaned itself on a private socket and waits for its answer, starts
// no second agent when one answers, says why when it cannot start one, and
// reads its socket from --socket or NVUI_SOCKET.
#include <dirent.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "child_process.h"
#include "raw_client.h"
#include "temp_dir.h"

using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

const std::string kNvstart = std::string(NV_BIN_DIR) + "/nvstart";

// The pids of the processes whose command line names the socket path.
std::vector<pid_t> AgentsOn(const std::string& socket) {
    std::vector<pid_t> pids;
    DIR* d = opendir("/proc");
    if (d == nullptr)
        return pids;
    while (dirent* e = readdir(d)) {
        pid_t pid = static_cast<pid_t>(atoi(e->d_name));
        if (pid <= 0)
            continue;
        std::ifstream in("/proc/" + std::string(e->d_name) + "/cmdline");
        std::stringstream ss;
        ss << in.rdbuf();
        std::string cmd = ss.str();
        for (char& c : cmd)
            c = c == '\0' ? ' ' : c;
        if (cmd.find("norvaned ") != std::string::npos &&
            cmd.find(" " + socket + " ") != std::string::npos)
            pids.push_back(pid);
    }
    closedir(d);
    return pids;
}

class NvstartTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(nvtest::WriteFile(m_dir.File("state.json"),
                                      nvtest::ReadFile(NV_SOURCE_DIR "/data/demo-state.json")));
    }
    // Every agent a test started is stopped, and must be gone.
    void TearDown() override {
        for (pid_t pid : AgentsOn(Socket())) {
            kill(pid, SIGTERM);
            EXPECT_TRUE(nvtest::WaitForeignExit(pid, 10000));
        }
    }
    std::string Socket() const { return m_dir.File("nvsock"); }
    // nvstart with the simulator on the demo state as norvaned's options.
    nvtest::RunResult Nvstart(std::vector<std::string> args, bool withAgentArgs = true) {
        args.insert(args.begin(), kNvstart);
        if (withAgentArgs) {
            for (const char* a : {"--", "--backend", "sim", "--state"})
                args.push_back(a);
            args.push_back(m_dir.File("state.json"));
        }
        return nvtest::RunProgram(args, 20000);
    }
    bool Answers() {
        cConf_Inf conf;
        cSvrState svr;
        std::string err;
        return nvtest::CheckState(Socket(), conf, svr, err);
    }
    nvtest::TempDir m_dir;
};

TEST_F(NvstartTest, StartsNorvanedItselfAndWaitsForItsAnswer) {
    ASSERT_FALSE(Answers());
    nvtest::RunResult r = Nvstart({"--socket", Socket()});
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_EQ(r.sStdout, "nvstart: started " + std::string(NV_BIN_DIR) +
                             "/norvaned (simulator backend); norvaned answers on " + Socket() +
                             ".\n");
    EXPECT_THAT(r.sStderr, IsEmpty());
    EXPECT_TRUE(Answers());
    std::vector<pid_t> agents = AgentsOn(Socket());
    ASSERT_EQ(agents.size(), 1u);
    // The agent detached: it is not nvstart's child any more, and outlives it.
    std::ifstream stat("/proc/" + std::to_string(agents[0]) + "/stat");
    std::string pidField, comm, state;
    int ppid = 0;
    stat >> pidField >> comm >> state >> ppid;
    EXPECT_NE(ppid, getpid());
}

TEST_F(NvstartTest, StartsNoSecondAgentWhenOneAnswers) {
    ASSERT_EQ(Nvstart({"--socket", Socket()}).iExitCode, 0);
    std::vector<pid_t> before = AgentsOn(Socket());
    ASSERT_EQ(before.size(), 1u);
    nvtest::RunResult r = Nvstart({"--socket", Socket()});
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_EQ(r.sStdout,
              "nvstart: norvaned already answers on " + Socket() + "; nothing started.\n");
    EXPECT_EQ(AgentsOn(Socket()), before);
    EXPECT_TRUE(Answers());
}

TEST_F(NvstartTest, TakesTheSocketFromTheEnvironment) {
    setenv("NVUI_SOCKET", Socket().c_str(), 1);
    nvtest::RunResult r = Nvstart({});
    unsetenv("NVUI_SOCKET");
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_THAT(r.sStdout, HasSubstr("answers on " + Socket() + ".\n"));
    EXPECT_TRUE(Answers());
    EXPECT_EQ(AgentsOn(Socket()).size(), 1u);
}

TEST_F(NvstartTest, SaysWhyWhenNorvanedCannotStart) {
    nvtest::RunResult r = Nvstart({"--socket", Socket(), "--", "--no-such-option"}, false);
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_THAT(r.sStderr, HasSubstr("norvaned: unknown option --no-such-option\n"));
    EXPECT_THAT(r.sStderr, HasSubstr("nvstart: norvaned ended with exit status 2 before "
                                     "answering on " +
                                     Socket() + "; no agent started.\n"));
    EXPECT_THAT(r.sStdout, IsEmpty());
    EXPECT_FALSE(Answers());
}

TEST_F(NvstartTest, LeavesAPathThatIsNotASocketAlone) {
    ASSERT_TRUE(nvtest::WriteFile(Socket(), "precious"));
    nvtest::RunResult r = Nvstart({"--socket", Socket()});
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_THAT(r.sStderr, HasSubstr("exists and is not a socket"));
    EXPECT_THAT(r.sStderr, HasSubstr("no agent started"));
    EXPECT_EQ(nvtest::ReadFile(Socket()), "precious");
}

TEST_F(NvstartTest, RefusesWhenSomethingElseHoldsTheSocket) {
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, Socket().c_str(), sizeof addr.sun_path - 1);
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    ASSERT_EQ(listen(fd, 8), 0);
    // Accepts nothing and answers nothing: the check times out.
    nvtest::RunResult r = Nvstart({"--socket", Socket(), "--timeout", "1"});
    close(fd);
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_THAT(r.sStderr, HasSubstr("nvstart: something listens on " + Socket() +
                                     " but gives no valid check answer"));
    EXPECT_THAT(r.sStderr, HasSubstr("not starting a second agent.\n"));
    EXPECT_THAT(AgentsOn(Socket()), IsEmpty());
}

TEST_F(NvstartTest, ReplacesAStaleSocketFile) {
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, Socket().c_str(), sizeof addr.sun_path - 1);
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    close(fd);
    nvtest::RunResult r = Nvstart({"--socket", Socket()});
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_TRUE(Answers());
}

TEST_F(NvstartTest, SaysSoWhenNorvanedIsMissing) {
    std::string lone = m_dir.File("nvstart");
    ASSERT_TRUE(nvtest::WriteFile(lone, nvtest::ReadFile(kNvstart)));
    ASSERT_EQ(chmod(lone.c_str(), 0755), 0);
    nvtest::RunResult r = nvtest::RunProgram({lone, "--socket", Socket()});
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_EQ(r.sStderr, "nvstart: norvaned is neither beside nvstart nor in ../sbin.\n");
    EXPECT_FALSE(Answers());
}

// Without norvaned's options, a socket of its own gets norvaned's own
// default backend, the simulator, as "norvaned --socket PATH" does, and
// nvstart says so. nvstart runs here beside a stand-in norvaned that notes
// its arguments and runs the real one on the simulator whatever they say,
// so that a regression never starts the live backend on this machine.
TEST_F(NvstartTest, WithoutAgentOptionsAPrivateSocketGetsTheSimulator) {
    std::string bin = m_dir.File("bin");
    ASSERT_EQ(mkdir(bin.c_str(), 0755), 0);
    ASSERT_TRUE(nvtest::WriteFile(bin + "/nvstart", nvtest::ReadFile(kNvstart)));
    ASSERT_TRUE(nvtest::WriteFile(
        bin + "/norvaned", "#!/bin/sh\nprintf '%s\\n' \"$@\" > " + m_dir.File("args") + "\nexec " +
                               NV_BIN_DIR + "/norvaned \"$@\" --backend sim\n"));
    ASSERT_EQ(chmod((bin + "/nvstart").c_str(), 0755), 0);
    ASSERT_EQ(chmod((bin + "/norvaned").c_str(), 0755), 0);
    nvtest::RunResult r = nvtest::RunProgram({bin + "/nvstart", "--socket", Socket()}, 20000);
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_THAT(r.sStdout, HasSubstr("(simulator backend); norvaned answers on " + Socket()));
    EXPECT_EQ(nvtest::ReadFile(m_dir.File("args")), "--socket\n" + Socket() + "\n");
    EXPECT_EQ(AgentsOn(Socket()).size(), 1u);
}

// norvaned's --foreground is refused before anything is started: nvstart
// waits for the agent to detach, and a foreground agent would hold the
// caller's terminal.
TEST_F(NvstartTest, RefusesForeground) {
    nvtest::RunResult r =
        Nvstart({"--socket", Socket(), "--", "--backend", "sim", "--foreground"}, false);
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_THAT(r.sStderr, HasSubstr("--foreground is not accepted"));
    EXPECT_THAT(r.sStdout, IsEmpty());
    EXPECT_THAT(AgentsOn(Socket()), IsEmpty());
    EXPECT_FALSE(Answers());
}

// norvaned takes -h as nvstart and nvcmd do.
TEST_F(NvstartTest, NorvanedTakesDashH) {
    nvtest::RunResult r = nvtest::RunProgram({std::string(NV_BIN_DIR) + "/norvaned", "-h"});
    EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    EXPECT_THAT(r.sStdout, HasSubstr("Usage: norvaned"));
}

TEST_F(NvstartTest, UsageErrorsAndHelp) {
    nvtest::RunResult r = Nvstart({"stray"}, false);
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_THAT(r.sStderr, HasSubstr("unexpected argument stray"));
    r = Nvstart({"--timeout", "0"}, false);
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_THAT(r.sStderr, HasSubstr("--timeout needs a number of seconds"));
    r = Nvstart({"--socket"}, false);
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_THAT(r.sStderr, HasSubstr("option --socket needs a value"));
    r = Nvstart({"--bogus"}, false);
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_THAT(r.sStderr, HasSubstr("unknown option --bogus"));
    r = Nvstart({"--help"}, false);
    EXPECT_EQ(r.iExitCode, 0);
    EXPECT_THAT(r.sStdout, HasSubstr("Usage: nvstart [--socket PATH]"));
    EXPECT_THAT(AgentsOn(Socket()), IsEmpty());
}

}  // namespace
