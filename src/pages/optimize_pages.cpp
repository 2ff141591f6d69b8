// The System Optimize pages: three kernel network switches and five kernel
// resource limits.
#include "link/cmd_catalogue.h"
#include "link/global_val.h"
#include "pages/menu_struct.h"
#include "pages/page_build.h"
#include "pages/page_rows.h"
#include "shell/nv_log.h"
#include "strings/com_str.h"
#include "strings/help_id.h"

int UI_NetWorkConfig(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    NV_DBG("IcmpEchoIgnore:%c", c.chIcmpEchoIgnoreAll);
    NV_DBG("TcpSyncookies:%c", c.chTcpSyncookies);
    NV_DBG("chTcpTwReuse:%c", c.chTcpTwReuse);
    CONTENT_DATA* p = NewPage(3, nullptr);
    ChoiceRow(p, 0, EN_ICMP_IGNORE, pcStrPingConfig, c.chIcmpEchoIgnoreAll, pcStrOpen, pcStrClose,
              IcmpUpdateFunc);
    ChoiceRow(p, 1, EN_TCP_SYNCOOKIE, pcStrTcpSynConfig, c.chTcpSyncookies, pcStrOpen, pcStrClose,
              TcpSynUpdateFunc);
    ChoiceRow(p, 2, EN_TCP_TIME_WAIT_REUSE, pcStrTcpWaitTimeReuse, c.chTcpTwReuse, pcStrOpen,
              pcStrClose, TcpWaitReuseUpdateFunc);
    return ShowPage(p);
}

int UI_ResourceConfig(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    // The shared-memory total is logged in "Bytes" though shown in pages.
    NV_DBG("ShmMax:%luBytes", c.ulShmMax);
    NV_DBG("ShmAll:%luBytes", c.ulShmAll);
    NV_DBG("Shmmni:%lu", c.ulShmMni);
    NV_DBG("Thread max:%lu", c.ulThreadMax);
    NV_DBG("ulFileMax:%lu", c.ulFileMax);
    CONTENT_DATA* p = NewPage(5, nullptr);
    InputRow(p, 0, EN_SHMMAX, pcStrShmmax, Format32("%10luBytes", c.ulShmMax), 10, 1,
             ShmMaxUpdateFunc);
    InputRow(p, 1, EN_SHMALL, pcStrShmall, Format32("%10luPages", c.ulShmAll), 10, 1,
             ShmAllUpdateFunc);
    InputRow(p, 2, EN_SHMMNI, pcStrShmmni, Format32("%10lu", c.ulShmMni), 10, 1, ShmmniUpdateFunc);
    InputRow(p, 3, EN_THREAD_MAX, pcStrThreadMax, Format32("%10lu", c.ulThreadMax), 10, 1,
             ThreadMaxUpdateFunc);
    InputRow(p, 4, EN_FILE_MAX, pcStrFileMax, Format32("%10lu", c.ulFileMax), 10, 1,
             FileMaxUpdateFunc);
    return ShowPage(p);
}
