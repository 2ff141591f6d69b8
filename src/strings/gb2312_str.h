// The Chinese catalogue in GB2312: the UTF-8 catalogue's words re-encoded.
#ifndef NV_STRINGS_GB2312_STR_H
#define NV_STRINGS_GB2312_STR_H

extern const char* pcGB2312_ConnectError;

#endif
