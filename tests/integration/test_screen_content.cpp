// The listening-port page in a terminal, against a real norvaned: the leaf
// "Tcp listen Port" under "System Monitor" opens one read-only row per
// listener line, spread over the content area or paged when they do not fit;
// Up, Down, Page Up and Page Down move the focus, Enter, Left and Right do
// nothing, F12 shows the page's help in the pager and Esc goes back, first to
// the page and then to the menu. A failed load leaves the menu with the
// error on the information line, and an empty list leaves a view that
// ignores every key. The help text and the prompts come in each language.
//
// A key that must do nothing is followed by a key whose effect is known, and
// the test waits for the state both keys together must give: the console
// handles keys in order, so the first key has been handled by then.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "child_process.h"
#include "screen_charset.h"
#include "screen_console.h"
#include "screen_session.h"
#include "strings/com_str.h"
#include "temp_dir.h"

namespace {

using nvtest::ConsoleOptions;
using nvtest::ConsoleRun;
using nvtest::Key;
using nvtest::ScreenCell;
using nvtest::ScreenSession;
using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

constexpr int kRows = 24;
constexpr int kCols = 80;
// Screen rows of the content area and of the help text area.
constexpr int kContentTop = 3;
constexpr int kContentLines = kRows - 6;
constexpr int kHelpWidth = kCols - 2;
constexpr int kHelpHeight = kRows - 8;
// The System Monitor drop-down: its box from column 22, row 3, seven items
// from row 4; the listening-port leaf is the last.
constexpr int kDropX = 22;
constexpr int kTcpItemRow = 10;

void UseCatalogue() {
    static bool s_done = false;
    if (!s_done) {
        InitComStr();
        s_done = true;
    }
}

// A catalogue entry as the decoded screen shows it.
std::string OnScreen(const char* const* entry, int lang) {
    UseCatalogue();
    std::string raw = entry[lang];
    return lang == LAN_CHINESE_GB2312 ? nvtest::Gb2312ToUtf8(raw) : raw;
}

std::vector<std::string> Utf8Chars(const std::string& utf8) {
    std::vector<std::string> out;
    for (size_t i = 0; i < utf8.size();) {
        unsigned char b = static_cast<unsigned char>(utf8[i]);
        size_t n = b < 0x80 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : 4;
        out.push_back(utf8.substr(i, n));
        i += n;
    }
    return out;
}

// The catalogue holds ASCII and wide (Chinese, full-width) characters only.
int CharWidth(const std::string& ch) {
    return static_cast<unsigned char>(ch[0]) < 0x80 ? 1 : 2;
}

// UTF-8 text as rows of cols columns, continued the way curses continues a
// text written past the end of a row.
std::vector<std::string> WrapRows(const std::string& utf8, int cols) {
    std::vector<std::string> rows(1);
    int used = 0;
    for (const std::string& ch : Utf8Chars(utf8)) {
        if (used + CharWidth(ch) > cols) {
            rows.emplace_back();
            used = 0;
        }
        rows.back() += ch;
        used += CharWidth(ch);
    }
    return rows;
}

// The prompt line (rows 21 and 22) shows prompt id of language lang.
AssertionResult PromptShows(const ScreenSession& s, int id, int lang) {
    std::vector<std::string> rows = WrapRows(OnScreen(pcStrPrompt[id], lang), kCols);
    rows.resize(2);
    for (int i = 0; i < 2; ++i) {
        if (s.Row(kRows - 3 + i) != rows[i])
            return AssertionFailure() << "prompt row " << kRows - 3 + i << " shows '"
                                      << s.Row(kRows - 3 + i) << "', expected '" << rows[i] << "'";
    }
    if (!s.SpanHasPair(kRows - 3, 0, kCols, 3) || !s.SpanHasPair(kRows - 2, 0, kCols, 3))
        return AssertionFailure() << "the prompt line is not black on green";
    return AssertionSuccess();
}

// The information line is its plain black-on-green background.
AssertionResult InfoLineClear(const ScreenSession& s) {
    if (s.Row(kRows - 1) != "" || !s.SpanHasPair(kRows - 1, 0, kCols, 3))
        return AssertionFailure() << "information line shows '" << s.Row(kRows - 1) << "'";
    return AssertionSuccess();
}

// The information line is a white-on-blue bar holding text.
AssertionResult InfoLineShows(const ScreenSession& s, const std::string& text) {
    if (s.Row(kRows - 1) != text)
        return AssertionFailure() << "information line shows '" << s.Row(kRows - 1)
                                  << "', expected '" << text << "'";
    if (!s.SpanHasPair(kRows - 1, 0, kCols, 1))
        return AssertionFailure() << "the information line is not white on blue";
    return AssertionSuccess();
}

// What the content area (screen rows 3 to 20) must show: text on some lines,
// all from one column, one of them focused.
struct ContentView {
    int iX = 0;
    std::vector<std::pair<int, std::string>> vLines;  // content line, text
    int iFocusLine = -1;
    // Screen rows [iHoleTop, iHoleBottom) and columns [iHoleLeft, iHoleRight)
    // show the standard screen: blanks in white on black.
    int iHoleTop = 0, iHoleBottom = 0, iHoleLeft = 0, iHoleRight = 0;
};

// Every cell of the content area: the texts where the view puts them, blue on
// white on the focused line and black on white elsewhere, never underlined;
// blanks black on white everywhere else.
AssertionResult ContentShows(const ScreenSession& s, const ContentView& v) {
    for (int line = 0; line < kContentLines; ++line) {
        std::string text;
        for (const auto& l : v.vLines) {
            if (l.first == line)
                text = l.second;
        }
        int r = kContentTop + line;
        std::string want = text.empty() ? "" : std::string(static_cast<size_t>(v.iX), ' ') + text;
        if (s.Row(r) != want)
            return AssertionFailure() << "screen row " << r << " shows '" << s.Row(r)
                                      << "', expected '" << want << "'";
        for (int c = 0; c < kCols; ++c) {
            ScreenCell cell = s.Cell(r, c);
            if (r >= v.iHoleTop && r < v.iHoleBottom && c >= v.iHoleLeft && c < v.iHoleRight) {
                if (cell.sCh != " " || nvtest::PairCode(cell) != '0')
                    return AssertionFailure()
                           << "cell " << r << "," << c << " '" << cell.sCh << "' has pair code "
                           << nvtest::PairCode(cell) << ", expected a white-on-black blank";
                continue;
            }
            bool inText = !text.empty() && c >= v.iX && c < v.iX + static_cast<int>(text.size());
            int pair = inText && line == v.iFocusLine ? 7 : 2;
            if (!nvtest::HasPair(cell, pair) || cell.bUnderline || cell.bReverse)
                return AssertionFailure()
                       << "cell " << r << "," << c << " '" << cell.sCh << "' has pair code "
                       << nvtest::PairCode(cell) << " underline " << cell.bUnderline
                       << ", expected pair " << pair;
        }
    }
    return AssertionSuccess();
}

// The help window over the content area: a box in blue on yellow, the text
// lines from column 1 of screen row 4, the rest blank.
AssertionResult HelpShows(const ScreenSession& s, const std::vector<std::string>& lines) {
    struct Corner {
        int r, c;
        const char* ch;
    };
    const Corner corners[] = {{kContentTop, 0, "┌"},
                              {kContentTop, kCols - 1, "┐"},
                              {kRows - 4, 0, "└"},
                              {kRows - 4, kCols - 1, "┘"}};
    for (const Corner& k : corners) {
        if (s.Cell(k.r, k.c).sCh != k.ch)
            return AssertionFailure() << "no help box corner at " << k.r << "," << k.c;
    }
    for (int i = 0; i < kHelpHeight; ++i) {
        int r = kContentTop + 1 + i;
        std::string want = i < static_cast<int>(lines.size()) ? lines[i] : "";
        std::string got = s.Text(r, 1, kHelpWidth);
        got.erase(got.find_last_not_of(' ') + 1);
        if (got != want)
            return AssertionFailure()
                   << "help row " << r << " shows '" << got << "', expected '" << want << "'";
        if (s.Cell(r, 0).sCh != "│" || s.Cell(r, kCols - 1).sCh != "│")
            return AssertionFailure() << "no side of the help box on row " << r;
    }
    for (int r = kContentTop; r <= kRows - 4; ++r) {
        if (!s.SpanHasPair(r, 0, kCols, 6))
            return AssertionFailure() << "help row " << r << " is not blue on yellow";
    }
    return AssertionSuccess();
}

// The lines of the first page of a help text as the pager draws them: bytes
// counted against the width of the text area, a full line continued on the
// next, then each line as the terminal shows it (GB2312 decoded, a tab going
// on to the next multiple of eight columns of the window).
std::vector<std::string> HelpPageZero(const std::string& bytes, int lang) {
    std::vector<std::string> raw(1);
    for (char c : bytes) {
        if (c == '\n' || static_cast<int>(raw.back().size()) >= kHelpWidth) {
            if (static_cast<int>(raw.size()) == kHelpHeight)
                break;
            raw.emplace_back();
        }
        if (c != '\n')
            raw.back() += c;
    }
    std::vector<std::string> out;
    for (const std::string& line : raw) {
        std::string utf8 = lang == LAN_CHINESE_GB2312 ? nvtest::Gb2312ToUtf8(line) : line;
        std::string shown;
        int col = 1;
        for (const std::string& ch : Utf8Chars(utf8)) {
            if (ch == "\t") {
                do {
                    shown += ' ';
                    ++col;
                } while (col % 8 != 0);
                continue;
            }
            shown += ch;
            col += CharWidth(ch);
        }
        shown.erase(shown.find_last_not_of(' ') + 1);
        out.push_back(shown);
    }
    return out;
}

// The demo state with its listener lines replaced.
std::string StateWithListeners(const std::vector<std::string>& lines) {
    nlohmann::json j = nlohmann::json::parse(nvtest::ReadFile(ConsoleRun::DemoStatePath()));
    j["vsTcpListenList"] = lines;
    return j.dump(2);
}

// n lines of the same length: "listener 00 on port 10000 pid 2000 prog00".
std::vector<std::string> ManyListeners(int n) {
    std::vector<std::string> v;
    for (int i = 0; i < n; ++i) {
        char sz[64];
        snprintf(sz, sizeof(sz), "listener %02d on port %d pid %d prog%02d", i, 10000 + i, 2000 + i,
                 i);
        v.push_back(sz);
    }
    return v;
}

// Waits until check passes; at the deadline fails with its last reason and
// the screen with its colours.
AssertionResult Eventually(ScreenSession& s, const std::function<AssertionResult()>& check) {
    if (s.WaitUntil([&] { return static_cast<bool>(check()); }))
        return AssertionSuccess();
    AssertionResult last = check();
    return AssertionFailure() << (last ? "(passed only after the deadline)" : last.message())
                              << "\n"
                              << s.DumpColors();
}

// Bytes the program has read so far (terminal input included).
long long BytesRead(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/io");
    std::string key;
    long long value = -1;
    while (in >> key >> value) {
        if (key == "rchar:")
            return value;
    }
    return -1;
}

const std::vector<std::string> kThree = {
    "0.0.0.0          22       812  sshd",
    "0.0.0.0          80      1034  nginx",
    "127.0.0.1        5432     921  postgres -D /var/lib/pgsql",
};

class ScreenContentTcp : public ::testing::Test {
protected:
    ScreenSession& S() { return m_run.Screen(); }

