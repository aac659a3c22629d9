// One cause per defect: golden data of the board's twelve cases, as made by its player, with the
// defects that cvnsim can inject. CVN_ALL_CAUSES tests all kinds on all stages of all cases and
// prints the table; by default each kind is tested on each stage of one case.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <sstream>

#include "CauseReport.h"
#include "Causes.h"
#include "DumpReader.h"
#include "DumpWriter.h"
#include "Expected.h"
#include "Pictures.h"
#include "PlayedCases.h"
#include "ScalerTime.h"
#include "VerifyRun.h"

namespace {

namespace fs = std::filesystem;
using player::Defect;
using player::FrameValues;

constexpr int64_t kOtherClock = 16654321;

/// How a defect must be reported.
struct Ordered {
  const char* kind;
  const char* detail;  // after the frame
  EventKind told;
  int64_t count;
  TimeEffect time = TimeEffect::kUnknown;
  bool showsPictures = false;  // visible only in stages with checksums
};
constexpr Ordered kOrdered[] = {
    {"drop", "", EventKind::kDropped, 1, TimeEffect::kKept},
    {"drop", "3", EventKind::kDropped, 3, TimeEffect::kKept},
    {"skip", "", EventKind::kDropped, 1, TimeEffect::kMoved},
    {"repeat", "", EventKind::kRepeated, 1, TimeEffect::kKept},
    {"copy", "2", EventKind::kRepeated, 2, TimeEffect::kKept},
    {"freeze", "2", EventKind::kRepeated, 2, TimeEffect::kKept},
    {"reorder", "", EventKind::kReordered, 1},
    {"corrupt", "2", EventKind::kDamaged, 2, TimeEffect::kUnknown, true},
    {"change", "frame_rate=7000", EventKind::kChanged, 1},
    {"late", "60", EventKind::kLate, 1},
    {"early", "50", EventKind::kEarly, 1},
    {"jitter", "60", EventKind::kUneven, 1},
    {"cut", "", EventKind::kCut, 0},
    {"truncate", "", EventKind::kCut, 0},
    {"insert", "", EventKind::kExtra, 1},
    {"garble", "2", EventKind::kBroken, 2},
};

/// The golden data, unpacked once.
class GoldenTree {
 public:
  GoldenTree() {
    std::string name = testing::TempDir() + "golden_XXXXXX";
    if (mkdtemp(name.data()) != nullptr) path_ = name;
    const std::string command = "tar xzf '" CVN_GOLDEN_DATA "' -C '" + name + "'";
    isThere_ = fs::exists(CVN_GOLDEN_DATA) && pclose(popen(command.c_str(), "r")) == 0;
  }
  ~GoldenTree() { fs::remove_all(path_); }
  GoldenTree(const GoldenTree&) = delete;
  GoldenTree& operator=(const GoldenTree&) = delete;

  bool IsThere() const { return isThere_; }
  fs::path Golden() const { return path_ / "golden_data/playback"; }
  fs::path Dumps() const { return path_; }

 private:
  fs::path path_;
  bool isThere_;
};

MODULE_TYPE ModuleOf(player::Stage stage) {
  for (const Stage& known : kStages) {
    if (player::FormatOf(stage).stageName == known.simpleName) return known.module;
  }
  return MODULE_VDEC;
}

class Playings {
 public:
  /// Analyses a playback run of the case with these defects.
  CaseEvents Play(const player::PlayedCase& played, const std::vector<Defect>& defects) {
    for (const player::Stage stage : player::kAllStages) {
      std::ofstream out(DumpPath(stage));
      player::DumpWriter writer(out, stage, player::DefectsSeenBy(stage, defects));
      bool goesOn = true;
      for (FrameValues values : Rows(played, stage)) {
        values.clock90k += kOtherClock;
        goesOn = goesOn && writer.Write(values);
      }
      if (goesOn) writer.End();
    }
    const auto stageOf = [](MODULE_TYPE module) {
      return player::ParseStage(FindStage(module)->simpleName);
    };
    return AnalyseCase(
        std::string(played.name),
        [&](MODULE_TYPE m) { return GoldenPath(played, stageOf(m)).string(); },
        [&](MODULE_TYPE m) { return DumpPath(stageOf(m)).string(); });
  }

  const std::vector<FrameValues>& Rows(const player::PlayedCase& played, player::Stage stage) {
    auto& rows = rows_[{played.number, stage}];
    if (rows.empty()) rows = player::ReadDump(GoldenPath(played, stage), stage);
    return rows;
  }

