// The keys of a content page on an in-memory curses screen: entering a page,
// moving the row focus across screen pages and the cell focus between
// editable cells, the function keys, F12 and Esc, and the inert view left by
// a page that cannot be shown.
#include <ctime>
#include <string>
#include <vector>

#include "menu/menu_bar.h"
#include "test_content_screen.h"

namespace nvcontenttest {
namespace {

class ContentKeys : public CursesScreenTest {
protected:
    // Shows a page the way a menu leaf does: the builder's EnterContent, then
    // the menu installs the page's key function.
    void Enter(CONTENT_DATA* pstPage) {
        ASSERT_EQ(EnterContent(pstPage), 0);
        RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
    }
    static void Op(EN_OPERATE enOp, int iTimes = 1) {
        for (int i = 0; i < iTimes; ++i)
            ContentKeyOperating(&sg_ContentInfo, enOp);
    }
    static int Focus() { return sg_ContentInfo.iFocusItem; }
    static int FocusCol() { return sg_ContentInfo.iFocusCol; }
    // The numbered row shown on line y of the content window (column 37).
    static std::string RowOnLine(int y) { return TextAt(Content(), y, 37, 6); }
    // Line y shows row r of a numbered page in the focused look.
    static std::string FocusedOn(int y, int r) {
        char sz[16];
        snprintf(sz, sizeof(sz), "row %02d", r);
        if (RowOnLine(y) != sz)
            return "line " + std::to_string(y) + " shows '" + RowOnLine(y) + "', not " + sz;
        return SpanLooks(Content(), y, 37, 6, 7, false);
    }
    // The numbered rows first.. on lines 0.. and nothing below them.
    static std::string PageShows(int first, int count) {
        for (int y = 0; y < 18; ++y) {
            std::string want;
            if (y < count) {
                char sz[16];
                snprintf(sz, sizeof(sz), "row %02d", first + y);
                want = std::string(37, ' ') + sz;
            }
            if (Line(Content(), y) != want)
                return "line " + std::to_string(y) + " shows '" + Line(Content(), y) + "'";
        }
        return "";
    }
};

TEST_F(ContentKeys, EnteringAPageShowsItWithTheFirstRowFocused) {
    time_t before = time(nullptr);
    Enter(NumberedPage(3));
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1);
    EXPECT_GE(sg_ContentInfo.iRefreshTime, before);
    EXPECT_EQ(sg_ContentInfo.pWin, sg_Screen.ContentWin);
    EXPECT_EQ(sg_ContentInfo.iWindowWidth, 80);
    EXPECT_EQ(sg_ContentInfo.iWindowHeight, 18);
    EXPECT_EQ(Focus(), 0);
    // Three rows spread: lines 3, 7 and 11.
    EXPECT_EQ(FocusedOn(3, 0), "");
    EXPECT_EQ(RowOnLine(7), "row 01");
    EXPECT_EQ(RowOnLine(11), "row 02");
    EXPECT_EQ(PromptText(), pcStrPrompt[PROMPT_CONTENT_NO_MODIFY][LAN_ENGLISH]);
}

TEST_F(ContentKeys, EnteringAnotherPageReplacesTheFirst) {
    Enter(NumberedPage(40));
    Op(OPERATE_PAGEDOWN);
    ASSERT_EQ(Focus(), 18);
    // The first page is freed (the sanitizer build sees to it) and the new
    // one starts at its first row.
    Enter(MakePage({{{Fixed("Label"), Choose("Open")}}}));
    EXPECT_EQ(Focus(), 0);
    EXPECT_EQ(FocusCol(), 1);
    EXPECT_EQ(sg_ContentInfo.iMaxItemNum, 1);
    EXPECT_EQ(Line(Content(), 0), "");
}

TEST_F(ContentKeys, DownAndUpCrossThePageBoundary) {
    Enter(NumberedPage(40));
    Op(OPERATE_DOWN, 17);
    ASSERT_EQ(Focus(), 17);
    EXPECT_EQ(PageShows(0, 18), "");
    EXPECT_EQ(FocusedOn(17, 17), "");
    EXPECT_EQ(SpanLooks(Content(), 16, 37, 6, 2, false), "") << "row 16 still focused";

    Op(OPERATE_DOWN);
    EXPECT_EQ(Focus(), 18);
    EXPECT_EQ(PageShows(18, 18), "");
    EXPECT_EQ(FocusedOn(0, 18), "");
    EXPECT_EQ(CountPair(Content(), 7), 6);

    Op(OPERATE_UP);
    EXPECT_EQ(Focus(), 17);
    EXPECT_EQ(PageShows(0, 18), "");
    EXPECT_EQ(FocusedOn(17, 17), "");
    EXPECT_EQ(CountPair(Content(), 7), 6);
}

TEST_F(ContentKeys, PageDownAndPageUpGoToTheFirstRowOfAPage) {
    Enter(NumberedPage(40));
    Op(OPERATE_PAGEDOWN);
    EXPECT_EQ(Focus(), 18);
    EXPECT_EQ(FocusedOn(0, 18), "");
    Op(OPERATE_DOWN, 17);
    ASSERT_EQ(Focus(), 35);
    ASSERT_EQ(FocusedOn(17, 35), "");
    // Page 2 holds rows 36 to 39.
    Op(OPERATE_PAGEDOWN);
    EXPECT_EQ(Focus(), 36);
    EXPECT_EQ(PageShows(36, 4), "");
    EXPECT_EQ(FocusedOn(0, 36), "");
    // On the last page Page Down does nothing.
    std::vector<chtype> before = Snapshot(Content());
    Op(OPERATE_PAGEDOWN);
    EXPECT_EQ(Focus(), 36);
    EXPECT_EQ(Snapshot(Content()), before);
    // From any row of a page.
    Op(OPERATE_DOWN, 2);
    ASSERT_EQ(Focus(), 38);
    Op(OPERATE_PAGEUP);
    EXPECT_EQ(Focus(), 18);
    EXPECT_EQ(PageShows(18, 18), "");
    EXPECT_EQ(FocusedOn(0, 18), "");
    Op(OPERATE_DOWN, 5);
    Op(OPERATE_PAGEUP);
    EXPECT_EQ(Focus(), 0);
    EXPECT_EQ(PageShows(0, 18), "");
    EXPECT_EQ(FocusedOn(0, 0), "");
    // On the first page Page Up does nothing, even from a later row.
    Op(OPERATE_DOWN, 4);
    before = Snapshot(Content());
    Op(OPERATE_PAGEUP);
    EXPECT_EQ(Focus(), 4);
    EXPECT_EQ(Snapshot(Content()), before);
}

TEST_F(ContentKeys, TheFocusDoesNotWrap) {
    Enter(NumberedPage(40));
    std::vector<chtype> before = Snapshot(Content());
    Op(OPERATE_UP);
    EXPECT_EQ(Focus(), 0);
    EXPECT_EQ(Snapshot(Content()), before);
    Op(OPERATE_PAGEDOWN, 2);
    Op(OPERATE_DOWN, 3);
    ASSERT_EQ(Focus(), 39);
    ASSERT_EQ(FocusedOn(3, 39), "");
    before = Snapshot(Content());
    Op(OPERATE_DOWN);
    EXPECT_EQ(Focus(), 39);
    EXPECT_EQ(Snapshot(Content()), before);

    // Nor on a page of spread rows.
    Enter(NumberedPage(3));
    Op(OPERATE_DOWN, 5);
    EXPECT_EQ(Focus(), 2);
    EXPECT_EQ(FocusedOn(11, 2), "");
    Op(OPERATE_UP, 5);
    EXPECT_EQ(Focus(), 0);
    EXPECT_EQ(FocusedOn(3, 0), "");
}

TEST_F(ContentKeys, LeftAndRightMoveBetweenAdjacentEditableCells) {
    Enter(MakePage({{{Fixed("Label"), Choose("AAAA"), Choose("BBBB")}}}));
    int y = ContentRowLine(&sg_ContentInfo, 0);
    int xa = ContentColX(&sg_ContentInfo, 1), xb = ContentColX(&sg_ContentInfo, 2);
    ASSERT_EQ(FocusCol(), 1);
    Op(OPERATE_RIGHT);
    EXPECT_EQ(FocusCol(), 2);
    EXPECT_EQ(SpanLooks(Content(), y, xb, 4, 5, false), "");
    EXPECT_EQ(SpanLooks(Content(), y, xa, 4, 2, false), "");
    // Right on the last cell does nothing.
    Op(OPERATE_RIGHT);
    EXPECT_EQ(FocusCol(), 2);
    Op(OPERATE_LEFT);
    EXPECT_EQ(FocusCol(), 1);
    EXPECT_EQ(SpanLooks(Content(), y, xa, 4, 5, false), "");
    EXPECT_EQ(SpanLooks(Content(), y, xb, 4, 2, false), "");
    // Never onto the label.
    std::vector<chtype> before = Snapshot(Content());
    Op(OPERATE_LEFT);
    EXPECT_EQ(FocusCol(), 1);
    EXPECT_EQ(Snapshot(Content()), before);
}

TEST_F(ContentKeys, RightDoesNotSkipFixedText) {
    Enter(MakePage({{{Fixed("Label"), Input("12", 4, false), Fixed("MB"), Choose("Open")}}}));
    ASSERT_EQ(FocusCol(), 1);
    std::vector<chtype> before = Snapshot(Content());
    Op(OPERATE_RIGHT);
    EXPECT_EQ(FocusCol(), 1);
    EXPECT_EQ(Snapshot(Content()), before);
}

TEST_F(ContentKeys, LeftNeverReturnsToCellZero) {
    // A row whose first cell is editable takes the focus there, but once the
    // focus has left it Left cannot bring it back.
    Enter(MakePage({{{Choose("First"), Choose("Second")}}}));
    ASSERT_EQ(FocusCol(), 0);
    Op(OPERATE_LEFT);
    EXPECT_EQ(FocusCol(), 0);
    Op(OPERATE_RIGHT);
    EXPECT_EQ(FocusCol(), 1);
    Op(OPERATE_LEFT);
    EXPECT_EQ(FocusCol(), 1);
}

TEST_F(ContentKeys, UpAndDownPutTheFocusOnTheFirstEditableCell) {
    Enter(MakePage(
        {{{Fixed("A"), Choose("x"), Choose("y")}}, {{Fixed("B"), Fixed("fixed"), Choose("z")}}}));
    Op(OPERATE_RIGHT);
    ASSERT_EQ(FocusCol(), 2);
    Op(OPERATE_DOWN);
    EXPECT_EQ(Focus(), 1);
    EXPECT_EQ(FocusCol(), 2);
    Op(OPERATE_UP);
    EXPECT_EQ(FocusCol(), 1);
}

TEST_F(ContentKeys, KeysDriveTheMoves) {
    Enter(NumberedPage(40));
    ContentKeyFunc(KEY_DOWN);
    EXPECT_EQ(Focus(), 1);
    ContentKeyFunc(KEY_NPAGE);
    EXPECT_EQ(Focus(), 18);
    ContentKeyFunc(KEY_UP);
    EXPECT_EQ(Focus(), 17);
    ContentKeyFunc(KEY_NPAGE);
    ContentKeyFunc(KEY_NPAGE);
    EXPECT_EQ(Focus(), 36);
    ContentKeyFunc(KEY_PPAGE);
    EXPECT_EQ(Focus(), 18);
    EXPECT_EQ(FocusedOn(0, 18), "");
    Enter(MakePage({{{Fixed("L"), Choose("a"), Choose("b")}}}));
    ContentKeyFunc(KEY_RIGHT);
    EXPECT_EQ(FocusCol(), 2);
    ContentKeyFunc(KEY_LEFT);
    EXPECT_EQ(FocusCol(), 1);
}

TEST_F(ContentKeys, EveryKeyClearsTheInformationLine) {
    Enter(NumberedPage(3));
    ShowInfomation("Operation succeeded");
    ASSERT_EQ(Line(sg_Screen.InfoWin, 0), "Operation succeeded");
    ContentKeyFunc(KEY_F(11));
    EXPECT_EQ(Line(sg_Screen.InfoWin, 0), "");
    EXPECT_EQ(PairAt(sg_Screen.InfoWin, 0, 0), 3);
}

TEST_F(ContentKeys, KeysWithoutAMeaningDoNothing) {
    Enter(MakePage({{{Fixed("Label"), Choose("Open")}}, {{Fixed("Other"), Choose("Close")}}}));
    ContentKeyFunc(KEY_DOWN);
    std::vector<chtype> before = Snapshot(Content());
    for (int iKey : {KEY_F(1), KEY_F(10), KEY_F(11), KEY_HOME, KEY_END, int{'a'}, 9, 13, KEY_DC}) {
        ContentKeyFunc(iKey);
        EXPECT_EQ(Focus(), 1) << iKey;
        EXPECT_EQ(FocusCol(), 1) << iKey;
        EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1) << iKey;
        EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &ContentKeyFunc) << iKey;
    }
    EXPECT_EQ(Snapshot(Content()), before);
    // Keys outside F2..F9 are not looked up in the function-key map.
    EXPECT_TRUE(sg_ContentInfo.pstContent->mKey2vstrArgv.empty());
}

