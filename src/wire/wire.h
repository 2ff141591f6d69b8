// The packet format between the command-client library and the agent:
// request and answer framing, and the bounded, validating field codec that
// carries cConf_Inf and cSvrState in a check answer. All integers are
// little-endian. docs/protocol.md describes the format for readers.
#ifndef NV_WIRE_WIRE_H
#define NV_WIRE_WIRE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "link/state_record.h"

namespace nvwire {

// Request: u32 packet length (header included), i16 command number, payload.
// The console's "payload length + 6" is exactly this packet length.
constexpr uint32_t kReqHeaderLen = 6;
// Answer: u32 packet length, i16 command echoed, i32 result, u32 detail
// length, detail bytes, then the body (the state, for a check answer).
constexpr uint32_t kAnsFixedLen = 14;

constexpr uint32_t kMaxRequestLen = 1u << 20;
constexpr uint32_t kMaxAnswerLen = 64u << 20;
constexpr uint32_t kMaxDetailLen = 4096;

// Command numbers of our own, outside the console's settable range 4..63.
constexpr short kCmdCheck = 1;
constexpr short kCmdSetLang = 2;

// Appends fixed-width little-endian fields to a byte string.
class Writer {
public:
    explicit Writer(std::string& out) : m_out(out) {}
    void Put8(uint8_t v) { m_out.push_back(static_cast<char>(v)); }
    void Put16(uint16_t v);
    void Put32(uint32_t v);
    void Put64(uint64_t v);
    // u32 length, then the bytes.
    void PutStr(const char* p, size_t n);
    void PutStr(const std::string& s) { PutStr(s.data(), s.size()); }
    void PutBytes(const char* p, size_t n) { m_out.append(p, n); }

private:
    std::string& m_out;
};

// Reads fields without ever passing the end of what was received. Each call
// returns em_OK or the EM_RET code of the field that did not fit.
class Reader {
public:
    Reader(const char* p, size_t n) : m_p(p), m_left(n) {}
    int Get8(uint8_t& v);
    int Get16(uint16_t& v);
    int Get32(uint32_t& v);
    int Get64(uint64_t& v);
    int GetStr(std::string& s);
    // A string into a NUL-terminated char array of cap bytes; a longer string
    // is refused with em_GetStrWriteBuffNotEnough.
    int GetCharArray(char* dst, size_t cap);
    size_t Left() const { return m_left; }
    // Steps back over n bytes just read.
    void Rewind(size_t n) {
        m_p -= n;
        m_left += n;
    }

private:
    const char* m_p;
    size_t m_left;
};

// Longest list a check answer may carry: far above any real server's count
// of rules, listeners, disks or monitored items, and low enough that a count
// alone cannot make the decoder reserve much. A longer list is refused with
// em_GetStrWriteBuffNotEnough.
constexpr uint32_t kMaxListLen = 262144;

// The memory a decode may take for the records it fills: three times the
// body plus a fixed allowance, so that with the received packet itself the
// peak stays within four times the packet plus that allowance whatever the
// packet holds. Elements and long texts are charged as they are allocated;
// a decode that would exceed its budget is refused with
// em_GetStrWriteBuffNotEnough before the allocation.
class DecodeBudget {
public:
    static constexpr size_t kAllowance = 16u << 20;
    static size_t ForBody(size_t bodyLen) { return 3 * bodyLen + kAllowance; }
    explicit DecodeBudget(size_t bytes) : m_left(bytes) {}
    bool Charge(size_t n) {
        if (n > m_left)
            return false;
        m_left -= n;
        return true;
    }
    size_t Left() const { return m_left; }

private:
    size_t m_left;
};

// The smallest number of bytes one record of type Rec takes on the wire,
// derived from its field list (cDiskVolume, cBakForSize, cTcpListen,
// cDiskInfo, cConf_Inf, cSvrState).
template <class Rec>
size_t MinEncodedLen();

void EncodeConf(Writer& w, const cConf_Inf& c);
void EncodeSvr(Writer& w, const cSvrState& s);
// Decode into the given records, each with a budget of its own reader's
// remaining bytes; on failure their content is unspecified, so callers
// decode into scratch records and swap on success.
int DecodeConf(Reader& r, cConf_Inf& c);
int DecodeSvr(Reader& r, cSvrState& s);

// Request framing.
void PutRequestHeader(char out[kReqHeaderLen], uint32_t pkglen, short cmd);
struct RequestHeader {
    uint32_t pkglen;
    short cmd;
};
// Validates the 6 header bytes: em_OK, or em_ParsePkgPkglenNotMatch for a
// length below the header or above kMaxRequestLen.
int ParseRequestHeader(const char* p, size_t n, RequestHeader& h);

// Answer framing. BuildAnswer writes the whole packet, length included; the
// detail is cut to kMaxDetailLen.
void BuildAnswer(std::string& out, short cmd, int result, const std::string& detail,
                 const char* body, size_t bodyLen);

struct AnswerView {
    uint32_t pkglen;
    short cmd;
    int result;
    std::string detail;
    const char* body;
    size_t bodyLen;
};
// Reads the 4-byte packet length at the start of an answer and checks its
// range: em_OK or em_ParsePkgPkglenNotMatch.
int ParseAnswerLength(const char* p, size_t n, uint32_t& pkglen);
// Parses a whole answer packet of n bytes (n must equal its length field).
int ParseAnswer(const char* p, size_t n, AnswerView& a);
// Decodes the check body of an answer into the two records within
// DecodeBudget::ForBody(n); the body must be consumed exactly
// (em_ParsePkgPkglenNotMatch otherwise).
int DecodeStateBody(const char* body, size_t n, cConf_Inf& c, cSvrState& s);

}  // namespace nvwire

#endif
