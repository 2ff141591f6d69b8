// The input bar on an in-memory curses screen (output to /dev/null): the
// field in place and in a boxed window, limited and scrolling fields,
// Backspace, the echo types, the initial text, Enter and Esc, the refusals,
// and the content view opening it on an input cell.
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
}

void OtherKeyFunc(int) {}

std::string UpdateArg() {
    return PtrToArg(reinterpret_cast<const void*>(&RecordUpdate));
}

class InputBarTest : public ::testing::Test {
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
        pg_Obj->mErrorNo2Des[2] = "Invalid value.";
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
        werase(sg_Screen.ContentWin);
        ClearInformation();
        sg_Screen.iCurPromptIdx = PROMPT_MAX;
        RegistKeyFunc(OtherKeyFunc, nullptr);
    }
    void TearDown() override {
        if (gs_stInputCtrl.pInputWin != nullptr)
            InputKeyFunction(27);
        if (sg_ContentInfo.pstContent != nullptr) {
            FreeContent(sg_ContentInfo.pstContent);
            memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
        }
    }
    // An in-place field of width 10 on line 2 from column 5 of the content
    // window.
    static int OpenField(const char* pcLimit, const char* pcType, const tVstr& vShow = tVstr()) {
        tVstr vArgv = {UpdateArg(), "0", pcLimit, pcType};
        DRAW_PARAMETER r = {5, 2, 10, 1};
        return EnterInputCtrlBar(vShow, vArgv, &r, RecordReturn, sg_Screen.ContentWin);
    }
    static void Type(const std::string& s) {
        for (char ch : s)
            InputKeyFunction(static_cast<unsigned char>(ch));
    }
    static std::string Field() { return WinText(sg_Screen.ContentWin, 2, 5, 10); }
    static SCREEN* s_screen;
    static FILE* s_out;
    static FILE* s_in;
};

SCREEN* InputBarTest::s_screen;
FILE* InputBarTest::s_out;
FILE* InputBarTest::s_in;

TEST_F(InputBarTest, OpensInPlaceWithBlankFieldPromptAndKeyFunction) {
    mvwaddstr(sg_Screen.ContentWin, 2, 0, "xxxxxxxxxxxxxxxxxxxx");
    ASSERT_EQ(OpenField("1", "0"), 0);
    EXPECT_EQ(WinText(sg_Screen.ContentWin, 2, 0, 20), "xxxxx          xxxxx");
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, InputKeyFunction);
    EXPECT_EQ(sg_Screen.CurWin, sg_Screen.ContentWin);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_INPUT);
    EXPECT_EQ(gs_stInputCtrl.iStartX, 5);
    EXPECT_EQ(gs_stInputCtrl.iStartY, 2);
    EXPECT_EQ(gs_stInputCtrl.iWidth, 10);
    EXPECT_EQ(gs_stInputCtrl.iHeight, 1);
    EXPECT_EQ(gs_stInputCtrl.x, 5);
    EXPECT_EQ(gs_stInputCtrl.y, 2);
}

TEST_F(InputBarTest, LimitedFieldIgnoresTheEleventhCharacter) {
    ASSERT_EQ(OpenField("1", "0"), 0);
    Type("abcdefghijk");
    EXPECT_EQ(Field(), "abcdefghij");
    EXPECT_EQ(WinText(sg_Screen.ContentWin, 2, 15, 1), " ");
    EXPECT_EQ(gs_stInputCtrl.iInputNum, 10);
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "abcdefghij");
}

TEST_F(InputBarTest, UnlimitedFieldScrollsToShowTheLastTen) {
    ASSERT_EQ(OpenField("0", "0"), 0);
    Type("abcdefghijk");
    EXPECT_EQ(Field(), "bcdefghijk");
    Type("lmn");
    EXPECT_EQ(Field(), "efghijklmn");
    EXPECT_EQ(WinText(sg_Screen.ContentWin, 2, 15, 1), " ");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "abcdefghijklmn");
}

TEST_F(InputBarTest, BackspaceOnEmptyTextDoesNothing) {
    ASSERT_EQ(OpenField("1", "0"), 0);
    InputKeyFunction(KEY_BACKSPACE);
    InputKeyFunction(8);
    EXPECT_EQ(gs_stInputCtrl.iInputNum, 0);
    EXPECT_EQ(gs_stInputCtrl.x, 5);
    EXPECT_EQ(Field(), "          ");
}

