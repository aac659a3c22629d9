// The one-line commands that change a board: the same in scenario files, for cvnsim and in tests.
#pragma once

#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/Board.h"

namespace sim {

using Words = std::vector<std::string>;
using Action = std::function<void(Board&)>;

/// An invalid or impossible command; the text is one line that says what is expected.
class CommandError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Command {
  std::string_view name;
  std::string_view arguments;  // as shown in the help
  std::string_view help;
  size_t minArguments;
  size_t maxArguments;
  /// Parses the words after the name and returns the action. Throws CommandError.
  Action (*parse)(const Words& arguments);
};

constexpr size_t kAnyNumber = SIZE_MAX;

/// Splits a line at blanks.
Words Split(std::string_view line);

/// Joins words with blanks, starting with the given one.
std::string Join(const Words& words, size_t first = 0);

/// Parses a command and returns its action. Throws CommandError; so can the action,
/// if the board's state forbids it.
Action ParseCommand(const Words& words);

/// Executes a command. Throws CommandError.
void Apply(Board& board, const std::string& line);

/// Whether there is a command of that name; and the names of all commands, separated by commas.
bool IsCommand(std::string_view name);
std::string CommandNames();

/// Lists the commands with their arguments and help.
std::string CommandHelp();

/// Throws the CommandError "PROBLEM: expected EXPECTED".
[[noreturn]] void Refuse(const std::string& problem, const std::string& expected);

/// Throws the CommandError "PROBLEM 'WORD': expected EXPECTED".
[[noreturn]] void RefuseWord(const std::string& problem, const std::string& word,
                             const std::string& expected);

/// Throws the CommandError for a command with too few or too many arguments.
[[noreturn]] void RefuseCount(const Words& words, const std::string& usage);

/// "1 call", "2 calls".
std::string Counted(uint64_t count, const std::string& what);

/// Parses a whole word as a decimal number in a range. Throws a CommandError that names `what`.
int64_t ParseNumber(const std::string& word, const std::string& what, int64_t min, int64_t max);
double ParseDecimal(const std::string& word, const std::string& what, double min, double max);

/// Parses one of two words: true for `yes`, false for `no`. Throws CommandError for any other.
bool ParseChoice(const std::string& word, const char* yes, const char* no);

}  // namespace sim
