// Changing the agent's own settings in the configuration record.
#include "agent/commands/own_settings.h"

#include <algorithm>
#include <cstring>

#include "agent/commands/state_checks.h"
#include "agent/display_lines.h"

namespace nvagent {

namespace {

using C = cConf_Inf;

struct FlagField {
    short cmd;
    char cConf_Inf::*flag;
};

const FlagField kOwnFlags[] = {
    {14, &C::chFileMonitFlag}, {16, &C::chProcessMonitFlag}, {19, &C::chCpuMonitFlag},
    {21, &C::chMemMonitFlag},  {26, &C::chDVMonitFlag},      {31, &C::chBakForSizeFlag},
};

const FlagField* OwnFlag(short cmd) {
    for (const FlagField& f : kOwnFlags) {
        if (f.cmd == cmd)
            return &f;
    }
    return nullptr;
}

void CopyField(char (&dst)[256], const std::string& s) {
    memset(dst, 0, sizeof dst);
    memcpy(dst, s.data(), std::min(s.size(), sizeof dst - 1));
}

std::string Percent(int v) {
    return std::to_string(v) + "%";
}

template <class T>
CmdResult ClearList(std::vector<T>& records, tVecStr& lines, const char* what) {
    if (records.empty() && lines.empty())
        return Unchanged(std::string(what) + " is already empty.");
    records.clear();
    lines.clear();
    return Done();
}

template <class T>
bool EraseAt(std::vector<T>& v, unsigned long long index, CmdResult& r) {
    if (!CheckDeleteIndex(index, v.size(), r))
        return false;
    v.erase(v.begin() + static_cast<long>(index - 1));
    return true;
}

struct Apply {
    cConf_Inf& conf;
    int memTotal;

    CmdResult operator()(const FlagRequest& q) {
        char& flag = conf.*OwnFlag(q.cmd)->flag;
        char want = q.on ? '1' : '0';
        if (flag == want)
            return FlagUnchanged(q.cmd, q.on);
        flag = want;
        return Done();
    }
    CmdResult operator()(const LanguageRequest& q) {
        static const char* const kNames[] = {"English", "Chinese (GB2312)", "Chinese (UTF-8)"};
        if (conf.chLangCode == q.code)
            return Unchanged(std::string("The language is already ") + kNames[q.code] + ".");
        conf.chLangCode = static_cast<char>(q.code);
        return Done();
    }
    CmdResult operator()(const ListRequest& q) {
        bool files = q.cmd == 13;
        tVecStr& field = files ? conf.vFileMonitList : conf.vProcessMonitList;
        if (field == q.entries) {
            return Unchanged(
                std::string(files ? "The monitored-file list" : "The monitored-process list") +
                " is unchanged.");
        }
        field = q.entries;
        return Done();
    }
    CmdResult operator()(const ThresholdRequest& q) {
        CmdResult r;
        if (q.cmd == 17) {
            if (!CheckCpuCeil(q.value, conf.shCpuFloor, r))
                return r;
            if (q.value == conf.shCpuCeil)
                return Unchanged("The CPU ceiling is already " + Percent(q.value) + ".");
            conf.shCpuCeil = static_cast<short>(q.value);
        } else if (q.cmd == 18) {
            if (!CheckCpuFloor(q.value, conf.shCpuCeil, r))
                return r;
            if (q.value == conf.shCpuFloor)
                return Unchanged("The CPU floor is already " + Percent(q.value) + ".");
            conf.shCpuFloor = static_cast<short>(q.value);
        } else {
            if (!CheckMemCeil(q.value, memTotal, r))
                return r;
            if (q.value == conf.iMemCeil) {
                return Unchanged("The memory ceiling is already " + std::to_string(q.value) +
                                 " MB.");
            }
            conf.iMemCeil = q.value;
        }
        return Done();
    }
    CmdResult operator()(const VolumeAddRequest& q) {
        for (const cDiskVolume& e : conf.vDV) {
            if (q.partition == e.szPart)
                return Failed("The partition " + q.partition + " is already monitored.");
        }
        cDiskVolume d{};
        CopyField(d.szPart, q.partition);
        d.iCeil = q.ceil;
        d.iFloor = q.floor;
        d.iItv = q.interval;
        conf.vDV.push_back(d);
        conf.vsDV = VolumeLines(conf.vDV);
        return Done();
    }
    CmdResult operator()(const BackupAddRequest& q) {
        for (const cBakForSize& e : conf.vBakForSize) {
            if (q.file == e.szFileName)
                return Failed("The file " + q.file + " is already backed up.");
        }
        cBakForSize b{};
        CopyField(b.szFileName, q.file);
        CopyField(b.szBakDir, q.dir);
        b.iKilobyte = q.kilobytes;
        conf.vBakForSize.push_back(b);
        conf.vsBakForSize = BackupLines(conf.vBakForSize);
        return Done();
    }
    CmdResult operator()(const DeleteRequest& q) {
        CmdResult r;
        if (q.cmd == 24) {
            if (!EraseAt(conf.vDV, q.index, r))
                return r;
            conf.vsDV = VolumeLines(conf.vDV);
        } else {
            if (!EraseAt(conf.vBakForSize, q.index, r))
                return r;
            conf.vsBakForSize = BackupLines(conf.vBakForSize);
        }
        return Done();
    }
    CmdResult operator()(const PlainRequest& q) {
        if (q.cmd == 25)
            return ClearList(conf.vDV, conf.vsDV, "The disk-volume list");
        return ClearList(conf.vBakForSize, conf.vsBakForSize, "The backup list");
    }
    template <class Other>
    CmdResult operator()(const Other&) {
        return Failed("Not one of the agent's own settings.");
    }
};

struct IsOwn {
    bool operator()(const FlagRequest& q) const { return OwnFlag(q.cmd) != nullptr; }
    bool operator()(const LanguageRequest&) const { return true; }
    bool operator()(const ListRequest&) const { return true; }
    bool operator()(const ThresholdRequest&) const { return true; }
    bool operator()(const VolumeAddRequest&) const { return true; }
    bool operator()(const BackupAddRequest&) const { return true; }
    bool operator()(const DeleteRequest& q) const { return q.cmd == 24 || q.cmd == 29; }
    bool operator()(const PlainRequest& q) const { return q.cmd == 25 || q.cmd == 30; }
    template <class Other>
    bool operator()(const Other&) const {
        return false;
    }
};

}  // namespace

bool IsOwnSetting(const Request& req) {
    return std::visit(IsOwn{}, req);
}

CmdResult ApplyOwnSetting(cConf_Inf& conf, int memTotalMb, const Request& req) {
    return std::visit(Apply{conf, memTotalMb}, req);
}

}  // namespace nvagent
