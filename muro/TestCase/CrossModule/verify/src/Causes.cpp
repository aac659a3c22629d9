#include "Causes.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "InputFile.h"
#include "ScalerTime.h"
#include "StageAnalysis.h"

namespace {

/// Time stamps closer than this belong to one picture, even at 60 pictures per second.
constexpr int64_t kSamePicture = 1000;
/// Pictures after a damaged packet that the decoder may damage because of it.
constexpr int64_t kDecoderReach = 12000;

/// Maximum number of events of one stage that are considered as the cause of another event.
constexpr int kMostCandidates = 256;

int lastEventId = 0;

constexpr unsigned Bit(EventKind kind) {
  return 1U << static_cast<unsigned>(kind);
}
constexpr unsigned Bits(std::initializer_list<EventKind> kinds) {
  unsigned bits = 0;
  for (const EventKind kind : kinds) bits |= Bit(kind);
  return bits;
}

/// How a downstream stage may show an event.
struct Consequence {
  EventKind kind;
  unsigned behind;
};

constexpr Consequence kConsequences[] = {
    {EventKind::kDropped, Bits({EventKind::kDropped, EventKind::kRepeated, EventKind::kUneven,
                                EventKind::kLate, EventKind::kEarly})},
    {EventKind::kRepeated,
     Bits({EventKind::kRepeated, EventKind::kDropped, EventKind::kUneven, EventKind::kLate})},
    {EventKind::kReordered,
     Bits({EventKind::kReordered, EventKind::kDropped, EventKind::kRepeated})},
    {EventKind::kDamaged, Bits({EventKind::kDamaged})},
    {EventKind::kChanged, Bits({EventKind::kChanged})},
    {EventKind::kLate,
     Bits({EventKind::kLate, EventKind::kUneven, EventKind::kDropped, EventKind::kRepeated})},
    {EventKind::kEarly, Bits({EventKind::kEarly, EventKind::kUneven, EventKind::kDropped})},
    {EventKind::kUneven, Bits({EventKind::kUneven, EventKind::kDropped, EventKind::kRepeated})},
    {EventKind::kCut, Bits({EventKind::kCut})},
    {EventKind::kExtra, Bits({EventKind::kExtra, EventKind::kLate})},
    {EventKind::kBroken, 0},
};
static_assert(std::size(kConsequences) == kEventKindCount, "every kind has its consequences");

unsigned ConsequencesOf(EventKind kind) {
  return std::ranges::find(kConsequences, kind, &Consequence::kind)->behind;
}

int64_t Ticks(uint32_t from, uint32_t to) {
  return static_cast<int32_t>(to - from);
}

/// Time between two stretches, 0 or less if they overlap.
int64_t Distance(const PtsRange& a, const PtsRange& b) {
  return std::max(Ticks(a.last, b.first), Ticks(b.last, a.first));
}

/// True if damage that begins shortly after an event of a packet is caused by that event.
bool IsDecodersDamage(const FrameEvent& cause, const FrameEvent& event) {
  constexpr unsigned kOfPackets =
      Bits({EventKind::kDropped, EventKind::kReordered, EventKind::kDamaged, EventKind::kExtra});
  if (FindStage(cause.stage)->pictureStep != 1 || (kOfPackets & Bit(cause.kind)) == 0 ||
      event.kind != EventKind::kDamaged)
    return false;
  const int64_t behind = Ticks(cause.pts->first, event.pts->first);
  return behind >= 0 && behind <= kDecoderReach;
}

bool Follows(const FrameEvent& cause, const FrameEvent& event) {
  if (!cause.pts || !event.pts) return false;
  if (IsDecodersDamage(cause, event)) return true;
  if ((ConsequencesOf(cause.kind) & Bit(event.kind)) == 0) return false;
  if (event.kind == EventKind::kCut) return true;  // a stream ends once
  return Distance(*cause.pts, *event.pts) < kSamePicture;
}

/// How poorly an event fits as the cause of another one; lower is better.
int64_t Misfit(const FrameEvent& cause, const FrameEvent& event) {
  constexpr int64_t kOtherKind = 1 << 20;
  return (cause.kind == event.kind ? 0 : kOtherKind) +
         std::abs(Ticks(cause.pts->first, event.pts->first));
}

/// The events of a stage that others may follow from, ordered by time.
class StageTimeline {
 public:
  explicit StageTimeline(const std::vector<FrameEvent>& events) {
    for (const FrameEvent& event : events) {
      if (event.pts) entries_.push_back({&event, 0});
    }
    if (entries_.empty()) return;
    base_ = entries_.front().event->pts->first;
    std::ranges::sort(entries_, {}, [this](const Entry& entry) { return Begin(*entry.event); });
    for (int64_t lastEnd = 0; Entry & entry : entries_) {
      lastEnd = std::max(lastEnd, Ticks(base_, entry.event->pts->last));
      entry.lastEnd = lastEnd;
    }
  }

