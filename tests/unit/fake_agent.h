// A scripted in-process agent on a temporary socket, for testing how the
// client library copes with answers the real agent never sends: truncated,
// oversized, malformed or missing.
#ifndef NV_TESTS_FAKE_AGENT_H
#define NV_TESTS_FAKE_AGENT_H

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "link/state_record.h"

struct FakeRequest {
    uint32_t pkglen = 0;
    short cmd = 0;
    std::string payload;
};

class FakeAgent {
public:
    // Builds the raw answer bytes for a request; the connection is closed
    // after they are written (or held open for holdMs when set).
    using Script = std::function<std::string(const FakeRequest&)>;

    explicit FakeAgent(Script script);
    ~FakeAgent();

    const std::string& SocketPath() const { return m_path; }
    int Accepted() const { return m_accepted.load(); }
    std::vector<FakeRequest> Requests();
    void SetHoldMs(int ms) { m_holdMs = ms; }

private:
    void Serve();
    bool ReadRequest(int fd, FakeRequest& req);

    Script m_script;
    std::string m_dir;
    std::string m_path;
    int m_listenFd = -1;
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_accepted{0};
    std::atomic<int> m_holdMs{0};
    std::mutex m_mutex;
    std::vector<FakeRequest> m_requests;
    std::thread m_thread;
};

// A well-formed answer packet with an optional body.
std::string MakeAnswer(short cmd, int result, const std::string& detail,
                       const std::string& body = "");
// The encoded check body of the given records.
std::string EncodeState(const cConf_Inf& c, const cSvrState& s);

#endif
