#include "GoldenData.h"

#include <algorithm>
#include <string>

#include "../../stages/src/BoardSystem.h"
#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "Ansi.h"
#include "Environment.h"
#include "InputFile.h"
#include "Shell.h"

namespace {

bool backupDone = false;

void BackUp(const CM_Module& module, const CM_TestCase& testCase) {
  const std::string& source = *module.dumpPath;
  const std::string target = testCase.Get_Dump_Backup_Path(module.type);
  RunShell("rm -f " + target);
  RunShell("cp " + source + " " + target);
  CmLog("Backup_Dump_File") << ansi::kBlue << "Copied " << source << " to" << target << "completed"
                            << ansi::kReset << '\n';
}

bool IsKept(const CM_TestCase& testCase, MODULE_TYPE module) {
  const std::string dump = testCase.Get_Dump_Backup_Path(module);
  if (IsInputFile(dump)) return true;
  CmLog("Overwrite_Local_Golden") << ansi::kFail
                                  << "ERROR: no dump to replace golden data by: " << dump << '\n';
  return false;
}

}  // namespace

void Expect_New_Dumps() {
  backupDone = false;
}

int Backup_Dump_File() {
  if (backupDone) return 0;
  if (!Check_If_CrossModulePlayback_Env_Setup()) {
    CmLog(__func__) << ansi::kFail << "ERROR: no " << CrossModuleHome() << ", dumps are not kept\n";
    return -1;
  }
  RunShell("mkdir -p " + CrossModuleHome() + "dump_tmp/");
  const CM_TestCase* testCase = KnownTestCase(__func__);
  if (testCase == nullptr) return -1;
  for (const CM_Module& module : ModuleTypeList()) BackUp(module, *testCase);
  backupDone = true;
  return 0;
}

int Restore_Local_Golden() {
  Init_TestCase_List();
  CmLog(__func__) << "Untar golden data ...\n";
  RunShell(std::string(ThisBoardSystem().busybox) +
           " tar -zxv -f /vendor/corvana/golden_data.tar.gz -C " + CrossModuleHome());
  RunShell("rm -f " + CrossModuleHome() + "golden_overwrite.config");
  for (std::size_t k = 1; k < TestCaseList().size(); ++k) TestCaseList()[k].goldenOverwritten = 0;
  return 0;
}

int Overwrite_Local_Golden() {
  CM_TestCase* testCase = KnownTestCase(__func__);
  if (testCase == nullptr) return -1;
  const bool complete = std::ranges::all_of(
      ModuleTypeList(), [&](const CM_Module& module) { return IsKept(*testCase, module.type); });
  if (!complete) return -1;
  for (const CM_Module& module : ModuleTypeList()) {
    RunShell("cp " + testCase->Get_Dump_Backup_Path(module.type) + " " +
             testCase->Get_Golden_Path(module.type));
  }
  testCase->goldenOverwritten = 1;
  Keep_Golden_Overwrite();
  CmLog(__func__) << "Golden data of " << testCase->Get_TestCase_Name()
                  << " replaced by its dumps\n";
  return 0;
}
