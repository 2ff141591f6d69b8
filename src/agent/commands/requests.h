// The typed requests that the command parsers make of payloads, one type per
// kind of change, and the refusal helpers the parsers and backends share.
// Both backends carry out the same requests, so a payload is judged once.
#ifndef NV_AGENT_COMMANDS_REQUESTS_H
#define NV_AGENT_COMMANDS_REQUESTS_H

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "agent/backend.h"
#include "link/result_codes.h"

namespace nvagent {

enum FwProto { kProtoTcp = 1, kProtoUdp = 2 };
enum FwAction { kActAccept = 1, kActDrop = 2, kActReject = 3 };
enum FwChain { kChainInput = 0, kChainOutput = 1 };

// One firewall rule; an empty address matches any address, port 0 any port.
struct FwRule {
    int proto = kProtoTcp;
    std::string src;
    int sport = 0;
    std::string dst;
    int dport = 0;
    int action = kActAccept;
};

enum IfMode { kModeStatic = 1, kModeDynamic = 2 };

// One network interface; empty address fields are unset.
struct NetInterface {
    int index = 0;  // the kernel's interface index; 0: numbered by position
    std::string name;
    std::string mac;
    int mode = kModeStatic;
    bool up = true;
    std::string ip;
    std::string mask;
    std::string gateway;
    std::string dns1;
    std::string dns2;
};

// An on/off switch: kernel flags, monitor switches, FTP and Samba options.
struct FlagRequest {
    short cmd;
    bool on;
};
// A kernel limit (7..11), already within its own minimum and 32 bits.
struct KernelRequest {
    short cmd;
    unsigned long value;
};
struct LanguageRequest {
    int code;  // 0 English, 1 Chinese GB2312, 2 Chinese UTF-8
};
// A monitored list replaced as a whole (13 files, 15 processes): entries
// checked, duplicates merged.
struct ListRequest {
    short cmd;
    std::vector<std::string> entries;
};
// CPU ceiling (17), CPU floor (18) in percent, memory ceiling (20) in MB.
struct ThresholdRequest {
    short cmd;
    int value;
};
// An absolute path option: the FTP anonymous root (43), the Samba share (48).
struct PathRequest {
    short cmd;
    std::string path;
};
// A command without payload: clears (25, 30, 35, 39) and restores (47, 51).
struct PlainRequest {
    short cmd;
};
struct VolumeAddRequest {
    std::string partition;
    int ceil, floor, interval;
};
struct BackupAddRequest {
    std::string file, dir;
    int kilobytes;
};
// Delete the entry with this 1-based index (24, 29, 34, 38); the backend
// checks it against its list with CheckDeleteIndex.
struct DeleteRequest {
    short cmd;
    unsigned long long index;
};
struct PolicyRequest {
    FwChain chain;
    int policy;  // FwAction
};
struct RuleAddRequest {
    FwChain chain;
    bool top;  // highest priority: inserted first, else appended
    FwRule rule;
};
// Interface down (52), up (53), automatic addressing (54).
struct InterfaceRequest {
    short cmd;
    std::string name;
};
// Manual addressing (55); empty gateway or DNS fields are unset.
struct InterfaceManualRequest {
    std::string name, ip, mask, gateway, dns1, dns2;
};
// A password (56), or a crypt(3) hash set as it is (60).
struct PasswordRequest {
    std::string user, password;
    bool hashed = false;
};
struct HostNameRequest {
    std::string name;
};
// A calendar date (58) or a time of day (59), each already in range.
struct DateRequest {
    int year, month, day;
};
struct TimeRequest {
    int hour, minute, second;
};

using Request =
    std::variant<FlagRequest, KernelRequest, LanguageRequest, ListRequest, ThresholdRequest,
                 PathRequest, PlainRequest, VolumeAddRequest, BackupAddRequest, DeleteRequest,
                 PolicyRequest, RuleAddRequest, InterfaceRequest, InterfaceManualRequest,
                 PasswordRequest, HostNameRequest, DateRequest, TimeRequest>;

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

}  // namespace nvagent

#endif
