#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "Progress.h"
#include "ReportCheck.h"
#include "Round.h"
#include "Stages.h"
#include "runner/RunEvents.h"
#include "runner/Text.h"

namespace endurance {
namespace {

namespace fs = std::filesystem;
using runner::TestEntry;

std::size_t CountLines(const fs::path& path, const std::string& part) {
  std::ifstream file(path);
  std::size_t count = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.find(part) != std::string::npos) ++count;
  }
  return count;
}

std::size_t CountFiles(const fs::path& directory) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

constexpr char kResults[] = "/data/night";

/// A test as printed by the runner.
struct Told {
  std::string verdict;
  std::string id;
};

/// Reads the runner's output to its end.
class RunnerConsole {
 public:
  RunnerConsole(test::Pty& pty, Progress& progress) : pty_(pty), progress_(progress) {}

  void ReadToTheEnd() {
    for (bool ended = false; !ended;) {
      ended = pty_.Wait(0) >= 0;
      text_ += pty_.TakeOutput(ended ? 0 : kWaitMs);
      for (auto end = text_.find('\n'); end != std::string::npos; end = text_.find('\n')) {
        TakeLine(text_.substr(0, end));
        text_.erase(0, end + 1);
      }
    }
  }
  const std::vector<Told>& Tests() const { return tests_; }
  /// The last line.
  const std::string& Summary() const { return summary_; }

 private:
  static constexpr int kWaitMs = 100;

  void TakeLine(const std::string& line) {
    // The progress that was displayed there has been erased.
    summary_ = runner::CleanLine(line.substr(line.rfind('\r') + 1));
    std::istringstream words(summary_);
    Told told;
    words >> told.verdict >> told.id;
    if (std::ranges::find(runner::kVerdictNames, told.verdict) == runner::kVerdictNames.end())
      return;
    tests_.push_back(told);
    progress_.Done(1);
  }

  test::Pty& pty_;
  Progress& progress_;
  std::string text_;
  std::vector<Told> tests_;
  std::string summary_;
};

std::vector<std::string> RunnerArguments(const std::vector<TestEntry>& round, std::size_t rounds) {
  const std::string directory = kResults;
  std::vector<std::string> words = {"--run"};
  for (const TestEntry& entry : round) words.push_back(entry.id);
  for (const std::string& word :
       {std::string("--repeat"), std::to_string(rounds), std::string("--answers"),
        directory + "/answers", std::string("--results"), directory + "/results",
        std::string("--junit"), directory + "/out.xml", std::string("--json"),
        directory + "/out.json", std::string("--color"), std::string("never")}) {
    words.push_back(word);
  }
  return words;
}

/// The console must list the planned tests in order, with the verdicts of the report.
std::string CompareConsole(const std::vector<Told>& told, const std::vector<TestEntry>& round,
                           const Verdicts& verdicts) {
  for (std::size_t i = 0; i < std::min(told.size(), verdicts.size()); ++i) {
    const std::size_t number = i / round.size() + 1;
    std::string id = round[i % round.size()].id;
    if (number > 1) id.append("@").append(std::to_string(number));
    if (told[i].id != id) return told[i].id + " on the console where " + id + " is due";
    const std::string expected = told[i].verdict == "PASS" ? "PASS" : "FAIL";
    const bool undefined = told[i].verdict == "ERROR" && verdicts[i] == "----";
    if (verdicts[i] != expected && !undefined)
      return id + " is " + told[i].verdict + " on the console, " + verdicts[i] + " in the report";
  }
  return "";
}

std::string ExpectedSummary(const std::vector<Told>& told) {
  runner::Totals totals;
  totals.listed = told.size();
  for (const Told& test : told) {
    const auto* name = std::ranges::find(runner::kVerdictNames, test.verdict);
    ++totals.of[static_cast<std::size_t>(name - runner::kVerdictNames.begin())];
  }
  return totals.Text();
}

}  // namespace

StageResult RunUnattended(const Night& night) {
  const std::vector<TestEntry> round = RoundOf(night);
  const std::size_t rounds = (night.count + round.size() - 1) / round.size();
  StageResult result;
  result.done = rounds * round.size();
  const fs::path directory = night.board.OnBoard(kResults);
  fs::remove_all(directory);
  fs::create_directories(directory);
  fs::copy_file(night.answers, directory / "answers");
  test::Pty& pty = night.board.StartHarness(RunnerArguments(round, rounds));
  Progress progress(night.board, result.done, result.tenths);
  RunnerConsole console(pty, progress);
  console.ReadToTheEnd();

  std::vector<TestCase*> run;
  for (std::size_t i = 0; i < result.done; ++i) run.push_back(round[i % round.size()].test);
  const ReportFindings report = CheckReport(night.board.ReportText(), run);
  Problems& problems = result.problems;
  problems.Add(report.problems);
  result.report = report.counters;
  problems.Add(night.board.End(pty, result.report.pass == result.report.total ? 0 : 1));
  problems.ExpectCount("tests on the console", console.Tests().size(), result.done);
  problems.Add(CompareConsole(console.Tests(), round, report.verdicts));
  problems.Add(CompareRounds(report.verdicts, run, round.size()));
  if (!console.Summary().starts_with(ExpectedSummary(console.Tests())))
    problems.Add("the last line is not the totals: " + console.Summary());
  problems.ExpectCount("JUnit", CountLines(directory / "out.xml", "<testcase "), result.done);
  problems.ExpectCount("JSON", CountLines(directory / "out.json", "{\"event\": \"test-end\""),
                       result.done);
  problems.ExpectCount("journal", CountLines(directory / "results/journal", "end\t"), result.done);
  problems.ExpectCount("logs", CountFiles(directory / "results/logs"), result.done);
  problems.Add(progress.LeftFiles());
  return result;
}

}  // namespace endurance
