#include <string>

#include "FileWriter.h"
#include "ResultWriters.h"

namespace runner {
namespace {

/// The Yocto project's ptest: a line per test as it ends. What was neither skipped nor passed
/// failed.
class PtestWriter : public FileWriter {
 public:
  using FileWriter::FileWriter;

  void RunStarted(std::size_t) override {}
  void TestEnded(const TestResult& result) override {
    if (result.provisional) return;  // a resumed run reports it
    Write(std::string(Word(result.verdict)) + ": " + result.test.Title() + "\n");
  }
  void RunEnded(const Totals&) override {}

 private:
  static const char* Word(Verdict verdict) {
    if (verdict == Verdict::kPass) return "PASS";
    return verdict == Verdict::kSkipped ? "SKIP" : "FAIL";
  }
};

}  // namespace

std::unique_ptr<RunListener> MakePtestWriter(const std::string& path, int standardOutput) {
  return std::make_unique<PtestWriter>(path, standardOutput);
}

}  // namespace runner
