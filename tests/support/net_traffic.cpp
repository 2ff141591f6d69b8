// Each side runs in a forked child that enters its network namespace with
// setns, so that the test process itself stays where it is.
#include "net_traffic.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <thread>

namespace nvtest {

namespace {

bool EnterNetns(const std::string& netns) {
    if (netns.empty())
        return true;
    int fd = open(("/run/netns/" + netns).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    bool ok = setns(fd, CLONE_NEWNET) == 0;
    close(fd);
    return ok;
}

// The address as a socket address; false when it is neither family's.
bool Address(const std::string& addr, int port, sockaddr_storage& ss, socklen_t& len) {
    memset(&ss, 0, sizeof ss);
    auto* a4 = reinterpret_cast<sockaddr_in*>(&ss);
    auto* a6 = reinterpret_cast<sockaddr_in6*>(&ss);
    if (inet_pton(AF_INET, addr.c_str(), &a4->sin_addr) == 1) {
        a4->sin_family = AF_INET;
        a4->sin_port = htons(static_cast<uint16_t>(port));
        len = sizeof *a4;
        return true;
    }
    if (inet_pton(AF_INET6, addr.c_str(), &a6->sin6_addr) == 1) {
        a6->sin6_family = AF_INET6;
        a6->sin6_port = htons(static_cast<uint16_t>(port));
        len = sizeof *a6;
        return true;
    }
    return false;
}

bool Readable(int fd, int timeoutMs) {
    pollfd p{fd, POLLIN, 0};
    return poll(&p, 1, timeoutMs) == 1;
}

// A connected TCP socket, or -1 after timeoutMs.
int Connect(const std::string& addr, int port, int timeoutMs) {
    sockaddr_storage ss;
    socklen_t len = 0;
    if (!Address(addr, port, ss, len))
        return -1;
    int fd = socket(ss.ss_family, SOCK_STREAM | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return -1;
    if (connect(fd, reinterpret_cast<sockaddr*>(&ss), len) != 0 && errno != EINPROGRESS) {
        close(fd);
        return -1;
    }
    pollfd p{fd, POLLOUT, 0};
    int err = 0;
    socklen_t el = sizeof err;
    if (poll(&p, 1, timeoutMs) != 1 || getsockopt(fd, SOL_SOCKET, SO_ERROR, &err, &el) != 0 ||
        err != 0) {
        close(fd);
        return -1;
    }
    fcntl(fd, F_SETFL, 0);
    return fd;
}

bool Echo(int fd, int timeoutMs) {
    char c = 'x';
    if (send(fd, &c, 1, MSG_NOSIGNAL) != 1 || !Readable(fd, timeoutMs))
        return false;
    return recv(fd, &c, 1, 0) == 1 && c == 'x';
}

// A socket bound to every address of both families; -1 when it cannot be.
int Bind(int port, bool udp) {
    int fd = socket(AF_INET6, udp ? SOCK_DGRAM : SOCK_STREAM, 0);
    int off = 0, on = 1;
    setsockopt(fd, IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof off);
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in6 a{};
    a.sin6_family = AF_INET6;
    a.sin6_port = htons(static_cast<uint16_t>(port));
    a.sin6_addr = in6addr_any;
    if (bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 || (!udp && listen(fd, 16) != 0))
        return -1;
    return fd;
}

[[noreturn]] void Serve(int fd, bool udp) {
    if (udp) {
        for (;;) {
            char buf[512];
            sockaddr_storage from;
            socklen_t fl = sizeof from;
            ssize_t n = recvfrom(fd, buf, sizeof buf, 0, reinterpret_cast<sockaddr*>(&from), &fl);
            if (n > 0)
                sendto(fd, buf, static_cast<size_t>(n), 0, reinterpret_cast<sockaddr*>(&from), fl);
        }
    }
    signal(SIGCHLD, SIG_IGN);
    for (;;) {
        int c = accept(fd, nullptr, nullptr);
        if (c < 0)
            continue;
        if (fork() == 0) {
            char buf[512];
            ssize_t n;
            while ((n = recv(c, buf, sizeof buf, 0)) > 0)
                send(c, buf, static_cast<size_t>(n), MSG_NOSIGNAL);
            _exit(0);
        }
        close(c);
    }
}

// Runs body in a child in netns; true when it exits 0.
template <class Body>
bool InChild(const std::string& netns, Body body) {
    pid_t pid = fork();
    if (pid == 0) {
        if (!EnterNetns(netns))
            _exit(3);
        _exit(body() ? 0 : 1);
    }
    int status = 0;
    return pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

}  // namespace

EchoServer::EchoServer(const std::string& netns, int port, bool udp) {
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0)
        return;
    m_pid = fork();
    if (m_pid == 0) {
        close(ready[0]);
        // The serving children go with the server's process group.
        setpgid(0, 0);
        int fd = EnterNetns(netns) ? Bind(port, udp) : -1;
        char c = 'r';
        if (fd < 0 || write(ready[1], &c, 1) != 1)
            _exit(3);
        close(ready[1]);
        Serve(fd, udp);
    }
    close(ready[1]);
    if (m_pid > 0)
        setpgid(m_pid, m_pid);
    char c;
    if (m_pid > 0 && (!Readable(ready[0], 5000) || read(ready[0], &c, 1) != 1)) {
        int status = 0;
        kill(m_pid, SIGKILL);
        waitpid(m_pid, &status, 0);
        m_pid = -1;
    }
    close(ready[0]);
}

EchoServer::~EchoServer() {
    if (m_pid > 0) {
        kill(-m_pid, SIGKILL);
        int status = 0;
        waitpid(m_pid, &status, 0);
    }
}

bool TcpEchoes(const std::string& netns, const std::string& addr, int port, int timeoutMs) {
    return InChild(netns, [&] {
        int fd = Connect(addr, port, timeoutMs);
        return fd >= 0 && Echo(fd, timeoutMs);
    });
}

bool UdpEchoes(const std::string& netns, const std::string& addr, int port, int timeoutMs) {
    return InChild(netns, [&] {
        sockaddr_storage ss;
        socklen_t len = 0;
        if (!Address(addr, port, ss, len))
            return false;
        int fd = socket(ss.ss_family, SOCK_DGRAM, 0);
        if (fd < 0 || connect(fd, reinterpret_cast<sockaddr*>(&ss), len) != 0)
            return false;
        char c = 'x';
        if (send(fd, &c, 1, 0) != 1 || !Readable(fd, timeoutMs))
            return false;
        return recv(fd, &c, 1, 0) == 1 && c == 'x';
    });
}

TcpSession::TcpSession(const std::string& netns, const std::string& addr, int port) {
    int ask[2], answer[2];
    if (pipe2(ask, O_CLOEXEC) != 0)
        return;
    if (pipe2(answer, O_CLOEXEC) != 0) {
        close(ask[0]);
        close(ask[1]);
        return;
    }
    m_pid = fork();
    if (m_pid == 0) {
        close(ask[1]);
        close(answer[0]);
        int fd = EnterNetns(netns) ? Connect(addr, port, 1500) : -1;
        char r = fd >= 0 ? 'o' : 'f';
        if (write(answer[1], &r, 1) != 1 || fd < 0)
            _exit(1);
        char c;
        while (read(ask[0], &c, 1) == 1) {
            r = Echo(fd, 1500) ? 'o' : 'f';
            if (write(answer[1], &r, 1) != 1)
                break;
        }
        _exit(0);
    }
    close(ask[0]);
    close(answer[1]);
    m_ask = ask[1];
    m_answer = answer[0];
    char r;
    m_open = m_pid > 0 && Readable(m_answer, 5000) && read(m_answer, &r, 1) == 1 && r == 'o';
}

bool TcpSession::Ping(int timeoutMs) {
    char c = 'p';
    if (!m_open || write(m_ask, &c, 1) != 1 || !Readable(m_answer, timeoutMs + 1000))
        return false;
    return read(m_answer, &c, 1) == 1 && c == 'o';
}

TcpSession::~TcpSession() {
    if (m_ask >= 0)
        close(m_ask);
    if (m_answer >= 0)
        close(m_answer);
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        int status = 0;
        waitpid(m_pid, &status, 0);
    }
}

namespace {

// Sends a byte every 50 ms and counts what arrives, until the peer closes.
[[noreturn]] void Tick(int fd, volatile unsigned long* count) {
    fcntl(fd, F_SETFL, O_NONBLOCK);
    auto next = std::chrono::steady_clock::now();
    for (;;) {
        pollfd p{fd, POLLIN, 0};
        poll(&p, 1, 10);
        char buf[256];
        ssize_t n = recv(fd, buf, sizeof buf, 0);
        if (n == 0)
            _exit(0);
        if (n > 0)
            *count += static_cast<unsigned long>(n);
        if (std::chrono::steady_clock::now() >= next) {
            char c = 't';
            send(fd, &c, 1, MSG_NOSIGNAL);
            next += std::chrono::milliseconds(50);
        }
    }
}

void Reap(pid_t pid) {
    if (pid > 0) {
        kill(pid, SIGKILL);
        int status = 0;
        waitpid(pid, &status, 0);
    }
}

}  // namespace

TickSession::TickSession(const std::string& netns, const std::string& addr, int port) {
    void* shared = mmap(nullptr, 2 * sizeof(unsigned long), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
        return;
    m_counts = static_cast<volatile unsigned long*>(shared);
    m_counts[0] = m_counts[1] = 0;
    int listener = Bind(port, false);
    if (listener < 0)
        return;
    m_server = fork();
    if (m_server == 0) {
        int c = accept(listener, nullptr, nullptr);
        if (c < 0)
            _exit(1);
        close(listener);
        Tick(c, &m_counts[0]);
    }
    close(listener);
    m_client = fork();
    if (m_client == 0) {
        int fd = EnterNetns(netns) ? Connect(addr, port, 3000) : -1;
        if (fd < 0)
            _exit(1);
        Tick(fd, &m_counts[1]);
    }
}

TickSession::~TickSession() {
    Reap(m_client);
    Reap(m_server);
    if (m_counts != nullptr)
        munmap(const_cast<unsigned long*>(m_counts), 2 * sizeof(unsigned long));
}

unsigned long TickSession::ServerReceived() const {
    return m_counts != nullptr ? m_counts[0] : 0;
}

unsigned long TickSession::ClientReceived() const {
    return m_counts != nullptr ? m_counts[1] : 0;
}

bool TickSession::Flowing(int timeoutMs) const {
    for (int waited = 0; waited < timeoutMs; waited += 50) {
        if (ServerReceived() > 0 && ClientReceived() > 0)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

bool TickSession::Resumes(int timeoutMs) const {
    unsigned long s = ServerReceived(), c = ClientReceived();
    for (int waited = 0; waited < timeoutMs; waited += 50) {
        if (ServerReceived() > s && ClientReceived() > c)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

}  // namespace nvtest
