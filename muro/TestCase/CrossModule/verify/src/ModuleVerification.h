// Verifying a stage's dump against its golden data.
#pragma once

#include <string>

#include "../../stages/src/Stage.h"

class CM_Verify_Result;

/// Compares a stage's two files with the stage's verifier.
void CompareStage(CM_Verify_Result& result, const std::string& goldenPath,
                  const std::string& dumpPath);

/// Verifies one stage's dump of the current test case and keeps the outcome in the stage's record.
/// A missing dump or golden file is reported and leaves the previous outcome. Prints the outcome in
/// detail at debug level 1, and when it is not one of all stages that are being verified.
void Verify_Module(MODULE_TYPE module);

/// Verifies one stage alone. Returns whether it was verified and passed.
bool VerifyOneModule(MODULE_TYPE module);

/// What there is to verify.
enum class Dumps {
  kOfARun,
  kOfARefusedRun,  // none: what is kept is older
};

/// Forgets every stage's outcome and verifies all stages in list order.
void Verify_All_Modules(Dumps dumps = Dumps::kOfARun);
