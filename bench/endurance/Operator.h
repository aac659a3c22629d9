// A tireless operator: navigates the menus of one harness, runs tests and answers their prompts.
#pragma once

#include <string>
#include <vector>

#include "NightBoard.h"
#include "runner/Answers.h"

namespace endurance {

class Operator {
 public:
  /// Operates a harness that was just started on `board`. `rules` has the answers.
  Operator(NightBoard& board, test::Pty& pty, const std::vector<runner::AnswerRule>& rules);

  /// Goes to the test's menu, runs it and answers its prompts until the next menu. Throws
  /// std::runtime_error if the harness does not continue.
  void Run(const runner::TestEntry& test);

  /// Like `Run`, for the menu item at `position` that runs all tests below it: the prompts are
  /// answered like those of `prompting`.
  void RunAll(const std::string& position, const runner::TestEntry& prompting);

  /// Goes to the test's menu and only starts the test.
  void Enter(const runner::TestEntry& test) { Walk(test.position); }

  /// Quits from a menu.
  void Quit();

  /// The number of report lines that the console announced.
  std::size_t ToldReported() const { return toldReported_; }

 private:
  void Walk(const std::string& position);
  void Choose(const std::string& choice);
  void AnswerPrompts(const runner::TestEntry& test);
  std::string Listen();
  void PullCable() const;

  NightBoard& board_;
  test::Pty& pty_;
  const std::vector<runner::AnswerRule>& rules_;
  std::vector<std::string> menu_;  // choices that lead to the current menu
  std::size_t toldReported_ = 0;
};

}  // namespace endurance
