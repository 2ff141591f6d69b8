// The English catalogue: one text pointer pcEn_Xxx per text identifier.
#include "strings/english_str.h"

const char* pcEn_SysConfig = "System Config";
const char* pcEn_SysOptimize = "System Optimize";
const char* pcEn_NetOptimize = "Network";
const char* pcEn_PingConfig = "Icmp Echo Ignore All:";
const char* pcEn_TcpSynConfig = "Tcp SynCookies:";
const char* pcEn_TcpWaitTimeReuse = "Tcp Wait Time Reuse:";
const char* pcEn_Ip = "IP:";
const char* pcEn_Mask = "Mask:";
const char* pcEn_Dns = "DNS:";
const char* pcEn_GateWay = "Gate way:";
const char* pcEn_DNS1 = "DNS1:";
const char* pcEn_DNS2 = "DNS2:";
const char* pcEn_ResOptimize = "Resource";
const char* pcEn_SysStateConfig = "System State";
const char* pcEn_HostName = "Host Name:";
const char* pcEn_SysDate = "System Date:";
const char* pcEn_SysTime = "System Time:";
const char* pcEn_UserName = "User Name:";
const char* pcEn_NewPassword = "New Password:";
const char* pcEn_PwConfirm = "New Password Confirm:";
const char* pcEn_Year = "Year:";
const char* pcEn_Month = "Month:";
const char* pcEn_Day = "Day:";
const char* pcEn_Hour = "Hour:";
const char* pcEn_Minite = "Minite:";
const char* pcEn_Second = "Second:";
const char* pcEn_Shmmax = "share memory max:";
const char* pcEn_Shmall = "share memory all:";
const char* pcEn_Shmmni = "SHMMNI:";
const char* pcEn_ThreadMax = "Max Thread Number:";
const char* pcEn_FileMax = "Max File Handle Number:";
const char* pcEn_SysMonit = "System Monitor";
const char* pcEn_FileMonit = "File";
const char* pcEn_FileList = "File List:";
const char* pcEn_ScanList = "[scan list]";
const char* pcEn_MonitToggle = "Monitor Toggle:";
const char* pcEn_ProcMonit = "Process";
const char* pcEn_ProcList = "Process List:";
const char* pcEn_CpuMonit = "CPU Usage";
const char* pcEn_CpuCeil = "CPU Ceil:";
const char* pcEn_CpuFloor = "CPU Floor:";
const char* pcEn_MemoryMonit = "Memory Usage";
const char* pcEn_MemUseCeil = "Memory Use Ceil:";
const char* pcEn_DiskMonit = "Disk Volume";
const char* pcEn_DiskMonitList = "Disk Volume Monitor List:";
const char* pcEn_Partition = "Partition";
const char* pcEn_Ceil = "Ceil(MBytes)";
const char* pcEn_Floor = "Floor(MBytes)";
const char* pcEn_Interval = "Interval(MBytes)";
const char* pcEn_BakMonit = "File Backup";
const char* pcEn_BakMonitList = "Backup Monitor List:";
const char* pcEn_File = "File";
const char* pcEn_BakDir = "Backup Directory";
const char* pcEn_BakSize = "Backup Size(KBytes)";
const char* pcEn_SysState = "System State";
const char* pcEn_TcpPortState = "Tcp listen Port";
const char* pcEn_LocalIp = "Local IP";
const char* pcEn_LocalPort = "Local Port";
const char* pcEn_Pid = "Pid";
const char* pcEn_ProgName = "Program Name";
const char* pcEn_MemoryState = "Memory State";
const char* pcEn_MemoryUse = "Memory Used:";
const char* pcEn_MemoryFree = "Memory Free:";
const char* pcEn_AppConfig = "App Config";
const char* pcEn_IpTable = "Iptables";
const char* pcEn_Input = "Input chain";
const char* pcEn_Output = "Output chain";
const char* pcEn_Vsftpd = "Vsftpd";
const char* pcEn_Samba = "Samba";
const char* pcEn_NetInterface = "Net Interface";
const char* pcEn_PromptMenu =
    "[up/down arrow]Select item [left/right arrow]Select menu [Enter]Confirm [Esc]exit";
const char* pcEn_PromptContent =
    "[up/down arrow]Select item [F12]Help [Enter]Modify [Esc]Return to menu";
const char* pcEn_PromptContentNoModify = "[up/down arrow]Select item [F12]Help [Esc]Return to menu";
const char* pcEn_PromptContentList =
    "[up/down arrow]Select item [F12]Help [Enter]Enter list [Esc]Return to menu";
