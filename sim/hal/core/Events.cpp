#include "core/Events.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <iomanip>
#include <string>

#include "core/Areas.h"
#include "core/Trace.h"

namespace sim {
namespace {

bool IsTimed(const Event& event) {
  return event.command[0] != '\0' && event.pollsLeft == 0;
}

void Run(Board& board, Event& event) {
  const std::string command = event.command;
  event = {};  // first: the command may schedule an event in this place
  try {
    Apply(board, command);
  } catch (const CommandError& error) {
    Note("# " + command + ": " + error.what());
  }
}

void RunEventsDueAt(Board& board, int64_t nowMs) {
  for (;;) {
    Event* next = nullptr;
    for (Event& event : board.events.entries) {
      if (!IsTimed(event) || event.dueMs > nowMs) continue;
      if (next == nullptr || event.dueMs < next->dueMs) next = &event;
    }
    if (next == nullptr) return;
    Run(board, *next);
  }
}

void AddEvent(Board& board, const std::string& command, const Event& event) {
  for (Event& entry : board.events.entries) {
    if (entry.command[0] != '\0') continue;
    entry = event;
    command.copy(entry.command, sizeof(entry.command) - 1);
    return;
  }
  RefuseWord("too many pending events for", command,
             "at most " + std::to_string(std::size(board.events.entries)));
}

// Checks the command immediately, so that the user who typed it sees the error.
std::string CheckedCommand(const Words& words, size_t first) {
  const Words command(words.begin() + static_cast<std::ptrdiff_t>(first), words.end());
  ParseCommand(command);
  std::string line = Join(command);
  if (line.size() >= sizeof(Event::command)) {
    RefuseWord("command too long:", line,
               "at most " + std::to_string(sizeof(Event::command) - 1) + " characters");
  }
  return line;
}

Action ParseAfterSeconds(const Words& words) {
  constexpr double kDayS = 24 * 60 * 60;
  const int64_t delayMs = std::llround(ParseDecimal(words[0], "number of seconds", 0, kDayS) * 1e3);
  return [delayMs, command = CheckedCommand(words, 2)](Board& board) {
    Event event = {};
    event.dueMs = SimulatedMs(board.clock) + delayMs;
    AddEvent(board, command, event);
  };
}

Action ParseAfterPolls(const Words& words) {
  Event event = {};
  event.pollsLeft = static_cast<uint32_t>(ParseNumber(words[0], "number of polls", 1, INT32_MAX));
  event.port = static_cast<uint32_t>(ParseNumber(words[2], "port", 0, kPortCount - 1));
  return [event, command = CheckedCommand(words, 3)](Board& board) {
    AddEvent(board, command, event);
  };
}

Action ParseAfter(const Words& words) {
  if (words[1] == "s") return ParseAfterSeconds(words);
  if (words[1] == "polls") return ParseAfterPolls(words);
  RefuseWord("invalid unit", words[1], "s or polls");
}

void Describe(const Board& board, std::ostream& out) {
  out << "pending events:\n";
  bool any = false;
  for (const Event& event : board.events.entries) {
    if (event.command[0] == '\0') continue;
    any = true;
    if (IsTimed(event)) {
      // Always three decimals, so that lines of the state can be compared.
      const int64_t leftMs = std::max<int64_t>(0, event.dueMs - SimulatedMs(board.clock));
      out << "  in " << leftMs / 1000 << '.' << std::setw(3) << std::setfill('0') << leftMs % 1000
          << std::setfill(' ') << " s: ";
    } else {
      out << "  at poll " << event.pollsLeft << " of port " << event.port << ": ";
    }
    out << event.command << '\n';
  }
  if (!any) out << "  none\n";
}

constexpr Command kCommands[] = {
    {"after", "N s COMMAND | N polls PORT COMMAND",
     "run COMMAND in N seconds, or at the N-th poll of the port's timing from now", 3, kAnyNumber,
     ParseAfter},
};

}  // namespace

constinit const Area kEventArea = {kCommands, Describe};

int64_t MonotonicNs() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

int64_t SimulatedMs(const Clock& clock) {
  const auto elapsedNs = static_cast<double>(MonotonicNs() - clock.powerOnNs);
  return std::llround(elapsedNs * clock.timeScale / 1e6);
}

void RunDueEvents(Board& board) {
  const int64_t nowMs = SimulatedMs(board.clock);
  RunEventsDueAt(board, nowMs);
  for (const Area* area : Areas()) {
    if (area->passTime != nullptr) area->passTime(board, nowMs);
  }
}

void CountPoll(Board& board, uint32_t port) {
  for (Event& event : board.events.entries) {
    if (event.pollsLeft > 0 && event.port == port && --event.pollsLeft == 0) Run(board, event);
  }
}

}  // namespace sim
