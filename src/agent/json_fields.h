// Table-driven JSON codecs for record fields: each row names one field and
// knows how to write it to JSON and how to read it back with type and range
// checks. Errors name the full key path, e.g. key "vDV[1].iCeil".
#ifndef NV_AGENT_JSON_FIELDS_H
#define NV_AGENT_JSON_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>
#include <vector>

namespace nvagent {

// Objects keep their keys in insertion order, so a written state file lists
// the fields in record order.
using Json = nlohmann::ordered_json;

inline std::string KeyError(const std::string& path, const std::string& what) {
    return "key \"" + path + "\": " + what;
}

template <class Rec>
struct FieldCodec {
    const char* key;
    std::function<void(const Rec&, Json&)> put;
    std::function<bool(const Json&, Rec&, const std::string& path, std::string& err)> get;
};

template <class Rec>
using FieldTable = std::vector<FieldCodec<Rec>>;

template <class Rec>
const FieldCodec<Rec>* FindField(const FieldTable<Rec>& t, const std::string& key) {
    for (const FieldCodec<Rec>& f : t) {
        if (key == f.key)
            return &f;
    }
    return nullptr;
}

// Reads a whole number within [lo, hi]; false with err naming the path.
inline bool GetWhole(const Json& j, long long lo, long long hi, long long& v,
                     const std::string& path, std::string& err) {
    bool ok = j.is_number_integer();
    if (ok && j.is_number_unsigned()) {
        uint64_t u = j.get<uint64_t>();
        ok = u <= static_cast<uint64_t>(std::numeric_limits<long long>::max());
        v = ok ? static_cast<long long>(u) : 0;
    } else if (ok) {
        v = j.get<int64_t>();
    }
    if (!ok || v < lo || v > hi) {
        err = KeyError(path, "expected a whole number from " + std::to_string(lo) + " to " +
                                 std::to_string(hi));
        return false;
    }
    return true;
}

// A flag or policy character: a string of one character, or "" for NUL.
template <class Rec>
FieldCodec<Rec> Flag(const char* key, char Rec::*m) {
    return {
        key,
        [m](const Rec& r, Json& j) { j = (r.*m == '\0') ? std::string() : std::string(1, r.*m); },
        [m](const Json& j, Rec& r, const std::string& path, std::string& err) {
            if (!j.is_string() || j.get_ref<const std::string&>().size() > 1) {
                err = KeyError(path, "expected a string of one character (or \"\")");
                return false;
            }
            const std::string& s = j.get_ref<const std::string&>();
            r.*m = s.empty() ? '\0' : s[0];
            return true;
        }};
}

// Integer fields. The record's unsigned longs are 32-bit on the console side,
// and the small enum chars are plain numbers.
template <class T>
struct WholeRange {
    static constexpr long long lo = std::numeric_limits<T>::min();
    static constexpr long long hi = std::numeric_limits<T>::max();
};
template <>
struct WholeRange<unsigned long> {
    static constexpr long long lo = 0;
    static constexpr long long hi = 4294967295LL;
};
template <>
struct WholeRange<char> {
    static constexpr long long lo = 0;
    static constexpr long long hi = 127;
};

template <class Rec, class T>
FieldCodec<Rec> Whole(const char* key, T Rec::*m, long long lo = WholeRange<T>::lo,
                      long long hi = WholeRange<T>::hi) {
    // Unsigned fields are written as unsigned, so that no large value
    // prints as a negative one.
    return {key,
            [m](const Rec& r, Json& j) {
                if (std::is_unsigned<T>::value)
                    j = static_cast<unsigned long long>(r.*m);
                else
                    j = static_cast<long long>(r.*m);
            },
            [m, lo, hi](const Json& j, Rec& r, const std::string& path, std::string& err) {
                long long v = 0;
                if (!GetWhole(j, lo, hi, v, path, err))
                    return false;
                r.*m = static_cast<T>(v);
                return true;
            }};
}

template <class Rec>
FieldCodec<Rec> Bool(const char* key, bool Rec::*m) {
    return {key, [m](const Rec& r, Json& j) { j = r.*m; },
            [m](const Json& j, Rec& r, const std::string& path, std::string& err) {
                if (!j.is_boolean()) {
                    err = KeyError(path, "expected true or false");
                    return false;
                }
                r.*m = j.get<bool>();
                return true;
            }};
}

template <class Rec>
FieldCodec<Rec> Text(const char* key, std::string Rec::*m) {
    return {key, [m](const Rec& r, Json& j) { j = r.*m; },
            [m](const Json& j, Rec& r, const std::string& path, std::string& err) {
                if (!j.is_string()) {
                    err = KeyError(path, "expected a string");
                    return false;
                }
                r.*m = j.get<std::string>();
                return true;
            }};
}

template <class Rec>
FieldCodec<Rec> TextList(const char* key, std::vector<std::string> Rec::*m) {
    return {key, [m](const Rec& r, Json& j) { j = r.*m; },
            [m](const Json& j, Rec& r, const std::string& path, std::string& err) {
                std::vector<std::string> v;
                if (j.is_array()) {
                    for (const Json& e : j) {
                        if (!e.is_string())
                            break;
                        v.push_back(e.get<std::string>());
                    }
                }
                if (!j.is_array() || v.size() != j.size()) {
                    err = KeyError(path, "expected an array of strings");
                    return false;
                }
                r.*m = std::move(v);
                return true;
            }};
}

// A fixed char array: a string of at most N - 1 bytes without NUL bytes.
template <class Rec, size_t N>
FieldCodec<Rec> CharArray(const char* key, char (Rec::*m)[N]) {
    return {key, [m](const Rec& r, Json& j) { j = std::string(r.*m, strnlen(r.*m, N)); },
            [m](const Json& j, Rec& r, const std::string& path, std::string& err) {
                if (!j.is_string()) {
                    err = KeyError(path, "expected a string");
                    return false;
                }
                const std::string& s = j.get_ref<const std::string&>();
                if (s.size() > N - 1 || s.find('\0') != std::string::npos) {
                    err = KeyError(path, "expected a string of at most " + std::to_string(N - 1) +
                                             " bytes without NUL bytes");
                    return false;
                }
                memcpy(r.*m, s.c_str(), s.size() + 1);
                return true;
            }};
}

// A number stored as one of a few words: names[i] stands for first + i.
template <class Rec>
FieldCodec<Rec> Word(const char* key, int Rec::*m, std::vector<std::string> names, int first) {
    return {key,
            [m, names, first](const Rec& r, Json& j) {
                int i = r.*m - first;
                j = (i >= 0 && i < static_cast<int>(names.size())) ? names[i] : std::string();
            },
            [m, names, first](const Json& j, Rec& r, const std::string& path, std::string& err) {
                for (size_t i = 0; j.is_string() && i < names.size(); ++i) {
                    if (j.get_ref<const std::string&>() == names[i]) {
                        r.*m = first + static_cast<int>(i);
                        return true;
                    }
                }
                std::string list;
                for (const std::string& n : names)
                    list += (list.empty() ? "\"" : ", \"") + n + "\"";
                err = KeyError(path, "expected one of " + list);
                return false;
            }};
}

template <class Rec>
Json ObjectToJson(const Rec& r, const FieldTable<Rec>& t) {
    Json j = Json::object();
    for (const FieldCodec<Rec>& f : t)
        f.put(r, j[f.key]);
    return j;
}

// Reads the keys present in j over r (missing keys keep r's values).
template <class Rec>
bool ObjectFromJson(const Json& j, Rec& r, const FieldTable<Rec>& t, const std::string& path,
                    std::string& err) {
    if (!j.is_object()) {
        err = KeyError(path, "expected an object");
        return false;
    }
    for (auto it = j.begin(); it != j.end(); ++it) {
        const FieldCodec<Rec>* f = FindField(t, it.key());
        std::string sub = path + "." + it.key();
        if (f == nullptr) {
            err = "unknown key \"" + sub + "\"";
            return false;
        }
        if (!f->get(it.value(), r, sub, err))
            return false;
    }
    return true;
}

// A vector of element records, each an object read over a value-initialised
// element.
template <class Rec, class Elem>
FieldCodec<Rec> RecordList(const char* key, std::vector<Elem> Rec::*m,
                           const FieldTable<Elem>& (*table)()) {
    return {key,
            [m, table](const Rec& r, Json& j) {
                j = Json::array();
                for (const Elem& e : r.*m)
                    j.push_back(ObjectToJson(e, table()));
            },
            [m, table](const Json& j, Rec& r, const std::string& path, std::string& err) {
                if (!j.is_array()) {
                    err = KeyError(path, "expected an array of objects");
                    return false;
                }
                std::vector<Elem> v(j.size(), Elem{});
                for (size_t i = 0; i < j.size(); ++i) {
                    std::string sub = path + "[" + std::to_string(i) + "]";
                    if (!ObjectFromJson(j[i], v[i], table(), sub, err))
                        return false;
                }
                r.*m = std::move(v);
                return true;
            }};
}

}  // namespace nvagent

#endif
