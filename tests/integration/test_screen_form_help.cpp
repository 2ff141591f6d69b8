// The help pager at the smallest terminal, 66x18, in each language: turning
// the pages of the network-interface help with Page Down shows the lines of
// the text once and in order. Widths are counted in bytes, so a Chinese
// character at a line's end may be split: there the order is checked on the
// text's ASCII shortcut-key entries.
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
    int pages = 0;
    for (int i = 0; i < 20; ++i) {
        s.WaitSettled();
        std::string next = AreaText(s);
        if (i > 0 && next == page)
            break;
        page = next;
        shown += page;
        ++pages;
        s.SendKey(Key::PageDown);
    }
    if (lang == LAN_ENGLISH) {
        EXPECT_EQ(shown, want);
    }
    // The shortcut-key entries, each once and in order, over several pages.
    size_t at = 0;
    for (const char* entry : {"(1)F2", "(2)F3", "(3)F4", "(4)F5"}) {
        size_t found = shown.find(entry, at);
        ASSERT_NE(found, std::string::npos) << entry << " not in order in\n" << shown;
        EXPECT_EQ(shown.find(entry, found + 1), std::string::npos) << entry << " twice";
        at = found + 1;
    }
    EXPECT_GE(pages, 2) << s.Dump();
}

INSTANTIATE_TEST_SUITE_P(Languages, ScreenHelp,
                         ::testing::Values(LAN_ENGLISH, LAN_CHINESE_GB2312, LAN_CHINESE_UTF8));

}  // namespace
