// The live agent's backup and volume monitors against hostile users and
// unlucky file systems, inside the namespace sandbox with the real
// norvaned --backend system: a directory another user can change is refused
// at the command and skipped when it becomes so later, a link swapped in by
// that user (as uid 65534) never leads the agent's writes or truncation
// elsewhere, the agent's data directory is refused in every list of paths,
// sparse files stay sparse, kernel and special files are refused, a full
// disk is retried with a growing wait, at most 64 copies are kept, a report
// folder swapped for a link is not written through, and a hung mount does
// not hold the check.
#include <dirent.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <thread>

#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using ::testing::EndsWith;
using ::testing::HasSubstr;

namespace {

constexpr uid_t kNobody = 65534;

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

// Runs fn in a child process as uid and gid 65534 with no supplementary
// groups, as a hostile local user; true when fn returned true there.
bool AsNobody(const std::function<bool()>& fn) {
    pid_t pid = fork();
    if (pid == 0) {
        bool ok = setgroups(0, nullptr) == 0 && setresgid(kNobody, kNobody, kNobody) == 0 &&
                  setresuid(kNobody, kNobody, kNobody) == 0 && fn();
        _exit(ok ? 0 : 1);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::vector<std::string> Names(const std::string& dir) {
    std::vector<std::string> out;
    DIR* d = opendir(dir.c_str());
    if (d == nullptr)
        return out;
    while (struct dirent* e = readdir(d)) {
        std::string n = e->d_name;
        if (n != "." && n != "..")
            out.push_back(n);
    }
    closedir(d);
    std::sort(out.begin(), out.end());
    return out;
}

class LiveBackup : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        agent.Process().SetExtraArgs(
            {"--backend", "system", "--data-dir", agent.DataDir(), "--monitor-interval-ms", "100"});
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
        // Other users may pass through the test's directory, as through /var.
        ASSERT_EQ(chmod(files.Path().c_str(), 0755), 0);
        ASSERT_EQ(mkdir(files.File("secret").c_str(), 0700), 0);
        ASSERT_TRUE(nvtest::WriteFile(files.File("secret/keep"), "root only\n"));
        ASSERT_TRUE(nvtest::WriteFile(files.File("secret/app.log"), "root's own log\n"));
    }
    void TearDown() override {
        if (agent.Process().Running()) {
            EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        }
    }
    int Send(short cmd, const std::string& payload, std::string* detail = nullptr) {
        return agent.Send(cmd, payload, detail);
    }
    cConf_Inf Check() {
        cConf_Inf conf;
        cSvrState svr;
        std::string err;
        EXPECT_TRUE(agent.Check(conf, svr, err)) << err;
        return conf;
    }
    std::string Report() const {
        return nvtest::ReadFile(agent.DataDir() + "/monit/backupmonit.txt");
    }
    bool ReportHas(const std::string& text) const {
        return Report().find(text) != std::string::npos;
    }
    // The root-only directory is as it was made.
    void ExpectSecretUntouched() {
        EXPECT_EQ(Names(files.File("secret")), (std::vector<std::string>{"app.log", "keep"}));
        EXPECT_EQ(nvtest::ReadFile(files.File("secret/keep")), "root only\n");
        EXPECT_EQ(nvtest::ReadFile(files.File("secret/app.log")), "root's own log\n");
    }

    nvtest::LiveAgent agent;
    nvtest::TempDir files;
};

TEST_F(LiveBackup, DirectoryAnotherUserCanWriteIsRefusedAtTheCommand) {
    std::string shared = files.File("shared");
    ASSERT_EQ(mkdir(shared.c_str(), 0777), 0);
    ASSERT_EQ(chmod(shared.c_str(), 0777), 0);
    std::string owned = files.File("owned");
    ASSERT_EQ(mkdir(owned.c_str(), 0755), 0);
    ASSERT_EQ(chown(owned.c_str(), kNobody, kNobody), 0);
    ASSERT_EQ(mkdir(files.File("safe").c_str(), 0755), 0);
    struct Case {
        std::string payload, why;
    } cases[] = {
        {shared + "/app.log " + files.File("safe/bak") + " 1",
         shared + " can be written by other users"},
        {files.File("safe/app.log") + " " + shared + "/bak 1",
         shared + " can be written by other users"},
        {files.File("safe/app.log") + " " + shared + " 1",
         shared + " can be written by other users"},
        {owned + "/app.log " + files.File("safe/bak") + " 1", owned + " belongs to another user"},
        {files.File("safe/app.log") + " " + owned + "/deeper/bak 1",
         owned + " belongs to another user"},
    };
    for (const Case& c : cases) {
        std::string detail;
        EXPECT_EQ(Send(28, c.payload, &detail), em_ActPostValueNotValid) << c.payload;
        EXPECT_THAT(detail, HasSubstr(c.why)) << c.payload;
    }
    // A link anywhere on the way is refused, even one root made.
    ASSERT_EQ(symlink(files.File("safe").c_str(), files.File("link").c_str()), 0);
    std::string detail;
    EXPECT_EQ(Send(28, files.File("link/app.log") + " " + files.File("safe/bak") + " 1", &detail),
              em_ActPostValueNotValid);
    EXPECT_THAT(detail, HasSubstr(files.File("link") + " is a symbolic link"));
    // A sticky directory of root's (as /tmp) may be passed through, but it
    // must not hold the file or the copies.
    std::string sticky = files.File("sticky");
    ASSERT_EQ(mkdir(sticky.c_str(), 0755), 0);
    ASSERT_EQ(chmod(sticky.c_str(), 01777), 0);
    ASSERT_EQ(mkdir((sticky + "/own").c_str(), 0755), 0);
    EXPECT_EQ(Send(28, sticky + "/app.log " + files.File("safe/bak") + " 1", &detail),
              em_ActPostValueNotValid);
    EXPECT_THAT(detail, HasSubstr(sticky + " can be written by other users"));
    EXPECT_TRUE(Check().vBakForSize.empty());
    EXPECT_EQ(Send(28, sticky + "/own/app.log " + sticky + "/own/bak 1"), em_ActSuccAll);
    // The same in a directory only root can change is taken.
    EXPECT_EQ(Send(28, files.File("safe/app.log") + " " + files.File("safe/bak") + " 1"),
              em_ActSuccAll);
}

TEST_F(LiveBackup, BackupDirectorySwappedForALinkByAnotherUserIsNeverWrittenThrough) {
    std::string app = files.File("app");
    ASSERT_EQ(mkdir(app.c_str(), 0755), 0);
    ASSERT_EQ(mkdir((app + "/bak").c_str(), 0755), 0);
    std::string log = app + "/app.log";
    ASSERT_TRUE(nvtest::WriteFile(log, ""));
    ASSERT_EQ(chown(log.c_str(), kNobody, kNobody), 0);
    ASSERT_EQ(Send(28, log + " " + app + "/bak 1"), em_ActSuccAll);
    // The administrator then hands the directory to the application's user.
    ASSERT_EQ(chown(app.c_str(), kNobody, kNobody), 0);
    const std::string stanza = std::string(2048, '#') + "\npostrotate\n  touch /pwned\nendscript\n";
    ASSERT_TRUE(AsNobody([&] {
        return rename((app + "/bak").c_str(), (app + "/old").c_str()) == 0 &&
               symlink(files.File("secret").c_str(), (app + "/bak").c_str()) == 0 &&
               nvtest::WriteFile(log, stanza);
    }));
    ASSERT_EQ(Send(31, "1"), em_ActSuccAll);
    ASSERT_TRUE(Within(5000, [&] { return ReportHas(log + ": backup to " + app + "/bak failed"); }))
        << Report();
    EXPECT_THAT(Report(), HasSubstr(app + " belongs to another user (uid 65534)"));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    ExpectSecretUntouched();
    EXPECT_EQ(nvtest::ReadFile(log), stanza);  // skipped, not emptied
    EXPECT_EQ(Send(31, "0"), em_ActSuccAll);
}

TEST_F(LiveBackup, ParentDirectorySwappedForALinkNeverExposesOrTruncatesARootFile) {
    std::string home = files.File("home");
    ASSERT_EQ(mkdir(home.c_str(), 0755), 0);
    std::string logs = home + "/logs";
    ASSERT_EQ(mkdir(logs.c_str(), 0755), 0);
    ASSERT_TRUE(nvtest::WriteFile(logs + "/app.log", ""));
    std::string bak = files.File("bak");
    ASSERT_EQ(Send(28, logs + "/app.log " + bak + " 1"), em_ActSuccAll);
    ASSERT_EQ(chown(home.c_str(), kNobody, kNobody), 0);
    ASSERT_TRUE(AsNobody([&] {
        return rename(logs.c_str(), (home + "/was").c_str()) == 0 &&
               symlink(files.File("secret").c_str(), logs.c_str()) == 0;
    }));
    // The root-only file is past the limit through the link.
    ASSERT_EQ(truncate(files.File("secret/app.log").c_str(), 4096), 0);
    ASSERT_EQ(Send(31, "1"), em_ActSuccAll);
    ASSERT_TRUE(Within(5000, [&] {
        return ReportHas(logs + "/app.log: backup to " + bak + " failed");
    })) << Report();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    struct stat st {};
    ASSERT_EQ(stat(files.File("secret/app.log").c_str(), &st), 0);
    EXPECT_EQ(st.st_size, 4096);
    EXPECT_TRUE(Names(bak).empty());
    EXPECT_EQ(Send(31, "0"), em_ActSuccAll);
}

TEST_F(LiveBackup, DataDirectoryIsRefusedInEveryListOfPaths) {
    std::string data = agent.DataDir();
    ASSERT_EQ(mkdir(files.File("safe").c_str(), 0755), 0);
    ASSERT_EQ(symlink(data.c_str(), files.File("datalink").c_str()), 0);
    struct Case {
        short cmd;
        std::string payload;
    } cases[] = {
        {13, data + "/monit/filemonit.txt\n" + files.File("safe/x") + "\n"},
        {13, data + "\n"},
        {13, files.File("datalink") + "/settings.json\n"},
        {13, data + "/../data/monit\n"},
        {28, data + "/settings.json " + files.File("safe/bak") + " 1"},
        {28, files.File("safe/app.log") + " " + data + "/monit 1"},
        {28, files.File("safe/app.log") + " " + data + " 1"},
        {23, data + "/monit 0 0 0"},
    };
    for (const Case& c : cases) {
        std::string detail;
        EXPECT_EQ(Send(c.cmd, c.payload, &detail), em_ActPostValueNotValid) << c.payload;
        EXPECT_THAT(detail, HasSubstr("the agent's data directory")) << c.payload;
    }
    cConf_Inf conf = Check();
    EXPECT_TRUE(conf.vFileMonitList.empty());
    EXPECT_TRUE(conf.vBakForSize.empty());
    EXPECT_TRUE(conf.vDV.empty());
    // Its parent is fine: a listed directory is watched one level deep.
    std::string parent = data.substr(0, data.rfind('/'));
    EXPECT_EQ(Send(13, parent + "\n"), em_ActSuccAll);
}

TEST_F(LiveBackup, KernelAndSpecialFilesAreRefused) {
    std::string bak = files.File("bak");
    std::string sysfs = files.File("sysfs");
    ASSERT_EQ(mkdir(sysfs.c_str(), 0755), 0);
    ASSERT_EQ(mount("sysfs", sysfs.c_str(), "sysfs", MS_RDONLY, nullptr), 0) << strerror(errno);
    std::string fifo = files.File("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    struct Case {
        std::string payload, why;
    } cases[] = {
        {"/sys/kernel/uevent_seqnum " + bak + " 1", "/proc, /sys or /dev"},
        {"/proc/self/status " + bak + " 1", "/proc, /sys or /dev"},
        {"/dev/zero " + bak + " 1", "/proc, /sys or /dev"},
        {files.File("app.log") + " /dev/shm 1", "/proc, /sys or /dev"},
        {sysfs + "/kernel/uevent_seqnum " + bak + " 1", "kernel file system"},
        {fifo + " " + bak + " 1", "not a regular file"},
    };
    for (const Case& c : cases) {
        std::string detail;
        EXPECT_EQ(Send(28, c.payload, &detail), em_ActPostValueNotValid) << c.payload;
        EXPECT_THAT(detail, HasSubstr(c.why)) << c.payload;
    }
    // A file that becomes a FIFO after it was taken is skipped, not read.
    std::string later = files.File("later");
    ASSERT_TRUE(nvtest::WriteFile(later, ""));
    ASSERT_EQ(Send(28, later + " " + bak + " 1"), em_ActSuccAll);
    ASSERT_EQ(unlink(later.c_str()), 0);
    ASSERT_EQ(mkfifo(later.c_str(), 0600), 0);
    ASSERT_EQ(Send(31, "1"), em_ActSuccAll);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_TRUE(Names(bak).empty());
    EXPECT_EQ(Send(31, "0"), em_ActSuccAll);
    EXPECT_EQ(umount2(sysfs.c_str(), MNT_DETACH), 0);
}

TEST_F(LiveBackup, SparseFileIsCopiedSparsely) {
    std::string bak = files.File("bak");
    ASSERT_EQ(mkdir(bak.c_str(), 0700), 0);
    // A small disk for the copies: a full-size copy could not fit.
    ASSERT_EQ(mount("nvbak", bak.c_str(), "tmpfs", 0, "size=16m,mode=0700"), 0) << strerror(errno);
    std::string log = files.File("sparse.log");
    ASSERT_TRUE(nvtest::WriteFile(log, std::string(4096, 'd')));
    ASSERT_EQ(truncate(log.c_str(), 1LL << 30), 0);
    int fd = open(log.c_str(), O_WRONLY);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(pwrite(fd, "tail", 4, (1LL << 29)), 4);
    close(fd);
    ASSERT_EQ(Send(28, log + " " + bak + " 1"), em_ActSuccAll);
    ASSERT_EQ(Send(31, "1"), em_ActSuccAll);
    ASSERT_TRUE(Within(10000, [&] { return ReportHas(" and emptied"); })) << Report();
    std::vector<std::string> copies = Names(bak);
    ASSERT_EQ(copies.size(), 1u);
    struct stat st {};
    ASSERT_EQ(stat((bak + "/" + copies[0]).c_str(), &st), 0);
    EXPECT_EQ(st.st_size, 1LL << 30);
    EXPECT_LE(st.st_blocks * 512, 64 * 1024) << "allocated bytes";
    std::string copy = bak + "/" + copies[0];
    fd = open(copy.c_str(), O_RDONLY);
    char head[4] = {}, tail[4] = {};
    ASSERT_EQ(pread(fd, head, 4, 0), 4);
    ASSERT_EQ(pread(fd, tail, 4, 1LL << 29), 4);
    close(fd);
    EXPECT_EQ(std::string(head, 4), "dddd");
    EXPECT_EQ(std::string(tail, 4), "tail");
    EXPECT_EQ(Send(31, "0"), em_ActSuccAll);
    EXPECT_EQ(umount2(bak.c_str(), MNT_DETACH), 0);
}

TEST_F(LiveBackup, FullDiskIsRetriedWithAGrowingWait) {
    std::string bak = files.File("bak");
    ASSERT_EQ(mkdir(bak.c_str(), 0700), 0);
    ASSERT_EQ(mount("nvfull", bak.c_str(), "tmpfs", 0, "size=8m,mode=0700"), 0) << strerror(errno);
    std::string fill = bak + "/fill";
    int fd = open(fill.c_str(), O_WRONLY | O_CREAT, 0600);
    std::string mb(1024 * 1024, 'f');
    while (write(fd, mb.data(), mb.size()) > 0) {
    }
    close(fd);
    std::string log = files.File("app.log");
    ASSERT_TRUE(nvtest::WriteFile(log, std::string(2 * 1024 * 1024, 'l')));
    ASSERT_EQ(Send(28, log + " " + bak + " 1"), em_ActSuccAll);
    ASSERT_EQ(Send(31, "1"), em_ActSuccAll);
    // About 35 samples at 100 ms while the disk is full.
    std::this_thread::sleep_for(std::chrono::milliseconds(3500));
    EXPECT_EQ(Names(bak), (std::vector<std::string>{"fill"}));
    ASSERT_EQ(unlink(fill.c_str()), 0);
    ASSERT_TRUE(Within(15000, [&] { return ReportHas(" and emptied"); })) << Report();
    std::string report = Report();
    // One line for the run of failures, then the success saying how many.
    EXPECT_THAT(report, HasSubstr(log + ": backup to " + bak + " failed: "));
    size_t at = report.find(" failed attempts");
    ASSERT_NE(at, std::string::npos) << report;
    size_t from = report.rfind(" after ", at);
    int failures = atoi(report.c_str() + from + 7);
    EXPECT_GE(failures, 3) << report;
    EXPECT_LE(failures, 6) << report;
    EXPECT_EQ(Send(31, "0"), em_ActSuccAll);
    EXPECT_EQ(umount2(bak.c_str(), MNT_DETACH), 0);
}

TEST_F(LiveBackup, AtMost64CopiesAreKept) {
    std::string bak = files.File("bak");
    ASSERT_EQ(mkdir(bak.c_str(), 0700), 0);
    // 70 earlier copies, in the order of their names.
    std::vector<std::string> old;
    for (int i = 0; i < 70; ++i) {
        char name[64];
        snprintf(name, sizeof name, "app.log.20200101-0%05d", i);
        old.push_back(name);
        ASSERT_TRUE(nvtest::WriteFile(bak + "/" + name, "old\n"));
    }
    ASSERT_TRUE(nvtest::WriteFile(bak + "/other.txt", "not a copy\n"));
    std::string log = files.File("app.log");
    ASSERT_TRUE(nvtest::WriteFile(log, std::string(2048, 'n')));
    ASSERT_EQ(Send(28, log + " " + bak + " 1"), em_ActSuccAll);
    ASSERT_EQ(Send(31, "1"), em_ActSuccAll);
    ASSERT_TRUE(Within(5000, [&] { return ReportHas(" and emptied"); })) << Report();
    ASSERT_EQ(Send(31, "0"), em_ActSuccAll);
    std::vector<std::string> left = Names(bak);
    ASSERT_EQ(left.size(), 65u);  // 64 copies and the other file
    EXPECT_EQ(left.back(), "other.txt");
    // The 7 oldest went; the newest copy is the one just made.
    EXPECT_EQ(left.front(), old[7]);
    EXPECT_EQ(nvtest::ReadFile(bak + "/" + left[left.size() - 2]), std::string(2048, 'n'));
}

TEST_F(LiveBackup, HungMountDoesNotHoldTheCheck) {
    std::string mnt = files.File("hung");
    ASSERT_EQ(mkdir(mnt.c_str(), 0755), 0);
    ASSERT_TRUE(nvtest::WriteFile(mnt + "/app.log", "x"));
    ASSERT_EQ(Send(23, mnt + " 0 0 0"), em_ActSuccAll);
    ASSERT_EQ(Send(28, mnt + "/app.log " + files.File("bak") + " 1"), em_ActSuccAll);
    // A FUSE file system whose server never answers (this test holds the
    // device and never reads it): every stat and statfs under it blocks
    // until the device is closed, as with a server that hangs.
    int fuse = open("/dev/fuse", O_RDWR | O_CLOEXEC);
    if (fuse < 0)
        GTEST_SKIP() << "no /dev/fuse: " << strerror(errno);
    std::string opts = "fd=" + std::to_string(fuse) + ",rootmode=40000,user_id=0,group_id=0";
    ASSERT_EQ(mount("nvhung", mnt.c_str(), "fuse", MS_NOSUID | MS_NODEV, opts.c_str()), 0)
        << strerror(errno);
    ASSERT_EQ(Send(26, "1"), em_ActSuccAll);
    ASSERT_EQ(Send(31, "1"), em_ActSuccAll);
    auto start = std::chrono::steady_clock::now();
    cConf_Inf conf = Check();
    auto took = std::chrono::steady_clock::now() - start;
    EXPECT_LT(took, std::chrono::seconds(10));
    RecordProperty(
        "hung_check_ms",
        static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(took).count()));
    printf("check answered in %lld ms while the mount hangs\n",
           static_cast<long long>(
               std::chrono::duration_cast<std::chrono::milliseconds>(took).count()));
    ASSERT_EQ(conf.vsDV.size(), 1u);
    EXPECT_THAT(conf.vsDV[0], EndsWith(" not measurable: no answer"));
    ASSERT_EQ(conf.vsBakForSize.size(), 1u);
    EXPECT_THAT(conf.vsBakForSize[0], EndsWith(" not measurable: no answer"));
    // A second check while the first calls still hang.
    start = std::chrono::steady_clock::now();
    conf = Check();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_THAT(conf.vsDV[0], EndsWith(" not measurable: no answer"));
    ASSERT_TRUE(Within(5000, [&] {
        return nvtest::ReadFile(agent.DataDir() + "/monit/diskvolumemonit.txt")
                   .find(mnt + ": cannot be measured: no answer") != std::string::npos;
    }));
    ASSERT_TRUE(Within(5000, [&] { return ReportHas("failed: no answer from its file system"); }))
        << Report();
    // The monitors switch off while their mount still hangs.
    EXPECT_EQ(Send(26, "0"), em_ActSuccAll);
    EXPECT_EQ(Send(31, "0"), em_ActSuccAll);
    // The server goes away: the mount is detached and the blocked calls
    // end with an error.
    EXPECT_EQ(umount2(mnt.c_str(), MNT_DETACH), 0);
    close(fuse);
    EXPECT_TRUE(Within(5000, [&] {
        const std::string want = " size 0 KB";
        std::string line = Check().vsBakForSize[0];
        return line.size() >= want.size() &&
               line.compare(line.size() - want.size(), want.size(), want) == 0;
    }));
}

TEST_F(LiveBackup, ReportFolderSwappedForALinkIsNeverWrittenThrough) {
    std::string data = agent.DataDir();
    std::string missing = files.File("no-such-volume");
    ASSERT_EQ(Send(23, missing + " 0 0 0"), em_ActSuccAll);
    // The administrator hands the data directory to another user.
    ASSERT_EQ(chmod(data.substr(0, data.rfind('/')).c_str(), 0755), 0);
    ASSERT_EQ(chown(data.c_str(), kNobody, kNobody), 0);
    ASSERT_TRUE(AsNobody([&] {
        bool moved = rename((data + "/monit").c_str(), (data + "/monit.old").c_str()) == 0 ||
                     errno == ENOENT;
        return moved && symlink(files.File("secret").c_str(), (data + "/monit").c_str()) == 0;
    }));
    ASSERT_EQ(Send(26, "1"), em_ActSuccAll);
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    EXPECT_EQ(Send(26, "0"), em_ActSuccAll);
    ExpectSecretUntouched();
}

}  // namespace
