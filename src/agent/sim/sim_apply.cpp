// Dispatch of a parsed request to the simulator function of its kind; the
// commands that share a request type are told apart by their number.
#include "agent/sim/sim_apply.h"

#include "agent/commands/own_settings.h"

namespace nvagent {

namespace {

struct Dispatch {
    SimContext& c;

    CmdResult operator()(const FlagRequest& q) { return SimFlag(c, q); }
    CmdResult operator()(const KernelRequest& q) { return SimKernel(c, q); }
    CmdResult operator()(const PathRequest& q) { return SimPath(c, q); }
    CmdResult operator()(const PlainRequest& q) {
        switch (q.cmd) {
            case 35:
                return SimRuleClear(c, kChainInput);
            case 39:
                return SimRuleClear(c, kChainOutput);
            case 47:
            case 51:
                return SimRestore(c, q.cmd);
            default:
                return Failed("Command " + std::to_string(q.cmd) + " is not a plain command.");
        }
    }
    CmdResult operator()(const DeleteRequest& q) {
        if (q.cmd == 34)
            return SimRuleDelete(c, kChainInput, q.index);
        if (q.cmd == 38)
            return SimRuleDelete(c, kChainOutput, q.index);
        return Failed("Command " + std::to_string(q.cmd) + " deletes no rule.");
    }
    CmdResult operator()(const PolicyRequest& q) { return SimPolicy(c, q); }
    CmdResult operator()(const RuleAddRequest& q) { return SimRuleAdd(c, q); }
    CmdResult operator()(const InterfaceRequest& q) { return SimInterface(c, q); }
    CmdResult operator()(const InterfaceManualRequest& q) { return SimInterfaceManual(c, q); }
    CmdResult operator()(const PasswordRequest& q) { return SimPassword(c, q); }
    CmdResult operator()(const HostNameRequest& q) { return SimHostName(c, q); }
    CmdResult operator()(const DateRequest& q) { return SimDate(c, q); }
    CmdResult operator()(const TimeRequest& q) { return SimTime(c, q); }
    template <class Own>
    CmdResult operator()(const Own&) {
        return Failed("Not a simulator request.");
    }
};

}  // namespace

CmdResult SimApply(SimContext& c, const Request& req) {
    if (IsOwnSetting(req))
        return ApplyOwnSetting(c.st.conf, c.st.svr.iMemTotal, req);
    return std::visit(Dispatch{c}, req);
}

}  // namespace nvagent