TEST_F(ContentKeys, AnUnmappedFunctionKeyLeavesANullEntry) {
    Enter(NumberedPage(3));
    std::vector<chtype> before = Snapshot(Content());
    ContentKeyFunc(KEY_F(5));
    mInt2Vstr& m = sg_ContentInfo.pstContent->mKey2vstrArgv;
    ASSERT_EQ(m.size(), 1u);
    ASSERT_EQ(m.count(MAP_KEY_F5), 1u);
    EXPECT_EQ(m.at(MAP_KEY_F5), nullptr);
    ContentKeyFunc(KEY_F(9));
    EXPECT_EQ(m.size(), 2u);
    EXPECT_EQ(m.at(MAP_KEY_F9), nullptr);
    EXPECT_EQ(Snapshot(Content()), before);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &ContentKeyFunc);
}

// Enter on a cell that opens no bar: fixed text, and the cell kinds that are
// editable only for the focus.
TEST_F(ContentKeys, EnterOnACellWithoutABarDoesNothing) {
    for (EN_CTRL_BAR_TYPE enType : {EN_NONE_CONTROL, EN_ENQUIRE_CONTROL, EN_ADD_CONTROL,
                                    EN_DELETE_CONTROL, EN_CLEAR_CONTROL}) {
        Enter(MakePage({{{Fixed("Label"), OfType("value", enType)}}}));
        std::vector<chtype> before = Snapshot(Content());
        ContentKeyFunc(10);
        EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1) << enType;
        EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &ContentKeyFunc) << enType;
        EXPECT_EQ(Snapshot(Content()), before) << enType;
        EXPECT_EQ(ContentModify(&sg_ContentInfo, ReturnFunc), -1) << enType;
    }
}

