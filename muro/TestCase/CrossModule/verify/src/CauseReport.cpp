#include "CauseReport.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <vector>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/StageVerdict.h"
#include "../../stages/src/VerifyResult.h"
#include "Ansi.h"
#include "FrameRows.h"
#include "ReportTable.h"

namespace {

constexpr std::size_t kMostCauses = 40;
constexpr int kNameWidth = 8;

std::string Fixed(double value, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

std::string Milliseconds(int64_t ticks90k) {
  return Fixed(static_cast<double>(std::abs(ticks90k)) / 90, 1) + " ms";
}

/// The noun for one row of a stage.
const char* RowNoun(MODULE_TYPE stage) {
  return stage == MODULE_AUDIO ? "block" : stage == MODULE_OMXIN ? "packet" : "picture";
}

std::string Rows(const FrameEvent& event) {
  return std::to_string(event.count) + " " + RowNoun(event.stage) + (event.count == 1 ? "" : "s");
}

const StageColumn* ColumnAt(const FrameEvent& event, std::size_t n) {
  const auto columns = FindStage(event.stage)->columns;
  return n < columns.size() ? &columns[n] : nullptr;
}

std::vector<std::string> ColumnNames(const FrameEvent& event) {
  std::vector<std::string> names;
  for (std::size_t n = 0; n < 32; ++n) {
    if ((event.columns >> n & 1U) == 0) continue;
    const StageColumn* const column = ColumnAt(event, n);
    names.emplace_back(column == nullptr ? "line end" : column->name);
  }
  return names;
}

const char* TimeWord(const FrameEvent& event) {
  if (event.time == TimeEffect::kUnknown) return nullptr;
  if (event.time == TimeEffect::kKept) return "kept";
  return event.kind == EventKind::kDropped ? "lost" : "added";
}

std::string WithTime(const std::string& text, const FrameEvent& event) {
  const char* const time = TimeWord(event);
  return time == nullptr ? text : text + ", time " + time;
}

std::string Changed(const FrameEvent& event) {
  std::string text = Rows(event) + " changed in";
  for (const std::string& name : ColumnNames(event)) text += " " + name;
  return text + " (" + Printable(event.dumpValue) + "/" + Printable(event.goldenValue) + ")";
}

/// "1 picture dropped, time kept"
std::string WhatHappened(const FrameEvent& event) {
  switch (event.kind) {
    case EventKind::kDropped:
      return WithTime(Rows(event) + " dropped", event);
    case EventKind::kRepeated:
      return WithTime(Rows(event) + " repeated", event);
    case EventKind::kReordered:
      return "in another order up to frame " + std::to_string(event.other);
    case EventKind::kDamaged:
      return Rows(event) + " damaged";
    case EventKind::kChanged:
      return Changed(event);
    case EventKind::kLate:
      return Milliseconds(event.ticks90k) + " late from here on";
    case EventKind::kEarly:
      return Milliseconds(event.ticks90k) + " early from here on";
    case EventKind::kUneven:
      return Rows(event) + " uneven, at worst " + Milliseconds(event.ticks90k);
    case EventKind::kCut:
      return "the dump ends, " + Rows(event) + " missing";
    case EventKind::kExtra:
      return Rows(event) + " that golden never had";
    case EventKind::kBroken:
      return std::to_string(event.count) + " malformed row" + (event.count == 1 ? "" : "s") +
             ", line " + std::to_string(event.row);
  }
  return "";
}

/// "frame 300 (5.000 s)"; if the exact place is unknown, "one of the frames 300 to 340 (5.000 s)".
std::string Where(const FrameEvent& event, uint32_t begin) {
  std::string text = "frame " + std::to_string(event.first);
  if (event.lastPossible != event.first)
    text = "between frames " + std::to_string(event.first) + " and " +
           std::to_string(event.lastPossible + event.count - 1);
  if (!event.pts) return text;
  const auto ticks = static_cast<int32_t>(event.pts->first - begin);
  return text + " (" + Fixed(static_cast<double>(ticks) / 90000, 3) + " s)";
}

std::string SeenIn(const CaseEvents& found, const FrameEvent& cause) {
  std::string text;
  for (const Stage* stage : PictureWay()) {
    const auto events = std::ranges::find(found.stages, stage->module, &StageEvents::stage);
    if (events == found.stages.end() || stage->module == cause.stage) continue;
    if (std::ranges::find(events->events, cause.id, &FrameEvent::cause) == events->events.end())
      continue;
    text += (text.empty() ? "; seen in " : ", ") + std::string(stage->simpleName);
  }
  return text;
}

std::vector<const FrameEvent*> CausesOf(const CaseEvents& found) {
  std::vector<const FrameEvent*> causes;
  for (const StageEvents& stage : found.stages) {
    for (const FrameEvent& event : stage.events) {
      if (event.cause == 0) causes.push_back(&event);
    }
  }
  const uint32_t begin = BeginOf(found);
  std::ranges::stable_sort(causes, {}, [&](const FrameEvent* event) {
    return event->pts ? int64_t{static_cast<int32_t>(event->pts->first - begin)} : INT64_MAX;
  });
  return causes;
}

void PrintPacing(std::ostream& out, const StageEvents& stage) {
  const Pacing& pacing = *stage.pacing;
  out << std::left << std::setw(kNameWidth) << FindStage(stage.stage)->simpleName
      << "pacing: " << Fixed(pacing.ratePerSecond, 3) << ' ' << RowNoun(stage.stage)
      << "s a second, longest " << Milliseconds(pacing.worstInterval) << ", "
      << pacing.unevenPictures << " uneven, drift " << (pacing.driftPpm < 0 ? "" : "+")
      << Fixed(pacing.driftPpm, 1) << " ppm\n";
}

std::string Text(const std::string& value) {
  std::string text = "\"";
  for (const char c : value) {
    char escaped[8];
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7f && c != '"' && c != '\\') {
      text += c;
    } else {
      std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
      text += escaped;
    }
  }
  return text + '"';
}

/// A flash and its beep, with the tolerance of their difference.
std::string SyncMarkJson(const CaseEvents& found, const SyncMark& mark) {
  std::ostringstream json;
  json << "{\"event\":\"sync-mark\",\"case\":" << Text(found.testCase)
       << ",\"flash_pts\":" << mark.flash90k << ",\"beep_pts\":" << mark.beep90k
       << ",\"ms\":" << mark.diffMs << ",\"least_ms\":" << kDelayToleranceMs
       << ",\"most_ms\":" << kAheadToleranceMs << ",\"passed\":" << (mark.passed ? "true" : "false")
       << '}';
  return json.str();
}

void AppendKindsOwn(std::ostream& json, const FrameEvent& event) {
  switch (event.kind) {
    case EventKind::kReordered:
      json << ",\"other\":" << event.other;
      break;
    case EventKind::kChanged: {
      const char* separator = ",\"columns\":[";
      for (const std::string& name : ColumnNames(event)) {
        json << separator << Text(name);
        separator = ",";
      }
      json << "],\"golden\":" << Text(event.goldenValue) << ",\"dump\":" << Text(event.dumpValue);
      break;
    }
    case EventKind::kLate:
    case EventKind::kEarly:
    case EventKind::kUneven:
      json << ",\"ms\":" << Fixed(static_cast<double>(event.ticks90k) / 90, 1);
      break;
    case EventKind::kBroken:
      json << ",\"row\":" << event.row;
      break;
    default:
      break;
  }
}

}  // namespace

