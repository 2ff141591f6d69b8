// The pages with function-key forms against a scripted agent: their rows,
// their forms as declared, the payload every form sends through the
// shortcut-key bar, the clear forms' substring rule, the switch and policy
// initial values, the rebuild after success, and the refresh thread's rule.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "cmdclient/cmd_client.h"
#include "content/content_view.h"
#include "ctrlbar/control_bar.h"
#include "fake_agent.h"
#include "link/cmd_catalogue.h"
#include "link/ui_interface.h"
#include "pages/menu_struct.h"
#include "shell/screen_frame.h"
#include "shell/start_up.h"
#include "state_samples.h"
#include "strings/com_str.h"
#include "strings/prompt_id.h"
#include "wire/wire.h"

namespace {

std::function<void(cConf_Inf&, cSvrState&)> g_change;
int g_setResult = em_ActSuccAll;

struct Agent {
    FakeAgent fake;
    Agent()
        : fake([](const FakeRequest& req) {
              if (req.cmd == nvwire::kCmdCheck) {
                  cConf_Inf c;
                  cSvrState s;
                  FillSampleState(c, s);
                  if (g_change)
                      g_change(c, s);
                  return MakeAnswer(req.cmd, em_OK, "", EncodeState(c, s));
              }
              return MakeAnswer(req.cmd, g_setResult, "");
          }) {}
};

class FormPagesTest : public ::testing::Test {
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
        g_change = nullptr;
        g_setResult = em_ActSuccAll;
        pg_Obj->sSockName = m_agent.fake.SocketPath();
        memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
    }
    void TearDown() override {
        if (gs_stSckeyCtrl.pSckeyWin)
            delwin(gs_stSckeyCtrl.pSckeyWin);
        memset(&gs_stSckeyCtrl, 0, sizeof(gs_stSckeyCtrl));
        FreeContent(sg_ContentInfo.pstContent);
        memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
    }
    std::vector<FakeRequest> Sets() {
        std::vector<FakeRequest> out;
        for (const FakeRequest& r : m_agent.fake.Requests()) {
            if (r.cmd != nvwire::kCmdCheck)
                out.push_back(r);
        }
        return out;
    }
    static CONTENT_DATA* Page() { return sg_ContentInfo.pstContent; }
    static CONTENT_DATA* Form(int key) {
        tVstr* v = Page()->mKey2vstrArgv[key];
        return v ? static_cast<CONTENT_DATA*>(ArgToPtr((*v)[1])) : nullptr;
    }
    static CONTENT_SECTION& Field(int key, int row) {
        return Form(key)->pstItem[row].pstSection[1];
    }
    // Opens the form of key through the page's keys, as a user does.
    static void Press(int key) {
        RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
        ContentKeyFunc(key);
        ASSERT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction) << key;
    }
    // Types text into the field on row through the input bar.
    static void Type(int row, const std::string& text) {
        CONTENT_DRAW_INFO& d = gs_stSckeyCtrl.stDrawInfo;
        while (d.iFocusItem < row)
            ScKeyKeyFunction(KEY_DOWN);
        ScKeyKeyFunction(10);
        ASSERT_EQ(sg_Screen.pfnCurKeyFunc, InputKeyFunction);
        for (char ch : text)
            InputKeyFunction(ch);
        InputKeyFunction(10);
        ASSERT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction);
    }
    // Moves the choose bar of the field on row n options down (up when
    // negative) and takes it.
    static void Choose(int row, int n) {
        CONTENT_DRAW_INFO& d = gs_stSckeyCtrl.stDrawInfo;
        while (d.iFocusItem < row)
            ScKeyKeyFunction(KEY_DOWN);
        ScKeyKeyFunction(10);
        ASSERT_EQ(sg_Screen.pfnCurKeyFunc, ChooseKeyFunction);
        for (int i = 0; i < n; ++i)
            ChooseKeyFunction(KEY_DOWN);
        for (int i = 0; i > n; --i)
            ChooseKeyFunction(KEY_UP);
        ChooseKeyFunction(10);
        ASSERT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction);
    }
    void ExpectOnlySet(short cmd, const std::string& payload) {
        auto sets = Sets();
        ASSERT_EQ(sets.size(), 1u);
        EXPECT_EQ(sets[0].cmd, cmd);
        EXPECT_EQ(sets[0].payload, payload);
    }

    Agent m_agent;
    static SCREEN* s_screen;
    static FILE* s_out;
    static FILE* s_in;
};

