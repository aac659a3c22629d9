// Connects a test with the handler that the slave calls meanwhile.
#pragma once

#include <cstdint>

#include "rlink.h"

/// Announces that the slave is going to invoke a command; its handler answers through `rlink`.
void ExpectInvocation(RLink& rlink);

/// True if the handler was called since then and found everything correct. Closing the session
/// waits for a handler that is still running.
bool InvocationSucceeded(uint32_t sessionId);
