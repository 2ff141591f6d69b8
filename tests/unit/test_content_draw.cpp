// Content layout and drawing on an in-memory curses screen: column widths and
// spacing, rows spread over the height or paged by modulo, the text of masked
// input cells, and the looks of normal and focused rows and cells.
#include <string>
#include <vector>

#include "test_content_screen.h"

namespace nvcontenttest {
namespace {

class ContentDraw : public CursesScreenTest {
protected:
    // Lays pstPage out over the whole content window, with rows spread.
    int Layout(CONTENT_DATA* pstPage, int iSpread = 1) {
        return GetContentDrawInfo(Content(), 0, 0, 80, 18, iSpread, pstPage, &m_info);
    }
    CONTENT_DRAW_INFO m_info;
};

// The three-row example: labels of 20, 12 and 16 bytes, values of 4, 6 and 5.
TEST_F(ContentDraw, LaysOutTheThreeRowExample) {
    PageGuard page(MakePage({
        {{Fixed("Icmp echo ignore all"), Fixed("Open")}},
        {{Fixed("Tcp syncooki"), Fixed("Closed")}},
        {{Fixed("Time wait reuse:"), Fixed("Close")}},
    }));
    memset(&m_info, 0xAB, sizeof(m_info));
    ASSERT_EQ(Layout(page.Get()), 0);
    EXPECT_EQ(m_info.iMaxItemNum, 3);
    EXPECT_EQ(m_info.iMaxColNum, 2);
    EXPECT_EQ(m_info.aiMaxColWidth[0], 20);
    EXPECT_EQ(m_info.aiMaxColWidth[1], 6);
    for (int j = 2; j < 20; ++j)
        EXPECT_EQ(m_info.aiMaxColWidth[j], 0) << j;
    EXPECT_EQ(m_info.iIntervalWidth, 18);
    EXPECT_EQ(m_info.iIntervalHeight, 3);
    EXPECT_EQ(m_info.iStartX, 18);
    EXPECT_EQ(m_info.iStartY, 3);
    // The rest of the record is the rectangle, the page and zeroes.
    EXPECT_EQ(m_info.iFocusItem, 0);
    EXPECT_EQ(m_info.iFocusCol, 0);
    EXPECT_EQ(m_info.iWindowStartX, 0);
    EXPECT_EQ(m_info.iWindowStartY, 0);
    EXPECT_EQ(m_info.iWindowWidth, 80);
    EXPECT_EQ(m_info.iWindowHeight, 18);
    EXPECT_EQ(m_info.iRefreshTime, 0);
    EXPECT_EQ(m_info.iCursorInContentWinFlag, 0);
    EXPECT_EQ(m_info.pstContent, page.Get());
    EXPECT_EQ(m_info.pWin, Content());

    EXPECT_EQ(ContentRowLine(&m_info, 0), 3);
    EXPECT_EQ(ContentRowLine(&m_info, 1), 7);
    EXPECT_EQ(ContentRowLine(&m_info, 2), 11);
    EXPECT_EQ(ContentColX(&m_info, 0), 18);
    EXPECT_EQ(ContentColX(&m_info, 1), 56);

    ASSERT_EQ(ShowContent(&m_info), 0);
    EXPECT_EQ(Line(Content(), 3),
              std::string(18, ' ') + "Icmp echo ignore all" + std::string(18, ' ') + "Open");
    EXPECT_EQ(TextAt(Content(), 7, 18, 12), "Tcp syncooki");
    EXPECT_EQ(TextAt(Content(), 7, 56, 6), "Closed");
    EXPECT_EQ(TextAt(Content(), 11, 18, 16), "Time wait reuse:");
    EXPECT_EQ(TextAt(Content(), 11, 56, 5), "Close");
    for (int y = 0; y < 18; ++y) {
        if (y != 3 && y != 7 && y != 11) {
            EXPECT_EQ(Line(Content(), y), "") << "line " << y;
        }
    }
}

TEST_F(ContentDraw, RowsWithoutCellsLeaveTheWholeWidthAsInterval) {
    PageGuard page(MakePage({{{}}, {{}}}));
    ASSERT_EQ(Layout(page.Get()), 0);
    EXPECT_EQ(m_info.iMaxColNum, 0);
    EXPECT_EQ(m_info.iIntervalWidth, 80);
    EXPECT_EQ(m_info.iStartX, 80);
    EXPECT_EQ(m_info.aiMaxColWidth[0], 0);
    // In a smaller rectangle further in, the offsets are added.
    ASSERT_EQ(GetContentDrawInfo(Content(), 5, 2, 60, 10, 1, page.Get(), &m_info), 0);
    EXPECT_EQ(m_info.iIntervalWidth, 60);
    EXPECT_EQ(m_info.iStartX, 65);
    EXPECT_EQ(m_info.iIntervalHeight, 2);  // (10 - 2) / 3
    EXPECT_EQ(m_info.iStartY, 4);
}

TEST_F(ContentDraw, ACellWiderThanTheWindowGivesANegativeInterval) {
    PageGuard page(MakePage({{{Fixed(std::string(100, 'w'))}}}));
    ASSERT_EQ(Layout(page.Get()), 0);
    EXPECT_EQ(m_info.iMaxColNum, 0);
    EXPECT_EQ(m_info.aiMaxColWidth[0], 100);
    EXPECT_EQ(m_info.iIntervalWidth, -20);
    EXPECT_EQ(m_info.iStartX, -20);
    EXPECT_EQ(ContentColX(&m_info, 0), -20);
    // Only the visible part is drawn, on the cell's own line: the 20 bytes
    // left of the window are cut and the rest fills the line.
    for (int i = 0; i < 100; ++i)
        page.Get()->pstItem[0].pstSection[0].strSecName[i] = static_cast<char>('a' + i % 26);
    ASSERT_EQ(ShowContent(&m_info), 0);
    std::string sWant;
    for (int i = 20; i < 100; ++i)
        sWant += static_cast<char>('a' + i % 26);
    EXPECT_EQ(Line(Content(), 8), sWant);
    for (int y = 0; y < 18; ++y) {
        if (y != 8) {
            EXPECT_EQ(Line(Content(), y), "") << "line " << y;
        }
    }
}

// What row r must show on its line: each cell's text placed at its column,
// with what falls outside the 80 columns left out.
std::string ClippedRow(const CONTENT_DRAW_INFO& stInfo, int r) {
    const CONTENT_ITEM& stItem = stInfo.pstContent->pstItem[r];
    std::string sLine(80, ' ');
    for (int j = 0; j < stItem.iSectionNum; ++j) {
        const std::string& sText = stItem.pstSection[j].strSecName;
        long lX = ContentColX(&stInfo, j);
        for (size_t i = 0; i < sText.size(); ++i) {
            long lCol = lX + static_cast<long>(i);
            if (lCol >= 0 && lCol < 80)
                sLine[lCol] = sText[i];
        }
    }
    size_t iEnd = sLine.find_last_not_of(' ');
    return iEnd == std::string::npos ? "" : sLine.substr(0, iEnd + 1);
}

// A value wider than the window among ordinary rows: every label and value
// stays on its own line, the long one clipped at both edges of the window.
TEST_F(ContentDraw, ALongValueIsClippedOnItsOwnLine) {
    std::string sLong(70, 'r');
    sLong.replace(0, 5, "/srv/");
    PageGuard page(MakePage({
        {{Fixed("Ftp server root:"), Fixed(sLong)}},
        {{Fixed("Anonymous login:"), Fixed("[Yes]")}},
        {{Fixed("Max clients:"), Fixed("50")}},
    }));
    ASSERT_EQ(Layout(page.Get()), 0);
    ASSERT_LT(m_info.iIntervalWidth, 0);
    ASSERT_EQ(ShowContent(&m_info), 0);
    ASSERT_LT(ContentColX(&m_info, 0), 0);
    for (int r = 0; r < 3; ++r) {
        EXPECT_EQ(Line(Content(), ContentRowLine(&m_info, r)), ClippedRow(m_info, r)) << r;
        EXPECT_NE(ClippedRow(m_info, r), "") << r;
    }
    int iRowLines = 0;
    for (int y = 0; y < 18; ++y)
        iRowLines += Line(Content(), y).empty() ? 0 : 1;
    EXPECT_EQ(iRowLines, 3);
}

// A 100 KB value shows its visible part on its own line; nothing else of the
// window is written, and the cells of other rows land where the layout puts
// them.
TEST_F(ContentDraw, AHugeTextIsClippedOnItsOwnLine) {
    PageGuard page(MakePage({
        {{Fixed("Ftp server root:"), Fixed(std::string(100 * 1024, 'h'))}},
        {{Fixed("Anonymous login:"), Fixed("[Yes]")}},
    }));
    ASSERT_EQ(Layout(page.Get()), 0);
    ASSERT_EQ(ShowContent(&m_info), 0);
    EXPECT_EQ(Line(Content(), ContentRowLine(&m_info, 0)), ClippedRow(m_info, 0));
    EXPECT_EQ(ClippedRow(m_info, 0), std::string(80, 'h'));
    for (int y = 0; y < 18; ++y) {
        if (y != ContentRowLine(&m_info, 0)) {
            EXPECT_EQ(Line(Content(), y), "") << "line " << y;
        }
    }
}

// A cell that runs past the right edge is cut there instead of wrapping onto
// the next line.
TEST_F(ContentDraw, ACellPastTheRightEdgeDoesNotWrap) {
    PageGuard page(MakePage({
        {{Fixed(std::string(50, 'a')), Fixed(std::string(45, 'b'))}},
        {{Fixed("x"), Fixed("y")}},
    }));
    ASSERT_EQ(GetContentDrawInfo(Content(), 0, 0, 80, 18, 0, page.Get(), &m_info), 0);
    ASSERT_EQ(ShowContent(&m_info), 0);
    int x1 = ContentColX(&m_info, 1);
    ASSERT_GT(x1 + 45, 80);
    EXPECT_EQ(TextAt(Content(), m_info.iStartY, x1, 80 - x1), std::string(80 - x1, 'b'));
    EXPECT_EQ(Line(Content(), m_info.iStartY + 1).find('b'), std::string::npos);
}

TEST_F(ContentDraw, AFixedWidthIsClaimedWhileTheTextFits) {
    {
        PageGuard page(MakePage({{{Fixed("abcde", 12), Fixed("v")}}}));
        ASSERT_EQ(Layout(page.Get()), 0);
        EXPECT_EQ(m_info.aiMaxColWidth[0], 12);
        EXPECT_EQ(m_info.iIntervalWidth, (80 - 13) / 3);
    }
    {
        // 79 bytes still fit in 80 columns: the claim stays 12.
        PageGuard page(MakePage({{{Fixed(std::string(79, 'a'), 12)}}}));
        ASSERT_EQ(Layout(page.Get()), 0);
        EXPECT_EQ(m_info.aiMaxColWidth[0], 12);
        EXPECT_EQ(m_info.iMaxColNum, 1);
    }
    {
        // A text as long as the window claims its own length.
        PageGuard page(MakePage({{{Fixed(std::string(80, 'a'), 12)}}}));
        ASSERT_EQ(Layout(page.Get()), 0);
        EXPECT_EQ(m_info.aiMaxColWidth[0], 80);
        EXPECT_EQ(m_info.iMaxColNum, 0);
        EXPECT_EQ(m_info.iIntervalWidth, 0);
    }
    {
        // No fixed width, or a negative one: the text's length; the column
        // takes the widest claim of its rows.
        PageGuard page(MakePage({
            {{Fixed("abcde", 12)}},
            {{Fixed(std::string(15, 'b'), -3)}},
            {{Fixed("c", 0)}},
        }));
        ASSERT_EQ(Layout(page.Get()), 0);
        EXPECT_EQ(m_info.aiMaxColWidth[0], 15);
    }
}

TEST_F(ContentDraw, TheOverflowingColumnStaysInTheSum) {
    {
        PageGuard page(MakePage({{{Fixed(std::string(50, 'a')), Fixed(std::string(40, 'b'))}}}));
        ASSERT_EQ(Layout(page.Get()), 0);
        EXPECT_EQ(m_info.iMaxColNum, 1);
        EXPECT_EQ(m_info.aiMaxColWidth[1], 40);
        EXPECT_EQ(m_info.iIntervalWidth, -5);  // (80 - 90) / 2
        EXPECT_EQ(m_info.iStartX, -5);
    }
    {
        PageGuard page(MakePage({{{Fixed(std::string(30, 'a')), Fixed(std::string(30, 'b')),
                                   Fixed(std::string(30, 'c')), Fixed("d")}}}));
        ASSERT_EQ(Layout(page.Get()), 0);
        EXPECT_EQ(m_info.iMaxColNum, 2);
        EXPECT_EQ(m_info.iIntervalWidth, -3);   // (80 - 90) / 3, toward zero
        EXPECT_EQ(m_info.aiMaxColWidth[3], 0);  // never looked at
    }
    {
        // Columns filling the width exactly: the last one is not counted.
        PageGuard page(MakePage({{{Fixed(std::string(40, 'a')), Fixed(std::string(40, 'b'))}}}));
        ASSERT_EQ(Layout(page.Get()), 0);
        EXPECT_EQ(m_info.iMaxColNum, 1);
        EXPECT_EQ(m_info.iIntervalWidth, 0);
    }
}

TEST_F(ContentDraw, ColumnsCountUpToTwenty) {
    std::vector<CellDecl> vCells;
    for (int j = 0; j < 25; ++j)
        vCells.push_back(Fixed("x"));
    PageGuard page(MakePage({{vCells}}));
    ASSERT_EQ(Layout(page.Get()), 0);
    EXPECT_EQ(m_info.iMaxColNum, 20);
    EXPECT_EQ(m_info.iIntervalWidth, 60 / 21);
}

TEST_F(ContentDraw, ColumnsCountFromTheRowsThatHaveThem) {
    PageGuard page(MakePage({
        {{Fixed("label"), Fixed("1")}},
        {{Fixed("a longer label"), Fixed("22"), Fixed("three")}},
        {{}},
    }));
    ASSERT_EQ(Layout(page.Get()), 0);
    EXPECT_EQ(m_info.iMaxColNum, 3);
    EXPECT_EQ(m_info.aiMaxColWidth[0], 14);
    EXPECT_EQ(m_info.aiMaxColWidth[1], 2);
    EXPECT_EQ(m_info.aiMaxColWidth[2], 5);
    EXPECT_EQ(m_info.iIntervalWidth, (80 - 21) / 4);
}

TEST_F(ContentDraw, FortyRowsArePagedByModulo) {
    PageGuard page(NumberedPage(40));
    ASSERT_EQ(Layout(page.Get()), 0);
    EXPECT_EQ(m_info.iIntervalHeight, 0);
    EXPECT_EQ(m_info.iStartY, 0);
    EXPECT_EQ(m_info.iStartX, 37);  // (80 - 6) / 2
    for (int r = 0; r < 40; ++r)
        EXPECT_EQ(ContentRowLine(&m_info, r), r % 18) << r;

    ASSERT_EQ(ShowContent(&m_info), 0);
    for (int y = 0; y < 18; ++y) {
        char sz[16];
        snprintf(sz, sizeof(sz), "row %02d", y);
        EXPECT_EQ(TextAt(Content(), y, 37, 6), sz);
    }
    ASSERT_EQ(ShowContentPage(&m_info, 1), 0);
    EXPECT_EQ(TextAt(Content(), 0, 37, 6), "row 18");
    EXPECT_EQ(TextAt(Content(), 17, 37, 6), "row 35");
    // Page 1 drawn normal: no focus anywhere.
    EXPECT_EQ(CountPair(Content(), 7), 0);

    std::vector<chtype> before = Snapshot(Content());
    EXPECT_EQ(ShowContentPage(&m_info, 3), -1);
    EXPECT_EQ(Snapshot(Content()), before) << "a failed page changed the window";

    ASSERT_EQ(ShowContentPage(&m_info, 2), 0);
    for (int y = 0; y < 4; ++y)
        EXPECT_EQ(Line(Content(), y), std::string(37, ' ') + "row " + std::to_string(36 + y));
    for (int y = 4; y < 18; ++y)
        EXPECT_EQ(Line(Content(), y), "") << "line " << y;
    EXPECT_EQ(ShowContentPage(&m_info, 3), -1);
}

TEST_F(ContentDraw, ASingleRowStandsOnLineEight) {
    PageGuard page(NumberedPage(1));
    ASSERT_EQ(Layout(page.Get()), 0);
    EXPECT_EQ(m_info.iIntervalHeight, 8);
    EXPECT_EQ(m_info.iStartY, 8);
    ASSERT_EQ(ShowContent(&m_info), 0);
    EXPECT_EQ(Line(Content(), 8), std::string(37, ' ') + "row 00");
    // Without spreading the row goes to the top.
    ASSERT_EQ(Layout(page.Get(), 0), 0);
    EXPECT_EQ(m_info.iIntervalHeight, 0);
    EXPECT_EQ(m_info.iStartY, 0);
    // Eighteen rows in eighteen lines are not spread either.
    PageGuard full(NumberedPage(18));
    ASSERT_EQ(Layout(full.Get()), 0);
    EXPECT_EQ(m_info.iIntervalHeight, 0);
    PageGuard seventeen(NumberedPage(17));
    ASSERT_EQ(Layout(seventeen.Get()), 0);
    EXPECT_EQ(m_info.iIntervalHeight, 0);  // (18 - 17) / 18
}

TEST_F(ContentDraw, AMaskedInputCellShowsAsterisks) {
    PageGuard page(MakePage({
        {{Fixed("Password"), Input("abc", 10, true)}},
        {{Fixed("Unset"), Input(pcStrNullInfo[LAN_ENGLISH], 10, true)}},
        {{Fixed("Plain"), Input("abc", 10, false)}},
    }));
    const CONTENT_SECTION& stMasked = page.Get()->pstItem[0].pstSection[1];
    const CONTENT_SECTION& stUnset = page.Get()->pstItem[1].pstSection[1];
    const CONTENT_SECTION& stPlain = page.Get()->pstItem[2].pstSection[1];
    EXPECT_EQ(CellText(stMasked), "***");
    EXPECT_EQ(CellText(stUnset), "    ");
    EXPECT_EQ(CellText(stPlain), "abc");

    ASSERT_EQ(Layout(page.Get()), 0);
    ASSERT_EQ(ShowContent(&m_info), 0);
    int x = ContentColX(&m_info, 1);
    EXPECT_EQ(TextAt(Content(), ContentRowLine(&m_info, 0), x, 4), "*** ");
    EXPECT_EQ(TextAt(Content(), ContentRowLine(&m_info, 1), x, 4), "    ");
    // The blanks are the cell's own: written underlined.
    EXPECT_EQ(SpanLooks(Content(), ContentRowLine(&m_info, 1), x, 4, 2, true), "");
    EXPECT_EQ(TextAt(Content(), ContentRowLine(&m_info, 2), x, 4), "abc ");
}

TEST_F(ContentDraw, OnlyInputCellsWithFourArgumentsAreMasked) {
    CONTENT_SECTION stSec;
    stSec.iMaxWidth = 0;
    stSec.strSecName = "secret";
    stSec.enCtrlType = EN_INPUT_CONTROL;
    stSec.vstrCtrlArgv = {"0", "0", "1"};
    EXPECT_EQ(CellText(stSec), "secret");
    stSec.vstrCtrlArgv = {"0", "0", "1", "1", "0"};
    EXPECT_EQ(CellText(stSec), "******");
    stSec.vstrCtrlArgv = {"0", "0", "1", "2"};
    EXPECT_EQ(CellText(stSec), "secret");
    stSec.enCtrlType = EN_CHOOSE_CONTROL;
    stSec.vstrCtrlArgv = {"0", "0", "1", "1"};
    EXPECT_EQ(CellText(stSec), "secret");
    // The empty value of the current language is never masked.
    stSec.enCtrlType = EN_INPUT_CONTROL;
    iLanIdx = LAN_CHINESE_UTF8;
    stSec.strSecName = pcStrNullInfo[LAN_CHINESE_UTF8];
    EXPECT_EQ(CellText(stSec), pcStrNullInfo[LAN_CHINESE_UTF8]);
    iLanIdx = LAN_ENGLISH;
}

TEST_F(ContentDraw, FocusingAFixedRowChoosesNoCell) {
    PageGuard page(MakePage({
        {{Fixed("Memory in use"), Fixed("3120"), Fixed("MB")},
         PROMPT_CONTENT_NO_MODIFY,
         EN_MEM_USE},
        {{Fixed("Memory free"), Fixed("4856"), Fixed("MB")}, PROMPT_CONTENT_NO_MODIFY, EN_MEM_FREE},
    }));
    ASSERT_EQ(Layout(page.Get()), 0);
    ASSERT_EQ(ShowContentPage(&m_info, 0), 0);
    m_info.iFocusCol = 2;
    ASSERT_EQ(ShowContentRow(&m_info, 1, SHOW_FOUCS_STR), 0);
    EXPECT_EQ(m_info.iFocusItem, 1);
    EXPECT_EQ(m_info.iFocusCol, 0);
    EXPECT_EQ(CountPair(Content(), 5), 0);
    int y = ContentRowLine(&m_info, 1);
    for (int j = 0; j < 3; ++j) {
        int x = ContentColX(&m_info, j);
        int len = static_cast<int>(page.Get()->pstItem[1].pstSection[j].strSecName.size());
        EXPECT_EQ(SpanLooks(Content(), y, x, len, 7, false), "") << "cell " << j;
    }
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_CONTENT_NO_MODIFY);
}

// label, editable A, fixed text, editable B: the looks of the focused and of
// a normal row.
TEST_F(ContentDraw, RowsAndCellsHaveTheirLooks) {
    std::vector<CellDecl> vCells = {Fixed("Label"), Choose("Open"), Fixed("unit"),
                                    Input("1234", 0, false)};
    PageGuard page(
        MakePage({{vCells, PROMPT_CONTENT, EN_SHMMAX}, {vCells, PROMPT_CONTENT_LIST, EN_SHMALL}}));
    ASSERT_EQ(Layout(page.Get()), 0);
    ASSERT_EQ(ShowContent(&m_info), 0);
    EXPECT_EQ(m_info.iFocusItem, 0);
    EXPECT_EQ(m_info.iFocusCol, 1);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_CONTENT);
    int x0 = ContentColX(&m_info, 0), x1 = ContentColX(&m_info, 1);
    int x2 = ContentColX(&m_info, 2), x3 = ContentColX(&m_info, 3);
    int y0 = ContentRowLine(&m_info, 0), y1 = ContentRowLine(&m_info, 1);
    ASSERT_EQ(TextAt(Content(), y0, x3, 4), "1234");

