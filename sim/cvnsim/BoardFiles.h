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
  std::string directory{};  // of the board; empty inside of it
};

/// Takes "--board DIR" off the front of the words. Without it the environment names the files, else
/// they are those of the usual directory. Throws sim::CommandError.
BoardFiles TakeFiles(sim::Words& words);

/// Maps the board's state. Throws std::runtime_error where no board was started.
void Attach(const BoardFiles& files);

/// Tells whether a session has the board.
bool InSession(const BoardFiles& files);

/// The file that says of a board between two sessions that it is on.
std::string OnFile(const BoardFiles& files);

/// Tells whether changing the board means something: it does not where its next start is a
/// power-on.
bool IsOn(const BoardFiles& files);

/// Throws std::runtime_error where the board is not on.
void NeedBoardThatIsOn(const BoardFiles& files);

/// The last HAL calls, oldest first. Throws std::runtime_error where the board keeps none.
std::vector<std::string> LastCalls(const BoardFiles& files, size_t count);

}  // namespace cvnsim
