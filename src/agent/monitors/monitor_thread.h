// The thread of a monitor and how it is stopped: a stop is asked for without
// waiting (the monitor's loop sees it at its next wake-up, which a flood of
// events cannot put off), and the end can be waited for with a bound, so
// that whoever switches a monitor off, with a lock held, never waits without
// one.
#ifndef NV_AGENT_MONITORS_MONITOR_THREAD_H
#define NV_AGENT_MONITORS_MONITOR_THREAD_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace nvmonit {

// What the supervisor needs of every monitor to switch it off.
class StoppableMonitor {
public:
    virtual ~StoppableMonitor() = default;
    // Asks the monitor's thread to end; returns at once.
    virtual void RequestStop() = 0;
    // Waits up to ms for the thread to end; true when it has (or never ran).
    virtual bool WaitStopped(int ms) = 0;
};

class MonitorThread {
public:
    MonitorThread() = default;
    ~MonitorThread();  // joins
    MonitorThread(const MonitorThread&) = delete;
    MonitorThread& operator=(const MonitorThread&) = delete;

    // Runs body on a new thread; false with the reason in err when no
    // thread can be made.
    bool Start(std::function<void()> body, std::string& err);
    bool Started() const { return m_thread.joinable(); }
    // Waits up to ms for body to return; true when it has or never ran.
    bool WaitDone(int ms);
    // Waits for body to return, without a bound.
    void Join();

private:
    std::mutex m_mutex;
    std::condition_variable m_cv;
    bool m_done = false;
    std::thread m_thread;
};

}  // namespace nvmonit

#endif
