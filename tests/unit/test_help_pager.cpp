// The help pager on an in-memory curses screen: its window and text area,
// breaking a text into pages (line feeds, full lines, the empty first line of
// a page that starts with a line feed), turning pages, Esc, the guards of
// ShowHelpInfo, and every help text of the catalogue fitting the page table.
#include <string>
#include <vector>

#include "test_content_screen.h"

namespace nvcontenttest {
namespace {

// The page starts of text in a w x h area as the paging rule gives them,
// with no limit on their number: a line feed or a byte that finds its line
// full moves to the next line, and a line past the last starts a new page at
// that byte; a page that starts with a line feed shows it as an empty first
// line.
std::vector<int> ModelPageStarts(const std::string& text, int w, int h) {
    std::vector<int> starts = {0};
    int line = 0, col = 0;
    for (int i = 0; i < static_cast<int>(text.size()); ++i) {
        bool lf = text[i] == '\n';
        if (!lf && col < w) {
            ++col;
            continue;
        }
        ++line;
        col = 0;
        if (line >= h) {
            starts.push_back(i);
            line = lf ? 1 : 0;
        }
        if (!lf)
            ++col;
    }
    return starts;
}

// "line 01\nline 02\n..." with n lines and no final line feed.
std::string NumberedLines(int n) {
    std::string s;
    for (int i = 1; i <= n; ++i) {
        char sz[16];
        snprintf(sz, sizeof(sz), "line %02d", i);
        s += sz;
        if (i < n)
            s += '\n';
    }
    return s;
}

int s_iReturns = 0;
void CountReturn() {
    ++s_iReturns;
}

class HelpPager : public CursesScreenTest {
protected:
    void SetUp() override {
        CursesScreenTest::SetUp();
        s_iReturns = 0;
        sg_HelpInfo.pfnReturn = nullptr;
        sg_HelpInfo.pcHelpInfoStr = nullptr;
        sg_HelpInfo.iCurPageNum = 0;
        sg_HelpInfo.iTotalPageNum = 1;
        memset(sg_HelpInfo.aiPageStartStrPos, 0, sizeof(sg_HelpInfo.aiPageStartStrPos));
    }
    // Opens the pager on a text of the test's own, as ShowHelpInfo opens it
    // on a catalogue text.
    void Open(const std::string& text) {
        m_text = text;
        sg_HelpInfo.pfnReturn = CountReturn;
        RegistKeyFunc(HelpInfoKeyFunc, sg_HelpInfo.pHelpWin);
        sg_HelpInfo.pcHelpInfoStr = &m_text[0];
        BreakHelpPages(&sg_HelpInfo, sg_HelpInfo.pcHelpInfoStr);
        ShowHelpInfoPage(0);
    }
    static WINDOW* Help() { return sg_HelpInfo.pHelpWin; }
    // Line y of the text area (columns 1 to 78) without trailing blanks.
    static std::string AreaLine(int y) {
        std::string s = TextAt(Help(), y, 1, 78);
        size_t end = s.find_last_not_of(' ');
        return end == std::string::npos ? "" : s.substr(0, end + 1);
    }
    // The box is whole: corners and sides.
    static std::string BoxWhole() {
        struct Expect {
            int y, x;
            chtype ch;
        };
        const Expect e[] = {{0, 0, ACS_ULCORNER},   {0, 79, ACS_URCORNER}, {17, 0, ACS_LLCORNER},
                            {17, 79, ACS_LRCORNER}, {0, 40, ACS_HLINE},    {17, 40, ACS_HLINE}};
        const chtype mask = A_CHARTEXT | A_ALTCHARSET;
        for (const Expect& k : e) {
            if ((At(Help(), k.y, k.x) & mask) != (k.ch & mask))
                return "no box at " + std::to_string(k.y) + "," + std::to_string(k.x);
        }
        for (int y = 1; y <= 16; ++y) {
            if ((At(Help(), y, 0) & mask) != (ACS_VLINE & mask) ||
                (At(Help(), y, 79) & mask) != (ACS_VLINE & mask))
                return "no side on line " + std::to_string(y);
        }
        return "";
    }
    std::string m_text;
};

TEST_F(HelpPager, TheWindowCoversTheContentArea) {
    WINDOW* w = Help();
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(getbegy(w), 3);
    EXPECT_EQ(getbegx(w), 0);
    EXPECT_EQ(getmaxy(w), 18);
    EXPECT_EQ(getmaxx(w), 80);
    EXPECT_EQ(getbkgd(w) & A_COLOR, COLOR_PAIR(6));
    EXPECT_TRUE(is_keypad(w));
    EXPECT_EQ(sg_HelpInfo.iStartX, 1);
    EXPECT_EQ(sg_HelpInfo.iStartY, 1);
    EXPECT_EQ(sg_HelpInfo.iWidth, 78);
    EXPECT_EQ(sg_HelpInfo.iHeight, 16);
    EXPECT_EQ(BoxWhole(), "");
}

TEST_F(HelpPager, SeventeenLinesMakeTwoPages) {
    std::string text = NumberedLines(17);
    Open(text);
    ASSERT_EQ(sg_HelpInfo.iTotalPageNum, 2);
    int iStart = sg_HelpInfo.aiPageStartStrPos[1];
    EXPECT_EQ(sg_HelpInfo.aiPageStartStrPos[0], 0);
    // Page 1 starts at the line feed that ended line 16.
    EXPECT_EQ(iStart, static_cast<int>(text.find("\nline 17")));
    for (int p = 2; p < HELP_MAX_PAGES; ++p)
        EXPECT_EQ(sg_HelpInfo.aiPageStartStrPos[p], 0) << p;
    for (int y = 1; y <= 16; ++y) {
        char sz[16];
        snprintf(sz, sizeof(sz), "line %02d", y);
        EXPECT_EQ(AreaLine(y), sz);
    }
    EXPECT_EQ(BoxWhole(), "");

    ShowHelpInfoPage(1);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 1);
    EXPECT_EQ(AreaLine(1), "") << "page 1 begins with an empty line";
    EXPECT_EQ(AreaLine(2), "line 17");
    for (int y = 3; y <= 16; ++y)
        EXPECT_EQ(AreaLine(y), "") << "line " << y;
    EXPECT_EQ(BoxWhole(), "");
}

TEST_F(HelpPager, SixteenLinesFillOnePage) {
    Open(NumberedLines(16));
    EXPECT_EQ(sg_HelpInfo.iTotalPageNum, 1);
    EXPECT_EQ(AreaLine(16), "line 16");
    // A final line feed after the sixteenth line opens a second page that
    // holds only that line feed.
    Open(NumberedLines(16) + "\n");
    EXPECT_EQ(sg_HelpInfo.iTotalPageNum, 2);
    ShowHelpInfoPage(1);
    for (int y = 1; y <= 16; ++y)
        EXPECT_EQ(AreaLine(y), "") << "line " << y;
}

TEST_F(HelpPager, AHundredByteLineTakesTwoLines) {
    std::string text(100, 'x');
    for (int i = 0; i < 100; ++i)
        text[i] = static_cast<char>('a' + i % 26);
    Open(text);
    EXPECT_EQ(sg_HelpInfo.iTotalPageNum, 1);
    EXPECT_EQ(AreaLine(1), text.substr(0, 78));
    EXPECT_EQ(AreaLine(2), text.substr(78));
    EXPECT_EQ(text.substr(78).size(), 22u);
    EXPECT_EQ(AreaLine(3), "");
    EXPECT_EQ(BoxWhole(), "") << "the text ran over the box";
}

// A page that starts inside a long line has no empty first line.
TEST_F(HelpPager, APageCanStartInsideALongLine) {
    std::string long100(100, 'y');
    std::string text = "a";
    for (int i = 0; i < 9; ++i)
        text += "\n" + long100;
    // Line 1 holds "a", the long lines take lines 2-3, 4-5, ... 16-17.
    Open(text);
    ASSERT_EQ(sg_HelpInfo.iTotalPageNum, 2);
    int iStart = sg_HelpInfo.aiPageStartStrPos[1];
    EXPECT_EQ(iStart, 2 + 7 * 101 + 78);
    EXPECT_NE(text[iStart], '\n');
    EXPECT_EQ(AreaLine(16), std::string(78, 'y'));
    ShowHelpInfoPage(1);
    EXPECT_EQ(AreaLine(1), std::string(22, 'y'));
    EXPECT_EQ(AreaLine(2), std::string(78, 'y'));
    EXPECT_EQ(AreaLine(3), std::string(22, 'y'));
    EXPECT_EQ(AreaLine(4), "");
}

TEST_F(HelpPager, ALineOfExactlyTheWidthTakesOneLine) {
    Open(std::string(78, 'z') + "\nnext");
    EXPECT_EQ(AreaLine(1), std::string(78, 'z'));
    EXPECT_EQ(AreaLine(2), "next");
}

TEST_F(HelpPager, AShortTextHasOnePageAndDownDoesNothing) {
    Open("[NAME]\nshort\n[DESC]\ntext");
    EXPECT_EQ(sg_HelpInfo.iTotalPageNum, 1);
    std::vector<chtype> before = Snapshot(Help());
    for (int iKey : {KEY_DOWN, KEY_NPAGE, KEY_UP, KEY_PPAGE}) {
        HelpInfoKeyFunc(iKey);
        EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0) << iKey;
    }
    EXPECT_EQ(Snapshot(Help()), before);
    EXPECT_EQ(AreaLine(2), "short");
}

