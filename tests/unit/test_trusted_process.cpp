// Recognising a daemon by its root-owned binary, never by its name: a
// process of a binary that others may write, or that runs as another user,
// is not the daemon.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "agent/live/trusted_process.h"
#include "child_process.h"
#include "temp_dir.h"

namespace {

// A copy of sleep at path, running until the test ends.
class Sleeper {
public:
    explicit Sleeper(const std::string& path) {
        std::string from = access("/usr/bin/sleep", X_OK) == 0 ? "/usr/bin/sleep" : "/bin/sleep";
        if (nvtest::WriteFile(path, nvtest::ReadFile(from)) && chmod(path.c_str(), 0755) == 0)
            m_pid = nvtest::SpawnProcess({path, "60"}, "", "");
        // Until the exec has happened.
        for (int i = 0; i < 200 && m_pid > 0 && !Exec(path); ++i)
            usleep(10000);
    }
    ~Sleeper() {
        if (m_pid > 0)
            nvtest::KillAndReap(m_pid);
    }
    pid_t Pid() const { return m_pid; }

private:
    bool Exec(const std::string& path) const {
        char buf[4096];
        ssize_t n = readlink(("/proc/" + std::to_string(m_pid) + "/exe").c_str(), buf, sizeof buf);
        return n > 0 && std::string(buf, static_cast<size_t>(n)) == path;
    }
    pid_t m_pid = -1;
};

TEST(TrustedProcess, OnlyARootProcessOfAnUnwritableBinaryCounts) {
    nvtest::TempDir dir;
    std::string bin = dir.File("vsftpd");
    Sleeper s(bin);
    ASSERT_GT(s.Pid(), 0);
    std::string procDir = "/proc/" + std::to_string(s.Pid());
    bool root = geteuid() == 0;
    // Ours: a root process when the tests run as root, else not.
    EXPECT_EQ(nvagent::IsRootProcessOf(procDir, bin), root);
    EXPECT_EQ(nvagent::RootProcessRuns(bin), root);
    // A binary another user could have replaced is never trusted.
    ASSERT_EQ(chmod(bin.c_str(), 0777), 0);
    EXPECT_FALSE(nvagent::IsRootProcessOf(procDir, bin));
    EXPECT_FALSE(nvagent::RootProcessRuns(bin));
    ASSERT_EQ(chmod(bin.c_str(), 0755), 0);
    // Another binary of the same name is not this one.
    nvtest::TempDir other;
    std::string same = other.File("vsftpd");
    nvtest::WriteFile(same, nvtest::ReadFile(bin));
    chmod(same.c_str(), 0755);
    EXPECT_FALSE(nvagent::IsRootProcessOf(procDir, same));
    EXPECT_FALSE(nvagent::RootProcessRuns(same));
    EXPECT_FALSE(nvagent::RootProcessRuns(dir.File("missing")));
}

}  // namespace
