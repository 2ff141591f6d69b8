// The listening-port page: one read-only row per listening socket, as the
// agent's display lines give them.
#include "link/global_val.h"
#include "pages/menu_struct.h"
#include "pages/page_build.h"
#include "pages/page_rows.h"
#include "shell/nv_log.h"
#include "strings/help_id.h"
#include "strings/prompt_id.h"

int UI_TcpPortState(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const tVecStr& vsLines = pg_Obj->objSS.vsTcpListenList;
    int iNum = static_cast<int>(vsLines.size());
    CONTENT_DATA* pstPage = NewPage(iNum, nullptr);
    NV_DBG("Tcp port state:%d", iNum);
    for (int i = 0; i < iNum; ++i) {
        NV_DBG("(%d)%s", i, vsLines[i].c_str());
        CONTENT_ITEM& stRow = SetRow(pstPage, i, PROMPT_CONTENT_NO_MODIFY, EN_TCP_PORT_LISTEN, 1);
        SetTextCell(stRow.pstSection[0], vsLines[i]);
    }
    return ShowPage(pstPage);
}
