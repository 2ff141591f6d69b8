// The detail catalogue's lookup: matching a full sentence with its parts,
// re-inserting them in any order, translating parts that are sentences,
// fitting to the information line without cutting a character, GB2312.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "agent/details/detail_lookup.h"

namespace {

using nvagent::DetailLang;
using nvagent::DetailRow;

TEST(DetailLookup, PatternPartsAreMatchedInOrder) {
    std::vector<std::string> parts;
    ASSERT_TRUE(nvagent::MatchDetailPattern("From {} to {}.", "From a.b to c. d.", parts));
    EXPECT_EQ(parts, (std::vector<std::string>{"a.b", "c. d"}));
    EXPECT_TRUE(nvagent::MatchDetailPattern("{} is {}", " is x", parts));
    EXPECT_EQ(parts, (std::vector<std::string>{"", "x"}));
    EXPECT_FALSE(nvagent::MatchDetailPattern("From {} to {}.", "From a to b", parts));
    EXPECT_FALSE(nvagent::MatchDetailPattern("Done.", "Done. ", parts));
    EXPECT_TRUE(nvagent::MatchDetailPattern("Done.", "Done.", parts));
    EXPECT_TRUE(parts.empty());
}

TEST(DetailLookup, PartsAreReinsertedInAnyOrder) {
    DetailRow row{"From {} to {}.", "{2} <- {1}", "从 {1} 到 {2}。"};
    std::vector<std::string> parts = {"a", "b"};
    EXPECT_EQ(nvagent::ExpandDetailRow(row, parts, DetailLang::kEnglish), "b <- a");
    EXPECT_EQ(nvagent::ExpandDetailRow(row, parts, DetailLang::kChineseUtf8), "从 a 到 b。");
    EXPECT_EQ(nvagent::ExpandDetailRow(row, parts, DetailLang::kChineseGb2312),
              "\xb4\xd3 a \xb5\xbd b\xa1\xa3");
    DetailRow same{"Is {} on?", nullptr, "{1} 开着吗?"};
    EXPECT_EQ(nvagent::ExpandDetailRow(same, {"x"}, DetailLang::kEnglish), "Is x on?");
}

TEST(DetailLookup, TheServersOwnTextIsTranslated) {
    EXPECT_EQ(nvagent::LocaliseDetail("Unknown command 99.", 0), "Unknown command 99.");
    EXPECT_EQ(nvagent::LocaliseDetail("Unknown command 99.", 2), "未知命令 99。");
    std::string gb = nvagent::LocaliseDetail("Unknown command 99.", 1);
    std::string expect;
    ASSERT_TRUE(nvagent::Utf8ToGb2312("未知命令 99。", expect, true));
    EXPECT_EQ(gb, expect);
    EXPECT_EQ(nvagent::LocaliseDetail("", 2), "");
}

// A text with no row is sent as it is, fitted.
TEST(DetailLookup, ATextWithoutARowIsFitted) {
    EXPECT_EQ(nvagent::LocaliseDetail("No such row here.", 2), "No such row here.");
    std::string longText(200, 'x');
    std::string out = nvagent::LocaliseDetail(longText, 0);
    EXPECT_EQ(out.size(), nvagent::kDetailWidth);
    EXPECT_EQ(out.substr(out.size() - 3), "...");
}

// Long parts are shortened, the longest first, all to the same length,
// at character boundaries of the encoding sent.
TEST(DetailLookup, LongPartsAreShortenedAtCharacterBoundaries) {
    DetailRow row{"{} and {}", "{1} and {2}", "{1} 和 {2}"};
    std::string shortPart = "short";
    std::string longPart;
    for (int i = 0; i < 60; ++i)
        longPart += "汉";
    for (DetailLang lang :
         {DetailLang::kEnglish, DetailLang::kChineseUtf8, DetailLang::kChineseGb2312}) {
        std::string out = nvagent::ExpandDetailRow(row, {shortPart, longPart}, lang);
        EXPECT_LE(out.size(), nvagent::kDetailWidth);
        EXPECT_EQ(out.substr(0, 5), "short") << static_cast<int>(lang);
        EXPECT_EQ(out.substr(out.size() - 3), "...");
        if (lang == DetailLang::kChineseGb2312) {
            // Pairs from the cut part's start: "汉" is 0xBA 0xBA.
            size_t at = out.find("\xba\xba");
            ASSERT_NE(at, std::string::npos);
            EXPECT_EQ((out.size() - 3 - at) % 2, 0u);
        } else {
            size_t at = out.find("汉");
            ASSERT_NE(at, std::string::npos);
            EXPECT_EQ((out.size() - 3 - at) % 3, 0u);
        }
    }
    // Two long parts share what is left.
    std::string a(100, 'a');
    std::string b(100, 'b');
    std::string out = nvagent::ExpandDetailRow(row, {a, b}, DetailLang::kEnglish);
    EXPECT_GE(out.size(), nvagent::kDetailWidth - 1);
    EXPECT_LE(out.size(), nvagent::kDetailWidth);
    EXPECT_EQ(out.find(" and "), (nvagent::kDetailWidth - 5) / 2);
    EXPECT_EQ(out.rfind("..."), out.size() - 3);
}

TEST(DetailLookup, CutsNeverSplitACharacter) {
    std::string utf8 = "a汉字";
    EXPECT_EQ(nvagent::CutAtBoundary(utf8, 3, false), 1u);
    EXPECT_EQ(nvagent::CutAtBoundary(utf8, 4, false), 4u);
    std::string gb = "a\xba\xba\xd7\xd6";
    EXPECT_EQ(nvagent::CutAtBoundary(gb, 2, true), 1u);
    EXPECT_EQ(nvagent::CutAtBoundary(gb, 4, true), 3u);
    EXPECT_EQ(nvagent::CutAtBoundary(gb, 9, true), 5u);
}

TEST(DetailLookup, Gb2312ReplacesWhatItCannotHold) {
    std::string out;
    EXPECT_TRUE(
        nvagent::Utf8ToGb2312("a\xf0\x9f\x98\x80"
                              "b\xff"
                              "c",
                              out));
    EXPECT_EQ(out, "a?b?c");
    EXPECT_FALSE(nvagent::Utf8ToGb2312("\xf0\x9f\x98\x80", out, true));
    // Control characters of a tool's message do not break the one line.
    EXPECT_EQ(nvagent::LocaliseDetail("line one\nline two", 0), "line one line two");
}

}  // namespace
