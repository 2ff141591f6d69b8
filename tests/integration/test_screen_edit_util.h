// Helpers of the editing screen tests: a console run against a real agent
// whose state is the demo state with some keys changed, the way to each page
// through the menu, the layout rule of a settings page (labels and values
// placed by their byte widths), checks of a page, of the choose bar, of the
// list bar and of the information line, and the agent's journal split into
// check requests and set commands.
//
// Waiting rule: a key whose effect must be nothing is followed by a key (or
// a wait on a state) whose effect is known; the console handles keys in
// order, and the agent writes a journal line before it answers, so whatever
// a key sent is in the journal once a later effect is on the screen.
#ifndef NV_TESTS_INTEGRATION_TEST_SCREEN_EDIT_UTIL_H
#define NV_TESTS_INTEGRATION_TEST_SCREEN_EDIT_UTIL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "screen_charset.h"
#include "screen_console.h"
#include "screen_session.h"
#include "strings/com_str.h"
#include "strings/prompt_id.h"
#include "temp_dir.h"

namespace nvedit {

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
constexpr int kContentTop = 3;
constexpr int kContentLines = kRows - 6;
constexpr int kPromptRow = kRows - 3;
constexpr int kInfoRow = kRows - 1;
// The agent's number of the check request.
constexpr int kCheckCmd = 1;

// The choose bar on an 80x24 terminal: 18 columns by 7 lines.
constexpr int kChooseX = 46;
constexpr int kChooseY = 8;
constexpr int kChooseW = 18;
constexpr int kChooseH = 7;

// The list bar on an 80x24 terminal: the content window's width / 8, row 3,
// three quarters of the width, the content height less 3.
constexpr int kListX = kCols / 8;
constexpr int kListY = 3;
constexpr int kListW = kCols * 3 / 4;
constexpr int kListH = kContentLines - 3;

inline void UseCatalogue() {
    static bool s_done = false;
    if (!s_done) {
        InitComStr();
        s_done = true;
    }
}

// A catalogue entry's bytes in language lang.
inline std::string Raw(const char* const* entry, int lang) {
    UseCatalogue();
    return entry[lang] ? entry[lang] : "";
}

// A catalogue entry as the decoded screen shows it (UTF-8).
inline std::string OnScreen(const char* const* entry, int lang) {
    std::string raw = Raw(entry, lang);
    return lang == LAN_CHINESE_GB2312 ? nvtest::Gb2312ToUtf8(raw) : raw;
}

inline std::string Prompt(int id, int lang) {
    return OnScreen(pcStrPrompt[id], lang);
}

// Columns of UTF-8 text: the catalogues hold ASCII and wide characters only.
inline int DisplayWidth(const std::string& utf8) {
    int w = 0;
    for (size_t i = 0; i < utf8.size();) {
        unsigned char b = static_cast<unsigned char>(utf8[i]);
        size_t n = b < 0x80 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : 4;
        w += b < 0x80 ? 1 : 2;
        i += n;
    }
    return w;
}

// The first cols columns of UTF-8 text.
inline std::string CutToWidth(const std::string& utf8, int cols) {
    std::string out;
    int w = 0;
    for (size_t i = 0; i < utf8.size();) {
        unsigned char b = static_cast<unsigned char>(utf8[i]);
        size_t n = b < 0x80 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : 4;
        w += b < 0x80 ? 1 : 2;
        if (w > cols)
            break;
        out += utf8.substr(i, n);
        i += n;
    }
    return out;
}

inline std::string Hex(const std::string& bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    for (char c : bytes) {
        unsigned char u = static_cast<unsigned char>(c);
        out.push_back(kDigits[u >> 4]);
        out.push_back(kDigits[u & 0x0f]);
    }
    return out;
}

// The demo state with the given keys replaced.
inline std::string DemoStateWith(const nlohmann::json& changes) {
    nlohmann::json state = nlohmann::json::parse(nvtest::ReadFile(ConsoleRun::DemoStatePath()));
    for (auto it = changes.begin(); it != changes.end(); ++it)
        state[it.key()] = it.value();
    return state.dump(2);
}

// A page reached from the menu: the index of its menu in the first
// drop-down and its index in that menu's drop-down.
struct Leaf {
    int iMenu;
    int iItem;
};
constexpr Leaf kNetworkLeaf = {1, 0};
constexpr Leaf kResourceLeaf = {1, 1};
constexpr Leaf kFileLeaf = {2, 0};
constexpr Leaf kProcessLeaf = {2, 1};
constexpr Leaf kCpuLeaf = {2, 2};
constexpr Leaf kMemoryLeaf = {2, 3};
constexpr Leaf kFtpLeaf = {3, 1};
constexpr Leaf kSambaLeaf = {3, 2};

// One row of a settings page: the label, the value shown, the value cell's
// maximum width, whether the value can be edited, and the row's prompt.
struct PageRow {
    std::string sLabel;  // bytes as the console holds them
    std::string sValue;
    int iMaxWidth = 0;
    bool bEditable = true;
    int iPrompt = PROMPT_CONTENT;
};

// Where the rows of a settings page stand, by the layout rule: column widths
// and gaps are counted in bytes, the rows spread over the content area.
struct PageLayout {
    int iLabelX = 0;
    int iValueX = 0;
    std::vector<int> viRow;  // screen row of each page row
};

inline PageLayout LayOut(const std::vector<PageRow>& rows) {
    int labelW = 0, valueW = 0;
    for (const PageRow& r : rows) {
        int l = static_cast<int>(r.sValue.size());
        int claim = r.iMaxWidth > 0 && l < kCols ? r.iMaxWidth : l;
        labelW = std::max(labelW, static_cast<int>(r.sLabel.size()));
        valueW = std::max(valueW, claim);
    }
    int gap = (kCols - labelW - valueW) / 3;
    int n = static_cast<int>(rows.size());
    int gapH = n < kContentLines ? (kContentLines - n) / (n + 1) : 0;
    PageLayout p;
    p.iLabelX = gap;
    p.iValueX = gap + labelW + gap;
    for (int i = 0; i < n; ++i)
        p.viRow.push_back(kContentTop + (gapH + i * (gapH + 1)) % kContentLines);
    return p;
}

// The console and the agent of one test, on an 80x24 terminal.
class EditConsole {
public:
    // Starts on the given state (empty: the demo state) in language lang and
    // waits for the menu prompt.
    AssertionResult Start(const std::string& stateJson = "", int lang = LAN_ENGLISH) {
        m_lang = lang;
        ConsoleOptions o;
        o.iRows = kRows;
        o.iCols = kCols;
        o.sStateJson = stateJson;
        o.iLangCode = lang;
        o.vsAgentArgs = m_agentArgs;
        std::string err;
        if (!m_run.Start(o, &err))
            return AssertionFailure() << "cannot start: " << err;
        std::string menuPrompt = CutToWidth(Prompt(PROMPT_MENU, lang), 20);
        if (!S().WaitForTextAt(kPromptRow, 0, menuPrompt))
            return AssertionFailure() << "no menu prompt\n"
                                      << S().Dump() << "\nlog:\n"
                                      << m_run.ReadConsoleLog();
        return AssertionSuccess();
    }

