// A run of selected tests without an operator, from its plan to its results.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "Answers.h"
#include "ExitStatus.h"
#include "Options.h"
#include "ResultDirectory.h"
#include "RunEvents.h"
#include "TestList.h"

namespace runner {

/// Which test comes next: rounds of the selection, each in an order of its own when shuffled.
class Plan {
 public:
  Plan(std::size_t tests, const Options& options);

  struct Step {
    std::size_t index;  // into the selection
    int round;
  };
  /// The next step; nothing behind the last round.
  std::optional<Step> Next();
  /// No round begins any more.
  void EndWithRound() { lastRound_ = round_; }
  /// Steps in all; 0 when the end is open.
  std::size_t Size() const;

 private:
  void BeginRound();

  std::vector<std::size_t> order_;
  std::optional<uint32_t> seed_;
  int lastRound_;  // 0: none
  int round_ = 0;
  std::size_t next_ = 0;
};

/// Runs the tests of a plan one by one and tells listeners and the journal.
class TestRun {
 public:
  TestRun(const Options& options, std::vector<TestEntry> tests, std::vector<AnswerRule> rules,
          ResultDirectory& directory, std::vector<std::unique_ptr<RunListener>> listeners);

  /// Does the whole run, with the journal's `earlier` tests told first. Returns the exit status.
  int Do(const std::vector<JournalEntry>& earlier);

 private:
  PlannedTest Planned(const Plan::Step& step);
  void TakeOver(const PlannedTest& test, const TestEntry& entry, const JournalEntry& earlier);
  void Decide(const PlannedTest& test, const TestEntry& entry);
  void Execute(const PlannedTest& test, const TestEntry& entry);
  void Skip(const PlannedTest& test, const std::string& reason);
  void Tell(const TestResult& result);
  void Fail(const std::string& problem);
  std::string ReasonToSkip(const TestEntry& entry) const;
  int Status() const;

  const Options& options_;
  std::vector<TestEntry> tests_;
  std::vector<AnswerRule> rules_;
  ResultDirectory& directory_;
  std::vector<std::unique_ptr<RunListener>> listeners_;
  Plan plan_;
  Totals totals_;
  std::string stop_;  // why no further test is run; empty: nothing stops the run
  bool harnessFailed_ = false;
};

/// From now on SIGINT, SIGTERM and SIGHUP end the run in good order.
void CatchInterrupts();

/// Sends standard output to /dev/null for its life: the frame tells an operator more than a run
/// wants to show.
class MutedOutput {
 public:
  MutedOutput();
  ~MutedOutput();
  MutedOutput(const MutedOutput&) = delete;
  MutedOutput& operator=(const MutedOutput&) = delete;

 private:
  int saved_;
};

}  // namespace runner
