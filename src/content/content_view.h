// The content view: the page shown in the content window, its keys, the
// focus moves, and the dispatch of the focused cell to its control bar.
#ifndef NV_CONTENT_CONTENT_VIEW_H
#define NV_CONTENT_CONTENT_VIEW_H

#include "content/content_draw.h"
#include "content/content_types.h"

extern CONTENT_DRAW_INFO sg_ContentInfo;

// Shows a freshly built page, freeing the one shown before. 0, or -1 when it
// cannot be laid out or shown.
int EnterContent(CONTENT_DATA* pstContent);
void ContentKeyFunc(int iKey);
void ContentKeyOperating(CONTENT_DRAW_INFO* pstInfo, EN_OPERATE enOp);
int ContentModify(const CONTENT_DRAW_INFO* pstInfo, pfBackToLastLevel pfnReturn);
void ReturnFunc();

// The rectangles the control bars of a page open in.
DRAW_PARAMETER ChooseBarRect(const CONTENT_DRAW_INFO* pstInfo);
DRAW_PARAMETER InputBarRect(const CONTENT_DRAW_INFO* pstInfo);
DRAW_PARAMETER ListBarRect(const CONTENT_DRAW_INFO* pstInfo);
DRAW_PARAMETER ShortcutBarRect();

#endif
