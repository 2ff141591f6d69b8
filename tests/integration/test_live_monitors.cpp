// The live agent's monitors inside the namespace sandbox, against the real
// norvaned --backend system with short sampling intervals: switched on
// through nvcmd, a watched file's change reaches the report, a watched
// process that is killed is started again, an empty list switches its
// monitor off, a restarted agent resumes the monitors that were on, and a
// volume line shows the volume's current use. Then the monitors against
// another, hostile user (uid 65534): the file monitor's own report listed by
// hand, a flood of files in a world-writable directory, names made of
// terminal sequences, the agent's memory while that user churns files, a
// process of that user with the watched command line; and what a watched
// process inherits from the agent.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <thread>

#include "child_process.h"
#include "inherited_junk.h"
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

    // The report and its rotated copies, oldest first, as one text.
    std::string AllReports(const char* name) const {
        std::string all;
        for (int k = 20; k >= 1; --k)
            all += nvtest::ReadFile(agent.DataDir() + "/monit/" + name + "." + std::to_string(k));
        return all + Report(name);
    }
    // A directory of files that anybody may write in, as /tmp is.
    std::string PublicDir() {
        chmod(files.Path().c_str(), 0711);
        std::string pub = files.File("pub");
        mkdir(pub.c_str(), 0700);
        chmod(pub.c_str(), 01777);
        return pub;
    }
    // The file monitor switched on for dir, and the line of a first file
    // made there seen.
    bool WatchWithAFirstLine(const std::string& dir) {
        if (agent.Send(13, dir + "\n") != em_ActSuccAll || agent.Send(14, "1") != em_ActSuccAll)
            return false;
        return Within(5000, [&] {
            Append(dir + "/first", "x");
            return ReportHas("filemonit.txt", " created " + dir + "/first\n");
        });
    }
    // A field of the agent's /proc/PID/status, in kB ("VmRSS", "VmHWM").
    long StatusKb(const std::string& field) {
        std::string status =
            nvtest::ReadFile("/proc/" + std::to_string(agent.Process().Pid()) + "/status");
        size_t at = status.find("\n" + field + ":");
        return at == std::string::npos ? -1 : atol(status.c_str() + at + field.size() + 2);
    }

    nvtest::LiveAgent agent;
    nvtest::TempDir files;
};

constexpr uid_t kNobody = 65534;