    // Focused row: the label in the row colour, the focused cell white on
    // blue, the fixed text after it keeps that look, the other editable
    // cell underlined.
    EXPECT_EQ(SpanLooks(Content(), y0, x0, 5, 7, false), "");
    EXPECT_EQ(SpanLooks(Content(), y0, x1, 4, 5, false), "");
    EXPECT_EQ(SpanLooks(Content(), y0, x2, 4, 5, false), "");
    EXPECT_TRUE(UnderlinedAt(Content(), y0, x3));
    EXPECT_TRUE(UnderlinedAt(Content(), y0, x3 + 3));
    // The spacing between cells is not drawn.
    EXPECT_EQ(SpanLooks(Content(), y0, x0 + 5, x1 - x0 - 5, 2, false), "");

    // Normal row: plain label, every editable cell and the fixed text after
    // an editable one underlined.
    EXPECT_EQ(SpanLooks(Content(), y1, x0, 5, 2, false), "");
    EXPECT_EQ(SpanLooks(Content(), y1, x1, 4, 2, true), "");
    EXPECT_EQ(SpanLooks(Content(), y1, x2, 4, 2, true), "");
    EXPECT_EQ(SpanLooks(Content(), y1, x3, 4, 2, true), "");
    EXPECT_EQ(CountPair(Content(), 5), 8);  // "Open" and "unit"

