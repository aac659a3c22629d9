// Every prompting test, run by an operator whose answers are recorded, and replayed from the
// recording.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Emulated.h"
#include "Scripted.h"
#include "SimHal.h"
#include "TestCase/CrossModule/stages/src/Settings.h"
#include "TestDirectory.h"
#include "TestFrame.h"
#include "TestReport.h"
#include "Util.h"
#include "runner/AnswerNotes.h"
#include "runner/Answers.h"
#include "runner/IsolatedTest.h"
#include "runner/TestList.h"
#include "runner/TestSession.h"
#include "runner/Text.h"

namespace {

namespace fs = std::filesystem;
using console::Input;
using runner::TestEntry;

const int kPatience = test::IsUnderValgrind() ? 12 : 1;
const auto kSessionLimit = kPatience * std::chrono::seconds(10);
constexpr char kChoice[] = "Please enter a choice : ";

/// Operates a console: navigates to a test in the menus, gives answers of all kinds until the test
/// has ended, and quits.
class Operator {
 public:
  explicit Operator(const TestEntry& entry)
      : choices_(runner::Split(entry.position, ' ')), script_(kRules, entry) {}

  /// The input for a console that has printed `printed` since the last answer.
  std::string Answer(const std::string& printed, Input kind) {
    if (printed.ends_with(kChoice) || printed.ends_with(std::string(kChoice) + "\033[1;37m"))
      return (next_ < choices_.size() ? choices_[next_++] : std::string("Q")) + "\n";
    constexpr std::array kLines = {"0", "1", "y", "2", "n", "5", "255", "9", "picture", "3"};
    constexpr std::array kKeys = {">", "<", "?", "1", "q"};
    if (const auto answer = script_.Next(printed, kind)) return *answer;
    // Starts at another position in every cycle, so that a test that prompts in a cycle gets other
    // answers.
    const std::size_t turn = given_ + given_ / kLines.size();
    ++given_;
    if (kind == Input::kLine) return std::string(kLines[turn % kLines.size()]) + "\n";
    return kKeys[turn % kKeys.size()];
  }

 private:
  // Tests that prompt in a cycle end only with these answers.
  inline static const std::vector<runner::AnswerRule> kRules = {
      {"VscModule", "*99(Exit)*", {{false, "99"}}},
      {"VscModule", "*1(Exit)*", {{false, "1"}}},
      {"VscModule", "*1(YES)*", {{false, "0"}, {false, "1"}}}};

