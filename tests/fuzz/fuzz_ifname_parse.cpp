// Fuzz target: arbitrary bytes as an interface name. A name the parser
// accepts is one the kernel accepts (1..15 bytes, no "/", ":" or blank, not
// "." or ".."), that no tool reads as an option (no leading "-") and that a
// glob matches only literally (networkd's Name= is a glob): checked against
// fnmatch. The interface commands must take exactly the names the parser
// takes, and carry them unchanged.
#include <fnmatch.h>

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
    fprintf(stderr, "fuzz_ifname_parse: %s: \"%s\"\n", what.c_str(), s.c_str());
    abort();
}

bool KernelTakes(const std::string& s) {
    if (s.empty() || s.size() > 15 || s == "." || s == "..")
        return false;
    for (unsigned char ch : s) {
        if (ch == '/' || ch == ':' || ch == 0 || ch == ' ' || (ch >= '\t' && ch <= '\r'))
            return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string s(reinterpret_cast<const char*>(data), size);
    bool ok = CheckInterfaceName(s) == IfNameCheck::kOk;
    if (ok) {
        if (!KernelTakes(s))
            Fail("accepted a name the kernel refuses", s);
        if (s[0] == '-')
            Fail("accepted an option", s);
        // A literal pattern matches itself and nothing longer or shorter.
        if (fnmatch(s.c_str(), s.c_str(), 0) != 0 ||
            fnmatch(s.c_str(), (s + "0").c_str(), 0) == 0 ||
            fnmatch((s + "0").c_str(), s.c_str(), 0) == 0 ||
            (s.size() > 1 && fnmatch(s.c_str(), s.substr(1).c_str(), 0) == 0))
            Fail("accepted a glob", s);
    }
    Request req;
    CmdResult r;
    bool blank = s.find(' ') != std::string::npos || s == "-";
    for (short cmd : {52, 53, 54}) {
        bool took = ParseCommand(cmd, s, req, r);
        if (!blank && took != ok)
            Fail("the command and the parser disagree", s);
        if (took && std::get<InterfaceRequest>(req).name != s)
            Fail("the command holds another name", s);
        if (!took && r.sDetail.size() >= 78)
            Fail("a detail does not fit the information line", r.sDetail);
    }
    if (ParseCommand(55, s + " 10.0.0.5 255.0.0.0 - - -", req, r) && !ok)
        Fail("the manual address took a name the parser refused", s);
    return 0;
}
