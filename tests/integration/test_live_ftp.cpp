// The live agent's FTP commands inside the namespace sandbox: the options
// edited in place in the private /etc's configuration, the server started,
// stopped and restarted through the service command, the package's file
// restored with logins off. What the agent reports is checked against what
// the real server does: an anonymous login over loopback.
#include <arpa/inet.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstring>

#include "acl_xattr.h"
#include "impostor_process.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

const char* const kConf = "/etc/vsftpd.conf";

// The reply code of the server's last line of an answer ("230 ..."), 0 when
// none came.
int ReadReply(int fd) {
    std::string text;
    char buf[512];
    for (;;) {
        // A final line is "NNN text"; "NNN-text" lines continue the answer.
        size_t end = text.rfind('\n', text.size() >= 2 ? text.size() - 2 : 0);
        size_t start = end == std::string::npos ? 0 : end + 1;
        if (!text.empty() && text.back() == '\n' && text.size() - start >= 4 &&
            text[start + 3] == ' ')
            return atoi(text.c_str() + start);
        ssize_t n = recv(fd, buf, sizeof buf, 0);
        if (n <= 0)
            return 0;
        text.append(buf, static_cast<size_t>(n));
    }
}

// Logs in to the server on 127.0.0.1:21 as an anonymous user: the reply
// code to the password (230 in, 530 refused), the greeting's when it is not
// 220 (500: the server lets nobody in), 0 when no server answered.
int AnonymousLogin() {
    int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    timeval tv{5, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(21);
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int code = 0;
    if (connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
        (code = ReadReply(fd)) == 220) {
        const char user[] = "USER anonymous\r\n";
        const char pass[] = "PASS guest@example.org\r\n";
        if (send(fd, user, strlen(user), MSG_NOSIGNAL) > 0) {
            code = ReadReply(fd);
            if (code == 331 && send(fd, pass, strlen(pass), MSG_NOSIGNAL) > 0)
                code = ReadReply(fd);
        }
    }
    close(fd);
    return code;
}

class LiveFtp : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        struct stat st {};
        if (stat("/usr/sbin/vsftpd", &st) != 0)
            GTEST_SKIP() << "the FTP server package is not installed";
        original = nvtest::ReadFile(kConf);
        ASSERT_FALSE(original.empty());
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    // The next test finds the server stopped and the package's file as it
    // was (a new file: the owner, mode and attributes one test sets go).
    void TearDown() override {
        // A clean stop (and, in a sanitizer build, no report from the agent).
        if (agent.Process().Running()) {
            EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        }
        if (Runs())
            Tool({"service", "vsftpd", "stop"});
        if (!original.empty()) {
            unlink(kConf);
            nvtest::WriteFile(kConf, original);
            chmod(kConf, 0644);
        }
    }
    int Send(short cmd, const std::string& payload) { return agent.Send(cmd, payload, &detail); }
    // The real server, a root process (not a user's program of that name).
    static bool Runs() {
        int code = -1;
        Tool({"pgrep", "-x", "-u", "0", "vsftpd"}, &code);
        return code == 0;
    }
    static int ListeningOn21() { return Tool({"ss", "-ltnH", "sport = :21"}).empty() ? 0 : 1; }
    static void WaitListening() {
        for (int i = 0; i < 100 && !ListeningOn21(); ++i)
            usleep(20000);
    }
    cConf_Inf Check() {
        cConf_Inf conf;
        cSvrState svr;
        std::string err;
        EXPECT_TRUE(agent.Check(conf, svr, err)) << err;
        return conf;
    }
    nvtest::LiveAgent agent;
    std::string detail;
    std::string original;
};

