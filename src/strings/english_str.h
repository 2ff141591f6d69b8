// The English catalogue.
#ifndef NV_STRINGS_ENGLISH_STR_H
#define NV_STRINGS_ENGLISH_STR_H

extern const char* pcEn_ConnectError;

#endif
