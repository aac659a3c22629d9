// Events of one stage: random golden files with random defects made by a generator, which returns
// the expected events, and literal edge cases. CVN_SEEDS is the number of random pairs.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <sstream>

#include "Expected.h"
#include "FrameEvent.h"
#include "Pictures.h"
#include "StageAnalysis.h"
#include "VerifyRun.h"

namespace {

constexpr std::size_t kFirstCompared = 130;  // all stages compare rows from here on

/// An event as expected by the generator or reported by the analysis.
struct Truth {
  EventKind kind;
  int64_t first;
  int64_t count;
  TimeEffect time = TimeEffect::kUnknown;
  int64_t ticks = 0;
};

std::string Text(EventKind kind, int64_t first, int64_t last, int64_t count, TimeEffect time,
                 int64_t ticks) {
  std::ostringstream text;
  text << NameOf(kind) << ' ' << first << ".." << last << " x" << count;
  if (time != TimeEffect::kUnknown) text << (time == TimeEffect::kKept ? " kept" : " moved");
  if (ticks != 0) text << ' ' << ticks;
  return text.str();
}

StageEvents Analyse(const Stage& stage, const Pictures& golden, const Pictures& dump) {
  const TemporaryFile goldenFile("golden", FileText(stage, golden));
  const TemporaryFile dumpFile("sample", FileText(stage, dump));
  return AnalyseStage(stage.module, goldenFile.Path(), dumpFile.Path());
}

bool HasClock(const Stage& stage) {
  return stage.module != MODULE_DVO;
}
bool HasContent(const Stage& stage) {
  return stage.module != MODULE_DVO && stage.module != MODULE_OMXOUT;
}

/// Inserts defects into a dump, from the last one to the first, so that places remain those in
/// golden.
class Spoiler {
 public:
  Spoiler(const Stage& stage, const Pictures& golden)
      : stage_(stage), golden_(golden), dump(golden) {}

  void Apply(EventKind kind, std::size_t at, std::size_t count, bool moves, int64_t ticks) {
    const auto row = dump.begin() + static_cast<std::ptrdiff_t>(at);
    const auto end = row + static_cast<std::ptrdiff_t>(count);
    const auto total = static_cast<int64_t>(count);
    Truth told{kind, golden_[at].frame, total};
    const TimeEffect effect = !HasClock(stage_) ? TimeEffect::kUnknown
                              : moves           ? TimeEffect::kMoved
                                                : TimeEffect::kKept;
    switch (kind) {
      case EventKind::kDropped:
        told.time = effect;
        if (moves) Shift(at + count, -total * kFrame90k);
        dump.erase(row, end);
        break;
      case EventKind::kRepeated:
        told.time = effect;
        if (moves) Shift(at + 1, total * kFrame90k);
        dump.insert(row + 1, count, dump[at]);
        break;
      case EventKind::kExtra: {
        told.first = golden_[at + 1].frame;
        Picture stranger = dump[at];
        stranger.pts += kFrame90k / 3;
        stranger.content += 13;
        for (std::size_t i = 0; i < count; ++i)
          dump.insert(dump.begin() + static_cast<std::ptrdiff_t>(at + 1 + i), stranger),
              ++stranger.content, ++stranger.pts;
        break;
      }
      case EventKind::kReordered:
        told.count = 1;
        std::iter_swap(row, row + 1);
        break;
      case EventKind::kDamaged:
        for (auto it = row; it != end; ++it) it->content += 3;
        break;
      case EventKind::kChanged:
        for (auto it = row; it != end; ++it) it->other = 9;
        break;
      case EventKind::kBroken:
        for (auto it = row; it != end; ++it) it->broken = true;
        break;
      case EventKind::kCut:
        told.first = golden_[at - 1].frame;
        told.count = static_cast<int64_t>(dump.size() - at);
        dump.erase(row, dump.end());
        break;
      case EventKind::kLate:
      case EventKind::kEarly:
        told.count = 1;
        told.ticks = kind == EventKind::kLate ? ticks : -ticks;
        Shift(at, told.ticks);
        break;
      case EventKind::kUneven:
        told.count = 1;
        told.ticks = ticks;
        row->clock += ticks;
        break;
    }
    truths.insert(truths.begin(), told);
  }

