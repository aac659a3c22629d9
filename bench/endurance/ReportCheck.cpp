#include "ReportCheck.h"

#include <algorithm>
#include <array>

#include "runner/Text.h"

namespace endurance {
namespace {

constexpr std::size_t kHeadLines = 5;
constexpr std::size_t kFootLines = 6;
constexpr std::array<const char*, 3> kVerdictTexts = {"PASS", "FAIL", "----"};

std::string Number(std::size_t number) {
  return std::to_string(number);
}

bool IsHead(const std::vector<std::string>& lines) {
  return std::all_of(lines.begin(), lines.begin() + kHeadLines, [](const std::string& line) {
    return line.size() == report::kLineWidth && line.starts_with("###") && line.ends_with("###");
  });
}

/// The verdict for which `line` is exactly the test's line, or empty.
std::string VerdictOf(const std::string& line, TestCase& test) {
  for (int result = 0; result < static_cast<int>(kVerdictTexts.size()); ++result) {
    const std::string expected =
        report::FormatTestLine({test.getParaent()->getName(), test.getId(), test.getName(),
                                test.getDescription(), result});
    if (line == expected) return kVerdictTexts[static_cast<std::size_t>(result)];
  }
  return "";
}

TestCounters Count(const Verdicts& verdicts) {
  return {static_cast<int32_t>(verdicts.size()),
          static_cast<int32_t>(std::ranges::count(verdicts, kVerdictTexts[0])),
          static_cast<int32_t>(std::ranges::count(verdicts, kVerdictTexts[1]))};
}

}  // namespace

ReportFindings CheckReport(const std::string& report, const std::vector<TestCase*>& tests) {
  std::vector<std::string> lines = runner::Split(report, '\n');
  const bool endsWithNewline = lines.back().empty();
  lines.pop_back();
  if (!endsWithNewline || lines.size() < kHeadLines + kFootLines || !IsHead(lines))
    return {{}, {}, {"the report has no head or no foot"}};
  ReportFindings findings;
  const std::size_t testLines = lines.size() - kHeadLines - kFootLines;
  if (testLines != tests.size())
    findings.problems.push_back(Number(testLines) + " lines in the report for " +
                                Number(tests.size()) + " tests");
  for (std::size_t i = 0; i < std::min(testLines, tests.size()); ++i) {
    const std::string& line = lines[kHeadLines + i];
    findings.verdicts.push_back(VerdictOf(line, *tests[i]));
    if (!findings.verdicts.back().empty()) continue;
    findings.problems.push_back("line " + Number(kHeadLines + i + 1) +
                                " of the report is no line of " + tests[i]->getName() + ": " +
                                line);
    break;
  }
  findings.counters = Count(findings.verdicts);
  const std::string foot = report::FormatFooter(findings.counters, '#');
  if (!report.ends_with(foot))
    findings.problems.push_back("the report's totals are not its lines'");
  return findings;
}

std::string CompareRounds(const Verdicts& verdicts, const std::vector<TestCase*>& tests,
                          std::size_t perRound) {
  for (std::size_t i = 2 * perRound; i < verdicts.size(); ++i) {
    const std::string& second = verdicts[perRound + i % perRound];
    if (verdicts[i] == second) continue;
    return std::string(tests[i]->getName()) + " (" + tests[i]->getDescription() + "), " + second +
           " in the second round, is " + verdicts[i] + " in round " + Number(i / perRound + 1);
  }
  return "";
}

}  // namespace endurance