SCREEN* FormPagesTest::s_screen;
FILE* FormPagesTest::s_out;
FILE* FormPagesTest::s_in;

// The caption and field of every row of a form, as the page declares them.
struct FieldDecl {
    std::string sCaption;
    EN_CTRL_BAR_TYPE enType;
    int iWidth;
    std::string sInitial;
    std::string sLimit;  // input fields only
    std::string sType;
};

void ExpectForm(CONTENT_DATA* form, const std::vector<FieldDecl>& rows) {
    ASSERT_NE(form, nullptr);
    ASSERT_EQ(form->iItemNum, static_cast<int>(rows.size()));
    for (size_t i = 0; i < rows.size(); ++i) {
        const CONTENT_ITEM& it = form->pstItem[i];
        const FieldDecl& r = rows[i];
        EXPECT_EQ(it.iPromptIndex, PROMPT_CONTENT_NEW_LEVEL);
        ASSERT_GE(it.iSectionNum, 2);
        EXPECT_EQ(it.pstSection[0].strSecName, r.sCaption);
        EXPECT_EQ(it.pstSection[0].enCtrlType, EN_NONE_CONTROL);
        const CONTENT_SECTION& f = it.pstSection[1];
        EXPECT_EQ(f.enCtrlType, r.enType) << r.sCaption;
        EXPECT_EQ(f.iMaxWidth, r.iWidth) << r.sCaption;
        EXPECT_EQ(f.strSecName, r.sInitial) << r.sCaption;
        ASSERT_FALSE(f.vstrCtrlArgv.empty());
        EXPECT_EQ(ArgToPtr(f.vstrCtrlArgv[0]), reinterpret_cast<void*>(IPTNewLevelItemUpdateFunc));
        EXPECT_EQ(ArgToPtr(f.vstrCtrlArgv.back()), &f) << r.sCaption;
        if (r.enType == EN_INPUT_CONTROL) {
            EXPECT_EQ(f.vstrCtrlArgv,
                      (tVstr{f.vstrCtrlArgv[0], "0", r.sLimit, r.sType, f.vstrCtrlArgv[4]}))
                << r.sCaption;
        } else {
            EXPECT_EQ(f.vstrCtrlArgv.size(), 2u);
        }
    }
}

const std::string k4 = "    ";

TEST_F(FormPagesTest, SystemStatePageAndItsForms) {
    ASSERT_EQ(UI_SysStateConfig(nullptr), 0);
    CONTENT_DATA* p = Page();
    ASSERT_EQ(p->iItemNum, 3);
    EXPECT_EQ(p->pfnRefreshCallFunc, UI_SysStateConfig);
    const char* labels[] = {"Host Name:", "System Date:", "System Time:"};
    const char* values[] = {"web01", "2026-11-22", "10:11:12"};
    for (int r = 0; r < 3; ++r) {
        EXPECT_EQ(p->pstItem[r].iPromptIndex, PROMPT_SYS_STATE_CONFIG);
        EXPECT_EQ(p->pstItem[r].iHelpInfoIndex, EN_SYS_STATE_CONF);
        EXPECT_EQ(p->pstItem[r].pstSection[0].strSecName, labels[r]);
        EXPECT_EQ(p->pstItem[r].pstSection[1].strSecName, values[r]);
        EXPECT_EQ(p->pstItem[r].pstSection[1].enCtrlType, EN_NONE_CONTROL);
    }
    ExpectForm(Form(MAP_KEY_F2), {{"Host Name:", EN_INPUT_CONTROL, 32, k4, "0", "0"}});
    ExpectForm(Form(MAP_KEY_F3), {{"User Name:", EN_INPUT_CONTROL, 32, k4, "0", "0"},
                                  {"New Password:", EN_INPUT_CONTROL, 32, k4, "0", "1"},
                                  {"New Password Confirm:", EN_INPUT_CONTROL, 32, k4, "0", "1"}});
    ExpectForm(Form(MAP_KEY_F4), {{"Year:", EN_INPUT_CONTROL, 4, k4, "1", "0"},
                                  {"Month:", EN_INPUT_CONTROL, 2, k4, "1", "0"},
                                  {"Day:", EN_INPUT_CONTROL, 2, k4, "1", "0"}});
    ExpectForm(Form(MAP_KEY_F5), {{"Hour:", EN_INPUT_CONTROL, 2, k4, "1", "0"},
                                  {"Minite:", EN_INPUT_CONTROL, 2, k4, "1", "0"},
                                  {"Second:", EN_INPUT_CONTROL, 2, k4, "1", "0"}});
    EXPECT_EQ(Page()->mKey2vstrArgv[MAP_KEY_F6], nullptr);
}

