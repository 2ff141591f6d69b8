// The FTP server's configuration text read and edited as the server itself
// reads it: one "option=value" directive a line, no blanks around "=",
// blanks before the option ignored, a "#" in the first column a comment,
// option names exact, boolean values YES/TRUE/1 or NO/FALSE/0 in any case,
// and the last directive of an option the one that counts.
#ifndef NV_AGENT_LIVE_FTP_CONFIG_H
#define NV_AGENT_LIVE_FTP_CONFIG_H

#include <array>
#include <string>

#include "link/state_record.h"

namespace nvagent {

// One on/off option of the server: the command that sets it, its name in
// the file, the field that reports it.
struct FtpFlag {
    short cmd;
    const char* option;
    char cConf_Inf::*flag;
};

// The five the agent sets (commands 40 to 42, 44 and 45).
extern const std::array<FtpFlag, 5> kFtpFlags;

// The agent's FTP options of text into conf (the flags as '1'/'0', the
// anonymous root); options not present keep what conf holds.
void ParseFtpConfig(const std::string& text, cConf_Inf& conf);

// text with option set to value: its last directive rewritten in place and
// every earlier one removed, so that the file says it once; added at the end
// when missing. Every other line (comments, order, unknown keys) is kept.
std::string WithFtpOption(const std::string& text, const std::string& option,
                          const std::string& value);

// text without any directive of option (the server's default applies).
std::string WithoutFtpOption(const std::string& text, const std::string& option);

}  // namespace nvagent

#endif
