// The Chinese catalogue in UTF-8.
#ifndef NV_STRINGS_UTF8_STR_H
#define NV_STRINGS_UTF8_STR_H

extern const char* pcUTF8_ConnectError;

#endif
