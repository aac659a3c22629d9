#include "ModuleVerification.h"

#include <iostream>
#include <string>
#include <utility>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "../../stages/src/VerifyResult.h"
#include "Ansi.h"
#include "InputFile.h"
#include "Verifiers.h"
#include "VerifyReport.h"

namespace {

bool verifyingAll = false;

struct StageVerifier {
  MODULE_TYPE module;
  void (*verify)(CM_Verify_Result& result, const std::string& golden, const std::string& sample);
};

constexpr StageVerifier kVerifiers[] = {
    {MODULE_OMXIN, Verify_OMX_Input}, {MODULE_OMXOUT, Verify_OMX_Output},
    {MODULE_VDEC, Verify_VDEC},       {MODULE_DVO, Verify_DVO},
    {MODULE_VO, Verify_VO},           {MODULE_SCALER, Verify_Scaler},
    {MODULE_AUDIO, Verify_Audio},
};

std::ostream& Log() {
  return CmLog("Verify_Module");
}

bool ReportExistence(const char* found, const char* missing, const std::string& path) {
  if (IsInputFile(path)) {
    Log() << found << path << " exist\n";
    return true;
  }
  Log() << ansi::kFail << missing << path << " NOT exist!\n";
  return false;
}

void Verify(CM_Module& module, const std::string& goldenPath) {
  CM_Verify_Result result(module.type);
  for (const StageVerifier& verifier : kVerifiers) {
    if (verifier.module == module.type) verifier.verify(result, goldenPath, *module.dumpPath);
  }
  *module.result = std::move(result);
}

}  // namespace

void Verify_Module(MODULE_TYPE type) {
  Init_Module_List();
  CM_Module* module = Get_Module_by_ID(type);
  if (module == nullptr) {
    Log() << "ERROR: unknown module: " << static_cast<int>(type) << '\n';
    return;
  }
  const CM_TestCase* testCase = KnownTestCase("Verify_Module");
  if (testCase == nullptr) return;
  Log() << "=======> Verify: " << Module_Type_To_String(type) << '\n';
  Log() << "Verify the Test Case  : " << testCase->Get_TestCase_Name() << '\n';
  const std::string goldenPath = testCase->Get_Golden_Path(type);
  if (!ReportExistence("Dump   file: ", "ERROR: Dump file: ", *module->dumpPath)) return;
  if (!ReportExistence("Goldan file: ", "ERROR: Goldan file: ", goldenPath)) return;
  Verify(*module, goldenPath);
  if (Get_Debug_Level() != 0 || !verifyingAll) Print_RWA_Verify_Result(module->result);
}

void Verify_All_Modules() {
  Init_Module_List();
  verifyingAll = true;
  for (CM_Module& module : ModuleTypeList()) {
    *module.result = CM_Verify_Result(module.type);
    Verify_Module(module.type);
  }
  verifyingAll = false;
}

bool IsDemoContent(const CM_TestCase& testCase) {
  return testCase.contentFile == "goodDemo.cfg";
}
