// Building pages: rows and cells allocated the way the content view frees
// them.
#include "pages/page_build.h"

CONTENT_DATA* NewPage(int iItemNum, pfItemFuncType pfnRefresh) {
    CONTENT_DATA* pstPage = new CONTENT_DATA;
    pstPage->pfnRefreshCallFunc = pfnRefresh;
    pstPage->iItemNum = iItemNum;
    pstPage->pstItem = new CONTENT_ITEM[iItemNum];
    for (int r = 0; r < iItemNum; ++r) {
        pstPage->pstItem[r] = CONTENT_ITEM{0, 0, 0, nullptr};
    }
    return pstPage;
}

CONTENT_ITEM& SetRow(CONTENT_DATA* pstPage, int r, int iPromptIndex, int iHelpInfoIndex,
                     int iSectionNum) {
    CONTENT_ITEM& stItem = pstPage->pstItem[r];
    stItem.iPromptIndex = iPromptIndex;
    stItem.iHelpInfoIndex = iHelpInfoIndex;
    stItem.iSectionNum = iSectionNum;
    stItem.pstSection = new CONTENT_SECTION[iSectionNum];
    return stItem;
}

void SetTextCell(CONTENT_SECTION& stSection, const std::string& sText) {
    stSection.iMaxWidth = 0;
    stSection.strSecName = sText;
    stSection.enCtrlType = EN_NONE_CONTROL;
}