TEST_F(ContentKeys, ModifyChecksTheFocus) {
    EXPECT_EQ(ContentModify(nullptr, ReturnFunc), -1);
    Enter(MakePage({{{Fixed("Label"), Choose("Open")}}}));
    CONTENT_DRAW_INFO stInfo = sg_ContentInfo;
    stInfo.iFocusItem = 1;
    EXPECT_EQ(ContentModify(&stInfo, ReturnFunc), -1);
    stInfo.iFocusItem = 0;
    stInfo.iFocusCol = 2;
    EXPECT_EQ(ContentModify(&stInfo, ReturnFunc), -1);
    stInfo.pstContent = nullptr;
    EXPECT_EQ(ContentModify(&stInfo, ReturnFunc), -1);
}

// Where the bars of a page open on 80 x 24: the choose bar (18 x 7) at
// screen column 46, line 8; the input bar on the cell itself; the list bar
// and the shortcut-key bar over the middle three quarters.
TEST_F(ContentKeys, BarsOpenInTheirRectangles) {
    Enter(MakePage({{{Fixed("Label"), Choose("Open")}},
                    {{Fixed("Second label"), Input("1234", 12, false)}},
                    {{Fixed("Third"), Input("abc", 0, false)}}}));
    DRAW_PARAMETER r = ChooseBarRect(&sg_ContentInfo);
    EXPECT_EQ(r.iStartX, 46);
    EXPECT_EQ(r.iStartY, 8);
    EXPECT_EQ(r.iWidth, 18);
    EXPECT_EQ(r.iHeight, 7);

    ContentKeyFunc(KEY_DOWN);
    r = InputBarRect(&sg_ContentInfo);
    EXPECT_EQ(r.iStartX, ContentColX(&sg_ContentInfo, 1));
    EXPECT_EQ(r.iStartY, ContentRowLine(&sg_ContentInfo, 1));
    EXPECT_EQ(r.iWidth, 12);
    EXPECT_EQ(r.iHeight, 1);
    // Without a width of its own the cell takes its column's.
    ContentKeyFunc(KEY_DOWN);
    r = InputBarRect(&sg_ContentInfo);
    EXPECT_EQ(r.iStartY, ContentRowLine(&sg_ContentInfo, 2));
    EXPECT_EQ(r.iWidth, sg_ContentInfo.aiMaxColWidth[1]);
    EXPECT_EQ(r.iWidth, 12);

    r = ListBarRect(&sg_ContentInfo);
    EXPECT_EQ(r.iStartX, 10);
    EXPECT_EQ(r.iStartY, 3);
    EXPECT_EQ(r.iWidth, 60);
    EXPECT_EQ(r.iHeight, 15);
    r = ShortcutBarRect();
    EXPECT_EQ(r.iStartX, 10);
    EXPECT_EQ(r.iStartY, 6);
    EXPECT_EQ(r.iWidth, 60);
    EXPECT_EQ(r.iHeight, 15);

    // In a rectangle smaller than the bar, the bar is cut down to it.
    CONTENT_DRAW_INFO stSmall = sg_ContentInfo;
    stSmall.iWindowStartX = 4;
    stSmall.iWindowStartY = 2;
    stSmall.iWindowWidth = 10;
    stSmall.iWindowHeight = 5;
    r = ChooseBarRect(&stSmall);
    EXPECT_EQ(r.iWidth, 10);
    EXPECT_EQ(r.iHeight, 5);
    EXPECT_EQ(r.iStartX, 4);
    EXPECT_EQ(r.iStartY, 5);
}

