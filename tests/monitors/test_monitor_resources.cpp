// The CPU, memory and disk-volume monitors against the real machine: CPU
// burners on every CPU cross the ceiling once, a child's allocation crosses
// a memory ceiling set just above the current use, and a small tmpfs (in a
// private mount namespace of the test) filled and emptied crosses the
// volume's limits and interval.
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <thread>

#include "agent/monitors/memory_monitor.h"
#include "agent/monitors/monitor_supervisor.h"
#include "monitor_test_util.h"
#include "temp_dir.h"

namespace {

using nvtest::CountLines;
using nvtest::ReportLines;
using nvtest::WaitForLines;

TEST(CpuMonitorLive, BurnersCrossTheCeilingOnceAndGiveOneLine) {
    nvtest::TempDir dir;
    nvmonit::MonitorSettings s;
    s.sDataDir = dir.Path();
    s.bCpuOn = true;
    s.iCpuCeilPercent = 90;
    s.iIntervalMs = 200;
    std::string report = dir.File("monit/cpumonit.txt");
    std::vector<pid_t> burners;
    long n = sysconf(_SC_NPROCESSORS_ONLN);
    for (long i = 0; i < n; ++i)
        burners.push_back(nvtest::StartBurner());
    nvmonit::MonitorSupervisor sup;
    sup.Apply(s);
    bool crossed = WaitForLines(report, "is above the ceiling 90%", 1, 10000);
    // Settings of other monitors change meanwhile: not a new excursion.
    s.llMemCeilMb = 1;
    s.vFiles = {dir.File("x")};
    sup.Apply(s);
    // Ten more samples with every CPU busy: still the same excursion.
    std::this_thread::sleep_for(std::chrono::milliseconds(2000));
    sup.StopAll();
    for (pid_t p : burners) {
        kill(p, SIGKILL);
        waitpid(p, nullptr, 0);
    }
    ASSERT_TRUE(crossed);
    EXPECT_EQ(CountLines(report, "above the ceiling"), 1);
    EXPECT_EQ(CountLines(report, "below the floor"), 0);
    std::vector<std::string> lines = ReportLines(report);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("CPU usage ", 0), 0u) << lines[0];
}

