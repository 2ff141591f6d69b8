// Text from the agent made safe for a terminal: control characters are shown
// as escapes instead of being acted on.
#ifndef NV_TOOLS_NVCMD_VISIBLE_TEXT_H
#define NV_TOOLS_NVCMD_VISIBLE_TEXT_H

#include <string>

// Every byte below 0x20, DEL, and the C1 controls written as UTF-8 (U+0080
// to U+009F) become "\xHH" escapes (one per byte); a backslash becomes "\\"
// so that an escape in the text cannot be mistaken for one of ours. All
// other bytes pass unchanged, so ordinary UTF-8 and GB2312 text reads as
// sent.
std::string VisibleText(const std::string& text);

#endif
