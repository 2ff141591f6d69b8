// The system-state page: host name, date and time as the agent reports
// them, rebuilt by the refresh thread so that the time moves, and the four
// forms (host name, password, date, time) on F2 to F5.
#include "content/content_view.h"
#include "link/cmd_catalogue.h"
#include "link/global_val.h"
#include "pages/form_build.h"
#include "pages/menu_struct.h"
#include "pages/page_build.h"
#include "pages/page_rows.h"
#include "shell/nv_log.h"
#include "strings/com_str.h"
#include "strings/help_id.h"
#include "strings/prompt_id.h"

namespace {

#define NV_TEXT_FIELD(label, width, limit, type) \
    { label, EN_INPUT_CONTROL, width, pcStrNullInfo, limit, type, nullptr, nullptr, nullptr }

const ST_FORM_ROW g_astHostNameForm[] = {NV_TEXT_FIELD(pcStrHostName, 32, 0, 0)};
const ST_FORM_ROW g_astPasswordForm[] = {NV_TEXT_FIELD(pcStrUserName, 32, 0, 0),
                                         NV_TEXT_FIELD(pcStrNewPassword, 32, 0, 1),
                                         NV_TEXT_FIELD(pcStrPwConfirm, 32, 0, 1)};
const ST_FORM_ROW g_astDateForm[] = {NV_TEXT_FIELD(pcStrYear, 4, 1, 0),
                                     NV_TEXT_FIELD(pcStrMonth, 2, 1, 0),
                                     NV_TEXT_FIELD(pcStrDay, 2, 1, 0)};
const ST_FORM_ROW g_astTimeForm[] = {NV_TEXT_FIELD(pcStrHour, 2, 1, 0),
                                     NV_TEXT_FIELD(pcStrMinite, 2, 1, 0),
                                     NV_TEXT_FIELD(pcStrSecond, 2, 1, 0)};

struct ST_SYS_FORM {
    int iKey;
    UPDATE_FUNC pfnSender;
    const ST_FORM_ROW* pstRows;
    int iRowNum;
};

#define NV_FORM(rows) rows, static_cast<int>(sizeof(rows) / sizeof(rows[0]))
const ST_SYS_FORM g_astSysForms[] = {
    {MAP_KEY_F2, ModifyHostNameUpdateFunc, NV_FORM(g_astHostNameForm)},
    {MAP_KEY_F3, ModifyPasswordUpdateFunc, NV_FORM(g_astPasswordForm)},
    {MAP_KEY_F4, ModifyDateUpdateFunc, NV_FORM(g_astDateForm)},
    {MAP_KEY_F5, ModifyTimeUpdateFunc, NV_FORM(g_astTimeForm)},
};

void StateRow(CONTENT_DATA* p, int r, const char** pcLabel, const std::string& sValue) {
    CONTENT_ITEM& stRow = SetRow(p, r, PROMPT_SYS_STATE_CONFIG, EN_SYS_STATE_CONF, 2);
    SetTextCell(stRow.pstSection[0], pcLabel[iLanIdx]);
    SetTextCell(stRow.pstSection[1], sValue);
}

}  // namespace

int UI_SysStateConfig(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    NV_DBG("Computer Name:%s", c.sHostname.c_str());
    NV_DBG("System Date:%s", c.sNowDate.c_str());
    NV_DBG("System Time:%s", c.sNowTime.c_str());
    CONTENT_DATA* p = NewPage(3, UI_SysStateConfig);
    StateRow(p, 0, pcStrHostName, c.sHostname);
    StateRow(p, 1, pcStrSysDate, c.sNowDate);
    StateRow(p, 2, pcStrSysTime, c.sNowTime);
    for (const ST_SYS_FORM& f : g_astSysForms)
        AddFormKey(p, f.iKey, f.pfnSender, BuildForm(f.pstRows, f.iRowNum, EN_SYS_STATE_CONF));
    return ShowPage(p);
}
