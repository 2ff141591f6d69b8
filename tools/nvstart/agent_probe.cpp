// The check request of nvstart: the link's GetObjInfo on a chosen socket,
// with the log left off (nvstart keeps no log of its own).
#include "agent_probe.h"

#include "cmdclient/cmd_client.h"
#include "link/ui_interface.h"

ProbeResult ProbeAgent(const std::string& path, int timeoutMs, std::string& why) {
    static bool s_bMapsFilled = false;
    if (!s_bMapsFilled) {
        SetName2Idx(pg_Obj);
        SetErrMap(pg_Obj);
        s_bMapsFilled = true;
    }
    pg_Obj->c_LOG_Level = 0;
    pg_Obj->sSockName = path;
    g_iRequestTimeoutMs = timeoutMs;
    int iRet = GetObjInfo();
    if (iRet == em_OK || iRet == em_ActSuccAll)
        return ProbeResult::kAnswers;
    if (iRet == ERR_CONNECT_FAILED)
        return ProbeResult::kNoAgent;
    const char* pcText = GetOperatingInfoStr(iRet);
    why = pcText && *pcText ? pcText : "result code " + std::to_string(iRet);
    return ProbeResult::kNotAgent;
}
