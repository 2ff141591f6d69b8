// Framing and the bounded field codec of the agent protocol.
#include "wire/wire.h"

#include <cstring>

#include "link/result_codes.h"

namespace nvwire {

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

// ---- field helpers: one Put/Get pair per field type ----

static void PutChar(Writer& w, char c) {
    w.Put8(static_cast<uint8_t>(c));
}
static void PutInt(Writer& w, int v) {
    w.Put32(static_cast<uint32_t>(v));
}
static void PutShort(Writer& w, short v) {
    w.Put16(static_cast<uint16_t>(v));
}
static void PutULong(Writer& w, unsigned long v) {
    w.Put64(v);
}
static void PutCStr(Writer& w, const char* s, size_t cap) {
    w.PutStr(s, strnlen(s, cap));
}

static void PutVecStr(Writer& w, const tVecStr& v) {
    w.Put32(static_cast<uint32_t>(v.size()));
    for (const std::string& s : v)
        w.PutStr(s);
}

static int GetChar(Reader& r, char& c) {
    uint8_t v = 0;
    int rc = r.Get8(v);
    c = static_cast<char>(v);
    return rc;
}

static int GetInt(Reader& r, int& i) {
    uint32_t v = 0;
    int rc = r.Get32(v);
    i = static_cast<int>(v);
    return rc;
}

static int GetShort(Reader& r, short& sh) {
    uint16_t v = 0;
    int rc = r.Get16(v);
    sh = static_cast<short>(v);
    return rc;
}

static int GetULong(Reader& r, unsigned long& ul) {
    uint64_t v = 0;
    int rc = r.Get64(v);
    ul = static_cast<unsigned long>(v);
    return rc;
}

// A vector count can never exceed the bytes left, since every element takes
// at least one byte (four for a string): refusing early bounds the allocation.
static int GetCount(Reader& r, uint32_t& n, size_t minElemLen) {
    if (r.Get32(n) != em_OK)
        return em_GetStrReadBuffNotEnough;
    if (static_cast<uint64_t>(n) * minElemLen > r.Left())
        return em_GetStrReadBuffNotEnough;
    return em_OK;
}

static int GetVecStr(Reader& r, tVecStr& v) {
    uint32_t n = 0;
    int rc = GetCount(r, n, 4);
    if (rc != em_OK)
        return rc;
    v.resize(n);
    for (uint32_t i = 0; i < n; ++i) {
        if ((rc = r.GetStr(v[i])) != em_OK)
            return rc;
    }
    return em_OK;
}

template <typename T, typename EncFn>
static void PutVec(Writer& w, const std::vector<T>& v, EncFn enc) {
    w.Put32(static_cast<uint32_t>(v.size()));
    for (const T& e : v)
        enc(w, e);
}

template <typename T, typename DecFn>
static int GetVec(Reader& r, std::vector<T>& v, size_t minElemLen, DecFn dec) {
    uint32_t n = 0;
    int rc = GetCount(r, n, minElemLen);
    if (rc != em_OK)
        return rc;
    v.resize(n);
    for (uint32_t i = 0; i < n; ++i) {
        if ((rc = dec(r, v[i])) != em_OK)
            return rc;
    }
    return em_OK;
}

#define NV_TRY(expr)         \
    do {                     \
        int nv_rc_ = (expr); \
        if (nv_rc_ != em_OK) \
            return nv_rc_;   \
    } while (0)

// ---- element records ----

static void PutDiskVolume(Writer& w, const cDiskVolume& d) {
    PutCStr(w, d.szPart, sizeof d.szPart);
    PutInt(w, d.iCeil);
    PutInt(w, d.iFloor);
    PutInt(w, d.iItv);
}

static int GetDiskVolume(Reader& r, cDiskVolume& d) {
    NV_TRY(r.GetCharArray(d.szPart, sizeof d.szPart));
    NV_TRY(GetInt(r, d.iCeil));
    NV_TRY(GetInt(r, d.iFloor));
    return GetInt(r, d.iItv);
}

static void PutBakForSize(Writer& w, const cBakForSize& b) {
    PutCStr(w, b.szFileName, sizeof b.szFileName);
    PutCStr(w, b.szBakDir, sizeof b.szBakDir);
    PutInt(w, b.iKilobyte);
}

static int GetBakForSize(Reader& r, cBakForSize& b) {
    NV_TRY(r.GetCharArray(b.szFileName, sizeof b.szFileName));
    NV_TRY(r.GetCharArray(b.szBakDir, sizeof b.szBakDir));
    return GetInt(r, b.iKilobyte);
}

static void PutTcpListen(Writer& w, const cTcpListen& t) {
    PutCStr(w, t.szListenAddr, sizeof t.szListenAddr);
    PutInt(w, t.iPid);
    PutCStr(w, t.szProgramName, sizeof t.szProgramName);
}

static int GetTcpListen(Reader& r, cTcpListen& t) {
    NV_TRY(r.GetCharArray(t.szListenAddr, sizeof t.szListenAddr));
    NV_TRY(GetInt(r, t.iPid));
    return r.GetCharArray(t.szProgramName, sizeof t.szProgramName);
}

static void PutDiskInfo(Writer& w, const cDiskInfo& d) {
    PutCStr(w, d.szPart, sizeof d.szPart);
    PutCStr(w, d.szFS, sizeof d.szFS);
    PutInt(w, d.iSizeTotal);
    PutInt(w, d.iUsed);
    PutInt(w, d.iAvailable);
    PutCStr(w, d.szMountOn, sizeof d.szMountOn);
}

static int GetDiskInfo(Reader& r, cDiskInfo& d) {
    NV_TRY(r.GetCharArray(d.szPart, sizeof d.szPart));
    NV_TRY(r.GetCharArray(d.szFS, sizeof d.szFS));
    NV_TRY(GetInt(r, d.iSizeTotal));
    NV_TRY(GetInt(r, d.iUsed));
    NV_TRY(GetInt(r, d.iAvailable));
    return r.GetCharArray(d.szMountOn, sizeof d.szMountOn);
}

// ---- the two records, field by field in declaration order ----

void EncodeConf(Writer& w, const cConf_Inf& c) {
    PutChar(w, c.chIcmpEchoIgnoreAll);
    PutChar(w, c.chTcpSyncookies);
    PutChar(w, c.chTcpTwReuse);
    PutULong(w, c.ulShmMax);
    PutULong(w, c.ulShmAll);
    PutULong(w, c.ulShmMni);
    PutULong(w, c.ulThreadMax);
    PutULong(w, c.ulFileMax);
    PutVecStr(w, c.vFileMonitList);
    PutChar(w, c.chFileMonitFlag);
    PutVecStr(w, c.vProcessMonitList);
    PutChar(w, c.chProcessMonitFlag);
    PutShort(w, c.shCpuCeil);
    PutShort(w, c.shCpuFloor);
    PutChar(w, c.chCpuMonitFlag);
    PutInt(w, c.iMemCeil);
    PutChar(w, c.chMemMonitFlag);
    PutVec(w, c.vDV, PutDiskVolume);
    PutVecStr(w, c.vsDV);
    PutChar(w, c.chDVMonitFlag);
    PutVec(w, c.vBakForSize, PutBakForSize);
    PutVecStr(w, c.vsBakForSize);
    PutChar(w, c.chBakForSizeFlag);
    PutChar(w, c.chVsftpdAnonEnable);
    PutChar(w, c.chVsftpdAnonUpload);
    PutChar(w, c.chVsftpdAnonMkdir);
    w.PutStr(c.sVsftpdAnonRoot);
    PutChar(w, c.chVsftpdLocalEnable);
    PutChar(w, c.chVsftpdWrite);
    PutChar(w, c.chVsftpdRunFlag);
    w.PutStr(c.sSambaSharePath);
    PutChar(w, c.chSambaShareWrite);
    PutChar(w, c.chSambaRunFlag);
    PutChar(w, c.chOSReleaseVersion);
    PutChar(w, c.chLangCode);
    PutInt(w, c.iSeqLinkRcInit);
    w.PutStr(c.sHostname);
    w.PutStr(c.sNowDate);
    w.PutStr(c.sNowTime);
    w.PutStr(c.sVersion);
}

int DecodeConf(Reader& r, cConf_Inf& c) {
    NV_TRY(GetChar(r, c.chIcmpEchoIgnoreAll));
    NV_TRY(GetChar(r, c.chTcpSyncookies));
    NV_TRY(GetChar(r, c.chTcpTwReuse));
    NV_TRY(GetULong(r, c.ulShmMax));
    NV_TRY(GetULong(r, c.ulShmAll));
    NV_TRY(GetULong(r, c.ulShmMni));
    NV_TRY(GetULong(r, c.ulThreadMax));
    NV_TRY(GetULong(r, c.ulFileMax));
    NV_TRY(GetVecStr(r, c.vFileMonitList));
    NV_TRY(GetChar(r, c.chFileMonitFlag));
    NV_TRY(GetVecStr(r, c.vProcessMonitList));
    NV_TRY(GetChar(r, c.chProcessMonitFlag));
    NV_TRY(GetShort(r, c.shCpuCeil));
    NV_TRY(GetShort(r, c.shCpuFloor));
    NV_TRY(GetChar(r, c.chCpuMonitFlag));
    NV_TRY(GetInt(r, c.iMemCeil));
    NV_TRY(GetChar(r, c.chMemMonitFlag));
    NV_TRY(GetVec(r, c.vDV, 16, GetDiskVolume));
    NV_TRY(GetVecStr(r, c.vsDV));
    NV_TRY(GetChar(r, c.chDVMonitFlag));
    NV_TRY(GetVec(r, c.vBakForSize, 12, GetBakForSize));
    NV_TRY(GetVecStr(r, c.vsBakForSize));
    NV_TRY(GetChar(r, c.chBakForSizeFlag));
    NV_TRY(GetChar(r, c.chVsftpdAnonEnable));
    NV_TRY(GetChar(r, c.chVsftpdAnonUpload));
    NV_TRY(GetChar(r, c.chVsftpdAnonMkdir));
    NV_TRY(r.GetStr(c.sVsftpdAnonRoot));
    NV_TRY(GetChar(r, c.chVsftpdLocalEnable));
    NV_TRY(GetChar(r, c.chVsftpdWrite));
    NV_TRY(GetChar(r, c.chVsftpdRunFlag));
    NV_TRY(r.GetStr(c.sSambaSharePath));
    NV_TRY(GetChar(r, c.chSambaShareWrite));
    NV_TRY(GetChar(r, c.chSambaRunFlag));
    NV_TRY(GetChar(r, c.chOSReleaseVersion));
    NV_TRY(GetChar(r, c.chLangCode));
    NV_TRY(GetInt(r, c.iSeqLinkRcInit));
    NV_TRY(r.GetStr(c.sHostname));
    NV_TRY(r.GetStr(c.sNowDate));
    NV_TRY(r.GetStr(c.sNowTime));
    return r.GetStr(c.sVersion);
}

void EncodeSvr(Writer& w, const cSvrState& s) {
    PutVec(w, s.vTcpListen, PutTcpListen);
    PutVecStr(w, s.vsTcpListenList);
    PutInt(w, s.iMemTotal);
    PutInt(w, s.iMemUse);
    PutInt(w, s.iMemFree);
    PutVec(w, s.vDiskInfo, PutDiskInfo);
    PutVecStr(w, s.vsDiskInfoList);
    PutVecStr(w, s.vsIptablesInputList);
    PutChar(w, s.chIptablesInputPolicy);
    PutVecStr(w, s.vsIptablesOutputList);
    PutChar(w, s.chIptablesOutputPolicy);
    PutVecStr(w, s.vsIfconfigList);
}

int DecodeSvr(Reader& r, cSvrState& s) {
    NV_TRY(GetVec(r, s.vTcpListen, 12, GetTcpListen));
    NV_TRY(GetVecStr(r, s.vsTcpListenList));
    NV_TRY(GetInt(r, s.iMemTotal));
    NV_TRY(GetInt(r, s.iMemUse));
    NV_TRY(GetInt(r, s.iMemFree));
    NV_TRY(GetVec(r, s.vDiskInfo, 28, GetDiskInfo));
    NV_TRY(GetVecStr(r, s.vsDiskInfoList));
    NV_TRY(GetVecStr(r, s.vsIptablesInputList));
    NV_TRY(GetChar(r, s.chIptablesInputPolicy));
    NV_TRY(GetVecStr(r, s.vsIptablesOutputList));
    NV_TRY(GetChar(r, s.chIptablesOutputPolicy));
    return GetVecStr(r, s.vsIfconfigList);
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
    NV_TRY(r.GetStr(a.detail));
    if (a.detail.size() > kMaxDetailLen)
        return em_GetStrFromResPkgStrEndOutOfRange;
    a.cmd = static_cast<short>(cmd);
    a.result = static_cast<int>(result);
    a.bodyLen = r.Left();
    a.body = p + (n - a.bodyLen);
    return em_OK;
}

int DecodeStateBody(const char* body, size_t n, cConf_Inf& c, cSvrState& s) {
    Reader r(body, n);
    NV_TRY(DecodeConf(r, c));
    NV_TRY(DecodeSvr(r, s));
    return r.Left() == 0 ? em_OK : em_ParsePkgPkglenNotMatch;
}

}  // namespace nvwire