TEST_F(FormPagesTest, DateFormSendsItsThreeTokens) {
    ASSERT_EQ(UI_SysStateConfig(nullptr), 0);
    CONTENT_DATA* before = Page();
    Press(MAP_KEY_F4);
    Type(0, "2024");
    Type(1, "2");
    Type(2, "9");
    ScKeyKeyFunction(KEY_F(9));
    ExpectOnlySet(58, "2024 2 9");
    // Success rebuilt the page from a fresh check with the focus on row 0.
    EXPECT_NE(Page(), before);
    EXPECT_EQ(sg_ContentInfo.iFocusItem, 0);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1);
}

TEST_F(FormPagesTest, UntouchedHostNameSendsADash) {
    ASSERT_EQ(UI_SysStateConfig(nullptr), 0);
    Press(MAP_KEY_F2);
    ScKeyKeyFunction(KEY_F(9));
    ExpectOnlySet(57, "-");
}

TEST_F(FormPagesTest, PasswordFormShowsAsterisksAndSendsTheText) {
    ASSERT_EQ(UI_SysStateConfig(nullptr), 0);
    Press(MAP_KEY_F3);
    Type(0, "admin");
    Type(1, "s3cret");
    Type(2, "s3cret");
    EXPECT_EQ(CellText(Field(MAP_KEY_F3, 1)), "******");
    EXPECT_EQ(CellText(Field(MAP_KEY_F3, 0)), "admin");
    ScKeyKeyFunction(KEY_F(9));
    ExpectOnlySet(56, "admin s3cret s3cret");
}

TEST_F(FormPagesTest, RefusedCommandKeepsPageAndTypedValues) {
    g_setResult = em_ActFail;
    ASSERT_EQ(UI_SysStateConfig(nullptr), 0);
    CONTENT_DATA* before = Page();
    Press(MAP_KEY_F5);
    Type(0, "25");
    ScKeyKeyFunction(KEY_F(9));
    ExpectOnlySet(59, "25 - -");
    EXPECT_EQ(Page(), before);
    EXPECT_EQ(Field(MAP_KEY_F5, 0).strSecName, "25");
}

TEST_F(FormPagesTest, NetInterfacePageAndItsForms) {
    ASSERT_EQ(UI_NetInterface(nullptr), 0);
    ASSERT_EQ(Page()->iItemNum, 1);
    EXPECT_EQ(Page()->pstItem[0].pstSection[0].strSecName,
              "1 eth0 52:54:00:12:34:56 static up 10.0.0.5 255.255.255.0");
    EXPECT_EQ(Page()->pstItem[0].iPromptIndex, PROMPT_NET_INTERFACE);
    EXPECT_EQ(Page()->pfnRefreshCallFunc, nullptr);
    for (int key : {MAP_KEY_F2, MAP_KEY_F3, MAP_KEY_F4}) {
        ExpectForm(Form(key), {{"Interface Name:", EN_INPUT_CONTROL, 10, k4, "1", "0"}});
        ASSERT_EQ(Form(key)->pstItem[0].iSectionNum, 3);
        EXPECT_EQ(Form(key)->pstItem[0].pstSection[2].strSecName, "(eg. eth0)");
    }
    EXPECT_NE(Form(MAP_KEY_F2), Form(MAP_KEY_F3));
    ExpectForm(Form(MAP_KEY_F5), {{"Interface Name:", EN_INPUT_CONTROL, 10, k4, "1", "0"},
                                  {"IP:", EN_INPUT_CONTROL, 15, k4, "1", "0"},
                                  {"Mask:", EN_INPUT_CONTROL, 15, k4, "1", "0"},
                                  {"Gate way:", EN_INPUT_CONTROL, 15, k4, "1", "0"},
                                  {"DNS1:", EN_INPUT_CONTROL, 15, k4, "1", "0"},
                                  {"DNS2:", EN_INPUT_CONTROL, 15, k4, "1", "0"}});
}

