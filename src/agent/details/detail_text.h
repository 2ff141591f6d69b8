// Byte-level helpers of the detail texts: the languages and encodings the
// console reads, cutting at character boundaries, and UTF-8 to GB2312.
#ifndef NV_AGENT_DETAILS_DETAIL_TEXT_H
#define NV_AGENT_DETAILS_DETAIL_TEXT_H

#include <cstddef>
#include <string>

namespace nvagent {

// The width of the console's information line, counted in bytes as the
// console counts it.
constexpr size_t kDetailWidth = 78;

// The agent's language setting (chLangCode).
enum class DetailLang { kEnglish = 0, kChineseGb2312 = 1, kChineseUtf8 = 2 };

// The language of a chLangCode value; anything unknown reads as English.
DetailLang DetailLangOf(int langCode);

// The longest prefix of s of at most maxBytes bytes that ends on a character
// boundary: s is GB2312 (EUC-CN: a byte from 0x80 up starts a pair) when
// gb2312, UTF-8 otherwise.
size_t CutAtBoundary(const std::string& s, size_t maxBytes, bool gb2312);

// Converts UTF-8 text to GB2312. A character GB2312 lacks, or a byte that is
// not UTF-8, becomes '?' unless strict, when the conversion fails instead.
bool Utf8ToGb2312(const std::string& utf8, std::string& out, bool strict = false);

}  // namespace nvagent

#endif
