// The settings file: the agent's own fields of the configuration record as
// a JSON object, in the same encoding as the simulator's state file.
#include "agent/live/live_settings.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "agent/atomic_file.h"
#include "agent/live/live_files.h"
#include "agent/state_json.h"

namespace nvagent {

namespace {

const char* const kKeys[] = {
    "vFileMonitList",
    "chFileMonitFlag",
    "vProcessMonitList",
    "chProcessMonitFlag",
    "shCpuCeil",
    "shCpuFloor",
    "chCpuMonitFlag",
    "iMemCeil",
    "chMemMonitFlag",
    "vDV",
    "vsDV",
    "chDVMonitFlag",
    "vBakForSize",
    "vsBakForSize",
    "chBakForSizeFlag",
    "chLangCode",
};

}  // namespace

bool EnsureDir(const std::string& dir, std::string& err) {
    for (size_t at = 1; at <= dir.size(); ++at) {
        if (at != dir.size() && dir[at] != '/')
            continue;
        std::string part = dir.substr(0, at);
        if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) {
            err = "cannot create " + part + ": " + strerror(errno);
            return false;
        }
    }
    return true;
}

std::string SettingsPath(const std::string& dataDir) {
    return dataDir + "/settings.json";
}

void CopySettings(const cConf_Inf& from, cConf_Inf& to) {
    to.vFileMonitList = from.vFileMonitList;
    to.chFileMonitFlag = from.chFileMonitFlag;
    to.vProcessMonitList = from.vProcessMonitList;
    to.chProcessMonitFlag = from.chProcessMonitFlag;
    to.shCpuCeil = from.shCpuCeil;
    to.shCpuFloor = from.shCpuFloor;
    to.chCpuMonitFlag = from.chCpuMonitFlag;
    to.iMemCeil = from.iMemCeil;
    to.chMemMonitFlag = from.chMemMonitFlag;
    to.vDV = from.vDV;
    to.vsDV = from.vsDV;
    to.chDVMonitFlag = from.chDVMonitFlag;
    to.vBakForSize = from.vBakForSize;
    to.vsBakForSize = from.vsBakForSize;
    to.chBakForSizeFlag = from.chBakForSizeFlag;
    to.chLangCode = from.chLangCode;
}

bool LoadSettings(const std::string& path, cConf_Inf& conf, std::string& err) {
    std::string text;
    if (!ReadTextFile(path, text)) {
        if (errno == ENOENT)
            return true;
        err = "cannot read " + path + ": " + strerror(errno);
        return false;
    }
    cConf_Inf loaded = DefaultConf();
    cSvrState unused;
    try {
        Json j = Json::parse(text);
        if (!StateFromJson(j, loaded, unused, err)) {
            err = path + ": " + err;
            return false;
        }
    } catch (const Json::exception& e) {
        err = path + ": " + e.what();
        return false;
    }
    CopySettings(loaded, conf);
    return true;
}

bool SaveSettings(const std::string& path, const cConf_Inf& conf, std::string& err) {
    size_t slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0 && !EnsureDir(path.substr(0, slash), err))
        return false;
    Json all = StateToJson(conf, cSvrState());
    Json out = Json::object();
    for (const char* k : kKeys)
        out[k] = all[k];
    std::string text;
    try {
        text = out.dump(2) + "\n";
    } catch (const Json::exception& e) {
        err = e.what();
        return false;
    }
    return WriteFileAtomically(path, text, err);
}

}  // namespace nvagent
