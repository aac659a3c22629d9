#include "VerifyReport.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/StageVerdict.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "../../stages/src/VerifyResult.h"
#include "Ansi.h"
#include "AvSync.h"
#include "CauseReport.h"
#include "Causes.h"
#include "EventStrip.h"
#include "Remarks.h"
#include "ReportDelivery.h"
#include "ReportTables.h"
#include "Shell.h"

using namespace std::string_literals;

namespace {

constexpr char kTemporaryReport[] = "/tmp/cross_module/report.verify.tmp.txt";

std::ostream& Log() {
  return CmLog("Print_Verify_Result");
}

TestInformation InformationOf(const CM_TestCase& testCase) {
  return {
      .name = testCase.Get_TestCase_Name(),
      .content = ContentHome() + testCase.contentFile,
      .goldenData = std::string(Get_FreeRun_Mode() != 0 ? "free run" : "normal") +
                    (testCase.goldenOverwritten != 0 ? ", overwritten by the user" : ""),
      .testTime = Get_Test_Timestamp(),
      .softwareVersion = Get_SW_Version() + ansi::kReset,
  };
}

std::vector<std::string> InformationLines(const TestInformation& information) {
  return {
      "Test case     : " + information.name,
      "Content       : " + information.content,
      "Golden data   : " + information.goldenData,
      "Test time     : " + information.testTime,
      "PCB SW version: " + information.softwareVersion,
  };
}

StageResults Results() {
  StageResults results;
  for (const CM_Module& module : ModuleTypeList()) results.push_back(module.result);
  return results;
}

void LogColumnNames() {
  Log() << "Module Column Name:\n";
  for (const CM_Module& module : ModuleTypeList()) module.result->Print_Column_Name(Log());
}

/// Prints "VO(0) PASS": the number of wrong fields and the verdict.
void PrintShortVerdict(std::ostream& out, const char* name, MODULE_TYPE type) {
  const CM_Verify_Result& result = *Get_Module_by_ID(type)->result;
  out << name << '(' << result.wrongFields.size() << ") " << (Passed(result) ? "PASS" : "FAIL");
}

void CheckDemoContent(const CM_TestCase& testCase) {
  if (!testCase.IsDemo()) return;
  Log() << "(VIP) Start Test \n";
  PrintShortVerdict(Log(), "VO", MODULE_VO);
  PrintShortVerdict(std::cout, " -> scaler", MODULE_SCALER);
  std::cout << '\n';
}

void PrepareResults() {
  for (const CM_Module& module : ModuleTypeList()) {
    module.result->Init_Frame_Count();
    module.result->createWrongFrame();
    module.result->Data_Preprocessing();
  }
}

/// The tables count wrong fields while they are printed: the next printing starts with new ones.
void ReleaseWrongFrames() {
  for (const CM_Module& module : ModuleTypeList()) module.result->deleteWrongFrame();
}

void PrintTables(std::ostream& out, const std::string& name, const StageResults& results) {
  PrintSummary(out, name, results);
  out << '\n';
  PrintVideoIntegration(out, results);
  out << '\n';
}

/// Analyses the synchronisation of content with marks for it. Its output is returned in the text.
std::optional<AvSyncVerdict> AnalyseMarks(const CM_TestCase& testCase, std::string& text) {
  if (testCase.type != kAvSyncTestCase) return std::nullopt;
  std::ostringstream table;
  std::ostream quiet(nullptr);
  AvSyncVerdict verdict = VerifyAvSync(
      testCase, [&](MODULE_TYPE stage) { return testCase.Get_Golden_Path(stage); },
      [](MODULE_TYPE stage) { return *Get_Module_by_ID(stage)->dumpPath; }, table, quiet);
  text = table.str();
  return verdict;
}

/// Reports what happened to the frames; an unattended run receives every event and a picture of
/// them. Returns the causes that close the report of a test that did not pass.
std::string CausesOf(const CM_TestCase& testCase, const StageResults& results,
                     const std::vector<SyncMark>& marks, bool passed) {
  const bool wasRun = std::ranges::none_of(
      results, [](const CM_Verify_Result* result) { return result->runWasRefused; });
  if (!wasRun || (passed && !IsFindingHeard())) return "";
  const CaseEvents found = AnalyseCase(
      testCase.Get_TestCase_Name(),
      [&](MODULE_TYPE stage) { return testCase.Get_Golden_Path(stage); },
      [](MODULE_TYPE stage) { return *Get_Module_by_ID(stage)->dumpPath; });
  if (IsFindingHeard()) {
    for (const std::string& line : FindingsOf(found, marks)) Finding(line);
    Attach("strip.svg", EventStrip(found, marks));
  }
  std::ostringstream causes;
  if (!passed) PrintCauses(causes, found, results);
  return causes.str();
}

bool IsFilled(const std::string& path) {
  std::error_code failure;
  const auto size = std::filesystem::file_size(path, failure);
  return !failure && size > 0;
}

/// Reports that a report was not stored, and where a good copy is. Nothing is sent in that case.
void TellLostReport(const std::string& path) {
  Log() << ansi::kFail << "ERROR: the report is not in " << path << ", it is not sent";
  for (const std::string& copy : {std::string(kTemporaryReport), kTemporaryReport + ".Orig"s}) {
    if (!IsFilled(copy)) continue;
    std::cout << ", a copy is in " << copy;
    break;
  }
  std::cout << ansi::kReset << '\n';
}

void KeepReport(bool passed) {
  Remove_Color_Code_From_File(kTemporaryReport);
  if (!Check_If_CrossModulePlayback_Env_Setup()) {
    Log() << ansi::kFail << "ERROR: no " << CrossModuleHome() << ", the report stays in "
          << kTemporaryReport << '\n';
    return;
  }
  RunShell("mkdir -p " + ReportDirectory());
  const std::string path = TakeReportName();
  RunShell(std::string("mv ") + kTemporaryReport + " " + path);
  if (!IsFilled(path)) {
    TellLostReport(path);
    return;
  }
  Log() << "DONE. report:" << path << '\n';
  if (Get_Report_Send_To() != 0 && (!passed || Get_SendPassReport() == 1)) Send_Report_File(path);
}

}  // namespace

