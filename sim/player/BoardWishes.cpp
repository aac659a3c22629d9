#include "BoardWishes.h"

#include <cstdlib>
#include <filesystem>

#include "core/Command.h"
#include "core/SharedBoard.h"

namespace player {

BoardWishes AskBoard() {
  const char* path = std::getenv("CVNSIM_STATE");
  if (path == nullptr || !std::filesystem::exists(path)) return {};
  sim::Attach(path);
  const sim::BoardLock board;
  BoardWishes wishes;
  wishes.diskIsFull = board->media.diskFull;
  for (const sim::DumpDefect& defect : board->media.defects) {
    if (defect.words[0] != '\0') wishes.defects.push_back(ParseDefect(sim::Split(defect.words)));
  }
  return wishes;
}

}  // namespace player
