// The English catalogue.
#include "strings/english_str.h"

const char* pcEn_ConnectError = "Error:connect failed!";
