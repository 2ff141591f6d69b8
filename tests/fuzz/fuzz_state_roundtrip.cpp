// Fuzz target: structured states. The first part of the input chooses every
// field of a cConf_Inf and a cSvrState through their field list; the state is
// encoded, decoded and must come back equal. The rest of the input then
// overwrites bytes of that encoding, and the decoder must refuse the result
// with a code or accept something that encodes back to the same bytes.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "link/result_codes.h"
#include "random_state.h"
#include "wire/wire.h"

namespace {

std::string Encode(const cConf_Inf& c, const cSvrState& s) {
    std::string body;
    nvwire::Writer w(body);
    nvwire::EncodeConf(w, c);
    nvwire::EncodeSvr(w, s);
    return body;
}

void Fail(const std::string& what) {
    fprintf(stderr, "fuzz_state_roundtrip: %s\n", what.c_str());
    abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    size_t half = size / 2;
    nvtest::ByteSource src(data, half);
    cConf_Inf c;
    cSvrState s;
    nvtest::RandomState(src, c, s);
    std::string body = Encode(c, s);

    cConf_Inf c2;
    cSvrState s2;
    if (nvwire::DecodeStateBody(body.data(), body.size(), c2, s2) != em_OK)
        Fail("an encoded state was refused");
    std::string diff = nvtest::StateDifference(c, s, c2, s2);
    if (!diff.empty())
        Fail("field " + diff + " changed in the round trip");

    // Overwrite: pairs of (position, byte) from the second half.
    std::string bent = body;
    for (size_t i = half; i + 1 < size && !bent.empty(); i += 2)
        bent[data[i] * 131u % bent.size()] = static_cast<char>(data[i + 1]);
    cConf_Inf c3;
    cSvrState s3;
    if (nvwire::DecodeStateBody(bent.data(), bent.size(), c3, s3) == em_OK) {
        std::string again = Encode(c3, s3);
        cConf_Inf c4;
        cSvrState s4;
        if (nvwire::DecodeStateBody(again.data(), again.size(), c4, s4) != em_OK ||
            !nvtest::StateDifference(c3, s3, c4, s4).empty())
            Fail("an accepted state does not round-trip");
    }
    return 0;
}
