// Writen: write a whole buffer, going on after partial writes and interrupts.
#include <unistd.h>

#include <cerrno>

#include "cmdclient/cmd_client.h"

int Writen(int fd, const void* buf, unsigned n) {
    const char* p = static_cast<const char*>(buf);
    unsigned left = n;
    while (left > 0) {
        ssize_t w = write(fd, p, left);
        if (w < 0) {
            if (errno == EINTR)
                continue;
            return -1;
        }
        p += w;
        left -= static_cast<unsigned>(w);
    }
    return static_cast<int>(n);
}
