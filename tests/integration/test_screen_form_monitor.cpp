// The Disk Volume and File Backup pages in a terminal against a real
// norvaned: the agent's lines, the add forms sending their fields (an
// untouched one four dashes), the clear form answered "[No]" (nothing sent,
// the information line left clear) and "[Yes]" (no payload, the page
// rebuilt empty), adding the first entry to an empty list, the switch whose
// flag is neither "0" nor "1" sending three blanks, and the delete form.
#include <gtest/gtest.h>

#include "test_screen_form_util.h"

namespace {

using namespace nvform;

const std::string k4 = "    ";

std::vector<FormRow> DiskAddForm(const std::vector<std::string>& v) {
    return {{"Partition", v[0], 20, ""},
            {"Ceil(MBytes)", v[1], 10, ""},
            {"Floor(MBytes)", v[2], 10, ""},
            {"Interval(MBytes)", v[3], 10, ""}};
}

// Enter on the focused field, the text, Enter, then Down.
void Fill(ScreenSession& s, const std::vector<std::string>& values) {
    for (const std::string& v : values) {
        s.SendKey(Key::Enter);
        s.SendText(v);
        s.SendKey(Key::Enter);
        s.SendKey(Key::Down);
    }
}

TEST(FormMonitor, UntouchedDiskAddSendsFourDashes) {
    FormConsole c;
    ASSERT_TRUE(c.Start());
    ScreenSession& s = c.S();
    tVecStr lines = c.LoadState()->objCif.vsDV;
    ASSERT_TRUE(c.Open(kDiskLeaf, PROMPT_SCKEY_TOGGLE));
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, lines, 0, PROMPT_SCKEY_TOGGLE); }));
    size_t from = c.JournalSize();
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, DiskAddForm({k4, k4, k4, k4}), 0); }));
    s.SendKey(Key::F9);
    int result = 0;
    ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, 23, "- - - -", &result); }));
    EXPECT_NE(result, 7);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoStartsWith(s, c.ResultText(result)),
                   ListPageShows(s, lines, 0, PROMPT_SCKEY_TOGGLE));
    }));
}

TEST(FormMonitor, ClearNoSendsNothingYesClearsAndTheFirstVolumeCanBeAdded) {
    FormConsole c;
    ASSERT_TRUE(c.Start());
    ScreenSession& s = c.S();
    tVecStr lines = c.LoadState()->objCif.vsDV;
    ASSERT_TRUE(c.Open(kDiskLeaf, PROMPT_SCKEY_TOGGLE));
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, lines, 0, PROMPT_SCKEY_TOGGLE); }));
    const std::string question = "Are you sure to clear the disk volume monit list?";
    size_t from = c.JournalSize();
    s.SendKey(Key::F4);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, {{question, "[No]", 0, ""}}, 0); }));
    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(ListPageShows(s, lines, 0, PROMPT_SCKEY_TOGGLE), InfoClear(s)); }));
    EXPECT_TRUE(c.SetsFrom(from).empty());

    // "[Yes]" from the choose bar: command 25 without payload, the page
    // rebuilt empty under its own prompt.
    s.SendKey(Key::F4);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, {{question, "[No]", 0, ""}}, 0); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return PromptShows(s, PROMPT_CHOOSE, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, {{question, "[Yes]", 0, ""}}, 0); }));
    s.SendKey(Key::F9);
    int result = 0;
    ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, 25, "", &result); }));
    ASSERT_EQ(result, 7);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(ListPageShows(s, {}, 0, PROMPT_SCKEY_TOGGLE),
                   InfoStartsWith(s, c.ResultText(7)));
    }));

    // The empty page's F2 adds the first volume; the rebuilt page shows the
    // agent's line for it with the focus on row 0.
    from = c.JournalSize();
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, DiskAddForm({k4, k4, k4, k4}), 0); }));
    Fill(s, {"/dev/vdb1", "1000", "100", "50"});
    ASSERT_TRUE(Eventually(s, [&] {
        return FormShows(s, DiskAddForm({"/dev/vdb1", "1000", "100", "50"}), 3);
    }));
    s.SendKey(Key::F9);
    ASSERT_TRUE(
        Eventually(s, [&] { return OneSet(c, from, 23, "/dev/vdb1 1000 100 50", &result); }));
    ASSERT_EQ(result, 7);
    tVecStr after = c.LoadState()->objCif.vsDV;
    ASSERT_EQ(after.size(), 1u);
    EXPECT_NE(after[0].find("/dev/vdb1"), std::string::npos);
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, after, 0, PROMPT_SCKEY_TOGGLE); }));
}

