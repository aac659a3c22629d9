#include "DumpVerification.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>

#include "Command.h"
#include "ConsoleWriter.h"
#include "FileChecks.h"
#include "InputFile.h"
#include "OutputFile.h"
#include "Problem.h"
#include "ResultWriters.h"
#include "TemporaryDirectory.h"
#include "TestCase/CrossModule/stages/src/StageVerdict.h"
#include "TestCase/CrossModule/stages/src/TestCaseCatalogue.h"
#include "TestCase/CrossModule/stages/src/VerifyResult.h"
#include "TestCase/CrossModule/verify/src/AvSync.h"
#include "TestCase/CrossModule/verify/src/CauseReport.h"
#include "TestCase/CrossModule/verify/src/Causes.h"
#include "TestCase/CrossModule/verify/src/EventStrip.h"
#include "TestCase/CrossModule/verify/src/ModuleVerification.h"
#include "TestCase/CrossModule/verify/src/ReportDelivery.h"
#include "TestCase/CrossModule/verify/src/ReportTable.h"
#include "TestCase/CrossModule/verify/src/Verifiers.h"
#include "TestCase/CrossModule/verify/src/VerifyReport.h"
#include "TestRun.h"
#include "Text.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

int Refuse(ExitStatus status, const std::string& problem) {
  PrintProblem(problem);
  return status;
}

bool Unpack(const std::string& archive, const std::string& directory) {
  return RunCommand({"tar", "-xzf", archive, "-C", directory}, {}, 0).Succeeded();
}

/// The test case by number, name or both; nothing if not found.
std::optional<CM_TestCase> FindBuiltIn(const std::string& name) {
  for (const CM_TestCase& testCase : BuiltInTestCases()) {
    if (testCase.type == kUnknownTestCase) continue;
    if (name == testCase.Get_TestCase_Number() || name == testCase.displayName ||
        name == testCase.Get_TestCase_Name())
      return testCase;
  }
  return std::nullopt;
}

/// Dumps and golden data of one test case, and the result of their comparison. Reads nothing but
/// the two directories.
class Verification {
 public:
  Verification(CM_TestCase testCase, std::string goldenDirectory, std::string dumpDirectory)
      : testCase_(std::move(testCase)),
        goldenDirectory_(std::move(goldenDirectory)),
        dumpDirectory_(std::move(dumpDirectory)) {}

  void Run() {
    const MutedOutput muted;
    IgnoreVoutSettings();
    Init_Module_List();  // the report lists the modules in which a frame is wrong
    for (const Stage& stage : kStages) results_.push_back(Compare(stage.module));
    if (testCase_.type == kAvSyncTestCase) AnalyseSynchronisation();
    found_ = AnalyseCase(
        testCase_.Get_TestCase_Name(), [&](MODULE_TYPE stage) { return GoldenPath(stage); },
        [&](MODULE_TYPE stage) { return DumpPath(stage); });
  }

  const CaseEvents& Found() const { return found_; }

  /// The flashes and beeps, if the content has them.
  std::vector<SyncMark> Marks() const { return sync_ ? sync_->marks : std::vector<SyncMark>(); }

  /// The picture of the findings.
  std::string Strip() const { return EventStrip(found_, Marks()); }

  /// The text of the report, without colours.
  std::string Report() const {
    StageResults results;
    for (const CM_Verify_Result& result : results_) results.push_back(&result);
    std::ostringstream report;
    std::ostringstream causes;
    if (!AllPassed(results) || (sync_ && !sync_->passed)) PrintCauses(causes, found_, results);
    WriteReport(report,
                {.name = testCase_.Get_TestCase_Name(),
                 .content = testCase_.contentFile,
                 .goldenData = goldenDirectory_,
                 .testTime = "-",
                 .softwareVersion = "-"},
                results, synchronisation_, causes.str());
    return WithoutColours(report.str());
  }

  /// One result per stage, and one for the synchronisation if the content has marks for it.
  std::vector<TestResult> Results() const {
    std::vector<TestResult> results;
    for (const CM_Verify_Result& result : results_) results.push_back(ResultOf(result));
    if (sync_) results.push_back(SynchronisationResult());
    for (std::size_t i = 0; i < results.size(); ++i) results[i].test.number = i + 1;
    return results;
  }

 private:
  std::string GoldenPath(MODULE_TYPE module) const {
    return goldenDirectory_ + "/" + testCase_.Get_Dump_Backup_Name(module);
  }
  std::string DumpPath(MODULE_TYPE module) const {
    return dumpDirectory_ + "/" + testCase_.Get_Dump_Backup_Name(module);
  }

  CM_Verify_Result Compare(MODULE_TYPE module) const {
    CM_Verify_Result result(module);
    if (IsInputFile(DumpPath(module)) && IsInputFile(GoldenPath(module)))
      CompareStage(result, GoldenPath(module), DumpPath(module));
    result.goldenFrameCount = CountFrames(GoldenPath(module));
    result.sampleFrameCount = CountFrames(DumpPath(module));
    result.framesAreCounted = true;
    result.createWrongFrame();
    result.Data_Preprocessing();
    return result;
  }

  void AnalyseSynchronisation() {
    std::ostringstream table;
    std::ostream quiet(nullptr);
    sync_ = VerifyAvSync(
        testCase_, [&](MODULE_TYPE stage) { return GoldenPath(stage); },
        [&](MODULE_TYPE stage) { return DumpPath(stage); }, table, quiet);
    synchronisation_ = table.str();
  }

