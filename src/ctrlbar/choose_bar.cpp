// The choose bar: a boxed one-column curses menu of a cell's options with the
// current value preselected, five rows at a time. Up and Down move, Enter
// applies a choice that differs from the current value through the update
// function, Esc closes without change.
#include <cstdlib>
#include <cstring>

#include "ctrlbar/control_bar.h"
#include "shell/nv_log.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"
#include "strings/com_str.h"

ST_CHOOSE_CTRL gs_stChooseCtrl;

namespace {

// Makes one item per option, null-terminated; item names are the bar's own
// copies, so that they outlive a page the update function frees. An option
// curses refuses as an item name (an empty text) is left out.
void MakeItems(const std::string& strCurValue, const tVstr& vstrOptions) {
    ST_CHOOSE_CTRL& c = gs_stChooseCtrl;
    size_t n = 0;
    for (const std::string& strOption : vstrOptions) {
        char* pcName = strdup(strOption.c_str());
        ITEM* pItem = pcName ? new_item(pcName, "") : NULL;
        if (pItem == NULL) {
            free(pcName);
            continue;
        }
        if (strOption == strCurValue && c.pCurItem == NULL)
            c.pCurItem = pItem;
        c.pChooseItems[n++] = pItem;
    }
    c.pChooseItems[n] = NULL;
}

void ShowMenu(const DRAW_PARAMETER* pstRect) {
    ST_CHOOSE_CTRL& c = gs_stChooseCtrl;
    c.pChooseWin = newwin(pstRect->iHeight, pstRect->iWidth, pstRect->iStartY, pstRect->iStartX);
    c.pChooseSubWin = derwin(c.pChooseWin, pstRect->iHeight - 2, pstRect->iWidth - 2, 1, 1);
    set_menu_win(c.pChooseMenu, c.pChooseWin);
    set_menu_sub(c.pChooseMenu, c.pChooseSubWin);
    box(c.pChooseWin, 0, 0);
    keypad(c.pChooseWin, TRUE);
    set_menu_format(c.pChooseMenu, 5, 1);
    if (c.pCurItem != NULL)
        set_current_item(c.pChooseMenu, c.pCurItem);
    post_menu(c.pChooseMenu);
}

// Releases the bar's curses objects and zeroes it. The menu goes before its
// items: curses keeps an item that is still connected to a menu.
void CloseChooseBar() {
    ST_CHOOSE_CTRL& c = gs_stChooseCtrl;
    if (c.pChooseMenu != NULL) {
        unpost_menu(c.pChooseMenu);
        free_menu(c.pChooseMenu);
    }
    for (ITEM** pp = c.pChooseItems; pp != NULL && *pp != NULL; ++pp) {
        const char* pcName = item_name(*pp);
        free_item(*pp);
        free(const_cast<char*>(pcName));
    }
    if (c.pChooseSubWin != NULL)
        delwin(c.pChooseSubWin);
    if (c.pChooseWin != NULL)
        delwin(c.pChooseWin);
    free(c.pChooseItems);
    memset(&c, 0, sizeof(c));
}

void MoveChoice(int iRequest) {
    ST_CHOOSE_CTRL& c = gs_stChooseCtrl;
    if (c.pChooseMenu == NULL || c.pChooseWin == NULL)
        return;
    menu_driver(c.pChooseMenu, iRequest);
    wrefresh(c.pChooseWin);
}

// Sends the current item when it is not the current value, then closes.
void ConfirmChoice() {
    ST_CHOOSE_CTRL& c = gs_stChooseCtrl;
    ITEM* pItem = c.pChooseMenu ? current_item(c.pChooseMenu) : NULL;
    if (pItem != NULL && pItem != c.pCurItem && c.pfnChooseUpdate != NULL) {
        std::string strChoice = item_name(pItem);
        NV_DBG("Choose ctrl:choose:%s", strChoice.c_str());
        RunUpdateShowingWait(c.pfnChooseUpdate, &strChoice[0], c.arg);
    }
    pfBackToLastLevel pfnReturn = c.pfnReturn;
    CloseChooseBar();
    if (pfnReturn)
        pfnReturn();
}

}  // namespace

int EnterChooseCtrlBar(const std::string& strCurValue, const tVstr& vstrOptions,
                       const tVstr& vstrArgv, const DRAW_PARAMETER* pstRect,
                       pfBackToLastLevel pfnReturn) {
    NV_DBG("enter choose ctrl bar");
    if (vstrArgv.empty() || pstRect == NULL || pfnReturn == NULL) {
        NV_DBG("choose para error!");
        return -1;
    }
    ST_CHOOSE_CTRL& c = gs_stChooseCtrl;
    memset(&c, 0, sizeof(c));
    c.pfnChooseUpdate = reinterpret_cast<UPDATE_FUNC>(ArgToPtr(vstrArgv[0]));
    if (c.pfnChooseUpdate == NULL) {
        NV_DBG("Choose update function is NULL!");
        return -1;
    }
    if (vstrArgv.size() > 1)
        c.arg = ArgToPtr(vstrArgv[1]);
    c.pfnReturn = pfnReturn;
    c.pChooseItems = static_cast<ITEM**>(malloc((vstrOptions.size() + 1) * sizeof(ITEM*)));
    if (c.pChooseItems == NULL) {
        NV_DBG("Choose item malloc failed!");
        memset(&c, 0, sizeof(c));
        return -1;
    }
    MakeItems(strCurValue, vstrOptions);
    c.pChooseMenu = new_menu(c.pChooseItems);
    if (c.pChooseMenu == NULL)
        NV_DBG("choose create menu failed!");
    else
        ShowMenu(pstRect);
    RegistKeyFunc(ChooseKeyFunction, c.pChooseWin);
    if (c.pChooseWin != NULL)
        wrefresh(c.pChooseWin);
    RefreshPrompt(PROMPT_CHOOSE);
    NV_DBG("choose ctrl show ok!");
    return 0;
}

void ChooseKeyFunction(int iKey) {
    switch (iKey) {
        case KEY_DOWN:
            MoveChoice(REQ_DOWN_ITEM);
            break;
        case KEY_UP:
            MoveChoice(REQ_UP_ITEM);
            break;
        case 10:
            ConfirmChoice();
            break;
        case 27: {
            NV_DBG("choose ctrl esc!");
            pfBackToLastLevel pfnReturn = gs_stChooseCtrl.pfnReturn;
            CloseChooseBar();
            NV_DBG("exit free over!");
            if (pfnReturn)
                pfnReturn();
            break;
        }
        default:
            break;
    }
}