    // Moving the focus to row 1 redraws row 0 in the normal look.
    ASSERT_EQ(ShowContentRow(&m_info, 0, SHOW_NORMAL_STR), 0);
    ASSERT_EQ(ShowContentRow(&m_info, 1, SHOW_FOUCS_STR), 0);
    EXPECT_EQ(SpanLooks(Content(), y0, x0, 5, 2, false), "");
    EXPECT_EQ(SpanLooks(Content(), y0, x1, 4, 2, true), "");
    EXPECT_EQ(SpanLooks(Content(), y1, x1, 4, 5, false), "");
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_CONTENT_LIST);
}

TEST_F(ContentDraw, ClearFlagDrawsTheNormalLook) {
    PageGuard page(
        MakePage({{{Fixed("Label"), Choose("Open")}}, {{Fixed("Other"), Choose("On")}}}));
    ASSERT_EQ(Layout(page.Get()), 0);
    ASSERT_EQ(ShowContent(&m_info), 0);
    ASSERT_EQ(ShowContentRow(&m_info, 1, CLEAR_STR), 0);
    EXPECT_EQ(m_info.iFocusItem, 0);
    int y1 = ContentRowLine(&m_info, 1);
    EXPECT_EQ(TextAt(Content(), y1, ContentColX(&m_info, 0), 5), "Other");
    EXPECT_EQ(SpanLooks(Content(), y1, ContentColX(&m_info, 1), 2, 2, true), "");
}

