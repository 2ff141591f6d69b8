// What the agent answers to one complete request: the check command gets the
// backend's state, set commands go to the backend, other numbers are refused.
#ifndef NV_AGENT_REQUEST_DISPATCH_H
#define NV_AGENT_REQUEST_DISPATCH_H

#include <string>

#include "agent/backend.h"

namespace nvagent {

// Lowest and highest set command the console can send.
constexpr short kFirstSetCmd = 4;
constexpr short kLastSetCmd = 63;

// Buffers one worker reuses from request to request, so that a request costs
// no allocation once they have grown.
struct AnswerBuffers {
    std::string body;
    std::string answer;
    // The last set command's old and new values for the journal (empty
    // after a check or a change that recorded none).
    std::string oldValues;
    std::string newValues;
    // The last set command's note for the journal (empty: none).
    std::string note;
};

// Builds the whole answer packet for cmd and payload into bufs.answer and
// returns the result code it carries; a change's old and new values go to
// bufs.oldValues and bufs.newValues.
int AnswerRequest(Backend& backend, short cmd, const std::string& payload, AnswerBuffers& bufs,
                  const Peer& peer = Peer{});

}  // namespace nvagent

#endif
