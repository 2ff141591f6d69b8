// The System Monitor pages in a terminal, against a real norvaned: the file
// and process lists edited in the list bar (delete, add mode with its
// Backspace rule, F9 with and without a pending line, Esc in add mode, an
// empty list) and sent to commands 13 and 15 as lines each ended by "\n";
// the monitor switches (14, 16, 19, 21); the CPU thresholds in "%3d%%" with
// a text the console refuses itself and a floor the agent refuses; the
// memory ceiling right-aligned in ten columns and the read-only memory rows.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_screen_edit_util.h"

namespace {

using namespace nvedit;

const std::string kOpen = "[Open]";
const std::string kClose = "[Close]";
const std::string kScanList = "[scan list]";

std::vector<PageRow> ListPageRows(const char* const* listLabel, const std::string& flag) {
    return {{Raw(pcStrMonitToggle, LAN_ENGLISH), flag},
            {Raw(listLabel, LAN_ENGLISH), kScanList, 0, true, PROMPT_CONTENT_LIST}};
}

// The list as one payload: every line followed by "\n".
std::string Joined(const std::vector<std::string>& lines) {
    std::string out;
    for (const std::string& l : lines)
        out += l + "\n";
    return out;
}

AssertionResult TextIs(const ScreenSession& s, int r, int c, const std::string& text) {
    std::string got = s.Text(r, c, static_cast<int>(text.size()));
    if (got != text)
        return AssertionFailure() << "row " << r << " shows '" << got << "' from column " << c
                                  << ", expected '" << text << "'";
    return AssertionSuccess();
}

// The add-mode cursor: visible, at column col of list line i.
AssertionResult CursorOnListLine(const ScreenSession& s, int i, int col = 0) {
    return CursorAt(s, kListY + 1 + i, kListX + 1 + col);
}

TEST(ScreenEditMonitor, FileListIsEditedInTheListBarAndSentAsLines) {
    EditConsole c;
    ASSERT_TRUE(c.Start());  // demo: four monitored files, the monitor on
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kFileLeaf, "Monitor Toggle:"));
    std::vector<PageRow> rows = ListPageRows(pcStrFileList, kOpen);
    PageLayout p = LayOut(rows);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    size_t atStart = c.JournalSize();

    std::vector<std::string> list = {"/etc/passwd", "/etc/shadow", "/etc/ssh/sshd_config",
                                     "/etc/nginx/nginx.conf"};
    s.SendKey(Key::Down);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(ListShows(s, list, 0, LAN_ENGLISH), CursorHidden(s)); }));

    // F3 deletes the highlighted line; the highlight stays on its place.
    s.SendKey(Key::Down);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, list, 1, LAN_ENGLISH); }));
    s.SendKey(Key::F3);
    list.erase(list.begin() + 1);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, list, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::F3);
    list.erase(list.begin());
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, list, 0, LAN_ENGLISH); }));

    // F2: add mode, the cursor at the start of the line after the last one.
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(s, [&] { return CursorOnListLine(s, 2); }));
    // "/abc", Backspace, Enter adds "/abc": Backspace blanks the column on
    // the screen but leaves the character in the line.
    s.SendText("/abc");
    ASSERT_TRUE(Eventually(s, [&] {
        return And(CursorOnListLine(s, 2, 4), TextIs(s, kListY + 3, kListX + 1, "/abc"));
    }));
    s.SendKey(Key::Backspace);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(CursorOnListLine(s, 2, 3), TextIs(s, kListY + 3, kListX + 1, "/ab "));
    }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return CursorOnListLine(s, 3); }));
    // "/abc", Backspace, "d", Enter adds "/abd".
    s.SendText("/abc");
    s.SendKey(Key::Backspace);
    s.SendText("d");
    ASSERT_TRUE(Eventually(s, [&] {
        return And(CursorOnListLine(s, 3, 4), TextIs(s, kListY + 4, kListX + 1, "/abd"));
    }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return CursorOnListLine(s, 4); }));
    // Up, Down and F3 do nothing in add mode.
    s.SendKey(Key::Up);
    s.SendKey(Key::Down);
    s.SendKey(Key::F3);
    // A line typed without Enter is sent by F9 as the last line.
    s.SendText("/var/x");
    ASSERT_TRUE(Eventually(s, [&] { return CursorOnListLine(s, 4, 6); }));
    EXPECT_EQ(c.JournalSize(), atStart);
    s.SendKey(Key::F9);
    std::vector<std::string> sent = {list[0], list[1], "/abc", "/abd", "/var/x"};
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 13, Joined(sent), 7));

    // The rebuilt page holds the new list; Esc leaves the bar without
    // sending and the page keeps the focus on the list row.
    size_t before = c.JournalSize();
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, sent, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Esc);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(PageShows(s, rows, p, 1, LAN_ENGLISH), InfoClear(s)); }));

    // Esc in add mode discards everything: the deletion, the line added with
    // Enter and the line being typed.
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, sent, 0, LAN_ENGLISH); }));
    s.SendKey(Key::F3);
    s.SendKey(Key::F2);
    s.SendText("/zzz");
    s.SendKey(Key::Enter);
    s.SendText("/yyy");
    ASSERT_TRUE(Eventually(s, [&] { return CursorOnListLine(s, 5, 4); }));
    s.SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(PageShows(s, rows, p, 1, LAN_ENGLISH), InfoClear(s), CursorHidden(s));
    }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, sent, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 1, LAN_ENGLISH); }));
    EXPECT_EQ(c.JournalSize(), before);

    // The monitor switch: "[Close]" sends command 14 with "0".
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    rows = ListPageRows(pcStrFileList, kClose);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 14, "0", 7));
}

