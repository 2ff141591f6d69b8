// The agent's detail texts in the console's three languages, over the socket
// against a real norvaned serving the demo state: every command case and
// the refusals of long, blank-holding and non-ASCII values, each answer's
// detail decoded from its encoding (GB2312 with iconv), at most 78 bytes,
// with a row in the catalogue, Chinese without English words but for the
// values sent, and the full English sentence in the journal.
#include <gtest/gtest.h>
#include <iconv.h>

#include <cerrno>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "agent/details/detail_lookup.h"
#include "agent_process.h"
#include "command_cases.h"
#include "raw_client.h"

namespace {

const char* const kLangNames[] = {"English", "Chinese GB2312", "Chinese UTF-8"};

// Strict conversion between two encodings; false on any byte that is not
// a character of from.
bool Convert(const char* from, const char* to, const std::string& in, std::string& out) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        return false;
    out.assign(in.size() * 4 + 16, '\0');
    char* src = const_cast<char*>(in.data());
    size_t srcLeft = in.size();
    char* dst = &out[0];
    size_t dstLeft = out.size();
    size_t n = iconv(cd, &src, &srcLeft, &dst, &dstLeft);
    iconv_close(cd);
    out.resize(out.size() - dstLeft);
    return n != static_cast<size_t>(-1) && srcLeft == 0;
}

// Cases beyond the command corpus: a blank inside a one-value field, long
// values that must be shortened, values in Chinese.
struct DetailCase {
    DetailCase(short c, std::string p, const char* f, short sc = 0, std::string sp = "")
        : cmd(c), payload(std::move(p)), full(f), setupCmd(sc), setupPayload(std::move(sp)) {}
    short cmd;
    std::string payload;
    const char* full;  // the journal's sentence when fixed, else null
    short setupCmd;    // a command that must succeed first, or 0
    std::string setupPayload;
};

std::vector<DetailCase> ExtraCases() {
    std::string longPath =
        "/srv/exports/projects/department-of-engineering/build-artifacts/"
        "nightly/2026-11-24/output/anonymous";
    return {
        {57, "web 02", "A host name cannot contain blanks."},
        {56, "admin zq9 xk7 zq9 xk7", "A password cannot contain blanks."},
        {56, "ad min pw pw", "A user name cannot contain blanks."},
        {52, "eth 0", "An interface name cannot contain blanks."},
        {53, "eth0 eth1", "An interface name cannot contain blanks."},
        {54, "e 1", "An interface name cannot contain blanks."},
        {24, "1 2", "An index cannot contain blanks."},
        {29, "1 2", "An index cannot contain blanks."},
        {34, "1 2", "An index cannot contain blanks."},
        {38, "1 2", "An index cannot contain blanks."},
        {32, "1 2", "The policy is one choice, 1 (accept) or 2 (drop), without blanks."},
        {58, "20 24 2 9", "The year, month and day cannot contain blanks."},
        {59, "1 2 3 4", "The hour, minute and second cannot contain blanks."},
        {60, "admin $6$q7 z9", "A user name or password hash cannot contain blanks."},
        {12, "", "Command 12 is not supported."},
        {3, "", "Unknown command 3."},
        {15, "run/" + std::string(200, 'p'), nullptr},
        {13, "relative/" + std::string(300, 'f'), nullptr},
        {4, std::string(150, 'y'), nullptr},
        {24, std::string(200, 'x'), nullptr},
        {37, "1 1 - 0 - " + std::string(100, '9') + " 1", nullptr},
        {4, "开", nullptr},
        {57, "主机", nullptr},
        {53, "eth0eth0eth0eth0", "An interface name has at most 15 bytes."},
        {55, "eth0 010.1.1.1 255.255.255.0 - - -", nullptr},
        {55, "eth0 192.168.1.0 255.255.255.0 - - -",
         "The IP address 192.168.1.0 is the network's own address."},
        {55, "eth0 224.0.0.1 255.255.255.0 - - -", nullptr},
        {55, "eth0 192.168.1.30 255.255.255.0 192.168.1.30 - -", nullptr},
        {55, "eth0 192.168.1.30 255.255.255.0 - 0.1.2.3 -", nullptr},
        {57, "localhost", nullptr},
        {57, "1234", nullptr},
        {58, "9999 2 30", "9999-02-30 is not a calendar date."},
        {43, longPath, nullptr, 43, longPath},
        {48, longPath, nullptr, 48, longPath},
        {28, longPath + " /var/backups 64", nullptr, 28, longPath + " /var/backups 64"},
        {23, longPath + " 100 10 5", nullptr, 23, longPath + " 100 10 5"},
        {57, "srv-web01", "The host name is already srv-web01."},
    };
}

