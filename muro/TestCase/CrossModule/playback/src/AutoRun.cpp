#include "AutoRun.h"

#include <algorithm>
#include <charconv>
#include <iomanip>
#include <sstream>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "../../verify/src/AvSync.h"
#include "../../verify/src/VerifyReport.h"
#include "Ansi.h"
#include "LiveLine.h"
#include "MenuItem.h"
#include "PlaybackRun.h"
#include "Shell.h"

namespace {

constexpr char kAutoTest[] = "Auto_Test";

/// Results of a test case in the rounds so far.
struct Tally {
  CM_TestCase* testCase;
  int passedRounds = 0;
  int notRunRounds = 0;
  Verdict last = Verdict::kNotRun;
};

void Count(Tally& tally, Verdict verdict) {
  tally.last = verdict;
  if (verdict == Verdict::kPass) ++tally.passedRounds;
  if (verdict == Verdict::kNotRun) ++tally.notRunRounds;
}

std::string Of(const char* what, std::size_t number, std::size_t count) {
  return what + std::to_string(number) + "/" + std::to_string(count);
}

void PrintRound(const std::string& round, const std::string& elapsed,
                const std::vector<Tally>& tallies) {
  const auto passed = std::ranges::count(tallies, Verdict::kPass, &Tally::last);
  std::ostream& out = CmLog(kAutoTest);
  out << round << ": " << passed << " of " << tallies.size() << " passed in " << elapsed;
  const char* separator = ", not passed: ";
  for (const Tally& tally : tallies) {
    if (tally.last == Verdict::kPass) continue;
    out << separator << tally.testCase->Get_TestCase_Name();
    separator = " ";
  }
  out << '\n';
}

void PrintSummaryLine(const Tally& tally, int rounds) {
  const bool passed = tally.passedRounds == rounds;
  std::ostringstream line;
  line << std::left << std::setw(26) << tally.testCase->Get_TestCase_Name()
       << (passed ? ansi::kPass : ansi::kFail) << (passed ? "PASS" : "FAIL") << ansi::kReset
       << "  passed " << tally.passedRounds << " of " << rounds;
  if (tally.notRunRounds > 0) line << ", not run " << tally.notRunRounds;
  CmLog(kAutoTest) << line.str() << '\n';
}

void RunRound(std::vector<Tally>& tallies, const std::string& round, Checks checks) {
  const Stopwatch watch;
  for (std::size_t i = 0; i < tallies.size(); ++i) {
    Tally& tally = tallies[i];
    const std::string progress =
        round + Of(", case ", i + 1, tallies.size()) + ": " + tally.testCase->Get_TestCase_Name();
    Count(tally, RunAndVerify(tally.testCase, checks, progress));
  }
  PrintRound(round, watch.Elapsed(), tallies);
}

CM_TestCase* TestCaseNamed(const std::string& token) {
  int number = 0;
  const char* end = token.data() + token.size();
  const auto [rest, error] = std::from_chars(token.data(), end, number);
  return error == std::errc() && rest == end ? TestCaseAt(number) : nullptr;
}

}  // namespace

int Auto_Test_Start() {
  Set_Test_Timestamp();
  CmLog(__func__) << "First Round test, timestamp = " << Get_Test_Timestamp() << '\n';
  return 0;
}

bool VerifyAll(Dumps dumps) {
  StartMenuItem("CMplayback_Verify_All");
  Verify_All_Modules(dumps);
  return Print_Verify_Result();
}

bool VerifyAvSyncAlone() {
  StartMenuItem("CMplayback_Verify_AVsync");
  return Verify_AVsync();
}

Verdict RunAndVerify(CM_TestCase* testCase, Checks checks, const std::string& progress) {
  const unsigned shellFailures = ShellFailures();
  const int status = Run_Playback_Test_Case(testCase, progress);
  if (status == -1 || ShellFailures() != shellFailures) return Verdict::kNotRun;
  const bool refused = status != 0;
  bool passed = true;
  if (checks == Checks::kAll)
    passed = VerifyAll(refused ? Dumps::kOfARefusedRun : Dumps::kOfARun) && passed;
  if (checks == Checks::kSyncOnly || testCase->type == kAvSyncTestCase)
    passed = VerifyAvSyncAlone() && passed;
  if (refused) return Verdict::kNotRun;
  return passed ? Verdict::kPass : Verdict::kFail;
}

std::vector<CM_TestCase*> SelectTestCases(const std::string& list, const char* function) {
  std::string words = list;
  std::ranges::replace(words, ',', ' ');
  std::istringstream tokens(words);
  std::vector<CM_TestCase*> cases;
  for (std::string token; tokens >> token;) {
    if (CM_TestCase* testCase = TestCaseNamed(token)) {
      cases.push_back(testCase);
    } else {
      CmLog(function) << "no test case " << token << ", skipped\n";
    }
  }
  return cases;
}

std::vector<CM_TestCase*> AllTestCases() {
  std::vector<CM_TestCase*> cases;
  for (int number = 1; number <= TestCaseCount(); ++number) cases.push_back(TestCaseAt(number));
  return cases;
}

int RunRounds(const std::vector<CM_TestCase*>& cases, int rounds, Checks checks) {
  if (cases.empty()) {
    CmLog(kAutoTest) << ansi::kFail << "ERROR: no test case to run" << ansi::kReset << '\n';
    return 1;
  }
  Auto_Test_Start();
  std::vector<Tally> tallies;
  tallies.reserve(cases.size());
  for (CM_TestCase* testCase : cases) tallies.push_back({testCase});
  for (int round = 1; round <= rounds; ++round) {
    if (round > 1) Set_Test_Timestamp();  // keep the reports of the previous round
    RunRound(tallies, "Round " + std::to_string(round) + "/" + std::to_string(rounds), checks);
  }
  for (const Tally& tally : tallies) PrintSummaryLine(tally, rounds);
  return std::ranges::all_of(tallies, [&](const Tally& t) { return t.passedRounds == rounds; }) ? 0
                                                                                                : 1;
}
