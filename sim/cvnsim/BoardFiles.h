// The files by which a board is found from outside.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/Command.h"

namespace cvnsim {

struct BoardFiles {
  std::string state;
  std::string trace;
  std::string directory{};  // of the board; empty inside the board
};

/// Removes "--board DIR" from the front of the words. Without it, the environment names the files
/// or the directory, or else they are in the default directory. Throws sim::CommandError.
BoardFiles TakeFiles(sim::Words& words);

/// Maps the board's state. Throws std::runtime_error if no board was started.
void Attach(const BoardFiles& files);

/// Returns whether a session is using the board.
bool InSession(const BoardFiles& files);

/// The file that marks a board as on between two sessions.
std::string OnFile(const BoardFiles& files);

/// Returns whether changing the board has any effect: it has none if its next start is a power-on.
bool IsOn(const BoardFiles& files);

/// Throws std::runtime_error if the board is not on.
void NeedBoardThatIsOn(const BoardFiles& files);

/// The last HAL calls, oldest first. Throws std::runtime_error if the board has no trace file.
std::vector<std::string> LastCalls(const BoardFiles& files, size_t count);

}  // namespace cvnsim
