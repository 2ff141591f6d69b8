// The Chinese catalogue in UTF-8: one text pointer pcUTF8_Xxx per text identifier.
#include "strings/utf8_str.h"

const char* pcUTF8_SysConfig = "系统配置";
const char* pcUTF8_SysOptimize = "系统优化";
const char* pcUTF8_NetOptimize = "网络";
const char* pcUTF8_PingConfig = "忽略ICMP回显请求:";
const char* pcUTF8_TcpSynConfig = "TCP SYN Cookie保护:";
const char* pcUTF8_TcpWaitTimeReuse = "重用TIME_WAIT连接:";
const char* pcUTF8_Ip = "IP地址:";
const char* pcUTF8_Mask = "子网掩码:";
const char* pcUTF8_Dns = "DNS服务器:";
const char* pcUTF8_GateWay = "网关:";
const char* pcUTF8_DNS1 = "首选DNS:";
const char* pcUTF8_DNS2 = "备用DNS:";
const char* pcUTF8_ResOptimize = "资源";
const char* pcUTF8_SysStateConfig = "系统状态";
const char* pcUTF8_HostName = "主机名:";
const char* pcUTF8_SysDate = "系统日期:";
const char* pcUTF8_SysTime = "系统时间:";
const char* pcUTF8_UserName = "用户名:";
const char* pcUTF8_NewPassword = "新密码:";
const char* pcUTF8_PwConfirm = "确认新密码:";
const char* pcUTF8_Year = "年:";
const char* pcUTF8_Month = "月:";
const char* pcUTF8_Day = "日:";
const char* pcUTF8_Hour = "时:";
const char* pcUTF8_Minite = "分:";
const char* pcUTF8_Second = "秒:";
const char* pcUTF8_Shmmax = "共享内存最大值:";
const char* pcUTF8_Shmall = "共享内存总量:";
const char* pcUTF8_Shmmni = "共享内存段数上限:";
const char* pcUTF8_ThreadMax = "最大线程数:";
const char* pcUTF8_FileMax = "最大文件句柄数:";
const char* pcUTF8_SysMonit = "系统监控";
const char* pcUTF8_FileMonit = "文件";
const char* pcUTF8_FileList = "文件列表:";
const char* pcUTF8_ScanList = "[查看列表]";
const char* pcUTF8_MonitToggle = "监控开关:";
const char* pcUTF8_ProcMonit = "进程";
const char* pcUTF8_ProcList = "进程列表:";
const char* pcUTF8_CpuMonit = "CPU使用率";
const char* pcUTF8_CpuCeil = "CPU上限:";
const char* pcUTF8_CpuFloor = "CPU下限:";
const char* pcUTF8_MemoryMonit = "内存使用";
const char* pcUTF8_MemUseCeil = "内存使用上限:";
const char* pcUTF8_DiskMonit = "磁盘空间";
const char* pcUTF8_DiskMonitList = "磁盘空间监控列表:";
const char* pcUTF8_Partition = "分区";
const char* pcUTF8_Ceil = "上限(MB)";
const char* pcUTF8_Floor = "下限(MB)";
const char* pcUTF8_Interval = "间隔(MB)";
const char* pcUTF8_BakMonit = "文件备份";
const char* pcUTF8_BakMonitList = "备份监控列表:";
const char* pcUTF8_File = "文件";
const char* pcUTF8_BakDir = "备份目录";
const char* pcUTF8_BakSize = "备份大小(KB)";
const char* pcUTF8_SysState = "系统状态";
const char* pcUTF8_TcpPortState = "TCP监听端口";
const char* pcUTF8_LocalIp = "本地IP";
const char* pcUTF8_LocalPort = "本地端口";
const char* pcUTF8_Pid = "进程号";
const char* pcUTF8_ProgName = "程序名";
const char* pcUTF8_MemoryState = "内存状态";
const char* pcUTF8_MemoryUse = "已用内存:";
const char* pcUTF8_MemoryFree = "空闲内存:";
const char* pcUTF8_AppConfig = "应用配置";
const char* pcUTF8_IpTable = "防火墙";
const char* pcUTF8_Input = "输入链";
const char* pcUTF8_Output = "输出链";
const char* pcUTF8_Vsftpd = "FTP服务";
const char* pcUTF8_Samba = "Samba共享";
const char* pcUTF8_NetInterface = "网络接口";
const char* pcUTF8_PromptMenu = "[上/下方向键]选择项目 [左/右方向键]选择菜单 [Enter]确认 [Esc]退出";
const char* pcUTF8_PromptContent = "[上/下方向键]选择项目 [F12]帮助 [Enter]修改 [Esc]返回菜单";
const char* pcUTF8_PromptContentNoModify = "[上/下方向键]选择项目 [F12]帮助 [Esc]返回菜单";
const char* pcUTF8_PromptContentList =
    "[上/下方向键]选择项目 [F12]帮助 [Enter]进入列表 [Esc]返回菜单";
