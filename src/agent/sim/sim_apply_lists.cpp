// The simulator's monitored lists: files, processes, disk volumes and
// backups. Every change regenerates the list's display lines.
#include <algorithm>
#include <cstring>

#include "agent/commands/state_checks.h"
#include "agent/sim/display_lines.h"
#include "agent/sim/sim_apply.h"

namespace nvagent {

namespace {

void CopyField(char (&dst)[256], const std::string& s) {
    memset(dst, 0, sizeof dst);
    memcpy(dst, s.data(), std::min(s.size(), sizeof dst - 1));
}

template <class T>
CmdResult ClearList(std::vector<T>& records, tVecStr& lines, const char* what) {
    if (records.empty() && lines.empty())
        return Unchanged(std::string(what) + " is already empty.");
    records.clear();
    lines.clear();
    return Done();
}

}  // namespace

CmdResult SimList(SimContext& c, const ListRequest& q) {
    bool files = q.cmd == 13;
    tVecStr& field = files ? c.st.conf.vFileMonitList : c.st.conf.vProcessMonitList;
    if (field == q.entries) {
        return Unchanged(
            std::string(files ? "The monitored-file list" : "The monitored-process list") +
            " is unchanged.");
    }
    field = q.entries;
    return Done();
}

CmdResult SimVolumeAdd(SimContext& c, const VolumeAddRequest& q) {
    std::vector<cDiskVolume>& v = c.st.conf.vDV;
    for (const cDiskVolume& e : v) {
        if (q.partition == e.szPart)
            return Failed("The partition " + q.partition + " is already monitored.");
    }
    cDiskVolume d{};
    CopyField(d.szPart, q.partition);
    d.iCeil = q.ceil;
    d.iFloor = q.floor;
    d.iItv = q.interval;
    v.push_back(d);
    c.st.conf.vsDV = VolumeLines(v);
    return Done();
}

CmdResult SimBackupAdd(SimContext& c, const BackupAddRequest& q) {
    std::vector<cBakForSize>& v = c.st.conf.vBakForSize;
    for (const cBakForSize& e : v) {
        if (q.file == e.szFileName)
            return Failed("The file " + q.file + " is already backed up.");
    }
    cBakForSize b{};
    CopyField(b.szFileName, q.file);
    CopyField(b.szBakDir, q.dir);
    b.iKilobyte = q.kilobytes;
    v.push_back(b);
    c.st.conf.vsBakForSize = BackupLines(v);
    return Done();
}

CmdResult SimListDelete(SimContext& c, const DeleteRequest& q) {
    CmdResult r;
    if (q.cmd == 24) {
        std::vector<cDiskVolume>& v = c.st.conf.vDV;
        if (!CheckDeleteIndex(q.index, v.size(), r))
            return r;
        v.erase(v.begin() + static_cast<long>(q.index - 1));
        c.st.conf.vsDV = VolumeLines(v);
    } else {
        std::vector<cBakForSize>& v = c.st.conf.vBakForSize;
        if (!CheckDeleteIndex(q.index, v.size(), r))
            return r;
        v.erase(v.begin() + static_cast<long>(q.index - 1));
        c.st.conf.vsBakForSize = BackupLines(v);
    }
    return Done();
}

CmdResult SimListClear(SimContext& c, short cmd) {
    if (cmd == 25)
        return ClearList(c.st.conf.vDV, c.st.conf.vsDV, "The disk-volume list");
    return ClearList(c.st.conf.vBakForSize, c.st.conf.vsBakForSize, "The backup list");
}

}  // namespace nvagent
