// GB2312 and UTF-8 conversions for the screen tests, on top of iconv.
#include "screen_charset.h"

#include <iconv.h>

#include <cerrno>
#include <stdexcept>

namespace nvtest {

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

bool IsGbByte(unsigned char b) {
    return b >= 0xA1 && b <= 0xFE;
}

iconv_t OpenConv(const char* to, const char* from) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        throw std::runtime_error(std::string("iconv cannot convert from ") + from + " to " + to);
    return cd;
}

// Converts a whole buffer; false when any of it has no form in the target.
bool ConvertAll(iconv_t cd, const std::string& in, std::string& out) {
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    std::string src = in;
    char* inPtr = &src[0];
    size_t inLeft = src.size();
    std::string buf(src.size() * 4 + 16, '\0');
    char* outPtr = &buf[0];
    size_t outLeft = buf.size();
    size_t rc = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    if (rc == static_cast<size_t>(-1) || inLeft != 0)
        return false;
    out.assign(buf.data(), buf.size() - outLeft);
    return true;
}

}  // namespace

void AppendUtf8(std::string& out, uint32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x110000) {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        AppendUtf8(out, kReplacement);
    }
}

std::string Gb2312ToUtf8(const std::string& gb) {
    Gb2312Stream stream;
    std::string out = stream.Feed(gb.data(), gb.size());
    // A lead byte left at the end has no partner.
    std::string tail = stream.Feed("", 0);
    return out + tail;
}

std::string Utf8ToGb2312(const std::string& utf8) {
    iconv_t cd = OpenConv("GB2312", "UTF-8");
    std::string out;
    bool ok = ConvertAll(cd, utf8, out);
    iconv_close(cd);
    if (!ok)
        throw std::runtime_error("text has no GB2312 form: " + utf8);
    return out;
}

Gb2312Stream::Gb2312Stream() : m_conv(OpenConv("UTF-8", "GB2312")) {}

Gb2312Stream::~Gb2312Stream() {
    iconv_close(static_cast<iconv_t>(m_conv));
}

void Gb2312Stream::EmitPair(std::string& out, unsigned char lead, unsigned char trail) {
    std::string pair;
    pair += static_cast<char>(lead);
    pair += static_cast<char>(trail);
    std::string utf8;
    if (ConvertAll(static_cast<iconv_t>(m_conv), pair, utf8)) {
        out += utf8;
    } else {
        AppendUtf8(out, kReplacement);
        AppendUtf8(out, kReplacement);
    }
}

std::string Gb2312Stream::Feed(const char* bytes, size_t len) {
    std::string out;
    if (len == 0 && m_lead >= 0) {
        AppendUtf8(out, kReplacement);
        m_lead = -1;
        return out;
    }
    for (size_t i = 0; i < len; ++i) {
        unsigned char b = static_cast<unsigned char>(bytes[i]);
        if (m_lead >= 0) {
            unsigned char lead = static_cast<unsigned char>(m_lead);
            m_lead = -1;
            if (IsGbByte(b)) {
                EmitPair(out, lead, b);
                continue;
            }
            AppendUtf8(out, kReplacement);
        }
        if (b < 0x80)
            out += static_cast<char>(b);
        else if (IsGbByte(b))
            m_lead = b;
        else
            AppendUtf8(out, kReplacement);
    }
    return out;
}

}  // namespace nvtest
