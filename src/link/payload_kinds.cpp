// Turning a control bar's text into a command payload, by payload kind.
#include "link/payload_kinds.h"

#include <cstring>

#include "link/result_codes.h"
#include "strings/com_str.h"

namespace {

// Longest run of digits a kernel number collects.
const size_t MAX_KERNEL_DIGITS = 32;

ST_PAYLOAD Send(const std::string& sData) {
    return ST_PAYLOAD{true, 0, sData};
}
ST_PAYLOAD Refuse(int iRet) {
    return ST_PAYLOAD{false, iRet, std::string()};
}

bool Is(const char* pcSetting, const char** pcWord) {
    return pcSetting != nullptr && strcmp(pcSetting, pcWord[iLanIdx]) == 0;
}

// Toggles never refuse: a text that is neither word sends an empty payload.
ST_PAYLOAD Toggle(const char* pcSetting, const char** pcOn, const char** pcOff) {
    if (Is(pcSetting, pcOn))
        return Send("1");
    if (Is(pcSetting, pcOff))
        return Send("0");
    return Send("");
}

// Blanks are skipped, digits collected, and the first other character ends
// the walk without being an error.
ST_PAYLOAD KernelNumber(const char* pcSetting) {
    if (pcSetting == nullptr)
        return Refuse(-1);
    std::string sDigits;
    for (const char* p = pcSetting; *p && sDigits.size() < MAX_KERNEL_DIGITS; ++p) {
        if (*p == ' ')
            continue;
        if (*p < '0' || *p > '9')
            break;
        sDigits += *p;
    }
    return sDigits.empty() ? Refuse(-1) : Send(sDigits);
}

ST_PAYLOAD Threshold(const char* pcSetting) {
    if (pcSetting == nullptr)
        return Refuse(-1);
    for (const char* p = pcSetting; *p; ++p) {
        if (*p < '0' || *p > '9')
            return Refuse(-1);
    }
    return Send(pcSetting);
}

}  // namespace

ST_PAYLOAD MakePayload(EN_PAYLOAD_KIND enKind, const char* pcSetting) {
    switch (enKind) {
        case KIND_OPEN_CLOSE:
            return Toggle(pcSetting, pcStrOpen, pcStrClose);
        case KIND_YES_NO:
            return Toggle(pcSetting, pcStrYes, pcStrNo);
        case KIND_KERNEL_NUMBER:
            return KernelNumber(pcSetting);
        case KIND_THRESHOLD:
            return Threshold(pcSetting);
        case KIND_FREE_TEXT:
            return pcSetting ? Send(pcSetting) : Refuse(-1);
        case KIND_CONFIRM_SEARCH:
            return pcSetting && strstr(pcSetting, pcStrYes[iLanIdx]) ? Send("")
                                                                     : Refuse(NEED_NOT_SHOW_INFO);
        case KIND_CONFIRM_EXACT:
            return Is(pcSetting, pcStrYes) ? Send("") : Refuse(em_OK);
        case KIND_FORM:
            break;
    }
    return Refuse(-1);
}
