// The list bar on an in-memory curses screen (output to /dev/null): paging
// and the highlight, deleting, add mode with its Backspace rule, F9 and the
// joined text with its size limit, Esc, the refusals, and the content view
// opening it on a list cell.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

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
std::vector<std::string> g_vEvents;

// Reads cells without moving the window's cursor, which add mode types at.
chtype CellAt(WINDOW* w, int row, int col) {
    int y = getcury(w), x = getcurx(w);
    chtype ch = mvwinch(w, row, col);
    wmove(w, y, x);
    return ch;
}

std::string WinText(WINDOW* w, int row, int col, int len) {
    std::string s;
    for (int c = col; c < col + len; ++c)
        s += static_cast<char>(CellAt(w, row, c) & A_CHARTEXT);
    return s;
}

int RecordUpdate(char* pcText, void* arg) {
    ++g_iUpdateCalls;
    g_strUpdateText = pcText;
    g_pUpdateArg = arg;
    g_strInfoDuringUpdate = WinText(sg_Screen.InfoWin, 0, 0, 32);
    g_vEvents.push_back("update");
    return g_iUpdateResult;
}

void RecordReturn() {
    ++g_iReturnCalls;
    g_vEvents.push_back("return");
}

void OtherKeyFunc(int) {}

std::string UpdateArg() {
    return PtrToArg(reinterpret_cast<const void*>(&RecordUpdate));
}

class ListBarTest : public ::testing::Test {
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
        g_strUpdateText = "(not sent)";
        g_pUpdateArg = reinterpret_cast<void*>(1);
        g_iUpdateResult = 7;
        g_strInfoDuringUpdate.clear();
        g_iReturnCalls = 0;
        g_vEvents.clear();
        ClearInformation();
        sg_Screen.iCurPromptIdx = PROMPT_MAX;
        RegistKeyFunc(OtherKeyFunc, nullptr);
    }
    void TearDown() override {
        if (gs_stListCtrl.pListWin != nullptr)
            ListKeyFunction(27);
        if (sg_ContentInfo.pstContent != nullptr) {
            FreeContent(sg_ContentInfo.pstContent);
            memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
        }
    }
    static tVstr Items(int n) {
        tVstr v;
        for (int i = 0; i < n; ++i)
            v.push_back("item" + std::to_string(i));
        return v;
    }
    // A window of 60 x 8 at column 10, line 6: inner 58 x 6, six items a page.
    static int Open(const tVstr& vItems) {
        DRAW_PARAMETER r = {10, 6, 60, 8};
        return EnterListCtrlBar(vItems, tVstr{UpdateArg()}, &r, RecordReturn);
    }
    static WINDOW* Win() { return gs_stListCtrl.pListWin; }
    // The text on inner row r (0-based), trailing blanks cut.
    static std::string Row(int r) {
        std::string s = WinText(Win(), 1 + r, 1, gs_stListCtrl.iWidth);
        size_t e = s.find_last_not_of(' ');
        return e == std::string::npos ? "" : s.substr(0, e + 1);
    }
    static bool Reverse(int r) { return (CellAt(Win(), 1 + r, 1) & A_REVERSE) != 0; }
    // The inner rows drawn in reverse video.
    static std::vector<int> ReverseRows() {
        std::vector<int> v;
        for (int r = 0; r < gs_stListCtrl.iHeight; ++r)
            if (Reverse(r))
                v.push_back(r);
        return v;
    }
    static void Type(const std::string& s) {
        for (char ch : s)
            ListKeyFunction(static_cast<unsigned char>(ch));
    }
    static void Keys(std::initializer_list<int> keys) {
        for (int k : keys)
            ListKeyFunction(k);
    }
    static SCREEN* s_screen;
    static FILE* s_out;
    static FILE* s_in;
};

SCREEN* ListBarTest::s_screen;
FILE* ListBarTest::s_out;
FILE* ListBarTest::s_in;

