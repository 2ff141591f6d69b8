// The console's texts in each language the agent can choose (English,
// Chinese in GB2312, Chinese in UTF-8): the menu labels, the menu prompt,
// the product name before the version, the welcome text and the exit
// question with its answers are the catalogue's, placed by byte lengths as
// the console counts them. GB2312 texts are checked on the bytes the console
// writes and on the decoded screen: drawn two cells per character, which
// only happens when the console runs in the GB2312 locale.
#include <string>
#include <vector>

#include "test_screen_util.h"

namespace nvscreentest {
namespace {

const char* const kLangNames[] = {"English", "Gb2312", "Utf8"};

class ScreenLanguage : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override {
        ConsoleOptions o;
        o.iLangCode = GetParam();
        ASSERT_TRUE(StartConsole(m_run, o));
    }
    int Lang() const { return GetParam(); }
    ScreenSession& S() { return m_run.Screen(); }
    // A catalogue entry as the screen shows it.
    std::string T(const char* const* entry) const { return OnScreen(entry, GetParam()); }
    // The same as the console writes it.
    std::string Bytes(const char* const* entry) const { return entry[GetParam()]; }

    ConsoleRun m_run;
};

// The menu prompt from column 0 of row 21, continued on row 22.
TEST_P(ScreenLanguage, MenuPrompt) {
    std::vector<std::string> rows = WrapRows(T(pcStrPromptMenu), 80);
    ASSERT_LE(rows.size(), 2u);
    ASSERT_TRUE(S().WaitForTextAt(21, 0, rows[0])) << S().Dump();
    EXPECT_EQ(S().Row(21), rows[0]);
    EXPECT_EQ(S().Row(22), rows.size() > 1 ? rows[1] : "");
    EXPECT_TRUE(SpanPair(S(), 21, 0, 80, 3)) << S().DumpColors();
    EXPECT_TRUE(SpanPair(S(), 22, 0, 80, 3)) << S().DumpColors();
}

// The product name and the version start at COLS minus their length in
// bytes: single-byte and GB2312 text ends in the last column, UTF-8 Chinese
// short of it.
TEST_P(ScreenLanguage, ProductNameAndVersion) {
    std::string bytes = Bytes(pcStrSwName) + "2.4.1";
    std::string shown = T(pcStrSwName) + "2.4.1";
    int start = 80 - static_cast<int>(bytes.size());
    ASSERT_TRUE(S().WaitForTextAt(0, start, shown)) << S().Dump();
    EXPECT_EQ(S().Row(0), std::string(static_cast<size_t>(start), ' ') + shown);
    int end = start + DisplayWidth(shown) - 1;
    EXPECT_EQ(end, Lang() == LAN_CHINESE_UTF8 ? 74 : 79);
    if (Lang() == LAN_ENGLISH)
        EXPECT_EQ(shown, "norvane for linux 2.4.1");
    else
        EXPECT_EQ(T(pcStrSwName), "服务器诺文linux ");
    EXPECT_TRUE(SpanPair(S(), 0, 0, 80, 1)) << S().DumpColors();
}

// The welcome text's lines where its rule (line breaks, widest measured
// line, both in bytes) puts them; the first line is the catalogue's.
TEST_P(ScreenLanguage, WelcomeText) {
    std::string bytes = Bytes(pcStrWelcomeInfo);
    WelcomePlace p = PlaceWelcome(bytes, 24, 80);
    std::vector<std::string> lines = Lines(T(pcStrWelcomeInfo));
    ASSERT_TRUE(S().WaitForText(3 + p.iTop + static_cast<int>(lines.size()) - 1, lines.back()))
        << S().Dump();
    for (int r = 3; r <= 20; ++r) {
        int i = r - 3 - p.iTop;
        std::string want;
        if (i >= 0 && i < static_cast<int>(lines.size()) && !lines[i].empty())
            want = std::string(static_cast<size_t>(p.iLeft), ' ') + lines[i];
        EXPECT_EQ(S().Row(r), want) << "row " << r << "\n" << S().Dump();
    }
    if (Lang() == LAN_ENGLISH) {
        EXPECT_EQ(lines[0], "Welcome to use server norvane for linux v1.0.");
    } else {
        EXPECT_EQ(lines[0], "欢迎使用服务器诺文linux 1.0版。");
        EXPECT_EQ(p.iRows, 5);
        // The widest line is 19 characters: 38 bytes in GB2312, 57 in UTF-8.
        EXPECT_EQ(p.iLeft, Lang() == LAN_CHINESE_GB2312 ? 21 : 11);
    }
    for (int r = 3; r <= 20; ++r)
        EXPECT_TRUE(SpanPair(S(), r, 0, 80, 2)) << S().DumpColors();
}

// The first drop-down and the path row carry the catalogue's labels.
TEST_P(ScreenLanguage, MenuLabels) {
    std::vector<std::string> top = {T(pcStrSysConfig), T(pcStrSysOptimize), T(pcStrSysMonit),
                                    T(pcStrAppConfig)};
    ASSERT_TRUE(Eventually(S(), [&] { return PathShows(S(), 0, top[0], true, true); }));
    S().SendKey(Key::Down);
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = DropDownShows(S(), 0, top, 1);
        return a ? PathShows(S(), 0, top[1], true, true) : a;
    }));
    S().SendKey(Key::Right);
    std::vector<std::string> opt = {T(pcStrNetOptimize), T(pcStrResOptimize)};
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = DropDownShows(S(), 1, opt, 0);
        return a ? PathShows(S(), 1, opt[0], true, false) : a;
    }));
    if (Lang() != LAN_ENGLISH) {
        EXPECT_EQ(top[0], "系统配置");
        EXPECT_EQ(opt[1], "资源");
    }
}

