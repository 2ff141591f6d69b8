// The combined text catalogue: each text three times, indexed by the language
// index iLanIdx (English, Chinese in GB2312, Chinese in UTF-8).
#ifndef NV_STRINGS_COM_STR_H
#define NV_STRINGS_COM_STR_H

enum EN_LANGUAGE { LAN_ENGLISH = 0, LAN_CHINESE_GB2312 = 1, LAN_CHINESE_UTF8 = 2, LAN_MAX = 3 };

extern int iLanIdx;

extern const char* pcStrConnectError[LAN_MAX];

#endif
