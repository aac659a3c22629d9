// The operator as data: which answer is typed at which prompt of which test.
//
// A file has one rule per line: test, prompt and answer, separated by tabs. Test and prompt are
// globs; the prompt's glob is matched against everything printed since the last answer, and against
// its last lines. An answer is a line to type, or "keys " and the keys. Rules with the same two
// globs form a sequence, whose last answer repeats; otherwise the first match in the file wins.
// Empty lines and lines that begin with # are ignored. Backslashes as in `Escaped`.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ConsoleInput.h"
#include "TestList.h"

namespace runner {

struct Answer {
  bool keys = false;
  std::string text;  // a line without its newline, or keys
};

struct AnswerRule {
  std::string testGlob;
  std::string promptGlob;
  std::vector<Answer> answers;  // in order, at least one
  int line = 0;                 // of its first line in the file
};

/// Reads a file of answers into `rules`. Returns a one-line error, empty on success.
std::string LoadAnswers(const std::string& path, std::vector<AnswerRule>& rules);

/// Checks the rules against the tests. Returns a one-line error, with the rule's line in `path`,
/// for a rule whose glob matches no test at all; appends such a line to `warnings` for each rule
/// that matches none of `selected`.
std::string CheckAnswers(const std::string& path, const std::vector<AnswerRule>& rules,
                         const std::vector<TestEntry>& all, const std::vector<TestEntry>& selected,
                         std::vector<std::string>& warnings);

/// The line of an answer file, with its newline, that gives this answer at this prompt.
std::string FormatAnswer(const std::string& testId, const std::string& prompt,
                         const Answer& answer);

/// The answers for one run of one test.
class AnswerScript {
 public:
  AnswerScript(const std::vector<AnswerRule>& rules, const TestEntry& entry);

  /// The bytes to type when the console waits, with `printed` since the last answer; nothing if no
  /// rule matches. Where the console waits for a key, only keys are typed.
  std::optional<std::string> Next(std::string_view printed, console::Input kind);

 private:
  struct Line {
    const AnswerRule* rule;
    std::size_t used = 0;
  };
  std::vector<Line> lines_;
};

}  // namespace runner