const char* pcEn_PromptContentNewLevel =
    "[up/down arrow]Select item [F12]Help [Enter]Modify [Esc]Cacel and return [F9]Save and return";
const char* pcEn_PromptInput = "[Esc]Cancel [Enter]Confirm ";
const char* pcEn_PromptChoose = "[up/down arrow]Select item [Esc]Cancel [Enter]Confirm";
const char* pcEn_PromptList =
    "[up/down arrow]Select item  [Esc]return [F2]Add [F3]Delete [F9]Confirm";
const char* pcEn_PromptShortcutKeyToggle =
    "[Esc]Return to menu [F12]Help [F2]Add [F3]Delete [F4]Clear [F5]Open or close toggle";
const char* pcEn_PromptShortcutKeyPolicy =
    "[Esc]Return to menu [F12]Help [F2]Add [F3]Delete [F4]Clear [F5]Modify policy";
const char* pcEn_PromptHelp = "[PageUp/PageDown]Select Page  [Esc]Return";
const char* pcEn_PromptNetInferface =
    "[Esc]Return [F12]Help [F2]Set Interface Down [F3]Set Interface Up [F4]Set Ip Auto [F5]Set Ip "
    "Manually";
const char* pcEn_PromptSysStateConfig =
    "[Esc]Return [F12]Help [F2]Modify Host Name [F3]Modify Password [F4]Modify System Date "
    "[F5]Modify System Time";
const char* pcEn_Open = "[Open]";
const char* pcEn_Close = "[Close]";
const char* pcEn_Yes = "[Yes]";
const char* pcEn_No = "[No]";
const char* pcEn_AnonymEnable = "Anonym Enable:";
const char* pcEn_AnonymUpload = "Anonym Upload:";
const char* pcEn_AnonymMkdir = "Anonym Make Directory:";
const char* pcEn_AnonymRootPath = "Anonym Root Path:";
const char* pcEn_LocalUsrEnable = "Local User Enable:";
const char* pcEn_WriteEnable = "Write Enable:";
const char* pcEn_FtpStart = "Ftp Start:";
const char* pcEn_FtpDefault = "Ftp Restore Default:";
const char* pcEn_ShDirPath = "Share Directory Path:";
const char* pcEn_ShWrEn = "Share Write Enable:";
const char* pcEn_SambaStart = "Samba Start:";
const char* pcEn_SambaDefault = "Samba Restore Default:";
const char* pcEn_Priority = "Priority:";
const char* pcEn_Protocol = "Protocol:";
const char* pcEn_SrcIp = "Source IP:";
const char* pcEn_SrcPort = "Source Port:";
const char* pcEn_DesIp = "Destination IP:";
const char* pcEn_DesPort = "Destination Port:";
const char* pcEn_Action = "Action:";
const char* pcEn_Highest = "[Highest]";
const char* pcEn_Lowest = "[Lowest]";
const char* pcEn_Tcp = "[Tcp]";
const char* pcEn_Udp = "[Udp]";
const char* pcEn_Accept = "[Accept]";
const char* pcEn_Drop = "[Drop]";
const char* pcEn_Reject = "[Reject]";
const char* pcEn_IfName = "Interface Name:";
const char* pcEn_IfNameReminder = "(eg. eth0)";
const char* pcEn_IpReminder = "(eg. 192.168.1.2)";
const char* pcEn_MaskReminder = "(input 0 means default)";
const char* pcEn_GatewayReminder = "(input 0 means no gateway)";
const char* pcEn_DelInfo = "Please input the index you want to delete:";
const char* pcEn_DvClearInfo = "Are you sure to clear the disk volume monit list?";
const char* pcEn_BackupClearInfo = "Are you sure to clear the Backup monit list?";
const char* pcEn_InputClearInfo = "Are you sure to clear the input chain?";
const char* pcEn_OutputClearInfo = "Are you sure to clear the output iptable?";
const char* pcEn_ModifyPolicy = "Please choose the modify policy:";
const char* pcEn_HelpIcmpIgnore =
    "[NAME] Icmp echo ignore all.\n"
    "[DESC] if you 'open' this option,host will ignore all of ping-requested packages,in other "
    "words,any host can not ping local host.";
const char* pcEn_HelpTcpSynCookies =
    "[NAME] Tcp Syn Cookie.\n"
    "[DESC] if you 'open' this option,the SYN flood attack can be avoided partly.";