TEST_F(ContentKeys, F12OnAReadOnlyRowShowsItsHelp) {
    Enter(MakePage(
        {{{Fixed("Listener one")}, PROMPT_CONTENT_NO_MODIFY, EN_TCP_PORT_LISTEN},
         {{Fixed("Memory in use"), Fixed("3120")}, PROMPT_CONTENT_NO_MODIFY, EN_MEM_USE}}));
    ContentKeyFunc(KEY_DOWN);
    ContentKeyFunc(KEY_F(12));
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 0);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &HelpInfoKeyFunc);
    EXPECT_EQ(sg_Screen.CurWin, sg_HelpInfo.pHelpWin);
    EXPECT_STREQ(sg_HelpInfo.pcHelpInfoStr, pcStrHelp[EN_MEM_USE][LAN_ENGLISH]);
    EXPECT_EQ(sg_HelpInfo.pfnReturn, &ReturnFunc);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0);
    EXPECT_EQ(PromptText(), pcStrPrompt[PROMPT_HELP][LAN_ENGLISH]);
    std::string first = pcStrHelp[EN_MEM_USE][LAN_ENGLISH];
    first = first.substr(0, first.find_first_of("\t\n"));
    EXPECT_EQ(TextAt(sg_HelpInfo.pHelpWin, 1, 1, static_cast<int>(first.size())), first);

    // Esc gives the page back with the focus where it was.
    werase(Content());
    HelpInfoKeyFunc(27);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &ContentKeyFunc);
    EXPECT_EQ(sg_Screen.CurWin, sg_Screen.ContentWin);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1);
    EXPECT_EQ(Focus(), 1);
    EXPECT_EQ(PromptText(), pcStrPrompt[PROMPT_CONTENT_NO_MODIFY][LAN_ENGLISH]);
    int y1 = ContentRowLine(&sg_ContentInfo, 1);
    EXPECT_EQ(SpanLooks(Content(), y1, ContentColX(&sg_ContentInfo, 0), 13, 7, false), "");
    EXPECT_EQ(
        TextAt(Content(), ContentRowLine(&sg_ContentInfo, 0), ContentColX(&sg_ContentInfo, 0), 12),
        "Listener one");
}

