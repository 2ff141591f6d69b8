// The protocol codec: round trips, and a decoder that refuses every
// truncated, oversized or malformed input with a code instead of crashing.
#include <gtest/gtest.h>

#include "link/result_codes.h"
#include "random_state.h"
#include "state_samples.h"
#include "wire/wire.h"

namespace {

std::string EncodeBody(const cConf_Inf& c, const cSvrState& s) {
    std::string body;
    nvwire::Writer w(body);
    nvwire::EncodeConf(w, c);
    nvwire::EncodeSvr(w, s);
    return body;
}

TEST(Wire, StateRoundTrip) {
    cConf_Inf c;
    cSvrState s;
    FillSampleState(c, s);
    std::string body = EncodeBody(c, s);
    cConf_Inf c2;
    cSvrState s2;
    ASSERT_EQ(nvwire::DecodeStateBody(body.data(), body.size(), c2, s2), em_OK);
    EXPECT_EQ(EncodeBody(c2, s2), body);
    EXPECT_EQ(c2.ulShmMax, 33554432UL);
    EXPECT_EQ(c2.vFileMonitList, c.vFileMonitList);
    EXPECT_STREQ(c2.vDV.at(0).szPart, "/dev/vdb1");
    EXPECT_EQ(c2.vDV.at(0).iItv, 50);
    EXPECT_EQ(c2.shCpuFloor, 5);
    EXPECT_EQ(c2.sVersion, "2.4.1");
    EXPECT_EQ(s2.vsIfconfigList, s.vsIfconfigList);
    EXPECT_EQ(s2.chIptablesInputPolicy, '2');
    EXPECT_STREQ(s2.vDiskInfo.at(0).szMountOn, "/");
    EXPECT_EQ(s2.vTcpListen.at(0).iPid, 812);
}

TEST(Wire, EveryTruncationIsRefused) {
    cConf_Inf c;
    cSvrState s;
    FillSampleState(c, s);
    std::string body = EncodeBody(c, s);
    for (size_t n = 0; n < body.size(); ++n) {
        cConf_Inf c2;
        cSvrState s2;
        int rc = nvwire::DecodeStateBody(body.data(), n, c2, s2);
        EXPECT_LT(rc, 0) << "cut at " << n;
    }
}

TEST(Wire, TrailingBytesAreRefused) {
    cConf_Inf c;
    cSvrState s;
    std::string body = EncodeBody(c, s) + "x";
    EXPECT_EQ(nvwire::DecodeStateBody(body.data(), body.size(), c, s), em_ParsePkgPkglenNotMatch);
}

TEST(Wire, HugeCountIsRefusedWithoutAllocating) {
    std::string body;
    nvwire::Writer w(body);
    for (int i = 0; i < 3; ++i)
        w.Put8('1');
    for (int i = 0; i < 5; ++i)
        w.Put64(1);
    w.Put32(0xffffffffu);  // vFileMonitList count
    cConf_Inf c;
    nvwire::Reader r(body.data(), body.size());
    EXPECT_EQ(nvwire::DecodeConf(r, c), em_GetStrReadBuffNotEnough);
}

TEST(Wire, StringLongerThanItsArrayIsRefused) {
    std::string body;
    nvwire::Writer w(body);
    w.PutStr(std::string(256, 'a'));
    char dst[256];
    nvwire::Reader r(body.data(), body.size());
    EXPECT_EQ(r.GetCharArray(dst, sizeof dst), em_GetStrWriteBuffNotEnough);
    std::string ok;
    nvwire::Writer w2(ok);
    w2.PutStr(std::string(255, 'a'));
    nvwire::Reader r2(ok.data(), ok.size());
    EXPECT_EQ(r2.GetCharArray(dst, sizeof dst), em_OK);
    EXPECT_EQ(strlen(dst), 255u);
}

TEST(Wire, ShortReadsNameTheirFieldType) {
    const char b[1] = {0};
    nvwire::Reader r(b, 0);
    uint8_t v8;
    uint16_t v16;
    uint32_t v32;
    uint64_t v64;
    std::string s;
    EXPECT_EQ(r.Get8(v8), em_GetCharReadBuffNotEnough);
    EXPECT_EQ(r.Get16(v16), em_GetShortReadBuffNotEnough);
    EXPECT_EQ(r.Get32(v32), em_GetIntReadBuffNotEnough);
    EXPECT_EQ(r.Get64(v64), em_GetIntReadBuffNotEnough);
    EXPECT_EQ(r.GetStr(s), em_GetStrReadBuffNotEnough);
}

TEST(Wire, RequestHeader) {
    char hdr[nvwire::kReqHeaderLen];
    nvwire::PutRequestHeader(hdr, 9, 57);
    nvwire::RequestHeader h;
    ASSERT_EQ(nvwire::ParseRequestHeader(hdr, sizeof hdr, h), em_OK);
    EXPECT_EQ(h.pkglen, 9u);
    EXPECT_EQ(h.cmd, 57);
    EXPECT_EQ(std::string(hdr, 6), std::string("\x09\x00\x00\x00\x39\x00", 6));
    nvwire::PutRequestHeader(hdr, 5, 57);
    EXPECT_EQ(nvwire::ParseRequestHeader(hdr, sizeof hdr, h), em_ParsePkgPkglenNotMatch);
    nvwire::PutRequestHeader(hdr, nvwire::kMaxRequestLen + 1, 57);
    EXPECT_EQ(nvwire::ParseRequestHeader(hdr, sizeof hdr, h), em_ParsePkgPkglenNotMatch);
    EXPECT_EQ(nvwire::ParseRequestHeader(hdr, 5, h), em_ParsePkgPkglenNotMatch);
}

TEST(Wire, AnswerRoundTrip) {
    std::string pkt;
    nvwire::BuildAnswer(pkt, 57, em_ActSuccAll, "Host name set.", "BODY", 4);
    nvwire::AnswerView a;
    ASSERT_EQ(nvwire::ParseAnswer(pkt.data(), pkt.size(), a), em_OK);
    EXPECT_EQ(a.pkglen, pkt.size());
    EXPECT_EQ(a.cmd, 57);
    EXPECT_EQ(a.result, em_ActSuccAll);
    EXPECT_EQ(a.detail, "Host name set.");
    EXPECT_EQ(std::string(a.body, a.bodyLen), "BODY");
}

TEST(Wire, NegativeResultSurvives) {
    std::string pkt;
    nvwire::BuildAnswer(pkt, 3, em_ParsePkgCmdNoOutOfRange, "", nullptr, 0);
    nvwire::AnswerView a;
    ASSERT_EQ(nvwire::ParseAnswer(pkt.data(), pkt.size(), a), em_OK);
    EXPECT_EQ(a.result, em_ParsePkgCmdNoOutOfRange);
}

TEST(Wire, AnswerLengthMismatchIsRefused) {
    std::string pkt;
    nvwire::BuildAnswer(pkt, 7, em_ActSuccAll, "ok", nullptr, 0);
    nvwire::AnswerView a;
    EXPECT_EQ(nvwire::ParseAnswer(pkt.data(), pkt.size() - 1, a), em_ParsePkgPkglenNotMatch);
    std::string longer = pkt + "zz";
    EXPECT_EQ(nvwire::ParseAnswer(longer.data(), longer.size(), a), em_ParsePkgPkglenNotMatch);
    uint32_t len;
    EXPECT_EQ(nvwire::ParseAnswerLength(pkt.data(), 3, len), em_ComSendReqPkgRecvFinUnexpect);
    std::string tiny("\x05\x00\x00\x00", 4);
    EXPECT_EQ(nvwire::ParseAnswerLength(tiny.data(), 4, len), em_ParsePkgPkglenNotMatch);
}

TEST(Wire, DetailIsBounded) {
    std::string pkt;
    nvwire::BuildAnswer(pkt, 7, em_ActFail, std::string(10000, 'd'), nullptr, 0);
    nvwire::AnswerView a;
    ASSERT_EQ(nvwire::ParseAnswer(pkt.data(), pkt.size(), a), em_OK);
    EXPECT_EQ(a.detail.size(), nvwire::kMaxDetailLen);
}

}  // namespace

