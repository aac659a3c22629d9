// Shared by the HDCP 2 driver tests and unit tests: steps that print the failing call, and the text
// of the public data of a receiver.
#pragma once

#include <cstdint>

#include "k2v/hdcp2.h"

namespace hdcp2 {

/// Prints "CALL NG : CODE" when `result` is not 0. Returns whether it is 0.
bool Succeeded(const char* call, int result);

/// Name of a K2V_HDCP2_STATE_* or a K2V_HDCP2_REASON_*.
const char* StateName(uint32_t state);
const char* ReasonName(uint32_t reason);

/// Reinitialises the receiver, whatever state it was in. False, after the call's line, on failure.
bool Restart();

/// Initialises the receiver if necessary, and loads its keys if there are none. False, after the
/// call's line, on failure.
bool Prepare();

/// Reads the status of a port and prints it, one field per line. False, after the call's line, if
/// it cannot be read.
bool PrintStatus(uint8_t port);

/// Makes the source at `port` authenticate up to `state`. A failure prints the line of the call and
/// the reason; returns whether `state` was reached.
bool Authenticate(uint8_t port, uint32_t state);

}  // namespace hdcp2
