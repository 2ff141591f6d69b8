// Line by line, with the server's own rules (see the header); a line the
// server would refuse (an unknown spelling) is left alone and read as no
// directive of ours.
#include "agent/live/ftp_config.h"

#include <strings.h>

#include <sstream>
#include <vector>

namespace nvagent {

const std::array<FtpFlag, 5> kFtpFlags = {{
    {40, "anonymous_enable", &cConf_Inf::chVsftpdAnonEnable},
    {41, "anon_upload_enable", &cConf_Inf::chVsftpdAnonUpload},
    {42, "anon_mkdir_write_enable", &cConf_Inf::chVsftpdAnonMkdir},
    {44, "local_enable", &cConf_Inf::chVsftpdLocalEnable},
    {45, "write_enable", &cConf_Inf::chVsftpdWrite},
}};

namespace {

// The option and value of a directive line; false for comments, blank
// lines and lines without "=".
bool Directive(const std::string& line, std::string& option, std::string& value) {
    if (line.empty() || line[0] == '#')
        return false;
    size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos)
        return false;
    size_t eq = line.find('=', start);
    if (eq == std::string::npos)
        return false;
    option = line.substr(start, eq - start);
    value = line.substr(eq + 1);
    return true;
}

bool IsYes(const std::string& v) {
    return strcasecmp(v.c_str(), "yes") == 0 || strcasecmp(v.c_str(), "true") == 0 || v == "1";
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        lines.push_back(line);
    return lines;
}

bool IsDirectiveOf(const std::string& line, const std::string& option) {
    std::string o, v;
    return Directive(line, o, v) && o == option;
}

}  // namespace

void ParseFtpConfig(const std::string& text, cConf_Inf& conf) {
    std::string option, value;
    for (const std::string& line : Lines(text)) {
        if (!Directive(line, option, value))
            continue;
        if (option == "anon_root") {
            conf.sVsftpdAnonRoot = value;
            continue;
        }
        for (const FtpFlag& f : kFtpFlags) {
            if (option == f.option)
                conf.*f.flag = IsYes(value) ? '1' : '0';
        }
    }
}

std::string WithFtpOption(const std::string& text, const std::string& option,
                          const std::string& value) {
    std::vector<std::string> lines = Lines(text);
    size_t last = lines.size();
    for (size_t i = 0; i < lines.size(); ++i) {
        if (IsDirectiveOf(lines[i], option))
            last = i;
    }
    std::string out;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i == last)
            out += option + "=" + value + "\n";
        else if (!IsDirectiveOf(lines[i], option))
            out += lines[i] + "\n";
    }
    if (last == lines.size())
        out += option + "=" + value + "\n";
    return out;
}

std::string WithoutFtpOption(const std::string& text, const std::string& option) {
    std::string out;
    for (const std::string& line : Lines(text)) {
        if (!IsDirectiveOf(line, option))
            out += line + "\n";
    }
    return out;
}

}  // namespace nvagent
