// Formatting of the display lines: fixed column layouts, with the text
// columns padded to the widest entry of the list so that the lines align.
#include "agent/display_lines.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace nvagent {

namespace {

std::string Pad(const std::string& s, size_t width) {
    return s.size() >= width ? s : s + std::string(width - s.size(), ' ');
}

std::string PadLeft(const std::string& s, size_t width) {
    return s.size() >= width ? s : std::string(width - s.size(), ' ') + s;
}

// Index column: 1-based, right-aligned, at least three wide.
std::string Index(size_t i, size_t count) {
    size_t width = std::max<size_t>(3, std::to_string(count).size());
    return PadLeft(std::to_string(i + 1), width);
}

template <class T, class F>
size_t Widest(const std::vector<T>& v, F text, size_t atLeast) {
    size_t w = atLeast;
    for (const T& e : v)
        w = std::max(w, text(e).size());
    return w;
}

std::string OrDash(const std::string& s) {
    return s.empty() ? "-" : s;
}

std::string Endpoint(const std::string& addr, int port) {
    return (addr.empty() ? "any" : addr) + ":" + (port == 0 ? "any" : std::to_string(port));
}

const char* ActionWord(int action) {
    switch (action) {
        case kActDrop:
            return "DROP";
        case kActReject:
            return "REJECT";
        default:
            return "ACCEPT";
    }
}

std::string Cstr(const char* s, size_t cap) {
    return std::string(s, strnlen(s, cap));
}

}  // namespace

void FormatDateTime(time_t t, std::string& date, std::string& clock) {
    struct tm tm {};
    localtime_r(&t, &tm);
    char d[32];
    char h[32];
    strftime(d, sizeof d, "%Y-%m-%d", &tm);
    strftime(h, sizeof h, "%H:%M:%S", &tm);
    date = d;
    clock = h;
}

tVecStr VolumeLines(const std::vector<cDiskVolume>& v) {
    auto part = [](const cDiskVolume& d) { return Cstr(d.szPart, sizeof d.szPart); };
    size_t w = Widest(v, part, 10);
    tVecStr out;
    for (size_t i = 0; i < v.size(); ++i) {
        out.push_back(Index(i, v.size()) + "  " + Pad(part(v[i]), w) + "  ceil " +
                      PadLeft(std::to_string(v[i].iCeil), 7) + " MB  floor " +
                      PadLeft(std::to_string(v[i].iFloor), 7) + " MB  interval " +
                      PadLeft(std::to_string(v[i].iItv), 7) + " MB");
    }
    return out;
}

tVecStr BackupLines(const std::vector<cBakForSize>& v) {
    auto file = [](const cBakForSize& b) { return Cstr(b.szFileName, sizeof b.szFileName); };
    auto dir = [](const cBakForSize& b) { return Cstr(b.szBakDir, sizeof b.szBakDir); };
    size_t wf = Widest(v, file, 10);
    size_t wd = Widest(v, dir, 10);
    tVecStr out;
    for (size_t i = 0; i < v.size(); ++i) {
        out.push_back(Index(i, v.size()) + "  " + Pad(file(v[i]), wf) + "  -> " +
                      Pad(dir(v[i]), wd) + "  limit " + PadLeft(std::to_string(v[i].iKilobyte), 8) +
                      " KB");
    }
    return out;
}

tVecStr RuleLines(const std::vector<FwRule>& v) {
    auto src = [](const FwRule& r) { return Endpoint(r.src, r.sport); };
    auto dst = [](const FwRule& r) { return Endpoint(r.dst, r.dport); };
    size_t ws = Widest(v, src, 7);
    size_t wd = Widest(v, dst, 7);
    tVecStr out;
    for (size_t i = 0; i < v.size(); ++i) {
        const FwRule& r = v[i];
        out.push_back(Index(i, v.size()) + "  " + (r.proto == kProtoUdp ? "udp" : "tcp") + "  " +
                      Pad(src(r), ws) + "  -> " + Pad(dst(r), wd) + "  " + ActionWord(r.action));
    }
    return out;
}

std::string PolicyLine(char policy) {
    return std::string("Policy: ") + (policy == '1'   ? "accept"
                                      : policy == '2' ? "drop"
                                                      : "unknown");
}

tVecStr ChainLines(char policy, const std::vector<FwRule>& v) {
    tVecStr out = {PolicyLine(policy)};
    tVecStr rules = RuleLines(v);
    out.insert(out.end(), rules.begin(), rules.end());
    return out;
}

tVecStr InterfaceLines(const std::vector<NetInterface>& v) {
    auto name = [](const NetInterface& n) { return n.name; };
    auto ip = [](const NetInterface& n) { return OrDash(n.ip); };
    size_t wn = Widest(v, name, 4);
    size_t wi = Widest(v, ip, 15);
    tVecStr out;
    for (size_t i = 0; i < v.size(); ++i) {
        const NetInterface& n = v[i];
        size_t shown = n.index > 0 ? static_cast<size_t>(n.index - 1) : i;
        out.push_back(Index(shown, v.size()) + "  " + Pad(n.name, wn) + "  " +
                      Pad(OrDash(n.mac), 17) + "  " +
                      Pad(n.mode == kModeDynamic ? "dynamic" : "static", 7) + "  " +
                      Pad(n.up ? "up" : "down", 4) + "  " + Pad(ip(n), wi) + "  " + OrDash(n.mask));
    }
    return out;
}

tVecStr ListenLines(const std::vector<cTcpListen>& v) {
    auto full = [](const cTcpListen& t) { return Cstr(t.szListenAddr, sizeof t.szListenAddr); };
    auto addr = [&full](const cTcpListen& t) {
        std::string a = full(t);
        size_t colon = a.rfind(':');
        return colon == std::string::npos ? a : a.substr(0, colon);
    };
    auto port = [&full](const cTcpListen& t) {
        std::string a = full(t);
        size_t colon = a.rfind(':');
        return colon == std::string::npos ? std::string("-") : a.substr(colon + 1);
    };
    size_t wa = Widest(v, addr, 15);
    tVecStr out;
    for (const cTcpListen& t : v) {
        out.push_back(Pad(addr(t), wa) + "  " + Pad(port(t), 5) + "  " +
                      PadLeft(std::to_string(t.iPid), 7) + "  " +
                      Cstr(t.szProgramName, sizeof t.szProgramName));
    }
    return out;
}

tVecStr DiskInfoLines(const std::vector<cDiskInfo>& v) {
    auto part = [](const cDiskInfo& d) { return Cstr(d.szPart, sizeof d.szPart); };
    auto fs = [](const cDiskInfo& d) { return Cstr(d.szFS, sizeof d.szFS); };
    size_t wp = Widest(v, part, 10);
    size_t wf = Widest(v, fs, 5);
    tVecStr out;
    for (const cDiskInfo& d : v) {
        out.push_back(Pad(part(d), wp) + "  " + Pad(fs(d), wf) + "  size " +
                      PadLeft(std::to_string(d.iSizeTotal), 9) + "  used " +
                      PadLeft(std::to_string(d.iUsed), 9) + "  free " +
                      PadLeft(std::to_string(d.iAvailable), 9) + "  on " +
                      Cstr(d.szMountOn, sizeof d.szMountOn));
    }
    return out;
}

}  // namespace nvagent
