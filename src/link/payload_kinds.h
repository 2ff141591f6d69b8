// The payload kinds of the set commands: how an update function turns the
// text a control bar hands it into the payload it sends.
#ifndef NV_LINK_PAYLOAD_KINDS_H
#define NV_LINK_PAYLOAD_KINDS_H

#include <string>

typedef enum {
    KIND_OPEN_CLOSE,      // "1" for [Open], "0" for [Close], else empty
    KIND_YES_NO,          // "1" for [Yes], "0" for [No], else empty
    KIND_KERNEL_NUMBER,   // the digits of the text, blanks skipped
    KIND_THRESHOLD,       // digits only, empty allowed
    KIND_FREE_TEXT,       // the text as typed
    KIND_CONFIRM_SEARCH,  // sent without payload when [Yes] occurs in the text
    KIND_CONFIRM_EXACT,   // sent without payload when the text is [Yes]
    KIND_FORM             // the form encoding of the form fields
} EN_PAYLOAD_KIND;

// The outcome of turning a text into a payload: send it, or return iRet
// without sending.
struct ST_PAYLOAD {
    bool bSend;
    int iRet;
    std::string sData;
};

// The payload of every kind but the form.
ST_PAYLOAD MakePayload(EN_PAYLOAD_KIND enKind, const char* pcSetting);

// The form encoding of a form text: tokens between "*" translated through
// the choice words of the current language, joined by blanks, one blank
// trimmed at each end, at most 256 bytes.
std::string EncodeForm(const char* pcSetting);

#endif
