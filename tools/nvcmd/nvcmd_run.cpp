// nvcmd's sub-commands over the console's own service link.
#include "nvcmd_run.h"

#include <sys/un.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "agent/state_json.h"
#include "cmdclient/cmd_client.h"
#include "cmdclient/cmd_names.h"
#include "link/ui_interface.h"
#include "settings_cli.h"
#include "visible_text.h"
#include "wire/wire.h"

namespace {

const char kUsage[] =
    "usage: nvcmd check                 print the agent's state as JSON\n"
    "       nvcmd send CMD [PAYLOAD]    send one set command (CMD: 4-63 or its name)\n"
    "       nvcmd export [--format yaml|json]\n"
    "                                   print the settable settings as a document\n"
    "       nvcmd apply FILE [--check] [--diff] [--json]\n"
    "                                   make the server match a settings document\n"
    "                                   (exit 0 unchanged, 2 changed, 1 failed)\n"
    "       nvcmd lang en|chutf8|chgb2312\n"
    "                                   set the language of the console\n"
    "The agent's socket is /dev/nvsock unless NVUI_SOCKET names another;\n"
    "the log is /var/log/nvui.log unless NVUI_LOG names another.\n";

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
void PrintResult(FILE* f, int iRet) {
    const char* pcText = GetOperatingInfoStr(iRet);
    fprintf(f, "%s\n", VisibleText(pcText ? pcText : "").c_str());
    if (iRet == ERR_CONNECT_FAILED) {
        fprintf(f, "Is norvaned running on %s?\n", pg_Obj->sSockName.c_str());
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

int Send(const char* pcCmd, const char* pcPayload, FILE* out, FILE* err) {
    int iCmd = ParseCmd(pcCmd);
    if (iCmd < 0) {
        fprintf(err, "nvcmd: unknown command '%s': give a number from 4 to 63 or a name\n", pcCmd);
        return NVCMD_USAGE;
    }
    std::string payload = pcPayload ? pcPayload : "";
    int iRet = SetObjInfo(iCmd, static_cast<int>(payload.size()), &payload[0]);
    PrintResult(iRet == em_ActSuccAll ? out : err, iRet);
    return iRet == em_ActSuccAll ? NVCMD_OK : NVCMD_REFUSED;
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
        return NVCMD_OK;
    }
    std::string sub = argc >= 2 ? argv[1] : "";
    if (sub == "check" && argc == 2) {
        return StartLink(err) ? Check(out, err) : NVCMD_USAGE;
    }
    if (sub == "send" && (argc == 3 || argc == 4)) {
        if (!StartLink(err))
            return NVCMD_USAGE;
        return Send(argv[2], argc == 4 ? argv[3] : nullptr, out, err);
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
