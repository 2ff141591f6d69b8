// The detail rows of the live backend and the monitors' path checks: every
// sentence literal of their sources is part of a row (a scan of the sources
// as built), the texts the backend really builds on the paths a unit test
// can reach find their rows, and every row's short forms leave room for
// long parts on the 78-byte information line, with Chinese that GB2312
// holds.
#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

#include "agent/details/detail_lookup.h"
#include "agent/details/detail_registry.h"
#include "agent/details/details_guard_ifaces.h"
#include "agent/details/details_guard_session.h"
#include "agent/details/details_guard_watch.h"
#include "agent/details/details_live_firewall.h"
#include "agent/details/details_live_interfaces.h"
#include "agent/details/details_live_monitors.h"
#include "agent/details/details_live_reasons.h"
#include "agent/details/details_live_services.h"
#include "agent/details/details_live_system.h"
#include "agent/live/firewall/base_chains.h"
#include "agent/live/firewall/other_managers.h"
#include "agent/live/interfaces/cloud_init.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_monitors.h"
#include "agent/live/run_process.h"
#include "agent/monitors/trusted_path.h"
#include "temp_dir.h"

using namespace nvagent;

namespace {

// The live backend's tables, the session guard's among them (a sentence
// moves between them as the code that sends it does).
const DetailTable* const kLiveTables[] = {
    &kDetailsLiveSystem,   &kDetailsLiveFirewall, &kDetailsLiveInterfaces,
    &kDetailsLiveServices, &kDetailsLiveMonitors, &kDetailsLiveReasons,
    &kDetailsGuardSession, &kDetailsGuardIfaces,  &kDetailsGuardWatch};

std::vector<const DetailRow*> LiveRows() {
    std::vector<const DetailRow*> rows;
    for (const DetailTable* t : kLiveTables) {
        for (size_t i = 0; i < t->nRows; ++i)
            rows.push_back(&t->pRows[i]);
    }
    return rows;
}

size_t HoleCount(const char* s) {
    size_t n = 0;
    for (const char* p = strstr(s, "{}"); p != nullptr; p = strstr(p + 2, "{}"))
        ++n;
    return n;
}

// The "{N}" references of a short form, in order.
std::vector<int> Refs(const char* s) {
    std::vector<int> refs;
    for (const char* p = s; *p != '\0'; ++p) {
        if (p[0] == '{' && p[1] >= '1' && p[1] <= '9' && p[2] == '}')
            refs.push_back(p[1] - '0');
    }
    return refs;
}

std::string Lower(std::string s) {
    for (char& c : s)
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return s;
}

// ---------------------------------------------------------------------------
// The rows themselves.

TEST(DetailsLive, RowsAreWellFormedAndInTheRegistry) {
    std::vector<const DetailTable*> registry = DetailTables();
    for (const DetailTable* t : kLiveTables) {
        EXPECT_NE(std::find(registry.begin(), registry.end(), t), registry.end())
            << t->pRows[0].szFull;
    }
    for (const DetailRow* r : LiveRows()) {
        ASSERT_NE(r->szFull, nullptr);
        SCOPED_TRACE(r->szFull);
        size_t holes = HoleCount(r->szFull);
        EXPECT_LE(holes, 9u);
        ASSERT_NE(r->szZh, nullptr) << "every row has its Chinese form";
        for (const char* form : {r->szEn, r->szZh}) {
            if (form == nullptr)
                continue;
            EXPECT_EQ(HoleCount(form), 0u) << form;
            for (int ref : Refs(form))
                EXPECT_LE(static_cast<size_t>(ref), holes) << form;
        }
        std::string gb;
        EXPECT_TRUE(Utf8ToGb2312(r->szZh, gb, true)) << r->szZh << " has a character GB2312 lacks";
        // English left in the Chinese form is only what the sentence names
        // (values, tools, files, chains).
        std::string full = Lower(r->szFull);
        std::string zh = r->szZh;
        for (size_t i = 0; i < zh.size();) {
            if (!isalpha(static_cast<unsigned char>(zh[i]))) {
                ++i;
                continue;
            }
            size_t j = i;
            while (j < zh.size() && (isalnum(static_cast<unsigned char>(zh[j])) || zh[j] == '-'))
                ++j;
            std::string word = zh.substr(i, j - i);
            if (word.size() >= 3) {
                EXPECT_NE(full.find(Lower(word)), std::string::npos)
                    << "\"" << word << "\" in " << r->szZh << " is not from the sentence";
            }
            i = j;
        }
    }
}

TEST(DetailsLive, EachSentenceHasOneRowInTheCatalogue) {
    std::set<std::string> seen;
    for (const DetailTable* t : DetailTables()) {
        for (size_t i = 0; i < t->nRows; ++i)
            EXPECT_TRUE(seen.insert(t->pRows[i].szFull).second) << t->pRows[i].szFull;
    }
    // Each live row is the one the lookup finds for its own sentence
    // (with sample parts), so no earlier row hides it.
    for (const DetailRow* r : LiveRows()) {
        std::string text;
        const char* p = r->szFull;
        int n = 0;
        while (const char* h = strstr(p, "{}")) {
            text.append(p, h) += "val" + std::to_string(++n);
            p = h + 2;
        }
        text += p;
        std::vector<std::string> parts;
        EXPECT_EQ(FindDetailRow(text, parts), r) << text;
    }
}

// The inserted parts keep at least this many bytes (an ellipsis included)
// when every part is long: their first six bytes stay readable, as the
// catalogue's rule for every table is.
const size_t kMinPartBytes = 9;

TEST(DetailsLive, ShortFormsFitWithLongParts) {
    const std::string longPart(60, '#');
    for (const DetailRow* r : LiveRows()) {
        SCOPED_TRACE(r->szFull);
        std::vector<std::string> parts(HoleCount(r->szFull), longPart);
        for (int lang : {0, 1, 2}) {
            std::string out = ExpandDetailRow(*r, parts, DetailLangOf(lang));
            EXPECT_LE(out.size(), kDetailWidth) << "language " << lang;
            const char* form = lang == 0 ? (r->szEn ? r->szEn : r->szFull) : r->szZh;
            size_t inserted = lang == 0 && r->szEn == nullptr ? parts.size() : Refs(form).size();
            // Every inserted part: a run of '#', cut to no less than the
            // minimum with its ellipsis.
            size_t runs = 0;
            for (size_t i = 0; i < out.size();) {
                if (out[i] != '#') {
                    ++i;
                    continue;
                }
                size_t j = out.find_first_not_of('#', i);
                if (j == std::string::npos)
                    j = out.size();
                size_t kept = j - i + (out.compare(j, 3, "...") == 0 ? 3 : 0);
                EXPECT_GE(kept, kMinPartBytes) << "language " << lang << ": " << out;
                ++runs;
                i = j;
            }
            EXPECT_EQ(runs, inserted) << "language " << lang << ": " << out;
        }
    }
}

// ---------------------------------------------------------------------------
// The sources: every literal that reads as a sentence or a piece of one is
// inside a row's sentence, or is named below as text that never reaches an
// answer.

// The string literals of a C++ source with their line, adjacent ones joined.
struct Literal {
    int line;
    std::string text;
};

std::vector<Literal> Literals(const std::string& src) {
    std::vector<Literal> out;
    bool joinable = false;  // only blanks and comments since the last literal
    int line = 1;
    for (size_t i = 0; i < src.size();) {
        char c = src[i];
        if (c == '\n') {
            ++line;
            ++i;
            continue;
        }
        if (c == ' ' || c == '\t' || c == '\r') {
            ++i;
            continue;
        }
        if (src.compare(i, 2, "//") == 0) {
            i = src.find('\n', i);
            if (i == std::string::npos)
                break;
            continue;
        }
        if (src.compare(i, 2, "/*") == 0) {
            size_t end = src.find("*/", i + 2);
            for (size_t k = i; k < end && k < src.size(); ++k)
                line += src[k] == '\n';
            i = end == std::string::npos ? src.size() : end + 2;
            continue;
        }
        if (c == '#' && (i == 0 || src[i - 1] == '\n')) {
            i = src.find('\n', i);
            if (i == std::string::npos)
                break;
            joinable = false;
            continue;
        }
        if (c == '\'') {
            size_t k = i + 1;
            while (k < src.size() && src[k] != '\'')
                k += src[k] == '\\' ? 2 : 1;
            i = k + 1;
            joinable = false;
            continue;
        }
        if (c == '"') {
            std::string text;
            size_t k = i + 1;
            while (k < src.size() && src[k] != '"') {
                if (src[k] == '\\' && k + 1 < src.size()) {
                    char e = src[k + 1];
                    text += e == 'n' ? '\n' : e == 't' ? '\t' : e;
                    k += 2;
                } else {
                    text += src[k++];
                }
            }
            if (joinable && !out.empty())
                out.back().text += text;
            else
                out.push_back({line, text});
            i = k + 1;
            joinable = true;
            continue;
        }
        joinable = false;
        ++i;
    }
    return out;
}

// Whether a literal reads as (a piece of) a sentence: words with a blank
// or a full stop. Command options, file contents and log formats (a
// leading '-', a line break, a '%') are the tools' and files' own.
bool SentenceLike(const std::string& t) {
    bool word = false;
    for (size_t i = 0; i + 1 < t.size(); ++i)
        word = word || (isalpha(static_cast<unsigned char>(t[i])) &&
                        isalpha(static_cast<unsigned char>(t[i + 1])));
    // Without a blank, only a word that ends a sentence ("drop."), not a
    // path or a key.
    bool blank = t.find(' ') != std::string::npos;
    if (!word || (!blank && (t.back() != '.' || t.find('/') != std::string::npos)))
        return false;
    return t[0] != '-' && t.find('\n') == std::string::npos && t.find('%') == std::string::npos;
}

// Literals of the scanned sources that never reach an answer, by file.
struct NotADetail {
    const char* file;
    const char* text;
};
const NotADetail kNotDetails[] = {
    // A tool's name, quoted as it is inside the tools' reasons' rows.
    {"live/interfaces/networkmanager_change.cpp", "nmcli connection"},
    // Display lines of the firewall pages.
    {"live/firewall/base_chains.cpp", ": table "},
    {"live/firewall/base_chains.cpp", " hook, "},
    {"live/firewall/base_chains.cpp",
     "     docker: published through nat, not filtered by INPUT: "},
    {"live/firewall/firewall_view.cpp", "Policy: IPv4 "},
    {"live/firewall/firewall_view.cpp", ", IPv6 "},
    {"live/firewall/firewall_view.cpp", "TCP of connections open before tracking started"},
    {"live/firewall/firewall_view.cpp", "ICMPv6 (neighbour discovery)"},
    {"live/firewall/firewall_view.cpp", "replies to established connections"},
    {"live/firewall/firewall_view.cpp", "     agent: "},
    {"live/firewall/firewall_view.cpp", " ACCEPT (kept for the drop policy)"},
    {"live/firewall/firewall_view.cpp", " (IPv6)"},
    // The owners and policies of other tools' chains, read from their output
    // (the notes take them as parts) and what iptables prints.
    {"live/firewall/base_chains.cpp", "legacy iptables"},
    {"live/firewall/base_chains.cpp", "table ip nat"},
    {"live/firewall/base_chains.cpp", "chain DOCKER {"},
    {"live/firewall/firewall_view.cpp", " --sport "},
    {"live/firewall/firewall_view.cpp", " --dport "},
    {"live/firewall/firewall_change.cpp", " -m comment --comment "},
    {"live/firewall/firewall_change.cpp", " -j ACCEPT"},
    // Start-up only: a restore error goes to the agent's log.
    {"live/firewall/firewall_change.cpp", " (restoring "},
    // Pieces of the commands another manager's refusal quotes as a part.
    {"live/firewall/other_managers.cpp", "insert 1 "},
    {"live/firewall/other_managers.cpp", " proto "},
    {"live/firewall/other_managers.cpp", " port "},
    {"live/firewall/other_managers.cpp", " source address=\""},
    {"live/firewall/other_managers.cpp", " port port=\""},
    {"live/firewall/other_managers.cpp", "\" protocol=\""},
    {"live/firewall/other_managers.cpp",
     "firewall-cmd --permanent --add-rich-rule='rule family=\"ipv4\""},
    {"live/firewall/other_managers.cpp", "ufw default "},
    {"live/firewall/other_managers.cpp", "firewall-cmd --permanent --zone=public --set-target="},
    // Lines of configuration files and what the agent reads in them.
    {"live/interfaces/ifupdown_change.cpp", " inet dhcp"},
    {"live/interfaces/ifupdown_change.cpp", "iface "},
    {"live/interfaces/ifupdown_change.cpp", "    gateway "},
    {"live/interfaces/ifupdown_change.cpp", "    dns-nameservers "},
    {"live/interfaces/ifupdown_change.cpp", " inet "},
    {"live/interfaces/ifupdown_change.cpp", "    up ip -4 addr add "},
    {"live/interfaces/ifupdown_change.cpp", "    up ip -4 route replace"},
    {"live/interfaces/ifupdown_change.cpp", " dev "},
    {"live/interfaces/ifupdown_config.cpp", "auto "},
    {"live/interfaces/netplan_change.cpp",
     "={addresses: null, routes: null, dhcp4: null, gateway4: null, nameservers: null}"},
    {"live/interfaces/netplan_change.cpp", "ethernets."},
    {"live/interfaces/netplan_change.cpp", "{dhcp4: true, activation-mode: null}"},
    {"live/interfaces/netplan_change.cpp", "{activation-mode: null}"},
    {"live/interfaces/netplan_change.cpp", "{activation-mode: \"off\"}"},
    {"live/interfaces/netplan_change.cpp", "{dhcp4: false, activation-mode: null, addresses: [\""},
    {"live/interfaces/netplan_change.cpp", ", routes: [{to: default, via: \""},
    {"live/interfaces/netplan_change.cpp", ", nameservers: {addresses: ["},
    {"live/interfaces/networkd_config.cpp", "# The norvane agent's settings of "},
    {"live/interfaces/resolv_conf.cpp", "generated by"},
    {"live/interfaces/resolv_conf.cpp", "managed by"},
    {"live/interfaces/resolv_conf.cpp", "do not edit"},
    {"live/interfaces/resolv_conf.cpp", "automatically generated"},
    {"live/interfaces/resolv_conf.cpp", "dynamic resolv.conf"},
    {"live/interfaces/resolv_conf.cpp", "nameserver "},
    {"live/live_samba_change.cpp", "read only"},
    {"live/live_samba_change.cpp", "write ok"},
    {"live/live_services.cpp", "read only"},
    {"live/live_services.cpp", "write ok"},
    {"live/trusted_process.cpp", " (deleted)"},
    // Errors of the settings file at start-up, for the agent's log.
    {"live/live_settings.cpp", "cannot read "},
    // The session guard's reasons for a refusal: the journal's note (the
    // answer's detail is the refusal row with the client's address).
    {"live/guard/session_guard.cpp", "the SSH session "},
    {"live/guard/session_guard.cpp", "it would cut "},
    {"live/guard/session_guard.cpp", "carried out on confirmation; "},
    {"live/guard/guard_interfaces.cpp", "taking down "},
    {"live/guard/guard_interfaces.cpp", " ends the session"},
    {"live/guard/guard_interfaces.cpp", " (its route to "},
    {"live/guard/guard_interfaces.cpp", " (its address "},
    {"live/guard/guard_interfaces.cpp", "DHCP may give "},
    {"live/guard/guard_interfaces.cpp", " another address than "},
    {"live/guard/guard_interfaces.cpp", "the new address "},
    {"live/guard/guard_interfaces.cpp", " replaces the session's address "},
    {"live/guard/guard_interfaces.cpp", "no route to "},
    {"live/guard/guard_interfaces.cpp", " is left on "},
    {"live/guard/guard_firewall.cpp",
     "the input chain would no longer accept a new connection from "},
    {"live/guard/guard_firewall.cpp", " to port "},
    {"live/guard/guard_firewall.cpp",
     "the output chain would no longer pass the replies from port "},
    // What iptables -S prints, and what /proc says of a replaced program.
    {"live/guard/guard_firewall.cpp", "! --syn"},
    {"live/guard/guard_firewall.cpp", "! --tcp-flags FIN,SYN,RST,ACK SYN"},
    {"live/guard/guard_session.cpp", " (deleted)"},
    // The watch's end, its stall reasons and sock_diag's errors: the
    // journal's notes of a change kept or undone, and the agent's log.
    {"live/guard/change_watch.cpp", "a pending change in "},
    {"live/guard/change_watch.cpp", " could not be read; removed"},
    {"live/guard/change_watch.cpp", " (command "},
    {"live/guard/change_watch.cpp", ") is still pending in "},
    {"live/guard/change_watch.cpp", "undone at start: the change at "},
    {"live/guard/change_watch.cpp", " was still watched when the agent stopped"},
    {"live/guard/change_watch.cpp", "watching the change at "},
    {"live/guard/change_watch.cpp", ") over the "},
    {"live/guard/change_watch.cpp", "cannot watch the "},
    {"live/guard/change_watch.cpp", "the agent stopped before the watch ended"},
    {"live/guard/change_watch.cpp", "the session kept working"},
    {"live/guard/change_watch.cpp", "undone: the change at "},
    {"live/guard/change_watch.cpp", " stalled the "},
    {"live/guard/change_watch.cpp", "; the undo failed: "},
    {"live/guard/change_watch.cpp", "kept: the change at "},
    {"live/guard/change_watch.cpp", ", watched over the "},
    {"live/guard/change_watch.cpp", "; it could not be saved: "},
    {"live/guard/tcp_watch.cpp", "the connection was closed"},
    {"live/guard/tcp_watch.cpp", "the connection is gone"},
    {"live/guard/tcp_watch.cpp", " byte(s) that cannot be sent, "},
    {"live/guard/tcp_watch.cpp", " probes unanswered and no acknowledgement for "},
    {"live/guard/tcp_watch.cpp", "no acknowledgement for "},
    {"live/guard/tcp_watch.cpp", " segment(s) outstanding (bound "},
    {"live/guard/tcp_watch.cpp", ", RTT "},
    {"live/guard/tcp_watch.cpp", " ms"},
    {"live/guard/tcp_watch.cpp", " retransmission timeouts in a row and "},
    {"live/guard/tcp_watch.cpp", "not a numeric address pair: "},
    {"live/guard/tcp_watch.cpp", "sock_diag: "},
    {"live/guard/tcp_watch.cpp", "sock_diag: no answer about the connection"},
    // A pending change's undo at start (a recovery file the agent cannot
    // read or a part the firewall refuses) and a watched change's undo:
    // the journal's note and the agent's log only.
    {"live/guard/change_watch.cpp", "this agent cannot undo a change of \""},
    {"live/interfaces/interface_recovery.cpp", "not the recovery of an interface change"},
    {"live/interfaces/interface_recovery.cpp", "the recovery names no interface or no known owner"},
    {"live/interfaces/interface_recovery.cpp", "the recovery of "},
    {"live/interfaces/interface_recovery.cpp", " is malformed"},
    {"live/firewall/firewall_change.cpp", "not a firewall change"},
    {"live/firewall/firewall_change.cpp", "The firewall refused part of the undo: "},
};

void ScanDir(const std::string& root, const std::string& rel, std::vector<std::string>& files) {
    DIR* d = opendir((root + "/" + rel).c_str());
    ASSERT_NE(d, nullptr) << root << "/" << rel;
    while (dirent* e = readdir(d)) {
        std::string name = e->d_name;
        if (name[0] == '.')
            continue;
        std::string path = rel + "/" + name;
        struct stat st {};
        stat((root + "/" + path).c_str(), &st);
        if (S_ISDIR(st.st_mode))
            ScanDir(root, path, files);
        else if (name.size() > 4 && name.compare(name.size() - 4, 4, ".cpp") == 0)
            files.push_back(path);
    }
    closedir(d);
}

bool InSomeRow(const std::string& literal) {
    for (const DetailTable* t : DetailTables()) {
        for (size_t i = 0; i < t->nRows; ++i) {
            if (strstr(t->pRows[i].szFull, literal.c_str()) != nullptr)
                return true;
        }
    }
    return false;
}

TEST(DetailsLive, EverySentenceLiteralIsInARow) {
    const std::string root = std::string(NV_SOURCE_DIR) + "/src/agent";
    std::vector<std::string> files;
    ScanDir(root, "live", files);
    // The monitors' texts that reach an answer: the trust rule's reasons.
    files.push_back("monitors/trusted_path.cpp");
    ASSERT_GT(files.size(), 40u);
    size_t checked = 0;
    for (const std::string& f : files) {
        std::ifstream in(root + "/" + f);
        std::stringstream ss;
        ss << in.rdbuf();
        for (const Literal& l : Literals(ss.str())) {
            if (!SentenceLike(l.text))
                continue;
            bool listed = false;
            for (const NotADetail& n : kNotDetails)
                listed = listed || (f == n.file && l.text == n.text);
            if (listed)
                continue;
            ++checked;
            EXPECT_TRUE(InSomeRow(l.text))
                << f << ":" << l.line << ": \"" << l.text << "\" is in no detail row";
        }
    }
    EXPECT_GT(checked, 150u);
}

TEST(DetailsLive, TheScanFindsLiteralsAsTheCompilerJoinsThem) {
    std::vector<Literal> l = Literals(
        "// \"not this\"\n#include \"nor this\"\nf(\"a b\" /* c */ \"c.\", '\"', \"d e\");\n");
    ASSERT_EQ(l.size(), 2u);
    EXPECT_EQ(l[0].text, "a bc.");
    EXPECT_EQ(l[0].line, 3);
    EXPECT_EQ(l[1].text, "d e");
    EXPECT_TRUE(SentenceLike("Could not write "));
    EXPECT_TRUE(SentenceLike("drop."));
    EXPECT_FALSE(SentenceLike("-j DROP"));
    EXPECT_FALSE(SentenceLike("networkctl"));
    EXPECT_FALSE(SentenceLike("/run/dhclient."));
    EXPECT_FALSE(SentenceLike("norvaned: %s\n"));
}

// ---------------------------------------------------------------------------
// Texts the live backend builds, on the paths a unit test reaches without
// changing the machine.

// The text has a row; its parts that are sentences of the live backend have
// theirs; the Chinese forms fit and decode.
void ExpectRow(const std::string& text) {
    SCOPED_TRACE(text);
    std::vector<std::string> parts;
    const DetailRow* r = FindDetailRow(text, parts);
    ASSERT_NE(r, nullptr) << "no row";
    for (int lang : {1, 2}) {
        std::string out = LocaliseDetail(text, lang);
        EXPECT_LE(out.size(), kDetailWidth);
        EXPECT_NE(out, text);
    }
}

TEST(DetailsLive, ToolFailuresHaveRows) {
    ToolRun missing = RunTool({"/nonexistent/tool"});
    ToolRun late = RunTool({"sleep", "5"}, "", 100);
    ToolRun refused = RunTool({"ls", "/nonexistent-dir-of-the-test"});
    ToolRun silent = RunTool({"false"});
    for (const ToolRun* run : {&missing, &late, &refused, &silent}) {
        std::string why = run->Why("chpasswd");
        ExpectRow(why);
        ExpectRow("The password was not changed: " + why + ".");
        ExpectRow("Cannot read the firewall: " + run->Why("iptables") + ".");
        ExpectRow("eth0 could not be configured: " + run->Why("networkctl reload") +
                  "; the old settings were put back.");
    }
}

TEST(DetailsLive, ClockAnswersHaveRows) {
    time_t now = 1700000000;
    struct tm t {};
    localtime_r(&now, &t);
    ClockSetter refuse = [](time_t, std::string& err) {
        err = "Operation not permitted";
        return false;
    };
    ExpectRow(ChangeDate({2031, 5, 6}, refuse, now).sDetail);
    ExpectRow(ChangeTime({4, 5, 6}, refuse, now).sDetail);
    ExpectRow(ChangeDate({t.tm_year + 1900, t.tm_mon + 1, t.tm_mday}, refuse, now).sDetail);
    ExpectRow(ChangeTime({t.tm_hour, t.tm_min, t.tm_sec}, refuse, now).sDetail);
}

TEST(DetailsLive, UnknownUserAndInterfaceHaveRows) {
    ExpectRow(ChangePassword({"no-such-user-of-the-test", "secret"}).sDetail);
    ExpectRow(ChangeInterface({52, "nosuch-test0"}).sDetail);
    ExpectRow(ChangeInterfaceManual({"nosuch-test0", "10.0.0.1", "255.0.0.0", "", "", ""}).sDetail);
    // Refused before anything is read of or done to the loopback.
    ExpectRow(ChangeInterface({54, "lo"}).sDetail);
    ExpectRow(ChangeInterfaceManual({"lo", "10.0.0.1", "255.0.0.0", "", "", ""}).sDetail);
}

TEST(DetailsLive, MissingServersHaveRows) {
    // Only where the server is missing: the refusal comes before anything
    // is read or written.
    if (access("/usr/sbin/vsftpd", F_OK) != 0) {
        ExpectRow(ChangeFtpFlag(FlagRequest{40, true}, "/nonexistent").sDetail);
        ExpectRow(RestoreFtpDefaults("/nonexistent").sDetail);
    }
    if (access("/usr/sbin/smbd", F_OK) != 0)
        ExpectRow(ChangeSambaPath(PathRequest{48, "/srv/share"}, "/nonexistent").sDetail);
}

TEST(DetailsLive, OtherManagersAnswersHaveRows) {
    RuleAddRequest in{kChainInput, false, {kProtoTcp, "", 0, "", 22, kActAccept}};
    RuleAddRequest out{kChainOutput, true, {kProtoUdp, "10.1.2.3", 53, "10.9.8.7", 0, kActDrop}};
    for (const char* m : {"ufw", "firewalld"}) {
        ExpectRow(ManagerAddRule(m, in).sDetail);
        ExpectRow(ManagerAddRule(m, out).sDetail);
        ExpectRow(ManagerDelete(m).sDetail);
        for (FwChain c : {kChainInput, kChainOutput}) {
            for (int p : {kActAccept, kActDrop})
                ExpectRow(ManagerPolicy(m, PolicyRequest{c, p}).sDetail);
        }
    }
}

TEST(DetailsLive, FirewallNotesHaveRowsAloneAndAfterAnAnswer) {
    OtherFilters f;
    f.legacy = true;
    f.chains.push_back({"nftables", "inet filter", "input", 0, true, "drop"});
    std::string both = OtherFiltersNote(f, 0, true);
    f.chains.push_back({"firewalld", "inet firewalld", "filter_INPUT", 0, true, "rule -j REJECT"});
    std::string two = OtherFiltersNote(f, 0, true);
    f.chains.clear();
    std::string legacy = OtherFiltersNote(f, 0, true);
    const std::string first =
        " It does not take effect: ufw's rule \"-j DROP\" in INPUT comes before the agent's chain.";
    for (const std::string& note : {both, two, legacy, first, first + legacy}) {
        ASSERT_EQ(note[0], ' ');
        ExpectRow(note.substr(1));
        ExpectRow("The input chain policy is already accept." + note);
        ExpectRow("The firewall refused the change (IPv6): iptables-restore failed (exit 2)." +
                  note);
    }
}

TEST(DetailsLive, InterfaceNotesHaveRows) {
    std::string cloud = CloudInitNote("/etc/network/interfaces.d/50-cloud-init.cfg");
    ExpectRow(cloud);
    ExpectRow(
        "The DNS servers were stored in /etc/network/interfaces; /etc/resolv.conf is "
        "managed by resolvconf and was left as it is. " +
        cloud);
    ExpectRow(
        "No network manager owns eth1: it was changed live only, and the change will not "
        "survive a reboot. The DNS servers were stored in no file (no network manager owns "
        "eth1); /etc/resolv.conf is managed by the tool that owns "
        "../run/connman/resolv.conf and was left as it is.");
}

TEST(DetailsLive, RefusedMonitorPathsHaveRows) {
    nvtest::TempDir dir;
    std::string data = dir.File("data");
    mkdir(data.c_str(), 0700);
    std::string link = dir.File("link");
    ASSERT_EQ(symlink("/etc/hostname", link.c_str()), 0);
    LiveMonitors m(data, 0);
    std::vector<Request> refused = {
        ListRequest{13, {data + "/settings.json"}},
        VolumeAddRequest{data, 90, 10, 60},
        BackupAddRequest{data + "/x", "/var/backups", 100},
        BackupAddRequest{"/etc/hostname", data, 100},
        BackupAddRequest{"/proc/cpuinfo", "/var/backups", 100},
        BackupAddRequest{"/etc/hostname", "/sys/kernel", 100},
        BackupAddRequest{link, "/var/backups", 100},
        BackupAddRequest{"/etc", "/var/backups", 100},
    };
    for (const Request& q : refused) {
        CmdResult r;
        ASSERT_TRUE(m.PathsRefused(q, r));
        ExpectRow(r.sDetail);
    }
    std::string why = nvmonit::UntrustedPathReason(link, false);
    ExpectRow(why);
}

}  // namespace
