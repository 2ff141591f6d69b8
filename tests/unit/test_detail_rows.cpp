// Every row of every table of the detail catalogue: its references name a
// part of its sentence, its Chinese exists in GB2312, its short forms fit
// the information line with long parts, and no earlier row takes its
// sentence.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "agent/details/detail_lookup.h"
#include "agent/details/detail_registry.h"

namespace {

using nvagent::DetailLang;
using nvagent::DetailRow;

size_t Holes(const char* full) {
    size_t n = 0;
    for (const char* p = strstr(full, "{}"); p != nullptr; p = strstr(p + 2, "{}"))
        ++n;
    return n;
}

// The "{N}" numbers a short form uses, in order.
std::vector<int> Refs(const char* form) {
    std::vector<int> refs;
    for (const char* p = form; *p != '\0'; ++p) {
        if (p[0] == '{' && p[1] >= '1' && p[1] <= '9' && p[2] == '}')
            refs.push_back(p[1] - '0');
    }
    return refs;
}

std::vector<const DetailRow*> AllRows() {
    std::vector<const DetailRow*> rows;
    for (const nvagent::DetailTable* t : nvagent::DetailTables()) {
        for (size_t i = 0; i < t->nRows; ++i)
            rows.push_back(&t->pRows[i]);
    }
    return rows;
}

// Long parts as the code fills them in: a deep path, a tool's message.
std::vector<std::string> LongParts(size_t n) {
    std::vector<std::string> parts;
    for (size_t i = 0; i < n; ++i) {
        parts.push_back(std::string(1, static_cast<char>('A' + i)) + std::to_string(i) +
                        "/srv/exports/projects/department-of-engineering/build-artifacts/"
                        "nightly/2026-11-24/output.log");
    }
    return parts;
}

TEST(DetailRows, EveryRowHasBothShortFormsWithValidReferences) {
    std::vector<const DetailRow*> rows = AllRows();
    ASSERT_GT(rows.size(), 150u);
    for (const DetailRow* row : rows) {
        SCOPED_TRACE(row->szFull);
        size_t holes = Holes(row->szFull);
        ASSERT_NE(row->szZh, nullptr);
        std::vector<int> zh = Refs(row->szZh);
        for (size_t k = 1; k <= holes; ++k)
            EXPECT_NE(std::find(zh.begin(), zh.end(), static_cast<int>(k)), zh.end()) << k;
        for (int k : zh)
            EXPECT_LE(static_cast<size_t>(k), holes);
        if (row->szEn != nullptr) {
            std::vector<int> en = Refs(row->szEn);
            for (size_t k = 1; k <= holes; ++k)
                EXPECT_NE(std::find(en.begin(), en.end(), static_cast<int>(k)), en.end()) << k;
            for (int k : en)
                EXPECT_LE(static_cast<size_t>(k), holes);
        }
        // Translated: Chinese words, not the English sentence again.
        bool cjk = false;
        for (const char* p = row->szZh; *p != '\0'; ++p)
            cjk = cjk || static_cast<unsigned char>(*p) >= 0x80;
        EXPECT_TRUE(cjk) << row->szZh;
    }
}

TEST(DetailRows, EveryChineseFormConvertsToGb2312) {
    for (const DetailRow* row : AllRows()) {
        std::string gb;
        EXPECT_TRUE(nvagent::Utf8ToGb2312(row->szZh, gb, true)) << row->szZh;
    }
}

// With every part long, each short form still fits, in each language and
// encoding, and shows the start of every part (numbers, which are never
// long, share what three parts leave in the longest sentences).
TEST(DetailRows, EveryShortFormFitsWithLongParts) {
    for (const DetailRow* row : AllRows()) {
        SCOPED_TRACE(row->szFull);
        std::vector<std::string> parts = LongParts(Holes(row->szFull));
        for (DetailLang lang :
             {DetailLang::kEnglish, DetailLang::kChineseGb2312, DetailLang::kChineseUtf8}) {
            std::string out = nvagent::ExpandDetailRow(*row, parts, lang);
            EXPECT_LE(out.size(), nvagent::kDetailWidth) << static_cast<int>(lang) << ": " << out;
            for (const std::string& p : parts)
                EXPECT_NE(out.find(p.substr(0, 3)), std::string::npos)
                    << static_cast<int>(lang) << ": " << out;
        }
        // With short parts nothing is cut.
        std::vector<std::string> shortParts(parts.size(), "v1");
        for (DetailLang lang :
             {DetailLang::kEnglish, DetailLang::kChineseGb2312, DetailLang::kChineseUtf8}) {
            std::string out = nvagent::ExpandDetailRow(*row, shortParts, lang);
            EXPECT_EQ(out, nvagent::ExpandDetailRow(*row, shortParts, lang, 100000));
        }
    }
}

// A sentence built from a row is found as that row: no earlier row's "{}"
// takes it.
TEST(DetailRows, NoRowIsHiddenByAnEarlierOne) {
    for (const DetailRow* row : AllRows()) {
        std::string text;
        int k = 0;
        for (const char* p = row->szFull; *p != '\0'; ++p) {
            if (p[0] == '{' && p[1] == '}') {
                text += "v" + std::to_string(++k) + "x";
                ++p;
            } else {
                text += *p;
            }
        }
        std::vector<std::string> parts;
        const DetailRow* found = nvagent::FindDetailRow(text, parts);
        ASSERT_NE(found, nullptr) << text;
        EXPECT_STREQ(found->szFull, row->szFull) << text;
    }
}

}  // namespace
