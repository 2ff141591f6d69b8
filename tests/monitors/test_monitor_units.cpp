// The monitors' parts on their own: report files (format, mode, rotation,
// a full file system), excursions, the readings of /proc/stat and
// /proc/meminfo, command lines and their matching, the systemd-run vector
// and the settings file.
#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "agent/monitors/cpu_monitor.h"
#include "agent/monitors/excursion.h"
#include "agent/monitors/memory_monitor.h"
#include "agent/monitors/process_launch.h"
#include "agent/monitors/process_table.h"
#include "agent/monitors/report_file.h"
#include "agent/monitors/report_rate.h"
#include "agent/monitors/settings_json.h"
#include "monitor_test_util.h"
#include "temp_dir.h"

namespace {

using nvtest::ReportLines;

TEST(ReportFile, OneStampedLinePerEventWithMode0600) {
    nvtest::TempDir dir;
    std::string path = dir.File("a/b/r.txt");
    nvmonit::ReportFile r(path, 1 << 20);
    r.Write("first event");
    r.Write("two\nlines");
    std::vector<std::string> want = {"first event", "two\\x0alines"};
    EXPECT_EQ(ReportLines(path), want);
    struct stat st {};
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    ASSERT_EQ(stat(dir.File("a").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST(ReportFile, ExistingFileIsNarrowedTo0600) {
    nvtest::TempDir dir;
    std::string path = dir.File("r.txt");
    ASSERT_TRUE(nvtest::WriteFile(path, ""));
    chmod(path.c_str(), 0644);
    nvmonit::ReportFile(path, 1000).Write("x");
    struct stat st {};
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
}

TEST(ReportFile, RotatesThroughItsCopiesPastItsBound) {
    nvtest::TempDir dir;
    std::string path = dir.File("r.txt");
    nvmonit::ReportFile r(path, 200);
    // Four lines of 51 bytes fit in 200: each copy holds three.
    const int lines = 3 * (nvmonit::kReportCopies + 3);
    for (int i = 0; i < lines; ++i)
        r.Write("event number " + std::to_string(100 + i) + " with some words");
    struct stat st {};
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_LE(st.st_size, 200);
    for (int k = 1; k <= nvmonit::kReportCopies; ++k) {
        std::string copy = path + "." + std::to_string(k);
        ASSERT_EQ(stat(copy.c_str(), &st), 0) << copy;
        EXPECT_LE(st.st_size, 200);
        EXPECT_EQ(st.st_mode & 0777, 0600u);
        // ".1" the newest: each copy's lines come right before the newer one's.
        std::vector<std::string> older = ReportLines(copy);
        std::vector<std::string> newer =
            ReportLines(k == 1 ? path : path + "." + std::to_string(k - 1));
        ASSERT_FALSE(older.empty());
        ASSERT_FALSE(newer.empty());
        int last = atoi(older.back().c_str() + 13);
        int next = atoi(newer.front().c_str() + 13);
        EXPECT_EQ(next, last + 1) << copy;
    }
    std::string dropped = path + "." + std::to_string(nvmonit::kReportCopies + 1);
    EXPECT_EQ(access(dropped.c_str(), F_OK), -1);
    std::vector<std::string> last = ReportLines(path);
    ASSERT_FALSE(last.empty());
    EXPECT_EQ(last.back(), "event number " + std::to_string(100 + lines - 1) + " with some words");
}

TEST(ReportFile, ControlCharactersAndBackslashesAreEscaped) {
    nvtest::TempDir dir;
    std::string path = dir.File("r.txt");
    nvmonit::ReportFile r(path, 1 << 20);
    // A clear-screen sequence, a forged line, a backslash, an eight-bit CSI
    // alone and in UTF-8, a byte that is not UTF-8, and accented letters
    // and CJK that are kept.
    r.Write(std::string("created /tmp/a\x1b[2Jb\\c\n2026-01-01 00:00:00 deleted /etc/x") +
            "\x9b"
            "1m\xc2\x9b\xff" +
            "\xc3\xa9t\xc3\xa9 \xe6\x97\xa5");
    std::string text = nvtest::ReadFile(path);
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    std::vector<std::string> lines = ReportLines(path);
    ASSERT_EQ(lines.size(), 1u) << text;
    EXPECT_EQ(lines[0],
              "created /tmp/a\\x1b[2Jb\\\\c\\x0a2026-01-01 00:00:00 deleted /etc/x"
              "\\x9b1m\\xc2\\x9b\\xff\xc3\xa9t\xc3\xa9 \xe6\x97\xa5");
    // Overlong and surrogate forms are not UTF-8 either.
    EXPECT_EQ(nvmonit::EscapeReportText("\xc0\xaf\xed\xa0\x80"), "\\xc0\\xaf\\xed\\xa0\\x80");
    EXPECT_EQ(nvmonit::EscapeReportText("plain /etc/hosts"), "plain /etc/hosts");
}

TEST(ReportRate, LinesPerKeyAndBytesInAllThenOneSummaryPerKey) {
    using namespace std::chrono;
    nvmonit::ReportRate rate(seconds(10), 3, 1000);
    auto t0 = steady_clock::time_point() + hours(1);
    int allowed = 0;
    for (int i = 0; i < 10; ++i)
        allowed += rate.Allow("/tmp", 10, t0 + milliseconds(i)) ? 1 : 0;
    EXPECT_EQ(allowed, 3);
    EXPECT_TRUE(rate.Allow("/srv", 10, t0));
    EXPECT_TRUE(rate.Due(t0 + seconds(9)).empty());
    EXPECT_EQ(rate.MsUntilDue(t0 + seconds(9)), 1000);
    std::vector<std::string> want = {"7 more events in /tmp"};
    EXPECT_EQ(rate.Due(t0 + seconds(10)), want);
    EXPECT_EQ(rate.MsUntilDue(t0 + seconds(10)), -1);
    EXPECT_EQ(rate.Keys(), 0u);
    // A new window for each key.
    EXPECT_TRUE(rate.Allow("/tmp", 10, t0 + seconds(11)));
    // The overall byte budget holds back lines of any key.
    nvmonit::ReportRate bytes(seconds(10), 100, 100);
    EXPECT_TRUE(bytes.Allow("/a", 60, t0));
    EXPECT_FALSE(bytes.Allow("/b", 60, t0));
    EXPECT_TRUE(bytes.Allow("/b", 40, t0));
    std::vector<std::string> b = {"1 more events in /b"};
    EXPECT_EQ(bytes.Due(t0 + seconds(10)), b);
    EXPECT_TRUE(bytes.Allow("/b", 60, t0 + seconds(10)));
}

TEST(ReportFile, FullFileSystemDropsLinesAndGoesOn) {
    if (geteuid() != 0)
        GTEST_SKIP() << "mounting a tmpfs in a private namespace needs root";
    nvtest::TempDir dir;
    std::string mnt = dir.File("mnt");
    ASSERT_EQ(mkdir(mnt.c_str(), 0700), 0);
    // In a child with its own mount namespace: a 64 KB tmpfs, filled up.
    pid_t pid = fork();
    if (pid == 0) {
        if (unshare(CLONE_NEWNS) != 0 ||
            mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("nvtest", mnt.c_str(), "tmpfs", 0, "size=64k") != 0) {
            _exit(10);
        }
        {
            std::ofstream fill(mnt + "/fill", std::ios::binary);
            std::string block(4096, 'f');
            for (int i = 0; i < 64; ++i)
                fill.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
        nvmonit::ReportFile r(mnt + "/monit/r.txt", 1 << 20);
        r.Write("lost");
        if (r.Dropped() != 1)
            _exit(11);
        unlink((mnt + "/fill").c_str());
        r.Write("kept");
        if (r.Dropped() != 1 ||
            ReportLines(mnt + "/monit/r.txt") != std::vector<std::string>{"kept"}) {
            _exit(12);
        }
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(Excursion, ReportsOncePerExcursionAndRearmsOnReturn) {
    nvmonit::Excursion e;
    std::vector<bool> samples = {false, true, true, true, false, false, true, true};
    std::vector<bool> want = {false, true, false, false, false, false, true, false};
    for (size_t i = 0; i < samples.size(); ++i)
        EXPECT_EQ(e.Crossed(samples[i]), want[i]) << i;
}

TEST(CpuReading, UsageOverAnIntervalFromProcStat) {
    nvtest::TempDir dir;
    ASSERT_TRUE(nvtest::WriteFile(dir.File("stat"),
                                  "cpu  100 0 100 700 100 0 0 0 0 0\n"
                                  "cpu0 50 0 50 350 50 0 0 0 0 0\n"));
    nvmonit::CpuTimes a, b;
    ASSERT_TRUE(nvmonit::ReadCpuTimes(dir.Path(), a));
    EXPECT_EQ(a.ullTotal, 1000u);
    EXPECT_EQ(a.ullBusy, 200u);
    // 300 busy ticks and 100 idle ones later: 75 %.
    ASSERT_TRUE(nvtest::WriteFile(dir.File("stat"), "cpu  300 0 200 750 150 0 0 0 0 0\n"));
    ASSERT_TRUE(nvmonit::ReadCpuTimes(dir.Path(), b));
    EXPECT_DOUBLE_EQ(nvmonit::CpuUsagePercent(a, b), 75.0);
    EXPECT_EQ(nvmonit::CpuUsagePercent(b, b), -1);
    ASSERT_TRUE(nvtest::WriteFile(dir.File("stat"), "intr 1 2 3\n"));
    EXPECT_FALSE(nvmonit::ReadCpuTimes(dir.Path(), b));
    EXPECT_FALSE(nvmonit::ReadCpuTimes(dir.File("none"), b));
}

TEST(CpuReading, RealProcStatAdvances) {
    nvmonit::CpuTimes a, b;
    ASSERT_TRUE(nvmonit::ReadCpuTimes("/proc", a));
    usleep(50 * 1000);
    ASSERT_TRUE(nvmonit::ReadCpuTimes("/proc", b));
    double u = nvmonit::CpuUsagePercent(a, b);
    EXPECT_GE(u, 0.0);
    EXPECT_LE(u, 100.0);
}

TEST(MemoryReading, InUseIsTotalLessAvailable) {
    nvtest::TempDir dir;
    ASSERT_TRUE(nvtest::WriteFile(dir.File("meminfo"),
                                  "MemTotal:        4194304 kB\n"
                                  "MemFree:          102400 kB\n"
                                  "MemAvailable:    1048576 kB\n"
                                  "Buffers:           10240 kB\n"));
    nvmonit::MemoryFigures m;
    ASSERT_TRUE(nvmonit::ReadMemory(dir.Path(), m));
    EXPECT_EQ(m.llTotalMb, 4096);
    EXPECT_EQ(m.llFreeMb, 1024);
    EXPECT_EQ(m.llUsedMb, 3072);
    // Without MemAvailable: free, buffers and page cache.
    ASSERT_TRUE(nvtest::WriteFile(dir.File("meminfo"),
                                  "MemTotal: 2097152 kB\n"
                                  "MemFree: 524288 kB\n"
                                  "Buffers: 0 kB\nCached: 524288 kB\n"));
    ASSERT_TRUE(nvmonit::ReadMemory(dir.Path(), m));
    EXPECT_EQ(m.llUsedMb, 1024);
    ASSERT_TRUE(nvmonit::ReadMemory("/proc", m));
    EXPECT_GT(m.llTotalMb, 0);
    EXPECT_EQ(m.llUsedMb + m.llFreeMb, m.llTotalMb);
}

TEST(ProcessCommands, SplitResolveAndMatch) {
    std::vector<std::string> w = nvmonit::SplitCommand("  /usr/bin/httpdserver -f\t/www/conf ");
    std::vector<std::string> want = {"/usr/bin/httpdserver", "-f", "/www/conf"};
    EXPECT_EQ(w, want);
    EXPECT_TRUE(nvmonit::SplitCommand("   ").empty());

    std::string sleepPath = nvmonit::ResolveProgram("sleep", nvmonit::SearchPath());
    ASSERT_FALSE(sleepPath.empty());
    EXPECT_EQ(sleepPath[0], '/');
    EXPECT_EQ(nvmonit::ResolveProgram(sleepPath, ""), sleepPath);
    EXPECT_EQ(nvmonit::ResolveProgram("bin/sleep", "/usr"), "");
    EXPECT_EQ(nvmonit::ResolveProgram("sleep", "relative/dir:"), "");
    EXPECT_EQ(nvmonit::ResolveProgram("no-such-program-nvmonit", nvmonit::SearchPath()), "");

    std::vector<std::string> entry = {"sleep", "5"};
    EXPECT_TRUE(nvmonit::CommandMatches({"sleep", "5"}, entry, sleepPath));
    EXPECT_TRUE(nvmonit::CommandMatches({sleepPath, "5"}, entry, sleepPath));
    EXPECT_TRUE(nvmonit::CommandMatches({"/opt/bin/sleep", "5"}, entry, sleepPath));
    EXPECT_FALSE(nvmonit::CommandMatches({"sleep", "6"}, entry, sleepPath));
    EXPECT_FALSE(nvmonit::CommandMatches({"sleep"}, entry, sleepPath));
    EXPECT_FALSE(nvmonit::CommandMatches({"sleep", "5", "x"}, entry, sleepPath));
    EXPECT_FALSE(nvmonit::CommandMatches({"sleeper", "5"}, entry, sleepPath));
    // A "#!" script shows its interpreter first.
    std::vector<std::string> script = {"/usr/local/bin/daemon.sh", "-x"};
    EXPECT_TRUE(
        nvmonit::CommandMatches({"/bin/sh", "/usr/local/bin/daemon.sh", "-x"}, script, script[0]));
    EXPECT_TRUE(nvmonit::CommandMatches({"/usr/bin/env", "-S", "/usr/local/bin/daemon.sh", "-x"},
                                        script, script[0]));
    EXPECT_FALSE(
        nvmonit::CommandMatches({"/bin/sh", "/usr/local/bin/daemon.sh"}, script, script[0]));
}

TEST(ProcessCommands, ProcessTableSeesThisProcess) {
    bool found = false;
    for (const nvmonit::ProcInfo& p : nvmonit::ListProcesses("/proc")) {
        if (p.pid == getpid()) {
            found = true;
            EXPECT_FALSE(p.vArgv.empty());
        }
    }
    EXPECT_TRUE(found);
    EXPECT_TRUE(nvmonit::ProcessAlive("/proc", getpid()));
    pid_t z = fork();
    if (z == 0)
        _exit(0);
    // A zombie is not alive, and not listed.
    ASSERT_TRUE(nvtest::WaitUntil([&] { return !nvmonit::ProcessAlive("/proc", z); }, 5000));
    for (const nvmonit::ProcInfo& p : nvmonit::ListProcesses("/proc"))
        EXPECT_NE(p.pid, z);
    waitpid(z, nullptr, 0);
}

TEST(ProcessCommands, ProcessTableSurvivesProcessesEndingWhileItIsRead) {
    // Processes that end while their /proc files are read make the reads
    // fail with ESRCH; the table must take them as gone.
    std::atomic<bool> stop{false};
    std::thread churn([&] {
        while (!stop) {
            pid_t p = fork();
            if (p == 0)
                _exit(0);
            if (p > 0)
                waitpid(p, nullptr, 0);
        }
    });
    bool threw = false;
    for (int i = 0; i < 500 && !threw; ++i) {
        try {
            nvmonit::ListProcesses("/proc");
        } catch (...) {
            threw = true;
        }
    }
    stop = true;
    churn.join();
    EXPECT_FALSE(threw);
}

TEST(ProcessCommands, SystemdRunVectorStartsATransientUnitWithoutOutput) {
    std::vector<std::string> v = nvmonit::SystemdRunArgv({"/usr/sbin/httpd", "-f", "/www/c"});
    ASSERT_GE(v.size(), 4u);
    EXPECT_NE(v[0].find("systemd-run"), std::string::npos);
    std::vector<std::string> tail(v.end() - 4, v.end());
    std::vector<std::string> want = {"--", "/usr/sbin/httpd", "-f", "/www/c"};
    EXPECT_EQ(tail, want);
    EXPECT_NE(std::find(v.begin(), v.end(), "--collect"), v.end());
    EXPECT_NE(std::find(v.begin(), v.end(), "--property=StandardOutput=null"), v.end());
    // No --scope: a scope would stay in the agent's own unit.
    EXPECT_EQ(std::find(v.begin(), v.end(), "--scope"), v.end());
}

TEST(ProcessCommands, SystemdRunVectorCarriesTheServiceHardeningEnvironmentAndDirectory) {
    std::vector<std::string> v = nvmonit::SystemdRunArgv({"/usr/sbin/httpd"});
    auto has = [&](const std::string& a) { return std::find(v.begin(), v.end(), a) != v.end(); };
    EXPECT_TRUE(has("--working-directory=/"));
    for (const std::string& e : nvmonit::CommandEnvironment())
        EXPECT_TRUE(has("--setenv=" + e)) << e;
    // Every hardening line of the service's [Service] section, as a property.
    std::ifstream unit(std::string(NV_SOURCE_DIR) + "/dist/norvane.service");
    ASSERT_TRUE(unit.good());
    const std::vector<std::string> notHardening = {"Type", "ExecStart", "Restart", "RestartSec",
                                                   "KillMode"};
    bool inService = false;
    int checked = 0;
    for (std::string line; std::getline(unit, line);) {
        if (!line.empty() && line[0] == '[')
            inService = line == "[Service]";
        size_t eq = line.find('=');
        if (!inService || line.empty() || line[0] == '#' || eq == std::string::npos)
            continue;
        if (std::find(notHardening.begin(), notHardening.end(), line.substr(0, eq)) !=
            notHardening.end()) {
            continue;
        }
        EXPECT_TRUE(has("--property=" + line)) << line;
        ++checked;
    }
    EXPECT_GE(checked, 15);
}

// Forks a child that runs program with argv, as user uid when uid is not
// -1; its pid once its command line shows.
pid_t RunAs(const std::string& program, const std::vector<std::string>& argv, uid_t uid) {
    pid_t pid = fork();
    if (pid == 0) {
        if (uid != static_cast<uid_t>(-1) &&
            (setgroups(0, nullptr) != 0 || setresgid(uid, uid, uid) != 0 ||
             setresuid(uid, uid, uid) != 0)) {
            _exit(126);
        }
        std::vector<char*> a;
        for (const std::string& w : argv)
            a.push_back(const_cast<char*>(w.c_str()));
        a.push_back(nullptr);
        execv(program.c_str(), a.data());
        _exit(127);
    }
    nvtest::WaitUntil(
        [&] {
            return !nvtest::CommandLineOf(pid).empty() &&
                   nvtest::CommandLineOf(pid) != nvtest::CommandLineOf(getpid());
        },
        5000);
    return pid;
}

nvmonit::ProcInfo InfoOf(pid_t pid) {
    for (const nvmonit::ProcInfo& p : nvmonit::ListProcesses("/proc")) {
        if (p.pid == pid)
            return p;
    }
    return {};
}

TEST(ProcessCommands, SameCommandLineFromAnotherProgramOrUserIsNotTheCommand) {
    nvtest::TempDir dir;
    std::string sleepPath = nvmonit::ResolveProgram("sleep", nvmonit::SearchPath());
    ASSERT_FALSE(sleepPath.empty());
    std::string arg = "8" + std::to_string(getpid()) + ".5";
    std::vector<std::string> words = {"sleep", arg};
    nvmonit::ProgramIdentity id = nvmonit::IdentifyProgram(sleepPath, geteuid());

    pid_t real = RunAs(sleepPath, words, static_cast<uid_t>(-1));
    nvmonit::ProcInfo p = InfoOf(real);
    EXPECT_EQ(p.uidReal, geteuid());
    EXPECT_TRUE(nvmonit::RunsCommand(p, words, sleepPath, id)) << p.sExe;

    // Another program (a copy elsewhere) showing the same command line.
    std::string copy = dir.File("sleep");
    ASSERT_TRUE(nvtest::WriteFile(copy, nvtest::ReadFile(sleepPath)));
    chmod(copy.c_str(), 0755);
    pid_t fake = RunAs(copy, words, static_cast<uid_t>(-1));
    p = InfoOf(fake);
    EXPECT_TRUE(nvmonit::CommandMatches(p.vArgv, words, sleepPath));
    EXPECT_FALSE(nvmonit::RunsCommand(p, words, sleepPath, id));

    // A "#!" script runs as its interpreter.
    std::string script = dir.File("daemon.sh");
    ASSERT_TRUE(nvtest::WriteFile(script, "#!/bin/sh\nwhile :; do sleep 1; done\n"));
    chmod(script.c_str(), 0755);
    pid_t sh = RunAs("/bin/sh", {"/bin/sh", script, "-x"}, static_cast<uid_t>(-1));
    p = InfoOf(sh);
    EXPECT_TRUE(nvmonit::RunsCommand(p, {script, "-x"}, script,
                                     nvmonit::IdentifyProgram(script, geteuid())))
        << p.sExe;

    // The same program and command line under another user.
    pid_t other = -1;
    if (geteuid() == 0) {
        other = RunAs(sleepPath, words, 65534);
        p = InfoOf(other);
        EXPECT_EQ(p.uidReal, 65534u);
        EXPECT_EQ(p.sExe, id.sExe);
        EXPECT_FALSE(nvmonit::RunsCommand(p, words, sleepPath, id));
    }
    for (pid_t pid : {real, fake, sh, other}) {
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }
}

TEST(ProcessCommands, RunToEndGivesTheExitCodeAndKillsAtTheDeadline) {
    std::string err;
    std::string t = nvmonit::ResolveProgram("true", nvmonit::SearchPath());
    std::string f = nvmonit::ResolveProgram("false", nvmonit::SearchPath());
    std::string sl = nvmonit::ResolveProgram("sleep", nvmonit::SearchPath());
    EXPECT_EQ(nvmonit::RunToEnd({t}, 5000, err), 0) << err;
    EXPECT_EQ(nvmonit::RunToEnd({f}, 5000, err), 1) << err;
    EXPECT_EQ(nvmonit::RunToEnd({sl, "5"}, 100, err), -1);
    EXPECT_EQ(err, "timed out");
    EXPECT_EQ(nvmonit::RunToEnd({"/no/such/program"}, 100, err), -1);
    EXPECT_EQ(err, "No such file or directory");
}

TEST(SettingsJson, EveryFieldAndBadInput) {
    nvmonit::MonitorSettings s;
    std::string err;
    ASSERT_TRUE(nvmonit::SettingsFromJson(
        R"({"dataDir": "/d", "intervalMs": 50, "systemd": "never", "fileOn": true,
            "files": ["/a"], "processOn": true, "processes": ["sleep 5"], "cpuOn": true,
            "cpuCeil": 90, "cpuFloor": 5, "memoryOn": true, "memCeilMb": 100,
            "volumeOn": true, "volumes": [{"partition": "/dev/x", "ceil": 3, "floor": 2,
            "interval": 1}], "backupOn": true, "backups": [{"file": "/f", "dir": "/b",
            "limitKb": 7}]})",
        s, err))
        << err;
    EXPECT_EQ(s.sDataDir, "/d");
    EXPECT_EQ(s.iIntervalMs, 50);
    EXPECT_EQ(s.enSystemd, nvmonit::SystemdUse::kNever);
    EXPECT_TRUE(s.bFileOn && s.bProcessOn && s.bCpuOn && s.bMemoryOn && s.bVolumeOn && s.bBackupOn);
    EXPECT_EQ(s.iCpuCeilPercent, 90);
    EXPECT_EQ(s.iCpuFloorPercent, 5);
    EXPECT_EQ(s.llMemCeilMb, 100);
    ASSERT_EQ(s.vVolumes.size(), 1u);
    EXPECT_EQ(s.vVolumes[0], (nvmonit::VolumeEntry{"/dev/x", 3, 2, 1}));
    ASSERT_EQ(s.vBackups.size(), 1u);
    EXPECT_EQ(s.vBackups[0], (nvmonit::BackupEntry{"/f", "/b", 7}));
    EXPECT_EQ(nvmonit::MonitDir(s), "/d/monit");

    nvmonit::MonitorSettings kept = s;
    EXPECT_FALSE(nvmonit::SettingsFromJson("{\"cpuCeil\": \"high\"}", s, err));
    EXPECT_FALSE(nvmonit::SettingsFromJson("[1]", s, err));
    EXPECT_FALSE(nvmonit::SettingsFromJson("{\"systemd\": \"maybe\"}", s, err));
    EXPECT_FALSE(nvmonit::SettingsFromJson("{\"volumes\": [{}]}", s, err));
    EXPECT_FALSE(nvmonit::SettingsFromJson("{", s, err));
    EXPECT_EQ(s.sDataDir, kept.sDataDir);
}

}  // namespace
