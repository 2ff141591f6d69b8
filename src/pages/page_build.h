// Helpers every page builder uses to declare its rows and cells.
#ifndef NV_PAGES_PAGE_BUILD_H
#define NV_PAGES_PAGE_BUILD_H

#include <string>

#include "content/content_data.h"

// A new page of iItemNum rows, without function keys.
CONTENT_DATA* NewPage(int iItemNum, pfItemFuncType pfnRefresh);
// Gives row r its prompt, help text and iSectionNum empty cells.
CONTENT_ITEM& SetRow(CONTENT_DATA* pstPage, int r, int iPromptIndex, int iHelpInfoIndex,
                     int iSectionNum);
// A cell of fixed text.
void SetTextCell(CONTENT_SECTION& stSection, const std::string& sText);

#endif
