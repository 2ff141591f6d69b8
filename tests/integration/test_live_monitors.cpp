// The live agent's monitors inside the namespace sandbox, against the real
// norvaned --backend system with short sampling intervals: switched on
// through nvcmd, a watched file's change reaches the report, a watched
// process that is killed is started again, an empty list switches its
// monitor off, a restarted agent resumes the monitors that were on, and a
// volume line shows the volume's current use.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "child_process.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using ::testing::EndsWith;
using ::testing::HasSubstr;

namespace {

const std::string kNvcmd = std::string(NV_BIN_DIR) + "/nvcmd";

// Polls pred every 20 ms for up to timeoutMs.
template <class F>
bool Within(int timeoutMs, F pred) {
    auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!pred()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

class LiveMonitors : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        agent.Process().SetExtraArgs(
            {"--backend", "system", "--data-dir", agent.DataDir(), "--monitor-interval-ms", "100"});
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
        setenv("NVUI_SOCKET", agent.SocketPath().c_str(), 1);
        setenv("NVUI_LOG", files.File("nvcmd.log").c_str(), 1);
    }
    void TearDown() override {
        // A clean stop with the monitors running (and, in a sanitizer
        // build, no report from the agent).
        if (agent.Process().Running()) {
            EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        }
        unsetenv("NVUI_SOCKET");
        unsetenv("NVUI_LOG");
    }
    // One set command through nvcmd, the console's own client library.
    void Nvcmd(const std::string& cmd, const std::string& payload) {
        nvtest::RunResult r = nvtest::RunProgram({kNvcmd, "send", cmd, payload}, 20000);
        EXPECT_EQ(r.iExitCode, 0) << cmd << " " << payload << ": " << r.sStdout << r.sStderr;
    }
    cConf_Inf Check() {
        cConf_Inf conf;
        cSvrState svr;
        std::string err;
        EXPECT_TRUE(agent.Check(conf, svr, err)) << err;
        return conf;
    }
    std::string Report(const char* name) const {
        return nvtest::ReadFile(agent.DataDir() + "/monit/" + name);
    }
    bool ReportHas(const char* name, const std::string& text) const {
        return Report(name).find(text) != std::string::npos;
    }
    static void Append(const std::string& path, const std::string& text) {
        std::ofstream out(path, std::ios::app);
        out << text;
    }

    nvtest::LiveAgent agent;
    nvtest::TempDir files;
};

