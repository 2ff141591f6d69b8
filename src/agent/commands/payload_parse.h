// Parsing and checking of command payload pieces: blank-separated tokens,
// newline-separated lists, decimal numbers, IPv4 addresses, masks, paths and
// host names.
#ifndef NV_AGENT_PAYLOAD_PARSE_H
#define NV_AGENT_PAYLOAD_PARSE_H

#include <cstdint>
#include <string>
#include <vector>

namespace nvagent {

// s without the blanks, tabs and carriage returns at either end.
std::string Trim(const std::string& s);

// Splits at every single blank, so two blanks in a row give an empty token.
std::vector<std::string> SplitBlanks(const std::string& s);

// Splits a list payload into lines at "\n"; the final line may lack its
// newline. Each line is trimmed of surrounding blanks, tabs and "\r"; blank
// lines are dropped.
std::vector<std::string> SplitListLines(const std::string& s);

// A form field the user left empty: "-" (a placeholder) or "".
bool IsEmptyField(const std::string& s);

enum class DigitsResult { kOk, kNotDigits, kTooBig };
// Decimal digits only (at least one), with a value not above max.
DigitsResult ParseDigits(const std::string& s, unsigned long long max, unsigned long long& v);

// Dotted quad, each part 1-3 digits and at most 255, without leading zeros:
// the system's tools read "010" as octal, so such a part is refused rather
// than read one way here and applied another way there.
enum class Ipv4Check { kOk, kMalformed, kLeadingZero };
Ipv4Check CheckIPv4(const std::string& s, uint32_t& addr);
bool ParseIPv4(const std::string& s, uint32_t& addr);
// An address or address/prefix with a prefix of 0..32 (no leading zero).
Ipv4Check CheckIPv4OrNet(const std::string& s);
bool IsIPv4OrNet(const std::string& s);
// A mask whose one bits are contiguous from the top.
bool IsContiguousMask(uint32_t mask);

// Valid UTF-8 without control characters: text the state file can hold.
bool IsPlainText(const std::string& s);
bool HasControlChar(const std::string& s);
// Starts with "/", is plain text, at most maxLen bytes.
bool IsAbsolutePath(const std::string& s, size_t maxLen);

// Letters, digits and hyphens in dot-separated labels of 1..63 bytes, no label
// starting or ending with a hyphen.
bool IsHostName(const std::string& s);
// A name every label of which is digits ("123", "1.2.3.4"): resolvers read
// it as an address.
bool IsNumericHostName(const std::string& s);
// "localhost" or "localhost.localdomain", in any case: names of the loopback.
bool IsLoopbackHostName(const std::string& s);

// An interface name the kernel accepts and that no tool, configuration file
// or glob reads as anything but a name.
enum class IfNameCheck { kOk, kEmpty, kTooLong, kDots, kLeadingDash, kBadChar };
IfNameCheck CheckInterfaceName(const std::string& s);
// The longest interface name the kernel accepts (IFNAMSIZ less the NUL).
const size_t kMaxIfNameLen = 15;

}  // namespace nvagent

#endif