  bool AreThere() const { return tree_.IsThere(); }

 private:
  fs::path GoldenPath(const player::PlayedCase& played, player::Stage stage) const {
    return tree_.Golden() / player::DumpNameOf(played, stage);
  }
  fs::path DumpPath(player::Stage stage) const {
    return tree_.Dumps() / player::FormatOf(stage).fileName;
  }

  GoldenTree tree_;
  std::map<std::pair<int, player::Stage>, std::vector<FrameValues>> rows_;
};

std::string Told(const CaseEvents& found) {
  std::string text;
  for (const CauseLine& line : CauseLines(found))
    text.append(FindStage(line.event->stage)->simpleName).append("  ").append(line.text) += '\n';
  return text;
}

/// The stage that shows the defect first.
MODULE_TYPE FirstToShow(const Ordered& ordered, player::Stage stage) {
  const MODULE_TYPE module = ModuleOf(stage);
  const bool isBlind = module == MODULE_OMXOUT || module == MODULE_DVO;
  return ordered.showsPictures && isBlind ? MODULE_VO : module;
}

/// Whether the stage's dump can have the defect.
bool IsPossible(const Ordered& ordered, player::Stage stage) {
  const MODULE_TYPE module = ModuleOf(stage);
  const std::string kind = ordered.kind;
  if (kind == "late" || kind == "early" || kind == "jitter") return module != MODULE_DVO;
  return kind != "change" || (module != MODULE_OMXIN && module != MODULE_AUDIO);
}

bool IsTold(const CaseEvents& found, const Ordered& ordered, player::Stage stage, int64_t frame,
            int64_t rows) {
  const std::vector<CauseLine> lines = CauseLines(found);
  if (lines.size() != 1) return false;
  const FrameEvent& event = *lines.front().event;
  const bool isBefore = ordered.told == EventKind::kCut || std::string(ordered.kind) == "freeze";
  const int64_t place = frame - (isBefore ? 1 : 0);
  const int64_t count = ordered.count == 0 ? rows - frame : ordered.count;
  // For a stage without a counter, the downstream stages show the effect on the time.
  const bool tellsTime = ordered.time == event.time || event.stage == MODULE_DVO;
  return event.kind == ordered.told && event.stage == FirstToShow(ordered, stage) &&
         event.first <= place && place <= event.lastPossible && event.count == count && tellsTime;
}

Defect Order(const Ordered& ordered, player::Stage stage, int64_t frame) {
  std::vector<std::string> words = {std::string(player::FormatOf(stage).stageName), ordered.kind,
                                    std::to_string(frame)};
  if (*ordered.detail != '\0') words.emplace_back(ordered.detail);
  return player::ParseDefect(words);
}

TEST(CrossModuleCauses, EveryDefectIsReportedOnce) {
  Playings playings;
  if (!playings.AreThere()) GTEST_SKIP() << "no golden data of the board";
  const bool all = std::getenv("CVN_ALL_CAUSES") != nullptr;
  std::size_t turn = 0;
  for (const Ordered& ordered : kOrdered) {
    std::cout << std::left << std::setw(9) << ordered.kind;
    for (const player::Stage stage : player::kAllStages) {
      if (!IsPossible(ordered, stage)) continue;
      int told = 0;
      int tried = 0;
      ++turn;
      for (const player::PlayedCase& played : player::PlayedCases()) {
        if (!all && turn % 12 != static_cast<std::size_t>(&played - player::PlayedCases().data()))
          continue;
        const auto rows = static_cast<int64_t>(playings.Rows(played, stage).size());
        const int64_t frame = rows * 3 / 4;
        const CaseEvents found = playings.Play(played, {Order(ordered, stage, frame)});
        const bool isTold = IsTold(found, ordered, stage, frame, rows);
        EXPECT_TRUE(isTold) << played.number << ' ' << player::FormatOf(stage).stageName << ' '
                            << ordered.kind << ' ' << frame << ' ' << ordered.detail << '\n'
                            << Told(found);
        ++tried;
        told += isTold ? 1 : 0;
      }
      std::cout << ' ' << player::FormatOf(stage).stageName << ' ' << told << '/' << tried;
    }
    std::cout << '\n';
  }
}

TEST(CrossModuleCauses, TwoDefectsAreTwoCauses) {
  Playings playings;
  if (!playings.AreThere()) GTEST_SKIP() << "no golden data of the board";
  const CaseEvents found =
      playings.Play(player::FindCase(101),
                    {player::ParseDefect("vdec:corrupt:200"), player::ParseDefect("vo:drop:260")});
  EXPECT_EQ(Told(found),
            "VDEC  frame 200 (3.355 s): 1 picture damaged; seen in VO, Scaler\n"
            "VO  frame 260 (4.688 s): 1 picture dropped, time kept; seen in Scaler\n");
}

TEST(CrossModuleCauses, RowMarkedAsDroppedIsADroppedPicture) {
  Playings playings;
  if (!playings.AreThere()) GTEST_SKIP() << "no golden data of the board";
  EXPECT_EQ(Told(playings.Play(player::FindCase(101),
                               {player::ParseDefect("dvo:change:300:repeat_drop=-1")})),
            "DVO  frame 300 (6.021 s): 1 picture dropped\n");
}

TEST(ScalerTime, IsThatOfTheNearestOutputOfThePicture) {
  // Of picture 5, which reaches the scaler at 1000.
  const auto timeOf = [](const Pictures& outputs) {
    const Pictures shown = {{.frame = 5, .clock = 1000, .content = 77}};
    const TemporaryFile scaler("scaler", FileText(*FindStage(MODULE_SCALER), shown));
    const TemporaryFile vo("vo", FileText(*FindStage(MODULE_VO), outputs));
    StageEvents stage;
    stage.events.push_back({.place = 0, .placeEnd = 1});
    GiveScalerTime(stage, scaler.Path(), vo.Path());
    return stage.events[0].pts ? stage.events[0].pts->first : 0;
  };
  EXPECT_EQ(timeOf({{3, 30, 800, 77}, {4, 40, 900, 77}, {6, 60, 1001, 77}}), 40)
      << "the last before";
  EXPECT_EQ(timeOf({{7, 70, 1100, 77}, {9, 90, 1200, 77}}), 70) << "the first after";
  EXPECT_EQ(timeOf({{4, 40, 999, 77}, {5, 50, 5000, 77}}), 50) << "the same frame";
  EXPECT_EQ(timeOf({{5, 50, 1000, 78}}), 0) << "another picture";
}

/// The times of an event, in ticks after another one, at which it follows from that one.
std::string TimesOf(MODULE_TYPE earlier, EventKind cause, MODULE_TYPE later, EventKind kind) {
  constexpr int64_t kBegin = (int64_t{1} << 32) - 5000;
  constexpr uint32_t kLength = 400;
  constexpr int64_t kTried[] = {-12001, -12000, -1401, -1400, -1399, -1,    0,     1,    399,
                                400,    401,    1399,  1400,  1401,  11999, 12000, 12001};
  const auto at = [](MODULE_TYPE stage, EventKind event, int64_t ticks) {
    const auto from = static_cast<uint32_t>(kBegin + ticks);
    return StageEvents{
        .stage = stage,
        .events = {{.kind = event, .stage = stage, .pts = PtsRange{from, from + kLength}}}};
  };
  std::string text;
  for (const int64_t ticks : kTried) {
    std::vector<StageEvents> stages = {at(earlier, cause, 0), at(later, kind, ticks)};
    LinkEvents(stages);
    if (stages[1].events[0].cause == 1) text += ' ' + std::to_string(ticks);
  }
  return text;
}

TEST(CrossModuleCauses, ReachAsFarAsBefore) {
  constexpr MODULE_TYPE kPairs[][2] = {{MODULE_OMXIN, MODULE_VDEC},
                                       {MODULE_VDEC, MODULE_SCALER},
                                       {MODULE_VO, MODULE_VDEC},
                                       {MODULE_AUDIO, MODULE_VO}};
  std::string text;
  for (const auto& [earlier, later] : kPairs) {
    for (std::size_t cause = 0; cause < kEventKindCount; ++cause) {
      for (std::size_t kind = 0; kind < kEventKindCount; ++kind) {
        const auto one = static_cast<EventKind>(cause), other = static_cast<EventKind>(kind);
        if (const std::string times = TimesOf(earlier, one, later, other); !times.empty())
          text += FindStage(earlier)->simpleName + (' ' + std::string(NameOf(one))) + ", " +
                  FindStage(later)->simpleName + ' ' + NameOf(other) + ':' + times + '\n';
      }
    }
  }
  EXPECT_TRUE(test::IsAsExpected("causes.txt", text));
}

}  // namespace
