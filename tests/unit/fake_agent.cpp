// The scripted in-process agent used by the client-library tests.
#include "fake_agent.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "wire/wire.h"

FakeAgent::FakeAgent(Script script) : m_script(std::move(script)) {
    char tmpl[] = "/tmp/nvfake.XXXXXX";
    m_dir = mkdtemp(tmpl);
    m_path = m_dir + "/sock";
    m_listenFd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un addr;
    memset(&addr, 0, sizeof addr);
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, m_path.c_str(), sizeof(addr.sun_path) - 1);
    bind(m_listenFd, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
    listen(m_listenFd, 16);
    m_thread = std::thread([this] { Serve(); });
}

FakeAgent::~FakeAgent() {
    m_stop = true;
    m_thread.join();
    close(m_listenFd);
    unlink(m_path.c_str());
    rmdir(m_dir.c_str());
}

std::vector<FakeRequest> FakeAgent::Requests() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

static bool ReadExact(int fd, char* p, size_t n) {
    while (n > 0) {
        ssize_t r = read(fd, p, n);
        if (r <= 0)
            return false;
        p += r;
        n -= static_cast<size_t>(r);
    }
    return true;
}

bool FakeAgent::ReadRequest(int fd, FakeRequest& req) {
    char hdr[nvwire::kReqHeaderLen];
    if (!ReadExact(fd, hdr, sizeof hdr))
        return false;
    nvwire::RequestHeader h;
    if (nvwire::ParseRequestHeader(hdr, sizeof hdr, h) != 0)
        return false;
    req.pkglen = h.pkglen;
    req.cmd = h.cmd;
    req.payload.resize(h.pkglen - nvwire::kReqHeaderLen);
    return ReadExact(fd, &req.payload[0], req.payload.size());
}

void FakeAgent::Serve() {
    while (!m_stop) {
        pollfd pfd = {m_listenFd, POLLIN, 0};
        if (poll(&pfd, 1, 20) <= 0)
            continue;
        int fd = accept(m_listenFd, nullptr, nullptr);
        if (fd < 0)
            continue;
        ++m_accepted;
        FakeRequest req;
        if (ReadRequest(fd, req)) {
            {
                std::lock_guard<std::mutex> lock(m_mutex);
                m_requests.push_back(req);
            }
            std::string answer = m_script(req);
            size_t off = 0;
            while (off < answer.size()) {
                ssize_t w = send(fd, answer.data() + off, answer.size() - off, MSG_NOSIGNAL);
                if (w <= 0)
                    break;
                off += static_cast<size_t>(w);
            }
            for (int waited = 0; waited < m_holdMs && !m_stop; waited += 10)
                usleep(10000);
        }
        close(fd);
    }
}

std::string MakeAnswer(short cmd, int result, const std::string& detail, const std::string& body) {
    std::string out;
    nvwire::BuildAnswer(out, cmd, result, detail, body.data(), body.size());
    return out;
}

std::string EncodeState(const cConf_Inf& c, const cSvrState& s) {
    std::string body;
    nvwire::Writer w(body);
    nvwire::EncodeConf(w, c);
    nvwire::EncodeSvr(w, s);
    return body;
}
