// The events of a run, reported to everything that writes results. All texts are clean
// (`CleanText`).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Verdict.h"

namespace runner {

/// One execution of one test in a run.
struct PlannedTest {
  std::size_t number = 0;  // starts at 1
  int round = 1;
  std::string id;           // unique in the run: "VscModule/31", in later rounds "VscModule/31@2"
  std::string moduleClass;  // "VscModule"
  std::string name;
  std::string description;

  /// The test for people: "VscModule/31 Vsc MURO 31 (K2V_RHAL_VSC_Initialize (31))".
  std::string Title() const;
};

/// The id, as in the test list, of a test of any round: "VscModule/31" of "VscModule/31@2".
std::string BaseId(const std::string& id);

/// A number that a test found, in addition to its verdict.
struct Figure {
  std::string name;  // "compared"
  int64_t value = 0;
};

/// Position of an answer in a test's log, in bytes.
struct Typed {
  std::size_t at;
  std::size_t length;
};

struct TestResult {
  PlannedTest test;
  Verdict verdict = Verdict::kError;
  std::string message;  // one line, may be empty
  double seconds = 0;
  std::string output;        // the end of what the test printed
  std::string log;           // its log file's name in the result directory, may be empty
  int prompts = 0;           // how often it prompted before the verdict
  bool earlier = false;      // taken from the journal of the run being resumed
  bool provisional = false;  // a resumed run will run this test again
  bool suspect = false;      // the board was unhealthy after it
  std::vector<Figure> figures = {};
  std::vector<std::string> evidence = {};  // files in the result directory
  std::vector<Typed> typed = {};
};

/// Totals of a run.
struct Totals {
  std::size_t listed = 0;
  std::array<std::size_t, kVerdictNames.size()> of{};  // by verdict
  double seconds = 0;
  int skippedRounds = 0;  // rounds of --repeat that did not begin

  std::size_t Of(Verdict verdict) const { return of[static_cast<std::size_t>(verdict)]; }
  /// Tests that ended by themselves or reached their limit.
  std::size_t Run() const { return Of(Verdict::kPass) + Of(Verdict::kFail) + Of(Verdict::kError); }
  bool AddUp() const { return listed == Run() + Of(Verdict::kSkipped) + Of(Verdict::kBlocked); }
  /// "12 listed = 9 run + 2 skipped + 1 blocked; 7 passed, 1 failed, 1 errors", followed by "; 3
  /// rounds skipped" if there are any.
  std::string Text() const;
};

class RunListener {
 public:
  RunListener() = default;
  virtual ~RunListener() = default;
  RunListener(const RunListener&) = delete;
  RunListener& operator=(const RunListener&) = delete;

  /// `tests` is the number of tests that will be reported, 0 if unknown.
  virtual void RunStarted(std::size_t tests) = 0;
  virtual void TestStarted(const PlannedTest&) {}
  virtual void TestPrinted(const std::string&) {}
  /// A finding of the running test: a one-line JSON object.
  virtual void TestFound(const std::string&) {}
  virtual void TestEnded(const TestResult& result) = 0;
  virtual void RunEnded(const Totals& totals) = 0;
  /// The last event of a run: the exit status of the program.
  virtual void RunExits(int) {}
  /// False if any event could not be written.
  virtual bool Good() const = 0;
};

}  // namespace runner