TEST_F(LiveFtp, OptionsEditedInPlaceAndTheServerStartedAndStopped) {
    ASSERT_NE(original.find("anonymous_enable=NO\n"), std::string::npos);
    EXPECT_EQ(Send(40, "1"), em_ActSuccAll) << detail;
    std::string now = nvtest::ReadFile(kConf);
    EXPECT_NE(now.find("anonymous_enable=YES\n"), std::string::npos);
    EXPECT_EQ(now.find("anonymous_enable=NO"), std::string::npos);
    // Comments and the other keys stay where they were.
    EXPECT_EQ(now.size(), original.size() + 1);
    EXPECT_EQ(Send(40, "1"), em_ActNeedNoSet);
    EXPECT_EQ(Send(43, "/srv/ftp"), em_ActSuccAll) << detail;
    EXPECT_NE(nvtest::ReadFile(kConf).find("\nanon_root=/srv/ftp\n"), std::string::npos);
    EXPECT_EQ(Send(43, "srv"), em_ActPostValueNotValid);

    EXPECT_EQ(Send(46, "1"), em_ActSuccAll) << detail;
    EXPECT_TRUE(Runs());
    for (int i = 0; i < 50 && !ListeningOn21(); ++i)
        usleep(20000);
    EXPECT_TRUE(ListeningOn21());
    EXPECT_EQ(Send(46, "1"), em_ActNeedNoSet);
    cConf_Inf conf;
    cSvrState svr;
    std::string err;
    ASSERT_TRUE(agent.Check(conf, svr, err)) << err;
    EXPECT_EQ(conf.chVsftpdRunFlag, '1');
    EXPECT_EQ(conf.chVsftpdAnonEnable, '1');
    EXPECT_EQ(conf.sVsftpdAnonRoot, "/srv/ftp");
    // A change while it runs restarts it.
    EXPECT_EQ(Send(45, "1"), em_ActSuccAll) << detail;
    EXPECT_TRUE(Runs());
    EXPECT_EQ(Send(46, "0"), em_ActSuccAll) << detail;
    for (int i = 0; i < 50 && Runs(); ++i)
        usleep(20000);
    EXPECT_FALSE(Runs());

    // The package's file comes back with every login option off: its own
    // local_enable=YES is turned off, and the options it leaves to the
    // server's built-in defaults are written out.
    EXPECT_EQ(Send(47, ""), em_ActSuccAll) << detail;
    std::string restored = original;
    size_t local = restored.find("\nlocal_enable=YES\n");
    ASSERT_NE(local, std::string::npos);
    restored.replace(local, 18, "\nlocal_enable=NO\n");
    restored += "anon_upload_enable=NO\nanon_mkdir_write_enable=NO\nwrite_enable=NO\n";
    EXPECT_EQ(nvtest::ReadFile(kConf), restored);
    EXPECT_EQ(Send(47, ""), em_ActNeedNoSet);
}

