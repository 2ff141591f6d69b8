// The server's lifecycle and its worker pool. Workers block in accept on the
// shared listening socket; the kernel hands each connection to one of them.
// Stopping shuts the listening socket down, which refuses new clients and,
// once the queue is empty, wakes every blocked accept with EINVAL.
#include "agent/server.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>

#include "agent/activated_socket.h"

namespace nvagent {

Server::Server(Backend& backend, Journal& journal, const ServerOptions& opts)
    : m_backend(backend), m_journal(journal), m_opts(opts) {}

Server::~Server() {
    Stop();
}

bool Server::Listen(std::string& err) {
    return OpenListenSocket(m_opts.sSocketPath, m_opts.iBacklog, m_sock, err);
}

bool Server::Start(std::string& err) {
    if (m_sock.fd < 0) {
        err = "the server is not listening";
        return false;
    }
    try {
        for (int i = 0; i < m_opts.iWorkers; ++i)
            m_workers.emplace_back([this] { WorkerLoop(); });
    } catch (const std::system_error& e) {
        err = std::string("cannot start a worker thread: ") + e.what();
        Stop();
        return false;
    }
    return true;
}

void Server::Stop() {
    if (m_sock.fd < 0)
        return;
    m_stopping = true;
    if (!m_sock.bActivated)
        shutdown(m_sock.fd, SHUT_RDWR);
    for (std::thread& t : m_workers)
        t.join();
    m_workers.clear();
    close(m_sock.fd);
    RemoveListenSocketFile(m_opts.sSocketPath, m_sock);
    m_sock.fd = -1;
}

void Server::WorkerLoop() {
    ConnectionHandler handler(m_backend, m_journal, m_opts.limits);
    for (;;) {
        if (m_sock.bActivated && !AwaitActivatedClient(m_sock.fd, m_stopping))
            return;
        int fd = accept4(m_sock.fd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd >= 0) {
            handler.Serve(fd);
        } else if (AcceptFailureIsFinal(errno)) {
            return;
        }
    }
}

// EINVAL means the socket was shut down and its queue is empty. Other
// failures are passing (a client that gave up, descriptors running out) and
// are retried after a short pause, so a worker never spins on them.
bool Server::AcceptFailureIsFinal(int err) {
    if (m_stopping || err == EINVAL || err == EBADF || err == ENOTSOCK)
        return true;
    if (err != EINTR && err != ECONNABORTED && err != EAGAIN) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace nvagent