  TestResult NewResult(const std::string& what) const {
    TestResult result;
    result.test.id = "verify/" + testCase_.Get_TestCase_Number() + "." + what;
    result.test.moduleClass = "verify";
    result.test.name = testCase_.Get_TestCase_Name() + " " + what;
    return result;
  }

  /// A stage that could not be compared is an error.
  TestResult ResultOf(const CM_Verify_Result& stage) const {
    TestResult result = NewResult(Module_Type_To_String_Simple(stage.moduleType));
    const std::string file = testCase_.Get_Dump_Backup_Name(stage.moduleType);
    if (!IsInputFile(DumpPath(stage.moduleType))) {
      result.message = "no dump " + file;
    } else if (!IsInputFile(GoldenPath(stage.moduleType))) {
      result.message = "no golden file " + file;
    } else {
      result.verdict = Passed(stage) ? Verdict::kPass : Verdict::kFail;
      result.message = CleanLine(Summary(stage));
      result.figures = {{"compared", stage.coverage.compared},
                        {"selected", stage.coverage.Selected()}};
    }
    return result;
  }

  /// "447 of 447 frames, 1 wrong frame, 1 wrong field, first: frame 300, crc = 1/2"
  static std::string Summary(const CM_Verify_Result& stage) {
    std::string text = std::to_string(stage.sampleFrameCount) + " of " +
                       std::to_string(stage.goldenFrameCount) + " frames";
    if (!stage.wrongFields.empty()) {
      const VerifyFailField& first = stage.wrongFields.front();
      text += ", " + Counted(static_cast<std::size_t>(stage.wrongFrameTotal), "wrong frame") +
              ", " + Counted(stage.wrongFields.size(), "wrong field") + ", first: frame " +
              std::to_string(first.frameNumber) + ", " + report_table::FieldName(stage, first) +
              " = " + report_table::ValuePair(first);
    }
    const std::string remark = Judge(stage).remark;
    if (!remark.starts_with("compared")) text += ", " + ComparedText(stage);
    return text + (remark.empty() ? "" : ", " + remark);
  }

  static std::string Counted(std::size_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
  }

  TestResult SynchronisationResult() const {
    TestResult result = NewResult("AVsync");
    result.verdict = sync_->passed ? Verdict::kPass : Verdict::kFail;
    result.message = sync_->reason;
    return result;
  }

  const CM_TestCase testCase_;
  const std::string goldenDirectory_;
  const std::string dumpDirectory_;
  std::vector<CM_Verify_Result> results_;
  std::optional<AvSyncVerdict> sync_;
  std::string synchronisation_;
  CaseEvents found_;
};

/// Writes only the events and their picture, if requested. Returns false on failure.
bool WriteEvents(const Verification& verification, const Options& options, int standardOutput) {
  bool good = true;
  if (!options.events.empty()) {
    OutputFile file(options.events, standardOutput);
    for (const StageEvents& stage : verification.Found().stages) {
      for (const FrameEvent& event : stage.events)
        file.Write(EventJson(verification.Found(), event) + "\n");
    }
    good = file.Good();
  }
  if (!options.strip.empty()) {
    OutputFile file(options.strip, standardOutput);
    file.Write(verification.Strip());
    good = file.Good() && good;
  }
  return good;
}

/// Writes the results in all formats. Returns the exit status.
int Write(const Verification& verification, const Options& options, int standardOutput) {
  const std::vector<TestResult> results = verification.Results();
  auto listeners = MakeWriters(options.outputs, standardOutput);
  listeners.push_back(std::make_unique<ConsoleWriter>(stdout, options.color, false));
  std::fputs(verification.Report().c_str(), stdout);
  std::fflush(stdout);  // the writers use the descriptor
  Totals totals;
  totals.listed = results.size();
  for (const auto& listener : listeners) listener->RunStarted(results.size());
  for (const TestResult& result : results) {
    ++totals.of[static_cast<std::size_t>(result.verdict)];
    for (const auto& listener : listeners) listener->TestEnded(result);
  }
  for (const std::string& finding : FindingsOf(verification.Found(), verification.Marks())) {
    for (const auto& listener : listeners) listener->TestFound(finding);
  }
  for (const auto& listener : listeners) listener->RunEnded(totals);
  if (!WriteEvents(verification, options, standardOutput)) return kHarnessFailed;
  if (!std::ranges::all_of(listeners, [](const auto& l) { return l->Good(); }))
    return kHarnessFailed;
  return totals.Of(Verdict::kPass) == totals.listed ? kAllPassed : kSomeFailed;
}

}  // namespace

int VerifyDumps(const Options& options, int standardOutput) {
  std::error_code error;
  if (!fs::exists(options.dump, error))
    return Refuse(kUsage, options.dump + ": no such file or directory");
  if (!fs::is_directory(options.golden, error))
    return Refuse(kUsage, options.golden + ": is no directory");
  const std::optional<CM_TestCase> testCase = FindBuiltIn(options.verifyCase);
  if (!testCase) return Refuse(kUsage, options.verifyCase + ": no such test case");
  if (const std::string problem = CheckFiles(options); !problem.empty())
    return Refuse(kUsage, problem);

  std::optional<TemporaryDirectory> unpacked;
  if (!fs::is_directory(options.dump, error)) {
    if (unpacked.emplace().Path().empty())
      return Refuse(kHarnessFailed, "cannot create temporary files");
    if (!Unpack(options.dump, unpacked->Path()))
      return Refuse(kHarnessFailed, options.dump + ": cannot unpack the archive");
  }
  Verification verification(*testCase, options.golden, unpacked ? unpacked->Path() : options.dump);
  verification.Run();
  return Write(verification, options, standardOutput);
}

}  // namespace runner
