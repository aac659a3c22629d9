// The table of sessions, which all links of the board share.
#pragma once

#include <cstdint>

#include "core/Board.h"

namespace sim {

/// Adds a session of this process and returns its id; 0 if the slave has no room for more.
/// Sessions of processes that no longer exist do not count.
uint32_t EnterSession(Board& board, uint32_t classId);

/// Removes a session.
void LeaveSession(Board& board, uint32_t id);

}  // namespace sim
