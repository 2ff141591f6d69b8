// Character boundaries and the GB2312 conversion of the detail texts.
#include "agent/details/detail_text.h"

#include <iconv.h>

#include <cerrno>

namespace nvagent {

namespace {

// One converter per thread: iconv_t keeps shift state and is not shared.
class Gb2312Converter {
public:
    Gb2312Converter() : m_cd(iconv_open("GB2312", "UTF-8")) {}
    ~Gb2312Converter() {
        if (m_cd != reinterpret_cast<iconv_t>(-1))
            iconv_close(m_cd);
    }
    Gb2312Converter(const Gb2312Converter&) = delete;
    Gb2312Converter& operator=(const Gb2312Converter&) = delete;

    bool Convert(const std::string& in, std::string& out, bool strict) {
        out.clear();
        if (m_cd == reinterpret_cast<iconv_t>(-1))
            return false;
        iconv(m_cd, nullptr, nullptr, nullptr, nullptr);
        char* src = const_cast<char*>(in.data());
        size_t srcLeft = in.size();
        char buf[256];
        while (srcLeft > 0) {
            char* dst = buf;
            size_t dstLeft = sizeof buf;
            size_t n = iconv(m_cd, &src, &srcLeft, &dst, &dstLeft);
            out.append(buf, static_cast<size_t>(dst - buf));
            if (n != static_cast<size_t>(-1) || errno == E2BIG)
                continue;
            if (strict)
                return false;
            // An unconvertible character or a stray byte: one '?' for the
            // whole character.
            out.push_back('?');
            size_t skip = 1;
            while (skip < srcLeft && (static_cast<unsigned char>(src[skip]) & 0xC0) == 0x80)
                ++skip;
            src += skip;
            srcLeft -= skip;
            iconv(m_cd, nullptr, nullptr, nullptr, nullptr);
        }
        return true;
    }

private:
    iconv_t m_cd;
};

}  // namespace

DetailLang DetailLangOf(int langCode) {
    if (langCode == 1)
        return DetailLang::kChineseGb2312;
    if (langCode == 2)
        return DetailLang::kChineseUtf8;
    return DetailLang::kEnglish;
}

size_t CutAtBoundary(const std::string& s, size_t maxBytes, bool gb2312) {
    if (maxBytes >= s.size())
        return s.size();
    if (gb2312) {
        size_t i = 0;
        for (;;) {
            size_t step = static_cast<unsigned char>(s[i]) >= 0x80 ? 2 : 1;
            if (i + step > maxBytes)
                return i;
            i += step;
        }
    }
    size_t i = maxBytes;
    while (i > 0 && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80)
        --i;
    return i;
}

bool Utf8ToGb2312(const std::string& utf8, std::string& out, bool strict) {
    thread_local Gb2312Converter conv;
    return conv.Convert(utf8, out, strict);
}

}  // namespace nvagent