    // Starts the agent with the listener lines and the console, and waits for
    // the menu prompt.
    AssertionResult Start(const std::vector<std::string>& lines, int lang = LAN_ENGLISH) {
        m_lang = lang;
        ConsoleOptions o;
        o.iRows = kRows;
        o.iCols = kCols;
        o.sStateJson = StateWithListeners(lines);
        o.iLangCode = lang;
        std::string err;
        if (lang == LAN_CHINESE_GB2312) {
            // In a GB2312 locale curses draws a long run of one character as
            // the character and a repeat count; the terminal emulator of the
            // screen tests puts the character that follows a run ending next
            // to the last column on the next row. A terminal type without the
            // repeat capability keeps the help box in place.
            if (!MakeTermWithoutRepeat(err))
                return AssertionFailure() << err;
            o.sTerm = kNoRepeatTerm;
            o.vsEnv.push_back("TERMINFO=" + m_terminfo->Path());
        }
        if (!m_run.Start(o, &err))
            return AssertionFailure() << "cannot start: " << err;
        std::string first = WrapRows(OnScreen(pcStrPromptMenu, lang), kCols)[0];
        if (!S().WaitForTextAt(kRows - 3, 0, first))
            return AssertionFailure() << "no menu prompt\n"
                                      << S().Dump() << "\nlog:\n"
                                      << m_run.ReadConsoleLog();
        return AssertionSuccess();
    }
    // From the start screen to the listening-port leaf: the third menu, its
    // sub-menu, and Up onto its last item.
    AssertionResult GoToLeaf() {
        S().SendKey(Key::Down, 2);
        S().SendKey(Key::Right);
        S().SendKey(Key::Up);
        return Eventually(S(), [&] { return LeafIsCurrent(); });
    }
    // The System Monitor drop-down is shown with the leaf current (reversed).
    AssertionResult LeafIsCurrent() {
        std::string label = OnScreen(pcStrTcpPortState, m_lang);
        if (DropDownLabel(kTcpItemRow) != label)
            return AssertionFailure() << "drop-down row " << kTcpItemRow << " shows '"
                                      << DropDownLabel(kTcpItemRow) << "'";
        ScreenCell cell = S().Cell(kTcpItemRow, kDropX + 1);
        if (!cell.bReverse || !nvtest::HasPair(cell, 4))
            return AssertionFailure() << "the leaf is not the current item";
        if (S().Cell(kContentTop, kDropX).sCh != "┌" ||
            S().Cell(kTcpItemRow + 1, kDropX).sCh != "└")
            return AssertionFailure() << "no drop-down box";
        return AssertionSuccess();
    }
    // The label on screen row r of the System Monitor drop-down.
    std::string DropDownLabel(int r) {
        std::string t = S().Text(r, kDropX + 1, 20);
        t.erase(t.find_last_not_of(' ') + 1);
        return t;
    }
    // Start, the leaf, Enter: the page is shown.
    AssertionResult OpenPage(const std::vector<std::string>& lines, int lang = LAN_ENGLISH) {
        AssertionResult a = Start(lines, lang);
        if (!a)
            return a;
        a = GoToLeaf();
        if (!a)
            return a;
        S().SendKey(Key::Enter);
        return Eventually(S(), [&] { return PageShows(lines, 0); });
    }

