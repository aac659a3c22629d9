#include "Verdict.h"

#include "VerifyResult.h"

namespace {

/// Rows of sound that count as much.
constexpr int64_t kMuchSound = 1000;

/// Why there is nothing to judge; empty when there is something.
std::string WhatIsMissing(const CM_Verify_Result& result) {
  if (result.columnNames.empty()) return result.runWasRefused ? "not run" : "not verified";
  if (result.framesAreCounted && result.goldenFrameCount <= 0) return "no golden frames";
  if (result.framesAreCounted && result.sampleFrameCount <= 0) return "no dumped frames";
  return "";
}

std::string StatusRemark(const CM_Verify_Result& result) {
  if ((result.verifyStatus & kStatusAudioFailed) != kStatusAudioFailed) return "cannot be read";
  return result.coverage.compared < kMuchSound ? "too little to compare"
                                               : "too few rows in the first second";
}

std::string HiddenRemark(const CM_Verify_Result& result) {
  switch (result.wrongFields.front().hidden) {
    case HiddenDifference::kLineEnd:
      return "line ends differ";
    case HiddenDifference::kDropMarker:
      return "marked as dropped";
    default:
      return "";
  }
}

std::string Joined(const std::string& first, const std::string& second) {
  return first + (first.empty() || second.empty() ? "" : ", ") + second;
}

}  // namespace

Judgement Judge(const CM_Verify_Result& result) {
  if (const std::string missing = WhatIsMissing(result); !missing.empty())
    return {StageVerdict::kFail, missing};
  const std::string order = result.outOfOrder ? "frames out of order" : "";
  if (!result.wrongFields.empty())
    return {StageVerdict::kFail, Joined(HiddenRemark(result), order)};
  if (result.verifyStatus != 0) return {StageVerdict::kFail, StatusRemark(result)};
  if (result.framesAreCounted && result.sampleFrameCount != result.goldenFrameCount)
    return {StageVerdict::kFrameDrop, order};
  if (result.coverage.Selected() == 0) return {StageVerdict::kFail, "too little to compare"};
  if (result.coverage.compared < result.coverage.Selected())
    return {StageVerdict::kFail, Joined(ComparedText(result), order)};
  return {StageVerdict::kPass, order};
}

bool Passed(const CM_Verify_Result& result) {
  return Judge(result).verdict == StageVerdict::kPass;
}

std::string ComparedText(const CM_Verify_Result& result) {
  return "compared " + std::to_string(result.coverage.compared) + " of " +
         std::to_string(result.coverage.Selected());
}
