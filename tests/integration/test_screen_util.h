// Helpers shared by the console's screen tests: starting the console and
// waiting for its first screen, waiting on a whole expected state with a
// readable reason when it does not come, display widths and curses-style
// wrapping, catalogue texts as the decoded screen shows them, the welcome
// text's placement rule, and checks of the menu's drop-downs and path row.
#ifndef NV_TESTS_INTEGRATION_TEST_SCREEN_UTIL_H
#define NV_TESTS_INTEGRATION_TEST_SCREEN_UTIL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "screen_charset.h"
#include "screen_console.h"
#include "screen_session.h"
#include "strings/com_str.h"

namespace nvscreentest {

using nvtest::ConsoleOptions;
using nvtest::ConsoleRun;
using nvtest::Key;
using nvtest::ScreenCell;
using nvtest::ScreenSession;
using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

// Each level of the menu owns a band this wide; a drop-down is this wide.
constexpr int kBand = 22;
// Bytes of a label shown on the path row.
constexpr int kLabelBytes = 20;

constexpr const char* kMenuPromptEn =
    "[up/down arrow]Select item [left/right arrow]Select menu [Enter]Confirm [Esc]exit";

// The catalogue, assembled once for the whole test program.
inline void UseCatalogue() {
    static bool s_done = false;
    if (!s_done) {
        InitComStr();
        s_done = true;
    }
}

// A catalogue entry in language lang as the decoded screen shows it (UTF-8;
// the GB2312 column converted).
inline std::string OnScreen(const char* const* entry, int lang) {
    UseCatalogue();
    std::string raw = entry[lang] ? entry[lang] : "";
    return lang == LAN_CHINESE_GB2312 ? nvtest::Gb2312ToUtf8(raw) : raw;
}

// The code points of UTF-8 text, each with its bytes.
inline std::vector<std::string> Utf8Chars(const std::string& utf8) {
    std::vector<std::string> out;
    for (size_t i = 0; i < utf8.size();) {
        unsigned char b = static_cast<unsigned char>(utf8[i]);
        size_t n = b < 0x80 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : 4;
        out.push_back(utf8.substr(i, n));
        i += n;
    }
    return out;
}

// Columns a character takes on the terminal: the catalogue holds ASCII and
// Chinese characters and full-width punctuation only, so any non-ASCII
// character is wide.
inline int CharWidth(const std::string& ch) {
    return static_cast<unsigned char>(ch[0]) < 0x80 ? 1 : 2;
}

inline int DisplayWidth(const std::string& utf8) {
    int w = 0;
    for (const std::string& ch : Utf8Chars(utf8))
        w += CharWidth(ch);
    return w;
}

// UTF-8 text as rows of cols columns, the way curses continues a text
// written past the end of a row: a wide character that does not fit moves
// whole to the next row. Rows are not padded.
inline std::vector<std::string> WrapRows(const std::string& utf8, int cols) {
    std::vector<std::string> rows(1);
    int used = 0;
    for (const std::string& ch : Utf8Chars(utf8)) {
        int w = CharWidth(ch);
        if (used + w > cols) {
            rows.emplace_back();
            used = 0;
        }
        rows.back() += ch;
        used += w;
    }
    return rows;
}

// Where the welcome text goes by its fixed rule, from its bytes: rows are the
// line breaks, the width is the byte length of the widest line that ends in a
// break; both clamped; top and left in the content window.
struct WelcomePlace {
    int iRows = 0;
    int iWidth = 0;
    int iTop = 0;
    int iLeft = 0;
};

inline WelcomePlace PlaceWelcome(const std::string& bytes, int lines, int cols) {
    WelcomePlace p;
    int line = 0;
    for (char c : bytes) {
        if (c != '\n') {
            ++line;
            continue;
        }
        ++p.iRows;
        p.iWidth = std::max(p.iWidth, line);
        line = 0;
    }
    p.iRows = std::min(p.iRows, lines - 6);
    p.iWidth = std::min(p.iWidth, cols);
    p.iTop = (lines - 6 - p.iRows) / 2;
    p.iLeft = (cols - p.iWidth) / 2;
    return p;
}

// The lines of a text split at its line breaks (a final break gives no empty
// last line).
inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> out;
    size_t start = 0;
    while (start <= text.size()) {
        size_t nl = text.find('\n', start);
        if (nl == std::string::npos) {
            if (start < text.size())
                out.push_back(text.substr(start));
            break;
        }
        out.push_back(text.substr(start, nl - start));
        start = nl + 1;
    }
    return out;
}

