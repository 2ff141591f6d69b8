// The Chinese catalogue in UTF-8.
#include "strings/utf8_str.h"

const char* pcUTF8_ConnectError = "错误:连接失败!";
