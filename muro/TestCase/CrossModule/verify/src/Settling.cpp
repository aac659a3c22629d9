#include "Settling.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

/// Number of rows between two samples of the drift.
constexpr int64_t kSampleDistance = 64;

bool IsInOrder(const Partner& partner) {
  return partner.bond != Bond::kNone && partner.bond != Bond::kMoved;
}

/// A row that ends with the file in the middle of a line is not a complete row.
bool IsCutOff(const FrameRow& row) {
  return row.text.empty() || row.text.back() != '\n';
}

}  // namespace

/// A stretch that is being turned into events.
struct Settling::Work {
  const PairedStretch& stretch;
  std::vector<bool> isCompared;    // golden rows that the stage's rules select
  std::vector<bool> isDisordered;  // golden rows among which one moved

  const FrameRow& Golden(std::size_t g) const { return stretch.golden.at(g); }
  const FrameRow& Dump(std::size_t d) const { return stretch.dump[d]; }
};

/// Rows without a partner between two pairs.
struct Settling::Gap {
  std::vector<std::size_t> lost = {};     // of golden
  std::vector<std::size_t> fresh = {};    // of the dump
  std::optional<std::size_t> after = {};  // golden row of the pair after the gap
  std::optional<std::size_t> dumpAfter = {};
  std::size_t taken = 0;  // lost rows that have been replaced by others
  bool hasExtra = false;
  std::vector<ClockShift> shifts = {};

  bool IsEmpty() const { return lost.empty() && fresh.empty(); }
};

Settling::Settling(const RowShape& shape, EventList& events)
    : shape_(shape),
      events_(events),
      clock_(events),
      compared_(shape),
      numbers_(events, shape.FrameColumn()) {}

std::optional<uint32_t> Settling::PtsOf(const FrameRow& row) const {
  if (!shape_.HasPts()) return std::nullopt;
  return row.pts;
}

RowEvent Settling::EventAt(EventKind kind, const FrameRow& golden) const {
  return {.kind = kind, .place = golden.place, .frame = golden.frame, .pts = PtsOf(golden)};
}

std::optional<std::size_t> Settling::AddIf(bool isCompared, const RowEvent& event) {
  if (!isCompared) return std::nullopt;
  return events_.Add(event);
}

void Settling::NoteShown(const FrameRow& golden) {
  if (!shape_.HasPts() || !golden.whole) return;
  if (!shown_) shown_ = PtsRange{golden.pts, golden.pts};
  if (static_cast<int32_t>(golden.pts - shown_->first) < 0) shown_->first = golden.pts;
  if (static_cast<int32_t>(golden.pts - shown_->last) > 0) shown_->last = golden.pts;
}

void Settling::SamplePts(uint32_t pts, uint32_t clock) {
  if (shape_.HasPts() && shape_.HasClock() && pairs_ % kSampleDistance == 0)
    clock_.Sample(clock, pts);
}

// This is called for every row of equal files, so a row is only parsed if its values are needed.
void Settling::TakeSame(std::string_view golden, int64_t place, std::string_view dump,
                        std::size_t counter) {
  const bool hasClock = shape_.HasClock();
  const uint32_t goldenClock = hasClock ? shape_.ClockAt(golden, counter) : 0;
  const uint32_t dumpClock = hasClock ? shape_.ClockAt(dump, counter) : 0;
  const bool isSampled = pairs_ % kSampleDistance == 0;
  const bool isPlain = compared_.HasBegun() && numbers_.IsPlain() && hasLast_ && !isSampled &&
                       (!hasClock || clock_.TakeOnLevel(goldenClock, dumpClock));
  std::size_t tail = 0;
  if (!shape_.HasPts()) {
    tail = std::min(golden.find(',', counter), golden.size());
    const bool goesOn =
        lastIsText_ && golden.substr(tail) == std::string_view(lastText_).substr(lastTail_);
    if (!goesOn) run_ = {place, ToNumber(golden), {}};
  }
  if (isPlain) {
    ++pairs_;
  } else {
    FrameRow row;
    shape_.Parse(golden, row);
    row.place = place;
    FrameRow sample = row;
    sample.clock = dumpClock;
    if (row.whole) Pair(row, sample, Bond::kSame, compared_.Take(row), true);
  }
  hasLast_ = lastIsText_ = true;
  frozen_.reset();
  lastText_ = golden;
  lastTail_ = tail;
  lastDumpClock_ = dumpClock;
  lastGolden_.place = place;
}

bool Settling::ParseLast() {
  if (hasLast_ && lastIsText_) {
    shape_.Parse(lastText_, lastGolden_);
    lastDump_ = lastGolden_;
    lastDump_.clock = lastDumpClock_;
    lastIsText_ = false;
  }
  return hasLast_ && lastGolden_.whole;
}

