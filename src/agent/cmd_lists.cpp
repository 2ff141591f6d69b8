// Handlers of the monitored lists: files, processes, disk volumes and
// backups. Every change regenerates the list's display lines.
#include <algorithm>
#include <climits>
#include <cstring>

#include "agent/display_lines.h"
#include "agent/payload_parse.h"
#include "agent/sim_handlers.h"

namespace nvagent {

namespace {

// The entries of a list payload, duplicates merged (first place kept); false
// with the answer in r when an entry fails the check.
template <class Check>
bool ParseList(const std::string& p, Check ok, const char* rule, tVecStr& out, CmdResult& r) {
    out.clear();
    for (const std::string& e : SplitListLines(p)) {
        if (!ok(e)) {
            r = Invalid("\"" + e + "\" " + rule);
            return false;
        }
        if (std::find(out.begin(), out.end(), e) == out.end())
            out.push_back(e);
    }
    return true;
}

CmdResult ReplaceList(tVecStr& field, tVecStr v, const char* what) {
    if (field == v)
        return Unchanged(std::string(what) + " is unchanged.");
    field = std::move(v);
    return Done();
}

bool IsProcessName(const std::string& s) {
    return !s.empty() && s.size() <= 255 && s.find('/') == std::string::npos && IsPlainText(s);
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
                    " to 2147483647.");
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

void CopyField(char (&dst)[256], const std::string& s) {
    memset(dst, 0, sizeof dst);
    memcpy(dst, s.data(), s.size());
}

template <class T>
CmdResult ClearList(const std::string& p, std::vector<T>& records, tVecStr& lines,
                    const char* what) {
    if (!p.empty())
        return Malformed("This command takes no payload.");
    if (records.empty() && lines.empty())
        return Unchanged(std::string(what) + " is already empty.");
    records.clear();
    lines.clear();
    return Done();
}

}  // namespace

bool ParseDeleteIndex(const std::string& p, size_t count, size_t& index, CmdResult& r) {
    std::vector<std::string> tok;
    unsigned long long n = 0;
    if (!FormTokens(p, 1, tok)) {
        r = WrongTokenCount(1);
    } else if (IsEmptyField(tok[0])) {
        r = Invalid("No index was given.");
    } else if (ParseDigits(tok[0], ULLONG_MAX, n) != DigitsResult::kOk) {
        r = Invalid("The index must be a whole number.");
    } else if (n == 0 || n > count) {
        r = Invalid(count == 0
                        ? std::string("The list is empty.")
                        : "There is no entry " + tok[0] + "; the entries are numbered 1 to " +
                              std::to_string(count) + ".");
    } else {
        index = static_cast<size_t>(n - 1);
        return true;
    }
    return false;
}

CmdResult SetFileList(CmdContext& c, const std::string& p) {
    tVecStr v;
    CmdResult r;
    auto ok = [](const std::string& e) { return IsAbsolutePath(e, 4095); };
    if (!ParseList(p, ok, "is not an absolute path of UTF-8 text.", v, r))
        return r;
    return ReplaceList(c.st.conf.vFileMonitList, std::move(v), "The monitored-file list");
}

CmdResult SetProcessList(CmdContext& c, const std::string& p) {
    tVecStr v;
    CmdResult r;
    if (!ParseList(p, IsProcessName,
                   "is not a process name (UTF-8 text without \"/\", at most 255 bytes).", v, r)) {
        return r;
    }
    return ReplaceList(c.st.conf.vProcessMonitList, std::move(v), "The monitored-process list");
}

CmdResult AddVolume(CmdContext& c, const std::string& p) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 4, tok))
        return WrongTokenCount(4);
    cDiskVolume d{};
    CmdResult r;
    if (!FormPath(tok[0], "The partition", r) ||
        !FormNumber(tok[1], "The ceiling", 0, d.iCeil, r) ||
        !FormNumber(tok[2], "The floor", 0, d.iFloor, r) ||
        !FormNumber(tok[3], "The interval", 0, d.iItv, r)) {
        return r;
    }
    if (d.iFloor > d.iCeil)
        return Invalid("The floor must not be above the ceiling.");
    std::vector<cDiskVolume>& v = c.st.conf.vDV;
    for (const cDiskVolume& e : v) {
        if (tok[0] == e.szPart)
            return Failed("The partition " + tok[0] + " is already monitored.");
    }
    CopyField(d.szPart, tok[0]);
    v.push_back(d);
    c.st.conf.vsDV = VolumeLines(v);
    return Done();
}

CmdResult DeleteVolume(CmdContext& c, const std::string& p) {
    size_t i = 0;
    CmdResult r;
    std::vector<cDiskVolume>& v = c.st.conf.vDV;
    if (!ParseDeleteIndex(p, v.size(), i, r))
        return r;
    v.erase(v.begin() + static_cast<long>(i));
    c.st.conf.vsDV = VolumeLines(v);
    return Done();
}

CmdResult ClearVolumes(CmdContext& c, const std::string& p) {
    return ClearList(p, c.st.conf.vDV, c.st.conf.vsDV, "The disk-volume list");
}

CmdResult AddBackup(CmdContext& c, const std::string& p) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 3, tok))
        return WrongTokenCount(3);
    cBakForSize b{};
    CmdResult r;
    if (!FormPath(tok[0], "The file", r) || !FormPath(tok[1], "The backup directory", r) ||
        !FormNumber(tok[2], "The backup size", 1, b.iKilobyte, r)) {
        return r;
    }
    std::vector<cBakForSize>& v = c.st.conf.vBakForSize;
    for (const cBakForSize& e : v) {
        if (tok[0] == e.szFileName)
            return Failed("The file " + tok[0] + " is already backed up.");
    }
    CopyField(b.szFileName, tok[0]);
    CopyField(b.szBakDir, tok[1]);
    v.push_back(b);
    c.st.conf.vsBakForSize = BackupLines(v);
    return Done();
}

CmdResult DeleteBackup(CmdContext& c, const std::string& p) {
    size_t i = 0;
    CmdResult r;
    std::vector<cBakForSize>& v = c.st.conf.vBakForSize;
    if (!ParseDeleteIndex(p, v.size(), i, r))
        return r;
    v.erase(v.begin() + static_cast<long>(i));
    c.st.conf.vsBakForSize = BackupLines(v);
    return Done();
}

CmdResult ClearBackups(CmdContext& c, const std::string& p) {
    return ClearList(p, c.st.conf.vBakForSize, c.st.conf.vsBakForSize, "The backup list");
}

}  // namespace nvagent
