// The command catalogue: the payload every update function sends (seen by a
// scripted agent), its refusals, the form encoding, and the page rebuilt
// after full success.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "cmdclient/cmd_client.h"
#include "content/content_view.h"
#include "fake_agent.h"
#include "link/cmd_catalogue.h"
#include "link/payload_kinds.h"
#include "link/ui_interface.h"
#include "shell/screen_frame.h"
#include "state_samples.h"
#include "strings/com_str.h"
#include "wire/wire.h"

namespace {

// Answers checks with the sample state and set commands with `setResult`.
struct Agent {
    int setResult = em_ActSuccAll;
    FakeAgent fake;
    Agent()
        : fake([this](const FakeRequest& req) {
              if (req.cmd == nvwire::kCmdCheck) {
                  cConf_Inf c;
                  cSvrState s;
                  FillSampleState(c, s);
                  return MakeAnswer(req.cmd, em_OK, "", EncodeState(c, s));
              }
              return MakeAnswer(req.cmd, setResult, "detail");
          }) {}
    std::vector<FakeRequest> Sets() {
        std::vector<FakeRequest> out;
        for (const FakeRequest& r : fake.Requests()) {
            if (r.cmd != nvwire::kCmdCheck)
                out.push_back(r);
        }
        return out;
    }
};

class CatalogueTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        setenv("LINES", "24", 1);
        setenv("COLUMNS", "80", 1);
        s_out = fopen("/dev/null", "w");
        s_in = fopen("/dev/null", "r");
        InitComStr();
        s_screen = newterm("xterm-256color", s_out, s_in);
        start_color();
        InitInfoWindow();
        InitPromptWindow();
        InitContentWindow();
        SetName2Idx(pg_Obj);
        SetErrMap(pg_Obj);
    }
    static void TearDownTestSuite() {
        FreeContent(sg_ContentInfo.pstContent);
        memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
        UnInitContent();
        UnInitPromt();
        UnInitInfoWin();
        endwin();
        delscreen(s_screen);
        fclose(s_out);
        fclose(s_in);
    }
    void SetUp() override {
        iLanIdx = LAN_ENGLISH;
        pg_Obj->sSockName = m_agent.fake.SocketPath();
    }
    // Calls an update function with a writable copy of text.
    int Call(UPDATE_FUNC fn, const std::string& text) {
        std::string copy = text;
        return fn(&copy[0], nullptr);
    }
    std::string OnlyPayload(short cmd) {
        auto sets = m_agent.Sets();
        EXPECT_EQ(sets.size(), 1u);
        if (sets.empty())
            return "<none>";
        EXPECT_EQ(sets[0].cmd, cmd);
        return sets[0].payload;
    }
    Agent m_agent;
    static SCREEN* s_screen;
    static FILE* s_out;
    static FILE* s_in;
};

SCREEN* CatalogueTest::s_screen;
FILE* CatalogueTest::s_out;
FILE* CatalogueTest::s_in;

TEST_F(CatalogueTest, KernelNumberCollectsDigitsSkippingBlanks) {
    EXPECT_EQ(Call(ShmMaxUpdateFunc, " 12 34x56"), em_ActSuccAll);
    EXPECT_EQ(OnlyPayload(7), "1234");
}

TEST_F(CatalogueTest, KernelNumberWithoutDigitsIsRefused) {
    EXPECT_EQ(Call(ThreadMaxUpdateFunc, "x123"), -1);
    EXPECT_EQ(Call(ThreadMaxUpdateFunc, "   "), -1);
    EXPECT_EQ(ThreadMaxUpdateFunc(nullptr, nullptr), -1);
    EXPECT_TRUE(m_agent.Sets().empty());
}

TEST_F(CatalogueTest, KernelNumberStopsAtThirtyTwoDigits) {
    EXPECT_EQ(Call(FileMaxUpdateFunc, std::string(40, '7')), em_ActSuccAll);
    EXPECT_EQ(OnlyPayload(11), std::string(32, '7'));
}

TEST_F(CatalogueTest, EmptyThresholdIsSentEmpty) {
    Call(CpuMonitCeilUpdateFunc, "");
    EXPECT_EQ(OnlyPayload(17), "");
}

TEST_F(CatalogueTest, ThresholdWithPercentSignIsRefused) {
    EXPECT_EQ(Call(CpuMonitFloorUpdateFunc, "5%"), -1);
    EXPECT_EQ(Call(MemMonitCeilUpdateFunc, " 5"), -1);
    EXPECT_TRUE(m_agent.Sets().empty());
    Call(CpuMonitFloorUpdateFunc, "15");
    EXPECT_EQ(OnlyPayload(18), "15");
}

