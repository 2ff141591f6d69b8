// The diagnostic log: one record per event, opened, appended and closed each
// time. NV_DBG writes "[DBG]" records (level bit 4), NV_XERR "[XERR]" records
// (level bit 1); both take a printf format of their own for the message.
#ifndef NV_SHELL_NV_LOG_H
#define NV_SHELL_NV_LOG_H

enum EN_LOG_LEVEL_BIT { LOG_BIT_ERR = 1, LOG_BIT_INFO = 2, LOG_BIT_DBG = 4 };

void NvLogRecord(int iLevelBit, const char* pcTag, const char* pcFile, int iLine,
                 const char* pcFunc, const char* pcFmt, ...) __attribute__((format(printf, 6, 7)));

#define NV_DBG(fmt, ...) \
    NvLogRecord(LOG_BIT_DBG, "DBG", __FILE__, __LINE__, __func__, fmt, ##__VA_ARGS__)
#define NV_XERR(fmt, ...) \
    NvLogRecord(LOG_BIT_ERR, "XERR", __FILE__, __LINE__, __func__, fmt, ##__VA_ARGS__)
// An error record located in the named function, for helpers that report on
// behalf of their caller.
#define NV_XERR_IN(func, fmt, ...) \
    NvLogRecord(LOG_BIT_ERR, "XERR", __FILE__, __LINE__, func, fmt, ##__VA_ARGS__)

#endif
