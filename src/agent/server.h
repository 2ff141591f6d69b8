// The agent's server: a listening AF_UNIX socket, one event-loop thread that
// does all socket I/O for every connection at once, and a small pool of
// worker threads that turn complete requests into answers. An idle or slow
// client costs only a descriptor and a little memory, never a thread, so
// hundreds of them cannot keep a normal request waiting.
#ifndef NV_AGENT_SERVER_H
#define NV_AGENT_SERVER_H

#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
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
    // Connections one client process may hold open at once; more are closed
    // at once, with a log line on standard error.
    int iMaxPerPeer = 16;
    // Connections held open in all; more wait in the listen queue.
    int iMaxConnections = 512;
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
    // Starts the event loop and the workers, which begin serving the queued
    // connections.
    bool Start(std::string& err);
    // Stops accepting (clients connecting from now on are refused), finishes
    // the connections already accepted or queued (each within its deadlines),
    // joins the threads, closes the socket and removes its file. Safe to call
    // more than once.
    void Stop();

    const std::string& SocketPath() const { return m_opts.sSocketPath; }

private:
    struct Job {
        uint64_t id;
        short cmd;
        std::string payload;
        pid_t pid;
    };
    struct Done {
        uint64_t id;
        std::string answer;
    };

    void LoopThread();
    void AcceptAll();
    void SetAccepting(bool on);
    bool Admit(int fd, pid_t& pid);
    void LogPeerLimit(pid_t pid, uid_t uid);
    void Handle(uint64_t id, uint32_t events);
    void Update(uint64_t id);
    void CollectAnswers();
    void ExpireDeadlines();
    int MsToNextDeadline() const;
    void WorkerThread();
    void Wake();

    Backend& m_backend;
    Journal& m_journal;
    ServerOptions m_opts;
    ListenSocket m_sock;
    int m_epoll = -1;
    int m_wakeFd = -1;
    std::atomic<bool> m_stopping{false};
    bool m_listenClosed = false;
    bool m_accepting = true;
    Clock::time_point m_acceptRetry;
    std::thread m_loop;
    std::vector<std::thread> m_workers;

    // Owned by the loop thread.
    uint64_t m_nextId = 1;
    std::map<uint64_t, std::unique_ptr<Connection>> m_conns;
    std::map<pid_t, int> m_perPeer;
    Clock::time_point m_lastLimitLog;

    // Shared between the loop and the workers under m_mutex.
    std::mutex m_mutex;
    std::condition_variable m_jobReady;
    std::deque<Job> m_jobs;
    std::deque<Done> m_done;
    bool m_workersQuit = false;
};

}  // namespace nvagent

#endif
