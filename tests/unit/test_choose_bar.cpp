// The choose bar on an in-memory curses screen (output to /dev/null): the
// preselected current value, moving and scrolling, Enter with and without a
// change, Esc, the refusals, and the content view opening it on a choose cell.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "content/content_view.h"
#include "ctrlbar/control_bar.h"
#include "link/global_val.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"
#include "shell/start_up.h"
#include "strings/com_str.h"

namespace {

int g_iUpdateCalls;
std::string g_strUpdateText;
void* g_pUpdateArg;
int g_iUpdateResult;
std::string g_strInfoDuringUpdate;
int g_iReturnCalls;
bool g_bBarOpenAtReturn;

std::string WinText(WINDOW* w, int row, int col, int len) {
    std::string s;
    for (int c = col; c < col + len; ++c)
        s += static_cast<char>(mvwinch(w, row, c) & A_CHARTEXT);
    return s;
}

int RecordUpdate(char* pcText, void* arg) {
    ++g_iUpdateCalls;
    g_strUpdateText = pcText;
    g_pUpdateArg = arg;
    g_strInfoDuringUpdate = WinText(sg_Screen.InfoWin, 0, 0, 32);
    return g_iUpdateResult;
}

void RecordReturn() {
    ++g_iReturnCalls;
    g_bBarOpenAtReturn = gs_stChooseCtrl.pChooseMenu != nullptr;
}

void OtherKeyFunc(int) {}

std::string UpdateArg(UPDATE_FUNC pfn = RecordUpdate) {
    return PtrToArg(reinterpret_cast<const void*>(pfn));
}

class ChooseBarTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        setenv("LINES", "24", 1);
        setenv("COLUMNS", "80", 1);
        s_out = fopen("/dev/null", "w");
        s_in = fopen("/dev/null", "r");
        InitComStr();
        iLanIdx = LAN_ENGLISH;
        s_screen = newterm("xterm-256color", s_out, s_in);
        start_color();
        for (int i = 1; i <= 7; ++i)
            init_pair(i, COLOR_WHITE, COLOR_BLUE);
        InitInfoWindow();
        InitPromptWindow();
        InitContentWindow();
        pg_Obj->mErrorNo2Des[7] = "Success.";
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
        g_iUpdateCalls = 0;
        g_strUpdateText.clear();
        g_pUpdateArg = nullptr;
        g_iUpdateResult = 7;
        g_strInfoDuringUpdate.clear();
        g_iReturnCalls = 0;
        g_bBarOpenAtReturn = false;
        ClearInformation();
        sg_Screen.iCurPromptIdx = PROMPT_MAX;
        RegistKeyFunc(OtherKeyFunc, nullptr);
    }
    void TearDown() override {
        if (gs_stChooseCtrl.pfnReturn != nullptr)
            ChooseKeyFunction(27);
        if (sg_ContentInfo.pstContent != nullptr) {
            FreeContent(sg_ContentInfo.pstContent);
            memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
        }
    }
    static tVstr OpenClose() { return tVstr{pcStrOpen[iLanIdx], pcStrClose[iLanIdx]}; }
    static tVstr Options(int n) {
        tVstr v;
        for (int i = 1; i <= n; ++i)
            v.push_back("opt" + std::to_string(i));
        return v;
    }
    static int Open(const std::string& strCur, const tVstr& vOptions) {
        DRAW_PARAMETER r = {46, 8, 18, 7};
        return EnterChooseCtrlBar(strCur, vOptions, tVstr{UpdateArg()}, &r, RecordReturn);
    }
    // The inner text of box line r (1 to 5).
    static std::string Line(int r) {
        std::string s = WinText(gs_stChooseCtrl.pChooseWin, r, 1, 16);
        size_t b = s.find_first_not_of(" -");
        size_t e = s.find_last_not_of(' ');
        return b == std::string::npos ? "" : s.substr(b, e - b + 1);
    }
    // Whether the option text on box line r is drawn in reverse video.
    static bool Highlighted(int r) {
        std::string s = WinText(gs_stChooseCtrl.pChooseWin, r, 1, 16);
        size_t b = s.find_first_not_of(" -");
        if (b == std::string::npos)
            return false;
        return (mvwinch(gs_stChooseCtrl.pChooseWin, r, 1 + static_cast<int>(b)) & A_REVERSE) != 0;
    }
    static SCREEN* s_screen;
    static FILE* s_out;
    static FILE* s_in;
};