    // More arguments for the agent (the live backend, say), before Start.
    void SetAgentArgs(std::vector<std::string> args) { m_agentArgs = std::move(args); }

    ScreenSession& S() { return m_run.Screen(); }

    // From the first drop-down to a leaf; waits until the given label of the
    // page (bytes as the catalogue holds them) stands on the screen.
    AssertionResult Open(const Leaf& leaf, const std::string& firstLabel) {
        if (leaf.iMenu > 0)
            S().SendKey(Key::Down, leaf.iMenu);
        S().SendKey(Key::Enter);
        if (leaf.iItem > 0)
            S().SendKey(Key::Down, leaf.iItem);
        S().SendKey(Key::Enter);
        std::string label =
            m_lang == LAN_CHINESE_GB2312 ? nvtest::Gb2312ToUtf8(firstLabel) : firstLabel;
        if (!S().WaitForTextAnywhere(label))
            return AssertionFailure() << "the page with '" << label << "' did not open\n"
                                      << S().Dump();
        return AssertionSuccess();
    }

    // Every journal line so far.
    std::vector<nlohmann::json> Journal() { return m_run.Agent().ReadJournal(); }
    // The set commands so far (every line but the check requests).
    std::vector<nlohmann::json> Sets() {
        std::vector<nlohmann::json> out;
        for (const nlohmann::json& j : Journal()) {
            if (j.value("cmd", -1) != kCheckCmd)
                out.push_back(j);
        }
        return out;
    }
    size_t JournalSize() { return Journal().size(); }

private:
    ConsoleRun m_run;
    std::vector<std::string> m_agentArgs;
    int m_lang = LAN_ENGLISH;
};

// Waits until check succeeds; at the deadline fails with check's reason and
// the screen with its colours.
inline AssertionResult Eventually(ScreenSession& s, const std::function<AssertionResult()>& check,
                                  int timeoutMs = nvtest::kDefaultWaitMs) {
    if (s.WaitUntil([&] { return static_cast<bool>(check()); }, timeoutMs))
        return AssertionSuccess();
    AssertionResult last = check();
    return AssertionFailure() << (last ? "(passed only after the deadline)" : last.message())
                              << "\n"
                              << s.DumpColors();
}

// One journal line is the set command cmd with the payload bytes and the
// result.
inline AssertionResult IsSet(const nlohmann::json& j, int cmd, const std::string& payload,
                             int result) {
    if (j.value("cmd", -1) != cmd || j.value("len", -1) != static_cast<int>(payload.size()) ||
        j.value("payload_hex", std::string("?")) != Hex(payload) ||
        j.value("result", -99) != result)
        return AssertionFailure() << "journal line " << j.dump() << ", expected command " << cmd
                                  << " with payload hex '" << Hex(payload) << "' (length "
                                  << payload.size() << ") and result " << result;
    return AssertionSuccess();
}

// The journal lines from index from on are exactly the set command (cmd,
// payload, result) followed, when the result is 7, by one check request (the
// page rebuilt from fresh state).
inline AssertionResult SetThenCheck(const std::vector<nlohmann::json>& journal, size_t from,
                                    int cmd, const std::string& payload, int result) {
    size_t want = from + (result == 7 ? 2 : 1);
    if (journal.size() != want) {
        AssertionResult a = AssertionFailure();
        a << "journal has " << journal.size() << " lines, expected " << want << ":";
        for (const nlohmann::json& j : journal)
            a << "\n  " << j.dump();
        return a;
    }
    AssertionResult a = IsSet(journal[from], cmd, payload, result);
    if (!a)
        return a;
    if (result == 7 && journal[from + 1].value("cmd", -1) != kCheckCmd)
        return AssertionFailure() << "no check request after the command: "
                                  << journal[from + 1].dump();
    return AssertionSuccess();
}

// The prompt line shows prompt id in language lang (its first row).
inline AssertionResult PromptShows(const ScreenSession& s, int id, int lang) {
    std::string want = Prompt(id, lang);
    while (!want.empty() && want.back() == ' ')
        want.pop_back();
    std::string got = s.Row(kPromptRow);
    if (DisplayWidth(want) <= kCols ? got != want : want.compare(0, got.size(), got) != 0)
        return AssertionFailure() << "prompt shows '" << got << "', expected '" << want << "'";
    return AssertionSuccess();
}

// The information line is a white-on-blue bar holding text (as much of it
// as one line holds).
inline AssertionResult InfoShows(const ScreenSession& s, const std::string& text) {
    std::string want = CutToWidth(text, kCols);
    while (!want.empty() && want.back() == ' ')
        want.pop_back();
    if (s.Row(kInfoRow) != want)
        return AssertionFailure() << "information line shows '" << s.Row(kInfoRow)
                                  << "', expected '" << want << "'";
    if (!s.SpanHasPair(kInfoRow, 0, kCols, 1))
        return AssertionFailure() << "the information line is not white on blue";
    return AssertionSuccess();
}

// The information line is its plain black-on-green background.
inline AssertionResult InfoClear(const ScreenSession& s) {
    if (s.Row(kInfoRow) != "" || !s.SpanHasPair(kInfoRow, 0, kCols, 3))
        return AssertionFailure() << "information line shows '" << s.Row(kInfoRow) << "'";
    return AssertionSuccess();
}

// The terminal cursor is hidden (no bar is editing).
inline AssertionResult CursorHidden(const ScreenSession& s) {
    if (s.Cursor().bVisible)
        return AssertionFailure() << "the cursor is visible at " << s.Cursor().iRow << ","
                                  << s.Cursor().iCol;
    return AssertionSuccess();
}

// The terminal cursor is visible at (row, col).
inline AssertionResult CursorAt(const ScreenSession& s, int row, int col) {
    nvtest::CursorState cur = s.Cursor();
    if (!cur.bVisible || cur.iRow != row || cur.iCol != col)
        return AssertionFailure() << "cursor at " << cur.iRow << "," << cur.iCol << " visible "
                                  << cur.bVisible << ", expected visible at " << row << "," << col;
    return AssertionSuccess();
}

// The first failure of the checks, or success when all passed.
inline AssertionResult And(AssertionResult a) {
    return a;
}
template <typename... Rest>
AssertionResult And(AssertionResult a, Rest... rest) {
    return a ? And(rest...) : a;
}

// Every cell of len columns from (r, c) passes test (right halves of wide
// characters skipped).
inline AssertionResult CellsAre(const ScreenSession& s, int r, int c, int len,
                                const std::function<bool(const ScreenCell&)>& test,
                                const char* what) {
    for (int col = c; col < c + len; ++col) {
        ScreenCell cell = s.Cell(r, col);
        if (cell.iWidth == 0)
            continue;
        if (!test(cell))
            return AssertionFailure()
                   << "cell " << r << "," << col << " ('" << cell.sCh << "') pair code "
                   << nvtest::PairCode(cell) << " underline " << cell.bUnderline << " reverse "
                   << cell.bReverse << ": expected " << what;
    }
    return AssertionSuccess();
}

// A settings page: every row's label and value where the layout puts them,
// nothing else on those rows, the other content rows blank; the focused
// row's label blue on white and its value (when editable) white on blue;
// the other editable values underlined black on white; the prompt of the
// focused row.
inline AssertionResult PageShows(const ScreenSession& s, const std::vector<PageRow>& rows,
                                 const PageLayout& p, int focus, int lang) {
    std::vector<bool> used(kRows, false);
    for (size_t i = 0; i < rows.size(); ++i) {
        const PageRow& r = rows[i];
        std::string label = lang == LAN_CHINESE_GB2312 ? nvtest::Gb2312ToUtf8(r.sLabel) : r.sLabel;
        std::string value = lang == LAN_CHINESE_GB2312 ? nvtest::Gb2312ToUtf8(r.sValue) : r.sValue;
        int y = p.viRow[i];
        used[y] = true;
        int labelW = DisplayWidth(label), valueW = DisplayWidth(value);
        std::string want = std::string(p.iLabelX, ' ') + label;
        if (!value.empty())
            want += std::string(p.iValueX - p.iLabelX - labelW, ' ') + value;
        while (!want.empty() && want.back() == ' ')
            want.pop_back();
        if (s.Row(y) != want)
            return AssertionFailure()
                   << "row " << y << " shows '" << s.Row(y) << "', expected '" << want << "'";
        bool focused = static_cast<int>(i) == focus;
        AssertionResult a = CellsAre(
            s, y, p.iLabelX, labelW,
            [&](const ScreenCell& c) {
                return nvtest::HasPair(c, focused ? 7 : 2) && !c.bUnderline && !c.bReverse;
            },
            focused ? "a label in blue on white" : "a label in black on white");
        if (!a)
            return a << " (page row " << i << ")";
        a = CellsAre(
            s, y, p.iValueX, valueW,
            [&](const ScreenCell& c) {
                if (c.bReverse)
                    return false;
                if (!r.bEditable)
                    return nvtest::HasPair(c, focused ? 7 : 2) && !c.bUnderline;
                if (focused)
                    return nvtest::HasPair(c, 5) && !c.bUnderline;
                return nvtest::HasPair(c, 2) && c.bUnderline;
            },
            !r.bEditable ? "a plain value"
            : focused    ? "the focused value in white on blue"
                         : "an underlined value in black on white");
        if (!a)
            return a << " (page row " << i << ")";
    }
    for (int y = kContentTop; y < kContentTop + kContentLines; ++y) {
        if (!used[y] && s.Row(y) != "")
            return AssertionFailure()
                   << "row " << y << " shows '" << s.Row(y) << "', expected a blank row";
    }
    return PromptShows(s, rows[static_cast<size_t>(focus)].iPrompt, lang);
}

// The field of an input bar over a value: width columns from (row, x)
// blank but for text, the cursor visible, the input prompt.
inline AssertionResult FieldShows(const ScreenSession& s, int row, int x, int width,
                                  const std::string& text, int lang = LAN_ENGLISH) {
    std::string want = text + std::string(width - text.size(), ' ');
    if (s.Text(row, x, width) != want)
        return AssertionFailure() << "field shows '" << s.Text(row, x, width) << "', expected '"
                                  << text << "'";
    if (!s.Cursor().bVisible)
        return AssertionFailure() << "the cursor is hidden while editing";
    return PromptShows(s, PROMPT_INPUT, lang);
}

// The choose bar: its box at column 46, line 8, the options from line 9 in
// the order given, the one at index cur reversed and the others not; the
// choose prompt.
inline AssertionResult ChooseShows(const ScreenSession& s, const std::vector<std::string>& options,
                                   int cur, int lang) {
    struct Corner {
        int r, c;
        const char* ch;
    };
    const Corner corners[] = {{kChooseY, kChooseX, "┌"},
                              {kChooseY, kChooseX + kChooseW - 1, "┐"},
                              {kChooseY + kChooseH - 1, kChooseX, "└"},
                              {kChooseY + kChooseH - 1, kChooseX + kChooseW - 1, "┘"}};
    for (const Corner& k : corners) {
        if (s.Cell(k.r, k.c).sCh != k.ch)
            return AssertionFailure()
                   << "no choose box corner " << k.ch << " at " << k.r << "," << k.c;
    }
    for (size_t i = 0; i < options.size(); ++i) {
        int y = kChooseY + 1 + static_cast<int>(i);
        std::string opt =
            lang == LAN_CHINESE_GB2312 ? nvtest::Gb2312ToUtf8(options[i]) : options[i];
        int w = DisplayWidth(opt);
        // The menu's mark column comes first, then the option's name.
        std::string inner = s.Text(y, kChooseX + 1, kChooseW - 2);
        std::string want = opt + std::string(kChooseW - 3 - w, ' ');
        if (inner.size() < want.size() || inner.substr(inner.size() - want.size()) != want)
            return AssertionFailure() << "choose line " << y << " shows '" << inner
                                      << "', expected '" << opt << "' from column " << kChooseX + 2;
        bool current = static_cast<int>(i) == cur;
        AssertionResult a = CellsAre(
            s, y, kChooseX + 2, w, [&](const ScreenCell& c) { return c.bReverse == current; },
            current ? "the current option reversed" : "an option not reversed");
        if (!a)
            return a;
    }
    for (int y = kChooseY + 1 + static_cast<int>(options.size()); y < kChooseY + kChooseH - 1;
         ++y) {
        if (s.Text(y, kChooseX + 1, kChooseW - 2) != std::string(kChooseW - 2, ' '))
            return AssertionFailure() << "choose line " << y << " is not blank";
    }
    return PromptShows(s, PROMPT_CHOOSE, lang);
}

// The list bar: its box, the lines of the page from line kListY + 1 at
// column kListX + 1 (the one at index focus reversed, none when focus is
// -1), the rest of the list area blank in blue on yellow, the list prompt.
inline AssertionResult ListShows(const ScreenSession& s, const std::vector<std::string>& lines,
                                 int focus, int lang) {
    if (s.Cell(kListY, kListX).sCh != "┌" || s.Cell(kListY, kListX + kListW - 1).sCh != "┐" ||
        s.Cell(kListY + kListH - 1, kListX).sCh != "└" ||
        s.Cell(kListY + kListH - 1, kListX + kListW - 1).sCh != "┘")
        return AssertionFailure() << "no list box at " << kListY << "," << kListX;
    int innerW = kListW - 2;
    for (int i = 0; i < kListH - 2; ++i) {
        int y = kListY + 1 + i;
        std::string text = i < static_cast<int>(lines.size()) ? lines[i] : "";
        std::string want = text + std::string(innerW - text.size(), ' ');
        if (s.Text(y, kListX + 1, innerW) != want)
            return AssertionFailure()
                   << "list line " << y << " shows '" << s.Text(y, kListX + 1, innerW)
                   << "', expected '" << text << "'";
        bool lit = i == focus;
        int len = static_cast<int>(text.size());
        AssertionResult a = CellsAre(
            s, y, kListX + 1, len,
            [&](const ScreenCell& c) { return nvtest::HasPair(c, 6) && c.bReverse == lit; },
            lit ? "the highlighted line, reversed blue on yellow" : "a line in blue on yellow");
        if (!a)
            return a;
        a = CellsAre(
            s, y, kListX + 1 + len, innerW - len,
            [](const ScreenCell& c) { return nvtest::HasPair(c, 6) && !c.bReverse; },
            "a blank in blue on yellow");
        if (!a)
            return a;
    }
    return PromptShows(s, PROMPT_LIST, lang);
}

}  // namespace nvedit

#endif
