// Recovery of an interface change: its JSON form, the files put back, and
// the undo dispatched to the owner's file (interface_managers.h).
#include "agent/live/interfaces/interface_recovery.h"

#include <unistd.h>

#include <cstring>
#include <nlohmann/json.hpp>

#include "agent/atomic_file.h"
#include "agent/live/interfaces/interface_managers.h"
#include "agent/live/interfaces/live_resolv_conf.h"
#include "agent/live/live_files.h"

namespace nvagent {

namespace {

using nlohmann::json;

json Lists(const std::vector<std::vector<std::string>>& v) {
    return json(v);
}

bool GetLists(const json& j, const char* key, std::vector<std::vector<std::string>>& out) {
    if (!j.contains(key))
        return true;
    if (!j[key].is_array())
        return false;
    for (const json& l : j[key]) {
        if (!l.is_array())
            return false;
        std::vector<std::string> words;
        for (const json& w : l) {
            if (!w.is_string())
                return false;
            words.push_back(w.get<std::string>());
        }
        out.push_back(words);
    }
    return true;
}

bool GetStrings(const json& j, const char* key, std::vector<std::string>& out) {
    if (!j.contains(key))
        return true;
    if (!j[key].is_array())
        return false;
    for (const json& w : j[key]) {
        if (!w.is_string())
            return false;
        out.push_back(w.get<std::string>());
    }
    return true;
}

std::string Str(const json& j, const char* key) {
    return j.contains(key) && j[key].is_string() ? j[key].get<std::string>() : std::string();
}

bool Flag(const json& j, const char* key) {
    return j.contains(key) && j[key].is_boolean() && j[key].get<bool>();
}

const char* const kOwners[] = {"ifupdown", "networkd", "netplan", "networkmanager", "none"};

// The files a deferred change writes: its runtime layers and resolv.conf.
// An undo never writes anything else, whatever a recovery says.
bool UndoMayWrite(const std::string& path) {
    static const char* const kDirs[] = {"/run/norvane/", "/run/systemd/network/00-norvane+",
                                        "/run/netplan/"};
    if (path.find("/../") != std::string::npos || path.find("/./") != std::string::npos)
        return false;
    if (path == kResolvConfPath)
        return true;
    for (const char* d : kDirs) {
        if (path.compare(0, strlen(d), d) == 0 && path.size() > strlen(d))
            return true;
    }
    return false;
}

}  // namespace

std::string RecoveryJson(const InterfaceRecovery& rec) {
    const InterfaceSnapshot& s = rec.before;
    json iface = {{"name", s.iface.name},
                  {"up", s.iface.up},
                  {"ip", s.iface.ip},
                  {"mask", s.iface.mask},
                  {"dynamic", s.iface.mode == kModeDynamic}};
    json snapshot = {{"iface", iface},
                     {"gateway", s.gateway},
                     {"addrs", Lists(s.addrs)},
                     {"routes", Lists(s.routes)},
                     {"addrs6", Lists(s.addrs6)},
                     {"routes6", Lists(s.routes6)},
                     {"dhcpClient", s.dhcpClient}};
    json files = json::array();
    for (const FileBefore& f : rec.files)
        files.push_back({{"path", f.path}, {"existed", f.existed}, {"text", f.text}});
    json j = {{"domain", "interface"},
              {"owner", rec.owner},
              {"cmd", rec.cmd},
              {"before", snapshot},
              {"files", files},
              {"ifupdownCopy", rec.ifupdownCopy},
              {"nmCheckpoint", rec.nmCheckpoint},
              {"nmProfile", rec.nmProfile},
              {"nmOld", rec.nmOld}};
    return j.dump();
}

bool ParseRecovery(const std::string& text, InterfaceRecovery& rec, std::string& err) {
    json j = json::parse(text, nullptr, false);
    if (j.is_discarded() || !j.is_object() || Str(j, "domain") != "interface") {
        err = "not the recovery of an interface change";
        return false;
    }
    rec = InterfaceRecovery();
    rec.owner = Str(j, "owner");
    bool known = false;
    for (const char* o : kOwners)
        known = known || rec.owner == o;
    const json& b = j.contains("before") ? j["before"] : json();
    const json& i = b.is_object() && b.contains("iface") ? b["iface"] : json();
    rec.before.iface.name = i.is_object() ? Str(i, "name") : std::string();
    if (!known || rec.before.iface.name.empty() || rec.before.iface.name[0] == '-') {
        err = "the recovery names no interface or no known owner";
        return false;
    }
    rec.cmd = j.contains("cmd") && j["cmd"].is_number_integer() ? j["cmd"].get<short>() : 0;
    rec.before.iface.up = Flag(i, "up");
    rec.before.iface.ip = Str(i, "ip");
    rec.before.iface.mask = Str(i, "mask");
    rec.before.iface.mode = Flag(i, "dynamic") ? kModeDynamic : kModeStatic;
    rec.before.gateway = Str(b, "gateway");
    bool ok =
        GetLists(b, "addrs", rec.before.addrs) && GetLists(b, "routes", rec.before.routes) &&
        GetLists(b, "addrs6", rec.before.addrs6) && GetLists(b, "routes6", rec.before.routes6) &&
        GetStrings(b, "dhcpClient", rec.before.dhcpClient) && GetStrings(j, "nmOld", rec.nmOld);
    if (ok && j.contains("files") && j["files"].is_array()) {
        for (const json& f : j["files"]) {
            if (!f.is_object() || !UndoMayWrite(Str(f, "path"))) {
                ok = false;
                break;
            }
            rec.files.push_back({Str(f, "path"), Flag(f, "existed"), Str(f, "text")});
        }
    }
    if (!ok) {
        err = "the recovery of " + rec.before.iface.name + " is malformed";
        return false;
    }
    rec.ifupdownCopy = Str(j, "ifupdownCopy");
    rec.nmCheckpoint = Str(j, "nmCheckpoint");
    rec.nmProfile = Str(j, "nmProfile");
    return true;
}

FileBefore FileAsItIs(const std::string& path) {
    FileBefore f;
    f.path = path;
    f.existed = ReadTextFile(path, f.text);
    return f;
}

void PutFilesBack(const std::vector<FileBefore>& files) {
    std::string ignored;
    for (const FileBefore& f : files) {
        std::string now;
        bool there = ReadTextFile(f.path, now);
        if (f.existed && (!there || now != f.text))
            WriteFileAtomically(f.path, f.text, ignored);
        else if (!f.existed && there)
            unlink(f.path.c_str());
    }
}

void UndoInterfaceChange(const InterfaceRecovery& rec) {
    if (rec.owner == "ifupdown")
        IfupdownUndo(rec);
    else if (rec.owner == "networkd")
        NetworkdUndo(rec);
    else if (rec.owner == "netplan")
        NetplanUndo(rec);
    else if (rec.owner == "networkmanager")
        NetworkManagerUndo(rec);
    else
        UnmanagedUndo(rec);
}

bool UndoInterfaceRecovery(const std::string& json, std::string& err) {
    InterfaceRecovery rec;
    if (!ParseRecovery(json, rec, err))
        return false;
    UndoInterfaceChange(rec);
    return true;
}

void MakePending(const InterfaceRecovery& rec, std::function<CmdResult()> commit,
                 PendingChange& out) {
    out.iCmd = rec.cmd;
    out.tWhen = time(nullptr);
    out.commit = std::move(commit);
    out.undo = [rec]() {
        UndoInterfaceChange(rec);
        return Done();
    };
    out.sRecovery = RecoveryJson(rec);
}

}  // namespace nvagent
