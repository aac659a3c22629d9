// Contents of a result directory in addition to its journal: the board, the build, names of the
// tests, times, typed answers, findings and totals. For programs that show runs to people; resuming
// a run needs only the journal.
#pragma once

#include <string>
#include <vector>

#include "RunEvents.h"
#include "RunSettings.h"
#include "TestList.h"

namespace runner {

/// Appends JSON lines to the file. A result is on the disk before the next test starts.
class RunRecord : public RunListener {
 public:
  /// `tests` is the selection. `resumed`: an earlier part of the run created the file.
  RunRecord(const std::string& path, std::vector<TestEntry> tests, std::vector<Label> labels,
            bool resumed);
  ~RunRecord() override;

  void RunStarted(std::size_t tests) override;
  void TestStarted(const PlannedTest& test) override;
  void TestFound(const std::string& json) override;
  /// Results of the earlier part are already in the file.
  void TestEnded(const TestResult& result) override;
  void RunEnded(const Totals& totals) override;
  void RunExits(int status) override;
  bool Good() const override { return good_; }

 private:
  void Write(const std::string& text);
  void Sync();

  std::vector<TestEntry> tests_;
  std::vector<Label> labels_;
  bool resumed_;
  int fd_;
  bool good_;
};

}  // namespace runner
