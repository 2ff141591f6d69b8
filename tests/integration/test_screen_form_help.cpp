// The help pager at the smallest terminal, 66x18, in each language: turning
// the pages of the network-interface help with Page Down shows every line of
// the text once and in order, and no line ends inside a character, in UTF-8
// and in GB2312 alike.
#include <gtest/gtest.h>

#include "screen_charset.h"
#include "test_screen_form_util.h"

namespace {

using namespace nvform;

constexpr int kSmallRows = 18;
constexpr int kSmallCols = 66;
// The text area of the help window: inside the box on rows 3 to 14.
constexpr int kAreaTop = 4;
constexpr int kAreaLines = kSmallRows - 8;
constexpr int kAreaWidth = kSmallCols - 2;

// The text without blanks, tabs and line feeds, as UTF-8: what the pages
// must show, in order, whatever the line breaks.
std::string Squeezed(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c != ' ' && c != '\t' && c != '\n')
            out += c;
    }
    return out;
}

// One page's text area, its lines without blanks, one after the other.
std::string AreaText(const ScreenSession& s) {
    std::string out;
    for (int r = kAreaTop; r < kAreaTop + kAreaLines; ++r)
        out += Squeezed(s.Text(r, 1, kAreaWidth));
    return out;
}

class ScreenHelp : public ::testing::TestWithParam<int> {};

TEST_P(ScreenHelp, NetInterfaceHelpPagesFollowEachOtherAt66x18) {
    int lang = GetParam();
    FormConsole c;
    ASSERT_TRUE(c.Start("", lang, kSmallRows, kSmallCols));
    ASSERT_TRUE(c.Open(kNetIfLeaf, PROMPT_NET_INTERFACE));
    ScreenSession& s = c.S();
    std::string text = pcStrHelpNetInterface[lang];
    if (lang == LAN_CHINESE_GB2312)
        text = nvtest::Gb2312ToUtf8(text);
    std::string want = Squeezed(text);
    s.SendKey(Key::F12);
    ASSERT_TRUE(s.WaitForTextAt(kAreaTop - 1, 0, "┌")) << s.Dump();
    std::string shown, page;
    for (int i = 0; i < 20; ++i) {
        s.WaitSettled();
        std::string next = AreaText(s);
        if (i > 0 && next == page)
            break;
        page = next;
        shown += page;
        s.SendKey(Key::PageDown);
    }
    EXPECT_EQ(shown, want);
    EXPECT_EQ(shown.find("\xef\xbf\xbd"), std::string::npos) << "a character cut in half";
}

INSTANTIATE_TEST_SUITE_P(Languages, ScreenHelp,
                         ::testing::Values(LAN_ENGLISH, LAN_CHINESE_GB2312, LAN_CHINESE_UTF8));

}  // namespace
