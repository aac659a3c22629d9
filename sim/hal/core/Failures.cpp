#include "core/Failures.h"

#include <algorithm>
#include <string>

#include "core/Areas.h"
#include "core/FunctionNames.h"

namespace sim {
namespace {

// The function whose name is most similar to `name`: the longest common prefix.
std::string_view NearestFunction(std::string_view name) {
  const auto alike = [name](std::string_view known) {
    return std::ranges::mismatch(known, name).in1 - known.begin();
  };
  return *std::ranges::max_element(FunctionNames(), {}, alike);
}

void AddFailure(Board& board, const std::string& function, const Failure& failure) {
  for (Failure& entry : board.failures.entries) {
    if (entry.function[0] != '\0') continue;
    entry = failure;
    function.copy(entry.function, sizeof(entry.function) - 1);
    return;
  }
  RefuseWord("too many programmed failures for", function,
             "at most " + std::to_string(std::size(board.failures.entries)));
}

Action ParseFail(const Words& words) {
  CheckFunction(words[0]);
  Failure failure = {};
  failure.code = static_cast<int32_t>(ParseNumber(words[1], "code", INT32_MIN, INT32_MAX));
  failure.times = kForEver;
  for (size_t i = 2; i < words.size(); i += 2) {
    const std::string& option = words[i];
    if ((option != "--at" && option != "--times") || i + 1 == words.size()) {
      RefuseWord("invalid option", option, "--at N or --times N");
    }
    const auto number =
        static_cast<uint32_t>(ParseNumber(words[i + 1], "number for " + option, 1, kForEver - 1));
    if (option == "--at") {
      failure.callsBefore = number - 1;
    } else {
      failure.times = number;
    }
  }
  return [=, function = words[0]](Board& board) { AddFailure(board, function, failure); };
}

Action ParseClear(const Words& words) {
  const bool all = words[0] == "all";
  if (!all) CheckFunction(words[0]);
  return [all, function = words[0]](Board& board) {
    for (Failure& entry : board.failures.entries) {
      if (all || function == entry.function) entry = {};
    }
  };
}

void Describe(const Board& board, std::ostream& out) {
  out << "programmed failures:\n";
  bool any = false;
  for (const Failure& entry : board.failures.entries) {
    if (entry.function[0] == '\0') continue;
    any = true;
    out << "  " << entry.function << " returns " << entry.code;
    if (entry.callsBefore > 0) out << ", after " << Counted(entry.callsBefore, "call");
    if (entry.times != kForEver) out << ", for " << Counted(entry.times, "call");
    out << '\n';
  }
  if (!any) out << "  none\n";
}

constexpr Command kCommands[] = {
    {"fail", "FUNCTION CODE [--at N] [--times N]",
     "make a HAL function return CODE, starting with its N-th call from now, for N calls "
     "(default:\n"
     "      until cleared)",
     2, 6, ParseFail},
    {"clear", "FUNCTION|all", "remove programmed failures", 1, 1, ParseClear},
};

}  // namespace

constinit const Area kFailureArea = {kCommands, Describe};

void CheckFunction(const std::string& name) {
  if (std::ranges::find(FunctionNames(), name) != FunctionNames().end()) return;
  RefuseWord("unknown HAL function", name,
             "a function of hal/include, such as " + std::string(NearestFunction(name)));
}

std::optional<int32_t> TakeFailure(Board& board, const char* function) {
  std::optional<int32_t> code;
  for (Failure& entry : board.failures.entries) {
    if (std::string_view(entry.function) != function) continue;
    if (entry.callsBefore > 0) {
      --entry.callsBefore;
      continue;
    }
    if (!code) code = entry.code;
    if (entry.times != kForEver && --entry.times == 0) entry = {};
  }
  return code;
}

}  // namespace sim
