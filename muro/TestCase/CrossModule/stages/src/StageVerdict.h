// Decides whether a verified stage passed. Tables, menus, reports, results of unattended runs and
// exit statuses all use this.
#pragma once

#include <string>

class CM_Verify_Result;

enum class StageVerdict {
  kPass,
  kFail,
  kFrameDrop,  // only the number of frames differs
};

struct Judgement {
  StageVerdict verdict;
  std::string remark;  // the reason, if fields and counts do not show it; else empty
};

/// Judges a stage. It passes only if every row that its rules select was compared and none differs.
/// Frame counts are considered once they are known.
Judgement Judge(const CM_Verify_Result& result);

/// True only for the verdict `kPass`.
bool Passed(const CM_Verify_Result& result);

/// Why a stage has not passed, also if the remark is empty because fields and counts show it.
std::string WhyNotPassed(const CM_Verify_Result& result);

/// "compared 200 of 899".
std::string ComparedText(const CM_Verify_Result& result);
