// The row kinds of the settings pages.
#include "pages/page_rows.h"

#include "content/content_view.h"
#include "link/ui_interface.h"
#include "pages/page_build.h"
#include "strings/com_str.h"
#include "strings/prompt_id.h"

bool LoadState(int& iRet) {
    iRet = GetObjInfo();
    return iRet == em_OK || iRet == em_ActSuccAll;
}

int ShowPage(CONTENT_DATA* pstPage) {
    EnterContent(pstPage);
    return 0;
}

static CONTENT_SECTION* LabelledRow(CONTENT_DATA* pstPage, int r, int iPrompt, int iHelp,
                                    const char** pcLabel) {
    CONTENT_ITEM& stRow = SetRow(pstPage, r, iPrompt, iHelp, 2);
    SetTextCell(stRow.pstSection[0], pcLabel[iLanIdx]);
    return &stRow.pstSection[1];
}

void ChoiceRow(CONTENT_DATA* pstPage, int r, int iHelp, const char** pcLabel, char chFlag,
               const char** pcOn, const char** pcOff, UPDATE_FUNC pfnUpdate) {
    CONTENT_SECTION* pstValue = LabelledRow(pstPage, r, PROMPT_CONTENT, iHelp, pcLabel);
    SetChooseCell(*pstValue, FlagText(chFlag, pcOn, pcOff), Choices(pcOn, pcOff), pfnUpdate);
}

void InputRow(CONTENT_DATA* pstPage, int r, int iHelp, const char** pcLabel,
              const std::string& sValue, int iMaxWidth, int iLenLimit, UPDATE_FUNC pfnUpdate) {
    CONTENT_SECTION* pstValue = LabelledRow(pstPage, r, PROMPT_CONTENT, iHelp, pcLabel);
    SetInputCell(*pstValue, sValue, iMaxWidth, pfnUpdate, iLenLimit, 0);
}

void ListRow(CONTENT_DATA* pstPage, int r, int iHelp, const char** pcLabel, const tVstr& vsList,
             UPDATE_FUNC pfnUpdate) {
    CONTENT_SECTION* pstValue = LabelledRow(pstPage, r, PROMPT_CONTENT_LIST, iHelp, pcLabel);
    SetListCell(*pstValue, vsList, pfnUpdate);
}

void ValueRow(CONTENT_DATA* pstPage, int r, int iHelp, const char** pcLabel,
              const std::string& sValue) {
    CONTENT_SECTION* pstValue = LabelledRow(pstPage, r, PROMPT_CONTENT_NO_MODIFY, iHelp, pcLabel);
    SetTextCell(*pstValue, sValue);
}