TEST_F(ListBarTest, OpensABoxWithPageZeroAndTheFirstItemHighlighted) {
    ASSERT_EQ(Open(Items(8)), 0);
    WINDOW* w = Win();
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(getbegx(w), 10);
    EXPECT_EQ(getbegy(w), 6);
    EXPECT_EQ(getmaxx(w), 60);
    EXPECT_EQ(getmaxy(w), 8);
    EXPECT_TRUE(is_keypad(w));
    EXPECT_EQ(getbkgd(w) & A_COLOR, COLOR_PAIR(6));
    EXPECT_EQ(mvwinch(w, 0, 0) & A_CHARTEXT, ACS_ULCORNER & A_CHARTEXT);
    EXPECT_EQ(gs_stListCtrl.iStartX, 1);
    EXPECT_EQ(gs_stListCtrl.iStartY, 1);
    EXPECT_EQ(gs_stListCtrl.iWidth, 58);
    EXPECT_EQ(gs_stListCtrl.iHeight, 6);
    for (int r = 0; r < 6; ++r)
        EXPECT_EQ(Row(r), "item" + std::to_string(r));
    EXPECT_EQ(ReverseRows(), std::vector<int>{0});
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 0);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ListKeyFunction);
    EXPECT_EQ(sg_Screen.CurWin, w);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_LIST);
}

TEST_F(ListBarTest, EmptyListOpensEmptyAndF9SendsAnEmptyText) {
    ASSERT_EQ(Open(tVstr()), 0);
    for (int r = 0; r < 6; ++r)
        EXPECT_EQ(Row(r), "");
    EXPECT_TRUE(ReverseRows().empty());
    Keys({KEY_DOWN, KEY_UP, KEY_F(3), KEY_NPAGE, KEY_PPAGE});
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 0);
    EXPECT_TRUE(ReverseRows().empty());
    ListKeyFunction(KEY_F(2));
    EXPECT_EQ(getcury(Win()), 1);
    EXPECT_EQ(getcurx(Win()), 1);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_iUpdateCalls, 1);
    EXPECT_EQ(g_strUpdateText, "");
    EXPECT_EQ(g_pUpdateArg, nullptr);
}

TEST_F(ListBarTest, DownAndUpMoveTheHighlightWithinAPage) {
    ASSERT_EQ(Open(Items(8)), 0);
    Keys({KEY_DOWN, KEY_DOWN});
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 2);
    EXPECT_EQ(ReverseRows(), std::vector<int>{2});
    ListKeyFunction(KEY_UP);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 1);
    EXPECT_EQ(ReverseRows(), std::vector<int>{1});
    Keys({KEY_UP, KEY_UP});
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 0);
    EXPECT_EQ(ReverseRows(), std::vector<int>{0});
}

TEST_F(ListBarTest, DownAndUpCrossPages) {
    ASSERT_EQ(Open(Items(8)), 0);
    for (int i = 0; i < 6; ++i)
        ListKeyFunction(KEY_DOWN);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 6);
    EXPECT_EQ(Row(0), "item6");
    EXPECT_EQ(Row(1), "item7");
    EXPECT_EQ(Row(2), "");
    EXPECT_EQ(ReverseRows(), std::vector<int>{0});
    Keys({KEY_DOWN, KEY_DOWN});  // the last item: the second Down does nothing
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 7);
    EXPECT_EQ(ReverseRows(), std::vector<int>{1});
    Keys({KEY_UP, KEY_UP});
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 5);
    EXPECT_EQ(Row(0), "item0");
    EXPECT_EQ(ReverseRows(), std::vector<int>{5});
}

TEST_F(ListBarTest, PageDownAndPageUp) {
    ASSERT_EQ(Open(Items(8)), 0);
    ListKeyFunction(KEY_NPAGE);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 6);
    EXPECT_EQ(Row(0), "item6");
    EXPECT_EQ(ReverseRows(), std::vector<int>{0});
    ListKeyFunction(KEY_NPAGE);  // page 2 would start past the end
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 6);
    EXPECT_EQ(Row(0), "item6");
    ListKeyFunction(KEY_PPAGE);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 5);
    EXPECT_EQ(Row(0), "item0");
    EXPECT_EQ(ReverseRows(), std::vector<int>{5});
    ListKeyFunction(KEY_PPAGE);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 5);
}

