// nv-delayer: a slow, lossy link for the sandbox (nv-sandbox.sh --delay),
// where the kernel has no netem. It creates a TUN device; the peer namespace
// routes the packets between the remote client and the sandbox into it, and
// the delayer writes each one back after the delay (or drops it, at the
// given rate), so that the kernel then forwards it on its way.
//
// Usage: nv-delayer DEVICE DELAY_MS LOSS_PERCENT [STATS_FILE]
// Runs until SIGTERM/SIGINT; the counts (packets seen, dropped) are written
// to STATS_FILE once a second and at the end.
#include <fcntl.h>
#include <linux/if.h>
#include <linux/if_tun.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

volatile sig_atomic_t g_stop = 0;

void OnSignal(int) {
    g_stop = 1;
}

struct Held {
    Clock::time_point release;
    std::vector<unsigned char> bytes;
};

int OpenTun(const std::string& name) {
    int fd = open("/dev/net/tun", O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return -1;
    ifreq ifr{};
    ifr.ifr_flags = IFF_TUN | IFF_NO_PI;
    strncpy(ifr.ifr_name, name.c_str(), IFNAMSIZ - 1);
    if (ioctl(fd, TUNSETIFF, &ifr) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

void WriteStats(const std::string& path, unsigned long seen, unsigned long dropped) {
    if (path.empty())
        return;
    std::string tmp = path + ".tmp";
    {
        std::ofstream out(tmp, std::ios::trunc);
        out << "seen " << seen << "\ndropped " << dropped << "\n";
    }
    rename(tmp.c_str(), path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        fprintf(stderr, "usage: nv-delayer DEVICE DELAY_MS LOSS_PERCENT [STATS_FILE]\n");
        return 2;
    }
    const std::string dev = argv[1];
    const auto delay = std::chrono::milliseconds(atoi(argv[2]));
    const double loss = atof(argv[3]) / 100.0;
    const std::string stats = argc > 4 ? argv[4] : "";
    int fd = OpenTun(dev);
    if (fd < 0) {
        perror("nv-delayer: /dev/net/tun");
        return 1;
    }
    struct sigaction sa {};
    sa.sa_handler = OnSignal;
    sigaction(SIGTERM, &sa, nullptr);
    sigaction(SIGINT, &sa, nullptr);

    std::mt19937 rng(std::random_device{}());
    std::uniform_real_distribution<double> dice(0.0, 1.0);
    std::deque<Held> held;  // in release order: the delay is the same for all
    unsigned long seen = 0, dropped = 0;
    auto nextStats = Clock::now();
    std::vector<unsigned char> buf(65536);
    while (!g_stop) {
        auto now = Clock::now();
        while (!held.empty() && held.front().release <= now) {
            // A failed write is a lost packet, as on a real link.
            (void)!write(fd, held.front().bytes.data(), held.front().bytes.size());
            held.pop_front();
        }
        if (now >= nextStats) {
            WriteStats(stats, seen, dropped);
            nextStats = now + std::chrono::seconds(1);
        }
        auto until = held.empty() ? nextStats : std::min(nextStats, held.front().release);
        auto waitMs = std::chrono::duration_cast<std::chrono::milliseconds>(until - now).count();
        pollfd p{fd, POLLIN, 0};
        int n = poll(&p, 1, static_cast<int>(std::max<long long>(0, waitMs) + 1));
        if (n <= 0 || !(p.revents & POLLIN))
            continue;
        ssize_t len = read(fd, buf.data(), buf.size());
        if (len <= 0)
            continue;
        ++seen;
        if (dice(rng) < loss) {
            ++dropped;
            continue;
        }
        held.push_back(
            {Clock::now() + delay, std::vector<unsigned char>(buf.begin(), buf.begin() + len)});
    }
    WriteStats(stats, seen, dropped);
    close(fd);
    return 0;
}
