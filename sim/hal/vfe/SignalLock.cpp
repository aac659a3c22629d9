#include "vfe/SignalLock.h"

#include "core/Areas.h"
#include "core/Events.h"

namespace sim {
namespace {

constexpr LockTimes kUsualTimes = {true, 300, 2};

const LockTimes& TimesOf(const Board& board) {
  return board.lockTimes.areSet ? board.lockTimes : kUsualTimes;
}

Action ParseLock(const Words& words) {
  constexpr int64_t kMostMs = 60'000, kMostPolls = 1000;
  const LockTimes times = {
      true, static_cast<uint32_t>(ParseNumber(words[0], "number of milliseconds", 0, kMostMs)),
      static_cast<uint32_t>(ParseNumber(words[1], "number of polls", 0, kMostPolls))};
  return [times](Board& board) { board.lockTimes = times; };
}

void Describe(const Board& board, std::ostream& out) {
  if (!board.lockTimes.areSet) return;
  out << "receivers: lock after " << board.lockTimes.ms << " ms and " << board.lockTimes.polls
      << " polls\n";
}

constexpr Command kCommands[] = {
    {"lock", "MS POLLS",
     "how long a connected receiver needs to lock when its source starts or changes its timing:\n"
     "      at least MS milliseconds and POLLS polls (default 300 and 2)",
     2, 2, ParseLock},
};

}  // namespace

constinit const Area kSignalLockArea = {kCommands, Describe};

void LoseLock(const Board& board, SignalLock& lock, bool muted) {
  const LockTimes& times = TimesOf(board);
  lock = {true, muted, times.polls, SimulatedMs(board.clock) + times.ms};
  SettleLock(lock, SimulatedMs(board.clock));
}

void CountUnlockedPoll(SignalLock& lock) {
  if (lock.pollsLeft > 0) --lock.pollsLeft;
}

void SettleLock(SignalLock& lock, int64_t nowMs) {
  if (lock.lost && lock.pollsLeft == 0 && nowMs >= lock.dueMs) lock = {};
}

}  // namespace sim