TEST_F(ListBarTest, ExactMultipleOfThePageSizeGivesAnEmptyLastPage) {
    ASSERT_EQ(Open(Items(12)), 0);
    ListKeyFunction(KEY_NPAGE);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 6);
    ListKeyFunction(KEY_NPAGE);
    for (int r = 0; r < 6; ++r)
        EXPECT_EQ(Row(r), "");
    EXPECT_TRUE(ReverseRows().empty());
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 6);
}

TEST_F(ListBarTest, F2OnAnExactMultipleTypesOnTheFirstRowOfAnEmptyPage) {
    ASSERT_EQ(Open(Items(12)), 0);
    ListKeyFunction(KEY_F(2));
    for (int r = 0; r < 6; ++r)
        EXPECT_EQ(Row(r), "");
    EXPECT_EQ(getcury(Win()), 1);
    EXPECT_EQ(getcurx(Win()), 1);
    Type("new");
    EXPECT_EQ(Row(0), "new");
    ListKeyFunction(10);
    ListKeyFunction(KEY_F(9));
    std::string strExpect;
    for (const std::string& strItem : Items(12))
        strExpect += strItem + "\n";
    EXPECT_EQ(g_strUpdateText, strExpect + "new\n");
}

TEST_F(ListBarTest, F2OnTheFocusedPageKeepsItAndTypesBelowTheLastItem) {
    ASSERT_EQ(Open(Items(3)), 0);
    ListKeyFunction(KEY_DOWN);
    ListKeyFunction(KEY_F(2));
    EXPECT_EQ(Row(0), "item0");
    EXPECT_EQ(ReverseRows(), std::vector<int>{1});  // the highlight stays
    EXPECT_EQ(getcury(Win()), 4);
    EXPECT_EQ(getcurx(Win()), 1);
    Type("xy");
    EXPECT_EQ(Row(3), "xy");
}

TEST_F(ListBarTest, DeletingTheLastItemFocusesTheNewLast) {
    ASSERT_EQ(Open(Items(3)), 0);
    Keys({KEY_DOWN, KEY_DOWN, KEY_F(3)});
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 1);
    EXPECT_EQ(Row(0), "item0");
    EXPECT_EQ(Row(1), "item1");
    EXPECT_EQ(Row(2), "");
    EXPECT_EQ(ReverseRows(), std::vector<int>{1});
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "item0\nitem1\n");
}

TEST_F(ListBarTest, DeletingInTheMiddleKeepsTheIndex) {
    ASSERT_EQ(Open(Items(3)), 0);
    Keys({KEY_DOWN, KEY_F(3)});
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 1);
    EXPECT_EQ(Row(1), "item2");
    EXPECT_EQ(ReverseRows(), std::vector<int>{1});
}

TEST_F(ListBarTest, DeletingTheOnlyItemLeavesFocusZeroAndAnEmptyWindow) {
    ASSERT_EQ(Open(tVstr{"only"}), 0);
    ListKeyFunction(KEY_F(3));
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 0);
    EXPECT_EQ(Row(0), "");
    EXPECT_TRUE(ReverseRows().empty());
    ListKeyFunction(KEY_F(3));
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "");
}

TEST_F(ListBarTest, DeletingTheFirstItemOfTheLastPageShowsThePageBefore) {
    ASSERT_EQ(Open(Items(7)), 0);
    ListKeyFunction(KEY_NPAGE);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 6);
    ListKeyFunction(KEY_F(3));
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 5);
    EXPECT_EQ(Row(0), "item0");
    EXPECT_EQ(ReverseRows(), std::vector<int>{5});
}