const char* pcUTF8_PromptContentNewLevel =
    "[上/下方向键]选择项目 [F12]帮助 [Enter]修改 [Esc]取消并返回 [F9]保存并返回";
const char* pcUTF8_PromptInput = "[Esc]取消 [Enter]确认 ";
const char* pcUTF8_PromptChoose = "[上/下方向键]选择项目 [Esc]取消 [Enter]确认";
const char* pcUTF8_PromptList = "[上/下方向键]选择项目  [Esc]返回 [F2]添加 [F3]删除 [F9]确认";
const char* pcUTF8_PromptShortcutKeyToggle =
    "[Esc]返回菜单 [F12]帮助 [F2]添加 [F3]删除 [F4]清空 [F5]打开或关闭开关";
const char* pcUTF8_PromptShortcutKeyPolicy =
    "[Esc]返回菜单 [F12]帮助 [F2]添加 [F3]删除 [F4]清空 [F5]修改策略";
const char* pcUTF8_PromptHelp = "[PageUp/PageDown]翻页  [Esc]返回";
const char* pcUTF8_PromptNetInferface =
    "[Esc]返回 [F12]帮助 [F2]停用接口 [F3]启用接口 [F4]自动获取IP [F5]手动设置IP";
const char* pcUTF8_PromptSysStateConfig =
    "[Esc]返回 [F12]帮助 [F2]修改主机名 [F3]修改密码 [F4]修改系统日期 [F5]修改系统时间";
const char* pcUTF8_Open = "[打开]";
const char* pcUTF8_Close = "[关闭]";
const char* pcUTF8_Yes = "[是]";
const char* pcUTF8_No = "[否]";
const char* pcUTF8_AnonymEnable = "允许匿名登录:";
const char* pcUTF8_AnonymUpload = "允许匿名上传:";
const char* pcUTF8_AnonymMkdir = "允许匿名创建目录:";
const char* pcUTF8_AnonymRootPath = "匿名用户根目录:";
const char* pcUTF8_LocalUsrEnable = "允许本地用户登录:";
const char* pcUTF8_WriteEnable = "允许写入:";
const char* pcUTF8_FtpStart = "启动FTP:";
const char* pcUTF8_FtpDefault = "FTP恢复默认设置:";
const char* pcUTF8_ShDirPath = "共享目录路径:";
const char* pcUTF8_ShWrEn = "共享目录可写:";
const char* pcUTF8_SambaStart = "启动Samba:";
const char* pcUTF8_SambaDefault = "Samba恢复默认设置:";
const char* pcUTF8_Priority = "优先级:";
const char* pcUTF8_Protocol = "协议:";
const char* pcUTF8_SrcIp = "源IP:";
const char* pcUTF8_SrcPort = "源端口:";
const char* pcUTF8_DesIp = "目的IP:";
const char* pcUTF8_DesPort = "目的端口:";
const char* pcUTF8_Action = "动作:";
const char* pcUTF8_Highest = "[最高]";
const char* pcUTF8_Lowest = "[最低]";
const char* pcUTF8_Tcp = "[TCP协议]";
const char* pcUTF8_Udp = "[UDP协议]";
const char* pcUTF8_Accept = "[接受]";
const char* pcUTF8_Drop = "[丢弃]";
const char* pcUTF8_Reject = "[拒绝]";
const char* pcUTF8_IfName = "接口名称:";
const char* pcUTF8_IfNameReminder = "(例如 eth0)";
const char* pcUTF8_IpReminder = "(例如 192.168.1.2)";
const char* pcUTF8_MaskReminder = "(输入0表示默认值)";
const char* pcUTF8_GatewayReminder = "(输入0表示不设网关)";
const char* pcUTF8_DelInfo = "请输入要删除的序号:";
const char* pcUTF8_DvClearInfo = "是否确认清空磁盘空间监控列表?";
const char* pcUTF8_BackupClearInfo = "是否确认清空备份监控列表?";
const char* pcUTF8_InputClearInfo = "是否确认清空输入链?";
const char* pcUTF8_OutputClearInfo = "是否确认清空输出链?";
const char* pcUTF8_ModifyPolicy = "请选择要修改的策略:";
const char* pcUTF8_HelpIcmpIgnore =
    "[名称] 忽略所有ICMP回显请求。\n"
    "[说明] 如果“打开”此选项，本机将忽略所有ping请求包，也就是说，任何主机都无法ping通本机。";