TEST_F(InputBarTest, BackspaceAfterAbLeavesAAndBlanksTheSecondColumn) {
    ASSERT_EQ(OpenField("1", "0"), 0);
    Type("ab");
    InputKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(Field(), "a         ");
    EXPECT_EQ(gs_stInputCtrl.x, 6);
    Type("c");
    InputKeyFunction(8);
    EXPECT_EQ(Field(), "a         ");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "a");
}

TEST_F(InputBarTest, BackspaceOnAFullLimitedFieldBlanksItsLastCell) {
    ASSERT_EQ(OpenField("1", "0"), 0);
    Type("abcdefghij");
    EXPECT_EQ(gs_stInputCtrl.y, 3);  // below the field: full
    InputKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(Field(), "abcdefghi ");
    EXPECT_EQ(gs_stInputCtrl.x, 14);
    EXPECT_EQ(gs_stInputCtrl.y, 2);
    Type("z");
    EXPECT_EQ(Field(), "abcdefghiz");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "abcdefghiz");
}

TEST_F(InputBarTest, BackspaceInAScrolledFieldRedrawsTheTail) {
    ASSERT_EQ(OpenField("0", "0"), 0);
    Type("abcdefghijkl");
    InputKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(Field(), "bcdefghijk");
    // One column right of the field, on its last line.
    EXPECT_EQ(gs_stInputCtrl.x, 15);
    EXPECT_EQ(gs_stInputCtrl.y, 2);
    InputKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(Field(), "abcdefghij");
    InputKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(Field(), "abcdefghi ");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "abcdefghi");
}

TEST_F(InputBarTest, TypeOneEchoesAsterisksAndPassesTheText) {
    ASSERT_EQ(OpenField("1", "1"), 0);
    Type("abc");
    EXPECT_EQ(Field(), "***       ");
    InputKeyFunction(10);
    EXPECT_EQ(g_iUpdateCalls, 1);
    EXPECT_EQ(g_strUpdateText, "abc");
}

TEST_F(InputBarTest, TypeTwoEchoesNothing) {
    ASSERT_EQ(OpenField("1", "2"), 0);
    Type("abc");
    EXPECT_EQ(Field(), "          ");
    EXPECT_EQ(gs_stInputCtrl.x, 8);
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "abc");
}

TEST_F(InputBarTest, ScrolledPasswordStaysMasked) {
    ASSERT_EQ(OpenField("0", "1"), 0);
    Type("secret-password");
    EXPECT_EQ(Field(), "**********");
    InputKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(Field(), "**********");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "secret-passwor");
}

TEST_F(InputBarTest, EnterOnAnEmptyFieldSendsNothingAndCloses) {
    ASSERT_EQ(OpenField("1", "0"), 0);
    InputKeyFunction(10);
    EXPECT_EQ(g_iUpdateCalls, 0);
    EXPECT_EQ(g_iReturnCalls, 1);
    EXPECT_EQ(gs_stInputCtrl.pInputWin, nullptr);
    EXPECT_EQ(gs_stInputCtrl.pfnInputUpdate, nullptr);
    EXPECT_EQ(WinText(sg_Screen.InfoWin, 0, 0, 10), "          ");
}

TEST_F(InputBarTest, InitialTextStaysOnScreenAndOnlyTheTypedTextIsPassed) {
    ASSERT_EQ(OpenField("1", "0", tVstr{"####"}), 0);
    EXPECT_EQ(Field(), "####      ");
    EXPECT_EQ(gs_stInputCtrl.iInputNum, 0);
    Type("8080");
    EXPECT_EQ(Field(), "####8080  ");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "8080");
}

TEST_F(InputBarTest, InitialTextLeavesLessRoomInALimitedField) {
    ASSERT_EQ(OpenField("1", "0", tVstr{"####"}), 0);
    Type("12345678");
    EXPECT_EQ(Field(), "####123456");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "123456");
}

TEST_F(InputBarTest, InitialTextLongerThanTheFieldIsCut) {
    ASSERT_EQ(OpenField("1", "0", tVstr{"0123456789ABC"}), 0);
    EXPECT_EQ(Field(), "0123456789");
    EXPECT_EQ(WinText(sg_Screen.ContentWin, 2, 15, 3), "   ");
    Type("x");  // the field is full
    InputKeyFunction(10);
    EXPECT_EQ(g_iUpdateCalls, 0);
}

