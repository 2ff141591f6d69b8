// The list bar: a boxed window that pages through a private copy of a list of
// lines (monitored files, monitored processes). In browse mode the arrows and
// Page keys move a highlight, F3 deletes the highlighted line and F2 starts
// add mode, where lines are typed and Enter adds each one. F9 sends the whole
// edited list, one line per "\n", to the update function; Esc drops every
// edit. Both close the bar.
#include <algorithm>
#include <cstring>

#include "ctrlbar/control_bar.h"
#include "shell/nv_log.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"
#include "strings/com_str.h"

ST_LIST_CTRL gs_stListCtrl;

namespace {

int ItemCount() {
    return static_cast<int>(gs_stListCtrl.vstrList.size());
}

int PageOf(int iItemIdx) {
    return iItemIdx / gs_stListCtrl.iHeight;
}

// Zeroes every field; the working copy is emptied and released.
void ResetListCtrl() {
    ST_LIST_CTRL& c = gs_stListCtrl;
    c.x = c.y = 0;
    c.iStartX = c.iStartY = c.iWidth = c.iHeight = 0;
    c.iFocusItemNum = c.iInputNum = 0;
    memset(c.szListBuf, 0, sizeof(c.szListBuf));
    c.pListWin = NULL;
    c.pfnReturn = NULL;
    c.pfnListUpdate = NULL;
    VECTOR_STR().swap(c.vstrList);
}

void CloseListBar(char* pcSendBuffer, size_t ulSendLen, char& cAddFlag) {
    ST_LIST_CTRL& c = gs_stListCtrl;
    if (cAddFlag == 1) {
        cAddFlag = 0;
        curs_set(0);
    }
    memset(pcSendBuffer, 0, ulSendLen);
    c.vstrList.clear();
    if (c.pListWin != NULL)
        delwin(c.pListWin);
    if (c.pfnReturn)
        c.pfnReturn();
    ResetListCtrl();
}

// Every line followed by "\n"; an item that would bring the text to the
// buffer's size or past it is dropped with all that follow.
void JoinList(char* pcSendBuffer, size_t ulSendLen) {
    memset(pcSendBuffer, 0, ulSendLen);
    size_t ulUsed = 0;
    for (const std::string& strItem : gs_stListCtrl.vstrList) {
        if (strItem.size() + ulUsed >= LIST_SEND_BUF_LEN)
            break;
        memcpy(pcSendBuffer + ulUsed, strItem.data(), strItem.size());
        ulUsed += strItem.size();
        pcSendBuffer[ulUsed++] = '\n';
    }
}

void TakePendingLine() {
    ST_LIST_CTRL& c = gs_stListCtrl;
    if (c.iInputNum > 0)
        c.vstrList.push_back(c.szListBuf);
    memset(c.szListBuf, 0, sizeof(c.szListBuf));
    c.iInputNum = 0;
}

void ConfirmList(char* pcSendBuffer, size_t ulSendLen, char& cAddFlag) {
    ST_LIST_CTRL& c = gs_stListCtrl;
    TakePendingLine();
    JoinList(pcSendBuffer, ulSendLen);
    NV_DBG("list:confirm:%s", pcSendBuffer);
    RunUpdateShowingWait(c.pfnListUpdate, pcSendBuffer, NULL);
    CloseListBar(pcSendBuffer, ulSendLen, cAddFlag);
}

void FocusNext() {
    ST_LIST_CTRL& c = gs_stListCtrl;
    int f = c.iFocusItemNum;
    if (f + 1 >= ItemCount())
        return;
    if (PageOf(f + 1) == PageOf(f)) {
        ShowListItem(f, SHOW_NORMAL_STR);
    } else {
        ShowListPage(PageOf(f + 1));
    }
    ShowListItem(f + 1, SHOW_FOUCS_STR);
}

void FocusPrevious() {
    ST_LIST_CTRL& c = gs_stListCtrl;
    int f = c.iFocusItemNum;
    if (f < 1)
        return;
    if (PageOf(f - 1) == PageOf(f)) {
        ShowListItem(f, SHOW_NORMAL_STR);
    } else {
        ShowListPage(PageOf(f - 1));
    }
    ShowListItem(f - 1, SHOW_FOUCS_STR);
}

// A page that starts exactly at the end is shown empty, and nothing is
// highlighted on it.
void NextPage() {
    int p = PageOf(gs_stListCtrl.iFocusItemNum);
    if (ShowListPage(p + 1) == 0)
        ShowListItem((p + 1) * gs_stListCtrl.iHeight, SHOW_FOUCS_STR);
}

void PreviousPage() {
    int p = PageOf(gs_stListCtrl.iFocusItemNum);
    if (ShowListPage(p - 1) == 0)
        ShowListItem(p * gs_stListCtrl.iHeight - 1, SHOW_FOUCS_STR);
}

void StartAdding(char& cAddFlag) {
    ST_LIST_CTRL& c = gs_stListCtrl;
    memset(c.szListBuf, 0, sizeof(c.szListBuf));
    c.iInputNum = 0;
    int iCount = ItemCount();
    if (iCount / c.iHeight != PageOf(c.iFocusItemNum))
        ShowListPage(iCount / c.iHeight);
    wmove(c.pListWin, c.iStartY + iCount % c.iHeight, c.iStartX);
    curs_set(1);
    cAddFlag = 1;
}

void DeleteFocused() {
    ST_LIST_CTRL& c = gs_stListCtrl;
    if (c.iFocusItemNum >= ItemCount())
        return;
    NV_DBG("list:delete:%s", c.vstrList[c.iFocusItemNum].c_str());
    c.vstrList.erase(c.vstrList.begin() + c.iFocusItemNum);
    if (c.vstrList.empty())
        c.iFocusItemNum = 0;
    else if (c.iFocusItemNum >= ItemCount())
        c.iFocusItemNum = ItemCount() - 1;
    ShowListPage(PageOf(c.iFocusItemNum));
    ShowListItem(c.iFocusItemNum, SHOW_FOUCS_STR);
}

void BrowseKey(int iKey, char& cAddFlag) {
    switch (iKey) {
        case KEY_DOWN:
            FocusNext();
            break;
        case KEY_UP:
            FocusPrevious();
            break;
        case KEY_NPAGE:
            NextPage();
            break;
        case KEY_PPAGE:
            PreviousPage();
            break;
        case KEY_F(2):
            StartAdding(cAddFlag);
            break;
        case KEY_F(3):
            DeleteFocused();
            break;
        default:
            return;
    }
    wrefresh(gs_stListCtrl.pListWin);
}

// Enter adds the line typed; the text stays on screen and typing goes on on
// the next row, or on the first row of a cleared area after the last row.
void AddTypedLine() {
    ST_LIST_CTRL& c = gs_stListCtrl;
    if (c.iInputNum <= 0)
        return;
    NV_DBG("list:user input:%s", c.szListBuf);
    TakePendingLine();
    int iNextRow = getcury(c.pListWin) + 1;
    if (iNextRow >= c.iStartY + c.iHeight) {
        ClearListWindow();
        iNextRow = c.iStartY;
    }
    wmove(c.pListWin, iNextRow, c.iStartX);
    wrefresh(c.pListWin);
}

// Blanks the cell left of the cursor and leaves the cursor there; then, on
// purpose, clears the byte after the last character, not the last character
// itself, which stays in the line until another is typed over it.
void EraseTypedChar() {
    ST_LIST_CTRL& c = gs_stListCtrl;
    int iCol = getcurx(c.pListWin);
    if (c.iInputNum < 1 || iCol < 1)
        return;
    int iRow = getcury(c.pListWin);
    mvwaddch(c.pListWin, iRow, iCol - 1, ' ');
    wmove(c.pListWin, iRow, iCol - 1);
    c.szListBuf[c.iInputNum] = '\0';
    --c.iInputNum;
    wrefresh(c.pListWin);
}

// Any key is typed as its low byte while the line has room.
void TypeKey(int iKey) {
    ST_LIST_CTRL& c = gs_stListCtrl;
    int iRoom = std::min(c.iWidth, LIST_LINE_BUF_LEN - 1);
    if (c.iInputNum < iRoom) {
        char ch = static_cast<char>(iKey & 0xFF);
        c.szListBuf[c.iInputNum] = ch;
        waddch(c.pListWin, static_cast<unsigned char>(ch));
        ++c.iInputNum;
    }
    wrefresh(c.pListWin);
}

void AddModeKey(int iKey) {
    switch (iKey) {
        case KEY_DOWN:
        case KEY_UP:
        case KEY_NPAGE:
        case KEY_PPAGE:
        case KEY_F(2):
        case KEY_F(3):
            break;
        case 10:
            AddTypedLine();
            break;
        case 8:
        case KEY_BACKSPACE:
            EraseTypedChar();
            break;
        default:
            TypeKey(iKey);
            break;
    }
}

}  // namespace

