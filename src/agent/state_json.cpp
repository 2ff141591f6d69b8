// The JSON field tables of the reported-state records, built by walking the
// records' one field list, and the JSON conversion of the whole state.
#include "agent/state_json.h"

#include <algorithm>

#include "wire/record_fields.h"

namespace nvagent {

namespace {

template <class Rec>
const FieldTable<Rec>& TableOf();

// Turns the walk of a record's field list into its JSON field table.
template <class Rec>
struct TableBuilder {
    FieldTable<Rec>& t;
    void Flag(const char* key, char Rec::*m) { t.push_back(nvagent::Flag(key, m)); }
    template <class T>
    void Num(const char* key, T Rec::*m) {
        t.push_back(Whole(key, m));
    }
    void Text(const char* key, std::string Rec::*m) { t.push_back(nvagent::Text(key, m)); }
    template <size_t N>
    void Text(const char* key, char (Rec::*m)[N]) {
        t.push_back(CharArray(key, m));
    }
    void List(const char* key, tVecStr Rec::*m) { t.push_back(TextList(key, m)); }
    template <class E>
    void List(const char* key, std::vector<E> Rec::*m) {
        t.push_back(RecordList(key, m, TableOf<E>));
    }
};

template <class Rec>
const FieldTable<Rec>& TableOf() {
    static const FieldTable<Rec> t = [] {
        FieldTable<Rec> built;
        TableBuilder<Rec> b{built};
        nvwire::RecordFields<Rec>::Walk(b);
        return built;
    }();
    return t;
}

using C = cConf_Inf;
using S = cSvrState;

const FieldTable<C>& ConfFields() {
    return TableOf<C>();
}

const FieldTable<S>& SvrFields() {
    return TableOf<S>();
}

}  // namespace

cConf_Inf DefaultConf() {
    cConf_Inf c;
    c.chIcmpEchoIgnoreAll = '\0';
    c.chTcpSyncookies = '\0';
    c.chTcpTwReuse = '\0';
    c.ulShmMax = 0;
    c.ulShmAll = 0;
    c.ulShmMni = 0;
    c.ulThreadMax = 0;
    c.ulFileMax = 0;
    return c;
}

Json FieldsToJson(const cConf_Inf& c, const cSvrState& s, const std::vector<const char*>& keys) {
    Json j = Json::object();
    for (const char* key : keys) {
        if (const FieldCodec<C>* f = FindField(ConfFields(), key))
            f->put(c, j[key]);
        else if (const FieldCodec<S>* g = FindField(SvrFields(), key))
            g->put(s, j[key]);
    }
    return j;
}

Json StateToJson(const cConf_Inf& c, const cSvrState& s) {
    Json j = ObjectToJson(c, ConfFields());
    for (const FieldCodec<S>& f : SvrFields())
        f.put(s, j[f.key]);
    return j;
}

bool StateFromJson(const Json& j, cConf_Inf& c, cSvrState& s, std::string& err,
                   const std::vector<std::string>& extraKeys) {
    if (!j.is_object()) {
        err = "the state must be a JSON object";
        return false;
    }
    cConf_Inf nc = DefaultConf();
    cSvrState ns;
    for (auto it = j.begin(); it != j.end(); ++it) {
        const std::string& key = it.key();
        if (std::find(extraKeys.begin(), extraKeys.end(), key) != extraKeys.end())
            continue;
        bool ok;
        if (const FieldCodec<C>* f = FindField(ConfFields(), key)) {
            ok = f->get(it.value(), nc, key, err);
        } else if (const FieldCodec<S>* g = FindField(SvrFields(), key)) {
            ok = g->get(it.value(), ns, key, err);
        } else {
            err = "unknown key \"" + key + "\"";
            ok = false;
        }
        if (!ok)
            return false;
    }
    c = std::move(nc);
    s = std::move(ns);
    return true;
}

}  // namespace nvagent