    // The page of the given lines with row focus focused: fewer rows than
    // lines are spread over the area; more are paged, and the screen page
    // that holds the focused row is shown from the top.
    AssertionResult PageShows(const std::vector<std::string>& lines, int focus) {
        int n = static_cast<int>(lines.size());
        size_t longest = 0;
        for (const std::string& l : lines)
            longest = std::max(longest, l.size());
        ContentView v;
        v.iX = (kCols - static_cast<int>(longest)) / 2;
        int gap = n < kContentLines ? (kContentLines - n) / (n + 1) : 0;
        int first = focus / kContentLines * kContentLines;
        for (int r = first; r < n && r < first + kContentLines; ++r) {
            int line = (gap + r * (gap + 1)) % kContentLines;
            v.vLines.push_back({line, lines[r]});
            if (r == focus)
                v.iFocusLine = line;
        }
        AssertionResult a = ContentShows(S(), v);
        if (!a)
            return AssertionFailure() << "focus on row " << focus << ": " << a.message();
        return PromptShows(S(), PROMPT_CONTENT_NO_MODIFY, m_lang);
    }
    // kThree with a line of the given width as its second row.
    static std::vector<std::string> WithWideLine(size_t width) {
        std::vector<std::string> lines = kThree;
        std::string wide = "0.0.0.0          8080     4242  java -jar ";
        while (wide.size() < width)
            wide += static_cast<char>('a' + wide.size() % 26);
        lines.insert(lines.begin() + 1, wide);
        return lines;
    }
    AssertionResult OpenPageAt(const std::vector<std::string>& lines) {
        AssertionResult a = Start(lines);
        if (a)
            a = GoToLeaf();
        if (a)
            S().SendKey(Key::Enter);
        return a;
    }
    // Four rows spread over 18 lines stand on content lines 2, 5, 8 and 11;
    // each shows what of its text falls inside the 80 columns.
    AssertionResult RowsClipped(const std::vector<std::string>& lines) {
        size_t longest = 0;
        for (const std::string& l : lines)
            longest = std::max(longest, l.size());
        // One column: the spare width is split in two, or, when the column
        // does not fit, the whole (negative) spare width comes before it.
        long spare = kCols - static_cast<long>(longest);
        long x = spare > 0 ? spare / 2 : spare;
        for (size_t r = 0; r < lines.size(); ++r) {
            std::string row(kCols, ' ');
            for (size_t i = 0; i < lines[r].size(); ++i) {
                long c = x + static_cast<long>(i);
                if (c >= 0 && c < kCols)
                    row[c] = lines[r][i];
            }
            row.erase(row.find_last_not_of(' ') + 1);
            int screenRow = 3 + 2 + static_cast<int>(r) * 3;
            if (S().Row(screenRow) != row)
                return AssertionFailure() << "screen row " << screenRow << " shows '"
                                          << S().Row(screenRow) << "', expected '" << row << "'";
        }
        return AssertionSuccess();
    }
    void ExpectOnlyRowLines() {
        for (int row = 3; row < kRows - 3; ++row) {
            if (row != 5 && row != 8 && row != 11 && row != 14) {
                EXPECT_EQ(S().Row(row), "") << "screen row " << row;
            }
        }
    }
    AssertionResult WaitPage(const std::vector<std::string>& lines, int focus) {
        return Eventually(S(), [&] { return PageShows(lines, focus); });
    }

