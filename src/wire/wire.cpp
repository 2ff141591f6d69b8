// Framing and the bounded field codec of the agent protocol.
#include "wire/wire.h"

#include <cstring>

#include "link/result_codes.h"
#include "wire/record_fields.h"

namespace nvwire {

#define NV_TRY(expr)         \
    do {                     \
        int nv_rc_ = (expr); \
        if (nv_rc_ != em_OK) \
            return nv_rc_;   \
    } while (0)

void Writer::Put16(uint16_t v) {
    char b[2] = {static_cast<char>(v & 0xff), static_cast<char>(v >> 8)};
    m_out.append(b, 2);
}

void Writer::Put32(uint32_t v) {
    char b[4];
    for (int i = 0; i < 4; ++i)
        b[i] = static_cast<char>((v >> (8 * i)) & 0xff);
    m_out.append(b, 4);
}

void Writer::Put64(uint64_t v) {
    char b[8];
    for (int i = 0; i < 8; ++i)
        b[i] = static_cast<char>((v >> (8 * i)) & 0xff);
    m_out.append(b, 8);
}

void Writer::PutStr(const char* p, size_t n) {
    Put32(static_cast<uint32_t>(n));
    m_out.append(p, n);
}

static uint64_t LoadLE(const char* p, int bytes) {
    uint64_t v = 0;
    for (int i = bytes - 1; i >= 0; --i)
        v = (v << 8) | static_cast<uint8_t>(p[i]);
    return v;
}

int Reader::Get8(uint8_t& v) {
    if (m_left < 1)
        return em_GetCharReadBuffNotEnough;
    v = static_cast<uint8_t>(*m_p);
    ++m_p;
    --m_left;
    return em_OK;
}

int Reader::Get16(uint16_t& v) {
    if (m_left < 2)
        return em_GetShortReadBuffNotEnough;
    v = static_cast<uint16_t>(LoadLE(m_p, 2));
    m_p += 2;
    m_left -= 2;
    return em_OK;
}

int Reader::Get32(uint32_t& v) {
    if (m_left < 4)
        return em_GetIntReadBuffNotEnough;
    v = static_cast<uint32_t>(LoadLE(m_p, 4));
    m_p += 4;
    m_left -= 4;
    return em_OK;
}

int Reader::Get64(uint64_t& v) {
    if (m_left < 8)
        return em_GetIntReadBuffNotEnough;
    v = LoadLE(m_p, 8);
    m_p += 8;
    m_left -= 8;
    return em_OK;
}

int Reader::GetStr(std::string& s) {
    uint32_t n = 0;
    if (m_left < 4)
        return em_GetStrReadBuffNotEnough;
    Get32(n);
    if (n > m_left)
        return em_GetStrReadBuffNotEnough;
    s.assign(m_p, n);
    m_p += n;
    m_left -= n;
    return em_OK;
}

int Reader::GetCharArray(char* dst, size_t cap) {
    uint32_t n = 0;
    if (m_left < 4)
        return em_GetStrReadBuffNotEnough;
    Get32(n);
    if (n > m_left)
        return em_GetStrReadBuffNotEnough;
    if (n >= cap)
        return em_GetStrWriteBuffNotEnough;
    memcpy(dst, m_p, n);
    dst[n] = '\0';
    m_p += n;
    m_left -= n;
    return em_OK;
}

// ---- values by type: the encoding of a field follows from its C++ type ----

static void PutValue(Writer& w, char v) {
    w.Put8(static_cast<uint8_t>(v));
}
static void PutValue(Writer& w, short v) {
    w.Put16(static_cast<uint16_t>(v));
}
static void PutValue(Writer& w, int v) {
    w.Put32(static_cast<uint32_t>(v));
}
static void PutValue(Writer& w, unsigned long v) {
    w.Put64(v);
}
static void PutValue(Writer& w, const std::string& v) {
    w.PutStr(v);
}
template <size_t N>
static void PutValue(Writer& w, const char (&v)[N]) {
    w.PutStr(v, strnlen(v, N));
}

// The smallest encoding of each value type: fixed widths, and a length or a
// count of four bytes for texts and lists.
template <class T>
struct WireMin {
    static constexpr size_t value = 4;
};
template <>
struct WireMin<char> {
    static constexpr size_t value = 1;
};
template <>
struct WireMin<short> {
    static constexpr size_t value = 2;
};
template <>
struct WireMin<int> {
    static constexpr size_t value = 4;
};
template <>
struct WireMin<unsigned long> {
    static constexpr size_t value = 8;
};

// Sums the smallest encodings of a record's fields.
template <class Rec>
struct MinSizeWalk {
    size_t total = 0;
    template <class T>
    void Flag(const char*, T Rec::*) {
        total += WireMin<T>::value;
    }
    template <class T>
    void Num(const char*, T Rec::*) {
        total += WireMin<T>::value;
    }
    template <class T>
    void Text(const char*, T Rec::*) {
        total += 4;
    }
    template <class T>
    void List(const char*, T Rec::*) {
        total += 4;
    }
};

template <class Rec>
size_t MinEncodedLen() {
    static const size_t len = [] {
        MinSizeWalk<Rec> m;
        RecordFields<Rec>::Walk(m);
        return m.total;
    }();
    return len;
}

template size_t MinEncodedLen<cDiskVolume>();
template size_t MinEncodedLen<cBakForSize>();
template size_t MinEncodedLen<cTcpListen>();
template size_t MinEncodedLen<cDiskInfo>();
template size_t MinEncodedLen<cConf_Inf>();
template size_t MinEncodedLen<cSvrState>();

template <class Rec>
static void EncodeRecord(Writer& w, const Rec& r);

template <class Rec>
struct EncodeWalk {
    Writer& w;
    const Rec& r;
    template <class T>
    void Flag(const char*, T Rec::*m) {
        PutValue(w, r.*m);
    }
    template <class T>
    void Num(const char*, T Rec::*m) {
        PutValue(w, r.*m);
    }
    template <class T>
    void Text(const char*, T Rec::*m) {
        PutValue(w, r.*m);
    }
    void List(const char*, tVecStr Rec::*m) {
        w.Put32(static_cast<uint32_t>((r.*m).size()));
        for (const std::string& s : r.*m)
            w.PutStr(s);
    }
    template <class E>
    void List(const char*, std::vector<E> Rec::*m) {
        w.Put32(static_cast<uint32_t>((r.*m).size()));
        for (const E& e : r.*m)
            EncodeRecord(w, e);
    }
};

template <class Rec>
static void EncodeRecord(Writer& w, const Rec& r) {
    EncodeWalk<Rec> e{w, r};
    RecordFields<Rec>::Walk(e);
}

void EncodeConf(Writer& w, const cConf_Inf& c) {
    EncodeRecord(w, c);
}

void EncodeSvr(Writer& w, const cSvrState& s) {
    EncodeRecord(w, s);
}

// ---- decoding, within a memory budget ----

static int GetValue(Reader& r, DecodeBudget&, char& v) {
    uint8_t u = 0;
    int rc = r.Get8(u);
    v = static_cast<char>(u);
    return rc;
}
static int GetValue(Reader& r, DecodeBudget&, short& v) {
    uint16_t u = 0;
    int rc = r.Get16(u);
    v = static_cast<short>(u);
    return rc;
}
static int GetValue(Reader& r, DecodeBudget&, int& v) {
    uint32_t u = 0;
    int rc = r.Get32(u);
    v = static_cast<int>(u);
    return rc;
}
static int GetValue(Reader& r, DecodeBudget&, unsigned long& v) {
    uint64_t u = 0;
    int rc = r.Get64(u);
    v = static_cast<unsigned long>(u);
    return rc;
}
template <size_t N>
static int GetValue(Reader& r, DecodeBudget&, char (&v)[N]) {
    return r.GetCharArray(v, N);
}

// A text longer than the small-string buffer costs a heap block: its bytes,
// the terminator and the allocator's own overhead.
static size_t StringHeapCost(size_t len) {
    return len < sizeof(std::string) / 2 ? 0 : len + 1 + 16;
}

static int GetValue(Reader& r, DecodeBudget& b, std::string& v) {
    if (r.Left() < 4)
        return em_GetStrReadBuffNotEnough;
    uint32_t n = 0;
    r.Get32(n);
    if (n > r.Left())
        return em_GetStrReadBuffNotEnough;
    if (!b.Charge(StringHeapCost(n)))
        return em_GetStrWriteBuffNotEnough;
    r.Rewind(4);
    return r.GetStr(v);
}

// A list count is checked before anything is allocated: against the bytes
// left (every element takes at least its smallest encoding), against the cap
// on list lengths, and against the memory budget.
static int GetCount(Reader& r, DecodeBudget& b, size_t minElemLen, size_t elemSize, uint32_t& n) {
    if (r.Get32(n) != em_OK)
        return em_GetStrReadBuffNotEnough;
    if (static_cast<uint64_t>(n) * minElemLen > r.Left())
        return em_GetStrReadBuffNotEnough;
    if (n > kMaxListLen)
        return em_GetStrWriteBuffNotEnough;
    if (!b.Charge(static_cast<size_t>(n) * elemSize))
        return em_GetStrWriteBuffNotEnough;
    return em_OK;
}

template <class Rec>
static int DecodeRecord(Reader& r, DecodeBudget& b, Rec& rec);

template <class Rec>
struct DecodeWalk {
    Reader& r;
    DecodeBudget& b;
    Rec& rec;
    int rc;
    template <class T>
    void Flag(const char*, T Rec::*m) {
        if (rc == em_OK)
            rc = GetValue(r, b, rec.*m);
    }
    template <class T>
    void Num(const char*, T Rec::*m) {
        if (rc == em_OK)
            rc = GetValue(r, b, rec.*m);
    }
    template <class T>
    void Text(const char*, T Rec::*m) {
        if (rc == em_OK)
            rc = GetValue(r, b, rec.*m);
    }
    void List(const char*, tVecStr Rec::*m) {
        uint32_t n = 0;
        if (rc != em_OK || (rc = GetCount(r, b, 4, sizeof(std::string), n)) != em_OK)
            return;
        (rec.*m).resize(n);
        for (uint32_t i = 0; i < n && rc == em_OK; ++i)
            rc = GetValue(r, b, (rec.*m)[i]);
    }
    template <class E>
    void List(const char*, std::vector<E> Rec::*m) {
        uint32_t n = 0;
        if (rc != em_OK || (rc = GetCount(r, b, MinEncodedLen<E>(), sizeof(E), n)) != em_OK)
            return;
        (rec.*m).resize(n);
        for (uint32_t i = 0; i < n && rc == em_OK; ++i)
            rc = DecodeRecord(r, b, (rec.*m)[i]);
    }
};

template <class Rec>
static int DecodeRecord(Reader& r, DecodeBudget& b, Rec& rec) {
    DecodeWalk<Rec> d{r, b, rec, em_OK};
    RecordFields<Rec>::Walk(d);
    return d.rc;
}

int DecodeConf(Reader& r, cConf_Inf& c) {
    DecodeBudget b(DecodeBudget::ForBody(r.Left()));
    return DecodeRecord(r, b, c);
}

int DecodeSvr(Reader& r, cSvrState& s) {
    DecodeBudget b(DecodeBudget::ForBody(r.Left()));
    return DecodeRecord(r, b, s);
}

// ---- framing ----

void PutRequestHeader(char out[kReqHeaderLen], uint32_t pkglen, short cmd) {
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<char>((pkglen >> (8 * i)) & 0xff);
    uint16_t c = static_cast<uint16_t>(cmd);
    out[4] = static_cast<char>(c & 0xff);
    out[5] = static_cast<char>(c >> 8);
}

int ParseRequestHeader(const char* p, size_t n, RequestHeader& h) {
    if (n < kReqHeaderLen)
        return em_ParsePkgPkglenNotMatch;
    h.pkglen = static_cast<uint32_t>(LoadLE(p, 4));
    h.cmd = static_cast<short>(LoadLE(p + 4, 2));
    if (h.pkglen < kReqHeaderLen || h.pkglen > kMaxRequestLen)
        return em_ParsePkgPkglenNotMatch;
    return em_OK;
}

void BuildAnswer(std::string& out, short cmd, int result, const std::string& detail,
                 const char* body, size_t bodyLen) {
    size_t detailLen = detail.size() < kMaxDetailLen ? detail.size() : kMaxDetailLen;
    out.clear();
    out.reserve(kAnsFixedLen + detailLen + bodyLen);
    Writer w(out);
    w.Put32(static_cast<uint32_t>(kAnsFixedLen + detailLen + bodyLen));
    w.Put16(static_cast<uint16_t>(cmd));
    w.Put32(static_cast<uint32_t>(result));
    w.PutStr(detail.data(), detailLen);
    w.PutBytes(body, bodyLen);
}

int ParseAnswerLength(const char* p, size_t n, uint32_t& pkglen) {
    if (n < 4)
        return em_ComSendReqPkgRecvFinUnexpect;
    pkglen = static_cast<uint32_t>(LoadLE(p, 4));
    if (pkglen < kAnsFixedLen || pkglen > kMaxAnswerLen)
        return em_ParsePkgPkglenNotMatch;
    return em_OK;
}

int ParseAnswer(const char* p, size_t n, AnswerView& a) {
    NV_TRY(ParseAnswerLength(p, n, a.pkglen));
    if (a.pkglen != n)
        return em_ParsePkgPkglenNotMatch;
    Reader r(p + 4, n - 4);
    uint16_t cmd = 0;
    uint32_t result = 0;
    NV_TRY(r.Get16(cmd));
    NV_TRY(r.Get32(result));
    // The detail's length is checked before its bytes are copied.
    uint32_t detailLen = 0;
    if (r.Get32(detailLen) != em_OK)
        return em_GetStrReadBuffNotEnough;
    if (detailLen > kMaxDetailLen)
        return em_GetStrFromResPkgStrEndOutOfRange;
    r.Rewind(4);
    NV_TRY(r.GetStr(a.detail));
    a.cmd = static_cast<short>(cmd);
    a.result = static_cast<int>(result);
    a.bodyLen = r.Left();
    a.body = p + (n - a.bodyLen);
    return em_OK;
}

int DecodeStateBody(const char* body, size_t n, cConf_Inf& c, cSvrState& s) {
    Reader r(body, n);
    DecodeBudget b(DecodeBudget::ForBody(n));
    NV_TRY(DecodeRecord(r, b, c));
    NV_TRY(DecodeRecord(r, b, s));
    return r.Left() == 0 ? em_OK : em_ParsePkgPkglenNotMatch;
}

}  // namespace nvwire