// The exit question, its answers and their places: the answers are placed
// by the byte lengths of "[Yes]" and "[No]" in the language ("[是]" and
// "[否]": 4 bytes each in GB2312, 5 in UTF-8).
TEST_P(ScreenLanguage, ExitQuestion) {
    S().SendKey(Key::Esc);
    const std::string question = T(pcStrExitEnquiry), yes = T(pcStrYes), no = T(pcStrNo);
    const int yesLen = static_cast<int>(Bytes(pcStrYes).size());
    const int noLen = static_cast<int>(Bytes(pcStrNo).size());
    const int gap = (46 - yesLen - noLen) / 3;
    const int yesCol = 16 + gap, noCol = 16 + gap + yesLen + gap;
    if (Lang() != LAN_ENGLISH) {
        EXPECT_EQ(question, "是否确认退出?");
        EXPECT_EQ(yes, "[是]");
        EXPECT_EQ(no, "[否]");
    }
    ASSERT_TRUE(S().WaitForTextAt(11, noCol, no)) << S().Dump();
    EXPECT_EQ(S().Text(11, yesCol, DisplayWidth(yes)), yes) << S().Dump();
    EXPECT_TRUE(S().Cell(11, noCol).bReverse);
    EXPECT_FALSE(S().Cell(11, yesCol).bReverse);
    // The question on line 1 of the box, from its column 1.
    EXPECT_TRUE(S().WaitForTextAt(10, 17, question, 2000)) << S().Dump();
    EXPECT_TRUE(S().RawContains(Bytes(pcStrExitEnquiry)))
        << "the question's bytes were never written";
    S().SendKey(Key::Left);
    ASSERT_TRUE(S().WaitUntil([&] { return S().Cell(11, yesCol).bReverse; })) << S().DumpColors();
    S().SendKey(Key::Enter);
    EXPECT_EQ(S().WaitExit(), 0);
    EXPECT_NE(m_run.ReadConsoleLog().find("]enquiry choose 'yes'\n"), std::string::npos);
}

// The console writes its texts in the language's own encoding, and the
// terminal shows each Chinese character in two cells: GB2312 bytes (never
// their UTF-8 form) with language 1, UTF-8 with language 2.
TEST_P(ScreenLanguage, TextsAreWrittenInTheLanguagesEncoding) {
    ASSERT_TRUE(S().WaitForTextAt(1, 1, T(pcStrSysConfig))) << S().Dump();
    for (const char* const* entry : {pcStrSysConfig, pcStrSwName})
        EXPECT_TRUE(S().RawContains(Bytes(entry))) << T(entry);
    if (Lang() == LAN_ENGLISH)
        return;
    std::string utf8 = OnScreen(pcStrSysConfig, LAN_CHINESE_UTF8);
    std::string gb = pcStrSysConfig[LAN_CHINESE_GB2312];
    EXPECT_EQ(nvtest::Utf8ToGb2312(utf8), gb);
    if (Lang() == LAN_CHINESE_GB2312)
        EXPECT_FALSE(S().RawContains(utf8));
    else
        EXPECT_FALSE(S().RawContains(gb));
    const char* const chars[] = {"系", "统", "配", "置"};
    for (int i = 0; i < 4; ++i) {
        nvtest::ScreenCell left = S().Cell(1, 1 + 2 * i);
        nvtest::ScreenCell right = S().Cell(1, 2 + 2 * i);
        EXPECT_EQ(left.sCh, chars[i]);
        EXPECT_EQ(left.iWidth, 2);
        EXPECT_EQ(right.iWidth, 0);
        EXPECT_TRUE(left.bReverse && left.bBold);
    }
    EXPECT_EQ(S().Text(1, 9, 14), "            ->");
}

INSTANTIATE_TEST_SUITE_P(Languages, ScreenLanguage, ::testing::Values(0, 1, 2),
                         [](const ::testing::TestParamInfo<int>& info) {
                             return std::string(kLangNames[info.param]);
                         });

}  // namespace
}  // namespace nvscreentest