const char* pcEn_HelpTcpWaitTimeReuse =
    "[NAME] Tcp Wait Time Reuse.\n"
    "[DESC] if you 'open' this option,the Tcp port whose current state is TIME_WAIT will be "
    "allowed to bind.";
const char* pcEn_HelpShmax =
    "[NAME]\tSHMMAX \n"
    "[DESC] the maximum allowable size of one shared memory segment.\n"
    "       This setting should be large enough.";
const char* pcEn_HelpShAll =
    "[NAME]\tSHMALL\n"
    "[DESC] the maximum page of shared memory.\n"
    "       This setting should be large enough.\n"
    "       This value's unit is 'Page'.The size of 'page' reference command\n"
    "       PAGESIZE.";
const char* pcEn_HelpShmmni =
    "[NAME]\tSHMMNI\n"
    "[DESC] the maximum number of shared memory segment.\n"
    "       This setting should be large enough.";
const char* pcEn_HelpThreadMax =
    "[NAME]\tMax Thread Number.\n"
    "[DESC] the maximum number of threads of system.\n"
    "       This value should be large enough.\n"
    "       the number of process is less than or equal to this value.\n"
    "       This value must be set larger than 512.";
const char* pcEn_HelpFileMax =
    "[NAME]\tMax File Handle Number.\n"
    "[DESC] the maximum number of file handle that can be allocated.\n"
    "       This value should be large enough.\n"
    "       This value must be set larger than 4096.";
const char* pcEn_HelpFileMonitFlag =
    "[NAME]\tFile monitor toggle.\n"
    "[DESC] if 'open' this option, you can monitor the files and directories in the monit list.\n"
    "If these files were created, moidified or deleted,the monitor report is saved in the "
    "directory:/etc/norvane/monit/filemonit.txt.\n"
    "The option will be setting to 'close' automatically if the monitor list is empty.\n"
    "\n"
    "[NAME]\tFile monit list.\n"
    "[DESC]\tThis list will show you all files and directories you monitoring.\n"
    "You can change the list by F2(add) and F3(delete).\n"
    "Only one file is allowed to be added in one line.\n"
    "The fild you added shall be received even if this file does not exist now.It will be "
    "monitored when it is created.\n"
    "If you add a directory, the program will monitor the file and child directory of it.But it "
    "would be not monitor the files of child directories.";
const char* pcEn_HelpFileMonitList = nullptr;
const char* pcEn_HelpProcessMonitFlag =
    "[NAME]\tProcess monit toggle.\n"
    "[DESC] if 'open' this option, you can monit the file in monit list.\n"
    "the monitor report is saved in the directory:/etc/norvane/monit/processmonit.txt.\n"
    "The option will be setting to 'close' automatically if the monit list is empty.\n"
    "\n"
    "[NAME]\tFile monit list.\n"
    "[DESC]\tThis list will show you all processes you monitoring.\n"
    "You can change the list by F2(add) and F3(delete).\n"
    "Only one file is allowed to be added in one line.\n"
    "The function is just used to monitor daemon.\n"
    "The process name must be absolute path or it is in the $PATH, and the necessary argument for "
    "starting is needed to be carried.\n"
    "For example:\n"
    "sleep 5\n"
    "/usr/bin/httpdserver -f /www/httpdconf";
const char* pcEn_HelpProcessMonitList = nullptr;
const char* pcEn_HelpCpuMonitFlag =
    "[NAME]\tCpu monit toggle.\n"
    "[DESC] If you choose 'open', the program will monit cpu.\n"
    "The program will save warning information in the directory /etc/norvane/monit/cpumonit.txt "
    "when the utilization rate is higher than Cpu Ceil or lower than Cpu Floor.\n"
    "\n"
    "[NAME]\tCpu Ceil\n"
    "[DESC] max value of utilization rate of cpu.\n"
    "The program will give warning in log file when actual utilization rate exceed the value.\n"
    "\n"
    "[NAME]\tCpu Floor\n"
    "[DESC] min value of utilization rate of cpu.\n"
    "The program will give warning in log file when actual utilization is lower than this value.";
