// What a long-running agent may carry that the programs it starts must not
// inherit: an ignored SIGQUIT, a blocked SIGUSR1 (in the calling thread) and
// a secret in the environment, held from construction to destruction.
#ifndef NV_TESTS_SUPPORT_INHERITED_JUNK_H
#define NV_TESTS_SUPPORT_INHERITED_JUNK_H

#include <pthread.h>
#include <signal.h>
#include <stdlib.h>

namespace nvtest {

class InheritedJunk {
public:
    InheritedJunk() {
        struct sigaction ign {};
        ign.sa_handler = SIG_IGN;
        sigaction(SIGQUIT, &ign, &m_oldQuit);
        sigset_t usr;
        sigemptyset(&usr);
        sigaddset(&usr, SIGUSR1);
        pthread_sigmask(SIG_BLOCK, &usr, &m_oldMask);
        setenv("NV_AGENT_SECRET", "leaked", 1);
    }
    ~InheritedJunk() {
        unsetenv("NV_AGENT_SECRET");
        pthread_sigmask(SIG_SETMASK, &m_oldMask, nullptr);
        sigaction(SIGQUIT, &m_oldQuit, nullptr);
    }
    InheritedJunk(const InheritedJunk&) = delete;
    InheritedJunk& operator=(const InheritedJunk&) = delete;

private:
    struct sigaction m_oldQuit {};
    sigset_t m_oldMask{};
};

}  // namespace nvtest

#endif