TEST_F(ContentDraw, ACellTakesTheFocusOnlyWhenEditable) {
    PageGuard page(MakePage({{{Fixed("Label"), Choose("Open"), Fixed("unit"), Choose("Yes")}}}));
    ASSERT_EQ(Layout(page.Get()), 0);
    ASSERT_EQ(ShowContent(&m_info), 0);
    int y = ContentRowLine(&m_info, 0);
    EXPECT_EQ(ShowContentCol(&m_info, 0, 2, SHOW_FOUCS_STR), -1);
    EXPECT_EQ(ShowContentCol(&m_info, 0, 0, SHOW_FOUCS_STR), -1);
    EXPECT_EQ(ShowContentCol(&m_info, 0, 4, SHOW_FOUCS_STR), -1);
    EXPECT_EQ(ShowContentCol(&m_info, 0, 4, SHOW_NORMAL_STR), -1);
    EXPECT_EQ(ShowContentCol(&m_info, 1, 1, SHOW_FOUCS_STR), -1);
    EXPECT_EQ(m_info.iFocusCol, 1);

    ASSERT_EQ(ShowContentCol(&m_info, 0, 3, SHOW_FOUCS_STR), 0);
    EXPECT_EQ(m_info.iFocusCol, 3);
    EXPECT_EQ(SpanLooks(Content(), y, ContentColX(&m_info, 3), 3, 5, false), "");
    // A cell that loses the focus this way is drawn plain: no underline, no
    // row colour.
    ASSERT_EQ(ShowContentCol(&m_info, 0, 1, SHOW_NORMAL_STR), 0);
    EXPECT_EQ(SpanLooks(Content(), y, ContentColX(&m_info, 1), 4, 2, false), "");
    EXPECT_EQ(m_info.iFocusCol, 3);
    // A fixed cell can be drawn normal.
    EXPECT_EQ(ShowContentCol(&m_info, 0, 2, SHOW_NORMAL_STR), 0);
}

