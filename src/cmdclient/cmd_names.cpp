// Names of the agent's commands. The console looks up only "check"; the other
// names serve nvcmd and the diagnostic output. Numbers 12, 22, 27 and 60-63
// are reserved: the agent answers them as not supported.
#include "cmdclient/cmd_names.h"

#include <cstring>

#include "cmdclient/cmd_client.h"
#include "link/result_codes.h"
#include "wire/wire.h"

const ST_CMD_NAME g_astCmdName[] = {
    {nvwire::kCmdCheck, "check"},
    {nvwire::kCmdSetLang, "lang"},
    {4, "icmp_echo_ignore_all"},
    {5, "tcp_syncookies"},
    {6, "tcp_tw_reuse"},
    {7, "shmmax"},
    {8, "shmall"},
    {9, "shmmni"},
    {10, "threads_max"},
    {11, "file_max"},
    {12, "reserved_12"},
    {13, "file_monit_list"},
    {14, "file_monit_flag"},
    {15, "proc_monit_list"},
    {16, "proc_monit_flag"},
    {17, "cpu_monit_ceil"},
    {18, "cpu_monit_floor"},
    {19, "cpu_monit_flag"},
    {20, "mem_monit_ceil"},
    {21, "mem_monit_flag"},
    {22, "reserved_22"},
    {23, "dv_monit_add"},
    {24, "dv_monit_delete"},
    {25, "dv_monit_clear"},
    {26, "dv_monit_flag"},
    {27, "reserved_27"},
    {28, "bak_monit_add"},
    {29, "bak_monit_delete"},
    {30, "bak_monit_clear"},
    {31, "bak_monit_flag"},
    {32, "input_policy"},
    {33, "input_add"},
    {34, "input_delete"},
    {35, "input_clear"},
    {36, "output_policy"},
    {37, "output_add"},
    {38, "output_delete"},
    {39, "output_clear"},
    {40, "ftp_anon_enable"},
    {41, "ftp_anon_upload"},
    {42, "ftp_anon_mkdir"},
    {43, "ftp_anon_root"},
    {44, "ftp_local_enable"},
    {45, "ftp_write_enable"},
    {46, "ftp_run"},
    {47, "ftp_default"},
    {48, "samba_share_path"},
    {49, "samba_share_write"},
    {50, "samba_run"},
    {51, "samba_default"},
    {52, "if_down"},
    {53, "if_up"},
    {54, "if_dhcp"},
    {55, "if_static"},
    {56, "password"},
    {57, "hostname"},
    {58, "date"},
    {59, "time"},
    {60, "reserved_60"},
    {61, "reserved_61"},
    {62, "reserved_62"},
    {63, "reserved_63"},
};

const int g_iCmdNameNum = sizeof(g_astCmdName) / sizeof(g_astCmdName[0]);

int FindCmdNo(const char* pcName) {
    for (int i = 0; i < g_iCmdNameNum; ++i) {
        if (strcmp(g_astCmdName[i].pcName, pcName) == 0)
            return g_astCmdName[i].shCmdNo;
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
        pObj->mName2Idx[g_astCmdName[i].pcName] = g_astCmdName[i].shCmdNo;
    }
    return em_OK;
}
