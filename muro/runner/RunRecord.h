// What a result directory says beside its journal: the board, the build, names of the tests, times,
// what was typed, findings and totals. For programs that show runs to people; a run is resumed
// from the journal alone.
#pragma once

#include <string>
#include <vector>

#include "RunEvents.h"
#include "RunSettings.h"
#include "TestList.h"

namespace runner {

/// Writes JSON lines, behind what is in the file already. A result is on the disk before the next
/// test starts.
class RunRecord : public RunListener {
 public:
  /// `tests` is the selection. `resumed`: the file was begun by an earlier part of the run.
  RunRecord(const std::string& path, std::vector<TestEntry> tests, std::vector<Label> labels,
            bool resumed);
  ~RunRecord() override;

  void RunStarted(std::size_t tests) override;
  void TestStarted(const PlannedTest& test) override;
  void TestFound(const std::string& json) override;
  /// Results of the earlier part are there already.
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
