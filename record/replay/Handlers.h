// The handlers that the harness registered, called as the HAL called them in the recording.
#pragma once

#include "reader/Value.h"

namespace record {

class ReplaySession;

/// Calls the handler of a recorded event with its arguments, on this thread, and compares its
/// results.
void CallRecordedHandler(ReplaySession& session, uint16_t call, Bytes entry);

}  // namespace record
