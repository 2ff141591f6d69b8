// Building the curses menus and panels from the menu tree, depth first.
#include <cstdlib>
#include <cstring>

#include "menu/menu_bar.h"
#include "strings/com_str.h"

namespace {

struct ST_BUILD {
    int iNum;
    ITEM** ppItems;
    MY_PANEL* pstChildren;
    MENU* pMenu;
    WINDOW* pWin;
    WINDOW* pSubWin;
    PANEL* pPanel;
};

void ReleaseBuild(ST_BUILD& b) {
    for (int i = 0; b.ppItems && i < b.iNum; ++i) {
        if (b.ppItems[i] == NULL)
            continue;
        free(item_userptr(b.ppItems[i]));
        free_item(b.ppItems[i]);
    }
    if (b.pPanel)
        del_panel(b.pPanel);
    if (b.pMenu)
        free_menu(b.pMenu);
    if (b.pSubWin)
        delwin(b.pSubWin);
    if (b.pWin)
        delwin(b.pWin);
    free(b.ppItems);
    free(b.pstChildren);
}

void StyleMenu(MENU* pMenu) {
    menu_opts_off(pMenu, O_SHOWDESC | O_NONCYCLIC);
    set_menu_fore(pMenu, A_REVERSE | COLOR_PAIR(4));
    set_menu_back(pMenu, COLOR_PAIR(4));
    set_menu_mark(pMenu, "");
}

void MakeWindows(ST_BUILD& b, unsigned uLevel, int iStartY, int iStartX) {
    b.pWin = newwin(b.iNum + 2, MENU_BAND_WIDTH, iStartY,
                    static_cast<int>(uLevel) * MENU_BAND_WIDTH + iStartX);
    keypad(b.pWin, TRUE);
    box(b.pWin, 0, 0);
    wbkgd(b.pWin, COLOR_PAIR(4));
    set_menu_win(b.pMenu, b.pWin);
    b.pSubWin = derwin(b.pWin, b.iNum, MENU_LABEL_WIDTH, 1, 1);
    set_menu_sub(b.pMenu, b.pSubWin);
    b.pPanel = new_panel(b.pWin);
    hide_panel(b.pPanel);
}

// Attaches the item and panel records; false when an allocation fails.
bool AttachUserRecords(ST_BUILD& b, const NV_MENU_ITEM* pstNode, unsigned uLevel) {
    for (int i = 0; i < b.iNum; ++i) {
        ITEM_USER_PTR* pstUser = static_cast<ITEM_USER_PTR*>(malloc(sizeof(ITEM_USER_PTR)));
        if (pstUser == NULL)
            return false;
        *pstUser = {
            static_cast<int>(uLevel),         b.pWin, b.pMenu, b.pPanel, b.pstChildren[i].pPanel,
            pstNode->pstChildList[i]->pfnFunc};
        set_item_userptr(b.ppItems[i], pstUser);
        const MY_PANEL& stChild = b.pstChildren[i];
        if (stChild.pMenu == NULL || stChild.pPanel == NULL)
            continue;
        PANEL_USER_PTR* pstPanelUser = static_cast<PANEL_USER_PTR*>(malloc(sizeof(PANEL_USER_PTR)));
        if (pstPanelUser == NULL)
            return false;
        *pstPanelUser = {b.pMenu, stChild.pMenu, b.pPanel};
        set_panel_userptr(stChild.pPanel, pstPanelUser);
    }
    return true;
}

}  // namespace

void RestoreMenuGeometry(MENU* pMenu) {
    if (pMenu == NULL)
        return;
    int iNum = item_count(pMenu);
    ITEM** ppItems = menu_items(pMenu);
    if (iNum <= 0 || ppItems == NULL)
        return;
    const ITEM_USER_PTR* pstFirst = static_cast<ITEM_USER_PTR*>(item_userptr(ppItems[0]));
    WINDOW* pWin = menu_win(pMenu);
    WINDOW* pSubWin = menu_sub(pMenu);
    if (pstFirst == NULL || pWin == NULL || pSubWin == NULL)
        return;
    wresize(pWin, iNum + 2, MENU_BAND_WIDTH);
    mvwin(pWin, 3, pstFirst->iMenuLevel * MENU_BAND_WIDTH);
    wresize(pSubWin, iNum, MENU_LABEL_WIDTH);
    mvderwin(pSubWin, 1, 1);
    box(pWin, 0, 0);
    for (int i = 0; i < iNum; ++i) {
        const ITEM_USER_PTR* pstUser = static_cast<ITEM_USER_PTR*>(item_userptr(ppItems[i]));
        const PANEL_USER_PTR* pstChild =
            pstUser && pstUser->pChildPanel
                ? static_cast<const PANEL_USER_PTR*>(panel_userptr(pstUser->pChildPanel))
                : NULL;
        if (pstChild)
            RestoreMenuGeometry(pstChild->pSelfMenu);
    }
}

MY_PANEL InitSubMenu(const NV_MENU_ITEM* pstNode, unsigned uLevel, int iStartY, int iStartX) {
    MY_PANEL stEmpty = {NULL, NULL};
    if (pstNode == NULL || pstNode->pstChildList == NULL || pstNode->iChildNum <= 0)
        return stEmpty;
    ST_BUILD b;
    memset(&b, 0, sizeof(b));
    b.iNum = pstNode->iChildNum;
    b.ppItems = static_cast<ITEM**>(calloc(b.iNum + 1, sizeof(ITEM*)));
    b.pstChildren = static_cast<MY_PANEL*>(calloc(b.iNum, sizeof(MY_PANEL)));
    if (b.ppItems == NULL || b.pstChildren == NULL) {
        ReleaseBuild(b);
        return stEmpty;
    }
    for (int i = 0; i < b.iNum; ++i) {
        const NV_MENU_ITEM* pstChild = pstNode->pstChildList[i];
        b.ppItems[i] = new_item(pstChild->pcName[iLanIdx], NULL);
        if (pstChild->iChildNum > 0) {
            b.pstChildren[i] = InitSubMenu(pstChild, uLevel + 1, iStartY, iStartX);
        }
    }
    b.pMenu = new_menu(b.ppItems);
    StyleMenu(b.pMenu);
    MakeWindows(b, uLevel, iStartY, iStartX);
    if (!AttachUserRecords(b, pstNode, uLevel)) {
        ReleaseBuild(b);
        return stEmpty;
    }
    post_menu(b.pMenu);
    update_panels();
    free(b.pstChildren);
    MY_PANEL stResult = {b.pMenu, b.pPanel};
    return stResult;
}
