#include "FileWriter.h"
#include "ResultWriters.h"
#include "Text.h"

namespace runner {
namespace {

/// TAP 14: one test point per test, followed by a block if there are details.
class TapWriter : public FileWriter {
 public:
  using FileWriter::FileWriter;

  void RunStarted(std::size_t tests) override {
    planned_ = tests > 0;
    Write("TAP version 14\n" + (planned_ ? Plan(tests) : ""));
  }
  void TestEnded(const TestResult& result) override {
    ++told_;
    const bool skipped = result.verdict == Verdict::kSkipped;
    const bool fine = skipped || result.verdict == Verdict::kPass;
    std::string text = (fine ? "ok " : "not ok ") + std::to_string(told_) + " - " +
                       Description(result.test.Title());
    text += skipped ? " # SKIP " + Description(result.message) + "\n" : "\n";
    const bool saysMore = !result.message.empty() || !result.evidence.empty();
    Write(skipped || (fine && !saysMore) ? text : text + Block(result));
  }
  void RunEnded(const Totals& totals) override {
    if (totals.skippedRounds > 0)
      Write("# " + std::to_string(totals.skippedRounds) + " rounds skipped\n");
    if (!planned_) Write(Plan(told_));
  }

 private:
  static std::string Plan(std::size_t tests) { return "1.." + std::to_string(tests) + "\n"; }

  static std::string Description(const std::string& text) {
    std::string description;
    for (const char c : text) {
      if (c == '#' || c == '\\') description += '\\';
      description += c;
    }
    return description;
  }

  static std::string Block(const TestResult& result) {
    std::string text = "  ---\n  verdict: " + std::string(VerdictName(result.verdict)) + "\n";
    if (!result.message.empty()) text += "  message: " + JsonText(result.message) + "\n";
    if (!result.log.empty()) text += "  log: " + JsonText(result.log) + "\n";
    if (!result.evidence.empty()) text += "  evidence: " + JsonList(result.evidence) + "\n";
    return text + "  seconds: " + SecondsText(result.seconds) + "\n  ...\n";
  }

  bool planned_ = true;
  std::size_t told_ = 0;
};

}  // namespace

std::unique_ptr<RunListener> MakeTapWriter(const std::string& path, int standardOutput) {
  return std::make_unique<TapWriter>(path, standardOutput);
}

}  // namespace runner