TEST_F(LiveFtp, TheLastDirectiveIsTheOneChangedAsTheServerReadsIt) {
    // The server takes the last of two contradicting lines: anonymous users
    // get in.
    ASSERT_TRUE(nvtest::WriteFile(kConf, original + "anonymous_enable=YES\n"));
    ASSERT_EQ(Send(46, "1"), em_ActSuccAll) << detail;
    WaitListening();
    EXPECT_EQ(AnonymousLogin(), 230);
    EXPECT_EQ(Check().chVsftpdAnonEnable, '1');

    EXPECT_EQ(Send(40, "0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Check().chVsftpdAnonEnable, '0');
    EXPECT_EQ(Send(40, "0"), em_ActNeedNoSet) << detail;
    WaitListening();
    EXPECT_EQ(AnonymousLogin(), 530);
    // Said once, where the server read it.
    std::string now = nvtest::ReadFile(kConf);
    EXPECT_EQ(now.find("anonymous_enable=YES"), std::string::npos) << now;
    EXPECT_EQ(now.find("anonymous_enable=NO"), now.rfind("anonymous_enable=NO")) << now;

    // Blanks before an option count for the server, and so for the agent.
    ASSERT_TRUE(nvtest::WriteFile(kConf, nvtest::ReadFile(kConf) + "  anonymous_enable=YES\n"));
    EXPECT_EQ(Check().chVsftpdAnonEnable, '1');
    EXPECT_EQ(Send(40, "0"), em_ActSuccAll) << detail;
    WaitListening();
    EXPECT_EQ(AnonymousLogin(), 530);
    EXPECT_EQ(Send(46, "0"), em_ActSuccAll) << detail;
}

TEST_F(LiveFtp, DefaultsTurnAnonymousLoginOffWhateverThePackagesFileSays) {
    // A package's file that lets anonymous users in: restoring it must not.
    std::string package = original;
    package.replace(package.find("anonymous_enable=NO"), 19, "anonymous_enable=YES");
    ASSERT_TRUE(nvtest::WriteFile(kConf, package));
    EXPECT_EQ(Send(43, "/srv/ftp"), em_ActSuccAll) << detail;
    EXPECT_EQ(Send(47, ""), em_ActSuccAll) << detail;
    cConf_Inf conf = Check();
    EXPECT_EQ(conf.chVsftpdAnonEnable, '0');
    EXPECT_EQ(conf.chVsftpdAnonUpload, '0');
    EXPECT_EQ(conf.chVsftpdAnonMkdir, '0');
    EXPECT_EQ(conf.chVsftpdLocalEnable, '0');
    EXPECT_EQ(conf.chVsftpdWrite, '0');
    EXPECT_EQ(conf.sVsftpdAnonRoot, "");
    EXPECT_EQ(Send(47, ""), em_ActNeedNoSet);
    // Local logins are off too: the server lets nobody in.
    ASSERT_EQ(Send(46, "1"), em_ActSuccAll) << detail;
    WaitListening();
    int login = AnonymousLogin();
    EXPECT_TRUE(login == 530 || login == 500) << login;
    EXPECT_EQ(Send(46, "0"), em_ActSuccAll) << detail;
}

TEST_F(LiveFtp, AUsersProgramNamedLikeTheServerIsNotTheServer) {
    nvtest::ImpostorProcess impostor("vsftpd");
    ASSERT_TRUE(impostor.Running());
    EXPECT_EQ(Check().chVsftpdRunFlag, '0');
    EXPECT_EQ(Send(46, "1"), em_ActSuccAll) << detail;
    EXPECT_TRUE(Runs());
    EXPECT_EQ(Check().chVsftpdRunFlag, '1');
    EXPECT_EQ(Send(46, "1"), em_ActNeedNoSet);
    EXPECT_EQ(Send(46, "0"), em_ActSuccAll) << detail;
    for (int i = 0; i < 50 && Runs(); ++i)
        usleep(20000);
    EXPECT_FALSE(Runs());
    EXPECT_TRUE(impostor.Running());
    EXPECT_EQ(Check().chVsftpdRunFlag, '0');
    EXPECT_EQ(Send(46, "0"), em_ActNeedNoSet);
}

std::string Xattr(const char* path, const char* name) {
    char buf[256];
    ssize_t n = getxattr(path, name, buf, sizeof buf);
    return n < 0 ? std::string() : std::string(buf, static_cast<size_t>(n));
}

TEST_F(LiveFtp, ARewrittenFileKeepsItsOwnerModeAclAndAttributes) {
    // A configuration only root and the ftp group may read, one more user
    // through an ACL, and an attribute of the administrator's.
    struct stat before {};
    const group* ftp = getgrnam("ftp");
    ASSERT_NE(ftp, nullptr);
    gid_t ftpGid = ftp->gr_gid;
    ASSERT_EQ(chown(kConf, 0, ftpGid), 0);
    ASSERT_EQ(chmod(kConf, 0640), 0);
    std::string acl = nvtest::AclGivingReadTo(65534);
    ASSERT_EQ(setxattr(kConf, "system.posix_acl_access", acl.data(), acl.size(), 0), 0)
        << strerror(errno);
    ASSERT_EQ(setxattr(kConf, "user.origin", "site", 4, 0), 0) << strerror(errno);
    ASSERT_EQ(stat(kConf, &before), 0);
    ino_t oldInode = before.st_ino;

    EXPECT_EQ(Send(45, "1"), em_ActSuccAll) << detail;
    struct stat after {};
    ASSERT_EQ(stat(kConf, &after), 0);
    EXPECT_NE(after.st_ino, oldInode);  // replaced, not written in place
    EXPECT_EQ(after.st_uid, 0u);
    EXPECT_EQ(after.st_gid, ftpGid);
    EXPECT_EQ(after.st_mode & 07777, before.st_mode & 07777);
    EXPECT_EQ(Xattr(kConf, "system.posix_acl_access"), acl);
    EXPECT_EQ(Xattr(kConf, "user.origin"), "site");
    EXPECT_EQ(Send(45, "0"), em_ActSuccAll) << detail;
}

}  // namespace