TEST_F(CatalogueTest, ToggleSendsOneOrZero) {
    Call(IcmpUpdateFunc, "[Open]");
    Call(TcpSynUpdateFunc, "[Close]");
    Call(AnonEnUpdateFunc, "[Yes]");
    Call(SambaRunFlagUpdateFunc, "[No]");
    auto sets = m_agent.Sets();
    ASSERT_EQ(sets.size(), 4u);
    EXPECT_EQ(sets[0].cmd, 4);
    EXPECT_EQ(sets[0].payload, "1");
    EXPECT_EQ(sets[1].cmd, 5);
    EXPECT_EQ(sets[1].payload, "0");
    EXPECT_EQ(sets[2].cmd, 40);
    EXPECT_EQ(sets[2].payload, "1");
    EXPECT_EQ(sets[3].cmd, 50);
    EXPECT_EQ(sets[3].payload, "0");
}

TEST_F(CatalogueTest, ToggleWithAnUnknownTextSendsAnEmptyPayload) {
    Call(CpuMonitToggleUpdateFunc, "maybe");
    EXPECT_EQ(OnlyPayload(19), "");
    EXPECT_EQ(m_agent.Sets()[0].pkglen, 6u);
}

TEST_F(CatalogueTest, OpenCloseToggleDoesNotTakeYesNo) {
    Call(MemMonitToggleUpdateFunc, "[Yes]");
    EXPECT_EQ(OnlyPayload(21), "");
}

TEST_F(CatalogueTest, TogglesMatchTheCurrentLanguage) {
    iLanIdx = LAN_CHINESE_UTF8;
    Call(IcmpUpdateFunc, pcStrOpen[LAN_CHINESE_UTF8]);
    Call(IcmpUpdateFunc, "[Open]");
    auto sets = m_agent.Sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].payload, "1");
    EXPECT_EQ(sets[1].payload, "");
}

TEST_F(CatalogueTest, FreeTextIsSentAsTyped) {
    Call(AnonRootPathUpdateFunc, "/srv/ftp pub");
    EXPECT_EQ(OnlyPayload(43), "/srv/ftp pub");
}

TEST_F(CatalogueTest, EmptyPathIsSentWithLengthZero) {
    Call(SambaShPathUpdateFunc, "");
    EXPECT_EQ(OnlyPayload(48), "");
}

TEST_F(CatalogueTest, ListTextIsSentAsHandedOver) {
    Call(FileMonitListUpdateFunc, "/etc/passwd\n/etc/shadow\n");
    EXPECT_EQ(OnlyPayload(13), "/etc/passwd\n/etc/shadow\n");
}

TEST_F(CatalogueTest, ClearSendsWhenYesOccursAnywhere) {
    EXPECT_EQ(Call(ClearDVMonitUpdateFunc, "[Yes]"), em_ActSuccAll);
    EXPECT_EQ(Call(InputClearUpdateFunc, "*[Yes]*"), em_ActSuccAll);
    auto sets = m_agent.Sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].cmd, 25);
    EXPECT_EQ(sets[0].payload, "");
    EXPECT_EQ(sets[1].cmd, 35);
}

TEST_F(CatalogueTest, ClearAnsweredNoSendsNothing) {
    EXPECT_EQ(Call(ClearBakMonitUpdateFunc, "[No]"), NEED_NOT_SHOW_INFO);
    EXPECT_EQ(Call(OutputClearUpdateFunc, "*[No]*"), NEED_NOT_SHOW_INFO);
    EXPECT_TRUE(m_agent.Sets().empty());
}

TEST_F(CatalogueTest, RestoreDefaultNeedsExactlyYes) {
    EXPECT_EQ(Call(FtpDefaultUpdateFunc, "[No]"), em_OK);
    EXPECT_EQ(Call(SambaDefaultUpdateFunc, "x[Yes]"), em_OK);
    EXPECT_TRUE(m_agent.Sets().empty());
    EXPECT_EQ(Call(FtpDefaultUpdateFunc, "[Yes]"), em_ActSuccAll);
    EXPECT_EQ(OnlyPayload(47), "");
}

TEST_F(CatalogueTest, RefusedCommandKeepsThePage) {
    m_agent.setResult = em_ActPostValueNotValid;
    FreeContent(sg_ContentInfo.pstContent);
    memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
    EXPECT_EQ(Call(ThreadMaxUpdateFunc, "100"), em_ActPostValueNotValid);
    EXPECT_EQ(sg_ContentInfo.pstContent, nullptr);
    EXPECT_EQ(m_agent.fake.Requests().size(), 1u);  // no check: nothing rebuilt
}

TEST_F(CatalogueTest, FullSuccessRebuildsThePageFromAFreshCheck) {
    EXPECT_EQ(Call(ThreadMaxUpdateFunc, "70000"), em_ActSuccAll);
    auto reqs = m_agent.fake.Requests();
    ASSERT_EQ(reqs.size(), 2u);
    EXPECT_EQ(reqs[0].cmd, 10);
    EXPECT_EQ(reqs[1].cmd, nvwire::kCmdCheck);
    ASSERT_NE(sg_ContentInfo.pstContent, nullptr);
    EXPECT_EQ(sg_ContentInfo.pstContent->iItemNum, 5);  // the resource page
    EXPECT_EQ(sg_ContentInfo.iFocusItem, 0);
    EXPECT_EQ(sg_ContentInfo.pstContent->pstItem[3].pstSection[1].strSecName, "     63477");
}