TEST_F(ContentDraw, BadRowsAreRefused) {
    CONTENT_DATA* pstPage = MakePage({{{Fixed("only row")}}, {{Fixed("second")}}});
    PageGuard page(pstPage);
    ASSERT_EQ(Layout(pstPage), 0);
    ASSERT_EQ(ShowContent(&m_info), 0);
    std::vector<chtype> before = Snapshot(Content());
    EXPECT_EQ(ShowContentRow(&m_info, 2, SHOW_FOUCS_STR), -1);
    EXPECT_EQ(ShowContentRow(nullptr, 0, SHOW_FOUCS_STR), -1);
    // A row without its cell array.
    CONTENT_SECTION* pstCells = pstPage->pstItem[1].pstSection;
    pstPage->pstItem[1].pstSection = nullptr;
    EXPECT_EQ(ShowContentRow(&m_info, 1, SHOW_FOUCS_STR), -1);
    EXPECT_EQ(ShowContentCol(&m_info, 1, 0, SHOW_NORMAL_STR), -1);
    pstPage->pstItem[1].pstSection = pstCells;
    EXPECT_EQ(m_info.iFocusItem, 0);
    EXPECT_EQ(Snapshot(Content()), before);
}

TEST_F(ContentDraw, NullArgumentsAreRefused) {
    PageGuard page(NumberedPage(2));
    EXPECT_EQ(GetContentDrawInfo(nullptr, 0, 0, 80, 18, 1, page.Get(), &m_info), -1);
    EXPECT_EQ(GetContentDrawInfo(Content(), 0, 0, 80, 18, 1, nullptr, &m_info), -1);
    EXPECT_EQ(GetContentDrawInfo(Content(), 0, 0, 80, 18, 1, page.Get(), nullptr), -1);
    EXPECT_EQ(ShowContent(nullptr), -1);
    EXPECT_EQ(ShowContentPage(nullptr, 0), -1);
    memset(&m_info, 0, sizeof(m_info));
    m_info.pWin = Content();
    m_info.iWindowHeight = 18;
    EXPECT_EQ(ShowContent(&m_info), -1);
    EXPECT_EQ(ShowContentPage(&m_info, 0), -1);
    RedrawContent(nullptr);
    RedrawContent(&m_info);
    EXPECT_EQ(Line(Content(), 0), "");
}

