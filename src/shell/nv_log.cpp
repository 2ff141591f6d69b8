// Writing one log record: time, tag, location (base file name without its
// extension, line, function) and message, cut to the record buffer.
#include "shell/nv_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "cmdclient/cmd_client.h"
#include "link/global_val.h"

namespace {

// Base name of a source path and the length of it without its extension.
const char* BaseName(const char* pcPath, int& iLen) {
    const char* pcSlash = strrchr(pcPath, '/');
    const char* pcBase = pcSlash ? pcSlash + 1 : pcPath;
    const char* pcDot = strrchr(pcBase, '.');
    iLen = static_cast<int>(pcDot ? pcDot - pcBase : static_cast<long>(strlen(pcBase)));
    return pcBase;
}

void StampTime(cGlobalVal* p) {
    struct tm stTm;
    p->CurTimeSec = time(NULL);
    localtime_r(&p->CurTimeSec, &stTm);
    strftime(p->szCurTimeStr, sizeof(p->szCurTimeStr), "%F %T", &stTm);
}

// Appends formatted text at *pUsed, never past the buffer; like one snprintf
// into the whole buffer, a record that is too long is cut.
void Append(char* pcBuf, size_t& used, const char* pcFmt, va_list ap) {
    const size_t cap = NV_LOG_BUFF_LEN;
    if (used >= cap - 1)
        return;
    int n = vsnprintf(pcBuf + used, cap - used, pcFmt, ap);
    if (n > 0)
        used += static_cast<size_t>(n) < cap - used ? static_cast<size_t>(n) : cap - 1 - used;
}

void AppendF(char* pcBuf, size_t& used, const char* pcFmt, ...) {
    va_list ap;
    va_start(ap, pcFmt);
    Append(pcBuf, used, pcFmt, ap);
    va_end(ap);
}

}  // namespace

void NvLogRecord(int iLevelBit, const char* pcTag, const char* pcFile, int iLine,
                 const char* pcFunc, const char* pcFmt, ...) {
    cGlobalVal* p = pg_Obj;
    if ((p->c_LOG_Level & iLevelBit) == 0)
        return;
    StampTime(p);
    int iBaseLen = 0;
    const char* pcBase = BaseName(pcFile, iBaseLen);
    size_t used = 0;
    p->szLogBuff[0] = '\0';
    AppendF(p->szLogBuff, used, "%s [%s]  [%.*s:%4d:%s]", p->szCurTimeStr, pcTag, iBaseLen, pcBase,
            iLine, pcFunc);
    va_list ap;
    va_start(ap, pcFmt);
    Append(p->szLogBuff, used, pcFmt, ap);
    va_end(ap);
    AppendF(p->szLogBuff, used, "\n");
    p->fdLogFile = open(p->szLogFileName, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    Writen(p->fdLogFile, p->szLogBuff, static_cast<unsigned>(strlen(p->szLogBuff)));
    close(p->fdLogFile);
}