TEST_F(HelpPager, KeysTurnThePages) {
    Open(NumberedLines(40));  // pages start at lines 1, 17 and 32
    ASSERT_EQ(sg_HelpInfo.iTotalPageNum, 3);
    HelpInfoKeyFunc(KEY_NPAGE);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 1);
    EXPECT_EQ(AreaLine(2), "line 17");
    EXPECT_EQ(AreaLine(16), "line 31");
    // A page that starts with a line feed shows it as its empty first line.
    EXPECT_EQ(AreaLine(1), "");
    HelpInfoKeyFunc(KEY_DOWN);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 2);
    EXPECT_EQ(AreaLine(1), "");
    EXPECT_EQ(AreaLine(2), "line 32");
    EXPECT_EQ(AreaLine(10), "line 40");
    EXPECT_EQ(AreaLine(11), "");
    // The last page stays.
    HelpInfoKeyFunc(KEY_NPAGE);
    HelpInfoKeyFunc(KEY_DOWN);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 2);
    HelpInfoKeyFunc(KEY_UP);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 1);
    HelpInfoKeyFunc(KEY_PPAGE);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0);
    EXPECT_EQ(AreaLine(1), "line 01");
    HelpInfoKeyFunc(KEY_PPAGE);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0);
    // Other keys do nothing.
    std::vector<chtype> before = Snapshot(Help());
    for (int iKey : {KEY_LEFT, KEY_RIGHT, 10, int{'q'}, KEY_F(12), KEY_HOME})
        HelpInfoKeyFunc(iKey);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0);
    EXPECT_EQ(Snapshot(Help()), before);
    EXPECT_EQ(s_iReturns, 0);
}

