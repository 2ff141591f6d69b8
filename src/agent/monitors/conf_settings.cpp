// Translating between the state record's monitor fields and MonitorSettings.
#include "agent/monitors/conf_settings.h"

#include <cstring>

namespace nvmonit {

namespace {

std::string Field(const char* s, size_t cap) {
    return std::string(s, strnlen(s, cap));
}

char Flag(bool on) {
    return on ? '1' : '0';
}

}  // namespace

MonitorSettings SettingsFromConf(const cConf_Inf& c, const std::string& dataDir, int intervalMs) {
    MonitorSettings s;
    s.sDataDir = dataDir;
    s.iIntervalMs = intervalMs;
    s.bFileOn = c.chFileMonitFlag == '1';
    s.bProcessOn = c.chProcessMonitFlag == '1';
    s.bCpuOn = c.chCpuMonitFlag == '1';
    s.bMemoryOn = c.chMemMonitFlag == '1';
    s.bVolumeOn = c.chDVMonitFlag == '1';
    s.bBackupOn = c.chBakForSizeFlag == '1';
    s.vFiles = c.vFileMonitList;
    s.vProcesses = c.vProcessMonitList;
    s.iCpuCeilPercent = c.shCpuCeil;
    s.iCpuFloorPercent = c.shCpuFloor;
    s.llMemCeilMb = c.iMemCeil;
    for (const cDiskVolume& d : c.vDV)
        s.vVolumes.push_back({Field(d.szPart, sizeof d.szPart), d.iCeil, d.iFloor, d.iItv});
    for (const cBakForSize& b : c.vBakForSize) {
        s.vBackups.push_back({Field(b.szFileName, sizeof b.szFileName),
                              Field(b.szBakDir, sizeof b.szBakDir), b.iKilobyte});
    }
    return s;
}

void StoreSwitches(const MonitorSettings& s, cConf_Inf& c) {
    c.chFileMonitFlag = Flag(s.bFileOn);
    c.chProcessMonitFlag = Flag(s.bProcessOn);
    c.chCpuMonitFlag = Flag(s.bCpuOn);
    c.chMemMonitFlag = Flag(s.bMemoryOn);
    c.chDVMonitFlag = Flag(s.bVolumeOn);
    c.chBakForSizeFlag = Flag(s.bBackupOn);
}

}  // namespace nvmonit
