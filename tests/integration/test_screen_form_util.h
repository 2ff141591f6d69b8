// Helpers of the screen tests of the pages with function-key forms: a
// console of any size against a real agent, the way to each of those pages
// through the menu, the agent's own display lines read over the socket, the
// layout rule of a form inside its box and of a list page, and checks of
// both against the screen.
#ifndef NV_TESTS_INTEGRATION_TEST_SCREEN_FORM_UTIL_H
#define NV_TESTS_INTEGRATION_TEST_SCREEN_FORM_UTIL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "cmdclient/cmd_client.h"
#include "link/ui_interface.h"
#include "test_screen_edit_util.h"

namespace nvform {

using namespace nvedit;

// A page with forms reached from the menu: the index of its menu, of its
// item and, for the chain pages, of the item in the third drop-down.
struct FormLeaf {
    int iMenu;
    int iItem;
    int iSubItem;  // -1: the item is the leaf
};
constexpr FormLeaf kNetIfLeaf = {0, 0, -1};
constexpr FormLeaf kSysStateLeaf = {0, 1, -1};
constexpr FormLeaf kDiskLeaf = {2, 4, -1};
constexpr FormLeaf kBakLeaf = {2, 5, -1};
constexpr FormLeaf kInputLeaf = {3, 0, 0};
constexpr FormLeaf kOutputLeaf = {3, 0, 1};

// The console and the agent of one test.
class FormConsole {
public:
    AssertionResult Start(const std::string& stateJson = "", int lang = LAN_ENGLISH,
                          int rows = kRows, int cols = kCols) {
        m_lang = lang;
        ConsoleOptions o;
        o.iRows = rows;
        o.iCols = cols;
        o.sStateJson = stateJson;
        o.iLangCode = lang;
        o.vsEnv = m_env;
        o.vsAgentArgs = m_agentArgs;
        if (const char* prog = getenv("NV_FORM_TEST_NVUI"))
            o.sProgram = prog;
        std::string err;
        if (!m_run.Start(o, &err))
            return AssertionFailure() << "cannot start: " << err;
        std::string menuPrompt = CutToWidth(Prompt(PROMPT_MENU, lang), 20);
        if (!S().WaitForTextAt(rows - 3, 0, menuPrompt))
            return AssertionFailure() << "no menu prompt\n"
                                      << S().Dump() << "\nlog:\n"
                                      << m_run.ReadConsoleLog();
        return AssertionSuccess();
    }

    // More "NAME=value" entries for the console's environment, before Start.
    void AddEnv(const std::string& entry) { m_env.push_back(entry); }
    // More arguments for the agent (the live backend, say), before Start.
    void SetAgentArgs(std::vector<std::string> args) { m_agentArgs = std::move(args); }

    ScreenSession& S() { return m_run.Screen(); }
    ConsoleRun& Run() { return m_run; }
    int Lang() const { return m_lang; }

    // Opens a page and waits for its prompt.
    AssertionResult Open(const FormLeaf& leaf, int prompt) {
        if (leaf.iMenu > 0)
            S().SendKey(Key::Down, leaf.iMenu);
        S().SendKey(Key::Enter);
        if (leaf.iItem > 0)
            S().SendKey(Key::Down, leaf.iItem);
        S().SendKey(Key::Enter);
        if (leaf.iSubItem >= 0) {
            if (leaf.iSubItem > 0)
                S().SendKey(Key::Down, leaf.iSubItem);
            S().SendKey(Key::Enter);
        }
        std::string want = CutToWidth(Prompt(prompt, m_lang), 20);
        if (!S().WaitForTextAt(S().Rows() - 3, 0, want))
            return AssertionFailure() << "the page did not open\n" << S().Dump();
        return AssertionSuccess();
    }