std::optional<std::pair<FrameRow, FrameRow>> Settling::LastPair() {
  if (!ParseLast()) return std::nullopt;
  return std::pair{lastGolden_, lastDump_};
}

void Settling::KeepPair(const FrameRow& golden, const FrameRow& dump) {
  const bool goesOn = ParseLast() && ShowSame(golden, lastGolden_);
  if (!goesOn) run_ = {golden.place, golden.frame, PtsOf(golden)};
  lastGolden_ = golden;
  lastDump_ = dump;
  hasLast_ = true;
  lastIsText_ = false;
}

void Settling::TakePair(const FrameRow& golden, const FrameRow& dump, Bond bond) {
  Pair(golden, dump, bond, compared_.Take(golden), true);
  KeepPair(golden, dump);
}

void Settling::Pair(const FrameRow& golden, const FrameRow& dump, Bond bond, bool isCompared,
                    bool isInOrder) {
  NoteShown(golden);
  if (shape_.HasClock() && isInOrder) {
    clock_.Add({golden.place, golden.frame, PtsOf(golden), golden.clock, dump.clock, isCompared});
    SamplePts(golden.pts, dump.clock);
  }
  ++pairs_;
  if (isInOrder) {
    if (ParseLast() && !frameBefore_) frameBefore_ = lastDump_.frame;
    numbers_.Add(EventAt(EventKind::kChanged, golden), dump.frame,
                 std::exchange(frameBefore_, std::nullopt),
                 isCompared && shape_.ComparesFrameNumbers());
  }
  if (isCompared) NoteDifference(golden, dump, bond);
  const bool staysFrozen = golden.content != dump.content && IsFrozen(golden, dump);
  if (!staysFrozen) frozen_.reset();
}

/// True if the dump repeats the previous picture in place of golden's.
bool Settling::IsFrozen(const FrameRow& golden, const FrameRow& dump) const {
  return shape_.HasPts() && hasLast_ && !lastIsText_ && lastGolden_.whole &&
         dump.content == lastDump_.content && golden.content != lastGolden_.content;
}

void Settling::NoteDifference(const FrameRow& golden, const FrameRow& dump, Bond bond) {
  if (dump.markedDropped && !golden.markedDropped) {
    events_.Add(EventAt(EventKind::kDropped, golden));
    return;
  }
  if (golden.content != dump.content) {
    ParseLast();
    if (IsFrozen(golden, dump)) {
      if (!frozen_) frozen_ = lastGolden_;
      RowEvent event = EventAt(EventKind::kRepeated, *frozen_);
      event.lastPts = PtsOf(golden);
      event.dumpRow = dump.place;
      event.time = TimeEffect::kKept;
      events_.Add(event);
    } else {
      events_.Add(EventAt(EventKind::kDamaged, golden));
    }
  }
  if (golden.others == dump.others && bond != Bond::kShown) return;
  RowEvent event = EventAt(EventKind::kChanged, golden);
  event.difference = shape_.Differences(golden, dump, bond == Bond::kShown);
  if (event.difference.columns != 0) events_.Add(event);
}

void Settling::Take(const PairedStretch& stretch) {
  Work work{stretch, std::vector<bool>(stretch.golden.size()),
            std::vector<bool>(stretch.golden.size())};
  const std::vector<Partner>& partners = stretch.pairing.golden;
  for (std::size_t g = stretch.context; g < stretch.goldenEnd; ++g) {
    work.isCompared[g] = compared_.Take(work.Golden(g));
    NoteShown(work.Golden(g));
    if (partners[g].bond == Bond::kMoved) TakeMoved(work, g);
  }
  std::size_t d = stretch.context;
  Gap gap;
  const auto takeFresh = [&](std::size_t end) {
    for (; d < end; ++d) {
      if (stretch.pairing.dump[d].bond == Bond::kNone) gap.fresh.push_back(d);
    }
  };
  for (std::size_t g = stretch.context; g < stretch.goldenEnd; ++g) {
    if (partners[g].bond == Bond::kNone && work.Golden(g).whole) gap.lost.push_back(g);
    if (!IsInOrder(partners[g])) continue;
    takeFresh(partners[g].place);
    gap.after = g;
    gap.dumpAfter = partners[g].place;
    TakeGap(work, gap);
    gap = {};
    d = partners[g].place + 1;
    const FrameRow& dump = work.Dump(partners[g].place);
    Pair(work.Golden(g), dump, partners[g].bond, work.isCompared[g], !work.isDisordered[g]);
    KeepPair(work.Golden(g), dump);
  }
  takeFresh(stretch.dumpEnd);
  TakeGap(work, gap);
}

