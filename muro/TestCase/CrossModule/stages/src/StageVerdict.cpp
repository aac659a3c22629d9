#include "StageVerdict.h"

#include "VerifyResult.h"

namespace {

/// With fewer compared rows, the sound counts as too little to compare.
constexpr int64_t kMuchSound = 1000;

/// Why there is nothing to judge; empty if there is something.
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
  const VerifyFailField& field = result.wrongFields.front();
  switch (field.hidden) {
    case HiddenDifference::kLineEnd:
      return "line ends differ";
    case HiddenDifference::kExtraColumn:
      return "a row has an extra column";
    case HiddenDifference::kDropMarker:
      return "marked as dropped";
    case HiddenDifference::kMalformedRow:
      return "malformed row";
    default:
      return field.goldenValue == field.dumpValue ? "only control characters differ" : "";
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

std::string WhyNotPassed(const CM_Verify_Result& result) {
  const Judgement judgement = Judge(result);
  if (!judgement.remark.empty()) return judgement.remark;
  if (!result.wrongFields.empty())
    return std::to_string(result.wrongFields.size()) + " wrong fields";
  return std::to_string(result.sampleFrameCount) + " of " +
         std::to_string(result.goldenFrameCount) + " frames";
}

std::string ComparedText(const CM_Verify_Result& result) {
  return "compared " + std::to_string(result.coverage.compared) + " of " +
         std::to_string(result.coverage.Selected());
}
