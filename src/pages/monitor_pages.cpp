// The resource monitor pages: monitored files and processes, CPU and memory
// thresholds, and memory use.
#include "link/cmd_catalogue.h"
#include "link/global_val.h"
#include "pages/menu_struct.h"
#include "pages/page_build.h"
#include "pages/page_rows.h"
#include "shell/nv_log.h"
#include "strings/com_str.h"
#include "strings/help_id.h"

namespace {

// A monitored list with its switch: the file and the process pages.
struct ST_LIST_MONIT {
    char cConf_Inf::*pchFlag;
    tVecStr cConf_Inf::*pvsList;
    int iFlagHelp;
    int iListHelp;
    const char** pcListLabel;
    UPDATE_FUNC pfnToggle;
    UPDATE_FUNC pfnList;
    const char* pcFlagLog;   // "...:%c"
    const char* pcCountLog;  // "...:%d"
    const char* pcListLog;
};

const ST_LIST_MONIT g_stFileMonit = {&cConf_Inf::chFileMonitFlag,
                                     &cConf_Inf::vFileMonitList,
                                     EN_FILE_MF,
                                     EN_FILE_ML,
                                     pcStrFileList,
                                     FileMonitToggleUpdateFunc,
                                     FileMonitListUpdateFunc,
                                     "File monit Flag:%c",
                                     "File Monit List: num:%u",
                                     "File Monit List:"};

const ST_LIST_MONIT g_stProcMonit = {&cConf_Inf::chProcessMonitFlag,
                                     &cConf_Inf::vProcessMonitList,
                                     EN_PROC_MF,
                                     EN_PROC_ML,
                                     pcStrProcList,
                                     ProcMonitToggleUpdateFunc,
                                     ProcMonitListUpdateFunc,
                                     "Process monit Flag:%c",
                                     "Process Monit List: num:%d",
                                     "Process Monit List:"};

int ListMonitPage(const ST_LIST_MONIT& m) {
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    const tVecStr& vsList = c.*m.pvsList;
    NV_DBG(m.pcFlagLog, c.*m.pchFlag);
    NV_DBG(m.pcCountLog, static_cast<int>(vsList.size()));
    NV_DBG("%s", m.pcListLog);
    for (const std::string& s : vsList)
        NV_DBG("%s", s.c_str());
    CONTENT_DATA* p = NewPage(2, nullptr);
    ChoiceRow(p, 0, m.iFlagHelp, pcStrMonitToggle, c.*m.pchFlag, pcStrOpen, pcStrClose,
              m.pfnToggle);
    ListRow(p, 1, m.iListHelp, m.pcListLabel, vsList, m.pfnList);
    return ShowPage(p);
}

}  // namespace

int UI_FileMonit(void* arg) {
    (void)arg;
    return ListMonitPage(g_stFileMonit);
}

int UI_ProcessMonit(void* arg) {
    (void)arg;
    return ListMonitPage(g_stProcMonit);
}

int UI_CpuMonit(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    CONTENT_DATA* p = NewPage(3, nullptr);
    ChoiceRow(p, 0, EN_CPU_MF, pcStrMonitToggle, c.chCpuMonitFlag, pcStrOpen, pcStrClose,
              CpuMonitToggleUpdateFunc);
    InputRow(p, 1, EN_CPU_CEIL, pcStrCpuCeil, Format32("%3d%%", static_cast<int>(c.shCpuCeil)), 3,
             1, CpuMonitCeilUpdateFunc);
    InputRow(p, 2, EN_CPU_FLOOR, pcStrCpuFloor, Format32("%3d%%", static_cast<int>(c.shCpuFloor)),
             3, 1, CpuMonitFloorUpdateFunc);
    return ShowPage(p);
}

// The two read-only memory rows from row r on.
static void MemoryUseRows(CONTENT_DATA* p, int r, const cSvrState& s) {
    ValueRow(p, r, EN_MEM_USE, pcStrMemoryUse, Format32("%d MBytes", s.iMemUse));
    ValueRow(p, r + 1, EN_MEM_FREE, pcStrMemoryFree, Format32("%d MBytes", s.iMemFree));
}

int UI_MemoryMonit(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    const cSvrState& s = pg_Obj->objSS;
    NV_DBG("Memory monit flag:%c", c.chMemMonitFlag);
    NV_DBG("Memory use ceil:%d MBytes", c.iMemCeil);
    NV_DBG("Mem use:%dMbytes", s.iMemUse);
    NV_DBG("Mem free:%dMbytes", s.iMemFree);
    CONTENT_DATA* p = NewPage(4, nullptr);
    ChoiceRow(p, 0, EN_MEMORY_MF, pcStrMonitToggle, c.chMemMonitFlag, pcStrOpen, pcStrClose,
              MemMonitToggleUpdateFunc);
    InputRow(p, 1, EN_MEMORY_CEIL, pcStrMemUseCeil, Format32("%10d MBytes", c.iMemCeil), 10, 1,
             MemMonitCeilUpdateFunc);
    MemoryUseRows(p, 2, s);
    return ShowPage(p);
}

int UI_MemoryState(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    CONTENT_DATA* p = NewPage(2, nullptr);
    MemoryUseRows(p, 0, pg_Obj->objSS);
    return ShowPage(p);
}