// A text with a page of its own: the page table holds where each page starts
// and ShowHelpInfoPage refuses pages past the last.
TEST_F(HelpPager, PagesPastTheLastAreNotShown) {
    Open(NumberedLines(17));
    std::vector<chtype> before = Snapshot(Help());
    ShowHelpInfoPage(2);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0);
    EXPECT_EQ(Snapshot(Help()), before);
    sg_HelpInfo.pcHelpInfoStr = nullptr;
    ShowHelpInfoPage(1);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0);
    EXPECT_EQ(Snapshot(Help()), before);
}

TEST_F(HelpPager, EscResetsThePagesAndReturnsOnce) {
    Open(NumberedLines(40));
    HelpInfoKeyFunc(KEY_NPAGE);
    HelpInfoKeyFunc(KEY_NPAGE);
    ASSERT_EQ(sg_HelpInfo.iCurPageNum, 2);
    HelpInfoKeyFunc(27);
    EXPECT_EQ(s_iReturns, 1);
    EXPECT_EQ(sg_HelpInfo.pfnReturn, nullptr);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0);
    EXPECT_EQ(sg_HelpInfo.iTotalPageNum, 1);
    for (int p = 0; p < HELP_MAX_PAGES; ++p)
        EXPECT_EQ(sg_HelpInfo.aiPageStartStrPos[p], 0) << p;
    HelpInfoKeyFunc(27);
    EXPECT_EQ(s_iReturns, 1);
}

