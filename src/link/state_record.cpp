// Constructors of the reported-state records: the defaults a console sees
// before the first check request.
#include "state_record.h"

cConf_Inf::cConf_Inf()
    : chFileMonitFlag('0'),
      chProcessMonitFlag('0'),
      shCpuCeil(100),
      shCpuFloor(0),
      chCpuMonitFlag('0'),
      iMemCeil(0),
      chMemMonitFlag('0'),
      chDVMonitFlag('0'),
      chBakForSizeFlag('0'),
      chVsftpdAnonEnable('0'),
      chVsftpdAnonUpload('0'),
      chVsftpdAnonMkdir('0'),
      sVsftpdAnonRoot(""),
      chVsftpdLocalEnable('0'),
      chVsftpdWrite('0'),
      chVsftpdRunFlag('0'),
      sSambaSharePath(""),
      chSambaShareWrite('0'),
      chSambaRunFlag('0'),
      chOSReleaseVersion(emOSNoSet),
      chLangCode(emEn),
      iSeqLinkRcInit(0),
      sHostname(""),
      sNowDate(""),
      sNowTime(""),
      sVersion("1.0") {}

cSvrState::cSvrState()
    : iMemTotal(0), iMemUse(0), iMemFree(0), chIptablesInputPolicy(0), chIptablesOutputPolicy(0) {}
