// The event loop and the worker pool. The loop owns every connection: it
// accepts, checks the peer and the per-peer limit, reads requests, writes
// answers and ends connections at their deadlines. A complete request goes to
// a worker, which asks the backend and hands the answer back through an
// eventfd, so a slow backend call delays only its own client.
#include "agent/server.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "agent/request_dispatch.h"
#include "link/result_codes.h"

namespace nvagent {

namespace {

// epoll data for the two descriptors that are not connections.
constexpr uint64_t kListenId = 0;
constexpr uint64_t kWakeId = ~uint64_t(0);

// Buffers that grew for an unusually large answer are given back rather than
// kept by the worker for good.
constexpr size_t kKeptBufferCap = 64 * 1024;

void ShrinkIfLarge(std::string& s) {
    if (s.capacity() > kKeptBufferCap)
        std::string().swap(s);
}

void AddFd(int epoll, int fd, uint32_t events, uint64_t id) {
    epoll_event ev{};
    ev.events = events;
    ev.data.u64 = id;
    epoll_ctl(epoll, EPOLL_CTL_ADD, fd, &ev);
}

}  // namespace

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
    m_epoll = epoll_create1(EPOLL_CLOEXEC);
    m_wakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (m_epoll < 0 || m_wakeFd < 0) {
        err = std::string("cannot create the event loop: ") + strerror(errno);
        Stop();
        return false;
    }
    int flags = fcntl(m_sock.fd, F_GETFL);
    fcntl(m_sock.fd, F_SETFL, flags | O_NONBLOCK);
    AddFd(m_epoll, m_sock.fd, EPOLLIN, kListenId);
    AddFd(m_epoll, m_wakeFd, EPOLLIN, kWakeId);
    try {
        for (int i = 0; i < m_opts.iWorkers; ++i)
            m_workers.emplace_back([this] { WorkerThread(); });
        m_loop = std::thread([this] { LoopThread(); });
    } catch (const std::system_error& e) {
        err = std::string("cannot start a server thread: ") + e.what();
        Stop();
        return false;
    }
    return true;
}

void Server::Stop() {
    if (m_sock.fd < 0)
        return;
    m_stopping = true;
    // Refuses clients from now on; those already queued are still accepted.
    // A socket passed by systemd is left open for the socket unit's next
    // start: the loop only stops watching it.
    if (!m_sock.bActivated)
        shutdown(m_sock.fd, SHUT_RDWR);
    Wake();
    if (m_loop.joinable())
        m_loop.join();
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_workersQuit = true;
    }
    m_jobReady.notify_all();
    for (std::thread& t : m_workers)
        t.join();
    m_workers.clear();
    m_conns.clear();
    if (m_epoll >= 0)
        close(m_epoll);
    if (m_wakeFd >= 0)
        close(m_wakeFd);
    m_epoll = m_wakeFd = -1;
    close(m_sock.fd);
    RemoveListenSocketFile(m_opts.sSocketPath, m_sock);
    m_sock.fd = -1;
}

void Server::Wake() {
    if (m_wakeFd < 0)
        return;
    uint64_t one = 1;
    ssize_t n = write(m_wakeFd, &one, sizeof one);
    (void)n;  // a full counter already means "wake up"
}

// Runs until stopping was asked, the listen queue is empty and every
// connection has ended.
void Server::LoopThread() {
    epoll_event events[64];
    for (;;) {
        if (m_stopping && !m_listenClosed) {
            AcceptAll();
            epoll_ctl(m_epoll, EPOLL_CTL_DEL, m_sock.fd, nullptr);
            m_listenClosed = true;
        }
        if (m_listenClosed && m_conns.empty())
            return;
        if (!m_accepting && Clock::now() >= m_acceptRetry)
            SetAccepting(true);
        int n = epoll_wait(m_epoll, events, 64, MsToNextDeadline());
        for (int i = 0; i < n; ++i) {
            uint64_t id = events[i].data.u64;
            if (id == kListenId) {
                AcceptAll();
            } else if (id == kWakeId) {
                uint64_t count = 0;
                ssize_t r = read(m_wakeFd, &count, sizeof count);
                (void)r;
                CollectAnswers();
            } else {
                Handle(id, events[i].events);
            }
        }
        ExpireDeadlines();
    }
}

