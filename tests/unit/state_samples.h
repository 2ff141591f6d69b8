// Sample records with every field set, for codec and client tests.
#ifndef NV_TESTS_STATE_SAMPLES_H
#define NV_TESTS_STATE_SAMPLES_H

#include <cstring>

#include "link/state_record.h"

inline void FillSampleState(cConf_Inf& c, cSvrState& s) {
    c.chIcmpEchoIgnoreAll = '1';
    c.chTcpSyncookies = '0';
    c.chTcpTwReuse = '1';
    c.ulShmMax = 33554432UL;
    c.ulShmAll = 2097152UL;
    c.ulShmMni = 4096;
    c.ulThreadMax = 63477;
    c.ulFileMax = 398410;
    c.vFileMonitList = {"/etc/passwd", "/etc/shadow"};
    c.chFileMonitFlag = '1';
    c.vProcessMonitList = {"sshd"};
    c.shCpuCeil = 90;
    c.shCpuFloor = 5;
    c.iMemCeil = 3500;
    cDiskVolume dv;
    strcpy(dv.szPart, "/dev/vdb1");
    dv.iCeil = 1000;
    dv.iFloor = 100;
    dv.iItv = 50;
    c.vDV = {dv};
    c.vsDV = {"1  /dev/vdb1  1000  100  50"};
    cBakForSize bk;
    strcpy(bk.szFileName, "/var/log/syslog");
    strcpy(bk.szBakDir, "/backup");
    bk.iKilobyte = 2048;
    c.vBakForSize = {bk};
    c.vsBakForSize = {"1  /var/log/syslog  /backup  2048"};
    c.sVsftpdAnonRoot = "/srv/ftp";
    c.sSambaSharePath = "/srv/share";
    c.chOSReleaseVersion = emOSUbuntu;
    c.chLangCode = emChUtf8;
    c.iSeqLinkRcInit = 3;
    c.sHostname = "web01";
    c.sNowDate = "2026-11-22";
    c.sNowTime = "10:11:12";
    c.sVersion = "2.4.1";
    cTcpListen tl;
    strcpy(tl.szListenAddr, "0.0.0.0:22");
    tl.iPid = 812;
    strcpy(tl.szProgramName, "sshd");
    s.vTcpListen = {tl};
    s.vsTcpListenList = {"0.0.0.0  22  812  sshd"};
    s.iMemTotal = 3900;
    s.iMemUse = 1200;
    s.iMemFree = 2700;
    cDiskInfo di;
    strcpy(di.szPart, "/dev/vda1");
    strcpy(di.szFS, "ext4");
    di.iSizeTotal = 40000;
    di.iUsed = 12000;
    di.iAvailable = 28000;
    strcpy(di.szMountOn, "/");
    s.vDiskInfo = {di};
    s.vsDiskInfoList = {"/dev/vda1 ext4 40000 12000 28000 /"};
    s.vsIptablesInputList = {"1 ACCEPT tcp any any 22"};
    s.chIptablesInputPolicy = '2';
    s.vsIptablesOutputList = {};
    s.chIptablesOutputPolicy = '1';
    s.vsIfconfigList = {"1 eth0 52:54:00:12:34:56 static up 10.0.0.5 255.255.255.0"};
}

#endif
