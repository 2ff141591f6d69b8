// The process monitor against real processes: a listed command is started
// in a session of its own with its streams on /dev/null, started again when
// killed, not started twice when it already runs, and backed off when it
// dies at once.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "agent/monitors/monitor_supervisor.h"
#include "agent/monitors/process_launch.h"
#include "agent/monitors/process_monitor.h"
#include "agent/monitors/process_table.h"
#include "inherited_junk.h"
#include "monitor_test_util.h"
#include "temp_dir.h"

namespace {

using nvtest::CountLines;
using nvtest::PidInLine;
using nvtest::WaitForLines;

class ProcessMonitorTest : public ::testing::Test {
protected:
    void SetUp() override {
        // A sleep length no other process on the machine uses.
        m_cmd = "sleep 7" + std::to_string(getpid()) + ".25";
        m_s.sDataDir = m_dir.File("data");
        m_s.bProcessOn = true;
        m_s.vProcesses = {m_cmd};
        m_s.iIntervalMs = 50;
        m_s.enSystemd = nvmonit::SystemdUse::kNever;
        m_report = m_dir.File("data/monit/processmonit.txt");
    }
    void TearDown() override {
        m_sup.StopAll();
        nvtest::KillChildrenMatching(m_cmd.substr(6));
    }

    nvtest::TempDir m_dir;
    std::string m_cmd;
    nvmonit::MonitorSettings m_s;
    nvmonit::MonitorSupervisor m_sup;
    std::string m_report;
};

std::string Link(pid_t pid, int fd) {
    char buf[256] = {};
    std::string p = "/proc/" + std::to_string(pid) + "/fd/" + std::to_string(fd);
    ssize_t n = readlink(p.c_str(), buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, static_cast<size_t>(n)) : "";
}

TEST_F(ProcessMonitorTest, StartsTheCommandDetachedAndRestartsItWhenKilled) {
    m_sup.Apply(m_s);
    ASSERT_TRUE(WaitForLines(m_report, "started: " + m_cmd + " (pid ", 1, 5000));
    pid_t first = PidInLine(m_report, "started: " + m_cmd);
    ASSERT_GT(first, 0);
    // Found in PATH, run without a shell, in a new session, on /dev/null.
    // (Right after the exec the kernel may not have set the new command
    // line up yet.)
    std::string cmdline;
    ASSERT_TRUE(
        nvtest::WaitUntil([&] { return !(cmdline = nvtest::CommandLineOf(first)).empty(); }, 5000));
    ASSERT_NE(cmdline.find(' '), std::string::npos) << cmdline;
    EXPECT_EQ(cmdline.substr(cmdline.find(' ')), m_cmd.substr(5));
    EXPECT_EQ(cmdline[0], '/');
    EXPECT_EQ(getsid(first), first);
    for (int fd = 0; fd < 3; ++fd)
        EXPECT_EQ(Link(first, fd), "/dev/null");
    EXPECT_EQ(Link(first, 3), "");

    ASSERT_EQ(kill(first, SIGKILL), 0);
    ASSERT_TRUE(WaitForLines(m_report, "started: " + m_cmd + " (pid ", 2, 5000));
    EXPECT_EQ(CountLines(m_report, "exited: " + m_cmd + " (pid " + std::to_string(first) +
                                       ", killed by signal 9"),
              1);
    pid_t second = PidInLine(m_report, "started: " + m_cmd);
    EXPECT_NE(second, first);
    EXPECT_TRUE(nvtest::WaitUntil([&] { return !nvtest::CommandLineOf(second).empty(); }, 5000));
    // It keeps running: no more starts, and the one exit said once.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(CountLines(m_report, "started: "), 2);
    EXPECT_EQ(CountLines(m_report, "exited: "), 1);
}

TEST_F(ProcessMonitorTest, CommandAlreadyRunningIsWatchedNotStartedAgain) {
    pid_t own = fork();
    if (own == 0) {
        execlp("sleep", "sleep", m_cmd.substr(6).c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    ASSERT_TRUE(nvtest::WaitUntil([&] { return nvtest::CommandLineOf(own) == m_cmd; }, 5000));
    m_sup.Apply(m_s);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(CountLines(m_report, "started: "), 0);
    kill(own, SIGKILL);
    waitpid(own, nullptr, 0);
    ASSERT_TRUE(WaitForLines(m_report, "started: " + m_cmd, 1, 5000));
    EXPECT_EQ(CountLines(m_report,
                         "exited: " + m_cmd + " (pid " + std::to_string(own) + ", status unknown)"),
              1);
}

TEST_F(ProcessMonitorTest, SameCommandLineFromAnotherProgramDoesNotBlindTheMonitor) {
    // A copy of the program elsewhere, showing the listed command line.
    std::string copy = m_dir.File("sleep");
    std::string sleepPath = nvmonit::ResolveProgram("sleep", nvmonit::SearchPath());
    ASSERT_TRUE(nvtest::WriteFile(copy, nvtest::ReadFile(sleepPath)));
    chmod(copy.c_str(), 0755);
    pid_t fake = fork();
    if (fake == 0) {
        execl(copy.c_str(), "sleep", m_cmd.substr(6).c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    ASSERT_TRUE(nvtest::WaitUntil([&] { return nvtest::CommandLineOf(fake) == m_cmd; }, 5000));
    m_sup.Apply(m_s);
    EXPECT_TRUE(WaitForLines(m_report, "started: " + m_cmd + " (pid ", 1, 5000));
    EXPECT_NE(PidInLine(m_report, "started: " + m_cmd), fake);
    kill(fake, SIGKILL);
    waitpid(fake, nullptr, 0);
}

// The /proc/PID/status line of a field, e.g. "SigIgn:\t0000000000000000".
std::string StatusLine(pid_t pid, const std::string& field) {
    std::string status = nvtest::ReadFile("/proc/" + std::to_string(pid) + "/status");
    size_t at = status.find("\n" + field + ":");
    return at == std::string::npos ? "" : status.substr(at + 1, status.find('\n', at + 1) - at - 1);
}

TEST_F(ProcessMonitorTest, StartedCommandGetsItsOwnEnvironmentRootDirectoryAndDefaultSignals) {
    {
        // Held until the start: the monitor's thread starts the command.
        nvtest::InheritedJunk junk;
        m_sup.Apply(m_s);
        ASSERT_TRUE(WaitForLines(m_report, "started: " + m_cmd + " (pid ", 1, 5000));
    }
    pid_t pid = PidInLine(m_report, "started: " + m_cmd);
    std::string proc = "/proc/" + std::to_string(pid);
    // Exec'd (the command line no longer the test's own).
    ASSERT_TRUE(nvtest::WaitUntil(
        [&] {
            std::string c = nvtest::CommandLineOf(pid);
            return c.size() >= m_cmd.size() - 6 &&
                   c.compare(c.size() - (m_cmd.size() - 6), std::string::npos, m_cmd.substr(6)) ==
                       0;
        },
        5000));
    std::string env = nvtest::ReadFile(proc + "/environ");
    std::string want;
    for (const std::string& e : nvmonit::CommandEnvironment())
        want += e + '\0';
    EXPECT_EQ(env, want);
    EXPECT_EQ(want, std::string("PATH=") + nvmonit::kCommandPath + '\0' + "LANG=C.UTF-8" + '\0' +
                        "HOME=/" + '\0');
    char cwd[256] = {};
    ASSERT_GT(readlink((proc + "/cwd").c_str(), cwd, sizeof cwd - 1), 0);
    EXPECT_STREQ(cwd, "/");
    std::vector<std::string> fds;
    for (int fd = 0; fd < 1024; ++fd) {
        if (!Link(pid, fd).empty())
            fds.push_back(std::to_string(fd) + " " + Link(pid, fd));
    }
    std::vector<std::string> nulls = {"0 /dev/null", "1 /dev/null", "2 /dev/null"};
    EXPECT_EQ(fds, nulls);
    EXPECT_EQ(StatusLine(pid, "SigIgn"), "SigIgn:\t0000000000000000");
    EXPECT_EQ(StatusLine(pid, "SigBlk"), "SigBlk:\t0000000000000000");
}

TEST_F(ProcessMonitorTest, CommandThatDiesAtOnceIsBackedOff) {
    m_s.vProcesses = {"false"};
    auto t0 = std::chrono::steady_clock::now();
    m_sup.Apply(m_s);
    // Starts at 0, 1 and 3 s; the next one would come at 7 s.
    std::this_thread::sleep_for(std::chrono::milliseconds(4500));
    m_sup.StopAll();
    double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    int starts = CountLines(m_report, "started: false (pid ");
    EXPECT_GE(starts, 3) << secs;
    EXPECT_LE(starts, 4) << secs;
    EXPECT_EQ(CountLines(m_report, "exited: false (pid "), starts);
    EXPECT_GE(CountLines(m_report, "exit status 1, ran "), 2);
    EXPECT_GE(CountLines(m_report, "; next start in "), 2);
}

TEST_F(ProcessMonitorTest, ProgramThatCannotBeFoundIsReportedAndBackedOff) {
    m_s.vProcesses = {"no-such-program-nvmonit --flag", "/no/such/dir/prog"};
    m_sup.Apply(m_s);
    ASSERT_TRUE(WaitForLines(m_report,
                             "cannot start: no-such-program-nvmonit --flag (not found "
                             "in PATH; next attempt in 1.0 s)",
                             1, 5000));
    ASSERT_TRUE(
        WaitForLines(m_report, "cannot start: /no/such/dir/prog (not an executable", 1, 5000));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(CountLines(m_report, "cannot start: no-such"), 1);
}

TEST_F(ProcessMonitorTest, SwitchedOffLeavesTheProcessRunningAndStopsReports) {
    m_sup.Apply(m_s);
    ASSERT_TRUE(WaitForLines(m_report, "started: " + m_cmd + " (pid ", 1, 5000));
    pid_t pid = PidInLine(m_report, "started: " + m_cmd);
    m_s.bProcessOn = false;
    m_sup.Apply(m_s);
    EXPECT_FALSE(m_sup.Running().bProcess);
    EXPECT_TRUE(nvtest::WaitUntil([&] { return !nvtest::CommandLineOf(pid).empty(); }, 5000));
    size_t lines = nvtest::ReportLines(m_report).size();
    ASSERT_EQ(kill(pid, SIGTERM), 0);
    // Reaped by the agent, not left a zombie; neither reported nor restarted.
    std::string proc = "/proc/" + std::to_string(pid);
    EXPECT_TRUE(nvtest::WaitUntil([&] { return access(proc.c_str(), F_OK) != 0; }, 3000));
    EXPECT_EQ(nvtest::ReportLines(m_report).size(), lines);
}

// systemd does not run on the test machine; a systemd-run of the test's own
// on PATH records its arguments and starts the command the way a transient
// unit would: not as the agent's child.
class SystemdStartTest : public ProcessMonitorTest {
protected:
    void SetUp() override {
        ProcessMonitorTest::SetUp();
        ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
        m_bin = m_dir.File("bin");
        mkdir(m_bin.c_str(), 0700);
        m_oldPath = getenv("PATH");
        setenv("PATH", (m_bin + ":" + m_oldPath).c_str(), 1);
        m_s.enSystemd = nvmonit::SystemdUse::kAlways;
    }
    void TearDown() override {
        ProcessMonitorTest::TearDown();
        setenv("PATH", m_oldPath.c_str(), 1);
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
    }
    void FakeSystemdRun(int exitCode) {
        std::string script = m_bin + "/systemd-run";
        ASSERT_TRUE(nvtest::WriteFile(
            script, "#!/bin/sh\necho \"$@\" >> " + m_dir.File("args") +
                        "\nwhile [ \"$1\" != -- ]; do shift; done\nshift\n" +
                        (exitCode == 0 ? "\"$@\" </dev/null >/dev/null 2>&1 &\n" : "") + "exit " +
                        std::to_string(exitCode) + "\n"));
        chmod(script.c_str(), 0700);
    }
    std::string m_bin;
    std::string m_oldPath;
};

TEST_F(SystemdStartTest, StartedAsATransientUnitThenWatchedByItsCommandLine) {
    FakeSystemdRun(0);
    m_sup.Apply(m_s);
    ASSERT_TRUE(WaitForLines(m_report, "started: " + m_cmd + " (transient systemd unit)", 1, 5000));
    std::string args = nvtest::ReadFile(m_dir.File("args"));
    EXPECT_NE(args.find("--collect"), std::string::npos) << args;
    EXPECT_NE(args.find("-- /"), std::string::npos) << args;
    // Found by its command line, and watched: killed, it is started again.
    pid_t pid = 0;
    ASSERT_TRUE(nvtest::WaitUntil(
        [&] {
            for (const nvmonit::ProcInfo& p : nvmonit::ListProcesses("/proc")) {
                if (nvtest::CommandLineOf(p.pid).find(m_cmd.substr(6)) != std::string::npos)
                    pid = p.pid;
            }
            return pid != 0;
        },
        5000));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(CountLines(m_report, "started: "), 1);
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    ASSERT_TRUE(WaitForLines(m_report, "started: " + m_cmd, 2, 5000));
    EXPECT_EQ(CountLines(m_report, "exited: " + m_cmd + " (pid " + std::to_string(pid) +
                                       ", status unknown, ran "),
              1);
}

TEST_F(SystemdStartTest, FailedSystemdRunIsReportedAndBackedOff) {
    FakeSystemdRun(3);
    m_sup.Apply(m_s);
    ASSERT_TRUE(WaitForLines(
        m_report, "cannot start: " + m_cmd + " (systemd-run exit status 3; next attempt in 1.0 s)",
        1, 5000));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(CountLines(m_report, "cannot start: "), 1);
}

TEST_F(SystemdStartTest, SwitchedOffAnswersWhileAStartHangs) {
    // A systemd-run that does not come back: the start waits for it up to
    // its 10 s limit; switching off must not wait as long.
    std::string script = m_bin + "/systemd-run";
    std::string mark = m_dir.File("run");
    ASSERT_TRUE(nvtest::WriteFile(script, "#!/bin/sh\necho >" + mark + "\nexec sleep 30\n"));
    chmod(script.c_str(), 0700);
    m_sup.Apply(m_s);
    ASSERT_TRUE(nvtest::WaitUntil([&] { return access(mark.c_str(), F_OK) == 0; }, 5000));
    m_s.bProcessOn = false;
    nvtest::ApplyWithin(m_sup, m_s, 5000);
    EXPECT_FALSE(m_sup.Running().bProcess);
}

TEST(ProcessBackoff, NoMoreThanTenStartsInTheFirstTenSecondsAndFewerAfter) {
    // The start times of a command that dies at once, as the monitor plans
    // them: each wait counts from the previous start.
    long long t = 0;
    std::vector<long long> starts = {0};
    for (int k = 1; t < 3600 * 1000; ++k) {
        t += nvmonit::BackoffMs(k);
        starts.push_back(t);
    }
    int first10 = 0;
    for (long long s : starts)
        first10 += s < 10000 ? 1 : 0;
    EXPECT_LE(first10, 10);
    for (size_t i = 2; i < starts.size(); ++i)
        EXPECT_GE(starts[i] - starts[i - 1], starts[i - 1] - starts[i - 2]);
    EXPECT_EQ(nvmonit::BackoffMs(0), 0);
    EXPECT_EQ(nvmonit::BackoffMs(1), 1000);
    EXPECT_EQ(nvmonit::BackoffMs(100), nvmonit::kMaxBackoffMs);
}

}  // namespace
