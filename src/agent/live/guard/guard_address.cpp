// Address arithmetic of the session guard.
#include "agent/live/guard/guard_address.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace nvagent {

bool ParseIp(const std::string& text, IpAddr& out) {
    out = IpAddr();
    if (inet_pton(AF_INET, text.c_str(), out.bytes) == 1) {
        out.iFamily = AF_INET;
        return true;
    }
    unsigned char v6[16];
    if (inet_pton(AF_INET6, text.c_str(), v6) != 1)
        return false;
    static const unsigned char kMapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    if (memcmp(v6, kMapped, sizeof kMapped) == 0) {
        out.iFamily = AF_INET;
        memcpy(out.bytes, v6 + 12, 4);
        return true;
    }
    out.iFamily = AF_INET6;
    memcpy(out.bytes, v6, 16);
    return true;
}

int DottedMaskPrefix(const std::string& mask) {
    IpAddr m;
    if (!ParseIp(mask, m) || m.iFamily != AF_INET)
        return -1;
    uint32_t bits = (uint32_t(m.bytes[0]) << 24) | (uint32_t(m.bytes[1]) << 16) |
                    (uint32_t(m.bytes[2]) << 8) | m.bytes[3];
    int prefix = 0;
    while (prefix < 32 && (bits & (0x80000000u >> prefix)) != 0)
        ++prefix;
    // Every bit after the first zero must be zero too.
    uint32_t rest = prefix == 32 ? 0 : bits & (0xffffffffu >> prefix);
    return rest == 0 ? prefix : -1;
}

bool ParseCidr(const std::string& text, IpAddr& net, int& prefix) {
    size_t slash = text.find('/');
    if (!ParseIp(text.substr(0, slash), net))
        return false;
    int whole = net.iFamily == AF_INET ? 32 : 128;
    if (slash == std::string::npos) {
        prefix = whole;
        return true;
    }
    std::string len = text.substr(slash + 1);
    if (len.find('.') != std::string::npos) {
        prefix = DottedMaskPrefix(len);
        return prefix >= 0 && net.iFamily == AF_INET;
    }
    if (len.empty() || len.size() > 3 || len.find_first_not_of("0123456789") != std::string::npos)
        return false;
    prefix = atoi(len.c_str());
    // A mapped address's prefix counts the 96 bits of the mapping.
    if (net.iFamily == AF_INET && text.find(':') != std::string::npos)
        prefix -= 96;
    return prefix >= 0 && prefix <= whole;
}

bool InPrefix(const IpAddr& a, const IpAddr& net, int prefix) {
    if (a.iFamily != net.iFamily || prefix < 0 || prefix > (a.iFamily == AF_INET ? 32 : 128))
        return false;
    int full = prefix / 8;
    if (memcmp(a.bytes, net.bytes, static_cast<size_t>(full)) != 0)
        return false;
    int rest = prefix % 8;
    if (rest == 0)
        return true;
    unsigned char mask = static_cast<unsigned char>(0xff << (8 - rest));
    return (a.bytes[full] & mask) == (net.bytes[full] & mask);
}

bool SameIp(const std::string& a, const std::string& b) {
    IpAddr x, y;
    return ParseIp(a, x) && ParseIp(b, y) && x.iFamily == y.iFamily &&
           memcmp(x.bytes, y.bytes, sizeof x.bytes) == 0;
}

std::string ShortAddress(const std::string& addr, size_t max) {
    if (addr.size() <= max)
        return addr;
    if (max < 4)
        return addr.substr(0, max);
    size_t keep = max - 2;
    size_t head = (keep + 1) / 2;
    return addr.substr(0, head) + ".." + addr.substr(addr.size() - (keep - head));
}

}  // namespace nvagent
