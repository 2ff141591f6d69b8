// The control bars: small editors that a page or the menu opens to change a
// value or to ask a question, and the result line they all show.
#ifndef NV_CTRLBAR_CONTROL_BAR_H
#define NV_CTRLBAR_CONTROL_BAR_H

#include <curses.h>

#include "content/content_types.h"
#include "content/draw_types.h"

// Shows the text of a result code on the information line (nothing for a
// code without text).
void ShowCtrlOperatingResult(int iResultCode);

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

#endif
