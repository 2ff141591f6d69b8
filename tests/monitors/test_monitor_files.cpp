// The file monitor against real files: creation, modification, a rename
// over the watched file, attribute change and deletion; a watched directory
// and its direct children only; a path that appears later; the report's
// mode and line format.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "agent/monitors/monitor_supervisor.h"
#include "agent/monitors/report_file.h"
#include "monitor_test_util.h"
#include "temp_dir.h"

namespace {

using nvtest::CountLines;
using nvtest::ReportLines;
using nvtest::WaitForLines;

void Append(const std::string& path, const std::string& text) {
    int fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(fd);
}

class FileMonitorTest : public ::testing::Test {
protected:
    void SetUp() override {
        mkdir(m_dir.File("w").c_str(), 0700);
        mkdir(m_dir.File("w/dir").c_str(), 0700);
        m_s.sDataDir = m_dir.File("data");
        m_s.bFileOn = true;
        m_s.vFiles = {File(), m_dir.File("w/dir"), Later()};
        m_report = m_dir.File("data/monit/filemonit.txt");
    }
    std::string File() { return m_dir.File("w/file.txt"); }
    std::string Later() { return m_dir.File("w/later/sub/new.txt"); }
    // The report's lines about one path, in order.
    std::vector<std::string> LinesAbout(const std::string& path) {
        std::vector<std::string> out;
        for (const std::string& l : ReportLines(m_report)) {
            if (l.size() > path.size() && l.compare(l.size() - path.size(), path.size(), path) == 0)
                out.push_back(l.substr(0, l.size() - path.size() - 1));
        }
        return out;
    }