TEST_F(ListBarTest, EditsAreMadeOnACopy) {
    tVstr vItems = Items(3);
    ASSERT_EQ(Open(vItems), 0);
    ListKeyFunction(KEY_F(3));
    ListKeyFunction(27);
    EXPECT_EQ(vItems, Items(3));
}

TEST_F(ListBarTest, BackspaceThenEnterKeepsTheRemovedCharacter) {
    ASSERT_EQ(Open(tVstr{"first"}), 0);
    ListKeyFunction(KEY_F(2));
    Type("abc");
    ListKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(Row(1), "ab");
    EXPECT_EQ(getcurx(Win()), 3);
    EXPECT_EQ(gs_stListCtrl.iInputNum, 2);
    ListKeyFunction(10);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "first\nabc\n");
}

TEST_F(ListBarTest, BackspaceThenATypedCharacterReplacesTheRemovedOne) {
    ASSERT_EQ(Open(tVstr()), 0);
    ListKeyFunction(KEY_F(2));
    Type("abc");
    ListKeyFunction(8);
    Type("d");
    EXPECT_EQ(Row(0), "abd");
    ListKeyFunction(10);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "abd\n");
}

TEST_F(ListBarTest, BackspaceThenF9KeepsTheRemovedCharacterToo) {
    ASSERT_EQ(Open(tVstr()), 0);
    ListKeyFunction(KEY_F(2));
    Type("xyz");
    ListKeyFunction(KEY_BACKSPACE);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "xyz\n");
}

TEST_F(ListBarTest, TwoBackspacesTakeOffOneCharacterOfTheLine) {
    ASSERT_EQ(Open(tVstr()), 0);
    ListKeyFunction(KEY_F(2));
    Type("xyz");
    Keys({KEY_BACKSPACE, KEY_BACKSPACE});
    EXPECT_EQ(Row(0), "x");
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "xy\n");
}

TEST_F(ListBarTest, BackspaceWithNothingTypedDoesNothing) {
    ASSERT_EQ(Open(tVstr{"a"}), 0);
    ListKeyFunction(KEY_F(2));
    ListKeyFunction(KEY_BACKSPACE);
    EXPECT_EQ(getcurx(Win()), 1);
    EXPECT_EQ(gs_stListCtrl.iInputNum, 0);
}

TEST_F(ListBarTest, EnterAddsLinesAndTypingGoesOnOnTheNextRow) {
    ASSERT_EQ(Open(tVstr{"a"}), 0);
    ListKeyFunction(KEY_F(2));
    Type("b");
    ListKeyFunction(10);
    EXPECT_EQ(Row(1), "b");  // stays on screen as typed
    EXPECT_EQ(getcury(Win()), 3);
    EXPECT_EQ(getcurx(Win()), 1);
    ListKeyFunction(10);  // nothing typed: nothing added
    EXPECT_EQ(getcury(Win()), 3);
    Type("c");
    ListKeyFunction(10);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "a\nb\nc\n");
}

TEST_F(ListBarTest, EnterOnTheLastRowClearsTheAreaAndTypesOnTheFirstRow) {
    ASSERT_EQ(Open(Items(5)), 0);
    ListKeyFunction(KEY_F(2));
    EXPECT_EQ(getcury(Win()), 6);
    Type("x");
    ListKeyFunction(10);
    for (int r = 0; r < 6; ++r)
        EXPECT_EQ(Row(r), "");
    EXPECT_EQ(getcury(Win()), 1);
    EXPECT_EQ(getcurx(Win()), 1);
    Type("y");
    EXPECT_EQ(Row(0), "y");
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "item0\nitem1\nitem2\nitem3\nitem4\nx\ny\n");
}

TEST_F(ListBarTest, F9WithoutEnterSendsTheTypedLineLast) {
    ASSERT_EQ(Open(tVstr{"/etc/passwd"}), 0);
    ListKeyFunction(KEY_F(2));
    Type("/etc/shadow");
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_iUpdateCalls, 1);
    EXPECT_EQ(g_strUpdateText, "/etc/passwd\n/etc/shadow\n");
}

