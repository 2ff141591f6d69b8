// The simulator's system settings: user password, host name, date and time.
// Date and time move the simulated clock offset, never the real clock.
#include <cstdio>

#include "agent/sim/sim_apply.h"

namespace nvagent {

namespace {

struct tm ShownTime(const SimContext& c) {
    time_t shown = c.realNow + static_cast<time_t>(c.st.clockOffset);
    struct tm t {};
    localtime_r(&shown, &t);
    return t;
}

// Makes the shown time equal t (a local time, normalised by mktime).
void ShowTime(SimContext& c, struct tm t) {
    t.tm_isdst = -1;
    c.st.clockOffset = static_cast<long long>(mktime(&t)) - static_cast<long long>(c.realNow);
}

std::string Format3(const char* fmt, int a, int b, int c) {
    char buf[64];
    snprintf(buf, sizeof buf, fmt, a, b, c);
    return buf;
}

}  // namespace

CmdResult SimPassword(SimContext& c, const PasswordRequest& q) {
    for (SimUser& u : c.st.users) {
        if (u.name == q.user) {
            u.pwChanged = static_cast<long long>(c.realNow) + c.st.clockOffset;
            return Done();
        }
    }
    return Invalid("There is no user named " + q.user + ".");
}

CmdResult SimHostName(SimContext& c, const HostNameRequest& q) {
    if (q.name == c.st.conf.sHostname)
        return Unchanged("The host name is already " + q.name + ".");
    c.st.conf.sHostname = q.name;
    return Done();
}

CmdResult SimDate(SimContext& c, const DateRequest& q) {
    struct tm t = ShownTime(c);
    if (t.tm_year == q.year - 1900 && t.tm_mon == q.month - 1 && t.tm_mday == q.day) {
        return Unchanged("The date is already " +
                         Format3("%04d-%02d-%02d", q.year, q.month, q.day) + ".");
    }
    t.tm_year = q.year - 1900;
    t.tm_mon = q.month - 1;
    t.tm_mday = q.day;
    ShowTime(c, t);
    return Done();
}

CmdResult SimTime(SimContext& c, const TimeRequest& q) {
    struct tm t = ShownTime(c);
    if (t.tm_hour == q.hour && t.tm_min == q.minute && t.tm_sec == q.second) {
        return Unchanged("The time is already " +
                         Format3("%02d:%02d:%02d", q.hour, q.minute, q.second) + ".");
    }
    t.tm_hour = q.hour;
    t.tm_min = q.minute;
    t.tm_sec = q.second;
    ShowTime(c, t);
    return Done();
}

}  // namespace nvagent
