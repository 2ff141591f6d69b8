// The GB2312 catalogue generator: renaming, re-encoding, escaping, and its
// refusals.
#include <gtest/gtest.h>

#include <string>

#include "strgen.h"

namespace {

std::string Convert(const std::string& strIn) {
    std::string strOut;
    std::string strErr;
    EXPECT_TRUE(ConvertCatalogueSource(strIn, "utf8_str.cpp", &strOut, &strErr)) << strErr;
    return strOut;
}

std::string Error(const std::string& strIn) {
    std::string strOut;
    std::string strErr;
    EXPECT_FALSE(ConvertCatalogueSource(strIn, "utf8_str.cpp", &strOut, &strErr));
    return strErr;
}

TEST(StrGen, ReEncodesToGb2312) {
    std::string strOut;
    ASSERT_TRUE(Utf8ToGb2312("主菜单 a", &strOut));
    EXPECT_EQ(strOut, "\xd6\xf7\xb2\xcb\xb5\xa5 a");
    EXPECT_FALSE(Utf8ToGb2312("\xff", &strOut));
    // U+20AC EURO SIGN has no GB2312 form.
    EXPECT_FALSE(Utf8ToGb2312("\xe2\x82\xac", &strOut));
}

TEST(StrGen, RenamesAndReplacesTheFirstComment) {
    EXPECT_EQ(Convert("// The Chinese catalogue in UTF-8.\n"
                      "#include \"strings/utf8_str.h\"\n"
                      "const char* pcUTF8_Yes = \"[是]\";\n"
                      "void InitUTF8Str() {}\n"),
              "// The Chinese catalogue in GB2312, generated from utf8_str.cpp by nvstrgen: do "
              "not edit.\n"
              "#include \"strings/gb2312_str.h\"\n"
              "const char* pcGB2312_Yes = \"[\\xca\\xc7]\";\n"
              "void InitGB2312Str() {}\n");
    EXPECT_EQ(Convert("#ifndef NV_STRINGS_UTF8_STR_H\n"),
              "// The Chinese catalogue in GB2312, generated from utf8_str.cpp by nvstrgen: do "
              "not edit.\n#ifndef NV_STRINGS_GB2312_STR_H\n");
}

TEST(StrGen, SplitsTheLiteralBeforeAHexDigitAfterAnEscape) {
    // "错" is b4 ed in GB2312; "a", "0" and "F" would extend the escape.
    EXPECT_EQ(Convert("x = \"错a错0错F错g错\\n\";"),
              "// The Chinese catalogue in GB2312, generated from utf8_str.cpp by nvstrgen: do "
              "not edit.\n"
              "x = \"\\xb4\\xed\" \"a\\xb4\\xed\" \"0\\xb4\\xed\" \"F\\xb4\\xedg\\xb4\\xed\\n\";");
}

TEST(StrGen, KeepsEscapesAndCharacterLiterals) {
    std::string strOut = Convert("// c\nx = \"\\t\\\"q\\\\\"; c = '\"';\n");
    EXPECT_NE(strOut.find("x = \"\\t\\\"q\\\\\"; c = '\"';"), std::string::npos) << strOut;
}

TEST(StrGen, RefusesWhatItCannotWriteAsAscii) {
    EXPECT_NE(Error("// c\nconst char* pcUTF8_X = \"€\";\n").find("line 2: no GB2312 form"),
              std::string::npos);
    EXPECT_NE(Error("// c\n// 中文\n").find("line 2: non-ASCII text in a comment"),
              std::string::npos);
    EXPECT_NE(Error("// c\nint 中 = 0;\n").find("outside a string literal"), std::string::npos);
    EXPECT_NE(Error("x = u8\"中\";").find("prefixed or raw"), std::string::npos);
    EXPECT_NE(Error("x = \"abc\n").find("unterminated"), std::string::npos);
    EXPECT_NE(Error("/* c */").find("block comments"), std::string::npos);
}

TEST(StrGen, RefusesASurvivingUtf8Name) {
    EXPECT_NE(Error("// c\nint pcUTF8Extra;\n").find("line 2: \"UTF8\" survives"),
              std::string::npos);
}

}  // namespace
