// Terminal resize and the smallest terminal, in a pseudo-terminal against a
// real agent: the menu, a page with its focus and a page with a bar open are
// laid out again for the new size; after a round trip of sizes the screen
// equals a fresh draw; below 66x18 a one-line notice is shown and Esc ends
// the console; a console started on a small terminal draws its frame once
// the terminal is large enough.
#include <cstring>
#include <string>

#include "test_screen_util.h"

namespace nvscreentest {
namespace {

using nvtest::ConsoleOptions;
using nvtest::ConsoleRun;
using nvtest::HasPair;
using nvtest::PairCode;
using nvtest::ScreenPos;

const char kLongNotice[] = "Screen too small: nvui needs 66x18. Enlarge it, or Esc to exit.";
const char kShortNotice[] = "Need 66x18. Esc=exit";
const char kVersion[] = "norvane for linux 2.4.1";
const char kMenuPrompt[] = "[up/down arrow]Select item [left/right arrow]Select menu";
const char kPagePrompt[] = "[up/down arrow]Select item [F12]Help [Enter]Modify [Esc]Return to menu";

// Every cell of two screens has the same text and colour pair.
AssertionResult SameScreen(const ScreenSession& a, const ScreenSession& b) {
    if (a.Rows() != b.Rows() || a.Cols() != b.Cols())
        return AssertionFailure() << "sizes differ";
    for (int r = 0; r < a.Rows(); ++r) {
        for (int c = 0; c < a.Cols(); ++c) {
            ScreenCell x = a.Cell(r, c), y = b.Cell(r, c);
            if (x.sCh != y.sCh || PairCode(x) != PairCode(y) || x.bReverse != y.bReverse)
                return AssertionFailure() << "cell " << r << "," << c << " differs:\n"
                                          << a.DumpColors() << "\nfresh:\n"
                                          << b.DumpColors();
        }
    }
    return AssertionSuccess();
}

class ScreenResize : public ::testing::Test {
protected:
    ScreenSession& S() { return m_run.Screen(); }

    void Start(int rows = 24, int cols = 80) { StartRun(m_run, rows, cols); }
    static void StartRun(ConsoleRun& run, int rows, int cols) {
        ConsoleOptions o;
        o.iRows = rows;
        o.iCols = cols;
        std::string err;
        ASSERT_TRUE(run.Start(o, &err)) << err;
    }
    static AssertionResult MenuReady(ScreenSession& s) {
        if (!s.WaitForTextAt(s.Rows() - 3, 0, kMenuPrompt))
            return AssertionFailure() << "no menu prompt\n" << s.Dump();
        return AssertionSuccess();
    }
    // System Optimize, Network: the page of three switches.
    static AssertionResult OpenNetworkPage(ScreenSession& s) {
        s.SendKey(Key::Down);
        s.SendKey(Key::Enter);
        s.SendKey(Key::Enter);
        if (!s.WaitForText(s.Rows() - 3, kPagePrompt))
            return AssertionFailure() << "no page\n" << s.Dump();
        return AssertionSuccess();
    }
    // The row that shows text, focused (colour pair 7 at its first letter).
    AssertionResult FocusOn(const std::string& text) {
        bool ok = S().WaitUntil([&] {
            ScreenPos p = S().FindText(text);
            return p.Found() && HasPair(S().Cell(p.iRow, p.iCol), 7);
        });
        if (!ok)
            return AssertionFailure() << "'" << text << "' is not focused\n" << S().DumpColors();
        return AssertionSuccess();
    }
    // The frame of a w x h screen: version right-aligned on row 0, the menu
    // bar in pair 1 and the prompt lines in pair 3 across the whole width.
    AssertionResult FrameFor(int h, int w, const std::string& prompt) {
        bool ok = S().WaitUntil([&] {
            int vlen = static_cast<int>(strlen(kVersion));
            return S().Text(0, w - vlen, vlen) == kVersion &&
                   S().Row(h - 3).rfind(prompt, 0) == 0 && S().SpanHasPair(0, 0, w, 1) &&
                   S().SpanHasPair(2, 0, w, 1) && S().SpanHasPair(h - 3, 0, w, 3) &&
                   S().SpanHasPair(h - 2, 0, w, 3) && S().SpanHasPair(h - 1, 0, w, 3);
        });
        // The rest of the redraw follows the frame rows.
        S().WaitSettled();
        if (!ok)
            return AssertionFailure() << "frame not laid out for " << w << "x" << h << "\n"
                                      << S().DumpColors() << "\nlog:\n"
                                      << m_run.ReadConsoleLog();
        return AssertionSuccess();
    }

