// The content view: entering a page, giving it back the keyboard, and
// opening the control bar of the focused cell.
#include "content/content_view.h"

#include <cstring>
#include <ctime>

#include "ctrlbar/control_bar.h"
#include "shell/nv_log.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"

CONTENT_DRAW_INFO sg_ContentInfo;

namespace {

// A page with forms but no rows: a blank content area under the page's own
// prompt, so that its function keys can add the first entry.
void ShowEmptyFormPage(CONTENT_DRAW_INFO* p) {
    ClearWindowRegion(p->pWin, p->iWindowStartX, p->iWindowStartY, p->iWindowWidth,
                      p->iWindowHeight);
    if (p->pstContent->iEmptyPromptIndex >= 0)
        RefreshPrompt(p->pstContent->iEmptyPromptIndex);
}

}  // namespace

int EnterContent(CONTENT_DATA* pstContent) {
    if (sg_ContentInfo.pstContent != nullptr) {
        NV_DBG("free last content data!");
        FreeContent(sg_ContentInfo.pstContent);
        sg_ContentInfo.pstContent = nullptr;
    }
    if (GetContentDrawInfo(sg_Screen.ContentWin, 0, 0, COLS, LINES - 6, 1, pstContent,
                           &sg_ContentInfo) != 0) {
        NV_DBG("GetContentDrawInfo failed!");
        FreeContent(pstContent);
        return -1;
    }
    sg_ContentInfo.iCursorInContentWinFlag = 1;
    NV_DBG("GetContentDrawInfo ok!");
    if (IsEmptyFormPage(pstContent)) {
        ShowEmptyFormPage(&sg_ContentInfo);
        sg_ContentInfo.iRefreshTime = time(NULL);
        NV_DBG("ShowContent ok!");
        return 0;
    }
    int iRet = ShowContent(&sg_ContentInfo);
    if (iRet != 0) {
        NV_DBG("ShowContent Failed!");
        // The page was handed over to the view; one that cannot be shown
        // is freed here, since nothing else holds it.
        memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
        FreeContent(pstContent);
    }
    sg_ContentInfo.iRefreshTime = time(NULL);
    NV_DBG("ShowContent ok!");
    return iRet;
}

void ReturnFunc() {
    NV_DBG("Content return function!");
    if (IsEmptyFormPage(sg_ContentInfo.pstContent))
        ShowEmptyFormPage(&sg_ContentInfo);
    else
        RedrawContent(&sg_ContentInfo);
    RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
    sg_ContentInfo.iCursorInContentWinFlag = 1;
}

DRAW_PARAMETER ChooseBarRect(const CONTENT_DRAW_INFO* p) {
    DRAW_PARAMETER r;
    r.iWidth = 18 < p->iWindowWidth ? 18 : p->iWindowWidth;
    r.iHeight = 7 < p->iWindowHeight ? 7 : p->iWindowHeight;
    r.iStartX = getbegx(p->pWin) + p->iWindowStartX + (p->iWindowWidth - r.iWidth) * 3 / 4;
    r.iStartY = getbegy(p->pWin) + p->iWindowStartY + (p->iWindowHeight - r.iHeight) / 2;
    return r;
}

DRAW_PARAMETER InputBarRect(const CONTENT_DRAW_INFO* p) {
    const CONTENT_SECTION& stSec = p->pstContent->pstItem[p->iFocusItem].pstSection[p->iFocusCol];
    DRAW_PARAMETER r;
    r.iStartX = ContentColX(p, p->iFocusCol);
    r.iStartY = ContentRowLine(p, p->iFocusItem);
    r.iWidth = stSec.iMaxWidth > 0 ? stSec.iMaxWidth : p->aiMaxColWidth[p->iFocusCol];
    r.iHeight = 1;
    return r;
}

DRAW_PARAMETER ListBarRect(const CONTENT_DRAW_INFO* p) {
    DRAW_PARAMETER r;
    r.iStartX = p->iWindowStartX + p->iWindowWidth / 8;
    r.iStartY = p->iWindowStartY + 3;
    r.iWidth = p->iWindowWidth * 3 / 4;
    r.iHeight = p->iWindowHeight - 3;
    return r;
}

DRAW_PARAMETER ShortcutBarRect() {
    DRAW_PARAMETER r;
    r.iStartX = COLS / 8;
    r.iStartY = 6;
    r.iWidth = COLS * 3 / 4;
    r.iHeight = LINES - 9;
    return r;
}

int ContentModify(const CONTENT_DRAW_INFO* p, pfBackToLastLevel pfnReturn) {
    if (p == nullptr || p->pstContent == nullptr || p->iFocusItem >= p->pstContent->iItemNum) {
        return -1;
    }
    const CONTENT_ITEM& stItem = p->pstContent->pstItem[p->iFocusItem];
    if (p->iFocusCol >= stItem.iSectionNum)
        return -1;
    NV_DBG("Modify Item:%s", stItem.pstSection[0].strSecName.c_str());
    const CONTENT_SECTION& stSec = stItem.pstSection[p->iFocusCol];
    int iRet = -1;
    DRAW_PARAMETER stRect;
    switch (stSec.enCtrlType) {
        case EN_CHOOSE_CONTROL:
            stRect = ChooseBarRect(p);
            iRet = EnterChooseCtrlBar(stSec.strSecName, stSec.vstrCtrlShowStr, stSec.vstrCtrlArgv,
                                      &stRect, pfnReturn);
            NV_DBG("%s",
                   iRet == 0 ? "Enter modify_choose success!" : "Enter modify_choose failed!");
            break;
        case EN_INPUT_CONTROL:
            stRect = InputBarRect(p);
            iRet = EnterInputCtrlBar(stSec.vstrCtrlShowStr, stSec.vstrCtrlArgv, &stRect, pfnReturn,
                                     p->pWin);
            NV_DBG("%s%s", "Enter modify_input", iRet == 0 ? " success!" : " failed!");
            break;
        case EN_LIST_CONTROL:
            stRect = ListBarRect(p);
            iRet = EnterListCtrlBar(stSec.vstrCtrlShowStr, stSec.vstrCtrlArgv, &stRect, pfnReturn);
            NV_DBG("%s%s", "Enter modify_list", iRet == 0 ? " success!" : " failed!");
            break;
        default:
            break;
    }
    return iRet;
}