TEST_F(ListBarTest, F9InBrowseModeSendsTheListAndCloses) {
    ASSERT_EQ(Open(Items(3)), 0);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "item0\nitem1\nitem2\n");
    EXPECT_EQ(g_pUpdateArg, nullptr);
    EXPECT_EQ(g_strInfoDuringUpdate, "Excuting command, please wait...");
    EXPECT_EQ(WinText(sg_Screen.InfoWin, 0, 0, 8), "Success.");
    EXPECT_EQ(g_vEvents, (std::vector<std::string>{"update", "return"}));
    EXPECT_EQ(Win(), nullptr);
    EXPECT_TRUE(gs_stListCtrl.vstrList.empty());
    EXPECT_EQ(gs_stListCtrl.pfnListUpdate, nullptr);
    EXPECT_EQ(gs_stListCtrl.iHeight, 0);
}

TEST_F(ListBarTest, AFailedUpdateIsShownAndTheBarClosesAllTheSame) {
    g_iUpdateResult = 2;
    ASSERT_EQ(Open(Items(2)), 0);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(WinText(sg_Screen.InfoWin, 0, 0, 14), "Invalid value.");
    EXPECT_EQ(g_iReturnCalls, 1);
    EXPECT_EQ(Win(), nullptr);
}

TEST_F(ListBarTest, EscInAddModeDiscardsEverythingAndCloses) {
    ASSERT_EQ(Open(Items(3)), 0);
    ListKeyFunction(KEY_F(3));
    ListKeyFunction(KEY_F(2));
    Type("typed");
    ListKeyFunction(10);
    Type("more");
    ListKeyFunction(27);
    EXPECT_EQ(g_iUpdateCalls, 0);
    EXPECT_EQ(g_iReturnCalls, 1);
    EXPECT_EQ(Win(), nullptr);
    // The next bar starts in browse mode with the caller's list.
    ASSERT_EQ(Open(Items(3)), 0);
    ListKeyFunction(KEY_DOWN);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 1);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "item0\nitem1\nitem2\n");
}

TEST_F(ListBarTest, ANewlineInAnItemIsShownAndSentAsABlank) {
    ASSERT_EQ(Open(tVstr{"two\nparts", "plain"}), 0);
    EXPECT_EQ(Row(0), "two parts");
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "two parts\nplain\n");
}

TEST_F(ListBarTest, ANewlineOnAPageNeverShownIsSentAsABlankToo) {
    tVstr v;
    for (int i = 0; i < 40; ++i) v.push_back("item" + std::to_string(i));
    v.push_back("late\nitem");
    ASSERT_EQ(Open(v), 0);
    ListKeyFunction(KEY_F(9));
    EXPECT_NE(g_strUpdateText.find("\nlate item\n"), std::string::npos);
    EXPECT_EQ(g_strUpdateText.find("late\n"), std::string::npos);
}

TEST_F(ListBarTest, AListPastTheSendBufferIsSentWithoutItsTail) {
    tVstr v = {std::string(40000, 'a'), std::string(40000, 'b'), std::string(40000, 'c'), "d"};
    ASSERT_EQ(Open(v), 0);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText.size(), 80002u);
    EXPECT_EQ(g_strUpdateText, v[0] + "\n" + v[1] + "\n");
}

TEST_F(ListBarTest, AnItemFillingTheSendBufferToItsLastByteIsSent) {
    tVstr v = {std::string(102399, 'p'), "q"};
    ASSERT_EQ(Open(v), 0);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText.size(), 102400u);
    EXPECT_EQ(g_strUpdateText, v[0] + "\n");
}

TEST_F(ListBarTest, AnItemOfTheSendBuffersSizeIsDropped) {
    ASSERT_EQ(Open(tVstr{std::string(102400, 'p'), "q"}), 0);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "");
}