const char* pcUTF8_HelpTcpSynCookies =
    "[名称] TCP SYN Cookie。\n"
    "[说明] 如果“打开”此选项，可以部分防御SYN洪水攻击。";
const char* pcUTF8_HelpTcpWaitTimeReuse =
    "[名称] TCP等待时间重用。\n"
    "[说明] 如果“打开”此选项，允许绑定当前处于TIME_WAIT状态的TCP端口。";
const char* pcUTF8_HelpShmax =
    "[名称]\tSHMMAX \n"
    "[说明] 单个共享内存段允许的最大字节数。\n"
    "       此值应设置得足够大。";
const char* pcUTF8_HelpShAll =
    "[名称]\tSHMALL\n"
    "[说明] 共享内存的最大页数。\n"
    "       此值应设置得足够大。\n"
    "       此值的单位是“页”，页的大小请参考命令\n"
    "       PAGESIZE。";
const char* pcUTF8_HelpShmmni =
    "[名称]\tSHMMNI\n"
    "[说明] 共享内存段的最大数目。\n"
    "       此值应设置得足够大。";
const char* pcUTF8_HelpThreadMax =
    "[名称]\t最大线程数。\n"
    "[说明] 系统的最大线程数。\n"
    "       此值应设置得足够大。\n"
    "       系统的进程数小于或等于此值。\n"
    "       此值必须大于512。";
const char* pcUTF8_HelpFileMax =
    "[名称]\t最大文件句柄数。\n"
    "[说明] 系统可以分配的最大文件句柄数。\n"
    "       此值应设置得足够大。\n"
    "       此值必须大于4096。";
const char* pcUTF8_HelpFileMonitFlag =
    "[名称]\t文件监控开关。\n"
    "[说明] 如果“打开”此选项，将监控监控列表中的文件和目录。\n"
    "这些文件被创建、修改或删除时，监控报告保存在:/etc/norvane/monit/filemonit.txt。\n"
    "如果监控列表为空，此选项将自动设为“关闭”。\n"
    "\n"
    "[名称]\t文件监控列表。\n"
    "[说明]\t此列表显示所有被监控的文件和目录。\n"
    "可以用F2(添加)和F3(删除)修改列表。\n"
    "每行只能添加一个文件。\n"
    "添加的文件即使现在不存在也会被接受，它被创建后即开始受到监控。\n"
    "如果添加的是目录，程序将监控该目录下的文件和子目录，但不监控子目录中的文件。";
const char* pcUTF8_HelpFileMonitList = nullptr;
const char* pcUTF8_HelpProcessMonitFlag =
    "[名称]\t进程监控开关。\n"
    "[说明] 如果“打开”此选项，将监控监控列表中的进程。\n"
    "监控报告保存在:/etc/norvane/monit/processmonit.txt。\n"
    "如果监控列表为空，此选项将自动设为“关闭”。\n"
    "\n"
    "[名称]\t进程监控列表。\n"
    "[说明]\t此列表显示所有被监控的进程。\n"
    "可以用F2(添加)和F3(删除)修改列表。\n"
    "每行只能添加一个进程。\n"
    "此功能仅用于监控守护进程。\n"
    "进程名必须是绝对路径或位于$PATH中，并且需要带上启动所需的参数。\n"
    "例如:\n"
    "sleep 5\n"
    "/usr/bin/httpdserver -f /www/httpdconf";
const char* pcUTF8_HelpProcessMonitList = nullptr;
const char* pcUTF8_HelpCpuMonitFlag =
    "[名称]\tCPU监控开关。\n"
    "[说明] 如果选择“打开”，程序将监控CPU。\n"
    "当CPU使用率高于CPU上限或低于CPU下限时，程序将把告警信息保存在/etc/norvane/monit/"
    "cpumonit.txt中。\n"
    "\n"
    "[名称]\tCPU上限\n"
    "[说明] CPU使用率的最大值。\n"
    "实际使用率超过此值时，程序将在日志文件中给出告警。\n"
    "\n"
    "[名称]\tCPU下限\n"
    "[说明] CPU使用率的最小值。\n"
    "实际使用率低于此值时，程序将在日志文件中给出告警。";
