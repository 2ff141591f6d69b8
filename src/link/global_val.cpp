// The single shared state record and the pointer every function goes through.
#include "global_val.h"

cGlobalVal::cGlobalVal() {
    bThreadSwitchFileMonit = false;
    bThreadSwitchProcessMonit = false;
    bThreadSwitchCpuMonit = false;
    bThreadSwitchMemMonit = false;
    bThreadSwitchDVMonit = false;
    bThreadSwitchBakForSize = false;
    sDataDir = "/etc/norvane";
    sReqRetInfo = "";
    bStdout = false;
    sVsftpdConfFile = "";
    sSockName = "/dev/nvsock";
}

cGlobalVal g_Obj;
cGlobalVal* pg_Obj = &g_Obj;
