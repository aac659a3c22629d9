// Reporting of events: the causes in the report, the JSON lines and the strip, as whole texts.
#include <gtest/gtest.h>

#include <cstddef>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "CauseReport.h"
#include "EventStrip.h"
#include "Expected.h"
#include "VerifyResult.h"

namespace {

constexpr uint32_t kBegin = 4'294'960'000;  // time stamps wrap around 81 ms later

FrameEvent At(MODULE_TYPE stage, EventKind kind, int64_t frame, int64_t count = 1) {
  FrameEvent event;
  event.kind = kind;
  event.stage = stage;
  event.first = event.lastPossible = frame;
  event.count = count;
  event.place = frame;
  const uint32_t pts = kBegin + static_cast<uint32_t>(frame) * 3000;
  event.pts = PtsRange{pts, pts + static_cast<uint32_t>(count - 1) * 3000};
  return event;
}

StageEvents StageOf(MODULE_TYPE stage, std::vector<FrameEvent> events, uint32_t offset = 0) {
  StageEvents found;
  found.stage = stage;
  found.events = std::move(events);
  found.shown = PtsRange{kBegin + offset, kBegin + 600 * 3000};
  found.goldenRows = 601;
  return found;
}

/// One event of each kind, and one caused by another.
CaseEvents EveryKind() {
  FrameEvent dropped = At(MODULE_VDEC, EventKind::kDropped, 100, 2);
  dropped.time = TimeEffect::kKept;
  FrameEvent lost = At(MODULE_OMXIN, EventKind::kDropped, 30);
  lost.time = TimeEffect::kMoved;
  FrameEvent repeated = At(MODULE_VDEC, EventKind::kRepeated, 200);
  repeated.time = TimeEffect::kMoved;
  repeated.lastPossible = 240;
  repeated.pts->last = kBegin + 240 * 3000;
  FrameEvent reordered = At(MODULE_VDEC, EventKind::kReordered, 250);
  reordered.other = 252;
  FrameEvent changed = At(MODULE_VO, EventKind::kChanged, 120);
  changed.columns = 1U << 0 | 1U << 3 | 1U << 6 | 1U << 31;
  changed.goldenValue = "1920";
  changed.dumpValue = "19\"2\x01\\";
  FrameEvent late = At(MODULE_VO, EventKind::kLate, 300);
  late.ticks90k = 2000;
  FrameEvent early = At(MODULE_VO, EventKind::kEarly, 330);
  early.ticks90k = -4500;
  FrameEvent uneven = At(MODULE_VO, EventKind::kUneven, 400, 3);
  uneven.ticks90k = 1234;
  FrameEvent follows = At(MODULE_SCALER, EventKind::kDamaged, 101, 20);
  follows.pts.reset();
  FrameEvent broken = At(MODULE_AUDIO, EventKind::kBroken, 500, 2);
  broken.row = 502;
  FrameEvent oneBroken = At(MODULE_DVO, EventKind::kBroken, 7);
  oneBroken.row = 9;
  CaseEvents found{"101-<a&b>", {}};
  found.stages = {
      StageOf(MODULE_OMXIN, {lost}),
      StageOf(MODULE_VDEC, {dropped, repeated, reordered, At(MODULE_VDEC, EventKind::kCut, 599)}),
      StageOf(MODULE_DVO, {oneBroken}),
      StageOf(MODULE_VO, {changed, late, early, uneven}, 6000),
      StageOf(MODULE_SCALER, {follows}),
      StageOf(MODULE_AUDIO, {broken, At(MODULE_AUDIO, EventKind::kExtra, 550)}),
  };
  int id = 0;
  for (StageEvents& stage : found.stages) {
    for (FrameEvent& event : stage.events) event.id = ++id;
  }
  found.stages[4].events[0].cause = found.stages[1].events[0].id;
  found.stages[3].pacing = Pacing{59.94, 4500, 3, -12.345};
  found.stages[5].pacing = Pacing{46.875, 1920, 0, 0.04};
  return found;
}

const std::vector<SyncMark> kMarks = {{kBegin + 90000, kBegin + 90090, -1, true},
                                      {kBegin + 900000, kBegin + 901890, 21, false}};

TEST(EventReport, ReportsEveryKindWithPlaceAndEffects) {
  const CaseEvents found = EveryKind();
  CM_Verify_Result vo(MODULE_VO), audio(MODULE_AUDIO);
  audio.columnNames = {"pts"};
  audio.verifyStatus = 0;
  audio.framesAreCounted = false;
  audio.coverage.compared = 1;
  const StageResults results = {&vo, &audio};
  std::ostringstream text;
  PrintCauses(text, found, results);
  for (const std::string& line : FindingsOf(found, kMarks)) text << line << '\n';
  EXPECT_TRUE(test::IsAsExpected("events.txt", text.str()));
}

TEST(EventReport, StripShowsEveryKindAndTheSyncMarks) {
  EXPECT_TRUE(test::IsAsExpected("events.svg", EventStrip(EveryKind(), kMarks)));
}

TEST(EventReport, NothingIsPrintedWithoutAnEvent) {
  const CaseEvents nothing{"101", {StageOf(MODULE_VO, {})}};
  std::ostringstream text;
  PrintCauses(text, nothing, {});
  EXPECT_EQ(text.str(), "");
  EXPECT_NE(EventStrip(nothing, {}).find(">no event<"), std::string::npos);
  EXPECT_EQ(EventStrip(nothing, {}).find("flash"), std::string::npos);
}

TEST(EventReport, LongListsEndAfterFortyCauses) {
  for (const int causes : {40, 41, 43}) {
    CaseEvents found{"101", {StageOf(MODULE_VO, {})}};
    for (int i = 0; i < causes; ++i) {
      found.stages[0].events.push_back(At(MODULE_VO, EventKind::kDamaged, int64_t{5} * i));
      found.stages[0].events.back().id = i + 1;
    }
    std::ostringstream text;
    PrintCauses(text, found, {});
    const std::string strip = EventStrip(found, {});
    const std::string rest = "and " + std::to_string(causes - 40) + " more";
    for (const std::string& shown : {text.str(), strip}) {
      EXPECT_EQ(shown.find(rest) != std::string::npos, causes > 40) << causes;
      EXPECT_EQ(shown.find("frame 200 ("), std::string::npos) << causes << shown;
      EXPECT_NE(shown.find("frame 195 ("), std::string::npos) << causes;
    }
    EXPECT_EQ(strip.find(">41</text>"), std::string::npos)
        << "marked with a number that is not listed";
  }
}

/// The times on the strip's axis.
std::vector<std::string> Ticks(double seconds) {
  CaseEvents found{"101", {StageOf(MODULE_VO, {})}};
  found.stages[0].shown->last = kBegin + static_cast<uint32_t>(seconds * 90000);
  const std::string strip = EventStrip(found, {});
  std::vector<std::string> ticks;
  const std::regex tick(">([0-9.]+) s</text>");
  for (std::sregex_iterator at(strip.begin(), strip.end(), tick), end; at != end; ++at)
    ticks.push_back(at->str(1));
  return ticks;
}

TEST(EventReport, AxisHasRoundTimes) {
  const struct {
    double seconds;
    std::size_t count;
    const char *second, *last;
  } kAxes[] = {{0, 1, "0.0", "0.0"}, {0.9, 10, "0.1", "0.9"}, {10, 11, "1", "10"},
               {15, 8, "2", "14"},   {50, 11, "5", "50"},     {60, 7, "10", "60"},
               {101, 6, "20", "100"}};
  for (const auto& axis : kAxes) {
    const std::vector<std::string> ticks = Ticks(axis.seconds);
    ASSERT_EQ(ticks.size(), axis.count) << axis.seconds;
    EXPECT_EQ(ticks[ticks.size() > 1 ? 1 : 0], axis.second);
    EXPECT_EQ(ticks.back(), axis.last);
  }
}

}  // namespace