// English words a Chinese detail may keep: names of protocols, products,
// units and encodings.
const std::set<std::string> kKeptWords = {
    "CPU",  "FTP", "Samba", "IPv", "IP",    "ICMP", "TCP", "SYN",  "cookie", "TIME_WAIT", "MB",
    "DHCP", "DNS", "UTF",   "GB",  "crypt", "tcp",  "udp", "proc", "sys",    "dev"};

// The ASCII words of a Chinese detail that are neither kept words nor
// (parts of) the values sent.
std::vector<std::string> EnglishLeft(std::string text, const std::string& payload) {
    std::vector<std::string> values;
    std::string word;
    for (char c : payload + " ") {
        if (c == ' ' || c == '\n') {
            if (!word.empty())
                values.push_back(word);
            word.clear();
        } else {
            word += c;
        }
    }
    for (const std::string& v : values) {
        for (size_t at; (at = text.find(v)) != std::string::npos;)
            text.erase(at, v.size());
        // A value shortened to fit ends in "...".
        for (size_t len = v.size(); len >= 3; --len) {
            size_t at = text.find(v.substr(0, len) + "...");
            if (at != std::string::npos) {
                text.erase(at, len);
                break;
            }
        }
    }
    std::vector<std::string> left;
    // Runs of two or more ASCII letters or underscores.
    auto isWordChar = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    for (size_t i = 0; i < text.size();) {
        if (!isWordChar(text[i])) {
            ++i;
            continue;
        }
        size_t end = i;
        while (end < text.size() && isWordChar(text[end]))
            ++end;
        std::string word = text.substr(i, end - i);
        if (word.size() >= 2 && kKeptWords.count(word) == 0)
            left.push_back(word);
        i = end;
    }
    return left;
}

class AgentDetails : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override {
        m_lang = GetParam();
        std::string err;
        ASSERT_TRUE(Start(&err)) << err;
    }
    bool Start(std::string* err) {
        std::string demo;
        {
            FILE* f = fopen(NV_SOURCE_DIR "/data/demo-state.json", "rb");
            if (f == nullptr)
                return false;
            char buf[4096];
            for (size_t n; (n = fread(buf, 1, sizeof buf, f)) > 0;)
                demo.append(buf, n);
            fclose(f);
        }
        std::string lang = "\"chLangCode\": " + std::to_string(m_lang);
        const std::string english = "\"chLangCode\": 0";
        for (size_t at = 0; (at = demo.find(english, at)) != std::string::npos; at += lang.size())
            demo.replace(at, english.size(), lang);
        return m_agent.SetStateJson(demo) && m_agent.Start(err);
    }
    void Reset() {
        ASSERT_EQ(m_agent.Stop(), 0);
        std::string err;
        ASSERT_TRUE(Start(&err)) << err;
    }

    // Sends one case and checks its detail; returns the result code.
    int Check(short cmd, const std::string& payload, const char* full) {
        SCOPED_TRACE(std::string(kLangNames[m_lang]) + ": command " + std::to_string(cmd) + " \"" +
                     payload.substr(0, 60) + "\"");
        nvtest::Answer a = nvtest::Request(m_agent.SocketPath(), cmd, payload);
        EXPECT_TRUE(a.bOk) << a.sError;
        nlohmann::json last = m_agent.ReadJournal().back();
        std::string sentence = last.value("detail", std::string());
        if (full != nullptr) {
            EXPECT_EQ(sentence, full);
        }
        if (a.result != 7) {
            EXPECT_FALSE(a.sDetail.empty());
        }
        // The language command answers in the language it chose.
        int lang = m_lang;
        if (cmd == 2 && a.result == 7)
            lang = payload[0] - '0';
        EXPECT_LE(a.sDetail.size(), 78u) << a.sDetail;
        std::string text;
        const char* encoding = lang == 1 ? "GB2312" : "UTF-8";
        EXPECT_TRUE(Convert(encoding, "UTF-8", a.sDetail, text)) << a.sDetail;
        if (sentence.empty())
            return a.result;
        std::vector<std::string> parts;
        EXPECT_NE(nvagent::FindDetailRow(sentence, parts), nullptr)
            << "no row for \"" << sentence << "\"";
        bool asciiPayload = true;
        for (unsigned char c : payload)
            asciiPayload = asciiPayload && c < 0x80;
        if (lang == 0 && asciiPayload) {
            for (unsigned char c : text)
                EXPECT_LT(c, 0x80) << text;
        }
        if (lang != 0) {
            bool cjk = false;
            for (unsigned char c : text)
                cjk = cjk || c >= 0x80;
            EXPECT_TRUE(cjk) << text;
            std::vector<std::string> left = EnglishLeft(text, payload);
            EXPECT_TRUE(left.empty()) << "English left in \"" << text << "\": " << left[0];
        }
        // Short values are never cut.
        if (payload.size() <= 24 && sentence.find("...") == std::string::npos) {
            EXPECT_EQ(text.find("..."), std::string::npos) << text;
        }
        return a.result;
    }

    int m_lang = 0;
    nvtest::AgentProcess m_agent;
};

