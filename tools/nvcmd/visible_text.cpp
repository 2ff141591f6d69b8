// Making the agent's text visible byte by byte.
#include "visible_text.h"

#include <cstdio>

namespace {

void AppendEscape(std::string& out, unsigned char c) {
    char buf[8];
    snprintf(buf, sizeof buf, "\\x%02x", c);
    out.append(buf);
}

}  // namespace

std::string VisibleText(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        unsigned char next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        if (c < 0x20 || c == 0x7f) {
            AppendEscape(out, c);
        } else if (c == 0xc2 && next >= 0x80 && next <= 0x9f) {
            AppendEscape(out, c);
            AppendEscape(out, next);
            ++i;
        } else if (c == '\\') {
            out.append("\\\\");
        } else {
            out.push_back(static_cast<char>(c));
        }
    }
    return out;
}
