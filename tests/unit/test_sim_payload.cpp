// The payload parsing helpers: tokens, list lines, digits, addresses, masks,
// paths and host names.
#include <gtest/gtest.h>

#include "agent/commands/payload_parse.h"

using namespace nvagent;

namespace {

TEST(PayloadParse, BlanksSplitEveryTime) {
    EXPECT_EQ(SplitBlanks("a b c"), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(SplitBlanks("a  b"), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(SplitBlanks(""), (std::vector<std::string>{""}));
    EXPECT_EQ(SplitBlanks("   ").size(), 4u);
}

TEST(PayloadParse, ListLinesAreTrimmedAndBlankOnesDropped) {
    EXPECT_EQ(SplitListLines("/a\n\n  /b \r\n/c"), (std::vector<std::string>{"/a", "/b", "/c"}));
    EXPECT_TRUE(SplitListLines("").empty());
    EXPECT_TRUE(SplitListLines("\n \n").empty());
}

TEST(PayloadParse, Digits) {
    unsigned long long v = 0;
    EXPECT_EQ(ParseDigits("0042", 100, v), DigitsResult::kOk);
    EXPECT_EQ(v, 42u);
    EXPECT_EQ(ParseDigits("101", 100, v), DigitsResult::kTooBig);
    EXPECT_EQ(ParseDigits("99999999999999999999999", 100, v), DigitsResult::kTooBig);
    EXPECT_EQ(ParseDigits("4294967295", 4294967295ULL, v), DigitsResult::kOk);
    EXPECT_EQ(ParseDigits("4294967296", 4294967295ULL, v), DigitsResult::kTooBig);
    EXPECT_EQ(ParseDigits("5", 0, v), DigitsResult::kTooBig);
    EXPECT_EQ(ParseDigits("", 100, v), DigitsResult::kNotDigits);
    EXPECT_EQ(ParseDigits("+1", 100, v), DigitsResult::kNotDigits);
    EXPECT_EQ(ParseDigits("1 ", 100, v), DigitsResult::kNotDigits);
}

TEST(PayloadParse, Addresses) {
    uint32_t a = 0;
    EXPECT_TRUE(ParseIPv4("192.168.1.20", a));
    EXPECT_EQ(a, 0xc0a80114u);
    EXPECT_FALSE(ParseIPv4("192.168.1", a));
    EXPECT_FALSE(ParseIPv4("192.168.1.2.3", a));
    EXPECT_FALSE(ParseIPv4("192.168.1.256", a));
    EXPECT_FALSE(ParseIPv4("192.168..1", a));
    EXPECT_FALSE(ParseIPv4("1.2.3.0001", a));
    EXPECT_FALSE(ParseIPv4("1.2.3.-1", a));
    EXPECT_TRUE(IsIPv4OrNet("10.0.0.0/8"));
    EXPECT_TRUE(IsIPv4OrNet("0.0.0.0/0"));
    EXPECT_TRUE(IsIPv4OrNet("10.0.0.1"));
    EXPECT_FALSE(IsIPv4OrNet("10.0.0.0/33"));
    EXPECT_FALSE(IsIPv4OrNet("10.0.0.0/"));
    EXPECT_FALSE(IsIPv4OrNet("10.0.0.0/008"));
}

TEST(PayloadParse, Masks) {
    EXPECT_TRUE(IsContiguousMask(0xffffff00u));
    EXPECT_TRUE(IsContiguousMask(0xffffffffu));
    EXPECT_TRUE(IsContiguousMask(0));
    EXPECT_FALSE(IsContiguousMask(0xff00ff00u));
    EXPECT_FALSE(IsContiguousMask(0x00ffffffu));
}

TEST(PayloadParse, PathsAndText) {
    EXPECT_TRUE(IsAbsolutePath("/etc/passwd", 255));
    EXPECT_FALSE(IsAbsolutePath("etc/passwd", 255));
    EXPECT_FALSE(IsAbsolutePath("", 255));
    EXPECT_FALSE(IsAbsolutePath("/a\tb", 255));
    EXPECT_FALSE(IsAbsolutePath("/" + std::string(255, 'a'), 255));
    EXPECT_TRUE(IsPlainText("\xe4\xb8\xad"));
    EXPECT_FALSE(IsPlainText("\xb2\xe2"));
    EXPECT_FALSE(IsPlainText("\xc0\xaf"));
    EXPECT_FALSE(IsPlainText("\xed\xa0\x80"));
}

TEST(PayloadParse, HostNames) {
    EXPECT_TRUE(IsHostName("srv-web01"));
    EXPECT_TRUE(IsHostName("a.b-c.d"));
    EXPECT_TRUE(IsHostName("1host"));
    EXPECT_FALSE(IsHostName("bad_name"));
    EXPECT_FALSE(IsHostName("-a"));
    EXPECT_FALSE(IsHostName("a-"));
    EXPECT_FALSE(IsHostName("a..b"));
    EXPECT_FALSE(IsHostName("a."));
    EXPECT_FALSE(IsHostName(""));
    EXPECT_FALSE(IsHostName(std::string(64, 'a')));
}

}  // namespace