// Waits until check succeeds; at the deadline fails with check's own reason
// and the screen with its colours.
inline AssertionResult Eventually(ScreenSession& s, const std::function<AssertionResult()>& check,
                                  int timeoutMs = nvtest::kDefaultWaitMs) {
    if (s.WaitUntil([&] { return static_cast<bool>(check()); }, timeoutMs))
        return AssertionSuccess();
    AssertionResult last = check();
    return AssertionFailure() << (last ? "(passed only after the deadline)" : last.message())
                              << "\n"
                              << s.DumpColors();
}

// Starts the console and waits until its first screen is complete: the menu
// prompt, drawn last, stands on all its rows. Keys sent afterwards are read
// in keypad mode by the menu.
inline AssertionResult StartConsole(ConsoleRun& run, const ConsoleOptions& o) {
    std::string err;
    if (!run.Start(o, &err))
        return AssertionFailure() << "cannot start: " << err;
    UseCatalogue();
    int lang = o.iLangCode >= 0 ? o.iLangCode : 0;
    std::vector<std::string> rows = WrapRows(OnScreen(pcStrPromptMenu, lang), o.iCols);
    ScreenSession& s = run.Screen();
    for (size_t i = 0; i < rows.size(); ++i) {
        if (!s.WaitForTextAt(o.iRows - 3 + static_cast<int>(i), 0, rows[i]))
            return AssertionFailure() << "no menu prompt\n"
                                      << s.Dump() << "\nlog:\n"
                                      << run.ReadConsoleLog();
    }
    return AssertionSuccess();
}

// Every cell from (r, c) for len columns is a blank of console pair pair,
// neither reversed nor bold.
inline AssertionResult BlankSpan(const ScreenSession& s, int r, int c, int len, int pair) {
    for (int col = c; col < c + len; ++col) {
        ScreenCell cell = s.Cell(r, col);
        if (cell.sCh != " " || !nvtest::HasPair(cell, pair) || cell.bReverse || cell.bBold)
            return AssertionFailure() << "cell " << r << "," << col << " is '" << cell.sCh
                                      << "' pair code " << nvtest::PairCode(cell) << " bold "
                                      << cell.bBold << ", expected a blank of pair " << pair;
    }
    return AssertionSuccess();
}

// Every cell from (r, c) for len columns has console pair pair. The right
// half of a wide character is skipped: the terminal keeps no colours of its
// own for it (the emulator leaves whatever that cell held before).
inline AssertionResult SpanPair(const ScreenSession& s, int r, int c, int len, int pair) {
    for (int col = c; col < c + len; ++col) {
        ScreenCell cell = s.Cell(r, col);
        if (cell.iWidth != 0 && !nvtest::HasPair(cell, pair))
            return AssertionFailure()
                   << "cell " << r << "," << col << " ('" << cell.sCh << "') has pair code "
                   << nvtest::PairCode(cell) << ", expected pair " << pair;
    }
    return AssertionSuccess();
}

// The content area (rows 3 to LINES - 4) is blank pair 2, except the columns
// [skipFrom, skipTo) of rows [skipTop, skipBottom) (where a drop-down is).
inline AssertionResult ContentBlank(const ScreenSession& s, int skipTop = 0, int skipBottom = 0,
                                    int skipFrom = 0, int skipTo = 0) {
    for (int r = 3; r <= s.Rows() - 4; ++r) {
        bool skip = r >= skipTop && r < skipBottom;
        for (int c = 0; c < s.Cols(); ++c) {
            if (skip && c >= skipFrom && c < skipTo)
                continue;
            AssertionResult a = BlankSpan(s, r, c, 1, 2);
            if (!a)
                return a;
        }
    }
    return AssertionSuccess();
}

