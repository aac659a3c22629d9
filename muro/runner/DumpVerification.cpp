#include "DumpVerification.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "ConsoleWriter.h"
#include "InputFile.h"
#include "Problem.h"
#include "ResultWriters.h"
#include "TestCase/CrossModule/stages/src/Settings.h"
#include "TestCase/CrossModule/stages/src/TestCaseCatalogue.h"
#include "TestCase/CrossModule/stages/src/VerifyResult.h"
#include "TestCase/CrossModule/verify/src/ModuleVerification.h"
#include "TestCase/CrossModule/verify/src/ReportDelivery.h"
#include "TestCase/CrossModule/verify/src/VerifyReport.h"
#include "TestRun.h"
#include "Text.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr char kWorkDirectory[] = "/tmp/cross_module";

int Refuse(ExitStatus status, const std::string& problem) {
  PrintProblem(problem);
  return status;
}

/// A cross-module home of its own for one verification, gone at the end of the scope.
class TemporaryHome {
 public:
  TemporaryHome() {
    std::string name = (fs::temp_directory_path() / "cvntester-verify-XXXXXX").string();
    if (mkdtemp(name.data()) != nullptr) path_ = name + "/";
  }
  ~TemporaryHome() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
  }
  TemporaryHome(const TemporaryHome&) = delete;
  TemporaryHome& operator=(const TemporaryHome&) = delete;

  /// Empty when there is none.
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

/// The drivers' work directory has room for one verification at a time.
class WorkDirectoryLock {
 public:
  WorkDirectoryLock() {
    std::error_code ignored;
    fs::create_directories(kWorkDirectory, ignored);
    fd_ = open(kWorkDirectory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd_ >= 0) flock(fd_, LOCK_EX);
  }
  ~WorkDirectoryLock() {
    if (fd_ >= 0) close(fd_);
  }
  WorkDirectoryLock(const WorkDirectoryLock&) = delete;
  WorkDirectoryLock& operator=(const WorkDirectoryLock&) = delete;

 private:
  int fd_ = -1;
};

bool Unpack(const std::string& archive, const std::string& directory) {
  std::string words[] = {"tar", "-xzf", archive, "-C", directory};
  char* arguments[] = {words[0].data(), words[1].data(), words[2].data(),
                       words[3].data(), words[4].data(), nullptr};
  pid_t pid = -1;
  int status = -1;
  return posix_spawnp(&pid, arguments[0], nullptr, nullptr, arguments, environ) == 0 &&
         waitpid(pid, &status, 0) == pid && status == 0;
}

/// Puts dumps and golden files where the verifiers look for them. Returns an error, empty when all
/// is well.
std::string FillHome(const std::string& home, const Options& options) {
  std::error_code error;
  fs::create_directories(home + "config", error);
  std::ofstream(home + "config/report_send_to_USB_TFTP.config") << "0\n";  // nowhere
  fs::create_directories(home + "golden_data", error);
  fs::create_directory_symlink(fs::absolute(options.golden), home + "golden_data/playback", error);
  if (fs::is_directory(options.dump)) {
    fs::create_directory_symlink(fs::absolute(options.dump), home + "dump_tmp", error);
  } else {
    fs::create_directories(home + "dump_tmp", error);
    if (!Unpack(options.dump, home + "dump_tmp")) return options.dump + ": cannot be unpacked";
  }
  return error ? home + ": " + error.message() : "";
}

/// The test case by number, name or both; null when there is none.
const CM_TestCase* FindTestCase(const std::string& name) {
  for (const CM_TestCase& testCase : TestCaseList()) {
    if (testCase.type == kUnknownTestCase) continue;
    if (name == testCase.Get_TestCase_Number() || name == testCase.displayName ||
        name == testCase.Get_TestCase_Name())
      return &testCase;
  }
  return nullptr;
}

/// Verifies all stages with their kept dumps and returns the report's text, without colours.
std::string MakeReport(const CM_TestCase& testCase) {
  const WorkDirectoryLock lock;
  const MutedOutput muted;
  static std::vector<std::string> dumps;
  dumps.clear();
  dumps.reserve(ModuleTypeList().size());
  for (CM_Module& module : ModuleTypeList())
    module.dumpPath = &dumps.emplace_back(testCase.Get_Dump_Backup_Path(module.type));
  Set_Current_TestCase(testCase.type);
  Verify_All_Modules();
  Print_Verify_Result();
  std::ifstream file(Get_Report_Name(kReportFile, true));
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string SingleSpaced(const std::string& text) {
  std::istringstream words(text);
  return Joined({std::istream_iterator<std::string>(words), {}}, " ");
}

/// The stage's outcome as a test. A stage that could not be compared is an error.
TestResult ResultOf(const CM_Module& module, const CM_TestCase& testCase, std::size_t number) {
  const std::string stage = Module_Type_To_String_Simple(module.type);
  const std::string stageName(Trimmed(stage));
  TestResult result{{number, 1, "verify/" + testCase.Get_TestCase_Number() + "." + stageName,
                     "verify", testCase.Get_TestCase_Name() + " " + stageName, ""},
                    Verdict::kError,
                    "",
                    0,
                    "",
                    ""};
  for (const std::string& path : {*module.dumpPath, testCase.Get_Golden_Path(module.type)}) {
    if (IsInputFile(path)) continue;
    const bool isDump = path == *module.dumpPath;
    result.message =
        std::string(isDump ? "no dump " : "no golden file ") + fs::path(path).filename().string();
    return result;
  }
  std::ostringstream row;
  const bool passed = module.result->PrintSimpleTable(row);
  result.verdict = passed ? Verdict::kPass : Verdict::kFail;
  if (!passed) result.message = SingleSpaced(CleanLine(row.str()));
  return result;
}

}  // namespace

int VerifyDumps(const Options& options, int standardOutput) {
  std::error_code error;
  if (!fs::exists(options.dump, error)) return Refuse(kUsage, options.dump + ": does not exist");
  if (!fs::is_directory(options.golden, error))
    return Refuse(kUsage, options.golden + ": is no directory");
  const TemporaryHome home;
  if (home.Path().empty()) return Refuse(kHarnessFailed, "no room for temporary files");
  const std::string problem = FillHome(home.Path(), options);
  if (!problem.empty()) return Refuse(kHarnessFailed, problem);
  SetCrossModuleHome(home.Path());
  {
    const MutedOutput muted;
    Init_TestCase_List();
    Init_Module_List();
  }
  const CM_TestCase* testCase = FindTestCase(options.verifyCase);
  if (testCase == nullptr) return Refuse(kUsage, options.verifyCase + ": no such test case");

  auto listeners = MakeWriters(options.outputs, standardOutput);
  listeners.push_back(std::make_unique<ConsoleWriter>(stdout, options.color, false));
  const std::string report = MakeReport(*testCase);
  if (report.empty()) return Refuse(kHarnessFailed, "the report could not be written");
  std::fputs(report.c_str(), stdout);

  Totals totals;
  for (const auto& listener : listeners) listener->RunStarted(ModuleTypeList().size());
  for (const CM_Module& module : ModuleTypeList()) {
    const TestResult result = ResultOf(module, *testCase, ++totals.listed);
    ++totals.of[static_cast<std::size_t>(result.verdict)];
    for (const auto& listener : listeners) listener->TestEnded(result);
  }
  for (const auto& listener : listeners) listener->RunEnded(totals);
  if (!std::ranges::all_of(listeners, [](const auto& l) { return l->Good(); }))
    return kHarnessFailed;
  return totals.Of(Verdict::kPass) == totals.listed ? kAllPassed : kSomeFailed;
}

}  // namespace runner
