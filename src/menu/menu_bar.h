// The menu bar: the version and path rows at the top of the screen and one
// boxed drop-down menu per node of the menu tree, one visible at a time.
#ifndef NV_MENU_MENU_BAR_H
#define NV_MENU_MENU_BAR_H

#include <menu.h>
#include <panel.h>

#include "content/draw_types.h"
#include "menu/menu_tree.h"

// Each tree level owns a band of this many columns.
enum { MENU_BAND_WIDTH = 22, MENU_LABEL_WIDTH = 20 };

typedef struct _ST_ITEM_USER_PTR {
    int iMenuLevel;
    WINDOW* pWin;
    MENU* pMenu;
    PANEL* pItemselfPanel;
    PANEL* pChildPanel;
    pfItemFuncType pfnFunc;
} ITEM_USER_PTR;

typedef struct _ST_PANEL_USER_PTR {
    MENU* pParentMenu;
    MENU* pSelfMenu;
    PANEL* pParentPanel;
} PANEL_USER_PTR;

typedef struct _ST_MY_PANEL {
    MENU* pMenu;
    PANEL* pPanel;
} MY_PANEL;

int InitMenuWindow();
MY_PANEL InitSubMenu(const NV_MENU_ITEM* pstNode, unsigned uLevel, int iStartY, int iStartX);
void ShowMenu(MENU* pMenu, SHOW_FLAG enFlag);
void MenuKeyFunction(int iKey);
int RedrawMenuWindow();
void UnInitMenu();

// After a resize: the menu bar across the new width and every drop-down
// back at its band (curses shrinks windows that do not fit a smaller screen).
void RelayoutMenuBar();
void RestoreMenuGeometry(MENU* pMenu);

#endif
