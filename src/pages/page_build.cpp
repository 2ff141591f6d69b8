// Building pages: rows and cells allocated the way the content view frees
// them, and the cell kinds the pages share.
#include "pages/page_build.h"

#include <cstdarg>
#include <cstdio>

#include "strings/com_str.h"

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

void SetChooseCell(CONTENT_SECTION& stSection, const std::string& sValue, const tVstr& vsOptions,
                   UPDATE_FUNC pfnUpdate) {
    stSection.iMaxWidth = 0;
    stSection.strSecName = sValue;
    stSection.enCtrlType = EN_CHOOSE_CONTROL;
    stSection.vstrCtrlShowStr = vsOptions;
    stSection.vstrCtrlArgv = {PtrToArg(reinterpret_cast<const void*>(pfnUpdate))};
}

void SetInputCell(CONTENT_SECTION& stSection, const std::string& sValue, int iMaxWidth,
                  UPDATE_FUNC pfnUpdate, int iLenLimit, int iInputType) {
    stSection.iMaxWidth = iMaxWidth;
    stSection.strSecName = sValue;
    stSection.enCtrlType = EN_INPUT_CONTROL;
    stSection.vstrCtrlArgv = {PtrToArg(reinterpret_cast<const void*>(pfnUpdate)), "0",
                              std::to_string(iLenLimit), std::to_string(iInputType)};
}

void SetListCell(CONTENT_SECTION& stSection, const tVstr& vsList, UPDATE_FUNC pfnUpdate) {
    stSection.iMaxWidth = 0;
    stSection.strSecName = pcStrScanList[iLanIdx];
    stSection.enCtrlType = EN_LIST_CONTROL;
    stSection.vstrCtrlShowStr = vsList;
    stSection.vstrCtrlArgv = {PtrToArg(reinterpret_cast<const void*>(pfnUpdate))};
}

std::string FlagText(char chFlag, const char** pcOn, const char** pcOff) {
    if (chFlag == '1')
        return pcOn[iLanIdx];
    if (chFlag == '0')
        return pcOff[iLanIdx];
    return "";
}

tVstr Choices(const char** pcFirst, const char** pcSecond) {
    return {pcFirst[iLanIdx], pcSecond[iLanIdx]};
}

std::string Format32(const char* pcFmt, ...) {
    char szBuf[32];
    va_list ap;
    va_start(ap, pcFmt);
    vsnprintf(szBuf, sizeof(szBuf), pcFmt, ap);
    va_end(ap);
    return szBuf;
}
