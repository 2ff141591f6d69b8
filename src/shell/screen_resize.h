// Terminal size: the smallest screen the console lays out, the notice shown
// below it, and the new layout after a resize.
#ifndef NV_SHELL_SCREEN_RESIZE_H
#define NV_SHELL_SCREEN_RESIZE_H

#include "shell/screen.h"

// The smallest terminal the console lays out: the deepest drop-down (third
// band of 22 columns) ends at column 66, and the exit question needs
// (18 - 6) / 3 = 4 lines for its box.
enum { MIN_SCREEN_COLS = 66, MIN_SCREEN_LINES = 18 };

bool ScreenTooSmall();

// Creates the frame windows and the menu bar (information line, prompt
// line, help window, content window, menu bar, in this order).
void InitScreenFrame();

// At start: the frame when the terminal is large enough, otherwise the
// one-line notice (the frame follows when the terminal grows).
void StartScreen();

// Called by the key loop for KEY_RESIZE, under the refresh lock.
void HandleResize();

// The key function while the notice is shown: Esc ends the console at once,
// since no exit question fits on such a screen.
void SmallScreenKeyFunc(int iKey);

#endif
