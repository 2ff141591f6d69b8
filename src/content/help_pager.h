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
// After a resize: the help window over the new content area.
void RelayoutHelpWindow();

// Opens the pager with the help text of id; the keyboard goes back through
// pfnReturn on Esc. Nothing happens for an unknown id or a null pfnReturn.
void ShowHelpInfo(int id, pfBackToLastLevel pfnReturn);
void ShowHelpInfoPage(int iPage);
void HelpInfoKeyFunc(int iKey);

// Breaks text into pages of the pager's text area, filling
// aiPageStartStrPos and iTotalPageNum of pstPara.
void BreakHelpPages(HELP_INFO_PARA* pstPara, const char* pcText);

#endif