int ClearListWindow() {
    ST_LIST_CTRL& c = gs_stListCtrl;
    for (int i = 0; i < c.iHeight; ++i)
        for (int j = 0; j < c.iWidth; ++j)
            mvwaddch(c.pListWin, c.iStartY + i, c.iStartX + j, ' ');
    wrefresh(c.pListWin);
    return 0;
}

int ShowListItem(int iItemIdx, SHOW_FLAG enShowFlag) {
    ST_LIST_CTRL& c = gs_stListCtrl;
    if (iItemIdx < 0 || iItemIdx >= ItemCount())
        return -1;
    const std::string& strItem = c.vstrList[iItemIdx];
    int iRow = c.iStartY + iItemIdx % c.iHeight;
    if (enShowFlag == SHOW_FOUCS_STR) {
        wattron(c.pListWin, A_REVERSE);
        c.iFocusItemNum = iItemIdx;
    }
    int iLen = std::min(static_cast<int>(strItem.size()), c.iWidth);
    for (int k = 0; k < iLen; ++k) {
        if (wmove(c.pListWin, iRow, c.iStartX + k) == OK)
            waddch(c.pListWin, static_cast<unsigned char>(strItem[k]));
    }
    wattroff(c.pListWin, A_REVERSE);
    return 0;
}