// The listening socket is watched only while a connection can be taken, so
// a full table or a lack of descriptors never spins the loop; the clients
// wait in the listen queue meanwhile.
void Server::SetAccepting(bool on) {
    if (on == m_accepting || m_listenClosed)
        return;
    epoll_event ev{};
    ev.events = on ? static_cast<uint32_t>(EPOLLIN) : 0u;
    ev.data.u64 = kListenId;
    epoll_ctl(m_epoll, EPOLL_CTL_MOD, m_sock.fd, &ev);
    m_accepting = on;
}

void Server::AcceptAll() {
    for (;;) {
        if (static_cast<int>(m_conns.size()) >= m_opts.iMaxConnections) {
            if (m_accepting)
                fprintf(stderr,
                        "norvaned: connection limit reached: %d connections open; new clients "
                        "wait in the listen queue\n",
                        m_opts.iMaxConnections);
            SetAccepting(false);
            m_acceptRetry = Clock::time_point::max();  // until a connection ends
            return;
        }
        int fd = accept4(m_sock.fd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd < 0) {
            if (errno == EINTR || errno == ECONNABORTED)
                continue;
            // EAGAIN: the queue is empty; EINVAL: shut down. Out of
            // descriptors or memory: try again a little later.
            if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
                SetAccepting(false);
                m_acceptRetry = Clock::now() + std::chrono::milliseconds(100);
            }
            return;
        }
        pid_t pid = 0;
        if (!Admit(fd, pid)) {
            close(fd);
            continue;
        }
        uint64_t id = m_nextId++;
        auto conn = std::make_unique<Connection>(fd, pid, m_opts.limits, Clock::now());
        AddFd(m_epoll, fd, conn->WantedEvents(), id);
        ++m_perPeer[pid];
        m_conns.emplace(id, std::move(conn));
    }
}

// Only root and the agent's own user are served, and one process holds at
// most iMaxPerPeer connections.
bool Server::Admit(int fd, pid_t& pid) {
    ucred cred{};
    socklen_t len = sizeof cred;
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &cred, &len) != 0) {
        m_journal.Record(-1, "", 0, em_Error, "peer credentials unreadable: refused");
        return false;
    }
    if (cred.uid != 0 && cred.uid != geteuid()) {
        char note[64];
        snprintf(note, sizeof note, "peer uid %u refused", static_cast<unsigned>(cred.uid));
        m_journal.Record(-1, "", 0, em_Error, note);
        return false;
    }
    pid = cred.pid;
    auto it = m_perPeer.find(pid);
    if (it != m_perPeer.end() && it->second >= m_opts.iMaxPerPeer) {
        LogPeerLimit(pid, cred.uid);
        return false;
    }
    return true;
}

// One line per second at most, so a client that keeps trying cannot flood
// the log.
void Server::LogPeerLimit(pid_t pid, uid_t uid) {
    Clock::time_point now = Clock::now();
    if (now - m_lastLimitLog < std::chrono::seconds(1))
        return;
    m_lastLimitLog = now;
    fprintf(stderr,
            "norvaned: connection limit reached: process %ld (uid %u) already holds %d "
            "connections; closing its new ones\n",
            static_cast<long>(pid), static_cast<unsigned>(uid), m_opts.iMaxPerPeer);
}

