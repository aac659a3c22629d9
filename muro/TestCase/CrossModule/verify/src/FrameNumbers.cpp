#include "FrameNumbers.h"

#include <algorithm>
#include <string>

namespace {

/// Rows that have to continue with new numbers to count as a different numbering.
constexpr std::size_t kConfirming = 5;

}  // namespace

void FrameNumbers::Add(const RowEvent& golden, int32_t dumpFrame, std::optional<int32_t> before,
                       bool isCompared) {
  const Pair pair{golden, dumpFrame, isCompared};
  const bool goesOn = pending_.empty() && before && dumpFrame == *before + 1;
  if (!before || goesOn) offset_ = pair.Offset();
  if (pair.Offset() == offset_) {
    for (const Pair& wrong : pending_) NoteWrong(wrong);
    pending_.clear();
    return;
  }
  pending_.push_back(pair);
  if (pending_.size() < kConfirming) return;
  const int32_t offset = pending_.back().Offset();
  if (std::ranges::all_of(pending_, [&](const Pair& other) { return other.Offset() == offset; })) {
    offset_ = offset;
    pending_.clear();
  } else {
    NoteWrong(pending_.front());
    pending_.erase(pending_.begin());
  }
}

/// A few numbers that restart at the end of a file are not wrong.
void FrameNumbers::End() {
  if (pending_.empty() || pending_.front().dumpFrame <= 1) return;
  for (const Pair& wrong : pending_) NoteWrong(wrong);
  pending_.clear();
}

void FrameNumbers::NoteWrong(const Pair& pair) {
  if (!pair.isCompared) return;
  RowEvent event = pair.golden;
  event.kind = EventKind::kChanged;
  event.difference = {1U << column_, std::to_string(pair.golden.frame),
                      std::to_string(pair.dumpFrame)};
  events_.Add(event);
}