/// Records the first and the last frame of the stretch in which the row was moved.
void Settling::TakeMoved(Work& work, std::size_t g) {
  const std::vector<Partner>& partners = work.stretch.pairing.golden;
  const std::size_t place = partners[g].place;
  std::size_t first = g;
  for (std::size_t i = g; i-- > work.stretch.context;) {
    if (IsInOrder(partners[i]) && partners[i].place < place) break;
    if (IsInOrder(partners[i])) first = i;
  }
  std::size_t last = g;
  for (std::size_t i = g + 1; i < work.stretch.goldenEnd; ++i) {
    if (IsInOrder(partners[i]) && partners[i].place > place) break;
    if (IsInOrder(partners[i])) last = i;
  }
  for (std::size_t i = first; i <= last; ++i) work.isDisordered[i] = true;
  RowEvent event = EventAt(EventKind::kReordered, work.Golden(first));
  event.other = work.Golden(last).frame;
  event.lastPts = PtsOf(work.Golden(last));
  AddIf(work.isCompared[g], event);
}

void Settling::TakeGap(const Work& work, Gap& gap) {
  // A truncated dump may end in the middle of a row.
  if (work.stretch.isLast && !gap.after && !gap.lost.empty() && !gap.fresh.empty() &&
      IsCutOff(work.Dump(gap.fresh.back())))
    gap.fresh.pop_back();
  if (gap.IsEmpty()) return;
  for (const std::size_t d : gap.fresh) {
    const bool isRepeat = work.Dump(d).whole && work.stretch.pairing.repeats[d];
    isRepeat ? TakeRepeat(work, gap, d) : TakeStranger(work, gap, d);
    if (work.Dump(d).whole) frameBefore_ = work.Dump(d).frame;
  }
  if (gap.taken < gap.lost.size()) {
    const bool isCut = work.stretch.isLast && !gap.after && !gap.hasExtra;
    isCut ? TakeCut(work, gap) : TakeLost(work, gap);
  }
  if (!gap.shifts.empty() && shape_.HasClock()) clock_.Gap(std::move(gap.shifts));
}

/// Handles a row that repeats an earlier one, in place of a lost row if there is one.
void Settling::TakeRepeat(const Work& work, Gap& gap, std::size_t d) {
  std::size_t source = d;
  while (!ShowSame(work.Dump(--source), work.Dump(d)) ||
         !IsInOrder(work.stretch.pairing.dump[source])) {
    if (source == 0) return TakeStranger(work, gap, d);
  }
  const std::size_t golden = work.stretch.pairing.dump[source].place;
  RowEvent event = EventAt(EventKind::kRepeated, work.Golden(golden));
  event.dumpRow = work.Dump(d).place;
  const bool isCompared =
      golden < work.stretch.context ? compared_.HasBegun() : bool{work.isCompared[golden]};
  if (gap.taken < gap.lost.size()) {
    event.lastPts = PtsOf(work.Golden(gap.lost[gap.taken++]));
    event.time = TimeEffect::kKept;
    AddIf(isCompared, event);
    return;
  }
  const auto index = AddIf(isCompared, event);
  gap.shifts.push_back({index, clock_.Duration()});
  if (index && !NumbersTell(work, gap)) {
    const Run run = RunFrom(work, golden);
    FrameEvent& added = events_.At(*index);
    std::size_t last = golden;
    while (last + 1 < work.stretch.golden.size() &&
           ShowSame(work.Golden(last + 1), work.Golden(golden)))
      ++last;
    added.first = std::min(added.first, run.frame);
    added.place = std::min(added.place, run.place);
    added.lastPossible = std::max(added.lastPossible, int64_t{work.Golden(last).frame});
    added.placeEnd = std::max(added.placeEnd, work.Golden(last).place + 1);
  }
}

/// Handles a malformed row or one that is not in golden, in place of a lost row if there is one.
void Settling::TakeStranger(const Work& work, Gap& gap, std::size_t d) {
  const bool isWhole = work.Dump(d).whole;
  const bool takesPlace = !isWhole && gap.taken < gap.lost.size();
  const FrameRow* golden = hasLast_ ? &lastGolden_ : nullptr;
  if (gap.after) golden = &work.Golden(*gap.after);
  if (takesPlace) golden = &work.Golden(gap.lost[gap.taken++]);
  RowEvent event{.kind = isWhole ? EventKind::kExtra : EventKind::kBroken, .place = 0, .frame = 0};
  if (golden != nullptr) event = EventAt(event.kind, *golden);
  event.dumpRow = work.Dump(d).place;
  const auto index = AddIf(compared_.HasBegun(), event);
  gap.hasExtra = gap.hasExtra || isWhole;
  if (isWhole) gap.shifts.push_back({index, clock_.Duration()});
}

void Settling::TakeCut(const Work& work, const Gap& gap) {
  for (std::size_t i = gap.taken; i < gap.lost.size(); ++i) {
    RowEvent event = EventAt(EventKind::kCut, work.Golden(gap.lost[i]));
    event.lastPts = event.pts;
    if (hasLast_) {
      event.frame = lastGolden_.frame;
      event.pts = PtsOf(lastGolden_);
    }
    AddIf(work.isCompared[gap.lost[i]], event);
  }
}

