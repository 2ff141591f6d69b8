// The text catalogue: every identifier present in all three languages, the
// English texts, the shared help texts, the index tables, the GB2312 catalogue
// against the UTF-8 one, and the fit of the texts on the screen.
#include <gtest/gtest.h>
#include <iconv.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "strings/com_str.h"
#include "strings/english_str.h"
#include "strings/gb2312_str.h"
#include "strings/utf8_str.h"

namespace {

struct Entry {
    const char* pcName;
    const char** ppcStr;
    const char** ppcEn;
    const char** ppcGB2312;
    const char** ppcUTF8;
};

#define ENTRY(x) \
    { #x, pcStr##x, &pcEn_##x, &pcGB2312_##x, &pcUTF8_##x }

const Entry kEntries[] = {
    ENTRY(SysConfig),
    ENTRY(SysOptimize),
    ENTRY(NetOptimize),
    ENTRY(PingConfig),
    ENTRY(TcpSynConfig),
    ENTRY(TcpWaitTimeReuse),
    ENTRY(Ip),
    ENTRY(Mask),
    ENTRY(Dns),
    ENTRY(GateWay),
    ENTRY(DNS1),
    ENTRY(DNS2),
    ENTRY(ResOptimize),
    ENTRY(SysStateConfig),
    ENTRY(HostName),
    ENTRY(SysDate),
    ENTRY(SysTime),
    ENTRY(UserName),
    ENTRY(NewPassword),
    ENTRY(PwConfirm),
    ENTRY(Year),
    ENTRY(Month),
    ENTRY(Day),
    ENTRY(Hour),
    ENTRY(Minite),
    ENTRY(Second),
    ENTRY(Shmmax),
    ENTRY(Shmall),
    ENTRY(Shmmni),
    ENTRY(ThreadMax),
    ENTRY(FileMax),
    ENTRY(SysMonit),
    ENTRY(FileMonit),
    ENTRY(FileList),
    ENTRY(ScanList),
    ENTRY(MonitToggle),
    ENTRY(ProcMonit),
    ENTRY(ProcList),
    ENTRY(CpuMonit),
    ENTRY(CpuCeil),
    ENTRY(CpuFloor),
    ENTRY(MemoryMonit),
    ENTRY(MemUseCeil),
    ENTRY(DiskMonit),
    ENTRY(DiskMonitList),
    ENTRY(Partition),
    ENTRY(Ceil),
    ENTRY(Floor),
    ENTRY(Interval),
    ENTRY(BakMonit),
    ENTRY(BakMonitList),
    ENTRY(File),
    ENTRY(BakDir),
    ENTRY(BakSize),
    ENTRY(SysState),
    ENTRY(TcpPortState),
    ENTRY(LocalIp),
    ENTRY(LocalPort),
    ENTRY(Pid),
    ENTRY(ProgName),
    ENTRY(MemoryState),
    ENTRY(MemoryUse),
    ENTRY(MemoryFree),
    ENTRY(AppConfig),
    ENTRY(IpTable),
    ENTRY(Input),
    ENTRY(Output),
    ENTRY(Vsftpd),
    ENTRY(Samba),
    ENTRY(NetInterface),
    ENTRY(PromptMenu),
    ENTRY(PromptContent),
    ENTRY(PromptContentNoModify),
    ENTRY(PromptContentList),
    ENTRY(PromptContentNewLevel),
    ENTRY(PromptInput),
    ENTRY(PromptChoose),
    ENTRY(PromptList),
    ENTRY(PromptShortcutKeyToggle),
    ENTRY(PromptShortcutKeyPolicy),
    ENTRY(PromptHelp),
    ENTRY(PromptNetInferface),
    ENTRY(PromptSysStateConfig),
    ENTRY(Open),
    ENTRY(Close),
    ENTRY(Yes),
    ENTRY(No),
    ENTRY(AnonymEnable),
    ENTRY(AnonymUpload),
    ENTRY(AnonymMkdir),
    ENTRY(AnonymRootPath),
    ENTRY(LocalUsrEnable),
    ENTRY(WriteEnable),
    ENTRY(FtpStart),
    ENTRY(FtpDefault),
    ENTRY(ShDirPath),
    ENTRY(ShWrEn),
    ENTRY(SambaStart),
    ENTRY(SambaDefault),
    ENTRY(Priority),
    ENTRY(Protocol),
    ENTRY(SrcIp),
    ENTRY(SrcPort),
    ENTRY(DesIp),
    ENTRY(DesPort),
    ENTRY(Action),
    ENTRY(Highest),
    ENTRY(Lowest),
    ENTRY(Tcp),
    ENTRY(Udp),
    ENTRY(Accept),
    ENTRY(Drop),
    ENTRY(Reject),
    ENTRY(IfName),
    ENTRY(IfNameReminder),
    ENTRY(IpReminder),
    ENTRY(MaskReminder),
    ENTRY(GatewayReminder),
    ENTRY(DelInfo),
    ENTRY(DvClearInfo),
    ENTRY(BackupClearInfo),
    ENTRY(InputClearInfo),
    ENTRY(OutputClearInfo),
    ENTRY(ModifyPolicy),
    ENTRY(HelpIcmpIgnore),
    ENTRY(HelpTcpSynCookies),
    ENTRY(HelpTcpWaitTimeReuse),
    ENTRY(HelpShmax),
    ENTRY(HelpShAll),
    ENTRY(HelpShmmni),
    ENTRY(HelpThreadMax),
    ENTRY(HelpFileMax),
    ENTRY(HelpFileMonitFlag),
    ENTRY(HelpFileMonitList),
    ENTRY(HelpProcessMonitFlag),
    ENTRY(HelpProcessMonitList),
    ENTRY(HelpCpuMonitFlag),
    ENTRY(HelpCpuCeil),
    ENTRY(HelpCpuFloor),
    ENTRY(HelpMemMonitFlag),
    ENTRY(HelpMemCeil),
    ENTRY(HelpDvMonit),
    ENTRY(HelpBakFile),
    ENTRY(HelpTcpListenPort),
    ENTRY(HelpMemUse),
    ENTRY(HelpMemFree),
    ENTRY(HelpInput),
    ENTRY(HelpOutput),
    ENTRY(HelpAnonEnable),
    ENTRY(HelpAnonUpload),
    ENTRY(HelpAnonMkdir),
    ENTRY(HelpAnonRootPath),
    ENTRY(HelpLocalEnable),
    ENTRY(HelpWrEnable),
    ENTRY(HelpFtpStart),
    ENTRY(HelpFtpDefault),
    ENTRY(HelpSambaShareDir),
    ENTRY(HelpSambaWRE),
    ENTRY(HelpSambaStart),
    ENTRY(HelpSambaDefault),
    ENTRY(HelpNetInterface),
    ENTRY(HelpSysStateConfig),
    ENTRY(ConnectError),
    ENTRY(WelcomeInfo),
    ENTRY(SwName),
    ENTRY(Wait),
    ENTRY(ExitEnquiry),
};

#undef ENTRY

struct English {
    const char* pcName;
    const char** ppcStr;
    const char* pcText;
};

#define ENGLISH(x, text) \
    { #x, pcStr##x, text }

const English kEnglish[] = {
    ENGLISH(SysConfig, "System Config"),
    ENGLISH(SysOptimize, "System Optimize"),
    ENGLISH(NetOptimize, "Network"),
    ENGLISH(PingConfig, "Icmp Echo Ignore All:"),
    ENGLISH(TcpSynConfig, "Tcp SynCookies:"),
    ENGLISH(TcpWaitTimeReuse, "Tcp Wait Time Reuse:"),
    ENGLISH(Ip, "IP:"),
    ENGLISH(Mask, "Mask:"),
    ENGLISH(Dns, "DNS:"),
    ENGLISH(GateWay, "Gate way:"),
    ENGLISH(DNS1, "DNS1:"),
    ENGLISH(DNS2, "DNS2:"),
    ENGLISH(ResOptimize, "Resource"),
    ENGLISH(SysStateConfig, "System State"),
    ENGLISH(HostName, "Host Name:"),
    ENGLISH(SysDate, "System Date:"),
    ENGLISH(SysTime, "System Time:"),
    ENGLISH(UserName, "User Name:"),
    ENGLISH(NewPassword, "New Password:"),
    ENGLISH(PwConfirm, "New Password Confirm:"),
    ENGLISH(Year, "Year:"),
    ENGLISH(Month, "Month:"),
    ENGLISH(Day, "Day:"),
    ENGLISH(Hour, "Hour:"),
    ENGLISH(Minite, "Minite:"),
    ENGLISH(Second, "Second:"),
    ENGLISH(Shmmax, "share memory max:"),
    ENGLISH(Shmall, "share memory all:"),
    ENGLISH(Shmmni, "SHMMNI:"),
    ENGLISH(ThreadMax, "Max Thread Number:"),
    ENGLISH(FileMax, "Max File Handle Number:"),
    ENGLISH(SysMonit, "System Monitor"),
    ENGLISH(FileMonit, "File"),
    ENGLISH(FileList, "File List:"),
    ENGLISH(ScanList, "[scan list]"),
    ENGLISH(MonitToggle, "Monitor Toggle:"),
    ENGLISH(ProcMonit, "Process"),
    ENGLISH(ProcList, "Process List:"),
    ENGLISH(CpuMonit, "CPU Usage"),
    ENGLISH(CpuCeil, "CPU Ceil:"),
    ENGLISH(CpuFloor, "CPU Floor:"),
    ENGLISH(MemoryMonit, "Memory Usage"),
    ENGLISH(MemUseCeil, "Memory Use Ceil:"),
    ENGLISH(DiskMonit, "Disk Volume"),
    ENGLISH(DiskMonitList, "Disk Volume Monitor List:"),
    ENGLISH(Partition, "Partition"),
    ENGLISH(Ceil, "Ceil(MBytes)"),
    ENGLISH(Floor, "Floor(MBytes)"),
    ENGLISH(Interval, "Interval(MBytes)"),
    ENGLISH(BakMonit, "File Backup"),
    ENGLISH(BakMonitList, "Backup Monitor List:"),
    ENGLISH(File, "File"),
    ENGLISH(BakDir, "Backup Directory"),
    ENGLISH(BakSize, "Backup Size(KBytes)"),
    ENGLISH(SysState, "System State"),
    ENGLISH(TcpPortState, "Tcp listen Port"),
    ENGLISH(LocalIp, "Local IP"),
    ENGLISH(LocalPort, "Local Port"),
    ENGLISH(Pid, "Pid"),
    ENGLISH(ProgName, "Program Name"),
    ENGLISH(MemoryState, "Memory State"),
    ENGLISH(MemoryUse, "Memory Used:"),
    ENGLISH(MemoryFree, "Memory Free:"),
    ENGLISH(AppConfig, "App Config"),
    ENGLISH(IpTable, "Iptables"),
    ENGLISH(Input, "Input chain"),
    ENGLISH(Output, "Output chain"),
    ENGLISH(Vsftpd, "Vsftpd"),
    ENGLISH(Samba, "Samba"),
    ENGLISH(NetInterface, "Net Interface"),
    ENGLISH(PromptMenu,
            "[up/down arrow]Select item [left/right arrow]Select menu [Enter]Confirm [Esc]exit"),
    ENGLISH(PromptContent,
            "[up/down arrow]Select item [F12]Help [Enter]Modify [Esc]Return to menu"),
    ENGLISH(PromptContentNoModify, "[up/down arrow]Select item [F12]Help [Esc]Return to menu"),
    ENGLISH(PromptContentList,
            "[up/down arrow]Select item [F12]Help [Enter]Enter list [Esc]Return to menu"),
    ENGLISH(PromptContentNewLevel,
            "[up/down arrow]Select item [F12]Help [Enter]Modify [Esc]Cacel and return [F9]Save and "
            "return"),
    ENGLISH(PromptInput, "[Esc]Cancel [Enter]Confirm "),
    ENGLISH(PromptChoose, "[up/down arrow]Select item [Esc]Cancel [Enter]Confirm"),
    ENGLISH(PromptList, "[up/down arrow]Select item  [Esc]return [F2]Add [F3]Delete [F9]Confirm"),
    ENGLISH(PromptShortcutKeyToggle,
            "[Esc]Return to menu [F12]Help [F2]Add [F3]Delete [F4]Clear [F5]Open or close toggle"),
    ENGLISH(PromptShortcutKeyPolicy,
            "[Esc]Return to menu [F12]Help [F2]Add [F3]Delete [F4]Clear [F5]Modify policy"),
    ENGLISH(PromptHelp, "[PageUp/PageDown]Select Page  [Esc]Return"),
    ENGLISH(PromptNetInferface,
            "[Esc]Return [F12]Help [F2]Set Interface Down [F3]Set Interface Up [F4]Set Ip Auto "
            "[F5]Set Ip Manually"),
    ENGLISH(PromptSysStateConfig,
            "[Esc]Return [F12]Help [F2]Modify Host Name [F3]Modify Password [F4]Modify System Date "
            "[F5]Modify System Time"),
    ENGLISH(Open, "[Open]"),
    ENGLISH(Close, "[Close]"),
    ENGLISH(Yes, "[Yes]"),
    ENGLISH(No, "[No]"),
    ENGLISH(AnonymEnable, "Anonym Enable:"),
    ENGLISH(AnonymUpload, "Anonym Upload:"),
    ENGLISH(AnonymMkdir, "Anonym Make Directory:"),
    ENGLISH(AnonymRootPath, "Anonym Root Path:"),
    ENGLISH(LocalUsrEnable, "Local User Enable:"),
    ENGLISH(WriteEnable, "Write Enable:"),
    ENGLISH(FtpStart, "Ftp Start:"),
    ENGLISH(FtpDefault, "Ftp Restore Default:"),
    ENGLISH(ShDirPath, "Share Directory Path:"),
    ENGLISH(ShWrEn, "Share Write Enable:"),
    ENGLISH(SambaStart, "Samba Start:"),
    ENGLISH(SambaDefault, "Samba Restore Default:"),
    ENGLISH(Priority, "Priority:"),
    ENGLISH(Protocol, "Protocol:"),
    ENGLISH(SrcIp, "Source IP:"),
    ENGLISH(SrcPort, "Source Port:"),
    ENGLISH(DesIp, "Destination IP:"),
    ENGLISH(DesPort, "Destination Port:"),
    ENGLISH(Action, "Action:"),
    ENGLISH(Highest, "[Highest]"),
    ENGLISH(Lowest, "[Lowest]"),
    ENGLISH(Tcp, "[Tcp]"),
    ENGLISH(Udp, "[Udp]"),
    ENGLISH(Accept, "[Accept]"),
    ENGLISH(Drop, "[Drop]"),
    ENGLISH(Reject, "[Reject]"),
    ENGLISH(IfName, "Interface Name:"),
    ENGLISH(IfNameReminder, "(eg. eth0)"),
    ENGLISH(IpReminder, "(eg. 192.168.1.2)"),
    ENGLISH(MaskReminder, "(input 0 means default)"),
    ENGLISH(GatewayReminder, "(input 0 means no gateway)"),
    ENGLISH(DelInfo, "Please input the index you want to delete:"),
    ENGLISH(DvClearInfo, "Are you sure to clear the disk volume monit list?"),
    ENGLISH(BackupClearInfo, "Are you sure to clear the Backup monit list?"),
    ENGLISH(InputClearInfo, "Are you sure to clear the input chain?"),
    ENGLISH(OutputClearInfo, "Are you sure to clear the output iptable?"),
    ENGLISH(ModifyPolicy, "Please choose the modify policy:"),
    ENGLISH(HelpIcmpIgnore,
            "[NAME] Icmp echo ignore all.\n"
            "[DESC] if you 'open' this option,host will ignore all of ping-requested packages,in "
            "other words,any host can not ping local host."),
    ENGLISH(HelpTcpSynCookies,
            "[NAME] Tcp Syn Cookie.\n"
            "[DESC] if you 'open' this option,the SYN flood attack can be avoided partly."),
    ENGLISH(HelpTcpWaitTimeReuse,
            "[NAME] Tcp Wait Time Reuse.\n"
            "[DESC] if you 'open' this option,the Tcp port whose current state is TIME_WAIT will "
            "be allowed to bind."),
    ENGLISH(HelpShmax,
            "[NAME]\tSHMMAX \n"
            "[DESC] the maximum allowable size of one shared memory segment.\n"
            "       This setting should be large enough."),
    ENGLISH(HelpShAll,
            "[NAME]\tSHMALL\n"
            "[DESC] the maximum page of shared memory.\n"
            "       This setting should be large enough.\n"
            "       This value's unit is 'Page'.The size of 'page' reference command\n"
            "       PAGESIZE."),
    ENGLISH(HelpShmmni,
            "[NAME]\tSHMMNI\n"
            "[DESC] the maximum number of shared memory segment.\n"
            "       This setting should be large enough."),
    ENGLISH(HelpThreadMax,
            "[NAME]\tMax Thread Number.\n"
            "[DESC] the maximum number of threads of system.\n"
            "       This value should be large enough.\n"
            "       the number of process is less than or equal to this value.\n"
            "       This value must be set larger than 512."),
    ENGLISH(HelpFileMax,
            "[NAME]\tMax File Handle Number.\n"
            "[DESC] the maximum number of file handle that can be allocated.\n"
            "       This value should be large enough.\n"
            "       This value must be set larger than 4096."),
    ENGLISH(HelpFileMonitFlag,
            "[NAME]\tFile monitor toggle.\n"
            "[DESC] if 'open' this option, you can monitor the files and directories in the monit "
            "list.\n"
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
            "If you add a directory, the program will monitor the file and child directory of "
            "it.But it would be not monitor the files of child directories."),
    ENGLISH(HelpProcessMonitFlag,
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
            "The process name must be absolute path or it is in the $PATH, and the necessary "
            "argument for starting is needed to be carried.\n"
            "For example:\n"
            "sleep 5\n"
            "/usr/bin/httpdserver -f /www/httpdconf"),
    ENGLISH(
        HelpCpuMonitFlag,
        "[NAME]\tCpu monit toggle.\n"
        "[DESC] If you choose 'open', the program will monit cpu.\n"
        "The program will save warning information in the directory "
        "/etc/norvane/monit/cpumonit.txt when the utilization rate is higher than Cpu Ceil or "
        "lower than Cpu Floor.\n"
        "\n"
        "[NAME]\tCpu Ceil\n"
        "[DESC] max value of utilization rate of cpu.\n"
        "The program will give warning in log file when actual utilization rate exceed the value.\n"
        "\n"
        "[NAME]\tCpu Floor\n"
        "[DESC] min value of utilization rate of cpu.\n"
        "The program will give warning in log file when actual utilization is lower than this "
        "value."),
    ENGLISH(
        HelpMemMonitFlag,
        "[NAME]\tMemory monit toggle.\n"
        "[DESC] If you choose 'open', the program will monit memory.\n"
        "The program will save warning information in the directory "
        "/etc/norvane/monit/memorymonit.txt when the utilization rate is higher than Memory Ceil.\n"
        "\n"
        "[NAME]\tMemory Ceil.\n"
        "[DESC] max value of utilization of memory.\n"
        "The program will give warning in log file when actual utilization exceed the value.\n"
        "\n"
        "[NAME] Memory Use.\n"
        "[DESC] memory using size in MBYTES.\n"
        "\n"
        "[NAME] Memory Free.\n"
        "[DESC] memory free size in MBYTES."),
    ENGLISH(HelpDvMonit,
            "[NAME]\tDisk Volume Monit.\n"
            "[DESC] monitor information is saved in the directory:\n"
            "/etc/norvane/monit/diskvolumemonit.txt\n"
            "(1)seq:the index of disk volume.\n"
            "(2)partition:disk partition.\n"
            "(3)ceil:max value.when the volume of partition is larger than this value,the "
            "corresponding information shall be saved in the diskvolumemonit.txt.\n"
            "(4)floor:min value.when the volume of partition is lower than this value,the "
            "corresponding information shall be saved in the diskvolumemonit.txt.\n"
            "(5)interval:the interval volume.when the volume of partition increase or decrease by "
            "'interval',the corresponding information shall be saved in the diskvolumemonit.txt."),
    ENGLISH(HelpBakFile,
            "[NAME]\tBackup File Monit.\n"
            "[DESC] \n"
            "(1)file path:the file which is monitored.\n"
            "(2)bakup dir:the directory which the backup file store in.\n"
            "(3)size to backup:the size of file. If the file size exceed this value, the program "
            "will backup the file and clear this file.\n"
            "   This function can be used to prevent performance degradation or even crash caused "
            "by too large data or log file."),
    ENGLISH(HelpTcpListenPort,
            "[NAME]\tTcp listen port.\n"
            "[DESC] the program that is listening now.\n"
            "The ports may be entrance of attacks if the firewall have not prevention.\n"
            "For normal service, make sure its port be monitored and data packages could pass the "
            "firewall."),
    ENGLISH(HelpInput,
            "[NAME] Chain Input.\n"
            "[DESC] \n"
            "(1)use F2 to add rule:\n"
            "  Priority:the priority of this rule in the input chain.\n"
            "  the blank IP or Port means any IP or Port.\n"
            "  Action:handling of data packages that match the rule.\n"
            "(2)use F3 to delete rule:input the index of the rule you want to delete.\n"
            "(3)use F4 to clear all rules.\n"
            "(4)use F5 to modify policy:\n"
            "  'policy' means handling of data packages that are not match all of rules of the "
            "input chain.\n"
            "  warning:please be careful to modify this setting."),
    ENGLISH(HelpOutput,
            "[NAME] Chain Output.\n"
            "[DESC] \n"
            "(1)use F2 to add rule:\n"
            "  Priority:the priority of this rule in the output chain.\n"
            "  the blank IP or Port means any IP or Port.\n"
            "  Action:handling of data packages that match the rule.\n"
            "(2)use F3 to delete rule:input the index of the rule you want to delete.\n"
            "(3)use F4 to clear all rules.\n"
            "(4)use F5 to modify policy:\n"
            "  'policy' means handling of data packages that are not match all of rules of the "
            "output chain.\n"
            "  warning:please be careful to modify this setting."),
    ENGLISH(HelpAnonEnable,
            "[NAME] Anonymous Enable:Whether to allow anonymous users to access the FTP server.\n"
            "[NAME] Anonymous Upload:Whether to allow anonymous users to upload files.\n"
            "[NAME] Anonymous make directory:Whether to allow anonymous users to make directory.\n"
            "[NAME] Anonymous Root Path:the anonymous user's root path.\n"
            "[NAME] Local user enable:Whether to allow local users(not root user) to access the "
            "FTP server.\n"
            "[NAME] Write Enable:Whether to allow users to write file.\n"
            "[NAME] Ftp Start:'Yes' to start FTP services and 'No' to close it.\n"
            "[NAME] Ftp Default:You must choose 'Yes' to initialize the function before using it.\n"
            "       Note:the last configuration will be lost after you set it to 'Yes'."),
    ENGLISH(
        HelpSambaShareDir,
        "[NAME] Samba share directory: the path of Samba's shared directory.\n"
        "[NAME] Samba write enable:Whether to allow anonymous users to write file in shared "
        "directory.\n"
        "[NAME] Samba Start:'Yes' to start Samba services and 'No' to close it.\n"
        "[NAME] Samba Default:You must choose 'Yes' to initialize the function before using it.\n"
        "       Note:the last configuration will be lost after you set it to 'Yes'."),
    ENGLISH(
        HelpNetInterface,
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
        "the network interface name, IP address adn the mask are required and the rest is "
        "optional.\n"
        "Immediate effect and settings are not lost after restart."),
    ENGLISH(HelpSysStateConfig,
            "[NAME]System State Configuration.\n"
            "[DESC]This menu is used to display or modify some system inforamtion such as host's "
            "name, password,system's date and time.There are some points you must note:\n"
            "(1)the maximum length of host'name is 32bytes and you should not type <space>.\n"
            "(2)The maximum length of user'name and password is also 32 bytes. You must avoid to "
            "type <space> and '-'(not include '')."),
    ENGLISH(ConnectError, "Error:connect failed!"),
    ENGLISH(SwName, "norvane for linux "),
    ENGLISH(Wait, "Excuting command, please wait..."),
    ENGLISH(ExitEnquiry, "Are you sure to exit?"),
};

#undef ENGLISH

struct Shared {
    const char* pcName;
    const char** ppcStr;
    const char** ppcOwner;
};

#define SHARED(x, owner) \
    { #x, pcStr##x, pcStr##owner }

const Shared kShared[] = {
    SHARED(HelpFileMonitList, HelpFileMonitFlag),
    SHARED(HelpProcessMonitList, HelpProcessMonitFlag),
    SHARED(HelpCpuCeil, HelpCpuMonitFlag),
    SHARED(HelpCpuFloor, HelpCpuMonitFlag),
    SHARED(HelpMemCeil, HelpMemMonitFlag),
    SHARED(HelpMemUse, HelpMemMonitFlag),
    SHARED(HelpMemFree, HelpMemMonitFlag),
    SHARED(HelpAnonUpload, HelpAnonEnable),
    SHARED(HelpAnonMkdir, HelpAnonEnable),
    SHARED(HelpAnonRootPath, HelpAnonEnable),
    SHARED(HelpLocalEnable, HelpAnonEnable),
    SHARED(HelpWrEnable, HelpAnonEnable),
    SHARED(HelpFtpStart, HelpAnonEnable),
    SHARED(HelpFtpDefault, HelpAnonEnable),
    SHARED(HelpSambaWRE, HelpSambaShareDir),
    SHARED(HelpSambaStart, HelpSambaShareDir),
    SHARED(HelpSambaDefault, HelpSambaShareDir),
};

#undef SHARED

const char* const kWelcomeEnglishHead =
    "Welcome to use server norvane for linux v1.0.\n\nIf you have any questions or suggetions, "
    "contact us:\n\n";
const char* const kContactLines[] = {"website : www.norvane.example", "bbs : bbs.norvane.example",
                                     "mail : support@norvane.example"};

std::string ToGb2312(const std::string& strUtf8) {
    iconv_t cd = iconv_open("GB2312", "UTF-8");
    EXPECT_NE(cd, reinterpret_cast<iconv_t>(-1));
    std::string strIn = strUtf8;
    std::vector<char> vOut(strIn.size() * 2 + 16);
    char* pcIn = &strIn[0];
    size_t ulInLeft = strIn.size();
    char* pcOut = vOut.data();
    size_t ulOutLeft = vOut.size();
    size_t ulRet = iconv(cd, &pcIn, &ulInLeft, &pcOut, &ulOutLeft);
    iconv_close(cd);
    if (ulRet == static_cast<size_t>(-1) || ulInLeft != 0)
        return "<no GB2312 form>";
    return std::string(vOut.data(), vOut.size() - ulOutLeft);
}

// Decodes UTF-8 strictly; false on any malformed, overlong or surrogate form.
bool DecodeUtf8(const char* pcText, std::vector<unsigned>* pvCodes) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(pcText);
    while (*p) {
        unsigned uCode;
        int iMore;
        if (*p < 0x80) {
            uCode = *p;
            iMore = 0;
        } else if ((*p & 0xE0) == 0xC0) {
            uCode = *p & 0x1F;
            iMore = 1;
        } else if ((*p & 0xF0) == 0xE0) {
            uCode = *p & 0x0F;
            iMore = 2;
        } else if ((*p & 0xF8) == 0xF0) {
            uCode = *p & 0x07;
            iMore = 3;
        } else {
            return false;
        }
        ++p;
        for (int i = 0; i < iMore; ++i, ++p) {
            if ((*p & 0xC0) != 0x80)
                return false;
            uCode = (uCode << 6) | (*p & 0x3F);
        }
        static const unsigned kMin[] = {0, 0x80, 0x800, 0x10000};
        if (uCode < kMin[iMore] || uCode > 0x10FFFF || (uCode >= 0xD800 && uCode <= 0xDFFF))
            return false;
        pvCodes->push_back(uCode);
    }
    return true;
}

// The number of pages the help pager breaks a text into, with its rules: a
// text area of iWidth bytes by iHeight lines, a new page where a line would
// fall below the area.
int HelpPages(const char* pcText, int iWidth, int iHeight) {
    int iPages = 1;
    int iLine = 0;
    int iColumn = 0;
    for (size_t i = 0; i <= strlen(pcText); ++i) {
        char ch = pcText[i];
        if (ch != '\n' && iColumn < iWidth) {
            ++iColumn;
            continue;
        }
        ++iLine;
        iColumn = 0;
        if (iLine >= iHeight) {
            ++iPages;
            iLine = 0;
        }
        if (ch != '\n')
            ++iColumn;
    }
    return iPages;
}

std::vector<std::string> SplitLines(const std::string& strText) {
    std::vector<std::string> vLines;
    size_t ulStart = 0;
    for (size_t ulEol; (ulEol = strText.find('\n', ulStart)) != std::string::npos;
         ulStart = ulEol + 1)
        vLines.push_back(strText.substr(ulStart, ulEol - ulStart));
    vLines.push_back(strText.substr(ulStart));
    return vLines;
}

class StringsTest : public ::testing::Test {
protected:
    void SetUp() override { InitComStr(); }
};

TEST_F(StringsTest, CatalogueHas167DistinctIdentifiers) {
    EXPECT_EQ(sizeof(kEntries) / sizeof(kEntries[0]), 167u);
    std::set<std::string> setNames;
    std::set<const char**> setArrays;
    for (const Entry& e : kEntries) {
        setNames.insert(e.pcName);
        setArrays.insert(e.ppcStr);
    }
    EXPECT_EQ(setNames.size(), 167u);
    EXPECT_EQ(setArrays.size(), 167u);
}

TEST_F(StringsTest, EveryIdentifierHasATextInEveryLanguage) {
    for (const Entry& e : kEntries) {
        for (int lan = 0; lan < LAN_MAX; ++lan) {
            ASSERT_NE(e.ppcStr[lan], nullptr) << e.pcName << " " << lan;
            EXPECT_GT(strlen(e.ppcStr[lan]), 0u) << e.pcName << " " << lan;
        }
    }
}

TEST_F(StringsTest, CombinedCatalogueHoldsTheLanguageCataloguesTexts) {
    for (const Entry& e : kEntries) {
        EXPECT_EQ(e.ppcStr[LAN_ENGLISH], *e.ppcEn) << e.pcName;
        EXPECT_EQ(e.ppcStr[LAN_CHINESE_GB2312], *e.ppcGB2312) << e.pcName;
        EXPECT_EQ(e.ppcStr[LAN_CHINESE_UTF8], *e.ppcUTF8) << e.pcName;
    }
}

TEST_F(StringsTest, InitialisingAgainChangesNothing) {
    std::vector<const char*> vBefore;
    for (const Entry& e : kEntries)
        vBefore.insert(vBefore.end(), e.ppcStr, e.ppcStr + LAN_MAX);
    InitComStr();
    size_t i = 0;
    for (const Entry& e : kEntries)
        for (int lan = 0; lan < LAN_MAX; ++lan)
            EXPECT_EQ(e.ppcStr[lan], vBefore[i++]) << e.pcName;
}

TEST_F(StringsTest, EnglishTextsAreExact) {
    EXPECT_EQ(sizeof(kEnglish) / sizeof(kEnglish[0]), 149u);
    for (const English& e : kEnglish)
        EXPECT_STREQ(e.ppcStr[LAN_ENGLISH], e.pcText) << e.pcName;
}

TEST_F(StringsTest, SharedHelpTextsAreTheVeryTextTheyShare) {
    EXPECT_EQ(sizeof(kShared) / sizeof(kShared[0]), 17u);
    for (const Shared& s : kShared) {
        for (int lan = 0; lan < LAN_MAX; ++lan) {
            ASSERT_NE(s.ppcOwner[lan], nullptr) << s.pcName;
            EXPECT_EQ(s.ppcStr[lan], s.ppcOwner[lan]) << s.pcName << " " << lan;
        }
    }
}

TEST_F(StringsTest, MemoryHelpTextsShareTheMemoryMonitorText) {
    for (int lan = 0; lan < LAN_MAX; ++lan) {
        EXPECT_EQ(pcStrHelpMemUse[lan], pcStrHelpMemMonitFlag[lan]);
        EXPECT_EQ(pcStrHelpMemFree[lan], pcStrHelpMemMonitFlag[lan]);
        EXPECT_EQ(pcStrHelpMemCeil[lan], pcStrHelpMemMonitFlag[lan]);
    }
    EXPECT_EQ(pcEn_HelpMemUse, pcEn_HelpMemMonitFlag);
    EXPECT_EQ(pcGB2312_HelpMemUse, pcGB2312_HelpMemMonitFlag);
    EXPECT_EQ(pcUTF8_HelpMemUse, pcUTF8_HelpMemMonitFlag);
}

TEST_F(StringsTest, PromptTableIndexesThePromptTexts) {
    const char** const kExpected[] = {pcStrPromptMenu,
                                      pcStrPromptContent,
                                      pcStrPromptContentNoModify,
                                      pcStrPromptContentList,
                                      pcStrPromptContentNewLevel,
                                      pcStrPromptInput,
                                      pcStrPromptChoose,
                                      pcStrPromptList,
                                      pcStrPromptShortcutKeyToggle,
                                      pcStrPromptShortcutKeyPolicy,
                                      pcStrPromptHelp,
                                      pcStrPromptNetInferface,
                                      pcStrPromptSysStateConfig};
    static_assert(PROMPT_MAX == 13, "13 prompts");
    static_assert(sizeof(kExpected) / sizeof(kExpected[0]) == PROMPT_MAX, "one per prompt");
    for (int id = 0; id < PROMPT_MAX; ++id)
        EXPECT_EQ(pcStrPrompt[id], kExpected[id]) << id;
    EXPECT_STREQ(pcStrPrompt[PROMPT_MENU][LAN_ENGLISH],
                 "[up/down arrow]Select item [left/right arrow]Select menu [Enter]Confirm "
                 "[Esc]exit");
    EXPECT_STREQ(pcStrPrompt[PROMPT_HELP][LAN_ENGLISH],
                 "[PageUp/PageDown]Select Page  [Esc]Return");
    EXPECT_STREQ(pcStrPrompt[PROMPT_SYS_STATE_CONFIG][LAN_ENGLISH],
                 "[Esc]Return [F12]Help [F2]Modify Host Name [F3]Modify Password [F4]Modify "
                 "System Date [F5]Modify System Time");
}

TEST_F(StringsTest, PromptIdsHaveTheirValues) {
    EXPECT_EQ(PROMPT_MENU, 0);
    EXPECT_EQ(PROMPT_CONTENT, 1);
    EXPECT_EQ(PROMPT_CONTENT_NO_MODIFY, 2);
    EXPECT_EQ(PROMPT_CONTENT_LIST, 3);
    EXPECT_EQ(PROMPT_CONTENT_NEW_LEVEL, 4);
    EXPECT_EQ(PROMPT_INPUT, 5);
    EXPECT_EQ(PROMPT_CHOOSE, 6);
    EXPECT_EQ(PROMPT_LIST, 7);
    EXPECT_EQ(PROMPT_SCKEY_TOGGLE, 8);
    EXPECT_EQ(PROMPT_SCKEY_POLICY, 9);
    EXPECT_EQ(PROMPT_HELP, 10);
    EXPECT_EQ(PROMPT_NET_INTERFACE, 11);
    EXPECT_EQ(PROMPT_SYS_STATE_CONFIG, 12);
    EXPECT_EQ(PROMPT_MAX, 13);
}

TEST_F(StringsTest, HelpTableIndexesTheHelpTexts) {
    struct {
        int iId;
        const char** ppcStr;
    } const kExpected[] = {
        {EN_ICMP_IGNORE, pcStrHelpIcmpIgnore},
        {EN_TCP_SYNCOOKIE, pcStrHelpTcpSynCookies},
        {EN_TCP_TIME_WAIT_REUSE, pcStrHelpTcpWaitTimeReuse},
        {EN_SHMMAX, pcStrHelpShmax},
        {EN_SHMALL, pcStrHelpShAll},
        {EN_SHMMNI, pcStrHelpShmmni},
        {EN_THREAD_MAX, pcStrHelpThreadMax},
        {EN_FILE_MAX, pcStrHelpFileMax},
        {EN_FILE_MF, pcStrHelpFileMonitFlag},
        {EN_FILE_ML, pcStrHelpFileMonitList},
        {EN_PROC_MF, pcStrHelpProcessMonitFlag},
        {EN_PROC_ML, pcStrHelpProcessMonitList},
        {EN_CPU_MF, pcStrHelpCpuMonitFlag},
        {EN_CPU_CEIL, pcStrHelpCpuCeil},
        {EN_CPU_FLOOR, pcStrHelpCpuFloor},
        {EN_MEMORY_MF, pcStrHelpMemMonitFlag},
        {EN_MEMORY_CEIL, pcStrHelpMemCeil},
        {EN_DV_MONIT, pcStrHelpDvMonit},
        {EN_BAK_FILE, pcStrHelpBakFile},
        {EN_TCP_PORT_LISTEN, pcStrHelpTcpListenPort},
        {EN_MEM_USE, pcStrHelpMemUse},
        {EN_MEM_FREE, pcStrHelpMemFree},
        {EN_IPTABLE_INPUT, pcStrHelpInput},
        {EN_IPTABLE_OUTPUT, pcStrHelpOutput},
        {EN_ANON_ENABLE, pcStrHelpAnonEnable},
        {EN_ANON_UPLOAD, pcStrHelpAnonUpload},
        {EN_ANON_MKDIR, pcStrHelpAnonMkdir},
        {EN_ANON_ROOTPATH, pcStrHelpAnonRootPath},
        {EN_LOCAL_ENABLE, pcStrHelpLocalEnable},
        {EN_WRITE_ENABLE, pcStrHelpWrEnable},
        {EN_FTP_START, pcStrHelpFtpStart},
        {EN_FTP_DEFAULT, pcStrHelpFtpDefault},
        {EN_SAMBA_SHARE_DIR, pcStrHelpSambaShareDir},
        {EM_SAMBA_WRE, pcStrHelpSambaWRE},
        {EM_SAMBA_START, pcStrHelpSambaStart},
        {EM_SAMBA_DEFAULT, pcStrHelpSambaDefault},
        {EM_NETINTERFACE, pcStrHelpNetInterface},
        {EN_SYS_STATE_CONF, pcStrHelpSysStateConfig},
    };
    static_assert(EN_HELP_MAX == 38, "38 help texts");
    static_assert(sizeof(kExpected) / sizeof(kExpected[0]) == EN_HELP_MAX, "one per help id");
    for (int i = 0; i < EN_HELP_MAX; ++i) {
        EXPECT_EQ(kExpected[i].iId, i);
        EXPECT_EQ(pcStrHelp[i], kExpected[i].ppcStr) << i;
    }
    EXPECT_STREQ(pcStrHelp[EN_SYS_STATE_CONF][LAN_ENGLISH], pcStrHelpSysStateConfig[LAN_ENGLISH]);
    EXPECT_EQ(pcStrHelp[EN_MEM_FREE][LAN_CHINESE_UTF8], pcStrHelp[EN_MEMORY_MF][LAN_CHINESE_UTF8]);
}

TEST_F(StringsTest, ConstantArraysHoldTheirFixedTexts) {
    EXPECT_STREQ(pcStrMainMenu[LAN_ENGLISH], "main menu");
    EXPECT_EQ(std::string(pcStrMainMenu[LAN_CHINESE_GB2312]), ToGb2312("主菜单 "));
    EXPECT_EQ(pcStrMainMenu[LAN_CHINESE_UTF8], nullptr);
    for (int lan = 0; lan < LAN_MAX; ++lan) {
        EXPECT_STREQ(pcStrDefaultIP[lan], "###.###.###.###");
        EXPECT_STREQ(pcStrDefaultPort[lan], "####");
        EXPECT_STREQ(pcStrNullInfo[lan], "    ");
    }
}

TEST_F(StringsTest, Gb2312CatalogueIsTheUtf8CatalogueReEncoded) {
    for (const Entry& e : kEntries) {
        EXPECT_EQ(std::string(e.ppcStr[LAN_CHINESE_GB2312]), ToGb2312(e.ppcStr[LAN_CHINESE_UTF8]))
            << e.pcName;
    }
}

TEST_F(StringsTest, Utf8CatalogueIsValidUtf8AndChinese) {
    for (const Entry& e : kEntries) {
        std::vector<unsigned> vCodes;
        ASSERT_TRUE(DecodeUtf8(e.ppcStr[LAN_CHINESE_UTF8], &vCodes)) << e.pcName;
        bool bHanzi = false;
        for (unsigned uCode : vCodes)
            bHanzi = bHanzi || (uCode >= 0x4E00 && uCode <= 0x9FFF);
        EXPECT_TRUE(bHanzi) << e.pcName;
    }
}

TEST_F(StringsTest, ChineseSamplesAreExact) {
    EXPECT_STREQ(pcStrExitEnquiry[LAN_CHINESE_UTF8], "是否确认退出?");
    EXPECT_STREQ(pcStrPromptInput[LAN_CHINESE_UTF8], "[Esc]取消 [Enter]确认 ");
    EXPECT_STREQ(pcStrSwName[LAN_CHINESE_UTF8], "服务器诺文linux ");
    EXPECT_STREQ(pcStrOpen[LAN_CHINESE_UTF8], "[打开]");
    EXPECT_STREQ(pcStrConnectError[LAN_CHINESE_UTF8], "错误:连接失败!");
    EXPECT_EQ(std::string(pcStrExitEnquiry[LAN_CHINESE_GB2312]), ToGb2312("是否确认退出?"));
    EXPECT_STREQ(pcStrOpen[LAN_CHINESE_GB2312], "[\xb4\xf2\xbf\xaa]");
    EXPECT_STREQ(pcStrConnectError[LAN_CHINESE_GB2312],
                 "\xb4\xed\xce\xf3:\xc1\xac\xbd\xd3\xca\xa7\xb0\xdc!");
}

TEST_F(StringsTest, EnglishWelcomeHasEmptyLinesBetweenTheContactLines) {
    std::string strWelcome = pcStrWelcomeInfo[LAN_ENGLISH];
    std::string strHead = kWelcomeEnglishHead;
    ASSERT_EQ(strWelcome.compare(0, strHead.size(), strHead), 0) << strWelcome;
    std::string strContacts =
        std::string(kContactLines[0]) + "\n\n" + kContactLines[1] + "\n\n" + kContactLines[2];
    EXPECT_EQ(strWelcome.substr(strHead.size()), strContacts);
    EXPECT_NE(strWelcome.back(), '\n');
}

TEST_F(StringsTest, ChineseWelcomeHasTheContactLinesTogetherAndAFinalLineBreak) {
    for (int lan : {LAN_CHINESE_GB2312, LAN_CHINESE_UTF8}) {
        std::string strWelcome = pcStrWelcomeInfo[lan];
        std::string strHead = "欢迎使用服务器诺文linux 1.0版。";
        if (lan == LAN_CHINESE_GB2312)
            strHead = ToGb2312(strHead);
        EXPECT_EQ(strWelcome.compare(0, strHead.size(), strHead), 0) << lan;
        ASSERT_FALSE(strWelcome.empty());
        EXPECT_EQ(strWelcome.back(), '\n') << lan;
        EXPECT_EQ(strWelcome.find("\n\n"), std::string::npos) << lan;
        std::vector<std::string> vLines = SplitLines(strWelcome);
        ASSERT_GE(vLines.size(), 5u);
        EXPECT_EQ(vLines.back(), "");
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(vLines[vLines.size() - 4 + i], kContactLines[i]) << lan;
    }
}

TEST_F(StringsTest, ChoiceWordsAreDistinctAndFreeOfTheFormSeparator) {
    const char** const kChoices[] = {pcStrOpen,        pcStrClose,   pcStrYes,    pcStrNo,
                                     pcStrHighest,     pcStrLowest,  pcStrTcp,    pcStrUdp,
                                     pcStrAccept,      pcStrDrop,    pcStrReject, pcStrDefaultIP,
                                     pcStrDefaultPort, pcStrNullInfo};
    for (int lan = 0; lan < LAN_MAX; ++lan) {
        std::set<std::string> setWords;
        for (const char** ppc : kChoices)
            setWords.insert(ppc[lan]);
        EXPECT_EQ(setWords.size(), sizeof(kChoices) / sizeof(kChoices[0])) << lan;
        // A clear confirmation looks for the yes word anywhere in the answer.
        EXPECT_EQ(strstr(pcStrNo[lan], pcStrYes[lan]), nullptr) << lan;
        EXPECT_EQ(strstr(pcStrYes[lan], pcStrNo[lan]), nullptr) << lan;
    }
    // Form fields are joined with '*'.
    for (const Entry& e : kEntries)
        for (int lan = 0; lan < LAN_MAX; ++lan)
            EXPECT_EQ(strchr(e.ppcStr[lan], '*'), nullptr) << e.pcName << " " << lan;
}

TEST_F(StringsTest, MenuLabelsFitThePathRow) {
    const char** const kMenuLabels[] = {
        pcStrSysConfig,   pcStrNetInterface, pcStrSysStateConfig, pcStrSysOptimize,
        pcStrNetOptimize, pcStrResOptimize,  pcStrSysMonit,       pcStrFileMonit,
        pcStrProcMonit,   pcStrCpuMonit,     pcStrMemoryMonit,    pcStrDiskMonit,
        pcStrBakMonit,    pcStrTcpPortState, pcStrAppConfig,      pcStrIpTable,
        pcStrInput,       pcStrOutput,       pcStrVsftpd,         pcStrSamba};
    for (const char** ppc : kMenuLabels)
        for (int lan = 0; lan < LAN_MAX; ++lan)
            EXPECT_LE(strlen(ppc[lan]), 20u) << ppc[LAN_ENGLISH] << " " << lan;
}

TEST_F(StringsTest, HelpTextsFitTwentyPagesOnAnEightyByTwentyFourTerminal) {
    // The pager's text area on 80 columns by 24 lines: 78 bytes by 16 lines.
    for (int id = 0; id < EN_HELP_MAX; ++id)
        for (int lan = 0; lan < LAN_MAX; ++lan)
            EXPECT_LE(HelpPages(pcStrHelp[id][lan], 78, 16), 20) << id << " " << lan;
}

TEST_F(StringsTest, HelpPageCountFollowsThePagerRules) {
    EXPECT_EQ(HelpPages("", 78, 16), 1);
    EXPECT_EQ(HelpPages(std::string(15, '\n').c_str(), 78, 16), 1);
    EXPECT_EQ(HelpPages(std::string(16, '\n').c_str(), 78, 16), 2);
    EXPECT_EQ(HelpPages(std::string(100, 'a').c_str(), 78, 1), 2);
}

}  // namespace
