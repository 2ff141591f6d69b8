// Building function-key forms from their tables, and the list pages that
// carry them.
#include "pages/form_build.h"

#include "link/cmd_catalogue.h"
#include "pages/page_build.h"
#include "strings/com_str.h"
#include "strings/prompt_id.h"

namespace {

// A form field: its update function stores the text into the field itself,
// whose address is the last argument (so that the field's bar passes it).
void SetFormField(CONTENT_SECTION& stSec, const ST_FORM_ROW& r, const std::string& sInitial) {
    stSec.iMaxWidth = r.iMaxWidth;
    stSec.strSecName = sInitial;
    stSec.enCtrlType = r.enField;
    std::string sUpdate = PtrToArg(reinterpret_cast<const void*>(IPTNewLevelItemUpdateFunc));
    std::string sSelf = PtrToArg(&stSec);
    if (r.enField == EN_CHOOSE_CONTROL) {
        stSec.vstrCtrlShowStr = Choices(r.pcChoice1, r.pcChoice2);
        stSec.vstrCtrlArgv = {sUpdate, sSelf};
        return;
    }
    stSec.vstrCtrlArgv = {sUpdate, "0", std::to_string(r.iLenLimit), std::to_string(r.iInputType),
                          sSelf};
}

const ST_FORM_ROW g_stDeleteRow = {pcStrDelInfo, EN_INPUT_CONTROL, 5,      pcStrNullInfo, 1, 0,
                                   nullptr,      nullptr,          nullptr};

}  // namespace

CONTENT_DATA* BuildForm(const ST_FORM_ROW* pstRows, int iRowNum, int iHelp,
                        const std::string* psFirstInitial) {
    CONTENT_DATA* pstForm = NewPage(iRowNum, nullptr);
    for (int i = 0; i < iRowNum; ++i) {
        const ST_FORM_ROW& r = pstRows[i];
        CONTENT_ITEM& stRow =
            SetRow(pstForm, i, PROMPT_CONTENT_NEW_LEVEL, iHelp, r.pcReminder ? 3 : 2);
        SetTextCell(stRow.pstSection[0], r.pcCaption[iLanIdx]);
        std::string sInitial =
            i == 0 && psFirstInitial ? *psFirstInitial : std::string(r.pcInitial[iLanIdx]);
        SetFormField(stRow.pstSection[1], r, sInitial);
        if (r.pcReminder)
            SetTextCell(stRow.pstSection[2], r.pcReminder[iLanIdx]);
    }
    return pstForm;
}

void AddFormKey(CONTENT_DATA* pstPage, int iKey, UPDATE_FUNC pfnSender, CONTENT_DATA* pstForm) {
    pstPage->mKey2vstrArgv[iKey] =
        new tVstr{PtrToArg(reinterpret_cast<const void*>(pfnSender)), PtrToArg(pstForm)};
}

CONTENT_DATA* ListPage(const tVecStr& vsLines, int iPrompt, int iHelp, pfItemFuncType pfnRefresh) {
    CONTENT_DATA* pstPage = NewPage(static_cast<int>(vsLines.size()), pfnRefresh);
    pstPage->iEmptyPromptIndex = iPrompt;
    pstPage->iEmptyHelpIndex = iHelp;
    for (size_t i = 0; i < vsLines.size(); ++i) {
        CONTENT_ITEM& stRow = SetRow(pstPage, static_cast<int>(i), iPrompt, iHelp, 1);
        SetTextCell(stRow.pstSection[0], vsLines[i]);
    }
    return pstPage;
}

CONTENT_DATA* DeleteForm(int iHelp) {
    return BuildForm(&g_stDeleteRow, 1, iHelp);
}

CONTENT_DATA* ClearForm(const char** pcQuestion, int iHelp) {
    const ST_FORM_ROW stRow = {pcQuestion, EN_CHOOSE_CONTROL, 0,       pcStrNo, 0,
                               0,          pcStrYes,          pcStrNo, nullptr};
    return BuildForm(&stRow, 1, iHelp);
}
