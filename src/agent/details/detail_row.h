// One row of the agent's detail catalogue. Code builds each detail as a full
// English sentence, which the journal keeps whole; the information line is
// one row in the console's language, so every sentence the agent can send
// has a row giving its short form in English and in Simplified Chinese.
//
//   szFull  the sentence as the code builds it; "{}" stands for any text
//           (the parts the code fills in), matched in order.
//   szEn    the short English form; "{1}".."{9}" insert the parts matched by
//           the first, second... "{}" of szFull. Null: szFull as it is.
//   szZh    the short Chinese form, UTF-8 (the GB2312 form is converted from
//           it when sent), with the same "{N}" references.
//
// Short forms fit 78 bytes with their inserted parts shortened as needed;
// a part that is itself a sentence with a row of its own is translated too.
#ifndef NV_AGENT_DETAILS_DETAIL_ROW_H
#define NV_AGENT_DETAILS_DETAIL_ROW_H

#include <cstddef>

namespace nvagent {

struct DetailRow {
    const char* szFull;
    const char* szEn;
    const char* szZh;
};

// One domain's rows (a file of the catalogue each).
struct DetailTable {
    const DetailRow* pRows;
    size_t nRows;
};

}  // namespace nvagent

#endif