    // After a failed load: the connection error on the information line (in
    // English whatever the language), the drop-down back with the leaf
    // current, the menu prompt.
    AssertionResult FailureShown() {
        AssertionResult a = InfoLineShows(S(), "Error:connect failed!");
        if (a)
            a = LeafIsCurrent();
        if (a)
            a = PromptShows(S(), PROMPT_MENU, m_lang);
        return a;
    }

    // The requests the agent has seen.
    size_t Requests() { return m_run.Agent().ReadJournal().size(); }

    // Compiles the terminal type kNoRepeatTerm into a private directory.
    bool MakeTermWithoutRepeat(std::string& err) {
        std::string tic;
        std::stringstream path(getenv("PATH") ? getenv("PATH") : "/usr/bin:/bin");
        for (std::string dir; std::getline(path, dir, ':');) {
            if (!dir.empty() && access((dir + "/tic").c_str(), X_OK) == 0) {
                tic = dir + "/tic";
                break;
            }
        }
        if (tic.empty()) {
            err = "tic (the terminfo compiler) is not installed";
            return false;
        }
        m_terminfo.reset(new nvtest::TempDir);
        std::string src = m_terminfo->File("norep.src");
        nvtest::WriteFile(src, std::string(kNoRepeatTerm) +
                                   "|xterm-256color without the repeat capability,\n"
                                   "\trep@, use=xterm-256color,\n");
        nvtest::RunResult r = nvtest::RunProgram({tic, "-x", "-o", m_terminfo->Path(), src});
        if (!r.bFinished || r.iExitCode != 0) {
            err = "tic failed: " + r.sStderr;
            return false;
        }
        return true;
    }

