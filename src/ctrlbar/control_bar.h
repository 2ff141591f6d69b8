// The control bars: small editors that a page or the menu opens to change a
// value or to ask a question, and the result line they all show.
#ifndef NV_CTRLBAR_CONTROL_BAR_H
#define NV_CTRLBAR_CONTROL_BAR_H

#include <curses.h>
#include <menu.h>

#include <string>

#include "content/content_data.h"
#include "content/content_draw.h"
#include "content/content_types.h"
#include "content/draw_types.h"

// Shows the text of a result code on the information line (nothing for a
// code without text).
void ShowCtrlOperatingResult(int iResultCode);
// Calls the update function and shows its result; input typed while a
// command was awaited is discarded. The second shows the wait text first.
void RunUpdate(UPDATE_FUNC pfnUpdate, char* pcSetting, void* arg);
void RunUpdateShowingWait(UPDATE_FUNC pfnUpdate, char* pcSetting, void* arg);

typedef struct _ST_ENQUIRY_CTRL {
    int iYesStartY;
    int iYesStartX;
    int iNoStartY;
    int iNoStartX;
    int iCurChoice;  // 0 yes, 1 no
    WINDOW* pEnqrWin;
    UPDATE_FUNC pfnEnquireUpdate;
    pfBackToLastLevel pfnReturn;
} ST_ENQUIRY_CTRL;

extern ST_ENQUIRY_CTRL gs_stEnqrCtrl;

// Asks a yes/no question in a boxed window over the rectangle (screen
// coordinates), "[No]" preselected. Returns 0 when open, -1 when refused.
int EnterEnqrCtrlBar(const char* pcQuestion, const DRAW_PARAMETER* pstRect, UPDATE_FUNC pfnUpdate,
                     pfBackToLastLevel pfnReturn);
void EnquiryKeyFunction(int iKey);
// Closes an open enquiry bar as if "no" were chosen (a resize closes it).
void CancelEnqrCtrlBar();

// ---- Input bar: a field that takes printable ASCII; Enter sends the text
// typed, Esc closes without change.

enum { INPUT_BUF_LEN = 1024 };

typedef struct _ST_INPUT_CTRL {
    int iInputLenLimitFlag;  // non-zero: the text may not outgrow the field
    int iNewWinFlag;         // 1: a boxed window of its own
    int iInputType;          // 0 plain, 1 asterisks, other: no echo
    int iStartX;
    int iStartY;
    int iWidth;
    int iHeight;
    int x;  // where the next character goes
    int y;
    int iInputNum;
    char szInputBuf[INPUT_BUF_LEN];
    WINDOW* pInputWin;
    void* arg;
    pfBackToLastLevel pfnReturn;
    UPDATE_FUNC pfnInputUpdate;
} ST_INPUT_CTRL;

extern ST_INPUT_CTRL gs_stInputCtrl;

// Opens the input bar. Arguments: update function (address text), new-window
// flag, length-limit flag, echo type, optional opaque argument (address text).
// The rectangle is the boxed window in screen coordinates when the new-window
// flag is 1, otherwise the field inside pWin. Entry 0 of the show strings is
// an initial text, shown only. 0 when open, -1 when refused.
int EnterInputCtrlBar(const tVstr& vstrShowStr, const tVstr& vstrArgv,
                      const DRAW_PARAMETER* pstRect, pfBackToLastLevel pfnReturn, WINDOW* pWin);
void InputKeyFunction(int iKey);

// ---- Choose bar: a boxed one-column menu of options, the current value
// preselected; Enter applies a different choice, Esc closes.

typedef struct _ST_CHOOSE_CTRL {
    WINDOW* pChooseWin;
    WINDOW* pChooseSubWin;
    MENU* pChooseMenu;
    ITEM** pChooseItems;  // one per option, null-terminated, from malloc
    ITEM* pCurItem;       // the option equal to the current value, or null
    void* arg;
    UPDATE_FUNC pfnChooseUpdate;
    pfBackToLastLevel pfnReturn;
} ST_CHOOSE_CTRL;

