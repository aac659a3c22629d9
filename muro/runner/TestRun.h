// An unattended run of selected tests, from its plan to its results.
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
#include "RunLedger.h"
#include "TestList.h"

namespace runner {

/// Which tests come next: rounds of the selection, each in a different order when shuffled.
class Plan {
 public:
  Plan(std::size_t tests, const Options& options);

  /// Indexes into the selection for the next round, in execution order; nothing after the last
  /// round.
  std::optional<std::vector<std::size_t>> NextRound();
  /// Number of the round that `NextRound` returned last, starting at 1.
  int Round() const { return round_; }
  /// Rounds that have not begun; 0 if their number is unknown.
  int RoundsLeft() const { return lastRound_ == 0 ? 0 : lastRound_ - round_; }
  bool HasTests() const { return tests_ > 0; }
  /// Total number of tests; 0 if it is not known in advance.
  std::size_t Size() const;

 private:
  std::size_t tests_;
  std::optional<uint32_t> seed_;
  int lastRound_;  // 0: unlimited
  bool open_;      // a result may end the run before its last round
  int round_ = 0;
};

/// Runs the tests of a plan one by one and reports to the listeners and the journal.
class TestRun {
 public:
  TestRun(const Options& options, std::vector<TestEntry> tests, std::vector<AnswerRule> rules,
          ResultDirectory& directory, std::vector<std::unique_ptr<RunListener>> listeners);

  /// Executes the whole run and reports the journal's `earlier` tests first. Returns the exit
  /// status.
  int Do(const std::vector<JournalEntry>& earlier);

 private:
  std::vector<PlannedTest> List(const std::vector<std::size_t>& round);
  void DoRound(const std::vector<std::size_t>& round, const std::vector<JournalEntry>& earlier);
  bool IsLastRound(std::size_t ranBefore) const;
  void TakeOver(const PlannedTest& test, const TestEntry& entry, const JournalEntry& earlier);
  void Decide(const PlannedTest& test, const TestEntry& entry);
  void Execute(const PlannedTest& test, const TestEntry& entry);
  void Skip(const PlannedTest& test, const std::string& reason);
  void Tell(const TestResult& result);
  void TellFindings(const std::vector<std::string>& findings);
  void CheckBoard(TestResult& result);
  void Lose(TestResult& result, const std::string& problem);
  void Fail(const std::string& problem);
  std::string ReasonToSkip(const TestEntry& entry) const;
  int Status() const;

  const Options& options_;
  std::vector<TestEntry> tests_;
  std::vector<AnswerRule> rules_;
  ResultDirectory& directory_;
  std::vector<std::unique_ptr<RunListener>> listeners_;
  Plan plan_;
  RunLedger ledger_;
  std::size_t listed_ = 0;
  std::string stop_;  // why no further test is run; empty: the run continues
  bool harnessFailed_ = false;
};

/// From now on SIGINT, SIGTERM and SIGHUP end the run in an orderly way.
void CatchInterrupts();

/// Redirects standard output to /dev/null while it exists; the interactive output is too verbose
/// for unattended runs.
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
