#include "BoardWishes.h"

#include <cstdlib>
#include <filesystem>
#include <random>

#include "core/Command.h"
#include "core/SharedBoard.h"
#include "device/BroadcastClock.h"

namespace player {
namespace {

/// A crystal is accurate to some tens of ppm; temperature alone makes it drift differently each
/// run.
double DriftOfThisRunPpm() {
  constexpr double kMostPpm = 30;
  std::random_device random;
  return std::uniform_real_distribution<double>(-kMostPpm, kMostPpm)(random);
}

RunClock ClockOf(const sim::Board& board) {
  const sim::DumpCounter& counter = board.media.counter;
  if (counter.isSet) return {counter.start90k, counter.driftPpm};
  return {static_cast<int64_t>(sim::MediaTicks(board)), DriftOfThisRunPpm()};
}

}  // namespace

BoardWishes AskBoard() {
  const char* path = std::getenv("CVNSIM_STATE");
  if (path == nullptr || !std::filesystem::exists(path)) return {};
  sim::Attach(path);
  const sim::BoardLock board;
  BoardWishes wishes;
  wishes.diskIsFull = board->media.diskFull;
  wishes.clock = ClockOf(*board);
  for (const sim::DumpDefect& defect : board->media.defects) {
    if (defect.words[0] != '\0') wishes.defects.push_back(ParseDefect(sim::Split(defect.words)));
  }
  return wishes;
}

}  // namespace player
