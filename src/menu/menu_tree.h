// The menu tree: constant data, four groups under a root whose label is
// never shown, each leaf bound to the page builder of its page.
#ifndef NV_MENU_MENU_TREE_H
#define NV_MENU_MENU_TREE_H

// A page builder: 0 when the page is shown and has the keyboard, otherwise a
// result code whose text the menu shows.
typedef int (*pfItemFuncType)(void* arg);

typedef struct _ST_MENU_ITEM {
    const char** pcName;  // a catalogue entry, shown as pcName[iLanIdx]
    int iPromptIndex;
    int iChildNum;
    pfItemFuncType pfnFunc;
    const struct _ST_MENU_ITEM* const* pstChildList;
} NV_MENU_ITEM;

extern const NV_MENU_ITEM stMainMenu;

#endif
