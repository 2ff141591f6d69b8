// The disk-volume and backup monitor pages: the agent's lines as they come,
// and on F2 to F5 the add, delete, clear and on/off forms. One builder with
// a table per page.
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

#define NV_ADD_FIELD(label, width, limit) \
    { label, EN_INPUT_CONTROL, width, pcStrNullInfo, limit, 0, nullptr, nullptr, nullptr }

const ST_FORM_ROW g_astDvAddForm[] = {
    NV_ADD_FIELD(pcStrPartition, 20, 0), NV_ADD_FIELD(pcStrCeil, 10, 1),
    NV_ADD_FIELD(pcStrFloor, 10, 1), NV_ADD_FIELD(pcStrInterval, 10, 1)};
const ST_FORM_ROW g_astBakAddForm[] = {NV_ADD_FIELD(pcStrFile, 20, 0),
                                       NV_ADD_FIELD(pcStrBakDir, 20, 0),
                                       NV_ADD_FIELD(pcStrBakSize, 10, 1)};
const ST_FORM_ROW g_stToggleRow = {pcStrMonitToggle, EN_CHOOSE_CONTROL, 0,      pcStrClose, 0, 0,
                                   pcStrOpen,        pcStrClose,        nullptr};

// What sets one monitor page apart from the other.
struct ST_MONIT_PAGE {
    tVecStr cConf_Inf::*pvsLines;
    char cConf_Inf::*pchFlag;
    int iHelp;
    CONTENT_DATA* (*pfnAddForm)();
    const char** pcClearQuestion;
    UPDATE_FUNC apfnSender[4];  // add, delete, clear, toggle
    const char* pcCountLog;
    const char* pcFlagLog;
};

const ST_MONIT_PAGE g_stDiskPage = {&cConf_Inf::vsDV,
                                    &cConf_Inf::chDVMonitFlag,
                                    EN_DV_MONIT,
                                    UI_DvMonitAdd,
                                    pcStrDvClearInfo,
                                    {AddDVMonitUpdateFunc, DeleteDVMonitUpdateFunc,
                                     ClearDVMonitUpdateFunc, DVMonitToggleUpdateFunc},
                                    "DiskMonit list:%d",
                                    "Dv monit flag:%c"};

const ST_MONIT_PAGE g_stBakPage = {&cConf_Inf::vsBakForSize,
                                   &cConf_Inf::chBakForSizeFlag,
                                   EN_BAK_FILE,
                                   UI_BakMonitAdd,
                                   pcStrBackupClearInfo,
                                   {AddBakMonitUpdateFunc, DeleteBakMonitUpdateFunc,
                                    ClearBakMonitUpdateFunc, BakMonitToggleUpdateFunc},
                                   "BakMonit list:%d",
                                   "Backup monit flag:%c"};

// The switch shows the state's flag; a flag that is neither shows three
// blanks, which are sent as they stand.
std::string ToggleInitial(char chFlag) {
    if (chFlag == '1')
        return pcStrOpen[iLanIdx];
    if (chFlag == '0')
        return pcStrClose[iLanIdx];
    return "   ";
}

int MonitPage(const ST_MONIT_PAGE& m) {
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    const tVecStr& vsLines = c.*m.pvsLines;
    NV_DBG(m.pcCountLog, static_cast<int>(vsLines.size()));
    for (size_t i = 0; i < vsLines.size(); ++i)
        NV_DBG("(%d)%s", static_cast<int>(i), vsLines[i].c_str());
    CONTENT_DATA* p = ListPage(vsLines, PROMPT_SCKEY_TOGGLE, m.iHelp);
    AddFormKey(p, MAP_KEY_F2, m.apfnSender[0], m.pfnAddForm());
    AddFormKey(p, MAP_KEY_F3, m.apfnSender[1], DeleteForm(m.iHelp));
    AddFormKey(p, MAP_KEY_F4, m.apfnSender[2], ClearForm(m.pcClearQuestion, m.iHelp));
    NV_DBG(m.pcFlagLog, c.*m.pchFlag);
    std::string sToggle = ToggleInitial(c.*m.pchFlag);
    AddFormKey(p, MAP_KEY_F5, m.apfnSender[3], BuildForm(&g_stToggleRow, 1, m.iHelp, &sToggle));
    return ShowPage(p);
}

}  // namespace

CONTENT_DATA* UI_DvMonitAdd() {
    return BuildForm(g_astDvAddForm, 4, EN_DV_MONIT);
}

CONTENT_DATA* UI_BakMonitAdd() {
    return BuildForm(g_astBakAddForm, 3, EN_BAK_FILE);
}

int UI_DiskMonit(void* arg) {
    (void)arg;
    return MonitPage(g_stDiskPage);
}

int UI_BakMonit(void* arg) {
    (void)arg;
    return MonitPage(g_stBakPage);
}
