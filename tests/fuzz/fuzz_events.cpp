// The analysis of frames on files of every stage: truncated, garbled or of another kind. The first
// byte selects the stage; golden data and dump follow, separated by the line "--".
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "FuzzFile.h"
#include "TestCase/CrossModule/verify/src/CauseReport.h"
#include "TestCase/CrossModule/verify/src/Causes.h"
#include "TestCase/CrossModule/verify/src/EventStrip.h"
#include "TestCase/CrossModule/verify/src/StageAnalysis.h"

namespace {

/// Checks the invariants of every analysis.
void Check(const StageEvents& found) {
  int64_t lost = 0;
  int64_t place = 0;
  for (const FrameEvent& event : found.events) {
    fuzz::Require(event.count > 0, "an event of no row");
    fuzz::Require(event.place >= place, "events out of golden's order");
    fuzz::Require(event.placeEnd > event.place, "an event at no place");
    place = event.place;
    fuzz::Plant("dropped rows", event.kind == EventKind::kDropped && event.count > 1);
    if (event.kind == EventKind::kDropped || event.kind == EventKind::kCut) lost += event.count;
  }
  fuzz::Require(lost <= found.goldenRows, "more rows lost than golden has");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::BeQuiet();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::string_view files(reinterpret_cast<const char*>(data + 1), size - 1);
  const fuzz::MemoryFile golden(fuzz::NextFile(files));
  const fuzz::MemoryFile dump(files);
  const Stage& stage = kStages[data[0] % std::size(kStages)];
  Check(AnalyseStage(stage.module, golden.Path(), dump.Path()));
  fuzz::Require(AnalyseStage(stage.module, dump.Path(), dump.Path()).events.empty(),
                "a file differs from itself");
  const CaseEvents found = AnalyseCase(
      "fuzz", [&](MODULE_TYPE) { return golden.Path(); }, [&](MODULE_TYPE) { return dump.Path(); });
  EventStrip(found, {});
  FindingsOf(found, {});
  return 0;
}
