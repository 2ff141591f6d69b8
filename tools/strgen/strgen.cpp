// The GB2312 catalogue generator's conversion: renaming, literal re-encoding
// and escaping.
#include "strgen.h"

#include <iconv.h>

#include <cctype>
#include <cstdio>
#include <utility>
#include <vector>

bool Utf8ToGb2312(const std::string& strIn, std::string* pOut) {
    iconv_t cd = iconv_open("GB2312", "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1))
        return false;
    // GB2312 never takes more bytes than UTF-8 for the same character.
    std::vector<char> vOut(strIn.size() + 16);
    std::string strCopy = strIn;
    char* pcIn = &strCopy[0];
    size_t ulInLeft = strCopy.size();
    char* pcOut = vOut.data();
    size_t ulOutLeft = vOut.size();
    bool bOk = iconv(cd, &pcIn, &ulInLeft, &pcOut, &ulOutLeft) != static_cast<size_t>(-1) &&
               ulInLeft == 0 &&
               iconv(cd, nullptr, nullptr, &pcOut, &ulOutLeft) != static_cast<size_t>(-1);
    iconv_close(cd);
    if (bOk)
        pOut->assign(vOut.data(), vOut.size() - ulOutLeft);
    return bOk;
}

static void ReplaceAll(std::string* pStr, const std::string& strFrom, const std::string& strTo) {
    for (size_t i = pStr->find(strFrom); i != std::string::npos;
         i = pStr->find(strFrom, i + strTo.size()))
        pStr->replace(i, strFrom.size(), strTo);
}

// The literal's GB2312 bytes with non-ASCII bytes as \xNN. A hex digit right
// after such an escape would extend it, so the literal is split there.
static std::string EscapeLiteral(const std::string& strGb) {
    std::string strOut;
    bool bAfterEscape = false;
    for (unsigned char ch : strGb) {
        if (ch >= 0x80) {
            char szEsc[8];
            snprintf(szEsc, sizeof(szEsc), "\\x%02x", ch);
            strOut += szEsc;
            bAfterEscape = true;
            continue;
        }
        if (bAfterEscape && std::isxdigit(ch))
            strOut += "\" \"";
        strOut += static_cast<char>(ch);
        bAfterEscape = false;
    }
    return strOut;
}

static bool Fail(std::string* pErr, int iLine, const std::string& strWhat) {
    *pErr = "line " + std::to_string(iLine) + ": " + strWhat;
    return false;
}

static bool IsIdentChar(char ch) {
    return std::isalnum(static_cast<unsigned char>(ch)) || ch == '_';
}

bool ConvertCatalogueSource(const std::string& strIn, const std::string& strSourceName,
                            std::string* pOut, std::string* pErr) {
    static const std::pair<const char*, const char*> kRenames[] = {
        {"pcUTF8_", "pcGB2312_"},
        {"InitUTF8Str", "InitGB2312Str"},
        {"NV_STRINGS_UTF8_STR_H", "NV_STRINGS_GB2312_STR_H"},
        {"strings/utf8_str.h", "strings/gb2312_str.h"},
    };
    std::string strSrc = strIn;
    // The first comment line says what the file holds; the generated file gets
    // its own, saying where it comes from.
    bool bHadComment = strSrc.compare(0, 2, "//") == 0;
    if (bHadComment) {
        size_t ulEol = strSrc.find('\n');
        strSrc.erase(0, ulEol == std::string::npos ? strSrc.size() : ulEol);
    }
    for (const auto& stRename : kRenames)
        ReplaceAll(&strSrc, stRename.first, stRename.second);

    std::string strOut;
    int iLine = 1;
    size_t i = 0;
    while (i < strSrc.size()) {
        char ch = strSrc[i];
        if (ch == '\n')
            ++iLine;
        if (static_cast<unsigned char>(ch) >= 0x80)
            return Fail(pErr, iLine, "non-ASCII text outside a string literal");
        if (ch == '/' && i + 1 < strSrc.size() && strSrc[i + 1] == '/') {
            size_t ulEnd = strSrc.find('\n', i);
            if (ulEnd == std::string::npos)
                ulEnd = strSrc.size();
            for (; i < ulEnd; ++i) {
                if (static_cast<unsigned char>(strSrc[i]) >= 0x80)
                    return Fail(pErr, iLine, "non-ASCII text in a comment");
                strOut += strSrc[i];
            }
            continue;
        }
        if (ch == '/' && i + 1 < strSrc.size() && strSrc[i + 1] == '*')
            return Fail(pErr, iLine, "block comments are not supported");
        if (ch == '\'') {
            strOut += ch;
            for (++i; i < strSrc.size() && strSrc[i] != '\''; ++i) {
                if (strSrc[i] == '\\' && i + 1 < strSrc.size())
                    strOut += strSrc[i++];
                strOut += strSrc[i];
            }
            if (i < strSrc.size())
                strOut += strSrc[i++];
            continue;
        }
        if (ch != '"') {
            strOut += ch;
            ++i;
            continue;
        }
        if (i > 0 && IsIdentChar(strSrc[i - 1]))
            return Fail(pErr, iLine, "prefixed or raw string literals are not supported");
        size_t ulStart = ++i;
        while (i < strSrc.size() && strSrc[i] != '"' && strSrc[i] != '\n') {
            if (strSrc[i] == '\\')
                ++i;
            ++i;
        }
        if (i >= strSrc.size() || strSrc[i] != '"')
            return Fail(pErr, iLine, "unterminated string literal");
        std::string strRaw = strSrc.substr(ulStart, i - ulStart);
        std::string strGb;
        if (!Utf8ToGb2312(strRaw, &strGb))
            return Fail(pErr, iLine, "no GB2312 form for \"" + strRaw + "\"");
        strOut += '"' + EscapeLiteral(strGb) + '"';
        ++i;
    }
    for (const char* pcTrace : {"UTF8", "utf8"}) {
        size_t ulAt = strOut.find(pcTrace);
        if (ulAt != std::string::npos) {
            int iAtLine = 1;
            for (size_t j = 0; j < ulAt; ++j)
                iAtLine += strOut[j] == '\n';
            return Fail(pErr, iAtLine,
                        std::string("\"") + pcTrace + "\" survives the renaming to GB2312");
        }
    }
    *pOut = "// The Chinese catalogue in GB2312, generated from " + strSourceName +
            " by nvstrgen: do not edit." + (bHadComment ? "" : "\n") + strOut;
    return true;
}
