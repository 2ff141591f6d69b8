// Terminal resize as a readable descriptor: the SIGWINCH handler writes a
// byte to a pipe, so the key loop's poll wakes for a resize as it does for
// a key (a signal that lands between curses' own check and its read would
// otherwise wait for the next key).
#ifndef NV_SHELL_WINCH_SIGNAL_H
#define NV_SHELL_WINCH_SIGNAL_H

// Installs the handler after curses' own, which it still calls so that
// curses notes the new size. 0, or -1 when the pipe cannot be made (the
// loop then sees resizes with the next key only).
int InitWinchSignal();

// The pipe's read end, or -1.
int WinchFd();

// Empties the pipe.
void DrainWinch();

#endif
