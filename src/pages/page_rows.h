// Rows of a settings page, each a label and one value cell: the kinds of row
// the pages are declared with.
#ifndef NV_PAGES_PAGE_ROWS_H
#define NV_PAGES_PAGE_ROWS_H

#include <string>

#include "content/content_data.h"
#include "content/content_types.h"

// Loads the state; a page builder returns the result unless it is 0 or 7.
bool LoadState(int& iRet);
// Hands a built page to the content view; a builder then returns 0.
int ShowPage(CONTENT_DATA* pstPage);

// A switch between two choice words (pcOn shown for flag '1', pcOff for '0').
void ChoiceRow(CONTENT_DATA* pstPage, int r, int iHelp, const char** pcLabel, char chFlag,
               const char** pcOn, const char** pcOff, UPDATE_FUNC pfnUpdate);
// A value typed in place, iMaxWidth wide, length-limited or scrolling.
void InputRow(CONTENT_DATA* pstPage, int r, int iHelp, const char** pcLabel,
              const std::string& sValue, int iMaxWidth, int iLenLimit, UPDATE_FUNC pfnUpdate);
// A list edited in the list bar.
void ListRow(CONTENT_DATA* pstPage, int r, int iHelp, const char** pcLabel, const tVstr& vsList,
             UPDATE_FUNC pfnUpdate);
// A read-only value.
void ValueRow(CONTENT_DATA* pstPage, int r, int iHelp, const char** pcLabel,
              const std::string& sValue);

#endif
