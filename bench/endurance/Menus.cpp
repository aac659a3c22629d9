#include <cstring>

#include "Operator.h"
#include "Progress.h"
#include "ReportCheck.h"
#include "Round.h"
#include "Stages.h"
#include "TestFrame.h"

namespace endurance {
namespace {

using runner::TestEntry;

constexpr char kAllModules[] = "All Module Auto Run";
constexpr char kPrompting[] = "UTVfeHdmiModule/12";  // prompts like all others that run in one go

/// The menu item that runs all modules: the keys that lead to it, and its tests in order.
struct AllModules {
  std::string position;
  std::vector<TestCase*> tests{};
};

void CollectTests(Case& node, std::vector<TestCase*>& tests) {
  if (auto* test = dynamic_cast<TestCase*>(&node); test != nullptr && test->hasFunction())
    tests.push_back(test);
  for (unsigned short i = 0; i < node.getChildCount(); ++i) CollectTests(*node.getChild(i), tests);
}

bool FindAllModules(Case& menu, const std::string& position, AllModules& found) {
  for (unsigned short i = 0; i < menu.getChildCount(); ++i) {
    Case& child = *menu.getChild(i);
    const std::string way = position + (position.empty() ? "" : " ") + std::to_string(i);
    if (std::strcmp(child.getName(), kAllModules) == 0) {
      found.position = way;
      CollectTests(child, found.tests);
      return true;
    }
    if (FindAllModules(child, way, found)) return true;
  }
  return false;
}

}  // namespace

StageResult RunFromMenus(const Night& night) {
  const std::vector<TestEntry> single = RoundOf(night);
  AllModules all;
  FindAllModules(*TestFrame::GetInstance()->getCurrentMenu(), "", all);
  // In a short round it would take most of the time.
  const bool runsAll = night.count >= kTenths * all.tests.size();
  StageResult result;
  test::Pty& pty = night.board.StartHarness();
  Operator op(night.board, pty, night.rules);
  Progress progress(night.board, night.count, result.tenths);
  std::vector<TestCase*> run;
  while (run.size() < night.count) {
    if (runsAll) {
      op.RunAll(all.position, Find(night.tests, kPrompting));
      run.insert(run.end(), all.tests.begin(), all.tests.end());
      progress.Done(all.tests.size());
    }
    for (std::size_t i = 0; i < single.size() && run.size() < night.count; ++i) {
      op.Run(single[i]);
      run.push_back(single[i].test);
      progress.Done(1);
    }
  }
  op.Quit();
  result.problems.Add(night.board.End(pty, 0));
  result.done = run.size();
  const ReportFindings report = CheckReport(night.board.ReportText(), run);
  result.report = report.counters;
  result.problems.Add(report.problems);
  result.problems.ExpectCount("tests on the console", op.ToldReported(), run.size());
  result.problems.Add(
      CompareRounds(report.verdicts, run, single.size() + (runsAll ? all.tests.size() : 0)));
  result.problems.Add(progress.LeftFiles());
  return result;
}

}  // namespace endurance