void Settling::TakeLost(const Work& work, Gap& gap) {
  std::optional<std::size_t> index;
  for (std::size_t i = gap.taken; i < gap.lost.size(); ++i) {
    const std::size_t g = gap.lost[i];
    const auto added = AddIf(work.isCompared[g], EventAt(EventKind::kDropped, work.Golden(g)));
    if (added) index = added;
  }
  const FrameRow& first = work.Golden(gap.lost[gap.taken]);
  const std::size_t behind = gap.lost.back() + 1;
  const auto count = static_cast<int64_t>(gap.lost.size() - gap.taken);
  const int64_t ticks = behind < work.stretch.golden.size() && work.Golden(behind).whole
                            ? static_cast<int32_t>(work.Golden(behind).clock - first.clock)
                            : count * clock_.Duration();
  gap.shifts.push_back({index, -ticks});
  if (!index) return;
  FrameEvent& event = events_.At(*index);
  event.ticks90k += ticks;
  if (gap.fresh.empty() && event.count == count && !NumbersTell(work, gap))
    LeaveOpen(work, gap, event);
}

/// True if the dump's own numbers show where rows are missing or extra: they step as golden's do,
/// and not by one per row.
bool Settling::NumbersTell(const Work& work, const Gap& gap) const {
  if (!gap.after || !hasLast_) return true;
  const int64_t dumpStep = int64_t{work.Dump(*gap.dumpAfter).frame} - lastDump_.frame;
  const int64_t goldenStep = int64_t{work.Golden(*gap.after).frame} - lastGolden_.frame;
  return dumpStep == goldenStep && dumpStep != static_cast<int64_t>(gap.fresh.size()) + 1;
}

/// Start of the rows that show the same as golden's row `g`.
Settling::Run Settling::RunFrom(const Work& work, std::size_t g) const {
  std::size_t first = g;
  while (first > 0 && ShowSame(work.Golden(first - 1), work.Golden(g))) --first;
  if (first == 0 && work.stretch.context != 0 && !shape_.HasPts()) return run_;
  const FrameRow& row = work.Golden(first);
  return {row.place, row.frame, PtsOf(row)};
}

/// The lost rows can be any of those around them that show the same.
void Settling::LeaveOpen(const Work& work, const Gap& gap, FrameEvent& event) const {
  const std::size_t first = gap.lost.front();
  const std::size_t last = gap.lost.back();
  std::size_t left = 0;
  while (left < first && ShowSame(work.Golden(first - 1 - left), work.Golden(last - left))) ++left;
  std::size_t right = 0;
  while (last + 1 + right < work.stretch.golden.size() &&
         ShowSame(work.Golden(first + right), work.Golden(last + 1 + right)))
    ++right;
  Run run{work.Golden(first - left).place, work.Golden(first - left).frame,
          PtsOf(work.Golden(first - left))};
  if (left == first && left > 0 && work.stretch.context != 0) run = RunFrom(work, 0);
  event.first = run.frame;
  event.place = run.place;
  if (event.pts && run.pts) event.pts->first = *run.pts;
  event.lastPossible = work.Golden(first + right).frame;
  event.placeEnd = work.Golden(last + right).place + 1;
  if (event.pts) event.pts->last = work.Golden(last + right).pts;
}

/// If rows are lost from a still picture and the time is kept, the counter steps at that place: a
/// row that seemed late there, and made up for at the end of the still picture, is the loss.
void Settling::PlaceByClock(std::vector<FrameEvent>& events) const {
  for (FrameEvent& open : events) {
    if (open.kind != EventKind::kDropped || open.first == open.lastPossible ||
        open.time != TimeEffect::kMoved)
      continue;
    const auto step = std::ranges::find_if(events, [&](const FrameEvent& event) {
      return event.kind == EventKind::kLate && event.first >= open.first &&
             event.first <= open.lastPossible + open.count &&
             4 * std::abs(event.ticks90k - open.ticks90k) * open.count <= open.ticks90k;
    });
    if (step == events.end()) continue;
    open.first = open.lastPossible = step->first;
    open.place = step->place;
    open.time = TimeEffect::kKept;
    events.erase(step);
    return PlaceByClock(events);
  }
}

void Settling::End(StageEvents& result) {
  numbers_.End();
  if (const auto last = LastPair(); last && shape_.HasPts() && shape_.HasClock())
    clock_.Sample(last->second.clock, last->first.pts);
  clock_.End();
  result.events = events_.Take();
  PlaceByClock(result.events);
  if (shape_.HasClock()) result.pacing = clock_.Figures();
  if (hasLast_) NoteShown(lastGolden_);
  result.shown = shown_;
}
