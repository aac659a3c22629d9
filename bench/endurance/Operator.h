// An operator who never tires: walks the menus of one harness, runs tests and answers what they
// ask.
#pragma once

#include <string>
#include <vector>

#include "NightBoard.h"
#include "runner/Answers.h"

namespace endurance {

class Operator {
 public:
  /// Works at a harness that was just started on `board`. `rules` are the answers.
  Operator(NightBoard& board, test::Pty& pty, const std::vector<runner::AnswerRule>& rules);

  /// Walks to the test's menu, runs it and answers its prompts, to the next menu. Throws
  /// std::runtime_error if the harness does not continue.
  void Run(const runner::TestEntry& test);

  /// As `Run`, for the menu at `position` that runs all tests below it: the prompts are answered as
  /// those of `prompting`.
  void RunAll(const std::string& position, const runner::TestEntry& prompting);

  /// Walks to the test's menu and starts it, no more.
  void Enter(const runner::TestEntry& test) { Walk(test.position); }

  /// Quits in a menu.
  void Quit();

  /// How many report lines the console announced.
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
  std::vector<std::string> menu_;  // choices that lead to the menu that is shown
  std::size_t toldReported_ = 0;
};

}  // namespace endurance
