#include "ModuleVerification.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <string>
#include <utility>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/StageVerdict.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "../../stages/src/VerifyResult.h"
#include "Ansi.h"
#include "DetailedVerdict.h"
#include "InputFile.h"
#include "Verifiers.h"

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
static_assert(std::ranges::equal(kVerifiers, kStages, {}, &StageVerifier::module, &Stage::module),
              "every stage has a verifier");

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

/// Verifies a known stage. Returns false if a file is missing.
bool Verify(CM_Module& module, const CM_TestCase& testCase) {
  Log() << "=======> Verify: " << Module_Type_To_String(module.type) << '\n';
  Log() << "Verify the Test Case  : " << testCase.Get_TestCase_Name() << '\n';
  const std::string goldenPath = testCase.Get_Golden_Path(module.type);
  if (!ReportExistence("Dump   file: ", "ERROR: Dump file: ", *module.dumpPath)) return false;
  if (!ReportExistence("Goldan file: ", "ERROR: Goldan file: ", goldenPath)) return false;
  CM_Verify_Result result(module.type);
  CompareStage(result, goldenPath, *module.dumpPath);
  *module.result = std::move(result);
  if (Get_Debug_Level() != 0 || !verifyingAll) Print_RWA_Verify_Result(module.result);
  return true;
}

}  // namespace

void CompareStage(CM_Verify_Result& result, const std::string& goldenPath,
                  const std::string& dumpPath) {
  const auto* const verifier =
      std::ranges::find(kVerifiers, result.moduleType, &StageVerifier::module);
  if (verifier != std::end(kVerifiers)) verifier->verify(result, goldenPath, dumpPath);
}

void Verify_Module(MODULE_TYPE type) {
  VerifyOneModule(type);
}

bool VerifyOneModule(MODULE_TYPE type) {
  Init_Module_List();
  CM_Module* module = Get_Module_by_ID(type);
  if (module == nullptr) {
    Log() << "ERROR: unknown module: " << static_cast<int>(type) << '\n';
    return false;
  }
  const CM_TestCase* testCase = KnownTestCase("Verify_Module");
  return testCase != nullptr && Verify(*module, *testCase) && Passed(*module->result);
}

void Verify_All_Modules(Dumps dumps) {
  Init_Module_List();
  verifyingAll = true;
  for (CM_Module& module : ModuleTypeList()) {
    *module.result = CM_Verify_Result(module.type);
    module.result->runWasRefused = dumps == Dumps::kOfARefusedRun;
    Verify_Module(module.type);
  }
  verifyingAll = false;
}
