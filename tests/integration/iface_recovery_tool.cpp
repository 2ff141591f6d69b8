// Undoes an interface change from its recovery JSON (standard input) the
// way an agent started again does: a fresh process that knows nothing but
// the JSON. Exit status 0 when undone, 1 with the reason on standard error.
#include <iostream>
#include <iterator>
#include <string>

#include "agent/live/interfaces/interface_recovery.h"

int main() {
    std::string json((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    std::string err;
    if (nvagent::UndoInterfaceRecovery(json, err))
        return 0;
    std::cerr << err << "\n";
    return 1;
}