// ---- the field list: derived minimum sizes and random round trips ----

namespace {

TEST(WireFields, SmallestEncodingsFollowFromTheFieldList) {
    // Texts take their 4-byte length, numbers their width.
    EXPECT_EQ(nvwire::MinEncodedLen<cDiskVolume>(), 4u + 3 * 4);
    EXPECT_EQ(nvwire::MinEncodedLen<cBakForSize>(), 2 * 4u + 4);
    EXPECT_EQ(nvwire::MinEncodedLen<cTcpListen>(), 4u + 4 + 4);
    EXPECT_EQ(nvwire::MinEncodedLen<cDiskInfo>(), 3 * 4u + 3 * 4);
    // Each minimum is exactly what an element of empty texts encodes to.
    cSvrState s;
    s.vDiskInfo.assign(1, cDiskInfo{});
    cConf_Inf c;
    std::string none = EncodeBody(c, cSvrState());
    std::string one = EncodeBody(c, s);
    EXPECT_EQ(one.size() - none.size(), nvwire::MinEncodedLen<cDiskInfo>());
}

TEST(WireFields, DiskRecordsWithEmptyTextsAreAccepted) {
    // Ten records of empty texts (24 bytes each) near the end of the body:
    // a decoder that took 28 bytes for the smallest record would think the
    // list ran past the end.
    cConf_Inf c;
    cSvrState s;
    s.vDiskInfo.assign(10, cDiskInfo{});
    s.vDiskInfo[1].iUsed = 7;
    std::string body = EncodeBody(c, s);
    cConf_Inf c2;
    cSvrState s2;
    ASSERT_EQ(nvwire::DecodeStateBody(body.data(), body.size(), c2, s2), em_OK);
    EXPECT_EQ(nvtest::StateDifference(c, s, c2, s2), "");
}

TEST(WireFields, RandomStructuredStatesRoundTrip) {
    for (uint32_t seed = 1; seed <= 2000; ++seed) {
        nvtest::SeededSource src(seed);
        cConf_Inf c;
        cSvrState s;
        nvtest::RandomState(src, c, s);
        std::string body = EncodeBody(c, s);
        cConf_Inf c2;
        cSvrState s2;
        ASSERT_EQ(nvwire::DecodeStateBody(body.data(), body.size(), c2, s2), em_OK)
            << "seed " << seed;
        ASSERT_EQ(nvtest::StateDifference(c, s, c2, s2), "") << "seed " << seed;
        ASSERT_EQ(EncodeBody(c2, s2), body) << "seed " << seed;
    }
}

TEST(WireFields, EveryCutOfARandomStateIsRefused) {
    nvtest::SeededSource src(7);
    cConf_Inf c;
    cSvrState s;
    nvtest::RandomState(src, c, s);
    std::string body = EncodeBody(c, s);
    for (size_t n = 0; n < body.size(); ++n) {
        cConf_Inf c2;
        cSvrState s2;
        ASSERT_NE(nvwire::DecodeStateBody(body.data(), n, c2, s2), em_OK) << "cut at " << n;
    }
}

}  // namespace
