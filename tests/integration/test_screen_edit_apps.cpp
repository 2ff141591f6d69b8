// The FTP server and Samba pages in a terminal, against a real norvaned: the
// yes/no switches (commands 40 to 42, 44 to 46, 49 and 50 with "1" or "0"),
// the restore-default rows that always show "[No]" and send their command
// with an empty payload only for "[Yes]" (47, 51), and the paths typed in a
// field that scrolls (43, 48; Enter on an untouched field sends nothing).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_screen_edit_util.h"

namespace {

using namespace nvedit;

const std::string kYes = "[Yes]";
const std::string kNo = "[No]";

// The FTP page's values in row order: anonymous login, upload, mkdir, root
// path, local users, write, running (the restore row always shows "[No]").
std::vector<PageRow> FtpRows(const std::vector<std::string>& v, int lang = LAN_ENGLISH) {
    const char* const* labels[] = {pcStrAnonymEnable,   pcStrAnonymUpload,   pcStrAnonymMkdir,
                                   pcStrAnonymRootPath, pcStrLocalUsrEnable, pcStrWriteEnable,
                                   pcStrFtpStart,       pcStrFtpDefault};
    std::vector<PageRow> rows;
    for (size_t i = 0; i < 8; ++i)
        rows.push_back({Raw(labels[i], lang), i < 7 ? v[i] : Raw(pcStrNo, lang)});
    return rows;
}

// Chooses the option at index to of a two-option bar whose current option
// is at index from, with Enter.
void Choose(ScreenSession& s, int from, int to) {
    if (to < from)
        s.SendKey(Key::Up);
    else if (to > from)
        s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
}

TEST(ScreenEditApps, FtpSwitchesSendOneOrZeroAndRestoreDefaultSendsOnlyForYes) {
    EditConsole c;
    ASSERT_TRUE(c.Start());  // demo: anonymous off, local users, write and the server on
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kFtpLeaf, "Anonym Enable:"));
    std::vector<std::string> v = {kNo, kNo, kNo, "/srv/ftp", kYes, kYes, kYes};
    std::vector<PageRow> rows = FtpRows(v);
    PageLayout p = LayOut(rows);
    ASSERT_EQ(p.iLabelX, 16);
    ASSERT_EQ(p.iValueX, 54);
    ASSERT_EQ(p.viRow, (std::vector<int>{4, 6, 8, 10, 12, 14, 16, 18}));
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));

    // Each switch in turn to the other value; the page comes back with the
    // focus on its first row after each.
    struct Switch {
        int iRow;
        int iCmd;
    };
    const Switch switches[] = {{0, 40}, {1, 41}, {2, 42}, {4, 44}, {5, 45}, {6, 46}};
    for (const Switch& sw : switches) {
        SCOPED_TRACE("row " + std::to_string(sw.iRow));
        size_t before = c.JournalSize();
        bool on = v[sw.iRow] == kYes;
        s.SendKey(Key::Down, sw.iRow);
        ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, sw.iRow, LAN_ENGLISH); }));
        s.SendKey(Key::Enter);
        ASSERT_TRUE(Eventually(s, [&] {
            return ChooseShows(s, {kYes, kNo}, on ? 0 : 1, LAN_ENGLISH);
        }));
        Choose(s, on ? 0 : 1, on ? 1 : 0);
        v[sw.iRow] = on ? kNo : kYes;
        rows = FtpRows(v);
        ASSERT_TRUE(Eventually(
            s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
        EXPECT_TRUE(SetThenCheck(c.Journal(), before, sw.iCmd, on ? "0" : "1", 7));
    }

    // "Ftp Restore Default:" shows "[No]", preselected: Enter sends nothing
    // and leaves the information line empty.
    size_t before = c.JournalSize();
    s.SendKey(Key::Down, 7);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 7, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kYes, kNo}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(PageShows(s, rows, p, 7, LAN_ENGLISH), InfoClear(s)); }));
    EXPECT_EQ(c.JournalSize(), before);

    // "[Yes]" sends command 47 with no payload. The agent sets the options
    // back (the run flag is not one of them, the root path is emptied) and
    // the row still shows "[No]".
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kYes, kNo}, 1, LAN_ENGLISH); }));
    Choose(s, 1, 0);
    v = {kNo, kNo, kNo, "", kNo, kNo, v[6]};
    rows = FtpRows(v);
    PageLayout after = LayOut(rows);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, after, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 47, "", 7));
}

