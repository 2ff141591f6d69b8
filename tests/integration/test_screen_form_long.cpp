// Long values at 80x24 and 66x18 on the Vsftpd, File Backup, Net Interface
// and Tcp listen Port pages: a page never starts left of its window's first
// column, a value wider than what is left of its row is clipped at the right
// edge on its own row, and the labels and the start of every row stay whole.
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

// Opens leaf (menu, item) and waits until text shows.
AssertionResult OpenLeaf(FormConsole& c, int menu, int item, const std::string& text) {
    ScreenSession& s = c.S();
    if (menu > 0)
        s.SendKey(Key::Down, menu);
    s.SendKey(Key::Enter);
    if (item > 0)
        s.SendKey(Key::Down, item);
    s.SendKey(Key::Enter);
    if (!s.WaitForTextAnywhere(text))
        return AssertionFailure() << "'" << text << "' not shown\n" << s.Dump();
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

// text shows whole, starting inside the screen at column col or, col < 0,
// at any column.
AssertionResult ShowsWhole(const ScreenSession& s, const std::string& text, int col = -1) {
    nvtest::ScreenPos p = s.FindText(text);
    if (!p.Found())
        return AssertionFailure() << "'" << text << "' not shown whole\n" << s.Dump();
    if (col >= 0 && p.iCol != col)
        return AssertionFailure() << "'" << text << "' at column " << p.iCol << ", not " << col
                                  << "\n"
                                  << s.Dump();
    return AssertionSuccess();
}

class ScreenLong : public ::testing::TestWithParam<Size> {};

// The FTP root of 60 and 305 bytes: every label in its place, the root's
// start after its label and its end clipped at the right edge on one row.
TEST_P(ScreenLong, VsftpdLabelsStayWholeWithALongRoot) {
    Size z = GetParam();
    const char* labels[] = {"Anonym Enable:",    "Anonym Upload:",      "Anonym Make Directory:",
                            "Anonym Root Path:", "Local User Enable:",  "Write Enable:",
                            "Ftp Start:",        "Ftp Restore Default:"};
    for (size_t n : {60u, 305u}) {
        std::string root = "/srv/" + std::string(n - 5, 'Q');
        FormConsole c;
        ASSERT_TRUE(c.Start(DemoWith([&](nlohmann::json& j) { j["sVsftpdAnonRoot"] = root; }),
                            LAN_ENGLISH, z.iRows, z.iCols));
        ASSERT_TRUE(OpenLeaf(c, 3, 1, "Ftp Start:"));
        ScreenSession& s = c.S();
        int col = s.FindText("Anonym Enable:").iCol;
        ASSERT_GE(col, 1) << s.Dump();
        for (const char* label : labels)
            EXPECT_TRUE(ShowsWhole(s, label, col)) << n;
        EXPECT_TRUE(ShowsWhole(s, "/srv/QQQQ")) << n;
        std::vector<int> rows = RowsWith(s, 'Q');
        ASSERT_EQ(rows.size(), 1u) << n << "\n" << s.Dump();
        EXPECT_EQ(s.Text(rows[0], z.iCols - 1, 1), "Q") << n << "\n" << s.Dump();
    }
}

// A backup entry wider than the page: every row keeps its start, the long
// one is clipped at the right edge on its own row.
TEST_P(ScreenLong, FileBackupRowsKeepTheirStart) {
    Size z = GetParam();
    std::string name = "/var/" + std::string(150, 'B');
    FormConsole c;
    ASSERT_TRUE(c.Start(DemoWith([&](nlohmann::json& j) {
                            j["vBakForSize"].push_back(
                                {{"szFileName", name}, {"szBakDir", "/b"}, {"iKilobyte", 64}});
                        }),
                        LAN_ENGLISH, z.iRows, z.iCols));
    ASSERT_TRUE(OpenLeaf(c, 2, 5, "BBBB"));
    ScreenSession& s = c.S();
    std::vector<int> rows = RowsWith(s, 'B');
    ASSERT_EQ(rows.size(), 1u) << s.Dump();
    EXPECT_TRUE(ShowsWhole(s, "/var/BBBB"));
    nvtest::ScreenPos first = s.FindText("/etc/nginx/nginx.conf");
    ASSERT_TRUE(first.Found()) << s.Dump();
    // The rows start in one column, the long one too.
    std::string start = s.Text(first.iRow, 0, first.iCol);
    EXPECT_EQ(start.find_first_not_of(' '), s.Row(rows[0]).find_first_not_of(' ')) << s.Dump();
    EXPECT_EQ(s.Text(rows[0], z.iCols - 1, 1), "B") << s.Dump();
}

// The interface rows are wider than 66 columns: each keeps its index and
// name (what F3 and the interface forms ask for).
TEST_P(ScreenLong, NetInterfaceRowsKeepIndexAndName) {
    Size z = GetParam();
    FormConsole c;
    ASSERT_TRUE(c.Start(
        DemoWith([](nlohmann::json& j) { j["simInterfaces"][0]["name"] = "eth0-long-name"; }),
        LAN_ENGLISH, z.iRows, z.iCols));
    ASSERT_TRUE(OpenLeaf(c, 0, 0, "eth1"));
    ScreenSession& s = c.S();
    for (const char* name : {"eth0-long-name", "eth1", "lo"})
        EXPECT_TRUE(ShowsWhole(s, name));
    nvtest::ScreenPos p0 = s.FindText("eth0-long-name"), p1 = s.FindText("eth1");
    EXPECT_EQ(p0.iCol, p1.iCol) << s.Dump();
    EXPECT_GE(s.Row(p0.iRow).find_first_not_of(' '), 1u) << s.Dump();
}

// A listener line of 100 KB among ordinary ones: one row, clipped at the
// right edge; the other rows whole.
TEST_P(ScreenLong, TcpListenLineOf100KbTakesOneRow) {
    Size z = GetParam();
    std::vector<std::string> lines = {
        "0.0.0.0          22       812  sshd",
        "0.0.0.0:9999     9999    4242  " + std::string(100 * 1024, 'T'),
        "127.0.0.1        5432     921  postgres"};
    FormConsole c;
    ASSERT_TRUE(c.Start(DemoWith([&](nlohmann::json& j) { j["vsTcpListenList"] = lines; }),
                        LAN_ENGLISH, z.iRows, z.iCols));
    ASSERT_TRUE(OpenLeaf(c, 2, 6, "sshd"));
    ScreenSession& s = c.S();
    EXPECT_TRUE(ShowsWhole(s, lines[0]));
    EXPECT_TRUE(ShowsWhole(s, lines[2]));
    EXPECT_TRUE(ShowsWhole(s, "0.0.0.0:9999     9999    4242  TTTT"));
    std::vector<int> rows = RowsWith(s, 'T');
    ASSERT_EQ(rows.size(), 1u) << s.Dump();
    EXPECT_EQ(s.Text(rows[0], z.iCols - 1, 1), "T") << s.Dump();
    EXPECT_EQ(s.FindText(lines[0]).iCol, s.FindText("0.0.0.0:9999").iCol) << s.Dump();
}

INSTANTIATE_TEST_SUITE_P(Sizes, ScreenLong, ::testing::ValuesIn(kSizes),
                         [](const ::testing::TestParamInfo<Size>& i) {
                             return std::to_string(i.param.iCols) + "x" +
                                    std::to_string(i.param.iRows);
                         });

}  // namespace