// A help id beyond the table opens nothing; the page keeps its key function
// but has given up its keyboard flag.
TEST_F(ContentKeys, F12WithAnUnknownHelpIdOpensNothing) {
    Enter(MakePage({{{Fixed("Row")}, PROMPT_CONTENT_NO_MODIFY, EN_HELP_MAX}}));
    sg_HelpInfo.pfnReturn = nullptr;
    ContentKeyFunc(KEY_F(12));
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &ContentKeyFunc);
    EXPECT_EQ(sg_HelpInfo.pfnReturn, nullptr);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 0);
    EXPECT_EQ(PromptText(), pcStrPrompt[PROMPT_CONTENT_NO_MODIFY][LAN_ENGLISH]);
}

TEST_F(ContentKeys, EscFreesThePageAndGivesTheMenuTheKeyboard) {
    Enter(NumberedPage(40));
    ContentKeyFunc(KEY_NPAGE);
    ContentKeyFunc(27);
    CONTENT_DRAW_INFO stZero;
    memset(&stZero, 0, sizeof(stZero));
    EXPECT_EQ(memcmp(&sg_ContentInfo, &stZero, sizeof(stZero)), 0);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &MenuKeyFunction);
    EXPECT_EQ(PromptText(), pcStrPrompt[PROMPT_MENU][LAN_ENGLISH]);
    for (int y = 0; y < 18; ++y)
        EXPECT_EQ(Line(Content(), y), "") << "line " << y;
    EXPECT_EQ(CountPair(Content(), 7), 0);
}

