// The sampling thread of the periodic monitors.
#include "agent/monitors/periodic_monitor.h"

#include <chrono>

namespace nvmonit {

PeriodicMonitor::PeriodicMonitor(const MonitorSettings& s, const char* reportName,
                                 int defaultIntervalMs)
    : m_report(MonitDir(s) + "/" + reportName, s.llReportMaxBytes),
      m_defaultIntervalMs(defaultIntervalMs),
      m_settings(s) {}

PeriodicMonitor::~PeriodicMonitor() {
    Stop();
}

bool PeriodicMonitor::Start() {
    std::string err;
    if (m_thread.Start([this] { Run(); }, err))
        return true;
    m_report.Write("the monitor cannot start: " + err);
    return false;
}

void PeriodicMonitor::Stop() {
    RequestStop();
    m_thread.Join();
}

void PeriodicMonitor::RequestStop() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_all();
}

bool PeriodicMonitor::WaitStopped(int ms) {
    return m_thread.WaitDone(ms);
}

void PeriodicMonitor::Configure(const MonitorSettings& s) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_settings = s;
        m_changed = true;
    }
    m_wake.notify_all();
}

int PeriodicMonitor::NextDelayMs(const MonitorSettings& s) {
    return IntervalMs(s, m_defaultIntervalMs);
}

void PeriodicMonitor::Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stop) {
        MonitorSettings s = m_settings;
        bool changed = m_changed;
        m_changed = false;
        lock.unlock();
        Tick(s, changed);
        int delay = NextDelayMs(s);
        lock.lock();
        m_wake.wait_for(lock, std::chrono::milliseconds(delay),
                        [this] { return m_stop || m_changed; });
    }
}

}  // namespace nvmonit
