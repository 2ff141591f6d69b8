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

// Initialises the refresh lock. Returns 0 or ERR_REFRESH_THREAD_FAILED.
int InitRefreshThread();

// Reads one key from a window; wgetch, or a scripted reader in tests.
typedef int (*pfKeyReader)(WINDOW* win);

// Runs the key loop while the run flag is set, a key function is installed
// and fewer than ten consecutive reads have failed.
void RunKeyLoop(pfKeyReader pfnRead);

// Releases the lock and the windows, ends curses, prints the message of a
// start-up failure and exits with status 0.
void ExitNvui(int iRet);

// The message printed after the screen is closed for a result code, or null.
const char* ExitMessage(int iRet);

// The exit question's update function: "yes" ends the key loop, "no" gives
// the menu back with the content area cleared.
int EnqireExit(char* pcAnswer, void* arg);

#endif
