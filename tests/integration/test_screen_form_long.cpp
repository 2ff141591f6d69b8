// Long values at 80x24 and 66x18 on the Vsftpd, File Backup, Net Interface
// and Tcp listen Port pages. Widths are counted in bytes and a column wider
// than the window makes the layout's interval negative: the page is then
// drawn from a column left of the window, curses clips what falls outside,
// every row stays on its own line and the page's keys keep working.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "test_screen_form_util.h"

namespace {

using namespace nvform;

struct Size {
    int iRows, iCols;
};
const Size kSizes[] = {{24, 80}, {18, 66}};

// The demo state with some of its fields replaced.
std::string DemoWith(const std::function<void(nlohmann::json&)>& edit) {
    nlohmann::json j = nlohmann::json::parse(nvtest::ReadFile(ConsoleRun::DemoStatePath()));
    edit(j);
    return j.dump(2);
}

// Opens leaf (menu, item) and waits until its prompt shows.
AssertionResult OpenLeaf(FormConsole& c, int menu, int item, int prompt) {
    ScreenSession& s = c.S();
    if (menu > 0)
        s.SendKey(Key::Down, menu);
    s.SendKey(Key::Enter);
    if (item > 0)
        s.SendKey(Key::Down, item);
    s.SendKey(Key::Enter);
    if (!Eventually(s, [&] { return PromptRowShows(s, prompt, LAN_ENGLISH); }))
        return AssertionFailure() << "prompt " << prompt << " not shown\n" << s.Dump();
    s.WaitSettled();
    return AssertionSuccess();
}

// Rows of the content area (screen rows 3 to rows-4) that hold ch.
std::vector<int> RowsWith(const ScreenSession& s, char ch) {
    std::vector<int> v;
    for (int r = 3; r < s.Rows() - 3; ++r) {
        if (s.Row(r).find(ch) != std::string::npos)
            v.push_back(r);
    }
    return v;
}

// The layout of a page of n rows whose columns claim widths, in the content
// area of a screen: columns are accepted while their sum stays below the
// width, the one that overflows stays in the sum, and the interval is the
// spare width (negative when the text is too wide) over the columns + 1.
struct PageModel {
    std::vector<int> viColX;
    std::vector<int> viLine;
};
PageModel LayOutPage(const std::vector<int>& widths, int n, const ScreenSession& s) {
    int w = s.Cols(), h = s.Rows() - 6;
    int sum = 0, cols = 0;
    for (int width : widths) {
        sum += width;
        if (sum >= w)
            break;
        ++cols;
    }
    int gap = (w - sum) / (cols + 1);
    PageModel m;
    int x = gap;
    for (int width : widths) {
        m.viColX.push_back(x);
        x += width + gap;
    }
    int gapY = n < h ? (h - n) / (n + 1) : 0;
    for (int r = 0; r < n; ++r)
        m.viLine.push_back(3 + (gapY + r * (gapY + 1)) % h);
    return m;
}

// A row as curses leaves it: each cell's text written from its column, later
// cells over earlier ones, what falls outside the screen's width clipped.
std::string DrawnRow(const std::vector<std::string>& cells, const std::vector<int>& colX,
                     int width) {
    std::string row(width, ' ');
    for (size_t j = 0; j < cells.size(); ++j) {
        for (size_t i = 0; i < cells[j].size(); ++i) {
            long x = colX[j] + static_cast<long>(i);
            if (x >= 0 && x < width)
                row[x] = cells[j][i];
        }
    }
    size_t end = row.find_last_not_of(' ');
    return end == std::string::npos ? "" : row.substr(0, end + 1);
}

// Esc leaves the page for the menu, whatever it showed.
AssertionResult EscLeaves(ScreenSession& s) {
    s.SendKey(Key::Esc);
    if (!Eventually(s, [&] { return PromptRowShows(s, PROMPT_MENU, LAN_ENGLISH); }))
        return AssertionFailure() << "Esc did not leave the page\n" << s.Dump();
    return AssertionSuccess();
}

class ScreenLong : public ::testing::TestWithParam<Size> {};

// The FTP root of 60 and 305 bytes: the labels claim 22 bytes and the root
// its length, so the page starts left of the window. The root's row is the
// two cells written from their columns and clipped; every label shows what
// of it falls inside the window, left of the values.
TEST_P(ScreenLong, VsftpdPageWithALongRootKeepsTheColumnRule) {
    Size z = GetParam();
    const std::vector<std::string> labels = {
        "Anonym Enable:",    "Anonym Upload:",      "Anonym Make Directory:",
        "Anonym Root Path:", "Local User Enable:",  "Write Enable:",
        "Ftp Start:",        "Ftp Restore Default:"};
    for (size_t n : {60u, 305u}) {
        std::string root = "/srv/" + std::string(n - 5, 'Q');
        FormConsole c;
        ASSERT_TRUE(c.Start(DemoWith([&](nlohmann::json& j) { j["sVsftpdAnonRoot"] = root; }),
                            LAN_ENGLISH, z.iRows, z.iCols));
        ASSERT_TRUE(OpenLeaf(c, 3, 1, PROMPT_CONTENT));
        ScreenSession& s = c.S();
        PageModel m = LayOutPage({22, static_cast<int>(n)}, 8, s);
        ASSERT_LT(m.viColX[0], 0) << n;
        EXPECT_EQ(s.Row(m.viLine[3]), DrawnRow({labels[3], root}, m.viColX, z.iCols)) << n << "\n"
                                                                                      << s.Dump();
        EXPECT_EQ(RowsWith(s, 'Q'), std::vector<int>{m.viLine[3]}) << n << "\n" << s.Dump();
        int valueX = std::min(std::max(m.viColX[1], 0), z.iCols);
        for (size_t r = 0; r < labels.size(); ++r) {
            EXPECT_EQ(
                s.Text(m.viLine[r], 0, valueX),
                DrawnRow({labels[r]}, m.viColX, z.iCols).append(z.iCols, ' ').substr(0, valueX))
                << n << " row " << r << "\n"
                << s.Dump();
        }
        EXPECT_TRUE(EscLeaves(s)) << n;
    }
}

// Every row of a one-cell list page is laid out from the same column, the
// longest row's width left of its end: a backup entry wider than the page
// ends at the right edge and loses its left part, and so do the others.
TEST_P(ScreenLong, FileBackupRowsStartLeftOfTheWindowTogether) {
    Size z = GetParam();
    std::string name = "/var/" + std::string(150, 'Z');
    FormConsole c;
    ASSERT_TRUE(c.Start(DemoWith([&](nlohmann::json& j) {
                            j["vBakForSize"].push_back(
                                {{"szFileName", name}, {"szBakDir", "/b"}, {"iKilobyte", 64}});
                        }),
                        LAN_ENGLISH, z.iRows, z.iCols));
    ASSERT_TRUE(OpenLeaf(c, 2, 5, PROMPT_SCKEY_TOGGLE));
    ScreenSession& s = c.S();
    PageModel m = LayOutPage({z.iCols + 1}, 3, s);
    ASSERT_EQ(RowsWith(s, '>'), m.viLine) << s.Dump();
    std::vector<int> rows = RowsWith(s, 'Z');
    ASSERT_EQ(rows, std::vector<int>{m.viLine[2]}) << s.Dump();
    // The long name's row starts with the middle of the name.
    EXPECT_EQ(s.Text(rows[0], 0, 1), "Z") << s.Dump();
    EXPECT_FALSE(s.ScreenContains("/var/Z")) << s.Dump();
    EXPECT_FALSE(s.ScreenContains("/etc/nginx/nginx.conf")) << s.Dump();
    // The rows end together at the right edge, their arrows in one column.
    size_t arrow = s.Row(m.viLine[0]).find(" -> ");
    for (int line : m.viLine) {
        EXPECT_EQ(s.Row(line).size(), static_cast<size_t>(z.iCols)) << s.Dump();
        EXPECT_EQ(s.Row(line).find(" -> "), arrow) << s.Dump();
    }
    EXPECT_TRUE(EscLeaves(s));
}

// The interface rows are one cell each, laid out from one column: at 80
// columns the rows still fit from the name on, at 66 they start left of the
// window and the names are clipped with the rest of their left part.
TEST_P(ScreenLong, NetInterfaceRowsShareTheirStart) {
    Size z = GetParam();
    FormConsole c;
    ASSERT_TRUE(c.Start(
        DemoWith([](nlohmann::json& j) { j["simInterfaces"][0]["name"] = "eth0-long-name"; }),
        LAN_ENGLISH, z.iRows, z.iCols));
    ASSERT_TRUE(OpenLeaf(c, 0, 0, PROMPT_NET_INTERFACE));
    ScreenSession& s = c.S();
    PageModel m = LayOutPage({z.iCols + 1}, 3, s);
    const char* macs[] = {"52:54:00:3a:1f:07", "52:54:00:8c:42:b5", "00:00:00:00:00:00"};
    nvtest::ScreenPos first = s.FindText(macs[0]);
    ASSERT_TRUE(first.Found()) << s.Dump();
    for (int r = 0; r < 3; ++r) {
        nvtest::ScreenPos p = s.FindText(macs[r]);
        EXPECT_EQ(p.iRow, m.viLine[r]) << s.Dump();
        EXPECT_EQ(p.iCol, first.iCol) << s.Dump();
    }
    // The widest rows end at the right edge.
    EXPECT_EQ(s.Text(m.viLine[0], z.iCols - 13, 13), "255.255.255.0") << s.Dump();
    EXPECT_EQ(s.ScreenContains("eth0-long-name"), z.iCols >= 80) << s.Dump();
    EXPECT_TRUE(EscLeaves(s));
}

// A listener line of 100 KB among ordinary ones: the one column claims its
// length, so the rows start 100 KB left of the window: the long row shows
// its last bytes across the whole width, the short rows nothing.
TEST_P(ScreenLong, TcpListenLineOf100KbFillsItsRowAlone) {
    Size z = GetParam();
    std::vector<std::string> lines = {
        "0.0.0.0          22       812  sshd",
        "0.0.0.0:9999     9999    4242  " + std::string(100 * 1024, 'T'),
        "127.0.0.1        5432     921  postgres"};
    FormConsole c;
    ASSERT_TRUE(c.Start(DemoWith([&](nlohmann::json& j) { j["vsTcpListenList"] = lines; }),
                        LAN_ENGLISH, z.iRows, z.iCols));
    ASSERT_TRUE(OpenLeaf(c, 2, 6, PROMPT_CONTENT_NO_MODIFY));
    ScreenSession& s = c.S();
    PageModel m = LayOutPage({static_cast<int>(lines[1].size())}, 3, s);
    for (int r = 3; r < z.iRows - 3; ++r) {
        std::string want = r == m.viLine[1] ? std::string(z.iCols, 'T') : "";
        EXPECT_EQ(s.Row(r), want) << "row " << r << "\n" << s.Dump();
    }
    EXPECT_TRUE(EscLeaves(s));
}

INSTANTIATE_TEST_SUITE_P(Sizes, ScreenLong, ::testing::ValuesIn(kSizes),
                         [](const ::testing::TestParamInfo<Size>& i) {
                             return std::to_string(i.param.iCols) + "x" +
                                    std::to_string(i.param.iRows);
                         });

}  // namespace