TEST_F(InputBarTest, ScrollingAfterAnInitialTextFollowsTheTypedText) {
    ASSERT_EQ(OpenField("0", "0", tVstr{"####"}), 0);
    Type("abcdefg");
    EXPECT_EQ(Field(), "abcdefg   ");
    Type("hijkl");
    EXPECT_EQ(Field(), "cdefghijkl");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "abcdefghijkl");
}

TEST_F(InputBarTest, ThreeArgumentsAreRefused) {
    tVstr vArgv = {UpdateArg(), "0", "1"};
    DRAW_PARAMETER r = {5, 2, 10, 1};
    EXPECT_EQ(EnterInputCtrlBar(tVstr(), vArgv, &r, RecordReturn, sg_Screen.ContentWin), -1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
    EXPECT_EQ(gs_stInputCtrl.pInputWin, nullptr);
}

TEST_F(InputBarTest, MissingRectangleReturnOrUpdateFunctionIsRefused) {
    tVstr vArgv = {UpdateArg(), "0", "1", "0"};
    DRAW_PARAMETER r = {5, 2, 10, 1};
    EXPECT_EQ(EnterInputCtrlBar(tVstr(), vArgv, nullptr, RecordReturn, sg_Screen.ContentWin), -1);
    EXPECT_EQ(EnterInputCtrlBar(tVstr(), vArgv, &r, nullptr, sg_Screen.ContentWin), -1);
    tVstr vNoUpdate = {"0", "0", "1", "0"};
    EXPECT_EQ(EnterInputCtrlBar(tVstr(), vNoUpdate, &r, RecordReturn, sg_Screen.ContentWin), -1);
    tVstr vNotNumber = {"none", "0", "1", "0"};
    EXPECT_EQ(EnterInputCtrlBar(tVstr(), vNotNumber, &r, RecordReturn, sg_Screen.ContentWin), -1);
    EXPECT_EQ(EnterInputCtrlBar(tVstr(), vArgv, &r, RecordReturn, nullptr), -1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
    EXPECT_EQ(gs_stInputCtrl.pfnInputUpdate, nullptr);
}

TEST_F(InputBarTest, EscClosesWithoutChange) {
    ASSERT_EQ(OpenField("1", "0"), 0);
    Type("abc");
    InputKeyFunction(27);
    EXPECT_EQ(g_iUpdateCalls, 0);
    EXPECT_EQ(g_iReturnCalls, 1);
    EXPECT_EQ(gs_stInputCtrl.pInputWin, nullptr);
    EXPECT_EQ(gs_stInputCtrl.iInputNum, 0);
}

TEST_F(InputBarTest, OtherKeysAreIgnored) {
    ASSERT_EQ(OpenField("1", "0"), 0);
    for (int k :
         {KEY_LEFT, KEY_RIGHT, KEY_UP, KEY_DOWN, KEY_DC, 9, KEY_F(2), KEY_F(9), 127, 200, 31})
        InputKeyFunction(k);
    EXPECT_EQ(gs_stInputCtrl.iInputNum, 0);
    EXPECT_EQ(Field(), "          ");
    Type(" ~");
    EXPECT_EQ(Field(), " ~        ");
}

TEST_F(InputBarTest, ResultTextFollowsTheWaitText) {
    g_iUpdateResult = 2;
    ASSERT_EQ(OpenField("1", "0"), 0);
    Type("42");
    InputKeyFunction(10);
    EXPECT_EQ(g_strInfoDuringUpdate, "Excuting command, please wait...");
    EXPECT_EQ(WinText(sg_Screen.InfoWin, 0, 0, 14), "Invalid value.");
    EXPECT_EQ(g_iReturnCalls, 1);
}

TEST_F(InputBarTest, OpaqueArgumentIsPassedAndOptional) {
    int iTarget = 0;
    tVstr vArgv = {UpdateArg(), "0", "1", "0", PtrToArg(&iTarget)};
    DRAW_PARAMETER r = {5, 2, 10, 1};
    ASSERT_EQ(EnterInputCtrlBar(tVstr(), vArgv, &r, RecordReturn, sg_Screen.ContentWin), 0);
    Type("1");
    InputKeyFunction(10);
    EXPECT_EQ(g_pUpdateArg, &iTarget);
    ASSERT_EQ(OpenField("1", "0"), 0);
    Type("1");
    InputKeyFunction(10);
    EXPECT_EQ(g_pUpdateArg, nullptr);
}

TEST_F(InputBarTest, BoxedWindowHasItsFieldInsideTheBox) {
    tVstr vArgv = {UpdateArg(), "1", "1", "0"};
    DRAW_PARAMETER r = {20, 5, 7, 4};  // field 5 x 2
    ASSERT_EQ(EnterInputCtrlBar(tVstr(), vArgv, &r, RecordReturn, nullptr), 0);
    WINDOW* w = gs_stInputCtrl.pInputWin;
    ASSERT_NE(w, nullptr);
    EXPECT_NE(w, sg_Screen.ContentWin);
    EXPECT_EQ(getbegx(w), 20);
    EXPECT_EQ(getbegy(w), 5);
    EXPECT_EQ(getmaxx(w), 7);
    EXPECT_EQ(getmaxy(w), 4);
    EXPECT_TRUE(is_keypad(w));
    EXPECT_EQ(mvwinch(w, 0, 0) & A_CHARTEXT, ACS_ULCORNER & A_CHARTEXT);
    EXPECT_EQ(sg_Screen.CurWin, w);
    EXPECT_EQ(gs_stInputCtrl.iWidth, 5);
    EXPECT_EQ(gs_stInputCtrl.iHeight, 2);
    Type("abcdefghijk");
    EXPECT_EQ(WinText(w, 1, 1, 5), "abcde");
    EXPECT_EQ(WinText(w, 2, 1, 5), "fghij");
    InputKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(WinText(w, 2, 1, 5), "fghi ");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "abcdefghi");
    EXPECT_EQ(gs_stInputCtrl.pInputWin, nullptr);
}

TEST_F(InputBarTest, BoxedWindowBackspaceWrapsToTheLineAbove) {
    tVstr vArgv = {UpdateArg(), "1", "1", "0"};
    DRAW_PARAMETER r = {20, 5, 7, 4};
    ASSERT_EQ(EnterInputCtrlBar(tVstr(), vArgv, &r, RecordReturn, nullptr), 0);
    WINDOW* w = gs_stInputCtrl.pInputWin;
    Type("abcdef");
    InputKeyFunction(KEY_BACKSPACE);
    InputKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(WinText(w, 1, 1, 5), "abcd ");
    EXPECT_EQ(WinText(w, 2, 1, 5), "     ");
    EXPECT_EQ(gs_stInputCtrl.x, 5);
    EXPECT_EQ(gs_stInputCtrl.y, 1);
    InputKeyFunction(27);
}

TEST_F(InputBarTest, BoxedWindowOfTwoColumnsOrLinesIsRefused) {
    tVstr vArgv = {UpdateArg(), "1", "1", "0"};
    DRAW_PARAMETER rNarrow = {20, 5, 2, 4};
    DRAW_PARAMETER rLow = {20, 5, 7, 2};
    EXPECT_EQ(EnterInputCtrlBar(tVstr(), vArgv, &rNarrow, RecordReturn, nullptr), -1);
    EXPECT_EQ(EnterInputCtrlBar(tVstr(), vArgv, &rLow, RecordReturn, nullptr), -1);
    EXPECT_EQ(gs_stInputCtrl.pfnInputUpdate, nullptr);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
}

TEST_F(InputBarTest, AtMost1024CharactersAreKept) {
    ASSERT_EQ(OpenField("0", "0"), 0);
    Type(std::string(1030, 'x'));
    EXPECT_EQ(gs_stInputCtrl.iInputNum, 1024);
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, std::string(1024, 'x'));
}

