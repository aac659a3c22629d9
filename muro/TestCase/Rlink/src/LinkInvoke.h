// How a test and the handler that the slave calls meanwhile come together.
#pragma once

#include <cstdint>

#include "rlink.h"

/// Says that the slave is going to invoke a command; its handler answers through `rlink`.
void ExpectInvocation(RLink& rlink);

/// Whether the handler was called since then and found all as it should be. A close of the session
/// waits for a handler that still runs.
bool InvocationSucceeded(uint32_t sessionId);
