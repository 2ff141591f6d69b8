// The list of the catalogue's tables. A domain's file defines its table; a
// new file adds its declaration and one entry here. The first row that
// matches wins, so a table with rows that begin with "{}" (the simulator's
// "{} is already up.") comes last, where it cannot take another domain's
// sentence.
#include "agent/details/detail_registry.h"

namespace nvagent {

extern const DetailTable kDetailsServer;
extern const DetailTable kDetailsCommands;
extern const DetailTable kDetailsSim;
extern const DetailTable kDetailsLiveSystem;
extern const DetailTable kDetailsLiveFirewall;
extern const DetailTable kDetailsLiveInterfaces;
extern const DetailTable kDetailsLiveServices;
extern const DetailTable kDetailsLiveMonitors;
extern const DetailTable kDetailsLiveReasons;
extern const DetailTable kDetailsGuardSession;
extern const DetailTable kDetailsGuardIfaces;
extern const DetailTable kDetailsGuardWatch;

const std::vector<const DetailTable*>& DetailTables() {
    static const std::vector<const DetailTable*> kTables = {
        &kDetailsServer,
        &kDetailsCommands,
        &kDetailsSim,
        &kDetailsLiveSystem,
        &kDetailsLiveFirewall,
        &kDetailsLiveInterfaces,
        &kDetailsLiveServices,
        &kDetailsLiveMonitors,
        &kDetailsGuardSession,
        &kDetailsGuardIfaces,
        &kDetailsGuardWatch,
        // The tools' reasons, which the sentences above quote, last.
        &kDetailsLiveReasons,
    };
    return kTables;
}

}  // namespace nvagent