const char* pcEn_HelpCpuCeil = nullptr;
const char* pcEn_HelpCpuFloor = nullptr;
const char* pcEn_HelpMemMonitFlag =
    "[NAME]\tMemory monit toggle.\n"
    "[DESC] If you choose 'open', the program will monit memory.\n"
    "The program will save warning information in the directory /etc/norvane/monit/memorymonit.txt "
    "when the utilization rate is higher than Memory Ceil.\n"
    "\n"
    "[NAME]\tMemory Ceil.\n"
    "[DESC] max value of utilization of memory.\n"
    "The program will give warning in log file when actual utilization exceed the value.\n"
    "\n"
    "[NAME] Memory Use.\n"
    "[DESC] memory using size in MBYTES.\n"
    "\n"
    "[NAME] Memory Free.\n"
    "[DESC] memory free size in MBYTES.";
const char* pcEn_HelpMemCeil = nullptr;
const char* pcEn_HelpDvMonit =
    "[NAME]\tDisk Volume Monit.\n"
    "[DESC] monitor information is saved in the directory:\n"
    "/etc/norvane/monit/diskvolumemonit.txt\n"
    "(1)seq:the index of disk volume.\n"
    "(2)partition:disk partition.\n"
    "(3)ceil:max value.when the volume of partition is larger than this value,the corresponding "
    "information shall be saved in the diskvolumemonit.txt.\n"
    "(4)floor:min value.when the volume of partition is lower than this value,the corresponding "
    "information shall be saved in the diskvolumemonit.txt.\n"
    "(5)interval:the interval volume.when the volume of partition increase or decrease by "
    "'interval',the corresponding information shall be saved in the diskvolumemonit.txt.";
const char* pcEn_HelpBakFile =
    "[NAME]\tBackup File Monit.\n"
    "[DESC] \n"
    "(1)file path:the file which is monitored.\n"
    "(2)bakup dir:the directory which the backup file store in.\n"
    "(3)size to backup:the size of file. If the file size exceed this value, the program will "
    "backup the file and clear this file.\n"
    "   This function can be used to prevent performance degradation or even crash caused by too "
    "large data or log file.";
const char* pcEn_HelpTcpListenPort =
    "[NAME]\tTcp listen port.\n"
    "[DESC] the program that is listening now.\n"
    "The ports may be entrance of attacks if the firewall have not prevention.\n"
    "For normal service, make sure its port be monitored and data packages could pass the "
    "firewall.";
const char* pcEn_HelpMemUse = nullptr;
const char* pcEn_HelpMemFree = nullptr;
const char* pcEn_HelpInput =
    "[NAME] Chain Input.\n"
    "[DESC] \n"
    "(1)use F2 to add rule:\n"
    "  Priority:the priority of this rule in the input chain.\n"
    "  the blank IP or Port means any IP or Port.\n"
    "  Action:handling of data packages that match the rule.\n"
    "(2)use F3 to delete rule:input the index of the rule you want to delete.\n"
    "(3)use F4 to clear all rules.\n"
    "(4)use F5 to modify policy:\n"
    "  'policy' means handling of data packages that are not match all of rules of the input "
    "chain.\n"
    "  warning:please be careful to modify this setting.";
const char* pcEn_HelpOutput =
    "[NAME] Chain Output.\n"
    "[DESC] \n"
    "(1)use F2 to add rule:\n"
    "  Priority:the priority of this rule in the output chain.\n"
    "  the blank IP or Port means any IP or Port.\n"
    "  Action:handling of data packages that match the rule.\n"
    "(2)use F3 to delete rule:input the index of the rule you want to delete.\n"
    "(3)use F4 to clear all rules.\n"
    "(4)use F5 to modify policy:\n"
    "  'policy' means handling of data packages that are not match all of rules of the output "
    "chain.\n"
    "  warning:please be careful to modify this setting.";
const char* pcEn_HelpAnonEnable =
    "[NAME] Anonymous Enable:Whether to allow anonymous users to access the FTP server.\n"
    "[NAME] Anonymous Upload:Whether to allow anonymous users to upload files.\n"
    "[NAME] Anonymous make directory:Whether to allow anonymous users to make directory.\n"
    "[NAME] Anonymous Root Path:the anonymous user's root path.\n"
    "[NAME] Local user enable:Whether to allow local users(not root user) to access the FTP "
    "server.\n"
    "[NAME] Write Enable:Whether to allow users to write file.\n"
    "[NAME] Ftp Start:'Yes' to start FTP services and 'No' to close it.\n"
    "[NAME] Ftp Default:You must choose 'Yes' to initialize the function before using it.\n"
    "       Note:the last configuration will be lost after you set it to 'Yes'.";
