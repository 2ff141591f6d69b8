// The menu bar: version and path rows, the menu's keys, opening a leaf's
// page, and the exit question.
#include "menu/menu_bar.h"

#include <cstdio>
#include <cstring>

#include "content/content_view.h"
#include "ctrlbar/control_bar.h"
#include "link/ui_interface.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"
#include "shell/start_up.h"
#include "strings/com_str.h"

namespace {

// The first drop-down, root of the menus built from the tree.
MENU* gs_pTopMenu = NULL;

ITEM_USER_PTR* CurItemUser(MENU* pMenu) {
    ITEM* pItem = pMenu ? current_item(pMenu) : NULL;
    return pItem ? static_cast<ITEM_USER_PTR*>(item_userptr(pItem)) : NULL;
}

// The drop-down that pMenu was opened from; null for the first one.
MENU* ParentMenu(MENU* pMenu) {
    ITEM_USER_PTR* pstUser = CurItemUser(pMenu);
    const PANEL_USER_PTR* pstSelf =
        pstUser ? static_cast<const PANEL_USER_PTR*>(panel_userptr(pstUser->pItemselfPanel)) : NULL;
    return pstSelf ? pstSelf->pParentMenu : NULL;
}

void DrawVersion() {
    char szBuf[1024];
    snprintf(szBuf, sizeof(szBuf), "%s%s", pcStrSwName[iLanIdx], str_NvuiVersion.c_str());
    mvwaddstr(sg_Screen.MenuWin, 0, COLS - static_cast<int>(strlen(szBuf)), szBuf);
    wrefresh(sg_Screen.MenuWin);
}

void ClearContentArea() {
    ClearWindowRegion(sg_Screen.ContentWin, 0, 0, COLS, LINES - 6);
}

void RedrawBox(MENU* pMenu) {
    WINDOW* pWin = menu_win(pMenu);
    box(pWin, 0, 0);
    wrefresh(pWin);
}

// Moves the focus from the current drop-down to pTarget, whose panel is shown
// in place of the current one.
void SwitchMenu(MENU* pTarget, PANEL* pTargetPanel, PANEL* pLeftPanel, bool bUpdateScreen) {
    sg_Screen.pCurMenu = pTarget;
    ShowMenu(pTarget, SHOW_FOUCS_STR);
    top_panel(pTargetPanel);
    show_panel(pTargetPanel);
    hide_panel(pLeftPanel);
    update_panels();
    if (bUpdateScreen)
        doupdate();
    ClearContentArea();
    RedrawBox(pTarget);
}

// Into the sub-menu of the current item; false when it has none.
bool EnterSubMenu(bool bUpdateScreen) {
    ITEM_USER_PTR* pstUser = CurItemUser(sg_Screen.pCurMenu);
    if (pstUser == NULL || pstUser->pChildPanel == NULL)
        return false;
    const PANEL_USER_PTR* pstChild =
        static_cast<const PANEL_USER_PTR*>(panel_userptr(pstUser->pChildPanel));
    if (pstChild == NULL)
        return false;
    ShowMenu(sg_Screen.pCurMenu, SHOW_NORMAL_STR);
    SwitchMenu(pstChild->pSelfMenu, pstUser->pChildPanel, pstUser->pItemselfPanel, bUpdateScreen);
    return true;
}

void LeaveSubMenu() {
    ITEM_USER_PTR* pstUser = CurItemUser(sg_Screen.pCurMenu);
    if (pstUser == NULL)
        return;
    const PANEL_USER_PTR* pstSelf =
        static_cast<const PANEL_USER_PTR*>(panel_userptr(pstUser->pItemselfPanel));
    if (pstSelf == NULL || pstSelf->pParentPanel == NULL)
        return;
    ShowMenu(sg_Screen.pCurMenu, CLEAR_STR);
    SwitchMenu(pstSelf->pParentMenu, pstSelf->pParentPanel, pstUser->pItemselfPanel, true);
}

void MoveItem(int iRequest) {
    menu_driver(sg_Screen.pCurMenu, iRequest);
    ShowMenu(sg_Screen.pCurMenu, SHOW_FOUCS_STR);
    wrefresh(menu_win(sg_Screen.pCurMenu));
}

void OpenLeaf(ITEM_USER_PTR* pstUser) {
    hide_panel(pstUser->pItemselfPanel);
    update_panels();
    doupdate();
    int iRet = pstUser->pfnFunc(NULL);
    if (iRet == 0) {
        RegistKeyFunc(ContentKeyFunc, sg_Screen.ContentWin);
        return;
    }
    ClearContentArea();
    ShowInfomation(GetOperatingInfoStr(iRet));
    RedrawMenuWindow();
}

void Confirm() {
    if (EnterSubMenu(false)) {
        doupdate();
        return;
    }
    ITEM_USER_PTR* pstUser = CurItemUser(sg_Screen.pCurMenu);
    if (pstUser && pstUser->pfnFunc)
        OpenLeaf(pstUser);
    doupdate();
}

void AskExit() {
    DRAW_PARAMETER stRect;
    stRect.iWidth = COLS * 3 / 5;
    stRect.iHeight = (LINES - 6) / 3;
    stRect.iStartX = (COLS - stRect.iWidth) / 2;
    stRect.iStartY = (LINES - 6 - stRect.iHeight) / 2 + 3;
    EnterEnqrCtrlBar(pcStrExitEnquiry[iLanIdx], &stRect, EnqireExit, NULL);
}

}  // namespace

