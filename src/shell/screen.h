// The screen record shared by every interactive element: the windows, the
// menu with the focus, and the key function that receives the next key.
#ifndef NV_SHELL_SCREEN_H
#define NV_SHELL_SCREEN_H

#include <curses.h>
#include <menu.h>
#include <pthread.h>

#include <string>

typedef void (*pfKeyFunc)(int iKey);

typedef struct _ST_SCREEN_ARGUMENT {
    int iNvuiRunFlag;
    int iCurPromptIdx;
    MENU* pCurMenu;
    WINDOW* CurWin;
    WINDOW* MenuWin;
    WINDOW* ContentWin;
    WINDOW* PromptWin;
    WINDOW* InfoWin;
    pfKeyFunc pfnCurKeyFunc;
} SCREEN_ARGUMENT;

extern SCREEN_ARGUMENT sg_Screen;
extern std::string str_NvuiVersion;
extern pthread_mutex_t f_refresh_lock;

// Gives the keyboard to fn; keys are read from win (null: the standard
// screen). The only way the focus changes.
void RegistKeyFunc(pfKeyFunc fn, WINDOW* win);

#endif