const char* pcEn_HelpAnonUpload = nullptr;
const char* pcEn_HelpAnonMkdir = nullptr;
const char* pcEn_HelpAnonRootPath = nullptr;
const char* pcEn_HelpLocalEnable = nullptr;
const char* pcEn_HelpWrEnable = nullptr;
const char* pcEn_HelpFtpStart = nullptr;
const char* pcEn_HelpFtpDefault = nullptr;
const char* pcEn_HelpSambaShareDir =
    "[NAME] Samba share directory: the path of Samba's shared directory.\n"
    "[NAME] Samba write enable:Whether to allow anonymous users to write file in shared "
    "directory.\n"
    "[NAME] Samba Start:'Yes' to start Samba services and 'No' to close it.\n"
    "[NAME] Samba Default:You must choose 'Yes' to initialize the function before using it.\n"
    "       Note:the last configuration will be lost after you set it to 'Yes'.";
const char* pcEn_HelpSambaWRE = nullptr;
const char* pcEn_HelpSambaStart = nullptr;
const char* pcEn_HelpSambaDefault = nullptr;
const char* pcEn_HelpNetInterface =
    "[NAME] Net Interface.\n"
    "[DESC] Each show is followed by:Index,Net interface,Mac address,IP setting "
    "mode(dynamic/static),Active mode(up/down),IP address,subnet mask.\n"
    "\n"
    "shortcut key:\n"
    "(1)F2:Set Interface Down: Input the name of network interface you want to close.\n"
    "(2)F3:Set Interface Up:Input the name of network interface you want to open.\n"
    "Enabling the interface may take some time, please be patient to wait.\n"
    "(3)F4:Set Ip Auto:make the network interface to obtain an IP automatically.\n"
    "Immediate effect and settings are not lost after restart.\n"
    "(4)F5:Set Ip Manually:Enter the network interface you want to set and its parameters.\n"
    "the network interface name, IP address adn the mask are required and the rest is optional.\n"
    "Immediate effect and settings are not lost after restart.";
const char* pcEn_HelpSysStateConfig =
    "[NAME]System State Configuration.\n"
    "[DESC]This menu is used to display or modify some system inforamtion such as host's name, "
    "password,system's date and time.There are some points you must note:\n"
    "(1)the maximum length of host'name is 32bytes and you should not type <space>.\n"
    "(2)The maximum length of user'name and password is also 32 bytes. You must avoid to type "
    "<space> and '-'(not include '').";
const char* pcEn_ConnectError = "Error:connect failed!";
const char* pcEn_WelcomeInfo =
    "Welcome to use server norvane for linux v1.0.\n"
    "\n"
    "If you have any questions or suggetions, contact us:\n"
    "\n"
    "website : www.norvane.example\n"
    "\n"
    "bbs : bbs.norvane.example\n"
    "\n"
    "mail : support@norvane.example";
const char* pcEn_SwName = "norvane for linux ";
const char* pcEn_Wait = "Excuting command, please wait...";
const char* pcEn_ExitEnquiry = "Are you sure to exit?";

void InitEnglishStr() {
    pcEn_HelpFileMonitList = pcEn_HelpFileMonitFlag;
    pcEn_HelpProcessMonitList = pcEn_HelpProcessMonitFlag;
    pcEn_HelpCpuCeil = pcEn_HelpCpuMonitFlag;
    pcEn_HelpCpuFloor = pcEn_HelpCpuMonitFlag;
    pcEn_HelpMemCeil = pcEn_HelpMemMonitFlag;
    pcEn_HelpMemUse = pcEn_HelpMemMonitFlag;
    pcEn_HelpMemFree = pcEn_HelpMemMonitFlag;
    pcEn_HelpAnonUpload = pcEn_HelpAnonEnable;
    pcEn_HelpAnonMkdir = pcEn_HelpAnonEnable;
    pcEn_HelpAnonRootPath = pcEn_HelpAnonEnable;
    pcEn_HelpLocalEnable = pcEn_HelpAnonEnable;
    pcEn_HelpWrEnable = pcEn_HelpAnonEnable;
    pcEn_HelpFtpStart = pcEn_HelpAnonEnable;
    pcEn_HelpFtpDefault = pcEn_HelpAnonEnable;
    pcEn_HelpSambaWRE = pcEn_HelpSambaShareDir;
    pcEn_HelpSambaStart = pcEn_HelpSambaShareDir;
    pcEn_HelpSambaDefault = pcEn_HelpSambaShareDir;
}