TEST_F(FormPagesTest, InterfaceCommandsSendTheirFields) {
    const struct {
        int key;
        short cmd;
    } cases[] = {{MAP_KEY_F2, 52}, {MAP_KEY_F3, 53}, {MAP_KEY_F4, 54}};
    for (const auto& k : cases) {
        Agent fresh;
        pg_Obj->sSockName = fresh.fake.SocketPath();
        ASSERT_EQ(UI_NetInterface(nullptr), 0);
        Press(k.key);
        Type(0, "eth1");
        ScKeyKeyFunction(KEY_F(9));
        auto reqs = fresh.fake.Requests();
        ASSERT_GE(reqs.size(), 2u);
        EXPECT_EQ(reqs[1].cmd, k.cmd);
        EXPECT_EQ(reqs[1].payload, "eth1");
    }
}

TEST_F(FormPagesTest, ManualAddressWithNameAndIpSendsFourDashes) {
    ASSERT_EQ(UI_NetInterface(nullptr), 0);
    Press(MAP_KEY_F5);
    Type(0, "eth0");
    Type(1, "10.0.0.9");
    ScKeyKeyFunction(KEY_F(9));
    ExpectOnlySet(55, "eth0 10.0.0.9 - - - -");
}

TEST_F(FormPagesTest, EmptyInterfaceListGivesAPageWithoutRows) {
    g_change = [](cConf_Inf&, cSvrState& s) { s.vsIfconfigList.clear(); };
    ASSERT_EQ(UI_NetInterface(nullptr), 0);
    EXPECT_EQ(Page()->iItemNum, 0);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_NET_INTERFACE);
    Press(MAP_KEY_F3);
    ScKeyKeyFunction(27);
}

TEST_F(FormPagesTest, DiskPageFormsAsDeclared) {
    ASSERT_EQ(UI_DiskMonit(nullptr), 0);
    ASSERT_EQ(Page()->iItemNum, 1);
    EXPECT_EQ(Page()->pstItem[0].pstSection[0].strSecName, "1  /dev/vdb1  1000  100  50");
    EXPECT_EQ(Page()->pstItem[0].iPromptIndex, PROMPT_SCKEY_TOGGLE);
    ExpectForm(Form(MAP_KEY_F2), {{"Partition", EN_INPUT_CONTROL, 20, k4, "0", "0"},
                                  {"Ceil(MBytes)", EN_INPUT_CONTROL, 10, k4, "1", "0"},
                                  {"Floor(MBytes)", EN_INPUT_CONTROL, 10, k4, "1", "0"},
                                  {"Interval(MBytes)", EN_INPUT_CONTROL, 10, k4, "1", "0"}});
    ExpectForm(Form(MAP_KEY_F3),
               {{"Please input the index you want to delete:", EN_INPUT_CONTROL, 5, k4, "1", "0"}});
    ExpectForm(Form(MAP_KEY_F4), {{"Are you sure to clear the disk volume monit list?",
                                   EN_CHOOSE_CONTROL, 0, "[No]", "", ""}});
    EXPECT_EQ(Field(MAP_KEY_F4, 0).vstrCtrlShowStr, (tVstr{"[Yes]", "[No]"}));
    // The sample state's disk monitor is off.
    ExpectForm(Form(MAP_KEY_F5), {{"Monitor Toggle:", EN_CHOOSE_CONTROL, 0, "[Close]", "", ""}});
    EXPECT_EQ(Field(MAP_KEY_F5, 0).vstrCtrlShowStr, (tVstr{"[Open]", "[Close]"}));
}

TEST_F(FormPagesTest, BackupAddFormAsDeclared) {
    ASSERT_EQ(UI_BakMonit(nullptr), 0);
    EXPECT_EQ(Page()->pstItem[0].pstSection[0].strSecName, "1  /var/log/syslog  /backup  2048");
    ExpectForm(Form(MAP_KEY_F2), {{"File", EN_INPUT_CONTROL, 20, k4, "0", "0"},
                                  {"Backup Directory", EN_INPUT_CONTROL, 20, k4, "0", "0"},
                                  {"Backup Size(KBytes)", EN_INPUT_CONTROL, 10, k4, "1", "0"}});
    ExpectForm(Form(MAP_KEY_F4), {{"Are you sure to clear the Backup monit list?",
                                   EN_CHOOSE_CONTROL, 0, "[No]", "", ""}});
}

