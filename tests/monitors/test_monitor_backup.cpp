// The backup monitor against a real file that a writer keeps appending to:
// past its limit it is copied into the backup directory and emptied in
// place, and every line the writer wrote is either in a backup or still in
// the file, except those that fall into the documented loss window.
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#include "agent/monitors/backup_monitor.h"
#include "agent/monitors/monitor_supervisor.h"
#include "monitor_test_util.h"
#include "temp_dir.h"

namespace {

constexpr size_t kLineBytes = 64;

std::vector<std::string> FilesIn(const std::string& dir) {
    std::vector<std::string> out;
    DIR* d = opendir(dir.c_str());
    if (d == nullptr)
        return out;
    while (struct dirent* e = readdir(d)) {
        if (e->d_name[0] != '.')
            out.push_back(dir + "/" + e->d_name);
    }
    closedir(d);
    return out;
}

// The numbers of the writer's lines in a file; false when a line is torn.
bool Numbers(const std::string& text, std::vector<long>& out) {
    if (text.size() % kLineBytes != 0)
        return false;
    for (size_t i = 0; i < text.size(); i += kLineBytes) {
        if (text[i + kLineBytes - 1] != '\n')
            return false;
        out.push_back(std::stol(text.substr(i, 10)));
    }
    return true;
}

TEST(BackupMonitorLive, FilePastItsLimitIsBackedUpAndEmptiedWhileAWriterAppends) {
    nvtest::TempDir dir;
    std::string log = dir.File("app.log");
    std::string bak = dir.File("bak");
    nvmonit::MonitorSettings s;
    s.sDataDir = dir.Path();
    s.bBackupOn = true;
    s.vBackups = {{log, bak, 64}};
    s.iIntervalMs = 20;

    // The writer: fixed-size numbered lines, one write each, O_APPEND as
    // log writers do, with its descriptor kept open throughout.
    int fd = open(log.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0640);
    ASSERT_GE(fd, 0);
    std::atomic<bool> stop{false};
    std::atomic<long> written{0};
    std::thread writer([&] {
        char num[32];
        for (long n = 0; !stop; ++n) {
            snprintf(num, sizeof num, "%010ld ", n);
            std::string line = num + std::string(kLineBytes - 12, '0') + "\n";
            if (write(fd, line.data(), line.size()) != static_cast<ssize_t>(kLineBytes))
                break;
            written = n + 1;
            if (n % 16 == 0)
                std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    });
    nvmonit::MonitorSupervisor sup;
    sup.Apply(s);
    std::string report = dir.File("monit/backupmonit.txt");
    bool enough = nvtest::WaitForLines(report, " and emptied", 5, 15000);
    stop = true;
    writer.join();
    sup.StopAll();
    close(fd);
    ASSERT_TRUE(enough);

    std::vector<std::string> backups = FilesIn(bak);
    EXPECT_EQ(static_cast<int>(backups.size()), nvtest::CountLines(report, " and emptied"));
    std::vector<std::vector<long>> parts;
    for (const std::string& b : backups) {
        std::vector<long> nums;
        ASSERT_TRUE(Numbers(nvtest::ReadFile(b), nums)) << b;
        ASSERT_FALSE(nums.empty());
        EXPECT_GT(nums.size() * kLineBytes, 64u * 1024) << b;
        struct stat st {};
        ASSERT_EQ(stat(b.c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, 0640u);
        parts.push_back(nums);
    }
    std::vector<long> rest;
    ASSERT_TRUE(Numbers(nvtest::ReadFile(log), rest));
    std::sort(parts.begin(), parts.end());
    parts.push_back(rest);
    std::vector<long> all;
    for (const auto& p : parts)
        all.insert(all.end(), p.begin(), p.end());
    // In order, no line twice, and the losses counted. Each backup and the
    // rest of the file hold unbroken runs of lines: a line can be lost only
    // in the window between the last catch-up check of a copy and the
    // truncation, that is between two parts. How many fall there depends on
    // how long the agent's thread is descheduled, which a loaded machine
    // does not bound.
    for (const auto& p : parts) {
        for (size_t i = 1; i < p.size(); ++i)
            ASSERT_EQ(p[i], p[i - 1] + 1) << "a line lost inside a copy";
    }
    long lost = 0;
    for (size_t i = 1; i < all.size(); ++i) {
        ASSERT_GT(all[i], all[i - 1]);
        lost += all[i] - all[i - 1] - 1;
    }
    EXPECT_EQ(all.front(), 0);
    EXPECT_EQ(all.back(), written - 1);
    printf("backups %zu, lines written %ld, lines lost %ld\n", backups.size(), written.load(),
           lost);
    // The file was emptied in place: the writer's inode is still the file.
    EXPECT_LT(nvmonit::FileSizeBytes(log), 2 * 64 * 1024);
}

TEST(BackupMonitorLive, BackupNamesCarryTheTimeAndNeverOverwrite) {
    nvtest::TempDir dir;
    std::string f = dir.File("data.bin");
    std::vector<std::string> names;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(nvtest::WriteFile(f, std::string(1000, 'a' + i)));
        nvmonit::BackupResult r = nvmonit::BackUpAndEmpty(f, dir.File("b/c"));
        ASSERT_TRUE(r.bDone) << r.sError;
        EXPECT_EQ(r.llCopiedBytes, 1000);
        EXPECT_EQ(nvmonit::FileSizeBytes(f), 0);
        EXPECT_EQ(nvtest::ReadFile(r.sBackupPath), std::string(1000, 'a' + i));
        names.push_back(r.sBackupPath);
    }
    EXPECT_NE(names[0], names[1]);
    EXPECT_NE(names[1], names[2]);
    EXPECT_EQ(names[0].rfind(dir.File("b/c/data.bin."), 0), 0u);
    EXPECT_EQ(nvmonit::BackupSizeText(nvmonit::FileSizeBytes(f)), " size 0 KB");
    EXPECT_EQ(nvmonit::BackupSizeText(-1), " missing");
}

TEST(BackupMonitorLive, BackupThatCannotBeWrittenLeavesTheFileAndIsReportedOnce) {
    nvtest::TempDir dir;
    std::string f = dir.File("big.log");
    ASSERT_TRUE(nvtest::WriteFile(f, std::string(3000, 'x')));
    // The backup directory's place is taken by a file.
    ASSERT_TRUE(nvtest::WriteFile(dir.File("notadir"), "x"));
    nvmonit::MonitorSettings s;
    s.sDataDir = dir.Path();
    s.bBackupOn = true;
    s.vBackups = {{f, dir.File("notadir/bak"), 1}};
    s.iIntervalMs = 20;
    nvmonit::MonitorSupervisor sup;
    sup.Apply(s);
    std::string report = dir.File("monit/backupmonit.txt");
    ASSERT_TRUE(nvtest::WaitForLines(
        report, f + ": backup to " + dir.File("notadir/bak") + " failed: cannot use", 1, 5000));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(nvtest::ReportLines(report).size(), 1u);
    EXPECT_EQ(nvmonit::FileSizeBytes(f), 3000);
    std::vector<long long> sizes = sup.BackupSizes();
    ASSERT_EQ(sizes.size(), 1u);
    EXPECT_EQ(sizes[0], 3000);
}

TEST(BackupMonitorLive, CopiesKeepHolesAndAtMost64AreKept) {
    nvtest::TempDir dir;
    std::string f = dir.File("sparse.log");
    std::string bak = dir.File("bak");
    for (int i = 0; i < 66; ++i) {
        ASSERT_TRUE(nvtest::WriteFile(f, "data " + std::to_string(i) + "\n"));
        ASSERT_EQ(truncate(f.c_str(), 64LL << 20), 0);
        nvmonit::BackupResult r = nvmonit::BackUpAndEmpty(f, bak);
        ASSERT_TRUE(r.bDone) << r.sError;
        ASSERT_EQ(r.llCopiedBytes, 64LL << 20);
        struct stat st {};
        ASSERT_EQ(stat(r.sBackupPath.c_str(), &st), 0);
        EXPECT_EQ(st.st_size, 64LL << 20);
        EXPECT_LE(st.st_blocks * 512, 256 * 1024) << r.sBackupPath;
    }
    std::vector<std::string> copies = FilesIn(bak);
    EXPECT_EQ(copies.size(), nvmonit::kBackupCopiesKept);
    // The two oldest went.
    std::string all;
    for (const std::string& c : copies) {
        char head[8] = {};
        int fd = open(c.c_str(), O_RDONLY);
        ASSERT_EQ(pread(fd, head, sizeof head, 0), static_cast<ssize_t>(sizeof head));
        close(fd);
        all += std::string(head, sizeof head) + ",";
    }
    EXPECT_EQ(all.find("data 0\n"), std::string::npos);
    EXPECT_EQ(all.find("data 1\n"), std::string::npos);
    EXPECT_NE(all.find("data 65\n"), std::string::npos);
}

TEST(BackupMonitorLive, LinkOrDirectoryOthersCanWriteIsNeverUsed) {
    nvtest::TempDir dir;
    ASSERT_EQ(mkdir(dir.File("real").c_str(), 0700), 0);
    ASSERT_EQ(symlink(dir.File("real").c_str(), dir.File("link").c_str()), 0);
    std::string f = dir.File("app.log");
    ASSERT_TRUE(nvtest::WriteFile(f, "content"));
    nvmonit::BackupResult r = nvmonit::BackUpAndEmpty(f, dir.File("link/bak"));
    EXPECT_FALSE(r.bDone);
    EXPECT_NE(r.sError.find(dir.File("link") + " is a symbolic link"), std::string::npos)
        << r.sError;
    r = nvmonit::BackUpAndEmpty(dir.File("link/app.log"), dir.File("bak"));
    EXPECT_FALSE(r.bDone);
    ASSERT_EQ(mkdir(dir.File("open").c_str(), 0700), 0);
    ASSERT_EQ(chmod(dir.File("open").c_str(), 0777), 0);
    r = nvmonit::BackUpAndEmpty(f, dir.File("open"));
    EXPECT_FALSE(r.bDone);
    EXPECT_NE(r.sError.find("can be written by other users"), std::string::npos) << r.sError;
    EXPECT_TRUE(FilesIn(dir.File("real")).empty());
    EXPECT_TRUE(FilesIn(dir.File("open")).empty());
    EXPECT_EQ(nvtest::ReadFile(f), "content");
}

TEST(BackupMonitorLive, WaitAfterFailuresDoublesUpToItsBound) {
    EXPECT_EQ(nvmonit::BackoffDelayMs(100, 1), 200);
    EXPECT_EQ(nvmonit::BackoffDelayMs(100, 2), 400);
    EXPECT_EQ(nvmonit::BackoffDelayMs(100, 6), 6400);
    EXPECT_EQ(nvmonit::BackoffDelayMs(100, 7), 6400);
    EXPECT_EQ(nvmonit::BackoffDelayMs(10000, 1000), 640000);
}

}  // namespace