SCREEN* ChooseBarTest::s_screen;
FILE* ChooseBarTest::s_out;
FILE* ChooseBarTest::s_in;

TEST_F(ChooseBarTest, OpensABoxedMenuWithTheCurrentValuePreselected) {
    ASSERT_EQ(Open(pcStrClose[iLanIdx], OpenClose()), 0);
    WINDOW* w = gs_stChooseCtrl.pChooseWin;
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(getbegx(w), 46);
    EXPECT_EQ(getbegy(w), 8);
    EXPECT_EQ(getmaxx(w), 18);
    EXPECT_EQ(getmaxy(w), 7);
    EXPECT_TRUE(is_keypad(w));
    EXPECT_EQ(mvwinch(w, 0, 0) & A_CHARTEXT, ACS_ULCORNER & A_CHARTEXT);
    EXPECT_EQ(mvwinch(w, 6, 17) & A_CHARTEXT, ACS_LRCORNER & A_CHARTEXT);
    EXPECT_EQ(Line(1), pcStrOpen[iLanIdx]);
    EXPECT_EQ(Line(2), pcStrClose[iLanIdx]);
    EXPECT_FALSE(Highlighted(1));
    EXPECT_TRUE(Highlighted(2));
    EXPECT_EQ(current_item(gs_stChooseCtrl.pChooseMenu), gs_stChooseCtrl.pCurItem);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ChooseKeyFunction);
    EXPECT_EQ(sg_Screen.CurWin, w);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_CHOOSE);
}

TEST_F(ChooseBarTest, EnterOnTheCurrentValueSendsNothing) {
    ASSERT_EQ(Open(pcStrOpen[iLanIdx], OpenClose()), 0);
    ChooseKeyFunction(10);
    EXPECT_EQ(g_iUpdateCalls, 0);
    EXPECT_EQ(g_iReturnCalls, 1);
    EXPECT_FALSE(g_bBarOpenAtReturn);
    EXPECT_EQ(WinText(sg_Screen.InfoWin, 0, 0, 40), std::string(40, ' '));
    EXPECT_EQ(gs_stChooseCtrl.pChooseWin, nullptr);
    EXPECT_EQ(gs_stChooseCtrl.pChooseItems, nullptr);
}

TEST_F(ChooseBarTest, DownThenEnterSendsTheOtherOption) {
    ASSERT_EQ(Open(pcStrOpen[iLanIdx], OpenClose()), 0);
    ChooseKeyFunction(KEY_DOWN);
    EXPECT_TRUE(Highlighted(2));
    EXPECT_FALSE(Highlighted(1));
    ChooseKeyFunction(10);
    EXPECT_EQ(g_iUpdateCalls, 1);
    EXPECT_EQ(g_strUpdateText, pcStrClose[iLanIdx]);
    EXPECT_EQ(g_pUpdateArg, nullptr);
    EXPECT_EQ(g_strInfoDuringUpdate, "Excuting command, please wait...");
    EXPECT_EQ(WinText(sg_Screen.InfoWin, 0, 0, 8), "Success.");
    EXPECT_EQ(g_iReturnCalls, 1);
}

TEST_F(ChooseBarTest, DownAndUpBackToTheCurrentValueSendsNothing) {
    ASSERT_EQ(Open(pcStrOpen[iLanIdx], OpenClose()), 0);
    ChooseKeyFunction(KEY_DOWN);
    ChooseKeyFunction(KEY_UP);
    EXPECT_TRUE(Highlighted(1));
    ChooseKeyFunction(10);
    EXPECT_EQ(g_iUpdateCalls, 0);
    EXPECT_EQ(g_iReturnCalls, 1);
}

TEST_F(ChooseBarTest, CurrentValueMatchingNoOptionHighlightsTheFirstAndEnterSendsIt) {
    ASSERT_EQ(Open("    ", OpenClose()), 0);
    EXPECT_EQ(gs_stChooseCtrl.pCurItem, nullptr);
    EXPECT_TRUE(Highlighted(1));
    EXPECT_FALSE(Highlighted(2));
    ChooseKeyFunction(10);
    EXPECT_EQ(g_iUpdateCalls, 1);
    EXPECT_EQ(g_strUpdateText, pcStrOpen[iLanIdx]);
}