    std::vector<nlohmann::json> Journal() { return m_run.Agent().ReadJournal(); }
    size_t JournalSize() { return Journal().size(); }
    // The journal from line from on, but for the check requests.
    std::vector<nlohmann::json> SetsFrom(size_t from) {
        std::vector<nlohmann::json> all = Journal(), out;
        for (size_t i = from; i < all.size(); ++i) {
            if (all[i].value("cmd", -1) != kCheckCmd)
                out.push_back(all[i]);
        }
        return out;
    }
    size_t ChecksFrom(size_t from) {
        std::vector<nlohmann::json> all = Journal();
        size_t n = 0;
        for (size_t i = from; i < all.size(); ++i)
            n += all[i].value("cmd", -1) == kCheckCmd ? 1 : 0;
        return n;
    }

    // The agent's state as the console reads it, through the console's own
    // service link (one check request, in the journal like any other).
    cGlobalVal* LoadState() {
        setenv(NVUI_ENV_SOCKET, m_run.Agent().SocketPath().c_str(), 1);
        setenv(NVUI_ENV_LOG, (m_run.Agent().Dir() + "/link.log").c_str(), 1);
        int lang = LAN_MAX;
        std::string version;
        int ret = UI_InitInterface(&lang, version);
        unsetenv(NVUI_ENV_SOCKET);
        unsetenv(NVUI_ENV_LOG);
        EXPECT_EQ(ret, 0);
        return pg_Obj;
    }