TEST_F(ListBarTest, LongItemsAreCutOnScreenButSentWhole) {
    std::string strLong(70, 'L');
    ASSERT_EQ(Open(tVstr{strLong}), 0);
    EXPECT_EQ(Row(0), std::string(58, 'L'));
    EXPECT_EQ(CellAt(Win(), 1, 59) & A_CHARTEXT, ACS_VLINE & A_CHARTEXT);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, strLong + "\n");
}

TEST_F(ListBarTest, ATypedLineStopsAtTheInnerWidth) {
    DRAW_PARAMETER r = {10, 6, 7, 5};  // inner 5 x 3
    ASSERT_EQ(EnterListCtrlBar(tVstr(), tVstr{UpdateArg()}, &r, RecordReturn), 0);
    ListKeyFunction(KEY_F(2));
    Type("abcdefg");
    EXPECT_EQ(gs_stListCtrl.iInputNum, 5);
    EXPECT_EQ(Row(0), "abcde");
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "abcde\n");
}

TEST_F(ListBarTest, AddModeIgnoresMovesButTypesOtherKeysAsTheirLowByte) {
    ASSERT_EQ(Open(Items(8)), 0);
    ListKeyFunction(KEY_F(2));
    Keys({KEY_DOWN, KEY_UP, KEY_NPAGE, KEY_PPAGE, KEY_F(2), KEY_F(3)});
    EXPECT_EQ(gs_stListCtrl.iInputNum, 0);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 0);
    EXPECT_EQ(gs_stListCtrl.vstrList.size(), 8u);
    Type("a");
    ListKeyFunction(KEY_LEFT);  // 0x104
    Type("b");
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText.substr(g_strUpdateText.size() - 4), std::string("a\x04") + "b\n");
}

TEST_F(ListBarTest, BrowseModeIgnoresEnterBackspaceAndOtherKeys) {
    ASSERT_EQ(Open(Items(2)), 0);
    Keys({10, KEY_BACKSPACE, 8, 'x', KEY_LEFT, KEY_F(4)});
    EXPECT_EQ(gs_stListCtrl.iInputNum, 0);
    EXPECT_EQ(gs_stListCtrl.vstrList.size(), 2u);
    EXPECT_EQ(ReverseRows(), std::vector<int>{0});
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "item0\nitem1\n");
}

TEST_F(ListBarTest, ShowListPageAndItemBounds) {
    ASSERT_EQ(Open(Items(8)), 0);
    EXPECT_EQ(ShowListPage(-1), -1);
    EXPECT_EQ(ShowListPage(2), -1);
    EXPECT_EQ(ShowListPage(1), 0);
    EXPECT_EQ(Row(0), "item6");
    EXPECT_EQ(ShowListItem(8, SHOW_FOUCS_STR), -1);
    EXPECT_EQ(ShowListItem(7, SHOW_FOUCS_STR), 0);
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 7);
    EXPECT_EQ(ReverseRows(), std::vector<int>{1});
    EXPECT_EQ(ClearListWindow(), 0);
    EXPECT_EQ(Row(0), "");
    EXPECT_EQ(CellAt(Win(), 0, 1) & A_CHARTEXT, ACS_HLINE & A_CHARTEXT);
}

TEST_F(ListBarTest, AFirstArgumentThatIsZeroOrNotANumberCannotOpenIt) {
    DRAW_PARAMETER r = {10, 6, 60, 8};
    EXPECT_EQ(EnterListCtrlBar(Items(2), tVstr{"0"}, &r, RecordReturn), -1);
    EXPECT_EQ(EnterListCtrlBar(Items(2), tVstr{"update"}, &r, RecordReturn), -1);
    EXPECT_EQ(Win(), nullptr);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
}

