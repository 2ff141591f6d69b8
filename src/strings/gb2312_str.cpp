// The Chinese catalogue in GB2312.
#include "strings/gb2312_str.h"

const char* pcGB2312_ConnectError = "\xb4\xed\xce\xf3:\xc1\xac\xbd\xd3\xca\xa7\xb0\xdc!";
