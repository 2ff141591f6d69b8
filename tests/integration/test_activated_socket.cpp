// The real norvaned handed its listening socket as systemd's socket
// activation does (descriptor 3, LISTEN_FDS and LISTEN_PID): it serves that
// socket and leaves its file to the service manager; it refuses a socket
// bound elsewhere; and it binds its own when the variables are for another
// process.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "agent_process.h"
#include "child_process.h"
#include "raw_client.h"
#include "temp_dir.h"

using ::testing::HasSubstr;

namespace {

int ListenAt(const std::string& path) {
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, path.c_str(), sizeof addr.sun_path - 1);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
        listen(fd, 16) != 0)
        return -1;
    return fd;
}

bool IsSocketFile(const std::string& path) {
    struct stat st;
    return lstat(path.c_str(), &st) == 0 && S_ISSOCK(st.st_mode);
}

class ActivatedSocketTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(nvtest::WriteFile(m_dir.File("state.json"),
                                      nvtest::ReadFile(NV_SOURCE_DIR "/data/demo-state.json")));
    }
    void TearDown() override {
        if (m_pid > 0)
            nvtest::KillAndReap(m_pid);
        if (m_listenFd >= 0)
            close(m_listenFd);
    }
    // Starts norvaned in the foreground on agentSocket with m_listenFd as its
    // descriptor 3 and LISTEN_PID naming itself, or pid 1 when forOther.
    void StartAgent(const std::string& agentSocket, bool forOther) {
        std::vector<std::string> args = {nvtest::AgentProcess::BinaryPath(),
                                         "--foreground",
                                         "--socket",
                                         agentSocket,
                                         "--state",
                                         m_dir.File("state.json")};
        std::vector<char*> argv;
        for (std::string& a : args)
            argv.push_back(&a[0]);
        argv.push_back(nullptr);
        std::string errPath = m_dir.File("stderr");
        m_pid = fork();
        ASSERT_GE(m_pid, 0);
        if (m_pid == 0) {
            int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            dup2(err, STDERR_FILENO);
            dup2(m_listenFd, 3);
            char pid[32];
            snprintf(pid, sizeof pid, "%d", forOther ? 1 : static_cast<int>(getpid()));
            setenv("LISTEN_PID", pid, 1);
            setenv("LISTEN_FDS", "1", 1);
            execv(argv[0], argv.data());
            _exit(127);
        }
    }
    bool WaitAnswer(const std::string& path) {
        for (int i = 0; i < 200; ++i) {
            cConf_Inf conf;
            cSvrState svr;
            std::string err;
            if (nvtest::CheckState(path, conf, svr, err))
                return true;
            usleep(25000);
        }
        return false;
    }
    int StopAgent() {
        kill(m_pid, SIGTERM);
        int status = 0;
        bool ended = nvtest::WaitExit(m_pid, 10000, status);
        m_pid = -1;
        return ended ? nvtest::ExitCodeOf(status) : -1;
    }
    nvtest::TempDir m_dir;
    int m_listenFd = -1;
    pid_t m_pid = -1;
};

TEST_F(ActivatedSocketTest, ServesThePassedSocketAndLeavesItsFile) {
    std::string path = m_dir.File("nvsock");
    m_listenFd = ListenAt(path);
    ASSERT_GE(m_listenFd, 0);
    StartAgent(path, false);
    ASSERT_TRUE(WaitAnswer(path)) << nvtest::ReadFile(m_dir.File("stderr"));
    EXPECT_EQ(StopAgent(), 0);
    // The file belongs to the socket unit: still there, and still the same
    // listening socket (connections queue on it for the next activation).
    EXPECT_TRUE(IsSocketFile(path));
    int fd = nvtest::ConnectUnix(path);
    EXPECT_GE(fd, 0);
    close(fd);
}

TEST_F(ActivatedSocketTest, RefusesASocketBoundElsewhere) {
    m_listenFd = ListenAt(m_dir.File("other"));
    ASSERT_GE(m_listenFd, 0);
    StartAgent(m_dir.File("nvsock"), false);
    int status = 0;
    ASSERT_TRUE(nvtest::WaitExit(m_pid, 10000, status));
    m_pid = -1;
    EXPECT_EQ(nvtest::ExitCodeOf(status), 1);
    EXPECT_THAT(nvtest::ReadFile(m_dir.File("stderr")),
                HasSubstr("not one listening stream socket at " + m_dir.File("nvsock")));
    EXPECT_FALSE(IsSocketFile(m_dir.File("nvsock")));
}

TEST_F(ActivatedSocketTest, BindsItsOwnWhenTheVariablesAreForAnotherProcess) {
    m_listenFd = ListenAt(m_dir.File("other"));
    ASSERT_GE(m_listenFd, 0);
    std::string path = m_dir.File("nvsock");
    StartAgent(path, true);
    ASSERT_TRUE(WaitAnswer(path)) << nvtest::ReadFile(m_dir.File("stderr"));
    EXPECT_EQ(StopAgent(), 0);
    EXPECT_FALSE(IsSocketFile(path));
}

}  // namespace
