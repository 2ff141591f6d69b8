// The live agent's Samba commands inside the namespace sandbox: the
// agent's share section written, checked by testparm, reloaded into a
// running Samba; Samba started and stopped; the package's file restored.
// The share is what Samba itself reads (testparm), never what the agent
// meant to write.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "impostor_process.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "temp_dir.h"

using nvtest::Tool;

namespace {

const char* const kConf = "/etc/samba/smb.conf";

class LiveSamba : public ::testing::Test {
protected:
    void SetUp() override {
        if (!nvtest::InSandbox())
            GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
        struct stat st {};
        if (stat("/usr/sbin/smbd", &st) != 0)
            GTEST_SKIP() << "the Samba package is not installed";
        original = nvtest::ReadFile(kConf);
        ASSERT_FALSE(original.empty());
        std::string err;
        ASSERT_TRUE(agent.Start(&err)) << err;
    }
    // The next test finds Samba stopped and the package's file.
    void TearDown() override {
        // A clean stop (and, in a sanitizer build, no report from the agent).
        if (agent.Process().Running()) {
            EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
        }
        if (Runs())
            Tool({"service", "smbd", "stop"});
        if (!original.empty())
            nvtest::WriteFile(kConf, original);
    }
    int Send(short cmd, const std::string& payload) { return agent.Send(cmd, payload, &detail); }
    // The real Samba, a root process (not a user's program of that name).
    static bool Runs() {
        int code = -1;
        Tool({"pgrep", "-x", "-u", "0", "smbd"}, &code);
        return code == 0;
    }
    cConf_Inf Check() {
        cConf_Inf conf;
        cSvrState svr;
        std::string err;
        EXPECT_TRUE(agent.Check(conf, svr, err)) << err;
        return conf;
    }
    // The share as Samba's own checker reads the configuration.
    static std::string Share() {
        std::string all = Tool({"testparm", "-s", "--section-name=norvane"});
        return all;
    }
    nvtest::LiveAgent agent;
    std::string detail;
    std::string original;
};

TEST_F(LiveSamba, ShareWrittenCheckedAndServed) {
    Tool({"mkdir", "-p", "/srv/nvshare"});
    EXPECT_EQ(Send(48, "/srv/nvshare"), em_ActSuccAll) << detail;
    EXPECT_NE(Share().find("path = /srv/nvshare"), std::string::npos) << Share();
    EXPECT_EQ(Send(48, "/srv/nvshare"), em_ActNeedNoSet);
    EXPECT_EQ(Send(49, "1"), em_ActSuccAll) << detail;
    EXPECT_NE(Share().find("read only = No"), std::string::npos) << Share();
    EXPECT_EQ(Send(49, "1"), em_ActNeedNoSet);
    // The rest of the file is as it was.
    std::string now = nvtest::ReadFile(kConf);
    EXPECT_EQ(now.compare(0, original.size(), original), 0);

    EXPECT_EQ(Send(50, "1"), em_ActSuccAll) << detail;
    for (int i = 0; i < 100 && !Runs(); ++i)
        usleep(20000);
    EXPECT_TRUE(Runs());
    cConf_Inf conf;
    cSvrState svr;
    std::string err;
    ASSERT_TRUE(agent.Check(conf, svr, err)) << err;
    EXPECT_EQ(conf.sSambaSharePath, "/srv/nvshare");
    EXPECT_EQ(conf.chSambaShareWrite, '1');
    EXPECT_EQ(conf.chSambaRunFlag, '1');
    EXPECT_EQ(Send(49, "0"), em_ActSuccAll) << detail;
    EXPECT_EQ(Send(50, "0"), em_ActSuccAll) << detail;
    for (int i = 0; i < 100 && Runs(); ++i)
        usleep(20000);
    EXPECT_FALSE(Runs());

    EXPECT_EQ(Send(51, ""), em_ActSuccAll) << detail;
    EXPECT_EQ(nvtest::ReadFile(kConf), original);
    EXPECT_EQ(Send(51, ""), em_ActNeedNoSet);
}

TEST_F(LiveSamba, AConfigurationTheCheckerRefusesIsNeverWritten) {
    std::string before = nvtest::ReadFile(kConf);
    ASSERT_TRUE(nvtest::WriteFile(kConf, before + "\n[broken\n"));
    std::string broken = nvtest::ReadFile(kConf);
    int code = 0;
    Tool({"testparm", "-s", kConf}, &code);
    if (code == 0) {
        ASSERT_TRUE(nvtest::WriteFile(kConf, before));
        GTEST_SKIP() << "testparm accepts the broken section here";
    }
    EXPECT_EQ(Send(48, "/srv/other"), em_ActFail);
    EXPECT_NE(detail.find("testparm"), std::string::npos) << detail;
    EXPECT_EQ(nvtest::ReadFile(kConf), broken);
    ASSERT_TRUE(nvtest::WriteFile(kConf, before));
}

TEST_F(LiveSamba, APathEndingInABackslashNeverSwallowsTheNextLine) {
    Tool({"mkdir", "-p", "/srv/nvshare"});
    EXPECT_EQ(Send(49, "1"), em_ActSuccAll) << detail;
    std::string before = nvtest::ReadFile(kConf);
    EXPECT_EQ(Send(48, "/srv/nvshare\\"), em_ActPostValueNotValid);
    EXPECT_NE(detail.find("backslash"), std::string::npos) << detail;
    EXPECT_EQ(Send(48, "/srv/nvshare "), em_ActPostValueNotValid);
    EXPECT_EQ(nvtest::ReadFile(kConf), before);
    EXPECT_NE(Share().find("read only = No"), std::string::npos) << Share();
}

TEST_F(LiveSamba, AShareSambaWouldReadOtherwiseThanAskedIsNotWritten) {
    // The administrator's comment ends in a backslash: Samba joins the line
    // the agent would add below it to the comment, and the share stays
    // read-only.
    ASSERT_TRUE(nvtest::WriteFile(
        kConf,
        original + "\n[norvane]\n   path = /srv/nvshare\n   comment = the team's files \\\n"));
    std::string before = nvtest::ReadFile(kConf);
    EXPECT_EQ(Check().chSambaShareWrite, '0');
    EXPECT_EQ(Send(49, "1"), em_ActFail);
    EXPECT_NE(detail.find("read-only"), std::string::npos) << detail;
    EXPECT_EQ(nvtest::ReadFile(kConf), before);
    EXPECT_EQ(Share().find("read only = No"), std::string::npos) << Share();
    EXPECT_EQ(Check().chSambaShareWrite, '0');
}

TEST_F(LiveSamba, AUsersProgramNamedLikeSambaIsNotSamba) {
    nvtest::ImpostorProcess impostor("smbd");
    ASSERT_TRUE(impostor.Running());
    EXPECT_EQ(Check().chSambaRunFlag, '0');
    EXPECT_EQ(Send(50, "1"), em_ActSuccAll) << detail;
    for (int i = 0; i < 100 && !Runs(); ++i)
        usleep(20000);
    EXPECT_TRUE(Runs());
    EXPECT_EQ(Check().chSambaRunFlag, '1');
    EXPECT_EQ(Send(50, "0"), em_ActSuccAll) << detail;
    for (int i = 0; i < 100 && Runs(); ++i)
        usleep(20000);
    EXPECT_FALSE(Runs());
    EXPECT_TRUE(impostor.Running());
    EXPECT_EQ(Check().chSambaRunFlag, '0');
    EXPECT_EQ(Send(50, "0"), em_ActNeedNoSet);
}

}  // namespace