TEST_F(ListBarTest, ParameterAndSizeRefusals) {
    DRAW_PARAMETER r = {10, 6, 60, 8};
    EXPECT_EQ(EnterListCtrlBar(Items(2), tVstr(), nullptr, RecordReturn), -1);
    // Either test alone goes on, and the later checks refuse.
    EXPECT_EQ(EnterListCtrlBar(Items(2), tVstr(), &r, RecordReturn), -1);
    EXPECT_EQ(EnterListCtrlBar(Items(2), tVstr{UpdateArg()}, nullptr, RecordReturn), -1);
    DRAW_PARAMETER rLow = {10, 6, 60, 2};
    DRAW_PARAMETER rNarrow = {10, 6, 2, 8};
    EXPECT_EQ(EnterListCtrlBar(Items(2), tVstr{UpdateArg()}, &rLow, RecordReturn), -1);
    EXPECT_EQ(EnterListCtrlBar(Items(2), tVstr{UpdateArg()}, &rNarrow, RecordReturn), -1);
    EXPECT_EQ(Win(), nullptr);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
    DRAW_PARAMETER rSmallest = {10, 6, 3, 3};  // inner 1 x 1
    ASSERT_EQ(EnterListCtrlBar(Items(2), tVstr{UpdateArg()}, &rSmallest, RecordReturn), 0);
    EXPECT_EQ(Row(0), "i");
    ListKeyFunction(KEY_DOWN);
    EXPECT_EQ(Row(0), "i");
    EXPECT_EQ(gs_stListCtrl.iFocusItemNum, 1);
}

TEST_F(ListBarTest, WithoutAReturnFunctionItStillCloses) {
    DRAW_PARAMETER r = {10, 6, 60, 8};
    ASSERT_EQ(EnterListCtrlBar(Items(1), tVstr{UpdateArg()}, &r, nullptr), 0);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_iUpdateCalls, 1);
    EXPECT_EQ(Win(), nullptr);
}

TEST_F(ListBarTest, RecordsAreLogged) {
    char szDir[] = "/tmp/nvlist.XXXXXX";
    ASSERT_NE(mkdtemp(szDir), nullptr);
    std::string strLog = std::string(szDir) + "/nvui.log";
    snprintf(pg_Obj->szLogFileName, sizeof(pg_Obj->szLogFileName), "%s", strLog.c_str());
    pg_Obj->c_LOG_Level = 4;
    EnterListCtrlBar(Items(2), tVstr(), nullptr, RecordReturn);
    DRAW_PARAMETER rLow = {10, 6, 60, 2};
    EnterListCtrlBar(Items(2), tVstr{UpdateArg()}, &rLow, RecordReturn);
    EnterListCtrlBar(Items(2), tVstr{"0"}, &rLow, RecordReturn);
    DRAW_PARAMETER r = {10, 6, 60, 8};
    EnterListCtrlBar(Items(2), tVstr{"0"}, &r, RecordReturn);
    Open(Items(2));
    Keys({KEY_F(3), KEY_F(2), 'z', 10, KEY_F(9)});
    Open(Items(2));
    ListKeyFunction(27);
    pg_Obj->c_LOG_Level = 0;
    std::ifstream in(strLog);
    std::stringstream ss;
    ss << in.rdbuf();
    std::string s = ss.str();
    for (const char* pc : {"list parameter error!0:0", "List draw para error:2:60",
                           "list Para error:list update function is null", "list control init ok!",
                           "list:delete:item0", "list:user input:z", "list:confirm:item1\nz\n",
                           "list: cancel and return!"})
        EXPECT_NE(s.find(pc), std::string::npos) << pc;
    remove(strLog.c_str());
    rmdir(szDir);
}

// ---- The content view opens the bar on a list cell.