TEST_F(FormPagesTest, UntouchedDiskAddSendsFourDashes) {
    ASSERT_EQ(UI_DiskMonit(nullptr), 0);
    Press(MAP_KEY_F2);
    ScKeyKeyFunction(KEY_F(9));
    ExpectOnlySet(23, "- - - -");
}

TEST_F(FormPagesTest, BackupAddAndDeleteSendTheirFields) {
    ASSERT_EQ(UI_BakMonit(nullptr), 0);
    Press(MAP_KEY_F2);
    Type(0, "/etc/hosts");
    Type(1, "/bak");
    Type(2, "64");
    ScKeyKeyFunction(KEY_F(9));
    Press(MAP_KEY_F3);
    Type(0, "1");
    ScKeyKeyFunction(KEY_F(9));
    auto sets = Sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].cmd, 28);
    EXPECT_EQ(sets[0].payload, "/etc/hosts /bak 64");
    EXPECT_EQ(sets[1].cmd, 29);
    EXPECT_EQ(sets[1].payload, "1");
}

TEST_F(FormPagesTest, ClearAnsweredNoSendsNothingAndShowsNothing) {
    ASSERT_EQ(UI_DiskMonit(nullptr), 0);
    werase(sg_Screen.InfoWin);
    Press(MAP_KEY_F4);
    ScKeyKeyFunction(KEY_F(9));
    EXPECT_TRUE(Sets().empty());
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
    for (int x = 0; x < 80; ++x)
        ASSERT_EQ(mvwinch(sg_Screen.InfoWin, 0, x) & A_CHARTEXT, static_cast<chtype>(' ')) << x;
}

TEST_F(FormPagesTest, ClearAnsweredYesSendsNoPayload) {
    for (int key : {0, 1}) {
        Agent fresh;
        pg_Obj->sSockName = fresh.fake.SocketPath();
        ASSERT_EQ(key == 0 ? UI_DiskMonit(nullptr) : UI_BakMonit(nullptr), 0);
        Press(MAP_KEY_F4);
        Choose(0, -1);  // "[Yes]" is the choice above "[No]"
        EXPECT_EQ(Field(MAP_KEY_F4, 0).strSecName, "[Yes]");
        ScKeyKeyFunction(KEY_F(9));
        auto reqs = fresh.fake.Requests();
        ASSERT_EQ(reqs.size(), 3u);  // page, clear, rebuilt page
        EXPECT_EQ(reqs[1].cmd, key == 0 ? 25 : 30);
        EXPECT_EQ(reqs[1].payload, "");
    }
}

TEST_F(FormPagesTest, ClearLooksForYesAnywhereInTheText) {
    char text[] = "*xx[Yes]yy*";
    EXPECT_EQ(ClearDVMonitUpdateFunc(text, nullptr), em_ActSuccAll);
    char no[] = "*[Ye*s]*";
    EXPECT_EQ(ClearBakMonitUpdateFunc(no, nullptr), NEED_NOT_SHOW_INFO);
    char in[] = "*[Yes]*";
    EXPECT_EQ(InputClearUpdateFunc(in, nullptr), em_ActSuccAll);
    EXPECT_EQ(OutputClearUpdateFunc(no, nullptr), NEED_NOT_SHOW_INFO);
    auto sets = Sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].cmd, 25);
    EXPECT_EQ(sets[1].cmd, 35);
    EXPECT_EQ(sets[1].payload, "");
}

