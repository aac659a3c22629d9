#include "ReportTables.h"

#include <algorithm>
#include <map>
#include <ostream>

#include "../../stages/src/Stage.h"
#include "../../stages/src/StageVerdict.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "../../stages/src/VerifyResult.h"
#include "Ansi.h"
#include "ReportTable.h"

namespace {

using report_table::Align;
using report_table::Cell;
using report_table::Column;
using report_table::kNoData;

// In the table's order of stages; the OMX layer is before the video drivers.
constexpr MODULE_TYPE kVideoModules[] = {MODULE_VDEC, MODULE_DVO, MODULE_VO, MODULE_SCALER};

constexpr Column kIntegrationColumns[] = {
    {"Frame", 11, Align::kRight},    {"Module", 31, Align::kLeft},
    {"ErrField", 10, Align::kRight}, {"1stModule", 9, Align::kLeft},
    {"FieldName", 12, Align::kLeft}, {"Value(Dump/Golen)", 17, Align::kLeft},
};

Cell VerdictCell(StageVerdict verdict) {
  switch (verdict) {
    case StageVerdict::kPass:
      return {"PASS", ansi::kPass};
    case StageVerdict::kFrameDrop:
      return {"FrameDrop", report_table::kWarnColour};
    default:
      return {"FAIL!", ansi::kFail};
  }
}

std::string FrameCount(int32_t count) {
  return count > 0 ? std::to_string(count) : kNoData;
}

/// The errors that the video stages found in one frame.
struct FrameErrors {
  int stages = 0;  // MODULE_TYPE bits
  int64_t fieldCount = 0;
  const CM_Verify_Result* first = nullptr;  // the stage that comes first in the table
  const VerifyFailField* field = nullptr;   // its wrong field
};

const CM_Verify_Result* ResultOf(const StageResults& results, MODULE_TYPE module) {
  const auto found = std::ranges::find(results, module, &CM_Verify_Result::moduleType);
  return found == results.end() ? nullptr : *found;
}

void PrintIntegrationRow(std::ostream& out, int32_t frame, const FrameErrors& errors) {
  const Cell cells[] = {
      {std::to_string(frame)},
      {Module_Type_Inte_To_String(errors.stages)},
      {std::to_string(errors.fieldCount)},
      {Module_Type_To_String(errors.first->moduleType)},
      {report_table::FieldName(*errors.first, *errors.field)},
      {report_table::ValuePair(*errors.field)},
  };
  report_table::PrintRow(out, kIntegrationColumns, cells);
}

/// A short description of the fault of a stage that has not passed.
std::string Symptom(const CM_Verify_Result& result) {
  const Judgement judgement = Judge(result);
  if (result.wrongFields.empty()) {
    if (!judgement.remark.empty()) return judgement.remark;
    return std::to_string(result.sampleFrameCount) + " of " +
           std::to_string(result.goldenFrameCount) + " frames";
  }
  const VerifyFailField& field = result.wrongFields.front();
  return "frame " + std::to_string(field.frameNumber) + ", " +
         report_table::FieldName(result, field) + " = " + report_table::ValuePair(field) +
         (judgement.remark.empty() ? "" : ", " + judgement.remark);
}

/// True if a column depends on the picture's content, so that a different picture was seen there.
bool ShowsContent(const StageColumn& column) {
  return column.use == Use::kCompared &&
         (column.unit == Unit::kChecksum || column.unit == Unit::kBytes);
}

bool ShowsContent(const Stage& stage) {
  return std::ranges::any_of(stage.columns,
                             [](const auto& column) { return ShowsContent(column); });
}

/// True if the first fault of a stage is the content of a picture.
bool HasDamagedPicture(const Stage& stage, const CM_Verify_Result& result) {
  if (result.wrongFields.empty()) return false;
  const std::size_t column = result.wrongFields.front().columnIndex;
  return column < stage.columns.size() && ShowsContent(stage.columns[column]);
}

/// True if all stages after `stage` that show the picture have it damaged too: then the data were
/// damaged, and not just one dump.
bool IsDamageCarriedOn(const std::vector<const Stage*>& way, const Stage* stage,
                       const StageResults& results) {
  const auto at = std::ranges::find(way, stage);
  return std::all_of(at, way.end(), [&](const Stage* later) {
    const CM_Verify_Result* result = ResultOf(results, later->module);
    return !ShowsContent(*later) || (result != nullptr && HasDamagedPicture(*later, *result));
  });
}

/// The stages just before `bad` whose dumps do not show the picture: it may have been damaged
/// there.
std::vector<const Stage*> BlindStagesBefore(const std::vector<const Stage*>& way,
                                            const Stage* bad) {
  std::vector<const Stage*> blind;
  for (auto at = std::ranges::find(way, bad); at != way.begin();) {
    --at;
    if (ShowsContent(**at)) break;
    blind.insert(blind.begin(), *at);
  }
  return blind;
}

std::string NamesOf(const std::vector<const Stage*>& stages) {
  if (stages.size() == 1) return Module_Type_To_String(stages.front()->module);
  std::string names;
  for (const Stage* stage : stages) {
    const bool last = stage == stages.back();
    names += (names.empty() ? "[" : last ? " or [" : ", [") + std::string(stage->simpleName) + "]";
  }
  return names;
}

void PrintFirstBadStages(std::ostream& out, const StageResults& results) {
  // A run that was refused has no bad stage.
  if (std::ranges::any_of(results, &CM_Verify_Result::runWasRefused)) return;
  const std::string picture = FirstBadStage(results);
  if (!picture.empty())
    out << ansi::kFail << " First bad stage: " << picture << ansi::kReset << '\n';
  for (const Stage& stage : kStages) {
    const CM_Verify_Result* result = ResultOf(results, stage.module);
    if (stage.pictureStep != 0 || result == nullptr || Passed(*result)) continue;
    out << ansi::kFail << (picture.empty() ? " First bad stage: " : " Sound besides: ")
        << stage.alignedName << ' ' << Symptom(*result) << ansi::kReset << '\n';
  }
}

}  // namespace

