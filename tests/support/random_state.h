// Random structured states for property tests and fuzzing, and a field-wise
// comparison of two states. Both walk the records' one field list, so every
// field, present or added later, is generated and compared.
//
// Source is any type with `uint32_t Next(uint32_t bound)` returning a value
// below bound (a seeded generator, or fuzz input bytes).
#ifndef NV_TESTS_SUPPORT_RANDOM_STATE_H
#define NV_TESTS_SUPPORT_RANDOM_STATE_H

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "link/state_record.h"
#include "wire/record_fields.h"

namespace nvtest {

// A seeded source.
class SeededSource {
public:
    explicit SeededSource(uint32_t seed) : m_rng(seed) {}
    uint32_t Next(uint32_t bound) { return bound == 0 ? 0 : m_rng() % bound; }

private:
    std::mt19937 m_rng;
};

// A source reading fuzz input bytes; zeros once they run out.
class ByteSource {
public:
    ByteSource(const uint8_t* p, size_t n) : m_p(p), m_n(n) {}
    uint32_t Next(uint32_t bound) {
        uint32_t v = 0;
        for (int i = 0; i < 4 && m_n > 0; ++i, ++m_p, --m_n)
            v = (v << 8) | *m_p;
        return bound == 0 ? 0 : v % bound;
    }

private:
    const uint8_t* m_p;
    size_t m_n;
};

// Fills a record with random values: any byte in chars, the whole range of
// the numbers, texts of 0 to 40 bytes (any byte but NUL in char arrays, which
// end at their NUL, and often empty) and lists of 0 to 12 entries.
template <class Rec, class Source>
struct RandomWalk {
    Source& src;
    Rec& r;

    template <class T>
    T Number() {
        uint64_t v = (static_cast<uint64_t>(src.Next(0xffffffffu)) << 32) | src.Next(0xffffffffu);
        // Small values and limits are likelier than anything in between.
        switch (src.Next(4)) {
            case 0:
                v = 0;
                break;
            case 1:
                v = ~uint64_t(0);
                break;
            default:
                break;
        }
        return static_cast<T>(v);
    }
    template <class T>
    void Flag(const char*, T Rec::*m) {
        r.*m = Number<T>();
    }
    template <class T>
    void Num(const char*, T Rec::*m) {
        r.*m = Number<T>();
    }
    void Text(const char*, std::string Rec::*m) {
        std::string s(TextLen(41), '\0');
        for (char& c : s)
            c = static_cast<char>(src.Next(256));
        r.*m = s;
    }
    template <size_t N>
    void Text(const char*, char (Rec::*m)[N]) {
        size_t len = TextLen(N < 41 ? N : 41);
        for (size_t i = 0; i < len; ++i)
            (r.*m)[i] = static_cast<char>(1 + src.Next(255));
        (r.*m)[len] = '\0';
    }
    size_t TextLen(uint32_t bound) { return src.Next(2) == 0 ? 0 : src.Next(bound); }
    void List(const char*, std::vector<std::string> Rec::*m) {
        (r.*m).resize(src.Next(13));
        for (std::string& s : r.*m) {
            s.assign(TextLen(41), '\0');
            for (char& c : s)
                c = static_cast<char>(src.Next(256));
        }
    }
    template <class E>
    void List(const char*, std::vector<E> Rec::*m) {
        (r.*m).assign(src.Next(13), E{});
        for (E& e : r.*m) {
            RandomWalk<E, Source> w{src, e};
            nvwire::RecordFields<E>::Walk(w);
        }
    }
};

template <class Source>
void RandomState(Source& src, cConf_Inf& c, cSvrState& s) {
    RandomWalk<cConf_Inf, Source> wc{src, c};
    nvwire::RecordFields<cConf_Inf>::Walk(wc);
    RandomWalk<cSvrState, Source> ws{src, s};
    nvwire::RecordFields<cSvrState>::Walk(ws);
}

// Compares two records field by field; `diff` names the first difference.
template <class Rec>
struct EqualWalk {
    const Rec& a;
    const Rec& b;
    std::string& diff;

    bool Note(bool same, const char* name) {
        if (!same && diff.empty())
            diff = name;
        return same;
    }
    template <class T>
    void Flag(const char* name, T Rec::*m) {
        Note(a.*m == b.*m, name);
    }
    template <class T>
    void Num(const char* name, T Rec::*m) {
        Note(a.*m == b.*m, name);
    }
    void Text(const char* name, std::string Rec::*m) { Note(a.*m == b.*m, name); }
    template <size_t N>
    void Text(const char* name, char (Rec::*m)[N]) {
        Note(strncmp(a.*m, b.*m, N) == 0, name);
    }
    void List(const char* name, std::vector<std::string> Rec::*m) { Note(a.*m == b.*m, name); }
    template <class E>
    void List(const char* name, std::vector<E> Rec::*m) {
        if (!Note((a.*m).size() == (b.*m).size(), name))
            return;
        for (size_t i = 0; i < (a.*m).size(); ++i) {
            EqualWalk<E> w{(a.*m)[i], (b.*m)[i], diff};
            nvwire::RecordFields<E>::Walk(w);
        }
    }
};

// Empty when equal, otherwise the name of the first field that differs.
inline std::string StateDifference(const cConf_Inf& c1, const cSvrState& s1, const cConf_Inf& c2,
                                   const cSvrState& s2) {
    std::string diff;
    EqualWalk<cConf_Inf> wc{c1, c2, diff};
    nvwire::RecordFields<cConf_Inf>::Walk(wc);
    EqualWalk<cSvrState> ws{s1, s2, diff};
    nvwire::RecordFields<cSvrState>::Walk(ws);
    return diff;
}

}  // namespace nvtest

#endif
