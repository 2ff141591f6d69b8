// The combined catalogue and the language index.
#include "strings/com_str.h"

#include "strings/english_str.h"
#include "strings/gb2312_str.h"
#include "strings/utf8_str.h"

int iLanIdx = LAN_MAX;

const char* pcStrConnectError[LAN_MAX] = {pcEn_ConnectError, pcGB2312_ConnectError,
                                          pcUTF8_ConnectError};
