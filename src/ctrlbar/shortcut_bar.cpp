// The shortcut-key bar: a function key's form shown in a boxed window of its
// own. Enter edits the focused field with the field's own control bar, F9
// joins the fields ("*" before each, a final "*") and hands the text to the
// key's command sender, Esc closes keeping what was typed.
#include <cstring>
#include <string>

#include "content/content_view.h"
#include "ctrlbar/control_bar.h"
#include "shell/nv_log.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"
#include "strings/com_str.h"

ST_SCKEY_CTRL gs_stSckeyCtrl;

namespace {

// The joined form text, and the same with password fields masked for the
// log; static so that a key allocates nothing.
char szSendBuffer[SCKEY_SEND_BUF_LEN];
char szLogBuffer[SCKEY_SEND_BUF_LEN];

// Writes text at position iPos, never past the buffer's last byte (the end
// stays NUL); returns the new position.
size_t PutText(char* pcBuf, size_t ulSize, size_t iPos, const char* pcText) {
    size_t iLen = strlen(pcText);
    if (iPos + iLen > ulSize - 1)
        iLen = iPos < ulSize - 1 ? ulSize - 1 - iPos : 0;
    memcpy(pcBuf + iPos, pcText, iLen);
    return iPos + iLen;
}

// Deletes the window, gives the keyboard back and zeroes the bar. The form
// stays with its page, values and all.
void CloseShortcutBar() {
    ST_SCKEY_CTRL& c = gs_stSckeyCtrl;
    if (c.pSckeyWin != NULL)
        delwin(c.pSckeyWin);
    pfBackToLastLevel pfnReturn = c.pfnReturn;
    memset(&c, 0, sizeof(c));
    if (pfnReturn != NULL)
        pfnReturn();
}

void ConfirmForm() {
    ST_SCKEY_CTRL& c = gs_stSckeyCtrl;
    if (c.pfnSckeyUpdate == NULL)
        return;
    JoinFormFields(c.stDrawInfo.pstContent, szSendBuffer, sizeof(szSendBuffer));
    JoinFormFields(c.stDrawInfo.pstContent, szLogBuffer, sizeof(szLogBuffer), true);
    NV_DBG("Shortcut Key Send Data Buffer:%s", szLogBuffer);
    // A sender that succeeds rebuilds its page and so frees this form; the
    // bar touches the form no more after this call.
    RunUpdateShowingWait(c.pfnSckeyUpdate, szSendBuffer, NULL);
    CloseShortcutBar();
}

}  // namespace

size_t JoinFormFields(const CONTENT_DATA* pstForm, char* pcBuf, size_t ulSize, bool bMask) {
    if (pcBuf == NULL || ulSize == 0)
        return 0;
    memset(pcBuf, 0, ulSize);
    size_t iPos = 0;
    for (int i = 0; pstForm != NULL && i < pstForm->iItemNum; ++i) {
        const CONTENT_ITEM& stItem = pstForm->pstItem[i];
        for (int j = 0; j < stItem.iSectionNum && iPos < ulSize; ++j) {
            const CONTENT_SECTION& stSec = stItem.pstSection[j];
            if (stSec.enCtrlType != EN_CHOOSE_CONTROL && stSec.enCtrlType != EN_INPUT_CONTROL)
                continue;
            // A field's text is cut where the buffer ends, never written past it.
            iPos = PutText(pcBuf, ulSize, iPos, "*");
            // Masked, a password field shows as the page draws it.
            std::string strText = bMask ? CellText(stSec) : stSec.strSecName;
            iPos = PutText(pcBuf, ulSize, iPos, strText.c_str());
        }
    }
    return PutText(pcBuf, ulSize, iPos, "*");
}

int EnterShortcutKeyCtrlBar(const tVstr& vstrCtrlArgv, const DRAW_PARAMETER* pstDrawCtrlPara,
                            pfBackToLastLevel pfnReturn) {
    if (vstrCtrlArgv.size() < 2 || pstDrawCtrlPara == NULL || pfnReturn == NULL) {
        NV_DBG("Parameter error!%d:%d:%d", static_cast<int>(vstrCtrlArgv.size()),
               pstDrawCtrlPara != NULL, pfnReturn != NULL);
        return -1;
    }
    ST_SCKEY_CTRL& c = gs_stSckeyCtrl;
    memset(&c, 0, sizeof(c));
    c.pfnSckeyUpdate = reinterpret_cast<UPDATE_FUNC>(ArgToPtr(vstrCtrlArgv[0]));
    if (c.pfnSckeyUpdate == NULL) {
        NV_DBG("Parameter error!%s", "ShortcutKey update function is NULL");
        return -1;
    }
    CONTENT_DATA* pstForm = static_cast<CONTENT_DATA*>(ArgToPtr(vstrCtrlArgv[1]));
    if (pstForm == NULL) {
        NV_DBG("Parameter error!%s", "ShortcutKey content data is NULL");
        memset(&c, 0, sizeof(c));
        return -1;
    }
    const DRAW_PARAMETER& r = *pstDrawCtrlPara;
    c.pfnReturn = pfnReturn;
    c.pSckeyWin = newwin(r.iHeight, r.iWidth, r.iStartY, r.iStartX);
    if (c.pSckeyWin == NULL) {
        NV_DBG("Parameter error!%s", "ShortcutKey window cannot be made");
        memset(&c, 0, sizeof(c));
        return -1;
    }
    box(c.pSckeyWin, 0, 0);
    keypad(c.pSckeyWin, TRUE);
    wbkgd(c.pSckeyWin, COLOR_PAIR(6));
    GetContentDrawInfo(c.pSckeyWin, 1, 1, r.iWidth - 2, r.iHeight - 2, 1, pstForm, &c.stDrawInfo);
    ShowContent(&c.stDrawInfo);
    wrefresh(c.pSckeyWin);
    RegistKeyFunc(ScKeyKeyFunction, c.pSckeyWin);
    NV_DBG("ShortcutKey control init ok!");
    return 0;
}

void ScKeyContentReturnFunc() {
    ST_SCKEY_CTRL& c = gs_stSckeyCtrl;
    if (c.stDrawInfo.pstContent == NULL)
        return;
    RedrawContent(&c.stDrawInfo);
    wrefresh(c.pSckeyWin);
    RegistKeyFunc(ScKeyKeyFunction, c.pSckeyWin);
}

void ScKeyKeyFunction(int iKeyValue) {
    ST_SCKEY_CTRL& c = gs_stSckeyCtrl;
    if (c.stDrawInfo.pstContent == NULL)
        return;
    static const struct {
        int iKey;
        EN_OPERATE enOp;
    } astMoves[] = {{KEY_UP, OPERATE_UP},        {KEY_DOWN, OPERATE_DOWN},
                    {KEY_LEFT, OPERATE_LEFT},    {KEY_RIGHT, OPERATE_RIGHT},
                    {KEY_PPAGE, OPERATE_PAGEUP}, {KEY_NPAGE, OPERATE_PAGEDOWN}};
    for (const auto& m : astMoves) {
        if (m.iKey == iKeyValue) {
            ContentKeyOperating(&c.stDrawInfo, m.enOp);
            wrefresh(c.pSckeyWin);
            return;
        }
    }
    if (iKeyValue == 10) {
        ContentModify(&c.stDrawInfo, ScKeyContentReturnFunc);
    } else if (iKeyValue == KEY_F(9)) {
        ConfirmForm();
    } else if (iKeyValue == 27) {
        NV_DBG("user cancel and return");
        CloseShortcutBar();
    }
}