    // The information-line text of a result code as the console builds it:
    // the agent's description of the code and its detail text follow.
    std::string ResultText(int code) {
        LoadState();
        return pg_Obj->mErrorNo2Des[code];
    }

private:
    ConsoleRun m_run;
    int m_lang = LAN_ENGLISH;
    std::vector<std::string> m_env;
    std::vector<std::string> m_agentArgs;
};

// One row of a form: caption, field text as shown, the field's width, and
// an optional reminder behind the field.
struct FormRow {
    std::string sCaption;
    std::string sValue;
    int iMaxWidth;
    std::string sReminder;
};

// Where a form stands: its box and, by the layout rule inside the border,
// the screen row of each form row and the columns of its cells.
struct FormLayout {
    int iLeft, iTop, iWidth, iHeight;
    std::vector<int> viRow;
    std::vector<int> viColX;  // caption, field, reminder
};

inline FormLayout LayOutForm(const std::vector<FormRow>& rows, int lines, int cols) {
    FormLayout f;
    f.iLeft = cols / 8;
    f.iTop = 6;
    f.iWidth = cols * 3 / 4;
    f.iHeight = lines - 9;
    int w = f.iWidth - 2, h = f.iHeight - 2;
    int widths[3] = {-1, -1, -1};
    for (const FormRow& r : rows) {
        int len = static_cast<int>(r.sValue.size());
        int claim = r.iMaxWidth > 0 && len < w ? r.iMaxWidth : len;
        widths[0] = std::max(widths[0], static_cast<int>(r.sCaption.size()));
        widths[1] = std::max(widths[1], claim);
        if (!r.sReminder.empty())
            widths[2] = std::max(widths[2], static_cast<int>(r.sReminder.size()));
    }
    int ncols = widths[2] >= 0 ? 3 : 2;
    int sum = 0;
    for (int j = 0; j < ncols; ++j)
        sum += widths[j];
    int gapX = (w - sum) / (ncols + 1);
    int x = 1 + gapX;
    for (int j = 0; j < ncols; ++j) {
        f.viColX.push_back(f.iLeft + x);
        x += widths[j] + gapX;
    }
    int n = static_cast<int>(rows.size());
    int gapY = n < h ? (h - n) / (n + 1) : 0;
    for (int i = 0; i < n; ++i)
        f.viRow.push_back(f.iTop + (1 + gapY + i * (gapY + 1)) % h);
    return f;
}

// The prompt line of a terminal of any height shows prompt id.
inline AssertionResult PromptRowShows(const ScreenSession& s, int id, int lang) {
    std::string want = CutToWidth(Prompt(id, lang), s.Cols());
    while (!want.empty() && want.back() == ' ')
        want.pop_back();
    std::string got = s.Row(s.Rows() - 3);
    if (got != want)
        return AssertionFailure() << "prompt shows '" << got << "', expected '" << want << "'";
    return AssertionSuccess();
}

// The information line starts with text (a result's description; the
// agent's detail text follows it) in white on blue.
inline AssertionResult InfoStartsWith(const ScreenSession& s, std::string text) {
    std::string got = s.Row(s.Rows() - 1);
    // The row is read without trailing blanks.
    while (text.size() > got.size() && !text.empty() && text.back() == ' ')
        text.pop_back();
    if (text.empty() || got.compare(0, text.size(), text) != 0)
        return AssertionFailure() << "information line shows '" << got << "', expected '" << text
                                  << "' first";
    if (!s.SpanHasPair(s.Rows() - 1, 0, s.Cols(), 1))
        return AssertionFailure() << "the information line is not white on blue";
    return AssertionSuccess();
}

// The form's box: its corners and sides in blue on yellow, its inside blue
// on yellow but for the cells of the form.
inline AssertionResult BoxShows(const ScreenSession& s, const FormLayout& f) {
    int r0 = f.iTop, r1 = f.iTop + f.iHeight - 1, c0 = f.iLeft, c1 = f.iLeft + f.iWidth - 1;
    struct Corner {
        int r, c;
        const char* ch;
    };
    const Corner corners[] = {{r0, c0, "┌"}, {r0, c1, "┐"}, {r1, c0, "└"}, {r1, c1, "┘"}};
    for (const Corner& k : corners) {
        if (s.Cell(k.r, k.c).sCh != k.ch || !nvtest::HasPair(s.Cell(k.r, k.c), 6))
            return AssertionFailure() << "no form corner " << k.ch << " in blue on yellow at "
                                      << k.r << "," << k.c << "\n"
                                      << s.DumpColors();
    }
    for (int r = r0 + 1; r < r1; ++r) {
        if (s.Cell(r, c0).sCh != "│" || s.Cell(r, c1).sCh != "│")
            return AssertionFailure() << "no form side on row " << r;
    }
    if (s.Cell(r0 - 1, c0).sCh == "┌" || s.Cell(r0, c0 - 1).sCh == "─")
        return AssertionFailure() << "the box is larger than expected";
    return AssertionSuccess();
}

// A form in its box: every caption and field where the layout puts them,
// nothing else inside the box; the focused row's caption blue on white and
// its field white on blue, the other fields underlined blue on yellow; the
// form prompt.
inline AssertionResult FormShows(const ScreenSession& s, const std::vector<FormRow>& rows,
                                 int focus, int lang = LAN_ENGLISH) {
    FormLayout f = LayOutForm(rows, s.Rows(), s.Cols());
    AssertionResult a = BoxShows(s, f);
    if (!a)
        return a;
    std::vector<bool> used(s.Rows(), false);
    for (size_t i = 0; i < rows.size(); ++i) {
        const FormRow& r = rows[i];
        auto shown = [&](const std::string& t) {
            return lang == LAN_CHINESE_GB2312 ? nvtest::Gb2312ToUtf8(t) : t;
        };
        std::string caption = shown(r.sCaption), value = shown(r.sValue);
        int y = f.viRow[i];
        used[y] = true;
        std::string inner = s.Text(y, f.iLeft + 1, f.iWidth - 2);
        std::string want(f.iWidth - 2, ' ');
        int off0 = f.viColX[0] - f.iLeft - 1, off1 = f.viColX[1] - f.iLeft - 1;
        want.replace(off0, r.sCaption.size(), r.sCaption);
        want.replace(off1, r.sValue.size(), r.sValue);
        if (!r.sReminder.empty())
            want.replace(f.viColX[2] - f.iLeft - 1, r.sReminder.size(), r.sReminder);
        if (lang == LAN_ENGLISH && inner != want)
            return AssertionFailure()
                   << "form row " << y << " shows '" << inner << "', expected '" << want << "'\n"
                   << s.DumpColors();
        if (s.Text(y, f.viColX[0], DisplayWidth(caption)) != caption)
            return AssertionFailure()
                   << "no caption '" << caption << "' at " << y << "," << f.viColX[0] << "\n"
                   << s.Dump();
        bool focused = static_cast<int>(i) == focus;
        a = CellsAre(
            s, y, f.viColX[0], DisplayWidth(caption),
            [&](const ScreenCell& c) { return nvtest::HasPair(c, focused ? 7 : 6) && !c.bReverse; },
            focused ? "the focused caption in blue on white" : "a caption in blue on yellow");
        if (!a)
            return a << "\n" << s.DumpColors();
        int fieldW = std::max(DisplayWidth(value), 1);
        a = CellsAre(
            s, y, f.viColX[1], std::min(fieldW, static_cast<int>(r.sValue.size())),
            [&](const ScreenCell& c) {
                return focused ? nvtest::HasPair(c, 5) && !c.bUnderline
                               : nvtest::HasPair(c, 6) && c.bUnderline;
            },
            focused ? "the focused field in white on blue" : "an underlined field");
        if (!a)
            return a << "\n" << s.DumpColors();
    }
    for (int y = f.iTop + 1; y < f.iTop + f.iHeight - 1; ++y) {
        if (!used[y] && s.Text(y, f.iLeft + 1, f.iWidth - 2) != std::string(f.iWidth - 2, ' '))
            return AssertionFailure() << "form line " << y << " is not blank";
        if (!used[y] && !s.SpanHasPair(y, f.iLeft + 1, f.iWidth - 2, 6))
            return AssertionFailure() << "form line " << y << " is not blue on yellow";
    }
    return PromptRowShows(s, PROMPT_CONTENT_NEW_LEVEL, lang);
}

// A list page: one line per row, centred by the layout rule of a one-cell
// page, the focused one blue on white; nothing else in the content area.
inline AssertionResult ListPageShows(const ScreenSession& s, const std::vector<std::string>& lines,
                                     int focus, int prompt, int lang = LAN_ENGLISH) {
    int rows = s.Rows(), cols = s.Cols();
    int top = 3, height = rows - 6;
    int w = 0;
    for (const std::string& l : lines)
        w = std::max(w, static_cast<int>(l.size()));
    int x = (cols - w) / 2;
    int n = static_cast<int>(lines.size());
    int gap = n < height ? (height - n) / (n + 1) : 0;
    std::vector<bool> used(rows, false);
    for (int i = 0; i < n && i < height; ++i) {
        int y = top + (gap + i * (gap + 1)) % height;
        used[y] = true;
        std::string want = std::string(x, ' ') + lines[i];
        while (!want.empty() && want.back() == ' ')
            want.pop_back();
        if (s.Row(y) != want)
            return AssertionFailure()
                   << "row " << y << " shows '" << s.Row(y) << "', expected '" << want << "'\n"
                   << s.Dump();
        AssertionResult a = CellsAre(
            s, y, x, static_cast<int>(lines[i].size()),
            [&](const ScreenCell& c) { return nvtest::HasPair(c, i == focus ? 7 : 2); },
            i == focus ? "the focused line in blue on white" : "a line in black on white");
        if (!a)
            return a;
    }
    for (int y = top; y < top + height; ++y) {
        if (!used[y] && s.Row(y) != "")
            return AssertionFailure() << "row " << y << " is not blank: '" << s.Row(y) << "'";
        if (!used[y] && !s.SpanHasPair(y, 0, cols, 2))
            return AssertionFailure() << "row " << y << " is not black on white";
    }
    return PromptRowShows(s, prompt, lang);
}

// The journal lines from index from on hold exactly one set command, cmd
// with payload; its result is returned through result.
inline AssertionResult OneSet(FormConsole& c, size_t from, int cmd, const std::string& payload,
                              int* result = nullptr) {
    std::vector<nlohmann::json> sets = c.SetsFrom(from);
    if (sets.size() != 1) {
        AssertionResult a = AssertionFailure();
        a << sets.size() << " set commands, expected one (" << cmd << "):";
        for (const nlohmann::json& j : sets)
            a << "\n  " << j.dump();
        return a;
    }
    if (sets[0].value("cmd", -1) != cmd ||
        sets[0].value("payload_hex", std::string()) != Hex(payload))
        return AssertionFailure() << "journal line " << sets[0].dump() << ", expected command "
                                  << cmd << " with payload '" << payload << "' (hex "
                                  << Hex(payload) << ")";
    if (result)
        *result = sets[0].value("result", -99);
    return AssertionSuccess();
}

}  // namespace nvform

#endif
