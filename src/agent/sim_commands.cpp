// The command table: every command number mapped to its handler, built from
// the flag and kernel-limit tables and the list of the remaining handlers.
#include "agent/sim_commands.h"

#include "agent/payload_parse.h"
#include "agent/sim_handlers.h"

namespace nvagent {

namespace {

struct CommandEntry {
    short cmd;
    CmdResult (*fn)(CmdContext&, const std::string&);
};

const CommandEntry kHandlers[] = {
    {2, SetLanguage},      {13, SetFileList},   {15, SetProcessList},   {17, SetCpuCeil},
    {18, SetCpuFloor},     {20, SetMemCeil},    {23, AddVolume},        {24, DeleteVolume},
    {25, ClearVolumes},    {28, AddBackup},     {29, DeleteBackup},     {30, ClearBackups},
    {32, SetInputPolicy},  {33, AddInputRule},  {34, DeleteInputRule},  {35, ClearInputRules},
    {36, SetOutputPolicy}, {37, AddOutputRule}, {38, DeleteOutputRule}, {39, ClearOutputRules},
    {43, SetFtpRoot},      {47, RestoreFtp},    {48, SetSambaPath},     {51, RestoreSamba},
    {52, InterfaceDown},   {53, InterfaceUp},   {54, InterfaceDhcp},    {55, InterfaceManual},
    {56, ChangePassword},  {57, SetHostName},   {58, SetDate},          {59, SetTime},
};

// Numbers inside the set range that no page sends.
const short kReserved[] = {12, 22, 27, 60, 61, 62, 63};

std::map<short, CmdHandler> BuildTable() {
    std::map<short, CmdHandler> t;
    for (const FlagCommand& f : FlagCommands()) {
        t[f.cmd] = [&f](CmdContext& c, const std::string& p) { return SetFlag(c, f, p); };
    }
    for (const KernelCommand& k : KernelCommands()) {
        t[k.cmd] = [&k](CmdContext& c, const std::string& p) { return SetKernel(c, k, p); };
    }
    for (const CommandEntry& e : kHandlers)
        t[e.cmd] = e.fn;
    for (short r : kReserved) {
        t[r] = [r](CmdContext&, const std::string&) {
            return CmdResult{em_ActNotPrepare,
                             "Command " + std::to_string(r) + " is not supported."};
        };
    }
    return t;
}

}  // namespace

const std::map<short, CmdHandler>& CommandTable() {
    static const std::map<short, CmdHandler> table = BuildTable();
    return table;
}

CmdResult UnknownCommand(short cmd) {
    return {em_ActNotPrepare, "Command " + std::to_string(cmd) + " is not known."};
}

bool FormTokens(const std::string& payload, size_t n, std::vector<std::string>& tok) {
    tok = SplitBlanks(payload);
    return tok.size() == n;
}

CmdResult WrongTokenCount(size_t n) {
    return Malformed("Expected " + std::to_string(n) + (n == 1 ? " value" : " values") +
                     " separated by single blanks.");
}

}  // namespace nvagent
