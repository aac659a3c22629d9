#include "VerifyReport.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "../../stages/src/VerifyResult.h"
#include "Ansi.h"
#include "ModuleVerification.h"
#include "ReportDelivery.h"
#include "ReportTable.h"
#include "Shell.h"

namespace {

using report_table::Align;
using report_table::Cell;
using report_table::Column;

constexpr char kTemporaryReport[] = "/tmp/cross_module/report.verify.tmp.txt";

constexpr MODULE_TYPE kVideoModules[] = {MODULE_VDEC, MODULE_DVO, MODULE_VO, MODULE_SCALER};

constexpr Column kIntegrationColumns[] = {
    {"Frame", 11, Align::kRight},    {"Module", 31, Align::kLeft},
    {"ErrField", 10, Align::kRight}, {"1stModule", 9, Align::kLeft},
    {"FieldName", 12, Align::kLeft}, {"Value(Dump/Golen)", 17, Align::kLeft},
};

std::ostream& Log() {
  return CmLog("Print_Verify_Result");
}

std::vector<std::string> TestInformation(const CM_TestCase& testCase) {
  return {
      "Test case     : " + testCase.Get_TestCase_Name(),
      "Content       : " + ContentHome() + testCase.contentFile,
      "Golden data   : " + std::string(Get_FreeRun_Mode() != 0 ? "free run" : "normal") +
          (testCase.goldenOverwritten != 0 ? ", overwritten by the user" : ""),
      "Test time     : " + Get_Test_Timestamp(),
      "PCB SW version: " + Get_SW_Version() + ansi::kReset,
  };
}

void PrintColumnNames(std::ostream& out) {
  for (const CM_Module& module : ModuleTypeList()) module.result->Print_Column_Name(out);
}

void LogColumnNames() {
  Log() << "Module Column Name:\n";
  for (const CM_Module& module : ModuleTypeList()) module.result->Print_Column_Name(Log());
}

/// Prints "VO(0) PASS" for a stage without wrong fields.
void PrintShortVerdict(std::ostream& out, const char* name, MODULE_TYPE type) {
  const std::size_t errors = Get_Module_by_ID(type)->result->wrongFields.size();
  out << name << '(' << errors << ") " << (errors == 0 ? "PASS" : "FAIL");
}

void CheckDemoContent(const CM_TestCase& testCase) {
  if (!IsDemoContent(testCase)) return;
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

/// The tables count wrong fields as they are filled: the next printing starts with new ones.
void ReleaseWrongFrames() {
  for (const CM_Module& module : ModuleTypeList()) module.result->deleteWrongFrame();
}

/// Writes the console's and the file's copy of the report. Returns the verdict.
bool WriteReport(const CM_TestCase& testCase, std::ostream& file) {
  for (const std::string& line : TestInformation(testCase)) {
    Log() << line << '\n';
    file << line << '\n';
  }
  file << "\nCVN - Cross Module Test - Playback Verify Report\n\n";
  const bool passed = Print_Simple_Table(std::cout);
  Print_Simple_Table(file);
  for (std::ostream* out : {&std::cout, &file}) {
    *out << '\n';
    Print_Video_Integration_Table(*out);
    *out << '\n';
  }
  file << "Module Column Name:\n";
  PrintColumnNames(file);
  return passed;
}

void KeepReport(bool passed) {
  Remove_Color_Code_From_File(kTemporaryReport);
  if (!Check_If_CrossModulePlayback_Env_Setup()) {
    Log() << ansi::kFail << "ERROR: no " << CrossModuleHome() << ", the report stays in "
          << kTemporaryReport << '\n';
    return;
  }
  const std::string path = Get_Report_Name(kReportFile, true);
  RunShell("mkdir -p " + ReportDirectory());
  RunShell(std::string("mv ") + kTemporaryReport + " " + path);
  Log() << "DONE. report:" << path << '\n';
  if (Get_Report_Send_To() != 0 && (!passed || Get_SendPassReport() == 1)) Send_Report_File(path);
}

/// Orders stages by their first wrong frame. Audio counts blocks, not frames, and comes last.
bool WentWrongEarlier(const CM_Module& a, const CM_Module& b) {
  const auto key = [](const CM_Module& module) {
    const auto& fields = module.result->wrongFields;
    return std::tuple(fields.empty(), module.type == MODULE_AUDIO,
                      fields.empty() ? 0 : fields.front().frameNumber);
  };
  return key(a) < key(b);
}

void PrintFirstBadStage(std::ostream& out) {
  const auto& modules = ModuleTypeList();
  const auto bad = std::min_element(modules.begin(), modules.end(), WentWrongEarlier);
  if (bad == modules.end() || bad->result->wrongFields.empty()) return;
  const VerifyFailField& field = bad->result->wrongFields.front();
  out << ansi::kFail << " First bad stage: " << Module_Type_To_String(bad->type) << " frame "
      << std::to_string(field.frameNumber) << ", " << report_table::FieldName(*bad->result, field)
      << " = " << report_table::ValuePair(field) << ansi::kReset << '\n';
}

/// What the video stages say of one frame.
struct FrameErrors {
  int stages = 0;  // MODULE_TYPE bits
  int64_t fieldCount = 0;
  const CM_Verify_Result* first = nullptr;  // the stage that comes first in the pipeline
};

FrameErrors ErrorsOfFrame(std::span<const CM_Verify_Result* const> results, std::size_t frame) {
  FrameErrors errors;
  for (const CM_Verify_Result* result : results) {
    if (frame >= result->wrongFrames.size() || result->wrongFrames[frame].fieldCount == 0) continue;
    errors.stages |= result->moduleType;
    errors.fieldCount += result->wrongFrames[frame].fieldCount;
    if (errors.first == nullptr) errors.first = result;
  }
  return errors;
}

void PrintIntegrationRow(std::ostream& out, std::size_t frame, const FrameErrors& errors) {
  const WrongFrame& row = errors.first->wrongFrames[frame];
  const VerifyFailField& field =
      errors.first->wrongFields[static_cast<std::size_t>(row.firstField)];
  const Cell cells[] = {
      {std::to_string(frame)},
      {Module_Type_Inte_To_String(errors.stages)},
      {std::to_string(errors.fieldCount)},
      {Module_Type_To_String(errors.first->moduleType)},
      {report_table::FieldName(*errors.first, field)},
      {report_table::ValuePair(field)},
  };
  report_table::PrintRow(out, kIntegrationColumns, cells);
}

}  // namespace

bool Print_Verify_Result() {
  const CM_TestCase* testCase = KnownTestCase("Print_Verify_Result");
  if (testCase == nullptr) return false;
  LogColumnNames();
  CheckDemoContent(*testCase);
  PrepareResults();
  std::error_code failure;
  std::filesystem::create_directories(std::filesystem::path(kTemporaryReport).parent_path(),
                                      failure);
  std::ofstream file(kTemporaryReport);
  Log() << "Print the Info & Verify Result\n";
  const bool passed = WriteReport(*testCase, file);
  ReleaseWrongFrames();
  file.close();
  if (file)
    KeepReport(passed);
  else
    Log() << ansi::kFail << "ERROR: can not write " << kTemporaryReport << '\n';
  return passed;
}

bool Print_Simple_Table(std::ostream& out) {
  const CM_TestCase* testCase = Get_Current_TestCase();
  const std::string name = IsKnown(testCase) ? testCase->Get_TestCase_Name() : "unknown";
  out << ' ' << report_table::kTitleColour << "List The 1st Erro Frame of All Module"
      << ansi::kReset << '\n'
      << report_table::kHeadingColour << "[Test-" << name << "-Overview]" << ansi::kReset << '\n';
  report_table::PrintHeadings(out, report_table::kSummaryColumns);
  bool passed = true;
  for (const CM_Module& module : ModuleTypeList())
    passed = module.result->PrintSimpleTable(out) && passed;
  PrintFirstBadStage(out);
  return passed;
}

void Print_Video_Integration_Table(std::ostream& out) {
  std::vector<const CM_Verify_Result*> results;
  std::size_t frameCount = 0;
  for (const MODULE_TYPE type : kVideoModules) {
    results.push_back(Get_Module_by_ID(type)->result);
    frameCount = std::max(frameCount, results.back()->wrongFrames.size());
  }
  out << report_table::kHeadingColour << "[Video-Integration]" << ansi::kReset << '\n';
  report_table::PrintHeadings(out, kIntegrationColumns);
  for (std::size_t frame = 0; frame < frameCount; ++frame) {
    const FrameErrors errors = ErrorsOfFrame(results, frame);
    if (errors.first != nullptr) PrintIntegrationRow(out, frame, errors);
  }
}

void Print_RWA_Verify_Result(const CM_Verify_Result* result) {
  const auto log = []() -> std::ostream& { return CmLog("Print_RWA_Verify_Result"); };
  log() << Module_Type_To_String(result->moduleType) << "verify result ==>  ";
  if (result->wrongFields.empty()) {
    std::cout << ansi::kList << "PASS" << ansi::kReset;
    if (result->verifyStatus != 0) std::cout << " (verify status " << result->verifyStatus << ')';
    std::cout << '\n';
    return;
  }
  std::cout << ansi::kFail << "FAIL, error field count:" << result->wrongFields.size()
            << ansi::kReset << '\n';
  const std::ios_base::fmtflags flags = std::cout.flags();
  for (std::size_t i = 0; i < result->wrongFields.size(); ++i)
    log() << "  " << std::right << std::setw(3) << i << ' ' << result->wrongFields[i] << '\n';
  std::cout.flags(flags);
}
