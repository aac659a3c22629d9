#include "DetailedVerdict.h"

#include <iomanip>
#include <iostream>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Stage.h"
#include "../../stages/src/StageVerdict.h"
#include "../../stages/src/VerifyResult.h"
#include "Ansi.h"

void Print_RWA_Verify_Result(const CM_Verify_Result* result) {
  const auto log = []() -> std::ostream& { return CmLog("Print_RWA_Verify_Result"); };
  log() << Module_Type_To_String(result->moduleType) << "verify result ==>  ";
  if (result->wrongFields.empty()) {
    std::cout << ansi::kList << "PASS" << ansi::kReset;
    if (result->verifyStatus != 0) std::cout << " (verify status " << result->verifyStatus << ')';
    std::cout << '\n';
    if (!Passed(*result))
      log() << ansi::kFail << "not passed: " << WhyNotPassed(*result) << ansi::kReset << '\n';
    return;
  }
  std::cout << ansi::kFail << "FAIL, error field count:" << result->wrongFields.size()
            << ansi::kReset << '\n';
  const std::ios_base::fmtflags flags = std::cout.flags();
  for (std::size_t i = 0; i < result->wrongFields.size(); ++i)
    log() << "  " << std::right << std::setw(3) << i << ' ' << result->wrongFields[i] << '\n';
  std::cout.flags(flags);
}
