// Calls that may never return, made with a deadline. A stat or statvfs of a
// path on a network or FUSE mount whose server stopped answering blocks its
// thread until the server comes back; the agent makes such calls on a
// thread of their own and waits for them only until a deadline, so that a
// check is answered and a monitor goes on sampling. A call still running
// for a key is not started again: a hung mount holds one thread per key
// until it answers or the agent ends.
//
//     nvmonit::TimedProbes<long long> sizes;
//     sizes.Start(path, [path] { return SizeOf(path); });
//     std::optional<long long> v = sizes.Wait(path, deadline);  // nullopt: no answer
#ifndef NV_AGENT_MONITORS_TIMED_PROBE_H
#define NV_AGENT_MONITORS_TIMED_PROBE_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>

namespace nvmonit {

// How long a check waits for the measurements it shows.
constexpr std::chrono::milliseconds kProbeAnswerTime{1000};

template <class T>
class TimedProbes {
public:
    using Clock = std::chrono::steady_clock;

    TimedProbes() : m_state(std::make_shared<State>()) {}

    // Starts fn for key on its own thread, unless a call for key is still
    // running (its answer will serve).
    void Start(const std::string& key, std::function<T()> fn) {
        std::shared_ptr<State> state = m_state;
        std::lock_guard<std::mutex> lock(state->mutex);
        std::shared_ptr<Slot>& slot = state->slots[key];
        if (slot && slot->bRunning)
            return;
        slot = std::make_shared<Slot>();
        slot->bRunning = true;
        try {
            std::thread([state, slot, fn] {
                T value = fn();
                std::lock_guard<std::mutex> done(state->mutex);
                slot->value = std::move(value);
                slot->bAnswered = true;
                slot->bRunning = false;
                state->answered.notify_all();
            }).detach();
        } catch (const std::system_error&) {
            slot->bRunning = false;  // no thread to be had: no answer this time
        }
    }

    // The answer of the call for key, waited for until deadline; nullopt
    // when it has not answered by then (or none was started). An answer
    // taken is forgotten: only calls still running are remembered.
    std::optional<T> Wait(const std::string& key, Clock::time_point deadline) {
        std::unique_lock<std::mutex> lock(m_state->mutex);
        auto it = m_state->slots.find(key);
        if (it == m_state->slots.end())
            return std::nullopt;
        std::shared_ptr<Slot> slot = it->second;
        m_state->answered.wait_until(lock, deadline, [&slot] { return !slot->bRunning; });
        if (slot->bRunning || !slot->bAnswered)
            return std::nullopt;
        it = m_state->slots.find(key);
        if (it != m_state->slots.end() && it->second == slot)
            m_state->slots.erase(it);
        return slot->value;
    }

    // Start and Wait for one key.
    std::optional<T> Run(const std::string& key, std::function<T()> fn,
                         std::chrono::milliseconds timeout) {
        Start(key, std::move(fn));
        return Wait(key, Clock::now() + timeout);
    }

private:
    struct Slot {
        bool bRunning = false;
        bool bAnswered = false;
        T value{};
    };
    // Shared with the calls' threads, which may outlive this object.
    struct State {
        std::mutex mutex;
        std::condition_variable answered;
        std::map<std::string, std::shared_ptr<Slot>> slots;
    };
    std::shared_ptr<State> m_state;
};

}  // namespace nvmonit

#endif