  /// Whether the stage can show such a defect.
  bool Shows(EventKind kind) const {
    if (kind == EventKind::kDamaged) return HasContent(stage_);
    if (kind == EventKind::kLate || kind == EventKind::kEarly || kind == EventKind::kUneven)
      return HasClock(stage_);
    return kind != EventKind::kChanged ||
           (stage_.module != MODULE_OMXOUT && stage_.module != MODULE_DVO);
  }

  std::vector<Truth> truths;

 private:
  void Shift(std::size_t from, int64_t ticks) {
    for (std::size_t i = from; i < dump.size(); ++i) dump[i].clock += ticks;
  }

  const Stage& stage_;
  const Pictures& golden_;

 public:
  Pictures dump;
};

std::string Told(const std::vector<FrameEvent>& events) {
  std::string text;
  for (const FrameEvent& event : events) {
    const bool hasTicks = event.kind == EventKind::kLate || event.kind == EventKind::kEarly ||
                          event.kind == EventKind::kUneven;
    text += Text(event.kind, event.first, event.lastPossible, event.count, event.time,
                 hasTicks ? event.ticks90k : 0) +
            "\n";
  }
  return text;
}

std::string Told(const std::vector<Truth>& truths) {
  std::string text;
  for (const Truth& truth : truths)
    text += Text(truth.kind, truth.first, truth.first, truth.count, truth.time, truth.ticks) + "\n";
  return text;
}

/// Whether the event is the expected one or, where content repeats, includes it.
bool Says(const FrameEvent& event, const Truth& truth) {
  constexpr int64_t kSlack = 300;
  const bool hasTicks = truth.ticks != 0;
  return event.kind == truth.kind && event.count == truth.count && event.first <= truth.first &&
         truth.first <= event.lastPossible && event.time == truth.time &&
         (!hasTicks || std::abs(event.ticks90k - truth.ticks) <= kSlack);
}

/// Whether the time stamps of dropped rows include that of the first one. Where frame numbers
/// restart it is not known which row that is.
bool IncludesItsTime(const FrameEvent& event, const Truth& truth, const Pictures& golden) {
  const auto frame = [&](const Picture& picture) { return picture.frame == truth.first; };
  if (event.kind != EventKind::kDropped || !event.pts || std::ranges::count_if(golden, frame) != 1)
    return true;
  const auto pts = static_cast<uint32_t>(std::ranges::find_if(golden, frame)->pts);
  return static_cast<int32_t>(pts - event.pts->first) >= 0 &&
         static_cast<int32_t>(event.pts->last - pts) >= 0;
}

/// A random golden file, with repeated content and restarting numbers, and its dump.
class RandomPair {
 public:
  RandomPair(const Stage& stage, unsigned seed) : random_(seed), golden(PlainPictures(Rows())) {
    MakeContent(stage.module == MODULE_SCALER);
    if (Below(4) == 0) RestartNumbers();
    const int64_t pts = Below(3) == 0 ? (int64_t{1} << 33) - 400000 : Below(1000000);
    for (Picture& picture : golden) picture.pts += pts;
    Spoiler spoiler(stage, golden);
    std::size_t at = golden.size();
    for (int left = 1 + Below(4); left > 0 && at > kFirstCompared + 40; --left) Spoil(spoiler, at);
    truths = std::move(spoiler.truths);
    dump = std::move(spoiler.dump);
    PlayOtherwise();
  }

 private:
  std::size_t Rows() { return 250 + static_cast<std::size_t>(Below(200)); }
  int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }

  void MakeContent(bool needsNumbers) {
    const int kind = Below(4);
    for (std::size_t i = 0; i < golden.size(); ++i) {
      int64_t& content = golden[i].content;
      content = 1000 + Below(2000000000) / 100 * 100;
      if (kind == 1 && i >= golden.size() / 2) content = golden[i - golden.size() / 2].content;
      if (kind == 2 && i % 40 != 0) content = golden[i - 1].content;
    }
    isRepeating_ = kind == 1 || kind == 2;
    isStill_ = kind == 2 && needsNumbers;
  }

