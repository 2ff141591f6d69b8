// The command-client library: sends the request described in the shared
// state record to the agent and fills the record from the answer, and fills
// the record's command-name and result-text maps.
#ifndef NV_CMDCLIENT_CMD_CLIENT_H
#define NV_CMDCLIENT_CMD_CLIENT_H

#include <string>

#include "link/global_val.h"

// Sends the request (shCmdNo, szCmdBuff, iLenToSend) over the connected
// fdConn, reads the whole answer, fills sReqRetInfo and, for a check answer,
// objCif and objSS; closes fdConn. Returns an EM_RET code.
int RequestCmd(cGlobalVal* pObj);
// The full English sentence of the last set command's detail, when the
// agent sent a shorter form (or one in Chinese) in sReqRetInfo; else empty.
// Tools print it; the console shows sReqRetInfo.
const std::string& FullDetailOfLastAnswer();
// Fills mName2Idx with every command name and number. Returns em_OK.
int SetName2Idx(cGlobalVal* pObj);
// Fills mErrorNo2Des with a description for every EM_RET value. Returns em_OK.
int SetErrMap(cGlobalVal* pObj);
// Writes all n bytes to fd, going on after partial writes and interrupts.
// Returns n, or -1 on an error.
int Writen(int fd, const void* buf, unsigned n);

// Creates a stream socket into fdConn and connects it to sSockName, waiting
// at most g_iRequestTimeoutMs (a stopped agent or a full listen queue cannot
// hold it longer). The limit started here also covers the RequestCmd that
// follows on the same socket. A socket path that does not fit sun_path is
// refused before any socket is made. On NV_CONNECT_FAILED fdConn stays open.
enum EN_CONNECT_RESULT {
    NV_CONNECT_OK = 0,
    NV_CONNECT_NO_SOCKET,
    NV_CONNECT_PATH_TOO_LONG,
    NV_CONNECT_FAILED,
};
int ConnectAgentSocket(cGlobalVal* pObj);
// True when path (without its NUL) fits the 108-byte sun_path with a NUL.
bool SocketPathFits(const std::string& path);

// How long RequestCmd waits for the agent at most, in milliseconds, for the
// whole exchange. Tests may shorten it.
extern int g_iRequestTimeoutMs;

// How long RequestCmd waits for the answer to a set command at most, in
// milliseconds, counted from the request: a change may keep the agent busy
// for up to a minute (an interface waiting for its DHCP lease), and the
// console shows that it is executing meanwhile. Tests may shorten it.
extern int g_iSetRequestTimeoutMs;

#endif
