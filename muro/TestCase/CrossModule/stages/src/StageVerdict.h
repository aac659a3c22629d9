// Whether a verified stage passed. Tables, menus, reports, results of unattended runs and exit
// statuses all ask here.
#pragma once

#include <string>

class CM_Verify_Result;

enum class StageVerdict {
  kPass,
  kFail,
  kFrameDrop,  // nothing differs but the number of frames
};

struct Judgement {
  StageVerdict verdict;
  std::string remark;  // why, where fields and counts do not say so; else empty
};

/// Judges a stage. It passes only when every row that its rules select was compared, and none
/// differs. Numbers of frames count once they are known.
Judgement Judge(const CM_Verify_Result& result);

/// True for the verdict `kPass` alone.
bool Passed(const CM_Verify_Result& result);

/// Why a stage has not passed, also when the remark leaves that to fields and counts.
std::string WhyNotPassed(const CM_Verify_Result& result);

/// "compared 200 of 899".
std::string ComparedText(const CM_Verify_Result& result);