TEST_F(HelpPager, ShowHelpInfoOpensTheCatalogueText) {
    RefreshPrompt(PROMPT_CONTENT_NO_MODIFY);
    ShowHelpInfo(EN_TCP_PORT_LISTEN, CountReturn);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &HelpInfoKeyFunc);
    EXPECT_EQ(sg_Screen.CurWin, Help());
    EXPECT_EQ(sg_HelpInfo.pfnReturn, &CountReturn);
    EXPECT_STREQ(sg_HelpInfo.pcHelpInfoStr, pcStrHelpTcpListenPort[LAN_ENGLISH]);
    EXPECT_EQ(PromptText(), "[PageUp/PageDown]Select Page  [Esc]Return");
    EXPECT_EQ(sg_HelpInfo.iTotalPageNum, 1);
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0);
    EXPECT_EQ(BoxWhole(), "");
    // "[NAME]" ends in column 6; its tab goes on to column 8 of the window.
    EXPECT_EQ(AreaLine(1), "[NAME] Tcp listen port.");
    EXPECT_EQ(TextAt(Help(), 1, 8, 3), "Tcp");
    EXPECT_EQ(AreaLine(2), "[DESC] the program that is listening now.");
    EXPECT_EQ(PairAt(Help(), 2, 1), 6);
    HelpInfoKeyFunc(27);
    EXPECT_EQ(s_iReturns, 1);
}

TEST_F(HelpPager, ShowHelpInfoIgnoresUnknownIdsAndANullReturn) {
    Open("previous text");
    HelpInfoKeyFunc(27);
    RefreshPrompt(PROMPT_CONTENT);
    RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
    HELP_INFO_PARA stBefore = sg_HelpInfo;
    std::vector<chtype> before = Snapshot(Help());
    ShowHelpInfo(EN_HELP_MAX, CountReturn);
    ShowHelpInfo(100, CountReturn);
    ShowHelpInfo(-1, CountReturn);
    ShowHelpInfo(EN_TCP_PORT_LISTEN, nullptr);
    EXPECT_EQ(memcmp(&stBefore, &sg_HelpInfo, sizeof(stBefore)), 0);
    EXPECT_EQ(Snapshot(Help()), before);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, &ContentKeyFunc);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_CONTENT);
    EXPECT_EQ(s_iReturns, 1);
}

// Esc on the last page of a help text, then F12 again: the pager starts over
// at page 0.
TEST_F(HelpPager, F12AfterEscOnTheLastPageShowsPageZero) {
    const char* pcText = pcStrHelp[EN_PROC_MF][LAN_ENGLISH];
    ASSERT_EQ(ModelPageStarts(pcText, 78, 16).size(), 2u) << "needs a help text of two pages";
    ASSERT_EQ(EnterContent(MakePage(
                  {{{Fixed("Process monitor"), Choose("Open")}, PROMPT_CONTENT, EN_PROC_MF}})),
              0);
    RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
    ContentKeyFunc(KEY_F(12));
    ASSERT_EQ(sg_Screen.pfnCurKeyFunc, &HelpInfoKeyFunc);
    ASSERT_EQ(sg_HelpInfo.iTotalPageNum, 2);
    std::vector<chtype> page0 = Snapshot(Help());
    sg_Screen.pfnCurKeyFunc(KEY_NPAGE);
    ASSERT_EQ(sg_HelpInfo.iCurPageNum, 1);
    EXPECT_NE(Snapshot(Help()), page0);
    sg_Screen.pfnCurKeyFunc(27);
    ASSERT_EQ(sg_Screen.pfnCurKeyFunc, &ContentKeyFunc);
    sg_Screen.pfnCurKeyFunc(KEY_F(12));
    EXPECT_EQ(sg_HelpInfo.iCurPageNum, 0);
    EXPECT_EQ(sg_HelpInfo.iTotalPageNum, 2);
    EXPECT_EQ(Snapshot(Help()), page0);
    sg_Screen.pfnCurKeyFunc(27);
}