TEST(ScreenEditMonitor, EmptyProcessListOpensAnEmptyBarAndIsFilled) {
    EditConsole c;
    ASSERT_TRUE(c.Start(DemoStateWith(
        {{"vProcessMonitList", nlohmann::json::array()}, {"chProcessMonitFlag", "0"}})));
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kProcessLeaf, "Process List:"));
    std::vector<PageRow> rows = ListPageRows(pcStrProcList, kClose);
    PageLayout p = LayOut(rows);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    size_t atStart = c.JournalSize();

    // An empty list still shows "[scan list]" and opens an empty bar in
    // which Down, Up and F3 do nothing; F9 sends an empty text, which the
    // agent finds unchanged.
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(ListShows(s, {}, -1, LAN_ENGLISH), CursorHidden(s)); }));
    s.SendKey(Key::Down);
    s.SendKey(Key::Up);
    s.SendKey(Key::F3);
    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Nothing to change. The monitored-process list is unchanged."),
                   PageShows(s, rows, p, 1, LAN_ENGLISH));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 15, "", 6));

    // F2 on the empty list puts the cursor on the first line.
    size_t before = c.JournalSize();
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, {}, -1, LAN_ENGLISH); }));
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(s, [&] { return CursorOnListLine(s, 0); }));
    s.SendText("sshd");
    s.SendKey(Key::Enter);
    s.SendText("cron");
    ASSERT_TRUE(Eventually(s, [&] { return CursorOnListLine(s, 1, 4); }));
    EXPECT_EQ(s.Text(kListY + 1, kListX + 1, 5), "sshd ");
    EXPECT_EQ(s.Text(kListY + 2, kListX + 1, 5), "cron ");
    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 15, "sshd\ncron\n", 7));

    // The switch: "[Open]" sends command 16 with "1".
    before = c.JournalSize();
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    rows = ListPageRows(pcStrProcList, kOpen);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 16, "1", 7));

    // Deleting both lines leaves an empty window; F9 then empties the list.
    before = c.JournalSize();
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, {"sshd", "cron"}, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Down);
    s.SendKey(Key::F3);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, {"sshd"}, 0, LAN_ENGLISH); }));
    s.SendKey(Key::F3);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, {}, -1, LAN_ENGLISH); }));
    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 15, "", 7));

    // A list the agent refuses: its reason is shown, the bar closes all the
    // same, the page is not rebuilt and the edit is lost.
    before = c.JournalSize();
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, {}, -1, LAN_ENGLISH); }));
    s.SendKey(Key::F2);
    s.SendText("a/b");
    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(s, [&] {
        // The agent's short form of its sentence, which is longer than the
        // information line.
        return And(InfoShows(s,
                             "The value is not valid. \"a/b\" is not a command line: a "
                             "program or absolute path, then arguments."),
                   PageShows(s, rows, p, 1, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 15, "a/b\n", 2));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(InfoClear(s), ListShows(s, {}, -1, LAN_ENGLISH)); }));
    s.SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 1, LAN_ENGLISH); }));
}

