// Matching a detail against the catalogue, inserting its parts into the
// short form and fitting the result to the information line.
#include "agent/details/detail_lookup.h"

#include <algorithm>
#include <cstring>

#include "agent/details/detail_registry.h"

namespace nvagent {

namespace {

// A translated part that is itself a sentence is looked up this deep at most.
constexpr int kMaxNesting = 2;
constexpr char kEllipsis[] = "...";
constexpr size_t kEllipsisLen = sizeof kEllipsis - 1;

struct Piece {
    std::string text;
    bool bPart;  // inserted (may be shortened), as against the form's own words
};

bool IsHole(const char* p) {
    return p[0] == '{' && p[1] == '}';
}

// A "{N}" reference at p: its number 1..9, or 0.
int RefAt(const char* p) {
    if (p[0] == '{' && p[1] >= '1' && p[1] <= '9' && p[2] == '}')
        return p[1] - '0';
    return 0;
}

// Blanks for the control characters a tool's message may carry: the
// information line is one row.
std::string OneLine(const std::string& s) {
    std::string out = s;
    for (char& c : out) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            c = ' ';
    }
    return out;
}

std::vector<Piece> Translate(const std::string& text, DetailLang lang, int depth);

// The text a part stands for in lang: its own short form when it is a
// sentence with a row, else the part as it is.
std::string PartText(const std::string& part, DetailLang lang, int depth) {
    std::vector<std::string> inner;
    if (depth >= kMaxNesting || FindDetailRow(part, inner) == nullptr)
        return OneLine(part);
    std::string joined;
    for (const Piece& p : Translate(part, lang, depth + 1))
        joined += p.text;
    return joined;
}

// The pieces of form with parts inserted: "{}" takes the next part in
// order (szFull used as its own short form), "{N}" the Nth.
std::vector<Piece> FormPieces(const char* form, const std::vector<std::string>& parts,
                              DetailLang lang, int depth) {
    std::vector<Piece> pieces;
    std::string literal;
    size_t next = 0;
    auto insert = [&](size_t idx) {
        if (!literal.empty())
            pieces.push_back({literal, false});
        literal.clear();
        pieces.push_back({idx < parts.size() ? PartText(parts[idx], lang, depth) : "", true});
    };
    for (const char* p = form; *p != '\0';) {
        if (IsHole(p)) {
            insert(next++);
            p += 2;
        } else if (int ref = RefAt(p)) {
            insert(static_cast<size_t>(ref - 1));
            p += 3;
        } else {
            literal.push_back(*p++);
        }
    }
    if (!literal.empty())
        pieces.push_back({literal, false});
    return pieces;
}

const char* FormFor(const DetailRow& row, DetailLang lang) {
    if (lang != DetailLang::kEnglish && row.szZh != nullptr)
        return row.szZh;
    return row.szEn != nullptr ? row.szEn : row.szFull;
}

std::vector<Piece> Translate(const std::string& text, DetailLang lang, int depth) {
    std::vector<std::string> parts;
    const DetailRow* row = FindDetailRow(text, parts);
    if (row == nullptr)
        return {{OneLine(text), true}};
    return FormPieces(FormFor(*row, lang), parts, lang, depth);
}

// What a part costs when every part is held to cap bytes: a longer one is
// cut at a character boundary and ends in an ellipsis.
size_t CappedLen(const std::string& s, size_t cap, bool gb2312) {
    if (s.size() <= cap)
        return s.size();
    return CutAtBoundary(s, cap - kEllipsisLen, gb2312) + kEllipsisLen;
}

// Joins the pieces, shortening the longest parts first, all to the same
// cap, so that the whole fits width bytes.
std::string Fit(std::vector<Piece>& pieces, size_t width, bool gb2312) {
    size_t literal = 0;
    size_t total = 0;
    size_t longest = 0;
    for (const Piece& p : pieces) {
        total += p.text.size();
        if (!p.bPart)
            literal += p.text.size();
        else
            longest = std::max(longest, p.text.size());
    }
    if (total > width && longest > kEllipsisLen) {
        size_t budget = width > literal ? width - literal : 0;
        auto cost = [&](size_t cap) {
            size_t sum = 0;
            for (const Piece& p : pieces) {
                if (p.bPart)
                    sum += CappedLen(p.text, cap, gb2312);
            }
            return sum;
        };
        // The largest cap whose parts fit the budget (at least the ellipsis).
        size_t lo = kEllipsisLen;
        size_t hi = longest;
        while (lo < hi) {
            size_t mid = lo + (hi - lo + 1) / 2;
            if (cost(mid) <= budget)
                lo = mid;
            else
                hi = mid - 1;
        }
        for (Piece& p : pieces) {
            if (p.bPart && p.text.size() > lo) {
                p.text.resize(CutAtBoundary(p.text, lo - kEllipsisLen, gb2312));
                p.text += kEllipsis;
            }
        }
    }
    std::string out;
    for (const Piece& p : pieces)
        out += p.text;
    if (out.size() > width)
        out.resize(CutAtBoundary(out, width, gb2312));
    return out;
}

std::string Encoded(std::vector<Piece>& pieces, DetailLang lang, size_t width) {
    bool gb2312 = lang == DetailLang::kChineseGb2312;
    if (gb2312) {
        for (Piece& p : pieces) {
            std::string out;
            Utf8ToGb2312(p.text, out);
            p.text = std::move(out);
        }
    }
    return Fit(pieces, width, gb2312);
}

}  // namespace

