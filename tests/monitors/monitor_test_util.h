// Helpers of the monitor tests: report lines without their time stamps,
// waiting for a condition with a deadline, and children that must not
// outlive a test.
#ifndef NV_TESTS_MONITORS_MONITOR_TEST_UTIL_H
#define NV_TESTS_MONITORS_MONITOR_TEST_UTIL_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "agent/monitors/monitor_supervisor.h"

namespace nvtest {

// The lines of a report with their "YYYY-MM-DD HH:MM:SS " prefix removed; a
// line without a well-formed prefix is kept whole, prefixed "BAD: ".
std::vector<std::string> ReportLines(const std::string& path);

// Lines of the report that contain text.
int CountLines(const std::string& path, const std::string& text);

// Polls pred every 20 ms until it is true or timeoutMs passed.
bool WaitUntil(const std::function<bool()>& pred, int timeoutMs);

// Waits until the report has at least n lines containing text.
bool WaitForLines(const std::string& path, const std::string& text, int n, int timeoutMs);

// The pid in the last line containing text, written as "(pid N".
pid_t PidInLine(const std::string& path, const std::string& text);

// The command line of a process, words joined by blanks; empty when gone.
std::string CommandLineOf(pid_t pid);

// Kills and reaps every child of this process whose command line contains
// text (processes the monitors started, or orphans adopted as subreaper).
void KillChildrenMatching(const std::string& text);

// Applies s to sup on another thread and waits up to timeoutMs for it to
// return. A switch that does not answer in time ends the test binary with a
// message and status 1: the hung thread could not be joined.
void ApplyWithin(nvmonit::MonitorSupervisor& sup, const nvmonit::MonitorSettings& s, int timeoutMs);

// Forks a child that keeps one CPU busy until killed.
pid_t StartBurner();

}  // namespace nvtest

#endif
