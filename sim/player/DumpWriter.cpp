#include "DumpWriter.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "StageFacts.h"

namespace player {

namespace {

constexpr int64_t kDamage = 0x5a5a;  // bits of a checksum that a damaged frame inverts
constexpr char kRubbish[] = {0x07, 0x3f, 0x5e, 0x7b, 0x21, 0x1b, 0x6d};

bool Concerns(const Defect& defect, int64_t frame) {
  return frame >= defect.frame && frame - defect.frame < defect.count;
}

void Garble(std::string& row) {
  for (std::size_t i = 0; i + 1 < row.size(); i += 3) row[i] = kRubbish[i % sizeof(kRubbish)];
}

void Damage(FrameValues& values) {
  for (const auto checksum : PictureChecksums()) values.*checksum ^= kDamage;
  values.inputSize ^= 1;
  values.audioCheck ^= kDamage;
}

FrameValues ShownAgain(FrameValues values) {
  values.repeatDrop = 1;
  ++values.repeatCount;
  return values;
}

/// A frame between this one and the previous one that was never encoded.
FrameValues Stranger(FrameValues values) {
  values.pts90k -= kTicksPerMs;
  Damage(values);
  values.inputSize ^= 2;
  return values;
}

}  // namespace

DumpWriter::DumpWriter(std::ostream& out, Stage stage, std::vector<Defect> defects)
    : out_(out), format_(FormatOf(stage)), defects_(std::move(defects)) {
  out_ << TitleOf(format_);
}

bool DumpWriter::Write(FrameValues values) {
  if (ended_) return false;
  const int64_t frame = values.frameNumber;
  ChangeValues(values);
  if (Has(DefectKind::kCut, frame)) return ended_ = true, false;
  if (Has(DefectKind::kSkip, frame) && before_) skipped90k_ += values.clock90k - lastClock90k_;
  lastClock90k_ = values.clock90k;
  values.clock90k += Delay90k(frame) - skipped90k_;
  if (Has(DefectKind::kFreeze, frame) && before_) {
    Put(RowOf(format_, *before_));
    return true;
  }
  before_ = values;
  std::string row = RowOf(format_, values);
  if (Has(DefectKind::kInsert, frame)) row = RowOf(format_, Stranger(values)) + row;
  if (Has(DefectKind::kGarble, frame)) Garble(row);
  if (Has(DefectKind::kTruncate, frame)) {
    ended_ = true;
    return Put(row.substr(0, row.size() / 2)), false;
  }
  if (Has(DefectKind::kRepeat, frame)) row += RowOf(format_, ShownAgain(values));
  if (Has(DefectKind::kCopy, frame)) row += RowOf(format_, values);
  if (Has(DefectKind::kReorder, frame))
    held_ += row;
  else if (!Has(DefectKind::kDrop, frame) && !Has(DefectKind::kSkip, frame))
    Put(row);
  return true;
}

void DumpWriter::End() {
  if (!ended_) Put(EndOf(format_));
  ended_ = true;
}

bool DumpWriter::Has(DefectKind kind, int64_t frame) const {
  return std::any_of(defects_.begin(), defects_.end(), [=](const Defect& defect) {
    return defect.kind == kind && Concerns(defect, frame);
  });
}

int64_t DumpWriter::Delay90k(int64_t frame) const {
  int64_t delayMs = 0;
  for (const Defect& defect : defects_) {
    if (frame < defect.frame) continue;
    if (defect.kind == DefectKind::kLate) delayMs += defect.value.value_or(0);
    if (defect.kind == DefectKind::kEarly) delayMs -= defect.value.value_or(0);
    if (defect.kind == DefectKind::kJitter && frame == defect.frame)
      delayMs += defect.value.value_or(0);
  }
  return delayMs * kTicksPerMs;
}

void DumpWriter::ChangeValues(FrameValues& values) const {
  if (Has(DefectKind::kCorrupt, values.frameNumber)) Damage(values);
  for (const Defect& defect : defects_) {
    if (defect.kind != DefectKind::kChange || !Concerns(defect, values.frameNumber)) continue;
    int64_t& value = values.*defect.column->value;
    value = defect.value.value_or(value ^ 1);
  }
}

/// Writes text, followed by what was held back until then.
void DumpWriter::Put(const std::string& text) {
  out_ << text << held_;
  held_.clear();
}

}  // namespace player
