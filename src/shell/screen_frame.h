// The screen frame: the content, prompt and information windows, the prompt
// line, the information line and the welcome text.
#ifndef NV_SHELL_SCREEN_FRAME_H
#define NV_SHELL_SCREEN_FRAME_H

#include "strings/prompt_id.h"

void InitInfoWindow();
void InitPromptWindow();
void InitContentWindow();
void UnInitInfoWin();
void UnInitPromt();
void UnInitContent();

// Shows prompt id unless it is already shown or is not a prompt.
void RefreshPrompt(int id);
// A white-on-blue bar holding the text across the information line; null
// clears the line.
void ShowInfomation(const char* pcText);
// The information line back to its plain background.
void ClearInformation();
// The welcome text, centred in the content window.
void ShowWelcomeInfo();

#endif
