// The list of the catalogue's tables. A domain's file defines its table; a
// new file adds its declaration and one entry here.
#include "agent/details/detail_registry.h"

namespace nvagent {

extern const DetailTable kDetailsServer;
extern const DetailTable kDetailsCommands;
extern const DetailTable kDetailsSim;

const std::vector<const DetailTable*>& DetailTables() {
    static const std::vector<const DetailTable*> kTables = {
        &kDetailsServer,
        &kDetailsCommands,
        &kDetailsSim,
    };
    return kTables;
}

}  // namespace nvagent
