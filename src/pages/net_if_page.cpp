// The network-interface page: the agent's interface lines as they come,
// and the four forms on F2 to F5 (down, up, automatic addressing, manual
// address).
#include "content/content_view.h"
#include "link/cmd_catalogue.h"
#include "link/global_val.h"
#include "pages/form_build.h"
#include "pages/menu_struct.h"
#include "pages/page_rows.h"
#include "shell/nv_log.h"
#include "strings/com_str.h"
#include "strings/help_id.h"
#include "strings/prompt_id.h"

namespace {

#define NV_ADDR_FIELD(label, width) \
    { label, EN_INPUT_CONTROL, width, pcStrNullInfo, 1, 0, nullptr, nullptr, nullptr }

const ST_FORM_ROW g_stIfNameForm[] = {{pcStrIfName, EN_INPUT_CONTROL, 10, pcStrNullInfo, 1, 0,
                                       nullptr, nullptr, pcStrIfNameReminder}};
const ST_FORM_ROW g_astManualForm[] = {
    NV_ADDR_FIELD(pcStrIfName, 10),  NV_ADDR_FIELD(pcStrIp, 15),   NV_ADDR_FIELD(pcStrMask, 15),
    NV_ADDR_FIELD(pcStrGateWay, 15), NV_ADDR_FIELD(pcStrDNS1, 15), NV_ADDR_FIELD(pcStrDNS2, 15)};

struct ST_IF_FORM {
    int iKey;
    UPDATE_FUNC pfnSender;
    const ST_FORM_ROW* pstRows;
    int iRowNum;
};

const ST_IF_FORM g_astIfForms[] = {
    {MAP_KEY_F2, InputSetIfDownUpdateFunc, g_stIfNameForm, 1},
    {MAP_KEY_F3, InputSetIfUpUpdateFunc, g_stIfNameForm, 1},
    {MAP_KEY_F4, InputSetIpAutoUpdateFunc, g_stIfNameForm, 1},
    {MAP_KEY_F5, InputSetIpManuallyUpdateFunc, g_astManualForm, 6},
};

}  // namespace

int UI_NetInterface(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const tVecStr& vsLines = pg_Obj->objSS.vsIfconfigList;
    NV_DBG("Net Interface list:%d", static_cast<int>(vsLines.size()));
    for (size_t i = 0; i < vsLines.size(); ++i)
        NV_DBG("(%d)%s", static_cast<int>(i), vsLines[i].c_str());
    CONTENT_DATA* p = ListPage(vsLines, PROMPT_NET_INTERFACE, EM_NETINTERFACE);
    for (const ST_IF_FORM& f : g_astIfForms)
        AddFormKey(p, f.iKey, f.pfnSender, BuildForm(f.pstRows, f.iRowNum, EM_NETINTERFACE));
    return ShowPage(p);
}
