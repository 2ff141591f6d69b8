// The detail catalogue's lookup: which row a full English sentence belongs
// to, its short form in the console's language with the parts re-inserted
// (translated too when they are sentences with rows of their own), fitted to
// the information line and encoded as the console reads it.
#ifndef NV_AGENT_DETAILS_DETAIL_LOOKUP_H
#define NV_AGENT_DETAILS_DETAIL_LOOKUP_H

#include <string>
#include <vector>

#include "agent/details/detail_row.h"
#include "agent/details/detail_text.h"

namespace nvagent {

// Whether text matches the szFull pattern as a whole; parts gets the text
// each "{}" stood for (each as short as the rest of the pattern allows).
bool MatchDetailPattern(const char* pattern, const std::string& text,
                        std::vector<std::string>& parts);

// The first row of the catalogue whose szFull matches text, with its parts;
// null when no row does.
const DetailRow* FindDetailRow(const std::string& text, std::vector<std::string>& parts);

// The form of row for lang (szEn, szFull for a null szEn, or szZh) with
// parts inserted, encoded for lang and fitted to width bytes by shortening
// the inserted parts at character boundaries.
std::string ExpandDetailRow(const DetailRow& row, const std::vector<std::string>& parts,
                            DetailLang lang, size_t width = kDetailWidth);

// The detail an answer carries to a console whose language setting is
// langCode: the short form of full's row, or full itself (fitted) when it has
// no row. An empty detail stays empty.
std::string LocaliseDetail(const std::string& full, int langCode);

}  // namespace nvagent

#endif