  void RestartNumbers() {
    const auto from = static_cast<std::size_t>(Below(static_cast<int>(golden.size())));
    if (from <= kFirstCompared) return;
    for (std::size_t i = from; i < golden.size(); ++i)
      golden[i].frame = static_cast<int64_t>(i - from);
  }

  void Spoil(Spoiler& spoiler, std::size_t& at) {
    const bool isFirst = at == golden.size();
    EventKind kind{};
    do {
      kind = static_cast<EventKind>(Below(kEventKindCount));
    } while (!spoiler.Shows(kind) || (kind == EventKind::kCut && !isFirst));
    at -= 12 + static_cast<std::size_t>(Below(25));
    const auto count = 1 + static_cast<std::size_t>(Below(3));
    const int64_t ticks = kFrame90k * (55 + Below(200)) / 100;
    spoiler.Apply(kind, at, count, Below(2) == 0, ticks);
  }

  /// Another run: a different, drifting clock, and sometimes other frame numbers and time stamps.
  void PlayOtherwise() {
    const int64_t start = Below(1 << 30);
    const double drift = (Below(61) - 30) / 1e6;
    const int64_t pts = Below(5) == 0 ? Below(1 << 30) : 0;
    const int64_t number = Below(5) == 0 ? Below(500) : 0;
    const bool counts = Below(5) == 0 && !isStill_;
    for (std::size_t i = 0; i < dump.size(); ++i) {
      Picture& picture = dump[i];
      picture.clock +=
          start + static_cast<int64_t>(drift * static_cast<double>(picture.clock)) + Below(200);
      picture.pts += pts;
      picture.frame = counts ? static_cast<int64_t>(i) : picture.frame + number;
    }
  }

  std::mt19937 random_;
  bool isRepeating_ = false;
  bool isStill_ = false;

 public:
  Pictures golden;
  Pictures dump;
  std::vector<Truth> truths;
};

/// A defect in plain pictures of VDEC, where every row is compared, or of another stage.
struct Literal {
  EventKind kind;
  std::size_t at;
  std::size_t count;
  const char* told;
  MODULE_TYPE stage = MODULE_VDEC;
};
constexpr std::size_t kLiteralRows = 150;
constexpr Literal kLiterals[] = {
    // The first row that is compared, and the last one.
    {EventKind::kDropped, 0, 1, "dropped 0..0 x1\n"},
    {EventKind::kDropped, 149, 1, "cut 148..148 x1\n"},
    {EventKind::kRepeated, 0, 1, "repeated 0..0 x1 kept\n"},
    {EventKind::kRepeated, 149, 1, "repeated 149..149 x1\n"},
    {EventKind::kReordered, 0, 1, "reordered 0..0 x1\n"},
    {EventKind::kReordered, 148, 1, "reordered 148..148 x1\n"},
    {EventKind::kDamaged, 0, 1, "damaged 0..0 x1\n"},
    {EventKind::kDamaged, 149, 1, "damaged 149..149 x1\n"},
    {EventKind::kChanged, 0, 1, "changed 0..0 x1\n"},
    {EventKind::kChanged, 149, 1, "changed 149..149 x1\n"},
    {EventKind::kLate, 1, 1, "late 1..1 x1 2000\n"},
    {EventKind::kLate, 149, 1, "late 149..149 x1 2000\n"},
    {EventKind::kEarly, 1, 1, "early 1..1 x1 -2000\n"},
    {EventKind::kEarly, 149, 1, "early 149..149 x1 -2000\n"},
    {EventKind::kUneven, 1, 1, "uneven 1..1 x1 2000\n"},
    {EventKind::kUneven, 148, 1, "uneven 148..148 x1 2000\n"},
    {EventKind::kCut, 1, 1, "cut 0..0 x149\n"},
    {EventKind::kCut, 149, 1, "cut 148..148 x1\n"},
    {EventKind::kExtra, 0, 1, "extra 1..1 x1\n"},
    {EventKind::kExtra, 148, 1, "extra 149..149 x1\n"},
    {EventKind::kBroken, 0, 1, "broken 0..0 x1\n"},
    {EventKind::kBroken, 149, 1, "broken 149..149 x1\n"},
    // The first row after the settling time of VO or Scaler, and the last one before it.
    {EventKind::kDamaged, 60, 1, "damaged 60..60 x1\n", MODULE_VO},
    {EventKind::kDamaged, 59, 1, "", MODULE_VO},
    {EventKind::kDropped, 60, 1, "dropped 60..60 x1 kept\n", MODULE_VO},
    {EventKind::kLate, 60, 1, "late 60..60 x1 2000\n", MODULE_VO},
    {EventKind::kDamaged, 60, 1, "damaged 60..60 x1\n", MODULE_SCALER},
    {EventKind::kDamaged, 59, 1, "", MODULE_SCALER},
    // Bursts.
    {EventKind::kDropped, 40, 70, "dropped 40..40 x70 kept\n"},
    {EventKind::kRepeated, 40, 70, "repeated 40..40 x70 kept\n"},
    {EventKind::kDamaged, 40, 70, "damaged 40..40 x70\n"},
    {EventKind::kBroken, 40, 70, "broken 40..40 x70\n"},
};

