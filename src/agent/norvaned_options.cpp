// Parsing norvaned's command line with getopt_long.
#include "agent/norvaned_options.h"

#include <getopt.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace nvagent {

namespace {

enum OptionId {
    kSocket = 1,
    kBackend,
    kState,
    kJournal,
    kJournalMax,
    kForeground,
    kHelp,
    kDataDir,
    kMonitorInterval,
    kRunDir,
    kGuardPort
};

// The longest monitor interval accepted: one hour.
constexpr long kMaxMonitorIntervalMs = 3600000;

const option kLongOptions[] = {
    {"socket", required_argument, nullptr, kSocket},
    {"backend", required_argument, nullptr, kBackend},
    {"state", required_argument, nullptr, kState},
    {"journal", required_argument, nullptr, kJournal},
    {"journal-max", required_argument, nullptr, kJournalMax},
    {"foreground", no_argument, nullptr, kForeground},
    {"help", no_argument, nullptr, kHelp},
    {"data-dir", required_argument, nullptr, kDataDir},
    {"monitor-interval-ms", required_argument, nullptr, kMonitorInterval},
    {"run-dir", required_argument, nullptr, kRunDir},
    {"guard-session-port", required_argument, nullptr, kGuardPort},
    {nullptr, 0, nullptr, 0},
};

// The option getopt stopped at: a short option is named by optopt (a long
// one leaves optopt 0, or its id when its value is missing), a long one by the
// word just passed.
std::string Offending(int argc, char** argv, bool missingValue) {
    if (!missingValue && optopt > ' ' && optopt < 127)
        return std::string("-") + char(optopt);
    int at = optind - 1;
    return at > 0 && at < argc ? std::string(argv[at]) : std::string("?");
}

// A whole number of milliseconds from 1 to an hour, digits only.
bool ParseInterval(const char* text, int& ms) {
    if (*text == '\0' || strspn(text, "0123456789") != strlen(text) || strlen(text) > 7)
        return false;
    long v = strtol(text, nullptr, 10);
    if (v < 1 || v > kMaxMonitorIntervalMs)
        return false;
    ms = static_cast<int>(v);
    return true;
}

// A whole number of bytes, at least 4096 so that a line always fits.
bool ParseJournalMax(const char* text, size_t& bytes) {
    char* end = nullptr;
    errno = 0;
    unsigned long long v = strtoull(text, &end, 10);
    if (*text < '0' || *text > '9' || *end != '\0' || errno != 0 || v < 4096 || v > (1ull << 40))
        return false;
    bytes = static_cast<size_t>(v);
    return true;
}

bool Apply(int id, NorvanedOptions& opts, std::string& err) {
    switch (id) {
        case kSocket:
            opts.sSocketPath = optarg;
            return true;
        case kBackend:
            opts.sBackend = optarg;
            return true;
        case kState:
            opts.sStatePath = optarg;
            return true;
        case kJournal:
            opts.sJournalPath = optarg;
            return true;
        case kJournalMax:
            return ParseJournalMax(optarg, opts.journalMaxBytes);
        case kForeground:
            opts.bForeground = true;
            return true;
        case kHelp:
            opts.bHelp = true;
            return true;
        case kDataDir:
            opts.sDataDir = optarg;
            return true;
        case kMonitorInterval:
            if (!ParseInterval(optarg, opts.iMonitorIntervalMs))
                err =
                    std::string("--monitor-interval-ms needs a number of milliseconds from 1 to ") +
                    std::to_string(kMaxMonitorIntervalMs) + ", not '" + optarg + "'";
            return true;
        case kRunDir:
            opts.sRunDir = optarg;
            if (opts.sRunDir.empty())
                err = "--run-dir needs a non-empty path";
            return true;
        case kGuardPort: {
            char* end = nullptr;
            long v = strtol(optarg, &end, 10);
            if (*optarg < '0' || *optarg > '9' || *end != '\0' || v < 1 || v > 65535)
                err = std::string("--guard-session-port needs a port from 1 to 65535, not '") +
                      optarg + "'";
            else
                opts.iGuardSessionPort = static_cast<int>(v);
            return true;
        }
        default:
            return false;
    }
}

}  // namespace

bool ParseNorvanedOptions(int argc, char** argv, NorvanedOptions& opts, std::string& err) {
    optind = 0;  // full re-initialisation, so the parser can run more than once
    opterr = 0;
    err.clear();
    int id;
    while ((id = getopt_long(argc, argv, ":h", kLongOptions, nullptr)) != -1) {
        if (id == 'h')
            id = kHelp;  // -h as the other tools take it
        if (id == ':') {
            err = "option " + Offending(argc, argv, true) + " needs a value";
            return false;
        }
        if (!Apply(id, opts, err)) {
            err = id == kJournalMax ? "--journal-max needs a number of bytes from 4096 to 2^40"
                                    : "unknown option " + Offending(argc, argv, false);
            return false;
        }
        if (!err.empty())
            return false;
    }
    if (optind < argc) {
        err = std::string("unexpected argument ") + argv[optind];
        return false;
    }
    if (opts.sSocketPath.empty()) {
        err = "--socket needs a non-empty path";
        return false;
    }
    if (opts.sBackend != "sim" && opts.sBackend != "system") {
        err = "unknown backend '" + opts.sBackend + "' (available: sim, system)";
        return false;
    }
    if (opts.sDataDir.empty()) {
        err = "--data-dir needs a non-empty path";
        return false;
    }
    return true;
}

const char* NorvanedUsage() {
    return "Usage: norvaned [OPTION]...\n"
           "The norvane agent service: serves the console's check and set requests.\n"
           "\n"
           "  --socket PATH   listen on PATH (default /dev/nvsock)\n"
           "  --backend NAME  'sim' (default): a simulated server kept in --state;\n"
           "                  'system': read and change the machine itself\n"
           "  --state FILE    load and save the simulated state in FILE\n"
           "                  (default: none, the state lives in memory only)\n"
           "  --data-dir DIR  where the system backend keeps its own settings\n"
           "                  (default /etc/norvane)\n"
           "  --monitor-interval-ms N\n"
           "                  the system backend's monitors sample every N ms\n"
           "                  instead of their own intervals (for tests)\n"
           "  --run-dir DIR   where the system backend keeps changes being watched\n"
           "                  (default /run/norvane)\n"
           "  --guard-session-port N\n"
           "                  take the established TCP connection on local port N as\n"
           "                  the session of every console (for tests)\n"
           "  --journal FILE  append one JSON line per request received to FILE\n"
           "  --journal-max BYTES  start a new journal when it would pass BYTES, keeping\n"
           "                  the previous one as FILE.1 (default 8 MiB)\n"
           "  --foreground    stay attached to the terminal instead of detaching\n"
           "  -h, --help      show this text and exit\n"
           "\n"
           "Exit status: 0 after a clean stop (SIGTERM or SIGINT), 1 when the agent\n"
           "cannot start, 2 for a usage error.\n";
}

}  // namespace nvagent
