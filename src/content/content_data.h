// The page model: a page (CONTENT_DATA) is rows (CONTENT_ITEM) of cells
// (CONTENT_SECTION), with the argument vectors of the function keys and,
// for a live page, the builder that rebuilds it.
#ifndef NV_CONTENT_CONTENT_DATA_H
#define NV_CONTENT_CONTENT_DATA_H

#include <map>
#include <string>
#include <vector>

#include "menu/menu_tree.h"

typedef enum {
    EN_NONE_CONTROL = 0,
    EN_CHOOSE_CONTROL = 1,
    EN_INPUT_CONTROL = 2,
    EN_ENQUIRE_CONTROL = 3,
    EN_LIST_CONTROL = 4,
    EN_ADD_CONTROL = 5,
    EN_DELETE_CONTROL = 6,
    EN_CLEAR_CONTROL = 7,
    MAX_CONTROL_TYPE = 8
} EN_CTRL_BAR_TYPE;

typedef enum {
    OPERATE_UP = 0,
    OPERATE_DOWN = 1,
    OPERATE_LEFT = 2,
    OPERATE_RIGHT = 3,
    OPERATE_PAGEUP = 4,
    OPERATE_PAGEDOWN = 5
} EN_OPERATE;

// Keys of the function-key map: the curses codes of F2 to F9.
typedef enum {
    MAP_KEY_F2 = 266,
    MAP_KEY_F3 = 267,
    MAP_KEY_F4 = 268,
    MAP_KEY_F5 = 269,
    MAP_KEY_F6 = 270,
    MAP_KEY_F7 = 271,
    MAP_KEY_F8 = 272,
    MAP_KEY_F9 = 273,
    MAP_KEY_MAX = 274
} MAP_KEY_TYPE;

typedef std::vector<std::string> tVstr;
typedef std::map<int, tVstr*> mInt2Vstr;

struct CONTENT_SECTION {
    int iMaxWidth;
    std::string strSecName;
    EN_CTRL_BAR_TYPE enCtrlType;
    tVstr vstrCtrlShowStr;
    tVstr vstrCtrlArgv;

    // Leaves iMaxWidth and enCtrlType unset: every builder sets both.
    CONTENT_SECTION() {}
    ~CONTENT_SECTION() {}
};

struct CONTENT_ITEM {
    int iPromptIndex;
    int iHelpInfoIndex;
    int iSectionNum;
    CONTENT_SECTION* pstSection;
};

struct CONTENT_DATA {
    int iItemNum;
    CONTENT_ITEM* pstItem;
    mInt2Vstr mKey2vstrArgv;
    pfItemFuncType pfnRefreshCallFunc;
    // What a page with function-key forms shows while it has no rows: its
    // prompt and its help (-1: none). A page with rows uses its rows' own.
    int iEmptyPromptIndex = -1;
    int iEmptyHelpIndex = -1;

    // The map and the two above are constructed; the builder sets the rest.
    CONTENT_DATA() {}
    ~CONTENT_DATA() {}
};

// A cell takes the cell focus and is drawn underlined exactly when editable.
bool IsEditable(const CONTENT_SECTION& stSection);

// A page without rows that maps a function key to a form: it is shown empty
// and its function keys still open their forms.
bool IsEmptyFormPage(const CONTENT_DATA* pstContent);

// Frees a page, its rows and cells and, recursively, the sub-pages named in
// its function-key vectors.
void FreeContent(CONTENT_DATA* pstContent);

// Addresses travel in argument vectors as unsigned decimal text; "0" means
// none. These two are the only writers and readers of that text.
std::string PtrToArg(const void* p);
void* ArgToPtr(const std::string& s);

#endif