bool CM_Verify_Result::PrintSimpleTable(std::ostream& out) const {
  const Judgement judgement = Judge(*this);
  const VerifyFailField* first = wrongFields.empty() ? nullptr : &wrongFields.front();
  const Cell cells[] = {
      {Module_Type_To_String(moduleType)},
      VerdictCell(judgement.verdict),
      {FrameCount(sampleFrameCount) + "/" + FrameCount(goldenFrameCount)},
      {std::to_string(wrongFrameTotal) + "/" + std::to_string(wrongFields.size())},
      {first == nullptr ? "-" : std::to_string(first->frameNumber)},
      {first == nullptr ? "-" : report_table::FieldName(*this, *first)},
      {(first == nullptr ? kNoData : report_table::ValuePair(*first)) +
       (judgement.remark.empty() ? "" : "  " + judgement.remark)},
  };
  report_table::PrintRow(out, report_table::kSummaryColumns, cells);
  return judgement.verdict == StageVerdict::kPass;
}

bool PrintSummary(std::ostream& out, const std::string& testCaseName, const StageResults& results) {
  out << ' ' << report_table::kTitleColour << "List The 1st Erro Frame of All Module"
      << ansi::kReset << '\n'
      << report_table::kHeadingColour << "[Test-" << testCaseName << "-Overview]" << ansi::kReset
      << '\n';
  report_table::PrintHeadings(out, report_table::kSummaryColumns);
  bool passed = true;
  for (const CM_Verify_Result* result : results) passed = result->PrintSimpleTable(out) && passed;
  PrintFirstBadStages(out, results);
  return passed;
}

void PrintVideoIntegration(std::ostream& out, const StageResults& results) {
  std::map<int32_t, FrameErrors> frames;
  for (const MODULE_TYPE module : kVideoModules) {
    const CM_Verify_Result* result = ResultOf(results, module);
    if (result == nullptr) continue;
    const VerifyFailField* previous = nullptr;
    for (const VerifyFailField& field : result->wrongFields) {
      FrameErrors& errors = frames[field.frameNumber];
      errors.stages |= module;
      ++errors.fieldCount;
      if (errors.first == nullptr) errors.first = result;
      // A frame that occurs again is shown with its last values.
      const bool starts = previous == nullptr || previous->frameNumber != field.frameNumber;
      if (errors.first == result && starts) errors.field = &field;
      previous = &field;
    }
  }
  out << report_table::kHeadingColour << "[Video-Integration]" << ansi::kReset << '\n';
  report_table::PrintHeadings(out, kIntegrationColumns);
  for (const auto& [frame, errors] : frames) PrintIntegrationRow(out, frame, errors);
}

void PrintColumnNames(std::ostream& out, const StageResults& results) {
  for (const CM_Verify_Result* result : results) result->Print_Column_Name(out);
}

bool AllPassed(const StageResults& results) {
  return std::ranges::all_of(results, [](const auto* result) { return Passed(*result); });
}

std::string FirstBadStage(const StageResults& results) {
  const std::vector<const Stage*> way = PictureWay();
  for (const Stage* stage : way) {
    const CM_Verify_Result* result = ResultOf(results, stage->module);
    if (result == nullptr || Passed(*result)) continue;
    std::vector<const Stage*> suspects;
    if (HasDamagedPicture(*stage, *result) && IsDamageCarriedOn(way, stage, results))
      suspects = BlindStagesBefore(way, stage);
    suspects.push_back(stage);
    return NamesOf(suspects) + " " + Symptom(*result);
  }
  return "";
}
