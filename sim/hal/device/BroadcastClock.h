// The board's 90 kHz clocks: the media clock, and the broadcast clock, which its speed register
// trims in steps.
#pragma once

#include <string>

#include "core/Board.h"

namespace sim {

/// Ticks of the media clock since the power-on.
uint64_t MediaTicks(const Board& board);

/// Ticks of the broadcast clock since the power-on.
uint64_t BroadcastTicks(const Board& board);

/// Executes one line written to the register file: "ADDRESS VALUE" writes a register, "ADDRESS"
/// alone selects the one to be read. Anything else leaves a line that begins with `#` in the trace.
void WriteRegisterFile(Board& board, const std::string& line);

/// Reads the selected register: the line "reg addr = 0x… , val = 0x…", with newline.
std::string ReadRegisterFile(Board& board);

/// Serves the register file named by CVNSIM_REGISTER on a separate thread, if that variable is set
/// and no other process serves the file. Throws std::runtime_error with a one-line text if the file
/// cannot be created.
void ServeRegisterFile();

}  // namespace sim
