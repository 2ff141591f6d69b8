// The System Optimize pages in a terminal, against a real norvaned: the three
// network switches changed through the choose bar (commands 4 to 6 with "1"
// or "0", nothing sent for the value already set, Esc, a flag that is neither
// "0" nor "1"), and the five resource limits shown in their fixed formats and
// typed in place through the input bar (the field's length limit, digits
// gathered from a text with blanks and letters, a value the agent refuses,
// Esc, Backspace, the cursor). After each change the journal shows the
// command and then the check request that rebuilt the page, which shows the
// new value with the focus on its first row.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_screen_edit_util.h"

namespace {

using namespace nvedit;

// ---- Network page ----

std::vector<PageRow> NetworkRows(const std::string& icmp, const std::string& syn,
                                 const std::string& reuse, int lang = LAN_ENGLISH) {
    return {{Raw(pcStrPingConfig, lang), icmp},
            {Raw(pcStrTcpSynConfig, lang), syn},
            {Raw(pcStrTcpWaitTimeReuse, lang), reuse}};
}

const std::string kOpen = "[Open]";
const std::string kClose = "[Close]";

TEST(ScreenEditOptimize, NetworkSwitchesSendOneOrZeroAndRebuildThePage) {
    EditConsole c;
    ASSERT_TRUE(c.Start());  // demo: ICMP "0", SYN cookies "1", TIME_WAIT reuse "0"
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kNetworkLeaf, "Icmp Echo Ignore All:"));
    std::vector<PageRow> rows = NetworkRows(kClose, kOpen, kClose);
    PageLayout p = LayOut(rows);
    // Labels 21 bytes wide and values 7: gaps of (80 - 28) / 3 = 17 columns,
    // rows 3 + 3 lines apart from content line 3.
    ASSERT_EQ(p.iLabelX, 17);
    ASSERT_EQ(p.iValueX, 55);
    ASSERT_EQ(p.viRow, (std::vector<int>{6, 10, 14}));
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    EXPECT_FALSE(s.Cursor().bVisible);
    size_t atStart = c.JournalSize();
    EXPECT_TRUE(c.Sets().empty());

    // The choose bar at column 46, line 8, the current value "[Close]"
    // preselected; Enter on it sends nothing and leaves the information line
    // empty.
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    EXPECT_TRUE(InfoClear(s));
    EXPECT_EQ(c.JournalSize(), atStart);

    // Esc after moving to the other value sends nothing either.
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    EXPECT_TRUE(InfoClear(s));
    EXPECT_EQ(c.JournalSize(), atStart);

    // SYN cookies "[Open]" to "[Close]": command 5 with "0"; the page is
    // rebuilt from a new check with the focus back on the first row.
    s.SendKey(Key::Down);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Down);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    rows = NetworkRows(kClose, kClose, kClose);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 5, "0", 7));

    // TIME_WAIT reuse "[Close]" to "[Open]": command 6 with "1".
    size_t before = c.JournalSize();
    s.SendKey(Key::Down, 2);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 2, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    rows = NetworkRows(kClose, kClose, kOpen);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 6, "1", 7));

    // ICMP echo ignore "[Close]" to "[Open]": command 4 with "1". The
    // information line is cleared by the next key on the page.
    before = c.JournalSize();
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    rows = NetworkRows(kOpen, kClose, kOpen);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 4, "1", 7));
    s.SendKey(Key::Down);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(InfoClear(s), PageShows(s, rows, p, 1, LAN_ENGLISH)); }));
}

TEST(ScreenEditOptimize, NetworkFlagNeitherZeroNorOneShowsEmptyAndCanBeSet) {
    EditConsole c;
    ASSERT_TRUE(c.Start(DemoStateWith(
        {{"chIcmpEchoIgnoreAll", ""}, {"chTcpSyncookies", "x"}, {"chTcpTwReuse", "1"}})));
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kNetworkLeaf, "Icmp Echo Ignore All:"));
    std::vector<PageRow> rows = NetworkRows("", "", kOpen);
    PageLayout p = LayOut(rows);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    size_t atStart = c.JournalSize();

    // No option equals the empty value: the first is highlighted, and Enter
    // on it sends it.
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    rows = NetworkRows(kOpen, "", kOpen);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 4, "1", 7));

    // "x" shows empty too; "[Close]" sends "0".
    size_t before = c.JournalSize();
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kOpen, kClose}, 0, LAN_ENGLISH); }));
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    rows = NetworkRows(kOpen, kClose, kOpen);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 5, "0", 7));
}