TEST_F(FormPagesTest, ToggleInitialValueFollowsTheFlag) {
    const struct {
        char flag;
        const char* shown;
        const char* sent;
    } cases[] = {{'1', "[Open]", "1"}, {'0', "[Close]", "0"}, {'x', "   ", "   "}};
    for (const auto& k : cases) {
        Agent fresh;
        pg_Obj->sSockName = fresh.fake.SocketPath();
        g_change = [&](cConf_Inf& c, cSvrState&) {
            c.chDVMonitFlag = k.flag;
            c.chBakForSizeFlag = k.flag;
        };
        for (int page = 0; page < 2; ++page) {
            ASSERT_EQ(page == 0 ? UI_DiskMonit(nullptr) : UI_BakMonit(nullptr), 0);
            EXPECT_EQ(Field(MAP_KEY_F5, 0).strSecName, k.shown);
            Press(MAP_KEY_F5);
            ScKeyKeyFunction(KEY_F(9));
        }
        std::vector<FakeRequest> sets;
        for (const FakeRequest& r : fresh.fake.Requests())
            if (r.cmd != nvwire::kCmdCheck)
                sets.push_back(r);
        ASSERT_EQ(sets.size(), 2u);
        EXPECT_EQ(sets[0].cmd, 26);
        EXPECT_EQ(sets[0].payload, k.sent) << k.flag;
        EXPECT_EQ(sets[1].cmd, 31);
        EXPECT_EQ(sets[1].payload, k.sent) << k.flag;
    }
}

TEST_F(FormPagesTest, ChainPagesAndTheAddRuleForm) {
    ASSERT_EQ(UI_IpTableInput(nullptr), 0);
    ASSERT_EQ(Page()->iItemNum, 1);
    EXPECT_EQ(Page()->pstItem[0].iPromptIndex, PROMPT_SCKEY_POLICY);
    const std::string ip = "###.###.###.###", port = "####";
    ExpectForm(Form(MAP_KEY_F2), {{"Priority:", EN_CHOOSE_CONTROL, 0, "[Highest]", "", ""},
                                  {"Protocol:", EN_CHOOSE_CONTROL, 0, "[Tcp]", "", ""},
                                  {"Source IP:", EN_INPUT_CONTROL, 20, ip, "1", "0"},
                                  {"Source Port:", EN_INPUT_CONTROL, 5, port, "1", "0"},
                                  {"Destination IP:", EN_INPUT_CONTROL, 18, ip, "1", "0"},
                                  {"Destination Port:", EN_INPUT_CONTROL, 5, port, "1", "0"},
                                  {"Action:", EN_CHOOSE_CONTROL, 0, "[Accept]", "", ""}});
    EXPECT_EQ(Field(MAP_KEY_F2, 6).vstrCtrlShowStr, (tVstr{"[Accept]", "[Drop]"}));
    ExpectForm(Form(MAP_KEY_F4),
               {{"Are you sure to clear the input chain?", EN_CHOOSE_CONTROL, 0, "[No]", "", ""}});
    // The sample input policy is "2".
    ExpectForm(Form(MAP_KEY_F5),
               {{"Please choose the modify policy:", EN_CHOOSE_CONTROL, 0, "[Drop]", "", ""}});
    // An empty output chain still has its four forms.
    ASSERT_EQ(UI_IpTableOutput(nullptr), 0);
    EXPECT_EQ(Page()->iItemNum, 0);
    ExpectForm(Form(MAP_KEY_F4), {{"Are you sure to clear the output iptable?", EN_CHOOSE_CONTROL,
                                   0, "[No]", "", ""}});
    ExpectForm(Form(MAP_KEY_F5),
               {{"Please choose the modify policy:", EN_CHOOSE_CONTROL, 0, "[Accept]", "", ""}});
}

TEST_F(FormPagesTest, DefaultRuleAndPort22) {
    ASSERT_EQ(UI_IpTableInput(nullptr), 0);
    Press(MAP_KEY_F2);
    ScKeyKeyFunction(KEY_F(9));
    Press(MAP_KEY_F2);
    Type(5, "22");
    ScKeyKeyFunction(KEY_F(9));
    ASSERT_EQ(UI_IpTableOutput(nullptr), 0);
    Press(MAP_KEY_F2);
    Choose(0, 1);
    Choose(1, 1);
    Choose(6, 1);
    ScKeyKeyFunction(KEY_F(9));
    auto sets = Sets();
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0].cmd, 33);
    EXPECT_EQ(sets[0].payload, "1 1 - 0 - 0 1");
    EXPECT_EQ(sets[1].cmd, 33);
    EXPECT_EQ(sets[1].payload, "1 1 - 0 - 22 1");
    EXPECT_EQ(sets[2].cmd, 37);
    EXPECT_EQ(sets[2].payload, "2 2 - 0 - 0 2");
}

