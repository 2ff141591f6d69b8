// Real traffic for the firewall tests inside the namespace sandbox: echo
// servers and clients, each a child process in the sandbox's own network
// namespace ("") or in a named one (/run/netns/NAME, such as "peer"), over
// IPv4 or IPv6 as the address says.
#ifndef NV_TESTS_SUPPORT_NET_TRAFFIC_H
#define NV_TESTS_SUPPORT_NET_TRAFFIC_H

#include <sys/types.h>

#include <string>

namespace nvtest {

// A TCP or UDP echo server on every address of its namespace; ended (and
// reaped) with the object.
class EchoServer {
public:
    EchoServer(const std::string& netns, int port, bool udp = false);
    ~EchoServer();
    EchoServer(const EchoServer&) = delete;
    EchoServer& operator=(const EchoServer&) = delete;
    bool Listening() const { return m_pid > 0; }

private:
    pid_t m_pid = -1;
};

// One TCP connection that echoes a byte, or one UDP datagram answered
// within timeoutMs; true when the echo came back.
bool TcpEchoes(const std::string& netns, const std::string& addr, int port, int timeoutMs = 1500);
bool UdpEchoes(const std::string& netns, const std::string& addr, int port, int timeoutMs = 1500);

// A long-lived TCP connection from a namespace, opened at construction;
// Ping sends a byte over it and waits for the echo.
class TcpSession {
public:
    TcpSession(const std::string& netns, const std::string& addr, int port);
    ~TcpSession();
    TcpSession(const TcpSession&) = delete;
    TcpSession& operator=(const TcpSession&) = delete;
    bool Open() const { return m_open; }
    bool Ping(int timeoutMs = 1500);

private:
    pid_t m_pid = -1;
    int m_ask = -1, m_answer = -1;
    bool m_open = false;
};

// A long-lived TCP connection like an interactive session's: a server on
// every address of the sandbox's own namespace at port and a client from
// netns to addr, each sending a byte every 50 ms and reading what comes
// (so that data flows both ways and each side has data outstanding when the
// path is cut). The bytes each side received so far are counted.
class TickSession {
public:
    TickSession(const std::string& netns, const std::string& addr, int port);
    ~TickSession();
    TickSession(const TickSession&) = delete;
    TickSession& operator=(const TickSession&) = delete;
    // Bytes received by the server and by the client so far.
    unsigned long ServerReceived() const;
    unsigned long ClientReceived() const;
    // True once both sides received something within timeoutMs.
    bool Flowing(int timeoutMs = 5000) const;
    // True when both counts grow within timeoutMs from now.
    bool Resumes(int timeoutMs) const;

private:
    pid_t m_server = -1, m_client = -1;
    volatile unsigned long* m_counts = nullptr;
};

}  // namespace nvtest

#endif
