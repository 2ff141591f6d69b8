// What the per-domain parsers share: the parser signature, form tokens and
// the declarations of every parser, grouped by the file that defines it.
#ifndef NV_AGENT_COMMANDS_PARSE_COMMON_H
#define NV_AGENT_COMMANDS_PARSE_COMMON_H

#include <string>
#include <vector>

#include "agent/commands/requests.h"

namespace nvagent {

using ParseFn = bool (*)(short cmd, const std::string& p, Request& req, CmdResult& r);

// Splits a form payload into exactly n blank-separated tokens; false with
// the answer (em_ActPostCmdBuffFmtError) in r when the count differs. More
// tokens than fields means a field held a blank, which onBlanks says in the
// user's terms ("A host name cannot contain blanks."); fewer, which no form
// sends, gets the count.
bool FormTokens(const std::string& payload, size_t n, std::vector<std::string>& tok, CmdResult& r,
                const char* onBlanks);

// "1" .. "n" as 1 .. n, else 0.
int Choice(const std::string& tok, int n);

// parse_settings.cpp
bool ParseFlag(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseKernel(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseLanguage(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParsePercent(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseMemCeil(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParsePathOption(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseNoPayload(short cmd, const std::string& p, Request& req, CmdResult& r);

// parse_lists.cpp
bool ParseFileList(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseProcessList(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseVolumeAdd(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseBackupAdd(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseDelete(short cmd, const std::string& p, Request& req, CmdResult& r);

// parse_firewall.cpp
bool ParsePolicy(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseRuleAdd(short cmd, const std::string& p, Request& req, CmdResult& r);

// parse_network.cpp
bool ParseInterface(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseInterfaceManual(short cmd, const std::string& p, Request& req, CmdResult& r);

// parse_system.cpp
bool ParsePassword(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParsePasswordHash(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseHostName(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseDate(short cmd, const std::string& p, Request& req, CmdResult& r);
bool ParseTime(short cmd, const std::string& p, Request& req, CmdResult& r);

}  // namespace nvagent

#endif
