// The result line of the control bars, and the wait for a command.
#include "ctrlbar/control_bar.h"
#include "link/ui_interface.h"
#include "shell/screen_frame.h"
#include "strings/com_str.h"

void ShowCtrlOperatingResult(int iResultCode) {
    ShowInfomation(GetOperatingInfoStr(iResultCode));
}

// Keys typed while the wait text was shown were meant for a screen that the
// answer may have replaced (a rebuilt page, a closed form): they are
// discarded once a command was sent, never when the update function only
// stored a value.
void RunUpdate(UPDATE_FUNC pfnUpdate, char* pcSetting, void* arg) {
    unsigned long ulBefore = SetRequestCount();
    int iRet = pfnUpdate(pcSetting, arg);
    if (SetRequestCount() != ulBefore)
        flushinp();
    ShowCtrlOperatingResult(iRet);
}

void RunUpdateShowingWait(UPDATE_FUNC pfnUpdate, char* pcSetting, void* arg) {
    ShowInfomation(pcStrWait[iLanIdx]);
    RunUpdate(pfnUpdate, pcSetting, arg);
}
