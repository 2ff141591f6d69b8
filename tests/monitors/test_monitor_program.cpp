// The nvmonitors program end to end: the monitors run from a settings file,
// SIGHUP applies a changed file (a monitor switched off stops reporting),
// and the same settings applied again after a restart resume the monitors:
// the process the first run started is watched, not started twice.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "monitor_test_util.h"
#include "temp_dir.h"

namespace {

using nvtest::CountLines;
using nvtest::WaitForLines;

pid_t StartProgram(const std::string& settings) {
    pid_t pid = fork();
    if (pid == 0) {
        execl(NV_BIN_DIR "/nvmonitors", "nvmonitors", "--settings", settings.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    return pid;
}

int StopProgram(pid_t pid) {
    kill(pid, SIGTERM);
    int status = 0;
    waitpid(pid, &status, 0);
    return status;
}

std::string Settings(const nvtest::TempDir& dir, const std::string& cmd, bool fileOn) {
    return "{\"dataDir\": \"" + dir.Path() + "\", \"intervalMs\": 50, \"systemd\": \"never\"," +
           "\"processOn\": true, \"processes\": [\"" + cmd +
           "\"], \"fileOn\": " + (fileOn ? "true" : "false") + ", \"files\": [\"" +
           dir.File("watched") + "\"]}";
}

// Ends the program and the processes it left, however the test ends.
struct Leftovers {
    std::string sText;
    pid_t prog = 0;
    ~Leftovers() {
        if (prog > 0)
            StopProgram(prog);
        nvtest::KillChildrenMatching(sText);
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
    }
};

TEST(MonitorProgram, RestartResumesTheMonitorsAndHangupAppliesChanges) {
    // Processes the program started stay when it ends; as subreaper this
    // test inherits them and can end them.
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    nvtest::TempDir dir;
    std::string cmd = "sleep 8" + std::to_string(getpid()) + ".5";
    Leftovers left;
    left.sText = cmd.substr(6);
    std::string settings = dir.File("settings.json");
    ASSERT_TRUE(nvtest::WriteFile(settings, Settings(dir, cmd, true)));
    std::string procReport = dir.File("monit/processmonit.txt");
    std::string fileReport = dir.File("monit/filemonit.txt");

    pid_t prog = StartProgram(settings);
    left.prog = prog;
    ASSERT_TRUE(WaitForLines(procReport, "started: " + cmd, 1, 5000));
    pid_t daemon = nvtest::PidInLine(procReport, "started: " + cmd);
    ASSERT_TRUE(nvtest::WriteFile(dir.File("watched"), "1"));
    ASSERT_TRUE(WaitForLines(fileReport, "created " + dir.File("watched"), 1, 5000));
    left.prog = 0;
    int status = StopProgram(prog);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    // Not a child that dies with the agent.
    EXPECT_NE(nvtest::CommandLineOf(daemon).find(cmd.substr(6)), std::string::npos);

    // The same settings again: the file monitor reports again, the process
    // monitor finds its process running and starts no second one.
    prog = StartProgram(settings);
    left.prog = prog;
    // Written until the new run, once its watches are set, reports it.
    bool resumed = nvtest::WaitUntil(
        [&] {
            nvtest::WriteFile(dir.File("watched"), "2");
            return WaitForLines(fileReport, "modified " + dir.File("watched"), 2, 200);
        },
        5000);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(resumed);
    EXPECT_EQ(CountLines(procReport, "started: "), 1);
    // It is watched: killed, it is reported and started again.
    kill(daemon, SIGKILL);
    waitpid(daemon, nullptr, 0);
    EXPECT_TRUE(WaitForLines(procReport, "started: " + cmd, 2, 5000));
    EXPECT_EQ(CountLines(procReport, "exited: " + cmd + " (pid " + std::to_string(daemon)), 1);

    // SIGHUP with the file monitor switched off: no more file reports.
    ASSERT_TRUE(nvtest::WriteFile(settings, Settings(dir, cmd, false)));
    kill(prog, SIGHUP);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    int before = CountLines(fileReport, dir.File("watched"));
    ASSERT_TRUE(nvtest::WriteFile(dir.File("watched"), "3"));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(CountLines(fileReport, dir.File("watched")), before);

    left.prog = 0;
    status = StopProgram(prog);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(MonitorProgram, IntervalOptionOverridesTheFile) {
    nvtest::TempDir dir;
    std::string f = dir.File("app.log");
    ASSERT_TRUE(nvtest::WriteFile(f, std::string(4096, 'x')));
    // The file's interval would be an hour: only the option makes the
    // backup come at once.
    ASSERT_TRUE(nvtest::WriteFile(
        dir.File("s.json"), "{\"dataDir\": \"" + dir.Path() +
                                "\", \"intervalMs\": 3600000, \"backupOn\": true, "
                                "\"backups\": [{\"file\": \"" +
                                f + "\", \"dir\": \"" + dir.File("bak") + "\", \"limitKb\": 1}]}"));
    // The first sample comes at start; write again after it so that only a
    // short interval can catch the second.
    pid_t prog = fork();
    if (prog == 0) {
        execl(NV_BIN_DIR "/nvmonitors", "nvmonitors", "--settings", dir.File("s.json").c_str(),
              "--monitor-interval-ms", "50", static_cast<char*>(nullptr));
        _exit(127);
    }
    std::string report = dir.File("monit/backupmonit.txt");
    bool first = WaitForLines(report, " and emptied", 1, 5000);
    ASSERT_TRUE(nvtest::WriteFile(f, std::string(4096, 'y')));
    bool second = WaitForLines(report, " and emptied", 2, 5000);
    int status = StopProgram(prog);
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    for (const char* bad : {"0", "-5", "12x"}) {
        pid_t p = fork();
        if (p == 0) {
            execl(NV_BIN_DIR "/nvmonitors", "nvmonitors", "--settings", dir.File("s.json").c_str(),
                  "--monitor-interval-ms", bad, static_cast<char*>(nullptr));
            _exit(127);
        }
        ASSERT_EQ(waitpid(p, &status, 0), p);
        EXPECT_EQ(WEXITSTATUS(status), 2) << bad;
    }
}

TEST(MonitorProgram, BadSettingsFileIsRefused) {
    nvtest::TempDir dir;
    ASSERT_TRUE(nvtest::WriteFile(dir.File("s.json"), "{not json"));
    pid_t prog = StartProgram(dir.File("s.json"));
    int status = 0;
    ASSERT_EQ(waitpid(prog, &status, 0), prog);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
}

}  // namespace