  /// The event that `event` follows from; null if there is none.
  const FrameEvent* CauseOf(const FrameEvent& event) const {
    const FrameEvent* best = nullptr;
    const auto consider = [&](const FrameEvent& cause) {
      if (Follows(cause, event) && (best == nullptr || Misfit(cause, event) < Misfit(*best, event)))
        best = &cause;
    };
    // A truncated stream ends at different pictures in each stage, but always at its end.
    if (event.kind == EventKind::kCut && !entries_.empty()) consider(*entries_.back().event);
    const int64_t end = Ticks(base_, event.pts->last) + kSamePicture;
    auto it = std::ranges::upper_bound(entries_, end, {},
                                       [this](const Entry& entry) { return Begin(*entry.event); });
    for (int seen = 0; it != entries_.begin() && seen < kMostCandidates; ++seen) {
      --it;
      if (it->lastEnd + kDecoderReach < Begin(event)) break;
      consider(*it->event);
    }
    return best;
  }

 private:
  struct Entry {
    const FrameEvent* event;
    int64_t lastEnd;  // of this event and all before it
  };

  int64_t Begin(const FrameEvent& event) const { return Ticks(base_, event.pts->first); }

  std::vector<Entry> entries_;
  uint32_t base_ = 0;
};

std::vector<StageEvents*> OnPictureWay(std::vector<StageEvents>& stages) {
  std::vector<StageEvents*> way;
  for (const Stage* stage : PictureWay()) {
    const auto found = std::ranges::find(stages, stage->module, &StageEvents::stage);
    if (found != stages.end()) way.push_back(&*found);
  }
  return way;
}

/// For a stage without a counter, the effect on time is copied from stages that saw the same event.
void ShareTimeEffects(std::vector<StageEvents>& stages) {
  std::vector<FrameEvent*> byId;
  for (StageEvents& stage : stages) {
    for (FrameEvent& event : stage.events) byId.push_back(&event);
  }
  std::ranges::sort(byId, {}, &FrameEvent::id);
  const auto take = [](FrameEvent& to, const FrameEvent& from) {
    if (to.kind == from.kind && to.time == TimeEffect::kUnknown) to.time = from.time;
  };
  const auto forEachLink = [&](auto act) {
    for (FrameEvent* event : byId) {
      if (event->cause != 0)
        act(*event, **std::ranges::lower_bound(byId, event->cause, {}, &FrameEvent::id));
    }
  };
  forEachLink([&](const FrameEvent& event, FrameEvent& cause) { take(cause, event); });
  forEachLink([&](FrameEvent& event, const FrameEvent& cause) { take(event, cause); });
}

}  // namespace

void LinkEvents(std::vector<StageEvents>& stages, int lastId) {
  for (StageEvents& stage : stages) {
    for (FrameEvent& event : stage.events) event.id = ++lastId;
  }
  std::vector<StageTimeline> before;
  for (StageEvents* stage : OnPictureWay(stages)) {
    for (FrameEvent& event : stage->events) {
      if (!event.pts) continue;
      const FrameEvent* cause = nullptr;
      for (auto it = before.rbegin(); it != before.rend() && cause == nullptr; ++it)
        cause = it->CauseOf(event);
      if (cause != nullptr) event.cause = cause->cause != 0 ? cause->cause : cause->id;
    }
    before.emplace_back(stage->events);
  }
  ShareTimeEffects(stages);
}

CaseEvents AnalyseCase(const std::string& testCase, const StagePath& golden,
                       const StagePath& dump) {
  CaseEvents found{testCase, {}};
  for (const Stage& stage : kStages) {
    const std::string paths[] = {golden(stage.module), dump(stage.module)};
    if (std::ranges::all_of(paths, IsInputFile))
      found.stages.push_back(AnalyseStage(stage.module, paths[0], paths[1]));
  }
  for (StageEvents& stage : found.stages) {
    if (stage.stage == MODULE_SCALER)
      GiveScalerTime(stage, golden(MODULE_SCALER), golden(MODULE_VO));
  }
  LinkEvents(found.stages, lastEventId);
  for (const StageEvents& stage : found.stages)
    lastEventId += static_cast<int>(stage.events.size());
  return found;
}

int LastEventId() {
  return lastEventId;
}

void SetLastEventId(int id) {
  lastEventId = id;
}
