// Payload parsing helpers of the simulator's commands.
#include "agent/commands/payload_parse.h"

#include <cctype>
#include <cstring>

namespace nvagent {

std::vector<std::string> SplitBlanks(const std::string& s) {
    std::vector<std::string> out(1);
    for (char ch : s) {
        if (ch == ' ') {
            out.emplace_back();
        } else {
            out.back().push_back(ch);
        }
    }
    return out;
}

std::string Trim(const std::string& s) {
    const char* blanks = " \t\r";
    size_t b = s.find_first_not_of(blanks);
    if (b == std::string::npos)
        return std::string();
    size_t e = s.find_last_not_of(blanks);
    return s.substr(b, e - b + 1);
}

std::vector<std::string> SplitListLines(const std::string& s) {
    std::vector<std::string> out;
    size_t start = 0;
    while (start < s.size()) {
        size_t nl = s.find('\n', start);
        size_t end = (nl == std::string::npos) ? s.size() : nl;
        std::string line = Trim(s.substr(start, end - start));
        if (!line.empty())
            out.push_back(line);
        start = end + 1;
    }
    return out;
}

bool IsEmptyField(const std::string& s) {
    return s.empty() || s == "-";
}

DigitsResult ParseDigits(const std::string& s, unsigned long long max, unsigned long long& v) {
    if (s.empty())
        return DigitsResult::kNotDigits;
    unsigned long long acc = 0;
    bool tooBig = false;
    for (char ch : s) {
        if (ch < '0' || ch > '9')
            return DigitsResult::kNotDigits;
        unsigned d = static_cast<unsigned>(ch - '0');
        if (d > max || acc > (max - d) / 10)
            tooBig = true;
        if (!tooBig)
            acc = acc * 10 + d;
    }
    if (tooBig)
        return DigitsResult::kTooBig;
    v = acc;
    return DigitsResult::kOk;
}

Ipv4Check CheckIPv4(const std::string& s, uint32_t& addr) {
    uint32_t out = 0;
    size_t pos = 0;
    bool leadingZero = false;
    for (int part = 0; part < 4; ++part) {
        size_t end = s.find('.', pos);
        if (part == 3)
            end = s.size();
        if (end == std::string::npos || end == pos || end - pos > 3)
            return Ipv4Check::kMalformed;
        unsigned long long v = 0;
        if (ParseDigits(s.substr(pos, end - pos), 255, v) != DigitsResult::kOk)
            return Ipv4Check::kMalformed;
        leadingZero = leadingZero || (end - pos > 1 && s[pos] == '0');
        out = (out << 8) | static_cast<uint32_t>(v);
        pos = end + 1;
    }
    if (leadingZero)
        return Ipv4Check::kLeadingZero;
    addr = out;
    return Ipv4Check::kOk;
}

bool ParseIPv4(const std::string& s, uint32_t& addr) {
    return CheckIPv4(s, addr) == Ipv4Check::kOk;
}

Ipv4Check CheckIPv4OrNet(const std::string& s) {
    size_t slash = s.find('/');
    uint32_t a = 0;
    Ipv4Check c = CheckIPv4(s.substr(0, slash), a);
    if (slash == std::string::npos || c == Ipv4Check::kMalformed)
        return c;
    std::string prefix = s.substr(slash + 1);
    unsigned long long n = 0;
    if (prefix.size() > 2 || ParseDigits(prefix, 32, n) != DigitsResult::kOk)
        return Ipv4Check::kMalformed;
    return prefix.size() > 1 && prefix[0] == '0' ? Ipv4Check::kLeadingZero : c;
}

bool IsIPv4OrNet(const std::string& s) {
    return CheckIPv4OrNet(s) == Ipv4Check::kOk;
}

bool IsContiguousMask(uint32_t mask) {
    uint32_t inv = ~mask;
    return (inv & (inv + 1)) == 0;
}

bool HasControlChar(const std::string& s) {
    for (unsigned char ch : s) {
        if (ch < 0x20 || ch == 0x7f)
            return true;
    }
    return false;
}

// Length of the UTF-8 sequence led by b, 0 for a byte that cannot lead one.
static size_t Utf8Len(unsigned char b) {
    if (b < 0x80)
        return 1;
    if (b >= 0xc2 && b <= 0xdf)
        return 2;
    if (b >= 0xe0 && b <= 0xef)
        return 3;
    if (b >= 0xf0 && b <= 0xf4)
        return 4;
    return 0;
}

static bool IsUtf8(const std::string& s) {
    for (size_t i = 0; i < s.size();) {
        size_t n = Utf8Len(static_cast<unsigned char>(s[i]));
        if (n == 0 || i + n > s.size())
            return false;
        uint32_t cp = n == 1 ? static_cast<unsigned char>(s[i])
                             : static_cast<unsigned char>(s[i]) & (0x7f >> n);
        for (size_t k = 1; k < n; ++k) {
            unsigned char c = static_cast<unsigned char>(s[i + k]);
            if ((c & 0xc0) != 0x80)
                return false;
            cp = (cp << 6) | (c & 0x3f);
        }
        static const uint32_t kMin[] = {0, 0, 0x80, 0x800, 0x10000};
        if (cp < kMin[n] || cp > 0x10ffff || (cp >= 0xd800 && cp <= 0xdfff))
            return false;
        i += n;
    }
    return true;
}

bool IsPlainText(const std::string& s) {
    return IsUtf8(s) && !HasControlChar(s);
}

bool IsAbsolutePath(const std::string& s, size_t maxLen) {
    return !s.empty() && s[0] == '/' && s.size() <= maxLen && IsPlainText(s);
}

static bool IsLabel(const std::string& l) {
    if (l.empty() || l.size() > 63 || l.front() == '-' || l.back() == '-')
        return false;
    for (unsigned char ch : l) {
        if (!std::isalnum(ch) && ch != '-')
            return false;
    }
    return true;
}

// Calls fn(label) for each dot-separated label of s until fn returns false;
// true when every call returned true.
template <class Fn>
static bool EveryLabel(const std::string& s, Fn fn) {
    size_t start = 0;
    while (true) {
        size_t dot = s.find('.', start);
        if (!fn(s.substr(start, dot == std::string::npos ? dot : dot - start)))
            return false;
        if (dot == std::string::npos)
            return true;
        start = dot + 1;
    }
}

bool IsHostName(const std::string& s) {
    return EveryLabel(s, IsLabel);
}

bool IsNumericHostName(const std::string& s) {
    return EveryLabel(s, [](const std::string& l) {
        return !l.empty() && l.find_first_not_of("0123456789") == std::string::npos;
    });
}

bool IsLoopbackHostName(const std::string& s) {
    std::string lower;
    for (unsigned char ch : s)
        lower.push_back(static_cast<char>(std::tolower(ch)));
    return lower == "localhost" || lower == "localhost.localdomain";
}

IfNameCheck CheckInterfaceName(const std::string& s) {
    if (s.empty())
        return IfNameCheck::kEmpty;
    if (s.size() > kMaxIfNameLen)
        return IfNameCheck::kTooLong;
    if (s == "." || s == "..")
        return IfNameCheck::kDots;
    if (s[0] == '-')
        return IfNameCheck::kLeadingDash;
    // Blanks and control characters split arguments and lines, "/" and ":"
    // the kernel refuses, the glob characters, "!" (negation) and "%"
    // (specifiers) turn a configuration file's name match into something
    // else, and "\\", quotes and non-ASCII bytes have no place in a name a
    // tool prints or parses.
    static const char kBad[] = "/:*?[]\\!%'\"";
    for (unsigned char ch : s) {
        if (ch <= 0x20 || ch >= 0x7f || std::strchr(kBad, ch) != nullptr)
            return IfNameCheck::kBadChar;
    }
    return IfNameCheck::kOk;
}

}  // namespace nvagent
