// The help identifiers: one per help text of the help pager. The text of help
// id is pcStrHelp[id][iLanIdx] (com_str.h). The EM_ names among the EN_ ones
// are the established names and are kept.
#ifndef NV_STRINGS_HELP_ID_H
#define NV_STRINGS_HELP_ID_H

enum EN_HELP_INFO {
    EN_ICMP_IGNORE = 0,
    EN_TCP_SYNCOOKIE = 1,
    EN_TCP_TIME_WAIT_REUSE = 2,
    EN_SHMMAX = 3,
    EN_SHMALL = 4,
    EN_SHMMNI = 5,
    EN_THREAD_MAX = 6,
    EN_FILE_MAX = 7,
    EN_FILE_MF = 8,
    EN_FILE_ML = 9,
    EN_PROC_MF = 10,
    EN_PROC_ML = 11,
    EN_CPU_MF = 12,
    EN_CPU_CEIL = 13,
    EN_CPU_FLOOR = 14,
    EN_MEMORY_MF = 15,
    EN_MEMORY_CEIL = 16,
    EN_DV_MONIT = 17,
    EN_BAK_FILE = 18,
    EN_TCP_PORT_LISTEN = 19,
    EN_MEM_USE = 20,
    EN_MEM_FREE = 21,
    EN_IPTABLE_INPUT = 22,
    EN_IPTABLE_OUTPUT = 23,
    EN_ANON_ENABLE = 24,
    EN_ANON_UPLOAD = 25,
    EN_ANON_MKDIR = 26,
    EN_ANON_ROOTPATH = 27,
    EN_LOCAL_ENABLE = 28,
    EN_WRITE_ENABLE = 29,
    EN_FTP_START = 30,
    EN_FTP_DEFAULT = 31,
    EN_SAMBA_SHARE_DIR = 32,
    EM_SAMBA_WRE = 33,
    EM_SAMBA_START = 34,
    EM_SAMBA_DEFAULT = 35,
    EM_NETINTERFACE = 36,
    EN_SYS_STATE_CONF = 37,
    // Bound, no text.
    EN_HELP_MAX = 38
};

#endif
