// The commands of scenarios and cvnsim, checked against their own help.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "core/Areas.h"

namespace {

/// Least and greatest number of words that one form of a command takes, such as "FRAME [DETAIL]".
std::pair<std::size_t, std::size_t> WordsOf(const std::string& form) {
  std::size_t required = 0, all = 0;
  int depth = 0;
  for (const std::string& word : sim::Split(form)) {
    depth += static_cast<int>(std::ranges::count(word, '['));
    ++all;
    if (depth == 0) ++required;
    depth -= static_cast<int>(std::ranges::count(word, ']'));
  }
  return {required, all};
}

/// The same for all forms of a command: "START PPM | free", or "PORT or show none".
std::pair<std::size_t, std::size_t> ArgumentsOf(const sim::Command& command) {
  std::string rest(command.arguments);
  const std::string again = " or " + std::string(command.name);
  for (std::size_t at = 0; (at = rest.find(again)) != std::string::npos;)
    rest.replace(at, again.size(), " |");
  std::pair<std::size_t, std::size_t> all = {SIZE_MAX, 0};
  for (std::size_t begin = 0; begin <= rest.size();) {
    const std::size_t end = std::min(rest.find(" | ", begin), rest.size());
    const auto [least, most] = WordsOf(rest.substr(begin, end - begin));
    all = {std::min(all.first, least), std::max(all.second, most)};
    begin = end + 3;
  }
  return all;
}

TEST(Command, TakesAsManyArgumentsAsItsHelpShows) {
  int commands = 0;
  for (const sim::Area* area : sim::Areas()) {
    for (const sim::Command& command : area->commands) {
      ++commands;
      if (command.maxArguments == sim::kAnyNumber) continue;
      EXPECT_EQ(ArgumentsOf(command), std::pair(command.minArguments, command.maxArguments))
          << command.name << ' ' << command.arguments;
    }
  }
  EXPECT_GT(commands, 25);
}

}  // namespace
