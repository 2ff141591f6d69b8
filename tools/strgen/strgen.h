// The GB2312 catalogue generator: rewrites the hand-written UTF-8 catalogue
// source into the GB2312 catalogue source, so that the Chinese words have one
// source. Identifiers pcUTF8_ become pcGB2312_, and every string literal is
// re-encoded to GB2312 with every non-ASCII byte written as a \xNN escape, so
// the generated source is plain ASCII.
#ifndef NV_TOOLS_STRGEN_STRGEN_H
#define NV_TOOLS_STRGEN_STRGEN_H

#include <string>

// Re-encodes UTF-8 text to GB2312 with iconv. False, and *pOut unspecified, if
// the text is not valid UTF-8 or a character has no GB2312 form.
bool Utf8ToGb2312(const std::string& strIn, std::string* pOut);

// Rewrites one UTF-8 catalogue source file (header or source). strSourceName
// is the input's file name, quoted in the generated file's first comment.
// False with a message ("line N: ...") in *pErr when a literal cannot be
// converted, non-ASCII text stands outside a plain string literal, or a trace
// of the UTF-8 names survives the renaming.
bool ConvertCatalogueSource(const std::string& strIn, const std::string& strSourceName,
                            std::string* pOut, std::string* pErr);

#endif
