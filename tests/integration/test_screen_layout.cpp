// The console's first screen in terminals of several sizes: the four bands
// and their colour pairs, the menu prompt (wrapped onto the second prompt
// row where it is longer than a row), the product name and the agent's
// version ending in the last column, the path row, and the welcome text
// placed by its fixed rule, with the first drop-down not shown yet.
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "temp_dir.h"
#include "test_screen_util.h"

namespace nvscreentest {
namespace {

struct FrameCase {
    int iRows;
    int iCols;
    std::string sVersion;  // empty: the demo state's own
};

void PrintTo(const FrameCase& c, std::ostream* os) {
    *os << c.iCols << "x" << c.iRows;
}

class ScreenFrame : public ::testing::TestWithParam<FrameCase> {
protected:
    void SetUp() override {
        const FrameCase& c = GetParam();
        nlohmann::json state = nlohmann::json::parse(nvtest::ReadFile(ConsoleRun::DemoStatePath()));
        if (!c.sVersion.empty())
            state["sVersion"] = c.sVersion;
        m_version = state["sVersion"].get<std::string>();
        ConsoleOptions o;
        o.iRows = c.iRows;
        o.iCols = c.iCols;
        o.sStateJson = state.dump(2);
        ASSERT_TRUE(StartConsole(m_run, o));
        // The welcome text is drawn before the prompt, so it is complete by
        // now; its last line is waited for all the same, so that a failure
        // tells which part of the screen is missing.
        std::vector<std::string> lines = Lines(OnScreen(pcStrWelcomeInfo, LAN_ENGLISH));
        ASSERT_TRUE(Screen().WaitForText(3 + Welcome().iTop + static_cast<int>(lines.size()) - 1,
                                         lines.back()))
            << Screen().Dump();
    }

    ScreenSession& Screen() { return m_run.Screen(); }
    WelcomePlace Welcome() {
        return PlaceWelcome(OnScreen(pcStrWelcomeInfo, LAN_ENGLISH), GetParam().iRows,
                            GetParam().iCols);
    }

    ConsoleRun m_run;
    std::string m_version;
};

TEST_P(ScreenFrame, BandsHaveTheirColourPairs) {
    ScreenSession& s = Screen();
    const int rows = s.Rows(), cols = s.Cols();
    for (int r = 0; r <= 2; ++r)
        EXPECT_TRUE(s.SpanHasPair(r, 0, cols, 1)) << "menu bar row " << r << "\n" << s.DumpColors();
    for (int r = 3; r <= rows - 4; ++r)
        EXPECT_TRUE(s.SpanHasPair(r, 0, cols, 2)) << "content row " << r << "\n" << s.DumpColors();
    for (int r = rows - 3; r <= rows - 1; ++r)
        EXPECT_TRUE(s.SpanHasPair(r, 0, cols, 3)) << "prompt or information row " << r << "\n"
                                                  << s.DumpColors();
    EXPECT_TRUE(InfoLineClear(s)) << s.DumpColors();
    EXPECT_FALSE(s.Cursor().bVisible);
    EXPECT_TRUE(s.AltScreen());
}

// The menu prompt from column 0 of the first prompt row, continued on the
// second where it does not fit (81 bytes: one byte on the second row of an
// 80-column terminal).
TEST_P(ScreenFrame, MenuPromptIsShown) {
    ScreenSession& s = Screen();
    std::vector<std::string> rows = WrapRows(kMenuPromptEn, s.Cols());
    ASSERT_LE(rows.size(), 2u);
    EXPECT_EQ(s.Row(s.Rows() - 3), rows[0]) << s.Dump();
    EXPECT_EQ(s.Row(s.Rows() - 2), rows.size() > 1 ? rows[1] : "") << s.Dump();
    if (s.Cols() == 80) {
        EXPECT_EQ(std::string(kMenuPromptEn).size(), 81u);
        EXPECT_EQ(s.Row(22), "t");
    }
    EXPECT_EQ(s.Row(s.Rows() - 1), "");
}

// "norvane for linux " and the agent's version, ending in the last column of
// row 0; nothing else on that row.
TEST_P(ScreenFrame, VersionEndsInTheLastColumn) {
    ScreenSession& s = Screen();
    std::string text = "norvane for linux " + m_version;
    int start = s.Cols() - static_cast<int>(text.size());
    EXPECT_EQ(s.Text(0, start, static_cast<int>(text.size())), text) << s.Dump();
    EXPECT_EQ(s.Row(0), std::string(static_cast<size_t>(start), ' ') + text) << s.Dump();
    EXPECT_TRUE(s.SpanHasPair(0, 0, s.Cols(), 1));
    for (int c = start; c < s.Cols(); ++c)
        EXPECT_FALSE(s.Cell(0, c).bReverse || s.Cell(0, c).bBold) << "column " << c;
}

// The path row holds the first item, focused, with its arrow; row 2 is
// empty; the first drop-down is not drawn before the first Up or Down.
TEST_P(ScreenFrame, PathRowShowsTheFirstItemAndNoDropDownYet) {
    ScreenSession& s = Screen();
    EXPECT_TRUE(PathShows(s, 0, "System Config", true, true)) << s.DumpColors();
    EXPECT_TRUE(BlankSpan(s, 1, 0, 1, 1));
    EXPECT_TRUE(BlankSpan(s, 1, kBand + 1, s.Cols() - kBand - 1, 1)) << s.DumpColors();
    EXPECT_TRUE(BlankSpan(s, 2, 0, s.Cols(), 1)) << s.DumpColors();
    EXPECT_EQ(s.Cell(3, 0).sCh, " ") << s.Dump();
    EXPECT_FALSE(s.ScreenContains("System Optimize")) << s.Dump();
}

// Rows = line breaks (8), width = widest line ending in a break (52 bytes,
// the last line is not measured): top = (LINES - 6 - 8) / 2 and left =
// (COLS - 52) / 2 in the content window, which starts at screen row 3.
TEST_P(ScreenFrame, WelcomeTextIsPlacedByItsRule) {
    ScreenSession& s = Screen();
    std::string text = OnScreen(pcStrWelcomeInfo, LAN_ENGLISH);
    WelcomePlace p = Welcome();
    EXPECT_EQ(p.iRows, 8);
    EXPECT_EQ(p.iWidth, 52);
    EXPECT_EQ(p.iTop, (s.Rows() - 6 - 8) / 2);
    EXPECT_EQ(p.iLeft, (s.Cols() - 52) / 2);
    if (s.Cols() == 80 && s.Rows() == 24) {
        EXPECT_EQ(3 + p.iTop, 8);
        EXPECT_EQ(p.iLeft, 14);
    }
    std::vector<std::string> lines = Lines(text);
    ASSERT_EQ(lines.size(), 9u);
    for (int r = 3; r <= s.Rows() - 4; ++r) {
        int i = r - 3 - p.iTop;
        std::string want;
        if (i >= 0 && i < static_cast<int>(lines.size()) && !lines[i].empty())
            want = std::string(static_cast<size_t>(p.iLeft), ' ') + lines[i];
        EXPECT_EQ(s.Row(r), want) << "row " << r << "\n" << s.Dump();
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, ScreenFrame,
                         ::testing::Values(FrameCase{24, 80, ""},
                                           FrameCase{30, 100, "10.20.30-rc1"},
                                           FrameCase{19, 66, ""}),
                         [](const ::testing::TestParamInfo<FrameCase>& info) {
                             return std::to_string(info.param.iCols) + "x" +
                                    std::to_string(info.param.iRows);
                         });

}  // namespace
}  // namespace nvscreentest
