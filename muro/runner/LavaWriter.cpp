#include <string>

#include "Command.h"
#include "FileWriter.h"
#include "ResultWriters.h"
#include "Text.h"

namespace runner {
namespace {

constexpr double kCommandLimitS = 5;

/// LAVA: one signal per test, each in one write. If the overlay's lava-test-case is in the PATH,
/// that command writes the signal.
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

  /// The output of lava-test-case, or the signal itself if the command failed before it printed
  /// one.
  std::string FromCommand(const std::string& id, const std::string& word,
                          const std::string& signal) {
    const CommandEnd end = RunCommand({"lava-test-case", id, "--result", word}, {}, kCommandLimitS);
    hasCommand_ = end.kind == CommandEnd::kExited || end.kind == CommandEnd::kSignalled;
    if (end.Succeeded()) return end.output;
    // A signal that was already printed is not repeated.
    return end.output.find("<LAVA_SIGNAL_TESTCASE ") == std::string::npos ? signal : end.output;
  }

  bool hasCommand_ = true;  // until it could not be started, or hung
};

}  // namespace

std::unique_ptr<RunListener> MakeLavaWriter(const std::string& path, int standardOutput) {
  return std::make_unique<LavaWriter>(path, standardOutput);
}

}  // namespace runner