const char* pcUTF8_HelpCpuCeil = nullptr;
const char* pcUTF8_HelpCpuFloor = nullptr;
const char* pcUTF8_HelpMemMonitFlag =
    "[名称]\t内存监控开关。\n"
    "[说明] 如果选择“打开”，程序将监控内存。\n"
    "当内存使用率高于内存使用上限时，程序将把告警信息保存在/etc/norvane/monit/memorymonit.txt中。\n"
    "\n"
    "[名称]\t内存使用上限。\n"
    "[说明] 内存使用率的最大值。\n"
    "实际使用率超过此值时，程序将在日志文件中给出告警。\n"
    "\n"
    "[名称] 已用内存。\n"
    "[说明] 已使用的内存大小，单位为MB。\n"
    "\n"
    "[名称] 空闲内存。\n"
    "[说明] 空闲的内存大小，单位为MB。";
const char* pcUTF8_HelpMemCeil = nullptr;
const char* pcUTF8_HelpDvMonit =
    "[名称]\t磁盘空间监控。\n"
    "[说明] 监控信息保存在:\n"
    "/etc/norvane/monit/diskvolumemonit.txt\n"
    "(1)序号:磁盘空间监控项的序号。\n"
    "(2)分区:磁盘分区。\n"
    "(3)上限:最大值。分区的用量大于此值时，相应信息将保存到diskvolumemonit.txt中。\n"
    "(4)下限:最小值。分区的用量小于此值时，相应信息将保存到diskvolumemonit.txt中。\n"
    "(5)间隔:变化量。分区的用量每增加或减少一个“间隔”，相应信息将保存到diskvolumemonit.txt中。";
const char* pcUTF8_HelpBakFile =
    "[名称]\t文件备份监控。\n"
    "[说明] \n"
    "(1)文件路径:被监控的文件。\n"
    "(2)备份目录:存放备份文件的目录。\n"
    "(3)备份大小:文件大小的上限。文件大小超过此值时，程序将备份该文件并清空它。\n"
    "   此功能可用于防止数据文件或日志文件过大而导致性能下降甚至系统崩溃。";
const char* pcUTF8_HelpTcpListenPort =
    "[名称]\tTCP监听端口。\n"
    "[说明] 当前正在监听的程序。\n"
    "如果防火墙没有防护，这些端口可能成为攻击的入口。\n"
    "对于正常的服务，请确保其端口受到监控，并且数据包能够通过防火墙。";
const char* pcUTF8_HelpMemUse = nullptr;
const char* pcUTF8_HelpMemFree = nullptr;
const char* pcUTF8_HelpInput =
    "[名称] 输入链。\n"
    "[说明] \n"
    "(1)用F2添加规则:\n"
    "  优先级:此规则在输入链中的优先级。\n"
    "  IP或端口留空表示任意IP或端口。\n"
    "  动作:对匹配此规则的数据包的处理方式。\n"
    "(2)用F3删除规则:输入要删除的规则的序号。\n"
    "(3)用F4清空所有规则。\n"
    "(4)用F5修改策略:\n"
    "  “策略”指对不匹配输入链中任何规则的数据包的处理方式。\n"
    "  警告:请谨慎修改此设置。";
const char* pcUTF8_HelpOutput =
    "[名称] 输出链。\n"
    "[说明] \n"
    "(1)用F2添加规则:\n"
    "  优先级:此规则在输出链中的优先级。\n"
    "  IP或端口留空表示任意IP或端口。\n"
    "  动作:对匹配此规则的数据包的处理方式。\n"
    "(2)用F3删除规则:输入要删除的规则的序号。\n"
    "(3)用F4清空所有规则。\n"
    "(4)用F5修改策略:\n"
    "  “策略”指对不匹配输出链中任何规则的数据包的处理方式。\n"
    "  警告:请谨慎修改此设置。";
const char* pcUTF8_HelpAnonEnable =
    "[名称] 允许匿名登录:是否允许匿名用户访问FTP服务器。\n"
    "[名称] 允许匿名上传:是否允许匿名用户上传文件。\n"
    "[名称] 允许匿名创建目录:是否允许匿名用户创建目录。\n"
    "[名称] 匿名用户根目录:匿名用户的根目录路径。\n"
    "[名称] 允许本地用户登录:是否允许本地用户(root用户除外)访问FTP服务器。\n"
    "[名称] 允许写入:是否允许用户写文件。\n"
    "[名称] 启动FTP:选择“是”启动FTP服务，选择“否”关闭FTP服务。\n"
    "[名称] FTP恢复默认设置:使用此功能之前必须先选择“是”进行初始化。\n"
    "       注意:设为“是”后，原有的配置将会丢失。";