    static constexpr const char* kNoRepeatTerm = "nv-xterm-norep";
    // The agent and the console go before the terminal type they use.
    std::unique_ptr<nvtest::TempDir> m_terminfo;
    ConsoleRun m_run;
    int m_lang = LAN_ENGLISH;
};

// Three listeners on 80 x 24: one column centred by the spare width, rows on
// content lines 3, 7 and 11 (screen rows 6, 10 and 14), the first focused.
TEST_F(ScreenContentTcp, ThreeListenersAreSpreadAndCentred) {
    ASSERT_TRUE(OpenPage(kThree));
    ASSERT_EQ(kThree[2].size(), 57u);  // the longest: (80 - 57) / 2 = 11
    EXPECT_EQ(S().Row(6), std::string(11, ' ') + kThree[0]);
    EXPECT_EQ(S().Row(10), std::string(11, ' ') + kThree[1]);
    EXPECT_EQ(S().Row(14), std::string(11, ' ') + kThree[2]);
    EXPECT_TRUE(nvtest::HasPair(S().Cell(6, 11), 7) && nvtest::HasPair(S().Cell(10, 11), 2));
    EXPECT_EQ(S().Row(21), "[up/down arrow]Select item [F12]Help [Esc]Return to menu");
    EXPECT_TRUE(InfoLineClear(S()));
    // The menu's drop-down is gone; its path row stays.
    EXPECT_EQ(S().Text(1, 1, 14), "System Monitor");
}

// A listener line as wide as the screen, or wider, is clipped at the window's
// edges on its own row; the other rows keep their places and nothing else
// of the content area is written.
TEST_F(ScreenContentTcp, ALineAsWideAsTheScreenStaysOnItsRow) {
    std::vector<std::string> lines = WithWideLine(80);
    ASSERT_TRUE(OpenPageAt(lines));
    ASSERT_TRUE(Eventually(S(), [&] { return RowsClipped(lines); }));
    ExpectOnlyRowLines();
}

TEST_F(ScreenContentTcp, ALineWiderThanTheScreenIsClippedOnItsRow) {
    std::vector<std::string> lines = WithWideLine(200);
    ASSERT_TRUE(OpenPageAt(lines));
    ASSERT_TRUE(Eventually(S(), [&] { return RowsClipped(lines); }));
    ExpectOnlyRowLines();
}

TEST_F(ScreenContentTcp, DownAndUpMoveTheFocusWithoutWrapping) {
    ASSERT_TRUE(OpenPage(kThree));
    S().SendKey(Key::Down);
    ASSERT_TRUE(WaitPage(kThree, 1));
    S().SendKey(Key::Down);
    ASSERT_TRUE(WaitPage(kThree, 2));
    // Down on the last row does nothing: the Up after it lands on row 1.
    S().SendKey(Key::Down);
    S().SendKey(Key::Up);
    ASSERT_TRUE(WaitPage(kThree, 1));
    S().SendKey(Key::Up);
    ASSERT_TRUE(WaitPage(kThree, 0));
    // Up on the first row does nothing: the Down after it lands on row 1.
    S().SendKey(Key::Up);
    S().SendKey(Key::Down);
    EXPECT_TRUE(WaitPage(kThree, 1));
    EXPECT_TRUE(InfoLineClear(S()));
}

TEST_F(ScreenContentTcp, EnterLeftAndRightDoNothing) {
    ASSERT_TRUE(OpenPage(kThree));
    size_t requests = Requests();
    S().SendKey(Key::Enter);
    S().SendKey(Key::Left);
    S().SendKey(Key::Right);
    S().SendKey(Key::Enter);
    S().SendKey(Key::Down);
    ASSERT_TRUE(WaitPage(kThree, 1));
    EXPECT_TRUE(InfoLineClear(S()));
    EXPECT_EQ(Requests(), requests) << "a key sent a request";
    // The page still has the keyboard.
    S().SendKey(Key::Down);
    EXPECT_TRUE(WaitPage(kThree, 2));
}

TEST_F(ScreenContentTcp, F12ShowsTheHelpAndEscReturnsToTheRow) {
    ASSERT_TRUE(OpenPage(kThree));
    S().SendKey(Key::Down);
    ASSERT_TRUE(WaitPage(kThree, 1));
    S().SendKey(Key::F12);
    std::vector<std::string> help = HelpPageZero(pcStrHelpTcpListenPort[LAN_ENGLISH], LAN_ENGLISH);
    ASSERT_EQ(help[0], "[NAME] Tcp listen port.");
    ASSERT_TRUE(Eventually(S(), [&] { return HelpShows(S(), help); }));
    EXPECT_TRUE(PromptShows(S(), PROMPT_HELP, LAN_ENGLISH));
    EXPECT_EQ(S().Row(21), "[PageUp/PageDown]Select Page  [Esc]Return");
    // A one-page text: Down and Page Down change nothing, and Esc still
    // returns to the page with row 1 focused.
    S().SendKey(Key::PageDown);
    S().SendKey(Key::Down);
    S().SendKey(Key::Esc);
    ASSERT_TRUE(WaitPage(kThree, 1));
    // F12 again shows the text again.
    S().SendKey(Key::F12);
    ASSERT_TRUE(Eventually(S(), [&] { return HelpShows(S(), help); }));
    S().SendKey(Key::Esc);
    ASSERT_TRUE(WaitPage(kThree, 1));
    S().SendKey(Key::Up);
    EXPECT_TRUE(WaitPage(kThree, 0));
}

// Esc on the page: the menu's drop-down comes back with the leaf current over
// a blank content area, with the menu prompt; Enter opens the page again.
TEST_F(ScreenContentTcp, EscReturnsToTheMenu) {
    ASSERT_TRUE(OpenPage(kThree));
    S().SendKey(Key::Down);
    ASSERT_TRUE(WaitPage(kThree, 1));
    size_t requests = Requests();
    S().SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = LeafIsCurrent();
        if (!a)
            return a;
        a = PromptShows(S(), PROMPT_MENU, LAN_ENGLISH);
        if (!a)
            return a;
        // Blank outside the drop-down's box (columns 22 to 43, rows 3 to 11).
        for (int r = kContentTop; r < kContentTop + kContentLines; ++r) {
            for (int c = 0; c < kCols; ++c) {
                if (r <= kTcpItemRow + 1 && c >= kDropX && c < kDropX + 22)
                    continue;
                ScreenCell cell = S().Cell(r, c);
                if (cell.sCh != " " || !nvtest::HasPair(cell, 2))
                    return AssertionResult(AssertionFailure()
                                           << "content cell " << r << "," << c << " is '"
                                           << cell.sCh << "' pair code " << nvtest::PairCode(cell));
            }
        }
        return AssertionSuccess();
    }));
    EXPECT_TRUE(InfoLineClear(S()));
    // The menu has the keyboard: Enter loads the page again, focus on row 0.
    S().SendKey(Key::Enter);
    ASSERT_TRUE(WaitPage(kThree, 0));
    EXPECT_EQ(Requests(), requests + 1);
}

