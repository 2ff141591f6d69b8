// The command catalogue: one update function per set command. A control bar
// calls it with the chosen or typed text; it turns the text into the
// command's payload, sends it, and on full success rebuilds its page.
#ifndef NV_LINK_CMD_CATALOGUE_H
#define NV_LINK_CMD_CATALOGUE_H

// Network and resource tuning.
int IcmpUpdateFunc(char* pcSetting, void* arg);
int TcpSynUpdateFunc(char* pcSetting, void* arg);
int TcpWaitReuseUpdateFunc(char* pcSetting, void* arg);
int ShmMaxUpdateFunc(char* pcSetting, void* arg);
int ShmAllUpdateFunc(char* pcSetting, void* arg);
int ShmmniUpdateFunc(char* pcSetting, void* arg);
int ThreadMaxUpdateFunc(char* pcSetting, void* arg);
int FileMaxUpdateFunc(char* pcSetting, void* arg);
// Resource monitors.
int FileMonitListUpdateFunc(char* pcSetting, void* arg);
int FileMonitToggleUpdateFunc(char* pcSetting, void* arg);
int ProcMonitListUpdateFunc(char* pcSetting, void* arg);
int ProcMonitToggleUpdateFunc(char* pcSetting, void* arg);
int CpuMonitCeilUpdateFunc(char* pcSetting, void* arg);
int CpuMonitFloorUpdateFunc(char* pcSetting, void* arg);
int CpuMonitToggleUpdateFunc(char* pcSetting, void* arg);
int MemMonitCeilUpdateFunc(char* pcSetting, void* arg);
int MemMonitToggleUpdateFunc(char* pcSetting, void* arg);
// Disk-volume and backup monitors.
int AddDVMonitUpdateFunc(char* pcSetting, void* arg);
int DeleteDVMonitUpdateFunc(char* pcSetting, void* arg);
int ClearDVMonitUpdateFunc(char* pcSetting, void* arg);
int DVMonitToggleUpdateFunc(char* pcSetting, void* arg);
int AddBakMonitUpdateFunc(char* pcSetting, void* arg);
int DeleteBakMonitUpdateFunc(char* pcSetting, void* arg);
int ClearBakMonitUpdateFunc(char* pcSetting, void* arg);
int BakMonitToggleUpdateFunc(char* pcSetting, void* arg);
// Firewall chains.
int InputPolicyUpdateFunc(char* pcSetting, void* arg);
int InputAddUpdateFunc(char* pcSetting, void* arg);
int InputDeleteUpdateFunc(char* pcSetting, void* arg);
int InputClearUpdateFunc(char* pcSetting, void* arg);
int OutputPolicyUpdateFunc(char* pcSetting, void* arg);
int OutputAddUpdateFunc(char* pcSetting, void* arg);
int OutputDeleteUpdateFunc(char* pcSetting, void* arg);
int OutputClearUpdateFunc(char* pcSetting, void* arg);
// FTP and Samba.
int AnonEnUpdateFunc(char* pcSetting, void* arg);
int AnonUploadUpdateFunc(char* pcSetting, void* arg);
int AnonMkDIrUpdateFunc(char* pcSetting, void* arg);
int AnonRootPathUpdateFunc(char* pcSetting, void* arg);
int LocalEnUpdateFunc(char* pcSetting, void* arg);
int WrEnUpdateFunc(char* pcSetting, void* arg);
int FtpFlagUpdateFunc(char* pcSetting, void* arg);
int FtpDefaultUpdateFunc(char* pcSetting, void* arg);
int SambaShPathUpdateFunc(char* pcSetting, void* arg);
int SambaShWrUpdateFunc(char* pcSetting, void* arg);
int SambaRunFlagUpdateFunc(char* pcSetting, void* arg);
int SambaDefaultUpdateFunc(char* pcSetting, void* arg);
// Network interfaces and system state.
int InputSetIfDownUpdateFunc(char* pcSetting, void* arg);
int InputSetIfUpUpdateFunc(char* pcSetting, void* arg);
int InputSetIpAutoUpdateFunc(char* pcSetting, void* arg);
int InputSetIpManuallyUpdateFunc(char* pcSetting, void* arg);
int ModifyPasswordUpdateFunc(char* pcSetting, void* arg);
int ModifyHostNameUpdateFunc(char* pcSetting, void* arg);
int ModifyDateUpdateFunc(char* pcSetting, void* arg);
int ModifyTimeUpdateFunc(char* pcSetting, void* arg);

// The shared form encoder: arg points to an int holding the command number;
// the form text is each field's value behind a "*", with a final "*".
int NewLevelUpdateFunc(char* pcSetting, void* arg);
// Stores the typed or chosen text into the form field (arg, a
// CONTENT_SECTION) and sends nothing.
int IPTNewLevelItemUpdateFunc(char* pcSetting, void* arg);

#endif