TEST(FrameEvents, AreExactAtTheEdgesAndInBursts) {
  for (const Literal& literal : kLiterals) {
    const Stage& stage = *FindStage(literal.stage);
    const Pictures golden = PlainPictures(kLiteralRows);
    Spoiler spoiler(stage, golden);
    spoiler.Apply(literal.kind, literal.at, literal.count, false, 2000);
    EXPECT_EQ(Told(Analyse(stage, golden, spoiler.dump).events), literal.told)
        << NameOf(literal.kind) << ' ' << literal.at;
  }
}

/// Two defects, the second one in the row after the first.
struct Neighbours {
  EventKind first;
  EventKind second;
  const char* told;
};
constexpr Neighbours kNeighbours[] = {
    {EventKind::kDropped, EventKind::kDamaged, "dropped 100..100 x1 kept\ndamaged 101..101 x1\n"},
    {EventKind::kDamaged, EventKind::kDropped, "damaged 100..100 x1\ndropped 101..101 x1 kept\n"},
    {EventKind::kRepeated, EventKind::kDamaged, "repeated 100..100 x1 kept\ndamaged 101..101 x1\n"},
    {EventKind::kBroken, EventKind::kDropped, "broken 100..100 x1\ndropped 101..101 x1 kept\n"},
    {EventKind::kChanged, EventKind::kDamaged, "changed 100..100 x1\ndamaged 101..101 x1\n"},
    {EventKind::kDropped, EventKind::kLate, "dropped 100..100 x1 kept\nlate 101..101 x1 2000\n"},
    {EventKind::kExtra, EventKind::kDropped, "dropped 101..101 x1 kept\nextra 102..102 x1\n"},
    {EventKind::kDamaged, EventKind::kRepeated, "damaged 100..100 x1\nrepeated 101..101 x1 kept\n"},
};

TEST(FrameEvents, AreDistinguishedInAdjacentRows) {
  for (const Neighbours& pair : kNeighbours) {
    const Pictures golden = PlainPictures(kLiteralRows);
    Spoiler spoiler(*FindStage(MODULE_VDEC), golden);
    spoiler.Apply(pair.second, 101, 1, false, 2000);
    spoiler.Apply(pair.first, 100, 1, false, 2000);
    EXPECT_EQ(Told(Analyse(*FindStage(MODULE_VDEC), golden, spoiler.dump).events), pair.told)
        << NameOf(pair.first) << ' ' << NameOf(pair.second);
  }
}

TEST(FrameEvents, IgnoreOffsetsAndWrapArounds) {
  const Stage& stage = *FindStage(MODULE_VDEC);
  Pictures golden = PlainPictures(kLiteralRows);
  for (Picture& picture : golden) picture.pts += (int64_t{1} << 33) - 3 * kFrame90k - 90000;
  Pictures dump = golden;
  for (std::size_t i = 0; i < dump.size(); ++i) {
    golden[i].pts &= (int64_t{1} << 33) - 1;
    dump[i].pts = (dump[i].pts + 40 * kFrame90k) & ((int64_t{1} << 33) - 1);
    dump[i].frame = i < 70 ? dump[i].frame + 12 : static_cast<int64_t>(i) - 70;
    dump[i].clock += 7654321;
  }
  EXPECT_EQ(Told(Analyse(stage, golden, dump).events), "");
}

