// The bare test client: connect, send, read until close, parse.
#include "raw_client.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "link/result_codes.h"
#include "wire/wire.h"

namespace nvtest {

int ConnectUnix(const std::string& path) {
    sockaddr_un addr;
    memset(&addr, 0, sizeof addr);
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof addr.sun_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return -1;
    if (connect(fd, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) != 0) {
        int e = errno;
        close(fd);
        errno = e;
        return -1;
    }
    return fd;
}

std::string MakeRequest(short cmd, const std::string& payload) {
    char header[nvwire::kReqHeaderLen];
    nvwire::PutRequestHeader(header, static_cast<uint32_t>(payload.size() + sizeof header), cmd);
    return std::string(header, sizeof header) + payload;
}

bool SendAll(int fd, const std::string& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t w = send(fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (w < 0 && errno == EINTR)
            continue;
        if (w < 0)
            return false;
        done += static_cast<size_t>(w);
    }
    return true;
}

RawReply ReadUntilClose(int fd, int timeoutMs) {
    using Clock = std::chrono::steady_clock;
    RawReply reply;
    reply.bConnected = true;
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    char buf[65536];
    for (;;) {
        auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return reply;
        pollfd p{fd, POLLIN, 0};
        int rc = poll(&p, 1, static_cast<int>(left));
        if (rc < 0 && errno == EINTR)
            continue;
        if (rc <= 0)
            return reply;
        ssize_t r = recv(fd, buf, sizeof buf, 0);
        if (r < 0 && errno == EINTR)
            continue;
        if (r <= 0) {
            reply.bClosed = true;
            return reply;
        }
        reply.sBytes.append(buf, static_cast<size_t>(r));
    }
}

RawReply RawExchange(const std::string& path, const std::string& bytes, bool halfClose,
                     int timeoutMs) {
    int fd = ConnectUnix(path);
    if (fd < 0) {
        RawReply failed;
        failed.iConnectErrno = errno;
        return failed;
    }
    SendAll(fd, bytes);
    if (halfClose)
        shutdown(fd, SHUT_WR);
    RawReply reply = ReadUntilClose(fd, timeoutMs);
    close(fd);
    return reply;
}

Answer Request(const std::string& path, short cmd, const std::string& payload, int timeoutMs) {
    Answer ans;
    RawReply raw = RawExchange(path, MakeRequest(cmd, payload), false, timeoutMs);
    if (!raw.bConnected) {
        ans.sError = std::string("cannot connect: ") + strerror(raw.iConnectErrno);
        return ans;
    }
    if (!raw.bClosed) {
        ans.sError = "the agent did not close the connection in time";
        return ans;
    }
    nvwire::AnswerView view;
    int rc = nvwire::ParseAnswer(raw.sBytes.data(), raw.sBytes.size(), view);
    if (rc != em_OK) {
        ans.sError = "malformed answer of " + std::to_string(raw.sBytes.size()) + " bytes (code " +
                     std::to_string(rc) + ")";
        return ans;
    }
    ans.bOk = true;
    ans.cmd = view.cmd;
    ans.result = view.result;
    ans.sDetail = view.detail;
    ans.sBody.assign(view.body, view.bodyLen);
    return ans;
}

bool CheckState(const std::string& path, cConf_Inf& conf, cSvrState& svr, std::string& err) {
    Answer ans = Request(path, nvwire::kCmdCheck, "");
    if (!ans.bOk) {
        err = ans.sError;
        return false;
    }
    if (ans.result != em_OK) {
        err = "check answered " + std::to_string(ans.result) + ": " + ans.sDetail;
        return false;
    }
    int rc = nvwire::DecodeStateBody(ans.sBody.data(), ans.sBody.size(), conf, svr);
    if (rc != em_OK) {
        err = "check body does not decode (code " + std::to_string(rc) + ")";
        return false;
    }
    return true;
}

}  // namespace nvtest
