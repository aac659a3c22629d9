#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include "FileWriter.h"
#include "ResultWriters.h"
#include "Text.h"

namespace runner {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kCommandLimit = std::chrono::seconds(5);

/// What a command printed and how it ended.
struct Said {
  enum End { kGood, kBad, kHung, kNotStarted } end;
  std::string text;
};

/// Starts a command as the leader of a process group, with its output into a pipe. Returns its id;
/// -1 when that failed.
pid_t Start(const std::vector<std::string>& words, int output) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  pid_t pid = -1;
  const int error =
      posix_spawnp(&pid, arguments[0], &actions, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? pid : -1;
}

/// Reads up to the end of the output. False when that does not come in time.
bool ReadOutput(int from, Clock::time_point end, std::string& text) {
  char block[4096];
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    pollfd poller = {from, POLLIN, 0};
    const int ready = left.count() > 0 ? poll(&poller, 1, static_cast<int>(left.count())) : 0;
    if (ready == 0) return false;
    if (ready < 0) continue;
    const ssize_t got = read(from, block, sizeof block);
    if (got <= 0) return true;
    text.append(block, static_cast<std::size_t>(got));
  }
}

/// Waits for the end of a process. False when that does not come in time.
bool AwaitEnd(pid_t pid, Clock::time_point end, int& status) {
  while (waitpid(pid, &status, WNOHANG) == 0) {
    if (Clock::now() > end) return false;
    usleep(1000);
  }
  return true;
}

/// Runs a command with its limit; what is left of it then is killed.
Said Ask(const std::vector<std::string>& words) {
  int output[2];
  if (pipe2(output, O_CLOEXEC) != 0) return {Said::kNotStarted, ""};
  const pid_t pid = Start(words, output[1]);
  close(output[1]);
  Said said{Said::kNotStarted, ""};
  const Clock::time_point end = Clock::now() + kCommandLimit;
  int status = 0;
  if (pid > 0 && ReadOutput(output[0], end, said.text) && AwaitEnd(pid, end, status)) {
    said.end = status == 0 ? Said::kGood : Said::kBad;
  } else if (pid > 0) {
    kill(-pid, SIGKILL);
    waitpid(pid, &status, 0);
    said.end = Said::kHung;
  }
  close(output[0]);
  return said;
}

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
    const Said said = Ask({"lava-test-case", id, "--result", word});
    hasCommand_ = said.end == Said::kGood || said.end == Said::kBad;
    if (said.end == Said::kGood) return said.text;
    // A signal that is there already is not given twice.
    return said.text.find("<LAVA_SIGNAL_TESTCASE ") == std::string::npos ? signal : said.text;
  }

  bool hasCommand_ = true;  // until it could not be started, or hung
};

}  // namespace

std::unique_ptr<RunListener> MakeLavaWriter(const std::string& path, int standardOutput) {
  return std::make_unique<LavaWriter>(path, standardOutput);
}

}  // namespace runner
