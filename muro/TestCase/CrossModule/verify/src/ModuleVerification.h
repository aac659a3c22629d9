// Verifies a stage's dump against its golden data.
#pragma once

#include <string>

#include "../../stages/src/Stage.h"

class CM_Verify_Result;

/// Compares a stage's two files with the stage's verifier.
void CompareStage(CM_Verify_Result& result, const std::string& goldenPath,
                  const std::string& dumpPath);

/// Verifies one stage's dump of the current test case and stores the outcome in the stage's record.
/// A missing dump or golden file is reported and leaves the previous outcome unchanged. Prints the
/// outcome in detail at debug level 1, and if the stage is verified on its own.
void Verify_Module(MODULE_TYPE module);

/// Verifies a single stage. Returns whether it was verified and passed.
bool VerifyOneModule(MODULE_TYPE module);

/// The origin of the dumps.
enum class Dumps {
  kOfARun,
  kOfARefusedRun,  // none: the stored ones are older
};

/// Resets every stage's outcome and verifies all stages in list order.
void Verify_All_Modules(Dumps dumps = Dumps::kOfARun);