extern ST_CHOOSE_CTRL gs_stChooseCtrl;

// Opens the choose bar over the rectangle (screen coordinates). Arguments:
// update function (address text), optional opaque argument (address text).
// 0 when open, -1 when refused.
int EnterChooseCtrlBar(const std::string& strCurValue, const tVstr& vstrOptions,
                       const tVstr& vstrArgv, const DRAW_PARAMETER* pstRect,
                       pfBackToLastLevel pfnReturn);
void ChooseKeyFunction(int iKey);

// ---- List bar: a boxed, paged list of lines; F2 adds lines, F3 deletes the
// highlighted one, F9 sends the edited list as one text, Esc drops the edits.

typedef tVstr VECTOR_STR;

enum { LIST_LINE_BUF_LEN = 1024, LIST_SEND_BUF_LEN = 102400 };

typedef struct _ST_LIST_CTRL {
    int x;  // never set
    int y;
    int iStartX;  // inner origin of the list area: 1, 1
    int iStartY;
    int iWidth;   // inner width, also the longest line that can be typed
    int iHeight;  // inner height, the page size
    int iFocusItemNum;
    int iInputNum;
    char szListBuf[LIST_LINE_BUF_LEN];
    WINDOW* pListWin;
    pfBackToLastLevel pfnReturn;
    UPDATE_FUNC pfnListUpdate;
    VECTOR_STR vstrList;  // the working copy of the list
} ST_LIST_CTRL;

extern ST_LIST_CTRL gs_stListCtrl;

// Opens the list bar over the rectangle (screen coordinates) with a copy of
// the lines. Argument 0: the update function (address text). 0 when open,
// -1 when refused.
int EnterListCtrlBar(const VECTOR_STR& vstrCtrlShowStr, const VECTOR_STR& vstrCtrlArgv,
                     const DRAW_PARAMETER* pstDrawCtrlPara, pfBackToLastLevel pfnReturn);
void ListKeyFunction(int iKeyValue);
// Draws page iPageIdx of the list; -1 when it is before the first page or
// starts past the end (a page starting exactly at the end is empty).
int ShowListPage(int iPageIdx);
// Draws one item on its row, highlighted and focused with SHOW_FOUCS_STR;
// -1 when there is no such item.
int ShowListItem(int iItemIdx, SHOW_FLAG enShowFlag);
// Blanks the list area; 0.
int ClearListWindow();

// ---- Shortcut-key bar: a page's function-key form in a boxed window; Enter
// edits the focused field, F9 sends the joined fields, Esc closes keeping
// the typed values.

enum { SCKEY_SEND_BUF_LEN = 10240 };

typedef struct _ST_SCKEY_CTRL {
    CONTENT_DRAW_INFO stDrawInfo;  // the form's layout and focus in the window
    pfBackToLastLevel pfnReturn;
    UPDATE_FUNC pfnSckeyUpdate;
    WINDOW* pSckeyWin;
} ST_SCKEY_CTRL;

extern ST_SCKEY_CTRL gs_stSckeyCtrl;

// Opens the form of a function key. Arguments: the key's command sender and
// the form (address texts). 0 when open, -1 when refused.
int EnterShortcutKeyCtrlBar(const tVstr& vstrCtrlArgv, const DRAW_PARAMETER* pstDrawCtrlPara,
                            pfBackToLastLevel pfnReturn);
void ScKeyKeyFunction(int iKeyValue);
// The return of a field's control bar: the form redrawn, the keys back.
void ScKeyContentReturnFunc();
// The form text: "*" and the value of every choose or input field, in
// order, then a final "*", cut to fit ulSize bytes with the NUL. Returns its
// length. With bMask, password fields are asterisks, as for the log.
size_t JoinFormFields(const CONTENT_DATA* pstForm, char* pcBuf, size_t ulSize, bool bMask = false);

#endif
