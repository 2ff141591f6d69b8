// The form encoding: each field of a form, as the shortcut-key bar joins
// them ("*" before every field and at the end), becomes one blank-separated
// token; choice words travel as their numbers and placeholders as "-" or 0.
#include <cstring>
#include <string>

#include "link/payload_kinds.h"
#include "strings/com_str.h"

namespace {

// Bound of the encoded form and of one token.
const size_t FORM_BUF_LEN = 256;

struct ST_FORM_WORD {
    const char** pcWord;
    const char* pcCode;
};

const ST_FORM_WORD g_astFormWord[] = {
    {pcStrHighest, "1"},   {pcStrTcp, "1"},      {pcStrAccept, "1"},      {pcStrOpen, "1"},
    {pcStrLowest, "2"},    {pcStrUdp, "2"},      {pcStrDrop, "2"},        {pcStrReject, "3"},
    {pcStrDefaultIP, "-"}, {pcStrNullInfo, "-"}, {pcStrDefaultPort, "0"}, {pcStrClose, "0"},
};

// A token's code, or the token itself when it is no catalogue word.
const char* Translate(const std::string& sToken) {
    for (const ST_FORM_WORD& w : g_astFormWord) {
        if (sToken == w.pcWord[iLanIdx])
            return w.pcCode;
    }
    return sToken.c_str();
}

void AppendBounded(std::string& sOut, const char* pcText) {
    for (const char* p = pcText; *p && sOut.size() < FORM_BUF_LEN; ++p)
        sOut += *p;
}

}  // namespace

std::string EncodeForm(const char* pcSetting) {
    std::string sOut, sToken;
    for (const char* p = pcSetting; *p && sOut.size() < FORM_BUF_LEN; ++p) {
        if (*p != '*') {
            if (sToken.size() < FORM_BUF_LEN - 1)
                sToken += *p;
            continue;
        }
        AppendBounded(sOut, Translate(sToken));
        AppendBounded(sOut, " ");
        sToken.clear();
    }
    // One blank is trimmed at each end; inner doubled blanks stay.
    if (!sOut.empty() && sOut.back() == ' ')
        sOut.pop_back();
    if (!sOut.empty() && sOut.front() == ' ')
        sOut.erase(0, 1);
    return sOut;
}
