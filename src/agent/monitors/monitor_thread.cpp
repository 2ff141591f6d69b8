// A monitor's thread with a bounded wait for its end.
#include "agent/monitors/monitor_thread.h"

#include <chrono>
#include <system_error>

namespace nvmonit {

MonitorThread::~MonitorThread() {
    Join();
}

bool MonitorThread::Start(std::function<void()> body, std::string& err) {
    if (m_thread.joinable())
        return true;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_done = false;
    }
    try {
        m_thread = std::thread([this, body = std::move(body)] {
            body();
            std::lock_guard<std::mutex> lock(m_mutex);
            m_done = true;
            m_cv.notify_all();
        });
    } catch (const std::system_error& e) {
        err = e.what();
        return false;
    }
    return true;
}

bool MonitorThread::WaitDone(int ms) {
    if (!m_thread.joinable())
        return true;
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_cv.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_done; });
}

void MonitorThread::Join() {
    if (m_thread.joinable())
        m_thread.join();
}

}  // namespace nvmonit
