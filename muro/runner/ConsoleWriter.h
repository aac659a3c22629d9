// The runner's own output for people: one line per test, a progress line on terminals, the totals.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

#include "RunEvents.h"

namespace runner {

class ConsoleWriter : public RunListener {
 public:
  /// Writes to `file`. `color` is "auto" (on terminals, unless NO_COLOR is set), "always" or
  /// "never"; `verbose` shows what tests print.
  ConsoleWriter(std::FILE* file, const std::string& color, bool verbose);

  void RunStarted(std::size_t tests) override;
  void TestStarted(const PlannedTest& test) override;
  void TestPrinted(const std::string& text) override;
  void TestEnded(const TestResult& result) override;
  void RunEnded(const Totals& totals) override;
  /// A lost console does not invalidate the results.
  bool Good() const override { return true; }

 private:
  void Print(const std::string& text) const;
  void ClearProgress();
  std::string Painted(Verdict verdict) const;

  int fd_;
  bool isTerminal_;
  bool inColor_;
  bool verbose_;
  bool progressShown_ = false;
  bool midLine_ = false;  // the last output of a test did not end with a newline
  std::size_t planned_ = 0;
  Totals totals_;
  std::size_t timed_ = 0;  // tests that ran in this process
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace runner
