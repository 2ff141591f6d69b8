// The common frame of the sampling monitors: a thread that calls Tick() at
// once and then every interval, takes new settings at any moment (they
// apply at the next tick, which is brought forward), and stops promptly.
#ifndef NV_AGENT_MONITORS_PERIODIC_MONITOR_H
#define NV_AGENT_MONITORS_PERIODIC_MONITOR_H

#include <condition_variable>
#include <mutex>

#include "agent/monitors/monitor_settings.h"
#include "agent/monitors/monitor_thread.h"
#include "agent/monitors/report_file.h"

namespace nvmonit {

class PeriodicMonitor : public StoppableMonitor {
public:
    PeriodicMonitor(const MonitorSettings& s, const char* reportName, int defaultIntervalMs);
    ~PeriodicMonitor() override;
    PeriodicMonitor(const PeriodicMonitor&) = delete;
    PeriodicMonitor& operator=(const PeriodicMonitor&) = delete;

    // Starts the thread. Derived constructors run first, so the thread never
    // sees a half-built object. False (and reported) when no thread can be
    // made.
    bool Start();
    // Stops and joins the thread; derived destructors call it first.
    void Stop();
    void RequestStop() override;
    bool WaitStopped(int ms) override;
    // New settings, applied at the next tick, which happens at once.
    void Configure(const MonitorSettings& s);

protected:
    // One sample. Called on the monitor's thread with the current settings;
    // changed is true on the first tick after Configure (and the very first).
    virtual void Tick(const MonitorSettings& s, bool changed) = 0;
    // How long to wait before the next tick; by default the interval.
    virtual int NextDelayMs(const MonitorSettings& s);

    ReportFile m_report;

private:
    void Run();

    int m_defaultIntervalMs;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    MonitorSettings m_settings;
    bool m_changed = true;
    bool m_stop = false;
    MonitorThread m_thread;
};

}  // namespace nvmonit

#endif