TEST(ScreenEditMonitor, LongProcessListPagesAndANewlineBecomesABlank) {
    // Thirteen lines fill the list area; the fourteenth is on page 1. One
    // name holds a newline, which the bar shows and sends as a blank.
    std::vector<std::string> list;
    for (int i = 1; i <= 14; ++i)
        list.push_back("proc" + std::to_string(i));
    std::vector<std::string> stored = list;
    stored[2] = "proc3\nx";
    list[2] = "proc3 x";
    EditConsole c;
    ASSERT_TRUE(c.Start(DemoStateWith({{"vProcessMonitList", stored}})));
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kProcessLeaf, "Process List:"));
    std::vector<PageRow> rows = ListPageRows(pcStrProcList, kOpen);
    PageLayout p = LayOut(rows);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    size_t atStart = c.JournalSize();
    const int h = kListH - 2;
    ASSERT_EQ(h, 13);
    std::vector<std::string> page0(list.begin(), list.begin() + h);
    std::vector<std::string> page1(list.begin() + h, list.end());

    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, page0, 0, LAN_ENGLISH); }));
    // Down from the page's last line shows the next page; Up comes back.
    s.SendKey(Key::Down, h);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, page1, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, page0, h - 1, LAN_ENGLISH); }));
    // Page Down highlights the next page's first line, Page Up the previous
    // page's last line.
    s.SendKey(Key::PageUp);  // on page 0: nothing
    s.SendKey(Key::PageDown);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, page1, 0, LAN_ENGLISH); }));
    s.SendKey(Key::PageDown);  // on the last page: nothing
    s.SendKey(Key::PageUp);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, page0, h - 1, LAN_ENGLISH); }));
    // Deleting the page's last line leaves 13: F2 then shows the empty page
    // 1 and typing starts on its first line.
    s.SendKey(Key::F3);
    list.erase(list.begin() + h - 1);
    page0.assign(list.begin(), list.begin() + h);
    ASSERT_TRUE(Eventually(s, [&] { return ListShows(s, page0, h - 1, LAN_ENGLISH); }));
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(ListShows(s, {}, -1, LAN_ENGLISH), CursorOnListLine(s, 0)); }));
    s.SendText("cron");
    s.SendKey(Key::F9);
    list.push_back("cron");
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 15, Joined(list), 7));
}

std::vector<PageRow> CpuRows(const std::string& flag, const std::string& ceil,
                             const std::string& floor) {
    return {{Raw(pcStrMonitToggle, LAN_ENGLISH), flag},
            {Raw(pcStrCpuCeil, LAN_ENGLISH), ceil, 3},
            {Raw(pcStrCpuFloor, LAN_ENGLISH), floor, 3}};
}

TEST(ScreenEditMonitor, CpuThresholdsShowAsPercentAndRefusalsAreShown) {
    EditConsole c;
    ASSERT_TRUE(c.Start(DemoStateWith({{"shCpuCeil", 100}, {"shCpuFloor", 5}})));
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kCpuLeaf, "CPU Ceil:"));
    std::vector<PageRow> rows = CpuRows(kOpen, "100%", "  5%");
    PageLayout p = LayOut(rows);
    // Labels 15 bytes, values 6 ("[Open]"; the thresholds claim 3).
    ASSERT_EQ(p.iLabelX, 19);
    ASSERT_EQ(p.iValueX, 53);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    size_t atStart = c.JournalSize();

    // The field is the three digits; the percent sign stays behind it and
    // the fourth character is ignored.
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    int ceilRow = p.viRow[1];
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, ceilRow, 53, 3, ""); }));
    EXPECT_EQ(s.Text(ceilRow, 56, 1), "%");
    s.SendText("5%");
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, ceilRow, 53, 3, "5%"); }));
    // "5%" is refused by the console itself: nothing is sent, and the line
    // shows the description of -1 with the last detail (none yet).
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "The request failed."), PageShows(s, rows, p, 1, LAN_ENGLISH),
                   CursorHidden(s));
    }));
    EXPECT_EQ(c.JournalSize(), atStart);

    // A ceiling of 50: command 17.
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, ceilRow, 53, 3, ""); }));
    s.SendText("0505");
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, ceilRow, 53, 3, "050"); }));
    s.SendKey(Key::Enter);
    rows = CpuRows(kOpen, " 50%", "  5%");
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 17, "050", 7));

    // A floor above the ceiling is the agent's to refuse; its reason stays
    // the last detail, shown again behind the console's own refusal.
    size_t before = c.JournalSize();
    s.SendKey(Key::Down, 2);
    s.SendKey(Key::Enter);
    int floorRow = p.viRow[2];
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, floorRow, 53, 3, ""); }));
    s.SendText("60");
    s.SendKey(Key::Enter);
    const std::string reason = "The CPU floor must not be above the ceiling (50%).";
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "The value is not valid. " + reason),
                   PageShows(s, rows, p, 2, LAN_ENGLISH));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 18, "60", 2));
    before = c.JournalSize();
    s.SendKey(Key::Enter);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(InfoClear(s), FieldShows(s, floorRow, 53, 3, "")); }));
    s.SendText("5%");
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "The request failed. " + reason),
                   PageShows(s, rows, p, 2, LAN_ENGLISH));
    }));
    EXPECT_EQ(c.JournalSize(), before);

    // The switch: "[Close]" sends command 19 with "0".
    s.SendKey(Key::Up, 2);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    rows = CpuRows(kClose, " 50%", "  5%");
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 19, "0", 7));
}