TEST_F(FormPagesTest, PolicyNeitherOneNorTwoSendsADash) {
    g_change = [](cConf_Inf&, cSvrState& s) {
        s.chIptablesInputPolicy = '7';
        s.chIptablesOutputPolicy = '\0';
    };
    ASSERT_EQ(UI_IpTableInput(nullptr), 0);
    EXPECT_EQ(Field(MAP_KEY_F5, 0).strSecName, "    ");
    Press(MAP_KEY_F5);
    ScKeyKeyFunction(KEY_F(9));
    ASSERT_EQ(UI_IpTableOutput(nullptr), 0);
    Press(MAP_KEY_F5);
    ScKeyKeyFunction(KEY_F(9));
    auto sets = Sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].cmd, 32);
    EXPECT_EQ(sets[0].payload, "-");
    EXPECT_EQ(sets[1].cmd, 36);
    EXPECT_EQ(sets[1].payload, "-");
}

TEST_F(FormPagesTest, ChainDeleteSendsTheIndex) {
    ASSERT_EQ(UI_IpTableOutput(nullptr), 0);
    Press(MAP_KEY_F3);
    Type(0, "3");
    ScKeyKeyFunction(KEY_F(9));
    ExpectOnlySet(38, "3");
}

TEST_F(FormPagesTest, ChineseChoiceSendsItsDigit) {
    for (int lang : {LAN_CHINESE_UTF8, LAN_CHINESE_GB2312}) {
        Agent fresh;
        pg_Obj->sSockName = fresh.fake.SocketPath();
        iLanIdx = lang;
        ASSERT_EQ(UI_IpTableInput(nullptr), 0);
        EXPECT_EQ(Field(MAP_KEY_F2, 0).strSecName, pcStrHighest[lang]);
        Press(MAP_KEY_F2);
        Choose(1, 1);
        EXPECT_EQ(Field(MAP_KEY_F2, 1).strSecName, pcStrUdp[lang]);
        ScKeyKeyFunction(KEY_F(9));
        auto reqs = fresh.fake.Requests();
        ASSERT_GE(reqs.size(), 2u);
        EXPECT_EQ(reqs[1].cmd, 33);
        EXPECT_EQ(reqs[1].payload, "1 2 - 0 - 0 1") << lang;
    }
    iLanIdx = LAN_ENGLISH;
}

TEST_F(FormPagesTest, FailedCheckLeavesNoPage) {
    pg_Obj->sSockName = "/nonexistent/sock";
    for (pfItemFuncType fn : {UI_SysStateConfig, UI_NetInterface, UI_DiskMonit, UI_BakMonit,
                              UI_IpTableInput, UI_IpTableOutput}) {
        EXPECT_NE(fn(nullptr), 0);
        EXPECT_EQ(Page(), nullptr);
    }
}

// The refresh thread's rule, one round at a time.
int g_refreshCalls = 0;
int CountRefresh(void*) {
    ++g_refreshCalls;
    sg_ContentInfo.iRefreshTime = time(NULL);
    return 0;
}

TEST_F(FormPagesTest, RefreshRunsOnlyOnAnOpenPageWithTheKeyboardAfterTwoSeconds) {
    ASSERT_EQ(UI_SysStateConfig(nullptr), 0);
    Page()->pfnRefreshCallFunc = CountRefresh;
    g_refreshCalls = 0;
    sg_ContentInfo.iRefreshTime = time(NULL) - 1;
    EXPECT_EQ(RefreshOnce(), 0);
    sg_ContentInfo.iRefreshTime = time(NULL) - 2;
    EXPECT_EQ(RefreshOnce(), 1);
    EXPECT_EQ(g_refreshCalls, 1);
    EXPECT_EQ(RefreshOnce(), 0);  // just entered again
    // A form has the keyboard: no refresh.
    sg_ContentInfo.iRefreshTime = time(NULL) - 5;
    Press(MAP_KEY_F4);
    EXPECT_EQ(RefreshOnce(), 0);
    ScKeyKeyFunction(27);
    EXPECT_EQ(RefreshOnce(), 1);
    // A page without refresh function, or none at all.
    Page()->pfnRefreshCallFunc = nullptr;
    sg_ContentInfo.iRefreshTime = time(NULL) - 5;
    EXPECT_EQ(RefreshOnce(), 0);
    FreeContent(Page());
    memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
    EXPECT_EQ(RefreshOnce(), 0);
    EXPECT_EQ(g_refreshCalls, 2);
}

}  // namespace
