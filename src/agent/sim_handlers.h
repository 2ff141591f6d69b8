// Declarations of the simulator's command handlers, grouped by the file that
// defines them, and the answer helpers they share.
#ifndef NV_AGENT_SIM_HANDLERS_H
#define NV_AGENT_SIM_HANDLERS_H

#include <string>
#include <vector>

#include "agent/sim_commands.h"
#include "link/result_codes.h"

namespace nvagent {

inline CmdResult Done() {
    return {em_ActSuccAll, ""};
}
inline CmdResult Malformed(const std::string& why) {
    return {em_ActPostCmdBuffFmtError, why};
}
inline CmdResult Invalid(const std::string& why) {
    return {em_ActPostValueNotValid, why};
}
inline CmdResult Failed(const std::string& why) {
    return {em_ActFail, why};
}
inline CmdResult Unchanged(const std::string& why) {
    return {em_ActNeedNoSet, why};
}

// Splits a form payload into exactly n blank-separated tokens; false when the
// count differs (answer em_ActPostCmdBuffFmtError).
bool FormTokens(const std::string& payload, size_t n, std::vector<std::string>& tok);
CmdResult WrongTokenCount(size_t n);

// A one-character flag of cConf_Inf set by "1" or "0" (Open/Close, Yes/No and
// the monitor switches).
struct FlagCommand {
    short cmd;
    char cConf_Inf::*flag;
    const char* what;  // subject of the detail sentence
};
const std::vector<FlagCommand>& FlagCommands();
CmdResult SetFlag(CmdContext& c, const FlagCommand& f, const std::string& p);

// A kernel limit of cConf_Inf: digits, above a minimum, 32-bit unsigned.
struct KernelCommand {
    short cmd;
    unsigned long cConf_Inf::*value;
    const char* what;
    unsigned long above;  // the value must be greater than this
};
const std::vector<KernelCommand>& KernelCommands();
CmdResult SetKernel(CmdContext& c, const KernelCommand& k, const std::string& p);

// cmd_settings.cpp
CmdResult SetLanguage(CmdContext& c, const std::string& p);
CmdResult SetCpuCeil(CmdContext& c, const std::string& p);
CmdResult SetCpuFloor(CmdContext& c, const std::string& p);
CmdResult SetMemCeil(CmdContext& c, const std::string& p);
CmdResult SetFtpRoot(CmdContext& c, const std::string& p);
CmdResult SetSambaPath(CmdContext& c, const std::string& p);
CmdResult RestoreFtp(CmdContext& c, const std::string& p);
CmdResult RestoreSamba(CmdContext& c, const std::string& p);

// cmd_lists.cpp
CmdResult SetFileList(CmdContext& c, const std::string& p);
CmdResult SetProcessList(CmdContext& c, const std::string& p);
CmdResult AddVolume(CmdContext& c, const std::string& p);
CmdResult DeleteVolume(CmdContext& c, const std::string& p);
CmdResult ClearVolumes(CmdContext& c, const std::string& p);
CmdResult AddBackup(CmdContext& c, const std::string& p);
CmdResult DeleteBackup(CmdContext& c, const std::string& p);
CmdResult ClearBackups(CmdContext& c, const std::string& p);

// cmd_firewall.cpp
CmdResult SetInputPolicy(CmdContext& c, const std::string& p);
CmdResult AddInputRule(CmdContext& c, const std::string& p);
CmdResult DeleteInputRule(CmdContext& c, const std::string& p);
CmdResult ClearInputRules(CmdContext& c, const std::string& p);
CmdResult SetOutputPolicy(CmdContext& c, const std::string& p);
CmdResult AddOutputRule(CmdContext& c, const std::string& p);
CmdResult DeleteOutputRule(CmdContext& c, const std::string& p);
CmdResult ClearOutputRules(CmdContext& c, const std::string& p);

// cmd_network.cpp
CmdResult InterfaceDown(CmdContext& c, const std::string& p);
CmdResult InterfaceUp(CmdContext& c, const std::string& p);
CmdResult InterfaceDhcp(CmdContext& c, const std::string& p);
CmdResult InterfaceManual(CmdContext& c, const std::string& p);

// cmd_system.cpp
CmdResult ChangePassword(CmdContext& c, const std::string& p);
CmdResult SetHostName(CmdContext& c, const std::string& p);
CmdResult SetDate(CmdContext& c, const std::string& p);
CmdResult SetTime(CmdContext& c, const std::string& p);

// cmd_lists.cpp, shared with cmd_firewall.cpp: the 1-based index token of a
// delete form over a list of count entries; false with the answer in r.
bool ParseDeleteIndex(const std::string& p, size_t count, size_t& index, CmdResult& r);

}  // namespace nvagent

#endif
