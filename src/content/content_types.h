// Function types of the content view and the control bars: the update
// function a control bar calls with the chosen or typed text, and the return
// function that gives the keyboard back to whoever opened a bar.
#ifndef NV_CONTENT_CONTENT_TYPES_H
#define NV_CONTENT_CONTENT_TYPES_H

typedef int (*UPDATE_FUNC)(char* pcSetting, void* arg);
typedef void (*pfBackToLastLevel)();

#endif