TEST(MemoryMonitorLive, AllocationAboveACeilingNearTheCurrentUseGivesItsLine) {
    nvmonit::MemoryFigures now;
    ASSERT_TRUE(nvmonit::ReadMemory("/proc", now));
    nvtest::TempDir dir;
    nvmonit::MonitorSettings s;
    s.sDataDir = dir.Path();
    s.bMemoryOn = true;
    s.llMemCeilMb = now.llUsedMb + 400;
    s.iIntervalMs = 100;
    std::string report = dir.File("monit/memorymonit.txt");
    nvmonit::MonitorSupervisor sup;
    sup.Apply(s);
    // A child takes 1.5 GB (touched, so that it is really in use) and waits.
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    pid_t hog = fork();
    if (hog == 0) {
        size_t size = 1536UL * 1024 * 1024;
        char* p = static_cast<char*>(malloc(size));
        if (p != nullptr)
            memset(p, 1, size);
        (void)write(ready[1], "x", 1);
        pause();
        _exit(0);
    }
    char c = 0;
    ASSERT_EQ(read(ready[0], &c, 1), 1);
    bool crossed = WaitForLines(
        report, "MB is above the ceiling " + std::to_string(s.llMemCeilMb) + " MB", 1, 5000);
    kill(hog, SIGKILL);
    waitpid(hog, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
    sup.StopAll();
    ASSERT_TRUE(crossed);
    std::string line = ReportLines(report)[0];
    long long used = std::stoll(line.substr(strlen("memory in use ")));
    EXPECT_GT(used, s.llMemCeilMb) << line;
}

// Runs nvmonitors with the settings file in a private mount namespace in
// which a 64 MB tmpfs is mounted on mnt; returns its pid.
pid_t StartInPrivateTmpfs(const std::string& mnt, const std::string& settings) {
    pid_t pid = fork();
    if (pid == 0) {
        if (unshare(CLONE_NEWNS) != 0 ||
            mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("nvtest", mnt.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "size=64m,mode=0700") !=
                0) {
            _exit(90);
        }
        execl(NV_BIN_DIR "/nvmonitors", "nvmonitors", "--settings", settings.c_str(),
              static_cast<char*>(nullptr));
        _exit(91);
    }
    return pid;
}

void WriteMb(const std::string& path, int mb) {
    std::ofstream out(path, std::ios::binary);
    std::string chunk(1024 * 1024, 'v');
    for (int i = 0; i < mb; ++i)
        out.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
}

TEST(DiskVolumeMonitorLive, TmpfsFilledAndEmptiedCrossesItsLimits) {
    if (geteuid() != 0)
        GTEST_SKIP() << "mounting a tmpfs in a private namespace needs root";
    nvtest::TempDir dir;
    std::string mnt = dir.File("mnt");
    ASSERT_EQ(mkdir(mnt.c_str(), 0700), 0);
    std::string settings = dir.File("settings.json");
    ASSERT_TRUE(nvtest::WriteFile(settings,
                                  "{\"dataDir\": \"" + dir.Path() +
                                      "\", \"intervalMs\": 50, \"volumeOn\": true, \"volumes\": "
                                      "[{\"partition\": \"" +
                                      mnt + "\", \"ceil\": 20, \"floor\": 1, \"interval\": 8}]}"));
    std::string report = dir.File("monit/diskvolumemonit.txt");
    pid_t agent = StartInPrivateTmpfs(mnt, settings);
    ASSERT_GT(agent, 0);
    // The tmpfs is seen only inside the namespace: reach it through the
    // monitor's own root.
    std::string inside = "/proc/" + std::to_string(agent) + "/root" + mnt;
    // The monitor is stopped while the test writes, so that no sample
    // catches a file half written.
    auto paused = [agent](const std::function<void()>& change) {
        kill(agent, SIGSTOP);
        change();
        kill(agent, SIGCONT);
    };
    bool ok = WaitForLines(report, ": used 0 MB is below the floor 1 MB", 1, 5000);
    if (ok) {
        paused([&] { WriteMb(inside + "/a", 10); });
        ok = WaitForLines(report, ": used 10 MB, grew by 10 MB (interval 8 MB)", 1, 5000);
    }
    if (ok) {
        paused([&] { WriteMb(inside + "/b", 15); });
        ok = WaitForLines(report, ": used 25 MB is above the ceiling 20 MB", 1, 5000);
    }
    if (ok) {
        paused([&] {
            unlink((inside + "/a").c_str());
            unlink((inside + "/b").c_str());
        });
        ok = WaitForLines(report, ": used 0 MB is below the floor 1 MB", 2, 5000);
    }
    kill(agent, SIGTERM);
    int status = 0;
    waitpid(agent, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    ASSERT_TRUE(ok) << nvtest::ReadFile(report);
    std::vector<std::string> want = {
        mnt + ": used 0 MB is below the floor 1 MB",
        mnt + ": used 10 MB, grew by 10 MB (interval 8 MB)",
        mnt + ": used 25 MB is above the ceiling 20 MB",
        mnt + ": used 0 MB is below the floor 1 MB",
    };
    EXPECT_EQ(ReportLines(report), want);
    // The mount went with the namespace.
    struct stat a {
    }, b{};
    ASSERT_EQ(stat(mnt.c_str(), &a), 0);
    ASSERT_EQ(stat(dir.Path().c_str(), &b), 0);
    EXPECT_EQ(a.st_dev, b.st_dev);
}

TEST(DiskVolumeMonitorLive, BlockDeviceIsMeasuredWhereItIsMounted) {
    // The device of the root file system, when /dev has its node.
    struct stat root {};
    ASSERT_EQ(stat("/", &root), 0);
    std::string mp = nvmonit::MountPointOfDevice("/proc", root.st_dev);
    ASSERT_FALSE(mp.empty());
    std::string dev;
    for (const char* cand : {"/dev/root", "/dev/vda", "/dev/vda1", "/dev/sda1", "/dev/nvme0n1p1",
                             "/dev/xvda1", "/dev/sda"}) {
        struct stat st {};
        if (stat(cand, &st) == 0 && S_ISBLK(st.st_mode) && st.st_rdev == root.st_dev) {
            dev = cand;
            break;
        }
    }
    if (dev.empty())
        GTEST_SKIP() << "no device node for the root file system";
    nvmonit::VolumeUsage u = nvmonit::MeasureVolume(dev);
    ASSERT_TRUE(u.bOk) << u.sError;
    EXPECT_EQ(u.sMountPoint, mp);
    nvmonit::VolumeUsage direct = nvmonit::MeasureVolume(mp);
    EXPECT_EQ(u.llTotalMb, direct.llTotalMb);
}

TEST(DiskVolumeMonitorLive, MissingPartitionIsReportedOnceAndShownAsNotMeasurable) {
    nvtest::TempDir dir;
    nvmonit::MonitorSettings s;
    s.sDataDir = dir.Path();
    s.bVolumeOn = true;
    s.iIntervalMs = 50;
    s.vVolumes = {{dir.File("nowhere"), 10, 0, 0}, {dir.Path(), 0, 0, 0}};
    nvmonit::MonitorSupervisor sup;
    sup.Apply(s);
    std::string report = dir.File("monit/diskvolumemonit.txt");
    ASSERT_TRUE(
        WaitForLines(report, dir.File("nowhere") + ": cannot be measured: No such file", 1, 5000));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(ReportLines(report).size(), 1u);
    std::vector<nvmonit::VolumeUsage> uses = sup.VolumeUses();
    ASSERT_EQ(uses.size(), 2u);
    EXPECT_EQ(nvmonit::VolumeUseText(uses[0]), " not measurable: No such file or directory");
    EXPECT_TRUE(uses[1].bOk);
    EXPECT_GT(uses[1].llTotalMb, 0);
    EXPECT_EQ(nvmonit::VolumeUseText(uses[1]), " used " + std::to_string(uses[1].llUsedMb) +
                                                   " MB of " + std::to_string(uses[1].llTotalMb) +
                                                   " MB");
}

}  // namespace
