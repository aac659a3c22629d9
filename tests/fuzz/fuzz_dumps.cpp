// Dumps and golden files of every stage: truncated, garbled or of another kind. The first byte
// selects the reader; the files follow, separated by the line "--": golden file and dump of a
// stage, or the dumps of VO, Scaler and Audio for the A/V synchronisation.
#include <array>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

#include "FuzzFile.h"
#include "TestCase/CrossModule/stages/src/TestCaseCatalogue.h"
#include "TestCase/CrossModule/stages/src/VerifyResult.h"
#include "TestCase/CrossModule/verify/src/AvSync.h"
#include "TestCase/CrossModule/verify/src/DetailedVerdict.h"
#include "TestCase/CrossModule/verify/src/ReportTables.h"
#include "TestCase/CrossModule/verify/src/Verifiers.h"

namespace {

using Verifier = void (*)(CM_Verify_Result&, const std::string&, const std::string&);

struct VerifiedStage {
  MODULE_TYPE module;
  Verifier verify;
};

constexpr VerifiedStage kVerified[] = {
    {MODULE_OMXIN, Verify_OMX_Input}, {MODULE_OMXOUT, Verify_OMX_Output},
    {MODULE_VDEC, Verify_VDEC},       {MODULE_DVO, Verify_DVO},
    {MODULE_VO, Verify_VO},           {MODULE_SCALER, Verify_Scaler},
    {MODULE_AUDIO, Verify_Audio},
};
constexpr std::size_t kStageCount = sizeof kVerified / sizeof kVerified[0];

/// Prints everything that report and console contain about a stage. Returns whether it passed.
bool Report(CM_Verify_Result& result) {
  const StageResults results = {&result};
  std::ostringstream report;
  const bool passed = PrintSummary(report, "101-h264-FrtChg", results);
  PrintVideoIntegration(report, results);
  PrintColumnNames(report, results);
  report << FirstBadStage(results);
  Print_RWA_Verify_Result(&result);
  fuzz::Require(passed == AllPassed(results), "two verdicts");
  return passed;
}

void Verify(const VerifiedStage& stage, const std::string& golden, const std::string& dump) {
  CM_Verify_Result result(stage.module);
  stage.verify(result, golden, dump);
  result.goldenFrameCount = CountFrames(golden);
  result.sampleFrameCount = CountFrames(dump);
  result.Data_Preprocessing();
  const bool passed = Report(result);
  fuzz::Plant("second wrong field", result.wrongFields.size() > 1 && result.coverage.compared > 2);
  if (!passed) return;
  fuzz::Require(result.goldenFrameCount > 0 && result.sampleFrameCount > 0, "nothing passed");
  fuzz::Require(result.coverage.compared > 0, "nothing compared passed");
  fuzz::Require(result.wrongFields.empty(), "a wrong field passed");
}

/// The analysis of A/V synchronisation, with other dumps in place of the golden data.
void Synchronise(std::string_view files) {
  const std::array<fuzz::MemoryFile, 3> dumps = {fuzz::MemoryFile(fuzz::NextFile(files)),
                                                 fuzz::MemoryFile(fuzz::NextFile(files)),
                                                 fuzz::MemoryFile(fuzz::NextFile(files))};
  const auto dumpOf = [&](MODULE_TYPE stage) {
    return dumps[stage == MODULE_AUDIO ? 2 : stage == MODULE_SCALER ? 1 : 0].Path();
  };
  const auto goldenOf = [&](MODULE_TYPE stage) {
    return dumps[stage == MODULE_AUDIO ? 2 : 0].Path();
  };
  std::ostringstream out;
  const AvSyncVerdict verdict =
      VerifyAvSync(BuiltInTestCases().front(), goldenOf, dumpOf, out, out);
  fuzz::Require(verdict.passed == verdict.reason.empty(), "a failure without its reason");
  fuzz::Plant("flash without its beep",
              verdict.failedFrame > 0 || verdict.reason.starts_with("no beep"));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::BeQuiet();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::string_view files(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::size_t reader = data[0] % (kStageCount + 1);
  if (reader == kStageCount) {
    Synchronise(files);
    return 0;
  }
  const fuzz::MemoryFile golden(fuzz::NextFile(files));
  const fuzz::MemoryFile dump(files);
  Verify(kVerified[reader], golden.Path(), dump.Path());
  return 0;
}
