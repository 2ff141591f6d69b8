// Handlers of the system settings: user password, host name, date and time.
// Date and time move the simulated clock offset, never the real clock.
#include <climits>
#include <cstdio>

#include "agent/payload_parse.h"
#include "agent/sim_handlers.h"

namespace nvagent {

namespace {

const size_t kMaxNameLen = 32;

struct tm ShownTime(const CmdContext& c) {
    time_t shown = c.realNow + static_cast<time_t>(c.st.clockOffset);
    struct tm t {};
    localtime_r(&shown, &t);
    return t;
}

// Makes the shown time equal t (a local time, normalised by mktime).
void ShowTime(CmdContext& c, struct tm t) {
    t.tm_isdst = -1;
    c.st.clockOffset = static_cast<long long>(mktime(&t)) - static_cast<long long>(c.realNow);
}

// Three number tokens within their ranges; false with the answer in r.
struct Part {
    const char* name;
    unsigned long long lo, hi;
};
bool ThreeNumbers(const std::string& p, const Part (&parts)[3], int (&v)[3], CmdResult& r) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 3, tok)) {
        r = WrongTokenCount(3);
        return false;
    }
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

std::string Format3(const char* fmt, int a, int b, int c) {
    char buf[64];
    snprintf(buf, sizeof buf, fmt, a, b, c);
    return buf;
}

}  // namespace

CmdResult ChangePassword(CmdContext& c, const std::string& p) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 3, tok))
        return WrongTokenCount(3);
    if (IsEmptyField(tok[0]))
        return Invalid("The user name was left empty.");
    SimUser* user = nullptr;
    for (SimUser& u : c.st.users) {
        if (u.name == tok[0])
            user = &u;
    }
    if (user == nullptr)
        return Invalid("There is no user named " + tok[0] + ".");
    if (IsEmptyField(tok[1]))
        return Invalid("The new password was left empty.");
    if (tok[1] != tok[2])
        return Invalid("The two passwords differ.");
    if (tok[1].size() > kMaxNameLen)
        return Invalid("The password must be at most 32 bytes.");
    if (HasControlChar(tok[1]))
        return Invalid("The password must not hold control characters.");
    user->pwChanged = static_cast<long long>(c.realNow) + c.st.clockOffset;
    return Done();
}

CmdResult SetHostName(CmdContext& c, const std::string& p) {
    std::vector<std::string> tok;
    if (!FormTokens(p, 1, tok))
        return WrongTokenCount(1);
    const std::string& name = tok[0];
    if (IsEmptyField(name))
        return Invalid("The host name was left empty.");
    if (name.size() > kMaxNameLen)
        return Invalid("The host name must be at most 32 bytes.");
    if (!IsHostName(name)) {
        return Invalid(
            "The host name may hold letters, digits and hyphens in dot-separated labels, "
            "no label starting or ending with a hyphen.");
    }
    if (name == c.st.conf.sHostname)
        return Unchanged("The host name is already " + name + ".");
    c.st.conf.sHostname = name;
    return Done();
}

CmdResult SetDate(CmdContext& c, const std::string& p) {
    static const Part kParts[3] = {{"year", 1970, 9999}, {"month", 1, 12}, {"day", 1, 31}};
    int v[3];
    CmdResult r;
    if (!ThreeNumbers(p, kParts, v, r))
        return r;
    std::string date = Format3("%04d-%02d-%02d", v[0], v[1], v[2]);
    if (v[2] > DaysInMonth(v[0], v[1]))
        return Invalid(date + " is not a calendar date.");
    struct tm t = ShownTime(c);
    if (t.tm_year == v[0] - 1900 && t.tm_mon == v[1] - 1 && t.tm_mday == v[2]) {
        return Unchanged("The date is already " + date + ".");
    }
    t.tm_year = v[0] - 1900;
    t.tm_mon = v[1] - 1;
    t.tm_mday = v[2];
    ShowTime(c, t);
    return Done();
}

CmdResult SetTime(CmdContext& c, const std::string& p) {
    static const Part kParts[3] = {{"hour", 0, 23}, {"minute", 0, 59}, {"second", 0, 59}};
    int v[3];
    CmdResult r;
    if (!ThreeNumbers(p, kParts, v, r))
        return r;
    struct tm t = ShownTime(c);
    if (t.tm_hour == v[0] && t.tm_min == v[1] && t.tm_sec == v[2]) {
        return Unchanged("The time is already " + Format3("%02d:%02d:%02d", v[0], v[1], v[2]) +
                         ".");
    }
    t.tm_hour = v[0];
    t.tm_min = v[1];
    t.tm_sec = v[2];
    ShowTime(c, t);
    return Done();
}

}  // namespace nvagent