std::vector<PageRow> MemoryRows(const std::string& flag, const std::string& ceil) {
    return {{Raw(pcStrMonitToggle, LAN_ENGLISH), flag},
            {Raw(pcStrMemUseCeil, LAN_ENGLISH), ceil, 10},
            {Raw(pcStrMemoryUse, LAN_ENGLISH), "3120 MBytes", 0, false, PROMPT_CONTENT_NO_MODIFY},
            {Raw(pcStrMemoryFree, LAN_ENGLISH), "4856 MBytes", 0, false, PROMPT_CONTENT_NO_MODIFY}};
}

TEST(ScreenEditMonitor, MemoryCeilingIsRightAlignedAndUseRowsAreReadOnly) {
    EditConsole c;
    ASSERT_TRUE(c.Start());  // demo: ceiling 6144 of 7976 MB, 3120 used, 4856 free
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kMemoryLeaf, "Memory Use Ceil:"));
    std::vector<PageRow> rows = MemoryRows(kClose, "      6144 MBytes");
    PageLayout p = LayOut(rows);
    ASSERT_EQ(p.iValueX, 50);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    size_t atStart = c.JournalSize();

    // The read-only rows: their own prompt, and Enter opens nothing.
    s.SendKey(Key::Down, 2);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 2, LAN_ENGLISH); }));
    EXPECT_EQ(s.Row(kPromptRow), "[up/down arrow]Select item [F12]Help [Esc]Return to menu");
    s.SendKey(Key::Enter);
    s.SendKey(Key::Down);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(PageShows(s, rows, p, 3, LAN_ENGLISH), CursorHidden(s)); }));
    s.SendKey(Key::Enter);
    s.SendKey(Key::Up, 2);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 1, LAN_ENGLISH); }));
    EXPECT_TRUE(InfoClear(s));
    EXPECT_EQ(c.JournalSize(), atStart);

    // The ceiling is typed over its ten columns; " MBytes" stays.
    int ceilRow = p.viRow[1];
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, ceilRow, 50, 10, ""); }));
    EXPECT_EQ(s.Text(ceilRow, 60, 7), " MBytes");
    s.SendText("4096");
    s.SendKey(Key::Enter);
    rows = MemoryRows(kClose, "      4096 MBytes");
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 20, "4096", 7));

    // Above the total memory: the agent refuses.
    size_t before = c.JournalSize();
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, ceilRow, 50, 10, ""); }));
    s.SendText("9000");
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s,
                             "The value is not valid. The memory ceiling cannot exceed the "
                             "total memory (7976 MB)."),
                   PageShows(s, rows, p, 1, LAN_ENGLISH));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 20, "9000", 2));

    // The switch: "[Open]" sends command 21 with "1".
    before = c.JournalSize();
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    rows = MemoryRows(kOpen, "      4096 MBytes");
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 21, "1", 7));
}

}  // namespace
