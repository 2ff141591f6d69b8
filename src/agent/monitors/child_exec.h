// The last step of starting a program from the agent, in the child between
// fork and exec: nothing of the agent's may reach the program. Every
// descriptor past the standard three is closed (close_range, or one by one
// on kernels before 5.9), every signal gets its default handling and none
// stays blocked (an ignored disposition would survive exec), and the
// working directory is /. Only async-signal-safe calls: the agent has
// other threads.
#ifndef NV_AGENT_MONITORS_CHILD_EXEC_H
#define NV_AGENT_MONITORS_CHILD_EXEC_H

namespace nvmonit {

// Executes path with argv and exactly envp after the clean-up above; on
// failure writes errno to errFd (a close-on-exec descriptor, or -1 for
// none, kept open until exec) and exits with 127.
[[noreturn]] void ExecClean(const char* path, char* const* argv, char* const* envp, int errFd);

}  // namespace nvmonit

#endif