// ---- the form encoding ----

class FormEncoding : public ::testing::Test {
protected:
    void SetUp() override {
        InitComStr();
        iLanIdx = LAN_ENGLISH;
    }
};

TEST_F(FormEncoding, ChoiceWordsAndPlaceholdersTravelAsCodes) {
    EXPECT_EQ(EncodeForm("*[Tcp]*10.0.0.1*####*"), "1 10.0.0.1 0");
    EXPECT_EQ(EncodeForm("*[Highest]*[Udp]*###.###.###.###*####*###.###.###.###*22*[Accept]*"),
              "1 2 - 0 - 22 1");
    EXPECT_EQ(EncodeForm("*[Lowest]*[Drop]*[Reject]*[Open]*[Close]*"), "2 2 3 1 0");
}

TEST_F(FormEncoding, EveryPlaceholderFieldSendsADash) {
    EXPECT_EQ(EncodeForm("*    *    *    *    *"), "- - - -");
    EXPECT_EQ(EncodeForm("*eth0*10.0.0.5*255.0.0.0*    *    *    *"),
              "eth0 10.0.0.5 255.0.0.0 - - -");
}

TEST_F(FormEncoding, EmptyMiddleFieldGivesTwoBlanks) {
    EXPECT_EQ(EncodeForm("*a**b*"), "a  b");
    EXPECT_EQ(EncodeForm("**a*"), " a");  // only one blank trimmed at each end
}

TEST_F(FormEncoding, UnknownWordsAndBlanksStayAsTheyAre) {
    EXPECT_EQ(EncodeForm("*   *"), "   ");  // three blanks are no placeholder
    EXPECT_EQ(EncodeForm("*2024*2*9*"), "2024 2 9");
}

TEST_F(FormEncoding, WordsMatchInTheCurrentLanguage) {
    iLanIdx = LAN_CHINESE_UTF8;
    std::string form = std::string("*") + pcStrTcp[LAN_CHINESE_UTF8] + "*[Tcp]*";
    EXPECT_EQ(EncodeForm(form.c_str()), "1 [Tcp]");
    iLanIdx = LAN_ENGLISH;
}

TEST_F(FormEncoding, OutputIsBoundedTo256Bytes) {
    iLanIdx = LAN_ENGLISH;
    std::string form;
    for (int i = 0; i < 100; ++i)
        form += "*abcdef";
    form += "*";
    EXPECT_LE(EncodeForm(form.c_str()).size(), 256u);
    std::string huge = "*" + std::string(1000, 'x') + "*";
    EXPECT_LE(EncodeForm(huge.c_str()).size(), 256u);
}

TEST_F(CatalogueTest, FormCommandsSendTheEncodedForm) {
    Call(ModifyDateUpdateFunc, "*2024*2*9*");
    Call(ModifyHostNameUpdateFunc, "*    *");
    Call(InputAddUpdateFunc, "*[Highest]*[Tcp]*###.###.###.###*####*###.###.###.###*22*[Accept]*");
    auto sets = m_agent.Sets();
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0].cmd, 58);
    EXPECT_EQ(sets[0].payload, "2024 2 9");
    EXPECT_EQ(sets[1].cmd, 57);
    EXPECT_EQ(sets[1].payload, "-");
    EXPECT_EQ(sets[2].cmd, 33);
    EXPECT_EQ(sets[2].payload, "1 1 - 0 - 22 1");
}

TEST_F(CatalogueTest, NewLevelRefusesBadArguments) {
    int cmd = 3;
    char form[] = "*a*";
    EXPECT_EQ(NewLevelUpdateFunc(form, &cmd), -1);
    cmd = 64;
    EXPECT_EQ(NewLevelUpdateFunc(form, &cmd), -1);
    EXPECT_EQ(NewLevelUpdateFunc(nullptr, &cmd), -1);
    EXPECT_EQ(NewLevelUpdateFunc(form, nullptr), -1);
    EXPECT_TRUE(m_agent.Sets().empty());
    cmd = 24;
    EXPECT_EQ(NewLevelUpdateFunc(form, &cmd), em_ActSuccAll);
    EXPECT_EQ(OnlyPayload(24), "a");
}

TEST(FormField, StoresTheTextInTheSection) {
    CONTENT_SECTION sec;
    char text[] = "10.0.0.9";
    EXPECT_EQ(IPTNewLevelItemUpdateFunc(text, &sec), NEED_NOT_SHOW_INFO);
    EXPECT_EQ(sec.strSecName, "10.0.0.9");
    EXPECT_EQ(IPTNewLevelItemUpdateFunc(nullptr, &sec), -1);
    EXPECT_EQ(IPTNewLevelItemUpdateFunc(text, nullptr), -1);
}

}  // namespace
