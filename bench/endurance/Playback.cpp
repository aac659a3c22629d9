#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "Operator.h"
#include "Progress.h"
#include "ReportCheck.h"
#include "Round.h"
#include "Stages.h"
#include "runner/Text.h"

namespace endurance {
namespace {

namespace fs = std::filesystem;
using runner::TestEntry;

constexpr char kHome[] = "/data/cross_module";
constexpr std::size_t kStages = 7;
constexpr char kPlayback[] = "CMplaybackModule/";
constexpr std::size_t kEnoughForAllAtOnce = 500;

/// The first preparation of a board ends with a reboot.
void PrepareForPlayback(const Night& night) {
  test::Pty& pty = night.board.StartHarness();
  Operator op(night.board, pty, night.rules);
  op.Enter(Find(night.tests, std::string(kPlayback) + "0"));
  if (const std::string wrong = night.board.End(pty, 128 + SIGKILL); !wrong.empty())
    throw std::runtime_error("the board does not prepare playback: " + wrong);
  std::ofstream(night.board.OnBoard(std::string(kHome) + "/config/tftp_ip.cfg")) << "-\n";
}

/// A verification report without the time of its run: `report_101-h264-FrtChg_1121_070619.txt`
/// belongs to the case "report_101-h264-FrtChg".
struct Verification {
  std::string testCase;
  std::string text;
};

Verification ReadVerification(const fs::path& report) {
  constexpr std::size_t kStamp = sizeof "1121_070619" - 1;
  const std::string stem = report.stem();
  const std::size_t caseEnd = stem.size() - std::min(stem.size(), kStamp);
  std::string text = test::FileText(report);
  if (const auto at = text.find(stem.substr(caseEnd)); at != std::string::npos)
    text.replace(at, kStamp, kStamp, '-');
  return {stem.substr(0, caseEnd), text};
}

std::size_t StagesPassed(const std::string& report) {
  const auto overview = report.find("-Overview]");
  std::istringstream lines(overview == std::string::npos ? "" : report.substr(overview));
  std::size_t passed = 0;
  for (std::string line; std::getline(lines, line) && !line.empty();) {
    std::istringstream words(line);
    std::string stage;
    std::string verdict;
    words >> stage >> verdict;
    if (stage.starts_with('[') && verdict == "PASS") ++passed;
  }
  return passed;
}

/// The first line in which two reports of a case differ; empty if they are equal.
std::string Difference(const std::string& name, const std::string& text, const std::string& other) {
  if (text == other) return "";
  const std::vector<std::string> lines = runner::Split(text, '\n');
  const std::vector<std::string> otherLines = runner::Split(other, '\n');
  const auto [here, there] = std::ranges::mismatch(lines, otherLines);
  return name + " has '" + (here == lines.end() ? "its end" : *here) +
         "' where another round has '" + (there == otherLines.end() ? "its end" : *there) + "'";
}

/// Every report must contain seven stages that passed, and be identical to those of the case's
/// other rounds.
void CheckVerifications(const fs::path& directory, std::size_t count, Problems& problems) {
  std::map<std::string, std::string> firstOfCase;
  std::size_t reports = 0;
  for (const auto& entry : fs::directory_iterator(directory)) {
    ++reports;
    const auto [testCase, text] = ReadVerification(entry.path());
    const std::string name = entry.path().filename();
    if (StagesPassed(text) != kStages) problems.Add(name + " has a stage that did not pass");
    const auto [first, isNew] = firstOfCase.emplace(testCase, text);
    if (!isNew) problems.Add(Difference(name, text, first->second));
  }
  problems.ExpectCount("reports of verifications", reports, count);
}

/// One menu choice: the test, the number of cases it plays, and the number typed for the case.
struct Playing {
  const TestEntry* test;
  std::size_t cases;
  std::string number;
};

/// Entire catalogues if many cases are due, otherwise single cases.
std::vector<Playing> PlanPlayback(const Night& night) {
  constexpr std::size_t kCatalogue = 12;
  const bool atOnce = night.count >= kEnoughForAllAtOnce;
  const TestEntry& test = Find(night.tests, std::string(kPlayback) + (atOnce ? "25" : "8"));
  const std::size_t each = atOnce ? kCatalogue : 1;
  std::vector<Playing> plan;
  for (std::size_t done = 0; done < night.count; done += each)
    plan.push_back({&test, each, std::to_string(done % kCatalogue + 1)});
  return plan;
}

}  // namespace

StageResult RunPlayback(const Night& night) {
  PrepareForPlayback(night);
  StageResult result;
  const fs::path reports = night.board.OnBoard(std::string(kHome) + "/report");
  fs::remove_all(reports);
  std::vector<runner::AnswerRule> rules = {{"*", "*or ?100?:", {{false, ""}}}};
  rules.insert(rules.end(), night.rules.begin(), night.rules.end());
  const std::vector<Playing> plan = PlanPlayback(night);
  test::Pty& pty = night.board.StartHarness();
  Operator op(night.board, pty, rules);
  Progress progress(night.board, plan.size() * plan[0].cases, result.tenths);
  std::vector<TestCase*> run;
  for (const Playing& playing : plan) {
    rules[0].answers[0].text = playing.number;
    op.Run(*playing.test);
    run.push_back(playing.test->test);
    progress.Done(playing.cases);
  }
  op.Quit();
  result.problems.Add(night.board.End(pty, 0));
  result.done = progress.DoneSoFar();
  const ReportFindings report = CheckReport(night.board.ReportText(), run);
  result.problems.Add(report.problems);
  result.report = report.counters;
  result.problems.ExpectCount("tests that passed", static_cast<std::size_t>(result.report.pass),
                              run.size());
  CheckVerifications(reports, result.done, result.problems);
  result.problems.Add(progress.LeftFiles());
  return result;
}

}  // namespace endurance
