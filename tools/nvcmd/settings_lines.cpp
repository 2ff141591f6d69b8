// Reading rule and interface display lines back into records.
#include "settings_lines.h"

#include <arpa/inet.h>

#include <cstdlib>
#include <sstream>

namespace nvsettings {

namespace {

std::vector<std::string> Words(const std::string& s) {
    std::istringstream in(s);
    std::vector<std::string> w;
    std::string t;
    while (in >> t)
        w.push_back(t);
    return w;
}

bool Index(const std::string& w, unsigned long& out) {
    if (w.empty() || w.size() > 9 || w.find_first_not_of("0123456789") != std::string::npos)
        return false;
    out = std::strtoul(w.c_str(), nullptr, 10);
    return out > 0;
}

// "address:port" of a rule line; "any" for either part means any.
bool Endpoint(const std::string& w, std::string& addr, int& port) {
    size_t colon = w.rfind(':');
    if (colon == std::string::npos)
        return false;
    std::string a = w.substr(0, colon);
    std::string p = w.substr(colon + 1);
    addr = a == "any" ? "" : a;
    if (p == "any") {
        port = 0;
        return true;
    }
    if (p.empty() || p.size() > 5 || p.find_first_not_of("0123456789") != std::string::npos)
        return false;
    port = atoi(p.c_str());
    return port <= 65535;
}

std::string CanonicalAddress(const std::string& a) {
    size_t slash = a.find('/');
    if (slash == std::string::npos)
        return a;
    in_addr ip{};
    int bits = atoi(a.c_str() + slash + 1);
    if (inet_pton(AF_INET, a.substr(0, slash).c_str(), &ip) != 1 || bits < 0 || bits > 32)
        return a;
    if (bits == 32)
        return a.substr(0, slash);
    uint32_t mask = bits == 0 ? 0 : ~uint32_t(0) << (32 - bits);
    ip.s_addr = htonl(ntohl(ip.s_addr) & mask);
    char buf[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &ip, buf, sizeof buf);
    return std::string(buf) + "/" + std::to_string(bits);
}

}  // namespace

// The agent's own layout: INDEX PROTO SRC:SPORT -> DST:DPORT ACTION.
bool RuleFromLine(const std::string& line, ShownRule& out) {
    std::vector<std::string> w = Words(line);
    if (w.size() != 6 || w[3] != "->" || !Index(w[0], out.index))
        return false;
    nvagent::FwRule r;
    if (w[1] != "tcp" && w[1] != "udp")
        return false;
    r.proto = w[1] == "udp" ? nvagent::kProtoUdp : nvagent::kProtoTcp;
    if (!Endpoint(w[2], r.src, r.sport) || !Endpoint(w[4], r.dst, r.dport))
        return false;
    if (w[5] == "ACCEPT")
        r.action = nvagent::kActAccept;
    else if (w[5] == "DROP")
        r.action = nvagent::kActDrop;
    else if (w[5] == "REJECT")
        r.action = nvagent::kActReject;
    else
        return false;
    out.rule = CanonicalRule(r);
    return true;
}

std::vector<ShownRule> RulesFromLines(const std::vector<std::string>& lines) {
    std::vector<ShownRule> out;
    for (const std::string& l : lines) {
        ShownRule r;
        if (RuleFromLine(l, r))
            out.push_back(r);
    }
    return out;
}

bool ChainShowsDrop(const std::vector<std::string>& lines) {
    return !lines.empty() && lines[0].rfind("Policy:", 0) == 0 &&
           lines[0].find("drop") != std::string::npos;
}

nvagent::FwRule CanonicalRule(nvagent::FwRule r) {
    r.src = CanonicalAddress(r.src);
    r.dst = CanonicalAddress(r.dst);
    return r;
}

// INDEX NAME MAC MODE STATE IP MASK, "-" for unset.
bool InterfaceFromLine(const std::string& line, nvagent::NetInterface& out) {
    std::vector<std::string> w = Words(line);
    unsigned long idx = 0;
    if (w.size() != 7 || !Index(w[0], idx))
        return false;
    if ((w[3] != "static" && w[3] != "dynamic") || (w[4] != "up" && w[4] != "down"))
        return false;
    auto unset = [](const std::string& s) { return s == "-" ? std::string() : s; };
    out = nvagent::NetInterface();
    out.name = w[1];
    out.mac = unset(w[2]);
    out.mode = w[3] == "dynamic" ? nvagent::kModeDynamic : nvagent::kModeStatic;
    out.up = w[4] == "up";
    out.ip = unset(w[5]);
    out.mask = unset(w[6]);
    return true;
}

}  // namespace nvsettings