  std::vector<std::string> choices_;
  runner::AnswerScript script_;
  std::size_t next_ = 0;
  std::size_t given_ = 0;
};

int OpenConsole(const std::string& key) {
  runner::MarkSession(key);
  TestFrame* frame = TestFrame::GetInstance();
  do {
    frame->PrintMenu();
  } while (frame->EnterMenu() != 0);
  return 0;
}

/// A new report that contains only a header.
std::string NewReport() {
  std::string path = scripted::RedirectReport();
  testing::internal::CaptureStdout();
  printReport();
  testing::internal::GetCapturedStdout();
  return path;
}

/// The lines of tests in the report.
std::string TestLines(const std::string& path) {
  std::string lines;
  for (const std::string& line : runner::Split(scripted::ReadFile(path), '\n')) {
    if (line.starts_with("# TestCase: ")) lines += line + '\n';
  }
  return lines;
}

/// Records a session with one test. Returns the text of the answer file.
std::string Record(const TestEntry& entry) {
  simhal::Reset();
  const std::string key = runner::MakeMarkKey();
  Operator person(entry);
  std::string recorded;
  std::string printed;
  runner::IsolatedTest child;
  runner::AnswerNotes notes(
      key, {[](std::string_view) {}, [&](const std::string& line) { recorded += line; }});
  runner::MarkReader marks(key, {[&](std::string_view text) { printed += text; },
                                 [&](Input kind) {
                                   child.Type(person.Answer(printed, kind));
                                   printed.clear();
                                 },
                                 {}});
  EXPECT_EQ(child.Start([&] { return OpenConsole(key); }), "");
  const auto deadline = std::chrono::steady_clock::now() + kSessionLimit;
  std::string output;
  while (child.Wait(100, output)) {
    notes.Read(output);
    marks.Read(output);
    output.clear();
    if (std::chrono::steady_clock::now() > deadline) child.Stop();
  }
  EXPECT_EQ(child.End().kind, runner::ChildEnd::kReturned)
      << entry.id << " was not ended: " << printed.substr(0, 2000);
  return recorded;
}

/// Replays a recording. Returns the reason if the test did not run to its end.
std::string Replay(const TestEntry& entry, const std::string& recorded) {
  simhal::Reset();
  const std::string path = testing::TempDir() + "recorded";
  std::ofstream(path) << recorded;
  std::vector<runner::AnswerRule> rules;
  EXPECT_EQ(runner::LoadAnswers(path, rules), "");
  fs::remove(path);
  runner::TestSession session(entry, rules,
                              {.timeoutS = kPatience * 10.0, .idleS = kPatience * 8.0},
                              [](std::string_view) {});
  const runner::Outcome outcome = session.Run([] { return false; });
  testing::internal::CaptureStdout();
  entry.test->Finish(outcome.result);
  testing::internal::GetCapturedStdout();
  return outcome.message;
}

// The drivers' directory has a fixed path.
[[maybe_unused]] const bool kAlone = test::HaveAlone("/tmp/cross_module");

/// The files of the cross-module tests as on a new board.
void NewHome(const fs::path& directory) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator("/tmp/cross_module", ignored)) {
    const std::string kind = entry.path().extension();
    if (kind == ".cfg" || kind == ".config") fs::remove(entry, ignored);
  }
  const fs::path home = directory / "home";
  fs::remove_all(home);
  fs::create_directories(home / "config");
  SetCrossModuleHome(home.string() + "/");
}

/// Records and replays all prompting tests, either those of the cross-module playback test or all
/// others. Returns their number.
int RecordAndReplay(bool crossModule) {
  TestFrame::GetInstance()->DoInit();
  // Some tests save a picture under the name that was typed.
  const fs::path directory = testing::TempDir() + "record";
  fs::create_directories(directory);
  fs::current_path(directory);
  int tests = 0;
  for (const TestEntry& entry : runner::AllTests()) {
    if (!entry.test->asks() || entry.moduleClass.starts_with("CM") != crossModule) continue;
    if (entry.id == "K2vHalDeviceModule/3")
      continue;  // never prompts: it polls until it is interrupted
    ++tests;
    if (crossModule) NewHome(directory);
    const std::string first = NewReport();
    const std::string recorded = Record(entry);
    const std::string linesRecorded = TestLines(first);
    if (crossModule) NewHome(directory);
    const std::string second = NewReport();
    EXPECT_EQ(Replay(entry, recorded), "") << entry.id << "\n" << recorded;
    EXPECT_EQ(TestLines(second), linesRecorded) << entry.id << "\n" << recorded;
    EXPECT_EQ(recorded.find("Please enter a choice"), std::string::npos) << entry.id;
  }
  if (crossModule) NewHome(directory);
  fs::current_path("/");
  fs::remove_all(directory);
  return tests;
}

TEST(RecordTest, PromptingTestsAreReplayedWithTheSameReportLine) {
  if (test::IsEmulated()) GTEST_SKIP() << test::kNoRobustMutex;
  EXPECT_GT(RecordAndReplay(false), 160);
}

TEST(CrossModuleRecordTest, PromptingCrossModuleTestsAreReplayedWithTheSameReportLine) {
  if (test::IsEmulated()) GTEST_SKIP() << test::kNoRobustMutex;
  EXPECT_GT(RecordAndReplay(true), 20);
}

}  // namespace
