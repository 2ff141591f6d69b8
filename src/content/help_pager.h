// The help pager: the boxed window over the content area that shows the help
// text of the focused row, page by page.
#ifndef NV_CONTENT_HELP_PAGER_H
#define NV_CONTENT_HELP_PAGER_H

#include <curses.h>

#include "content/content_types.h"

enum { HELP_MAX_PAGES = 20 };

typedef struct _ST_HELP_INFO_PARA {
    int iStartX;
    int iStartY;
    int iWidth;
    int iHeight;
    int iCurPageNum;
    int iTotalPageNum;
    int aiPageStartStrPos[HELP_MAX_PAGES];
    char* pcHelpInfoStr;
    WINDOW* pHelpWin;
    pfBackToLastLevel pfnReturn;
} HELP_INFO_PARA;

extern HELP_INFO_PARA sg_HelpInfo;

// Creates the help window at the content window's place; shown only on F12.
void InitHelpInfoWindow();
// Deletes the help window and zeroes the pager.
void UnInitHelpInfo();

#endif