// Forty listeners in eighteen lines: three screen pages (rows 0-17, 18-35 and
// 36-39), each row on its own line from the top.
TEST_F(ScreenContentTcp, FortyListenersArePaged) {
    const std::vector<std::string> lines = ManyListeners(40);
    ASSERT_TRUE(OpenPage(lines));
    S().SendKey(Key::Down, 17);
    ASSERT_TRUE(WaitPage(lines, 17));
    S().SendKey(Key::Down);
    ASSERT_TRUE(WaitPage(lines, 18));
    S().SendKey(Key::Up);
    ASSERT_TRUE(WaitPage(lines, 17));
    S().SendKey(Key::PageDown);
    ASSERT_TRUE(WaitPage(lines, 18));
    S().SendKey(Key::Down, 17);
    ASSERT_TRUE(WaitPage(lines, 35));
    S().SendKey(Key::PageDown);
    ASSERT_TRUE(WaitPage(lines, 36));
    // Page Down on the last page does nothing: three Downs then reach 39.
    S().SendKey(Key::PageDown);
    S().SendKey(Key::Down, 3);
    ASSERT_TRUE(WaitPage(lines, 39));
    // Down on the last row does nothing: Page Up then shows page 1.
    S().SendKey(Key::Down);
    S().SendKey(Key::PageUp);
    ASSERT_TRUE(WaitPage(lines, 18));
    S().SendKey(Key::Down, 4);
    S().SendKey(Key::PageUp);
    ASSERT_TRUE(WaitPage(lines, 0));
    // Page Up and Up on row 0 do nothing: Down then reaches row 1.
    S().SendKey(Key::PageUp);
    S().SendKey(Key::Up);
    S().SendKey(Key::Down);
    ASSERT_TRUE(WaitPage(lines, 1));
}

