// The YAML subset that settings documents are written in, read into and
// written from the same JSON values that the JSON form uses. Read: block
// mappings and sequences, flow mappings and sequences on one line, plain,
// single- and double-quoted scalars, comments, a leading "---"; a document
// whose first character is "{" or "[" is read as JSON. Not read: anchors,
// aliases, tags, block scalars ("|", ">") and multi-line flow collections
// (each refused with its line). Plain scalars resolve as YAML 1.2's core
// schema: null, ~, true, false, whole numbers; anything else is a string.
#ifndef NV_TOOLS_NVCMD_SETTINGS_YAML_H
#define NV_TOOLS_NVCMD_SETTINGS_YAML_H

#include <string>

#include "agent/json_fields.h"

namespace nvsettings {

using Json = nvagent::Json;

// Parses text; false with err ("line 4: ...") when it is not in the subset.
bool ParseYaml(const std::string& text, Json& out, std::string& err);

// Writes a document in block style; sequences whose items are flat mappings
// are written one flow mapping per line. Strings are quoted whenever a plain
// scalar would read back as something else.
std::string WriteYaml(const Json& doc);

}  // namespace nvsettings

#endif