TEST_F(ChooseBarTest, SevenLinesShowFiveOptionsAndTheArrowsScroll) {
    ASSERT_EQ(Open("opt1", Options(8)), 0);
    EXPECT_EQ(getmaxy(gs_stChooseCtrl.pChooseSubWin), 5);
    EXPECT_EQ(getmaxx(gs_stChooseCtrl.pChooseSubWin), 16);
    for (int r = 1; r <= 5; ++r)
        EXPECT_EQ(Line(r), "opt" + std::to_string(r));
    EXPECT_EQ(mvwinch(gs_stChooseCtrl.pChooseWin, 6, 1) & A_CHARTEXT, ACS_HLINE & A_CHARTEXT);
    for (int i = 0; i < 6; ++i)
        ChooseKeyFunction(KEY_DOWN);
    EXPECT_EQ(Line(1), "opt3");
    EXPECT_EQ(Line(5), "opt7");
    EXPECT_TRUE(Highlighted(5));
    for (int i = 0; i < 5; ++i)
        ChooseKeyFunction(KEY_UP);
    EXPECT_EQ(Line(1), "opt2");
    EXPECT_TRUE(Highlighted(1));
    ChooseKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "opt2");
}

TEST_F(ChooseBarTest, APreselectedOptionBelowTheFirstFiveIsShown) {
    ASSERT_EQ(Open("opt7", Options(8)), 0);
    EXPECT_STREQ(item_name(current_item(gs_stChooseCtrl.pChooseMenu)), "opt7");
    bool bShown = false;
    for (int r = 1; r <= 5; ++r)
        if (Line(r) == "opt7") {
            bShown = true;
            EXPECT_TRUE(Highlighted(r));
        }
    EXPECT_TRUE(bShown);
    ChooseKeyFunction(10);
    EXPECT_EQ(g_iUpdateCalls, 0);
}

TEST_F(ChooseBarTest, EscClosesWithoutChange) {
    ASSERT_EQ(Open(pcStrOpen[iLanIdx], OpenClose()), 0);
    ChooseKeyFunction(KEY_DOWN);
    ChooseKeyFunction(27);
    EXPECT_EQ(g_iUpdateCalls, 0);
    EXPECT_EQ(g_iReturnCalls, 1);
    EXPECT_FALSE(g_bBarOpenAtReturn);
    EXPECT_EQ(gs_stChooseCtrl.pChooseMenu, nullptr);
    EXPECT_EQ(gs_stChooseCtrl.pfnReturn, nullptr);
}

TEST_F(ChooseBarTest, OtherKeysDoNothing) {
    ASSERT_EQ(Open(pcStrOpen[iLanIdx], OpenClose()), 0);
    for (int k : {KEY_LEFT, KEY_RIGHT, KEY_NPAGE, KEY_F(9), int('c'), int(' '), 8})
        ChooseKeyFunction(k);
    EXPECT_NE(gs_stChooseCtrl.pChooseMenu, nullptr);
    EXPECT_TRUE(Highlighted(1));
    EXPECT_EQ(g_iReturnCalls, 0);
    EXPECT_EQ(g_iUpdateCalls, 0);
}

TEST_F(ChooseBarTest, OpaqueArgumentIsPassed) {
    int iTarget = 0;
    DRAW_PARAMETER r = {46, 8, 18, 7};
    ASSERT_EQ(EnterChooseCtrlBar(pcStrOpen[iLanIdx], OpenClose(),
                                 tVstr{UpdateArg(), PtrToArg(&iTarget)}, &r, RecordReturn),
              0);
    ChooseKeyFunction(KEY_DOWN);
    ChooseKeyFunction(10);
    EXPECT_EQ(g_pUpdateArg, &iTarget);
}

TEST_F(ChooseBarTest, BadParametersAreRefused) {
    DRAW_PARAMETER r = {46, 8, 18, 7};
    EXPECT_EQ(EnterChooseCtrlBar("Open", OpenClose(), tVstr(), &r, RecordReturn), -1);
    EXPECT_EQ(EnterChooseCtrlBar("Open", OpenClose(), tVstr{UpdateArg()}, nullptr, RecordReturn),
              -1);
    EXPECT_EQ(EnterChooseCtrlBar("Open", OpenClose(), tVstr{UpdateArg()}, &r, nullptr), -1);
    EXPECT_EQ(EnterChooseCtrlBar("Open", OpenClose(), tVstr{"0"}, &r, RecordReturn), -1);
    EXPECT_EQ(EnterChooseCtrlBar("Open", OpenClose(), tVstr{"update"}, &r, RecordReturn), -1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
    EXPECT_EQ(gs_stChooseCtrl.pChooseItems, nullptr);
    EXPECT_EQ(gs_stChooseCtrl.pChooseWin, nullptr);
}

TEST_F(ChooseBarTest, WithoutOptionsNothingCanBeChosenButEnterAndEscStillReturn) {
    ASSERT_EQ(Open("Open", tVstr()), 0);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ChooseKeyFunction);
    ChooseKeyFunction(KEY_DOWN);
    ChooseKeyFunction(KEY_UP);
    ChooseKeyFunction(10);
    EXPECT_EQ(g_iUpdateCalls, 0);
    EXPECT_EQ(g_iReturnCalls, 1);
    ASSERT_EQ(Open("Open", tVstr()), 0);
    ChooseKeyFunction(27);
    EXPECT_EQ(g_iReturnCalls, 2);
}

