// Character-set helpers of the screen tests: GB2312 (EUC-CN) to and from
// UTF-8, and a streaming decoder that turns GB2312 terminal output into
// UTF-8 so that the decoded screen keeps two columns per Chinese character.
#ifndef NV_TESTS_SUPPORT_SCREEN_CHARSET_H
#define NV_TESTS_SUPPORT_SCREEN_CHARSET_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace nvtest {

// Appends the UTF-8 form of one code point.
void AppendUtf8(std::string& out, uint32_t codePoint);

// GB2312 bytes as UTF-8. A byte pair that is no GB2312 character becomes two
// U+FFFD, a stray high byte one U+FFFD; ASCII passes through.
std::string Gb2312ToUtf8(const std::string& gb);

// UTF-8 text as GB2312 bytes (for typing or for looking into raw output).
// Throws std::runtime_error when the text has no GB2312 form.
std::string Utf8ToGb2312(const std::string& utf8);

// Decodes terminal output written in GB2312 piece by piece: a character
// split between two reads is completed by the next Feed.
class Gb2312Stream {
public:
    Gb2312Stream();
    ~Gb2312Stream();
    Gb2312Stream(const Gb2312Stream&) = delete;
    Gb2312Stream& operator=(const Gb2312Stream&) = delete;

    // The UTF-8 form of the bytes so far that make whole characters.
    std::string Feed(const char* bytes, size_t len);

private:
    void EmitPair(std::string& out, unsigned char lead, unsigned char trail);

    void* m_conv;  // an iconv descriptor, GB2312 to UTF-8
    int m_lead = -1;
};

}  // namespace nvtest

#endif
