// What the HDCP 2 driver tests and unit tests have in common: steps that name the failing call, and
// the text of what may be told of a receiver.
#pragma once

#include <cstdint>

#include "k2v/hdcp2.h"

namespace hdcp2 {

/// Prints "CALL NG : CODE" when `result` is not 0. Returns whether it is 0.
bool Succeeded(const char* call, int result);

/// Name of a K2V_HDCP2_STATE_* or a K2V_HDCP2_REASON_*.
const char* StateName(uint32_t state);
const char* ReasonName(uint32_t reason);

/// Initialises the receiver anew, whatever state it was in. False, with its line, when that fails.
bool Restart();

/// Initialises the receiver where it is not, and loads its keys where there are none. False, with
/// its line, when that fails.
bool Prepare();

/// Reads the status of a port and prints it, one field a line. False, with its line, when it cannot
/// be read.
bool PrintStatus(uint8_t port);

/// Lets the source at `port` authenticate up to `state`. A failure prints the line of the call and
/// the reason; returns whether `state` was reached.
bool Authenticate(uint8_t port, uint32_t state);

}  // namespace hdcp2
