// The Network and FTP pages in Chinese, GB2312 (language code 1) and UTF-8
// (2), in a terminal against a real norvaned: labels and choice words of the
// catalogue, placed by their byte widths; the choose bar offers the Chinese
// words and what is chosen is matched in that language, so the commands
// still carry "1" or "0" (and nothing, or an empty payload, for the restore
// row). In GB2312 the words are looked for in the raw output bytes too. The
// agent's reason for a refusal comes in the same language.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_screen_edit_util.h"

namespace {

using namespace nvedit;

class ScreenEditLang : public ::testing::TestWithParam<int> {
protected:
    int Lang() const { return GetParam(); }
    std::string W(const char* const* entry) const { return Raw(entry, Lang()); }
    // The bytes of a catalogue text are in the raw output exactly as the
    // catalogue holds them, and (for GB2312) not in UTF-8.
    AssertionResult RawHas(const ScreenSession& s, const char* const* entry) const {
        std::string bytes = W(entry);
        if (!s.RawContains(bytes))
            return AssertionFailure() << "the raw output lacks the bytes " << Hex(bytes);
        if (Lang() == LAN_CHINESE_GB2312 && s.RawContains(nvtest::Gb2312ToUtf8(bytes)))
            return AssertionFailure() << "the raw output holds UTF-8 text in GB2312 mode";
        return AssertionSuccess();
    }
};

TEST_P(ScreenEditLang, NetworkSwitchesInChinese) {
    EditConsole c;
    ASSERT_TRUE(c.Start("", Lang()));  // demo: ICMP "0", SYN cookies "1", reuse "0"
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kNetworkLeaf, W(pcStrPingConfig)));
    const std::string open = W(pcStrOpen), close = W(pcStrClose);
    auto rowsOf = [&](const std::string& a, const std::string& b, const std::string& d) {
        return std::vector<PageRow>{
            {W(pcStrPingConfig), a}, {W(pcStrTcpSynConfig), b}, {W(pcStrTcpWaitTimeReuse), d}};
    };
    std::vector<PageRow> rows = rowsOf(close, open, close);
    PageLayout p = LayOut(rows);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, Lang()); }));
    EXPECT_TRUE(RawHas(s, pcStrPingConfig));
    EXPECT_TRUE(RawHas(s, pcStrClose));
    size_t atStart = c.JournalSize();

    // The current word preselected; the same word sends nothing.
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {open, close}, 1, Lang()); }));
    EXPECT_TRUE(RawHas(s, pcStrOpen));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return And(PageShows(s, rows, p, 0, Lang()), InfoClear(s)); }));
    EXPECT_EQ(c.JournalSize(), atStart);

    // The other word sends "1" for ICMP echo, then "0" for SYN cookies.
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {open, close}, 1, Lang()); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    rows = rowsOf(open, open, close);
    ASSERT_TRUE(Eventually(s, [&] {
        return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, Lang()), CursorHidden(s));
    }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 4, "1", 7));
    size_t before = c.JournalSize();
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {open, close}, 0, Lang()); }));
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    rows = rowsOf(open, close, close);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, Lang())); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 5, "0", 7));
}

TEST_P(ScreenEditLang, FtpPageInChinese) {
    EditConsole c;
    ASSERT_TRUE(c.Start("", Lang()));  // demo: anonymous off, local users, write, server on
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kFtpLeaf, W(pcStrAnonymEnable)));
    const std::string yes = W(pcStrYes), no = W(pcStrNo);
    const char* const* labels[] = {pcStrAnonymEnable,   pcStrAnonymUpload,   pcStrAnonymMkdir,
                                   pcStrAnonymRootPath, pcStrLocalUsrEnable, pcStrWriteEnable,
                                   pcStrFtpStart,       pcStrFtpDefault};
    auto rowsOf = [&](const std::vector<std::string>& v) {
        std::vector<PageRow> rows;
        for (size_t i = 0; i < 8; ++i)
            rows.push_back({W(labels[i]), i < 7 ? v[i] : no});
        return rows;
    };
    std::vector<std::string> v = {no, no, no, "/srv/ftp", yes, yes, yes};
    std::vector<PageRow> rows = rowsOf(v);
    PageLayout p = LayOut(rows);
    ASSERT_TRUE(Eventually(s, [&] { return PageShows(s, rows, p, 0, Lang()); }));
    EXPECT_TRUE(RawHas(s, pcStrAnonymMkdir));
    EXPECT_TRUE(RawHas(s, pcStrYes));
    EXPECT_TRUE(RawHas(s, pcStrNo));
    size_t atStart = c.JournalSize();

    // Anonymous login: the yes word sends "1".
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {yes, no}, 1, Lang()); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    v[0] = yes;
    rows = rowsOf(v);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, Lang())); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), atStart, 40, "1", 7));

    // Local users: the no word sends "0".
    size_t before = c.JournalSize();
    s.SendKey(Key::Down, 4);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {yes, no}, 0, Lang()); }));
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    v[4] = no;
    rows = rowsOf(v);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, p, 0, Lang())); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 44, "0", 7));

    // Restore default: the no word sends nothing, the yes word sends 47
    // without payload.
    before = c.JournalSize();
    s.SendKey(Key::Down, 7);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {yes, no}, 1, Lang()); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return And(PageShows(s, rows, p, 7, Lang()), InfoClear(s)); }));
    EXPECT_EQ(c.JournalSize(), before);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return ChooseShows(s, {yes, no}, 1, Lang()); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    v = {no, no, no, "", no, no, yes};
    rows = rowsOf(v);
    PageLayout after = LayOut(rows);
    ASSERT_TRUE(Eventually(
        s, [&] { return And(InfoShows(s, "Done."), PageShows(s, rows, after, 0, Lang())); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 47, "", 7));
}

INSTANTIATE_TEST_SUITE_P(Chinese, ScreenEditLang,
                         ::testing::Values(LAN_CHINESE_GB2312, LAN_CHINESE_UTF8),
                         [](const ::testing::TestParamInfo<int>& info) {
                             return info.param == LAN_CHINESE_GB2312 ? std::string("Gb2312")
                                                                     : std::string("Utf8");
                         });

}  // namespace

namespace {

using namespace nvedit;

// The agent's reason for a refusal is in the console's language and fits
// the information line: a thread maximum of 100 typed on the Resource page.
TEST_P(ScreenEditLang, TheAgentsReasonIsInTheConsolesLanguage) {
    EditConsole c;
    ASSERT_TRUE(c.Start("", Lang()));
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kResourceLeaf, W(pcStrShmmax)));
    size_t before = c.JournalSize();
    s.SendKey(Key::Down, 3);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return PromptShows(s, PROMPT_INPUT, Lang()); }));
    s.SendText("100");
    s.SendKey(Key::Enter);
    // The description before it is the command-client library's own text.
    ASSERT_TRUE(Eventually(
        s, [&] { return InfoShows(s, "The value is not valid. 最大线程数须大于 512。"); }));
    EXPECT_TRUE(SetThenCheck(c.Journal(), before, 10, "100", 2));
    EXPECT_EQ(c.Journal().back()["detail"], "The thread maximum must be above 512.");
}

}  // namespace
