// The handlers that the harness registered, called as the HAL did when it was recorded.
#pragma once

#include "reader/Value.h"

namespace record {

class ReplaySession;

/// Calls the handler of a recorded event with its arguments, on this thread, and has what it left
/// compared.
void CallRecordedHandler(ReplaySession& session, uint16_t call, Bytes entry);

}  // namespace record
