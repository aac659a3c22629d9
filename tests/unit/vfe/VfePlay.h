// Shared by the tests of the receiver tests: running a test function with the operator's answers,
// and a board that changes while the test polls.
#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Scripted.h"
#include "SimHal.h"

namespace vfe {

using TestFunction = int (*)(char*);
using Lines = std::vector<std::string>;

inline scripted::Run PlayTest(TestFunction test, const std::string& answers) {
  return scripted::Play(answers, [test] { return test(nullptr); });
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// Executes a command at the n-th wait of 100 ms from now, counted from 1, that is, before the n-th
/// poll.
inline void AtPolls(std::map<int, std::string> commands) {
  scripted::OnWait([commands, polls = 0](unsigned long us) mutable {
    if (us != 100'000) return;
    const auto due = commands.find(++polls);
    if (due != commands.end()) simhal::Apply(due->second);
  });
}

/// The calls so far whose names begin with `prefix`, without the prefix.
inline Lines CallsOf(const std::string& prefix) {
  Lines calls;
  for (const std::string& line : simhal::Calls()) {
    if (line.starts_with(prefix)) calls.push_back(line.substr(prefix.size()));
  }
  return calls;
}

/// The last `count` calls, without the common prefix of their names.
inline Lines LastCalls(std::size_t count) {
  constexpr std::size_t kPrefixLength = std::string_view("K2V_RHAL_").size();
  const Lines all = simhal::Calls();
  Lines last(all.end() - static_cast<std::ptrdiff_t>(std::min(count, all.size())), all.end());
  for (std::string& line : last) line.erase(0, kPrefixLength);
  return last;
}

}  // namespace vfe
