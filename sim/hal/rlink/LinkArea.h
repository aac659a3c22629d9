// What all links of the board share: the numbers of sessions and buffers.
#pragma once

#include <cstdint>

#include "core/Board.h"

namespace sim {

/// Enters a session of this process and gives its number; 0 when the slave has no room for more.
/// Sessions of processes that are gone count no longer.
uint32_t EnterSession(Board& board, uint32_t classId);

/// Strikes a session out.
void LeaveSession(Board& board, uint32_t id);

}  // namespace sim