// The update function may free the page whose cell holds the options: the
// bar then touches only its own copies.
tVstr* g_pvOwnedOptions;
int FreeOptionsUpdate(char* pcText, void* arg) {
    RecordUpdate(pcText, arg);
    delete g_pvOwnedOptions;
    g_pvOwnedOptions = nullptr;
    return 7;
}

TEST_F(ChooseBarTest, OptionsFreedByTheUpdateFunctionAreNotTouched) {
    g_pvOwnedOptions = new tVstr(Options(3));
    std::string strCur = "opt1";
    DRAW_PARAMETER r = {46, 8, 18, 7};
    ASSERT_EQ(EnterChooseCtrlBar(strCur, *g_pvOwnedOptions, tVstr{UpdateArg(FreeOptionsUpdate)}, &r,
                                 RecordReturn),
              0);
    ChooseKeyFunction(KEY_DOWN);
    ChooseKeyFunction(10);
    EXPECT_EQ(g_pvOwnedOptions, nullptr);
    EXPECT_EQ(g_strUpdateText, "opt2");
    EXPECT_EQ(g_iReturnCalls, 1);
}

TEST_F(ChooseBarTest, EscAndConfirmationAreLogged) {
    char szDir[] = "/tmp/nvchoose.XXXXXX";
    ASSERT_NE(mkdtemp(szDir), nullptr);
    std::string strLog = std::string(szDir) + "/nvui.log";
    snprintf(pg_Obj->szLogFileName, sizeof(pg_Obj->szLogFileName), "%s", strLog.c_str());
    pg_Obj->c_LOG_Level = 4;
    Open(pcStrOpen[iLanIdx], OpenClose());
    ChooseKeyFunction(KEY_DOWN);
    ChooseKeyFunction(10);
    Open(pcStrOpen[iLanIdx], OpenClose());
    ChooseKeyFunction(27);
    pg_Obj->c_LOG_Level = 0;
    std::ifstream in(strLog);
    std::stringstream ss;
    ss << in.rdbuf();
    std::string s = ss.str();
    for (const char* pc : {"enter choose ctrl bar", "choose ctrl show ok!",
                           "Choose ctrl:choose:[Close]", "choose ctrl esc!", "exit free over!"})
        EXPECT_NE(s.find(pc), std::string::npos) << pc;
    remove(strLog.c_str());
    rmdir(szDir);
}

// ---- The content view opens the bar on a choose cell.

CONTENT_DATA* ChoosePage(EN_CTRL_BAR_TYPE enType, const tVstr& vArgv) {
    CONTENT_DATA* pPage = new CONTENT_DATA;
    pPage->pfnRefreshCallFunc = nullptr;
    pPage->iItemNum = 1;
    pPage->pstItem = new CONTENT_ITEM[1];
    CONTENT_ITEM& row = pPage->pstItem[0];
    row.iPromptIndex = PROMPT_CONTENT;
    row.iHelpInfoIndex = 0;
    row.iSectionNum = 2;
    row.pstSection = new CONTENT_SECTION[2];
    row.pstSection[0].iMaxWidth = 0;
    row.pstSection[0].strSecName = "Ping";
    row.pstSection[0].enCtrlType = EN_NONE_CONTROL;
    row.pstSection[1].iMaxWidth = 0;
    row.pstSection[1].strSecName = pcStrOpen[iLanIdx];
    row.pstSection[1].enCtrlType = enType;
    row.pstSection[1].vstrCtrlShowStr = {pcStrOpen[iLanIdx], pcStrClose[iLanIdx]};
    row.pstSection[1].vstrCtrlArgv = vArgv;
    return pPage;
}

