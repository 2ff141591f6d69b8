// The command table: every command number mapped to its parser, and the
// form-token helpers the parsers share.
#include "agent/commands/command_parser.h"

#include <map>

#include "agent/commands/parse_common.h"
#include "agent/commands/payload_parse.h"

namespace nvagent {

namespace {

struct ParserEntry {
    short cmd;
    ParseFn fn;
};

// clang-format off
const ParserEntry kParsers[] = {
    {2, ParseLanguage},
    {4, ParseFlag}, {5, ParseFlag}, {6, ParseFlag},
    {7, ParseKernel}, {8, ParseKernel}, {9, ParseKernel}, {10, ParseKernel}, {11, ParseKernel},
    {13, ParseFileList}, {14, ParseFlag}, {15, ParseProcessList}, {16, ParseFlag},
    {17, ParsePercent}, {18, ParsePercent}, {19, ParseFlag}, {20, ParseMemCeil}, {21, ParseFlag},
    {23, ParseVolumeAdd}, {24, ParseDelete}, {25, ParseNoPayload}, {26, ParseFlag},
    {28, ParseBackupAdd}, {29, ParseDelete}, {30, ParseNoPayload}, {31, ParseFlag},
    {32, ParsePolicy}, {33, ParseRuleAdd}, {34, ParseDelete}, {35, ParseNoPayload},
    {36, ParsePolicy}, {37, ParseRuleAdd}, {38, ParseDelete}, {39, ParseNoPayload},
    {40, ParseFlag}, {41, ParseFlag}, {42, ParseFlag}, {43, ParsePathOption}, {44, ParseFlag},
    {45, ParseFlag}, {46, ParseFlag}, {47, ParseNoPayload},
    {48, ParsePathOption}, {49, ParseFlag}, {50, ParseFlag}, {51, ParseNoPayload},
    {52, ParseInterface}, {53, ParseInterface}, {54, ParseInterface}, {55, ParseInterfaceManual},
    {56, ParsePassword}, {57, ParseHostName}, {58, ParseDate}, {59, ParseTime},
    {60, ParsePasswordHash},
};
// clang-format on

// Numbers inside the set range that no page sends.
const short kReserved[] = {12, 22, 27, 61, 62, 63};

const std::map<short, ParseFn>& Table() {
    static const std::map<short, ParseFn> t = [] {
        std::map<short, ParseFn> m;
        for (const ParserEntry& e : kParsers)
            m[e.cmd] = e.fn;
        return m;
    }();
    return t;
}

bool IsReserved(short cmd) {
    for (short r : kReserved) {
        if (r == cmd)
            return true;
    }
    return false;
}

}  // namespace

bool ParseCommand(short cmd, const std::string& payload, Request& req, CmdResult& r) {
    auto it = Table().find(cmd);
    if (it != Table().end())
        return it->second(cmd, payload, req, r);
    if (IsReserved(cmd)) {
        r = {em_ActNotPrepare, "Command " + std::to_string(cmd) + " is not supported."};
    } else {
        r = {em_ActNotPrepare, "Command " + std::to_string(cmd) + " is not known."};
    }
    return false;
}

bool IsSetCommand(short cmd) {
    return Table().count(cmd) != 0;
}

bool FormTokens(const std::string& payload, size_t n, std::vector<std::string>& tok, CmdResult& r,
                const char* onBlanks) {
    tok = SplitBlanks(payload);
    if (tok.size() == n)
        return true;
    if (tok.size() > n) {
        r = Malformed(onBlanks);
        return false;
    }
    r = Malformed("Expected " + std::to_string(n) + (n == 1 ? " value" : " values") +
                  " separated by single blanks, got " + std::to_string(tok.size()) + ".");
    return false;
}

int Choice(const std::string& tok, int n) {
    return (tok.size() == 1 && tok[0] >= '1' && tok[0] < '1' + n) ? tok[0] - '0' : 0;
}

}  // namespace nvagent
