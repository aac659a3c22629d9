#include <string>

#include "Command.h"
#include "FileWriter.h"
#include "ResultWriters.h"
#include "Text.h"

namespace runner {
namespace {

constexpr double kCommandLimitS = 5;

/// LAVA: a signal a test, each in one write. Where the overlay's lava-test-case is on the path it
/// writes the signal itself.
class LavaWriter : public FileWriter {
 public:
  using FileWriter::FileWriter;

  void RunStarted(std::size_t) override {}
  void TestEnded(const TestResult& result) override {
    if (result.provisional) return;  // a resumed run reports it
    const std::string id = Id(result.test.id);
    const char* word = Word(result.verdict);
    const std::string signal =
        "<LAVA_SIGNAL_TESTCASE TEST_CASE_ID=" + id + " RESULT=" + word + ">\n";
    Write(hasCommand_ ? FromCommand(id, word, signal) : signal);
  }
  void RunEnded(const Totals&) override {}

 private:
  static const char* Word(Verdict verdict) {
    switch (verdict) {
      case Verdict::kPass:
        return "pass";
      case Verdict::kBlocked:
        return "unknown";
      case Verdict::kSkipped:
        return "skip";
      default:
        return "fail";
    }
  }

  static std::string Id(std::string id) {
    for (char& c : id) c = c == '/' ? '.' : c == '@' ? '_' : c;
    return id;
  }

  /// What lava-test-case says, or the signal itself where it failed before it had said that.
  std::string FromCommand(const std::string& id, const std::string& word,
                          const std::string& signal) {
    const CommandEnd end = RunCommand({"lava-test-case", id, "--result", word}, {}, kCommandLimitS);
    hasCommand_ = end.kind == CommandEnd::kExited || end.kind == CommandEnd::kSignalled;
    if (end.Succeeded()) return end.output;
    // A signal that is there already is not given twice.
    return end.output.find("<LAVA_SIGNAL_TESTCASE ") == std::string::npos ? signal : end.output;
  }

  bool hasCommand_ = true;  // until it could not be started, or hung
};

}  // namespace

std::unique_ptr<RunListener> MakeLavaWriter(const std::string& path, int standardOutput) {
  return std::make_unique<LavaWriter>(path, standardOutput);
}

}  // namespace runner
