// Parsers of the monitored lists: the file and process lists, the disk-volume
// and backup add forms, and the delete-by-index forms.
#include <climits>
#include <unordered_set>

#include "agent/commands/parse_common.h"
#include "agent/commands/payload_parse.h"

namespace nvagent {

namespace {

// The entries of a list payload, duplicates merged (first place kept); false
// with the answer in r when an entry fails the check.
template <class Check>
bool ParseList(const std::string& p, Check ok, const char* rule, std::vector<std::string>& out,
               CmdResult& r) {
    out.clear();
    std::unordered_set<std::string> seen;
    for (std::string& e : SplitListLines(p)) {
        if (!ok(e)) {
            r = Invalid("\"" + e + "\" " + rule);
            return false;
        }
        if (seen.insert(e).second)
            out.push_back(std::move(e));
    }
    return true;
}

// A process entry is a command line: a program name found in PATH or an
// absolute path, then its arguments after blanks.
bool IsProcessEntry(const std::string& s) {
    if (s.empty() || s.size() > 255 || !IsPlainText(s))
        return false;
    std::string program = s.substr(0, s.find(' '));
    return program[0] == '/' || program.find('/') == std::string::npos;
}

// A required number field of a form; false with the answer in r.
bool FormNumber(const std::string& tok, const char* what, unsigned long long min, int& v,
                CmdResult& r) {
    unsigned long long n = 0;
    if (IsEmptyField(tok)) {
        r = Invalid(std::string(what) + " was left empty.");
        return false;
    }
    if (ParseDigits(tok, INT_MAX, n) != DigitsResult::kOk || n < min) {
        r = Invalid(std::string(what) + " must be a whole number from " + std::to_string(min) +
                    " to 2147483647, not \"" + tok + "\".");
        return false;
    }
    v = static_cast<int>(n);
    return true;
}

// A required absolute path field that must fit a 256-byte record array.
bool FormPath(const std::string& tok, const char* what, CmdResult& r) {
    if (IsEmptyField(tok)) {
        r = Invalid(std::string(what) + " was left empty.");
    } else if (!IsAbsolutePath(tok, 255)) {
        r = Invalid(std::string(what) + " must be an absolute path of at most 255 bytes.");
    } else {
        return true;
    }
    return false;
}

// A backup path must name one place plainly and must not reach the
// kernel's files: no "." or ".." parts, nothing under /proc, /sys or /dev.
bool FormBackupPath(const std::string& tok, const char* what, CmdResult& r) {
    if (!FormPath(tok, what, r))
        return false;
    std::string first;
    size_t at = 0;
    while (at < tok.size()) {
        size_t slash = tok.find('/', at);
        std::string part = tok.substr(at, slash == std::string::npos ? slash : slash - at);
        at = slash == std::string::npos ? tok.size() : slash + 1;
        if (part == "." || part == "..") {
            r = Invalid(std::string(what) + " must not contain \".\" or \"..\" parts.");
            return false;
        }
        if (first.empty())
            first = part;
    }
    if (first == "proc" || first == "sys" || first == "dev") {
        r = Invalid(std::string(what) + " must not lie under /proc, /sys or /dev.");
        return false;
    }
    return true;
}

}  // namespace

bool ParseFileList(short cmd, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> v;
    auto ok = [](const std::string& e) { return IsAbsolutePath(e, 4095); };
    if (!ParseList(p, ok, "is not an absolute path of UTF-8 text.", v, r))
        return false;
    req = ListRequest{cmd, std::move(v)};
    return true;
}

bool ParseProcessList(short cmd, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> v;
    if (!ParseList(p, IsProcessEntry,
                   "is not a command line (a program name or an absolute path, then its "
                   "arguments; UTF-8 text of at most 255 bytes).",
                   v, r)) {
        return false;
    }
    req = ListRequest{cmd, std::move(v)};
    return true;
}

bool ParseVolumeAdd(short, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 4, tok, r, "A partition, ceiling, floor or interval cannot contain blanks."))
        return false;
    VolumeAddRequest v{tok[0], 0, 0, 0};
    if (!FormPath(tok[0], "The partition", r) || !FormNumber(tok[1], "The ceiling", 0, v.ceil, r) ||
        !FormNumber(tok[2], "The floor", 0, v.floor, r) ||
        !FormNumber(tok[3], "The interval", 0, v.interval, r)) {
        return false;
    }
    if (v.floor > v.ceil) {
        r = Invalid("The floor (" + tok[2] + " MB) must not be above the ceiling (" + tok[1] +
                    " MB).");
        return false;
    }
    req = v;
    return true;
}

bool ParseBackupAdd(short, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 3, tok, r, "A file, backup directory or size cannot contain blanks."))
        return false;
    BackupAddRequest b{tok[0], tok[1], 0};
    if (!FormBackupPath(tok[0], "The file", r) ||
        !FormBackupPath(tok[1], "The backup directory", r) ||
        !FormNumber(tok[2], "The backup size", 1, b.kilobytes, r)) {
        return false;
    }
    req = b;
    return true;
}

bool ParseDelete(short cmd, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    unsigned long long n = 0;
    if (!FormTokens(p, 1, tok, r, "An index cannot contain blanks."))
        return false;
    if (IsEmptyField(tok[0])) {
        r = Invalid("No index was given.");
    } else if (ParseDigits(tok[0], ULLONG_MAX, n) != DigitsResult::kOk) {
        r = Invalid("The index must be a whole number, not \"" + tok[0] + "\".");
    } else if (n == 0) {
        r = Invalid("The entries are numbered from 1.");
    } else {
        req = DeleteRequest{cmd, n};
        return true;
    }
    return false;
}

}  // namespace nvagent
