// The FTP server and Samba pages: yes/no switches, the two paths, and the
// restore-default actions, which always show "[No]".
#include "link/cmd_catalogue.h"
#include "link/global_val.h"
#include "pages/menu_struct.h"
#include "pages/page_build.h"
#include "pages/page_rows.h"
#include "shell/nv_log.h"
#include "strings/com_str.h"
#include "strings/help_id.h"

// A yes/no switch of these pages.
static void YesNoRow(CONTENT_DATA* p, int r, int iHelp, const char** pcLabel, char chFlag,
                     UPDATE_FUNC pfnUpdate) {
    ChoiceRow(p, r, iHelp, pcLabel, chFlag, pcStrYes, pcStrNo, pfnUpdate);
}

// A path typed in place; the field scrolls for long paths.
static void PathRow(CONTENT_DATA* p, int r, int iHelp, const char** pcLabel,
                    const std::string& sPath, UPDATE_FUNC pfnUpdate) {
    InputRow(p, r, iHelp, pcLabel, sPath, 0, 0, pfnUpdate);
}

int UI_Vsftpd(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    NV_DBG("FTP ANON ENABLE:%c\n", c.chVsftpdAnonEnable);
    NV_DBG("FTP ANON Upload:%c\n", c.chVsftpdAnonUpload);
    NV_DBG("FTP ANON MkDir:%c\n", c.chVsftpdAnonMkdir);
    NV_DBG("FTP ANON Root Path:%s\n", c.sVsftpdAnonRoot.c_str());
    NV_DBG("FTP Local User Enable:%c\n", c.chVsftpdLocalEnable);
    NV_DBG("FTP Write Enable:%c\n", c.chVsftpdWrite);
    NV_DBG("FTP Start Flag:%c\n", c.chVsftpdRunFlag);
    CONTENT_DATA* p = NewPage(8, nullptr);
    YesNoRow(p, 0, EN_ANON_ENABLE, pcStrAnonymEnable, c.chVsftpdAnonEnable, AnonEnUpdateFunc);
    YesNoRow(p, 1, EN_ANON_UPLOAD, pcStrAnonymUpload, c.chVsftpdAnonUpload, AnonUploadUpdateFunc);
    YesNoRow(p, 2, EN_ANON_MKDIR, pcStrAnonymMkdir, c.chVsftpdAnonMkdir, AnonMkDIrUpdateFunc);
    PathRow(p, 3, EN_ANON_ROOTPATH, pcStrAnonymRootPath, c.sVsftpdAnonRoot, AnonRootPathUpdateFunc);
    YesNoRow(p, 4, EN_LOCAL_ENABLE, pcStrLocalUsrEnable, c.chVsftpdLocalEnable, LocalEnUpdateFunc);
    YesNoRow(p, 5, EN_WRITE_ENABLE, pcStrWriteEnable, c.chVsftpdWrite, WrEnUpdateFunc);
    YesNoRow(p, 6, EN_FTP_START, pcStrFtpStart, c.chVsftpdRunFlag, FtpFlagUpdateFunc);
    YesNoRow(p, 7, EN_FTP_DEFAULT, pcStrFtpDefault, '0', FtpDefaultUpdateFunc);
    return ShowPage(p);
}

int UI_Samba(void* arg) {
    (void)arg;
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cConf_Inf& c = pg_Obj->objCif;
    NV_DBG("Samba share dir path:%s\n", c.sSambaSharePath.c_str());
    NV_DBG("Samba share write enable:%c\n", c.chSambaShareWrite);
    NV_DBG("Samba Start flag:%c\n", c.chSambaRunFlag);
    CONTENT_DATA* p = NewPage(4, nullptr);
    PathRow(p, 0, EN_SAMBA_SHARE_DIR, pcStrShDirPath, c.sSambaSharePath, SambaShPathUpdateFunc);
    YesNoRow(p, 1, EM_SAMBA_WRE, pcStrShWrEn, c.chSambaShareWrite, SambaShWrUpdateFunc);
    YesNoRow(p, 2, EM_SAMBA_START, pcStrSambaStart, c.chSambaRunFlag, SambaRunFlagUpdateFunc);
    YesNoRow(p, 3, EM_SAMBA_DEFAULT, pcStrSambaDefault, '0', SambaDefaultUpdateFunc);
    return ShowPage(p);
}