TEST(ScreenEditApps, FtpRootPathIsTypedInAScrollingField) {
    EditConsole c;
    ASSERT_TRUE(c.Start());
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kFtpLeaf, "Anonym Root Path:"));
    std::vector<std::string> v = {kNo, kNo, kNo, "/srv/ftp", kYes, kYes, kYes};
    std::vector<PageRow> rows = FtpRows(v);
    PageLayout p = LayOut(rows);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    size_t atStart = c.JournalSize();

    // The field is the column's width, 8 ("/srv/ftp"); Enter on it untouched
    // sends nothing.
    const int y = p.viRow[3], x = p.iValueX, w = 8;
    s.SendKey(Key::Down, 3);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, y, x, w, ""); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(PageShows(s, rows, p, 3, LAN_ENGLISH), InfoClear(s), CursorHidden(s));
    }));
    EXPECT_EQ(c.JournalSize(), atStart);

    // Longer text scrolls: the field shows its last 8 characters. Backspace
    // on a scrolled text shows the last 8 again, with the cursor one column
    // right of the field.
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, y, x, w, ""); }));
    s.SendText("/srv/ft");
    ASSERT_TRUE(Eventually(
        s, [&] { return And(FieldShows(s, y, x, w, "/srv/ft"), CursorAt(s, y, x + 7)); }));
    s.SendText("p/pub/incomingX");
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, y, x, w, "ncomingX"); }));
    s.SendKey(Key::Backspace);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(FieldShows(s, y, x, w, "incoming"), CursorAt(s, y, x + w)); }));
    s.SendKey(Key::Enter);
    const std::string path = "/srv/ftp/pub/incoming";
    v[3] = path;
    rows = FtpRows(v);
    PageLayout after = LayOut(rows);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, after, 0, LAN_ENGLISH),
                   CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 43, path, 7));

    // The field is now as wide as the new path. A relative path is the
    // agent's to refuse; the page keeps its value and its focus.
    size_t before = c.JournalSize();
    const int w2 = static_cast<int>(path.size());
    s.SendKey(Key::Down, 3);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, y, after.iValueX, w2, ""); }));
    s.SendText("pub");
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s,
                             "The value is not valid. The FTP anonymous root must be an "
                             "absolute path (starting with /)."),
                   PageShows(s, rows, after, 3, LAN_ENGLISH), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 43, "pub", 2));
}

std::vector<PageRow> SambaRows(const std::string& path, const std::string& write,
                               const std::string& run) {
    return {{Raw(pcStrShDirPath, LAN_ENGLISH), path},
            {Raw(pcStrShWrEn, LAN_ENGLISH), write},
            {Raw(pcStrSambaStart, LAN_ENGLISH), run},
            {Raw(pcStrSambaDefault, LAN_ENGLISH), kNo}};
}

TEST(ScreenEditApps, SambaPathSwitchesAndRestoreDefault) {
    EditConsole c;
    ASSERT_TRUE(c.Start());  // demo: "/srv/share", not writable, not running
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kSambaLeaf, "Share Directory Path:"));
    std::vector<PageRow> rows = SambaRows("/srv/share", kNo, kNo);
    PageLayout p = LayOut(rows);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, LAN_ENGLISH); }));
    size_t atStart = c.JournalSize();

    // The path: Enter untouched sends nothing; a typed path is command 48.
    const int y = p.viRow[0], x = p.iValueX, w = 10;
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, y, x, w, ""); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(PageShows(s, rows, p, 0, LAN_ENGLISH), InfoClear(s), CursorHidden(s));
    }));
    EXPECT_EQ(c.JournalSize(), atStart);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, y, x, w, ""); }));
    s.SendText("/srv/samba/public");
    ASSERT_TRUE(Eventually(s, [&] { return FieldShows(s, y, x, w, "mba/public"); }));
    s.SendKey(Key::Enter);
    rows = SambaRows("/srv/samba/public", kNo, kNo);
    p = LayOut(rows);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 48, "/srv/samba/public", 7));

    // The two switches: 49 and 50 with "1".
    size_t before = c.JournalSize();
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kYes, kNo}, 1, LAN_ENGLISH); }));
    Choose(s, 1, 0);
    rows = SambaRows("/srv/samba/public", kYes, kNo);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 49, "1", 7));
    before = c.JournalSize();
    s.SendKey(Key::Down, 2);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kYes, kNo}, 1, LAN_ENGLISH); }));
    Choose(s, 1, 0);
    rows = SambaRows("/srv/samba/public", kYes, kYes);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 50, "1", 7));

    // Restore default: "[No]" sends nothing, "[Yes]" sends 51 with no
    // payload; the share goes back to no path and not writable, the server
    // keeps running.
    before = c.JournalSize();
    s.SendKey(Key::Down, 3);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kYes, kNo}, 1, LAN_ENGLISH); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(
        Eventually(s, [&] { return And(PageShows(s, rows, p, 3, LAN_ENGLISH), InfoClear(s)); }));
    EXPECT_EQ(c.JournalSize(), before);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {kYes, kNo}, 1, LAN_ENGLISH); }));
    Choose(s, 1, 0);
    rows = SambaRows("", kNo, kYes);
    p = LayOut(rows);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, LAN_ENGLISH)); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 51, "", 7));
}

}  // namespace