TEST_F(ChooseBarTest, ContentModifyOpensItAtColumn46Line8On80x24) {
    ASSERT_EQ(EnterContent(ChoosePage(EN_CHOOSE_CONTROL, tVstr{UpdateArg()})), 0);
    ASSERT_EQ(ContentModify(&sg_ContentInfo, RecordReturn), 0);
    WINDOW* w = gs_stChooseCtrl.pChooseWin;
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(getbegx(w), 46);
    EXPECT_EQ(getbegy(w), 8);
    EXPECT_EQ(getmaxx(w), 18);
    EXPECT_EQ(getmaxy(w), 7);
    EXPECT_TRUE(Highlighted(1));
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ChooseKeyFunction);
    ChooseKeyFunction(KEY_DOWN);
    ChooseKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, pcStrClose[iLanIdx]);
    EXPECT_EQ(g_iReturnCalls, 1);
}

// The update function rebuilds the page, freeing the cell that opened the
// bar, as a page's update function does on success.
int RebuildUpdate(char* pcText, void* arg) {
    RecordUpdate(pcText, arg);
    EnterContent(ChoosePage(EN_CHOOSE_CONTROL, tVstr{UpdateArg(RebuildUpdate)}));
    return 7;
}

TEST_F(ChooseBarTest, EnterOnTheCellThroughARebuildGivesThePageTheKeyboardBack) {
    ASSERT_EQ(EnterContent(ChoosePage(EN_CHOOSE_CONTROL, tVstr{UpdateArg(RebuildUpdate)})), 0);
    RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
    ContentKeyFunc(10);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 0);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ChooseKeyFunction);
    ChooseKeyFunction(KEY_DOWN);
    ChooseKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, pcStrClose[iLanIdx]);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
    EXPECT_EQ(WinText(sg_Screen.InfoWin, 0, 0, 8), "Success.");
}

TEST_F(ChooseBarTest, ContentModifyGivesTheBarsFailureAndMinusOneForOtherCells) {
    ASSERT_EQ(EnterContent(ChoosePage(EN_CHOOSE_CONTROL, tVstr{"0"})), 0);
    EXPECT_EQ(ContentModify(&sg_ContentInfo, RecordReturn), -1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
    for (EN_CTRL_BAR_TYPE en :
         {EN_ENQUIRE_CONTROL, EN_ADD_CONTROL, EN_DELETE_CONTROL, EN_CLEAR_CONTROL}) {
        ASSERT_EQ(EnterContent(ChoosePage(en, tVstr{UpdateArg()})), 0);
        EXPECT_EQ(ContentModify(&sg_ContentInfo, RecordReturn), -1) << en;
        EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
    }
    sg_ContentInfo.iFocusCol = 0;  // the label
    EXPECT_EQ(ContentModify(&sg_ContentInfo, RecordReturn), -1);
    EXPECT_EQ(ContentModify(nullptr, RecordReturn), -1);
}

TEST_F(ChooseBarTest, ContentModifyLogsTheOutcome) {
    char szDir[] = "/tmp/nvchoose.XXXXXX";
    ASSERT_NE(mkdtemp(szDir), nullptr);
    std::string strLog = std::string(szDir) + "/nvui.log";
    snprintf(pg_Obj->szLogFileName, sizeof(pg_Obj->szLogFileName), "%s", strLog.c_str());
    ASSERT_EQ(EnterContent(ChoosePage(EN_CHOOSE_CONTROL, tVstr{UpdateArg()})), 0);
    pg_Obj->c_LOG_Level = 4;
    ContentModify(&sg_ContentInfo, RecordReturn);
    ChooseKeyFunction(27);
    ASSERT_EQ(EnterContent(ChoosePage(EN_CHOOSE_CONTROL, tVstr{"0"})), 0);
    ContentModify(&sg_ContentInfo, RecordReturn);
    pg_Obj->c_LOG_Level = 0;
    std::ifstream in(strLog);
    std::stringstream ss;
    ss << in.rdbuf();
    std::string s = ss.str();
    EXPECT_NE(s.find("Modify Item:Ping"), std::string::npos);
    EXPECT_NE(s.find("Enter modify_choose success!"), std::string::npos);
    EXPECT_NE(s.find("Choose update function is NULL!"), std::string::npos);
    EXPECT_NE(s.find("Enter modify_choose failed!"), std::string::npos);
    remove(strLog.c_str());
    rmdir(szDir);
}

}  // namespace