TEST_F(InputBarTest, KeysAreIgnoredWhileClosed) {
    InputKeyFunction('a');
    InputKeyFunction(10);
    InputKeyFunction(27);
    EXPECT_EQ(g_iUpdateCalls, 0);
    EXPECT_EQ(g_iReturnCalls, 0);
}

TEST_F(InputBarTest, ParameterErrorIsLogged) {
    char szDir[] = "/tmp/nvinput.XXXXXX";
    ASSERT_NE(mkdtemp(szDir), nullptr);
    std::string strLog = std::string(szDir) + "/nvui.log";
    snprintf(pg_Obj->szLogFileName, sizeof(pg_Obj->szLogFileName), "%s", strLog.c_str());
    pg_Obj->c_LOG_Level = 4;
    tVstr vArgv = {UpdateArg(), "0", "1"};
    DRAW_PARAMETER r = {5, 2, 10, 1};
    EnterInputCtrlBar(tVstr(), vArgv, &r, RecordReturn, sg_Screen.ContentWin);
    pg_Obj->c_LOG_Level = 0;
    std::ifstream in(strLog);
    std::stringstream ss;
    ss << in.rdbuf();
    EXPECT_NE(ss.str().find("Input ctrl para error:3:1:1"), std::string::npos) << ss.str();
    remove(strLog.c_str());
    rmdir(szDir);
}

