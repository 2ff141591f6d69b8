// Shared by the content-view unit tests: an in-memory curses screen of 24
// rows and 80 columns (output to /dev/null) with the console's colour pairs
// and frame windows, the help window, readers of window cells, and a compact
// way of declaring pages of rows and cells.
#ifndef NV_TESTS_UNIT_TEST_CONTENT_SCREEN_H
#define NV_TESTS_UNIT_TEST_CONTENT_SCREEN_H

#include <curses.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "content/content_data.h"
#include "content/content_draw.h"
#include "content/content_view.h"
#include "content/help_pager.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"
#include "strings/com_str.h"

namespace nvcontenttest {

// The frame windows and the help window on a screen of 24 x 80, created once
// for a test program; every test starts with blank windows, no page shown
// and the prompt line unset.
class CursesScreenTest : public ::testing::Test {
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
        init_pair(1, COLOR_WHITE, COLOR_BLUE);
        init_pair(2, COLOR_BLACK, COLOR_WHITE);
        init_pair(3, COLOR_BLACK, COLOR_GREEN);
        init_pair(4, COLOR_BLACK, COLOR_YELLOW);
        init_pair(5, COLOR_WHITE, COLOR_BLUE);
        init_pair(6, COLOR_BLUE, COLOR_YELLOW);
        init_pair(7, COLOR_BLUE, COLOR_WHITE);
        InitInfoWindow();
        InitPromptWindow();
        InitHelpInfoWindow();
        InitContentWindow();
    }
    static void TearDownTestSuite() {
        UnInitContent();
        UnInitHelpInfo();
        UnInitPromt();
        UnInitInfoWin();
        endwin();
        delscreen(s_screen);
        fclose(s_out);
        fclose(s_in);
    }
    void SetUp() override {
        iLanIdx = LAN_ENGLISH;
        werase(sg_Screen.ContentWin);
        werase(sg_Screen.InfoWin);
        werase(sg_Screen.PromptWin);
        sg_Screen.iCurPromptIdx = PROMPT_MAX;
        RegistKeyFunc(nullptr, nullptr);
        memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
    }
    void TearDown() override {
        // A page the test left shown goes the way Esc sends it.
        FreeContent(sg_ContentInfo.pstContent);
        memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
    }

    static WINDOW* Content() { return sg_Screen.ContentWin; }

    static chtype At(WINDOW* w, int y, int x) { return mvwinch(w, y, x); }
    static char CharAt(WINDOW* w, int y, int x) {
        return static_cast<char>(At(w, y, x) & A_CHARTEXT);
    }
    static int PairAt(WINDOW* w, int y, int x) {
        return static_cast<int>(PAIR_NUMBER(At(w, y, x) & A_COLOR));
    }
    static bool UnderlinedAt(WINDOW* w, int y, int x) { return (At(w, y, x) & A_UNDERLINE) != 0; }
    // len characters from y, x.
    static std::string TextAt(WINDOW* w, int y, int x, int len) {
        std::string s;
        for (int c = x; c < x + len; ++c)
            s += CharAt(w, y, c);
        return s;
    }
    // Line y of the window without trailing blanks.
    static std::string Line(WINDOW* w, int y) {
        std::string s = TextAt(w, y, 0, getmaxx(w));
        size_t end = s.find_last_not_of(' ');
        return end == std::string::npos ? "" : s.substr(0, end + 1);
    }
    // Every cell of the window, text and attributes.
    static std::vector<chtype> Snapshot(WINDOW* w) {
        std::vector<chtype> v;
        for (int y = 0; y < getmaxy(w); ++y) {
            for (int x = 0; x < getmaxx(w); ++x)
                v.push_back(At(w, y, x));
        }
        return v;
    }
    // Each of len cells from y, x has colour pair pair and the underline
    // attribute exactly when underlined; the first cell that does not, else
    // an empty text.
    static std::string SpanLooks(WINDOW* w, int y, int x, int len, int pair, bool underlined) {
        for (int c = x; c < x + len; ++c) {
            if (PairAt(w, y, c) != pair || UnderlinedAt(w, y, c) != underlined) {
                char sz[160];
                snprintf(sz, sizeof(sz), "cell %d,%d '%c' has pair %d underline %d, expected %d %d",
                         y, c, CharAt(w, y, c), PairAt(w, y, c), UnderlinedAt(w, y, c) ? 1 : 0,
                         pair, underlined ? 1 : 0);
                return sz;
            }
        }
        return "";
    }
    // Cells of the window in colour pair pair.
    static int CountPair(WINDOW* w, int pair) {
        int n = 0;
        for (int y = 0; y < getmaxy(w); ++y) {
            for (int x = 0; x < getmaxx(w); ++x)
                n += PairAt(w, y, x) == pair ? 1 : 0;
        }
        return n;
    }
    static std::string PromptText() {
        return Line(sg_Screen.PromptWin, 0) + Line(sg_Screen.PromptWin, 1);
    }