bool MatchDetailPattern(const char* pattern, const std::string& text,
                        std::vector<std::string>& parts) {
    struct Hole {
        size_t start;
        size_t end;
    };
    std::vector<Hole> holes;
    size_t m = strlen(pattern);
    size_t n = text.size();
    size_t pi = 0;
    size_t ti = 0;
    // The pattern position after the last hole entered, and where the text
    // after it was tried from: on a mismatch that hole takes one more byte.
    size_t backP = std::string::npos;
    size_t backHoles = 0;
    while (ti < n) {
        if (pi + 1 < m && IsHole(pattern + pi)) {
            holes.push_back({ti, ti});
            pi += 2;
            backP = pi;
            backHoles = holes.size();
        } else if (pi < m && pattern[pi] == text[ti]) {
            ++pi;
            ++ti;
        } else if (backP != std::string::npos) {
            holes.resize(backHoles);
            Hole& h = holes.back();
            ++h.end;
            ti = h.end;
            pi = backP;
        } else {
            return false;
        }
    }
    while (pi + 1 < m && IsHole(pattern + pi)) {
        holes.push_back({n, n});
        pi += 2;
    }
    if (pi != m)
        return false;
    parts.clear();
    for (const Hole& h : holes)
        parts.push_back(text.substr(h.start, h.end - h.start));
    return true;
}

const DetailRow* FindDetailRow(const std::string& text, std::vector<std::string>& parts) {
    for (const DetailTable* table : DetailTables()) {
        for (size_t i = 0; i < table->nRows; ++i) {
            const DetailRow& row = table->pRows[i];
            if (MatchDetailPattern(row.szFull, text, parts))
                return &row;
        }
    }
    parts.clear();
    return nullptr;
}

std::string ExpandDetailRow(const DetailRow& row, const std::vector<std::string>& parts,
                            DetailLang lang, size_t width) {
    std::vector<Piece> pieces = FormPieces(FormFor(row, lang), parts, lang, 0);
    return Encoded(pieces, lang, width);
}

std::string LocaliseDetail(const std::string& full, int langCode) {
    if (full.empty())
        return full;
    DetailLang lang = DetailLangOf(langCode);
    std::vector<Piece> pieces = Translate(full, lang, 0);
    return Encoded(pieces, lang, kDetailWidth);
}

}  // namespace nvagent
