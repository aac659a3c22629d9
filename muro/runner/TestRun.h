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
#include "RunLedger.h"
#include "TestList.h"

namespace runner {

/// Which tests come next: rounds of the selection, each in an order of its own when shuffled.
class Plan {
 public:
  Plan(std::size_t tests, const Options& options);

  /// Indexes into the selection for the next round, in its order; nothing after the last round.
  std::optional<std::vector<std::size_t>> NextRound();
  /// Number of the round that `NextRound` gave last, from 1 on.
  int Round() const { return round_; }
  /// Rounds that have not begun; 0 when nobody knows how many there are.
  int RoundsLeft() const { return lastRound_ == 0 ? 0 : lastRound_ - round_; }
  bool HasTests() const { return tests_ > 0; }
  /// Tests in all; 0 when the end is open.
  std::size_t Size() const;

 private:
  std::size_t tests_;
  std::optional<uint32_t> seed_;
  int lastRound_;  // 0: none
  bool open_;      // a result may end the run before its last round
  int round_ = 0;
};

/// Runs the tests of a plan one by one and tells listeners and the journal.
class TestRun {
 public:
  TestRun(const Options& options, std::vector<TestEntry> tests, std::vector<AnswerRule> rules,
          ResultDirectory& directory, std::vector<std::unique_ptr<RunListener>> listeners);

  /// Does the whole run, with the journal's `earlier` tests told first. Returns the exit status.
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
