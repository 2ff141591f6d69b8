// A bare agent client for tests: raw bytes to a socket and the raw answer
// back (for malformed requests), and whole requests with the answer parsed.
#ifndef NV_TESTS_SUPPORT_RAW_CLIENT_H
#define NV_TESTS_SUPPORT_RAW_CLIENT_H

#include <string>

#include "link/state_record.h"

namespace nvtest {

// Connects a blocking stream socket to the AF_UNIX path. Returns the
// descriptor, or -1 with errno set.
int ConnectUnix(const std::string& path);

// Header (packet length, command) followed by the payload, as a client sends
// a request.
std::string MakeRequest(short cmd, const std::string& payload);

// Writes every byte; false on an error (SIGPIPE is never raised).
bool SendAll(int fd, const std::string& bytes);

struct RawReply {
    bool bConnected = false;  // the connection could be made
    int iConnectErrno = 0;    // why it could not
    bool bClosed = false;     // the agent closed the connection before the deadline
    std::string sBytes;       // everything received until then
};

// Reads from fd until the peer closes it or timeoutMs pass.
RawReply ReadUntilClose(int fd, int timeoutMs);

// Connects, sends bytes, optionally half-closes the sending side (the agent
// then sees the end of the stream), and reads until the agent closes or
// timeoutMs pass.
RawReply RawExchange(const std::string& path, const std::string& bytes, bool halfClose = false,
                     int timeoutMs = 5000);

struct Answer {
    bool bOk = false;    // a whole, well-formed answer arrived
    std::string sError;  // what went wrong when bOk is false
    short cmd = 0;
    int result = 0;
    std::string sDetail;
    std::string sBody;
};

// Sends one request and parses the answer.
Answer Request(const std::string& path, short cmd, const std::string& payload,
               int timeoutMs = 5000);

// Sends a check request and decodes the state it reports. On failure
// returns false with the reason in err.
bool CheckState(const std::string& path, cConf_Inf& conf, cSvrState& svr, std::string& err);

}  // namespace nvtest

#endif