// Runs fn in a child as the unprivileged user 65534 (no groups) and waits
// for it; its exit code (fn's failures exit 1). fn runs between fork and
// exit: system calls only, on what was prepared before.
int AsNobody(const std::function<bool()>& fn) {
    pid_t pid = fork();
    if (pid == 0) {
        if (setgroups(0, nullptr) != 0 || setresgid(kNobody, kNobody, kNobody) != 0 ||
            setresuid(kNobody, kNobody, kNobody) != 0) {
            _exit(126);
        }
        _exit(fn() ? 0 : 1);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

// The pids in the "started: <command> (pid N)" lines of a report, in order.
std::vector<pid_t> StartedPids(const std::string& report, const std::string& command) {
    const std::string prefix = "started: " + command + " (pid ";
    std::vector<pid_t> out;
    for (size_t at = report.find(prefix); at != std::string::npos; at = report.find(prefix, at + 1))
        out.push_back(static_cast<pid_t>(atol(report.c_str() + at + prefix.size())));
    return out;
}

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
    auto pids = [&] { return StartedPids(Report("processmonit.txt"), command); };
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

TEST_F(LiveMonitors, OwnReportListedByHandDoesNotLoopAndOffAnswers) {
    std::string watched = files.File("watched.conf");
    ASSERT_TRUE(nvtest::WriteFile(watched, "a = 1\n"));
    ASSERT_EQ(agent.Send(13, watched + "\n"), em_ActSuccAll);
    ASSERT_EQ(agent.Send(14, "1"), em_ActSuccAll);
    // The report itself added to the list in settings.json, by hand, past
    // whatever the command accepts.
    ASSERT_EQ(agent.Stop(), 0);
    std::string settings = agent.DataDir() + "/settings.json";
    nlohmann::json saved = nlohmann::json::parse(nvtest::ReadFile(settings));
    const std::string report = agent.DataDir() + "/monit/filemonit.txt";
    saved["vFileMonitList"] = {report, watched};
    ASSERT_TRUE(nvtest::WriteFile(settings, saved.dump()));
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    ASSERT_TRUE(Within(5000, [&] {
        Append(watched, "b = 2\n");
        return ReportHas("filemonit.txt", " modified " + watched + "\n");
    })) << Report("filemonit.txt");
    std::this_thread::sleep_for(std::chrono::seconds(2));
    // A line or two, not an endless stream of "modified" about the report.
    EXPECT_LT(AllReports("filemonit.txt").size(), 1000u) << Report("filemonit.txt").substr(0, 500);
    EXPECT_THAT(AllReports("filemonit.txt"), ::testing::Not(HasSubstr("modified " + report)));
    // Off answers within 5 s, and checks go on.
    EXPECT_EQ(agent.Send(14, "0", nullptr, 5000), em_ActSuccAll);
    EXPECT_EQ(Check().chFileMonitFlag, '0');
}

TEST_F(LiveMonitors, FloodByAnotherUserIsSummarisedAndKeepsTheEarlierLines) {
    std::string pub = PublicDir();
    ASSERT_TRUE(WatchWithAFirstLine(pub)) << Report("filemonit.txt");
    // 9,000 files made and deleted as fast as the user can, long names.
    std::vector<std::string> names;
    for (int i = 0; i < 9000; ++i)
        names.push_back(pub + "/" + std::string(60, 'f') + std::to_string(i));
    ASSERT_EQ(AsNobody([&] {
                  for (const std::string& n : names) {
                      int fd = open(n.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
                      if (fd < 0)
                          return false;
                      close(fd);
                      unlink(n.c_str());
                  }
                  return true;
              }),
              0);
    ASSERT_TRUE(Within(25000, [&] { return ReportHas("filemonit.txt", " more events in " + pub); }))
        << Report("filemonit.txt").substr(0, 2000);
    std::string all = AllReports("filemonit.txt");
    EXPECT_THAT(all, HasSubstr(" created " + pub + "/first\n"));
    EXPECT_LT(std::count(all.begin(), all.end(), '\n'), 200);
}

TEST_F(LiveMonitors, NamesMadeOfTerminalSequencesAreWrittenEscaped) {
    std::string pub = PublicDir();
    ASSERT_EQ(agent.Send(13, pub + "\n"), em_ActSuccAll);
    ASSERT_EQ(agent.Send(14, "1"), em_ActSuccAll);
    // A clear screen, a window title and a line of its own, as a file name.
    const std::string evil = pub + "/x\x1b[2J\x1b]0;root\x07\n2026-01-01 00:00:00 deleted \\etc";
    ASSERT_TRUE(Within(5000, [&] {
        EXPECT_EQ(AsNobody([&] {
                      int fd = open(evil.c_str(), O_WRONLY | O_CREAT, 0644);
                      close(fd);
                      return fd >= 0 && unlink(evil.c_str()) == 0;
                  }),
                  0);
        return ReportHas("filemonit.txt", " deleted " + pub + "/x");
    })) << Report("filemonit.txt");
    std::string text = Report("filemonit.txt");
    EXPECT_THAT(text, HasSubstr(" created " + pub +
                                "/x\\x1b[2J\\x1b]0;root\\x07\\x0a2026-01-01 00:00:00 deleted "
                                "\\\\etc\n"));
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    EXPECT_EQ(text.find('\x07'), std::string::npos);
}

TEST_F(LiveMonitors, AgentMemoryStaysBoundedWhileAnotherUserChurnsFiles) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "under AddressSanitizer freed memory sits in its quarantine (hundreds of "
                    "MB): the bound is the real build's";
#endif
    std::string pub = PublicDir();
    ASSERT_TRUE(WatchWithAFirstLine(pub)) << Report("filemonit.txt");
    std::vector<std::string> names;
    for (int i = 0; i < 100000; ++i)
        names.push_back(pub + "/" + std::string(40, 'm') + std::to_string(i));
    long before = StatusKb("VmRSS");
    ASSERT_GT(before, 0);
    // The peak is measured from here on.
    ASSERT_TRUE(
        nvtest::WriteFile("/proc/" + std::to_string(agent.Process().Pid()) + "/clear_refs", "5"));
    // Created with a line, truncated by path, deleted: five events a file.
    ASSERT_EQ(AsNobody([&] {
                  for (const std::string& n : names) {
                      int fd = open(n.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
                      if (fd < 0 || write(fd, "line\n", 5) != 5)
                          return false;
                      close(fd);
                      if (truncate(n.c_str(), 0) != 0 || unlink(n.c_str()) != 0)
                          return false;
                  }
                  return true;
              }),
              0);
    ASSERT_TRUE(
        Within(25000, [&] { return ReportHas("filemonit.txt", " more events in " + pub); }));
    // The queue worked off: a check answers, and a last change is seen.
    Check();
    long after = StatusKb("VmRSS");
    long peak = StatusKb("VmHWM");
    std::cout << "agent VmRSS before " << before << " kB, after " << after << " kB, peak " << peak
              << " kB" << std::endl;
    EXPECT_LE(peak - before, 8 * 1024);
    EXPECT_LE(after - before, 8 * 1024);
}

TEST_F(LiveMonitors, ProcessOfAnotherUserWithTheSameCommandLineDoesNotBlindTheWatchdog) {
    const std::string command = "/bin/sleep 1002";
    // The hostile user's process, the same program and arguments.
    pid_t spoof = nvtest::SpawnProcess({"/usr/bin/setpriv", "--reuid=65534", "--regid=65534",
                                        "--clear-groups", "/bin/sleep", "1002"},
                                       "", "");
    ASSERT_GT(spoof, 0);
    ASSERT_TRUE(Within(5000, [&] {
        return nvtest::ReadFile("/proc/" + std::to_string(spoof) + "/cmdline") == std::string(
                                                                                      "/bin/sleep\0"
                                                                                      "1002\0",
                                                                                      16);
    }));
    ASSERT_EQ(agent.Send(15, command + "\n"), em_ActSuccAll);
    ASSERT_EQ(agent.Send(16, "1"), em_ActSuccAll);
    EXPECT_TRUE(Within(5000, [&] {
        return !StartedPids(Report("processmonit.txt"), command).empty();
    })) << Report("processmonit.txt");
    std::vector<pid_t> started = StartedPids(Report("processmonit.txt"), command);
    ASSERT_EQ(agent.Send(16, "0"), em_ActSuccAll);
    for (pid_t p : started) {
        EXPECT_NE(p, spoof);
        kill(p, SIGKILL);
    }
    nvtest::KillAndReap(spoof);
}

TEST_F(LiveMonitors, WatchedProcessGetsItsOwnEnvironmentDirectoryAndDefaultSignals) {
    // An agent with SIGQUIT ignored, a secret in its environment and a
    // working directory of its own.
    ASSERT_EQ(agent.Stop(), 0);
    std::string err;
    bool started = false;
    {
        nvtest::InheritedJunk junk;
        started = agent.Start(&err);
    }
    ASSERT_TRUE(started) << err;
    const std::string command = "/bin/sleep 1003";
    ASSERT_EQ(agent.Send(15, command + "\n"), em_ActSuccAll);
    ASSERT_EQ(agent.Send(16, "1"), em_ActSuccAll);
    ASSERT_TRUE(Within(5000, [&] {
        return !StartedPids(Report("processmonit.txt"), command).empty();
    })) << Report("processmonit.txt");
    pid_t pid = StartedPids(Report("processmonit.txt"), command)[0];
    std::string proc = "/proc/" + std::to_string(pid);
    ASSERT_TRUE(Within(5000, [&] {
        return nvtest::ReadFile(proc + "/cmdline") == std::string(
                                                          "/bin/sleep\0"
                                                          "1003\0",
                                                          16);
    }));
    EXPECT_EQ(nvtest::ReadFile(proc + "/environ"),
              std::string("PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin\0"
                          "LANG=C.UTF-8\0HOME=/\0",
                          86));
    char link[256] = {};
    ASSERT_GT(readlink((proc + "/cwd").c_str(), link, sizeof link - 1), 0);
    EXPECT_STREQ(link, "/");
    std::vector<std::string> fds;
    for (int fd = 0; fd < 1024; ++fd) {
        char target[256] = {};
        if (readlink((proc + "/fd/" + std::to_string(fd)).c_str(), target, sizeof target - 1) > 0)
            fds.push_back(std::to_string(fd) + " " + target);
    }
    EXPECT_THAT(fds, ::testing::ElementsAre("0 /dev/null", "1 /dev/null", "2 /dev/null"));
    std::string status = nvtest::ReadFile(proc + "/status");
    EXPECT_THAT(status, HasSubstr("\nSigIgn:\t0000000000000000\n"));
    EXPECT_THAT(status, HasSubstr("\nSigBlk:\t0000000000000000\n"));
    ASSERT_EQ(agent.Send(16, "0"), em_ActSuccAll);
    kill(pid, SIGKILL);
}

}  // namespace