// A page that starts with a line feed shows it as its empty first line and
// so holds one line of text fewer: every page goes on where the one before
// it ended, and no line of a page wraps back over its top.
TEST_F(HelpPager, PagesFollowEachOtherInOrder) {
    Open(NumberedLines(33));
    ASSERT_EQ(sg_HelpInfo.iTotalPageNum, 3);
    ShowHelpInfoPage(1);
    EXPECT_EQ(AreaLine(1), "");
    for (int y = 2; y <= 16; ++y) {
        char sz[16];
        snprintf(sz, sizeof(sz), "line %02d", y + 15);
        EXPECT_EQ(AreaLine(y), sz) << "line " << y;
    }
    ShowHelpInfoPage(2);
    EXPECT_EQ(AreaLine(1), "");
    EXPECT_EQ(AreaLine(2), "line 32");
    EXPECT_EQ(AreaLine(3), "line 33");
    EXPECT_EQ(AreaLine(4), "");
}

// Widths are counted in bytes, in every language: a 10-byte line holds ten
// bytes, so a UTF-8 character (three bytes) or a GB2312 pair (two) at its
// end is split across two lines, and the next page starts after twenty
// bytes, inside a character.
TEST_F(HelpPager, AMultiByteCharacterCanBeSplitAcrossLines) {
    HELP_INFO_PARA stPara = sg_HelpInfo;
    stPara.iWidth = 10;
    stPara.iHeight = 2;
    std::string utf8 = "ab";
    for (int i = 0; i < 7; ++i)
        utf8 += "\xe4\xb8\xad";
    std::string gb = "a";
    for (int i = 0; i < 10; ++i)
        gb += "\xd6\xd0";
    const struct {
        int iLang;
        const std::string& sText;
    } cases[] = {{LAN_CHINESE_UTF8, utf8}, {LAN_CHINESE_GB2312, gb}, {LAN_ENGLISH, utf8}};
    for (const auto& c : cases) {
        iLanIdx = c.iLang;
        BreakHelpPages(&stPara, c.sText.c_str());
        ASSERT_EQ(stPara.iTotalPageNum, 2) << c.iLang;
        EXPECT_EQ(stPara.aiPageStartStrPos[1], 20) << c.iLang;
    }
    iLanIdx = LAN_ENGLISH;
}

// The implementation's page breaks agree with the rule for texts of the
// catalogue and for the test's own.
TEST_F(HelpPager, BreaksFollowThePagingRule) {
    std::vector<std::string> texts = {"",
                                      "\n",
                                      "one line",
                                      NumberedLines(17),
                                      NumberedLines(33),
                                      std::string(78 * 16, 'a'),
                                      std::string(78 * 16 + 1, 'a'),
                                      std::string(16, '\n') + "after sixteen line feeds"};
    for (int id = 0; id < EN_HELP_MAX; ++id) {
        for (int lang = 0; lang < LAN_MAX; ++lang)
            texts.push_back(pcStrHelp[id][lang]);
    }
    HELP_INFO_PARA stPara = sg_HelpInfo;
    for (const std::string& t : texts) {
        std::vector<int> want = ModelPageStarts(t, 78, 16);
        ASSERT_LE(want.size(), static_cast<size_t>(HELP_MAX_PAGES));
        BreakHelpPages(&stPara, t.c_str());
        EXPECT_EQ(stPara.iTotalPageNum, static_cast<int>(want.size())) << t;
        EXPECT_EQ(stPara.iCurPageNum, 0);
        for (size_t p = 0; p < want.size(); ++p)
            EXPECT_EQ(stPara.aiPageStartStrPos[p], want[p]) << t << " page " << p;
    }
}

// Every help text of every language fits the table of 20 page starts, on the
// usual 80 x 24 terminal, the smallest of 66 x 18 and a small one of 60 x 20.
TEST_F(HelpPager, EveryCatalogueTextFitsTwentyPages) {
    const int sizes[][2] = {{80, 24}, {66, 18}, {60, 20}};
    for (const auto& size : sizes) {
        int w = size[0] - 2, h = size[1] - 8;
        for (int id = 0; id < EN_HELP_MAX; ++id) {
            for (int lang = 0; lang < LAN_MAX; ++lang) {
                const char* pcText = pcStrHelp[id][lang];
                ASSERT_NE(pcText, nullptr) << "help " << id << " language " << lang;
                size_t pages = ModelPageStarts(pcText, w, h).size();
                EXPECT_LE(pages, static_cast<size_t>(HELP_MAX_PAGES))
                    << "help " << id << " language " << lang << " on " << size[0] << "x" << size[1];
            }
        }
    }
}

}  // namespace
}  // namespace nvcontenttest