// A page with no rows cannot be shown: the view frees it and stays without
// a page while its key function is installed, so every key is ignored and
// the screen keeps what it showed.
TEST_F(ContentKeys, APageWithoutRowsLeavesTheViewInert) {
    Enter(NumberedPage(3));
    ShowInfomation("left on the line");
    std::vector<chtype> before = Snapshot(Content());
    int iPromptBefore = sg_Screen.iCurPromptIdx;
    // The view frees a page it cannot show (the leak check of the
    // sanitizer build would report it otherwise).
    CONTENT_DATA* pstEmpty = MakePage({});
    time_t tBefore = time(nullptr);
    EXPECT_EQ(EnterContent(pstEmpty), -1);
    RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
    time_t tSaved = sg_ContentInfo.iRefreshTime;
    EXPECT_GE(tSaved, tBefore);
    CONTENT_DRAW_INFO stZero;
    memset(&stZero, 0, sizeof(stZero));
    stZero.iRefreshTime = tSaved;
    EXPECT_EQ(memcmp(&sg_ContentInfo, &stZero, sizeof(stZero)), 0);
    EXPECT_EQ(Snapshot(Content()), before);

    for (int iKey : {KEY_DOWN, KEY_UP, KEY_NPAGE, KEY_RIGHT, 10, KEY_F(12), KEY_F(2), 27}) {
        ContentKeyFunc(iKey);
        EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &ContentKeyFunc) << iKey;
        EXPECT_EQ(sg_ContentInfo.pstContent, nullptr) << iKey;
    }
    EXPECT_EQ(Snapshot(Content()), before);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, iPromptBefore);
    // Not even the information line is cleared.
    EXPECT_EQ(Line(sg_Screen.InfoWin, 0), "left on the line");
}

}  // namespace
}  // namespace nvcontenttest
