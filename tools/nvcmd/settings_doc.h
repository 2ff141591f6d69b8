// The settings document: what each key means (the record field it reads,
// the set command that changes it, the payload it makes), the declarative
// lists, the export of a check answer as a document, and the check of a
// document before anything is sent. Documents are JSON values; the YAML
// form is read and written by settings_yaml.h.
#ifndef NV_TOOLS_NVCMD_SETTINGS_DOC_H
#define NV_TOOLS_NVCMD_SETTINGS_DOC_H

#include <map>
#include <string>
#include <vector>

#include "agent/json_fields.h"

namespace nvsettings {

using Json = nvagent::Json;

// Where an item sits in a document: keys, and "[n]" for list positions.
using Path = std::vector<std::string>;
// "firewall.input.rules[2].dport".
std::string PathText(const Path& p);

enum class Kind { kFlag, kLimit, kPercent, kMemCeil, kPath, kHostName, kLanguage, kPolicy };

// One setting that is a single value.
struct ScalarKey {
    const char* path;   // dotted document path
    const char* field;  // field of the check answer
    Kind kind;
    short cmd;  // the set command
    short minimum;
};
const std::vector<ScalarKey>& ScalarKeys();
const ScalarKey* FindScalar(const std::string& dotted);

// The document value of a setting in a check answer; null when the server
// has none that can be set (an unset flag, a zero limit, no host name).
Json ScalarFromState(const ScalarKey& k, const Json& state);
// The payload that sets a document value; false with why for a value the
// setting cannot take (the agent's own parser judges it).
bool ScalarPayload(const ScalarKey& k, const Json& v, std::string& payload, std::string& why);

enum class ListType { kFiles, kProcesses, kVolumes, kBackups, kRules };

// One declarative list and the commands that change it. Lists with setCmd
// are replaced whole; the others change by add, delete and clear.
struct ListKey {
    const char* path;
    const char* field;  // field of the check answer holding the list
    ListType type;
    short setCmd, addCmd, delCmd, clearCmd;
};
const std::vector<ListKey>& ListKeys();
const ListKey* FindList(const std::string& dotted);

// An element of a list in one canonical form (every field present), so
// that equal elements compare equal; false with why (and the bad field in
// sub) for an element the list cannot hold.
bool ElementFromDoc(const ListKey& k, const Json& e, Json& canon, std::string& sub,
                    std::string& why);
// The key an element is known by in its list: the partition of a volume,
// the file of a backup, the element itself otherwise.
Json ElementKey(const ListKey& k, const Json& canon);
// The agent's payload adding a canonical element (appended, or first).
std::string AddPayload(const ListKey& k, const Json& canon, bool top);
// The list's current elements, canonical, with the index each is deleted by.
std::vector<Json> CurrentElements(const ListKey& k, const Json& state,
                                  std::vector<unsigned long>* shownIndex);
// An element as the export writes it (a rule's defaults left out).
Json ElementForExport(const ListKey& k, const Json& canon);

// A list as a document gives it: its entries and how they are meant.
enum class ListState { kExact, kPresent, kAbsent };
struct ListSpec {
    ListState state = ListState::kExact;
    Json items = Json::array();  // as given
};
ListSpec ReadListSpec(const Json& v);

// The server's settable settings as a document. A password never is.
Json ExportSettings(const Json& state);

// The entries of each list a document gives, canonical, by the list's
// dotted path (an absent entry given by its key alone: that key).
using CanonLists = std::map<std::string, std::vector<Json>>;

// Whether a document can be applied: known keys, right types, values the
// agent's parsers accept, no duplicate list entries. False with the path of
// the first bad item and why. The lists' canonical entries go to lists,
// when given, so that the plan need not work them out again.
bool CheckDocument(const Json& doc, std::string& path, std::string& why,
                   CanonLists* lists = nullptr);

// An interface entry: whether it asks for a manual address (mode static,
// or an address given), and the manual-address payload it makes.
bool InterfaceWantsStatic(const Json& spec);
std::string InterfaceManualPayload(const std::string& name, const Json& spec);

// A user's password from a crypt(3) hash: the set command and its payload.
constexpr short kPasswordHashCmd = 60;
std::string PasswordHashPayload(const std::string& user, const std::string& hash);

// Language words of the document and their codes.
int LanguageCode(const std::string& word);
const char* LanguageWord(int code);

}  // namespace nvsettings

#endif
