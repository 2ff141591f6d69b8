// Reading and writing the YAML subset of settings documents.
#include "settings_yaml.h"

#include <cctype>
#include <cstring>
#include <vector>

namespace nvsettings {

namespace {

struct Line {
    int no;            // 1-based line number in the text
    int indent;        // leading blanks
    std::string text;  // without indentation, comment and trailing blanks
};

struct ParseError {
    std::string what;
};

[[noreturn]] void Fail(int line, const std::string& what) {
    throw ParseError{"line " + std::to_string(line) + ": " + what};
}

// Cuts a comment: "#" at the start or after a blank, outside quotes.
std::string StripComment(const std::string& s) {
    char quote = 0;
    for (size_t i = 0; i < s.size(); ++i) {
        char c = s[i];
        if (quote) {
            if (c == '\\' && quote == '"')
                ++i;
            else if (c == quote)
                quote = 0;
        } else if (c == '"' || c == '\'') {
            if (i == 0 || strchr(" \t[{,:-", s[i - 1]) != nullptr)
                quote = c;
        } else if (c == '#' && (i == 0 || s[i - 1] == ' ' || s[i - 1] == '\t')) {
            return s.substr(0, i);
        }
    }
    return s;
}

std::string TrimRight(std::string s) {
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r'))
        s.pop_back();
    return s;
}

bool IsWholeNumber(const std::string& s) {
    size_t i = (s[0] == '-' || s[0] == '+') ? 1 : 0;
    if (i == s.size() || s.size() - i > 18)
        return false;
    for (; i < s.size(); ++i) {
        if (!isdigit(static_cast<unsigned char>(s[i])))
            return false;
    }
    return true;
}

Json PlainScalar(const std::string& s, int line) {
    if (s.empty() || s == "~" || s == "null" || s == "Null" || s == "NULL")
        return Json();
    if (s == "true" || s == "True" || s == "TRUE")
        return true;
    if (s == "false" || s == "False" || s == "FALSE")
        return false;
    if (IsWholeNumber(s))
        return std::stoll(s);
    char c = s[0];
    if (c == '&' || c == '*' || c == '!')
        Fail(line, "anchors, aliases and tags are not supported");
    if (c == '|' || c == '>')
        Fail(line, "block scalars (| and >) are not supported; write the text in quotes");
    if (c == '@' || c == '`' || c == '%')
        Fail(line, std::string("a plain value cannot start with ") + c);
    return s;
}

void AppendUtf8(std::string& out, unsigned cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// A quoted scalar starting at s[at]; at ends after the closing quote.
std::string Quoted(const std::string& s, size_t& at, int line) {
    char q = s[at++];
    std::string out;
    while (at < s.size()) {
        char c = s[at++];
        if (q == '\'' && c == '\'') {
            if (at < s.size() && s[at] == '\'') {
                out += '\'';
                ++at;
                continue;
            }
            return out;
        }
        if (q == '"' && c == '"')
            return out;
        if (q == '"' && c == '\\') {
            if (at >= s.size())
                break;
            char e = s[at++];
            switch (e) {
                case 'n':
                    out += '\n';
                    break;
                case 't':
                    out += '\t';
                    break;
                case 'r':
                    out += '\r';
                    break;
                case '0':
                    out += '\0';
                    break;
                case '/':
                case '\\':
                case '"':
                    out += e;
                    break;
                case 'u': {
                    if (at + 4 > s.size())
                        Fail(line, "a \\u escape needs four hexadecimal digits");
                    unsigned cp = static_cast<unsigned>(std::stoul(s.substr(at, 4), nullptr, 16));
                    at += 4;
                    AppendUtf8(out, cp);
                    break;
                }
                default:
                    Fail(line, std::string("unknown escape \\") + e);
            }
            continue;
        }
        out += c;
    }
    Fail(line, "a quoted value is not closed on its line");
}

void SkipBlanks(const std::string& s, size_t& at) {
    while (at < s.size() && (s[at] == ' ' || s[at] == '\t'))
        ++at;
}

// Deeper nesting than any settings document needs is refused, so that a
// hostile document cannot exhaust the stack.
constexpr int kMaxDepth = 64;

Json FlowValue(const std::string& s, size_t& at, int line, int depth = 0);

// A plain scalar inside a flow collection: up to , ] } or ": ".
std::string FlowPlain(const std::string& s, size_t& at, bool key) {
    size_t start = at;
    while (at < s.size()) {
        char c = s[at];
        if (c == ',' || c == ']' || c == '}')
            break;
        if (c == ':' && (key || at + 1 == s.size() || s[at + 1] == ' ' || s[at + 1] == ','))
            break;
        ++at;
    }
    return TrimRight(s.substr(start, at - start));
}

Json FlowValue(const std::string& s, size_t& at, int line, int depth) {
    if (depth > kMaxDepth)
        Fail(line, "nested too deeply");
    SkipBlanks(s, at);
    if (at >= s.size())
        Fail(line, "a flow collection is not closed on its line");
    char c = s[at];
    if (c == '[') {
        Json arr = Json::array();
        ++at;
        SkipBlanks(s, at);
        if (at < s.size() && s[at] == ']') {
            ++at;
            return arr;
        }
        for (;;) {
            arr.push_back(FlowValue(s, at, line, depth + 1));
            SkipBlanks(s, at);
            if (at < s.size() && s[at] == ',') {
                ++at;
                continue;
            }
            if (at < s.size() && s[at] == ']') {
                ++at;
                return arr;
            }
            Fail(line, "expected , or ] in a flow sequence");
        }
    }
    if (c == '{') {
        Json obj = Json::object();
        ++at;
        SkipBlanks(s, at);
        if (at < s.size() && s[at] == '}') {
            ++at;
            return obj;
        }
        for (;;) {
            SkipBlanks(s, at);
            std::string key;
            if (at < s.size() && (s[at] == '"' || s[at] == '\''))
                key = Quoted(s, at, line);
            else
                key = FlowPlain(s, at, true);
            SkipBlanks(s, at);
            if (at >= s.size() || s[at] != ':')
                Fail(line, "expected : after the key \"" + key + "\"");
            ++at;
            if (obj.contains(key))
                Fail(line, "the key \"" + key + "\" is given twice");
            obj[key] = FlowValue(s, at, line, depth + 1);
            SkipBlanks(s, at);
            if (at < s.size() && s[at] == ',') {
                ++at;
                continue;
            }
            if (at < s.size() && s[at] == '}') {
                ++at;
                return obj;
            }
            Fail(line, "expected , or } in a flow mapping");
        }
    }
    if (c == '"' || c == '\'')
        return Quoted(s, at, line);
    return PlainScalar(FlowPlain(s, at, false), line);
}

// A value written on the line of its key or dash.
Json InlineValue(const std::string& s, int line) {
    size_t at = 0;
    Json v;
    if (s[0] == '[' || s[0] == '{' || s[0] == '"' || s[0] == '\'') {
        v = FlowValue(s, at, line);
        SkipBlanks(s, at);
        if (at != s.size())
            Fail(line, "unexpected text after the value: \"" + s.substr(at) + "\"");
        return v;
    }
    return PlainScalar(s, line);
}

// Where a "key: value" line's key ends (the colon), or npos.
size_t KeyColon(const std::string& s) {
    size_t at = 0;
    if (s[0] == '"' || s[0] == '\'') {
        char q = s[0];
        for (at = 1; at < s.size(); ++at) {
            if (s[at] == '\\' && q == '"')
                ++at;
            else if (s[at] == q)
                break;
        }
        ++at;
        SkipBlanks(s, at);
        return at < s.size() && s[at] == ':' ? at : std::string::npos;
    }
    if (s[0] == '[' || s[0] == '{')
        return std::string::npos;
    for (; at < s.size(); ++at) {
        if (s[at] == ':' && (at + 1 == s.size() || s[at + 1] == ' ' || s[at + 1] == '\t'))
            return at;
    }
    return std::string::npos;
}

bool IsDash(const std::string& s) {
    return s[0] == '-' && (s.size() == 1 || s[1] == ' ');
}

class BlockParser {
public:
    explicit BlockParser(std::vector<Line> lines) : m_lines(std::move(lines)) {}

    Json Document() {
        if (m_lines.empty())
            return Json();
        Json v = Node(m_lines[0].indent);
        if (m_at < m_lines.size())
            Fail(m_lines[m_at].no, "bad indentation");
        return v;
    }

private:
    Json Node(int indent) {
        Line& l = m_lines[m_at];
        if (++m_depth > kMaxDepth)
            Fail(l.no, "nested too deeply");
        struct Leave {
            int& d;
            ~Leave() { --d; }
        } leave{m_depth};
        if (IsDash(l.text))
            return Sequence(indent);
        if (KeyColon(l.text) != std::string::npos)
            return Mapping(indent);
        Json v = InlineValue(l.text, l.no);
        ++m_at;
        return v;
    }

    // The value after "key:" or "-" with nothing behind it: a nested block,
    // a sequence at the key's own indentation, or null.
    Json NestedOrNull(int indent, bool allowSameIndentSeq) {
        if (m_at >= m_lines.size())
            return Json();
        const Line& n = m_lines[m_at];
        if (n.indent > indent)
            return Node(n.indent);
        if (allowSameIndentSeq && n.indent == indent && IsDash(n.text))
            return Sequence(indent);
        return Json();
    }

    Json Sequence(int indent) {
        Json arr = Json::array();
        while (m_at < m_lines.size() && m_lines[m_at].indent == indent &&
               IsDash(m_lines[m_at].text)) {
            Line& l = m_lines[m_at];
            size_t rest = 1;
            while (rest < l.text.size() && l.text[rest] == ' ')
                ++rest;
            if (rest >= l.text.size()) {
                ++m_at;
                arr.push_back(NestedOrNull(indent, false));
                continue;
            }
            // "- key: v" opens a mapping whose keys line up with "key".
            l.indent = indent + static_cast<int>(rest);
            l.text = l.text.substr(rest);
            arr.push_back(Node(l.indent));
        }
        CheckDedent(indent);
        return arr;
    }

    Json Mapping(int indent) {
        Json obj = Json::object();
        while (m_at < m_lines.size() && m_lines[m_at].indent == indent) {
            const Line& l = m_lines[m_at];
            size_t colon = KeyColon(l.text);
            if (colon == std::string::npos || IsDash(l.text))
                Fail(l.no, "expected \"key: value\"");
            std::string key;
            if (l.text[0] == '"' || l.text[0] == '\'') {
                size_t at = 0;
                key = Quoted(l.text, at, l.no);
            } else {
                key = TrimRight(l.text.substr(0, colon));
            }
            if (obj.contains(key))
                Fail(l.no, "the key \"" + key + "\" is given twice");
            size_t at = colon + 1;
            SkipBlanks(l.text, at);
            int no = l.no;
            std::string rest = l.text.substr(at);
            ++m_at;
            if (rest.empty())
                obj[key] = NestedOrNull(indent, true);
            else
                obj[key] = InlineValue(rest, no);
        }
        CheckDedent(indent);
        return obj;
    }

    void CheckDedent(int indent) {
        if (m_at < m_lines.size() && m_lines[m_at].indent > indent)
            Fail(m_lines[m_at].no, "bad indentation");
    }

    std::vector<Line> m_lines;
    size_t m_at = 0;
    int m_depth = 0;
};

}  // namespace

bool ParseYaml(const std::string& text, Json& out, std::string& err) {
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first != std::string::npos && (text[first] == '{' || text[first] == '[')) {
        try {
            out = Json::parse(text);
            return true;
        } catch (const nlohmann::json::exception& e) {
            err = std::string("not valid JSON: ") + e.what();
            return false;
        }
    }
    std::vector<Line> lines;
    size_t at = 0;
    int no = 0;
    try {
        while (at <= text.size()) {
            size_t end = text.find('\n', at);
            if (end == std::string::npos)
                end = text.size();
            std::string raw = text.substr(at, end - at);
            at = end + 1;
            ++no;
            size_t ind = raw.find_first_not_of(' ');
            if (ind != std::string::npos && raw[ind] == '\t')
                Fail(no, "tabs cannot indent YAML");
            std::string body = TrimRight(StripComment(raw));
            if (body.find_first_not_of(" \t") == std::string::npos)
                continue;
            ind = body.find_first_not_of(' ');
            body = body.substr(ind);
            if (ind == 0 && (body == "---" || body.rfind("--- ", 0) == 0 || body == "..."))
                continue;
            if (body[0] == '%')
                Fail(no, "directives are not supported");
            lines.push_back({no, static_cast<int>(ind), body});
        }
        out = BlockParser(std::move(lines)).Document();
        return true;
    } catch (const ParseError& e) {
        err = e.what;
        return false;
    } catch (const std::exception& e) {
        err = std::string("cannot be read: ") + e.what();
        return false;
    }
}

namespace {

bool NeedsQuotes(const std::string& s, bool inFlow) {
    if (s.empty())
        return true;
    Json back;
    try {
        back = PlainScalar(s, 0);
    } catch (const ParseError&) {
        return true;
    }
    if (!back.is_string())
        return true;
    if (strchr("-?:,[]{}#&*!|>'\"%@`", s[0]) != nullptr || s.front() == ' ' || s.back() == ' ')
        return true;
    for (size_t i = 0; i < s.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        if (c < 0x20 || c == 0x7f)
            return true;
        if (c == ':' && (i + 1 == s.size() || s[i + 1] == ' '))
            return true;
        if (c == '#' && s[i - 1] == ' ')
            return true;
        if (inFlow && (c == ',' || c == '[' || c == ']' || c == '{' || c == '}' || c == ':'))
            return true;
    }
    return false;
}

std::string Scalar(const Json& v, bool inFlow) {
    if (v.is_string()) {
        const std::string& s = v.get_ref<const std::string&>();
        return NeedsQuotes(s, inFlow) ? Json(s).dump(-1, ' ', false, Json::error_handler_t::replace)
                                      : s;
    }
    if (v.is_null())
        return "null";
    return v.dump();
}

bool IsFlat(const Json& v) {
    if (!v.is_object())
        return false;
    for (const auto& kv : v.items()) {
        if (kv.value().is_structured())
            return false;
    }
    return true;
}

std::string Flow(const Json& obj) {
    std::string s = "{";
    bool first = true;
    for (const auto& kv : obj.items()) {
        s += first ? "" : ", ";
        first = false;
        s += Scalar(kv.key(), true) + ": " + Scalar(kv.value(), true);
    }
    return s + "}";
}

void Write(const Json& v, int indent, std::string& out);

// A value after "key:" or "- ": inline for scalars and empty collections,
// else on the following lines.
void WriteAfter(const Json& v, int indent, std::string& out) {
    if (!v.is_structured() || v.empty()) {
        out += " " + (v.is_object() ? std::string("{}") : v.is_array() ? "[]" : Scalar(v, false));
        out += "\n";
        return;
    }
    out += "\n";
    Write(v, indent, out);
}

void Write(const Json& v, int indent, std::string& out) {
    std::string pad(static_cast<size_t>(indent), ' ');
    if (v.is_object()) {
        for (const auto& kv : v.items()) {
            out += pad + Scalar(kv.key(), false) + ":";
            WriteAfter(kv.value(), indent + 2, out);
        }
    } else if (v.is_array()) {
        for (const auto& item : v) {
            if (IsFlat(item) && !item.empty()) {
                out += pad + "- " + Flow(item) + "\n";
            } else if (item.is_structured() && !item.empty()) {
                out += pad + "-\n";
                Write(item, indent + 2, out);
            } else {
                out += pad + "-";
                WriteAfter(item, indent + 2, out);
            }
        }
    } else {
        out += pad + Scalar(v, false) + "\n";
    }
}

}  // namespace

std::string WriteYaml(const Json& doc) {
    std::string out;
    Write(doc, 0, out);
    return out;
}

}  // namespace nvsettings