CONTENT_DATA* ListPage(const tVstr& vArgv) {
    CONTENT_DATA* pPage = new CONTENT_DATA;
    pPage->pfnRefreshCallFunc = nullptr;
    pPage->iItemNum = 1;
    pPage->pstItem = new CONTENT_ITEM[1];
    CONTENT_ITEM& row = pPage->pstItem[0];
    row.iPromptIndex = PROMPT_CONTENT_LIST;
    row.iHelpInfoIndex = 0;
    row.iSectionNum = 2;
    row.pstSection = new CONTENT_SECTION[2];
    row.pstSection[0].iMaxWidth = 0;
    row.pstSection[0].strSecName = "File list";
    row.pstSection[0].enCtrlType = EN_NONE_CONTROL;
    row.pstSection[1].iMaxWidth = 0;
    row.pstSection[1].strSecName = "[...]";
    row.pstSection[1].enCtrlType = EN_LIST_CONTROL;
    row.pstSection[1].vstrCtrlShowStr = {"/etc/passwd", "/etc/hosts"};
    row.pstSection[1].vstrCtrlArgv = vArgv;
    return pPage;
}

TEST_F(ListBarTest, ContentModifyOpensItOverTheContentWindow) {
    ASSERT_EQ(EnterContent(ListPage(tVstr{UpdateArg()})), 0);
    ASSERT_EQ(ContentModify(&sg_ContentInfo, RecordReturn), 0);
    WINDOW* w = Win();
    ASSERT_NE(w, nullptr);
    // x = 0 + 80 / 8, y = 0 + 3, width 80 * 3 / 4, height 18 - 3.
    EXPECT_EQ(getbegx(w), 10);
    EXPECT_EQ(getbegy(w), 3);
    EXPECT_EQ(getmaxx(w), 60);
    EXPECT_EQ(getmaxy(w), 15);
    EXPECT_EQ(Row(0), "/etc/passwd");
    EXPECT_EQ(Row(1), "/etc/hosts");
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ListKeyFunction);
    ListKeyFunction(KEY_F(9));
    EXPECT_EQ(g_strUpdateText, "/etc/passwd\n/etc/hosts\n");
    EXPECT_EQ(g_iReturnCalls, 1);
}

TEST_F(ListBarTest, EnterOnTheCellThenEscGivesThePageTheKeyboardBack) {
    ASSERT_EQ(EnterContent(ListPage(tVstr{UpdateArg()})), 0);
    RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
    ContentKeyFunc(10);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 0);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ListKeyFunction);
    ListKeyFunction(27);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
    EXPECT_EQ(sg_ContentInfo.pstContent->pstItem[0].pstSection[1].vstrCtrlShowStr.size(), 2u);
}

TEST_F(ListBarTest, ContentModifyGivesTheBarsFailure) {
    ASSERT_EQ(EnterContent(ListPage(tVstr{"0"})), 0);
    EXPECT_EQ(ContentModify(&sg_ContentInfo, RecordReturn), -1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, OtherKeyFunc);
    EXPECT_EQ(Win(), nullptr);
}

TEST_F(ListBarTest, ContentModifyLogsTheOutcome) {
    char szDir[] = "/tmp/nvlist.XXXXXX";
    ASSERT_NE(mkdtemp(szDir), nullptr);
    std::string strLog = std::string(szDir) + "/nvui.log";
    snprintf(pg_Obj->szLogFileName, sizeof(pg_Obj->szLogFileName), "%s", strLog.c_str());
    ASSERT_EQ(EnterContent(ListPage(tVstr{UpdateArg()})), 0);
    pg_Obj->c_LOG_Level = 4;
    ContentModify(&sg_ContentInfo, RecordReturn);
    ListKeyFunction(27);
    ASSERT_EQ(EnterContent(ListPage(tVstr{"0"})), 0);
    ContentModify(&sg_ContentInfo, RecordReturn);
    pg_Obj->c_LOG_Level = 0;
    std::ifstream in(strLog);
    std::stringstream ss;
    ss << in.rdbuf();
    std::string s = ss.str();
    EXPECT_NE(s.find("Enter modify_list success!"), std::string::npos);
    EXPECT_NE(s.find("Enter modify_list failed!"), std::string::npos);
    remove(strLog.c_str());
    rmdir(szDir);
}

}  // namespace
