// Tests of the screen-test harness itself, against its curses probe program
// and /bin/sh: terminal sizes, text at exact places, attributes, colour
// pairs, the cursor, keys as curses reads them, raw bytes, exit statuses and
// reaping, and the console run's wiring of agent, socket and log.
#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "child_process.h"
#include "gtest/gtest.h"
#include "screen_charset.h"
#include "screen_console.h"
#include "screen_session.h"
#include "temp_dir.h"

// Only the key and colour numbers are used from curses, not its macros.
#define NCURSES_NOMACROS
#include <curses.h>

namespace nvtest {
namespace {

static_assert(kBlack == COLOR_BLACK && kRed == COLOR_RED && kGreen == COLOR_GREEN &&
                  kYellow == COLOR_YELLOW && kBlue == COLOR_BLUE && kMagenta == COLOR_MAGENTA &&
                  kCyan == COLOR_CYAN && kWhite == COLOR_WHITE,
              "colour numbers follow curses");

using Clock = std::chrono::steady_clock;

const char* const kChineseUtf8 = "\xe4\xb8\xad\xe6\x96\x87";
const char* const kChineseGb = "\xd6\xd0\xce\xc4";

std::string ProbePath() {
    return std::string(NV_BIN_DIR) + "/screen_probe";
}

long MsSince(Clock::time_point t) {
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

// A session of the probe program, started and drawn.
class ProbeTest : public ::testing::Test {
protected:
    void StartProbe(int rows = 24, int cols = 80, const std::vector<std::string>& args = {},
                    ScreenCharset charset = ScreenCharset::Utf8) {
        ScreenOptions o;
        o.iRows = rows;
        o.iCols = cols;
        o.eCharset = charset;
        std::vector<std::string> argv = {ProbePath()};
        argv.insert(argv.end(), args.begin(), args.end());
        std::string err;
        ASSERT_TRUE(m_s.Start(argv, o, &err)) << err;
        ASSERT_TRUE(m_s.WaitForTextAt(11, 6, "\xe2\x94\x90")) << m_s.Dump();
        ASSERT_TRUE(m_s.WaitUntil([&] {
            CursorState c = m_s.Cursor();
            return c.iRow == 12 && c.iCol == 7;
        })) << m_s.Dump();
    }

    // The codes of the next n keys the probe reads (it shows the latest
    // eight); empty when they do not come. Keys typed ahead may be read
    // before the probe redraws, so the history row is what counts.
    std::vector<int> NextCodes(int n) {
        m_count += n;
        std::string tag = "key #" + std::to_string(m_count) + ": ";
        if (!m_s.WaitForText(m_s.Rows() - 1, tag)) {
            ADD_FAILURE() << "no " << tag << "\n" << m_s.Dump();
            return {};
        }
        std::vector<int> codes;
        std::istringstream in(m_s.Row(m_s.Rows() - 2).substr(5));
        int code = 0;
        while (in >> code)
            codes.push_back(code);
        if (static_cast<int>(codes.size()) < n)
            return {};
        return std::vector<int>(codes.end() - n, codes.end());
    }

    // The code the probe shows for the next key it reads; -1 when none.
    int NextCode() {
        std::vector<int> codes = NextCodes(1);
        return codes.empty() ? -1 : codes[0];
    }

    int CodeOf(Key key) {
        m_s.SendKey(key);
        return NextCode();
    }

    ScreenSession m_s;
    int m_count = 0;
};

class ProbeSizeTest : public ProbeTest,
                      public ::testing::WithParamInterface<std::tuple<int, int>> {};

TEST_P(ProbeSizeTest, CursesSeesTheTerminalSize) {
    int rows = std::get<0>(GetParam());
    int cols = std::get<1>(GetParam());
    StartProbe(rows, cols);
    EXPECT_EQ(m_s.Row(0),
              "LINES=" + std::to_string(rows) + " COLS=" + std::to_string(cols) + " COLORS=256");
    EXPECT_EQ(m_s.Rows(), rows);
    EXPECT_EQ(m_s.Cols(), cols);
    EXPECT_EQ(static_cast<int>(m_s.Row(1, false).size()), cols);
    // The probe's last row is the terminal's last row.
    m_s.SendText("x");
    EXPECT_EQ(NextCode(), 'x');
    EXPECT_EQ(m_s.Row(rows - 1), "key #1: 120 x");
    EXPECT_EQ(m_s.Row(rows - 2), "keys: 120");
}

INSTANTIATE_TEST_SUITE_P(Sizes, ProbeSizeTest,
                         ::testing::Values(std::make_tuple(24, 80), std::make_tuple(30, 100),
                                           std::make_tuple(20, 60)));

TEST_F(ProbeTest, TextAtExactPositions) {
    StartProbe();
    EXPECT_EQ(m_s.Text(1, 4, 17), "Plain text at 1,4");
    EXPECT_EQ(m_s.Row(1), "    Plain text at 1,4");
    EXPECT_EQ(m_s.Row(1, false), "    Plain text at 1,4" + std::string(80 - 21, ' '));
    EXPECT_EQ(m_s.Text(1, 0, 4), "    ");
    EXPECT_EQ(m_s.Cell(1, 4).sCh, "P");
    EXPECT_EQ(m_s.Cell(1, 3).sCh, " ");
    EXPECT_EQ(m_s.Cell(23, 79).sCh, " ");
    ScreenPos p = m_s.FindText("text at");
    EXPECT_EQ(p.iRow, 1);
    EXPECT_EQ(p.iCol, 10);
    EXPECT_FALSE(m_s.FindText("not on the screen").Found());
    EXPECT_TRUE(m_s.WaitForTextAt(1, 4, "Plain", 0));
    EXPECT_FALSE(m_s.WaitForTextAt(1, 5, "Plain", 0));
    EXPECT_TRUE(m_s.WaitForText(1, "at 1,4", 0));
    // Out of the screen: nothing, not a crash.
    EXPECT_EQ(m_s.Text(24, 0, 5), "");
    EXPECT_EQ(m_s.Text(1, 78, 10), "  ");
}

TEST_F(ProbeTest, EachAttributeDecodes) {
    StartProbe();
    for (int c = 0; c < 7; ++c) {
        ScreenCell cell = m_s.Cell(2, c);
        EXPECT_TRUE(cell.bReverse) << c;
        EXPECT_FALSE(cell.bBold) << c;
        EXPECT_FALSE(cell.bUnderline) << c;
    }
    EXPECT_FALSE(m_s.Cell(2, 7).bReverse);
    for (int c = 10; c < 14; ++c) {
        ScreenCell cell = m_s.Cell(2, c);
        EXPECT_TRUE(cell.bBold) << c;
        EXPECT_FALSE(cell.bReverse) << c;
        EXPECT_FALSE(cell.bUnderline) << c;
    }
    EXPECT_FALSE(m_s.Cell(2, 14).bBold);
    for (int c = 20; c < 29; ++c) {
        ScreenCell cell = m_s.Cell(2, c);
        EXPECT_TRUE(cell.bUnderline) << c;
        EXPECT_FALSE(cell.bBold) << c;
        EXPECT_FALSE(cell.bReverse) << c;
    }
    EXPECT_FALSE(m_s.Cell(2, 29).bUnderline);
    ScreenCell plain = m_s.Cell(1, 4);
    EXPECT_FALSE(plain.bReverse || plain.bBold || plain.bUnderline || plain.bItalic ||
                 plain.bBlink);
}

TEST_F(ProbeTest, ColourPairsDecodeAsCursesAskedForThem) {
    StartProbe();
    const int kExpected[7][2] = {{COLOR_WHITE, COLOR_BLUE},  {COLOR_BLACK, COLOR_WHITE},
                                 {COLOR_BLACK, COLOR_GREEN}, {COLOR_BLACK, COLOR_YELLOW},
                                 {COLOR_WHITE, COLOR_BLUE},  {COLOR_BLUE, COLOR_YELLOW},
                                 {COLOR_BLUE, COLOR_WHITE}};
    for (int pair = 1; pair <= 7; ++pair) {
        int row = 2 + pair;
        ScreenCell cell = m_s.Cell(row, 0);
        EXPECT_EQ(cell.iFg, kExpected[pair - 1][0]) << "pair " << pair;
        EXPECT_EQ(cell.iBg, kExpected[pair - 1][1]) << "pair " << pair;
        EXPECT_TRUE(HasColors(cell, kExpected[pair - 1][0], kExpected[pair - 1][1]));
        EXPECT_TRUE(HasPair(cell, pair));
        EXPECT_TRUE(m_s.SpanHasPair(row, 0, 10, pair)) << m_s.DumpColors();
        EXPECT_FALSE(m_s.SpanHasPair(row, 0, 11, pair));
        EXPECT_FALSE(cell.bReverse);
        // Beyond the text, curses' pair 0: white on black.
        EXPECT_TRUE(HasColors(m_s.Cell(row, 10), COLOR_WHITE, COLOR_BLACK));
        EXPECT_NE(cell.ulFgRgb, cell.ulBgRgb);
    }
    EXPECT_EQ(m_s.Text(3, 0, 6), "PAIR 1");
    // Pair 2 is not pair 1, pairs 1 and 5 look the same.
    EXPECT_FALSE(HasPair(m_s.Cell(4, 0), 1));
    EXPECT_TRUE(HasPair(m_s.Cell(3, 0), 5));
    // Pair 4 reversed keeps the pair's colours and is marked reversed.
    ScreenCell sel = m_s.Cell(6, 12);
    EXPECT_EQ(sel.sCh, "S");
    EXPECT_TRUE(sel.bReverse);
    EXPECT_TRUE(HasPair(sel, 4));
    EXPECT_EQ(PairCode(sel), 'd');
    EXPECT_EQ(PairCode(m_s.Cell(3, 0)), '1');
    EXPECT_EQ(PairCode(m_s.Cell(1, 4)), '0');
    EXPECT_EQ(PairCode(m_s.Cell(2, 0)), '#');
    // Plain text of a curses program with colours is pair 0, white on black.
    EXPECT_EQ(m_s.Cell(1, 4).iFg, COLOR_WHITE);
    EXPECT_EQ(m_s.Cell(1, 4).iBg, COLOR_BLACK);
    EXPECT_NE(m_s.DumpColors().find("  :3333333333"), std::string::npos) << m_s.DumpColors();
}

TEST_F(ProbeTest, WideCharactersFillTwoCells) {
    StartProbe();
    EXPECT_EQ(m_s.Row(10), std::string("  ") + kChineseUtf8 + " OK");
    EXPECT_EQ(m_s.Text(10, 2, 4), kChineseUtf8);
    EXPECT_EQ(m_s.Cell(10, 2).iWidth, 2);
    EXPECT_EQ(m_s.Cell(10, 2).sCh, "\xe4\xb8\xad");
    EXPECT_EQ(m_s.Cell(10, 3).iWidth, 0);
    EXPECT_EQ(m_s.Cell(10, 3).sCh, "");
    EXPECT_EQ(m_s.Text(10, 7, 2), "OK");
    ScreenPos p = m_s.FindText("OK");
    EXPECT_EQ(p.iRow, 10);
    EXPECT_EQ(p.iCol, 7);
    EXPECT_EQ(m_s.FindText(kChineseUtf8).iCol, 2);
}

TEST_F(ProbeTest, Gb2312OutputKeepsItsColumnsAndRawBytes) {
    StartProbe(24, 80, {"--gb2312"}, ScreenCharset::Gb2312);
    EXPECT_TRUE(m_s.RawContains(std::string(kChineseGb) + " OK"));
    EXPECT_EQ(m_s.Text(10, 2, 4), kChineseUtf8);
    EXPECT_EQ(m_s.Text(10, 7, 2), "OK");
    EXPECT_EQ(m_s.Row(10), std::string("  ") + kChineseUtf8 + " OK");
    EXPECT_EQ(m_s.Cell(10, 2).iWidth, 2);
    EXPECT_EQ(m_s.Row(1), "    Plain text at 1,4");
}

TEST_F(ProbeTest, LineDrawingCharactersDecode) {
    StartProbe();
    EXPECT_EQ(m_s.Row(11),
              "\xe2\x94\x8c\xe2\x94\x80\xe2\x94\x80\xe2\x94\x80\xe2\x94\x80\xe2\x94"
              "\x80\xe2\x94\x90");
}

TEST_F(ProbeTest, CursorPositionAndVisibility) {
    StartProbe();
    CursorState c = m_s.Cursor();
    EXPECT_EQ(c.iRow, 12);
    EXPECT_EQ(c.iCol, 7);
    EXPECT_TRUE(c.bVisible);
    m_s.SendText("h");
    ASSERT_EQ(NextCode(), 'h');
    EXPECT_TRUE(m_s.WaitUntil([&] { return !m_s.Cursor().bVisible; })) << m_s.Dump();
    m_s.SendText("m");
    ASSERT_EQ(NextCode(), 'm');
    EXPECT_TRUE(m_s.WaitUntil([&] {
        CursorState now = m_s.Cursor();
        return now.iRow == 13 && now.iCol == 21;
    })) << m_s.Dump();
    EXPECT_FALSE(m_s.Cursor().bVisible);
    m_s.SendText("s");
    ASSERT_EQ(NextCode(), 's');
    EXPECT_TRUE(m_s.WaitUntil([&] { return m_s.Cursor().bVisible; })) << m_s.Dump();
    EXPECT_NE(m_s.Dump().find("cursor 13,21 visible"), std::string::npos) << m_s.Dump();
}

TEST_F(ProbeTest, KeysArriveAsCursesKeyCodes) {
    StartProbe();
    const std::pair<Key, int> kKeys[] = {{Key::Up, KEY_UP},
                                         {Key::Down, KEY_DOWN},
                                         {Key::Left, KEY_LEFT},
                                         {Key::Right, KEY_RIGHT},
                                         {Key::Home, KEY_HOME},
                                         {Key::End, KEY_END},
                                         {Key::PageUp, KEY_PPAGE},
                                         {Key::PageDown, KEY_NPAGE},
                                         {Key::Insert, KEY_IC},
                                         {Key::Delete, KEY_DC},
                                         {Key::Enter, 10},
                                         {Key::Tab, 9},
                                         {Key::Backspace, KEY_BACKSPACE}};
    for (const auto& k : kKeys)
        EXPECT_EQ(CodeOf(k.first), k.second) << KeyName(k.first);
    for (int n = 1; n <= 12; ++n)
        EXPECT_EQ(CodeOf(FunctionKey(n)), KEY_F(n)) << "F" << n;
    EXPECT_EQ(FunctionKey(9), Key::F9);
    EXPECT_STREQ(KeyName(Key::F12), "F12");
}

TEST_F(ProbeTest, EscAloneArrivesAs27AndKeysAfterItStillDecode) {
    StartProbe();
    EXPECT_EQ(CodeOf(Key::Esc), 27);
    EXPECT_EQ(CodeOf(Key::Down), KEY_DOWN);
    // Two lone escapes in a row are two keys.
    m_s.SendKey(Key::Esc, 2);
    EXPECT_EQ(NextCodes(2), std::vector<int>({27, 27}));
    EXPECT_EQ(CodeOf(Key::F2), KEY_F(2));
}

TEST_F(ProbeTest, TextAndControlCharactersArriveAsTheirBytes) {
    StartProbe();
    m_s.SendText("aZ7");
    EXPECT_EQ(NextCodes(3), std::vector<int>({'a', 'Z', '7'}));
    m_s.SendCtrl('a');
    EXPECT_EQ(NextCode(), 1);
    EXPECT_EQ(m_s.Row(22), "keys: 97 90 55 1");
}

TEST_F(ProbeTest, BellIsCounted) {
    StartProbe();
    EXPECT_EQ(m_s.Bells(), 0);
    m_s.SendText("b");
    ASSERT_EQ(NextCode(), 'b');
    EXPECT_TRUE(m_s.WaitUntil([&] { return m_s.Bells() == 1; }));
}

TEST_F(ProbeTest, ExitStatusAndTextAfterTheScreenCloses) {
    StartProbe(24, 80, {"--exit-code", "3"});
    EXPECT_TRUE(m_s.AltScreen());
    m_s.SendText("q");
    EXPECT_EQ(m_s.WaitExit(), 3);
    EXPECT_FALSE(m_s.Running());
    EXPECT_EQ(m_s.WaitExit(), 3);
    EXPECT_FALSE(m_s.AltScreen());
    // What curses drew went with the alternate screen.
    EXPECT_TRUE(m_s.WaitForTextAnywhere("probe exit 3", 0)) << m_s.Dump();
    EXPECT_FALSE(m_s.ScreenContains("Plain text"));
}

TEST_F(ProbeTest, WaitSettledAfterDrawing) {
    StartProbe();
    EXPECT_TRUE(m_s.WaitSettled());
    m_s.SendText("x");
    EXPECT_TRUE(m_s.WaitSettled(100));
    EXPECT_NE(m_s.Row(23).find("key #1: 120"), std::string::npos) << m_s.Dump();
}

TEST_F(ProbeTest, DumpShowsRulerRowsAndCursor) {
    StartProbe();
    std::string d = m_s.Dump();
    EXPECT_NE(d.find("screen 24x80, cursor 12,7 visible"), std::string::npos) << d;
    EXPECT_NE(d.find("   0         1         2"), std::string::npos) << d;
    EXPECT_NE(d.find(" 1|    Plain text at 1,4 "), std::string::npos) << d;
    EXPECT_NE(d.find("\n23|"), std::string::npos) << d;
}

TEST_F(ProbeTest, KilledSessionLeavesNoZombie) {
    pid_t pid = -1;
    {
        ScreenSession s;
        std::string err;
        ASSERT_TRUE(s.Start({ProbePath()}, ScreenOptions(), &err)) << err;
        ASSERT_TRUE(s.WaitForText(1, "Plain text")) << s.Dump();
        pid = s.Pid();
        ASSERT_GT(pid, 0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(pid, &status, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(kill(pid, 0), -1);
}

// Sessions of /bin/sh.
std::vector<std::string> Sh(const std::string& script) {
    return {"/bin/sh", "-c", script};
}

TEST(ScreenSessionTest, RawOutputKeepsBytesThatAreNoUtf8) {
    ScreenSession s;
    std::string err;
    ASSERT_TRUE(s.Start(Sh("printf 'A\\377\\376\\200B'"), ScreenOptions(), &err)) << err;
    EXPECT_EQ(s.WaitExit(), 0);
    EXPECT_TRUE(
        s.RawContains("A\xff\xfe\x80"
                      "B"))
        << s.RawOutput();
    EXPECT_EQ(s.FindRaw("A\xff"), 0u);
    EXPECT_EQ(s.FindRaw("A\xff", 1), std::string::npos);
    EXPECT_EQ(s.Cell(0, 0).sCh, "A");
    // Output of a program that sets no colours has the terminal's defaults.
    EXPECT_EQ(s.Cell(0, 0).iFg, kColorDefault);
    EXPECT_EQ(s.Cell(0, 0).iBg, kColorDefault);
    EXPECT_EQ(PairCode(s.Cell(0, 0)), '.');
}

TEST(ScreenSessionTest, MarkLimitsRawQueriesToLaterOutput) {
    ScreenSession s;
    std::string err;
    ASSERT_TRUE(s.Start(Sh("printf one; read x; printf two; read y"), ScreenOptions(), &err))
        << err;
    ASSERT_TRUE(s.WaitForRaw("one")) << s.RawOutput();
    size_t mark = s.MarkRaw();
    EXPECT_EQ(mark, 3u);
    EXPECT_FALSE(s.RawContains("one"));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(s.WaitForRaw("two")) << s.RawOutput();
    EXPECT_EQ(s.RawSinceMark().find("one"), std::string::npos);
    EXPECT_NE(s.RawSinceMark().find("two"), std::string::npos);
    EXPECT_EQ(s.RawOutput().compare(0, 3, "one"), 0);
    EXPECT_TRUE(s.WaitForTextAnywhere("two"));
}

TEST(ScreenSessionTest, EnvironmentIsCleanedAndExtended) {
    setenv("LINES", "99", 1);
    setenv("LC_ALL", "C", 1);
    ScreenSession s;
    ScreenOptions o;
    o.sTerm = "xterm";
    o.vsEnv = {"NVUI_SOCKET=/tmp/sock", "LANG=C.UTF-8"};
    std::string err;
    bool started =
        s.Start(Sh("printf '%s|%s|%s|%s|%s' \"$TERM\" \"$NVUI_SOCKET\" \"${LINES-unset}\" "
                   "\"${LC_ALL-unset}\" \"$LANG\"; stty size"),
                o, &err);
    unsetenv("LINES");
    unsetenv("LC_ALL");
    ASSERT_TRUE(started) << err;
    EXPECT_EQ(s.WaitExit(), 0);
    EXPECT_EQ(s.Row(0), "xterm|/tmp/sock|unset|unset|C.UTF-8" + std::string("24 80")) << s.Dump();
}

TEST(ScreenSessionTest, SttySeesTheSize) {
    ScreenSession s;
    ScreenOptions o;
    o.iRows = 30;
    o.iCols = 100;
    std::string err;
    ASSERT_TRUE(s.Start(Sh("stty size"), o, &err)) << err;
    EXPECT_EQ(s.WaitExit(), 0);
    EXPECT_EQ(s.Row(0), "30 100");
}

TEST(ScreenSessionTest, TypedBytesArriveUnchanged) {
    ScreenSession s;
    std::string err;
    ASSERT_TRUE(
        s.Start(Sh("stty raw -echo; printf ready; head -c 7 | od -An -tx1"), ScreenOptions(), &err))
        << err;
    ASSERT_TRUE(s.WaitForText(0, "ready")) << s.Dump();
    s.SendText(Utf8ToGb2312(kChineseUtf8) + "ab");
    s.SendKey(Key::Backspace);
    EXPECT_EQ(s.WaitExit(), 0);
    EXPECT_NE(s.RawOutput().find("d6 d0 ce c4 61 62 7f"), std::string::npos) << s.RawOutput();
}

TEST(ScreenSessionTest, WaitExitReportsCodesAndSignals) {
    {
        ScreenSession s;
        ASSERT_TRUE(s.Start(Sh("exit 7")));
        EXPECT_EQ(s.WaitExit(), 7);
    }
    {
        ScreenSession s;
        ASSERT_TRUE(s.Start(Sh("kill -TERM $$")));
        EXPECT_EQ(s.WaitExit(), 128 + SIGTERM);
    }
    {
        ScreenSession s;
        ASSERT_TRUE(s.Start(Sh("printf waiting; read x")));
        ASSERT_TRUE(s.WaitForText(0, "waiting"));
        EXPECT_EQ(s.WaitExit(50), -1);
        EXPECT_TRUE(s.Running());
        s.Kill();
        EXPECT_FALSE(s.Running());
        EXPECT_EQ(s.WaitExit(), 128 + SIGKILL);
    }
}

TEST(ScreenSessionTest, KillTakesTheWholeProcessGroup) {
    pid_t pid = -1;
    pid_t grandchild = -1;
    {
        ScreenSession s;
        ASSERT_TRUE(s.Start(Sh("sleep 1000 & echo \"child $!\"; wait")));
        ASSERT_TRUE(s.WaitForText(0, "child ")) << s.Dump();
        ASSERT_TRUE(s.WaitUntil([&] { return s.Row(0).size() > 6 && s.Row(1).empty(); }));
        grandchild = std::atoi(s.Row(0).c_str() + 6);
        pid = s.Pid();
        ASSERT_GT(grandchild, 0) << s.Dump();
    }
    int status = 0;
    EXPECT_EQ(waitpid(pid, &status, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_TRUE(WaitForeignExit(grandchild, 5000));
}

TEST(ScreenSessionTest, WaitSettledNeedsQuiet) {
    ScreenSession s;
    ASSERT_TRUE(s.Start(Sh("while :; do echo tick; sleep 0.01; done")));
    ASSERT_TRUE(s.WaitForTextAnywhere("tick"));
    Clock::time_point t0 = Clock::now();
    EXPECT_FALSE(s.WaitSettled(300, 600));
    EXPECT_GE(MsSince(t0), 590);
}

TEST(ScreenSessionTest, WaitsEndEarlyOnceTheTerminalIsClosed) {
    ScreenSession s;
    ASSERT_TRUE(s.Start(Sh("printf bye")));
    Clock::time_point t0 = Clock::now();
    EXPECT_FALSE(s.WaitForTextAnywhere("never shown", 20000));
    EXPECT_LT(MsSince(t0), 10000);
    EXPECT_TRUE(s.ScreenContains("bye"));
    EXPECT_TRUE(s.WaitSettled());
    EXPECT_EQ(s.WaitExit(), 0);
}

TEST(ScreenSessionTest, StartFailsForAMissingProgram) {
    ScreenSession s;
    std::string err;
    EXPECT_FALSE(s.Start({"/nonexistent/program"}, ScreenOptions(), &err));
    EXPECT_NE(err.find("/nonexistent/program"), std::string::npos);
    EXPECT_FALSE(s.Running());
}

TEST(ScreenCharsetTest, Gb2312AndUtf8) {
    EXPECT_EQ(Gb2312ToUtf8(kChineseGb), kChineseUtf8);
    EXPECT_EQ(Utf8ToGb2312(kChineseUtf8), kChineseGb);
    EXPECT_EQ(Gb2312ToUtf8("a\xff"
                           "b"),
              "a\xef\xbf\xbd"
              "b");
    EXPECT_THROW(Utf8ToGb2312("\xf0\x9f\x98\x80"), std::runtime_error);
    Gb2312Stream stream;
    EXPECT_EQ(stream.Feed("x\xd6", 2), "x");
    EXPECT_EQ(stream.Feed("\xd0y", 2),
              "\xe4\xb8\xad"
              "y");
    // A lead byte followed by no trail byte is one replacement.
    EXPECT_EQ(stream.Feed("\xd6z", 2), "\xef\xbf\xbdz");
}

TEST(ConsoleRunTest, ConsoleGetsTheAgentSocketAndItsLog) {
    ConsoleRun run;
    ConsoleOptions o;
    o.sProgram = "/bin/sh";
    o.vsArgs = {"-c",
                "printf 'sock=%s\\n' \"$NVUI_SOCKET\"; echo logged > \"$NVUI_LOG\"; "
                "test -S \"$NVUI_SOCKET\" && echo socket-ok"};
    std::string err;
    ASSERT_TRUE(run.Start(o, &err)) << err;
    EXPECT_EQ(run.Screen().WaitExit(), 0);
    EXPECT_EQ(run.Screen().Row(0), "sock=" + run.Agent().SocketPath()) << run.Screen().Dump();
    EXPECT_EQ(run.Screen().Row(1), "socket-ok") << run.Screen().Dump();
    EXPECT_EQ(run.ReadConsoleLog(), "logged\n");
    EXPECT_EQ(run.Charset(), ScreenCharset::Utf8);
    EXPECT_TRUE(run.Agent().Running());
}

TEST(ConsoleRunTest, LanguageCodeSetsStateAndCharset) {
    ConsoleRun run;
    ConsoleOptions o;
    o.sProgram = "/bin/sh";
    o.vsArgs = {"-c", "exit 0"};
    o.iLangCode = 1;
    std::string err;
    ASSERT_TRUE(run.Start(o, &err)) << err;
    EXPECT_EQ(run.Screen().WaitExit(), 0);
    EXPECT_EQ(run.Charset(), ScreenCharset::Gb2312);
    EXPECT_NE(ReadFile(run.Agent().StatePath()).find("\"chLangCode\": 1"), std::string::npos);
}

TEST(ConsoleRunTest, MissingProgramIsReported) {
    ConsoleRun run;
    ConsoleOptions o;
    o.sProgram = "/nonexistent/nvui";
    std::string err;
    EXPECT_FALSE(run.Start(o, &err));
    EXPECT_NE(err.find("not built"), std::string::npos);
}

// The real console with the demo state draws its frame: menu bar white on
// blue, prompt and information line black on green.
TEST(ConsoleRunTest, ConsoleDrawsItsFrame) {
    if (access(ConsoleRun::BinaryPath().c_str(), X_OK) != 0)
        GTEST_SKIP() << "nvui is not built";
    ConsoleRun run;
    std::string err;
    ASSERT_TRUE(run.Start(ConsoleOptions(), &err)) << err;
    ScreenSession& s = run.Screen();
    ASSERT_TRUE(s.WaitForText(21, "[up/down arrow]Select item [left/right arrow]Select menu"))
        << s.Dump();
    ASSERT_TRUE(s.WaitSettled());
    EXPECT_TRUE(s.SpanHasPair(0, 0, 80, 1)) << s.DumpColors();
    EXPECT_TRUE(s.SpanHasPair(21, 0, 80, 3)) << s.DumpColors();
    EXPECT_TRUE(s.SpanHasPair(22, 0, 80, 3)) << s.DumpColors();
    EXPECT_TRUE(s.SpanHasPair(23, 0, 80, 3)) << s.DumpColors();
}

}  // namespace
}  // namespace nvtest
