// Keys of a content page and the focus moves over its rows and cells.
#include <cstring>

#include "content/content_view.h"
#include "content/help_pager.h"
#include "ctrlbar/control_bar.h"
#include "menu/menu_bar.h"
#include "shell/nv_log.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"

namespace {

void MoveUp(CONTENT_DRAW_INFO* p) {
    int f = p->iFocusItem, h = p->iWindowHeight;
    if (f <= 0)
        return;
    if (f % h < (f - 1) % h && f / h >= 1) {
        if (ShowContentPage(p, f / h - 1) == 0)
            ShowContentRow(p, f - 1, SHOW_FOUCS_STR);
        return;
    }
    ShowContentRow(p, f, SHOW_NORMAL_STR);
    ShowContentRow(p, f - 1, SHOW_FOUCS_STR);
}

void MoveDown(CONTENT_DRAW_INFO* p) {
    int f = p->iFocusItem, h = p->iWindowHeight;
    if (f >= p->iMaxItemNum - 1)
        return;
    if (f % h <= (f + 1) % h) {
        ShowContentRow(p, f, SHOW_NORMAL_STR);
        ShowContentRow(p, f + 1, SHOW_FOUCS_STR);
        return;
    }
    if (ShowContentPage(p, f / h + 1) == 0)
        ShowContentRow(p, f + 1, SHOW_FOUCS_STR);
}

// The cell focus moves only to an adjacent editable cell, never onto the
// label in cell 0.
void MoveSideways(CONTENT_DRAW_INFO* p, int iStep) {
    if (p->iFocusItem >= p->pstContent->iItemNum)
        return;
    int iOld = p->iFocusCol;
    if (iStep < 0 && iOld <= 1)
        return;
    if (iStep > 0 && iOld >= p->pstContent->pstItem[p->iFocusItem].iSectionNum)
        return;
    if (ShowContentCol(p, p->iFocusItem, iOld + iStep, SHOW_FOUCS_STR) == 0) {
        ShowContentCol(p, p->iFocusItem, iOld, SHOW_NORMAL_STR);
    }
}

void MovePage(CONTENT_DRAW_INFO* p, int iPage) {
    if (iPage < 0 || ShowContentPage(p, iPage) != 0)
        return;
    ShowContentRow(p, p->iWindowHeight * iPage, SHOW_FOUCS_STR);
}

// The content area is cleared so that the menu comes back over a clean
// area, not over the page just left.
void LeavePage() {
    FreeContent(sg_ContentInfo.pstContent);
    memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
    ClearWindowRegion(sg_Screen.ContentWin, 0, 0, COLS, LINES - 6);
    RedrawMenuWindow();
    sg_ContentInfo.iCursorInContentWinFlag = 0;
}

void OpenHelp() {
    const CONTENT_DATA* pstPage = sg_ContentInfo.pstContent;
    int iHelp = pstPage->iEmptyHelpIndex;
    if (pstPage->iItemNum > 0)
        iHelp = pstPage->pstItem[sg_ContentInfo.iFocusItem].iHelpInfoIndex;
    if (iHelp < 0)
        return;
    ShowHelpInfo(iHelp, ReturnFunc);
    sg_ContentInfo.iCursorInContentWinFlag = 0;
}

// A function key the page maps opens its form; the lookup inserts a null
// entry for a key the page does not map.
void OpenShortcut(int iKey) {
    tVstr* pvArgv = sg_ContentInfo.pstContent->mKey2vstrArgv[iKey];
    if (pvArgv == nullptr)
        return;
    NV_DBG("Enter add control!");
    DRAW_PARAMETER stRect = ShortcutBarRect();
    if (EnterShortcutKeyCtrlBar(*pvArgv, &stRect, ReturnFunc) == 0)
        sg_ContentInfo.iCursorInContentWinFlag = 0;
}

}  // namespace

void ContentKeyOperating(CONTENT_DRAW_INFO* pstInfo, EN_OPERATE enOp) {
    if (pstInfo == nullptr || pstInfo->pstContent == nullptr || pstInfo->iWindowHeight <= 0)
        return;
    int iPage = pstInfo->iFocusItem / pstInfo->iWindowHeight;
    switch (enOp) {
        case OPERATE_UP:
            MoveUp(pstInfo);
            break;
        case OPERATE_DOWN:
            MoveDown(pstInfo);
            break;
        case OPERATE_LEFT:
            MoveSideways(pstInfo, -1);
            break;
        case OPERATE_RIGHT:
            MoveSideways(pstInfo, +1);
            break;
        case OPERATE_PAGEUP:
            if (iPage > 0)
                MovePage(pstInfo, iPage - 1);
            break;
        case OPERATE_PAGEDOWN:
            MovePage(pstInfo, iPage + 1);
            break;
    }
}

void ContentKeyFunc(int iKey) {
    if (sg_ContentInfo.pstContent == nullptr)
        return;
    ClearInformation();
    switch (iKey) {
        case KEY_UP:
            ContentKeyOperating(&sg_ContentInfo, OPERATE_UP);
            break;
        case KEY_DOWN:
            ContentKeyOperating(&sg_ContentInfo, OPERATE_DOWN);
            break;
        case KEY_LEFT:
            ContentKeyOperating(&sg_ContentInfo, OPERATE_LEFT);
            break;
        case KEY_RIGHT:
            ContentKeyOperating(&sg_ContentInfo, OPERATE_RIGHT);
            break;
        case KEY_PPAGE:
            ContentKeyOperating(&sg_ContentInfo, OPERATE_PAGEUP);
            break;
        case KEY_NPAGE:
            ContentKeyOperating(&sg_ContentInfo, OPERATE_PAGEDOWN);
            break;
        case 10:
            if (ContentModify(&sg_ContentInfo, ReturnFunc) == 0) {
                sg_ContentInfo.iCursorInContentWinFlag = 0;
            }
            break;
        case KEY_F(12):
            OpenHelp();
            break;
        case 27:
            LeavePage();
            break;
        default:
            if (iKey >= MAP_KEY_F2 && iKey <= MAP_KEY_F9)
                OpenShortcut(iKey);
            break;
    }
}