// The agent stops after the menu is up: Enter on the leaf shows the
// connection error on the information line and leaves the menu in charge.
TEST_F(ScreenContentTcp, AFailedLoadKeepsTheMenu) {
    ASSERT_TRUE(Start(kThree));
    ASSERT_TRUE(GoToLeaf());
    ASSERT_EQ(m_run.Agent().Stop(), 0);
    S().SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(S(), [&] { return FailureShown(); }));
    // No row of the page anywhere.
    EXPECT_FALSE(S().ScreenContains("sshd")) << S().Dump();
    // The menu still moves; its first key clears the line.
    S().SendKey(Key::Up);
    EXPECT_TRUE(Eventually(S(), [&] {
        AssertionResult a = InfoLineClear(S());
        if (!a)
            return a;
        return DropDownLabel(kTcpItemRow - 1) == "File Backup" &&
                       S().Cell(kTcpItemRow - 1, 23).bReverse
                   ? AssertionSuccess()
                   : AssertionFailure() << "the menu did not move up";
    }));
}

// An empty listener list gives a page without rows, which cannot be shown,
// and the menu hands the keyboard to the page all the same, so every key is
// ignored, Esc included. What the user sees: the drop-down, hidden before the
// page was built, leaves a white-on-black hole (the standard screen) in the
// otherwise blank content area; the path row still shows the leaf
// highlighted and the prompt line still shows the menu's keys; nothing typed
// changes the screen. Only a signal (Ctrl-C) ends the program.
TEST_F(ScreenContentTcp, AnEmptyListLeavesTheViewInert) {
    ASSERT_TRUE(Start({}));
    ASSERT_TRUE(GoToLeaf());
    size_t requests = Requests();
    S().SendKey(Key::Enter);
    ASSERT_TRUE(S().WaitUntil([&] { return Requests() == requests + 1; }));
    auto inert = [&]() -> AssertionResult {
        ContentView empty;
        empty.iHoleTop = kContentTop;
        empty.iHoleBottom = kTcpItemRow + 2;
        empty.iHoleLeft = kDropX;
        empty.iHoleRight = kDropX + 22;
        AssertionResult a = ContentShows(S(), empty);
        if (!a)
            return a;
        a = PromptShows(S(), PROMPT_MENU, LAN_ENGLISH);
        if (!a)
            return a;
        a = InfoLineClear(S());
        if (!a)
            return a;
        if (S().Row(1) != " System Monitor      ->Tcp listen Port" ||
            !S().Cell(1, kDropX + 1).bReverse)
            return AssertionFailure() << "the path row shows '" << S().Row(1) << "'";
        return AssertionSuccess();
    };
    ASSERT_TRUE(Eventually(S(), inert));
    ASSERT_TRUE(S().WaitSettled());
    std::string before = S().DumpColors();

    // Keys as the terminal encodes them in keypad mode: arrows three bytes,
    // F12 five, Enter and Esc one each. Wait until the console has read them
    // all, then until its output is quiet.
    long long read0 = BytesRead(S().Pid());
    ASSERT_GE(read0, 0) << "cannot read /proc/<pid>/io";
    S().SendKey(Key::Down);
    S().SendKey(Key::Up);
    S().SendKey(Key::Enter);
    S().SendKey(Key::F12);
    S().SendKey(Key::Esc);
    S().SendKey(Key::Esc);
    ASSERT_TRUE(S().WaitUntil([&] {
        return BytesRead(S().Pid()) >= read0 + 3 + 3 + 1 + 5 + 1 + 1;
    })) << "read "
        << BytesRead(S().Pid()) - read0 << " bytes";
    ASSERT_TRUE(S().WaitSettled());
    EXPECT_EQ(S().DumpColors(), before);
    EXPECT_TRUE(inert());
    EXPECT_TRUE(S().Running());
    EXPECT_EQ(Requests(), requests + 1);
    // Ctrl-C still ends it.
    S().SendCtrl('c');
    EXPECT_NE(S().WaitExit(), -1);
}