    nvtest::TempDir m_dir;
    nvmonit::MonitorSettings m_s;
    nvmonit::MonitorSupervisor m_sup;
    std::string m_report;
};

TEST_F(FileMonitorTest, FileCreatedModifiedRenamedOverChangedAndDeleted) {
    m_sup.Apply(m_s);
    std::string f = File();
    Append(f, "one\n");
    ASSERT_TRUE(WaitForLines(m_report, "modified " + f, 1, 5000));
    Append(f, "two\n");
    ASSERT_TRUE(WaitForLines(m_report, "modified " + f, 2, 5000));
    // An editor's save: a new file renamed over the watched one.
    Append(f + ".tmp", "three\n");
    ASSERT_EQ(rename((f + ".tmp").c_str(), f.c_str()), 0);
    ASSERT_TRUE(WaitForLines(m_report, "moved here " + f, 1, 5000));
    Append(f, "four\n");
    ASSERT_TRUE(WaitForLines(m_report, "modified " + f, 3, 5000));
    ASSERT_EQ(chmod(f.c_str(), 0600), 0);
    ASSERT_TRUE(WaitForLines(m_report, "attributes changed " + f, 1, 5000));
    ASSERT_EQ(unlink(f.c_str()), 0);
    ASSERT_TRUE(WaitForLines(m_report, "deleted " + f, 1, 5000));

    std::vector<std::string> want = {"created",  "modified",           "modified", "moved here",
                                     "modified", "attributes changed", "deleted"};
    EXPECT_EQ(LinesAbout(f), want);
    // The temporary file of the save is not watched.
    EXPECT_EQ(CountLines(m_report, f + ".tmp"), 0);
    for (const std::string& l : ReportLines(m_report))
        EXPECT_EQ(l.rfind("BAD: ", 0), std::string::npos) << l;
    struct stat st {};
    ASSERT_EQ(stat(m_report.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
}

TEST_F(FileMonitorTest, DirectoryReportsItsChildrenButNotDeeper) {
    m_sup.Apply(m_s);
    std::string d = m_dir.File("w/dir");
    Append(d + "/a.txt", "x");
    ASSERT_TRUE(WaitForLines(m_report, "created " + d + "/a.txt", 1, 5000));
    ASSERT_EQ(mkdir((d + "/sub").c_str(), 0700), 0);
    ASSERT_TRUE(WaitForLines(m_report, "created " + d + "/sub", 1, 5000));
    Append(d + "/sub/deep.txt", "x");
    Append(d + "/a.txt", "y");
    ASSERT_TRUE(WaitForLines(m_report, "modified " + d + "/a.txt", 2, 5000));
    ASSERT_EQ(unlink((d + "/a.txt").c_str()), 0);
    ASSERT_TRUE(WaitForLines(m_report, "deleted " + d + "/a.txt", 1, 5000));
    EXPECT_EQ(CountLines(m_report, "deep.txt"), 0);
}

TEST_F(FileMonitorTest, PathThatDoesNotExistYetIsPickedUp) {
    m_sup.Apply(m_s);
    ASSERT_EQ(mkdir(m_dir.File("w/later").c_str(), 0700), 0);
    ASSERT_EQ(mkdir(m_dir.File("w/later/sub").c_str(), 0700), 0);
    Append(Later(), "hello\n");
    ASSERT_TRUE(WaitForLines(m_report, "created " + Later(), 1, 5000));
    // Picked up, it is watched like any other file.
    ASSERT_EQ(chmod(Later().c_str(), 0600), 0);
    ASSERT_TRUE(WaitForLines(m_report, "attributes changed " + Later(), 1, 5000));
    ASSERT_EQ(unlink(Later().c_str()), 0);
    ASSERT_TRUE(WaitForLines(m_report, "deleted " + Later(), 1, 5000));
    // The directories on the way are not listed, so not reported.
    EXPECT_EQ(CountLines(m_report, "created " + m_dir.File("w/later") + "\n"), 0);
    EXPECT_EQ(LinesAbout(m_dir.File("w/later")).size(), 0u);
}

TEST_F(FileMonitorTest, SwitchedOffStopsReportsAndOnStartsThemAgain) {
    m_sup.Apply(m_s);
    Append(File(), "a\n");
    ASSERT_TRUE(WaitForLines(m_report, "modified " + File(), 1, 5000));
    m_s.bFileOn = false;
    m_sup.Apply(m_s);
    EXPECT_FALSE(m_sup.Running().bFile);
    size_t before = ReportLines(m_report).size();
    Append(File(), "b\n");
    ASSERT_EQ(unlink(File().c_str()), 0);
    usleep(300 * 1000);
    EXPECT_EQ(ReportLines(m_report).size(), before);
    m_s.bFileOn = true;
    m_sup.Apply(m_s);
    EXPECT_TRUE(m_sup.Running().bFile);
    Append(File(), "c\n");
    ASSERT_TRUE(WaitForLines(m_report, "created " + File(), 2, 5000));
}

TEST_F(FileMonitorTest, ListChangedWhileRunningAppliesAtOnce) {
    m_sup.Apply(m_s);
    std::string other = m_dir.File("w/other.txt");
    m_s.vFiles = {other};
    m_sup.Apply(m_s);
    Append(File(), "not watched any more\n");
    Append(other, "watched now\n");
    ASSERT_TRUE(WaitForLines(m_report, "created " + other, 1, 5000));
    usleep(100 * 1000);
    EXPECT_EQ(CountLines(m_report, File()), 0);
}

TEST_F(FileMonitorTest, OwnReportsListedAreNotReportedOnAndOffAnswers) {
    // The report itself and its folder listed beside a file: each line
    // written must not become an event that writes a line.
    m_s.vFiles = {m_report, m_dir.File("data/monit"), File()};
    m_sup.Apply(m_s);
    Append(File(), "one\n");
    ASSERT_TRUE(WaitForLines(m_report, "created " + File(), 1, 5000))
        << nvtest::ReadFile(m_report).substr(0, 1000);
    usleep(1000 * 1000);
    std::vector<std::string> lines = ReportLines(m_report);
    EXPECT_LE(lines.size(), 3u) << lines.size() << " lines, the last: " << lines.back();
    EXPECT_EQ(CountLines(m_report, "filemonit.txt"), 0);
    m_s.bFileOn = false;
    nvtest::ApplyWithin(m_sup, m_s, 5000);
    EXPECT_FALSE(m_sup.Running().bFile);
}

TEST_F(FileMonitorTest, FloodInADirectoryIsSummarisedAndKeepsTheEarlierLines) {
    std::string flood = m_dir.File("w/dir");
    m_sup.Apply(m_s);
    Append(flood + "/first", "x");
    ASSERT_TRUE(WaitForLines(m_report, "created " + flood + "/first", 1, 5000));
    // 9,000 files made and deleted as fast as possible, long names.
    const std::string pad(60, 'n');
    for (int i = 0; i < 9000; ++i) {
        std::string f = flood + "/" + pad + std::to_string(i);
        int fd = open(f.c_str(), O_WRONLY | O_CREAT, 0600);
        ASSERT_GE(fd, 0);
        close(fd);
        unlink(f.c_str());
    }
    ASSERT_TRUE(WaitForLines(m_report, " more events in " + flood, 1, 2 * 10000 + 5000));
    // Every line of the report and its copies: the first is still there.
    std::vector<std::string> all = ReportLines(m_report);
    for (int k = 1; k <= nvmonit::kReportCopies; ++k) {
        std::vector<std::string> copy = ReportLines(m_report + "." + std::to_string(k));
        all.insert(all.end(), copy.begin(), copy.end());
    }
    EXPECT_EQ(std::count(all.begin(), all.end(), "created " + flood + "/first"), 1);
    EXPECT_LE(all.size(), 200u);
    // The monitor goes on: a later change is reported once the window ends.
    m_s.bFileOn = false;
    nvtest::ApplyWithin(m_sup, m_s, 5000);
}

TEST_F(FileMonitorTest, NamesWithTerminalSequencesAreWrittenEscaped) {
    m_sup.Apply(m_s);
    std::string d = m_dir.File("w/dir");
    Append(d + "/\x1b[2J\x1b]0;owned\x07\\evil\n", "x");
    ASSERT_TRUE(WaitForLines(m_report, "created " + d + "/\\x1b[2J\\x1b]0;owned\\x07\\\\evil\\x0a",
                             1, 5000))
        << nvtest::ReadFile(m_report);
    EXPECT_EQ(nvtest::ReadFile(m_report).find('\x1b'), std::string::npos);
}

TEST(MonitorSwitches, EmptyListSwitchesItsMonitorOff) {
    nvtest::TempDir dir;
    nvmonit::MonitorSettings s;
    s.sDataDir = dir.Path();
    s.bFileOn = s.bProcessOn = s.bVolumeOn = s.bBackupOn = s.bCpuOn = s.bMemoryOn = true;
    s.vProcesses = {"sleep 1"};
    nvmonit::MonitorSettings turned = s;
    EXPECT_TRUE(nvmonit::SwitchOffEmptyLists(turned));
    EXPECT_FALSE(turned.bFileOn);
    EXPECT_TRUE(turned.bProcessOn);
    EXPECT_FALSE(turned.bVolumeOn);
    EXPECT_FALSE(turned.bBackupOn);
    EXPECT_TRUE(turned.bCpuOn);
    EXPECT_TRUE(turned.bMemoryOn);
    EXPECT_FALSE(nvmonit::SwitchOffEmptyLists(turned));

    // The supervisor applies the same rule: nothing runs for an empty list.
    s.vProcesses.clear();
    s.bCpuOn = s.bMemoryOn = false;
    nvmonit::MonitorSupervisor sup;
    sup.Apply(s);
    nvmonit::RunningMonitors r = sup.Running();
    EXPECT_FALSE(r.bFile || r.bProcess || r.bVolume || r.bBackup || r.bCpu || r.bMemory);
}

}  // namespace