TEST(FormMonitor, SwitchWithAnUnknownFlagSendsThreeBlanks) {
    const struct {
        FormLeaf leaf;
        int cmd;
    } pages[] = {{kDiskLeaf, 26}, {kBakLeaf, 31}};
    for (const auto& p : pages) {
        FormConsole c;
        ASSERT_TRUE(c.Start(DemoStateWith({{"chDVMonitFlag", "x"}, {"chBakForSizeFlag", "x"}})));
        ScreenSession& s = c.S();
        ASSERT_EQ(c.LoadState()->objCif.chDVMonitFlag, 'x');
        ASSERT_TRUE(c.Open(p.leaf, PROMPT_SCKEY_TOGGLE));
        size_t from = c.JournalSize();
        s.SendKey(Key::F5);
        ASSERT_TRUE(Eventually(s, [&] {
            return FormShows(s, {{"Monitor Toggle:", "   ", 0, ""}}, 0);
        }));
        s.SendKey(Key::F9);
        int result = 0;
        ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, p.cmd, "   ", &result); }));
        ASSERT_TRUE(Eventually(s, [&] { return InfoStartsWith(s, c.ResultText(result)); }));
    }
}

TEST(FormMonitor, BackupAddAndDeleteRebuildThePage) {
    FormConsole c;
    // The agent's backup lines are 91 bytes long: a terminal wide enough.
    ASSERT_TRUE(c.Start("", LAN_ENGLISH, 24, 100));
    ScreenSession& s = c.S();
    tVecStr lines = c.LoadState()->objCif.vsBakForSize;
    ASSERT_EQ(lines.size(), 2u);
    ASSERT_TRUE(c.Open(kBakLeaf, PROMPT_SCKEY_TOGGLE));
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, lines, 0, PROMPT_SCKEY_TOGGLE); }));
    size_t from = c.JournalSize();
    s.SendKey(Key::F2);
    const std::vector<FormRow> blank = {{"File", k4, 20, ""},
                                        {"Backup Directory", k4, 20, ""},
                                        {"Backup Size(KBytes)", k4, 10, ""}};
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, blank, 0); }));
    Fill(s, {"/etc/hosts", "/var/bak", "64"});
    s.SendKey(Key::F9);
    int result = 0;
    ASSERT_TRUE(
        Eventually(s, [&] { return OneSet(c, from, 28, "/etc/hosts /var/bak 64", &result); }));
    ASSERT_EQ(result, 7);
    tVecStr added = c.LoadState()->objCif.vsBakForSize;
    ASSERT_EQ(added.size(), 3u);
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, added, 0, PROMPT_SCKEY_TOGGLE); }));

    from = c.JournalSize();
    s.SendKey(Key::F3);
    const std::string del = "Please input the index you want to delete:";
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, {{del, k4, 5, ""}}, 0); }));
    Fill(s, {"1"});
    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, 29, "1", &result); }));
    ASSERT_EQ(result, 7);
    tVecStr left = c.LoadState()->objCif.vsBakForSize;
    ASSERT_EQ(left.size(), 2u);
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, left, 0, PROMPT_SCKEY_TOGGLE); }));
}

}  // namespace

namespace {

using namespace nvform;

// A partition of 300 bytes scrolls in its field; the payload is cut to the
// form encoding's bound.
TEST(FormMonitorLong, ALongFieldIsCutToTheBound) {
    FormConsole c;
    ASSERT_TRUE(c.Start());
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kDiskLeaf, PROMPT_SCKEY_TOGGLE));
    size_t from = c.JournalSize();
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, DiskAddForm({k4, k4, k4, k4}), 0); }));
    s.SendKey(Key::Enter);
    s.SendText(std::string(300, 'a'));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(
        Eventually(s, [&] { return PromptShows(s, PROMPT_CONTENT_NEW_LEVEL, LAN_ENGLISH); }));
    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, 23, std::string(255, 'a')); }));
}

}  // namespace