// The page's prompt and help in each language: the Chinese help text in
// both of its encodings, GB2312 checked on the bytes the console writes too.
class ScreenContentLanguage : public ScreenContentTcp, public ::testing::WithParamInterface<int> {};

TEST_P(ScreenContentLanguage, PromptAndHelpAreInTheLanguage) {
    int lang = GetParam();
    ASSERT_TRUE(OpenPage(kThree, lang));
    EXPECT_TRUE(PromptShows(S(), PROMPT_CONTENT_NO_MODIFY, lang));
    S().MarkRaw();
    S().SendKey(Key::F12);
    std::string bytes = pcStrHelpTcpListenPort[lang];
    std::vector<std::string> help = HelpPageZero(bytes, lang);
    ASSERT_TRUE(Eventually(S(), [&] { return HelpShows(S(), help); }));
    EXPECT_TRUE(PromptShows(S(), PROMPT_HELP, lang));
    if (lang == LAN_ENGLISH) {
        EXPECT_EQ(help[1], "[DESC] the program that is listening now.");
    } else {
        EXPECT_EQ(help[0], "[名称] TCP监听端口。");
        EXPECT_EQ(help[2], "如果防火墙没有防护，这些端口可能成为攻击的入口。");
    }
    if (lang == LAN_CHINESE_GB2312) {
        // Each run of Chinese characters went out as GB2312 bytes.
        std::string raw = S().RawSinceMark();
        std::string run;
        int runs = 0;
        for (size_t i = 0; i <= bytes.size(); ++i) {
            unsigned char b = i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0;
            if (b >= 0x80) {
                run += bytes.substr(i, 2);
                ++i;
                continue;
            }
            if (!run.empty()) {
                EXPECT_NE(raw.find(run), std::string::npos) << nvtest::Gb2312ToUtf8(run);
                ++runs;
                run.clear();
            }
        }
        EXPECT_GE(runs, 4);
    }
    S().SendKey(Key::Esc);
    EXPECT_TRUE(WaitPage(kThree, 0));
}

// A failed load in each language: the connection error is the English text
// in every language, so that it can be read before the language is known.
TEST_P(ScreenContentLanguage, AFailedLoadShowsTheErrorInTheLanguage) {
    int lang = GetParam();
    ASSERT_TRUE(Start(kThree, lang));
    ASSERT_TRUE(GoToLeaf());
    ASSERT_EQ(m_run.Agent().Stop(), 0);
    S().SendKey(Key::Enter);
    EXPECT_TRUE(Eventually(S(), [&] { return FailureShown(); }));
}

std::string LanguageName(const ::testing::TestParamInfo<int>& info) {
    static const char* const s_names[LAN_MAX] = {"English", "Gb2312", "Utf8"};
    return s_names[info.param];
}

INSTANTIATE_TEST_SUITE_P(Languages, ScreenContentLanguage,
                         ::testing::Values(LAN_ENGLISH, LAN_CHINESE_GB2312, LAN_CHINESE_UTF8),
                         LanguageName);

}  // namespace
