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

static void LogList(const char* pcTitle, const tVecStr& vsList) {
    NV_DBG("%s", pcTitle);
    for (const std::string& s : vsList)
        NV_DBG("%s", s.c_str());
}

int UI_FileMonit(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    NV_DBG("File monit Flag:%c", c.chFileMonitFlag);
    NV_DBG("File Monit List: num:%u", static_cast<unsigned>(c.vFileMonitList.size()));
    LogList("File Monit List:", c.vFileMonitList);
    CONTENT_DATA* p = NewPage(2, nullptr);
    ChoiceRow(p, 0, EN_FILE_MF, pcStrMonitToggle, c.chFileMonitFlag, pcStrOpen, pcStrClose,
              FileMonitToggleUpdateFunc);
    ListRow(p, 1, EN_FILE_ML, pcStrFileList, c.vFileMonitList, FileMonitListUpdateFunc);
    return ShowPage(p);
}

int UI_ProcessMonit(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    NV_DBG("Process monit Flag:%c", c.chProcessMonitFlag);
    NV_DBG("Process Monit List: num:%d", static_cast<int>(c.vProcessMonitList.size()));
    LogList("Process Monit List:", c.vProcessMonitList);
    CONTENT_DATA* p = NewPage(2, nullptr);
    ChoiceRow(p, 0, EN_PROC_MF, pcStrMonitToggle, c.chProcessMonitFlag, pcStrOpen, pcStrClose,
              ProcMonitToggleUpdateFunc);
    ListRow(p, 1, EN_PROC_ML, pcStrProcList, c.vProcessMonitList, ProcMonitListUpdateFunc);
    return ShowPage(p);
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
