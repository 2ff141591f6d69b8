// Helpers every page builder uses to declare its rows and cells.
#ifndef NV_PAGES_PAGE_BUILD_H
#define NV_PAGES_PAGE_BUILD_H

#include <string>

#include "content/content_data.h"
#include "content/content_types.h"

// A new page of iItemNum rows, without function keys.
CONTENT_DATA* NewPage(int iItemNum, pfItemFuncType pfnRefresh);
// Gives row r its prompt, help text and iSectionNum empty cells.
CONTENT_ITEM& SetRow(CONTENT_DATA* pstPage, int r, int iPromptIndex, int iHelpInfoIndex,
                     int iSectionNum);
// A cell of fixed text.
void SetTextCell(CONTENT_SECTION& stSection, const std::string& sText);
// A cell opening the choose bar over the options.
void SetChooseCell(CONTENT_SECTION& stSection, const std::string& sValue, const tVstr& vsOptions,
                   UPDATE_FUNC pfnUpdate);
// A cell edited in place by the input bar (no window of its own).
void SetInputCell(CONTENT_SECTION& stSection, const std::string& sValue, int iMaxWidth,
                  UPDATE_FUNC pfnUpdate, int iLenLimit, int iInputType);
// A "[scan list]" cell opening the list bar over the list.
void SetListCell(CONTENT_SECTION& stSection, const tVstr& vsList, UPDATE_FUNC pfnUpdate);

// The shown text of a flag: pcOn for '1', pcOff for '0', empty otherwise.
std::string FlagText(char chFlag, const char** pcOn, const char** pcOff);
// The options of an on/off cell in the current language.
tVstr Choices(const char** pcFirst, const char** pcSecond);
// printf into a 32-byte buffer, as the pages format their values.
std::string Format32(const char* pcFmt, ...) __attribute__((format(printf, 1, 2)));

#endif