    static SCREEN* s_screen;
    static FILE* s_out;
    static FILE* s_in;
};

inline SCREEN* CursesScreenTest::s_screen;
inline FILE* CursesScreenTest::s_out;
inline FILE* CursesScreenTest::s_in;

// One cell of a page being declared.
struct CellDecl {
    std::string sText;
    EN_CTRL_BAR_TYPE enType = EN_NONE_CONTROL;
    int iMaxWidth = 0;
    tVstr vsArgv;
};

inline CellDecl Fixed(const std::string& s, int iMaxWidth = 0) {
    return CellDecl{s, EN_NONE_CONTROL, iMaxWidth, {}};
}
inline CellDecl Choose(const std::string& s) {
    return CellDecl{s, EN_CHOOSE_CONTROL, 0, {"0"}};
}
inline CellDecl Input(const std::string& s, int iMaxWidth, bool bMasked) {
    return CellDecl{s, EN_INPUT_CONTROL, iMaxWidth, {"0", "0", "1", bMasked ? "1" : "0"}};
}
inline CellDecl OfType(const std::string& s, EN_CTRL_BAR_TYPE enType) {
    return CellDecl{s, enType, 0, {"0"}};
}

struct RowDecl {
    std::vector<CellDecl> vCells;
    int iPrompt = PROMPT_CONTENT;
    int iHelp = EN_SHMMAX;
};

// A page allocated the way the page builders allocate theirs, so that
// FreeContent releases it.
inline CONTENT_DATA* MakePage(const std::vector<RowDecl>& vRows) {
    CONTENT_DATA* pstPage = new CONTENT_DATA;
    pstPage->pfnRefreshCallFunc = nullptr;
    pstPage->iItemNum = static_cast<int>(vRows.size());
    pstPage->pstItem = new CONTENT_ITEM[vRows.size()];
    for (size_t r = 0; r < vRows.size(); ++r) {
        CONTENT_ITEM& stRow = pstPage->pstItem[r];
        stRow.iPromptIndex = vRows[r].iPrompt;
        stRow.iHelpInfoIndex = vRows[r].iHelp;
        stRow.iSectionNum = static_cast<int>(vRows[r].vCells.size());
        stRow.pstSection = new CONTENT_SECTION[vRows[r].vCells.size()];
        for (size_t j = 0; j < vRows[r].vCells.size(); ++j) {
            const CellDecl& c = vRows[r].vCells[j];
            stRow.pstSection[j].iMaxWidth = c.iMaxWidth;
            stRow.pstSection[j].strSecName = c.sText;
            stRow.pstSection[j].enCtrlType = c.enType;
            stRow.pstSection[j].vstrCtrlArgv = c.vsArgv;
        }
    }
    return pstPage;
}

// n read-only rows of one cell "row 00", "row 01", ...
inline CONTENT_DATA* NumberedPage(int n, int iHelp = EN_TCP_PORT_LISTEN) {
    std::vector<RowDecl> v;
    for (int r = 0; r < n; ++r) {
        char sz[16];
        snprintf(sz, sizeof(sz), "row %02d", r);
        v.push_back(RowDecl{{Fixed(sz)}, PROMPT_CONTENT_NO_MODIFY, iHelp});
    }
    return MakePage(v);
}

// Releases a page the test owns when the test ends.
class PageGuard {
public:
    explicit PageGuard(CONTENT_DATA* p) : m_p(p) {}
    ~PageGuard() { FreeContent(m_p); }
    PageGuard(const PageGuard&) = delete;
    PageGuard& operator=(const PageGuard&) = delete;
    CONTENT_DATA* Get() const { return m_p; }

private:
    CONTENT_DATA* m_p;
};

}  // namespace nvcontenttest

#endif