void WriteReport(std::ostream& out, const TestInformation& information, const StageResults& results,
                 const std::string& synchronisation, const std::string& causes) {
  for (const std::string& line : InformationLines(information)) out << line << '\n';
  out << "\nCVN - Cross Module Test - Playback Verify Report\n\n";
  PrintTables(out, information.name, results);
  out << "Module Column Name:\n";
  PrintColumnNames(out, results);
  if (!synchronisation.empty()) out << '\n' << synchronisation;
  out << causes;
}

bool Print_Verify_Result() {
  const CM_TestCase* testCase = KnownTestCase("Print_Verify_Result");
  if (testCase == nullptr) return false;
  LogColumnNames();
  CheckDemoContent(*testCase);
  PrepareResults();
  std::string synchronisation;
  const std::optional<AvSyncVerdict> sync = AnalyseMarks(*testCase, synchronisation);
  std::error_code failure;
  std::filesystem::create_directories(std::filesystem::path(kTemporaryReport).parent_path(),
                                      failure);
  std::ofstream file(kTemporaryReport);
  Log() << "Print the Info & Verify Result\n";
  const TestInformation information = InformationOf(*testCase);
  for (const std::string& line : InformationLines(information)) Log() << line << '\n';
  const StageResults results = Results();
  const bool passed = AllPassed(results) && (!sync || sync->passed);
  PrintTables(std::cout, information.name, results);
  const std::string causes =
      CausesOf(*testCase, results, sync ? sync->marks : std::vector<SyncMark>(), passed);
  std::cout << causes;
  std::ostringstream report;
  WriteReport(report, information, results, synchronisation, causes);
  file << report.str();
  if (IsFindingHeard()) Attach("report.txt", WithoutColours(report.str()));
  ReleaseWrongFrames();
  file.close();
  if (file)
    KeepReport(passed);
  else
    Log() << ansi::kFail << "ERROR: can not write " << kTemporaryReport << '\n';
  if (sync && !sync->passed)
    Log() << ansi::kFail << "AV sync: FAIL, " << sync->reason << ansi::kReset << '\n';
  return passed;
}

bool Print_Simple_Table(std::ostream& out) {
  const CM_TestCase* testCase = Get_Current_TestCase();
  return PrintSummary(out, IsKnown(testCase) ? testCase->Get_TestCase_Name() : "unknown",
                      Results());
}

void Print_Video_Integration_Table(std::ostream& out) {
  PrintVideoIntegration(out, Results());
}