TEST(FrameEvents, ReportLineEndsOnlyWhereTheVerifierComparesThem) {
  for (const MODULE_TYPE module : {MODULE_OMXIN, MODULE_VDEC}) {
    const Stage& stage = *FindStage(module);
    const std::string text = FileText(stage, PlainPictures(kLiteralRows));
    std::string other = text;
    std::size_t line = 0;
    for (std::size_t i = 0; i <= kFirstCompared; ++i) line = other.find('\n', line) + 1;
    other.insert(other.find('\n', line), 1, '\r');
    const TemporaryFile golden("golden", text);
    const TemporaryFile dump("sample", other);
    EXPECT_EQ(Told(AnalyseStage(module, golden.Path(), dump.Path()).events),
              module == MODULE_OMXIN ? "changed 130..130 x1\n" : "");
  }
}

TEST(FrameEvents, GiveARangeWhereThePlaceIsAmbiguous) {
  const Stage& stage = *FindStage(MODULE_SCALER);
  Pictures golden = PlainPictures(200);
  for (std::size_t i = 100; i < 140; ++i) golden[i].content = golden[100].content;
  // One picture of the still is lost, the following ones come earlier, and frame numbers continue.
  Pictures dump = golden;
  dump.erase(dump.begin() + 120);
  for (std::size_t i = 120; i < dump.size(); ++i) {
    dump[i].frame = static_cast<int64_t>(i);
    dump[i].clock -= kFrame90k;
  }
  EXPECT_EQ(Told(Analyse(stage, golden, dump).events), "dropped 100..139 x1 moved\n");
  // If the time is kept, the counter identifies the place.
  for (std::size_t i = 120; i < dump.size(); ++i) dump[i].clock += kFrame90k;
  EXPECT_EQ(Told(Analyse(stage, golden, dump).events), "dropped 120..120 x1 kept\n");
}

TEST(FrameEvents, PacingReportsRateWorstIntervalAndDrift) {
  const Stage& stage = *FindStage(MODULE_VDEC);
  const Pictures golden = PlainPictures(900);
  Pictures dump = golden;
  for (Picture& picture : dump) picture.clock += picture.clock * 50 / 1000000;
  dump[300].clock += 2000;
  const std::optional<Pacing> pacing = Analyse(stage, golden, dump).pacing;
  ASSERT_TRUE(pacing.has_value());
  EXPECT_NEAR(pacing->ratePerSecond, 30, 0.01);
  EXPECT_NEAR(static_cast<double>(pacing->worstInterval), 5000, 1);
  EXPECT_EQ(pacing->unevenPictures, 1);
  EXPECT_NEAR(pacing->driftPpm, 50, 2);
}

TEST(FrameEvents, MatchRandomDefects) {
  const char* more = std::getenv("CVN_SEEDS");
  constexpr unsigned kSeeds = CVN_SANITIZED ? 200 : 2000;  // sanitizers are slow
  const unsigned seeds = more == nullptr ? kSeeds : static_cast<unsigned>(std::atoi(more));
  constexpr unsigned kListed = 140;
  std::string listed;
  unsigned wrong = 0;
  for (unsigned seed = 0; seed < seeds; ++seed) {
    const Stage& stage = kStages[seed % std::size(kStages)];
    const RandomPair pair(stage, seed);
    const StageEvents found = Analyse(stage, pair.golden, pair.dump);
    if (seed < kListed)
      listed += stage.simpleName + (" " + std::to_string(seed)) + "\n" + Described(found);
    const auto isRight = [&](const FrameEvent& event, const Truth& truth) {
      return Says(event, truth) && IncludesItsTime(event, truth, pair.golden);
    };
    const bool isTrue = std::ranges::equal(found.events, pair.truths, isRight);
    EXPECT_TRUE(isTrue) << stage.simpleName << " seed " << seed << "\nexpected:\n"
                        << Told(pair.truths) << "found:\n"
                        << Told(found.events);
    wrong += isTrue ? 0 : 1;
    ASSERT_LT(wrong, 10U);
  }
  if (seeds < kListed) return;
  EXPECT_TRUE(test::IsAsExpected("random_defects.txt", listed));
}

}  // namespace