TEST_F(ContentDraw, APageWithoutRowsCannotBeShown) {
    PageGuard page(MakePage({}));
    ASSERT_EQ(Layout(page.Get()), 0);
    EXPECT_EQ(m_info.iMaxItemNum, 0);
    EXPECT_EQ(m_info.iIntervalHeight, 18);
    mvwaddstr(Content(), 5, 5, "left from before");
    std::vector<chtype> before = Snapshot(Content());
    EXPECT_EQ(ShowContent(&m_info), -1);
    EXPECT_EQ(ShowContentPage(&m_info, 0), -1);
    EXPECT_EQ(Snapshot(Content()), before);
}

TEST_F(ContentDraw, RedrawShowsThePageOfTheFocusedRow) {
    std::vector<RowDecl> vRows;
    for (int r = 0; r < 40; ++r) {
        char sz[16];
        snprintf(sz, sizeof(sz), "item %02d", r);
        vRows.push_back(RowDecl{{Fixed(sz), Choose("Open"), Choose("Close")}});
    }
    PageGuard page(MakePage(vRows));
    ASSERT_EQ(Layout(page.Get()), 0);
    ASSERT_EQ(ShowContent(&m_info), 0);
    ASSERT_EQ(ShowContentPage(&m_info, 1), 0);
    ASSERT_EQ(ShowContentRow(&m_info, 20, SHOW_FOUCS_STR), 0);
    ASSERT_EQ(ShowContentCol(&m_info, 20, 2, SHOW_FOUCS_STR), 0);
    werase(Content());
    mvwaddstr(Content(), 9, 0, "scribble");
    RedrawContent(&m_info);
    EXPECT_EQ(m_info.iFocusItem, 20);
    EXPECT_EQ(m_info.iFocusCol, 1);  // back on the first editable cell
    int x0 = ContentColX(&m_info, 0);
    EXPECT_EQ(TextAt(Content(), 0, x0, 7), "item 18");
    EXPECT_EQ(TextAt(Content(), 9, 0, 8), "        ");
    EXPECT_EQ(TextAt(Content(), 17, x0, 7), "item 35");
    EXPECT_EQ(SpanLooks(Content(), 2, x0, 7, 7, false), "");
    EXPECT_EQ(SpanLooks(Content(), 2, ContentColX(&m_info, 1), 4, 5, false), "");
    EXPECT_EQ(CountPair(Content(), 5), 4);
}

TEST_F(ContentDraw, ClearingARegionWritesBlanksInsideItOnly) {
    for (int y = 0; y < 18; ++y)
        mvwaddstr(Content(), y, 0, std::string(80, '#').c_str());
    ClearWindowRegion(Content(), 10, 2, 5, 3);
    for (int y = 0; y < 18; ++y) {
        std::string want(80, '#');
        if (y >= 2 && y < 5)
            want.replace(10, 5, "     ");
        EXPECT_EQ(TextAt(Content(), y, 0, 80), want) << "line " << y;
    }
}

}  // namespace
}  // namespace nvcontenttest