// The drop-down of the given level is drawn: a box of 22 columns from row 3
// at column 22 * level holding the labels in order, in pair 4, the current
// one (index cur) reversed and the others not.
inline AssertionResult DropDownShows(const ScreenSession& s, int level,
                                     const std::vector<std::string>& labels, int cur) {
    int x = kBand * level;
    int n = static_cast<int>(labels.size());
    struct Corner {
        int r, c;
        const char* ch;
    };
    const Corner corners[] = {
        {3, x, "┌"}, {3, x + kBand - 1, "┐"}, {n + 4, x, "└"}, {n + 4, x + kBand - 1, "┘"}};
    for (const Corner& k : corners) {
        if (s.Cell(k.r, k.c).sCh != k.ch)
            return AssertionFailure() << "level " << level << ": no box corner " << k.ch << " at "
                                      << k.r << "," << k.c;
    }
    for (int i = 0; i < n; ++i) {
        int r = 4 + i;
        std::string text = s.Text(r, x + 1, kBand - 2);
        std::string want = labels[i] + std::string(kBand - 2 - DisplayWidth(labels[i]), ' ');
        if (text != want)
            return AssertionFailure() << "level " << level << " row " << r << " shows '" << text
                                      << "', expected '" << labels[i] << "'";
        ScreenCell first = s.Cell(r, x + 1);
        if (!nvtest::HasPair(first, 4) || first.bReverse != (i == cur))
            return AssertionFailure() << "level " << level << " item " << i << " ('" << labels[i]
                                      << "') has pair code " << nvtest::PairCode(first)
                                      << (i == cur ? ", expected reversed pair 4 (current)"
                                                   : ", expected plain pair 4");
        if (!nvtest::HasPair(s.Cell(r, x), 4) || s.Cell(r, x).sCh != "│")
            return AssertionFailure() << "level " << level << " row " << r << ": no side of box";
    }
    return AssertionSuccess();
}

// The path row's band of the given level holds label (its first 20 bytes)
// from column 22 * level + 1, bold and reversed when focused and plain
// otherwise, then "->" at column 22 * level + 21 when the item has a
// sub-menu; the rest of the band is blank.
inline AssertionResult PathShows(const ScreenSession& s, int level, const std::string& label,
                                 bool focused, bool hasChildren) {
    int x = kBand * level + 1;
    int w = DisplayWidth(label);
    std::string want = label + std::string(kLabelBytes - w, ' ') + (hasChildren ? "->" : "  ");
    std::string text = s.Text(1, x, kBand);
    if (text != want)
        return AssertionFailure() << "path band " << level << " shows '" << text << "', expected '"
                                  << want << "'";
    for (int c = x; c < x + kBand; ++c) {
        ScreenCell cell = s.Cell(1, c);
        if (cell.iWidth == 0)
            continue;  // the right half of a wide character carries nothing
        bool inLabel = c < x + w;
        bool lit = inLabel && focused;
        if (!nvtest::HasPair(cell, 1) || cell.bReverse != lit || cell.bBold != lit)
            return AssertionFailure()
                   << "path band " << level << " column " << c << " ('" << cell.sCh
                   << "'): reverse " << cell.bReverse << " bold " << cell.bBold << " pair code "
                   << nvtest::PairCode(cell) << ", expected " << (lit ? "bold reverse" : "plain")
                   << " pair 1";
    }
    return AssertionSuccess();
}

// The path row's band of the given level is blank.
inline AssertionResult PathBandBlank(const ScreenSession& s, int level) {
    return BlankSpan(s, 1, kBand * level + 1, std::min(kBand, s.Cols() - kBand * level - 1), 1);
}

// The information line is its plain background.
inline AssertionResult InfoLineClear(const ScreenSession& s) {
    return BlankSpan(s, s.Rows() - 1, 0, s.Cols(), 3);
}

// The information line is a white-on-blue bar holding text from column 0.
inline AssertionResult InfoLineShows(const ScreenSession& s, const std::string& text) {
    int r = s.Rows() - 1;
    if (s.Row(r) != text)
        return AssertionFailure() << "information line shows '" << s.Row(r) << "', expected '"
                                  << text << "'";
    if (!s.SpanHasPair(r, 0, s.Cols(), 1))
        return AssertionFailure() << "information line is not white on blue throughout";
    return AssertionSuccess();
}

}  // namespace nvscreentest

#endif