uint32_t BeginOf(const CaseEvents& found) {
  const PtsRange* first = nullptr;
  for (const StageEvents& stage : found.stages) {
    if (!stage.shown) continue;
    if (first == nullptr || static_cast<int32_t>(stage.shown->first - first->first) < 0)
      first = &*stage.shown;
  }
  return first == nullptr ? 0 : first->first;
}

std::vector<CauseLine> CauseLines(const CaseEvents& found) {
  const uint32_t begin = BeginOf(found);
  std::vector<CauseLine> lines;
  for (const FrameEvent* cause : CausesOf(found))
    lines.push_back(
        {cause, Where(*cause, begin) + ": " + WhatHappened(*cause) + SeenIn(found, *cause)});
  return lines;
}

void PrintCauses(std::ostream& out, const CaseEvents& found, const StageResults& results) {
  const std::vector<CauseLine> causes = CauseLines(found);
  if (causes.empty()) return;
  out << '\n' << report_table::kHeadingColour << "Causes" << ansi::kReset << '\n';
  for (std::size_t i = 0; i < std::min(causes.size(), kMostCauses); ++i) {
    out << std::left << std::setw(kNameWidth) << FindStage(causes[i].event->stage)->simpleName
        << causes[i].text << '\n';
  }
  if (causes.size() > kMostCauses) out << "and " << causes.size() - kMostCauses << " more\n";
  for (const StageEvents& stage : found.stages) {
    const auto result = std::ranges::find(results, stage.stage,
                                          [](const CM_Verify_Result* r) { return r->moduleType; });
    if (stage.pacing && result != results.end() && !Passed(**result)) PrintPacing(out, stage);
  }
}

std::string PacingJson(const CaseEvents& found, const StageEvents& stage) {
  const Pacing& pacing = *stage.pacing;
  std::ostringstream json;
  json << "{\"event\":\"stage-pacing\",\"case\":" << Text(found.testCase)
       << ",\"stage\":" << Text(FindStage(stage.stage)->simpleName)
       << ",\"rate\":" << Fixed(pacing.ratePerSecond, 3)
       << ",\"worst_ms\":" << Fixed(static_cast<double>(pacing.worstInterval) / 90, 1)
       << ",\"uneven\":" << pacing.unevenPictures << ",\"drift_ppm\":" << Fixed(pacing.driftPpm, 1)
       << '}';
  return json.str();
}

std::string EventJson(const CaseEvents& found, const FrameEvent& event) {
  std::ostringstream json;
  json << "{\"event\":\"frame-event\",\"case\":" << Text(found.testCase)
       << ",\"stage\":" << Text(FindStage(event.stage)->simpleName) << ",\"kind\":\""
       << NameOf(event.kind) << "\",\"first\":" << event.first
       << ",\"last_possible\":" << event.lastPossible << ",\"count\":" << event.count
       << ",\"pts\":" << (event.pts ? std::to_string(event.pts->first) : "null")
       << ",\"time\":" << (TimeWord(event) == nullptr ? "null" : Text(TimeWord(event)))
       << ",\"cause\":" << (event.cause == 0 ? "null" : std::to_string(event.cause))
       << ",\"id\":" << event.id;
  AppendKindsOwn(json, event);
  json << '}';
  return json.str();
}

std::vector<std::string> FindingsOf(const CaseEvents& found, const std::vector<SyncMark>& marks) {
  std::vector<std::string> lines;
  for (const StageEvents& stage : found.stages) {
    for (const FrameEvent& event : stage.events) lines.push_back(EventJson(found, event));
  }
  for (const StageEvents& stage : found.stages) {
    if (stage.pacing) lines.push_back(PacingJson(found, stage));
  }
  for (const SyncMark& mark : marks) lines.push_back(SyncMarkJson(found, mark));
  return lines;
}