int ShowListPage(int iPageIdx) {
    ST_LIST_CTRL& c = gs_stListCtrl;
    int iFirst = iPageIdx * c.iHeight;
    if (iPageIdx < 0 || iFirst > ItemCount())
        return -1;
    int iLast = std::min(iFirst + c.iHeight - 1, ItemCount() - 1);
    ClearListWindow();
    for (int i = iFirst; i <= iLast; ++i)
        ShowListItem(i, SHOW_NORMAL_STR);
    wrefresh(c.pListWin);
    return 0;
}

int EnterListCtrlBar(const VECTOR_STR& vstrCtrlShowStr, const VECTOR_STR& vstrCtrlArgv,
                     const DRAW_PARAMETER* pstDrawCtrlPara, pfBackToLastLevel pfnReturn) {
    // Refused here only when both are wrong; each alone is refused below.
    if (vstrCtrlArgv.empty() && pstDrawCtrlPara == NULL) {
        NV_DBG("list parameter error!%d:%d", static_cast<int>(vstrCtrlArgv.size()),
               pstDrawCtrlPara != NULL);
        return -1;
    }
    int iHeight = pstDrawCtrlPara ? pstDrawCtrlPara->iHeight : 0;
    int iWidth = pstDrawCtrlPara ? pstDrawCtrlPara->iWidth : 0;
    if (iHeight < 3 || iWidth <= 2) {
        NV_DBG("List draw para error:%d:%d", iHeight, iWidth);
        return -1;
    }
    ST_LIST_CTRL& c = gs_stListCtrl;
    ResetListCtrl();
    if (!vstrCtrlArgv.empty())
        c.pfnListUpdate = reinterpret_cast<UPDATE_FUNC>(ArgToPtr(vstrCtrlArgv[0]));
    if (c.pfnListUpdate == NULL) {
        NV_DBG("list Para error:%s", "list update function is null");
        return -1;
    }
    c.pfnReturn = pfnReturn;
    c.pListWin = newwin(iHeight, iWidth, pstDrawCtrlPara->iStartY, pstDrawCtrlPara->iStartX);
    box(c.pListWin, 0, 0);
    keypad(c.pListWin, TRUE);
    wbkgd(c.pListWin, COLOR_PAIR(6));
    c.iStartX = c.iStartY = 1;
    c.iWidth = iWidth - 2;
    c.iHeight = iHeight - 2;
    // A newline inside an item is a blank, in what is shown and in what is
    // sent, also for items on pages never shown: the agent would otherwise
    // read one item as two.
    c.vstrList = vstrCtrlShowStr;
    for (std::string& strItem : c.vstrList)
        std::replace(strItem.begin(), strItem.end(), '\n', ' ');
    if (!c.vstrList.empty()) {
        ShowListPage(0);
        ShowListItem(0, SHOW_FOUCS_STR);
        wrefresh(c.pListWin);
    }
    RegistKeyFunc(ListKeyFunction, c.pListWin);
    RefreshPrompt(PROMPT_LIST);
    NV_DBG("list control init ok!");
    return 0;
}

void ListKeyFunction(int iKeyValue) {
    // The joined list, with one byte more for its terminator, and the mode.
    static char szSendBuffer[LIST_SEND_BUF_LEN + 1];
    static char cAddFlag = 0;
    if (gs_stListCtrl.pListWin == NULL)
        return;
    if (iKeyValue == KEY_F(9)) {
        ConfirmList(szSendBuffer, sizeof(szSendBuffer), cAddFlag);
    } else if (iKeyValue == 27) {
        NV_DBG("list: cancel and return!");
        CloseListBar(szSendBuffer, sizeof(szSendBuffer), cAddFlag);
    } else if (cAddFlag == 1) {
        AddModeKey(iKeyValue);
    } else {
        BrowseKey(iKeyValue, cAddFlag);
    }
}
