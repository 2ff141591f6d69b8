// nvcmd's sub-commands over the console's own service link.
#include "nvcmd_run.h"

#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "agent/state_json.h"
#include "cmdclient/cmd_client.h"
#include "cmdclient/cmd_names.h"
#include "link/global_val.h"
#include "link/ui_interface.h"
#include "payload_input.h"
#include "settings_cli.h"
#include "visible_text.h"
#include "wire/wire.h"

namespace {

const char kUsage[] =
    "usage: nvcmd check                 print the agent's state as JSON\n"
    "       nvcmd send CMD [PAYLOAD]    send one set command (CMD: 4-63 or its name)\n"
    "       nvcmd send --payload-stdin CMD\n"
    "                                   the same, the payload read from standard input\n"
    "       nvcmd export [--format yaml|json]\n"
    "                                   print the settable settings as a document\n"
    "       nvcmd apply FILE [--check] [--diff] [--json]\n"
    "                                   make the server match a settings document\n"
    "                                   (exit 0 unchanged, 2 changed, 1 failed)\n"
    "       nvcmd lang en|chutf8|chgb2312\n"
    "                                   set the language of the console\n"
    "A password (command 56) or a password hash (60) is never taken on the\n"
    "command line: nvcmd send password asks for it on the terminal, or reads\n"
    "the payload from standard input. send exits 0 when the agent answered 7 (done) or 6 (nothing "
    "to\n"
    "change), 1 otherwise, 2 on a usage error.\n"
    "The agent's socket is /dev/nvsock unless NVUI_SOCKET names another;\n"
    "the log is /var/log/nvui.log unless NVUI_LOG names another.\n";

// The longest payload a command carries (the request buffer less its NUL).
const size_t kMaxPayload = NV_CMD_BUFF_LEN - 1;
const int kCmdPassword = 56;
const int kCmdPasswordHash = 60;

// A password or a password hash: never on the command line, where every
// user can read it (a hash can be cracked at leisure).
bool IsSecret(int iCmd) {
    return iCmd == kCmdPassword || iCmd == kCmdPasswordHash;
}

struct ST_LANG_WORD {
    const char* pcWord;
    char chCode;
};

const ST_LANG_WORD g_astLangWord[] = {{"en", emEn}, {"chgb2312", emChGb2312}, {"chutf8", emChUtf8}};

// Sets the link up; false (with a message) when the socket path cannot be
// used, since a cut path could reach another socket.
bool StartLink(FILE* err) {
    pg_Obj->c_LOG_Level = 7;
    ApplyLinkEnvironment();
    SetName2Idx(pg_Obj);
    SetErrMap(pg_Obj);
    if (SocketPathFits(pg_Obj->sSockName))
        return true;
    fprintf(err,
            "nvcmd: the socket path is %zu bytes long; a local socket path holds at most %zu "
            "bytes, so it is not used (check NVUI_SOCKET)\n",
            pg_Obj->sSockName.size(), sizeof(sockaddr_un{}.sun_path) - 1);
    return false;
}

// Prints the result text of a code; the connect failure names the socket.
// The detail is the agent's full English sentence where the console got a
// shorter form or one in Chinese.
void PrintResult(FILE* f, int iRet) {
    if (!FullDetailOfLastAnswer().empty())
        pg_Obj->sReqRetInfo = FullDetailOfLastAnswer();
    const char* pcText = GetOperatingInfoStr(iRet);
    fprintf(f, "%s\n", VisibleText(pcText ? pcText : "").c_str());
    if (iRet == ERR_CONNECT_FAILED) {
        fprintf(f, "Is norvaned running on %s?\n", pg_Obj->sSockName.c_str());
    }
}

// A kernel limit at the largest value of its 32-bit field holds that or
// more: kernel.shmmax and kernel.shmall are far beyond it by default.
void NoteSaturatedLimits(const cConf_Inf& c, FILE* err) {
    const struct {
        const char* pcField;
        unsigned long cConf_Inf::*pulValue;
    } astLimits[] = {{"ulShmMax", &cConf_Inf::ulShmMax},
                     {"ulShmAll", &cConf_Inf::ulShmAll},
                     {"ulShmMni", &cConf_Inf::ulShmMni},
                     {"ulThreadMax", &cConf_Inf::ulThreadMax},
                     {"ulFileMax", &cConf_Inf::ulFileMax}};
    for (const auto& l : astLimits) {
        if (c.*l.pulValue == 4294967295UL)
            fprintf(err,
                    "nvcmd: %s is 4294967295, the largest value its field holds: the kernel "
                    "holds that or more (its default, no limit)\n",
                    l.pcField);
    }
}

int Check(FILE* out, FILE* err) {
    int iRet = GetObjInfo();
    if (iRet != em_OK && iRet != em_ActSuccAll) {
        PrintResult(err, iRet);
        return NVCMD_REFUSED;
    }
    // Texts that are not valid UTF-8 print with U+FFFD in place of each bad
    // byte sequence rather than aborting the dump.
    std::string text = nvagent::StateToJson(pg_Obj->objCif, pg_Obj->objSS)
                           .dump(2, ' ', false, nvagent::Json::error_handler_t::replace);
    fprintf(out, "%s\n", text.c_str());
    NoteSaturatedLimits(pg_Obj->objCif, err);
    return NVCMD_OK;
}

// A command number, or a command name from the library's table.
int ParseCmd(const char* pcArg) {
    char* pcEnd = nullptr;
    errno = 0;
    long l = strtol(pcArg, &pcEnd, 10);
    if (*pcArg && *pcEnd == '\0' && errno == 0)
        return l >= 4 && l <= 63 ? static_cast<int>(l) : -1;
    int iNo = FindCmdNo(pcArg);
    return iNo >= 4 && iNo <= 63 ? iNo : -1;
}

// The commands by number and name, with what each payload holds.
void PrintCommands(FILE* out) {
    fputs("\nCommands (CMD is the number or the name):\n", out);
    for (int i = 0; i < g_iCmdNameNum; ++i) {
        const ST_CMD_NAME& st = g_astCmdName[i];
        if (st.shCmdNo >= 4 && st.pcPayload != nullptr)
            fprintf(out, "  %2d  %-24s %s\n", st.shCmdNo, st.pcName, st.pcPayload);
    }
}

// Where send takes its payload from.
struct SendArgs {
    const char* pcCmd = nullptr;
    const char* pcPayload = nullptr;
    bool bStdin = false;
};

// send's arguments (after "send"): --payload-stdin, CMD, and PAYLOAD unless
// the payload comes from standard input. False on anything else.
bool ParseSendArgs(int argc, char** argv, SendArgs& a) {
    std::vector<const char*> pos;
    for (int i = 0; i < argc; ++i) {
        if (strcmp(argv[i], "--payload-stdin") == 0)
            a.bStdin = true;
        else
            pos.push_back(argv[i]);
    }
    if (pos.empty() || pos.size() > (a.bStdin ? 1u : 2u))
        return false;
    a.pcCmd = pos[0];
    a.pcPayload = pos.size() == 2 ? pos[1] : nullptr;
    return true;
}

// The payload from the command line, standard input or the terminal; false
// (with a message, nothing sent) when it cannot be had or does not fit.
bool GetPayload(int iCmd, const SendArgs& a, std::string& payload, FILE* err) {
    if (IsSecret(iCmd) && a.pcPayload != nullptr) {
        fputs(
            "nvcmd: a password is never taken on the command line, where every user\n"
            "can read it; run 'nvcmd send password' to be asked for it, or give the\n"
            "payload (a password, or a user and a password hash) on standard input\n"
            "with --payload-stdin (nothing was sent)\n",
            err);
        return false;
    }
    bool ok = true;
    if (a.pcPayload != nullptr) {
        payload = a.pcPayload;
    } else if (iCmd == kCmdPassword && !a.bStdin && isatty(STDIN_FILENO)) {
        ok = PromptPassword(STDIN_FILENO, err, payload);
    } else if (a.bStdin || IsSecret(iCmd)) {
        ok = ReadPayload(STDIN_FILENO, kMaxPayload, payload);
    }
    if (!ok) {
        fputs("nvcmd: the payload could not be read (nothing was sent)\n", err);
        return false;
    }
    if (payload.size() > kMaxPayload) {
        fprintf(err,
                "nvcmd: the payload is longer than the %zu bytes a command carries "
                "(nothing was sent)\n",
                kMaxPayload);
        return false;
    }
    return true;
}

int Send(const SendArgs& a, FILE* out, FILE* err) {
    int iCmd = ParseCmd(a.pcCmd);
    if (iCmd < 0) {
        fprintf(err, "nvcmd: unknown command '%s': give a number from 4 to 63 or a name\n",
                a.pcCmd);
        return NVCMD_USAGE;
    }
    std::string payload;
    if (!GetPayload(iCmd, a, payload, err))
        return NVCMD_USAGE;
    int iRet = SetObjInfo(iCmd, static_cast<int>(payload.size()), &payload[0]);
    // Nothing to change is the state asked for: a success for scripts.
    bool bOk = iRet == em_ActSuccAll || iRet == em_ActNeedNoSet;
    PrintResult(bOk ? out : err, iRet);
    return bOk ? NVCMD_OK : NVCMD_REFUSED;
}

int Lang(const char* pcWord, FILE* out, FILE* err) {
    for (const ST_LANG_WORD& w : g_astLangWord) {
        if (strcmp(w.pcWord, pcWord) != 0)
            continue;
        int iRet = ConnectAgent(__func__);
        if (iRet == 0) {
            pg_Obj->shCmdNo = nvwire::kCmdSetLang;
            pg_Obj->szCmdBuff[0] = static_cast<char>('0' + w.chCode);
            pg_Obj->szCmdBuff[1] = '\0';
            pg_Obj->iLenToSend = 7;
            iRet = RequestCmd(pg_Obj);
        }
        PrintResult(iRet == em_ActSuccAll ? out : err, iRet);
        return iRet == em_ActSuccAll ? NVCMD_OK : NVCMD_REFUSED;
    }
    fprintf(err, "nvcmd: unknown language '%s': use en, chutf8 or chgb2312\n", pcWord);
    return NVCMD_USAGE;
}

}  // namespace

int NvcmdRun(int argc, char** argv, FILE* out, FILE* err) {
    if (argc >= 2 && (strcmp(argv[1], "-h") == 0 || strcmp(argv[1], "--help") == 0)) {
        fputs(kUsage, out);
        PrintCommands(out);
        return NVCMD_OK;
    }
    std::string sub = argc >= 2 ? argv[1] : "";
    if (sub == "check" && argc == 2) {
        return StartLink(err) ? Check(out, err) : NVCMD_USAGE;
    }
    SendArgs a;
    if (sub == "send" && ParseSendArgs(argc - 2, argv + 2, a)) {
        if (!StartLink(err))
            return NVCMD_USAGE;
        return Send(a, out, err);
    }
    if (sub == "export" || sub == "apply") {
        if (!StartLink(err))
            return sub == "apply" ? 1 : NVCMD_USAGE;
        return (sub == "export" ? SettingsExport : SettingsApply)(argc - 2, argv + 2, out, err);
    }
    if (sub == "lang" && argc == 3) {
        if (!StartLink(err))
            return NVCMD_USAGE;
        return Lang(argv[2], out, err);
    }
    fputs(kUsage, err);
    return NVCMD_USAGE;
}
