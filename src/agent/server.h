// The agent's server: a listening AF_UNIX socket and a small pool of worker
// threads that each accept and serve one connection at a time.
#ifndef NV_AGENT_SERVER_H
#define NV_AGENT_SERVER_H

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "agent/backend.h"
#include "agent/connection.h"
#include "agent/journal.h"
#include "agent/listen_socket.h"

namespace nvagent {

struct ServerOptions {
    std::string sSocketPath = "/dev/nvsock";
    int iWorkers = 4;
    int iBacklog = 64;
    ConnectionLimits limits;
};

class Server {
public:
    // backend and journal must outlive the server; a journal that is not
    // open records nothing.
    Server(Backend& backend, Journal& journal, const ServerOptions& opts);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // Creates the listening socket (mode 0600). Call while the process is
    // still single-threaded. Connections queue from this moment on.
    bool Listen(std::string& err);
    // Starts the workers, which begin serving the queued connections.
    bool Start(std::string& err);
    // Stops accepting (clients connecting from now on are refused), lets each
    // worker finish the connections already accepted or queued, joins them,
    // closes the socket and removes its file. Safe to call more than once.
    void Stop();

    const std::string& SocketPath() const { return m_opts.sSocketPath; }

private:
    void WorkerLoop();
    bool AcceptFailureIsFinal(int err);

    Backend& m_backend;
    Journal& m_journal;
    ServerOptions m_opts;
    ListenSocket m_sock;
    std::atomic<bool> m_stopping{false};
    std::vector<std::thread> m_workers;
};

}  // namespace nvagent

#endif
