#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "FileWriter.h"
#include "ResultWriters.h"
#include "Text.h"

namespace runner {
namespace {

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
    if (CallTestCase(id, word)) return;
    Write("<LAVA_SIGNAL_TESTCASE TEST_CASE_ID=" + id + " RESULT=" + word + ">\n");
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

  bool CallTestCase(std::string id, std::string word) {
    if (!hasCommand_) return false;
    std::string command = "lava-test-case";
    std::string option = "--result";
    char* arguments[] = {command.data(), id.data(), option.data(), word.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, Descriptor(), STDOUT_FILENO);
    pid_t pid = -1;
    int status = -1;
    hasCommand_ = posix_spawnp(&pid, arguments[0], &actions, nullptr, arguments, environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    return hasCommand_ && waitpid(pid, &status, 0) == pid && status == 0;
  }

  bool hasCommand_ = true;  // until it could not be started
};

}  // namespace

std::unique_ptr<RunListener> MakeLavaWriter(const std::string& path, int standardOutput) {
  return std::make_unique<LavaWriter>(path, standardOutput);
}

}  // namespace runner
