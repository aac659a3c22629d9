#include "core/Misbehaviours.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>

#include "core/Areas.h"
#include "core/Failures.h"
#include "core/SharedBoard.h"

namespace sim {
namespace {

constexpr int kExitStatus = 3;

void DieBy(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void Print(std::string_view text) {
  [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
}

[[noreturn]] void Hang() {
  for (;;) pause();
}

void LeaveChild() {
  if (fork() != 0) return;
  setsid();  // so that killing the caller's process group does not reach it
  Hang();
}

struct Way {
  std::string_view name;
  void (*go)();
};

constexpr Way kWays[] = {
    {"segv", [] { DieBy(SIGSEGV); }},
    {"abort", [] { DieBy(SIGABRT); }},
    {"exit", [] { std::exit(kExitStatus); }},
    {"hang", [] { Hang(); }},
    {"flood",
     [] {
       for (;;) Print("the driver says the same again and again and again\n");
     }},
    {"noise", [] { Print("\x01\x1b[31mred\x1b[0m \x7f\xff\xc3( ]]> <&\" # \\ \xe2\x82\xac\r\n"); }},
    {"kill-group", [] { kill(-getpgid(getppid()), SIGKILL); }},
    {"leave-child", LeaveChild},
};

std::string WayNames() {
  std::string names;
  for (const Way& way : kWays) names.append(names.empty() ? "" : ", ").append(way.name);
  return names;
}

uint32_t ParseWay(const std::string& name) {
  const auto* way = std::ranges::find(kWays, name, &Way::name);
  if (way == std::end(kWays)) RefuseWord("unknown misbehaviour", name, WayNames());
  return static_cast<uint32_t>(way - kWays);
}

Action ParseMisbehave(const Words& words) {
  CheckFunction(words[0]);
  Misbehaviour entry = {};
  words[0].copy(entry.function, sizeof(entry.function) - 1);
  entry.way = ParseWay(words[1]);
  if (words.size() > 2) {
    if (words[2] != "--at" || words.size() != 4) RefuseWord("invalid option", words[2], "--at N");
    entry.callsBefore =
        static_cast<uint32_t>(ParseNumber(words[3], "number for --at", 1, 1000000)) - 1;
  }
  return [entry](Board& board) {
    auto& entries = board.misbehaviours.entries;
    auto* free = std::ranges::find_if(entries, [](const auto& e) { return e.function[0] == '\0'; });
    if (free == std::end(entries)) {
      RefuseWord("too many programmed misbehaviours for", entry.function,
                 "at most " + std::to_string(std::size(entries)));
    }
    *free = entry;
  };
}

void Describe(const Board& board, std::ostream& out) {
  for (const Misbehaviour& entry : board.misbehaviours.entries) {
    if (entry.function[0] == '\0') continue;
    out << "programmed misbehaviour: " << entry.function << ' ' << kWays[entry.way].name;
    if (entry.callsBefore > 0) out << ", after " << Counted(entry.callsBefore, "call");
    out << '\n';
  }
}

constexpr Command kCommands[] = {
    {"misbehave", "FUNCTION WAY [--at N]",
     "make a HAL function misbehave once, at its N-th call from now: segv, abort, exit, hang,\n"
     "      flood, noise, kill-group or leave-child",
     2, 4, ParseMisbehave},
};

/// How this call misbehaves; null for a normal call.
const Way* TakeWay(const char* function) {
  const BoardLock board;
  for (Misbehaviour& entry : board->misbehaviours.entries) {
    if (std::string_view(entry.function) != function) continue;
    if (entry.callsBefore > 0) {
      --entry.callsBefore;
      continue;
    }
    const Way* way = &kWays[entry.way];
    entry = {};
    return way;
  }
  return nullptr;
}

}  // namespace

constinit const Area kMisbehaviourArea = {kCommands, Describe};

void MisbehaveIfProgrammed(const char* function) {
  if (const Way* way = TakeWay(function)) way->go();
}

}  // namespace sim