// ---- Resource page ----

std::vector<PageRow> ResourceRows(const std::vector<std::string>& values) {
    const char* const* labels[] = {pcStrShmmax, pcStrShmall, pcStrShmmni, pcStrThreadMax,
                                   pcStrFileMax};
    std::vector<PageRow> rows;
    for (size_t i = 0; i < 5; ++i)
        rows.push_back({Raw(labels[i], LAN_ENGLISH), values[i], 10});
    return rows;
}

TEST(ScreenEditOptimize, ResourceLimitsShowInTheirFormatsAndAreTypedInPlace) {
    EditConsole c;
    ASSERT_TRUE(c.Start(DemoStateWith({{"ulShmMax", 0},
                                       {"ulShmAll", 4294967295UL},
                                       {"ulShmMni", 4096},
                                       {"ulThreadMax", 63477},
                                       {"ulFileMax", 398410}})));
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kResourceLeaf, "share memory max:"));
    // "%10luBytes", "%10luPages", "%10lu": a limit of 0 is nine blanks and 0.
    std::vector<std::string> values = {"         0Bytes", "4294967295Pages", "      4096",
                                       "     63477", "    398410"};
    std::vector<PageRow> rows = ResourceRows(values);
    PageLayout p = LayOut(rows);
    // Labels 23 bytes, values claim their field width 10: gaps of 15.
    ASSERT_EQ(p.iLabelX, 15);
    ASSERT_EQ(p.iValueX, 53);
    ASSERT_EQ(p.viRow, (std::vector<int>{5, 8, 11, 14, 17}));
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    size_t atStart = c.JournalSize();

    // Enter edits in place: the ten columns of the field are blanked, the
    // unit stays behind them, the cursor is shown.
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 5, 53, 10, ""); }));
    EXPECT_EQ(s.Text(5, 63, 5), "Bytes");
    // The field is limited: the eleventh character is ignored.
    s.SendText("1");
    ASSERT_TRUE(
        Eventually(s, [&] { return And(FieldShows(s, 5, 53, 10, "1"), CursorAt(s, 5, 54)); }));
    s.SendText("2345678901");
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 5, 53, 10, "1234567890"); }));
    EXPECT_EQ(s.Text(5, 63, 5), "Bytes");
    s.SendKey(Key::Enter);
    values[0] = "1234567890Bytes";
    rows = ResourceRows(values);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 7, "1234567890", 7));

    // Blanks are skipped and the first other character ends the number:
    // " 12 34x56" sends 1234.
    size_t before = c.JournalSize();
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 5, 53, 10, ""); }));
    s.SendText(" 12 34x56");
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 5, 53, 10, " 12 34x56"); }));
    s.SendKey(Key::Enter);
    values[0] = "      1234Bytes";
    rows = ResourceRows(values);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 7, "1234", 7));

    // A thread maximum of 100 is the agent's to refuse: the page keeps its
    // values and its focus, and the agent's reason follows the description.
    before = c.JournalSize();
    s.SendKey(Key::Down, 3);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 3, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 14, 53, 10, ""); }));
    s.SendText("100");
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 14, 53, 10, "100"); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "The value is not valid. The thread maximum must be above 512."),
                   PageShows(s, rows, p, 3, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 10, "100", 2));

    // Esc cancels what was typed without sending it.
    before = c.JournalSize();
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return And(InfoClear(s), FieldShows(s, 14, 53, 10, "")); }));
    s.SendText("999");
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 14, 53, 10, "999"); }));
    s.SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(PageShows(s, rows, p, 3, LAN_ENGLISH), CursorHidden(s), InfoClear(s));
    }));
    EXPECT_EQ(c.JournalSize(), before);

    // Backspace removes the last character typed and blanks its column.
    s.SendKey(Key::Down);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 4, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 17, 53, 10, ""); }));
    s.SendText("40977");
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 17, 53, 10, "40977"); }));
    s.SendKey(Key::Backspace);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(FieldShows(s, 17, 53, 10, "4097"), CursorAt(s, 17, 57)); }));
    s.SendKey(Key::Enter);
    values[4] = "      4097";
    rows = ResourceRows(values);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 11, "4097", 7));

    // Enter on an untouched field sends nothing.
    before = c.JournalSize();
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, 5, 53, 10, ""); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(PageShows(s, rows, p, 0, LAN_ENGLISH), CursorHidden(s), InfoClear(s));
    }));
    EXPECT_EQ(c.JournalSize(), before);
}

}  // namespace
