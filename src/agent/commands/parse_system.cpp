// Parsers of the system state forms: password, host name, date and time.
#include <algorithm>
#include <climits>

#include "agent/commands/parse_common.h"
#include "agent/commands/payload_parse.h"

namespace nvagent {

namespace {

const size_t kMaxNameLen = 32;

struct Part {
    const char* name;
    unsigned long long lo, hi;
};

// Three number tokens within their ranges; false with the answer in r.
bool ThreeNumbers(const std::string& p, const Part (&parts)[3], int (&v)[3], CmdResult& r) {
    std::vector<std::string> tok;
    std::string blanks = std::string("The ") + parts[0].name + ", " + parts[1].name + " and " +
                         parts[2].name + " cannot contain blanks.";
    if (!FormTokens(p, 3, tok, r, blanks.c_str()))
        return false;
    for (int i = 0; i < 3; ++i) {
        unsigned long long n = 0;
        if (IsEmptyField(tok[i])) {
            r = Invalid(std::string("The ") + parts[i].name + " was left empty.");
            return false;
        }
        if (ParseDigits(tok[i], ULLONG_MAX, n) != DigitsResult::kOk || n < parts[i].lo ||
            n > parts[i].hi) {
            r = Invalid(std::string("The ") + parts[i].name + " must be a number from " +
                        std::to_string(parts[i].lo) + " to " + std::to_string(parts[i].hi) + ".");
            return false;
        }
        v[i] = static_cast<int>(n);
    }
    return true;
}

int DaysInMonth(int y, int m) {
    static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    return (m == 2 && leap) ? 29 : kDays[m - 1];
}

// A user name as the system's tools accept it: no blanks, colons or
// control characters, not starting with "-".
bool IsUserName(const std::string& s) {
    if (s.empty() || s.size() > kMaxNameLen || s[0] == '-')
        return false;
    for (unsigned char ch : s) {
        if (ch <= 0x20 || ch == 0x7f || ch == ':' || ch == '/')
            return false;
    }
    return true;
}

// Which field of "USER PW PW2" held the blanks that made more tokens: the
// password when what follows the user is the same typed twice, the user
// name when the two passwords after it are one word each and the same.
const char* PasswordBlanks(const std::vector<std::string>& tok) {
    size_t half = (tok.size() - 1) / 2;
    if ((tok.size() - 1) % 2 == 0 &&
        std::equal(tok.begin() + 1, tok.begin() + 1 + half, tok.begin() + 1 + half))
        return "A password cannot contain blanks.";
    if (tok[tok.size() - 1] == tok[tok.size() - 2])
        return "A user name cannot contain blanks.";
    return "A user name or password cannot contain blanks.";
}

}  // namespace

bool ParsePassword(short, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok = SplitBlanks(p);
    if (!FormTokens(p, 3, tok, r, tok.size() > 3 ? PasswordBlanks(tok) : ""))
        return false;
    if (IsEmptyField(tok[0])) {
        r = Invalid("The user name was left empty.");
    } else if (!IsUserName(tok[0])) {
        r = Invalid("There is no user named " + tok[0] + ".");
    } else if (IsEmptyField(tok[1])) {
        r = Invalid("The new password was left empty.");
    } else if (tok[1] != tok[2]) {
        r = Invalid("The two passwords differ.");
    } else if (tok[1].size() > kMaxNameLen) {
        r = Invalid("The password must be at most 32 bytes.");
    } else if (HasControlChar(tok[1]) || tok[1].find(':') != std::string::npos) {
        r = Invalid("The password must not hold control characters or \":\".");
    } else {
        req = PasswordRequest{tok[0], tok[1]};
        return true;
    }
    return false;
}

// "USER HASH": a crypt(3) hash such as "$6$salt$..." that the system keeps
// as it is, so that a password is set without being sent in clear.
bool ParsePasswordHash(short, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 2, tok, r, "A user name or password hash cannot contain blanks."))
        return false;
    const std::string& hash = tok[1];
    if (IsEmptyField(tok[0])) {
        r = Invalid("The user name was left empty.");
    } else if (!IsUserName(tok[0])) {
        r = Invalid("There is no user named " + tok[0] + ".");
    } else if (hash.size() < 4 || hash[0] != '$' || hash.size() > 255) {
        r = Invalid(
            "The password hash must be a crypt(3) hash starting with \"$\", at most 255 "
            "bytes.");
    } else if (HasControlChar(hash) || hash.find(':') != std::string::npos) {
        r = Invalid("The password hash must not hold control characters or \":\".");
    } else {
        req = PasswordRequest{tok[0], hash, true};
        return true;
    }
    return false;
}

bool ParseHostName(short, const std::string& p, Request& req, CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 1, tok, r, "A host name cannot contain blanks."))
        return false;
    const std::string& name = tok[0];
    if (IsEmptyField(name)) {
        r = Invalid("The host name was left empty.");
    } else if (name.size() > kMaxNameLen) {
        r = Invalid("The host name must be at most 32 bytes.");
    } else if (!IsHostName(name)) {
        r = Invalid(
            "The host name may hold letters, digits and hyphens in dot-separated labels, "
            "no label starting or ending with a hyphen.");
    } else if (IsNumericHostName(name)) {
        r = Invalid("A host name cannot be all digits.");
    } else if (IsLoopbackHostName(name)) {
        r = Invalid("\"" + name + "\" names the loopback; choose another host name.");
    } else {
        req = HostNameRequest{name};
        return true;
    }
    return false;
}

bool ParseDate(short, const std::string& p, Request& req, CmdResult& r) {
    static const Part kParts[3] = {{"year", 1970, 9999}, {"month", 1, 12}, {"day", 1, 31}};
    int v[3];
    if (!ThreeNumbers(p, kParts, v, r))
        return false;
    if (v[2] > DaysInMonth(v[0], v[1])) {
        char date[32];
        snprintf(date, sizeof date, "%04d-%02d-%02d", v[0], v[1], v[2]);
        r = Invalid(std::string(date) + " is not a calendar date.");
        return false;
    }
    req = DateRequest{v[0], v[1], v[2]};
    return true;
}

bool ParseTime(short, const std::string& p, Request& req, CmdResult& r) {
    static const Part kParts[3] = {{"hour", 0, 23}, {"minute", 0, 59}, {"second", 0, 59}};
    int v[3];
    if (!ThreeNumbers(p, kParts, v, r))
        return false;
    req = TimeRequest{v[0], v[1], v[2]};
    return true;
}

}  // namespace nvagent
