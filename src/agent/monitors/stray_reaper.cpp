// One lazily started thread that reaps the handed-over children.
#include "agent/monitors/stray_reaper.h"

#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace nvmonit {

namespace {

std::mutex g_mutex;
std::vector<pid_t> g_pids;
bool g_running = false;

void Loop() {
    for (;;) {
        {
            std::lock_guard<std::mutex> lock(g_mutex);
            std::vector<pid_t> left;
            for (pid_t p : g_pids) {
                pid_t r = waitpid(p, nullptr, WNOHANG);
                // Still running, or interrupted: try again later. Reaped, or
                // no longer our child (ECHILD): done with it.
                if (r == 0 || (r < 0 && errno == EINTR))
                    left.push_back(p);
            }
            g_pids.swap(left);
            if (g_pids.empty()) {
                g_running = false;
                return;
            }
        }
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

}  // namespace

void ReapWhenDone(pid_t pid) {
    if (pid <= 0)
        return;
    std::lock_guard<std::mutex> lock(g_mutex);
    g_pids.push_back(pid);
    if (!g_running) {
        try {
            std::thread(Loop).detach();
            g_running = true;
        } catch (const std::system_error&) {
            // No thread now: the next hand-over tries again.
        }
    }
}

size_t StrayCount() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_pids.size();
}

}  // namespace nvmonit
