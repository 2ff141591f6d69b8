// The far end of a socket pair for the fuzzers: writes the fuzz input into
// one end, shuts down its writing side, and collects whatever the code under
// test sends back until that code closes its end. An input that fits the
// socket buffer is written at once and the answer read in Join; a larger one
// is pumped by a thread while the code under test reads.
#ifndef NV_TESTS_FUZZ_PEER_PUMP_H
#define NV_TESTS_FUZZ_PEER_PUMP_H

#include <cstddef>
#include <string>
#include <thread>

namespace nvfuzz {

class PeerPump {
public:
    // Takes ownership of fd and writes data[0..n) into it, or starts the
    // thread that does. The data must stay valid until Join.
    PeerPump(int fd, const char* data, size_t n);
    ~PeerPump();
    PeerPump(const PeerPump&) = delete;
    PeerPump& operator=(const PeerPump&) = delete;

    // Reads until the other end is closed, then closes the descriptor. Call
    // it once the code under test is done with its end.
    void Join();
    // Everything the other end sent (valid after Join).
    const std::string& Received() const { return m_received; }

private:
    void WriteSome();
    void Run();

    int m_fd;
    const char* m_data;
    size_t m_left;
    bool m_writing = true;
    bool m_done = false;
    std::string m_received;
    std::thread m_thread;
};

// A connected AF_UNIX stream pair; aborts when none can be made.
void MakeSocketPair(int& a, int& b);

}  // namespace nvfuzz

#endif
