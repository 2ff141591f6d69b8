// Parsers of single settings: on/off switches, kernel limits, the language,
// CPU and memory thresholds, path options and the commands without payload.
#include <climits>

#include "agent/commands/command_parser.h"
#include "agent/commands/parse_common.h"
#include "agent/commands/payload_parse.h"
#include "agent/commands/state_checks.h"

namespace nvagent {

namespace {

struct FlagRow {
    short cmd;
    const char* what;
};

const FlagRow kFlags[] = {
    {4, "Ignoring ICMP echo requests"},
    {5, "TCP SYN cookie protection"},
    {6, "Reuse of TIME_WAIT sockets"},
    {14, "The file monitor"},
    {16, "The process monitor"},
    {19, "The CPU monitor"},
    {21, "The memory monitor"},
    {26, "The disk-volume monitor"},
    {31, "The backup monitor"},
    {40, "FTP anonymous login"},
    {41, "FTP anonymous upload"},
    {42, "FTP anonymous directory creation"},
    {44, "FTP login of local users"},
    {45, "FTP writing"},
    {46, "The FTP server"},
    {49, "Writing to the Samba share"},
    {50, "The Samba server"},
};

struct KernelRow {
    short cmd;
    const char* what;
    unsigned long above;  // the value must be greater than this
};

const KernelRow kKernel[] = {
    {7, "The largest shared-memory segment", 0},    {8, "The shared-memory total", 0},
    {9, "The number of shared-memory segments", 0}, {10, "The thread maximum", 512},
    {11, "The file-handle maximum", 4096},
};

const KernelRow* FindKernel(short cmd) {
    for (const KernelRow& k : kKernel) {
        if (k.cmd == cmd)
            return &k;
    }
    return nullptr;
}

bool OnlyBlanks(const std::string& p) {
    return p.find_first_not_of(' ') == std::string::npos;
}

}  // namespace

const char* FlagSubject(short cmd) {
    for (const FlagRow& f : kFlags) {
        if (f.cmd == cmd)
            return f.what;
    }
    return "The setting";
}

const char* KernelSubject(short cmd) {
    const KernelRow* k = FindKernel(cmd);
    return k ? k->what : "The value";
}

CmdResult FlagUnchanged(short cmd, bool on) {
    return Unchanged(std::string(FlagSubject(cmd)) + " is already " + (on ? "on." : "off."));
}

CmdResult KernelUnchanged(short cmd, unsigned long value) {
    return Unchanged(std::string(KernelSubject(cmd)) + " is already " + std::to_string(value) +
                     ".");
}

bool ParseFlag(short cmd, const std::string& p, Request& req, CmdResult& r) {
    if (p == "1" || p == "0") {
        req = FlagRequest{cmd, p == "1"};
        return true;
    }
    // A switch form left at its blank initial value, or a toggle handed a
    // word that is neither choice, arrives blank or empty.
    if (OnlyBlanks(p)) {
        r = Malformed("No choice was made: " + std::string(FlagSubject(cmd)) +
                      " must be set to 1 (on) or 0 (off).");
    } else {
        r = Malformed("The setting must be 1 (on) or 0 (off), not \"" + p + "\".");
    }
    return false;
}

bool ParseKernel(short cmd, const std::string& p, Request& req, CmdResult& r) {
    const KernelRow* k = FindKernel(cmd);
    unsigned long long v = 0;
    DigitsResult d = ParseDigits(p, 4294967295ULL, v);
    if (d == DigitsResult::kNotDigits) {
        r = Malformed("The value must be decimal digits only.");
    } else if (d == DigitsResult::kTooBig) {
        r = Invalid("The value must not exceed 4294967295.");
    } else if (v <= k->above) {
        r = Invalid(std::string(k->what) + " must be above " + std::to_string(k->above) + ".");
    } else {
        req = KernelRequest{cmd, static_cast<unsigned long>(v)};
        return true;
    }
    return false;
}

bool ParseLanguage(short, const std::string& p, Request& req, CmdResult& r) {
    if (p.size() != 1 || p[0] < '0' || p[0] > '9') {
        r = Malformed("The language code must be one digit: 0, 1 or 2.");
        return false;
    }
    int code = p[0] - '0';
    if (code > 2) {
        r = Invalid("The language code must be 0, 1 or 2.");
        return false;
    }
    req = LanguageRequest{code};
    return true;
}

bool ParsePercent(short cmd, const std::string& p, Request& req, CmdResult& r) {
    const char* what = cmd == 17 ? "The CPU ceiling" : "The CPU floor";
    unsigned long long v = 0;
    DigitsResult d = ParseDigits(p, 100, v);
    if (d == DigitsResult::kNotDigits) {
        r = Malformed("The percentage must be decimal digits only.");
    } else if (d == DigitsResult::kTooBig) {
        r = Invalid(std::string(what) + " must be between 0 and 100.");
    } else {
        req = ThresholdRequest{cmd, static_cast<int>(v)};
        return true;
    }
    return false;
}

bool ParseMemCeil(short cmd, const std::string& p, Request& req, CmdResult& r) {
    unsigned long long v = 0;
    DigitsResult d = ParseDigits(p, INT_MAX, v);
    if (d == DigitsResult::kNotDigits) {
        r = Malformed("The value must be decimal digits only.");
    } else if (d == DigitsResult::kTooBig || v == 0) {
        r = Invalid("The memory ceiling must be above 0 and at most 2147483647 MB.");
    } else {
        req = ThresholdRequest{cmd, static_cast<int>(v)};
        return true;
    }
    return false;
}

bool ParsePathOption(short cmd, const std::string& p, Request& req, CmdResult& r) {
    const char* what = cmd == 43 ? "The FTP anonymous root" : "The Samba share path";
    if (p.empty()) {
        r = Invalid(std::string(what) + " was left empty.");
    } else if (!IsAbsolutePath(p, 4095)) {
        r = Invalid(std::string(what) + " must be an absolute path (starting with /).");
    } else if (cmd == 48 && p.back() == '\\') {
        // Samba joins a line ending in a backslash with the next one.
        r = Invalid("The Samba share path must not end with a backslash.");
    } else if (cmd == 48 && (p.back() == ' ' || p.back() == '\t')) {
        // Samba drops blanks at the end of a value.
        r = Invalid("The Samba share path must not end with a blank.");
    } else {
        req = PathRequest{cmd, p};
        return true;
    }
    return false;
}

bool ParseNoPayload(short cmd, const std::string& p, Request& req, CmdResult& r) {
    if (!p.empty()) {
        r = Malformed("This command takes no payload.");
        return false;
    }
    req = PlainRequest{cmd};
    return true;
}

}  // namespace nvagent
