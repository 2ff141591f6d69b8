// Start-up and shut-down of the console: the command line, curses, the
// window set, the key loop and the exit sequence.
#ifndef NV_SHELL_START_UP_H
#define NV_SHELL_START_UP_H

#include <cstdio>
#include <string>

#include "shell/screen.h"

// Parses the options; -h/--help prints the usage text and exits. The two
// strings are reserved and never filled. Returns 0.
int GetMyOpt(int argc, char** argv, std::string& sReserved1, std::string& sReserved2);
void print_usage(FILE* stream, char* progName, int status);

// Locale by language, curses, colour pairs where the terminal has colours.
void InitCurses();

// Initialises the refresh lock and starts the refresh thread. Returns 0 or
// ERR_REFRESH_THREAD_FAILED.
int InitRefreshThread();
// The refresh thread's body: about every second, the open page's refresh
// function when the page has the keyboard and was drawn two seconds ago or
// more. Never returns.
void* RefreshThreadFunc(void* arg);
// One round of the refresh thread's loop, under the refresh lock: 1 when
// the page was refreshed.
int RefreshOnce();

// Reads one key from a window; wgetch, or a scripted reader in tests.
typedef int (*pfKeyReader)(WINDOW* win);

// Waits, outside the refresh lock, until the terminal has input
// (KEY_WAIT_INPUT) or has been resized (KEY_WAIT_RESIZED); -1 when it
// cannot wait.
enum { KEY_WAIT_INPUT = 0, KEY_WAIT_RESIZED = 1 };
typedef int (*pfKeyWait)();
int WaitForTerminalInput();
// A key curses already holds, read without waiting; ERR when none.
int ReadPendingKey(WINDOW* win);

// Runs the key loop while the run flag is set, a key function is installed
// and fewer than ten consecutive reads have failed. pfnWait, when given,
// waits for input before the lock is taken; pfnPending, when given, takes a
// key already read ahead before the loop waits again.
void RunKeyLoop(pfKeyReader pfnRead, pfKeyWait pfnWait = NULL, pfKeyReader pfnPending = NULL);

// Releases the lock and the windows, ends curses, prints the message of a
// start-up failure and exits with status 0.
void ExitNvui(int iRet);

// The message printed after the screen is closed for a result code, or null.
const char* ExitMessage(int iRet);

// The exit question's update function: "yes" ends the key loop, "no" gives
// the menu back with the content area cleared.
int EnqireExit(char* pcAnswer, void* arg);

#endif
