// Reads faults: the same JSON in a file, over the control path and in the process.
//
// An array of objects. To which calls a fault is applied:
//   "path": PATH       the full path of a call, or "*" for every service call; required
//   "skip": N          not the first N calls of the path
//   "first": N         none after the first N calls of the path
//   "times": N         at most N calls
//   "name": TEXT       what the log calls it; the keys of what it does when left out
// What it does, at least one of these:
//   "latency": MS      the reply waits, whatever it is
//   "status": N        200 to 599
//   "headers": {"NAME": "TEXT"}
// a body in place of the normal one, with status 200 unless "status" says more; at most one of
//   "body": TEXT, "bodyBytes": HEX, "emptyBody": true, "reply": any JSON
//   "oversize": N      N bytes, an object that would be right if it were smaller
//   "nested": N        N arrays, one inside of the other
// (fault_keys.h has the bounds)
// and how the reply breaks, at most one of
//   "resetBeforeReply": true, "closeWithoutReply": true, "hang": true
//   "resetInBody": N, "cutBody": N     the announced length stays, N bytes of the body are sent, at
//                                      most all but one
//   "trickle": N       N bytes of the body a second
//   "acceptAndClose": true             is applied to connections, not to calls, hence with no other
//                                      effect, the path "*", and bounds: the control path uses
//                                      connections too
#pragma once

#include <cstddef>
#include <vector>

#include "apps/risk_server/contract/contract.h"
#include "apps/risk_server/faults/fault.h"

namespace risk_server {

inline constexpr std::size_t kMaxFaults = 1000;

// Paths must be calls of the contract. Throws InputError naming the place.
std::vector<Fault> readFaults(const Json& json, const Contract& contract);

}  // namespace risk_server