void Server::Handle(uint64_t id, uint32_t events) {
    auto it = m_conns.find(id);
    if (it == m_conns.end())
        return;
    Connection& c = *it->second;
    Clock::time_point now = Clock::now();
    Connection::Phase before = c.GetPhase();
    if (events & (EPOLLIN | EPOLLRDHUP | EPOLLHUP | EPOLLERR))
        c.OnReadable(m_journal, now);
    if (c.GetPhase() == Connection::Phase::kWriting && (events & (EPOLLOUT | EPOLLERR | EPOLLHUP)))
        c.OnWritable(now);
    if (before == Connection::Phase::kReading && c.GetPhase() == Connection::Phase::kDispatching) {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_jobs.push_back(Job{id, c.Cmd(), c.Payload(), c.Pid()});
        }
        m_jobReady.notify_one();
    }
    Update(id);
}

// Brings the epoll interest of a connection in line with its phase, or ends
// it.
void Server::Update(uint64_t id) {
    auto it = m_conns.find(id);
    Connection& c = *it->second;
    if (c.GetPhase() == Connection::Phase::kDone) {
        epoll_ctl(m_epoll, EPOLL_CTL_DEL, c.Fd(), nullptr);
        auto peer = m_perPeer.find(c.Pid());
        if (peer != m_perPeer.end() && --peer->second <= 0)
            m_perPeer.erase(peer);
        m_conns.erase(it);
        // A freed slot may let a queued client in.
        SetAccepting(true);
        return;
    }
    // While a worker answers, the socket is out of the set: a client that
    // hangs up meanwhile would otherwise be reported again and again.
    if (c.GetPhase() == Connection::Phase::kDispatching) {
        epoll_ctl(m_epoll, EPOLL_CTL_DEL, c.Fd(), nullptr);
        return;
    }
    epoll_event ev{};
    ev.events = c.WantedEvents();
    ev.data.u64 = id;
    if (epoll_ctl(m_epoll, EPOLL_CTL_MOD, c.Fd(), &ev) != 0 && errno == ENOENT)
        epoll_ctl(m_epoll, EPOLL_CTL_ADD, c.Fd(), &ev);
}

void Server::CollectAnswers() {
    std::deque<Done> done;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        done.swap(m_done);
    }
    Clock::time_point now = Clock::now();
    for (Done& d : done) {
        auto it = m_conns.find(d.id);
        if (it == m_conns.end())
            continue;
        it->second->SetAnswer(std::move(d.answer), now);
        it->second->OnWritable(now);
        Update(d.id);
    }
}

// A connection whose worker is busy has no deadline of its own: the backend
// call is bounded by the backend, and the answer must reach the client.
void Server::ExpireDeadlines() {
    Clock::time_point now = Clock::now();
    std::vector<uint64_t> expired;
    for (const auto& kv : m_conns) {
        if (kv.second->GetPhase() != Connection::Phase::kDispatching &&
            kv.second->Deadline() <= now)
            expired.push_back(kv.first);
    }
    for (uint64_t id : expired) {
        m_conns[id]->OnDeadline(m_journal);
        Update(id);
    }
}

int Server::MsToNextDeadline() const {
    Clock::time_point next = Clock::time_point::max();
    for (const auto& kv : m_conns) {
        if (kv.second->GetPhase() != Connection::Phase::kDispatching)
            next = std::min(next, kv.second->Deadline());
    }
    if (!m_accepting && !m_listenClosed)
        next = std::min(next, m_acceptRetry);
    if (next == Clock::time_point::max())
        return -1;
    auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(next - Clock::now()).count();
    return static_cast<int>(std::max<long long>(0, ms + 1));
}

void Server::WorkerThread() {
    AnswerBuffers bufs;
    for (;;) {
        Job job;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_jobReady.wait(lock, [this] { return m_workersQuit || !m_jobs.empty(); });
            if (m_jobs.empty())
                return;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        int result = AnswerRequest(m_backend, job.cmd, job.payload, bufs, Peer{job.pid});
        m_journal.Record(job.cmd, job.payload.data(), job.payload.size(), result,
                         bufs.note.empty() ? nullptr : bufs.note.c_str(), bufs.oldValues,
                         bufs.newValues);
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_done.push_back(Done{job.id, std::move(bufs.answer)});
        }
        Wake();
        ShrinkIfLarge(bufs.body);
    }
}

}  // namespace nvagent
