// Fuzz target: arbitrary bytes as an IPv4 address field. The parser must
// agree with the C library's strict reading (inet_pton) and with the lenient
// one the system's tools use (inet_aton, which reads "010" as octal): an
// address it accepts is read the same by both and prints back as given, so
// no tool can apply another address than the one checked. The same text
// then goes through the firewall rule and manual address commands, which
// must accept it only where the parser did.
#include <arpa/inet.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <variant>

#include "agent/commands/command_parser.h"
#include "agent/commands/payload_parse.h"

using namespace nvagent;

namespace {

void Fail(const std::string& what, const std::string& s) {
    fprintf(stderr, "fuzz_ipv4_parse: %s: \"%s\"\n", what.c_str(), s.c_str());
    abort();
}

std::string Dotted(uint32_t a) {
    char buf[16];
    snprintf(buf, sizeof buf, "%u.%u.%u.%u", a >> 24, (a >> 16) & 255, (a >> 8) & 255, a & 255);
    return buf;
}

void CheckAddress(const std::string& s) {
    uint32_t a = 0;
    Ipv4Check c = CheckIPv4(s, a);
    in_addr strict{}, lenient{};
    bool pton = s.find('\0') == std::string::npos && inet_pton(AF_INET, s.c_str(), &strict) == 1;
    if (c != Ipv4Check::kOk) {
        if (pton && c == Ipv4Check::kMalformed)
            Fail("refused what inet_pton reads", s);
        return;
    }
    if (!pton || ntohl(strict.s_addr) != a)
        Fail("accepted what inet_pton reads otherwise", s);
    if (inet_aton(s.c_str(), &lenient) == 0 || ntohl(lenient.s_addr) != a)
        Fail("accepted what inet_aton reads otherwise", s);
    if (Dotted(a) != s)
        Fail("accepted a non-canonical form", s);
}

void CheckNet(const std::string& s) {
    Ipv4Check c = CheckIPv4OrNet(s);
    if (c != Ipv4Check::kOk)
        return;
    size_t slash = s.find('/');
    uint32_t a = 0;
    if (CheckIPv4(s.substr(0, slash), a) != Ipv4Check::kOk)
        Fail("accepted a network whose address is refused", s);
    if (slash != std::string::npos) {
        std::string p = s.substr(slash + 1);
        if (p.empty() || p.size() > 2 || (p.size() == 2 && p[0] == '0') || atoi(p.c_str()) > 32 ||
            p.find_first_not_of("0123456789") != std::string::npos)
            Fail("accepted a bad prefix", s);
    }
}

void CheckCommands(const std::string& s) {
    Request req;
    CmdResult r;
    bool net = CheckIPv4OrNet(s) == Ipv4Check::kOk;
    bool noBlank = s.find(' ') == std::string::npos && !s.empty() && s != "-";
    if (noBlank && ParseCommand(33, "1 1 " + s + " 0 - 0 1", req, r) != net)
        Fail("the rule command and the parser disagree", s);
    if (net && noBlank && std::get<RuleAddRequest>(req).rule.src != s)
        Fail("the rule holds another address", s);
    uint32_t a = 0;
    bool addr = CheckIPv4(s, a) == Ipv4Check::kOk;
    if (ParseCommand(55, "eth0 " + s + " 255.255.255.0 - - -", req, r) && !addr)
        Fail("the manual address took what the parser refused", s);
    // An empty gateway field, or "-", is no gateway.
    if (ParseCommand(55, "eth0 10.1.2.3 255.0.0.0 " + s + " - -", req, r) && !addr && !s.empty() &&
        s != "-")
        Fail("the gateway took what the parser refused", s);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string s(reinterpret_cast<const char*>(data), size);
    CheckAddress(s);
    CheckNet(s);
    CheckCommands(s);
    return 0;
}