    void ResizeTo(int rows, int cols) { S().Resize(rows, cols); }

    ConsoleRun m_run;
};

TEST_F(ScreenResize, TheMenuIsLaidOutForALargerTerminal) {
    Start();
    ASSERT_TRUE(MenuReady(S()));
    S().SendKey(Key::Enter);  // into System Config's drop-down
    ASSERT_TRUE(S().WaitForTextAt(4, 23, "Net Interface"));
    ResizeTo(30, 100);
    ASSERT_TRUE(FrameFor(30, 100, kMenuPrompt));
    // The path row and the open drop-down stay where their bands are.
    EXPECT_EQ(S().Text(1, 1, 14), "System Config ");
    EXPECT_EQ(S().Text(1, 21, 15), "->Net Interface");
    EXPECT_EQ(S().Cell(3, 22).sCh, "┌");
    EXPECT_EQ(S().Text(4, 23, 13), "Net Interface");
    EXPECT_TRUE(S().Cell(4, 23).bReverse);
    // Nothing of the old prompt rows is left in the content area.
    EXPECT_EQ(S().FindText(kMenuPrompt).iRow, 27);
    // The keys still go to the menu.
    S().SendKey(Key::Down);
    EXPECT_TRUE(S().WaitUntil([&] { return S().Cell(5, 23).bReverse; })) << S().DumpColors();
}

TEST_F(ScreenResize, APageKeepsItsFocusedRowAcrossSizes) {
    Start();
    ASSERT_TRUE(MenuReady(S()));
    ASSERT_TRUE(OpenNetworkPage(S()));
    S().SendKey(Key::Down);
    ASSERT_TRUE(FocusOn("Tcp SynCookies:"));
    ResizeTo(30, 100);
    ASSERT_TRUE(FrameFor(30, 100, kPagePrompt));
    ASSERT_TRUE(FocusOn("Tcp SynCookies:"));
    // Three rows spread over 24 content lines: gap (24 - 3) / 4 = 5, so the
    // rows stand on screen rows 3 + 5, 3 + 11 and 3 + 17.
    EXPECT_EQ(S().FindText("Icmp Echo Ignore All:").iRow, 8);
    EXPECT_EQ(S().FindText("Tcp SynCookies:").iRow, 14);
    EXPECT_EQ(S().FindText("Tcp Wait Time Reuse:").iRow, 20);
    // The page keeps the keyboard.
    S().SendKey(Key::Down);
    EXPECT_TRUE(FocusOn("Tcp Wait Time Reuse:"));
}

TEST_F(ScreenResize, ARoundTripOfSizesEndsOnAFreshScreen) {
    Start();
    ASSERT_TRUE(MenuReady(S()));
    ASSERT_TRUE(OpenNetworkPage(S()));
    S().SendKey(Key::Down);
    ASSERT_TRUE(FocusOn("Tcp SynCookies:"));
    ResizeTo(30, 100);
    ASSERT_TRUE(FrameFor(30, 100, kPagePrompt));
    ResizeTo(10, 20);
    ASSERT_TRUE(S().WaitForTextAt(0, 0, kShortNotice)) << S().Dump();
    ResizeTo(24, 80);
    ASSERT_TRUE(FrameFor(24, 80, kPagePrompt));
    ASSERT_TRUE(S().WaitSettled());

    ConsoleRun fresh;
    StartRun(fresh, 24, 80);
    ASSERT_TRUE(MenuReady(fresh.Screen()));
    ASSERT_TRUE(OpenNetworkPage(fresh.Screen()));
    fresh.Screen().SendKey(Key::Down);
    ASSERT_TRUE(fresh.Screen().WaitSettled());
    EXPECT_TRUE(SameScreen(S(), fresh.Screen()));
}

TEST_F(ScreenResize, AnOpenBarIsClosedAndThePageRedrawn) {
    Start();
    ASSERT_TRUE(MenuReady(S()));
    ASSERT_TRUE(OpenNetworkPage(S()));
    S().SendKey(Key::Enter);  // the choose bar of the first switch
    ASSERT_TRUE(S().WaitUntil([&] { return S().FindText("[Open]").iRow != 6; })) << S().Dump();
    ASSERT_TRUE(S().WaitSettled());
    size_t before = m_run.Agent().ReadJournal().size();
    ResizeTo(30, 100);
    ASSERT_TRUE(FrameFor(30, 100, kPagePrompt));
    ASSERT_TRUE(FocusOn("Icmp Echo Ignore All:"));
    // No box is left on the screen and nothing was sent.
    EXPECT_FALSE(S().ScreenContains("┌")) << S().Dump();
    EXPECT_EQ(m_run.Agent().ReadJournal().size(), before);
    S().SendKey(Key::Down);
    EXPECT_TRUE(FocusOn("Tcp SynCookies:"));
}

TEST_F(ScreenResize, TheExitQuestionIsClosedByAResize) {
    Start();
    ASSERT_TRUE(MenuReady(S()));
    S().SendKey(Key::Esc);
    ASSERT_TRUE(S().WaitForTextAnywhere("Are you sure to exit?"));
    ResizeTo(30, 100);
    ASSERT_TRUE(FrameFor(30, 100, kMenuPrompt));
    EXPECT_TRUE(S().WaitForTextGone("Are you sure to exit?")) << S().Dump();
    // Esc asks again, in the box of the new size, and yes ends the console.
    S().SendKey(Key::Esc);
    ASSERT_TRUE(S().WaitForTextAnywhere("Are you sure to exit?"));
    S().SendKey(Key::Left);
    S().SendKey(Key::Enter);
    EXPECT_EQ(S().WaitExit(), 0);
}

TEST_F(ScreenResize, BelowTheSmallestSizeANoticeShowsAndEscExits) {
    Start();
    ASSERT_TRUE(MenuReady(S()));
    ResizeTo(17, 70);
    ASSERT_TRUE(S().WaitForTextAt(0, 0, kLongNotice)) << S().Dump();
    for (int r = 1; r < 17; ++r)
        EXPECT_EQ(S().Row(r), "") << "row " << r;
    ResizeTo(10, 20);
    ASSERT_TRUE(S().WaitForTextAt(0, 0, kShortNotice)) << S().Dump();
    // Keys other than Esc do nothing.
    S().SendKey(Key::Enter);
    S().SendKey(Key::Down);
    ASSERT_TRUE(S().WaitSettled());
    EXPECT_EQ(S().Row(0), kShortNotice);
    S().SendKey(Key::Esc);
    EXPECT_EQ(S().WaitExit(), 0);
}

TEST_F(ScreenResize, AConsoleStartedSmallDrawsItsFrameWhenTheTerminalGrows) {
    Start(10, 20);
    ASSERT_TRUE(S().WaitForTextAt(0, 0, kShortNotice)) << S().Dump();
    ResizeTo(24, 80);
    ASSERT_TRUE(MenuReady(S()));
    ASSERT_TRUE(FrameFor(24, 80, kMenuPrompt));
    EXPECT_TRUE(S().ScreenContains("Welcome to use server norvane"));
    EXPECT_FALSE(S().ScreenContains(kShortNotice));
}

// At the smallest size the deepest drop-down fits, and so does the exit
// question.
TEST_F(ScreenResize, TheSmallestSizeHoldsTheDeepestMenuAndTheExitQuestion) {
    Start(18, 66);
    ASSERT_TRUE(MenuReady(S()));
    S().SendKey(Key::Down, 3);  // App Config
    S().SendKey(Key::Enter);
    S().SendKey(Key::Enter);  // Iptables
    ASSERT_TRUE(S().WaitForTextAt(4, 45, "Input chain")) << S().Dump();
    EXPECT_EQ(S().Cell(3, 44).sCh, "┌");
    EXPECT_EQ(S().Cell(3, 65).sCh, "┐");
    EXPECT_EQ(S().Text(1, 45, 11), "Input chain");
    S().SendKey(Key::Esc);
    ASSERT_TRUE(S().WaitForTextAnywhere("Are you sure to exit?")) << S().Dump();
    S().SendKey(Key::Left);
    S().SendKey(Key::Enter);
    EXPECT_EQ(S().WaitExit(), 0);
}

TEST_F(ScreenResize, AConsoleStartedSmallEndsOnEsc) {
    Start(10, 20);
    ASSERT_TRUE(S().WaitForTextAt(0, 0, kShortNotice)) << S().Dump();
    S().SendKey(Key::Esc);
    EXPECT_EQ(S().WaitExit(), 0);
}

}  // namespace
}  // namespace nvscreentest
