// Where a payload comes from when it is not on the command line: the whole
// of standard input, or, for a password on a terminal, prompts that do not
// echo what is typed.
#ifndef NV_TOOLS_NVCMD_PAYLOAD_INPUT_H
#define NV_TOOLS_NVCMD_PAYLOAD_INPUT_H

#include <cstdio>
#include <string>

// Reads fd to its end into payload, without the one newline ("\n" or
// "\r\n") that ends the last line. At most maxLen + 1 bytes are kept, so a
// longer input is seen as too long without being held whole. False when the
// read fails.
bool ReadPayload(int fd, size_t maxLen, std::string& payload);

// Asks on the terminal fd for the user name and the new password twice (not
// echoed), prompts written to prompts; the password command's payload
// "USER PASSWORD PASSWORD" in payload. False when the terminal cannot be
// read (end of input, or its echo cannot be switched off).
bool PromptPassword(int fd, FILE* prompts, std::string& payload);

#endif