void ShowMenu(MENU* pMenu, SHOW_FLAG enFlag) {
    ITEM_USER_PTR* pstUser = CurItemUser(pMenu);
    if (pstUser == NULL)
        return;
    WINDOW* pWin = sg_Screen.MenuWin;
    int iX = MENU_BAND_WIDTH * pstUser->iMenuLevel + 1;
    mvwprintw(pWin, 1, iX, "%*s", MENU_BAND_WIDTH, "");
    if (enFlag != CLEAR_STR) {
        int iAttr = enFlag == SHOW_FOUCS_STR ? (A_BOLD | A_REVERSE) : A_NORMAL;
        wattron(pWin, iAttr);
        mvwprintw(pWin, 1, iX, "%.*s", MENU_LABEL_WIDTH, item_name(current_item(pMenu)));
        wattroff(pWin, iAttr);
        if (pstUser->pChildPanel)
            mvwaddstr(pWin, 1, iX + MENU_LABEL_WIDTH, "->");
    }
    wrefresh(pWin);
}

int InitMenuWindow() {
    sg_Screen.MenuWin = newwin(3, COLS, 0, 0);
    wbkgd(sg_Screen.MenuWin, COLOR_PAIR(1));
    DrawVersion();
    MY_PANEL stFirst = InitSubMenu(&stMainMenu, 0, 3, 0);
    gs_pTopMenu = stFirst.pMenu;
    sg_Screen.pCurMenu = stFirst.pMenu;
    RegistKeyFunc(MenuKeyFunction, NULL);
    ShowMenu(sg_Screen.pCurMenu, SHOW_FOUCS_STR);
    ShowWelcomeInfo();
    RefreshPrompt(PROMPT_MENU);
    ClearInformation();
    return 0;
}

void MenuKeyFunction(int iKey) {
    ClearInformation();
    switch (iKey) {
        case KEY_DOWN:
            MoveItem(REQ_DOWN_ITEM);
            break;
        case KEY_UP:
            MoveItem(REQ_UP_ITEM);
            break;
        case KEY_RIGHT:
            EnterSubMenu(true);
            break;
        case KEY_LEFT:
            LeaveSubMenu();
            break;
        case 10:
            Confirm();
            break;
        case 27:
            AskExit();
            break;
        default:
            break;
    }
}

int RedrawMenuWindow() {
    ITEM_USER_PTR* pstUser = CurItemUser(sg_Screen.pCurMenu);
    if (pstUser) {
        show_panel(pstUser->pItemselfPanel);
        update_panels();
        doupdate();
        RedrawBox(sg_Screen.pCurMenu);
    }
    RefreshPrompt(PROMPT_MENU);
    RegistKeyFunc(MenuKeyFunction, NULL);
    return 0;
}

void UnInitMenu() {}

void RelayoutMenuBar() {
    WINDOW* pWin = sg_Screen.MenuWin;
    if (pWin == NULL)
        return;
    // Both rows are drawn again: the version is right-aligned, and curses
    // cuts the path row when the screen narrows.
    wresize(pWin, 3, COLS);
    werase(pWin);
    DrawVersion();
    for (MENU* pMenu = sg_Screen.pCurMenu; pMenu != NULL; pMenu = ParentMenu(pMenu))
        ShowMenu(pMenu, pMenu == sg_Screen.pCurMenu ? SHOW_FOUCS_STR : SHOW_NORMAL_STR);
    RestoreMenuGeometry(gs_pTopMenu);
}
