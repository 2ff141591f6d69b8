// Function-key forms and the list pages that carry them: a form is declared
// as a table of rows (caption and one field), built into a content page
// whose fields store what the user types or chooses into themselves, and
// registered on a page under a function key with its command sender.
#ifndef NV_PAGES_FORM_BUILD_H
#define NV_PAGES_FORM_BUILD_H

#include <string>

#include "content/content_data.h"
#include "content/content_types.h"
#include "link/state_record.h"

// One row of a form: a caption, then an input or a choose field, and for
// some forms a reminder behind the field.
struct ST_FORM_ROW {
    const char** pcCaption;
    EN_CTRL_BAR_TYPE enField;  // EN_INPUT_CONTROL or EN_CHOOSE_CONTROL
    int iMaxWidth;
    const char** pcInitial;  // the field's first text (a placeholder or a choice)
    int iLenLimit;           // input fields: the input bar's length-limit flag
    int iInputType;          // input fields: 0 plain, 1 masked
    const char** pcChoice1;  // choose fields: the two choices
    const char** pcChoice2;
    const char** pcReminder;  // null: no third cell
};

// A form of iRowNum rows. sFirstInitial, when not null, replaces the first
// field's initial text (a switch whose text comes from the state).
CONTENT_DATA* BuildForm(const ST_FORM_ROW* pstRows, int iRowNum, int iHelp,
                        const std::string* psFirstInitial = nullptr);

// Registers form under key on page, with its command sender.
void AddFormKey(CONTENT_DATA* pstPage, int iKey, UPDATE_FUNC pfnSender, CONTENT_DATA* pstForm);

// A read-only list page: one row per line, shown as it is; the prompt and
// help also stand for the page while it has no rows.
CONTENT_DATA* ListPage(const tVecStr& vsLines, int iPrompt, int iHelp,
                       pfItemFuncType pfnRefresh = nullptr);

// The delete form: one index field of width 5.
CONTENT_DATA* DeleteForm(int iHelp);
// A confirmation form: the question and "[Yes]"/"[No]", "[No]" first.
CONTENT_DATA* ClearForm(const char** pcQuestion, int iHelp);

#endif
