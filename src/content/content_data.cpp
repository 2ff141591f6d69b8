// Releasing pages and carrying addresses as text in argument vectors.
#include "content/content_data.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

bool IsEditable(const CONTENT_SECTION& stSection) {
    return stSection.enCtrlType >= EN_CHOOSE_CONTROL && stSection.enCtrlType <= EN_CLEAR_CONTROL;
}

bool IsEmptyFormPage(const CONTENT_DATA* pstContent) {
    if (pstContent == nullptr || pstContent->iItemNum > 0)
        return false;
    for (const auto& kv : pstContent->mKey2vstrArgv) {
        if (kv.second != nullptr)
            return true;
    }
    return false;
}

std::string PtrToArg(const void* p) {
    char szBuf[32];
    snprintf(szBuf, sizeof(szBuf), "%" PRIuPTR, reinterpret_cast<uintptr_t>(p));
    return szBuf;
}

void* ArgToPtr(const std::string& s) {
    uintptr_t u = 0;
    if (sscanf(s.c_str(), "%" SCNuPTR, &u) != 1)
        return nullptr;
    return reinterpret_cast<void*>(u);
}

void FreeContent(CONTENT_DATA* pstContent) {
    if (pstContent == nullptr || pstContent->pstItem == nullptr)
        return;
    for (int i = 0; i < pstContent->iItemNum; ++i) {
        delete[] pstContent->pstItem[i].pstSection;
        pstContent->pstItem[i].pstSection = nullptr;
    }
    delete[] pstContent->pstItem;
    pstContent->pstItem = nullptr;
    for (int iKey = MAP_KEY_F2; iKey <= MAP_KEY_F9; ++iKey) {
        tVstr* pvArgv = pstContent->mKey2vstrArgv[iKey];
        if (pvArgv == nullptr)
            continue;
        if (pvArgv->size() > 1)
            FreeContent(static_cast<CONTENT_DATA*>(ArgToPtr((*pvArgv)[1])));
        // The vector goes with its page, so that closing a page leaks nothing.
        delete pvArgv;
        pstContent->mKey2vstrArgv[iKey] = nullptr;
    }
    delete pstContent;
}
