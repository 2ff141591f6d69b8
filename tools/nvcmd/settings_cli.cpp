// export and apply against the agent: the state read with one check
// request, the plan's commands sent one request each.
#include "settings_cli.h"

#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include "agent/state_json.h"
#include "cmdclient/cmd_client.h"
#include "link/ui_interface.h"
#include "settings_apply.h"
#include "settings_yaml.h"
#include "visible_text.h"

using nvsettings::Json;

namespace {

// The agent's state as the check answer's JSON; false with why.
bool ReadState(Json& state, std::string& why) {
    int iRet = GetObjInfo();
    if (iRet != em_OK && iRet != em_ActSuccAll) {
        const char* pcText = GetOperatingInfoStr(iRet);
        why = VisibleText(pcText ? pcText : "the agent did not answer");
        return false;
    }
    state = nvagent::StateToJson(pg_Obj->objCif, pg_Obj->objSS);
    return true;
}

int SendOne(short cmd, const std::string& payload, std::string& detail) {
    int iRet = ConnectAgent(__func__);
    if (iRet == 0) {
        pg_Obj->shCmdNo = cmd;
        memcpy(pg_Obj->szCmdBuff, payload.data(), payload.size());
        pg_Obj->szCmdBuff[payload.size()] = '\0';
        pg_Obj->iLenToSend = 6 + static_cast<int>(payload.size());
        iRet = RequestCmd(pg_Obj);
    }
    if (iRet >= 0 && !FullDetailOfLastAnswer().empty()) {
        detail = VisibleText(FullDetailOfLastAnswer().c_str());
    } else if (iRet >= 0 && !pg_Obj->sReqRetInfo.empty()) {
        detail = VisibleText(pg_Obj->sReqRetInfo.c_str());
    } else {
        const char* pcText = GetOperatingInfoStr(iRet);
        detail = VisibleText(pcText ? pcText : "no answer");
    }
    return iRet;
}

std::string Dump(const Json& j) {
    return j.dump(2, ' ', false, Json::error_handler_t::replace);
}

bool ReadInput(const std::string& file, std::string& text, std::string& why) {
    std::stringstream ss;
    if (file == "-") {
        ss << std::cin.rdbuf();
    } else {
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            why = "cannot be read: " + std::string(strerror(errno));
            return false;
        }
        ss << in.rdbuf();
    }
    text = ss.str();
    return true;
}

int Refused(FILE* out, FILE* err, bool json, const std::string& file, const std::string& path,
            const std::string& why) {
    if (json) {
        Json r{{"changed", false}, {"failed", true}, {"msg", why}};
        if (!path.empty())
            r["path"] = path;
        fprintf(out, "%s\n", Dump(r).c_str());
    }
    fprintf(err, "nvcmd apply: %s: %s%s\n", file.c_str(), path.empty() ? "" : (path + ": ").c_str(),
            why.c_str());
    return nvsettings::kApplyFailed;
}

}  // namespace

int SettingsExport(int argc, char** argv, FILE* out, FILE* err) {
    bool json = false;
    if (argc == 2 && strcmp(argv[0], "--format") == 0 &&
        (strcmp(argv[1], "yaml") == 0 || strcmp(argv[1], "json") == 0)) {
        json = strcmp(argv[1], "json") == 0;
    } else if (argc != 0) {
        fprintf(err, "usage: nvcmd export [--format yaml|json]\n");
        return 2;
    }
    Json state;
    std::string why;
    if (!ReadState(state, why)) {
        fprintf(err, "nvcmd export: %s\n", why.c_str());
        return 1;
    }
    Json doc = nvsettings::ExportSettings(state);
    fputs(json ? (Dump(doc) + "\n").c_str() : nvsettings::WriteYaml(doc).c_str(), out);
    return 0;
}

int SettingsApply(int argc, char** argv, FILE* out, FILE* err) {
    bool check = false, diff = false, json = false;
    std::string file;
    for (int i = 0; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--check") {
            check = true;
        } else if (a == "--diff") {
            diff = true;
        } else if (a == "--json") {
            json = true;
        } else if (file.empty() && (a == "-" || a[0] != '-')) {
            file = a;
        } else {
            file.clear();
            break;
        }
    }
    if (file.empty()) {
        fprintf(err, "usage: nvcmd apply FILE [--check] [--diff] [--json]\n");
        return nvsettings::kApplyFailed;
    }
    std::string text, why, path;
    Json doc;
    if (!ReadInput(file, text, why) || !nvsettings::ParseYaml(text, doc, why))
        return Refused(out, err, json, file, "", why);
    nvsettings::CanonLists lists;
    if (!nvsettings::CheckDocument(doc, path, why, &lists))
        return Refused(out, err, json, file, path, why);
    Json state;
    if (!ReadState(state, why))
        return Refused(out, err, json, file, "", why);
    std::vector<nvsettings::Item> plan = nvsettings::MakePlan(doc, state, &lists);
    for (const nvsettings::Item& it : plan) {
        for (const nvsettings::Step& s : it.steps) {
            if (s.payload.size() >= NV_CMD_BUFF_LEN)
                return Refused(out, err, json, file, nvsettings::PathText(it.path),
                               "the command would be " + std::to_string(s.payload.size()) +
                                   " bytes long; the agent takes at most " +
                                   std::to_string(NV_CMD_BUFF_LEN - 1));
        }
    }
    nvsettings::CarryOut(plan, check, SendOne);
    if (json)
        fprintf(out, "%s\n", Dump(nvsettings::ReportJson(plan, check)).c_str());
    else
        fputs(nvsettings::ReportText(plan, check, diff).c_str(), out);
    return nvsettings::ApplyStatus(plan);
}