TEST_F(LiveMonitors, FileMonitorSwitchedOnThroughNvcmdReportsAChange) {
    std::string watched = files.File("watched.conf");
    ASSERT_TRUE(nvtest::WriteFile(watched, "a = 1\n"));
    Nvcmd("13", watched + "\n");
    Nvcmd("14", "1");
    EXPECT_EQ(Check().chFileMonitFlag, '1');
    // The watch is set up as the command is carried out.
    ASSERT_TRUE(Within(5000, [&] {
        Append(watched, "b = 2\n");
        return ReportHas("filemonit.txt", " modified " + watched + "\n");
    })) << Report("filemonit.txt");
    struct stat st {};
    ASSERT_EQ(stat((agent.DataDir() + "/monit/filemonit.txt").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    // Switched off, it reports nothing more.
    Nvcmd("14", "0");
    std::string before = Report("filemonit.txt");
    Append(watched, "c = 3\n");
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(Report("filemonit.txt"), before);
}

TEST_F(LiveMonitors, KilledProcessIsStartedAgain) {
    const std::string command = "/bin/sleep 1000";
    ASSERT_EQ(agent.Send(15, command + "\n"), em_ActSuccAll);
    ASSERT_EQ(agent.Send(16, "1"), em_ActSuccAll);
    // The pids of the "started: <command> (pid N)" lines, in order.
    auto pids = [&] {
        const std::string prefix = "started: " + command + " (pid ";
        std::vector<pid_t> out;
        std::string text = Report("processmonit.txt");
        for (size_t at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at + 1))
            out.push_back(static_cast<pid_t>(atol(text.c_str() + at + prefix.size())));
        return out;
    };
    ASSERT_TRUE(Within(5000, [&] { return pids().size() == 1; })) << Report("processmonit.txt");
    pid_t first = pids()[0];
    ASSERT_EQ(kill(first, SIGKILL), 0);
    ASSERT_TRUE(Within(5000, [&] { return pids().size() == 2; })) << Report("processmonit.txt");
    EXPECT_NE(pids()[1], first);
    EXPECT_THAT(Report("processmonit.txt"),
                HasSubstr("exited: " + command + " (pid " + std::to_string(first)));
    ASSERT_EQ(agent.Send(16, "0"), em_ActSuccAll);
    kill(pids()[1], SIGKILL);
}

TEST_F(LiveMonitors, EmptyListSwitchesItsMonitorOffAndStaysOff) {
    std::string watched = files.File("watched.conf");
    ASSERT_EQ(agent.Send(13, watched + "\n"), em_ActSuccAll);
    ASSERT_EQ(agent.Send(14, "1"), em_ActSuccAll);
    EXPECT_EQ(Check().chFileMonitFlag, '1');
    ASSERT_EQ(agent.Send(13, ""), em_ActSuccAll);
    cConf_Inf conf = Check();
    EXPECT_EQ(conf.chFileMonitFlag, '0');
    EXPECT_TRUE(conf.vFileMonitList.empty());
    // Saved: the agent started again keeps it off.
    nlohmann::json saved =
        nlohmann::json::parse(nvtest::ReadFile(agent.DataDir() + "/settings.json"));
    EXPECT_EQ(saved["chFileMonitFlag"], "0");
    std::string err;
    ASSERT_TRUE(agent.Restart(&err)) << err;
    EXPECT_EQ(Check().chFileMonitFlag, '0');
}

TEST_F(LiveMonitors, RestartedAgentResumesTheMonitorsThatWereOn) {
    std::string watched = files.File("watched.conf");
    ASSERT_TRUE(nvtest::WriteFile(watched, "a = 1\n"));
    ASSERT_EQ(agent.Send(13, watched + "\n"), em_ActSuccAll);
    ASSERT_EQ(agent.Send(14, "1"), em_ActSuccAll);
    std::string err;
    ASSERT_TRUE(agent.Restart(&err)) << err;
    EXPECT_EQ(Check().chFileMonitFlag, '1');
    ASSERT_TRUE(nvtest::WriteFile(watched + ".new", "a = 2\n"));
    // Replaced as an editor saves it: written beside, renamed over.
    ASSERT_TRUE(Within(5000, [&] {
        rename((watched + ".new").c_str(), watched.c_str());
        nvtest::WriteFile(watched + ".new", "a = 3\n");
        return ReportHas("filemonit.txt", " moved here " + watched + "\n");
    })) << Report("filemonit.txt");
}

TEST_F(LiveMonitors, VolumeLineShowsTheCurrentUse) {
    std::string vol = files.File("vol");
    ASSERT_EQ(mkdir(vol.c_str(), 0700), 0);
    ASSERT_EQ(mount("nvvol", vol.c_str(), "tmpfs", 0, "size=8m"), 0) << strerror(errno);
    ASSERT_TRUE(nvtest::WriteFile(vol + "/fill", std::string(3 * 1024 * 1024, 'x')));
    EXPECT_EQ(agent.Send(23, vol + " 6 1 0"), em_ActSuccAll);
    cConf_Inf conf = Check();
    ASSERT_EQ(conf.vsDV.size(), 1u);
    EXPECT_THAT(conf.vsDV[0], HasSubstr(vol));
    EXPECT_THAT(conf.vsDV[0], EndsWith(" MB used 3 MB of 8 MB"));
    ASSERT_TRUE(nvtest::WriteFile(vol + "/fill", std::string(5 * 1024 * 1024, 'x')));
    EXPECT_THAT(Check().vsDV[0], EndsWith(" used 5 MB of 8 MB"));
    // A volume that vanished says why instead.
    EXPECT_EQ(umount2(vol.c_str(), MNT_DETACH), 0);
    ASSERT_EQ(rmdir(vol.c_str()), 0);
    EXPECT_THAT(Check().vsDV[0], EndsWith(" not measurable: No such file or directory"));
}

}  // namespace
