// Date and time (commands 58, 59): the new moment is built from the current
// local time with the date or the time replaced, and handed to the one clock
// setter (tests replace it: the clock cannot be isolated in a namespace).
// When a time-synchronisation service runs, the answer says that it may
// move the clock again.
#include <time.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "agent/live/live_changes.h"
#include "agent/live/live_services.h"

namespace nvagent {

namespace {

// The first time-synchronisation daemon found running, or empty.
std::string SyncService() {
    static const char* const kDaemons[] = {"systemd-timesyn", "chronyd", "ntpd", "openntpd",
                                           "ntpsec"};
    for (const char* d : kDaemons) {
        if (ProcessRuns(d))
            return d;
    }
    return std::string();
}

std::string Format3(const char* fmt, int a, int b, int c) {
    char buf[64];
    snprintf(buf, sizeof buf, fmt, a, b, c);
    return buf;
}

CmdResult SetTo(struct tm t, const ClockSetter& set, const std::string& what) {
    t.tm_isdst = -1;
    time_t when = mktime(&t);
    if (when == static_cast<time_t>(-1))
        return Invalid(what + " cannot be represented on this system.");
    std::string err;
    if (!set(when, err))
        return Failed("The clock was not set: " + err + ".");
    std::string sync = SyncService();
    if (!sync.empty()) {
        return {em_ActSuccAll, "The clock was set; the time-synchronisation service " + sync +
                                   " is running and may correct it again."};
    }
    return Done();
}

}  // namespace

bool SetSystemClock(time_t when, std::string& err) {
    struct timespec ts {};
    ts.tv_sec = when;
    if (clock_settime(CLOCK_REALTIME, &ts) == 0)
        return true;
    err = strerror(errno);
    return false;
}

CmdResult ChangeDate(const DateRequest& q, const ClockSetter& set, time_t now) {
    struct tm t {};
    localtime_r(&now, &t);
    std::string date = Format3("%04d-%02d-%02d", q.year, q.month, q.day);
    if (t.tm_year == q.year - 1900 && t.tm_mon == q.month - 1 && t.tm_mday == q.day)
        return Unchanged("The date is already " + date + ".");
    t.tm_year = q.year - 1900;
    t.tm_mon = q.month - 1;
    t.tm_mday = q.day;
    return SetTo(t, set, date);
}

CmdResult ChangeTime(const TimeRequest& q, const ClockSetter& set, time_t now) {
    struct tm t {};
    localtime_r(&now, &t);
    std::string clock = Format3("%02d:%02d:%02d", q.hour, q.minute, q.second);
    if (t.tm_hour == q.hour && t.tm_min == q.minute && t.tm_sec == q.second)
        return Unchanged("The time is already " + clock + ".");
    t.tm_hour = q.hour;
    t.tm_min = q.minute;
    t.tm_sec = q.second;
    return SetTo(t, set, clock);
}

}  // namespace nvagent