// ---- The content view opens the bar on an input cell, in place.

CONTENT_DATA* InputPage(int iMaxWidth, const tVstr& vArgv) {
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
    row.pstSection[0].strSecName = "Port";
    row.pstSection[0].enCtrlType = EN_NONE_CONTROL;
    row.pstSection[1].iMaxWidth = iMaxWidth;
    row.pstSection[1].strSecName = "8080";
    row.pstSection[1].enCtrlType = EN_INPUT_CONTROL;
    row.pstSection[1].vstrCtrlArgv = vArgv;
    return pPage;
}

TEST_F(InputBarTest, ContentModifyOpensTheBarOnTheCellWithItsWidth) {
    ASSERT_EQ(EnterContent(InputPage(12, tVstr{UpdateArg(), "0", "1", "0"})), 0);
    // Widths 4 and 12: gap (80 - 16) / 3 = 21; one row in 18 lines on line 8.
    ASSERT_EQ(sg_ContentInfo.iFocusCol, 1);
    ASSERT_EQ(ContentModify(&sg_ContentInfo, RecordReturn), 0);
    EXPECT_EQ(gs_stInputCtrl.pInputWin, sg_Screen.ContentWin);
    EXPECT_EQ(gs_stInputCtrl.iStartX, 46);
    EXPECT_EQ(gs_stInputCtrl.iStartY, 8);
    EXPECT_EQ(gs_stInputCtrl.iWidth, 12);
    EXPECT_EQ(gs_stInputCtrl.iHeight, 1);
    EXPECT_EQ(WinText(sg_Screen.ContentWin, 8, 46, 12), std::string(12, ' '));
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, InputKeyFunction);
    Type("9090");
    InputKeyFunction(10);
    EXPECT_EQ(g_strUpdateText, "9090");
    EXPECT_EQ(g_iReturnCalls, 1);
}

TEST_F(InputBarTest, ContentModifyUsesTheColumnWidthWithoutAWidthOfItsOwn) {
    ASSERT_EQ(EnterContent(InputPage(0, tVstr{UpdateArg(), "0", "1", "0"})), 0);
    ASSERT_EQ(ContentModify(&sg_ContentInfo, RecordReturn), 0);
    EXPECT_EQ(gs_stInputCtrl.iWidth, 4);
    // Widths 4 and 4: gap (80 - 8) / 3 = 24.
    EXPECT_EQ(gs_stInputCtrl.iStartX, 52);
    Type("123456");
    EXPECT_EQ(gs_stInputCtrl.iInputNum, 4);
}

TEST_F(InputBarTest, EnterOnTheCellThenEscGivesThePageTheKeyboardBack) {
    ASSERT_EQ(EnterContent(InputPage(12, tVstr{UpdateArg(), "0", "1", "0"})), 0);
    RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
    ContentKeyFunc(10);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 0);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, InputKeyFunction);
    InputKeyFunction(27);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
    EXPECT_EQ(WinText(sg_Screen.ContentWin, 8, 46, 4), "8080");
}

TEST_F(InputBarTest, ContentModifyGivesTheBarsFailure) {
    ASSERT_EQ(EnterContent(InputPage(12, tVstr{UpdateArg(), "0", "1"})), 0);
    EXPECT_EQ(ContentModify(&sg_ContentInfo, RecordReturn), -1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
}

}  // namespace
