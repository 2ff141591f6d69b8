// The result line of the control bars.
#include "ctrlbar/control_bar.h"
#include "link/ui_interface.h"
#include "shell/screen_frame.h"

void ShowCtrlOperatingResult(int iResultCode) {
    ShowInfomation(GetOperatingInfoStr(iResultCode));
}