const char* pcUTF8_HelpAnonUpload = nullptr;
const char* pcUTF8_HelpAnonMkdir = nullptr;
const char* pcUTF8_HelpAnonRootPath = nullptr;
const char* pcUTF8_HelpLocalEnable = nullptr;
const char* pcUTF8_HelpWrEnable = nullptr;
const char* pcUTF8_HelpFtpStart = nullptr;
const char* pcUTF8_HelpFtpDefault = nullptr;
const char* pcUTF8_HelpSambaShareDir =
    "[名称] Samba共享目录:Samba共享目录的路径。\n"
    "[名称] 共享目录可写:是否允许匿名用户在共享目录中写文件。\n"
    "[名称] 启动Samba:选择“是”启动Samba服务，选择“否”关闭Samba服务。\n"
    "[名称] Samba恢复默认设置:使用此功能之前必须先选择“是”进行初始化。\n"
    "       注意:设为“是”后，原有的配置将会丢失。";
const char* pcUTF8_HelpSambaWRE = nullptr;
const char* pcUTF8_HelpSambaStart = nullptr;
const char* pcUTF8_HelpSambaDefault = nullptr;
const char* pcUTF8_HelpNetInterface =
    "[名称] 网络接口。\n"
    "[说明] "
    "每行依次显示:序号、网络接口、MAC地址、IP设置方式(动态/静态)、活动状态(启用/"
    "停用)、IP地址、子网掩码。\n"
    "\n"
    "快捷键:\n"
    "(1)F2:停用接口:输入要关闭的网络接口名称。\n"
    "(2)F3:启用接口:输入要打开的网络接口名称。\n"
    "启用接口可能需要一些时间，请耐心等待。\n"
    "(3)F4:自动获取IP:使网络接口自动获取IP地址。\n"
    "设置立即生效，重启后不会丢失。\n"
    "(4)F5:手动设置IP:输入要设置的网络接口及其参数。\n"
    "网络接口名称、IP地址和子网掩码为必填项，其余为可选项。\n"
    "设置立即生效，重启后不会丢失。";
const char* pcUTF8_HelpSysStateConfig =
    "[名称]系统状态配置。\n"
    "[说明]此菜单用于显示或修改主机名、密码、系统日期和时间等系统信息。请注意以下几点:\n"
    "(1)主机名最长32字节，并且不能输入<空格>。\n"
    "(2)用户名和密码最长也是32字节，不能输入<空格>和'-'(不含引号)。";
const char* pcUTF8_ConnectError = "错误:连接失败!";
const char* pcUTF8_WelcomeInfo =
    "欢迎使用服务器诺文linux 1.0版。\n"
    "如果您有任何问题或建议，请与我们联系：\n"
    "website : www.norvane.example\n"
    "bbs : bbs.norvane.example\n"
    "mail : support@norvane.example\n";
const char* pcUTF8_SwName = "服务器诺文linux ";
const char* pcUTF8_Wait = "正在执行命令,请稍候...";
const char* pcUTF8_ExitEnquiry = "是否确认退出?";

void InitUTF8Str() {
    pcUTF8_HelpFileMonitList = pcUTF8_HelpFileMonitFlag;
    pcUTF8_HelpProcessMonitList = pcUTF8_HelpProcessMonitFlag;
    pcUTF8_HelpCpuCeil = pcUTF8_HelpCpuMonitFlag;
    pcUTF8_HelpCpuFloor = pcUTF8_HelpCpuMonitFlag;
    pcUTF8_HelpMemCeil = pcUTF8_HelpMemMonitFlag;
    pcUTF8_HelpMemUse = pcUTF8_HelpMemMonitFlag;
    pcUTF8_HelpMemFree = pcUTF8_HelpMemMonitFlag;
    pcUTF8_HelpAnonUpload = pcUTF8_HelpAnonEnable;
    pcUTF8_HelpAnonMkdir = pcUTF8_HelpAnonEnable;
    pcUTF8_HelpAnonRootPath = pcUTF8_HelpAnonEnable;
    pcUTF8_HelpLocalEnable = pcUTF8_HelpAnonEnable;
    pcUTF8_HelpWrEnable = pcUTF8_HelpAnonEnable;
    pcUTF8_HelpFtpStart = pcUTF8_HelpAnonEnable;
    pcUTF8_HelpFtpDefault = pcUTF8_HelpAnonEnable;
    pcUTF8_HelpSambaWRE = pcUTF8_HelpSambaShareDir;
    pcUTF8_HelpSambaStart = pcUTF8_HelpSambaShareDir;
    pcUTF8_HelpSambaDefault = pcUTF8_HelpSambaShareDir;
}
