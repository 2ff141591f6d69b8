// The live agent's FTP commands inside the namespace sandbox: the options
// edited in place in the private /etc's configuration, the server started,
// stopped and restarted through the service command, the package's file
// restored.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

const char* const kConf = "/etc/vsftpd.conf";

class LiveFtp : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        struct stat st {};
        if (stat("/usr/sbin/vsftpd", &st) != 0)
            GTEST_SKIP() << "the FTP server package is not installed";
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    int Send(short cmd, const std::string& payload) { return agent.Send(cmd, payload, &detail); }
    static bool Runs() {
        int code = -1;
        Tool({"pgrep", "-x", "vsftpd"}, &code);
        return code == 0;
    }
    static int ListeningOn21() { return Tool({"ss", "-ltnH", "sport = :21"}).empty() ? 0 : 1; }
    nvtest::LiveAgent agent;
    std::string detail;
};

TEST_F(LiveFtp, OptionsEditedInPlaceAndTheServerStartedAndStopped) {
    std::string original = nvtest::ReadFile(kConf);
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

    EXPECT_EQ(Send(47, ""), em_ActSuccAll) << detail;
    EXPECT_EQ(nvtest::ReadFile(kConf), original);
    EXPECT_EQ(Send(47, ""), em_ActNeedNoSet);
}

}  // namespace
