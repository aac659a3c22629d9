#include "core/Command.h"

#include <algorithm>
#include <charconv>

#include <iterator>
#include <sstream>

#include "core/Areas.h"

namespace sim {
namespace {

const Command* FindCommand(std::string_view name) {
  for (const Area* area : Areas()) {
    for (const Command& command : area->commands) {
      if (command.name == name) return &command;
    }
  }
  return nullptr;
}

template <typename Number>
Number ParseAs(const std::string& word, const std::string& what, Number min, Number max) {
  Number number = {};
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  // Written this way round, the comparison rejects "nan" as well.
  if (error == std::errc() && end == word.data() + word.size() && number >= min && number <= max) {
    return number;
  }
  std::ostringstream range;
  range << min << " to " << max;
  RefuseWord("invalid " + what, word, range.str());
}

}  // namespace

Words Split(std::string_view line) {
  std::istringstream words{std::string(line)};
  return {std::istream_iterator<std::string>(words), {}};
}

std::string Join(const Words& words, size_t first) {
  std::string line;
  for (size_t i = first; i < words.size(); ++i) line += (i == first ? "" : " ") + words[i];
  return line;
}

Action ParseCommand(const Words& words) {
  const std::string name = words.empty() ? "" : words.front();
  const Command* command = FindCommand(name);
  if (command == nullptr) RefuseWord("unknown command", name, CommandNames());
  const Words arguments(words.begin() + 1, words.end());
  if (arguments.size() < command->minArguments || arguments.size() > command->maxArguments) {
    RefuseCount(words, name + ' ' + std::string(command->arguments));
  }
  return command->parse(arguments);
}

void Apply(Board& board, const std::string& line) {
  ParseCommand(Split(line))(board);
}

bool IsCommand(std::string_view name) {
  return FindCommand(name) != nullptr;
}

std::string CommandNames() {
  std::string names;
  for (const Area* area : Areas()) {
    for (const Command& command : area->commands) {
      names.append(names.empty() ? "" : ", ").append(command.name);
    }
  }
  return names;
}

std::string CommandHelp() {
  std::ostringstream help;
  for (const Area* area : Areas()) {
    for (const Command& command : area->commands) {
      help << "  " << command.name << ' ' << command.arguments << "\n      " << command.help
           << '\n';
    }
  }
  return help.str();
}

void Refuse(const std::string& problem, const std::string& expected) {
  throw CommandError(problem + ": expected " + expected);
}

void RefuseWord(const std::string& problem, const std::string& word, const std::string& expected) {
  Refuse(problem + " '" + word + "'", expected);
}

void RefuseCount(const Words& words, const std::string& usage) {
  RefuseWord("wrong number of arguments in", Join(words), usage);
}

std::string Counted(uint64_t count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

int64_t ParseNumber(const std::string& word, const std::string& what, int64_t min, int64_t max) {
  return ParseAs<int64_t>(word, what, min, max);
}

double ParseDecimal(const std::string& word, const std::string& what, double min, double max) {
  return ParseAs<double>(word, what, min, max);
}

bool ParseChoice(const std::string& word, const char* yes, const char* no) {
  if (word != yes && word != no)
    RefuseWord("invalid argument", word, std::string(yes) + " or " + no);
  return word == yes;
}

}  // namespace sim