TEST_P(AgentDetails, EveryCommandCaseAnswersInTheConsolesLanguage) {
    int checked = 0;
    for (const nvtest::CommandCase& c : nvtest::kCommandCases) {
        if (c.setupCmd != 0) {
            nvtest::Answer setup =
                nvtest::Request(m_agent.SocketPath(), c.setupCmd, c.setupPayload);
            ASSERT_TRUE(setup.bOk) << setup.sError;
            ASSERT_EQ(setup.result, 7) << setup.sDetail;
        }
        int result = Check(c.cmd, c.payload, nullptr);
        ++checked;
        if (result == 7 || c.setupCmd != 0)
            Reset();
    }
    EXPECT_GT(checked, 200);
}

TEST_P(AgentDetails, BlanksLongAndChineseValuesAnswerInTheConsolesLanguage) {
    for (const DetailCase& c : ExtraCases()) {
        if (c.setupCmd != 0) {
            nvtest::Answer setup =
                nvtest::Request(m_agent.SocketPath(), c.setupCmd, c.setupPayload);
            ASSERT_TRUE(setup.bOk) << setup.sError;
            ASSERT_EQ(setup.result, 7) << setup.sDetail;
        }
        if (Check(c.cmd, c.payload, c.full) == 7 || c.setupCmd != 0)
            Reset();
    }
}

// The journal keeps the whole sentence where the console gets its short
// form: the process list's rule is too long for the line in any language.
TEST_P(AgentDetails, TheJournalKeepsTheFullSentence) {
    nvtest::Answer a = nvtest::Request(m_agent.SocketPath(), 15, "sbin/sshd\n");
    ASSERT_TRUE(a.bOk) << a.sError;
    std::string full =
        "\"sbin/sshd\" is not a command line (a program name or an absolute path, then its "
        "arguments; UTF-8 text of at most 255 bytes).";
    EXPECT_EQ(m_agent.ReadJournal().back()["detail"], full);
    EXPECT_GT(full.size(), 78u);
    EXPECT_LE(a.sDetail.size(), 78u);
    EXPECT_NE(a.sDetail.find("sbin/sshd"), std::string::npos);
    EXPECT_EQ(a.sDetail, nvagent::LocaliseDetail(full, m_lang));
}

std::string LangName(const ::testing::TestParamInfo<int>& info) {
    static const char* const kNames[] = {"English", "Gb2312", "Utf8"};
    return kNames[info.param];
}

INSTANTIATE_TEST_SUITE_P(Languages, AgentDetails, ::testing::Values(0, 1, 2), LangName);

}  // namespace
