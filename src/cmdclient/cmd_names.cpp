// Names of the agent's commands: one row per number with its name, the
// name it had before (still accepted) and what its payload holds. nvcmd's
// help, nvcmd(1) and docs/commands.md list the same rows (a test compares
// them). The console looks up only "check". Numbers 12, 22, 27 and 61-63 are
// reserved: the agent answers them as not supported.
#include "cmdclient/cmd_names.h"

#include <cstring>

#include "cmdclient/cmd_client.h"
#include "link/result_codes.h"
#include "wire/wire.h"

// clang-format off
const ST_CMD_NAME g_astCmdName[] = {
    {nvwire::kCmdCheck, "check", nullptr, "the state as JSON (nvcmd check)"},
    {nvwire::kCmdSetLang, "lang", nullptr, "the console's language (nvcmd lang)"},
    {4, "kernel-icmp-echo-ignore", "icmp_echo_ignore_all", "ignore ICMP echo: 1 or 0"},
    {5, "kernel-syncookies", "tcp_syncookies", "TCP SYN cookies: 1 or 0"},
    {6, "kernel-tw-reuse", "tcp_tw_reuse", "TIME_WAIT reuse: 1 or 0"},
    {7, "kernel-shmmax", "shmmax", "kernel.shmmax: a number"},
    {8, "kernel-shmall", "shmall", "kernel.shmall: a number"},
    {9, "kernel-shmmni", "shmmni", "kernel.shmmni: a number"},
    {10, "kernel-threads-max", "threads_max", "kernel.threads-max: a number"},
    {11, "kernel-file-max", "file_max", "fs.file-max: a number"},
    {12, "reserved-12", "reserved_12", nullptr},
    {13, "file-monitor-list", "file_monit_list", "monitored files: one path a line"},
    {14, "file-monitor", "file_monit_flag", "file monitor: 1 or 0"},
    {15, "process-monitor-list", "proc_monit_list", "monitored processes: one command line a line"},
    {16, "process-monitor", "proc_monit_flag", "process monitor: 1 or 0"},
    {17, "cpu-monitor-ceiling", "cpu_monit_ceil", "CPU ceiling: a percentage"},
    {18, "cpu-monitor-floor", "cpu_monit_floor", "CPU floor: a percentage"},
    {19, "cpu-monitor", "cpu_monit_flag", "CPU monitor: 1 or 0"},
    {20, "memory-monitor-ceiling", "mem_monit_ceil", "memory ceiling: a number of MB"},
    {21, "memory-monitor", "mem_monit_flag", "memory monitor: 1 or 0"},
    {22, "reserved-22", "reserved_22", nullptr},
    {23, "volume-monitor-add", "dv_monit_add", "PARTITION CEILING FLOOR INTERVAL"},
    {24, "volume-monitor-delete", "dv_monit_delete", "INDEX"},
    {25, "volume-monitor-clear", "dv_monit_clear", "no payload"},
    {26, "volume-monitor", "dv_monit_flag", "disk-volume monitor: 1 or 0"},
    {27, "reserved-27", "reserved_27", nullptr},
    {28, "backup-monitor-add", "bak_monit_add", "FILE DIRECTORY KILOBYTES"},
    {29, "backup-monitor-delete", "bak_monit_delete", "INDEX"},
    {30, "backup-monitor-clear", "bak_monit_clear", "no payload"},
    {31, "backup-monitor", "bak_monit_flag", "backup monitor: 1 or 0"},
    {32, "firewall-input-policy", "input_policy", "1 (accept) or 2 (drop)"},
    {33, "firewall-input-add", "input_add", "PRIO PROTO SRC SPORT DST DPORT ACTION"},
    {34, "firewall-input-delete", "input_delete", "INDEX"},
    {35, "firewall-input-clear", "input_clear", "no payload"},
    {36, "firewall-output-policy", "output_policy", "1 (accept) or 2 (drop)"},
    {37, "firewall-output-add", "output_add", "PRIO PROTO SRC SPORT DST DPORT ACTION"},
    {38, "firewall-output-delete", "output_delete", "INDEX"},
    {39, "firewall-output-clear", "output_clear", "no payload"},
    {40, "ftp-anonymous", "ftp_anon_enable", "anonymous FTP login: 1 or 0"},
    {41, "ftp-anonymous-upload", "ftp_anon_upload", "anonymous upload: 1 or 0"},
    {42, "ftp-anonymous-mkdir", "ftp_anon_mkdir", "anonymous mkdir: 1 or 0"},
    {43, "ftp-anonymous-root", "ftp_anon_root", "anonymous root: a path"},
    {44, "ftp-local", "ftp_local_enable", "local users' login: 1 or 0"},
    {45, "ftp-write", "ftp_write_enable", "writing: 1 or 0"},
    {46, "ftp-server", "ftp_run", "FTP server running: 1 or 0"},
    {47, "ftp-defaults", "ftp_default", "no payload"},
    {48, "samba-share-path", "samba_share_path", "the share's path"},
    {49, "samba-share-writable", "samba_share_write", "share writable: 1 or 0"},
    {50, "samba-server", "samba_run", "Samba running: 1 or 0"},
    {51, "samba-defaults", "samba_default", "no payload"},
    {52, "interface-down", "if_down", "NAME"},
    {53, "interface-up", "if_up", "NAME"},
    {54, "interface-dhcp", "if_dhcp", "NAME"},
    {55, "interface-static", "if_static", "NAME IP MASK GATEWAY DNS1 DNS2"},
    {56, "password", nullptr, "USER PASSWORD PASSWORD (from a prompt or stdin)"},
    {57, "hostname", nullptr, "NAME"},
    {58, "date", nullptr, "YEAR MONTH DAY"},
    {59, "time", nullptr, "HOUR MINUTE SECOND"},
    {60, "password-hash", nullptr, "USER HASH (a crypt(3) hash, from stdin)"},
    {61, "reserved-61", "reserved_61", nullptr},
    {62, "reserved-62", "reserved_62", nullptr},
    {63, "reserved-63", "reserved_63", nullptr},
};
// clang-format on

const int g_iCmdNameNum = sizeof(g_astCmdName) / sizeof(g_astCmdName[0]);

int FindCmdNo(const char* pcName) {
    for (int i = 0; i < g_iCmdNameNum; ++i) {
        const ST_CMD_NAME& st = g_astCmdName[i];
        if (strcmp(st.pcName, pcName) == 0 || (st.pcOldName && strcmp(st.pcOldName, pcName) == 0))
            return st.shCmdNo;
    }
    return -1;
}

const char* FindCmdName(int iCmdNo) {
    for (int i = 0; i < g_iCmdNameNum; ++i) {
        if (g_astCmdName[i].shCmdNo == iCmdNo)
            return g_astCmdName[i].pcName;
    }
    return nullptr;
}

int SetName2Idx(cGlobalVal* pObj) {
    for (int i = 0; i < g_iCmdNameNum; ++i) {
        const ST_CMD_NAME& st = g_astCmdName[i];
        pObj->mName2Idx[st.pcName] = st.shCmdNo;
        if (st.pcOldName)
            pObj->mName2Idx[st.pcOldName] = st.shCmdNo;
    }
    return em_OK;
}
